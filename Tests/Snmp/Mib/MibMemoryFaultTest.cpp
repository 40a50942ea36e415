#include <map>
#include <new>
#include <random>

#include "MibFixture.h"
#include "Support/AllocationFault.h"

/// What the tree does when memory for itself can't be had.

namespace {

constexpr char kLongName[] = "aNameThatDoesNotFitIntoAStringObject";
constexpr char kOtherLongName[] = "anotherNameThatDoesNotFitIntoAStringObject";

/// Does the work with each of its allocations failing in turn, until none is left to fail; `check` looks at the tree
/// after each failure. Returns how many there were.
template <class TWork, class TCheck>
unsigned SweepAllocations(TWork const & work, TCheck const & check)
{
    for (unsigned n = 1; n < 1000; ++n) {
        bool raised = false;
        bool fired = false;
        {
            const CAllocationFault fault(n);
            try {
                work();
            } catch (std::bad_alloc const &) {
                raised = true;
            }
            fired = fault.Fired();
        }
        if (!fired) {
            EXPECT_FALSE(raised);
            return n - 1;
        }
        SCOPED_TRACE("allocation " + std::to_string(n));
        EXPECT_TRUE(raised);
        check();
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

struct SInsert {
    char const * name;
    void (*insert)(CTestAgent & tree, char const * oid, char const * name);
};

constexpr SInsert kInserts[] = {
    {"Constant", [](CTestAgent & tree, char const * oid,
                    char const * name) { tree.MibInsertConstOid(oid, name, 5, ASN_INTEGER, 0); }},
    {"Text", [](CTestAgent & tree, char const * oid,
                char const * name) { tree.MibInsertConstOid(oid, name, "a value", ASN_OCTETSTRING, 0); }},
    {"WritableConstant", [](CTestAgent & tree, char const * oid,
                            char const * name) { tree.MibInsertConstOid(oid, name, 5, ASN_INTEGER, 2); }},
    {"Variable",
     [](CTestAgent & tree, char const * oid, char const * name) {
         tree.MibInsertVarOid(oid, name, ASN_INTEGER, CTestAgent::Get(), {}, {}, {}, 2, nullptr);
     }},
    {"ExtendedVariable",
     [](CTestAgent & tree, char const * oid, char const * name) {
         tree.MibInsertVarOidEx(oid, name, ASN_INTEGER, CTestAgent::Ex(), nullptr);
     }},
    {"TableVariable",
     [](CTestAgent & tree, char const * oid, char const * name) {
         tree.MibInsertVarTableOid(oid, name, ASN_INTEGER, CTestAgent::Get(), {}, {}, {}, 2, kNoOidIndex, kNoOidIndex,
                                   kNoOidIndex, kNoOidIndex, kNoOidIndex);
     }},
};

class MibMemoryFaultTest : public testing::TestWithParam<SInsert> {
protected:
    /// What a walk shows: names, OIDs and values.
    std::vector<std::string> Shown()
    {
        std::vector<std::string> shown;
        for (std::string const & oid : Walk(m_tree)) {
            const SReply reply = Get(m_tree, oid);
            shown.push_back(reply.oid + ' ' + reply.name + ' ' + reply.value);
        }
        return shown;
    }

    CTestAgent m_tree;
};

TEST_P(MibMemoryFaultTest, ANewObjectIsThereWholeOrNotAtAll)
{
    m_tree.MibInsertConstOid("1.3.1", "before", 1, ASN_INTEGER, 0);
    m_tree.MibInsertConstOid("1.3.3", "behind", 3, ASN_INTEGER, 0);
    const std::vector<std::string> before = Shown();
    EXPECT_LT(0u, SweepAllocations([&] { GetParam().insert(m_tree, "1.3.2", kLongName); },
                                   [&] {
                                       EXPECT_EQ(2u, m_tree.MibSize());
                                       EXPECT_EQ(before, Shown());
                                   }));
    EXPECT_EQ(3u, Shown().size());
    EXPECT_EQ(kLongName, Get(m_tree, "1.3.2").name);
}

TEST_P(MibMemoryFaultTest, AnObjectThatIsReplacedIsTheOldOneOrTheNewOne)
{
    for (SInsert const & old : kInserts) {
        SCOPED_TRACE(old.name);
        m_tree.MibClear();
        old.insert(m_tree, "1.3.2", kOtherLongName);
        m_tree.MibInsertConstOid("1.3.3", "behind", 3, ASN_INTEGER, 0);
        const std::vector<std::string> before = Shown();
        SweepAllocations([&] { GetParam().insert(m_tree, "1.3.2", kLongName); }, [&] { EXPECT_EQ(before, Shown()); });
        EXPECT_EQ(2u, Shown().size());
        EXPECT_EQ(kLongName, Get(m_tree, "1.3.2").name);
    }
}

INSTANTIATE_TEST_SUITE_P(Inserts, MibMemoryFaultTest, testing::ValuesIn(kInserts),
                         [](auto const & test) { return std::string(test.param.name); });

TEST(MibMemoryFaultInCallbackTest, AContextThatCannotBeKeptForTheCallbackStaysWithItsObject)
{
    CTestAgent tree;
    const auto insert = [&](MibCallback callback, char const * name, char const * context) {
        tree.MibInsertOidWithStringContext("1.3.2", name, ASN_INTEGER, callback, {}, CTestAgent::GetSet(), {}, 2,
                                           context, kNoOidIndex, kNoOidIndex, kNoOidIndex, kNoOidIndex, kNoOidIndex);
    };
    insert({}, "old", "old context");
    unsigned failures = 0;
    tree.On("GetSet", [&](MibEntry *, RFC1157VarBind *) {
        failures = SweepAllocations([&] { insert(CTestAgent::Get(), "new", "new context"); },
                                    [&] { EXPECT_EQ("old", Get(tree, "1.3.2").name); });
        return 0u;
    });
    tree.On("Get", [&](MibEntry *, RFC1157VarBind *) { return 0u; });
    EXPECT_EQ(1, CheckSet(tree, "1.3.2").found);
    EXPECT_EQ(2u, failures); // the new context, and what keeps the old one
    EXPECT_EQ("new", Get(tree, "1.3.2").name);
}

TEST(MibMemoryFaultManyTest, WhateverAllocationFailsWhileALargeTreeGrowsItIsTheSameAsAMap)
{
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    CTestAgent tree;
    std::map<TArcs, std::uint32_t> model;
    unsigned failures = 0;
    for (std::uint32_t step = 0; step < 12000; ++step) {
        // First rows in their order, so that leaves become full; then rows between them.
        const TArcs key = step < 6000 ? TArcs{1, 3, step / 100, step % 100, 1}
                                      : TArcs{1, 3, static_cast<std::uint32_t>(random() % 60),
                                              static_cast<std::uint32_t>(random() % 100), 2};
        std::string text;
        for (const std::uint32_t arc : key)
            text += (text.empty() ? "" : ".") + std::to_string(arc);
        const bool known = model.contains(key);
        failures += SweepAllocations([&] { tree.MibInsertConstOid(text.c_str(), "name", step, ASN_INTEGER, 0); },
                                     [&] {
                                         ASSERT_EQ(model.size(), tree.MibSize());
                                         ASSERT_EQ(known ? 1 : 0, Get(tree, text).found);
                                     });
        model[key] = step;
    }
    EXPECT_LT(150u, failures); // pages of cells, leaves and what lies above them
    std::size_t found = 0;
    CVarBind binding;
    std::uint32_t status = 0;
    auto expected = model.begin();
    for (; tree.MibGetVarbind(binding.Get(), SNMP_PDU_GETNEXT, &status, nullptr) != 0; ++expected, ++found) {
        ASSERT_NE(model.end(), expected);
        ASSERT_EQ(expected->first, ArcsOf(binding->name));
        ASSERT_EQ(expected->second, binding->value.asnValue.unsigned32);
    }
    EXPECT_EQ(model.size(), found);
}

} // namespace
