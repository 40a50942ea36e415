#include "Platform/Module.h"

#include <algorithm>
#include <cstring>

#include "System.h"

#include <winver.h>

namespace {

/// What the block's first word says: how many bytes of it are the resource's own. Behind them the system keeps room
/// for texts that it has converted.
bool HoldsItsResource(std::string const & block) noexcept
{
    WORD resourceBytes = 0;
    if (block.size() < sizeof resourceBytes) return false;
    std::memcpy(&resourceBytes, block.data(), sizeof resourceBytes);
    return resourceBytes != 0 && resourceBytes <= block.size();
}

} // namespace

std::uint32_t Platform::VersionBlockSize(std::string const & path, ErrorCode & error)
{
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeA(path.c_str(), &ignored);
    error = size != 0 ? Success : LastError();
    return size;
}

Platform::ErrorCode Platform::ReadVersionBlock(std::string const & path, std::uint32_t size, std::string & out)
{
    std::string block(size, '\0');
    if (::GetFileVersionInfoA(path.c_str(), /*dwHandle=*/0, size, block.data()) == FALSE) return LastError();
    out = std::move(block);
    return Success;
}

bool Platform::QueryVersionBlock(std::string const & block, char const * query, void const *& out,
                                 std::uint32_t & size) noexcept
{
    if (query == nullptr || !HoldsItsResource(block)) return false;
    void * found = nullptr;
    UINT length = 0;
    if (::VerQueryValueA(block.data(), query, &found, &length) == FALSE) return false;
    out = found;
    size = length;
    return true;
}
