#include "VLK/Directory.h"

#include <utility>

namespace VLK::FileSystem {

CDirectory::CDirectory() noexcept : m_pEntry(nullptr) {}

CDirectory::CDirectory(CDirectory const & other) = default;

CDirectory::CDirectory(CDirectory && other) noexcept
    : m_pPath(std::move(other.m_pPath)), m_pEntry(std::exchange(other.m_pEntry, nullptr))
{
}

CDirectory & CDirectory::operator=(CDirectory const & other) = default;

CDirectory & CDirectory::operator=(CDirectory && other) noexcept
{
    m_pPath = std::move(other.m_pPath);
    m_pEntry = std::exchange(other.m_pEntry, nullptr);
    return *this;
}

CDirectory::~CDirectory() = default;

} // namespace VLK::FileSystem
