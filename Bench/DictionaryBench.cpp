// Looking an identifier's name up, against maps of strings, and what it takes to have the tables at all.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "Ratio.h"
#include "Snmp/Include/Dictionaries.h"

namespace {

using namespace SNMP::Dictionaries;

constexpr std::size_t kLookUps = 1000000;
constexpr std::size_t kStarts = 200;
constexpr double kHashTarget = 1.25; // as fast as it, give or take
constexpr double kMapTarget = 0.2;
constexpr double kStartTarget = 0.001;

template <class TMap, class TTable>
TMap MapOf(TTable const & table)
{
    TMap map;
    for (std::size_t place = 0; place < table.RowCount(); ++place) {
        auto const [id, name] = table.Row(place);
        map.emplace(id, name);
    }
    return map;
}

/// Identifiers of events, each known, in an order that no predictor learns.
std::vector<int> Questions()
{
    std::mt19937 random(1);
    std::uniform_int_distribution<std::size_t> place(0, kEvents.RowCount() - 1);
    std::vector<int> ids(4096);
    for (int & id : ids)
        id = kEvents.Row(place(random)).id;
    return ids;
}

/// Inside: one look-up after the other; the name's length is used.
template <class TLookUp>
double LookUp(std::vector<int> const & ids, TLookUp lookUp)
{
    return Bench::NanosecondsEach(kLookUps, [&] {
        std::size_t length = 0;
        for (std::size_t i = 0; i < kLookUps; ++i)
            length += lookUp(ids[i % 4096]);
        if (length < kLookUps) std::abort(); // every name was found
        benchmark::DoNotOptimize(length);
    });
}

template <class TMap>
Bench::SPair Against()
{
    auto const ids = std::make_shared<std::vector<int>>(Questions());
    auto const map = std::make_shared<TMap>(MapOf<TMap>(kEvents));
    return {[=] { return LookUp(*ids, [&](int id) { return map->find(id)->second.size(); }); },
            [=] { return LookUp(*ids, [&](int id) { return kEvents.NameOf(id).size(); }); }};
}

/// Inside: from nothing to the first name of each table.
double StartWithMaps()
{
    using Map = std::map<int, std::string>;
    return Bench::NanosecondsEach(kStarts, [] {
        for (std::size_t i = 0; i < kStarts; ++i) {
            benchmark::DoNotOptimize(MapOf<Map>(kResultCodes).find(20000));
            benchmark::DoNotOptimize(MapOf<Map>(kEvents).find(10022));
            benchmark::DoNotOptimize(MapOf<Map>(kCommands).find(50000));
            benchmark::DoNotOptimize(MapOf<Map>(kProperties).find(30000));
            benchmark::DoNotOptimize(MapOf<Map>(kPropertyValues).find(40000));
        }
    });
}

/// The same. The tables are there when the program is; what is left is five look-ups.
double StartWithTables()
{
    return Bench::NanosecondsEach(kStarts * 1000, [] {
        for (std::size_t i = 0; i < kStarts * 1000; ++i) {
            int shift = 0;
            benchmark::DoNotOptimize(shift); // or the compiler has the names ready
            benchmark::DoNotOptimize(kResultCodes.NameOf(20000 + shift));
            benchmark::DoNotOptimize(kEvents.NameOf(10022 + shift));
            benchmark::DoNotOptimize(kCommands.NameOf(50000 + shift));
            benchmark::DoNotOptimize(kProperties.NameOf(30000 + shift));
            benchmark::DoNotOptimize(kPropertyValues.NameOf(40000 + shift));
        }
    });
}

} // namespace

int main(int argc, char ** argv)
{
    Bench::AddRatio("name of an event / std::unordered_map", kHashTarget,
                    Against<std::unordered_map<int, std::string>>);
    Bench::AddRatio("name of an event / std::map", kMapTarget, Against<std::map<int, std::string>>);
    Bench::AddRatio("first name of five tables / five std::map", kStartTarget, [] {
        return Bench::SPair{StartWithMaps, StartWithTables};
    });
    Bench::AddAmount("five tables, bytes of read-only data", 100000, "bytes", [] {
        return static_cast<double>(sizeof kResultCodes + sizeof kEvents + sizeof kCommands + sizeof kProperties +
                                   sizeof kPropertyValues);
    });
    return Bench::Main(argc, argv);
}
