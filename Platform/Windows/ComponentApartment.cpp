#include "System.h"

#include <objbase.h>

#include "Platform/Thread.h"

bool Platform::EnterComponentApartment() noexcept
{
    const HRESULT result = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    return result == S_OK || result == S_FALSE;
}

void Platform::LeaveComponentApartment() noexcept
{
    ::CoUninitialize();
}
