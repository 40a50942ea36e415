#ifndef TESTS_VLK_THREAD_POOL_RECORDED_TRACE_H
#define TESTS_VLK_THREAD_POOL_RECORDED_TRACE_H

#include <algorithm>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "VLK/Trace.h"

/// Put in place of the foundation's own trace, whose records nobody reads: one that keeps what any thread traces. For
/// one source file of a program.

/// Switches trace bits on and keeps the records, for a scope. One at a time.
class CRecordedTrace {
public:
    /// Called with the text of each record, on the thread that traced it, which it may hold up.
    using Hook = std::function<void(std::string const & text)>;

    explicit CRecordedTrace(
        std::uint32_t bits, Hook hook = [](std::string const &) {})
    {
        {
            std::lock_guard const lock(m_Lock);
            m_Records.clear();
            m_Hook = std::move(hook);
        }
        VLK::Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(bits);
    }
    ~CRecordedTrace() { VLK::Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(0); }
    CRecordedTrace(CRecordedTrace const &) = delete;
    CRecordedTrace & operator=(CRecordedTrace const &) = delete;

    /// The texts of the function's records, in their order.
    static std::vector<std::string> TextsOf(std::string const & function)
    {
        std::vector<std::string> texts;
        std::lock_guard const lock(m_Lock);
        for (auto const & record : m_Records) {
            if (record.first == function) texts.push_back(record.second);
        }
        return texts;
    }
    static bool Has(std::string const & function, std::string const & text)
    {
        std::vector<std::string> const texts = TextsOf(function);
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }

    static void Keep(std::string function, std::string text)
    {
        Hook hook;
        {
            std::lock_guard const lock(m_Lock);
            m_Records.emplace_back(std::move(function), text);
            hook = m_Hook;
        }
        hook(text);
    }

private:
    static inline std::mutex m_Lock;                                          ///< guards the rest
    static inline std::vector<std::pair<std::string, std::string>> m_Records; ///< function and text
    static inline Hook m_Hook;
};

namespace VLK::Trace {

constinit std::atomic<CTrace *> CTrace::m_pVlkTrace{nullptr};
void CTrace::TellModuleLoaded(Misc::CModuleInfo &) {}

} // namespace VLK::Trace

namespace VLK::Internals {

// The record begins with the function and a newline.
CTraceStreamBuffer::CTraceStreamBuffer(std::uint32_t, Misc::CModuleInfo &, char const *, char const * function,
                                       unsigned int)
    : CFormatStreamBuffer(FlagSilent | FlagTrace)
{
    m_Record << function << '\n';
}
CTraceStreamBuffer::CTraceStreamBuffer(std::uint32_t flag, Misc::CModuleInfo & module, char const * file,
                                       unsigned int line)
    : CTraceStreamBuffer(flag, module, file, "", line)
{
}
CTraceStreamBuffer::~CTraceStreamBuffer()
{
    std::string const record(m_Record.data(), m_Record.size());
    std::size_t const end = record.find('\n');
    CRecordedTrace::Keep(record.substr(0, end), record.substr(end + 1));
}
unsigned int CTraceStreamBuffer::Write(char const * text, std::size_t n, unsigned int)
{
    m_Record << Strings::CSubStringRef(text, n);
    return URET_OK;
}
unsigned int CTraceStreamBuffer::Fill(int c, std::size_t n)
{
    m_Record << std::string(n, static_cast<char>(c));
    return URET_OK;
}

} // namespace VLK::Internals

#endif
