#include "Tools/NlsTool/Table.h"

#include <gtest/gtest.h>

#include "Tools/NlsTool/Encoding.h"

#include "Reasons.h"

using namespace NlsTool;

namespace {

constexpr std::uint32_t English = 0x656E;
constexpr std::uint32_t German = 0x6465;

SDefaults TwoTexts()
{
    return {English, {U"one", U"two of %s"}};
}

SLanguage Read(std::string const & table)
{
    return ReadTable("de.tbl", table, TwoTexts());
}

std::string ReasonsOfTable(std::string const & table)
{
    return ReasonsOf([&] { Read(table); });
}

using Texts = std::vector<std::u32string>;

TEST(TableTest, AnEntryIsNumberTabAndText)
{
    SLanguage const language = Read("language\tde\nname\tDeutsch\nencoding\tnative\n0\teins\n1\tzwei von %s\n");
    EXPECT_EQ(German, language.id);
    EXPECT_EQ(U"Deutsch", language.name);
    EXPECT_EQ(EEncoding::EncodingNative, language.encoding);
    EXPECT_EQ((Texts{U"eins", U"zwei von %s"}), language.texts);
    EXPECT_EQ("de.tbl:1", language.place);
}

TEST(TableTest, TheOrderOfTheLinesIsFreeAndBlankLinesAndCommentsAreNothing)
{
    SLanguage const language = Read("# one\n1\tzwei von %s\n\n  \t\n0\teins\n#0\tx\nlanguage\tde\n");
    EXPECT_EQ((Texts{U"eins", U"zwei von %s"}), language.texts);
    EXPECT_EQ("de.tbl:7", language.place);
}

TEST(TableTest, WithoutEncodingAndNameItIsUtf8AndCalledSo)
{
    SLanguage const language = Read("language\tde\n0\teins\n1\tzwei von %s\n");
    EXPECT_EQ(EEncoding::EncodingUtf8, language.encoding);
    EXPECT_EQ(U"utf-8", language.name);
}

TEST(TableTest, ByteOrderMarkCarriageReturnsAndAMissingLastLineEndAreOfNoAccount)
{
    EXPECT_EQ((Texts{U"\u00E4ins", U"zwei von %s"}),
              Read("\xEF\xBB\xBFlanguage\tde\r\n0\t\xC3\xA4ins\r\n1\tzwei von %s").texts);
}

TEST(TableTest, EscapesAreLineEndTabAndBackslash)
{
    EXPECT_EQ(U"a\nb\tc\\n", Read("language\tde\n0\ta\\nb\\tc\\\\n\n1\t%s\n").texts[0]);
}

TEST(TableTest, AnAbsentLanguageHasNoTexts)
{
    EXPECT_EQ(Texts{}, Read("language\tde\nencoding\tabsent\n").texts);
}

TEST(TableTest, ANameMayHave32BytesInItsEncoding)
{
    std::string const tail = "\n0\teins\n1\t%s\n";
    std::string const umlauts = "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4"
                                "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4";
    EXPECT_EQ("", ReasonsOfTable("language\tde\nname\t" + umlauts + tail));
    EXPECT_EQ("", ReasonsOfTable("language\tde\nencoding\tnative\nname\t" + umlauts + umlauts + tail));
    EXPECT_EQ("de.tbl:2: the name is too long: at most 32 bytes are allowed",
              ReasonsOfTable("language\tde\nname\t" + umlauts + "x" + tail));
}

TEST(TableTest, ATextMayHave511Characters)
{
    std::string text;
    for (int i = 0; i != 511; ++i)
        text += "\xC3\xBC";
    EXPECT_EQ("", ReasonsOfTable("language\tde\n0\t" + text + "\n1\t%s\n"));
    EXPECT_EQ("de.tbl:2: the text is too long: 512 characters, at most 511 are allowed",
              ReasonsOfTable("language\tde\n0\t" + text + "x\n1\t%s\n"));
}

TEST(TableTest, WhatIsPrintedReadsBack)
{
    SLanguage language = Read("language\tde\nname\tx\\ty\nencoding\tnative\n0\t\\\\a\\n\xC3\xA4\n1\t%s\\t\n");
    SLanguage const again = Read(PrintTable(language));
    EXPECT_EQ(language.id, again.id);
    EXPECT_EQ(language.name, again.name);
    EXPECT_EQ(language.encoding, again.encoding);
    EXPECT_EQ(language.texts, again.texts);
}

TEST(TableTest, ATemplateIsATableOfTheDefaultsThemselves)
{
    SDefaults const defaults = FoundationDefaults();
    ASSERT_EQ(99u, defaults.texts.size());
    EXPECT_EQ(English, defaults.language);
    EXPECT_EQ(U"Out of memory", defaults.texts[14]);
    std::string const table = PrintTemplate(defaults);
    EXPECT_NE(std::string::npos, table.find("\n# Out of memory\n14\tOut of memory\n"));
    EXPECT_EQ(defaults.texts, ReadDefaults("en.tbl", table).texts);
    EXPECT_EQ("en.tbl:3: en is the language of the compiled-in texts, which a file can't replace",
              ReasonsOf([&] { ReadTable("en.tbl", table, defaults); }));
}

TEST(TableTest, DefaultsAreNumberedFromZeroWithoutAGap)
{
    EXPECT_EQ("en.tbl:3: text 1 is missing before this one",
              ReasonsOf([] { ReadDefaults("en.tbl", "language\ten\n0\ta\n4294967295\tb\n"); }));
    EXPECT_EQ("en.tbl:1: there are no texts", ReasonsOf([] { ReadDefaults("en.tbl", "language\ten\n"); }));
}

TEST(TableTest, AllThatIsWrongIsSaidAtOnceInTheOrderOfTheLines)
{
    EXPECT_EQ("de.tbl:2: a backslash is followed by n, t or another backslash\n"
              "de.tbl:3: byte 3 of the line is no UTF-8\n"
              "de.tbl:4: there is no text 7: they go from 0 to 1",
              ReasonsOfTable("language\tde\n0\t\\x\n1\t\xFF\n7\tx"));
}

TEST(TableTest, AfterTwentyTheRestIsCounted)
{
    std::string table = "language\tde\n0\teins\n1\t%s\n";
    for (int i = 0; i != 22; ++i)
        table += "x\n";
    std::string const reasons = ReasonsOfTable(table);
    EXPECT_NE(std::string::npos, reasons.find("de.tbl:23: "));
    EXPECT_EQ(std::string::npos, reasons.find("de.tbl:24: "));
    EXPECT_TRUE(reasons.ends_with("\nand 2 more")) << reasons;
}

struct SBadTable {
    char const * name;
    std::string table;
    std::string reasons;
};

class BadTableTest : public testing::TestWithParam<SBadTable> {};

TEST_P(BadTableTest, IsRefusedWithLineAndReason)
{
    EXPECT_EQ(GetParam().reasons, ReasonsOfTable(GetParam().table));
}

std::string const Two = "0\teins\n1\tzwei %s\n";
std::string const De = "language\tde\n";

/// A table whose third line has this for a text.
std::string First(std::string const & text)
{
    return De + "1\t%s\n0\t" + text + "\n";
}

INSTANTIATE_TEST_SUITE_P(
    Edges, BadTableTest,
    testing::Values(
        SBadTable{"Empty", "",
                  "de.tbl:1: there is no line 'language' with two letters\nde.tbl:1: text 0 is missing: one\n"
                  "de.tbl:1: text 1 is missing: two of %s"},
        SBadTable{"NoLanguage", Two, "de.tbl:2: there is no line 'language' with two letters"},
        SBadTable{"CapitalLanguage", "language\tDE\n" + Two,
                  "de.tbl:1: 'DE' is no language: two small letters, such as de"},
        SBadTable{"LongLanguage", "language\tdeu\n" + Two,
                  "de.tbl:1: 'deu' is no language: two small letters, such as de"},
        SBadTable{"DefaultLanguage", "language\ten\n" + Two,
                  "de.tbl:1: en is the language of the compiled-in texts, which a file can't replace"},
        SBadTable{"TwoLanguages", De + "language\tfr\n" + Two, "de.tbl:2: 'language' stands in line 1 already"},
        SBadTable{"TwoNames", De + "name\ta\nname\tb\n" + Two, "de.tbl:3: 'name' stands in line 2 already"},
        SBadTable{"TwoEncodings", De + "encoding\tutf-8\nencoding\tnative\n" + Two,
                  "de.tbl:3: 'encoding' stands in line 2 already"},
        SBadTable{"UnknownEncoding", De + "encoding\tlatin1\n" + Two,
                  "de.tbl:2: 'latin1' is no encoding: native, utf-8 or absent"},
        SBadTable{"UnknownId", De + Two + "2\tdrei\n", "de.tbl:4: there is no text 2: they go from 0 to 1"},
        SBadTable{"IdBeyond32Bits", De + Two + "4294967296\tx\n",
                  "de.tbl:4: a line begins with a text's number, or with language, name or encoding"},
        SBadTable{"NegativeId", De + Two + "-1\tx\n",
                  "de.tbl:4: a line begins with a text's number, or with language, name or encoding"},
        SBadTable{"IdWithBlank", De + "0 \teins\n1\t%s\n",
                  "de.tbl:2: a line begins with a text's number, or with language, name or encoding\n"
                  "de.tbl:3: text 0 is missing: one"},
        SBadTable{"DoubledId", De + Two + "0\teins\n", "de.tbl:4: text 0 stands in line 2 already"},
        SBadTable{"MissingId", De + "0\teins\n", "de.tbl:2: text 1 is missing: two of %s"},
        SBadTable{"ALanguageThatIsNoUtf8", "language\t\xFF\n" + Two, "de.tbl:1: byte 10 of the line is no UTF-8"},
        SBadTable{"ACommentThatIsNoUtf8", De + Two + "# \xFF\n", "de.tbl:4: byte 3 of the line is no UTF-8"},
        SBadTable{"NoTab", De + Two + "2 drei\n", "de.tbl:4: there is no tab behind the text's number"},
        SBadTable{"TabInTheText", De + "0\ta\tb\n1\t%s\n", "de.tbl:2: a tab in a text is written \\t"},
        SBadTable{"EmptyText", De + "0\t\n1\t%s\n", "de.tbl:2: the text is empty"},
        SBadTable{"BackslashAtTheEnd", First("a\\"), "de.tbl:3: a backslash is followed by n, t or another backslash"},
        SBadTable{"Nul", First(std::string("a\0b", 3)), "de.tbl:3: the control character U+0000 is not allowed"},
        SBadTable{"CarriageReturnInTheText", First("a\rb"), "de.tbl:3: the control character U+000D is not allowed"},
        SBadTable{"Delete", First("\x7F"), "de.tbl:3: the control character U+007F is not allowed"},
        SBadTable{"HighControl", First("\xC2\x9B"), "de.tbl:3: the control character U+009B is not allowed"},
        SBadTable{"CharacterBeyond", First("ein Strich \xE2\x80\x93"),
                  "de.tbl:3: the character '\xE2\x80\x93' (U+2013) has no place in a language file, whose last one is "
                  "U+00FF"},
        SBadTable{
            "FirstCharacterBeyond", First("\xC4\x80"),
            "de.tbl:3: the character '\xC4\x80' (U+0100) has no place in a language file, whose last one is U+00FF"},
        SBadTable{"CharacterBeyondInNative", "encoding\tnative\n" + First("\xE2\x82\xAC"),
                  "de.tbl:4: the character '\xE2\x82\xAC' (U+20AC) has no place in a language file, whose last one is "
                  "U+00FF"},
        SBadTable{"TextsOfAnAbsentLanguage", De + "encoding\tabsent\n0\teins\n",
                  "de.tbl:3: a table of the encoding absent has no texts"},
        SBadTable{"OtherPlaceholders", De + "0\teins\n1\tzwei %d\n",
                  "de.tbl:3: the placeholders differ from the default text's: 'd' instead of 's'"}),
    [](auto const & test) { return std::string(test.param.name); });

struct SBytes {
    char const * name;
    std::string bytes;
    std::size_t bad;
};

class Utf8Test : public testing::TestWithParam<SBytes> {};

TEST_P(Utf8Test, TheFirstBadByteIsFound)
{
    EXPECT_EQ(GetParam().bad, FindBadUtf8(GetParam().bytes));
}

constexpr std::size_t None = std::string_view::npos;

INSTANTIATE_TEST_SUITE_P(
    Edges, Utf8Test,
    testing::Values(SBytes{"Empty", "", None}, SBytes{"Ascii", "\x7F", None}, SBytes{"FirstOfTwo", "\xC2\x80", None},
                    SBytes{"LastOfTwo", "\xDF\xBF", None}, SBytes{"FirstOfThree", "\xE0\xA0\x80", None},
                    SBytes{"LastOfThree", "\xEF\xBF\xBF", None}, SBytes{"FirstOfFour", "\xF0\x90\x80\x80", None},
                    SBytes{"LastOfAll", "\xF4\x8F\xBF\xBF", None}, SBytes{"BeyondTheLast", "\xF4\x90\x80\x80", 0},
                    SBytes{"Continuation", "a\x80", 1}, SBytes{"LongTwo", "\xC1\xBF", 0},
                    SBytes{"LongThree", "\xE0\x9F\xBF", 0}, SBytes{"LongFour", "\xF0\x8F\xBF\xBF", 0},
                    SBytes{"Surrogate", "\xED\xA0\x80", 0}, SBytes{"LastSurrogate", "\xED\xBF\xBF", 0},
                    SBytes{"BehindTheSurrogates", "\xEE\x80\x80", None}, SBytes{"CutTwo", "ab\xC3", 2},
                    SBytes{"CutFour", "\xF0\x90\x80", 0}, SBytes{"NoContinuation", "\xC3\x28", 0},
                    SBytes{"FiveBytes", "\xF8\x88", 0}),
    [](auto const & test) { return std::string(test.param.name); });

TEST(EncodingTest, EveryLengthOfASequenceComesThrough)
{
    std::string const text = "a\xC3\xBF\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(U"a\u00FF\u20AC\U0001F600", FromUtf8(text));
    EXPECT_EQ(text, ToUtf8(FromUtf8(text)));
    EXPECT_EQ("a\xFF", ToNative(U"a\u00FF"));
    EXPECT_EQ(U"a\u00FF", FromNative("a\xFF"));
}

} // namespace
