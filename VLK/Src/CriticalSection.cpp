#include "VLK/CriticalSection.h"

namespace VLK::Threading::Native_OS {

CCriticalSection::CCriticalSection() noexcept : m_bUninitialised(true) {}

CCriticalSection::~CCriticalSection() = default;

void CCriticalSection::Use() noexcept
{
    if (m_bUninitialised.load(std::memory_order_relaxed)) m_bUninitialised.store(false, std::memory_order_relaxed);
}

unsigned int CCriticalSection::Init(unsigned int spinCount) noexcept
{
    m_Section.SetSpinCount(spinCount);
    Use();
    return URET_OK;
}

unsigned int CCriticalSection::Enter(CSyncGuard * guard) noexcept
{
    Use();
    m_Section.Enter();
    SetRestoreFn(guard, CSyncGuard::RestoreFn::Of<&CCriticalSection::Leave>(*this));
    return URET_OK;
}

unsigned int CCriticalSection::TryEnter(CSyncGuard * guard) noexcept
{
    Use();
    if (!m_Section.TryEnter()) return URET_Timeout;
    SetRestoreFn(guard, CSyncGuard::RestoreFn::Of<&CCriticalSection::Leave>(*this));
    return URET_OK;
}

unsigned int CCriticalSection::Leave() noexcept
{
    if (!m_bUninitialised.load(std::memory_order_relaxed)) m_Section.Leave();
    return URET_OK;
}

unsigned int CCriticalSection::SetSpinCount(unsigned int spinCount, unsigned int * old) noexcept
{
    const unsigned int former = m_Section.SetSpinCount(spinCount);
    Use();
    if (old != nullptr) *old = former;
    return URET_OK;
}

} // namespace VLK::Threading::Native_OS
