// An SNMP extension of somebody else's on the installed agent frame: one region with two objects.

#include <Platform/SnmpUtil.h>
#include <Snmp/Frame/Extension.h>
#include <Snmp/Frame/SnmpAgent.h>
#include <Snmp/Include/Dictionaries.h>
#include <new>
#include <string>

namespace {

#define SENSOR_REGION "1.3.6.1.4.1.88417.98.1"
constexpr unsigned int kDiskOffline = 10022;

class CSensorAgent final : public CSnmpAgent {
public:
    void InitializeMib() override
    {
        std::string const event(SNMP::Dictionaries::kEvents.NameOf(kDiskOffline));
        MibInsertConstOid(SENSOR_REGION ".1.0", "sensorEvent", event.c_str(), ASN_OCTETSTRING,
                          static_cast<std::uint32_t>(MibAccess::ReadOnly));
        MibInsertVarOid(SENSOR_REGION ".2.0", "sensorValue", ASN_INTEGER, Callback<&CSensorAgent::GetValue>(), {}, {},
                        {}, static_cast<std::uint32_t>(MibAccess::ReadOnly), nullptr);
    }
    void CloseMib() override {}

    std::uint32_t GetValue(RFC1157VarBind * binding, std::uint8_t)
    {
        SetVarBindNumber(binding, 293150, ASN_INTEGER);
        return SNMP_ERRORSTATUS_NOERROR;
    }
};

} // namespace

CSnmpAgent * NewExtensionAgent()
{
    return new (std::nothrow) CSensorAgent;
}

char const * ExtensionRegistryName()
{
    return nullptr;
}

char const * ExtensionRegion()
{
    return SENSOR_REGION;
}
