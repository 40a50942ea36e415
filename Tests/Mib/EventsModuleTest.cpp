#include "Mib/EventsModule.h"

#include <gtest/gtest.h>

namespace {

struct SName {
    char const * title;
    std::int32_t id;
    char const * event;
    char const * expected;
};

class NotificationNameTest : public testing::TestWithParam<SName> {};

TEST_P(NotificationNameTest, IsMadeOfTheWordsOfTheEvent)
{
    std::string const name = Mib::NotificationName(GetParam().id, GetParam().event);
    EXPECT_EQ(GetParam().expected, name);
    EXPECT_LE(name.size(), Mib::kLongestDescriptor);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, NotificationNameTest,
    testing::Values(
        SName{"OneWord", 10000, "UNKNOWN", "kxrEventUnknown"},
        SName{"SeveralWords", 10022, "DISK_OFFLINE", "kxrEventDiskOffline"},
        SName{"NumbersInIt", 10310, "BBU_RELEARN_WILL_START_IN_4_DAYS", "kxrEventBbuRelearnWillStartIn4Days"},
        SName{"OneOfTheAgentsOwn", 4, "UNEXPECTED_DISCONNECT", "kxrEventUnexpectedDisconnect"},
        SName{"SmallLetters", 7, "disk_offline", "kxrEventDiskOffline"},
        SName{"EmptyWords", 7, "_DISK__OFFLINE_", "kxrEventDiskOffline"}, SName{"NoWord", 7, "", "kxrEvent"},
        SName{"LongestThatGoesWhole", 12030, "MICROSEMI_CACHE_TEMPORARILY_DISABLED_DUE_TO_MISSING_POWER_SOURCE",
              "kxrEventMicrosemiCacheTemporarilyDisabledDueToMissingPowerSource"},
        SName{"OneTooLong", 12056, "MICROSEMI_CONNECTOR_MODES_ARE_IN_CONFLICT_AND_WOULD_NOT_BE_RESOLVED",
              "kxrEventMicrosemiConnectorModesAreInConflictAndWouldNotBe12056"},
        SName{"FarTooLong", 12086, "MICROSEMI_SURFACE_SCAN_COMPLETED_WITHOUT_ERROR_AFTER_PREVIOUSLY_KNOWN_URE",
              "kxrEventMicrosemiSurfaceScanCompletedWithoutErrorAfter12086"},
        SName{"OneWordTooLong", 7, "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA", "kxrEvent7"}),
    [](auto const & test) { return std::string(test.param.title); });

TEST(EventsModuleTest, IsTheSameEveryTime)
{
    EXPECT_EQ(Mib::EventsModule(), Mib::EventsModule());
}

} // namespace
