#include <cstdlib>

#include "../MibFixture.h"

/// What OIDs, values and objects do when the memory of the utility functions can't be had.

namespace {

thread_local unsigned g_untilFailure = 0; ///< 0: nothing fails

/// Makes the n-th allocation of the calling thread by the C library's functions fail, once.
class CFailingBlock {
public:
    explicit CFailingBlock(unsigned n) noexcept { g_untilFailure = n; }
    ~CFailingBlock() { g_untilFailure = 0; }
    CFailingBlock(CFailingBlock const &) = delete;
    CFailingBlock & operator=(CFailingBlock const &) = delete;
    bool Fired() const noexcept { return g_untilFailure == 0; }
};

bool Fails() noexcept
{
    return g_untilFailure != 0 && --g_untilFailure == 0;
}

} // namespace

// The linker puts these in the place of the functions behind the underscores.
extern "C" {

void * __real_malloc(std::size_t size);
void * __real_realloc(void * block, std::size_t size);

void * __wrap_malloc(std::size_t size)
{
    return Fails() ? nullptr : __real_malloc(size);
}
void * __wrap_realloc(void * block, std::size_t size)
{
    return Fails() ? nullptr : __real_realloc(block, size);
}
}

namespace {

TEST(ValueMemoryFaultTest, OctetsWithoutMemoryLeaveTheValueNull)
{
    CVarBind binding;
    SetVarBindOctets(binding.Get(), "old", 3, ASN_OCTETSTRING);
    const CFailingBlock fault(1);
    EXPECT_EQ(0, SetVarBindOctets(binding.Get(), "abc", 3, ASN_OCTETSTRING));
    EXPECT_EQ(ASN_NULL, binding->value.asnType);
    EXPECT_TRUE(fault.Fired());
}

TEST(ValueMemoryFaultTest, AnAddressWithoutMemoryFailsFromANumberAndFromText)
{
    CVarBind binding;
    {
        const CFailingBlock fault(1);
        EXPECT_EQ(0, SetVarBindNumber(binding.Get(), 1, ASN_IPADDRESS));
        EXPECT_TRUE(fault.Fired());
    }
    EXPECT_EQ(ASN_NULL, binding->value.asnType);
    for (const unsigned n : {1u, 2u}) { // the arcs and the address
        const CFailingBlock fault(n);
        EXPECT_EQ(0, SetVarBindFromText(binding.Get(), "10.1.2.3", ASN_IPADDRESS));
        EXPECT_TRUE(fault.Fired());
        EXPECT_EQ(ASN_NULL, binding->value.asnType);
    }
}

TEST(ValueMemoryFaultTest, ATextThatFindsNoMemoryIsNoOid)
{
    AsnObjectIdentifier oid{};
    ASSERT_EQ(1, StrToOid("1.3", &oid));
    const CFailingBlock fault(1);
    EXPECT_EQ(0, StrToOid("1.3.6", &oid));
    EXPECT_TRUE(fault.Fired());
    EXPECT_EQ(0u, oid.idLength);
    EXPECT_EQ(nullptr, static_cast<std::uint32_t *>(oid.ids));
}

TEST(ValueMemoryFaultTest, WhatCannotBeAppendedLeavesTheOid)
{
    COid oid("1.3");
    {
        const CFailingBlock fault(1);
        EXPECT_EQ(0, OidAppendNumber(oid.Get(), 6));
        EXPECT_TRUE(fault.Fired());
    }
    {
        const CFailingBlock fault(1);
        EXPECT_EQ(0, OidAppendString(oid.Get(), "a text of many characters, so that it needs a block of its own"));
        EXPECT_TRUE(fault.Fired());
    }
    EXPECT_EQ((TArcs{1, 3}), ArcsOf(*oid.Get()));
}

struct SInsert {
    char const * name;
    void (*insert)(CTestAgent & tree);
};

class InsertWithoutMemoryTest : public testing::TestWithParam<SInsert> {};

TEST_P(InsertWithoutMemoryTest, LeavesNoObjectThatAWalkCannotPass)
{
    bool without = false;
    bool fired = true;
    for (unsigned n = 1; fired; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        ASSERT_LT(n, 100u);
        CTestAgent tree;
        tree.MibInsertConstOid("1.3.1", "before", 1, ASN_INTEGER, 0);
        tree.MibInsertConstOid("1.3.3", "behind", 3, ASN_INTEGER, 0);
        {
            const CFailingBlock fault(n);
            try {
                GetParam().insert(tree);
            } catch (std::bad_alloc const &) {
                without = true;
            }
            fired = fault.Fired();
        }
        const std::vector<std::string> shown = Walk(tree);
        EXPECT_EQ(tree.MibSize(), shown.size());
        ASSERT_LE(2u, shown.size());
        EXPECT_EQ("1.3.3", shown.back());
        if (!fired) {
            EXPECT_EQ("name", Get(tree, "1.3.2").name);
        }
    }
    EXPECT_TRUE(without);
}

INSTANTIATE_TEST_SUITE_P(Inserts, InsertWithoutMemoryTest,
                         testing::Values(SInsert{"Variable",
                                                 [](CTestAgent & tree) {
                                                     tree.MibInsertVarOid("1.3.2", "name", ASN_INTEGER,
                                                                          CTestAgent::Get(), {}, {}, {}, 2, nullptr);
                                                 }},
                                         SInsert{"ExtendedVariable",
                                                 [](CTestAgent & tree) {
                                                     tree.MibInsertVarOidEx("1.3.2", "name", ASN_INTEGER,
                                                                            CTestAgent::Ex(), nullptr);
                                                 }},
                                         SInsert{"WritableText",
                                                 [](CTestAgent & tree) {
                                                     tree.MibInsertConstOid("1.3.2", "name", "a value", ASN_OCTETSTRING,
                                                                            2);
                                                 }}),
                         [](auto const & test) { return std::string(test.param.name); });

TEST(ValueMemoryFaultTest, ACommitThatFindsNoMemoryIsAnErrorAndLeavesTheOldValue)
{
    CTestAgent tree;
    tree.MibInsertConstOid("1.3.2", "name", 7, ASN_INTEGER, 2);
    CVarBind binding;
    FillBinding(binding, "1.3.2");
    SetVarBindOctets(binding.Get(), "new", 3, ASN_OCTETSTRING);
    for (const unsigned n : {1u, 2u}) { // the OID and the value
        std::uint32_t status = 99;
        const CFailingBlock fault(n);
        EXPECT_EQ(1, tree.MibSetVarbind(binding.Get(), &status));
        EXPECT_TRUE(fault.Fired());
        EXPECT_EQ(static_cast<std::uint32_t>(SNMP_ERRORSTATUS_GENERR), status);
        EXPECT_EQ("Integer: 7 (0x7)", Get(tree, "1.3.2").value);
    }
}

} // namespace
