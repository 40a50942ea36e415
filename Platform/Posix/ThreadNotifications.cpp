#include "Platform/Module.h"

void Platform::DisableThreadNotifications(void *) noexcept {}
