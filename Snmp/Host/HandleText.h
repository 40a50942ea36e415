#ifndef SNMP_HOST_HANDLE_TEXT_H
#define SNMP_HOST_HANDLE_TEXT_H

#include <cstdint>

/// A handle as the traces show it, by "0x%X": its low 32 bits.
inline unsigned HandleNumber(void const * handle) noexcept
{
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(handle));
}

#endif
