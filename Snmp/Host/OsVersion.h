#ifndef SNMP_HOST_OS_VERSION_H
#define SNMP_HOST_OS_VERSION_H

#include <cstdint>

/// Version of the operating system, as far as it can be trusted. One thread at a time. Nothing is thrown.
class COSVersion {
public:
    /// Fills the fields; all are 0 when the system doesn't tell its version.
    void Read() noexcept;

    std::uint32_t dwMajorVersion = 0;
    std::uint32_t dwMinorVersion = 0;
    std::uint32_t dwBuildNumber = 0;

private:
    void ReadFromKernelFile();
};

#endif
