#include <limits>

#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/RegionText.h"
#include "Snmp/Frame/SnmpAgent.h"
#include "Snmp/Mib/Oid.h"
#include "Snmp/Mib/VarBind.h"

namespace {

/// The block with another size, or a new one where there is none; null when there is no memory.
void * Resized(void * block, std::uint64_t bytes) noexcept
{
    if (bytes > std::numeric_limits<std::uint32_t>::max()) return nullptr;
    const auto size = static_cast<std::uint32_t>(bytes);
    return block != nullptr ? SnmpUtilMemReAlloc(block, size) : SnmpUtilMemAlloc(size);
}

} // namespace

std::int32_t GrowVarBindList(RFC1157VarBindList & list, std::uint32_t count)
{
    if (list.len >= count) return 1;
    void * const grown = Resized(list.list, std::uint64_t{count} * sizeof(RFC1157VarBind));
    if (grown == nullptr) {
        SnmpUtilVarBindListFree(&list);
        list = {};
        return 0;
    }
    list.list = static_cast<RFC1157VarBind *>(grown);
    for (std::uint32_t i = list.len; i < count; ++i) {
        list.list[i] = RFC1157VarBind{};
        list.list[i].value.asnType = ASN_NULL;
    }
    list.len = count;
    return 1;
}

void CSnmpAgent::AddMibRegion(char const * oidText, char const * valueText)
{
    FRAME_TRACE(1, " add MIB region: %s - %s", oidText != nullptr ? oidText : "",
                valueText != nullptr ? valueText : "");
    RFC1157VarBind region{};
    region.value.asnType = ASN_NULL;
    StrToOid(oidText, &region.name);
    SetVarBindFromText(&region, valueText, ASN_OCTETSTRING);
    if (GrowVarBindList(m_regions, m_regions.len + 1) != 0) {
        RFC1157VarBind & last = m_regions.list[m_regions.len - 1];
        SnmpUtilVarBindFree(&last);
        SnmpUtilVarBindCpy(&last, &region);
    }
    SnmpUtilVarBindFree(&region);
}

namespace {

std::string Dotted(AsnObjectIdentifier const & oid)
{
    std::string text;
    for (std::uint32_t i = 0; i < oid.idLength; ++i) {
        if (i != 0) text += '.';
        text += std::to_string(oid.ids[i]);
    }
    return text;
}

std::string Dotted(AsnOctetString const & address)
{
    std::string text;
    for (std::uint32_t i = 0; i < address.length; ++i) {
        if (i != 0) text += '.';
        text += std::to_string(unsigned{address.stream[i]});
    }
    return text;
}

std::string UpToFirstZero(AsnOctetString const & octets)
{
    std::string text;
    for (std::uint32_t i = 0; i < octets.length && octets.stream[i] != 0; ++i)
        text += static_cast<char>(octets.stream[i]);
    return text;
}

} // namespace

void RegionToPlainText(RFC1157VarBind const & binding, std::string & out)
{
    switch (binding.value.asnType) {
    case ASN_OCTETSTRING:
        out = UpToFirstZero(binding.value.asnValue.string);
        break;
    case ASN_OBJECTIDENTIFIER:
        out = Dotted(binding.value.asnValue.object);
        break;
    case ASN_IPADDRESS:
        out = Dotted(binding.value.asnValue.address);
        break;
    default:
        break;
    }
}
