#ifndef SNMP_AGENT_INFO_H
#define SNMP_AGENT_INFO_H

#include <string>

namespace VLK::Sockets {
class CVlkSocket;
}

namespace SNMP {

/// Four texts about an agent, whose content nothing here fixes. It has a place on the wire; no request of this agent
/// asks for it.
struct ORBA_AGENTINFO {
    std::string Id;
    std::string Company;
    std::string Version;
    std::string Build;

    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

} // namespace SNMP

#endif
