#include <algorithm>
#include <map>
#include <random>

#include "MibFixture.h"

namespace {

/// The same as the tree, in a std::map.
using TModel = std::map<TArcs, std::uint32_t>;

std::string Text(TArcs const & arcs)
{
    std::string text;
    for (const std::uint32_t arc : arcs)
        text += (text.empty() ? "" : ".") + std::to_string(arc);
    return text;
}

void Insert(CMibTree & tree, TArcs const & key, std::uint32_t value, bool writable)
{
    tree.MibInsertConstOid(Text(key).c_str(), writable ? "writable" : "plain", value, ASN_INTEGER, writable ? 2 : 0);
}

void ExpectNext(CMibTree & tree, TModel const & model, TArcs key)
{
    const auto expected = model.upper_bound(key);
    CVarBind binding;
    const AsnObjectIdentifier oid{static_cast<std::uint32_t>(key.size()), key.data()};
    SnmpUtilOidCpy(&binding->name, &oid);
    std::uint32_t status = 9;
    const int found = tree.MibGetVarbind(binding.Get(), SNMP_PDU_GETNEXT, &status, nullptr);
    ASSERT_EQ(expected != model.end() ? 1 : 0, found) << Text(key);
    if (found == 0) return;
    ASSERT_EQ(expected->first, ArcsOf(binding->name)) << Text(key);
    ASSERT_EQ(expected->second, binding->value.asnValue.unsigned32);
}

void ExpectSame(CMibTree & tree, TModel const & model)
{
    ASSERT_EQ(model.size(), tree.MibSize());
    ExpectNext(tree, model, {});
    for (auto const & [key, value] : model)
        ASSERT_NO_FATAL_FAILURE(ExpectNext(tree, model, key));
}

/// Makes keys of one kind.
struct SKeys {
    char const * name;
    std::function<TArcs(std::mt19937 &)> make;
    std::size_t steps;
};

std::ostream & operator<<(std::ostream & out, SKeys const & keys)
{
    return out << keys.name;
}

std::uint32_t Pick(std::mt19937 & random, std::uint32_t most)
{
    return std::uniform_int_distribution<std::uint32_t>(0, most)(random);
}

TArcs TableKey(std::mt19937 & random)
{
    return {1,
            3,
            6,
            1,
            4,
            1,
            88417,
            2,
            49,
            1,
            5,
            2,
            1,
            Pick(random, 30),
            Pick(random, 3),
            Pick(random, 9),
            Pick(random, 9)};
}

TArcs AnyLength(std::mt19937 & random)
{
    TArcs key(2 + Pick(random, 5));
    for (std::uint32_t & arc : key)
        arc = Pick(random, 2);
    return key;
}

TArcs Large(std::mt19937 & random)
{
    constexpr std::uint32_t edges[] = {0,      1,       0xFFFC,     0xFFFD,     0xFFFE,
                                       0xFFFF, 0x10000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    TArcs key(2 + Pick(random, 3));
    for (std::uint32_t & arc : key)
        arc = edges[Pick(random, std::size(edges) - 1)];
    return key;
}

TArcs Deep(std::mt19937 & random)
{
    TArcs key(20 + Pick(random, 30), 1);
    key[key.size() - 1 - Pick(random, 9)] = Pick(random, 0x20000);
    return key;
}

class MibModelTest : public testing::TestWithParam<SKeys> {};

TEST_P(MibModelTest, IsTheSameAsAMapAfterRandomInsertsAndDeletes)
{
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    CPlainAgent tree;
    TModel model;
    for (std::size_t step = 0; step < GetParam().steps; ++step) {
        const TArcs key = GetParam().make(random);
        const std::uint32_t choice = Pick(random, 99);
        if (choice < 80) {
            Insert(tree, key, static_cast<std::uint32_t>(step), choice < 10);
            model[key] = static_cast<std::uint32_t>(step);
        } else if (choice < 96) {
            ASSERT_NO_FATAL_FAILURE(ExpectNext(tree, model, key));
            EXPECT_EQ(model.contains(key) ? 1 : 0, Get(tree, Text(key)).found);
        } else {
            TArcs root(key.begin(), key.end() - (Pick(random, 9) == 0 ? 2 : 1));
            const AsnObjectIdentifier oid{static_cast<std::uint32_t>(root.size()), root.data()};
            const std::uint32_t last = Pick(random, 2) == 0 ? key.back() : kNoOidIndex;
            const auto erased = std::erase_if(model, [&](auto const & item) {
                TArcs const & arcs = item.first;
                return arcs.size() >= root.size() && std::equal(root.begin(), root.end(), arcs.begin()) &&
                       (last == kNoOidIndex || arcs.back() == last);
            });
            ASSERT_EQ(erased, tree.MibDeleteOids(&oid, last));
        }
        if (step % 2000 == 0) {
            ASSERT_NO_FATAL_FAILURE(ExpectSame(tree, model));
        }
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSame(tree, model));
}

INSTANTIATE_TEST_SUITE_P(Keys, MibModelTest,
                         testing::Values(SKeys{"OfATable", TableKey, 20000}, SKeys{"OfAnyLength", AnyLength, 8000},
                                         SKeys{"WithLargeArcs", Large, 8000}, SKeys{"Deep", Deep, 8000}),
                         [](auto const & test) { return std::string(test.param.name); });

/// Orders of inserting 20,000 keys.
struct SOrder {
    char const * name;
    void (*arrange)(std::vector<TArcs> & keys);
};

std::ostream & operator<<(std::ostream & out, SOrder const & order)
{
    return out << order.name;
}

class MibOrderTest : public testing::TestWithParam<SOrder> {};

TEST_P(MibOrderTest, AllKeysAreFoundAndAllCanGo)
{
    std::vector<TArcs> keys;
    for (std::uint32_t column = 1; column <= 20; ++column) {
        for (std::uint32_t row = 0; row < 1000; ++row)
            keys.push_back({1, 3, 6, column, row / 100, row % 100});
    }
    GetParam().arrange(keys);
    CPlainAgent tree;
    TModel model;
    for (TArcs const & key : keys) {
        Insert(tree, key, key.back(), false);
        model[key] = key.back();
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSame(tree, model));
    for (std::uint32_t column = 20; column >= 1; column -= 2) {
        TArcs root{1, 3, 6, column};
        const AsnObjectIdentifier oid{static_cast<std::uint32_t>(root.size()), root.data()};
        EXPECT_EQ(1000u, tree.MibDeleteOids(&oid));
        std::erase_if(model, [column](auto const & item) { return item.first[3] == column; });
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSame(tree, model));
    for (TArcs const & key : keys) {
        Insert(tree, key, key.back(), false);
        model[key] = key.back();
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSame(tree, model));
}

INSTANTIATE_TEST_SUITE_P(
    Orders, MibOrderTest,
    testing::Values(SOrder{"Rising", [](std::vector<TArcs> &) {}},
                    SOrder{"Falling", [](std::vector<TArcs> & keys) { std::reverse(keys.begin(), keys.end()); }},
                    SOrder{"RowByRow",
                           [](std::vector<TArcs> & keys) {
                               std::stable_sort(keys.begin(), keys.end(), [](TArcs const & left, TArcs const & right) {
                                   return left[4] * 100 + left[5] < right[4] * 100 + right[5];
                               });
                           }},
                    SOrder{
                        "Shuffled",
                        [](std::vector<TArcs> & keys) { std::shuffle(keys.begin(), keys.end(), std::mt19937(49)); }}),
    [](auto const & test) { return std::string(test.param.name); });

} // namespace
