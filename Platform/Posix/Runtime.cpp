#include "Platform/Runtime.h"

namespace Platform {

HeapState CheckHeap() noexcept
{
    return HeapState::Good;
}

void BreakIntoDebugger() noexcept {}

ParameterHandler SilenceParameterChecks() noexcept
{
    return nullptr;
}

void RestoreParameterChecks(ParameterHandler) noexcept {}

} // namespace Platform
