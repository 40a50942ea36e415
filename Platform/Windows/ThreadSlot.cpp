#include "Platform/Thread.h"

#include "Waitable.h"

namespace Platform {

ErrorCode NewThreadSlot(std::uint32_t & slot) noexcept
{
    const DWORD index = ::TlsAlloc();
    if (index == TLS_OUT_OF_INDEXES) return LastError();
    slot = index;
    return Success;
}

void FreeThreadSlot(std::uint32_t slot) noexcept
{
    ::TlsFree(slot);
}

void * ThreadSlotValue(std::uint32_t slot) noexcept
{
    // The system's call clears the last error, for which the caller may be on its way.
    const CLastErrorKeeper keeper;
    return ::TlsGetValue(slot);
}

ErrorCode SetThreadSlotValue(std::uint32_t slot, void * value) noexcept
{
    return ResultOf(::TlsSetValue(slot, value));
}

} // namespace Platform
