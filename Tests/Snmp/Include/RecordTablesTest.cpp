// Tables of records: the count and the entries behind it.

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "Snmp/Include/Structure.h"
#include "Tests/Support/MemorySocket.h"
#include "VLK/Exceptions.h"
#include "VLK/Threads.h"

using namespace SNMP;

namespace {

/// The frames of one entry of each table, with `status` in one of its enumerated fields where it has any.
std::string AdapterBytes(int nr, int status)
{
    using namespace Wire;
    std::string bytes = Int(nr);
    for (int i = 0; i < 7; ++i)
        bytes += Text("t");
    for (int i = 0; i < 5; ++i)
        bytes += Int(i);
    bytes += Int(1) + Int(status) + Int(2);
    for (int i = 0; i < 5; ++i)
        bytes += Int(-1);
    return bytes + Text("s") + Text("d") + Text("r") + Int(2) + Text("n") + Text("h") + Text("");
}

std::string DriveBytes(int nr, int statusEx)
{
    using namespace Wire;
    return Int(1) + Int(nr) + Int(100) + Int(200) + Int(5) + Text("RAID 5") + Int(64) + Int(1) + Int(1) + Text("name") +
           Int(300) + Int(400) + Text("/dev/sda") + Int(5) + Int(4) + Int(5) + Int(1) + Int(statusEx) + Text("");
}

std::string DeviceBytes(int target, int type)
{
    using namespace Wire;
    return Int(1) + Int(2) + Int(target) + Int(0) + Text("model") + Text("vendor") + Text("fw") + Int(1000) + Int(600) +
           Int(type) + Int(1) + Int(1) + Int(3) + Int(0) + Int(0) + Int(1) + Int(2) + Text("serial") + Int(9) + Int(2) +
           Int(1000) + Int(-1) + Int(3) + Text("display") + Int(1) + Int(2) + Int(-1) + Int(-1) + Int(-1) +
           Text("5 years") + Text("");
}

std::string ContentsBytes(int nr, int idx)
{
    using namespace Wire;
    return Int(1) + Int(2) + Int(nr) + Int(-1) + Int(99) + Int(0) + Int(idx) + Int(-7);
}

template <class TTable>
struct SBytes;
template <>
struct SBytes<ORBA_ADAPTERTABLE> {
    static std::string Of(int nr) { return AdapterBytes(nr, 2); }
};
template <>
struct SBytes<ORBA_LOGICALDRIVETABLE> {
    static std::string Of(int nr) { return DriveBytes(nr, 2); }
};
template <>
struct SBytes<ORBA_PHYSICALDEVICETABLE> {
    static std::string Of(int nr) { return DeviceBytes(nr, 3); }
};
template <>
struct SBytes<ORBA_LOGICALDRIVECONTENTSTABLE> {
    static std::string Of(int nr) { return ContentsBytes(nr, nr); }
};

template <class TTable>
class RecordTableTest : public testing::Test {
protected:
    static std::string Entries(int count)
    {
        std::string bytes;
        for (int i = 1; i <= count; ++i)
            bytes += SBytes<TTable>::Of(i);
        return bytes;
    }
    static std::string Written(TTable const & table)
    {
        return WrittenBy([&](VLK::Sockets::CVlkSocket & sock) { table.writeData(sock); });
    }
};

using TTables =
    testing::Types<ORBA_ADAPTERTABLE, ORBA_LOGICALDRIVETABLE, ORBA_PHYSICALDEVICETABLE, ORBA_LOGICALDRIVECONTENTSTABLE>;
TYPED_TEST_SUITE(RecordTableTest, TTables);

TYPED_TEST(RecordTableTest, WhatIsReadAndWrittenBackGivesTheSameFrames)
{
    std::string const bytes = Wire::Int(40) + this->Entries(40);
    CAnsweredClient peer(bytes);
    TypeParam table;
    table.ReadData(peer.client);
    EXPECT_EQ(40u, table.size());
    EXPECT_TRUE(peer.Socket().AllRead());
    EXPECT_EQ(Wire::Hex(bytes), Wire::Hex(this->Written(table)));
}

TYPED_TEST(RecordTableTest, ACountOfZeroEmptiesTheTableAndReadsNothingFurther)
{
    CAnsweredClient peer(Wire::Int(2) + this->Entries(2) + Wire::Int(0) + Wire::Int(30));
    TypeParam table;
    table.ReadData(peer.client);
    ASSERT_EQ(2u, table.size());
    table.ReadData(peer.client);
    EXPECT_TRUE(table.empty());
    int next = 0;
    peer.client >> next;
    EXPECT_EQ(30, next);
}

TYPED_TEST(RecordTableTest, ANegativeCountEmptiesTheTableAndReadsNothingFurther)
{
    for (std::int64_t const count : {std::int64_t{-1}, std::int64_t{-2147483648LL}}) {
        CAnsweredClient peer(Wire::Int(count) + Wire::Int(30));
        TypeParam table;
        table.resize(3);
        table.ReadData(peer.client);
        EXPECT_TRUE(table.empty());
        int next = 0;
        peer.client >> next;
        EXPECT_EQ(30, next);
    }
}

TYPED_TEST(RecordTableTest, ReadingReplacesTheEntriesAndNeverAppends)
{
    CAnsweredClient peer(Wire::Int(3) + this->Entries(3) + Wire::Int(1) + this->Entries(1));
    TypeParam table;
    table.ReadData(peer.client);
    table.ReadData(peer.client);
    ASSERT_EQ(1u, table.size());
    EXPECT_EQ(Wire::Hex(Wire::Int(1) + this->Entries(1)), Wire::Hex(this->Written(table)));
}

TYPED_TEST(RecordTableTest, AnEmptyTableWritesTheCountAlone)
{
    EXPECT_EQ(Wire::Hex(Wire::Int(0)), Wire::Hex(this->Written({})));
}

TYPED_TEST(RecordTableTest, ACountBeyondTheDataLeavesTheEntriesThatWereComplete)
{
    CAnsweredClient peer(Wire::Int(2147483647) + this->Entries(2));
    TypeParam table;
    EXPECT_THROW(table.ReadData(peer.client), unsigned int);
    EXPECT_EQ(2u, table.size());
    EXPECT_LE(table.capacity() * sizeof(table.front()), std::size_t{5} << 20) << "a claim makes no memory";
}

TYPED_TEST(RecordTableTest, AStreamCutAtAnyByteRaisesAndLeavesOnlyWholeEntries)
{
    std::string const bytes = Wire::Int(2) + this->Entries(2);
    std::size_t const first = Wire::Int(2).size() + SBytes<TypeParam>::Of(1).size();
    for (std::size_t cut = 0; cut + 1 < bytes.size(); ++cut) {
        CAnsweredClient peer(bytes.substr(0, cut));
        TypeParam table;
        EXPECT_THROW(table.ReadData(peer.client), unsigned int) << "cut at " << cut;
        EXPECT_EQ(cut >= first ? 1u : 0u, table.size()) << "cut at " << cut;
    }
}

TYPED_TEST(RecordTableTest, ItComesThroughInPiecesOfAnySize)
{
    std::string const bytes = Wire::Int(3) + this->Entries(3);
    for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
        CAnsweredClient peer(bytes, piece);
        TypeParam table;
        table.ReadData(peer.client);
        ASSERT_TRUE(peer.Socket().AllRead()) << "pieces of " << piece;
        ASSERT_EQ(Wire::Hex(bytes), Wire::Hex(this->Written(table))) << "pieces of " << piece;
    }
}

/// An entry whose numbers are all the same, in and out of every range.
template <class TEntry>
std::string BytesWithNumber(std::int64_t number)
{
    std::string bytes;
    for (char const c : WrittenBy([](VLK::Sockets::CVlkSocket & sock) { TEntry().writeData(sock); }))
        bytes += c == Wire::Text("").front() ? Wire::Text("text") : Wire::Int(number);
    return bytes;
}

TYPED_TEST(RecordTableTest, AnEntryIsWhatACopyOfTheSameEntryWouldBe)
{
    using TEntry = typename TypeParam::value_type;
    std::vector<std::int64_t> numbers{-INT_MAX, INT_MAX, 97, 98, 99, 100};
    for (std::int64_t number = -31; number <= 31; ++number)
        numbers.push_back(number);
    for (std::int64_t const number : numbers) {
        std::string const bytes = BytesWithNumber<TEntry>(number);
        CAnsweredClient alone(bytes);
        TEntry raw;
        raw.ReadData(alone.client);
        EXPECT_EQ(Wire::Hex(bytes), Wire::Hex(WrittenBy([&](VLK::Sockets::CVlkSocket & s) { raw.writeData(s); })));
        TEntry const copy(raw);
        CAnsweredClient peer(Wire::Int(1) + bytes);
        TypeParam table;
        table.ReadData(peer.client);
        ASSERT_EQ(1u, table.size());
        EXPECT_EQ(Wire::Hex(WrittenBy([&](VLK::Sockets::CVlkSocket & s) { copy.writeData(s); })),
                  Wire::Hex(WrittenBy([&](VLK::Sockets::CVlkSocket & s) { table[0].writeData(s); })))
            << number;
    }
}

TYPED_TEST(RecordTableTest, WithThrowingDisabledAClaimedCountEndsWithTheDataToo)
{
    CAnsweredClient peer(Wire::Int(100000) + this->Entries(2));
    VLK::Threading::CCallBackGuard guard;
    TypeParam table;
    VLK::Exceptions::CThrowState state;
    state.DisableThrow();
    table.ReadData(peer.client);
    EXPECT_EQ(2u, table.size());
    EXPECT_TRUE(peer.client.HasFailed());
}

TYPED_TEST(RecordTableTest, AfterAFailureTheAnswerCanBeSkipped)
{
    CAnsweredClient peer(Wire::Int(3) + this->Entries(1) + Wire::Int(1) + Wire::kWaitAck + Wire::Int(7) +
                         Wire::kEndAck);
    TypeParam table;
    EXPECT_THROW(table.ReadData(peer.client), unsigned int);
    EXPECT_EQ(1u, table.size());
    EXPECT_EQ(VLK::URET_OK, peer.client.Skip());
    EXPECT_EQ(VLK::URET_OK, peer.client.EndRequest());
    EXPECT_TRUE(peer.Socket().AllRead());
}

TYPED_TEST(RecordTableTest, MoreEntriesThanTheRoomMadeAheadAreAllRead)
{
    constexpr int kMany = 200000;
    std::string bytes = Wire::Int(kMany);
    std::string const entry = SBytes<TypeParam>::Of(1);
    for (int i = 0; i < kMany; ++i)
        bytes += entry;
    CAnsweredClient peer(bytes);
    TypeParam table;
    table.ReadData(peer.client);
    EXPECT_EQ(static_cast<std::size_t>(kMany), table.size());
    EXPECT_TRUE(peer.Socket().AllRead());
}

TEST(RecordTablesTest, EnumeratedFieldsOfEntriesComeOutNormalised)
{
    CAnsweredClient peer(Wire::Int(3) + DriveBytes(1, 0) + DriveBytes(2, 16) + DriveBytes(3, 15) + //
                         Wire::Int(2) + AdapterBytes(1, 0) + AdapterBytes(2, 4) +                  //
                         Wire::Int(4) + DeviceBytes(1, 98) + DeviceBytes(2, 99) + DeviceBytes(3, 100) +
                         DeviceBytes(4, 0));
    ORBA_LOGICALDRIVETABLE drives;
    drives.ReadData(peer.client);
    EXPECT_EQ(1, drives[0].StatusEx);
    EXPECT_EQ(1, drives[1].StatusEx);
    EXPECT_EQ(15, drives[2].StatusEx);
    ORBA_ADAPTERTABLE adapters;
    adapters.ReadData(peer.client);
    EXPECT_EQ(3, adapters[0].Status);
    EXPECT_EQ(3, adapters[1].Status);
    ORBA_PHYSICALDEVICETABLE devices;
    devices.ReadData(peer.client);
    EXPECT_EQ(98, devices[0].Type);
    EXPECT_EQ(99, devices[1].Type);
    EXPECT_EQ(99, devices[2].Type);
    EXPECT_EQ(99, devices[3].Type);
}

TEST(RecordTablesTest, WritingNormalisesNothing)
{
    ORBA_LOGICALDRIVETABLE drives;
    drives.resize(1);
    drives[0].StatusEx = 99;
    std::string const bytes = WrittenBy([&](VLK::Sockets::CVlkSocket & sock) { drives.writeData(sock); });
    ORBA_LOGICALDRIVEENTRY entry;
    CAnsweredClient peer(bytes.substr(1));
    entry.ReadData(peer.client);
    EXPECT_EQ(99, entry.StatusEx);
}

TEST(RecordStatusTest, AFailedReadKeepsAllFourFields)
{
    using namespace Wire;
    std::string const bytes = Int(11) + Int(12) + Int(13);
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        CAnsweredClient peer(bytes.substr(0, cut));
        ORBA_STATUS status;
        status.LogicalDrives = 2;
        status.PhysicalDevices = 3;
        status.Controllers = 4;
        status.Overall = 5;
        EXPECT_THROW(status.ReadData(peer.client), unsigned int);
        EXPECT_EQ(2, status.LogicalDrives);
        EXPECT_EQ(3, status.PhysicalDevices);
        EXPECT_EQ(4, status.Controllers);
        EXPECT_EQ(5, status.Overall);
    }
}

TEST(RecordStatusTest, AFailedReadKeepsAllFourFieldsWithThrowingDisabledToo)
{
    CAnsweredClient peer(Wire::Int(11) + Wire::Int(12));
    VLK::Threading::CCallBackGuard guard;
    ORBA_STATUS status;
    status.LogicalDrives = 2;
    status.Overall = 5;
    VLK::Exceptions::CThrowState state;
    state.DisableThrow();
    status.ReadData(peer.client);
    EXPECT_EQ(2, status.LogicalDrives);
    EXPECT_EQ(5, status.Overall);
}

TEST(RecordStatusTest, NumbersAreKeptAsTheyCome)
{
    using namespace Wire;
    CAnsweredClient peer(Int(-1) + Int(0) + Int(2147483647) + Int(-2147483648LL));
    ORBA_STATUS status;
    status.ReadData(peer.client);
    EXPECT_EQ(-1, status.LogicalDrives);
    EXPECT_EQ(0, status.PhysicalDevices);
    EXPECT_EQ(2147483647, status.Controllers);
    EXPECT_EQ(-2147483647 - 1, status.Overall);
}

TEST(RecordStatusTest, AnIntegerBeyond32BitsIsRefused)
{
    CAnsweredClient peer(Wire::Int(2147483648LL));
    ORBA_CONTROLLERINFO info;
    EXPECT_THROW(info.ReadData(peer.client), unsigned int);
}

TEST(RecordStatusTest, ATextWhereANumberBelongsIsRefused)
{
    CAnsweredClient peer(Wire::Text("7"));
    ORBA_CONTROLLERINFO info;
    EXPECT_THROW(info.ReadData(peer.client), unsigned int);
    EXPECT_EQ(0, info.NumberRaidControllers);
}

TEST(RecordTextTest, ATextOfAnyLengthComesThrough)
{
    std::string const longText(200000, 'x');
    CAnsweredClient peer(Wire::Text(longText) + Wire::Text("") + Wire::Text("b") + Wire::Text("c"));
    ORBA_AGENTINFO info;
    info.Company = "before";
    info.ReadData(peer.client);
    EXPECT_EQ(longText, info.Id);
    EXPECT_EQ("", info.Company);
    EXPECT_EQ("c", info.Build);
}

} // namespace
