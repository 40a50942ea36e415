#ifndef TESTS_HOST_HOSTED_LIBRARY_H
#define TESTS_HOST_HOSTED_LIBRARY_H

#include <memory>
#include <string>

#include "Platform/DynamicLibrary.h"
#include "Platform/SnmpExtension.h"

/// An extension library as the SNMP service has it: loaded, attached, and unloaded at the end.
class CHostedLibrary {
public:
    /// Raises std::runtime_error with the reason when the file can't be loaded, lacks a function or doesn't want to be
    /// attached.
    explicit CHostedLibrary(std::string const & file);
    /// Detaches and unloads.
    ~CHostedLibrary();
    CHostedLibrary(CHostedLibrary const &) = delete;
    CHostedLibrary & operator=(CHostedLibrary const &) = delete;

    SnmpExtensionInitFn init = nullptr;
    SnmpExtensionInitExFn initEx = nullptr;
    SnmpExtensionQueryFn query = nullptr;
    SnmpExtensionTrapFn trap = nullptr;
    SnmpExtensionCloseFn close = nullptr;
    SnmpHandle trapEvent = nullptr; ///< the library's, since init

private:
    template <class TFunction>
    void Find(char const * name, TFunction & function);

    Platform::CModuleHandle m_module;
    DllMainFn m_main = nullptr; ///< where the library leaves the attaching to its host; else the system did it
};

#endif
