#include "VLK/Exceptions.h"

#include <boost/format.hpp>
#include <cstring>
#include <exception>
#include <utility>

#include "ErrLogData.h"
#include "VLK/ThreadCB.h"

namespace VLK::Internals {

using Exceptions::ERRLOG_DATA;
using Exceptions::NATIVE_ERROR;

CExceptionBuffer::CExceptionBuffer(CThreadCB * thread, ERRLOG_DATA * data) noexcept
    : CFormatStreamBuffer(FlagSilent), m_pData(data), m_pThread(thread)
{
    if (m_pThread != nullptr) m_pThread->Incr();
}

CExceptionBuffer::~CExceptionBuffer()
{
    Clear();
    Windows::CWaitCB::Drop(m_pThread);
}

unsigned int CExceptionBuffer::Write(char const * text, std::size_t n, unsigned int upper)
{
    if (m_pData == nullptr || !Reserve(n)) return URET_OK;
    char * const end = m_pData->Text() + m_pData->textLength;
    std::memcpy(end, text, n);
    if (upper != 0) UpperCase(end, n);
    m_pData->textLength += n;
    end[n] = '\0';
    return URET_OK;
}

unsigned int CExceptionBuffer::Fill(int c, std::size_t n)
{
    if (m_pData == nullptr || !Reserve(n)) return URET_OK;
    char * const end = m_pData->Text() + m_pData->textLength;
    std::memset(end, c, n);
    m_pData->textLength += n;
    end[n] = '\0';
    return URET_OK;
}

std::uint32_t CExceptionBuffer::GetError() const noexcept
{
    return m_pData != nullptr ? m_pData->error : 0;
}

std::uint32_t CExceptionBuffer::GetError(NATIVE_ERROR & native) const noexcept
{
    native = m_pData != nullptr ? m_pData->native : NATIVE_ERROR{Exceptions::NativeNone, 0};
    return GetError();
}

void CExceptionBuffer::Clear() noexcept
{
    ERRLOG_DATA::Free(std::exchange(m_pData, nullptr));
}

void CExceptionBuffer::Terminate() noexcept
{
    CExceptionBuffer::Write("\n", m_uColumn != 0 ? 2 : 0, 0); // the newline with its NUL
    if (m_uColumn == 0) CExceptionBuffer::Write("", 1, 0);
    m_uColumn = 0;
}

bool CExceptionBuffer::Reserve(std::size_t n) noexcept
{
    const std::size_t room = m_pData->textCapacity - m_pData->textLength - 1;
    return n <= room || ERRLOG_DATA::Grow(m_pData, n - room, 0);
}

void CExceptionBuffer::DropForgotten() noexcept
{
    if (m_pThread == nullptr || std::uncaught_exceptions() != 0 || std::current_exception() != nullptr) return;
    ERRLOG_DATA::FreeChain(std::exchange(m_pThread->m_pPending, nullptr));
}

void CExceptionBuffer::MakePending() noexcept
{
    ERRLOG_DATA * const data = std::exchange(m_pData, nullptr);
    if (m_pThread == nullptr) {
        ERRLOG_DATA::Free(data);
        return;
    }
    DropForgotten();
    data->next = m_pThread->m_pPending;
    m_pThread->m_pPending = data;
}

} // namespace VLK::Internals

namespace VLK::Exceptions {

namespace {

[[noreturn]] void ThrowObject()
{
    throw 0u;
}

} // namespace

void Raise(CFormatStreamCurrExc && stream)
{
    stream.currExcGet()->tryThrow();
    ThrowObject(); // not reached: the record of a raise stays until here
}

CException::CException(Internals::CThreadCB * thread, unsigned int line) noexcept
    : CExceptionBuffer(thread, ERRLOG_DATA::New(line)), m_bNoMemory(m_pData == nullptr)
{
}

CFormatStreamCurrExc CException::prepareThrow(std::uint32_t code)
{
    return prepareThrow(code, "");
}

CFormatStreamCurrExc CException::prepareThrow(std::uint32_t code, char const * format)
{
    if (m_pData != nullptr) m_pData->error = code;
    return CFormatStreamCurrExc(*this, format);
}

CFormatStreamCurrExc CException::prepareThrow(std::uint32_t code, NATIVE_ERROR const & native, char const * format)
{
    if (m_pData != nullptr) m_pData->native = native;
    return prepareThrow(code, format);
}

CFormatStreamCurrExc CException::prepareThrow(std::uint32_t code, NATIVE_ERROR const & native,
                                              boost::format const & text)
{
    return prepareThrow(code, native, text.str().c_str());
}

CFormatStreamCurrExc CException::prepareThrow(std::uint32_t, boost::format const & text)
{
    return CFormatStreamCurrExc(*this, text.str().c_str());
}

CFormatStreamCurrExc CException::prepareThrow(std::uint32_t code, SOURCE_INFO const & source, char const * format)
{
    if (m_pData != nullptr) {
        m_pData->firstSource = source;
        if (source.module != nullptr) m_pData->CountOrigin();
    }
    return prepareThrow(code, format);
}

void CException::tryThrow()
{
    if (m_pData == nullptr) {
        if (!m_bNoMemory) return;
        DropForgotten(); // or the handler would take one of them for this error's
        ThrowObject();
    }
    if (m_uColumn != 0 || m_pData->textLength > 1) {
        // Settled: the message begins behind its first character.
        m_pData->entries[0].textOffset = 1;
        Terminate();
    }
    MakePending();
    ThrowObject();
}

CExceptionLog::CExceptionLog(Internals::CThreadCB * thread, ERRLOG_DATA * data, unsigned int saved,
                             SOURCE_INFO const & source) noexcept
    : CExceptionBuffer(thread, data), m_uSaved(saved), m_bNoRecord(data == nullptr)
{
    if (m_pData == nullptr) return;
    m_pData->next = nullptr;
    if (m_pData->firstSource.module == nullptr) {
        m_pData->firstSource.module = source.module;
        m_pData->firstSource.file = source.file;
        m_pData->CountOrigin();
    }
    AddEntry(source);
}

void CExceptionLog::AddEntry(SOURCE_INFO const & source) noexcept
{
    constexpr std::size_t textRoom = 128;
    if (m_pData->entryCount == m_pData->entryCapacity && !ERRLOG_DATA::Grow(m_pData, textRoom, ERRLOG_DATA::EntryStep))
        return;
    m_pData->entries[m_pData->entryCount] = SErrLogEntry{&source, 0};
    ++m_pData->entryCount;
}

CExceptionLog::~CExceptionLog()
{
    if (m_pData == nullptr) return;
    TerminateStage();
    MakeThreadLog();
}

Output_Streams::CFormatStream CExceptionLog::Format(char const * format)
{
    if (m_pData != nullptr && m_pData->entryCount != 0 && !NewestHasText()) {
        // An offset of 0 would say that there is no message.
        if (m_pData->textLength == 0) Write("", 1, 0);
        m_pData->entries[m_pData->entryCount - 1].textOffset = m_pData->textLength;
    }
    return CExceptionBuffer::Format(format);
}

unsigned int CExceptionLog::tryThrow(unsigned int code)
{
    if (m_pData == nullptr) {
        // An exception that came without a record goes on without one; a record that was taken away ends here.
        if (m_bNoRecord && m_uSaved == 0 && std::current_exception() != nullptr) ThrowObject();
        return code;
    }
    TerminateStage();
    if (m_uSaved == 0) {
        MakePending();
        ThrowObject(); // instead of a rethrow, since what was caught may be an exception of the C++ library
    }
    MakeThreadLog();
    return code;
}

void CExceptionLog::SetHeader(std::uint32_t header) noexcept
{
    if (m_pData != nullptr) m_pData->header = header;
}

CExceptionLog & CExceptionLog::operator>>(CErrorLog & log) noexcept
{
    if (m_pData != nullptr) TerminateStage();
    log.SetLogData(std::exchange(m_pData, nullptr));
    return *this;
}

bool CExceptionLog::NewestHasText() const noexcept
{
    return m_pData->entryCount != 0 && m_pData->entries[m_pData->entryCount - 1].textOffset != 0;
}

void CExceptionLog::TerminateStage() noexcept
{
    if (m_uColumn != 0 || NewestHasText()) Terminate();
}

void CExceptionLog::MakeThreadLog() noexcept
{
    ERRLOG_DATA * const data = std::exchange(m_pData, nullptr);
    if (m_pThread == nullptr) {
        ERRLOG_DATA::Free(data);
        return;
    }
    m_pThread->m_ErrorLog.SetLogData(data);
}

} // namespace VLK::Exceptions
