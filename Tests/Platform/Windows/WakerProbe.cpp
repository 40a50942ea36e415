#include "Platform/Wait.h"

/// Wakes the calling thread, which need not know, and leaves the call for its next wait.
extern "C" __declspec(dllexport) void WakeTheCaller()
{
    const Platform::CWakerHandle waker(Platform::CurrentThreadWaker());
    Platform::WakeThread(waker.Get());
}
