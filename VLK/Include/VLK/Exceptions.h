#ifndef VLK_EXCEPTIONS_H
#define VLK_EXCEPTIONS_H

#include <boost/format/format_fwd.hpp>
#include <cstddef>
#include <cstdint>

#include "VLK/ErrorLog.h"
#include "VLK/Export.h"
#include "VLK/FormatStream.h"
#include "VLK/ThrowState.h"

/// The error records of the foundation. How a function raises and hands errors on: ThrowState.h.
///
/// A record is one heap block: the code, the system's error, the place where it arose, each place it passed on its
/// way up, and a message for each. It is born in a CException, lies on the thread's pending chain while the
/// exception flies, passes through one CExceptionLog per stage, and ends as the thread's error log or in a caller's
/// CErrorLog. Records belong to their thread and need no lock. Nothing here fails: what can't be recorded for want of
/// memory is left out.
namespace VLK::Internals {

/// The text area of a record as the sink of format streams. Format errors are silent.
class VLK_API CExceptionBuffer : public Output_Streams::Base_Classes::CFormatStreamBuffer {
public:
    ~CExceptionBuffer() override;
    CExceptionBuffer(CExceptionBuffer const &) = delete;
    CExceptionBuffer & operator=(CExceptionBuffer const &) = delete;

    unsigned int Write(char const * text, std::size_t n, unsigned int upper) override;
    unsigned int Fill(int c, std::size_t n) override;

    /// The error code; 0 without a record.
    std::uint32_t GetError() const noexcept;
    /// The same; `native` gets the system's error, of kind 0 when there is none.
    std::uint32_t GetError(Exceptions::NATIVE_ERROR & native) const noexcept;
    /// Drops the record.
    void Clear() noexcept;

protected:
    /// Takes `data` over; keeps a reference to the block.
    CExceptionBuffer(CThreadCB * thread, Exceptions::ERRLOG_DATA * data) noexcept;
    /// Ends the text with a newline, if its last line has none, and a NUL.
    void Terminate() noexcept;
    /// Room for n more characters and a NUL behind the text; false when it can't be had.
    bool Reserve(std::size_t n) noexcept;
    /// Where no exception is under way or being handled, the records on the pending chain belong to exceptions whose
    /// handlers didn't ask for them: nobody ever will.
    void DropForgotten() noexcept;
    /// Puts the record on the thread's pending chain.
    void MakePending() noexcept;

    Exceptions::ERRLOG_DATA * m_pData; ///< owned; null: no record
    CThreadCB * m_pThread;             ///< counted; null: the thread has no block
};

} // namespace VLK::Internals

namespace VLK::Exceptions {

class CFormatStreamCurrExc;

/// A new error at its origin; made by CThrowState::StartException. Lives for the one expression that raises.
class VLK_API CException : public Internals::CExceptionBuffer {
public:
    /// Each sets the record's code and opens the stream of its message. What stands in the format behind the last
    /// inserted value is not part of the message, and so a message without any value is lost.
    CFormatStreamCurrExc prepareThrow(std::uint32_t code);
    CFormatStreamCurrExc prepareThrow(std::uint32_t code, char const * format);
    CFormatStreamCurrExc prepareThrow(std::uint32_t code, NATIVE_ERROR const & native, char const * format);
    CFormatStreamCurrExc prepareThrow(std::uint32_t code, NATIVE_ERROR const & native, boost::format const & text);
    /// Does not store the code: the record's error stays 0.
    CFormatStreamCurrExc prepareThrow(std::uint32_t code, boost::format const & text);
    /// The origin is the place given, not the one that the first handler tells.
    CFormatStreamCurrExc prepareThrow(std::uint32_t code, SOURCE_INFO const & source, char const * format);

    /// Ends the message, puts the record on the thread's pending chain and throws an unsigned int of value 0. Returns
    /// only when the record was taken away meanwhile.
    void tryThrow();

private:
    friend class CThrowState;
    CException(Internals::CThreadCB * thread, unsigned int line) noexcept;
    static ERRLOG_DATA * NewRecord(unsigned int line) noexcept;

    bool m_bNoMemory; ///< there never was a record; it throws all the same
};

/// The stream that prepareThrow returns.
class VLK_API CFormatStreamCurrExc : public Output_Streams::CFormatStream {
public:
    CFormatStreamCurrExc(CException & exception, char const * format)
        : CFormatStream(exception, format), m_pException(&exception)
    {
    }
    CException * currExcGet() const noexcept { return m_pException; }

private:
    CException * m_pException;
};

/// A caught error in a handler, with an entry of its own in the record; made by CThrowState::ContinueException. When
/// it ends without having thrown, the record becomes the thread's error log.
class VLK_API CExceptionLog : public Internals::CExceptionBuffer {
public:
    ~CExceptionLog() override;

    /// A stream for this stage's message.
    Output_Streams::CFormatStream Format(char const * format) override;

    /// Throws on, when the caller of the function has throwing enabled. Otherwise the record becomes the thread's
    /// error log and the result is `code`; so it is without a record, when it has been taken away.
    unsigned int tryThrow(unsigned int code);
    unsigned int tryThrow() { return tryThrow(URET_Error); }

    /// Notes a word in the record.
    void SetHeader(std::uint32_t header) noexcept;
    /// Moves the record to `log`.
    CExceptionLog & operator>>(CErrorLog & log) noexcept;

private:
    friend class CThrowState;
    CExceptionLog(Internals::CThreadCB * thread, ERRLOG_DATA * data, unsigned int saved,
                  SOURCE_INFO const & source) noexcept;
    void AddEntry(SOURCE_INFO const & source) noexcept;
    bool NewestHasText() const noexcept;
    void TerminateStage() noexcept;
    void MakeThreadLog() noexcept;

    unsigned int m_uSaved; ///< 0: the caller has throwing enabled
    bool m_bNoRecord;      ///< the exception came without one
};

/// Throws what the stream's exception holds. For the macros of ThrowState.h.
[[noreturn]] VLK_API void Raise(CFormatStreamCurrExc && stream);

template <class... TValues>
[[noreturn]] void RaiseText(CException && exception, std::uint32_t code, char const * format, TValues const &... values)
{
    CFormatStreamCurrExc stream = exception.prepareThrow(code, format);
    static_cast<void>((static_cast<Output_Streams::CFormatStream &>(stream) << ... << values));
    Raise(static_cast<CFormatStreamCurrExc &&>(stream));
}

template <class... TValues>
[[noreturn]] void RaiseText(CException && exception, std::uint32_t code, NATIVE_ERROR const & native,
                            char const * format, TValues const &... values)
{
    CFormatStreamCurrExc stream = exception.prepareThrow(code, native, format);
    static_cast<void>((static_cast<Output_Streams::CFormatStream &>(stream) << ... << values));
    Raise(static_cast<CFormatStreamCurrExc &&>(stream));
}

} // namespace VLK::Exceptions

#endif
