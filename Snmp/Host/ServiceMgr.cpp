#include "Snmp/Host/ServiceMgr.h"

#include <memory>
#include <new>
#include <utility>

#include "Snmp/Host/Debug.h"
#include "Snmp/Host/HandleText.h"

namespace {

constexpr char DefaultDatabase[] = "default";
constexpr char Machine[] = "local system";
constexpr std::uint32_t ConfigRoom = 1024;

bool ReadConfig(Platform::ServiceHandle service, char const * serviceName) noexcept
{
    std::uint32_t room = ConfigRoom;
    for (;;) {
        const std::unique_ptr<char[]> buffer(new (std::nothrow) char[room]);
        if (!buffer) return false;
        std::uint32_t needed = 0;
        const Platform::ErrorCode error = Platform::QueryServiceConfig(service, buffer.get(), room, needed);
        if (error == Platform::Success) {
            if (CDebug::Enabled())
                CDebug::Trace(3, "\nCServiceMgr         : QueryServiceConfig for \"%s\" OK", serviceName);
            return true;
        }
        if (CDebug::Enabled())
            CDebug::Trace(1, "\nCServiceMgr         : ERROR! QueryServiceConfig \"%s\" FAILED (ErrorCode 0x%X)",
                          serviceName, error);
        // A call that asks for no more room than it had would ask for ever.
        if (error != Platform::ErrorInsufficientBuffer() || needed <= room) return false;
        room = needed;
    }
}

} // namespace

CServiceMgr::~CServiceMgr()
{
    Close();
}

int CServiceMgr::QueryService(char const * serviceName, char const * database) noexcept
{
    if (serviceName == nullptr || *serviceName == '\0') return 0;
    if (!Open(database != nullptr ? database : DefaultDatabase)) return 0;
    const int result = QueryOpened(serviceName);
    Close();
    return result;
}

bool CServiceMgr::Open(char const * database) noexcept
{
    if (CDebug::Enabled())
        CDebug::Trace(3, "\nCServiceMgr         : Open service control manager database \"%s\" at \"%s\"...", database,
                      Machine);
    Close();
    const Platform::ErrorCode error = Platform::OpenServiceManager(m_manager);
    if (error != Platform::Success || m_manager == nullptr) {
        if (CDebug::Enabled())
            CDebug::Trace(1,
                          "\nCServiceMgr         : ERROR 0x%X! Could NOT open service control manager database \"%s\" "
                          "at \"%s\"!!",
                          error, database, Machine);
        if (error != Platform::Success) return false;
    } else if (CDebug::Enabled()) {
        CDebug::Trace(3, "\nCServiceMgr         : ... open service control manager database returned handle 0x%X",
                      HandleNumber(m_manager));
    }
    if (m_manager != nullptr) return true;
    if (CDebug::Enabled()) CDebug::Trace(1, "\nCServiceMgr         : ERROR! Service control manager not opened!");
    return false;
}

int CServiceMgr::QueryOpened(char const * serviceName) noexcept
{
    Platform::ServiceHandle service = nullptr;
    const Platform::ErrorCode error = Platform::OpenService(m_manager, serviceName, service);
    if (error != Platform::Success) {
        if (CDebug::Enabled())
            CDebug::Trace(3, "\nCServiceMgr         : WARNING! OpenService() \"%s\" failed (ErrorCode 0x%X)!",
                          serviceName, error);
        return 0;
    }
    const bool readable =
        ReadConfig(service, serviceName) && Platform::QueryServiceStatus(service) == Platform::Success;
    Platform::CloseService(service);
    return readable ? 1 : 0;
}

Platform::ErrorCode CServiceMgr::Close() noexcept
{
    if (m_manager == nullptr) return Platform::Success;
    const Platform::ErrorCode error = Platform::CloseServiceManager(std::exchange(m_manager, nullptr));
    if (!CDebug::Enabled()) return error;
    if (error == Platform::Success)
        CDebug::Trace(3, "\nCServiceMgr         : Service control manager database successfully closed!");
    else
        CDebug::Trace(1, "\nCServiceMgr         : ERROR 0x%X! FAILED to close service control manager database!",
                      error);
    return error;
}
