#ifndef VLK_ERROR_LOG_H
#define VLK_ERROR_LOG_H

#include <cstdint>

#include "VLK/Export.h"
#include "VLK/SourceInfo.h"

namespace VLK::Exceptions {

struct ERRLOG_DATA;

/// Owner of one finished error record: the code, the places that the error passed, each with its message.
/// Empty at first. One object, one thread. Nothing here raises.
///
/// Print one with CFormatStream: "%s" gives the head, "%S" the head and the stack of places.
class VLK_API CErrorLog {
public:
    CErrorLog() noexcept : m_pData(nullptr) {}
    ~CErrorLog() { Clear(); }
    CErrorLog(CErrorLog const &) = delete;
    CErrorLog & operator=(CErrorLog const &) = delete;

    /// The error code; 0 without a record.
    std::uint32_t GetError() const noexcept;
    /// The same; `native` gets the system's error, of kind 0 when there is none.
    std::uint32_t GetError(NATIVE_ERROR & native) const noexcept;
    /// The message of a place, 0 being the origin: "" when it has none, null beyond the last. Valid until the
    /// record goes. The first character of the origin's message is not part of what this gives.
    char const * GetErrorMsg(unsigned int index) const noexcept;
    /// The place itself; null beyond the last, and for all of them once any module was unloaded since the error
    /// arose, because the places are data of the modules.
    SOURCE_INFO const * GetSrcInfo(unsigned int index) const noexcept;
    /// Number of places.
    unsigned int GetLogCount() const noexcept;
    /// What CExceptionLog::SetHeader noted; 0 otherwise.
    std::uint32_t GetHeader() const noexcept;

    /// Frees the record.
    void Clear() noexcept;
    /// Moves the record to `target`, which frees its own; this log is empty then.
    CErrorLog & operator>>(CErrorLog & target) noexcept;

protected:
    friend class CExceptionLog;
    /// Takes the record over (null: none) and frees the former one.
    void SetLogData(ERRLOG_DATA * data) noexcept;

private:
    ERRLOG_DATA * m_pData;
};

} // namespace VLK::Exceptions

#endif
