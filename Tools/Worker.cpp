#include "Tools/Worker.h"

namespace Coresim {

using namespace VLK;

CWorker::~CWorker()
{
    Stop();
}

void CWorker::Start(Delegates_and_Calls::CDelegate const & body)
{
    m_begun.Init(/*initialState=*/false, /*manualReset=*/true);
    m_body = body;
    m_thread.Create(Delegates_and_Calls::TDelegate<Delegates_and_Calls::CCall>(this, &CWorker::Run),
                    /*suspended=*/false);
}

void CWorker::Stop()
{
    if (m_thread.GetThreadID() == 0) return;
    Threading::CCurrentThread current;
    Threading::CSyncGuard guard;
    current.DisableInterrupt(guard, Threading::InterruptAll);
    m_begun.Wait(Platform::Infinite);
    m_thread.Cancel();
    m_thread.Wait(Platform::Infinite); // the cancelled thread ends at its next wait
}

void CWorker::Run()
{
    m_begun.Set();
    m_body();
}

} // namespace Coresim
