#ifndef PLATFORM_REGISTRY_H
#define PLATFORM_REGISTRY_H

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/Error.h"

/// The configuration store of the machine (HKEY_LOCAL_MACHINE).
///
/// POSIX: one text file in the registry editor's export format ("Windows Registry Editor Version 5.00"), named by
/// KXRA_REGISTRY, default /etc/kestrix/registry.reg; UTF-8 with or without a byte order mark, or UTF-16LE with one.
/// A missing file is an empty registry; a line that can't be read is reported once with file, number and reason on
/// standard error and passed over; a changed file is seen at the next Open. Keys and value names compare without
/// regard to case (of ASCII and Latin-1 letters). Both views show the same data, and nothing is ever written, so
/// full access is granted to whoever may read. Texts are UTF-8. What an open key shows stays as it was at Open.
///
/// Windows: the registry itself, nothing of which is written either. The default view is that of the process's word
/// size, and whoever may not write gets no full access. Texts are in the system's character set. An open key shows
/// each change at once.
///
/// One object, one thread at a time; objects are independent of each other. What fills a text of the caller may raise
/// std::bad_alloc.
namespace Platform {

enum class RegistryView : std::uint8_t { Default, View64, View32 };
enum class RegistryAccess : std::uint8_t { Read, Full };

/// Types of values, with the registry's own numbers.
enum RegistryType : std::uint32_t {
    RegNone = 0,
    RegString = 1,
    RegExpandString = 2,
    RegBinary = 3,
    RegDword = 4,
    RegMultiString = 7,
    RegQword = 11
};

struct SRegistryValue {
    std::uint32_t type = RegNone;
    std::string data; ///< the value's bytes; texts without the closing NUL, a dword as 4 bytes little-endian
};

class CRegistryKey {
public:
    CRegistryKey() noexcept;
    ~CRegistryKey();
    CRegistryKey(CRegistryKey && other) noexcept;
    CRegistryKey & operator=(CRegistryKey && other) noexcept;

    /// path: below HKEY_LOCAL_MACHINE, parts separated by backslashes, one behind the last part is allowed. Closes
    /// what was open before. ErrorNotFound when there is no such key, ErrorAccessDenied when the access isn't granted.
    /// A key exists when it or one below it was ever named.
    ErrorCode Open(std::string const & path, RegistryView view, RegistryAccess access);
    void Close() noexcept;
    bool IsOpen() const noexcept;
    /// name: empty for the key's default value. ErrorNotFound when there is no such value, or the key isn't open.
    ErrorCode Query(std::string const & name, SRegistryValue & out) const;
    /// Values by index from 0 in the store's order; ErrorNotFound behind the last.
    ErrorCode EnumValue(std::uint32_t index, std::string & name, SRegistryValue & out) const;

private:
    struct SImpl;
    std::unique_ptr<SImpl> m_impl;
};

/// A dword of an open key; false when it is missing or of another type.
bool ReadDword(CRegistryKey const & key, std::string const & name, std::uint32_t & out);

/// Replaces each %NAME% by the environment variable of that name; an unknown name stays as it is. text: without a NUL.
std::string ExpandEnvironment(std::string const & text);

} // namespace Platform

#endif
