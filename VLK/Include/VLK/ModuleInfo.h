#ifndef VLK_MODULE_INFO_H
#define VLK_MODULE_INFO_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "VLK/Export.h"
#include "VLK/Language.h"

namespace VLK::Threading {
class CSyncGuard;
namespace Native_OS {
class CCriticalSection;
}
} // namespace VLK::Threading

namespace VLK::Misc {

/// A row of a module's error table, ended by a code of 0.
struct ERROR_MSG_LIST {
    std::uint64_t code;
    std::uint64_t stringIndex; ///< in the module's language table
};

/// Describes a loaded module. A static object of the module; constructing it enters it at the head of the process-wide
/// list, its end takes it out.
class VLK_API CModuleInfo {
public:
    /// id        1 to 8191: part of the module's error codes, and the kind of native errors
    /// version   "P:product F:file"
    /// language  and errors: the module's texts, or null. All arguments must outlive the object.
    CModuleInfo(unsigned int id, char const * name, char const * version,
                Language_Support::CLanguageSupport::CLngFile * language, ERROR_MSG_LIST const * errors);
    virtual ~CModuleInfo();
    /// The text of an error code; a code of another module is passed to that one. direct 0: in the native character
    /// set; else as it is stored. Takes the list's lock. Raises what GetLngData raises.
    virtual void GetErrorMsg(Strings::CStringVar & out, unsigned int code, unsigned int direct);
    CModuleInfo(CModuleInfo const &) = delete;
    CModuleInfo & operator=(CModuleInfo const &) = delete;

    unsigned int GetModuleId() const noexcept { return m_uModuleId; }
    char const * GetModuleName() const noexcept { return m_pName; }
    char const * GetVersionInfo() const noexcept { return m_pVersion; }
    /// The module's texts; null if it has none.
    Language_Support::CLanguageSupport::CLngFile * GetLanguageFile() const noexcept { return m_pLanguage; }

    /// Which trace sites of the module write. Any thread; relaxed, since a site that is a moment late does no harm.
    std::uint32_t GetTrcPoints() const noexcept { return m_uTracePoints.load(std::memory_order_relaxed); }
    void SetTrcPoints(std::uint32_t points) noexcept { m_uTracePoints.store(points, std::memory_order_relaxed); }
    /// 0 if enabled is 0; otherwise 1 if any bit of the mask is set.
    unsigned int CheckTrcPoint(std::uint32_t mask, unsigned int enabled) const noexcept
    {
        return enabled != 0 && (GetTrcPoints() & mask) != 0 ? 1u : 0u;
    }

    /// The module behind `previous`, null for the first one. The caller holds the list's lock.
    static CModuleInfo * Enum(CModuleInfo const * previous) noexcept;
    static unsigned int GetModuleCount() noexcept { return m_nModulCnt; }
    /// How many modules were unloaded so far: where it differs from a count noted earlier, pointers to modules'
    /// static data may be stale. Any thread.
    static unsigned int GetUnloadCounter() noexcept { return m_uUnloadCnt.load(std::memory_order_relaxed); }
    /// Holds the list for the guard's life; recursive. Nothing while no module is registered.
    static unsigned int Lock(Threading::CSyncGuard & guard);

private:
    void Unlink() noexcept;

    static CModuleInfo * m_pFirst;
    static unsigned int m_nModulCnt;
    static std::atomic<unsigned int> m_uUnloadCnt;
    // Made by the first module, destroyed with the last, so it exists through all static destruction.
    static Threading::Native_OS::CCriticalSection * m_pLock;

    std::atomic<std::uint32_t> m_uTracePoints;
    char const * m_pName;
    char const * m_pVersion;
    Language_Support::CLanguageSupport::CLngFile * m_pLanguage;
    ERROR_MSG_LIST const * m_pErrors;
    unsigned int m_uModuleId;
    CModuleInfo * m_pNext;
};

/// The foundation's own module, id 1. Its table also answers for codes of modules that nobody knows.
extern VLK_API CModuleInfo VLK_MODULE_INFO_VlkLib;

} // namespace VLK::Misc

namespace VLK::Functions {

/// The module with an id, or of an error code (a value with bit 29 set); null if it isn't loaded. The caller holds the
/// list's lock.
VLK_API Misc::CModuleInfo * GetModuleInfo(unsigned int idOrCode) noexcept;

} // namespace VLK::Functions

#endif
