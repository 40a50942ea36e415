#include "Translate.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

#include "Platform/SnmpUtil.h"

namespace Service {

namespace {

constexpr oid kWidestArc = std::numeric_limits<Arc>::max();

bool IsTooWide(oid arc)
{
    return arc > kWidestArc;
}

/// The arcs in Net-SNMP's width. Unrolled, since every single variable has a name.
void Widen(ArcView narrow, oid * wide) noexcept
{
    Arc const * const arcs = narrow.data();
    const std::size_t count = narrow.size();
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count; ++i)
        wide[i] = arcs[i];
}

struct SWideArcs {
    oid arcs[kMaxArcs];

    explicit SWideArcs(ArcView narrow) noexcept { Widen(narrow, arcs); }
};

bool PutLong(netsnmp_variable_list & variable, u_char type, long value) noexcept
{
    return snmp_set_var_typed_value(&variable, type, &value, sizeof value) == 0;
}

bool PutOctets(netsnmp_variable_list & variable, u_char type, AsnOctetString const & octets) noexcept
{
    std::uint8_t const * stream = octets.stream;
    return snmp_set_var_typed_value(&variable, type, stream != nullptr ? static_cast<void const *>(stream) : "",
                                    octets.length) == 0;
}

bool PutOid(netsnmp_variable_list & variable, AsnObjectIdentifier const & object) noexcept
{
    Arc const * ids = object.ids;
    const SWideArcs wide(ArcView(ids, object.idLength));
    return snmp_set_var_typed_value(&variable, Wire::ObjectId, wide.arcs, object.idLength * sizeof(oid)) == 0;
}

bool PutCounter64(netsnmp_variable_list & variable, std::uint64_t value) noexcept
{
    counter64 halves{};
    halves.high = static_cast<u_long>(value >> 32);
    halves.low = static_cast<u_long>(value & 0xFFFFFFFFU);
    return snmp_set_var_typed_value(&variable, Wire::Counter64, &halves, sizeof halves) == 0;
}

bool CopyOctets(netsnmp_variable_list const & variable, AsnOctetString & out)
{
    const auto length = static_cast<std::uint32_t>(variable.val_len);
    auto * stream = static_cast<std::uint8_t *>(SnmpUtilMemAlloc(length));
    if (stream == nullptr) return false;
    if (length != 0) std::memcpy(stream, variable.val.string, length);
    out.stream = stream;
    out.length = length;
    out.dynamic = 1;
    return true;
}

bool CopyOid(netsnmp_variable_list const & variable, AsnObjectIdentifier & out)
{
    CArcs arcs;
    if (!ToArcs(variable.val.objid, variable.val_len / sizeof(oid), arcs)) return false;
    auto * ids = static_cast<Arc *>(SnmpUtilMemAlloc(static_cast<std::uint32_t>(arcs.size() * sizeof(Arc))));
    if (ids == nullptr) return false;
    std::copy(arcs.begin(), arcs.end(), ids);
    out.ids = ids;
    out.idLength = static_cast<std::uint32_t>(arcs.size());
    return true;
}

} // namespace

bool ToArcs(oid const * name, std::size_t length, CArcs & out)
{
    out.resize(length);
    bool fits = true;
    for (std::size_t i = 0; i < length; ++i) {
        fits = fits && !IsTooWide(name[i]);
        out[i] = static_cast<Arc>(name[i]);
    }
    return fits;
}

void ToStart(oid const * name, std::size_t length, CArcs & out)
{
    if (ToArcs(name, length, out)) return;
    const auto wide = static_cast<std::size_t>(std::find_if(name, name + length, IsTooWide) - name);
    out.resize(wide);
    out.resize(kMaxArcs, std::numeric_limits<Arc>::max());
}

bool PutName(netsnmp_variable_list & variable, ArcView name) noexcept
{
    static_assert(kMaxArcs <= std::extent_v<decltype(variable.name_loc)>);
    if (variable.name != nullptr && variable.name != variable.name_loc) {
        const SWideArcs wide(name);
        return snmp_set_var_objid(&variable, wide.arcs, name.size()) == 0;
    }
    // What snmp_set_var_objid would do, without a copy in between: a walk puts one name into every variable.
    Widen(name, variable.name_loc);
    variable.name = variable.name_loc;
    variable.name_length = name.size();
    return true;
}

bool PutValue(netsnmp_variable_list & variable, CValue const & value) noexcept
{
    AsnAny const & any = value.Any();
    switch (any.asnType) {
    case ASN_INTEGER:
        return PutLong(variable, Wire::Integer, any.asnValue.number);
    case ASN_COUNTER32:
        return PutLong(variable, Wire::Counter32, any.asnValue.counter);
    case ASN_GAUGE32:
    case ASN_UINTEGER32: // Unsigned32 travels as Gauge32 (RFC 2578, section 7.1.11)
        return PutLong(variable, Wire::Gauge32, any.asnValue.gauge);
    case ASN_TIMETICKS:
        return PutLong(variable, Wire::TimeTicks, any.asnValue.ticks);
    case ASN_COUNTER64:
        return PutCounter64(variable, any.asnValue.counter64.quadPart);
    case ASN_OCTETSTRING:
    case ASN_BITS: // BITS travel as octets (RFC 2578, section 7.1.4)
        return PutOctets(variable, Wire::Octets, any.asnValue.string);
    case ASN_IPADDRESS:
        return PutOctets(variable, Wire::IpAddress, any.asnValue.address);
    case ASN_OPAQUE:
        return PutOctets(variable, Wire::Opaque, any.asnValue.arbitrary);
    case ASN_OBJECTIDENTIFIER:
        return PutOid(variable, any.asnValue.object);
    default:
        return false;
    }
}

bool ToAny(netsnmp_variable_list const & variable, AsnAny & out)
{
    out = AsnAny{};
    out.asnType = variable.type;
    switch (variable.type) {
    case Wire::Integer:
        out.asnValue.number = static_cast<std::int32_t>(*variable.val.integer);
        return true;
    case Wire::Counter32:
    case Wire::Gauge32:
    case Wire::TimeTicks:
    case Wire::UInteger32:
        out.asnValue.unsigned32 = static_cast<std::uint32_t>(*variable.val.integer);
        return true;
    case Wire::Counter64:
        out.asnValue.counter64.quadPart = (static_cast<std::uint64_t>(variable.val.counter64->high) << 32) |
                                          (variable.val.counter64->low & 0xFFFFFFFFU);
        return true;
    case Wire::Octets:
    case Wire::BitString:
    case Wire::IpAddress:
    case Wire::Opaque:
        return CopyOctets(variable, out.asnValue.string);
    case Wire::ObjectId:
        return CopyOid(variable, out.asnValue.object);
    case Wire::Null:
        return true;
    default:
        return false;
    }
}

} // namespace Service
