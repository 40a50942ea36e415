#ifndef SNMP_STATUS_H
#define SNMP_STATUS_H

namespace VLK::Sockets {
class CVlkSocket;
}

namespace SNMP {

/// The overall states. Not normalised: the numbers are kept as they come.
struct ORBA_STATUS {
    int LogicalDrives = 1;
    int PhysicalDevices = 1;
    int Controllers = 1;
    int Overall = 1;

    /// A failure changes no field.
    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

} // namespace SNMP

#endif
