#include "Snmp/Mib/VarBind.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "Platform/SnmpUtil.h"
#include "Snmp/Mib/Oid.h"
#include "Snmp/Mib/OidText.h"

namespace {

bool IsNumber(std::uint32_t type) noexcept
{
    return type == ASN_INTEGER || type == ASN_COUNTER32 || type == ASN_GAUGE32 || type == ASN_TIMETICKS ||
           type == ASN_UINTEGER32;
}

bool IsStream(std::uint32_t type) noexcept
{
    return type == ASN_BITS || type == ASN_OCTETSTRING || type == ASN_IPADDRESS || type == ASN_OPAQUE;
}

void SetNumber(AsnAny & value, std::uint32_t number, std::uint32_t type) noexcept
{
    value.asnValue.unsigned32 = number;
    value.asnType = static_cast<std::uint8_t>(type);
}

int SetOid(RFC1157VarBind * binding, char const * text) noexcept
{
    COid oid(text);
    ClearVarBindValue(binding);
    AsnObjectIdentifier copy{};
    const int copied = SnmpUtilOidCpy(&copy, oid.Get());
    binding->value.asnValue.string.dynamic = 1;
    binding->value.asnValue.object = copy;
    binding->value.asnType = ASN_OBJECTIDENTIFIER;
    return copied;
}

int SetAddress(RFC1157VarBind * binding, char const * text) noexcept
{
    const COid oid(text);
    if (oid.Get()->idLength < 4) return 0;
    std::array<std::uint8_t, 4> address{};
    for (std::size_t i = 0; i < address.size(); ++i)
        address[i] = static_cast<std::uint8_t>(oid.Get()->ids[i]);
    return SetVarBindOctets(binding, address.data(), static_cast<std::uint32_t>(address.size()), ASN_IPADDRESS);
}

template <class... TArguments>
void Print(std::string & out, char const * format, TArguments... arguments)
{
    std::array<char, 96> text{};
    const int length = std::snprintf(text.data(), text.size(), format, arguments...);
    out.append(text.data(), static_cast<std::size_t>(std::clamp(length, 0, static_cast<int>(text.size()) - 1)));
}

void PrintNothing(std::string &, AsnAny const &) {}

void PrintInteger(std::string & out, AsnAny const & value)
{
    const std::int32_t number = value.asnValue.number;
    Print(out, ": %d (0x%X)", number, static_cast<std::uint32_t>(number));
}

void PrintUnsigned(std::string & out, AsnAny const & value)
{
    const std::uint32_t number = value.asnValue.unsigned32;
    Print(out, ": %u (0x%X)", number, number);
}

void PrintAddress(std::string & out, AsnAny const & value)
{
    std::uint8_t const * const bytes = value.asnValue.address.stream;
    if (bytes == nullptr || value.asnValue.address.length != 4) {
        out.clear();
        return;
    }
    Print(out, ": %u.%u.%u.%u", bytes[0], bytes[1], bytes[2], bytes[3]);
}

void PrintOctets(std::string & out, AsnAny const & value)
{
    std::uint8_t const * const bytes = value.asnValue.string.stream;
    if (bytes == nullptr) {
        out += ": NULL";
        return;
    }
    const std::size_t count = value.asnValue.string.length;
    // A stored terminator, the last byte, doesn't make a text binary.
    const std::size_t checked = count == 0 ? 0 : count - 1;
    if (std::all_of(bytes, bytes + checked, [](std::uint8_t byte) { return byte >= 0x20 && byte <= 0x7F; })) {
        out += ": \"";
        out.append(bytes, bytes + count);
        out += '"';
        return;
    }
    out = "OCTET STRING: ";
    for (std::size_t i = 0; i < count; ++i)
        Print(out, "%02X ", bytes[i]);
}

struct STypeText {
    std::uint8_t type;
    char const * name;
    void (*print)(std::string & out, AsnAny const & value); // appends to the name
};

constexpr STypeText kTypeTexts[] = {
    {ASN_INTEGER, "Integer", PrintInteger},
    {ASN_BITS, "Bits", PrintNothing},
    {ASN_OCTETSTRING, "OctetString", PrintOctets},
    {ASN_NULL, "Null", PrintNothing},
    {ASN_OBJECTIDENTIFIER, "ObjectIdentifier", PrintNothing},
    {ASN_IPADDRESS, "IpAddress", PrintAddress},
    {ASN_COUNTER32, "Counter32", PrintUnsigned},
    {ASN_GAUGE32, "Gauge32", PrintUnsigned},
    {ASN_TIMETICKS, "Timeticks", PrintUnsigned},
    {ASN_OPAQUE, "Opaque", PrintOctets},
    {ASN_COUNTER64, "Counter64", PrintNothing},
    {ASN_UINTEGER32, "UInteger32", PrintNothing},
};

} // namespace

int SetVarBindNumber(RFC1157VarBind * binding, std::uint32_t value, std::uint32_t type) noexcept
{
    if (type == ASN_IPADDRESS) return SetVarBindOctets(binding, &value, sizeof(value), type);
    ClearVarBindValue(binding);
    if (!IsNumber(type)) return 0;
    SetNumber(binding->value, value, type);
    return 1;
}

int SetVarBindFromText(RFC1157VarBind * binding, char const * text, std::uint32_t type) noexcept
{
    if (text == nullptr) text = "";
    if (IsNumber(type)) return SetVarBindNumber(binding, OidText::ToNumber(text), type);
    switch (type) {
    case ASN_OCTETSTRING:
        return SetVarBindOctets(binding, text, static_cast<std::uint32_t>(std::strlen(text)), type);
    case ASN_OBJECTIDENTIFIER:
        return SetOid(binding, text);
    case ASN_IPADDRESS:
        return SetAddress(binding, text);
    default:
        return 0;
    }
}

int SetVarBindOctets(RFC1157VarBind * binding, void const * bytes, std::uint32_t count, std::uint32_t type) noexcept
{
    if (bytes == nullptr || count == 0) {
        ClearVarBindValue(binding);
        binding->value.asnType = static_cast<std::uint8_t>(type);
        return 1;
    }
    // Under any other tag nobody could tell that there is a stream to free.
    auto * const stream = IsStream(type) ? static_cast<std::uint8_t *>(SnmpUtilMemAlloc(count)) : nullptr;
    if (stream != nullptr) std::memcpy(stream, bytes, count); // ahead of the clearing: they may be the old value's
    ClearVarBindValue(binding);
    if (stream == nullptr) return 0;
    binding->value.asnValue.string = {stream, count, 1};
    binding->value.asnType = static_cast<std::uint8_t>(type);
    return 1;
}

void ClearVarBindValue(RFC1157VarBind * binding) noexcept
{
    AsnAny & value = binding->value;
    if (value.asnType == ASN_OBJECTIDENTIFIER) {
        SnmpUtilOidFree(&value.asnValue.object);
    } else if (IsStream(value.asnType) && value.asnValue.string.dynamic == 1) {
        SnmpUtilMemFree(value.asnValue.string.stream);
    }
    value = {};
    value.asnType = ASN_NULL;
}

char const * VarBindValueToText(std::string & out, AsnAny const * value)
{
    out.clear();
    if (value == nullptr) return out.c_str();
    const std::uint8_t type = value->asnType;
    auto const * const found = std::find_if(std::begin(kTypeTexts), std::end(kTypeTexts),
                                            [type](STypeText const & text) { return text.type == type; });
    if (found == std::end(kTypeTexts)) {
        out = "??????";
    } else {
        out = found->name;
        found->print(out, *value);
    }
    return out.c_str();
}

char const * VarBindToText(std::string & out, RFC1157VarBind const * binding)
{
    std::string part;
    out = "Oid=";
    out += OidToStr(part, &binding->name);
    out += ", Value=";
    VarBindValueToText(part, &binding->value);
    out += part;
    return out.c_str();
}

CVarBind::~CVarBind()
{
    SnmpUtilVarBindFree(&m_binding);
}
