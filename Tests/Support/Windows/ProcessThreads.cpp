#include "Support/ProcessThreads.h"

#include <windows.h>

#include <tlhelp32.h>

std::size_t ProcessThreads()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return 0;
    const DWORD process = ::GetCurrentProcessId();
    std::size_t count = 0;
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    for (BOOL more = ::Thread32First(snapshot, &thread); more != 0; more = ::Thread32Next(snapshot, &thread))
        if (thread.th32OwnerProcessID == process) ++count;
    ::CloseHandle(snapshot);
    return count;
}
