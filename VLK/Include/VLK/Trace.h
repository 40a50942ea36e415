#ifndef VLK_TRACE_H
#define VLK_TRACE_H

#include <atomic>
#include <cstdint>
#include <string>

#include "VLK/CriticalSection.h"
#include "VLK/Export.h"
#include "VLK/FormatStream.h"
#include "VLK/ModuleInfo.h"
#include "VLK/SourceInfo.h"
#include "VLK/Strings.h"

namespace boost::filesystem {
class path;
}

/// The foundation's trace. Each module has a mask of trace bits (CModuleInfo::GetTrcPoints); a site whose bit is clear
/// costs one load and one test, and its values aren't evaluated. The masks are clear until a process opens a CTrace.
///
///     VLK_TRACE(TraceGeneral, "connected to %s after %d ms", host, time);
///     VLK_TRACE_STREAM(TraceGeneral, "%d entries") << count;
///
/// A site traces for the module that is being compiled (VLK_THIS_MODULE). Format errors in a record are silent.
#define VLK_TRACE(bit, ...) VLK_TRACE_AS(bit, __func__, __VA_ARGS__)
// The same under a function's full name, where the bare one says too little.
#define VLK_TRACE_AS(bit, function, ...)                                                                               \
    do {                                                                                                               \
        if (VLK_TRACE_ON(bit)) [[unlikely]]                                                                            \
            ::VLK::Internals::WriteTraceRecord(bit, VLK_THIS_MODULE, VLK_SOURCE_FILE, function, __LINE__,              \
                                               __VA_ARGS__);                                                           \
    } while (false)
#define VLK_TRACE_STREAM(bit, format)                                                                                  \
    if (!VLK_TRACE_ON(bit)) {                                                                                          \
    } else                                                                                                             \
        ::VLK::Internals::CTraceStreamBuffer(bit, VLK_THIS_MODULE, VLK_SOURCE_FILE, __func__, __LINE__).Format(format)
// What stands behind a clear bit lies out of the way of the code around the site.
#if __has_cpp_attribute(gnu::cold)
#define VLK_COLD [[gnu::cold]]
#else
#define VLK_COLD
#endif
#define VLK_TRACE_ON(bit) (VLK_THIS_MODULE.CheckTrcPoint(bit, 1) != 0)

namespace VLK {

inline constexpr std::uint32_t TraceGeneral = 0x00000001;
inline constexpr std::uint32_t TraceEvents = 0x00000020;
inline constexpr std::uint32_t TraceInformation = 0x20000000; ///< loading and unloading of modules, conversions
inline constexpr std::uint32_t TraceErrors = 0x40000000;      ///< errors and limits
inline constexpr std::uint32_t TraceUnlocated = 0x80000000;   ///< a record without source location

namespace Trace {

/// Switches the trace on for a process and holds the masks of its modules. At most one is opened in a process.
/// Threads: Open and Close from any; the object must outlive them.
/// Locks: the module list's, then m_Lock.
class VLK_API CTrace {
public:
    CTrace();
    virtual ~CTrace(); ///< closes
    CTrace(CTrace const &) = delete;
    CTrace & operator=(CTrace const &) = delete;

    /// Reads the masks from a section of an INI file: every key that doesn't begin with "_" is a module's name, its
    /// value the mask. "_DebugWait" sets the application's flag; "_FileTrace" not 0 restricts modules that aren't
    /// named to the two general bits. Then traces a banner with the list of modules.
    /// Raises "Attempt to start a second trace instance" from the second time on in the process, also after Close;
    /// and what reading the file raises, the trace being unset then.
    unsigned int Open(boost::filesystem::path const & iniFile, std::string const & section);
    /// Clears the masks of all modules. 1.
    unsigned int Close();

    /// The instance that was opened, also after its end: only good for the question whether there was one.
    static std::atomic<CTrace *> m_pVlkTrace;

protected:
    friend class Misc::CModuleInfo;
    /// Sets the mask of a module that has just been registered, and traces it.
    void ModuleLoaded(Misc::CModuleInfo & module);
    void SetModuleFlags(Misc::CModuleInfo & module);
    /// Tells the opened trace, if it lives, of a new module.
    static void TellModuleLoaded(Misc::CModuleInfo & module);

private:
    struct SModuleFlags;

    void ReadConfiguration(boost::filesystem::path const & iniFile, std::string const & section);
    void PrepareLogDirectory(boost::filesystem::path const & iniFile);
    void WriteBanner();
    void FreeFlags() noexcept;

    static std::atomic<CTrace *> m_pLiving; ///< the opened instance until its end

    std::atomic<unsigned int> m_uClosed;
    unsigned int m_uFileTrace;
    SModuleFlags * m_pFlags; ///< guarded by m_Lock
    std::string m_LogDirectory;
    std::uint64_t m_uReserved;
    Threading::Native_OS::CCriticalSection m_Lock;
};

} // namespace Trace

namespace Internals {

/// One trace record under construction: a header line with time, thread and place, then what is streamed. Without an
/// opened trace it takes nothing and allocates nothing. Complete records have no reader in this system: they end
/// with the buffer. One thread.
class VLK_API CTraceStreamBuffer : public Output_Streams::Base_Classes::CFormatStreamBuffer {
public:
    /// flag: the record's trace bit. file and function must outlive the object.
    CTraceStreamBuffer(std::uint32_t flag, Misc::CModuleInfo & module, char const * file, char const * function,
                       unsigned int line);
    CTraceStreamBuffer(std::uint32_t flag, Misc::CModuleInfo & module, char const * file, unsigned int line);
    ~CTraceStreamBuffer() override;
    CTraceStreamBuffer(CTraceStreamBuffer const &) = delete;
    CTraceStreamBuffer & operator=(CTraceStreamBuffer const &) = delete;

    unsigned int Write(char const * text, std::size_t n, unsigned int upper) override;
    unsigned int Fill(int c, std::size_t n) override;

    /// What was written so far.
    Strings::CStringRef const & GetRecord() const noexcept { return m_Record; }

private:
    void WriteHeader(std::uint32_t flag, Misc::CModuleInfo & module, char const * file, char const * function,
                     unsigned int line);

    Strings::CStringVar m_Record;
};

template <class... TValues>
VLK_COLD void WriteTraceRecord(std::uint32_t flag, Misc::CModuleInfo & module, char const * file, char const * function,
                               unsigned int line, char const * format, TValues const &... values)
{
    CTraceStreamBuffer record(flag, module, file, function, line);
    static_cast<void>((record.Format(format) << ... << values));
}

} // namespace Internals
} // namespace VLK

#endif
