#include "Platform/Memory.h"

void Platform::TuneMemoryForShortRequests() noexcept
{
    // The system's heap tunes itself.
}
