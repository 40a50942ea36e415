#include "Platform/Wait.h"

#include <gtest/gtest.h>

#include <thread>

#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours

namespace {

/// Has a library of its own wake the calling thread, and unloads it.
void BeWokenByALibraryThatGoes()
{
    const HMODULE library = ::LoadLibraryA(KXRA_WAKER_PROBE);
    ASSERT_NE(nullptr, library) << ::GetLastError();
    const FARPROC wake = ::GetProcAddress(library, "WakeTheCaller");
    ASSERT_NE(nullptr, wake);
    reinterpret_cast<void (*)()>(wake)();
    ASSERT_NE(0, ::FreeLibrary(library));
    ASSERT_EQ(nullptr, ::GetModuleHandleA(KXRA_WAKER_PROBE));
}

TEST(WakerUnloadTest, ACallThatIsStillQueuedNeedsNoLibrary)
{
    std::thread([] {
        BeWokenByALibraryThatGoes();
        EXPECT_EQ(DWORD{WAIT_IO_COMPLETION}, ::SleepEx(0, /*bAlertable=*/TRUE)) << "the call was queued";
    }).join();
}

TEST(WakerUnloadTest, TheEndOfAThreadNeedsNoLibrary)
{
    std::thread([] { BeWokenByALibraryThatGoes(); }).join();
}

} // namespace
