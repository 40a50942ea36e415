#include "BindingWords.h"

#include <charconv>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "Tests/Extension/OidText.h"

namespace {

constexpr char kEmpty[] = "-";

template <class TNumber>
TNumber Number(std::string const & text, int base = 10)
{
    TNumber number{};
    char const * const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number, base);
    if (read.ec != std::errc() || read.ptr != end) throw std::invalid_argument("no number: " + text);
    return number;
}

std::string Hex(AsnOctetString const & octets)
{
    if (octets.length == 0) return kEmpty;
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::uint32_t i = 0; i < octets.length; ++i) {
        text += digits[octets.stream[i] >> 4];
        text += digits[octets.stream[i] & 0xF];
    }
    return text;
}

AsnOctetString Octets(std::string const & text)
{
    if (text == kEmpty) return {nullptr, 0, 0};
    if (text.size() % 2 != 0) throw std::invalid_argument("half an octet: " + text);
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size(); i += 2)
        bytes.push_back(Number<std::uint8_t>(text.substr(i, 2), 16));
    const auto length = static_cast<std::uint32_t>(bytes.size());
    auto * const stream = static_cast<std::uint8_t *>(SnmpUtilMemAlloc(length));
    if (stream == nullptr) throw std::bad_alloc();
    std::memcpy(stream, bytes.data(), length);
    return {stream, length, /*dynamic=*/1};
}

} // namespace

std::string OidWord(AsnObjectIdentifier const & oid)
{
    return oid.idLength != 0 ? OidText(oid) : kEmpty;
}

AsnObjectIdentifier ParseOidWord(std::string const & word)
{
    return ParseOid(word == kEmpty ? "" : word);
}

std::string ValueWord(AsnAny const & value)
{
    switch (value.asnType) {
    case ASN_INTEGER:
        return std::to_string(value.asnValue.number + 0); // as a value: a packed member has no reference
    case ASN_COUNTER32:
    case ASN_GAUGE32:
    case ASN_TIMETICKS:
    case ASN_UINTEGER32:
        return std::to_string(value.asnValue.unsigned32 + 0u);
    case ASN_COUNTER64:
        return std::to_string(value.asnValue.counter64.quadPart + 0u);
    case ASN_OBJECTIDENTIFIER:
        return OidWord(value.asnValue.object);
    case ASN_OCTETSTRING:
    case ASN_IPADDRESS:
    case ASN_OPAQUE:
    case ASN_BITS:
        return Hex(value.asnValue.string);
    default:
        return kEmpty;
    }
}

AsnAny ParseValueWord(unsigned char type, std::string const & word)
{
    AsnAny value{};
    value.asnType = type;
    switch (type) {
    case ASN_NULL:
        break;
    case ASN_INTEGER:
        value.asnValue.number = Number<std::int32_t>(word);
        break;
    case ASN_COUNTER32:
    case ASN_GAUGE32:
    case ASN_TIMETICKS:
    case ASN_UINTEGER32:
        value.asnValue.unsigned32 = Number<std::uint32_t>(word);
        break;
    case ASN_COUNTER64:
        value.asnValue.counter64.quadPart = Number<std::uint64_t>(word);
        break;
    case ASN_OBJECTIDENTIFIER:
        value.asnValue.object = ParseOidWord(word);
        break;
    case ASN_OCTETSTRING:
    case ASN_IPADDRESS:
    case ASN_OPAQUE:
    case ASN_BITS:
        value.asnValue.string = Octets(word);
        break;
    default:
        throw std::invalid_argument("no type: " + std::to_string(type));
    }
    return value;
}
