#ifndef VLK_EVENT_HANDLER_H
#define VLK_EVENT_HANDLER_H

#include <initializer_list>
#include <memory>

#include "VLK/Export.h"

namespace VLK::Internals {

class CEventHandlerImpl;

/// The owner of an object's hidden part; a moved-from one is null.
template <class T>
using TMovablePtr = std::unique_ptr<T>;

} // namespace VLK::Internals

namespace VLK::Threading {

namespace CEventHandlerNS::wait_forNS {

/// What a wait found.
struct TResult {
    bool notified = false; ///< false: the time was over first
    int id = 0x7FFFFFFF;   ///< whose notification was taken
    bool operator==(TResult const &) const noexcept = default;
};

} // namespace CEventHandlerNS::wait_forNS

/// A counting rendezvous on numbers: each notification of an id lets one wait for it go on, also one that comes later.
/// Ids that nobody waits for are remembered for ever.
///
/// Threads  notifyOne and wait_for from any thread; construction, moving and destruction when nobody else uses it.
/// Errors   NullPointer on a moved-from object, and on one that was made without memory. The interrupts of threads
///          don't break the wait. When a mutex can't be locked, std::system_error leaves both operations as it is,
///          on threads that disabled throwing too: the one exception of another kind that leaves the foundation. A
///          handler is no object of the foundation's waits but stands on the mutex of the standard library, and a
///          caller tells by the type that the rendezvous itself is broken. Nothing has changed then: the id isn't
///          notified, and no notification is taken.
class VLK_API CEventHandler {
public:
    using TResult = CEventHandlerNS::wait_forNS::TResult;

    /// Never raises: without memory the next call does.
    CEventHandler() noexcept;
    CEventHandler(CEventHandler && other) noexcept;
    virtual ~CEventHandler();

    /// Raises OutOfMemory; the id isn't notified then.
    void notifyOne(int id);

    /// Takes one notification of the first of `ids` that has one; the order of `ids` decides, not that of the
    /// notifications. milliseconds: how long to wait for one; 0, and values from 2^63 on, only look.
    TResult wait_for(std::initializer_list<int> const & ids, unsigned long long milliseconds);

private:
    Internals::TMovablePtr<Internals::CEventHandlerImpl> m_pImpl;
};

} // namespace VLK::Threading

#endif
