#ifndef TESTS_EXTENSION_LOADED_EXTENSION_H
#define TESTS_EXTENSION_LOADED_EXTENSION_H

#include <cstdint>
#include <string>
#include <vector>

#include "Platform/DynamicLibrary.h"
#include "Platform/SnmpExtension.h"

/// An extension library in memory, as a host has it. Unloaded at the end.
class CLoadedExtension {
public:
    /// Fails the test and stays empty when the file can't be loaded or lacks one of the five functions.
    explicit CLoadedExtension(char const * file);

    /// What is the host's to do where the loader doesn't do it by itself.
    void Call(std::uint32_t reason);

    SnmpExtensionInitFn init = nullptr;
    SnmpExtensionInitExFn initEx = nullptr;
    SnmpExtensionQueryFn query = nullptr;
    SnmpExtensionTrapFn trap = nullptr;
    SnmpExtensionCloseFn close = nullptr;
    DllMainFn dllMain = nullptr; ///< null where the loader alone calls it

private:
    void * Function(char const * name);
    Platform::CModuleHandle m_library;
};

/// Whether the file is loaded in this process.
bool IsLoaded(char const * file);

/// One binding as text: its OID with dots, its type and its value.
struct SAnswer {
    std::int32_t result = 0;
    std::uint32_t status = 0;
    std::uint32_t index = 0;
    std::string oid;
    std::uint8_t type = 0;
    std::string value; ///< numbers in decimal, OIDs and addresses with dots, other bytes as they are

    bool operator==(SAnswer const &) const = default;
};

/// A trap as the host takes it.
struct STrap {
    std::string enterprise;
    std::int32_t generic = 0;
    std::int32_t specific = 0;
    std::uint32_t timeStamp = 0;
    std::vector<SAnswer> bindings;
};

/// A host that has attached to a loaded library and started it. Closes and detaches at its end.
class CSession {
public:
    explicit CSession(CLoadedExtension & extension, std::uint32_t uptimeReference = 0);
    ~CSession();
    CSession(CSession const &) = delete;
    CSession & operator=(CSession const &) = delete;

    bool Started() const { return m_started == 1; }
    std::vector<std::string> const & Regions() const { return m_regions; }
    /// Waits until requests are served.
    bool IsReady();
    SAnswer Get(std::string const & oid) { return Ask(SNMP_PDU_GET, oid); }
    SAnswer GetNext(std::string const & oid) { return Ask(SNMP_PDU_GETNEXT, oid); }
    SAnswer SetNumber(std::string const & oid, std::int32_t number);
    SAnswer SetText(std::string const & oid, std::string const & text);
    /// Waits for the trap event, 0: only looks, and takes the signal.
    bool AwaitTrapEvent(int ms);
    bool TakeTrap(STrap & out);
    void Close() { m_extension.close(); }

private:
    SAnswer Ask(std::uint8_t type, std::string const & oid);
    SAnswer Send(std::uint8_t type, RFC1157VarBind & binding);

    CLoadedExtension & m_extension;
    std::int32_t m_started = 0;
    SnmpHandle m_trapEvent = nullptr;
    std::vector<std::string> m_regions;
};

#endif
