#include "Snmp/Host/OsVersion.h"

#include <string>

#include "Platform/Host.h"
#include "Platform/Module.h"
#include "Snmp/Host/Debug.h"
#include "Snmp/Host/VersionInfo.h"

void COSVersion::Read() noexcept
{
    *this = COSVersion();
    Platform::SOsVersion reported{};
    if (Platform::OsVersion(reported) != Platform::Success) return;
    dwMajorVersion = reported.major;
    dwMinorVersion = reported.minor;
    dwBuildNumber = reported.build;
    if (CDebug::Enabled())
        CDebug::Trace(4, "\nCOSVersion          : OS version returned by GetVersionEx API : Major %d Minor %d Build %d",
                      static_cast<int>(dwMajorVersion), static_cast<int>(dwMinorVersion),
                      static_cast<int>(dwBuildNumber));
    if (dwMajorVersion < 6 || (dwMajorVersion == 6 && dwMinorVersion < 2)) return;
    try {
        ReadFromKernelFile();
    } catch (...) {
        // Without memory the reported version stands.
    }
}

/// From 6.2 on the system reports the version that the program was made for; the kernel's file tells its own.
void COSVersion::ReadFromKernelFile()
{
    if (CDebug::Enabled())
        CDebug::Trace(4, "\nCOSVersion          : Use file version info of kernel32.dll to retrieve the real OS "
                         "version...");
    std::string file;
    if (!Platform::SystemVersionFile(file)) return;
    CFileVersionInfo info;
    info.Load(file.c_str());
    if (file.empty() || CFileVersionInfo::GetSize(file.c_str()) == 0) return;
    Platform::SFixedVersion version{};
    info.GetFixed(version);
    dwMajorVersion = version.fileVersionMS >> 16;
    dwMinorVersion = version.fileVersionMS & 0xFFFF;
    dwBuildNumber = version.fileVersionLS >> 16;
    if (CDebug::Enabled())
        CDebug::Trace(4, "\nCOSVersion          : OS Version read from kernel32.dll: Major %d Minor %d Build %d",
                      static_cast<int>(dwMajorVersion), static_cast<int>(dwMinorVersion),
                      static_cast<int>(dwBuildNumber));
}
