#ifndef TESTS_SUPPORT_KEPT_TRACE_H
#define TESTS_SUPPORT_KEPT_TRACE_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "VLK/CriticalSection.h"
#include "VLK/Trace.h"
#include "VLK/WaitObjects.h"

/// Put in place of the foundation's own trace, whose records nobody reads: one that keeps them. For one source file of
/// a program. One thread at a time traces.

struct SLine {
    std::uint32_t flag;
    unsigned int module;
    std::string function;
    std::string text;

    bool operator==(SLine const &) const = default;
};
inline void PrintTo(SLine const & line, std::ostream * out)
{
    *out << line.flag << '/' << line.module << ' ' << line.function << ": " << line.text;
}

inline std::vector<SLine> g_lines;

namespace VLK::Trace {

constinit std::atomic<CTrace *> CTrace::m_pVlkTrace{nullptr};
void CTrace::TellModuleLoaded(Misc::CModuleInfo &) {}

} // namespace VLK::Trace

namespace VLK::Internals {

CTraceStreamBuffer::CTraceStreamBuffer(std::uint32_t flag, Misc::CModuleInfo & module, char const *,
                                       char const * function, unsigned int)
    : CFormatStreamBuffer(FlagSilent | FlagTrace)
{
    g_lines.push_back({flag, module.GetModuleId(), function, ""});
}
CTraceStreamBuffer::CTraceStreamBuffer(std::uint32_t flag, Misc::CModuleInfo & module, char const * file,
                                       unsigned int line)
    : CTraceStreamBuffer(flag, module, file, "", line)
{
}
CTraceStreamBuffer::~CTraceStreamBuffer() = default;
unsigned int CTraceStreamBuffer::Write(char const * text, std::size_t n, unsigned int)
{
    g_lines.back().text.append(text, n);
    return URET_OK;
}
unsigned int CTraceStreamBuffer::Fill(int c, std::size_t n)
{
    g_lines.back().text.append(n, static_cast<char>(c));
    return URET_OK;
}

} // namespace VLK::Internals

#endif
