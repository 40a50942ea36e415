#ifndef TESTS_PLATFORM_SNMP_VALUES_H
#define TESTS_PLATFORM_SNMP_VALUES_H

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "Platform/SnmpUtil.h"

// Values for the tests of the utility functions.

using CArcs = std::vector<std::uint32_t>;

/// An OID that owns its arcs.
class COid {
public:
    COid(CArcs const & arcs)
    {
        AsnObjectIdentifier borrowed{static_cast<std::uint32_t>(arcs.size()), const_cast<std::uint32_t *>(arcs.data())};
        EXPECT_EQ(1, SnmpUtilOidCpy(&m_oid, &borrowed));
    }
    ~COid() { SnmpUtilOidFree(&m_oid); }
    COid(COid const &) = delete;
    COid & operator=(COid const &) = delete;
    AsnObjectIdentifier * Get() { return &m_oid; }

private:
    AsnObjectIdentifier m_oid{0, nullptr};
};

inline CArcs ArcsOf(AsnObjectIdentifier const & oid)
{
    std::uint32_t const * const ids = oid.ids;
    return ids != nullptr ? CArcs(ids, ids + oid.idLength) : CArcs();
}

inline AsnAny Stream(std::uint8_t type, char const * text, std::int32_t dynamic)
{
    AsnAny value{};
    value.asnType = type;
    value.asnValue.string.stream = reinterpret_cast<std::uint8_t *>(const_cast<char *>(text));
    value.asnValue.string.length = static_cast<std::uint32_t>(std::strlen(text));
    value.asnValue.string.dynamic = dynamic;
    return value;
}

inline std::string TextOf(AsnAny const & value)
{
    std::uint8_t const * const stream = value.asnValue.string.stream;
    return std::string(reinterpret_cast<char const *>(stream), value.asnValue.string.length);
}

/// Three bindings at an address that only 4 bytes divide: a stream, an OID, a 64-bit number.
class CSample {
public:
    CSample()
    {
        m_list.list = m_bindings.list;
        m_list.len = 3;
        for (std::uint32_t i = 0; i < 3; ++i) {
            AsnObjectIdentifier name{3, m_arcs};
            m_bindings.list[i].name = name;
        }
        m_bindings.list[0].value = Stream(ASN_OCTETSTRING, "value", 0);
        m_bindings.list[1].value.asnType = ASN_OBJECTIDENTIFIER;
        const AsnObjectIdentifier oid{2, m_arcs};
        m_bindings.list[1].value.asnValue.object = oid;
        m_bindings.list[2].value.asnType = ASN_COUNTER64;
        m_bindings.list[2].value.asnValue.counter64.quadPart = 1ULL << 40;
    }
    RFC1157VarBindList const * Get() const { return &m_list; }

private:
    struct {
        std::uint32_t shift = 0;
        RFC1157VarBind list[3] = {};
    } m_bindings;
    std::uint32_t m_arcs[3] = {1, 3, 6};
    RFC1157VarBindList m_list{nullptr, 0};
};

#endif
