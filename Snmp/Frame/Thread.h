#ifndef SNMP_FRAME_THREAD_H
#define SNMP_FRAME_THREAD_H

#include <cstdint>
#include <string>

#include "Platform/Thread.h"
#include "Snmp/Frame/Relaxed.h"

/// The frame's record of one thread: its handle, name, id and last error.
///
/// The record belongs to one thread at a time; WasTerminated may be asked by any.
class CThread {
public:
    CThread() = default;
    /// Traces, waits 10 ms for the thread and, with bTerminateThread set, 5000 ms more before it kills it.
    ~CThread();
    CThread(CThread const &) = delete;
    CThread & operator=(CThread const &) = delete;

    /// Starts the body suspended, with `stackBytes` (0: the system's default), and lets it run at normal
    /// priority. A handle held before is closed. Returns whether the thread runs; otherwise `lastError` says
    /// why not, and the handle stays empty when no thread was made.
    bool Start(Platform::ThreadEntry entry, void * argument, std::uint32_t stackBytes);

    /// Whether there is a thread that hasn't ended.
    bool IsRunning() const noexcept;

    /// 1: there is no thread, it has ended, or it ended within `ms` milliseconds. 0: it still runs. A thread
    /// whose state can't be read counts as ended; the reason goes to lastError.
    std::int32_t WaitForThreadExit(std::uint32_t ms);

    /// Ends the thread by force if it still runs, and closes the handle in any case. 1: there is no thread any
    /// more; 0: it could not be ended, lastError says why. What force means: Platform::TerminateThread.
    std::int32_t KillThread(std::uint32_t exitCode);

    /// Whether this record's thread was ended by force. Where force can't stop a thread, its body asks this
    /// after each call out of the frame, and then touches nothing any more.
    bool WasTerminated() const noexcept { return m_terminated != 0; }

    /// Number of threads that were ended by force since the library was loaded. Any thread.
    static std::uint32_t TerminatedCount() noexcept;

    Platform::CWaitableHandle handle; ///< empty: no thread
    std::string name;                 ///< for traces; empty until someone sets it
    std::uint32_t id = 0;             ///< the system's thread id
    Platform::ErrorCode lastError = Platform::Success;
    std::int32_t bTerminateThread = 1; ///< whether the record's end kills a thread that still runs

private:
    TRelaxed<std::int32_t> m_terminated;
};

#endif
