#ifndef VLK_WAITABLE_CALL_H
#define VLK_WAITABLE_CALL_H

#include "VLK/Delegates.h"
#include "VLK/Export.h"
#include "VLK/WaitObjects.h"

namespace VLK::Delegates_and_Calls {

/// A delegate that others can wait for: its block holds an event that is set, for good, when the call has ended. Bind
/// functions with TDelegate<CWaitableCall>; copies share the block, so one copy can be a thread's or a pool's job and
/// another be waited for.
///
/// The block keeps what the call raises: GetError() tells it behind the wait, and nothing goes on to the caller.
/// Threads: one call at a time; any thread may wait.
class VLK_API CWaitableCall : public CDelegate {
public:
    class VLK_API CCbHead : public CCbBase {
    protected:
        /// Makes the call of a derived block, which has Invoke() for it, keeps its error and sets the event.
        template <class TBlock>
        void Make(TBlock & block);

    private:
        friend class CWaitableCall;
        /// In a handler: the error becomes the block's.
        void KeepError() noexcept;

        Threading::CEvent m_Ended; ///< manual reset
    };

    /// Null: there is nothing to wait for.
    CWaitableCall() noexcept = default;

    /// Waits until the call has ended: URET_OK or URET_Timeout, milliseconds as with every wait. Raises
    /// SyncNotInitialized without a block, and the interrupts of the thread.
    unsigned int Wait(unsigned int timeout);

    /// For a CWaiter, with mask 0. Without a block an empty handle.
    operator Threading::CWaitHandle() const noexcept;

protected:
    /// Gives up the former block, takes over `head` with its count of 1 and makes its event. Raises SyncCreate; the
    /// delegate is null then and the block gone.
    unsigned int Init(CCbHead * head);
};

template <class TBlock>
void CWaitableCall::CCbHead::Make(TBlock & block)
{
    try {
        block.Invoke();
    } catch (...) {
        KeepError();
    }
    m_Ended.Set();
}

} // namespace VLK::Delegates_and_Calls

#endif
