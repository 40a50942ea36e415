#include "Tests/Extension/TrapEvent.h"

#include <windows.h>

bool AwaitAndTake(SnmpHandle event, int ms)
{
    return ::WaitForSingleObject(event, static_cast<DWORD>(ms)) == WAIT_OBJECT_0;
}
