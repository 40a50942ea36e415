#include "Platform/Thread.h"

#include <dlfcn.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <new>

#include "ThreadRecord.h"
#include "Waitable.h"

namespace Platform {

namespace {

constexpr std::uint32_t MaxSuspendCount = 127;
constexpr std::size_t MaxNameLength = 15;

extern "C" void * ThreadMain(void * thread);

enum class Phase : std::uint8_t {
    Fresh, ///< has not begun its body
    Running,
    Ended,
    Abandoned ///< runs, but counts as ended
};

/// A thread that was started here. References: the owner's handle, or the list of orphans after that, and the
/// thread itself.
struct SThread final : SWaitable {
    SThread(ThreadEntry body, void * bodyArgument, bool suspended, int descriptor) noexcept
        : SWaitable(WaitableKind::Thread, descriptor),
          m_body(body),
          m_argument(bodyArgument),
          m_suspendCount(suspended ? 1 : 0)
    {
    }

    ErrorCode Start(std::uint32_t stackBytes, std::uint32_t & id) noexcept;
    ErrorCode Resume(std::uint32_t & previous) noexcept;
    ErrorCode Suspend(std::uint32_t & previous) noexcept;
    ErrorCode Terminate(std::uint32_t exitCode) noexcept;
    std::uint32_t ExitCode() noexcept;
    void Main() noexcept;

    Taken Take(ErrorCode & error) noexcept override;
    void Close() noexcept override;

private:
    friend class COrphans;
    bool AwaitStart() noexcept;
    void End(std::uint32_t exitCode) noexcept;
    void CancelStart(std::uint32_t exitCode) noexcept;
    void Join() noexcept;
    void Detach() noexcept;
    bool HasEnded() noexcept;
    bool HasLeftItsBody() noexcept;

    const ThreadEntry m_body;
    void * const m_argument;
    std::mutex m_lock; // guards everything below
    std::condition_variable m_changed;
    pthread_t m_thread{}; // set before Start returns, constant then
    SThreadWaker * m_record = nullptr;
    std::uint32_t m_id = 0; // 0 until the thread has said it
    std::uint32_t m_suspendCount;
    std::uint32_t m_exitCode = StillActive;
    Phase m_phase = Phase::Fresh;
    bool m_cancelled = false;         // the body must not begin
    bool m_leftBody = false;          // only this file's own code is left to run
    bool m_joined = false;            // m_thread is gone
    SThread * m_nextOrphan = nullptr; // guarded by the lock of the orphans while on their list
};

/// Threads that outlive their handle. They are joined when they have ended, at the next chance: the last
/// instructions of a thread are code of this library, which must not be unloaded under them.
class COrphans {
public:
    ~COrphans() { LetGo(); }
    void Add(SThread & thread) noexcept
    {
        const std::lock_guard lock(m_lock);
        thread.m_nextOrphan = m_first;
        m_first = &thread;
    }
    void Reap() noexcept
    {
        ForEachTaken([](SThread & thread) { return thread.HasEnded(); }, [](SThread & thread) { thread.Join(); });
    }

private:
    /// No chance comes after this one: waits for those that are on their way out, leaves the others to themselves.
    void LetGo() noexcept
    {
        ForEachTaken([](SThread &) { return true; },
                     [](SThread & thread) {
                         if (thread.HasLeftItsBody())
                             WaitForOne(&thread, Infinite, /*wakeable=*/false);
                         else
                             thread.Detach();
                     });
    }
    /// Takes threads off the list, and does with each what is to be done outside of the lock: the end of a thread
    /// may run destructors that come back here.
    template <class TWanted, class TDo>
    void ForEachTaken(TWanted wanted, TDo act) noexcept
    {
        for (SThread * thread = Unlink(wanted); thread != nullptr;) {
            SThread * const next = thread->m_nextOrphan;
            act(*thread);
            thread->DropReference();
            thread = next;
        }
    }
    template <class TWanted>
    SThread * Unlink(TWanted wanted) noexcept
    {
        const std::lock_guard lock(m_lock);
        SThread * taken = nullptr;
        for (SThread ** link = &m_first; *link != nullptr;) {
            SThread * const thread = *link;
            if (!wanted(*thread)) {
                link = &thread->m_nextOrphan;
                continue;
            }
            *link = thread->m_nextOrphan;
            thread->m_nextOrphan = taken;
            taken = thread;
        }
        return taken;
    }

    std::mutex m_lock;
    SThread * m_first = nullptr;
};

// Destroyed behind the objects of other files, which may close threads.
[[gnu::init_priority(102)]] COrphans g_orphans;

/// Attributes of a new thread; gives them back.
class CThreadAttributes {
public:
    CThreadAttributes() noexcept { ::pthread_attr_init(&m_attributes); }
    ~CThreadAttributes() { ::pthread_attr_destroy(&m_attributes); }
    CThreadAttributes(CThreadAttributes const &) = delete;
    CThreadAttributes & operator=(CThreadAttributes const &) = delete;

    void SetStack(std::uint32_t bytes) noexcept
    {
        if (bytes == 0) return;
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        const auto smallest = static_cast<std::size_t>(::sysconf(_SC_THREAD_STACK_MIN));
        const std::size_t wanted = std::max(std::size_t{bytes}, smallest);
        ::pthread_attr_setstacksize(&m_attributes, (wanted + page - 1) / page * page);
    }
    /// The host's signals are the host's business: they go to its own threads. Faults stay where they happen.
    void LeaveSignalsToTheHost() noexcept
    {
        sigset_t signals;
        ::sigfillset(&signals);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT})
            ::sigdelset(&signals, fault);
        ::pthread_attr_setsigmask_np(&m_attributes, &signals);
    }
    pthread_attr_t const * Get() const noexcept { return &m_attributes; }

private:
    pthread_attr_t m_attributes;
};

/// Keeps the module that holds the address in memory for good.
void PinModuleOf(void const * address) noexcept
{
    Dl_info info{};
    if (::dladdr(address, &info) != 0 && info.dli_fname != nullptr)
        ::dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

ErrorCode SThread::Start(std::uint32_t stackBytes, std::uint32_t & id) noexcept
{
    CThreadAttributes attributes;
    attributes.SetStack(stackBytes);
    attributes.LeaveSignalsToTheHost();
    std::unique_lock lock(m_lock);
    AddReference();
    const int error = ::pthread_create(&m_thread, attributes.Get(), &ThreadMain, this);
    if (error != 0) {
        DropReference();
        return static_cast<ErrorCode>(error);
    }
    m_changed.wait(lock, [this] { return m_id != 0; });
    id = m_id;
    return Success;
}

bool SThread::AwaitStart() noexcept
{
    SThreadWaker * const record = ThreadRecord();
    std::unique_lock lock(m_lock);
    m_record = record;
    m_id = CurrentThreadId();
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_suspendCount == 0 || m_cancelled; });
    if (m_cancelled) return false;
    m_phase = Phase::Running;
    return true;
}

void SThread::Main() noexcept
{
    const std::uint32_t result = AwaitStart() ? m_body(m_argument) : 0;
    End(result);
}

void SThread::End(std::uint32_t exitCode) noexcept
{
    {
        const std::lock_guard lock(m_lock);
        m_record = nullptr; // from here on nobody abandons it
        m_leftBody = true;
    }
    EndThreadRecord();
    bool signal = false;
    {
        const std::lock_guard lock(m_lock);
        signal = m_phase != Phase::Abandoned;
        if (signal) {
            m_phase = Phase::Ended;
            if (!m_cancelled) m_exitCode = exitCode;
        }
    }
    if (signal) Signal();
    DropReference();
}

bool SThread::HasEnded() noexcept
{
    const std::lock_guard lock(m_lock);
    return m_phase == Phase::Ended;
}

void SThread::Join() noexcept
{
    const std::lock_guard lock(m_lock);
    if (m_phase != Phase::Ended || m_joined || ::pthread_equal(m_thread, ::pthread_self())) return;
    ::pthread_join(m_thread, nullptr);
    m_joined = true;
}

void SThread::Detach() noexcept
{
    const std::lock_guard lock(m_lock);
    if (m_joined) return;
    ::pthread_detach(m_thread);
    m_joined = true;
}

bool SThread::HasLeftItsBody() noexcept
{
    const std::lock_guard lock(m_lock);
    return m_leftBody;
}

Taken SThread::Take(ErrorCode &) noexcept
{
    {
        const std::lock_guard lock(m_lock);
        if (m_phase != Phase::Ended && m_phase != Phase::Abandoned) return Taken::No;
    }
    // Whoever waited for the end may unload the library next, so the thread must have left its code.
    Join();
    return Taken::Yes;
}

void SThread::CancelStart(std::uint32_t exitCode) noexcept
{
    m_cancelled = true;
    m_exitCode = exitCode;
    m_changed.notify_all();
}

void SThread::Close() noexcept
{
    bool cancelled = false;
    bool abandoned = false;
    {
        const std::lock_guard lock(m_lock);
        if (m_phase == Phase::Fresh && m_suspendCount != 0 && !m_cancelled) CancelStart(0);
        cancelled = m_cancelled;
        abandoned = m_phase == Phase::Abandoned;
    }
    if (abandoned) {
        ::pthread_detach(m_thread);
        DropReference();
        return;
    }
    // Nothing but its own end is left to such a thread.
    if (cancelled) WaitForOne(this, Infinite, /*wakeable=*/false);
    g_orphans.Add(*this);
    g_orphans.Reap();
}

ErrorCode SThread::Resume(std::uint32_t & previous) noexcept
{
    const std::lock_guard lock(m_lock);
    previous = m_suspendCount;
    if (m_suspendCount != 0 && --m_suspendCount == 0) m_changed.notify_all();
    return Success;
}

ErrorCode SThread::Suspend(std::uint32_t & previous) noexcept
{
    const std::lock_guard lock(m_lock);
    if (m_phase == Phase::Running) return ErrorNotSupported();
    if (m_phase != Phase::Fresh || m_suspendCount == 0) return ErrorAccessDenied();
    if (m_suspendCount == MaxSuspendCount) return EOVERFLOW;
    previous = m_suspendCount++;
    return Success;
}

ErrorCode SThread::Terminate(std::uint32_t exitCode) noexcept
{
    {
        const std::lock_guard lock(m_lock);
        if (m_phase == Phase::Ended || m_phase == Phase::Abandoned || m_cancelled) return Success;
        if (m_phase == Phase::Fresh) {
            CancelStart(exitCode);
            return Success;
        }
        PinModuleOf(reinterpret_cast<void const *>(m_body));
        PinModuleOf(reinterpret_cast<void const *>(&ThreadMain));
        m_phase = Phase::Abandoned;
        m_exitCode = exitCode;
        if (m_record != nullptr) AbandonThread(*m_record);
    }
    const ErrorCode error = Signal();
    ParkIfAbandoned(); // the caller may be the thread itself
    return error;
}

std::uint32_t SThread::ExitCode() noexcept
{
    const std::lock_guard lock(m_lock);
    return m_exitCode;
}

extern "C" void * ThreadMain(void * thread)
{
    static_cast<SThread *>(thread)->Main();
    return nullptr;
}

SThread * ThreadOf(WaitHandle handle) noexcept
{
    return handle != nullptr && handle->Kind() == WaitableKind::Thread ? static_cast<SThread *>(handle) : nullptr;
}

} // namespace

ErrorCode StartThread(WaitHandle & out, std::uint32_t & id, ThreadEntry entry, void * argument,
                      std::uint32_t stackBytes, bool suspended) noexcept
{
    g_orphans.Reap();
    CDescriptor descriptor(NewEventDescriptor(0, /*countDown=*/false));
    if (!descriptor) return LastErrno();
    auto * const thread = new (std::nothrow) SThread(entry, argument, suspended, descriptor.Get());
    if (thread == nullptr) return ENOMEM;
    static_cast<void>(descriptor.Release());
    const ErrorCode error = thread->Start(stackBytes, id);
    if (error == Success)
        out = thread;
    else
        thread->DropReference();
    return error;
}

ErrorCode ResumeThread(WaitHandle thread, std::uint32_t & previous) noexcept
{
    SThread * const object = ThreadOf(thread);
    return object != nullptr ? object->Resume(previous) : ErrorCode{EINVAL};
}

ErrorCode SuspendThread(WaitHandle thread, std::uint32_t & previous) noexcept
{
    SThread * const object = ThreadOf(thread);
    return object != nullptr ? object->Suspend(previous) : ErrorCode{EINVAL};
}

ErrorCode ThreadExitCode(WaitHandle thread, std::uint32_t & exitCode) noexcept
{
    SThread * const object = ThreadOf(thread);
    if (object == nullptr) return EINVAL;
    exitCode = object->ExitCode();
    return Success;
}

ErrorCode TerminateThread(WaitHandle thread, std::uint32_t exitCode) noexcept
{
    SThread * const object = ThreadOf(thread);
    return object != nullptr ? object->Terminate(exitCode) : ErrorCode{EINVAL};
}

std::uint32_t CurrentThreadId() noexcept
{
    return static_cast<std::uint32_t>(::syscall(SYS_gettid));
}

ErrorCode NewThreadSlot(std::uint32_t & slot) noexcept
{
    pthread_key_t key{};
    const int error = ::pthread_key_create(&key, nullptr);
    if (error == 0) slot = key;
    return static_cast<ErrorCode>(error);
}

void FreeThreadSlot(std::uint32_t slot) noexcept
{
    ::pthread_key_delete(slot);
}

void * ThreadSlotValue(std::uint32_t slot) noexcept
{
    return ::pthread_getspecific(slot);
}

ErrorCode SetThreadSlotValue(std::uint32_t slot, void * value) noexcept
{
    return static_cast<ErrorCode>(::pthread_setspecific(slot, value));
}

void NameCurrentThread(char const * name) noexcept
{
    if (name == nullptr) return;
    char cut[MaxNameLength + 1] = {};
    std::size_t length = ::strnlen(name, MaxNameLength + 1);
    if (length > MaxNameLength) {
        length = MaxNameLength;
        // Not through the middle of a character of UTF-8.
        while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80)
            --length;
    }
    std::memcpy(cut, name, length);
    ::pthread_setname_np(::pthread_self(), cut);
}

bool EnterComponentApartment() noexcept
{
    return false;
}

void LeaveComponentApartment() noexcept {}

} // namespace Platform
