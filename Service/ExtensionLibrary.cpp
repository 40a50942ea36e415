#include "ExtensionLibrary.h"

#include "Platform/LoopEvents.h"
#include "Platform/SnmpUtil.h"

namespace Service {

namespace {

/// A library that hands out regions without end is stopped somewhere.
constexpr std::size_t kMaxRegions = 1000;

template <class TFunction>
bool Find(Platform::ModuleHandle module, char const * name, TFunction & function)
{
    function = reinterpret_cast<TFunction>(Platform::ModuleSymbol(module, name));
    return function != nullptr;
}

} // namespace

std::unique_ptr<CExtensionLibrary> CExtensionLibrary::Load(std::string const & file, std::string & error)
{
    std::unique_ptr<CExtensionLibrary> library(new CExtensionLibrary(file));
    std::string reason;
    library->m_module.Reset(Platform::LoadModule(file, reason));
    if (!library->m_module) {
        error = "load library " + file + ": " + reason;
        return nullptr;
    }
    if (!library->FindFunctions(error)) return nullptr;
    DllMainFn main = library->m_functions.main;
    if (main != nullptr && main(library->m_module.Get(), DLL_PROCESS_ATTACH, nullptr) == 0) {
        error = "load library " + file + ": its DllMain refused";
        return nullptr;
    }
    library->m_attached = true;
    return library;
}

CExtensionLibrary::~CExtensionLibrary()
{
    Stop();
    if (m_attached && m_functions.main != nullptr) m_functions.main(m_module.Get(), DLL_PROCESS_DETACH, nullptr);
}

bool CExtensionLibrary::FindFunctions(std::string & error)
{
    Platform::ModuleHandle module = m_module.Get();
    char const * missing = nullptr;
    if (!Find(module, "SnmpExtensionInit", m_functions.init))
        missing = "SnmpExtensionInit";
    else if (!Find(module, "SnmpExtensionInitEx", m_functions.initEx))
        missing = "SnmpExtensionInitEx";
    else if (!Find(module, "SnmpExtensionQuery", m_functions.query))
        missing = "SnmpExtensionQuery";
    else if (!Find(module, "SnmpExtensionTrap", m_functions.trap))
        missing = "SnmpExtensionTrap";
    else if (!Find(module, "SnmpExtensionClose", m_functions.close))
        missing = "SnmpExtensionClose";
    if (missing != nullptr) {
        error = "load library " + m_file + ": it is no SNMP extension, " + missing + " is missing";
        return false;
    }
    Find(module, "DllMain", m_functions.main);
    return true;
}

bool CExtensionLibrary::Start(std::uint32_t uptimeReference, std::string & error)
{
    SnmpHandle trapEvent = nullptr;
    AsnObjectIdentifier region{0, nullptr};
    if (m_functions.init(uptimeReference, &trapEvent, &region) == 0) {
        SnmpUtilOidFree(&region);
        error = "start library " + m_file + ": its SnmpExtensionInit failed";
        return false;
    }
    m_started = true;
    m_trapDescriptor = Platform::EventDescriptor(trapEvent);
    bool more = TakeRegion(region);
    while (more && m_regions.size() < kMaxRegions) {
        AsnObjectIdentifier next{0, nullptr};
        more = m_functions.initEx(&next) != 0;
        if (more)
            TakeRegion(next);
        else
            SnmpUtilOidFree(&next);
    }
    if (m_regions.empty()) error = "start library " + m_file + ": it names no region of the MIB";
    return !m_regions.empty();
}

bool CExtensionLibrary::TakeRegion(AsnObjectIdentifier & region)
{
    Arc const * ids = region.ids;
    const bool valid = ids != nullptr && region.idLength != 0 && region.idLength <= kMaxArcs;
    if (valid) m_regions.emplace_back(ids, ids + region.idLength);
    SnmpUtilOidFree(&region);
    return valid;
}

void CExtensionLibrary::Stop() noexcept
{
    if (!m_started) return;
    m_started = false;
    m_trapDescriptor = -1;
    m_functions.close();
}

void CExtensionLibrary::Abandon() noexcept
{
    m_started = false;
    m_attached = false;
    static_cast<void>(m_module.Release());
}

} // namespace Service
