#ifndef VLK_THROW_STATE_H
#define VLK_THROW_STATE_H

#include <atomic>

#include "VLK/Export.h"
#include "VLK/ResultCodes.h"
#include "VLK/SourceInfo.h"
#include "VLK/SyncCounter.h"

/// How a function of the foundation fails.
///
/// Every public function that can fail opens a CThrowState, does its work in a try block and ends with one of
/// the handlers below. Inside the function errors always fly as exceptions, whatever the caller has chosen. At the
/// function's boundary the handler decides: the exception goes on, or, on a thread that disabled throwing, the
/// function returns URET_Error and the record stays in the thread's error log.
///
///     unsigned int CThing::Open(CSubStringRef const & name)
///     {
///         CThrowState state;
///         try {
///             if (m_bOpen) VLK_RAISE(state, Errors::ObjectInErrorState);
///             if (m_uCount >= Max) VLK_RAISE_TEXT(state, Errors::MaxCount, "current count=%d", m_uCount);
///             const Platform::ErrorCode error = Platform::OpenIt(...);
///             if (error != Platform::Success) VLK_RAISE_OS(state, Errors::OperatingSystem, error);
///             return URET_OK;
///         }
///         VLK_THROW_NEXT(state)
///     }
///
/// A raise and its first handler stand in the same source file: the handler supplies the module and the file, the
/// raise the line.
///
/// Raises (need VLK/Exceptions.h; never return):
///     VLK_RAISE(state, code)                                   the code alone
///     VLK_RAISE_TEXT(state, code, format, values...)           with a message
///     VLK_RAISE_NATIVE(state, code, native)                    with a NATIVE_ERROR
///     VLK_RAISE_NATIVE_TEXT(state, code, native, format, values...)
///     VLK_RAISE_OS(state, code, error)                         with an error number of the platform layer
///
/// Handlers, behind the try block:
///     VLK_THROW_NEXT(state)                 pass on; the function returns URET_Error with throwing disabled
///     VLK_THROW_NEXT_AS(state, value)       pass on; the function returns value with throwing disabled
///     VLK_THROW_NEXT_VOID(state)            pass on; nothing to return, the function ends
///     VLK_END_EXCEPTION(state)              record in the thread's error log and drop: the function goes on
///
/// A handler with work of its own:
///     } catch (...) {
///         VLK_CONTINUE(state, log);                       // CExceptionLog log, needs VLK/Exceptions.h
///         log.Format("host %s") << name;                  // a message of this stage
///         return log.tryThrow();                          // or log.tryThrow(code), or log >> errorLog
///     }
///
/// The record travels in the thread's control block. A thread that the foundation did not start has one only while a
/// CCallBackGuard (or another holder) lives on it; without that the exception flies all the same, but its record is
/// lost at the first function that it leaves. A record that no handler asks for goes with the next raise.
///
/// The handlers catch everything: an exception of the C++ library becomes a record at that place (no memory:
/// Errors::OutOfMemory), and what leaves the function is the foundation's own exception, an unsigned int of 0.

#define VLK_RAISE(state, code) ::VLK::Exceptions::Raise((state).StartException(__LINE__).prepareThrow(code))
#define VLK_RAISE_TEXT(state, code, ...)                                                                               \
    ::VLK::Exceptions::RaiseText((state).StartException(__LINE__), code, __VA_ARGS__)
#define VLK_RAISE_NATIVE(state, code, native)                                                                          \
    ::VLK::Exceptions::Raise((state).StartException(__LINE__).prepareThrow(code, native, ""))
#define VLK_RAISE_NATIVE_TEXT(state, code, native, ...)                                                                \
    ::VLK::Exceptions::RaiseText((state).StartException(__LINE__), code, native, __VA_ARGS__)
#define VLK_RAISE_OS(state, code, error) VLK_RAISE_NATIVE(state, code, ::VLK::Exceptions::OsError(error))

#define VLK_THROW_NEXT(state) VLK_THROW_NEXT_AS(state, ::VLK::URET_Error)
#define VLK_THROW_NEXT_AS(state, value)                                                                                \
    catch (...)                                                                                                        \
    {                                                                                                                  \
        VLK_SOURCE(vlkSource);                                                                                         \
        (state).ThrowNext(vlkSource);                                                                                  \
        return value;                                                                                                  \
    }
#define VLK_THROW_NEXT_VOID(state)                                                                                     \
    catch (...)                                                                                                        \
    {                                                                                                                  \
        VLK_SOURCE(vlkSource);                                                                                         \
        (state).ThrowNext(vlkSource);                                                                                  \
    }
#define VLK_END_EXCEPTION(state)                                                                                       \
    catch (...)                                                                                                        \
    {                                                                                                                  \
        VLK_SOURCE(vlkSource);                                                                                         \
        (state).EndException(vlkSource);                                                                               \
    }
#define VLK_CONTINUE(state, log)                                                                                       \
    VLK_SOURCE(log##Source);                                                                                           \
    ::VLK::Exceptions::CExceptionLog log = (state).ContinueException(log##Source)

namespace VLK::Internals {
class CThreadCB;
}

namespace VLK::Exceptions {

class CException;
class CExceptionLog;
class CThrowGuard;

/// How many threads have throwing disabled at this moment, in the whole process.
/// While it is 0 no CThrowState looks at its thread: a thread's own flag can only be set while the counter is not 0.
///
/// The library "orVLK" exports a counter of this name, and all modules of a process that has the library share it.
/// It is looked for when this module is loaded (Platform/SharedModule.h), so nothing is linked against it: the one that
/// the process has loaded, else one that the loader finds by its name. It stays loaded as long as this module. Without
/// the library, or in one without the counter, the module counts for itself.
struct VLK_API CThrowStateData {
    static Threading::CSyncCounter m_DisableCnt; ///< this module's own
    /// The counter in use.
    static Threading::CSyncCounter & Counter() noexcept { return *m_pCounter.load(std::memory_order_relaxed); }

private:
    friend class CSharedCounter;
    /// Changes only while the module is loaded or unloaded, when no CThrowState lives. Relaxed: a thread that is still
    /// about at the process's end gets one of the two.
    static std::atomic<Threading::CSyncCounter *> m_pCounter;
};

/// Opens a function of the foundation and decides how it fails; see the top of this header. Also the scope in
/// which a caller chooses return codes instead of exceptions, with DisableThrow().
///
/// Lives on the stack of one thread; several nest in the order of the calls. The end of its scope restores the
/// thread's choice. It never raises by itself. While no thread has disabled throwing it costs one test.
class VLK_API CThrowState {
public:
    CThrowState() noexcept : m_pSelf(nullptr), m_pThread(nullptr), m_uSaved(0)
    {
        if (CThrowStateData::Counter().Count() != 0) Init();
    }
    ~CThrowState()
    {
        if (m_pSelf != nullptr) Restore();
    }
    CThrowState(CThrowState const &) = delete;
    CThrowState & operator=(CThrowState const &) = delete;

    /// From here to the end of the scope, failing functions that this thread calls throw, or return URET_Error.
    /// Each returns the former value: 1 disabled, 0 enabled.
    unsigned int EnableThrow() noexcept;
    unsigned int DisableThrow() noexcept;

    /// A new error that arises in this source line. Without memory for its record it still can be thrown.
    CException StartException(unsigned int line) noexcept;

    /// In a handler: the caught exception's record with a new entry for this place. Until the end of the state's
    /// scope (or of the guard's) throwing is disabled for what the handler itself calls.
    CExceptionLog ContinueException(SOURCE_INFO const & source) noexcept;
    CExceptionLog ContinueException(CThrowGuard & guard, SOURCE_INFO const & source) noexcept;

    /// In a handler: throws on, or, when the caller disabled throwing, records the error and returns URET_Error.
    unsigned int ThrowNext(SOURCE_INFO const & source);
    /// In a handler: the error ends in the thread's error log.
    void EndException(SOURCE_INFO const & source) noexcept;

private:
    friend class CThrowGuard;
    void Init() noexcept;
    void Restore() noexcept;
    bool Bind() noexcept;
    unsigned int SetDisabled(unsigned int disabled) noexcept;
    bool AdoptForeignException(unsigned int line) noexcept;
    CExceptionLog TakeRecord(SOURCE_INFO const & source, unsigned int saved) noexcept;

    CThrowState * m_pSelf;            ///< this, or null until bound to a thread
    Internals::CThreadCB * m_pThread; ///< counted; null when the thread can't have a block
    unsigned int m_uSaved;            ///< the thread's throw-disabled flag before this scope
};

/// Bounds the stretch of a handler in which throwing is disabled, for a function that goes on behind it: its
/// end clears the thread's flag again. Stands in the catch block, in front of ContinueException.
class VLK_API CThrowGuard {
public:
    CThrowGuard() noexcept : m_pState(nullptr) {}
    ~CThrowGuard();
    CThrowGuard(CThrowGuard const &) = delete;
    CThrowGuard & operator=(CThrowGuard const &) = delete;

private:
    friend class CThrowState;
    CThrowState * m_pState;
};

} // namespace VLK::Exceptions

#endif
