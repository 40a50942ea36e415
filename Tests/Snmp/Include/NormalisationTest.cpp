// Copies of an entry normalise its enumerated fields, and nothing else does.

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "Snmp/Include/Structure.h"
#include "Tests/Support/MemorySocket.h"

using namespace SNMP;

namespace {

/// An enumerated field: its range, what a number outside becomes, and what a copy of an entry makes of a raw number.
struct SEnumerated {
    char const * name;
    int low;
    int high;
    int fallBack;
    int (*copied)(int raw);
    int (*assigned)(int raw);
    int (*grown)(int raw); ///< the entry moved to new storage
    int (*uncopied)(int raw);
};

template <class TEntry, auto Field>
int Copied(int raw)
{
    TEntry entry;
    entry.*Field = raw;
    TEntry const copy(entry);
    return copy.*Field;
}

template <class TEntry, auto Field>
int Assigned(int raw)
{
    TEntry entry;
    entry.*Field = raw;
    TEntry copy;
    copy = entry;
    return copy.*Field;
}

template <class TEntry, auto Field>
int Grown(int raw)
{
    std::vector<TEntry> entries(1);
    entries.front().*Field = raw;
    entries.reserve(entries.capacity() + 1);
    return entries.front().*Field;
}

template <class TEntry, auto Field>
int Uncopied(int raw)
{
    TEntry entry;
    entry.*Field = raw;
    return entry.*Field;
}

template <class TEntry, auto Field>
SEnumerated Enumerated(char const * name, int low, int high, int fallBack)
{
    return {name,
            low,
            high,
            fallBack,
            &Copied<TEntry, Field>,
            &Assigned<TEntry, Field>,
            &Grown<TEntry, Field>,
            &Uncopied<TEntry, Field>};
}

class EnumeratedFieldTest : public testing::TestWithParam<SEnumerated> {
protected:
    void ExpectCopies(int expected, int raw)
    {
        EXPECT_EQ(expected, GetParam().copied(raw)) << "copy of " << raw;
        EXPECT_EQ(expected, GetParam().assigned(raw)) << "assignment of " << raw;
        EXPECT_EQ(expected, GetParam().grown(raw)) << "new storage for " << raw;
    }
};

TEST_P(EnumeratedFieldTest, BothEndsOfTheRangeAreKept)
{
    ExpectCopies(GetParam().low, GetParam().low);
    ExpectCopies(GetParam().high, GetParam().high);
}

TEST_P(EnumeratedFieldTest, OneBeyondEitherEndBecomesTheFallBack)
{
    ExpectCopies(GetParam().fallBack, GetParam().low - 1);
    ExpectCopies(GetParam().fallBack, GetParam().high + 1);
}

TEST_P(EnumeratedFieldTest, NegativeAndExtremeNumbersBecomeTheFallBack)
{
    for (int const raw : {-1, INT_MIN, INT_MAX, 0})
        ExpectCopies(GetParam().fallBack, raw);
}

TEST_P(EnumeratedFieldTest, ACopyOfACopyChangesNothing)
{
    for (int raw = GetParam().low - 3; raw <= GetParam().high + 3; ++raw)
        ExpectCopies(GetParam().copied(raw), GetParam().copied(raw));
}

TEST_P(EnumeratedFieldTest, TheRawNumberStaysUntilACopyIsMade)
{
    EXPECT_EQ(-5, GetParam().uncopied(-5));
    EXPECT_EQ(4711, GetParam().uncopied(4711));
}

#define ENUMERATED(entry, field, low, high, fallBack)                                                                  \
    Enumerated<entry, &entry::field>(#entry "_" #field, low, high, fallBack)

INSTANTIATE_TEST_SUITE_P(Fields, EnumeratedFieldTest,
                         testing::Values(ENUMERATED(ORBA_ADAPTERENTRY, BBUStatus, 1, 7, 1),
                                         ENUMERATED(ORBA_ADAPTERENTRY, Status, 1, 3, 3),
                                         ENUMERATED(ORBA_ADAPTERENTRY, Interface, 2, 7, 1),
                                         ENUMERATED(ORBA_ADAPTERENTRY, BBUStatusEx, 2, 7, 1),
                                         ENUMERATED(ORBA_LOGICALDRIVEENTRY, WriteMode, 1, 8, 1),
                                         ENUMERATED(ORBA_LOGICALDRIVEENTRY, Status, 1, 9, 1),
                                         ENUMERATED(ORBA_LOGICALDRIVEENTRY, StatusEx, 1, 15, 1),
                                         ENUMERATED(ORBA_PHYSICALDEVICEENTRY, Type, 1, 98, 99),
                                         ENUMERATED(ORBA_PHYSICALDEVICEENTRY, ConfiguredDisk, 1, 2, 1),
                                         ENUMERATED(ORBA_PHYSICALDEVICEENTRY, ForeignConfig, 1, 2, 1),
                                         ENUMERATED(ORBA_PHYSICALDEVICEENTRY, Interface, 1, 9, 1),
                                         ENUMERATED(ORBA_PHYSICALDEVICEENTRY, SmartStatus, 1, 4, 4),
                                         ENUMERATED(ORBA_PHYSICALDEVICEENTRY, Status, 1, 12, 1),
                                         ENUMERATED(ORBA_PHYSICALDEVICEENTRY, StatusEx, 1, 20, 1)),
                         [](auto const & test) { return std::string(test.param.name); });

/// A number that a copy keeps, whatever it is.
struct SPlain {
    char const * name;
    int (*copied)(int raw);
    int (*assigned)(int raw);
};

class PlainFieldTest : public testing::TestWithParam<SPlain> {};

TEST_P(PlainFieldTest, EveryNumberIsKept)
{
    for (int const raw : {0, -1, 1, 100, INT_MIN, INT_MAX}) {
        EXPECT_EQ(raw, GetParam().copied(raw));
        EXPECT_EQ(raw, GetParam().assigned(raw));
    }
}

#define PLAIN(entry, field)                                                                                            \
    SPlain                                                                                                             \
    {                                                                                                                  \
#entry "_" #field, &Copied < entry, &entry::field>, &Assigned < entry, &entry::field>                          \
    }

INSTANTIATE_TEST_SUITE_P(
    Fields, PlainFieldTest,
    testing::Values(PLAIN(ORBA_ADAPTERENTRY, Nr), PLAIN(ORBA_ADAPTERENTRY, NumberChannels),
                    PLAIN(ORBA_ADAPTERENTRY, MaxChannelInUse), PLAIN(ORBA_ADAPTERENTRY, NumberPhysDisks),
                    PLAIN(ORBA_ADAPTERENTRY, NumberLogicalDrives), PLAIN(ORBA_ADAPTERENTRY, CacheSize),
                    PLAIN(ORBA_ADAPTERENTRY, BusLocationSegment), PLAIN(ORBA_ADAPTERENTRY, BusLocationBus),
                    PLAIN(ORBA_ADAPTERENTRY, BusLocationDevice), PLAIN(ORBA_ADAPTERENTRY, BusLocationFunction),
                    PLAIN(ORBA_ADAPTERENTRY, BusLocationSlot), PLAIN(ORBA_LOGICALDRIVEENTRY, CtrlNr),
                    PLAIN(ORBA_LOGICALDRIVEENTRY, Nr), PLAIN(ORBA_LOGICALDRIVEENTRY, ArraySize),
                    PLAIN(ORBA_LOGICALDRIVEENTRY, TotalSize), PLAIN(ORBA_LOGICALDRIVEENTRY, RaidLevel),
                    PLAIN(ORBA_LOGICALDRIVEENTRY, StripeSize), PLAIN(ORBA_LOGICALDRIVEENTRY, ArraySizeMB),
                    PLAIN(ORBA_LOGICALDRIVEENTRY, TotalSizeMB), PLAIN(ORBA_LOGICALDRIVEENTRY, ReadMode),
                    PLAIN(ORBA_LOGICALDRIVEENTRY, CacheMode), PLAIN(ORBA_LOGICALDRIVEENTRY, DiskCacheMode),
                    PLAIN(ORBA_LOGICALDRIVEENTRY, InitStatus), PLAIN(ORBA_PHYSICALDEVICEENTRY, CtrlNr),
                    PLAIN(ORBA_PHYSICALDEVICEENTRY, Channel), PLAIN(ORBA_PHYSICALDEVICEENTRY, Target),
                    PLAIN(ORBA_PHYSICALDEVICEENTRY, LUN), PLAIN(ORBA_PHYSICALDEVICEENTRY, Capacity),
                    PLAIN(ORBA_PHYSICALDEVICEENTRY, MaxTransferRate), PLAIN(ORBA_PHYSICALDEVICEENTRY, Errors),
                    PLAIN(ORBA_PHYSICALDEVICEENTRY, NrBadBlocks), PLAIN(ORBA_PHYSICALDEVICEENTRY, Idx),
                    PLAIN(ORBA_PHYSICALDEVICEENTRY, CapacityMB), PLAIN(ORBA_PHYSICALDEVICEENTRY, EnclosureNumber),
                    PLAIN(ORBA_PHYSICALDEVICEENTRY, Slot), PLAIN(ORBA_PHYSICALDEVICEENTRY, PowerStatus),
                    PLAIN(ORBA_PHYSICALDEVICEENTRY, MediaType), PLAIN(ORBA_PHYSICALDEVICEENTRY, SSDPowerOnHours),
                    PLAIN(ORBA_PHYSICALDEVICEENTRY, SSDRatedWriteEndurance),
                    PLAIN(ORBA_PHYSICALDEVICEENTRY, SSDRemainingReservedSpace),
                    PLAIN(ORBA_LOGICALDRIVECONTENTSENTRY, CtrlNr),
                    PLAIN(ORBA_LOGICALDRIVECONTENTSENTRY, LogicalDriveNr), PLAIN(ORBA_LOGICALDRIVECONTENTSENTRY, Nr),
                    PLAIN(ORBA_LOGICALDRIVECONTENTSENTRY, Channel), PLAIN(ORBA_LOGICALDRIVECONTENTSENTRY, Target),
                    PLAIN(ORBA_LOGICALDRIVECONTENTSENTRY, LUN), PLAIN(ORBA_LOGICALDRIVECONTENTSENTRY, Idx),
                    PLAIN(ORBA_LOGICALDRIVECONTENTSENTRY, SpanNr), PLAIN(ORBA_STATUS, LogicalDrives),
                    PLAIN(ORBA_STATUS, PhysicalDevices), PLAIN(ORBA_STATUS, Controllers), PLAIN(ORBA_STATUS, Overall)),
    [](auto const & test) { return std::string(test.param.name); });

TEST(RecordCopyTest, TheLocalFlagIsCopiedWithItsEntry)
{
    ORBA_LOGICALDRIVEENTRY entry;
    entry.LocalFlag = 7;
    ORBA_LOGICALDRIVEENTRY const copy(entry);
    EXPECT_EQ(7, copy.GetLocalFlag());
}

TEST(RecordCopyTest, AllNineMembersOfAnEventAreCopiedAsTheyAre)
{
    ORBA_EVENTINFO event;
    event.SetTrapId(-7);
    event.Opaque64 = ~0ull;
    event.Param1 = "1";
    event.Param2 = "2";
    event.Param3 = "3";
    event.Param4 = "4";
    event.Param5 = "5";
    event.Param6 = "6";
    event.ServerName = "host";
    ORBA_EVENTINFO const copy(event);
    EXPECT_EQ(-7, copy.TrapId);
    EXPECT_EQ(~0ull, copy.Opaque64);
    EXPECT_EQ("123456host",
              copy.Param1 + copy.Param2 + copy.Param3 + copy.Param4 + copy.Param5 + copy.Param6 + copy.ServerName);
}

} // namespace
