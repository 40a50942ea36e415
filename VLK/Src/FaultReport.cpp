#include "FaultReport.h"

#include "Platform/FaultFilter.h"
#include "VLK/Application.h"
#include "VLK/ThreadCB.h"
#include "VLK/Trace.h"

namespace VLK::Internals {

constinit std::atomic<unsigned int> g_uDebugWait{1};

namespace {

bool IsDebuggerCalled() noexcept
{
    return g_uDebugWait.load(std::memory_order_relaxed) == 1;
}

/// A thread with what it runs.
struct SRun {
    CThreadCB & thread;
    Delegates_and_Calls::CDelegate & function;
};

void Run(void * run)
{
    static_cast<SRun *>(run)->function();
}

void Report(void * run) noexcept
{
    WaitForDebuggerToAttach(static_cast<SRun *>(run)->thread);
}

} // namespace

void StartThreadAndCatchWin32Exception(CThreadCB & thread, Delegates_and_Calls::CDelegate & function)
{
    SRun run{thread, function};
    Platform::RunUnderFaultFilter(&Run, &Report, &run);
}

bool DisplayWin32ExceptionInTrace()
{
    if (!VLK_TRACE_ON(TraceErrors)) return true;
    VLK_TRACE(TraceErrors, "QUITSCH, thread has terminated with Win32 exception!");
    bool const debugWait = Misc::pVlkApp != nullptr && Misc::pVlkApp->GetDebugWait();
    if (!debugWait || !IsDebuggerCalled()) return true;
    VLK_TRACE(TraceErrors, "\n\nWait until a debugger attaches...");
    return false;
}

void WaitForDebuggerToAttach(CThreadCB & thread) noexcept
{
    try {
        if (!DisplayWin32ExceptionInTrace() && IsDebuggerCalled()) thread.SetDbgThreadName(thread.m_Name.C_Str());
    } catch (...) { // a record that can't be traced is lost
    }
}

} // namespace VLK::Internals
