#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "PlainMap.h"
#include "Ratio.h"
#include "Snmp/Mib/SnmpMibTree.h"

// A table of 31 integer columns and three indexes, 17 arcs to a cell, filled row by row as the agent does it.

namespace {

std::size_t g_bytes = 0; // handed out by operator new, with what the allocator adds to each block
bool g_counts = false;

std::size_t WithOverhead(std::size_t bytes)
{
    return std::max<std::size_t>(32, (bytes + 8 + 15) / 16 * 16);
}

void * CountedNew(std::size_t bytes)
{
    auto * const block = static_cast<unsigned char *>(std::malloc(bytes));
    if (block == nullptr) throw std::bad_alloc();
    if (g_counts) g_bytes += WithOverhead(bytes);
    return block;
}

} // namespace

void * operator new(std::size_t bytes)
{
    return CountedNew(bytes);
}

void operator delete(void * block) noexcept
{
    std::free(block);
}

void operator delete(void * block, std::size_t) noexcept
{
    std::free(block);
}

namespace {

constexpr std::uint32_t kColumns = 31;
constexpr std::size_t kSizes[] = {3100, 31000, 310000};

class CBenchAgent : public CSnmpMibTree<CBenchAgent> {
public:
    int m_indexAppendMode = 0;
};

struct SRow {
    std::uint32_t index1;
    std::uint32_t index2;
    std::uint32_t index3;
};

SRow RowOf(std::uint32_t row)
{
    return {row / 100 + 1, row / 10 % 10, row % 10};
}

std::vector<std::string> Columns()
{
    std::vector<std::string> columns;
    for (std::uint32_t column = 1; column <= kColumns; ++column) {
        columns.push_back("1.3.6.1.4.1.88417.2.49.1.5.2.1." + std::to_string(column) + ".0.0.0");
    }
    return columns;
}

std::vector<std::string> const g_columns = Columns();
constexpr char const * kName = "kxrPhysicalDeviceSSDPowerOnHours";

void InsertCell(CBenchAgent & tree, std::uint32_t column, SRow const & row, std::uint32_t value)
{
    tree.MibInsertConstTableOid(g_columns[column].c_str(), kName, value, ASN_INTEGER, row.index1, row.index2,
                                row.index3, kNoOidIndex, kNoOidIndex);
}

void InsertCell(CPlainMap & map, std::uint32_t column, SRow const & row, std::uint32_t value)
{
    map.InsertCell(g_columns[column].c_str(), kName, value, row.index1, row.index2, row.index3);
}

template <class TStore>
void Fill(TStore & store, std::size_t objects)
{
    const auto rows = static_cast<std::uint32_t>(objects / kColumns);
    for (std::uint32_t row = 0; row < rows; ++row) {
        const SRow indexes = RowOf(row);
        for (std::uint32_t column = 0; column < kColumns; ++column)
            InsertCell(store, column, indexes, row);
    }
}

int GetNext(CBenchAgent & tree, RFC1157VarBind & binding)
{
    std::uint32_t status = 0;
    return tree.MibGetVarbind(&binding, SNMP_PDU_GETNEXT, &status, nullptr);
}

int GetNext(CPlainMap & map, RFC1157VarBind & binding)
{
    return map.GetNext(&binding);
}

/// The OIDs of all cells, in the order of the tree.
std::vector<std::vector<std::uint32_t>> Keys(std::size_t objects)
{
    std::vector<std::vector<std::uint32_t>> keys;
    for (std::uint32_t column = 1; column <= kColumns; ++column) {
        for (std::uint32_t row = 0; row < objects / kColumns; ++row) {
            const SRow at = RowOf(row);
            keys.push_back({1, 3, 6, 1, 4, 1, 88417, 2, 49, 1, 5, 2, 1, column, at.index1, at.index2, at.index3});
        }
    }
    return keys;
}

constexpr std::size_t kLookups = 100000; // of a batch
constexpr std::size_t kInserts = 62000;  // of a batch, at least

/// GETNEXT behind each of the OIDs in turn. Inside: the caller's copy of the OID, the search,
/// the answer, and freeing it.
template <class TStore>
double WalkBehind(TStore & store, std::vector<std::vector<std::uint32_t>> const & keys)
{
    std::uint64_t sum = 0;
    const double time = Bench::NanosecondsEach(kLookups, [&] {
        std::size_t at = 0;
        for (std::size_t i = 0; i < kLookups; ++i) {
            std::vector<std::uint32_t> const & arcs = keys[at];
            if (++at == keys.size()) at = 0;
            const AsnObjectIdentifier key{static_cast<std::uint32_t>(arcs.size()),
                                          const_cast<std::uint32_t *>(arcs.data())};
            RFC1157VarBind binding{};
            binding.value.asnType = ASN_NULL;
            SnmpUtilOidCpy(&binding.name, &key);
            GetNext(store, binding);
            sum += binding.value.asnValue.unsigned32;
            SnmpUtilVarBindFree(&binding);
        }
    });
    benchmark::DoNotOptimize(sum);
    return time;
}

/// The baseline and the tree with the same cells.
struct SFilled {
    CPlainMap map;
    CBenchAgent tree;
    std::vector<std::vector<std::uint32_t>> keys;

    explicit SFilled(std::size_t objects) : keys(Keys(objects))
    {
        Fill(map, objects);
        Fill(tree, objects);
    }
};

Bench::SPair NextInOrder(std::size_t objects)
{
    const auto filled = std::make_shared<SFilled>(objects);
    return {[filled] { return WalkBehind(filled->map, filled->keys); },
            [filled] { return WalkBehind(filled->tree, filled->keys); }};
}

Bench::SPair NextAtRandom(std::size_t objects)
{
    const auto filled = std::make_shared<SFilled>(objects);
    std::shuffle(filled->keys.begin(), filled->keys.end(), std::mt19937(49));
    return {[filled] { return WalkBehind(filled->map, filled->keys); },
            [filled] { return WalkBehind(filled->tree, filled->keys); }};
}

/// Filling an empty store. Inside: text to OID, indexes, storing. Clearing isn't.
template <class TStore>
double FillEmpty(std::size_t objects)
{
    std::vector<TStore> stores(std::max<std::size_t>(kInserts / objects, 1));
    return Bench::NanosecondsEach(objects * stores.size(), [&] {
        for (TStore & store : stores)
            Fill(store, objects);
    });
}

Bench::SPair Insert(std::size_t objects)
{
    return {[objects] { return FillEmpty<CPlainMap>(objects); }, [objects] { return FillEmpty<CBenchAgent>(objects); }};
}

template <class TWork>
void Repeat(std::size_t rounds, TWork work)
{
    for (std::size_t round = 0; round < rounds; ++round)
        work();
}

/// Storing all cells once more.
Bench::SPair Replace(std::size_t objects)
{
    const auto filled = std::make_shared<SFilled>(objects);
    const std::size_t rounds = std::max<std::size_t>(kInserts / objects, 1);
    return {[=] {
                return Bench::NanosecondsEach(objects * rounds,
                                              [&] { Repeat(rounds, [&] { Fill(filled->map, objects); }); });
            },
            [=] {
                return Bench::NanosecondsEach(objects * rounds,
                                              [&] { Repeat(rounds, [&] { Fill(filled->tree, objects); }); });
            }};
}

/// A rebuild: all rows deleted and inserted again.
Bench::SPair Rebuild(std::size_t objects)
{
    const auto filled = std::make_shared<SFilled>(objects);
    const auto root = std::make_shared<COid>("1.3.6.1.4.1.88417.2.49.1.5.2");
    const std::size_t rounds = std::max<std::size_t>(kInserts / objects, 1);
    return {[=] {
                return Bench::NanosecondsEach(objects * rounds, [&] {
                    Repeat(rounds, [&] {
                        filled->map.Erase(*root->Get());
                        Fill(filled->map, objects);
                    });
                });
            },
            [=] {
                return Bench::NanosecondsEach(objects * rounds, [&] {
                    Repeat(rounds, [&] {
                        filled->tree.MibDeleteOids(root->Get());
                        Fill(filled->tree, objects);
                    });
                });
            }};
}

/// Bytes of memory for one integer cell, what the allocator adds included.
double BytesForCell(std::size_t objects)
{
    g_bytes = 0;
    g_counts = true;
    CBenchAgent tree;
    Fill(tree, objects);
    g_counts = false;
    return static_cast<double>(g_bytes) / static_cast<double>(objects);
}

} // namespace

int main(int argc, char ** argv)
{
    for (const std::size_t objects : kSizes) {
        const std::string size = "/" + std::to_string(objects);
        Bench::AddRatio("GetNextInOrder" + size, 0.5, [objects] { return NextInOrder(objects); });
        Bench::AddRatio("GetNextAtRandom" + size, 0.5, [objects] { return NextAtRandom(objects); });
        Bench::AddRatio("InsertCell" + size, 0.45, [objects] { return Insert(objects); });
        Bench::AddRatio("ReplaceCell" + size, 0.45, [objects] { return Replace(objects); });
        Bench::AddRatio("RebuildTable" + size, 0.45, [objects] { return Rebuild(objects); });
        Bench::AddAmount("BytesForIntegerCell" + size, 290, "bytes", [objects] { return BytesForCell(objects); });
    }
    return Bench::Main(argc, argv);
}
