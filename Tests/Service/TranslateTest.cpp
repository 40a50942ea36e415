#include "Translate.h"

#include <gtest/gtest.h>

#include "Platform/SnmpUtil.h"

namespace {

using namespace Service;

TEST(TranslateTest, NamesThatFitKeepTheirArcs)
{
    const oid name[] = {1, 3, 0xFFFFFFFF};
    CArcs arcs;
    EXPECT_TRUE(ToArcs(name, 3, arcs));
    EXPECT_EQ((CArcs{1, 3, 0xFFFFFFFF}), arcs);
}

TEST(TranslateTest, AWiderArcIsNoNameOfAnExtension)
{
    const oid name[] = {1, 3, 0x100000000, 7};
    CArcs arcs;
    EXPECT_FALSE(ToArcs(name, 4, arcs));
}

TEST(TranslateTest, AStartWithAWiderArcIsTheLastNameBeforeIt)
{
    const oid name[] = {1, 3, 0x100000000, 7};
    CArcs arcs;
    ToStart(name, 4, arcs);
    ASSERT_EQ(kMaxArcs, arcs.size());
    EXPECT_EQ((CArcs{1, 3, 0xFFFFFFFF, 0xFFFFFFFF}), CArcs(arcs.begin(), arcs.begin() + 4));
    EXPECT_LT(CompareArcs(arcs, CArcs{1, 4}), 0);
}

TEST(TranslateTest, ANameReplacesTheOneBeforeWhereverThatLies)
{
    CArcs longest(kMaxArcs, 0xFFFFFFFF);
    const std::vector<oid> elsewhere(MAX_OID_LEN + 1, 1); // has no room inside the variable
    for (CArcs const & name : {CArcs{1, 3, 0xFFFFFFFF}, longest, CArcs{}}) {
        netsnmp_variable_list variable{};
        ASSERT_EQ(0, snmp_set_var_objid(&variable, elsewhere.data(), elsewhere.size()));
        for (int i = 0; i < 2; ++i) {
            ASSERT_TRUE(PutName(variable, name));
            EXPECT_EQ(std::vector<oid>(name.begin(), name.end()),
                      std::vector<oid>(variable.name, variable.name + variable.name_length));
        }
        snmp_free_var_internals(&variable);
    }
}

TEST(TranslateTest, Counter64KeepsAllItsBits)
{
    AsnAny any{};
    any.asnType = ASN_COUNTER64;
    any.asnValue.counter64.quadPart = 0xFEDCBA9876543210;
    netsnmp_variable_list variable{};
    ASSERT_TRUE(PutValue(variable, CValue(any)));
    AsnAny back{};
    ASSERT_TRUE(ToAny(variable, back));
    const std::uint64_t value = back.asnValue.counter64.quadPart;
    EXPECT_EQ(0xFEDCBA9876543210, value);
    snmp_reset_var_buffers(&variable);
}

TEST(TranslateTest, OctetsAreCopiedBothWaysAlsoEmptyOnes)
{
    for (const std::string text : {"", "some octets"}) {
        netsnmp_variable_list variable{};
        snmp_set_var_typed_value(&variable, Wire::Octets, text.data(), text.size());
        AsnAny any{};
        ASSERT_TRUE(ToAny(variable, any));
        const CValue value(any);
        ASSERT_TRUE(value.IsUsable());
        netsnmp_variable_list back{};
        ASSERT_TRUE(PutValue(back, value));
        EXPECT_EQ(text, std::string(reinterpret_cast<char const *>(back.val.string), back.val_len));
        snmp_reset_var_buffers(&variable);
        snmp_reset_var_buffers(&back);
    }
}

TEST(TranslateTest, TypesThatNoExtensionKnowsAreRefused)
{
    netsnmp_variable_list variable{};
    variable.type = 0x99;
    AsnAny any{};
    EXPECT_FALSE(ToAny(variable, any));
}

} // namespace
