#include "Agent/Src/Configuration.h"

#include <boost/filesystem/path.hpp>
#include <fstream>
#include <string>

#include "Agent/Src/Failure.h"
#include "Platform/Registry.h"
#include "Snmp/Host/Debug.h"
#include "Snmp/Host/ServiceMgr.h"
#include "VLK/Application.h"
#include "VLK/IniFile.h"
#include "VLK/Threads.h"

namespace SNMP {

namespace {

constexpr std::uint32_t kDefaultPort = 3173;
constexpr unsigned int kIniTimeoutMs = 2000;
constexpr char kDefaultService[] = "Kestrix Services";
constexpr char kServiceLine[] = "ServiceName=";

/// Name of the management services' service: the first line of the file that gives it, else the default.
std::string ServiceName(std::istream & file)
{
    std::string line;
    while (std::getline(file, line)) {
        if (!line.starts_with(kServiceLine)) continue;
        std::string name = line.substr(sizeof kServiceLine - 1);
        if (name.ends_with('\r')) name.pop_back(); // the file may come from a system with other line ends
        if (CDebug::Enabled()) {
            CDebug::Trace(2, "\nCKestrixRAIDAgent(): found service name '%s'", name.c_str());
        }
        return name;
    }
    return kDefaultService;
}

/// A time in seconds from the registry into milliseconds; missing and 0 leave it.
void ReadDelay(Platform::CRegistryKey const & key, char const * name, std::int32_t & milliseconds)
{
    std::uint32_t seconds = 0;
    if (Platform::ReadDword(key, name, seconds) && seconds != 0) {
        milliseconds = static_cast<std::int32_t>(seconds * 1000);
    }
}

/// Where the product is installed; empty when the registry doesn't say.
std::string ProductPath()
{
    Platform::CRegistryKey key;
    Platform::SRegistryValue value;
    if (key.Open("SOFTWARE\\Norvane\\Kestrix RAID", Platform::RegistryView::Default, Platform::RegistryAccess::Full) !=
            Platform::Success ||
        key.Query("Path", value) != Platform::Success) {
        return {};
    }
    std::string const text = value.data.c_str(); // of several texts the first
    switch (value.type) {
    case Platform::RegString:
    case Platform::RegMultiString:
        return text;
    case Platform::RegExpandString:
        return Platform::ExpandEnvironment(text);
    default:
        return {};
    }
}

void TracePortFailure(boost::filesystem::path const & path, char const * failure,
                      VLK::Exceptions::CErrorLog const & log)
{
    // Some records of the INI classes bear no code, and then their text says nothing.
    std::string const details = log.GetError() != 0 ? FailureText(log, /*stack=*/false) : std::string();
    CDebug::Trace(1, "\nCKestrixRAIDAgent(): no port in '%s', it stays %u: %s\n%s", path.string().c_str(), kDefaultPort,
                  failure, details.c_str());
}

} // namespace

bool ManagementServicesInstalled()
{
    boost::filesystem::path path;
    if (VLK::Misc::CVlkApplication::GetWindowsPath(path) != VLK::URET_OK) return false;
    path /= "ksVendor.ini";
    if (CDebug::Enabled()) {
        CDebug::Trace(2, "\nCKestrixRAIDAgent(): check Kestrix file '%s'", path.string().c_str());
    }
    std::ifstream file(path.string());
    if (!file) return false;
    std::string const service = ServiceName(file);
    bool const installed = CServiceMgr().QueryService(service.c_str(), nullptr) != 0;
    if (CDebug::Enabled()) {
        CDebug::Trace(2, "\nCKestrixRAIDAgent(): Norvane Kestrix Services are %sinstalled", installed ? "" : "not ");
    }
    return installed;
}

void ReadDelays(std::int32_t & listenerSpanMs, std::int32_t & listenerInitMs)
{
    Platform::CRegistryKey key;
    if (key.Open("SOFTWARE\\Norvane\\Kestrix RAID\\KXRA_MIB\\CurrentVersion", Platform::RegistryView::Default,
                 Platform::RegistryAccess::Full) != Platform::Success) {
        return;
    }
    ReadDelay(key, "PWait", listenerSpanMs);
    ReadDelay(key, "IWait", listenerInitMs);
}

std::uint32_t ReadPort()
{
    std::string const product = ProductPath();
    if (product.empty()) return kDefaultPort;
    boost::filesystem::path const path = boost::filesystem::path(product) / "bin" / "orDPatch.ini";
    VLK::Threading::CCallBackGuard const guard; // the host's thread: without it a failure's record would be lost
    VLK::Exceptions::CThrowState state;
    char const * failure = "it can't be read";
    try {
        VLK::INI_Files::CIniFile file;
        file.Read(path, kIniTimeoutMs);
        failure = "its value is no number";
        unsigned int port = kDefaultPort;
        file["orDPatch"]["Port"].GetValue(port, kDefaultPort);
        return port;
    } catch (...) {
        VLK_CONTINUE(state, log);
        VLK::Exceptions::CErrorLog errorLog;
        log >> errorLog;
        if (CDebug::Enabled()) TracePortFailure(path, failure, errorLog);
        return kDefaultPort;
    }
}

} // namespace SNMP
