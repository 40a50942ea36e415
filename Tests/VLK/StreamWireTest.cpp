#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "StreamPeer.h"

using namespace VLK;
using namespace VLK::Sockets;

/// The bytes on the wire, worked out by hand.
namespace {

class StreamWireTest : public CFoundationTest {};

// --- Numbers and texts as they are written

struct SWritten {
    char const * name;
    std::function<void(CVlkSocket &)> write;
    Bytes bytes;
};

void PrintTo(SWritten const & written, std::ostream * out)
{
    *out << written.name;
}

template <class TValue>
std::function<void(CVlkSocket &)> Value(TValue value)
{
    return [value](CVlkSocket & socket) { socket << value; };
}

class WriteFrameTest : public testing::TestWithParam<SWritten> {
private:
    Threading::CCallBackGuard m_Guard;
};

TEST_P(WriteFrameTest, GivesTheseBytes)
{
    EXPECT_EQ(GetParam().bytes, WrittenBy(GetParam().write));
}

const std::string kText300(300, 'x');

INSTANTIATE_TEST_SUITE_P(
    All, WriteFrameTest,
    testing::Values(
        SWritten{"Zero", Value(0), {0xC0}}, SWritten{"LargestInTheTag", Value(31), {0xDF}},
        SWritten{"FirstBehindTheTag", Value(32), {0xB0, 0x20}}, SWritten{"OneByte", Value(255), {0xB0, 0xFF}},
        SWritten{"TwoBytes", Value(256), {0xB1, 0x01, 0x00}}, SWritten{"Thousand", Value(1000), {0xB1, 0x03, 0xE8}},
        SWritten{"LargestOfTwoBytes", Value(0xFFFF), {0xB1, 0xFF, 0xFF}},
        SWritten{"ThreeBytes", Value(0x10000), {0xB2, 0x01, 0x00, 0x00}},
        SWritten{"FourBytes", Value(0x1000000), {0xB3, 0x01, 0x00, 0x00, 0x00}},
        SWritten{"LargestInt", Value(INT_MAX), {0xB3, 0x7F, 0xFF, 0xFF, 0xFF}}, SWritten{"MinusOne", Value(-1), {0xE1}},
        SWritten{"MinusFive", Value(-5), {0xE5}}, SWritten{"SmallestInTheTag", Value(-31), {0xFF}},
        SWritten{"Minus32IsWrittenAsMinusZeroBySettledHabit", Value(-32), {0xE0}},
        SWritten{"Minus32OfSixtyFourBitsAsWell", Value(-32LL), {0xE0}},
        SWritten{"FirstNegativeBehindTheTag", Value(-33), {0xB8, 0x21}},
        SWritten{"MinusThousand", Value(-1000), {0xB9, 0x03, 0xE8}},
        SWritten{"SmallestIntIsNegatedIn32Bits", Value(INT_MIN), {0xBF, 0xFF, 0xFF, 0xFF, 0xFF, 0x80, 0, 0, 0}},
        SWritten{"SmallestIntOf64Bits", Value(static_cast<long long>(INT_MIN)), {0xBB, 0x80, 0, 0, 0}},
        SWritten{"LargestLongLong", Value(LLONG_MAX), {0xB7, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        SWritten{"SmallestLongLong", Value(LLONG_MIN), {0xBF, 0x80, 0, 0, 0, 0, 0, 0, 0}},
        SWritten{"SignedCharIsExtended", Value(static_cast<signed char>(-128)), {0xB8, 0x80}},
        SWritten{"ShortIsExtended", Value(static_cast<short>(-32768)), {0xB9, 0x80, 0x00}},
        SWritten{"UnsignedChar", Value(static_cast<unsigned char>(255)), {0xB0, 0xFF}},
        SWritten{"UnsignedShort", Value(static_cast<unsigned short>(65535)), {0xB1, 0xFF, 0xFF}},
        SWritten{"UnsignedSmall", Value(31u), {0xDF}}, SWritten{"Unsigned32", Value(32u), {0xB0, 0x20}},
        SWritten{"LargestUnsigned", Value(UINT_MAX), {0xB3, 0xFF, 0xFF, 0xFF, 0xFF}},
        SWritten{"FiveBytes", Value(0x100000000ull), {0xB4, 0x01, 0, 0, 0, 0}},
        SWritten{"LargestOfFiveBytes", Value(0xFFFFFFFFFFull), {0xB4, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        SWritten{"SixBytes", Value(0x10000000000ull), {0xB5, 0x01, 0, 0, 0, 0, 0}},
        SWritten{"SevenBytes", Value(0x1000000000000ull), {0xB6, 0x01, 0, 0, 0, 0, 0, 0}},
        SWritten{"EightBytes", Value(0x100000000000000ull), {0xB7, 0x01, 0, 0, 0, 0, 0, 0, 0}},
        SWritten{"LargestUnsignedLongLong", Value(ULLONG_MAX), {0xB7, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        SWritten{"Text", Value(std::string("ab")), {0x98, 0x02, 0x61, 0x62}},
        SWritten{"EmptyText", Value(std::string()), {0x06}},
        SWritten{"TextWithInnerNul", Value(std::string("a\0b", 3)), {0x98, 0x03, 0x61, 0x00, 0x62}},
        SWritten{"TextOfAView", Value(Strings::CSubStringRef("abc", 2)), {0x98, 0x02, 0x61, 0x62}},
        SWritten{"TextOfAPointer", Value("ab"), {0x98, 0x02, 0x61, 0x62}},
        SWritten{"TextOfANullPointer", Value(static_cast<char const *>(nullptr)), {0x06}},
        SWritten{"TextOf300", Value(kText300), Joined({{0x99, 0x01, 0x2C}, TextBytes(kText300)})},
        SWritten{"BinaryData", [](CVlkSocket & socket) { socket.Write("xyz", 3, 0); }, {0x78, 0x03, 'x', 'y', 'z'}},
        SWritten{"NoBinaryData", [](CVlkSocket & socket) { socket.Write("", 0, 0); }, {0x78, 0x00}},
        SWritten{"Continuation", [](CVlkSocket & socket) { socket.Write("x", 1, 1); }, {0x80, 0x01, 'x'}},
        SWritten{"OperatorsAreChained",
                 [](CVlkSocket & socket) { socket << 1 << "a" << 2u; },
                 {0xC1, 0x98, 0x01, 0x61, 0xC2}}),
    [](auto const & test) { return std::string(test.param.name); });

// --- Numbers as they are read

/// Reads into a target and gives it as a number, or the code that is raised.
template <class TTarget>
std::string ReadAs(CVlkSocket & socket)
{
    TTarget value = 77;
    const std::uint32_t error = RaisedBy([&] { socket >> value; });
    return error == 0 ? std::to_string(value) : "raised " + std::to_string(error & 0xFFFF);
}

struct SRead {
    char const * name;
    std::string (*read)(CVlkSocket &);
    Bytes bytes;
    std::string expected;
};

void PrintTo(SRead const & read, std::ostream * out)
{
    *out << read.name;
}

class ReadFrameTest : public testing::TestWithParam<SRead> {
private:
    Threading::CCallBackGuard m_Guard;
};

TEST_P(ReadFrameTest, GivesThisValue)
{
    SClientWithPeer whole(GetParam().bytes);
    EXPECT_EQ(GetParam().expected, GetParam().read(whole.client));
}

TEST_P(ReadFrameTest, GivesTheSameWhenItComesByteByByte)
{
    SClientWithPeer it(Bytes{});
    std::thread sender([&] {
        Threading::CCallBackGuard guard;
        for (const unsigned char byte : GetParam().bytes) {
            SendBytes(it.Peer(), {byte});
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(GetParam().expected, GetParam().read(it.client));
    sender.join();
}

const std::string kOutOfRange = "raised 41";
const std::string kOutOfSync = "raised 40";

INSTANTIATE_TEST_SUITE_P(
    All, ReadFrameTest,
    testing::Values(
        SRead{"Zero", &ReadAs<int>, {0xC0}, "0"}, SRead{"LargestInTheTag", &ReadAs<int>, {0xDF}, "31"},
        SRead{"MinusZeroIsZero", &ReadAs<int>, {0xE0}, "0"}, SRead{"SmallestInTheTag", &ReadAs<int>, {0xFF}, "-31"},
        SRead{"TwoBytes", &ReadAs<int>, {0xB1, 0x03, 0xE8}, "1000"},
        SRead{"Negative", &ReadAs<int>, {0xB9, 0x03, 0xE8}, "-1000"},
        SRead{"LongerThanNecessary", &ReadAs<int>, {0xB3, 0, 0, 0, 5}, "5"},
        SRead{"MuchLongerThanNecessary", &ReadAs<int>, {0xBF, 0, 0, 0, 0, 0, 0, 0, 5}, "-5"},
        SRead{"LargestInt", &ReadAs<int>, {0xB3, 0x7F, 0xFF, 0xFF, 0xFF}, "2147483647"},
        SRead{"AboveTheLargestInt", &ReadAs<int>, {0xB3, 0x80, 0, 0, 0}, kOutOfRange},
        SRead{"SmallestInt", &ReadAs<int>, {0xBB, 0x80, 0, 0, 0}, "-2147483648"},
        SRead{"BelowTheSmallestInt", &ReadAs<int>, {0xBB, 0x80, 0, 0, 1}, kOutOfRange},
        SRead{"SmallestIntAsItIsWrittenIsRefused",
              &ReadAs<int>,
              {0xBF, 0xFF, 0xFF, 0xFF, 0xFF, 0x80, 0, 0, 0},
              kOutOfRange},
        SRead{"SignedChar127", &ReadAs<signed char>, {0xB0, 127}, "127"},
        SRead{"SignedChar128", &ReadAs<signed char>, {0xB0, 128}, kOutOfRange},
        SRead{"SignedCharMinus128", &ReadAs<signed char>, {0xB8, 128}, "-128"},
        SRead{"SignedCharMinus129", &ReadAs<signed char>, {0xB8, 129}, kOutOfRange},
        SRead{"Short32767", &ReadAs<short>, {0xB1, 0x7F, 0xFF}, "32767"},
        SRead{"Short32768", &ReadAs<short>, {0xB1, 0x80, 0x00}, kOutOfRange},
        SRead{"ShortMinus32768", &ReadAs<short>, {0xB9, 0x80, 0x00}, "-32768"},
        SRead{"UnsignedChar255", &ReadAs<unsigned char>, {0xB0, 255}, "255"},
        SRead{"UnsignedChar256", &ReadAs<unsigned char>, {0xB1, 1, 0}, kOutOfRange},
        SRead{"MinusFiveInAnUnsignedChar", &ReadAs<unsigned char>, {0xE5}, "251"},
        SRead{"MinusHundredInAnUnsignedCharIsAcceptedOnPurpose", &ReadAs<unsigned char>, {0xB8, 100}, "156"},
        SRead{"Minus128InAnUnsignedChar", &ReadAs<unsigned char>, {0xB8, 128}, "128"},
        SRead{"Minus129InAnUnsignedChar", &ReadAs<unsigned char>, {0xB8, 129}, kOutOfRange},
        SRead{"UnsignedShort65535", &ReadAs<unsigned short>, {0xB1, 0xFF, 0xFF}, "65535"},
        SRead{"UnsignedShort65536", &ReadAs<unsigned short>, {0xB2, 1, 0, 0}, kOutOfRange},
        SRead{"LargestUnsigned", &ReadAs<unsigned int>, {0xB3, 0xFF, 0xFF, 0xFF, 0xFF}, "4294967295"},
        SRead{"AboveTheLargestUnsigned", &ReadAs<unsigned int>, {0xB4, 1, 0, 0, 0, 0}, kOutOfRange},
        SRead{"LargestLongLong",
              &ReadAs<long long>,
              {0xB7, 0x7F, 255, 255, 255, 255, 255, 255, 255},
              "9223372036854775807"},
        SRead{"AboveTheLargestLongLong", &ReadAs<long long>, {0xB7, 0x80, 0, 0, 0, 0, 0, 0, 0}, kOutOfRange},
        SRead{"SmallestLongLong", &ReadAs<long long>, {0xBF, 0x80, 0, 0, 0, 0, 0, 0, 0}, "-9223372036854775808"},
        SRead{"LargestUnsignedLongLong",
              &ReadAs<unsigned long long>,
              {0xB7, 255, 255, 255, 255, 255, 255, 255, 255},
              "18446744073709551615"},
        SRead{"BehindAKeepAlive", &ReadAs<int>, {0x05, 0x05, 0xC7}, "7"},
        SRead{"BehindEventsPending", &ReadAs<int>, {0x03, 0xC7}, "7"},
        SRead{"AText", &ReadAs<int>, {0x98, 0x01, 'a'}, kOutOfSync},
        SRead{"EmptyTextInsteadOfANumber", &ReadAs<unsigned int>, {0x06}, kOutOfSync},
        SRead{"RefusedByte07", &ReadAs<int>, {0x07}, "raised 38"},
        SRead{"RefusedByte08", &ReadAs<int>, {0x08}, "raised 38"},
        SRead{"PlainByte09", &ReadAs<int>, {0x09}, kOutOfSync}, SRead{"PlainByte0F", &ReadAs<int>, {0x0F}, kOutOfSync},
        SRead{"RefusedByte10", &ReadAs<int>, {0x10}, "raised 38"},
        SRead{"RefusedByte57", &ReadAs<int>, {0x57}, "raised 38"},
        SRead{"Reserved58", &ReadAs<int>, {0x58, 0x00}, kOutOfSync},
        SRead{"Reserved6F", &ReadAs<int>, {0x6F, 0, 0, 0, 0, 0, 0, 0, 0}, kOutOfSync}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(StreamWireTest, EventsPendingInsideAnAnswerIsNotLost)
{
    SClientWithPeer it({0x03, 0xC7, 0x03, 0x05, 0x02});
    int value = 0;
    it.client >> value;
    EXPECT_EQ(7, value);
    EXPECT_EQ(1u, it.client.EventsPending());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
    EXPECT_EQ(URET_OK, it.client.CanRead());
}

struct SRefused {
    unsigned char byte;
    char const * message;
};

TEST_F(StreamWireTest, RefusedBytesAreNamed)
{
    for (const auto & [byte, message] : {SRefused{0x07, "VlkSocket, Cmd=x00000007, Line=1180\n"},
                                         SRefused{0x08, "VlkSocket, Cmd=x00000008, Line=1180\n"},
                                         SRefused{0x10, "VlkSocket, Cmd=x00000010, Line=1176\n"},
                                         SRefused{0x57, "VlkSocket, Cmd=x00000057, Line=1176\n"}}) {
        SClientWithPeer it({byte});
        int value = 0;
        Exceptions::CErrorLog log;
        EXPECT_EQ(Errors::SocketBadCommand, RaisedBy([&] { it.client >> value; }, log));
        EXPECT_STREQ(message, log.GetErrorMsg(0));
    }
}

// --- Texts as they are read

std::string ReadText(CVlkSocket & socket)
{
    std::string text = "old";
    const std::uint32_t error = RaisedBy([&] { socket >> text; });
    return error == 0 ? text : "raised " + std::to_string(error & 0xFFFF);
}

std::string ReadFoundationText(CVlkSocket & socket)
{
    Strings::TString<8> text("old");
    const std::uint32_t error = RaisedBy([&] { socket >> text; });
    return error == 0 ? std::string(text.data(), text.size()) : "raised " + std::to_string(error & 0xFFFF);
}

const std::string kText1500(1500, 't');

INSTANTIATE_TEST_SUITE_P(
    Texts, ReadFrameTest,
    testing::Values(
        SRead{"Text", &ReadText, {0x98, 0x02, 'a', 'b'}, "ab"}, SRead{"EmptyText", &ReadText, {0x06}, ""},
        SRead{"TextOfLengthZero", &ReadText, {0x98, 0x00}, ""},
        SRead{"TextStopsAtAnInnerNul", &ReadText, {0x98, 0x03, 'a', 0, 'b'}, "a"},
        SRead{"TextWithALongLength", &ReadText, {0x9F, 0, 0, 0, 0, 0, 0, 0, 1, 'a'}, "a"},
        SRead{"LongText", &ReadText, Joined({{0x99, 0x05, 0xDC}, TextBytes(kText1500)}), kText1500},
        SRead{"NumberInsteadOfAText", &ReadText, {0xC1}, kOutOfSync},
        SRead{"FoundationText", &ReadFoundationText, {0x98, 0x02, 'a', 'b'}, "ab"},
        SRead{"FoundationEmptyText", &ReadFoundationText, {0x06}, ""},
        SRead{"FoundationTextOfLengthZero", &ReadFoundationText, {0x98, 0x00}, ""},
        SRead{"FoundationTextKeepsAnInnerNul", &ReadFoundationText, {0x98, 0x03, 'a', 0, 'b'}, std::string("a\0b", 3)},
        SRead{"FoundationLongText", &ReadFoundationText, Joined({{0x99, 0x05, 0xDC}, TextBytes(kText1500)}), kText1500},
        SRead{"NumberInsteadOfAFoundationText", &ReadFoundationText, {0xC1}, kOutOfSync}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(StreamWireTest, AWholeFrameIsTakenWhereTheTextStopsAtANul)
{
    SClientWithPeer it({0x98, 0x03, 'a', 0, 'b', 0xC5, 0x02});
    std::string text;
    int value = 0;
    it.client >> text >> value;
    EXPECT_EQ("a", text);
    EXPECT_EQ(5, value);
}

TEST_F(StreamWireTest, ATextStopsAtItsFirstNulWhereverThatStands)
{
    // All in one answer, so that many lie in the buffer as a whole and some across its end.
    constexpr std::size_t kLongest = 40;
    Bytes frames;
    std::vector<std::string> expected;
    for (std::size_t size = 1; size <= kLongest; ++size) {
        for (std::size_t nul = 0; nul <= size; ++nul) {
            std::string text(size, 'x');
            if (nul < size) text[nul] = '\0';
            if (nul + 3 < size) text[nul + 3] = '\0';
            frames = Joined({frames, {0x98, static_cast<unsigned char>(size)}, TextBytes(text)});
            expected.push_back(text.c_str());
        }
    }
    SClientWithPeer it(frames);
    for (const std::string & text : expected) {
        std::string read = "old";
        it.client >> read;
        ASSERT_EQ(text, read);
        ASSERT_EQ(text.size(), read.size());
    }
}

class ValueReaderTest : public CFoundationTest {};

TEST_F(ValueReaderTest, GivesWhatTheOperatorsGive)
{
    const Bytes frames{0xC7, 0xE5, 0x05, 0xB1, 0x03, 0xE8, 0x06, 0x98, 2,    'a',  'b', 0xB4,
                       1,    0,    0,    0,    0,    0xE5, 0xB8, 128,  0x03, 0xDF, 0x02};
    SClientWithPeer it(frames);
    int first = 0;
    long long second = 0;
    short third = 0;
    std::string empty = "old";
    std::string text;
    unsigned long long large = 0;
    unsigned char wrapped = 0;
    signed char smallest = 0;
    unsigned short last = 0;
    {
        CValueReader reader(it.client);
        reader >> first >> second >> third >> empty >> text >> large >> wrapped >> smallest >> last;
    }
    EXPECT_EQ(7, first);
    EXPECT_EQ(-5, second);
    EXPECT_EQ(1000, third);
    EXPECT_EQ("", empty);
    EXPECT_EQ("ab", text);
    EXPECT_EQ(0x100000000u, large);
    EXPECT_EQ(251, wrapped);
    EXPECT_EQ(-128, smallest);
    EXPECT_EQ(31, last);
    EXPECT_EQ(1u, it.client.EventsPending());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

TEST_F(ValueReaderTest, WhatRaisesIsStillThereAndNothingInFrontOfIt)
{
    SClientWithPeer it({0xC1, 0xC2, 0x98, 1, 'a', 0x02});
    int first = 0;
    int second = 0;
    int third = 77;
    EXPECT_EQ(Errors::SocketOutOfSync, RaisedBy([&] {
                  CValueReader reader(it.client);
                  reader >> first >> second >> third;
              }));
    EXPECT_EQ(1, first);
    EXPECT_EQ(2, second);
    EXPECT_EQ(77, third);
    EXPECT_EQ(ST_Read | ST_Error, it.client.State());
    it.client.ForgetError();
    std::string text;
    CValueReader(it.client) >> text;
    EXPECT_EQ("a", text);
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

TEST_F(ValueReaderTest, ChecksTheRangeOfItsTarget)
{
    for (const Bytes & frame :
         {Bytes{0xB3, 0x80, 0, 0, 0}, Bytes{0xBB, 0x80, 0, 0, 1}, Bytes{0xBF, 0xFF, 0xFF, 0xFF, 0xFF, 0x80, 0, 0, 0}}) {
        SClientWithPeer it(frame);
        int value = 77;
        EXPECT_EQ(Errors::IntegerOutOfRange, RaisedBy([&] { CValueReader(it.client) >> value; }));
        EXPECT_EQ(77, value);
    }
}

TEST_F(ValueReaderTest, RaisesOutsideOfReading)
{
    CVisibleClient closed;
    int value = 77;
    EXPECT_EQ(Errors::SocketState, RaisedBy([&] { CValueReader(closed) >> value; }));
    SClientWithPeer it({0x78, 2, 0xC1, 0xC2, 0x02});
    char data[1];
    unsigned long long read = 0;
    ASSERT_EQ(URET_MoreData, it.client.Read(data, 1, read));
    EXPECT_EQ(Errors::SocketState, RaisedBy([&] { CValueReader(it.client) >> value; }));
    EXPECT_EQ(77, value);
}

TEST_F(ValueReaderTest, WithThrowingDisabledNumbersBecomeZeroFromTheFailureOn)
{
    SClientWithPeer it({0xC1, 0x98, 1, 'a', 0xC5, 0x02});
    Exceptions::CThrowState state;
    state.DisableThrow();
    int first = 77;
    int second = 77;
    int third = 77;
    CValueReader(it.client) >> first >> second >> third;
    EXPECT_EQ(1, first);
    EXPECT_EQ(0, second);
    EXPECT_EQ(0, third);
    EXPECT_EQ(URET_OK, it.client.Skip());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

struct SLie {
    char const * name;
    Bytes head;
};

class ClaimedLengthTest : public testing::TestWithParam<SLie> {
private:
    Threading::CCallBackGuard m_Guard;
};

TEST_P(ClaimedLengthTest, ThatNoMemoryHoldsIsRefusedAtOnce)
{
    SClientWithPeer first(GetParam().head);
    std::string text = "old";
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] { first.client >> text; }));
    EXPECT_EQ("old", text);
    EXPECT_EQ(ST_Read | ST_Error, first.client.State());
    SClientWithPeer second(GetParam().head);
    Strings::TString<8> foundationText("old");
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] { second.client >> foundationText; }));
    EXPECT_EQ(0u, foundationText.size());
    EXPECT_STREQ("", foundationText.C_Str());
}

INSTANTIATE_TEST_SUITE_P(Lies, ClaimedLengthTest,
                         testing::Values(SLie{"Two48", {0x9E, 1, 0, 0, 0, 0, 0, 0}},
                                         SLie{"Two62", {0x9F, 0x40, 0, 0, 0, 0, 0, 0, 0}},
                                         SLie{"BelowTwo63", {0x9F, 0x7F, 255, 255, 255, 255, 255, 255, 255}},
                                         SLie{"Two63", {0x9F, 0x80, 0, 0, 0, 0, 0, 0, 0}},
                                         SLie{"Largest", {0x9F, 255, 255, 255, 255, 255, 255, 255, 255}}),
                         [](auto const & test) { return std::string(test.param.name); });

TEST_F(StreamWireTest, AClaimedLengthThatIsMoreThanComesEndsWithTheConnection)
{
    SClientWithPeer it({0x9B, 0x00, 0x10, 0x00, 0x00, 'a'}); // 1 MiB
    it.Peer().Close();
    std::string text = "old";
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { it.client >> text; }));
    EXPECT_EQ("old", text);
    SClientWithPeer other({0x9B, 0x00, 0x10, 0x00, 0x00, 'a'});
    other.Peer().Close();
    Strings::TString<8> foundationText("old");
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { other.client >> foundationText; }));
    EXPECT_STREQ("", foundationText.C_Str());
}

// --- Binary data

TEST_F(StreamWireTest, BinaryDataOfOneBlockEndsWithTheNextTag)
{
    SClientWithPeer it({0x78, 0x03, 'x', 'y', 'z', 0x02});
    char data[8] = {};
    unsigned long long read = 99;
    EXPECT_EQ(URET_OK, it.client.Read(data, sizeof data, read));
    EXPECT_EQ("xyz", std::string(data, read));
    EXPECT_EQ(ST_Read, it.client.State());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

TEST_F(StreamWireTest, NoBinaryDataIsReadAsNothing)
{
    SClientWithPeer it({0x78, 0x00, 0xC1});
    char data[8] = {};
    unsigned long long read = 99;
    EXPECT_EQ(URET_OK, it.client.Read(data, sizeof data, read));
    EXPECT_EQ(0u, read);
    EXPECT_EQ(ST_Read, it.client.State());
    int value = 0;
    it.client >> value;
    EXPECT_EQ(1, value);
}

TEST_F(StreamWireTest, BlocksAreJoinedAndEmptyOnesPassedOver)
{
    SClientWithPeer it({0x78, 0x02, 'a', 'b', 0x80, 0x00, 0x80, 0x01, 'c', 0x80, 0x02, 'd', 'e', 0x06});
    char data[8] = {};
    unsigned long long read = 99;
    EXPECT_EQ(URET_OK, it.client.Read(data, sizeof data, read));
    EXPECT_EQ("abcde", std::string(data, read));
    std::string text = "old";
    it.client >> text;
    EXPECT_EQ("", text);
}

TEST_F(StreamWireTest, ATargetThatIsTooSmallGetsTheRestInFurtherReads)
{
    SClientWithPeer it({0x78, 0x03, 'a', 'b', 'c', 0x80, 0x03, 'd', 'e', 'f', 0x02});
    char data[4] = {};
    unsigned long long read = 99;
    EXPECT_EQ(URET_MoreData, it.client.Read(data, 2, read));
    EXPECT_EQ("ab", std::string(data, read));
    EXPECT_EQ(ST_ReadBlock, it.client.State());
    EXPECT_EQ(URET_MoreData, it.client.Read(data, 2, read));
    EXPECT_EQ("cd", std::string(data, read));
    EXPECT_EQ(URET_OK, it.client.Read(data, 4, read));
    EXPECT_EQ("ef", std::string(data, read));
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

TEST_F(StreamWireTest, ATargetOfExactlyTheSizeSeesTheEnd)
{
    SClientWithPeer it({0x78, 0x02, 'a', 'b', 0x02});
    char data[2];
    unsigned long long read = 0;
    EXPECT_EQ(URET_OK, it.client.Read(data, 2, read));
    EXPECT_EQ(2u, read);
    EXPECT_EQ(ST_Read, it.client.State());
}

TEST_F(StreamWireTest, OperatorsRaiseInsideABlock)
{
    SClientWithPeer it({0x78, 0x02, 'a', 'b', 0x02});
    char data[1];
    unsigned long long read = 0;
    ASSERT_EQ(URET_MoreData, it.client.Read(data, 1, read));
    int value = 0;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketState, RaisedBy([&] { it.client >> value; }, log));
    EXPECT_STREQ("urrent=4\n", log.GetErrorMsg(0));
    EXPECT_EQ(ST_ReadBlock | ST_Error, it.client.State());
}

TEST_F(StreamWireTest, DataBytesThatLookLikeTagsAreData)
{
    SClientWithPeer it({0x78, 0x04, 0x03, 0x05, 0x07, 0x02, 0x02});
    unsigned char data[8];
    unsigned long long read = 0;
    EXPECT_EQ(URET_OK, it.client.Read(data, sizeof data, read));
    EXPECT_EQ((Bytes{0x03, 0x05, 0x07, 0x02}), Bytes(data, data + read));
    EXPECT_EQ(0u, it.client.EventsPending());
}

TEST_F(StreamWireTest, ATextInsteadOfBinaryDataCanBeReadAgain)
{
    SClientWithPeer it({0x98, 0x01, 'a', 0x02});
    char data[8];
    unsigned long long read = 0;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketOutOfSync, RaisedBy([&] { it.client.Read(data, 8, read); }, log));
    EXPECT_STREQ("TC_BinBlockStart expected, 152\n", log.GetErrorMsg(0));
    EXPECT_EQ(URET_OK, it.client.Skip());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

// --- Files

TEST_F(StreamWireTest, AnEmptyFileIsOneFrame)
{
    EXPECT_EQ((Bytes{0x70, 0x00}), WrittenBy([](CVlkSocket & socket) {
                  const CTemporaryFile file;
                  socket << file.Get();
              }));
}

TEST_F(StreamWireTest, AFileLeftAtItsStartIsSentEmpty)
{
    EXPECT_EQ((Bytes{0x70, 0x00}), WrittenBy([](CVlkSocket & socket) {
                  const CTemporaryFile file({1, 2, 3});
                  std::rewind(file.Get());
                  socket << file.Get();
              }));
}

TEST_F(StreamWireTest, AFileGoesOutInChunksOf4096)
{
    Bytes content(5000);
    for (std::size_t i = 0; i < content.size(); ++i)
        content[i] = static_cast<unsigned char>(i % 251);
    const auto middle = content.begin() + 4096;
    EXPECT_EQ(Joined({{0x71, 0x13, 0x88, 0x79, 0x10, 0x00},
                      Bytes(content.begin(), middle),
                      {0x79, 0x03, 0x88},
                      Bytes(middle, content.end())}),
              WrittenBy([&](CVlkSocket & socket) {
                  const CTemporaryFile file(content);
                  socket << file.Get();
              }));
}

TEST_F(StreamWireTest, AFileThatCannotBeReadRaises)
{
    SClientWithPeer it;
    it.client.StartRequest(1);
    std::FILE * const pipe = ::popen("true", "r");
    ASSERT_NE(nullptr, pipe);
    EXPECT_EQ(Errors::OperatingSystem, RaisedBy([&] { it.client << pipe; }));
    EXPECT_EQ(ST_Send | ST_Error, it.client.State());
    ::pclose(pipe);
}

TEST_F(StreamWireTest, AFileIsWrittenToTheStream)
{
    SClientWithPeer it({0x70, 0x05, 0x78, 0x02, 'a', 'b', 0x78, 0x02, 'c', 'd', 0x80, 0x01, 'e', 0x02});
    const CTemporaryFile file;
    it.client >> file.Get();
    EXPECT_EQ(TextBytes("abcde"), file.Content());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

TEST_F(StreamWireTest, AFileThatIsShorterThanAnnouncedRaises)
{
    SClientWithPeer it({0x70, 0x05, 0x78, 0x02, 'a', 'b', 0x02});
    const CTemporaryFile file;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::DataMissing, RaisedBy([&] { it.client >> file.Get(); }, log));
    EXPECT_STREQ("\n", log.GetErrorMsg(0)) << "of 3, the message's one character";
    EXPECT_EQ(TextBytes("ab"), file.Content());
    EXPECT_EQ(URET_OK, it.client.Skip());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

TEST_F(StreamWireTest, ANumberInsteadOfAFileCanBeReadAgain)
{
    SClientWithPeer it({0xB0, 0x20, 0x02});
    const CTemporaryFile file;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketOutOfSync, RaisedBy([&] { it.client >> file.Get(); }, log));
    EXPECT_STREQ("TC_File expected, 176\n", log.GetErrorMsg(0));
}

TEST_F(StreamWireTest, AConnectionClosedInsideAFileIsOneByteOfItAndRaisesThen)
{
    SClientWithPeer it({0x70, 0x05, 0x78, 0x05, 'a'});
    it.Peer().Close();
    const CTemporaryFile file;
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { it.client >> file.Get(); }));
    EXPECT_EQ((Bytes{'a', 0}), file.Content());
}

TEST_F(StreamWireTest, AFileOfAnyLengthThatIsClaimedEndsWithTheConnection)
{
    SClientWithPeer it(Joined({{0x77, 0x80, 0, 0, 0, 0, 0, 0, 0}, {0x7F, 0x80, 0, 0, 0, 0, 0, 0, 0}}));
    it.Peer().Close();
    const CTemporaryFile file;
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { it.client >> file.Get(); }));
}

// --- The buffer of 1460 bytes

class BufferEdgeTest : public testing::TestWithParam<std::size_t> {
private:
    Threading::CCallBackGuard m_Guard;
};

TEST_P(BufferEdgeTest, FramesAreCutAnywhereAndComeTogetherAgain)
{
    const std::string filler(GetParam(), 'f');
    const Bytes expected =
        Joined({{0x99, static_cast<unsigned char>(filler.size() >> 8), static_cast<unsigned char>(filler.size())},
                TextBytes(filler),
                {0xB3, 0x12, 0x34, 0x56, 0x78, 0x98, 0x02, 'o', 'k', 0xB9, 0x03, 0xE8}});
    EXPECT_EQ(expected, WrittenBy([&](CVlkSocket & socket) { socket << filler << 0x12345678 << "ok" << -1000; }));
    SClientWithPeer it(Joined({expected, {0x02}}));
    std::string text;
    std::string ok;
    int number = 0;
    int negative = 0;
    it.client >> text >> number >> ok >> negative;
    EXPECT_EQ(filler, text);
    EXPECT_EQ(0x12345678, number);
    EXPECT_EQ("ok", ok);
    EXPECT_EQ(-1000, negative);
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

INSTANTIATE_TEST_SUITE_P(Lengths, BufferEdgeTest, testing::Range(std::size_t{1440}, std::size_t{1461}));

TEST_F(StreamWireTest, ARequestWithItsArgumentsIsOneSend)
{
    SClientWithPeer it;
    it.client.StartRequest(2);
    it.client << 7 << "x";
    EXPECT_TRUE(IsSilent(it.Peer())) << "nothing goes out before the turn is handed over";
    SendBytes(it.Peer(), {0x90, 0x00});
    unsigned int ack = 0;
    it.client.WaitForAck(ack);
    EXPECT_EQ((Bytes{0x88, 0x02, 0xC7, 0x98, 0x01, 'x', 0x01}), ReceiveBytes(it.Peer(), 7));
}

TEST_F(StreamWireTest, TheExampleOfARequestAndItsAnswer)
{
    SServerWithPeer it;
    SendBytes(it.Peer(), {0x88, 0x02, 0x01});
    unsigned int code = 0;
    EXPECT_EQ(URET_OK, it.server.WaitForRequest(code));
    EXPECT_EQ(2u, code);
    EXPECT_EQ(URET_OK, it.server.SendAck(0));
    it.server << 7;
    EXPECT_EQ(URET_OK, it.server.EndAck());
    EXPECT_EQ((Bytes{0x90, 0x00, 0xC7, 0x02}), ReceiveBytes(it.Peer(), 4));
}

} // namespace
