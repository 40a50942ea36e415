#include "Platform/FaultFilter.h"

void Platform::RunUnderFaultFilter(void (*body)(void *), void (*)(void *) noexcept, void * argument)
{
    body(argument);
}
