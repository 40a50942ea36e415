#include "VLK/WaitableCall.h"

#include <memory>

#include "VLK/Exceptions.h"
#include "VLK/Waiter.h"

namespace VLK::Delegates_and_Calls {

using Exceptions::CThrowState;

void CWaitableCall::CCbHead::KeepError() noexcept
{
    CThrowState state;
    VLK_CONTINUE(state, log);
    log >> m_ErrorLog;
}

unsigned int CWaitableCall::Init(CCbHead * head)
{
    CThrowState state;
    try {
        Release();
        m_pBlock = head;
        return head->m_Ended.Init(/*initialState=*/false, /*manualReset=*/true);
    } catch (...) {
        Release();
        VLK_SOURCE(source);
        return state.ThrowNext(source);
    }
}

unsigned int CWaitableCall::Wait(unsigned int timeout)
{
    CThrowState state;
    try {
        Threading::CWaiter waiter;
        waiter << *this;
        return waiter.Wait(timeout, /*all=*/false);
    }
    VLK_THROW_NEXT(state)
}

CWaitableCall::operator Threading::CWaitHandle() const noexcept
{
    // Init lets no other block in.
    return m_pBlock != nullptr ? static_cast<CCbHead *>(m_pBlock)->m_Ended : Threading::CEvent();
}

} // namespace VLK::Delegates_and_Calls
