#include "Platform/Registry.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "System.h"

namespace {

using Platform::ErrorCode;
using Platform::RegistryAccess;
using Platform::RegistryView;
using Platform::SRegistryValue;

constexpr std::size_t MaxNameBytes = 4 * 16383; ///< of a value's name: 16383 characters of up to four bytes
constexpr std::size_t FirstRoom = 260;          ///< for the data of a value; most need less

struct SKeyTraits {
    using Type = HKEY;
    static Type None() noexcept { return nullptr; }
    static void Close(Type key) noexcept { ::RegCloseKey(key); }
};
using CKeyHandle = Platform::THandle<SKeyTraits>;

REGSAM Rights(RegistryView view, RegistryAccess access) noexcept
{
    const REGSAM rights = access == RegistryAccess::Full ? KEY_ALL_ACCESS : KEY_READ;
    switch (view) {
    case RegistryView::View64:
        return rights | KEY_WOW64_64KEY;
    case RegistryView::View32:
        return rights | KEY_WOW64_32KEY;
    default:
        return rights;
    }
}

bool IsText(std::uint32_t type) noexcept
{
    return type == Platform::RegString || type == Platform::RegExpandString || type == Platform::RegMultiString;
}

/// Reads a value by a call of the form read(type, data, size), which is made again with more room as long as it says
/// that there is more data: another process may write the value in between.
template <class TRead>
ErrorCode ReadValue(SRegistryValue & out, TRead const & read)
{
    std::string data(FirstRoom, '\0');
    DWORD type = REG_NONE;
    auto size = static_cast<DWORD>(data.size());
    LSTATUS status = read(type, reinterpret_cast<BYTE *>(data.data()), size);
    while (status == ERROR_MORE_DATA) {
        data.resize(std::max<std::size_t>(size, 2 * data.size()));
        size = static_cast<DWORD>(data.size());
        status = read(type, reinterpret_cast<BYTE *>(data.data()), size);
    }
    if (status != ERROR_SUCCESS) return static_cast<ErrorCode>(status);
    data.resize(size);
    // Writers differ in whether they count the closing NUL.
    while (IsText(type) && !data.empty() && data.back() == '\0')
        data.pop_back();
    out.type = type;
    out.data = std::move(data);
    return Platform::Success;
}

} // namespace

struct Platform::CRegistryKey::SImpl {
    CKeyHandle key;
};

Platform::CRegistryKey::CRegistryKey() noexcept = default;
Platform::CRegistryKey::~CRegistryKey() = default;
Platform::CRegistryKey::CRegistryKey(CRegistryKey && other) noexcept = default;
Platform::CRegistryKey & Platform::CRegistryKey::operator=(CRegistryKey && other) noexcept = default;

Platform::ErrorCode Platform::CRegistryKey::Open(std::string const & path, RegistryView view, RegistryAccess access)
{
    Close();
    std::unique_ptr<SImpl> impl(new (std::nothrow) SImpl);
    if (!impl) return ERROR_NOT_ENOUGH_MEMORY;
    HKEY key = nullptr;
    const LSTATUS status = ::RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, Rights(view, access), &key);
    if (status != ERROR_SUCCESS) return static_cast<ErrorCode>(status);
    impl->key.Reset(key);
    m_impl = std::move(impl);
    return Success;
}

void Platform::CRegistryKey::Close() noexcept
{
    m_impl.reset();
}

bool Platform::CRegistryKey::IsOpen() const noexcept
{
    return m_impl != nullptr;
}

Platform::ErrorCode Platform::CRegistryKey::Query(std::string const & name, SRegistryValue & out) const
{
    if (!m_impl) return ErrorNotFound();
    return ReadValue(out, [&](DWORD & type, BYTE * data, DWORD & size) {
        return ::RegQueryValueExA(m_impl->key.Get(), name.c_str(), nullptr, &type, data, &size);
    });
}

Platform::ErrorCode Platform::CRegistryKey::EnumValue(std::uint32_t index, std::string & name,
                                                      SRegistryValue & out) const
{
    if (!m_impl) return ErrorNotFound();
    std::string found(MaxNameBytes + 1, '\0');
    DWORD nameSize = 0;
    const ErrorCode error = ReadValue(out, [&](DWORD & type, BYTE * data, DWORD & size) {
        nameSize = static_cast<DWORD>(found.size());
        return ::RegEnumValueA(m_impl->key.Get(), index, found.data(), &nameSize, nullptr, &type, data, &size);
    });
    if (error != Success) return error == ERROR_NO_MORE_ITEMS ? ErrorNotFound() : error;
    name.assign(found, 0, nameSize);
    return Success;
}

bool Platform::ReadDword(CRegistryKey const & key, std::string const & name, std::uint32_t & out)
{
    SRegistryValue value;
    if (key.Query(name, value) != Success || value.type != RegDword || value.data.size() != sizeof out) return false;
    std::memcpy(&out, value.data.data(), sizeof out);
    return true;
}

std::string Platform::ExpandEnvironment(std::string const & text)
{
    std::string expanded(text.size() + 1, '\0');
    for (;;) {
        const auto room = static_cast<DWORD>(expanded.size());
        const DWORD needed = ::ExpandEnvironmentStringsA(text.c_str(), expanded.data(), room);
        if (needed == 0) return text;
        expanded.resize(needed);
        if (needed <= room) break;
    }
    expanded.resize(std::strlen(expanded.c_str())); // the closing NUL was counted, more than once perhaps
    return expanded;
}
