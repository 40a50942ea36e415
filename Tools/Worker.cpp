#include "Tools/Worker.h"

namespace Coresim {

using namespace VLK;

CWorker::~CWorker()
{
    Stop();
}

void CWorker::Start(Delegates_and_Calls::CDelegate const & body)
{
    m_interrupt.Init();
    m_body = body;
    m_thread.Create(Delegates_and_Calls::TDelegate<Delegates_and_Calls::CCall>(this, &CWorker::Run),
                    /*suspended=*/false);
}

void CWorker::Stop()
{
    if (m_thread.GetThreadID() == 0) return;
    m_stopping.store(true, std::memory_order_relaxed);
    m_interrupt.Set();
    // Taken out rather than disabled: what is set meanwhile is seen again when it is put back.
    Threading::CCurrentThread current;
    Threading::CWaitInterrupt const own = current.SetWaitInterrupt(nullptr);
    m_thread.Wait(Platform::Infinite); // the interrupted thread ends at its next wait
    current.SetWaitInterrupt(&own);
}

void CWorker::Run()
{
    Threading::CInterruptGuard guard;
    guard.SetWaitInterrupt(m_interrupt);
    m_body();
}

} // namespace Coresim
