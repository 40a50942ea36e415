#ifndef VLK_FAULT_REPORT_H
#define VLK_FAULT_REPORT_H

#include <atomic>

namespace VLK::Delegates_and_Calls {
class CDelegate;
}

namespace VLK::Internals {

class CThreadCB;

/// 1: a thread that ends by a fault calls for a debugger, where the application's debug wait is on. A debugger may
/// change it at any time.
extern std::atomic<unsigned int> g_uDebugWait;

/// Runs a thread's function, and where the system hands faults out (Platform/FaultFilter.h), reports the one that ends
/// it. What the function raises passes through. By the thread itself.
void StartThreadAndCatchWin32Exception(CThreadCB & thread, Delegates_and_Calls::CDelegate & function);

/// Says in the trace what has happened. False when a debugger is called for.
bool DisplayWin32ExceptionInTrace();
/// The report of a fault of the calling thread; never more than is told here: nobody waits.
void WaitForDebuggerToAttach(CThreadCB & thread) noexcept;

} // namespace VLK::Internals

#endif
