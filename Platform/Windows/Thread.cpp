#include "Platform/Thread.h"

#include <process.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <new>

#include "Platform/StaticLock.h"
#include "Waitable.h"

namespace Platform {

namespace {

/// What a new thread begins with.
struct SStart {
    ThreadEntry entry;
    void * argument;
};

unsigned WINAPI ThreadMain(void * argument)
{
    const SStart start = *std::unique_ptr<SStart>(static_cast<SStart *>(argument));
    return start.entry(start.argument);
}

/// A thread that was started here. It doesn't know this object, which may go while it runs.
struct SThread final : SWaitable {
    SThread(HANDLE handle, SStart * start) noexcept : SWaitable(WaitableKind::Thread, handle), m_start(start) {}
    ~SThread() override
    {
        if (m_start.load(std::memory_order_relaxed) != nullptr) Terminate(0);
    }

    ErrorCode Resume(std::uint32_t & previous) noexcept;
    ErrorCode Suspend(std::uint32_t & previous) noexcept;
    ErrorCode Terminate(std::uint32_t exitCode) noexcept;

private:
    std::atomic<SStart *> m_start; ///< of a thread that nobody has let begin yet; else the thread's own, and null here
};

/// Of threads that resume one: the count and what this object keeps of it change together. Not the object's own lock,
/// since the thread that begins may close it.
constinit CStaticLock g_resuming;

constexpr auto CountFailed = static_cast<DWORD>(-1);

/// What a thread that was ended by force gets to leave the processor. Only one inside a driver takes longer, and runs
/// no code of ours there. Milliseconds.
constexpr DWORD LastStepsMs = 5000;

ErrorCode SThread::Resume(std::uint32_t & previous) noexcept
{
    const std::lock_guard lock(g_resuming);
    // Let go of before the thread may run: its first act may be to close this object.
    SStart * const start = m_start.exchange(nullptr, std::memory_order_relaxed);
    const DWORD count = ::ResumeThread(Handle());
    const ErrorCode error = count == CountFailed ? LastError() : Success;
    const bool begins = count == 1;
    if (start != nullptr && !begins) m_start.store(start, std::memory_order_relaxed);
    if (error == Success) previous = count;
    return error;
}

ErrorCode SThread::Suspend(std::uint32_t & previous) noexcept
{
    const DWORD count = ::SuspendThread(Handle());
    if (count == CountFailed) return LastError();
    previous = count;
    return Success;
}

ErrorCode SThread::Terminate(std::uint32_t exitCode) noexcept
{
    if (::WaitForSingleObject(Handle(), 0) == WAIT_OBJECT_0) return Success;
    if (::TerminateThread(Handle(), exitCode) == 0) return LastError();
    // The call only orders the end. What the thread uses, its code too, may be taken away behind this.
    ::WaitForSingleObject(Handle(), LastStepsMs);
    // It will never come to take its start.
    delete m_start.exchange(nullptr, std::memory_order_relaxed);
    return Success;
}

SThread * ThreadOf(WaitHandle handle) noexcept
{
    return IsOfKind(handle, WaitableKind::Thread) ? static_cast<SThread *>(handle) : nullptr;
}

/// The reason why _beginthreadex gave no thread.
ErrorCode StartError() noexcept
{
    const ErrorCode error = LastError();
    return error != Success ? error : ErrorCode{ERROR_NOT_ENOUGH_MEMORY};
}

} // namespace

ErrorCode StartThread(WaitHandle & out, std::uint32_t & id, ThreadEntry entry, void * argument,
                      std::uint32_t stackBytes, bool suspended) noexcept
{
    std::unique_ptr<SStart> start(new (std::nothrow) SStart{entry, argument});
    if (start == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    // The stack's size is its room; without the second flag all of it would be taken at once.
    constexpr unsigned how = CREATE_SUSPENDED | STACK_SIZE_PARAM_IS_A_RESERVATION;
    unsigned systemId = 0;
    ::SetLastError(Success);
    CSystemHandle handle(
        reinterpret_cast<HANDLE>(::_beginthreadex(nullptr, stackBytes, &ThreadMain, start.get(), how, &systemId)));
    if (!handle) return StartError();
    ::SetThreadPriority(handle.Get(), THREAD_PRIORITY_NORMAL);
    std::unique_ptr<SThread> thread(new (std::nothrow) SThread(handle.Get(), start.get()));
    if (thread == nullptr) {
        ::TerminateThread(handle.Get(), 0); // it hasn't begun
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    static_cast<void>(handle.Release());
    static_cast<void>(start.release());
    std::uint32_t previous = 0;
    const ErrorCode error = suspended ? Success : thread->Resume(previous);
    if (error != Success) return error;
    id = systemId;
    out = thread.release();
    return Success;
}

ErrorCode ResumeThread(WaitHandle thread, std::uint32_t & previous) noexcept
{
    SThread * const object = ThreadOf(thread);
    return object != nullptr ? object->Resume(previous) : ErrorCode{ERROR_INVALID_HANDLE};
}

ErrorCode SuspendThread(WaitHandle thread, std::uint32_t & previous) noexcept
{
    SThread * const object = ThreadOf(thread);
    return object != nullptr ? object->Suspend(previous) : ErrorCode{ERROR_INVALID_HANDLE};
}

ErrorCode ThreadExitCode(WaitHandle thread, std::uint32_t & exitCode) noexcept
{
    SThread * const object = ThreadOf(thread);
    if (object == nullptr) return ERROR_INVALID_HANDLE;
    DWORD code = 0;
    if (::GetExitCodeThread(object->Handle(), &code) == 0) return LastError();
    exitCode = code;
    return Success;
}

ErrorCode TerminateThread(WaitHandle thread, std::uint32_t exitCode) noexcept
{
    SThread * const object = ThreadOf(thread);
    return object != nullptr ? object->Terminate(exitCode) : ErrorCode{ERROR_INVALID_HANDLE};
}

std::uint32_t CurrentThreadId() noexcept
{
    return ::GetCurrentThreadId();
}

} // namespace Platform
