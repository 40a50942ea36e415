#include "Platform/SnmpUtil.h"

#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "SystemLayout.h"

#include "Platform/Native/SockAddr.h"

#include <windows.h>

// The functions of the system beside ours of the same name, which are built on its memory.

extern "C" void * __imp_SnmpUtilMemAlloc;   // NOLINT: what the linker calls an imported function's address
extern "C" void * __imp_SnmpUtilMemReAlloc; // NOLINT
extern "C" void * __imp_SnmpUtilMemFree;    // NOLINT

namespace {

std::vector<SLayout> OurLayout()
{
    return {
        {"AsnOctetString",
         sizeof(AsnOctetString),
         {offsetof(AsnOctetString, stream), offsetof(AsnOctetString, length), offsetof(AsnOctetString, dynamic)}},
        {"AsnObjectIdentifier",
         sizeof(AsnObjectIdentifier),
         {offsetof(AsnObjectIdentifier, idLength), offsetof(AsnObjectIdentifier, ids)}},
        {"AsnAny", sizeof(AsnAny), {offsetof(AsnAny, asnType), offsetof(AsnAny, asnValue)}},
        {"RFC1157VarBind", sizeof(RFC1157VarBind), {offsetof(RFC1157VarBind, name), offsetof(RFC1157VarBind, value)}},
        {"RFC1157VarBindList",
         sizeof(RFC1157VarBindList),
         {offsetof(RFC1157VarBindList, list), offsetof(RFC1157VarBindList, len)}}};
}

/// A function of the system's library.
template <class TFunction>
TFunction * System(char const * name)
{
    const HMODULE library = ::GetModuleHandleA("snmpapi.dll");
    auto * const function = reinterpret_cast<TFunction *>(reinterpret_cast<void *>(::GetProcAddress(library, name)));
    EXPECT_NE(nullptr, function) << name;
    return function;
}

bool HeapIsGood()
{
    return ::HeapValidate(::GetProcessHeap(), 0, nullptr) != FALSE;
}

/// A text and an object identifier under names of three arcs.
class CSample {
public:
    CSample()
    {
        m_bindings[0].name = {3, m_arcs};
        m_bindings[0].value.asnType = ASN_OCTETSTRING;
        m_bindings[0].value.asnValue.string = {m_text, 4, 0};
        m_bindings[1].name = {3, m_arcs};
        m_bindings[1].value.asnType = ASN_OBJECTIDENTIFIER;
        m_bindings[1].value.asnValue.object = {2, m_arcs};
    }
    RFC1157VarBindList * List() { return &m_list; }

private:
    std::uint32_t m_arcs[3] = {1, 3, 6};
    std::uint8_t m_text[4] = {'t', 'e', 'x', 't'};
    RFC1157VarBind m_bindings[2] = {};
    RFC1157VarBindList m_list{m_bindings, 2};
};

void ExpectSample(RFC1157VarBindList const & list)
{
    ASSERT_EQ(2u, list.len);
    RFC1157VarBind const * const bindings = list.list;
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(3u, bindings[i].name.idLength);
        std::uint32_t const * const arcs = bindings[i].name.ids;
        EXPECT_EQ(6u, arcs[2]);
    }
    EXPECT_EQ(0, std::memcmp("text", bindings[0].value.asnValue.string.stream, 4));
    EXPECT_EQ(2u, bindings[1].value.asnValue.object.idLength);
}

} // namespace

TEST(SystemSnmpTest, OurStructuresLieAsTheSystemsDo)
{
    EXPECT_EQ(SystemLayout(), OurLayout());
}

TEST(SystemSnmpTest, TheMemoryIsTheSystems)
{
    EXPECT_EQ(__imp_SnmpUtilMemAlloc, reinterpret_cast<void *>(System<void *(std::uint32_t)>("SnmpUtilMemAlloc")));
    EXPECT_EQ(__imp_SnmpUtilMemReAlloc,
              reinterpret_cast<void *>(System<void *(void *, std::uint32_t)>("SnmpUtilMemReAlloc")));
    EXPECT_EQ(__imp_SnmpUtilMemFree, reinterpret_cast<void *>(System<void(void *)>("SnmpUtilMemFree")));
}

TEST(SystemSnmpTest, WhatOursCopyTheSystemsFree)
{
    CSample sample;
    for (int i = 0; i < 100; ++i) {
        RFC1157VarBindList copy{};
        ASSERT_EQ(1, SnmpUtilVarBindListCpy(&copy, sample.List()));
        ExpectSample(copy);
        System<void(RFC1157VarBindList *)>("SnmpUtilVarBindListFree")(&copy);
        EXPECT_EQ(0u, copy.len);
    }
    EXPECT_TRUE(HeapIsGood());
}

TEST(SystemSnmpTest, WhatTheSystemsCopyOursFree)
{
    CSample sample;
    for (int i = 0; i < 100; ++i) {
        RFC1157VarBindList copy{};
        ASSERT_EQ(
            1, System<int(RFC1157VarBindList *, RFC1157VarBindList *)>("SnmpUtilVarBindListCpy")(&copy, sample.List()));
        ExpectSample(copy);
        SnmpUtilVarBindListFree(&copy);
        EXPECT_EQ(0u, copy.len);
    }
    EXPECT_TRUE(HeapIsGood());
}

TEST(SystemSnmpTest, WhatTheSystemAppendsToOursOwns)
{
    std::uint32_t arcs[] = {1, 3, 6};
    AsnObjectIdentifier tail{3, arcs};
    AsnObjectIdentifier oid{};
    ASSERT_EQ(1, SnmpUtilOidCpy(&oid, &tail));
    ASSERT_EQ(1, System<int(AsnObjectIdentifier *, AsnObjectIdentifier *)>("SnmpUtilOidAppend")(&oid, &tail));
    ASSERT_EQ(1, SnmpUtilOidAppend(&oid, &tail));
    EXPECT_EQ(9u, oid.idLength);
    System<void(AsnObjectIdentifier *)>("SnmpUtilOidFree")(&oid);
    EXPECT_TRUE(HeapIsGood());
}

// Between names of unlike length Wine puts the shorter one first, whatever its arcs.
TEST(SystemSnmpTest, NamesCompareAsTheSystemDoesItWhichWineShowsForEqualLengthsOnly)
{
    auto * const compare = System<int(AsnObjectIdentifier *, AsnObjectIdentifier *)>("SnmpUtilOidCmp");
    std::uint32_t small[] = {1, 3, 6};
    std::uint32_t large[] = {1, 0x80000000, 0};
    AsnObjectIdentifier left{3, small};
    AsnObjectIdentifier right{3, large};
    EXPECT_LT(compare(&left, &right), 0);
    EXPECT_LT(SnmpUtilOidCmp(&left, &right), 0);
    EXPECT_GT(compare(&right, &left), 0);
    EXPECT_GT(SnmpUtilOidCmp(&right, &left), 0);
    EXPECT_EQ(0, compare(&left, &left));
    EXPECT_EQ(0, SnmpUtilOidCmp(&left, &left));
}

// Wine refuses to copy Null.
TEST(SystemSnmpTest, ValuesCopyAsTheSystemDoesItWhichWineShowsForAllTypesButNull)
{
    auto * const copyValue = System<int(AsnAny *, AsnAny *)>("SnmpUtilAsnAnyCpy");
    for (const int type : {ASN_INTEGER, ASN_COUNTER32, ASN_GAUGE32, ASN_TIMETICKS, ASN_UINTEGER32, ASN_COUNTER64}) {
        AsnAny value{};
        value.asnType = static_cast<std::uint8_t>(type);
        value.asnValue.unsigned32 = 0xFFFFFFFE;
        AsnAny system{};
        AsnAny ours{};
        EXPECT_EQ(1, copyValue(&system, &value)) << type;
        EXPECT_EQ(1, SnmpUtilAsnAnyCpy(&ours, &value)) << type;
        EXPECT_EQ(0, std::memcmp(&system.asnValue, &ours.asnValue, sizeof ours.asnValue)) << type;
        EXPECT_EQ(system.asnType, ours.asnType);
    }
}
