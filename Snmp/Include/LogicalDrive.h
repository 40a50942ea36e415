#ifndef SNMP_LOGICAL_DRIVE_H
#define SNMP_LOGICAL_DRIVE_H

#include <string>
#include <vector>

#include "Snmp/Include/Fields.h"

namespace VLK::Sockets {
class CVlkSocket;
}

namespace SNMP {

/// How many logical drives there are.
struct ORBA_LOGICALDRIVEINFO {
    int NumberLogicalDrives = 0;

    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

/// One logical drive.
struct ORBA_LOGICALDRIVEENTRY {
    int CtrlNr = 0;
    int Nr = 0;
    int ArraySize = 0;
    int TotalSize = 0;
    int RaidLevel = 1;
    int StripeSize = 0;
    TRangedField<1, 8, 1> WriteMode = 1;
    TRangedField<1, 9, 1> Status = 1;
    unsigned char LocalFlag = 0; ///< carried with the entry, never on the wire
    std::string RaidLevelStr;
    std::string Name;
    int ArraySizeMB = 0;
    int TotalSizeMB = 0;
    std::string OSDeviceName;
    int ReadMode = 5;
    int CacheMode = 4;
    int DiskCacheMode = 5;
    int InitStatus = 1;
    TRangedField<1, 15, 1> StatusEx = 1;
    std::string DisplayName;

    unsigned char GetLocalFlag() const noexcept { return LocalFlag; }
    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

/// All logical drives. ReadData replaces the entries; a failure leaves those that were complete.
struct ORBA_LOGICALDRIVETABLE : std::vector<ORBA_LOGICALDRIVEENTRY> {
    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

/// One member of a logical drive. Its fields may hold any number.
struct ORBA_LOGICALDRIVECONTENTSENTRY {
    int CtrlNr = 0;
    int LogicalDriveNr = 0;
    int Nr = 0;
    int Channel = 0;
    int Target = 0;
    int LUN = 0;
    int Idx = 0;
    int SpanNr = 0;

    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

/// The members of all logical drives. ReadData replaces the entries; a failure leaves those that were complete.
struct ORBA_LOGICALDRIVECONTENTSTABLE : std::vector<ORBA_LOGICALDRIVECONTENTSENTRY> {
    void ReadData(VLK::Sockets::CVlkSocket & sock);
    void writeData(VLK::Sockets::CVlkSocket & sock) const;
};

} // namespace SNMP

#endif
