#ifndef PLATFORM_NAME_HASH_H
#define PLATFORM_NAME_HASH_H

#include <cstdint>
#include <string_view>

namespace Platform {

/// Stands for what was cut off a name that is too long (FNV-1a); the same in every process.
inline std::uint64_t NameHash(std::string_view text) noexcept
{
    std::uint64_t hash = 14695981039346656037u;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
    return hash;
}

} // namespace Platform

#endif
