#include "FrameFixture.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/RegionText.h"
#include "Snmp/Mib/VarBind.h"

namespace {

class RegionsTest : public FrameTest {
protected:
    CAgentUnderTest m_agent;
};

class RegionTextTest : public testing::Test {
protected:
    std::string TextOf(char const * value, std::uint32_t type)
    {
        SetVarBindFromText(m_binding.Get(), value, type);
        return TextOf();
    }
    std::string TextOf()
    {
        std::string text = "as it was";
        RegionToPlainText(*m_binding.Get(), text);
        return text;
    }
    CVarBind m_binding;
};

} // namespace

TEST_F(RegionsTest, AreKeptInTheirOrderWithRootAndRemark)
{
    m_agent.AddMibRegion("1.3.6.1.4.1.88417.99.1", "first");
    m_agent.AddMibRegion("1.3.6.1.4.1.88417.99.2", nullptr);
    ASSERT_EQ(2u, m_agent.m_regions.len);
    EXPECT_EQ("1.3.6.1.4.1.88417.99.1", Text(m_agent.m_regions.list[0].name));
    EXPECT_EQ("1.3.6.1.4.1.88417.99.2", Text(m_agent.m_regions.list[1].name));
    EXPECT_EQ(ASN_OCTETSTRING, m_agent.m_regions.list[0].value.asnType);
    EXPECT_EQ(5u, m_agent.m_regions.list[0].value.asnValue.string.length + 0u);
    EXPECT_EQ(ASN_OCTETSTRING, m_agent.m_regions.list[1].value.asnType);
    EXPECT_EQ(0u, m_agent.m_regions.list[1].value.asnValue.string.length + 0u);
    EXPECT_EQ((Lines{Frame(1, " add MIB region: 1.3.6.1.4.1.88417.99.1 - first"),
                     Frame(1, " add MIB region: 1.3.6.1.4.1.88417.99.2 - ")}),
              Traced());
}

TEST_F(RegionsTest, ATextThatIsNoOidGivesARegionWithoutRoot)
{
    m_agent.AddMibRegion("no oid", "remark");
    m_agent.AddMibRegion(nullptr, nullptr);
    ASSERT_EQ(2u, m_agent.m_regions.len);
    EXPECT_EQ(0u, m_agent.m_regions.list[0].name.idLength + 0u);
    EXPECT_EQ(0u, m_agent.m_regions.list[1].name.idLength + 0u);
    EXPECT_TRUE(Traced(Frame(1, " add MIB region:  - ")));
}

TEST(GrowVarBindListTest, NewElementsAreEmptyWithANullValue)
{
    RFC1157VarBindList list{};
    EXPECT_EQ(1, GrowVarBindList(list, 3));
    ASSERT_EQ(3u, list.len);
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(0u, list.list[i].name.idLength + 0u);
        EXPECT_EQ(ASN_NULL, list.list[i].value.asnType);
    }
    SnmpUtilVarBindListFree(&list);
}

TEST(GrowVarBindListTest, AListThatIsLongEnoughIsLeftAlone)
{
    RFC1157VarBindList list{};
    ASSERT_EQ(1, GrowVarBindList(list, 3));
    SetVarBindNumber(&list.list[1], 5, ASN_INTEGER);
    RFC1157VarBind * const array = list.list;
    EXPECT_EQ(1, GrowVarBindList(list, 2));
    EXPECT_EQ(1, GrowVarBindList(list, 3));
    EXPECT_EQ(3u, list.len);
    RFC1157VarBind * const same = list.list;
    EXPECT_EQ(array, same);
    EXPECT_EQ(5, list.list[1].value.asnValue.number + 0);
    EXPECT_EQ(1, GrowVarBindList(list, 100)) << "what stands in the list goes along";
    EXPECT_EQ(5, list.list[1].value.asnValue.number + 0);
    SnmpUtilVarBindListFree(&list);
}

TEST(GrowVarBindListTest, WithoutMemoryTheListEndsEmptyAndNothingIsLost)
{
    RFC1157VarBindList list{};
    ASSERT_EQ(1, GrowVarBindList(list, 3));
    SetVarBindFromText(&list.list[1], "text", ASN_OCTETSTRING);
    EXPECT_EQ(0, GrowVarBindList(list, 0xFFFFFFFF));
    EXPECT_EQ(0u, list.len);
    EXPECT_EQ(1, GrowVarBindList(list, 1)) << "and can grow again";
    SnmpUtilVarBindListFree(&list);
}

TEST_F(RegionTextTest, AnOctetStringEndsAtItsFirstZeroByte)
{
    EXPECT_EQ("remark", TextOf("remark", ASN_OCTETSTRING));
    EXPECT_EQ("", TextOf("", ASN_OCTETSTRING));
    SetVarBindOctets(m_binding.Get(), "ab\0cd", 5, ASN_OCTETSTRING);
    EXPECT_EQ("ab", TextOf());
}

TEST_F(RegionTextTest, OidsAndAddressesAreNumbersWithDots)
{
    EXPECT_EQ("1.3.4294967295", [this] {
        SetVarBindFromText(m_binding.Get(), "1.3.6", ASN_OBJECTIDENTIFIER);
        m_binding->value.asnValue.object.ids[2] = 0xFFFFFFFF;
        return TextOf();
    }());
    EXPECT_EQ("192.0.2.17", TextOf("192.0.2.17", ASN_IPADDRESS));
}

TEST_F(RegionTextTest, OtherTypesLeaveTheTextAsItIs)
{
    EXPECT_EQ("as it was", TextOf());
    EXPECT_EQ("as it was", TextOf("5", ASN_INTEGER));
    EXPECT_EQ("as it was", TextOf("5", ASN_COUNTER32));
}
