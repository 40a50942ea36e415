#include "Platform/FaultFilter.h"

#include <excpt.h>

#include "System.h"

namespace Platform {

namespace {

/// What runs under the filter on a thread.
struct SRun {
    void (*onFault)(void *) noexcept;
    void * argument;
    SRun const * outer;
};

/// Leads the filter, which gets no argument of ours, to the innermost run of its thread. (Not a thread-local object of
/// the language, which may have to be allocated first.)
class CRunSlot {
public:
    CRunSlot() noexcept : m_index(::TlsAlloc()) {}
    ~CRunSlot()
    {
        if (m_index != TLS_OUT_OF_INDEXES) ::TlsFree(m_index);
    }
    CRunSlot(CRunSlot const &) = delete;
    CRunSlot & operator=(CRunSlot const &) = delete;

    SRun const * Get() const noexcept
    {
        const CLastErrorKeeper keeper;
        return static_cast<SRun const *>(::TlsGetValue(m_index));
    }
    void Set(SRun const * run) noexcept { ::TlsSetValue(m_index, const_cast<SRun *>(run)); }

private:
    const DWORD m_index;
};

CRunSlot g_runs;

/// Makes a run the innermost of its thread for a scope.
class CInnermost {
public:
    explicit CInnermost(SRun & run) noexcept : m_run(run)
    {
        run.outer = g_runs.Get();
        g_runs.Set(&run);
    }
    ~CInnermost() { g_runs.Set(m_run.outer); }
    CInnermost(CInnermost const &) = delete;
    CInnermost & operator=(CInnermost const &) = delete;

private:
    SRun & m_run;
};

/// Languages mark their exceptions by this bit, which the system leaves to others.
constexpr DWORD MadeBySoftware = 1U << 29;

/// Errors and warnings of the system; what is below is mere news, such as a thread's name for a debugger.
bool IsFault(DWORD code) noexcept
{
    return (code & MadeBySoftware) == 0 && code >> 30 >= 2;
}

} // namespace

/// The filter of the frame below; the system calls it while the frames inside still stand.
extern "C" long KxraFilterFault(EXCEPTION_POINTERS * exception, void *)
{
    if (!IsFault(exception->ExceptionRecord->ExceptionCode)) return EXCEPTION_CONTINUE_SEARCH;
    if (SRun const * const run = g_runs.Get()) run->onFault(run->argument);
    return EXCEPTION_EXECUTE_HANDLER;
}

namespace {

/// The frame with the filter. It has nothing to clean up, so that the handler is the only one that it has; its labels
/// stand once in the file.
[[gnu::noinline, gnu::noclone]] void RunInFrame(void (*body)(void *), void * argument)
{
    __try1(KxraFilterFault);
    body(argument);
    __except1;
}

} // namespace

void RunUnderFaultFilter(void (*body)(void *), void (*onFault)(void *) noexcept, void * argument)
{
    SRun run{onFault, argument, nullptr};
    const CInnermost innermost(run);
    RunInFrame(body, argument);
}

} // namespace Platform
