#ifndef PLATFORM_MANGLED_NAME_H
#define PLATFORM_MANGLED_NAME_H

#include <cstdio>
#include <cstring>

namespace Platform {

/// Symbol of a variable of a namespace or a static member of a class, with the closing NUL.
inline constexpr std::size_t MangledNameRoom = 512;

/// Writes the name as the compiler's binary interface has it, which is the same on all systems here: _ZN, each part
/// behind its length, E. False when it doesn't fit.
inline bool MangleName(char const * qualifiedName, char (&symbol)[MangledNameRoom]) noexcept
{
    std::size_t used = static_cast<std::size_t>(std::snprintf(symbol, MangledNameRoom, "_ZN"));
    for (char const * part = qualifiedName; part != nullptr && used < MangledNameRoom;) {
        char const * const end = std::strstr(part, "::");
        int const length = static_cast<int>(end != nullptr ? static_cast<std::size_t>(end - part) : std::strlen(part));
        used += static_cast<std::size_t>(
            std::snprintf(symbol + used, MangledNameRoom - used, "%d%.*s", length, length, part));
        part = end != nullptr ? end + 2 : nullptr;
    }
    if (used + 2 > MangledNameRoom) return false;
    std::memcpy(symbol + used, "E", 2);
    return true;
}

} // namespace Platform

#endif
