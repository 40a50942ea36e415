#include "VLK/Trace.h"

#include <boost/filesystem/path.hpp>
#include <boost/format.hpp>
#include <memory>
#include <new>

#include "LocalTimeText.h"
#include "Memory.h"
#include "StringStreamBuffer.h"
#include "VLK/Application.h"
#include "VLK/Exceptions.h"
#include "VLK/Functions.h"
#include "VLK/IniFile.h"
#include "VLK/Threads.h"
#include "VLK/ThrowState.h"

namespace VLK::Trace {

using INI_Files::CIniFile;
using INI_Files::CIniKey;
using INI_Files::CIniSection;
using Misc::CModuleInfo;
using Strings::TString;
using Threading::CSyncGuard;

namespace {

constexpr unsigned int ReadTimeoutMs = 2000;
constexpr std::uint32_t FlagsWithFileTrace = 0x60000000;
constexpr std::uint32_t FlagsWithoutFileTrace = 0x6fffffff;
constexpr unsigned int StandardMaxFileSize = 1024;
constexpr unsigned int StandardMaxBackupIndex = 5;
constexpr int LineCharacter = '*';

} // namespace

struct CTrace::SModuleFlags {
    SModuleFlags * next;
    std::uint32_t flags;
    TString<64> name;
};

constinit std::atomic<CTrace *> CTrace::m_pVlkTrace{nullptr};
constinit std::atomic<CTrace *> CTrace::m_pLiving{nullptr};

CTrace::CTrace() : m_uClosed(1), m_uFileTrace(0), m_pFlags(nullptr), m_uReserved(0) {}

CTrace::~CTrace()
{
    Exceptions::CThrowState state;
    state.DisableThrow();
    // Behind the list's lock nobody is on the way to this object any more.
    CSyncGuard guard;
    CModuleInfo::Lock(guard);
    if (m_pLiving.load(std::memory_order_relaxed) == this) m_pLiving.store(nullptr, std::memory_order_relaxed);
    Close();
}

unsigned int CTrace::Open(boost::filesystem::path const & iniFile, std::string const & section)
{
    Exceptions::CThrowState state;
    try {
        CSyncGuard guard;
        CModuleInfo::Lock(guard);
        if (m_pVlkTrace.load(std::memory_order_relaxed) != nullptr) VLK_RAISE(state, Errors::SecondTrace);
        m_Lock.Init(0);
        m_uClosed.store(0, std::memory_order_relaxed);
        ReadConfiguration(iniFile, section);
        m_pLiving.store(this, std::memory_order_relaxed);
        m_pVlkTrace.store(this, std::memory_order_release);
        WriteBanner();
        return URET_OK;
    } catch (...) {
        VLK_CONTINUE(state, log);
        if (m_pVlkTrace.load(std::memory_order_relaxed) != this) {
            m_uClosed.store(1, std::memory_order_relaxed);
            FreeFlags();
        }
        return log.tryThrow();
    }
}

void CTrace::ReadConfiguration(boost::filesystem::path const & iniFile, std::string const & section)
{
    CIniFile file;
    file.Read(iniFile, ReadTimeoutMs);
    CIniSection const entries = file[section];
    CIniKey const end = entries.End();
    for (CIniKey key = entries.First(); key != end; key++) {
        TString<32> name;
        key.Name(name);
        if (name.size() != 0 && name.data()[0] == '_') continue;
        std::unique_ptr<SModuleFlags> node(new (std::nothrow) SModuleFlags);
        if (node == nullptr) {
            Internals::RaiseOutOfMemory();
            return;
        }
        node->name = name;
        key.GetValue(node->flags);
        node->next = m_pFlags;
        m_pFlags = node.release();
    }
    unsigned int debugWait = 0;
    entries["_DebugWait"].GetValue(debugWait, 0);
    if (Misc::pVlkApp != nullptr) Misc::pVlkApp->SetDebugWait(debugWait != 0);
    entries["_FileTrace"].GetValue(m_uFileTrace, 0);
    // No writer exists that would need these two, but a value that is no number is an error all the same.
    unsigned int unused = 0;
    entries["_MaxFileSize"].GetValue(unused, StandardMaxFileSize);
    entries["_MaxBackupIndex"].GetValue(unused, StandardMaxBackupIndex);
    if (m_uFileTrace != 0) PrepareLogDirectory(iniFile);
}

void CTrace::PrepareLogDirectory(boost::filesystem::path const & iniFile)
{
    boost::filesystem::path program;
    Misc::CVlkApplication::GetProcessPath(program);
    std::string const pattern =
        (boost::format("%s_%d_%%N.log") % program.filename().string() % Functions::GetCurrentProcessID()).str();
    boost::filesystem::path const directory = iniFile.parent_path().parent_path() / "logs";
    m_LogDirectory = directory.string();
    // The full pattern is what a writer of trace files would take; there is none.
    static_cast<void>(directory / pattern);
}

void CTrace::WriteBanner()
{
    Internals::CTraceStreamBuffer record(TraceInformation, Misc::VLK_MODULE_INFO_VlkLib, VLK_SOURCE_FILE, __func__,
                                         __LINE__);
    record.Format("\n%=*100c\n\n") << LineCharacter;
    record.Format("Tracing started at: %s\n\nModule list: ") << Internals::LocalTimeText();
    CSyncGuard guard;
    m_Lock.Enter(guard);
    for (CModuleInfo * module = CModuleInfo::Enum(nullptr); module != nullptr; module = CModuleInfo::Enum(module)) {
        SetModuleFlags(*module);
        record.Format("%+ 20s, Version=%- 20s, Trace flags=%08X\n")
            << module->GetModuleName() << module->GetVersionInfo() << module->GetTrcPoints();
    }
    record.Format("\n%=*100c\n") << LineCharacter;
}

void CTrace::SetModuleFlags(CModuleInfo & module)
{
    Strings::CSubStringRef const name(module.GetModuleName());
    SModuleFlags const * node = m_pFlags;
    while (node != nullptr && node->name.CSubStringRef::Compare(name, /*ignoreCase=*/1) != 0)
        node = node->next;
    module.SetTrcPoints(node != nullptr ? node->flags : m_uFileTrace != 0 ? FlagsWithFileTrace : FlagsWithoutFileTrace);
}

void CTrace::TellModuleLoaded(CModuleInfo & module)
{
    if (m_pLiving.load(std::memory_order_relaxed) == nullptr) return;
    CSyncGuard guard;
    CModuleInfo::Lock(guard);
    if (CTrace * const trace = m_pLiving.load(std::memory_order_relaxed); trace != nullptr) trace->ModuleLoaded(module);
}

void CTrace::ModuleLoaded(CModuleInfo & module)
{
    CSyncGuard guard;
    m_Lock.Enter(guard);
    if (m_uClosed.load(std::memory_order_relaxed) == 0) SetModuleFlags(module);
    VLK_TRACE(TraceInformation,
              "New VLK-powered Module loaded (System time: %s).\nModule=%s, Version=%s, Trace flags=%08X.\n",
              Internals::LocalTimeText(), module.GetModuleName(), module.GetVersionInfo(), module.GetTrcPoints());
}

unsigned int CTrace::Close()
{
    CSyncGuard listGuard;
    CModuleInfo::Lock(listGuard);
    CSyncGuard guard;
    m_Lock.Enter(guard);
    bool const isOpen = m_uClosed.exchange(1, std::memory_order_relaxed) == 0;
    FreeFlags();
    CModuleInfo * module = isOpen ? CModuleInfo::Enum(nullptr) : nullptr;
    for (; module != nullptr; module = CModuleInfo::Enum(module))
        module->SetTrcPoints(0);
    return URET_OK;
}

void CTrace::FreeFlags() noexcept
{
    while (m_pFlags != nullptr) {
        std::unique_ptr<SModuleFlags> const node(m_pFlags);
        m_pFlags = node->next;
    }
}

} // namespace VLK::Trace

namespace VLK::Internals {

using Misc::CModuleInfo;
using VLK::Trace::CTrace;

namespace {

constexpr unsigned int ClockUnits = 10000; ///< in a second
constexpr std::uint32_t ShortFlag = 0x10000;

} // namespace

CTraceStreamBuffer::CTraceStreamBuffer(std::uint32_t flag, CModuleInfo & module, char const * file,
                                       char const * function, unsigned int line)
    : CFormatStreamBuffer(FlagSilent | FlagTrace)
{
    WriteHeader(flag, module, file, function, line);
}

CTraceStreamBuffer::CTraceStreamBuffer(std::uint32_t flag, CModuleInfo & module, char const * file, unsigned int line)
    : CFormatStreamBuffer(FlagSilent | FlagTrace)
{
    WriteHeader(flag, module, file, nullptr, line);
}

namespace {

/// Flag, time since the start of the foundation, and thread.
void Stamp(Output_Streams::CFormatStream & stream, std::uint32_t flag, std::uint64_t time)
{
    constexpr std::uint64_t second = ClockUnits;
    constexpr std::uint64_t minute = 60 * second;
    constexpr std::uint64_t hour = 60 * minute;
    Threading::CCurrentThread const thread;
    stream << (flag < ShortFlag ? 4 : 8) << flag << time / hour << time % hour / minute << time % minute / second
           << time % second << thread.GetThreadName();
}

} // namespace

void CTraceStreamBuffer::WriteHeader(std::uint32_t flag, CModuleInfo & module, char const * file, char const * function,
                                     unsigned int line)
{
    std::uint64_t const time = Functions::GetTickTime(ClockUnits);
    if (CTrace::m_pVlkTrace.load(std::memory_order_relaxed) == nullptr) return;
    Exceptions::CThrowState state;
    try {
        if ((flag & TraceUnlocated) != 0) {
            Output_Streams::CFormatStream stream = Format("**F%0*X** %02d:%02d:%02d.%04d [TID=%s]: ");
            Stamp(stream, flag, time);
        } else if (function != nullptr) {
            Output_Streams::CFormatStream stream = Format("\n**F%0*X** %02d:%02d:%02d.%04d [TID=%s] %s::%s:%s@%d\n");
            Stamp(stream, flag, time);
            stream << module.GetModuleName() << file << function << line;
        } else {
            Output_Streams::CFormatStream stream = Format("\n**F%0*X** %02d:%02d:%02d.%04d [TID=%s] %s::%s@%d\n");
            Stamp(stream, flag, time);
            stream << module.GetModuleName() << file << line;
        }
        SetLeftMargin((flag & TraceUnlocated) != 0 ? GetColumn() : 1);
        return;
    }
    VLK_END_EXCEPTION(state)
}

CTraceStreamBuffer::~CTraceStreamBuffer()
{
    if (m_uColumn != 0) CTraceStreamBuffer::Write("\n", 1, 0);
}

// A record that lacks memory is cut short: tracing never disturbs what it traces.

unsigned int CTraceStreamBuffer::Write(char const * text, std::size_t n, unsigned int upper)
{
    if (CTrace::m_pVlkTrace.load(std::memory_order_relaxed) == nullptr) return 1;
    Exceptions::CThrowState state;
    try {
        CStringStreamBuffer::AppendText(m_Record, text, n, upper);
    }
    VLK_END_EXCEPTION(state)
    return 1;
}

unsigned int CTraceStreamBuffer::Fill(int c, std::size_t n)
{
    if (CTrace::m_pVlkTrace.load(std::memory_order_relaxed) == nullptr) return 1;
    Exceptions::CThrowState state;
    try {
        CStringStreamBuffer::AppendFill(m_Record, c, n);
    }
    VLK_END_EXCEPTION(state)
    return 1;
}

} // namespace VLK::Internals
