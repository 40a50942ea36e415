#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <thread>

#include "Foundation.h"
#include "VLK/FormatStream.h"
#include "VLK/Strings.h"
#include "VLK/ThreadCB.h"

using namespace VLK;
using namespace VLK::Output_Streams;
using namespace VLK::Strings;

namespace {

class FormatStreamTest : public CFoundationTest {};
class FormatDumpTest : public CFoundationTest {};
class ChrStreamBufferTest : public CFoundationTest {};
class ResortBufferTest : public CFoundationTest {};

std::string Text(CSubStringRef const & text)
{
    return std::string(text.View());
}

template <class... TValues>
std::string Formatted(char const * format, TValues const &... values)
{
    TString<256> text;
    static_cast<void>((text.Format(format) << ... << values));
    return Text(text);
}

/// A sink that can be silent, and shows what it gets.
class CTestBuffer : public Base_Classes::CFormatStreamBuffer {
public:
    explicit CTestBuffer(unsigned int flags = 0) : CFormatStreamBuffer(flags) {}
    unsigned int Write(char const * text, std::size_t n, unsigned int upper) override
    {
        std::string part(text, n);
        if (upper != 0) UpperCase(part.data(), n);
        m_Text += part;
        return 1;
    }
    unsigned int Fill(int c, std::size_t n) override
    {
        m_Text.append(n, static_cast<char>(c));
        return 1;
    }
    void SignalFormatEnd() override { ++m_nEnds; }
    bool HasError() const { return m_pError != nullptr; }
    std::size_t Column() const { return m_uColumn; }

    std::string m_Text;
    int m_nEnds = 0;
};

constexpr std::uint32_t StreamError = 0x20010002;

// Conversions

TEST_F(FormatStreamTest, Integers)
{
    EXPECT_EQ("-5 5 +5 -5", Formatted("%d %d %D %D", -5, 5, 5, -5));
    EXPECT_EQ("ff FF 17 101", Formatted("%x %X %o %b", 255, 255, 15, 5));
    EXPECT_EQ("-2147483648", Formatted("%d", std::numeric_limits<int>::min()));
    EXPECT_EQ("-9223372036854775808", Formatted("%d", std::numeric_limits<long long>::min()));
    EXPECT_EQ("ffffffffffffffff", Formatted("%x", std::numeric_limits<unsigned long long>::max()));
    EXPECT_EQ(std::string(64, '1'), Formatted("%b", std::numeric_limits<unsigned long long>::max()));
    EXPECT_EQ("0", Formatted("%d", 0));
    EXPECT_EQ("0", Formatted("%x", 0));
}

TEST_F(FormatStreamTest, TheSignIsTestedInTheWidthOfTheValue)
{
    EXPECT_EQ("-1", Formatted("%d", 0xFFFFFFFFu));
    EXPECT_EQ("4294967295", Formatted("%d", 0xFFFFFFFFull));
    EXPECT_EQ("-1", Formatted("%d", static_cast<short>(-1)));
    EXPECT_EQ("65535", Formatted("%d", static_cast<unsigned short>(65535)));
    EXPECT_EQ("ffffffff", Formatted("%x", static_cast<short>(-1)));
    EXPECT_EQ("-7 8", Formatted("%d %d", -7L, 8UL));
}

TEST_F(FormatStreamTest, CharactersTextsAndPointers)
{
    EXPECT_EQ("aA", Formatted("%c%C", 97, 97));
    EXPECT_EQ("abc ABC", Formatted("%s %S", "abc", "abc"));
    EXPECT_EQ("x", Formatted("%s", CSubStringRef("xyz", 1)));
    EXPECT_EQ("xyz", Formatted("%s", std::string("xyz")));
    EXPECT_EQ("[]", Formatted("[%s]", static_cast<char const *>(nullptr)));
    void const * const pointer = reinterpret_cast<void const *>(std::uintptr_t{0xABC});
    EXPECT_EQ("abc ABC", Formatted("%p %P", pointer, pointer));
    char const * const text = reinterpret_cast<char const *>(&pointer);
    TString<64> expected;
    expected.Format("%x") << static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(text));
    EXPECT_EQ(Text(expected), Formatted("%p", CSubStringRef(text, 1)));
}

TEST_F(FormatStreamTest, OnlyWhatIsAppendedTurnsToUpperCase)
{
    TString<64> text;
    text = "before ";
    text.Format("%S") << CSubStringRef("ab\0cd", 5); // ends at the NUL, as everywhere
    EXPECT_EQ("before AB", Text(text));
    TString<64> reference("lost");
    reference.Format("%S") << "new";
    EXPECT_EQ("NEW", Text(reference));
    TString<64> longer;
    longer = "before ";
    longer.Format("%S") << std::string(100, 'x');
    EXPECT_EQ("before " + std::string(100, 'X'), Text(longer));
}

struct SFormat {
    char const * name;
    char const * format;
    char const * value;
    char const * result;
};

class FormatAlignmentTest : public CFoundationTest, public testing::WithParamInterface<SFormat> {};

TEST_P(FormatAlignmentTest, PlacesTheText)
{
    EXPECT_EQ(GetParam().result, Formatted(GetParam().format, GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(
    Edges, FormatAlignmentTest,
    testing::Values(
        SFormat{"LeftTruncates", "%- 5s|", "abcdefg", "abcde|"},
        SFormat{"RightNeverTruncates", "%+ 5s|", "abcdefg", "abcdefg|"},
        SFormat{"CentreTruncates", "%= 5s|", "abcdefg", "abcde|"}, SFormat{"CentreEven", "%= 6s", "ab", "  ab  "},
        SFormat{"CentreOdd", "%= 6s", "abc", " abc  "}, SFormat{"EmptyFills", "%- 4s", "", "    "},
        SFormat{"DotIsTheFill", "[%=.5s]", "", "[.....]"}, SFormat{"PercentIsTheFill", "%-%4s", "a", "a%%%"},
        SFormat{"ZeroWidthCancels", "%- 0s|", "abc", "abc|"}, SFormat{"NoWidthCancels", "%- s|", "abc", "abc|"},
        SFormat{"WidthAloneDoesNothing", "%5s|", "abc", "abc|"}, SFormat{"ZeroFills", "%05s", "abc", "00abc"},
        SFormat{"CentreThatFillsKeepsItsCase", "%= 3S", "abc", "abc"}, SFormat{"CentreUpper", "%= 5S", "abc", " ABC "},
        SFormat{"LeftUpper", "%- 3S", "abcd", "ABC"}, SFormat{"EachLineIsPlaced", "%- 4s|", "a\nbc", "a   \nbc  |"},
        SFormat{"Escape", "%%%s%%%%", "x", "%x%%%%"}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(FormatStreamTest, StarTakesTheNextInteger)
{
    EXPECT_EQ("00AB", Formatted("%0*X", 4, 0xAB));
    EXPECT_EQ("[.....]", Formatted("[%=.*s]", 5, ""));
    EXPECT_EQ(std::string(100, '*'), Formatted("%=*100c", 42));
    EXPECT_EQ("   7", Formatted("%+ *d", 4, 7));
}

TEST_F(FormatStreamTest, ValuesBehindTheLastPlaceholderAreAppended)
{
    EXPECT_EQ("ab7", Formatted("%s", "a", "b", 7));
    EXPECT_EQ("7", Formatted("", 7));
    EXPECT_EQ("f15", Formatted("%x", 15, 15));  // in decimal
    EXPECT_EQ("-1-1", Formatted("%d", -1, -1)); // by the last type
    EXPECT_EQ("aa", Formatted("%c", 97, 97));
    EXPECT_EQ("1ff", Formatted("%d", 1, reinterpret_cast<void const *>(std::uintptr_t{0xFF})));
}

TEST_F(FormatStreamTest, TheRestOfTheFormatIsPlainText)
{
    EXPECT_EQ("1 of %d, %%", Formatted("%d of %d, %%", 1));
    EXPECT_EQ("plain", Formatted("plain"));
}

TEST_F(FormatStreamTest, MarginKeepsFurtherLinesUnderTheFirst)
{
    EXPECT_EQ("column:a\n       b", Formatted("column:%!s", "a\nb"));
    EXPECT_EQ("column:a\nb", Formatted("column:%s", "a\nb"));
}

TEST_F(FormatStreamTest, TheLeftMarginIndentsAndCountsTwiceInTheColumn)
{
    CTestBuffer buffer;
    EXPECT_EQ(0u, buffer.SetLeftMargin(3));
    EXPECT_EQ(3u, buffer.GetColumn());
    buffer.Format("%s") << "a\nb";
    EXPECT_EQ("   a\n   b", buffer.m_Text);
    EXPECT_EQ(4u, buffer.Column());
    buffer.SetLeftMargin(6);
    buffer.Format("%s") << "c";
    EXPECT_EQ("   a\n   b  c", buffer.m_Text);
    EXPECT_EQ(11u, buffer.Column()); // 4, the margin of 6, 1: the margin, not the difference, is added
    buffer.Reset();
    EXPECT_EQ(0u, buffer.GetColumn());
}

TEST_F(FormatStreamTest, ChainedFormats)
{
    TString<64> text;
    {
        CFormatStream stream = text.Format("%d and rest");
        stream << 1;
        stream >> " then %d.";
        stream << 2;
    }
    EXPECT_EQ("1 and rest then 2.", Text(text));
}

TEST_F(FormatStreamTest, ACopyBeginsWithTheFormatAnew)
{
    CTestBuffer buffer(Base_Classes::CFormatStreamBuffer::FlagEndSignal);
    {
        CFormatStream stream = buffer.Format("<%d>");
        stream << 1;
        CFormatStream copy(stream);
        copy << 2;
        CFormatStream assigned = buffer.Format("other");
        assigned = copy;
        assigned << 3;
    }
    EXPECT_EQ("<1<2<3>>>", buffer.m_Text);
    EXPECT_EQ(3, buffer.m_nEnds);
}

TEST_F(FormatStreamTest, ACopyOfAStringsStreamKeepsItsBufferOpen)
{
    TString<64> text;
    {
        CFormatStream first = text.Format("%d;");
        CFormatStream second(first);
        first << 1;
        second << 2;
    }
    EXPECT_EQ("12;;", Text(text));
}

TEST_F(FormatStreamTest, LongFormatsAreCopiedToo)
{
    std::string format(500, 'x');
    TString<32> text;
    {
        CFormatStream stream = text.Format((format + "%d").c_str());
        format.assign(500, 'y');
        stream << 7;
    }
    EXPECT_EQ(std::string(500, 'x') + "7", Text(text));
}

// Errors

struct SBadFormat {
    char const * name;
    char const * format;
    char const * before;
};

class FormatErrorTest : public CFoundationTest, public testing::WithParamInterface<SBadFormat> {};

TEST_P(FormatErrorTest, RaisesBehindTheTextWrittenSoFar)
{
    CTestBuffer loud;
    EXPECT_EQ(StreamError, RaisedBy([&] { loud.Format(GetParam().format) << 1 << 2 << 3 << 4 << 5 << 6 << 7; }));
    EXPECT_EQ(GetParam().before, loud.m_Text);
    CTestBuffer silent(Base_Classes::CFormatStreamBuffer::FlagSilent);
    silent.Format(GetParam().format) << 1 << 2 << 3 << 4 << 5 << 6 << 7;
    EXPECT_EQ(GetParam().before, silent.m_Text);
    EXPECT_TRUE(silent.HasError());
    silent.Format("dropped %d") << 1;
    EXPECT_EQ(GetParam().before, silent.m_Text);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, FormatErrorTest,
    testing::Values(SBadFormat{"EndsBehindEscape", "100%%", "100%"}, SBadFormat{"EndsInPlaceholder", "a%", "a"},
                    SBadFormat{"EndsBehindAlignment", "a%-", "a"}, SBadFormat{"EndsBehindFill", "a%- ", "a"},
                    SBadFormat{"EndsBehindWidth", "a%- 5", "a"}, SBadFormat{"EndsBehindStar", "a%*", "a"},
                    SBadFormat{"EndsBehindParameter", "a%.5", "a"}, SBadFormat{"UnknownConversion", "a%u", "a"},
                    SBadFormat{"NoFloat", "a%f", "a"}, SBadFormat{"NoLong", "a%ld", "a"},
                    SBadFormat{"HighByte", "a%\xE4", "a"}, SBadFormat{"IntegerToText", "a%s", "a"},
                    SBadFormat{"IntegerToPointer", "a%p", "a"}, SBadFormat{"IntegerToDump", "a%h", "a"},
                    SBadFormat{"ParameterWithoutNumber", "a%.d", "a"},
                    SBadFormat{"SixthParameter", "a%.1.2.3.4.5.6d", "a"},
                    SBadFormat{"SixthInsertedParameter", "a%.*.*.*.*.*.*d", "a"}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(FormatStreamTest, TextToAnIntegerConversionOrWidthIsAnError)
{
    for (char const * format : {"%d", "%c", "%x", "%*s", "%.*s"})
        EXPECT_EQ(StreamError, RaisedBy([&] { CTestBuffer().Format(format) << "text"; })) << format;
}

TEST_F(FormatStreamTest, APointerIsNoText)
{
    void const * const pointer = nullptr;
    EXPECT_EQ(StreamError, RaisedBy([&] { CTestBuffer().Format("%s") << pointer; }));
    EXPECT_EQ(StreamError, RaisedBy([&] { CTestBuffer().Format("%h") << pointer; }));
}

TEST_F(FormatStreamTest, ChainingWithinAPlaceholderIsAnError)
{
    EXPECT_EQ(StreamError, RaisedBy([] {
                  CTestBuffer buffer;
                  CFormatStream stream = buffer.Format("%*d");
                  stream << 5;
                  stream >> "next";
              }));
}

TEST_F(FormatStreamTest, TheEndIsSignalledAlsoBehindAnError)
{
    CTestBuffer buffer(Base_Classes::CFormatStreamBuffer::FlagEndSignal);
    EXPECT_EQ(StreamError, RaisedBy([&] { buffer.Format("%u") << 1; }));
    EXPECT_EQ(1, buffer.m_nEnds);
}

TEST_F(FormatStreamTest, WithThrowingDisabledTheErrorGoesToTheLogAndTheStreamIsDead)
{
    Exceptions::CThrowState state;
    state.DisableThrow();
    CTestBuffer buffer;
    buffer.Format("a%u") << 1 << 2;
    EXPECT_EQ("a", buffer.m_Text);
    EXPECT_EQ(StreamError, Threading::CCurrentThread().GetErrorLog().GetError());
    state.EnableThrow();
}

// Hexadecimal dumps

std::string Row(char const * offset, std::string const & bytes)
{
    std::string row = std::string("[") + offset + "]:";
    std::string characters;
    for (char const c : bytes) {
        char hex[4];
        std::snprintf(hex, sizeof hex, " %02X", static_cast<unsigned char>(c));
        row += hex;
        characters += static_cast<unsigned char>(c) < 33 ? '.' : c;
    }
    row.append(50 - 3 * bytes.size(), ' ');
    return row + characters + "\n";
}

std::string Dumped(char const * format, std::string const & data)
{
    TString<512> text;
    text.Format(format) << data;
    return Text(text);
}

TEST_F(FormatDumpTest, OneRowAndAPartialRow)
{
    EXPECT_EQ(Row("0", "abc\x01 "), Dumped("%h", "abc\x01 "));
    EXPECT_EQ(Row("00", "0123456789abcdef") + Row("10", "xyz"), Dumped("%H", "0123456789abcdefxyz"));
    EXPECT_EQ("", Dumped("%h", ""));
}

TEST_F(FormatDumpTest, OffsetsAreAsWideAsTheSizeNeeds)
{
    EXPECT_EQ(Row("0", std::string(15, 'a')), Dumped("%h", std::string(15, 'a')));
    EXPECT_EQ(Row("00", std::string(16, 'a')), Dumped("%h", std::string(16, 'a')));
    std::string const dump = Dumped("%h", std::string(256, 'a'));
    EXPECT_EQ("[000]:", dump.substr(0, 6));
}

TEST_F(FormatDumpTest, AThousandZeroBytesAreThreeRowsAndARowOfDots)
{
    std::string const row(16, '\0');
    EXPECT_EQ(Row("000", row) + Row("010", row) + "[...]\n" + Row("3E0", std::string(8, '\0')),
              Dumped("%h", std::string(1000, '\0')));
}

TEST_F(FormatDumpTest, ARowThatIsNotARepetitionIsShown)
{
    std::string data(64, 'a');
    data[47] = 'b';
    std::string const row(16, 'a');
    EXPECT_EQ(Row("00", row) + Row("10", row) + Row("20", data.substr(32, 16)) + Row("30", row), Dumped("%h", data));
}

TEST_F(FormatDumpTest, TheWidthIsTheHeadAndTheLastRowFollows)
{
    std::string data;
    for (int i = 0; i != 100; ++i)
        data += static_cast<char>('A' + i % 50);
    EXPECT_EQ(Row("00", data.substr(0, 16)) + " :  \n" + Row("60", data.substr(96)), Dumped("%10h", data));
    data.resize(48);
    EXPECT_EQ(Row("00", data.substr(0, 16)) + " :  \n" + Row("20", data.substr(32)), Dumped("%10h", data));
    data.resize(32);
    EXPECT_EQ(Row("00", data.substr(0, 16)) + Row("10", data.substr(16)), Dumped("%10h", data));
}

TEST_F(FormatDumpTest, APointerNeedsTheNumberOfBytes)
{
    TString<512> text;
    void const * const data = "abcdef";
    text.Format("%.*h") << 3 << data;
    EXPECT_EQ(Row("0", "abc"), Text(text));
    text = Misc::CNull();
    text.Format("%.2h") << "abcdef";
    EXPECT_EQ(Row("0", "ab"), Text(text));
    EXPECT_EQ(StreamError, RaisedBy([] { CTestBuffer().Format("%.1.2h") << "abc"; }));
    EXPECT_EQ(StreamError, RaisedBy([] { CTestBuffer().Format("%.1h") << std::string("abc"); }));
}

TEST_F(FormatDumpTest, RowsStandUnderTheColumnWhereTheDumpBegan)
{
    CTestBuffer buffer;
    buffer.Format("ab:%h") << std::string(20, 'x');
    EXPECT_EQ("ab:" + Row("00", std::string(16, 'x')) + "   " + Row("10", "xxxx"), buffer.m_Text);
    EXPECT_EQ(3u, buffer.GetLeftMargin()); // the column becomes the margin
}

// Buffers

TEST_F(ChrStreamBufferTest, WithoutAStepItIsFull)
{
    CChrStreamBuffer buffer;
    EXPECT_EQ(StreamError, RaisedBy([&] { buffer.Format("%s") << "a"; }));
    char block[5];
    buffer.Reset();
    buffer.SetBuffer(block, sizeof block);
    buffer.Format("%s") << "abcd";
    EXPECT_STREQ("abcd", block);
    EXPECT_EQ(StreamError, RaisedBy([&] { buffer.Format("%s") << "e"; }));
    EXPECT_STREQ("abcd", block);
    buffer.Reset();
    EXPECT_STREQ("", block);
}

TEST_F(ChrStreamBufferTest, GrowsByStepsUpToTheMaximum)
{
    CChrStreamBuffer buffer(16, 40);
    buffer.Format("%S") << "abc";
    EXPECT_STREQ("ABC", buffer.GetBuffer());
    EXPECT_EQ(3u, buffer.GetLength());
    buffer.Format("%- 36s") << "x";
    EXPECT_EQ(39u, buffer.GetLength());
    EXPECT_EQ(StreamError, RaisedBy([&] { buffer.Format("%s") << "y"; }));
    char * out = nullptr;
    buffer >> out;
    EXPECT_EQ(nullptr, buffer.GetBuffer());
    EXPECT_EQ(0u, buffer.GetLength());
    std::free(out);
    buffer.Reset();
    buffer.Format("%s") << "z";
    buffer.Release();
    EXPECT_EQ(nullptr, buffer.GetBuffer());
}

TEST_F(ResortBufferTest, PutsTheFieldsInTheOrderOfTheMask)
{
    CFormatResortBuffer buffer;
    buffer.Format("%2 %1", "%s%s") << "one"
                                   << "two";
    TString<64> text;
    text = buffer;
    EXPECT_EQ("two one", Text(text));
    text += buffer;
    EXPECT_EQ("two onetwo one", Text(text));
    EXPECT_EQ("[two one]", Formatted("[%s]", static_cast<char const *>("two one")));
    TString<64> inserted;
    inserted.Format("<%s>") << buffer;
    EXPECT_EQ("<two one>", Text(inserted));
}

TEST_F(ResortBufferTest, AFieldHasTheTextInFrontOfItsPlaceholderAndTheLastTheEnd)
{
    CFormatResortBuffer buffer;
    buffer.Format("%2|%1", "a=%d, b=%d.") << 1 << 2;
    TString<64> text;
    text = buffer;
    EXPECT_EQ(", b=2.|a=1", Text(text));
}

TEST_F(ResortBufferTest, OtherPercentSignsOfTheMaskStay)
{
    CFormatResortBuffer buffer;
    buffer.Format("100%% %x %1%", "%d") << 7;
    TString<64> text;
    text = buffer;
    EXPECT_EQ("100% %x 7%", Text(text));
}

TEST_F(ResortBufferTest, AMaskWithoutItsFieldRaises)
{
    for (char const * mask : {"%0", "%3"}) {
        CFormatResortBuffer buffer;
        buffer.Format(mask, "%d%d") << 1 << 2;
        TString<64> text;
        text = "x";
        EXPECT_EQ(0x2001001Bu, RaisedBy([&] { text += buffer; })) << mask;
        EXPECT_EQ("x", Text(text));
    }
}

TEST_F(ResortBufferTest, NineFieldsAreTheMost)
{
    CFormatResortBuffer buffer;
    buffer.Format("%9%1", "%d%d%d%d%d%d%d%d%d") << 1 << 2 << 3 << 4 << 5 << 6 << 7 << 8 << 9;
    TString<64> text;
    text = buffer;
    EXPECT_EQ("91", Text(text));
    EXPECT_EQ(StreamError, RaisedBy([] {
                  CFormatResortBuffer full;
                  full.Format("%1", "") << 1 << 2 << 3 << 4 << 5 << 6 << 7 << 8 << 9 << 10;
              }));
}

TEST_F(ResortBufferTest, NestedFormatsMakeNoFields)
{
    CFormatResortBuffer buffer;
    buffer.Format("%2%1", "%h%d") << std::string("ab") << 7;
    TString<512> text;
    text = buffer;
    EXPECT_EQ("7" + Row("0", "ab"), Text(text));
}

TEST_F(ResortBufferTest, AnUnbalancedEndIsAnError)
{
    class CBuffer : public CFormatResortBuffer {
    public:
        using VLK::Internals::CFormatResortBuffer::m_uNesting;
    } buffer;
    EXPECT_EQ(StreamError, RaisedBy([&] {
                  CFormatStream stream = buffer.Format("%1", "%d");
                  stream << 1;
                  buffer.m_uNesting = 0;
              }));
}

TEST(StringStreamTest, BuffersAreReusedByTheirThread)
{
    Threading::CCallBackGuard const thread;
    TString<64> text;
    text.Format("%d") << 1;
    void * const buffer = VLK::Internals::CThreadCB::Current()->m_StreamPool.pFirst;
    ASSERT_NE(nullptr, buffer);
    {
        CFormatStream outer = text.Format("%s");
        EXPECT_NE(buffer, VLK::Internals::CThreadCB::Current()->m_StreamPool.pFirst);
    }
    EXPECT_EQ(buffer, VLK::Internals::CThreadCB::Current()->m_StreamPool.pFirst);
}

TEST(StringStreamTest, AnErrorDoesNotStickToTheReusedBuffer)
{
    Threading::CCallBackGuard const thread;
    TString<64> text;
    EXPECT_EQ(StreamError, RaisedBy([&] { text.Format("%u") << 1; }));
    text.Format("%d") << 2;
    EXPECT_EQ("2", Text(text));
}

TEST(StringStreamTest, AThreadWithoutBlockFormatsToo)
{
    TString<64> text;
    std::thread([&] { text.Format("%d-%s") << 1 << "x"; }).join();
    EXPECT_EQ("1-x", Text(text));
}

TEST(StringStreamTest, AFormatThatOutgrowsMemoryLeavesTheErrorOfMemory)
{
    Threading::CCallBackGuard const thread;
    TString<64> text;
    ASSERT_NE(nullptr, text.Lock(0x4000001, 1));
    EXPECT_EQ(0x20010036u, RaisedBy([&] { text.Format("%d") << 1; }));
}

} // namespace
