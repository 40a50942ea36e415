#include "Platform/Runtime.h"

#include <malloc.h>
#include <stdlib.h>

#include "System.h"

namespace Platform {

namespace {

void PassOverBadParameter(wchar_t const *, wchar_t const *, wchar_t const *, unsigned, std::uintptr_t) {}

} // namespace

HeapState CheckHeap() noexcept
{
    switch (::_heapchk()) {
    case _HEAPBADBEGIN:
        return HeapState::BadBegin;
    case _HEAPBADNODE:
        return HeapState::BadNode;
    default:
        return HeapState::Good;
    }
}

void BreakIntoDebugger() noexcept
{
    ::DebugBreak();
}

ParameterHandler SilenceParameterChecks() noexcept
{
    return reinterpret_cast<ParameterHandler>(::_set_invalid_parameter_handler(&PassOverBadParameter));
}

void RestoreParameterChecks(ParameterHandler former) noexcept
{
    ::_set_invalid_parameter_handler(reinterpret_cast<_invalid_parameter_handler>(former));
}

} // namespace Platform
