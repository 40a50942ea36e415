#include "Snmp/Frame/Thread.h"

#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/Intervals.h"

namespace {

constinit TRelaxed<std::uint32_t> g_terminatedThreads;

} // namespace

SFrameIntervals g_frameIntervals;

CThread::~CThread()
{
    PLAIN_TRACE(5, "\n~CThread - name=\"%s\" (bTerminateThread=%d)", name.c_str(), bTerminateThread);
    WaitForThreadExit(g_frameIntervals.recordEndMs);
    if (bTerminateThread != 0 && WaitForThreadExit(g_frameIntervals.recordKillMs) == 0) KillThread(0);
}

bool CThread::Start(Platform::ThreadEntry entry, void * argument, std::uint32_t stackBytes)
{
    handle.Reset();
    m_terminated = 0;
    Platform::WaitHandle thread = nullptr;
    lastError = Platform::StartThread(thread, id, entry, argument, stackBytes, /*suspended=*/true);
    if (lastError != Platform::Success) return false;
    handle.Reset(thread);
    std::uint32_t previous = 0;
    if (Platform::ResumeThread(thread, previous) != Platform::Success) return false;
    Platform::Sleep(0);
    return true;
}

bool CThread::IsRunning() const noexcept
{
    std::uint32_t exitCode = 0;
    return handle && Platform::ThreadExitCode(handle.Get(), exitCode) == Platform::Success &&
           exitCode == Platform::StillActive;
}

std::int32_t CThread::WaitForThreadExit(std::uint32_t ms)
{
    if (!handle) return 1;
    std::uint32_t exitCode = 0;
    if (const Platform::ErrorCode error = Platform::ThreadExitCode(handle.Get(), exitCode);
        error != Platform::Success) {
        lastError = error;
        return 1;
    }
    if (exitCode != Platform::StillActive) return 1;
    return Platform::WaitForOne(handle.Get(), ms, /*wakeable=*/false).result == Platform::WaitResult::Signaled ? 1 : 0;
}

std::int32_t CThread::KillThread(std::uint32_t exitCode)
{
    if (!handle) return 1;
    std::int32_t result = 1;
    std::uint32_t present = 0;
    lastError = Platform::ThreadExitCode(handle.Get(), present);
    if (lastError == Platform::Success && present == Platform::StillActive &&
        Platform::WaitForOne(handle.Get(), 0, /*wakeable=*/false).result != Platform::WaitResult::Signaled) {
        // Before the end, so that a body which goes on meanwhile finds it.
        m_terminated = 1;
        lastError = Platform::TerminateThread(handle.Get(), exitCode);
        if (lastError == Platform::Success) {
            g_terminatedThreads.Add(1);
            PLAIN_TRACE(1, "\n\n## WARNING! RUNNING THREAD %d (\"%s\") TERMINATED!  ###\n", static_cast<int>(id),
                        name.c_str());
        } else {
            m_terminated = 0;
            result = 0;
        }
    }
    handle.Reset();
    return result;
}

std::uint32_t CThread::TerminatedCount() noexcept
{
    return g_terminatedThreads;
}
