#ifndef SNMP_HOST_SERVICE_MGR_H
#define SNMP_HOST_SERVICE_MGR_H

#include "Platform/Services.h"

/// Asks the system's service control for services. One thread at a time. Nothing is thrown.
class CServiceMgr {
public:
    CServiceMgr() noexcept = default;
    ~CServiceMgr();
    CServiceMgr(CServiceMgr const &) = delete;
    CServiceMgr & operator=(CServiceMgr const &) = delete;

    /// Non-zero if the service exists and its configuration and status can be read.
    /// database: only named in the trace; may be null.
    int QueryService(char const * serviceName, char const * database) noexcept;
    /// Closes the service control manager, if it is open. Returns 0 or the system's error of closing.
    Platform::ErrorCode Close() noexcept;

private:
    bool Open(char const * database) noexcept;
    int QueryOpened(char const * serviceName) noexcept;

    Platform::ServiceManagerHandle m_manager = nullptr;
};

#endif
