#include "Platform/Module.h"

#include "System.h"

void Platform::DisableThreadNotifications(void * module) noexcept
{
    ::DisableThreadLibraryCalls(static_cast<HMODULE>(module));
}
