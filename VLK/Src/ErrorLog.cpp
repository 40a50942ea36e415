#include "VLK/ErrorLog.h"

#include <utility>

#include "ErrLogData.h"

namespace VLK::Exceptions {

std::uint32_t CErrorLog::GetError() const noexcept
{
    return m_pData != nullptr ? m_pData->error : 0;
}

std::uint32_t CErrorLog::GetError(NATIVE_ERROR & native) const noexcept
{
    native = m_pData != nullptr ? m_pData->native : NATIVE_ERROR{NativeNone, 0};
    return GetError();
}

char const * CErrorLog::GetErrorMsg(unsigned int index) const noexcept
{
    return index < GetLogCount() ? m_pData->TextOf(index) : nullptr;
}

SOURCE_INFO const * CErrorLog::GetSrcInfo(unsigned int index) const noexcept
{
    if (index >= GetLogCount() || !m_pData->SourcesAreValid()) return nullptr;
    return m_pData->entries[index].source;
}

unsigned int CErrorLog::GetLogCount() const noexcept
{
    return m_pData != nullptr ? m_pData->entryCount : 0;
}

std::uint32_t CErrorLog::GetHeader() const noexcept
{
    return m_pData != nullptr ? m_pData->header : 0;
}

void CErrorLog::Clear() noexcept
{
    SetLogData(nullptr);
}

CErrorLog & CErrorLog::operator>>(CErrorLog & target) noexcept
{
    if (&target != this) target.SetLogData(std::exchange(m_pData, nullptr));
    return *this;
}

void CErrorLog::SetLogData(ERRLOG_DATA * data) noexcept
{
    ERRLOG_DATA::Free(std::exchange(m_pData, data));
}

} // namespace VLK::Exceptions
