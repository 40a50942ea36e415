#include "HostedLibrary.h"

#include <stdexcept>

CHostedLibrary::CHostedLibrary(std::string const & file)
{
    std::string reason;
    m_module.Reset(Platform::LoadModule(file, reason));
    if (!m_module) throw std::runtime_error(reason);
    Find("SnmpExtensionInit", init);
    Find("SnmpExtensionInitEx", initEx);
    Find("SnmpExtensionQuery", query);
    Find("SnmpExtensionTrap", trap);
    Find("SnmpExtensionClose", close);
    const auto main = reinterpret_cast<DllMainFn>(Platform::ModuleSymbol(m_module.Get(), "DllMain"));
    if (main != nullptr && main(m_module.Get(), DLL_PROCESS_ATTACH, nullptr) == 0)
        throw std::runtime_error("DllMain refuses");
    m_main = main;
}

CHostedLibrary::~CHostedLibrary()
{
    if (m_main != nullptr) m_main(m_module.Get(), DLL_PROCESS_DETACH, nullptr);
}

template <class TFunction>
void CHostedLibrary::Find(char const * name, TFunction & function)
{
    function = reinterpret_cast<TFunction>(Platform::ModuleSymbol(m_module.Get(), name));
    if (function == nullptr) throw std::runtime_error(std::string(name) + " is missing");
}
