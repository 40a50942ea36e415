#ifndef SNMP_PHYSICAL_DEVICE_H
#define SNMP_PHYSICAL_DEVICE_H

#include <string>
#include <utility>
#include <vector>

#include "Snmp/Include/Fields.h"

namespace VLK::Sockets {
class CVlkSocket;
}

namespace SNMP {

/// How many physical devices there are.
struct ORBA_PHYSICALDEVICEINFO {
    int NumberPhysicalDevices = 0;

    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

/// One physical device.
struct ORBA_PHYSICALDEVICEENTRY {
    int CtrlNr = 0;
    int Channel = -1;
    int Target = -1;
    int LUN = 0;
    int Idx = 0;
    int Capacity = 0;
    int MaxTransferRate = 0;
    TRangedField<1, 98, 99> Type = 2;
    TRangedField<1, 2, 1> ConfiguredDisk = 1;
    TRangedField<1, 9, 1> Interface = 1;
    int Errors = 0;
    int NrBadBlocks = 0;
    TRangedField<1, 4, 4> SmartStatus = 1;
    TRangedField<1, 12, 1> Status = 1;
    TRangedField<1, 2, 1> ForeignConfig = 1;
    std::string ModelName;
    std::string VendorName;
    std::string FirmwareRevision;
    std::string SerialNumber;
    TRangedField<1, 20, 1> StatusEx = 1;
    int CapacityMB = 0;
    int EnclosureNumber = -1;
    int Slot = -1;
    std::string DisplayName;
    int PowerStatus = 1;
    int MediaType = 1;
    int SSDPowerOnHours = -1;
    int SSDRatedWriteEndurance = -1;
    int SSDRemainingReservedSpace = -1;

    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;

    std::string GetSSDEstimatedLifetime() const { return SSDEstimatedLifetime; }
    void SetSSDEstimatedLifetime(std::string text) { SSDEstimatedLifetime = std::move(text); }
    std::string GetSSDTotalDataWritten() const { return SSDTotalDataWritten; }
    void SetSSDTotalDataWritten(std::string text) { SSDTotalDataWritten = std::move(text); }

private:
    friend struct ORBA_PHYSICALDEVICETABLE; // reads its entries by their frames
    struct SWire;                           ///< the order of the frames

    std::string SSDEstimatedLifetime;
    std::string SSDTotalDataWritten;
};

/// All physical devices. ReadData replaces the entries; a failure leaves those that were complete.
struct ORBA_PHYSICALDEVICETABLE : std::vector<ORBA_PHYSICALDEVICEENTRY> {
    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

} // namespace SNMP

#endif
