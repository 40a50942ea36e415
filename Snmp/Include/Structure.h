#ifndef SNMP_STRUCTURE_H
#define SNMP_STRUCTURE_H

/// The records in which the core service and the agent talk about RAID objects.
///
/// Every record has ReadData, which takes it off the stream and replaces each field that has a frame, and writeData,
/// which puts it on. The caller opens the request and ends it. Both sides agree frame for frame: a record has no
/// length, no tag and no version. Both operations raise what the stream raises and catch nothing.
///
/// Records are plain values; a copy of an entry is normalised (Fields.h). One thread at a time. Each field bears the
/// name of the MIB object that it feeds, less the object's prefix; a member's place in its record is not its place
/// on the wire.

#include "Snmp/Include/AgentInfo.h"
#include "Snmp/Include/Controller.h"
#include "Snmp/Include/EventInfo.h"
#include "Snmp/Include/LogicalDrive.h"
#include "Snmp/Include/PhysicalDevice.h"
#include "Snmp/Include/Status.h"

#endif
