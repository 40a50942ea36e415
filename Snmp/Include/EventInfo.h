#ifndef SNMP_EVENT_INFO_H
#define SNMP_EVENT_INFO_H

#include <string>

namespace VLK::Sockets {
class CVlkSocket;
}

namespace SNMP {

/// One event of the core service, and the form in which the agent describes its own traps.
struct ORBA_EVENTINFO {
    int TrapId = 0;                  ///< the SNMP specific-trap number
    unsigned long long Opaque64 = 0; ///< carried, used by nothing
    std::string Param1;
    std::string Param2;
    std::string Param3;
    std::string Param4;
    std::string Param5;
    std::string Param6;
    std::string ServerName; ///< empty: the trap carries the name of this host

    void SetTrapId(int trapId) noexcept { TrapId = trapId; }
    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

} // namespace SNMP

#endif
