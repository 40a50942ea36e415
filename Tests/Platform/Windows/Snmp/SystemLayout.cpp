#include "SystemLayout.h"

#include <windows.h>

#include <snmp.h>

std::vector<SLayout> SystemLayout()
{
    return {{"AsnOctetString",
             sizeof(AsnOctetString),
             {offsetof(AsnOctetString, stream), offsetof(AsnOctetString, length), offsetof(AsnOctetString, dynamic)}},
            {"AsnObjectIdentifier",
             sizeof(AsnObjectIdentifier),
             {offsetof(AsnObjectIdentifier, idLength), offsetof(AsnObjectIdentifier, ids)}},
            {"AsnAny", sizeof(AsnAny), {offsetof(AsnAny, asnType), offsetof(AsnAny, asnValue)}},
            {"RFC1157VarBind", sizeof(SnmpVarBind), {offsetof(SnmpVarBind, name), offsetof(SnmpVarBind, value)}},
            {"RFC1157VarBindList",
             sizeof(SnmpVarBindList),
             {offsetof(SnmpVarBindList, list), offsetof(SnmpVarBindList, len)}}};
}
