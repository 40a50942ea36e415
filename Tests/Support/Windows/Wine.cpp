#include "Support/Wine.h"

#include <windows.h>

bool RunsUnderWine()
{
    return ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}
