#ifndef SNMP_CONTROLLER_H
#define SNMP_CONTROLLER_H

#include <string>
#include <vector>

#include "Snmp/Include/Fields.h"

namespace VLK::Sockets {
class CVlkSocket;
}

namespace SNMP {

/// How many controllers there are.
struct ORBA_CONTROLLERINFO {
    int NumberRaidControllers = 0;

    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

/// One controller.
struct ORBA_ADAPTERENTRY {
    int Nr = 0;
    int NumberChannels = 0;
    int MaxChannelInUse = 0;
    int NumberPhysDisks = 0;
    int NumberLogicalDrives = 0;
    int CacheSize = 0;
    TRangedField<1, 7, 1> BBUStatus = 1;
    TRangedField<1, 3, 3> Status = 1;
    TRangedField<2, 7, 1> Interface = 1;
    std::string ModelName;
    std::string ManufacturerName;
    std::string BusLocation;
    std::string BusLocationText;
    std::string HardwareRevision;
    std::string FirmwareRevision;
    std::string BiosRevision;
    int BusLocationSegment = -1;
    int BusLocationBus = -1;
    int BusLocationDevice = -1;
    int BusLocationFunction = -1;
    int BusLocationSlot = -1;
    std::string SerialNo;
    std::string DriverName;
    std::string DriverRevision;
    TRangedField<2, 7, 1> BBUStatusEx = 2;
    std::string DisplayName;
    std::string HostName;
    std::string UEFIDriverRevision;

    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

/// All controllers. ReadData replaces the entries; a failure leaves those that were complete.
struct ORBA_ADAPTERTABLE : std::vector<ORBA_ADAPTERENTRY> {
    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

} // namespace SNMP

#endif
