#include "VLK/Delegates.h"

#include "VLK/Exceptions.h"

namespace VLK::Delegates_and_Calls {

using Exceptions::CThrowState;

CDelegate::CCbBase::~CCbBase() = default;

void CDelegate::CCbBase::Prepare() {}

CDelegate::CDelegate(CDelegate const & other) noexcept : m_pBlock(other.m_pBlock)
{
    if (m_pBlock != nullptr) m_pBlock->Incr();
}

CDelegate & CDelegate::operator=(CDelegate const & other) noexcept
{
    CCbBase * const block = other.m_pBlock;
    if (block != nullptr) block->Incr();
    Release();
    m_pBlock = block;
    return *this;
}

CDelegate::~CDelegate()
{
    Release();
}

void CDelegate::Release() noexcept
{
    CCbBase * const block = std::exchange(m_pBlock, nullptr);
    if (block != nullptr && block->Decr() != 0) delete block;
}

unsigned int CDelegate::operator()()
{
    CThrowState state;
    try {
        if (m_pBlock != nullptr) m_pBlock->Call();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CDelegate::GetError() const noexcept
{
    return m_pBlock != nullptr ? m_pBlock->m_ErrorLog.GetError() : 0;
}

unsigned int CDelegate::GetError(Exceptions::CErrorLog & out) noexcept
{
    const unsigned int error = GetError();
    if (error != 0)
        m_pBlock->m_ErrorLog >> out;
    else
        out.Clear();
    return error;
}

unsigned int CCall::Init(CCbHead * head) noexcept
{
    Release();
    m_pBlock = head;
    return URET_OK;
}

unsigned int CDelegate::FailForMemory()
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::OutOfMemory);
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::Delegates_and_Calls
