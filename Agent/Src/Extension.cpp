#include "Snmp/Frame/Extension.h"

#include "Agent/Src/MibRoot.h"
#include "Agent/Src/ORBA_MIB.h"

CSnmpAgent * NewExtensionAgent()
{
    return new SNMP::CKestrixRAIDAgent;
}

char const * ExtensionRegistryName()
{
    return "Kestrix RAID";
}

char const * ExtensionRegion()
{
    return KXRA_MIB_ROOT;
}
