#include "Snmp/Mib/Oid.h"

#include <array>
#include <charconv>
#include <cstring>

#include "Platform/SnmpUtil.h"
#include "Snmp/Mib/OidText.h"

namespace {

/// Gives the OID room for `count` arcs; false: out of memory.
bool Allocate(AsnObjectIdentifier & oid, std::uint32_t count) noexcept
{
    if (count > UINT32_MAX / sizeof(std::uint32_t)) return false;
    const auto bytes = static_cast<std::uint32_t>(count * sizeof(std::uint32_t));
    oid.ids = static_cast<std::uint32_t *>(SnmpUtilMemAlloc(bytes));
    oid.idLength = oid.ids != nullptr ? count : 0;
    return oid.ids != nullptr;
}

} // namespace

int StrToOid(char const * text, AsnObjectIdentifier * oid) noexcept
{
    if (text == nullptr || *text == '\0' || oid == nullptr) return 0;
    SnmpUtilOidFree(oid);
    *oid = {};
    text = OidText::SkipBlanks(text);
    const std::uint32_t count = OidText::CountArcs(text);
    if (count < 2 || !Allocate(*oid, count)) return 0;
    if (OidText::FillArcs(text, oid->ids, count)) return 1;
    SnmpUtilOidFree(oid);
    *oid = {};
    return 0;
}

char const * OidToStr(std::string & out, AsnObjectIdentifier const * oid)
{
    if (oid == nullptr) return out.c_str();
    const SOidView arcs(*oid);
    out.clear();
    out.reserve(std::size_t{arcs.length} * 3);
    for (std::uint32_t i = 0; i < arcs.length; ++i) {
        char number[12];
        const auto end = std::to_chars(number, number + sizeof(number), static_cast<std::int32_t>(arcs.arcs[i]));
        if (i != 0) out += '.';
        out.append(number, end.ptr);
    }
    return out.c_str();
}

int OidAppendNumber(AsnObjectIdentifier * oid, std::uint32_t number) noexcept
{
    if (oid == nullptr) return 0;
    const AsnObjectIdentifier tail{1, &number};
    return SnmpUtilOidAppend(oid, &tail);
}

int OidAppendString(AsnObjectIdentifier * oid, char const * text) noexcept
{
    if (oid == nullptr || text == nullptr) return 0;
    const std::size_t bytes = std::strlen(text);
    AsnObjectIdentifier tail{};
    if (bytes >= UINT32_MAX || !Allocate(tail, static_cast<std::uint32_t>(bytes) + 1)) return 0;
    tail.ids[0] = static_cast<std::uint32_t>(bytes);
    for (std::size_t i = 0; i < bytes; ++i)
        tail.ids[i + 1] = static_cast<unsigned char>(text[i]);
    const int result = SnmpUtilOidAppend(oid, &tail);
    SnmpUtilOidFree(&tail);
    return result;
}

void OverwriteOidIndexes(AsnObjectIdentifier * oid, std::uint32_t index1, std::uint32_t index2, std::uint32_t index3,
                         std::uint32_t index4, std::uint32_t index5) noexcept
{
    if (oid == nullptr || oid->ids == nullptr) return;
    OverwriteTailArcs(oid->ids, oid->idLength, std::array{index5, index4, index3, index2, index1});
}

void AppendOidIndexes(AsnObjectIdentifier * oid, std::uint32_t index1, std::uint32_t index2, std::uint32_t index3,
                      std::uint32_t index4, std::uint32_t index5) noexcept
{
    for (const std::uint32_t index : {index1, index2, index3, index4, index5}) {
        if (index == kNoOidIndex) return;
        OidAppendNumber(oid, index);
    }
}

COid::COid(AsnObjectIdentifier const & source) noexcept
{
    SnmpUtilOidCpy(&m_oid, &source);
}

COid::~COid()
{
    SnmpUtilOidFree(&m_oid);
}
