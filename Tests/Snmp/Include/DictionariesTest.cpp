#include "Snmp/Include/Dictionaries.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <map>
#include <set>
#include <string>

namespace {

using namespace SNMP::Dictionaries;
using SNMP::SNameRow;

// What holds for every table before any program runs: it is a constant, and none of its bytes depends on where the
// program is loaded. (A bit_cast of anything that holds a pointer is no constant expression.)
template <class TTable>
consteval bool IsPlainReadOnlyData(TTable const & table)
{
    static_assert(std::is_trivially_copyable_v<TTable> && std::is_trivially_destructible_v<TTable>);
    return std::bit_cast<std::array<unsigned char, sizeof(TTable)>>(table).size() == sizeof(TTable);
}
static_assert(IsPlainReadOnlyData(kResultCodes));
static_assert(IsPlainReadOnlyData(kEvents));
static_assert(IsPlainReadOnlyData(kCommands));
static_assert(IsPlainReadOnlyData(kProperties));
static_assert(IsPlainReadOnlyData(kPropertyValues));

// Names are constants too.
static_assert(kEvents.NameOf(10022) == "DISK_OFFLINE");
static_assert(kEvents.NameOf(6).empty() && !kEvents.Contains(6));
static_assert(noexcept(kEvents.NameOf(1)) && noexcept(kEvents.Contains(1)));

/// A table without its type.
struct STable {
    char const * name;
    std::size_t rows;
    std::size_t runs;
    std::size_t ids; ///< rows less those without effect
    std::size_t (*rowCount)();
    std::size_t (*runCount)();
    SNameRow (*row)(std::size_t);
    std::string_view (*nameOf)(std::int32_t);
    bool (*contains)(std::int32_t);
};

template <auto const & TABLE>
constexpr STable Table(char const * name, std::size_t rows, std::size_t runs, std::size_t ids)
{
    return {name,
            rows,
            runs,
            ids,
            [] { return TABLE.RowCount(); },
            [] { return TABLE.RunCount(); },
            [](std::size_t place) { return TABLE.Row(place); },
            [](std::int32_t id) { return TABLE.NameOf(id); },
            [](std::int32_t id) { return TABLE.Contains(id); }};
}

constexpr STable kTables[] = {
    Table<kResultCodes>("ResultCodes", 176, 2, 176),
    Table<kEvents>("Events", 1346, 8, 1346),
    Table<kCommands>("Commands", 164, 3, 164),
    Table<kProperties>("Properties", 658, 10, 656),
    Table<kPropertyValues>("PropertyValues", 668, 4, 667),
};
constexpr STable const & kResultCodeTable = kTables[0];
constexpr STable const & kEventTable = kTables[1];
constexpr STable const & kCommandTable = kTables[2];
constexpr STable const & kPropertyTable = kTables[3];
constexpr STable const & kPropertyValueTable = kTables[4];

std::vector<SNameRow> RowsOf(STable const & table)
{
    std::vector<SNameRow> rows;
    for (std::size_t place = 0; place < table.rowCount(); ++place)
        rows.push_back(table.row(place));
    return rows;
}

class DictionaryTest : public testing::TestWithParam<STable> {};

TEST_P(DictionaryTest, HasItsRowsAndRuns)
{
    EXPECT_EQ(GetParam().rows, GetParam().rowCount());
    EXPECT_EQ(GetParam().runs, GetParam().runCount());
    std::size_t runs = 1;
    std::vector<SNameRow> const rows = RowsOf(GetParam());
    for (std::size_t i = 1; i < rows.size(); ++i)
        runs += rows[i].id == rows[i - 1].id + 1 ? 0u : 1u;
    EXPECT_EQ(GetParam().runs, runs) << "a run ends where the identifiers aren't consecutive";
}

TEST_P(DictionaryTest, AnswersAsAMapThatIsFilledInTheOrderOfTheRows)
{
    std::map<std::int32_t, std::string> expected;
    for (SNameRow const & row : RowsOf(GetParam()))
        expected.emplace(row.id, row.name); // a later row of the same identifier has no effect
    EXPECT_EQ(GetParam().ids, expected.size());
    for (auto const & [id, name] : expected) {
        EXPECT_EQ(name, GetParam().nameOf(id));
        for (std::int64_t const near : {std::int64_t{id} - 1, std::int64_t{id} + 1}) {
            if (near > std::numeric_limits<std::int32_t>::max()) continue;
            EXPECT_EQ(expected.count(static_cast<std::int32_t>(near)) == 1,
                      GetParam().contains(static_cast<std::int32_t>(near)))
                << near;
        }
    }
}

TEST_P(DictionaryTest, HasNoNameForOtherNumbers)
{
    for (std::int32_t const id : {std::numeric_limits<std::int32_t>::min(), -2147473648, -20000, -1, 4, 9999, 13000,
                                  19999, 39999, 51000, 65536 + 20000, 2147483646}) {
        if (GetParam().name == std::string("Events") && id == 4) continue;
        EXPECT_FALSE(GetParam().contains(id)) << id;
        EXPECT_EQ("", GetParam().nameOf(id)) << id;
    }
}

TEST_P(DictionaryTest, HasNoBlankOrControlInAName)
{
    for (SNameRow const & row : RowsOf(GetParam()))
        for (char const c : row.name)
            EXPECT_TRUE((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_')
                << row.id;
}

INSTANTIATE_TEST_SUITE_P(Tables, DictionaryTest, testing::ValuesIn(kTables),
                         [](auto const & test) { return std::string(test.param.name); });

struct SRunEnds {
    char const * title;
    STable table;
    std::size_t place; ///< of the first row
    std::int32_t first;
    char const * firstName;
    std::int32_t last;
    char const * lastName;
};

class DictionaryRunTest : public testing::TestWithParam<SRunEnds> {};

TEST_P(DictionaryRunTest, BeginsAndEndsWithItsRows)
{
    auto const & [title, table, place, first, firstName, last, lastName] = GetParam();
    SNameRow const begin = table.row(place);
    EXPECT_EQ(first, begin.id);
    EXPECT_EQ(firstName, begin.name);
    std::size_t const lastPlace = place + static_cast<std::size_t>(last - first);
    ASSERT_LT(lastPlace, table.rowCount());
    SNameRow const end = table.row(lastPlace);
    EXPECT_EQ(last, end.id);
    EXPECT_EQ(lastName, end.name);
    EXPECT_TRUE(lastPlace + 1 == table.rowCount() || table.row(lastPlace + 1).id != last + 1);
}

INSTANTIATE_TEST_SUITE_P(
    Runs, DictionaryRunTest,
    testing::Values(
        SRunEnds{"ResultCodes0", kResultCodeTable, 0, 0, "SUCCESS", 0, "SUCCESS"},
        SRunEnds{"ResultCodes20000", kResultCodeTable, 1, 20000, "GENERAL", 20174, "MDADM_ERROR"},
        SRunEnds{"Events1", kEventTable, 0, 1, "UNDEFINED", 5, "TEST_TRAP"},
        SRunEnds{"Events10000", kEventTable, 5, 10000, "UNKNOWN", 10556, "FOREIGN_CFG_UPGRADE_REQUIRED"},
        SRunEnds{"Events10559", kEventTable, 562, 10559, "PD_FAIL_EX", 11108, "SYSTEM_RESET_REQUIRED"},
        SRunEnds{"Events10558", kEventTable, 1112, 10558, "BIOS_BOOT_MODE_USER", 10558, "BIOS_BOOT_MODE_USER"},
        SRunEnds{"Events10557", kEventTable, 1113, 10557, "BIOS_BOOT_MODE_COE", 10557, "BIOS_BOOT_MODE_COE"},
        SRunEnds{"Events11109", kEventTable, 1114, 11109, "BIOS_BOOT_MODE_HCOE", 11112,
                 "EVT_PD_STATE_CHANGE_TO_NORMAL"},
        SRunEnds{"Events12000", kEventTable, 1118, 12000, "MICROSEMI_NO_AVAILABLE_EVENT", 12101,
                 "MICROSEMI_OFA_PROCESS_FAILURE"},
        SRunEnds{"Events12200", kEventTable, 1220, 12200, "EVT_MV_CODE_EVT_ERR", 12325,
                 "EVT_MV_CODE_MISC_PD_TOO_SMALL_FOR_AUTOREBUILD"},
        SRunEnds{"Commands1", kCommandTable, 0, 1, "UNDEFINED", 1, "UNDEFINED"},
        SRunEnds{"Commands50000", kCommandTable, 1, 50000, "CREATE_LOGICAL_DRIVE", 50161, "DELETE_ARRAY_HOTSPARE"},
        SRunEnds{"Commands50500", kCommandTable, 163, 50500, "ADD_SERVER", 50500, "ADD_SERVER"},
        SRunEnds{"Properties0", kPropertyTable, 0, 0, "FRAME_START", 1, "UNDEFINED"},
        SRunEnds{"Properties1", kPropertyTable, 2, 1, "FRAME_END", 3, "SEPARATOR_END"},
        SRunEnds{"Properties29900", kPropertyTable, 5, 29900, "RUI_PROPERTIES", 29900, "RUI_PROPERTIES"},
        SRunEnds{"Properties29900Again", kPropertyTable, 6, 29900, "OBJECT_NAME", 29908, "STRIPE_SIZE"},
        SRunEnds{"Properties29999", kPropertyTable, 15, 29999, "DUMMY", 30545, "SSD_OPO"},
        SRunEnds{"Properties30547", kPropertyTable, 562, 30547, "SIGNED_LONG_PARAM", 30556, "DEVICE_TYPE"},
        SRunEnds{"Properties35000", kPropertyTable, 572, 35000, "ADDR_00", 35050, "DOMAIN"},
        SRunEnds{"Properties35100", kPropertyTable, 623, 35100, "HEADING_ALL", 35129, "HEADING_EXPIRATION_DATE"},
        SRunEnds{"Properties35200", kPropertyTable, 653, 35200, "BADBLOCK_LOG", 35203, "SENSE_LOG"},
        SRunEnds{"Properties2147483647", kPropertyTable, 657, 2147483647, "UNSPECIFIED", 2147483647, "UNSPECIFIED"},
        SRunEnds{"PropertyValues0", kPropertyValueTable, 0, 0, "", 1, "UNDEFINED"},
        SRunEnds{"PropertyValues40000", kPropertyValueTable, 2, 40000, "ENABLED", 40514, "INVALID"},
        SRunEnds{"PropertyValues40506", kPropertyValueTable, 517, 40506, "INTEL_VROC_INTEL_SSD_ONLY_KEY", 40506,
                 "INTEL_VROC_INTEL_SSD_ONLY_KEY"},
        SRunEnds{"PropertyValues40515", kPropertyValueTable, 518, 40515, "STAMPED_FOR_MNP", 40664, "AUTOREPLACE"}),
    [](auto const & test) { return std::string(test.param.title); });

/// The names that stand at several identifiers, and the identifiers.
std::map<std::string_view, std::vector<std::int32_t>> DoubledNames(STable const & table)
{
    std::map<std::string_view, std::vector<std::int32_t>> ids;
    for (SNameRow const & row : RowsOf(table))
        ids[row.name].push_back(row.id);
    std::erase_if(ids, [](auto const & name) { return name.second.size() == 1; });
    return ids;
}

/// The identifiers that have several rows, and the rows' names.
std::map<std::int32_t, std::vector<std::string_view>> DoubledIds(STable const & table)
{
    std::map<std::int32_t, std::vector<std::string_view>> names;
    for (SNameRow const & row : RowsOf(table))
        names[row.id].push_back(row.name);
    std::erase_if(names, [](auto const & id) { return id.second.size() == 1; });
    return names;
}

TEST(DictionariesTest, OfRowsWithTheSameIdTheFirstWins)
{
    using Doubled = std::map<std::int32_t, std::vector<std::string_view>>;
    EXPECT_EQ((Doubled{{1, {"UNDEFINED", "FRAME_END"}}, {29900, {"RUI_PROPERTIES", "OBJECT_NAME"}}}),
              DoubledIds(kPropertyTable));
    EXPECT_EQ("UNDEFINED", kProperties.NameOf(1));
    EXPECT_EQ("RUI_PROPERTIES", kProperties.NameOf(29900));
    // What stands behind a row without effect keeps its own place.
    EXPECT_EQ("SEPARATOR_START", kProperties.NameOf(2));
    EXPECT_EQ("INTEGER_CONST", kProperties.NameOf(29901));

    EXPECT_EQ((Doubled{{40506, {"INTEL_VROC_INTEL_SSD_ONLY_KEY", "INTEL_VROC_INTEL_SSD_ONLY_KEY"}}}),
              DoubledIds(kPropertyValueTable));
    for (STable const & table : {kResultCodeTable, kEventTable, kCommandTable})
        EXPECT_EQ(Doubled{}, DoubledIds(table)) << table.name;
}

TEST(DictionariesTest, OneNameMayStandAtSeveralIds)
{
    using Doubled = std::map<std::string_view, std::vector<std::int32_t>>;
    EXPECT_EQ((Doubled{{"ADD_SERVER", {50108, 50500}}}), DoubledNames(kCommandTable));
    EXPECT_EQ((Doubled{{"RAID_LEVEL", {29904, 30045}},
                       {"CACHE_SETTINGS", {29905, 30334}},
                       {"TYPE", {30056, 35044}},
                       {"PRODUCT", {30063, 35031}},
                       {"SLOT", {30224, 35040}},
                       {"STARTTIME", {30295, 35042}},
                       {"REMAINING_RESERVE_SPACE", {30486, 35034}}}),
              DoubledNames(kPropertyTable));
    EXPECT_EQ((Doubled{{"INTEL_VROC_INTEL_SSD_ONLY_KEY", {40506, 40506}}}), DoubledNames(kPropertyValueTable));
    EXPECT_EQ(Doubled{}, DoubledNames(kResultCodeTable));
    EXPECT_EQ(Doubled{}, DoubledNames(kEventTable));
}

TEST(DictionariesTest, AnEmptyNameIsToldFromNone)
{
    EXPECT_TRUE(kPropertyValues.Contains(0));
    EXPECT_EQ("", kPropertyValues.NameOf(0));
    EXPECT_FALSE(kPropertyValues.Contains(2));
    EXPECT_EQ("", kPropertyValues.NameOf(2));
}

TEST(DictionariesTest, TheIdThatNoPropertyHasIsAHole)
{
    EXPECT_EQ("SSD_OPO", kProperties.NameOf(30545));
    EXPECT_FALSE(kProperties.Contains(30546));
    EXPECT_EQ("SIGNED_LONG_PARAM", kProperties.NameOf(30547));
}

} // namespace
