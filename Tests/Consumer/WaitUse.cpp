#include "Module.h"

#include <VLK/CriticalSection.h>
#include <VLK/Delegates.h>
#include <VLK/Exceptions.h>
#include <VLK/Threads.h>
#include <VLK/ThrowState.h>
#include <VLK/Waiter.h>

#include "Uses.h"

using namespace VLK;
using namespace VLK::Threading;
using CJob = Delegates_and_Calls::TDelegate<Delegates_and_Calls::CCall>;

namespace {

constexpr unsigned int kDeadline = 20000; // ms

/// Waits for the gate until somebody cancels the thread.
class CGuard {
public:
    CGuard()
    {
        m_gate.Init(/*initialState=*/false, /*manualReset=*/true);
        m_waiting.Init(/*initialState=*/false, /*manualReset=*/true);
    }
    void Stand()
    {
        Exceptions::CThrowState state;
        try {
            m_waiting.Set();
            m_gate.Wait(0xFFFFFFFF);
        } catch (...) {
            VLK_CONTINUE(state, log);
            m_error = log.GetError();
        }
    }
    CEvent m_gate;
    CEvent m_waiting;
    std::uint32_t m_error = 0;
};

void CancelBreaksAWait()
{
    CGuard guard;
    CThread thread;
    thread.Create(CJob(&guard, &CGuard::Stand), /*suspended=*/false);
    REQUIRE(guard.m_waiting.Wait(kDeadline) == URET_OK);
    thread.Cancel();
    REQUIRE(thread.Wait(kDeadline) == URET_OK);
    REQUIRE(guard.m_error == Errors::ThreadInterrupt);
}

void AWaiterTakesTheFirstOfSeveral()
{
    CEvent silent, ready;
    CSemaphore slots;
    CMutex mutex;
    silent.Init(/*initialState=*/false, /*manualReset=*/false);
    ready.Init(/*initialState=*/true, /*manualReset=*/false);
    slots.Init(/*initial=*/1, /*maximum=*/2);
    mutex.Init(/*initialOwner=*/false);

    CWaiter waiter;
    waiter << silent << ready << slots;
    REQUIRE(waiter.Wait(kDeadline, /*all=*/false) == URET_WaitObject1);
    REQUIRE(waiter.Wait(kDeadline, /*all=*/false) == URET_WaitObject2);
    REQUIRE(waiter.Wait(0, /*all=*/false) == URET_Timeout);

    CSyncGuard lock;
    REQUIRE(mutex.Wait(lock, kDeadline) == URET_OK);
    Native_OS::CCriticalSection section;
    CSyncGuard inner;
    REQUIRE(section.Enter(inner) == URET_OK);
}

} // namespace

void UseWaits()
{
    AWaiterTakesTheFirstOfSeveral();
    CancelBreaksAWait();
}
