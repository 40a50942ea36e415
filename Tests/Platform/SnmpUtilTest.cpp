#include "Platform/SnmpUtil.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr unsigned NoFault = 0xFFFFFFFF;
unsigned g_allocationsUntilFault = NoFault;
int g_blocks = 0; ///< allocated and not freed yet

/// In front of each block.
struct alignas(16) SHead {
    std::uint32_t bytes; ///< of the block behind it
};

SHead * HeadOf(void * block) noexcept
{
    return static_cast<SHead *>(block) - 1;
}

bool MayAllocate() noexcept
{
    if (g_allocationsUntilFault == NoFault) return true;
    return g_allocationsUntilFault-- != 0;
}

/// Lets the allocation with the number `n`, counted from 0, fail and those behind it as well.
class CFaultFrom {
public:
    explicit CFaultFrom(unsigned n) { g_allocationsUntilFault = n; }
    ~CFaultFrom() { g_allocationsUntilFault = NoFault; }
};

} // namespace

// In the place of the platform's, so that memory can run out.
extern "C" void * SnmpUtilMemAlloc(std::uint32_t bytes) noexcept
{
    auto * const head = static_cast<SHead *>(MayAllocate() ? std::malloc(sizeof(SHead) + bytes) : nullptr);
    if (head == nullptr) return nullptr;
    ++g_blocks;
    head->bytes = bytes;
    return head + 1;
}

// Always moves the block.
extern "C" void * SnmpUtilMemReAlloc(void * block, std::uint32_t bytes) noexcept
{
    void * const moved = SnmpUtilMemAlloc(bytes);
    if (moved == nullptr || block == nullptr) return moved;
    std::memcpy(moved, block, std::min(bytes, HeadOf(block)->bytes));
    SnmpUtilMemFree(block);
    return moved;
}

extern "C" void SnmpUtilMemFree(void * block) noexcept
{
    if (block == nullptr) return;
    --g_blocks;
    SHead * const head = HeadOf(block);
    std::memset(block, 0xDD, head->bytes); // for who looks at it all the same
    std::free(head);
}

namespace {

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

CArcs ArcsOf(AsnObjectIdentifier const & oid)
{
    std::uint32_t const * const ids = oid.ids;
    return ids != nullptr ? CArcs(ids, ids + oid.idLength) : CArcs();
}

AsnAny Stream(std::uint8_t type, char const * text, std::int32_t dynamic)
{
    AsnAny value{};
    value.asnType = type;
    value.asnValue.string.stream = reinterpret_cast<std::uint8_t *>(const_cast<char *>(text));
    value.asnValue.string.length = static_cast<std::uint32_t>(std::strlen(text));
    value.asnValue.string.dynamic = dynamic;
    return value;
}

std::string TextOf(AsnAny const & value)
{
    std::uint8_t const * const stream = value.asnValue.string.stream;
    return std::string(reinterpret_cast<char const *>(stream), value.asnValue.string.length);
}

struct SComparison {
    char const * name;
    CArcs left, right;
    std::uint32_t arcs;
    int sign;
};
class OidCompareTest : public testing::TestWithParam<SComparison> {};

int Sign(int number)
{
    return number < 0 ? -1 : number > 0 ? 1 : 0;
}

constexpr std::uint32_t All = 0xFFFFFFFF;

/// Every block of a test is freed at its end.
class SnmpUtilTest : public testing::Test {
protected:
    void SetUp() override { m_before = g_blocks; }
    void TearDown() override { EXPECT_EQ(m_before, g_blocks); }

private:
    int m_before = 0;
};

} // namespace

TEST_P(OidCompareTest, ComparesUnsignedArcByArcAndTheShorterIsFirst)
{
    COid left(GetParam().left);
    COid right(GetParam().right);
    EXPECT_EQ(GetParam().sign, Sign(SnmpUtilOidNCmp(left.Get(), right.Get(), GetParam().arcs)));
    EXPECT_EQ(-GetParam().sign, Sign(SnmpUtilOidNCmp(right.Get(), left.Get(), GetParam().arcs)));
    if (GetParam().arcs != All) return;
    EXPECT_EQ(GetParam().sign, Sign(SnmpUtilOidCmp(left.Get(), right.Get())));
    EXPECT_EQ(-GetParam().sign, Sign(SnmpUtilOidCmp(right.Get(), left.Get())));
}

INSTANTIATE_TEST_SUITE_P(Oids, OidCompareTest,
                         testing::Values(SComparison{"Equal", {1, 3, 6}, {1, 3, 6}, All, 0},
                                         SComparison{"BothEmpty", {}, {}, All, 0},
                                         SComparison{"EmptyFirst", {}, {0}, All, -1},
                                         SComparison{"Shorter", {1, 3}, {1, 3, 0}, All, -1},
                                         SComparison{"LastArc", {1, 3, 5}, {1, 3, 6}, All, -1},
                                         SComparison{"EarlyArcBeatsLength", {2}, {1, 9, 9}, All, 1},
                                         SComparison{"UnsignedArcs", {1, 0x7FFFFFFF}, {1, 0x80000000}, All, -1},
                                         SComparison{"LargestArc", {0xFFFFFFFF}, {0}, All, 1},
                                         SComparison{"PrefixEqual", {1, 3, 6}, {1, 3, 7}, 2, 0},
                                         SComparison{"PrefixLonger", {1, 3}, {1, 3, 7}, 3, -1},
                                         SComparison{"PrefixOfOneTooShort", {1}, {1, 3}, 2, -1},
                                         SComparison{"NothingCompared", {1}, {2}, 0, 0}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST_F(SnmpUtilTest, CompareTakesNullForEmpty)
{
    COid oid({1});
    EXPECT_EQ(0, SnmpUtilOidCmp(nullptr, nullptr));
    EXPECT_GT(SnmpUtilOidCmp(oid.Get(), nullptr), 0);
    EXPECT_LT(SnmpUtilOidCmp(nullptr, oid.Get()), 0);
}

TEST_F(SnmpUtilTest, OidCopyIsDeepAndAnEmptyOneStaysEmpty)
{
    COid source({1, 3, 6});
    AsnObjectIdentifier copy{77, reinterpret_cast<std::uint32_t *>(16)}; // overwritten, never freed
    ASSERT_EQ(1, SnmpUtilOidCpy(&copy, source.Get()));
    source.Get()->ids[0] = 9;
    EXPECT_EQ((CArcs{1, 3, 6}), ArcsOf(copy));
    SnmpUtilOidFree(&copy);
    EXPECT_EQ(0u, copy.idLength);
    EXPECT_TRUE(copy.ids == nullptr);
    SnmpUtilOidFree(&copy);
    AsnObjectIdentifier empty{5, nullptr};
    ASSERT_EQ(1, SnmpUtilOidCpy(&copy, &empty));
    EXPECT_EQ(0u, copy.idLength);
    EXPECT_TRUE(copy.ids == nullptr);
}

TEST_F(SnmpUtilTest, OidCopyFailsForNullForTooManyArcsAndWithoutMemory)
{
    COid source({1, 2});
    AsnObjectIdentifier copy{1, nullptr};
    EXPECT_EQ(0, SnmpUtilOidCpy(nullptr, source.Get()));
    EXPECT_EQ(0, SnmpUtilOidCpy(&copy, nullptr));
    EXPECT_EQ(0u, copy.idLength);
    std::uint32_t arc = 1;
    const AsnObjectIdentifier tooLong{0x40000000, &arc}; // its bytes don't fit 32 bits
    EXPECT_EQ(0, SnmpUtilOidCpy(&copy, &tooLong));
    const CFaultFrom fault(0);
    EXPECT_EQ(0, SnmpUtilOidCpy(&copy, source.Get()));
    EXPECT_EQ(0u, copy.idLength);
    EXPECT_TRUE(copy.ids == nullptr);
}

TEST_F(SnmpUtilTest, AppendAddsTheArcsOfTheTail)
{
    COid target({1, 3});
    COid tail({6, 1});
    COid empty({});
    EXPECT_EQ(1, SnmpUtilOidAppend(target.Get(), tail.Get()));
    EXPECT_EQ((CArcs{1, 3, 6, 1}), ArcsOf(*target.Get()));
    EXPECT_EQ(1, SnmpUtilOidAppend(target.Get(), empty.Get()));
    EXPECT_EQ(1, SnmpUtilOidAppend(empty.Get(), tail.Get()));
    EXPECT_EQ((CArcs{6, 1}), ArcsOf(*empty.Get()));
    EXPECT_EQ(1, SnmpUtilOidAppend(tail.Get(), tail.Get()));
    EXPECT_EQ((CArcs{6, 1, 6, 1}), ArcsOf(*tail.Get()));
}

TEST_F(SnmpUtilTest, AFailedAppendLeavesTheTargetAsItWas)
{
    COid target({1, 3});
    COid tail({6});
    EXPECT_EQ(0, SnmpUtilOidAppend(nullptr, tail.Get()));
    EXPECT_EQ(0, SnmpUtilOidAppend(target.Get(), nullptr));
    std::uint32_t arc = 1;
    const AsnObjectIdentifier tooLong{0x3FFFFFFE, &arc};
    EXPECT_EQ(0, SnmpUtilOidAppend(target.Get(), &tooLong));
    const CFaultFrom fault(0);
    EXPECT_EQ(0, SnmpUtilOidAppend(target.Get(), tail.Get()));
    EXPECT_EQ((CArcs{1, 3}), ArcsOf(*target.Get()));
}

TEST_F(SnmpUtilTest, NumbersAreCopiedAsTheyAre)
{
    for (const int type : {ASN_INTEGER, ASN_COUNTER32, ASN_GAUGE32, ASN_TIMETICKS, ASN_UINTEGER32, ASN_NULL}) {
        AsnAny source{};
        source.asnType = static_cast<std::uint8_t>(type);
        source.asnValue.unsigned32 = 0xFFFFFFFE;
        AsnAny copy{};
        ASSERT_EQ(1, SnmpUtilAsnAnyCpy(&copy, &source));
        EXPECT_EQ(type, copy.asnType);
        EXPECT_EQ(0xFFFFFFFEu, static_cast<std::uint32_t>(copy.asnValue.unsigned32));
        SnmpUtilAsnAnyFree(&copy);
        EXPECT_EQ(ASN_NULL, copy.asnType);
    }
    AsnAny source{};
    source.asnType = ASN_COUNTER64;
    source.asnValue.counter64.quadPart = 0x123456789ABCDEF0;
    AsnAny copy{};
    ASSERT_EQ(1, SnmpUtilAsnAnyCpy(&copy, &source));
    const std::uint64_t counted = copy.asnValue.counter64.quadPart;
    EXPECT_EQ(0x123456789ABCDEF0u, counted);
}

TEST_F(SnmpUtilTest, StreamsAreCopiedAndBecomeDynamic)
{
    for (const int type : {ASN_OCTETSTRING, ASN_BITS, ASN_IPADDRESS, ASN_OPAQUE}) {
        const AsnAny source = Stream(static_cast<std::uint8_t>(type), "text", /*dynamic=*/0);
        AsnAny copy{};
        ASSERT_EQ(1, SnmpUtilAsnAnyCpy(&copy, &source));
        EXPECT_EQ("text", TextOf(copy));
        EXPECT_NE(0, static_cast<int>(copy.asnValue.string.dynamic));
        EXPECT_FALSE(copy.asnValue.string.stream == source.asnValue.string.stream);
        SnmpUtilAsnAnyFree(&copy);
        EXPECT_EQ(ASN_NULL, copy.asnType);
        EXPECT_TRUE(copy.asnValue.string.stream == nullptr);
    }
    const AsnAny empty = Stream(ASN_OCTETSTRING, "", /*dynamic=*/0);
    AsnAny copy{};
    ASSERT_EQ(1, SnmpUtilAsnAnyCpy(&copy, &empty));
    EXPECT_EQ(ASN_OCTETSTRING, copy.asnType);
    EXPECT_TRUE(copy.asnValue.string.stream == nullptr);
}

TEST_F(SnmpUtilTest, FreeLeavesAStreamThatIsNotDynamic)
{
    AsnAny value = Stream(ASN_OCTETSTRING, "borrowed", /*dynamic=*/0);
    SnmpUtilAsnAnyFree(&value);
    EXPECT_EQ(ASN_NULL, value.asnType);
}

TEST_F(SnmpUtilTest, AFailedValueCopyGivesNull)
{
    const AsnAny source = Stream(ASN_OCTETSTRING, "text", /*dynamic=*/0);
    AsnAny copy{};
    EXPECT_EQ(0, SnmpUtilAsnAnyCpy(nullptr, &source));
    EXPECT_EQ(0, SnmpUtilAsnAnyCpy(&copy, nullptr));
    EXPECT_EQ(ASN_NULL, copy.asnType);
    const CFaultFrom fault(0);
    EXPECT_EQ(0, SnmpUtilAsnAnyCpy(&copy, &source));
    EXPECT_EQ(ASN_NULL, copy.asnType);
    EXPECT_TRUE(copy.asnValue.string.stream == nullptr);
}

TEST_F(SnmpUtilTest, NullIsFreedWithoutHarm)
{
    SnmpUtilOidFree(nullptr);
    SnmpUtilAsnAnyFree(nullptr);
    SnmpUtilVarBindFree(nullptr);
    SnmpUtilVarBindListFree(nullptr);
    SnmpUtilMemFree(nullptr);
    EXPECT_EQ(0, SnmpUtilVarBindCpy(nullptr, nullptr));
    EXPECT_EQ(0, SnmpUtilVarBindListCpy(nullptr, nullptr));
}

namespace {

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

} // namespace

TEST_F(SnmpUtilTest, ListCopyIsDeep)
{
    const CSample sample;
    RFC1157VarBindList copy{nullptr, 0};
    ASSERT_EQ(1, SnmpUtilVarBindListCpy(&copy, sample.Get()));
    ASSERT_EQ(3u, copy.len);
    RFC1157VarBind const * const list = copy.list;
    EXPECT_EQ((CArcs{1, 3, 6}), ArcsOf(list[2].name));
    EXPECT_EQ("value", TextOf(list[0].value));
    EXPECT_EQ((CArcs{1, 3}), ArcsOf(list[1].value.asnValue.object));
    const std::uint64_t number = list[2].value.asnValue.counter64.quadPart;
    EXPECT_EQ(1ULL << 40, number);
    SnmpUtilVarBindListFree(&copy);
    EXPECT_EQ(0u, copy.len);
    EXPECT_TRUE(copy.list == nullptr);
}

TEST_F(SnmpUtilTest, AnEmptyListGivesAnEmptyList)
{
    const RFC1157VarBindList empty{nullptr, 0};
    RFC1157VarBindList copy{nullptr, 9};
    EXPECT_EQ(1, SnmpUtilVarBindListCpy(&copy, &empty));
    EXPECT_EQ(0u, copy.len);
    EXPECT_EQ(0, SnmpUtilVarBindListCpy(&copy, nullptr));
}

TEST_F(SnmpUtilTest, AListCopyWithoutMemoryLeavesNothingBehind)
{
    const CSample sample;
    for (unsigned n = 0;; ++n) {
        RFC1157VarBindList copy{nullptr, 9};
        const int blocks = g_blocks;
        const CFaultFrom fault(n);
        if (SnmpUtilVarBindListCpy(&copy, sample.Get()) != 0) {
            EXPECT_EQ(6u, n); // the array, three names, a stream, an OID
            SnmpUtilVarBindListFree(&copy);
            break;
        }
        EXPECT_EQ(blocks, g_blocks) << n;
        EXPECT_EQ(0u, copy.len);
        EXPECT_TRUE(copy.list == nullptr);
    }
}

TEST_F(SnmpUtilTest, ABindingCopyWithoutMemoryLeavesNothingBehind)
{
    const CSample sample;
    for (unsigned n = 0; n < 2; ++n) {
        RFC1157VarBind copy{};
        const CFaultFrom fault(n);
        RFC1157VarBind const * const list = sample.Get()->list;
        EXPECT_EQ(0, SnmpUtilVarBindCpy(&copy, list)) << n;
        EXPECT_EQ(0u, copy.name.idLength);
        EXPECT_EQ(ASN_NULL, copy.value.asnType);
    }
}

TEST(SnmpStructureTest, TheStructuresArePackedOnFourBytes)
{
    EXPECT_EQ(12u, sizeof(AsnObjectIdentifier));
    EXPECT_EQ(16u, sizeof(AsnOctetString));
    EXPECT_EQ(20u, sizeof(AsnAny));
    EXPECT_EQ(32u, sizeof(RFC1157VarBind));
    EXPECT_EQ(12u, sizeof(RFC1157VarBindList));
    EXPECT_EQ(4u, alignof(RFC1157VarBind));
}
