#include "SnmpUtilBase.h"

#include <cstdlib>

#include "Platform/SnmpValues.h"

// The utility functions without memory and with arguments that the platform says nothing about.

namespace {

constexpr unsigned NoFault = 0xFFFFFFFF;
unsigned g_allocationsUntilFault = NoFault;
int g_blocks = 0; ///< allocated and not freed yet

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
    void * const block = MayAllocate() ? std::malloc(bytes) : nullptr;
    if (block != nullptr) ++g_blocks;
    return block;
}

extern "C" void * SnmpUtilMemReAlloc(void * block, std::uint32_t bytes) noexcept
{
    void * const moved = MayAllocate() ? std::realloc(block, bytes) : nullptr;
    if (moved != nullptr && block == nullptr) ++g_blocks;
    return moved;
}

extern "C" void SnmpUtilMemFree(void * block) noexcept
{
    if (block != nullptr) --g_blocks;
    std::free(block);
}

int SnmpBlocks() noexcept
{
    return g_blocks;
}

TEST_F(SnmpUtilTest, CompareTakesNullForEmpty)
{
    COid oid({1});
    EXPECT_EQ(0, SnmpUtilOidCmp(nullptr, nullptr));
    EXPECT_GT(SnmpUtilOidCmp(oid.Get(), nullptr), 0);
    EXPECT_LT(SnmpUtilOidCmp(nullptr, oid.Get()), 0);
}

TEST_F(SnmpUtilTest, AnOidWithoutArcsIsEmptyWhateverItsLengthSays)
{
    AsnObjectIdentifier empty{5, nullptr};
    AsnObjectIdentifier copy{1, nullptr};
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
