#include "VLK/ModuleInfo.h"

#include <new>

#include "LocalTimeText.h"
#include "VLK/CriticalSection.h"
#include "VLK/ResultCodes.h"
#include "VLK/Trace.h"

namespace VLK::Misc {

using Strings::CStringVar;
using Strings::TString;
using Threading::CSyncGuard;
using Threading::Native_OS::CCriticalSection;

namespace {

constexpr std::size_t NoInformation = 98; ///< index of the text for all that has none

} // namespace

constinit CModuleInfo * CModuleInfo::m_pFirst = nullptr;
constinit unsigned int CModuleInfo::m_nModulCnt = 0;
constinit std::atomic<unsigned int> CModuleInfo::m_uUnloadCnt{0};
constinit CCriticalSection * CModuleInfo::m_pLock = nullptr;

namespace {

// Storage of the list's lock: a module must be able to register where no memory is left.
alignas(CCriticalSection) constinit unsigned char g_LockRoom[sizeof(CCriticalSection)]{};

} // namespace

CModuleInfo::CModuleInfo(unsigned int id, char const * name, char const * version,
                         Language_Support::CLanguageSupport::CLngFile * language, ERROR_MSG_LIST const * errors)
    : m_uTracePoints(0),
      m_pName(name),
      m_pVersion(version),
      m_pLanguage(language),
      m_pErrors(errors),
      m_uModuleId(id),
      m_pNext(nullptr)
{
    // Modules are loaded one at a time, by the loader's own lock.
    if (m_pLock == nullptr) m_pLock = ::new (g_LockRoom) CCriticalSection;
    {
        CSyncGuard guard;
        Lock(guard);
        m_pNext = m_pFirst;
        m_pFirst = this;
        ++m_nModulCnt;
    }
    VLK::Trace::CTrace::TellModuleLoaded(*this);
}

CModuleInfo::~CModuleInfo()
{
    TString<128> name;
    name = m_pName;
    {
        CSyncGuard guard;
        Lock(guard);
        m_uUnloadCnt.fetch_add(1, std::memory_order_relaxed);
        Unlink();
    }
    SetTrcPoints(0);
    if (m_pFirst == nullptr) {
        CCriticalSection * const lock = m_pLock;
        m_pLock = nullptr;
        if (lock != nullptr) lock->~CCriticalSection();
        return;
    }
    VLK_TRACE(TraceInformation, "VLK-powered Module unloaded (Module=%s, System time: %s).\n", name,
              Internals::LocalTimeText());
}

void CModuleInfo::Unlink() noexcept
{
    for (CModuleInfo ** link = &m_pFirst; *link != nullptr; link = &(*link)->m_pNext) {
        if (*link != this) continue;
        *link = m_pNext;
        --m_nModulCnt;
        return;
    }
}

CModuleInfo * CModuleInfo::Enum(CModuleInfo const * previous) noexcept
{
    return previous != nullptr ? previous->m_pNext : m_pFirst;
}

unsigned int CModuleInfo::Lock(CSyncGuard & guard)
{
    return m_pLock != nullptr ? m_pLock->Enter(guard) : URET_OK;
}

void CModuleInfo::GetErrorMsg(CStringVar & out, unsigned int code, unsigned int direct)
{
    unsigned int const id = code >> 16 & 0x1FFF;
    if (id != 0 && id != m_uModuleId) {
        CSyncGuard guard;
        Lock(guard);
        if (CModuleInfo * const module = Functions::GetModuleInfo(id); module != nullptr)
            module->GetErrorMsg(out, code, direct);
        else
            VLK_MODULE_INFO_VlkLib.GetErrorMsg(out, Errors::NoModuleInfo, direct);
        return;
    }
    Language_Support::CLanguageSupport::CLngFile * language = VLK_MODULE_INFO_VlkLib.m_pLanguage;
    std::size_t index = NoInformation;
    for (ERROR_MSG_LIST const * row = m_pErrors; row != nullptr && row->code != 0; ++row) {
        if ((row->code & 0xFFFF) != (code & 0xFFFF) || m_pLanguage == nullptr) continue;
        language = m_pLanguage;
        index = row->stringIndex;
        break;
    }
    Language_Support::CLanguageStrg const text(language->GetLngData(), index);
    if (direct == 0)
        out = text;
    else
        out = text.Native();
}

} // namespace VLK::Misc

VLK::Misc::CModuleInfo * VLK::Functions::GetModuleInfo(unsigned int idOrCode) noexcept
{
    unsigned int const id = ErrorModuleId(idOrCode);
    Misc::CModuleInfo * module = Misc::CModuleInfo::Enum(nullptr);
    while (module != nullptr && module->GetModuleId() != id)
        module = Misc::CModuleInfo::Enum(module);
    return module;
}
