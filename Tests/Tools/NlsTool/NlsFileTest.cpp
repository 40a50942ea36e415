#include "Tools/NlsTool/NlsFile.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "Tools/NlsTool/Table.h"

#include "Reasons.h"

using namespace NlsTool;

namespace {

constexpr std::uint32_t English = 0x656E;
constexpr std::uint32_t German = 0x6465;
constexpr std::uint32_t French = 0x6672;
constexpr std::size_t HeadSize = 12;
constexpr std::size_t LanguageHeadSize = 48;

SDefaults const & TwoTexts()
{
    static SDefaults const defaults{English, {U"one", U"two %s"}};
    return defaults;
}

SLanguage Language(std::uint32_t id, EEncoding encoding, std::u32string const & first, std::u32string const & second)
{
    return {id, "table:1", U"language", encoding, {first, second}};
}

SLanguage InGerman()
{
    return Language(German, EEncoding::EncodingUtf8, U"eins", U"zw\u00F6lf %s");
}

SLanguage InFrench()
{
    return Language(French, EEncoding::EncodingNative, U"\u00E9t\u00E9", U"%s");
}

std::string Bytes(std::initializer_list<unsigned int> values)
{
    std::string bytes;
    for (unsigned int const value : values)
        bytes += static_cast<char>(value);
    return bytes;
}

std::string ReasonsOfFile(std::string const & bytes)
{
    return ReasonsOf([&] { ReadNlsFile("x.nls", bytes, TwoTexts()); });
}

/// The file of the two languages above with four bytes replaced.
std::string With(std::size_t offset, std::uint32_t number)
{
    std::string bytes = PrintNlsFile({InGerman(), InFrench()}, 2);
    return bytes.replace(offset, 4, Bytes({number >> 24, number >> 16 & 0xFF, number >> 8 & 0xFF, number & 0xFF}));
}

TEST(NlsFileTest, ALanguageInUtf8ByteForByte)
{
    SLanguage language = InGerman();
    language.name = U"Deutsch";
    std::string const expected = Bytes({
        0x25, 0x03, 0x19, 0x61, // magic
        0,    0,    0,    2,    // texts of a language
        0,    0,    0,    1,    // languages
        0,    0,    'd',  'e',  // language
        0,    0,    0,    60,   // offset: 12 + 48
        0,    0,    0,    15,   // size: 4 + 1 + 9 + 1
        0,    0,    0,    1,    // encoding
        'D',  'e',  'u',  't',  's', 'c', 'h', 0,    0,    0,   0,   0,   0,   0,   0, 0,
        0,    0,    0,    0,    0,   0,   0,   0,    0,    0,   0,   0,   0,   0,   0, 0,
        'e',  'i',  'n',  's',  0,   'z', 'w', 0xC3, 0xB6, 'l', 'f', ' ', '%', 's', 0,
    });
    EXPECT_EQ(expected, PrintNlsFile({language}, 2));
}

TEST(NlsFileTest, ThreeLanguagesInThreeEncodingsByteForByte)
{
    SLanguage const spanish{0x6573, "table:1", U"es", EEncoding::EncodingAbsent, {}};
    std::string const zeros(24, '\0');
    std::string const expected = Bytes({0x25, 0x03, 0x19, 0x61, 0, 0, 0, 2, 0, 0, 0, 3}) +
                                 Bytes({0, 0, 'd', 'e', 0, 0, 0, 156, 0, 0, 0, 15, 0, 0, 0, 1}) + "language" + zeros +
                                 Bytes({0, 0, 'f', 'r', 0, 0, 0, 171, 0, 0, 0, 7, 0, 0, 0, 0}) + "language" + zeros +
                                 Bytes({0, 0, 'e', 's', 0, 0, 0, 178, 0, 0, 0, 2, 0, 0, 0, 2}) + "es" + zeros +
                                 std::string(6, '\0') +
                                 Bytes({'e', 'i', 'n', 's', 0, 'z', 'w', 0xC3, 0xB6, 'l', 'f', ' ', '%', 's', 0}) +
                                 Bytes({0xE9, 't', 0xE9, 0, '%', 's', 0}) + Bytes({0, 0});
    EXPECT_EQ(expected, PrintNlsFile({InGerman(), InFrench(), spanish}, 2));
}

TEST(NlsFileTest, AFileWithoutLanguagesIsItsHead)
{
    EXPECT_EQ(Bytes({0x25, 0x03, 0x19, 0x61, 0, 0, 0, 2, 0, 0, 0, 0}), PrintNlsFile({}, 2));
    EXPECT_TRUE(ReadNlsFile("x.nls", PrintNlsFile({}, 2), TwoTexts()).empty());
}

TEST(NlsFileTest, ANameOf32BytesFillsItsField)
{
    SLanguage language = InGerman();
    language.name = std::u32string(32, U'n');
    std::string const bytes = PrintNlsFile({language}, 2);
    EXPECT_EQ(std::string(32, 'n') + "eins", bytes.substr(28, 36));
    EXPECT_EQ(language.name, ReadNlsFile("x.nls", bytes, TwoTexts()).at(0).name);
}

TEST(NlsFileTest, WhatIsWrittenIsReadAgain)
{
    SLanguage const spanish{0x6573, "table:1", U"es", EEncoding::EncodingAbsent, {}};
    std::vector<SLanguage> const written{InGerman(), InFrench(), spanish};
    std::vector<SLanguage> const read = ReadNlsFile("x.nls", PrintNlsFile(written, 2), TwoTexts());
    ASSERT_EQ(3u, read.size());
    for (std::size_t i = 0; i != 3; ++i) {
        EXPECT_EQ(written[i].id, read[i].id);
        EXPECT_EQ(written[i].name, read[i].name);
        EXPECT_EQ(written[i].encoding, read[i].encoding);
        EXPECT_EQ(written[i].texts, read[i].texts);
        EXPECT_EQ("x.nls: byte " + std::to_string(HeadSize + i * LanguageHeadSize), read[i].place);
    }
}

TEST(NlsFileTest, EveryCharacterComesThroughInBothEncodings)
{
    std::u32string all = U"\n\t";
    for (char32_t c = 0x20; c != 0x100; ++c)
        if (c != U'%' && (c < 0x7F || c > 0x9F)) all += c;
    for (EEncoding const encoding : {EEncoding::EncodingNative, EEncoding::EncodingUtf8}) {
        std::string const bytes = PrintNlsFile({Language(German, encoding, all, U"%s")}, 2);
        SLanguage const read = ReadNlsFile("x.nls", bytes, TwoTexts()).at(0);
        EXPECT_EQ(all, read.texts[0]);
        EXPECT_EQ(all, ReadTable("de.tbl", PrintTable(read), TwoTexts()).texts[0]);
    }
}

TEST(NlsFileTest, BlocksMayLieInAnyOrder)
{
    std::string bytes = PrintNlsFile({InGerman(), InFrench()}, 2);
    std::string const german = bytes.substr(108, 15);
    std::string const french = bytes.substr(123, 7);
    bytes = bytes.substr(0, 108) + french + german;
    bytes[12 + 7] = 115;
    bytes[60 + 7] = 108;
    std::vector<SLanguage> const read = ReadNlsFile("x.nls", bytes, TwoTexts());
    EXPECT_EQ(InGerman().texts, read.at(0).texts);
    EXPECT_EQ(InFrench().texts, read.at(1).texts);
}

TEST(NlsFileTest, AnAbsentLanguageNeedsNoBlockAndALanguageNoName)
{
    SLanguage absent{0x6573, "", U"es", EEncoding::EncodingAbsent, {}};
    std::string bytes = PrintNlsFile({absent}, 2).substr(0, 60);
    bytes[12 + 11] = 0;
    bytes[28] = bytes[29] = 0;
    SLanguage const read = ReadNlsFile("x.nls", bytes, TwoTexts()).at(0);
    EXPECT_TRUE(read.texts.empty());
    EXPECT_EQ(U"absent", read.name);
}

TEST(NlsFileTest, ALanguageIsWrittenOnce)
{
    SLanguage again = InGerman();
    again.place = "other:7";
    EXPECT_EQ("other:7: de is there already, table:1", ReasonsOf([&] { PrintNlsFile({InGerman(), again}, 2); }));
}

TEST(NlsFileTest, AFileCutAnywhereIsRefused)
{
    std::string const bytes = PrintNlsFile({InGerman(), InFrench()}, 2);
    ASSERT_EQ("", ReasonsOfFile(bytes));
    for (std::size_t size = 0; size != bytes.size(); ++size) {
        // A copy of that size lets a read behind its end be seen.
        std::string const cut(bytes, 0, size);
        std::string const reasons = ReasonsOfFile(cut);
        EXPECT_TRUE(reasons.starts_with("x.nls: byte ")) << size << ": " << reasons;
    }
}

TEST(NlsFileTest, AByteChangedAnywhereIsRefusedOrRead)
{
    std::string const bytes = PrintNlsFile({InGerman(), InFrench()}, 2);
    for (std::size_t i = 0; i != bytes.size(); ++i) {
        for (unsigned int const value : {0x00u, 0x01u, 0x7Fu, 0x80u, 0xFFu}) {
            std::string changed = bytes;
            changed[i] = static_cast<char>(value);
            std::string const reasons = ReasonsOfFile(changed);
            if (reasons.empty())
                EXPECT_EQ(2u, ReadNlsFile("x.nls", changed, TwoTexts()).size());
            else
                EXPECT_TRUE(reasons.starts_with("x.nls: byte ")) << i << ": " << reasons;
        }
    }
}

struct SBadFile {
    char const * name;
    std::string bytes;
    std::string reasons;
};

class BadNlsFileTest : public testing::TestWithParam<SBadFile> {};

TEST_P(BadNlsFileTest, IsRefusedWithPlaceAndReason)
{
    EXPECT_EQ(GetParam().reasons, ReasonsOfFile(GetParam().bytes));
}

std::string Good()
{
    return PrintNlsFile({InGerman(), InFrench()}, 2);
}

std::string Of(EEncoding encoding, std::u32string const & first, std::u32string const & second)
{
    return PrintNlsFile({Language(German, encoding, first, second)}, 2);
}

// German's head is at 12, French's at 60; the blocks of 15 and 7 bytes are at 108 and 123; the file has 130 bytes.
INSTANTIATE_TEST_SUITE_P(
    Edges, BadNlsFileTest,
    testing::Values(
        SBadFile{"Empty", "", "x.nls: byte 0: the file ends in its head of 12 bytes"},
        SBadFile{"CutHead", Good().substr(0, 11), "x.nls: byte 11: the file ends in its head of 12 bytes"},
        SBadFile{"WrongMark", With(0, 0x61190325),
                 "x.nls: byte 0: 0x61190325 is not the mark of a language file, 0x25031961"},
        SBadFile{"OneTextLess", With(4, 1), "x.nls: byte 4: the file has 1 texts for a language, the module has 2"},
        SBadFile{"OneTextMore", With(4, 3), "x.nls: byte 4: the file has 3 texts for a language, the module has 2"},
        SBadFile{"OneLanguageMore", With(8, 3), "x.nls: byte 130: the file ends in the heads of its 3 languages"},
        SBadFile{"FourMilliardLanguages", With(8, 0xFFFFFFFF),
                 "x.nls: byte 130: the file ends in the heads of its 4294967295 languages"},
        SBadFile{"OneLanguageLess", With(8, 1), "x.nls: byte 130: the file has 130 bytes, its heads say 75"},
        SBadFile{"NoLanguageId", With(12, 0x4445), "x.nls: byte 12: 0x00004445 is no language: two small letters"},
        SBadFile{"LongLanguageId", With(12, 0x646575), "x.nls: byte 12: 0x00646575 is no language: two small letters"},
        SBadFile{"DefaultLanguage", With(60, 0x656E),
                 "x.nls: byte 60: en is the language of the compiled-in texts, which a file can't replace"},
        SBadFile{"TheSameLanguageTwice", With(60, 0x6465), "x.nls: byte 60: de is there already, x.nls: byte 12"},
        SBadFile{"BlockInTheHeads", With(16, 107),
                 "x.nls: byte 16: the block of 15 bytes at 107 is not inside of the file"},
        SBadFile{"BlockBehindTheEnd", With(16, 116),
                 "x.nls: byte 16: the block of 15 bytes at 116 is not inside of the file"},
        SBadFile{"BlockFarAway", With(64, 0xFFFFFFFF),
                 "x.nls: byte 64: the block of 7 bytes at 4294967295 is not inside of the file"},
        SBadFile{"HugeBlock", With(20, 0xFFFFFFFF),
                 "x.nls: byte 16: the block of 4294967295 bytes at 108 is not inside of the file\n"
                 "x.nls: byte 130: the file has 130 bytes, its heads say 4294967410"},
        SBadFile{"BlockInAnother", With(64, 110), "x.nls: byte 64: the block lies in another one"},
        SBadFile{"AnotherInTheBlock", With(16, 110), "x.nls: byte 64: the block lies in another one"},
        SBadFile{"OneByteMore", Good() + "x", "x.nls: byte 131: the file has 131 bytes, its heads say 130"},
        SBadFile{"OneByteLess", Good().substr(0, 129),
                 "x.nls: byte 64: the block of 7 bytes at 123 is not inside of the file\n"
                 "x.nls: byte 129: the file has 129 bytes, its heads say 130"},
        SBadFile{"UnknownEncoding", With(24, 3), "x.nls: byte 24: 3 is no encoding"},
        SBadFile{"ControlCharacterInTheName", With(28, 0x1B5B324A),
                 "x.nls: byte 28: the name: the control character U+001B is not allowed"},
        SBadFile{"NameThatIsNoUtf8", With(28, 0x6CFF6C6C), "x.nls: byte 29: the name is no UTF-8"},
        SBadFile{"LastTextWithoutItsEnd", With(119, 0x74252573),
                 "x.nls: byte 123: the block of de ends in text 1 of 2"},
        SBadFile{"OneTextTooMany", With(118, 0x66002573),
                 "x.nls: byte 113: text 1 of de: the placeholders differ from the default text's: none instead of 's'\n"
                 "x.nls: byte 120: the block of de goes on behind its last text"},
        SBadFile{"TextThatIsNoUtf8", With(108, 0x6569C373), "x.nls: byte 110: text 0 of de is no UTF-8"},
        SBadFile{"EmptyText", Of(EEncoding::EncodingUtf8, U"", U"%s"),
                 "x.nls: byte 60: text 0 of de: the text is empty"},
        SBadFile{"CharacterBeyond", Of(EEncoding::EncodingUtf8, U"\u20AC", U"%s"),
                 "x.nls: byte 60: text 0 of de: the character '\xE2\x82\xAC' (U+20AC) has no place in a language file, "
                 "whose last one is U+00FF"},
        SBadFile{"ControlCharacterInNativeText", Of(EEncoding::EncodingNative, U"a\u009B", U"%s"),
                 "x.nls: byte 60: text 0 of de: the control character U+009B is not allowed"},
        SBadFile{"OtherPlaceholders", Of(EEncoding::EncodingNative, U"%d", U"%s"),
                 "x.nls: byte 60: text 0 of de: the placeholders differ from the default text's: 'd' instead of none"}),
    [](auto const & test) { return std::string(test.param.name); });

} // namespace
