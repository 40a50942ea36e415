#include "Platform/Registry.h"

#include <algorithm>
#include <map>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/RegistryEditor.h"
#include "Platform/Text.h"
#include "Support/ScopedVariable.h"

using namespace Platform;

namespace {

class RegistryTest : public testing::Test {
protected:
    /// Values of the test's own key, or of one below it: one line each, as the registry editor has them.
    void Import(std::string const & values, std::string const & below = "")
    {
        m_editor.Import("[HKEY_LOCAL_MACHINE\\" + Key(below) + "]\r\n" + values);
    }
    std::string Key(std::string const & below = "") const { return m_editor.Key() + below; }
    static ErrorCode Open(CRegistryKey & key, std::string const & path)
    {
        return key.Open(path, RegistryView::Default, RegistryAccess::Read);
    }
    static bool Exists(std::string const & path)
    {
        CRegistryKey key;
        return Open(key, path) == Success;
    }
    static SRegistryValue Value(std::string const & path, std::string const & name)
    {
        CRegistryKey key;
        SRegistryValue value;
        value.type = 0xFFFF; // of no value
        if (Open(key, path) == Success) key.Query(name, value);
        return value;
    }
    static std::string Text(std::string const & path, std::string const & name) { return Value(path, name).data; }
    static std::vector<std::string> Names(std::string const & path)
    {
        CRegistryKey key;
        EXPECT_EQ(Success, Open(key, path));
        std::vector<std::string> names;
        std::string name;
        SRegistryValue value;
        while (key.EnumValue(static_cast<std::uint32_t>(names.size()), name, value) == Success)
            names.push_back(name);
        std::sort(names.begin(), names.end());
        return names;
    }

    CRegistryEditor m_editor;
};

/// A text of the system's set.
std::string Native(std::u16string const & text)
{
    return FromUtf16(text.data(), text.size());
}

/// As the editor is told texts.
std::string Utf8(std::u8string const & text)
{
    return std::string(text.begin(), text.end());
}

} // namespace

TEST_F(RegistryTest, ReadsEveryKindOfValue)
{
    Import("@=\"the default\"\r\n"
           "\"text\"=\"C:\\\\Data\\\\\\\"q\\\"\"\r\n"
           "\"empty\"=\"\"\r\n"
           "\"dword\"=dword:0000ABcd\r\n"
           "\"binary\"=hex:01,ff,00\r\n"
           "\"nothing\"=hex:\r\n"
           "\"expand\"=hex(2):25,00,41,00,25,00,00,00\r\n"
           "\"multi\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n"
           "\"string\"=hex(1):41,00,00,00\r\n"
           "\"open string\"=hex(1):41,00,42,00\r\n"
           "\"qword\"=hex(b):01,02,03,04,05,06,07,08\r\n"
           "\"none\"=hex(0):2a\r\n"
           "\"raw dword\"=hex(4):01,02,00,00\r\n");
    EXPECT_EQ("the default", Text(Key(), ""));
    EXPECT_EQ("C:\\Data\\\"q\"", Text(Key(), "text"));
    EXPECT_EQ(RegString, Value(Key(), "empty").type);
    EXPECT_EQ("", Text(Key(), "empty"));
    EXPECT_EQ(RegDword, Value(Key(), "dword").type);
    EXPECT_EQ(std::string("\xCD\xAB\0\0", 4), Text(Key(), "dword"));
    EXPECT_EQ(RegBinary, Value(Key(), "binary").type);
    EXPECT_EQ(std::string("\x01\xFF\0", 3), Text(Key(), "binary"));
    EXPECT_EQ(RegBinary, Value(Key(), "nothing").type);
    EXPECT_EQ("", Text(Key(), "nothing"));
    EXPECT_EQ(RegExpandString, Value(Key(), "expand").type);
    EXPECT_EQ("%A%", Text(Key(), "expand"));
    EXPECT_EQ(RegMultiString, Value(Key(), "multi").type);
    EXPECT_EQ(std::string("a\0b", 3), Text(Key(), "multi"));
    EXPECT_EQ(RegString, Value(Key(), "string").type);
    EXPECT_EQ("A", Text(Key(), "string"));
    EXPECT_EQ("AB", Text(Key(), "open string")) << "without a NUL at its end";
    EXPECT_EQ(RegQword, Value(Key(), "qword").type);
    EXPECT_EQ("\x01\x02\x03\x04\x05\x06\x07\x08", Text(Key(), "qword"));
    EXPECT_EQ(RegNone, Value(Key(), "none").type);
    EXPECT_EQ("*", Text(Key(), "none"));
}

TEST_F(RegistryTest, ANumberIsReadFromADwordOfFourBytesOnly)
{
    Import("\"number\"=dword:00000201\r\n\"raw\"=hex(4):01,02,00,80\r\n\"text\"=\"1\"\r\n\"binary\"=hex:01,02,00,00\r\n"
           "\"short\"=hex(4):01,02\r\n\"qword\"=hex(b):01,02,03,04,05,06,07,08\r\n");
    CRegistryKey key;
    ASSERT_EQ(Success, Open(key, Key()));
    std::uint32_t number = 0;
    EXPECT_TRUE(ReadDword(key, "number", number));
    EXPECT_EQ(0x201u, number);
    EXPECT_TRUE(ReadDword(key, "raw", number));
    EXPECT_EQ(0x80000201u, number);
    for (char const * const name : {"text", "binary", "short", "qword", "missing"})
        EXPECT_FALSE(ReadDword(key, name, number)) << name;
    EXPECT_EQ(0x80000201u, number);
}

TEST_F(RegistryTest, TextsAndNamesAreOfTheSystemsSet)
{
    Import(Utf8(u8"\"Größe\"=\"süß\"\r\n"), Utf8(u8"\\Grüße"));
    EXPECT_EQ(Native(u"süß"), Text(Key("\\" + Native(u"Grüße")), Native(u"Größe")));
    EXPECT_EQ((std::vector<std::string>{Native(u"Größe")}), Names(Key("\\" + Native(u"grÜßE"))));
}

TEST_F(RegistryTest, NamesCompareWithoutCaseAndTheLaterValueWins)
{
    Import("\"one\"=\"1\"\r\n\"TWO\"=\"2\"\r\n", "\\Abc");
    Import("\"ONE\"=\"3\"\r\n\"three\"=dword:3\r\n", "\\aBC");
    EXPECT_EQ("3", Text(Key("\\ABC"), "One"));
    EXPECT_EQ((std::vector<std::string>{"TWO", "one", "three"}), Names(Key("\\abc")));
}

TEST_F(RegistryTest, EveryValueIsEnumeratedOnceWithItsDataWhateverItsSize)
{
    const std::string longText(70000, 'x');
    const std::string longName(250, 'n');
    Import("\"" + longName + "\"=\"" + longText + "\"\r\n\"number\"=dword:00000007\r\n@=\"default\"\r\n");
    CRegistryKey key;
    ASSERT_EQ(Success, Open(key, Key()));
    std::map<std::string, std::string> found;
    std::string name = "kept";
    SRegistryValue value;
    for (std::uint32_t i = 0; i < 3; ++i) {
        ASSERT_EQ(Success, key.EnumValue(i, name, value)) << i;
        EXPECT_TRUE(found.emplace(name, value.data).second) << name;
    }
    EXPECT_EQ((std::map<std::string, std::string>{
                  {"", "default"}, {longName, longText}, {"number", std::string("\x07\0\0\0", 4)}}),
              found);
    name = "kept";
    EXPECT_EQ(ErrorNotFound(), key.EnumValue(3, name, value));
    EXPECT_EQ("kept", name);
}

TEST_F(RegistryTest, DataOfEverySizeAroundTheFirstRoomIsRead)
{
    std::string lines;
    for (int size = 255; size <= 265; ++size)
        lines += "\"" + std::to_string(size) + "\"=\"" + std::string(static_cast<std::size_t>(size), 'x') + "\"\r\n";
    Import(lines);
    for (int size = 255; size <= 265; ++size)
        EXPECT_EQ(std::string(static_cast<std::size_t>(size), 'x'), Text(Key(), std::to_string(size))) << size;
}

TEST_F(RegistryTest, KeysAndValuesThatWereRemovedAreGone)
{
    Import("\"a\"=\"1\"\r\n\"b\"=\"2\"\r\n", "\\A");
    Import("\"x\"=\"1\"\r\n", "\\C\\D\\E");
    Import("\"B\"=-\r\n", "\\A");
    m_editor.Import("[-HKEY_LOCAL_MACHINE\\" + Key("\\c\\d") + "]\r\n");
    EXPECT_EQ((std::vector<std::string>{"a"}), Names(Key("\\A")));
    EXPECT_TRUE(Exists(Key("\\C")));
    EXPECT_FALSE(Exists(Key("\\C\\D")));
    EXPECT_FALSE(Exists(Key("\\C\\D\\E")));
}

TEST_F(RegistryTest, ParentsOfAKeyExistAndSharpNamesAreOrdinary)
{
    Import("\"FileRoot\"=\"D:\\\\\"\r\n", "\\Halvorn Systems\\#Setup");
    EXPECT_TRUE(Exists(""));
    EXPECT_TRUE(Exists("SOFTWARE"));
    EXPECT_TRUE(Exists(Key("\\Halvorn Systems")));
    EXPECT_TRUE(Exists(Key("\\Halvorn Systems\\#Setup\\")));
    EXPECT_EQ("D:\\", Text(Key("\\Halvorn Systems\\#Setup"), "FileRoot"));
    EXPECT_FALSE(Exists("\\SOFTWARE"));
    EXPECT_FALSE(Exists(Key("\\Halvorn")));
}

TEST_F(RegistryTest, AMissingKeyOrValueIsNotFound)
{
    Import("\"a\"=\"1\"\r\n");
    CRegistryKey key;
    SRegistryValue value;
    EXPECT_EQ(ErrorNotFound(), Open(key, Key("\\B")));
    ASSERT_EQ(Success, Open(key, Key()));
    EXPECT_EQ(ErrorNotFound(), key.Query("b", value));
    EXPECT_EQ(ErrorNotFound(), key.Query("", value)) << "the default value was never set";
}

TEST_F(RegistryTest, WhatIsImportedLaterIsSeenAtTheNextOpen)
{
    Import("\"a\"=\"1\"\r\n");
    EXPECT_EQ("1", Text(Key(), "a"));
    Import("\"a\"=\"2\"\r\n");
    EXPECT_EQ("2", Text(Key(), "a"));
}

TEST_F(RegistryTest, WhoMayWriteGetsFullAccess)
{
    Import("\"a\"=\"1\"\r\n");
    CRegistryKey key;
    SRegistryValue value;
    ASSERT_EQ(Success, key.Open(Key(), RegistryView::Default, RegistryAccess::Full));
    EXPECT_EQ(Success, key.Query("a", value));
}

TEST_F(RegistryTest, AClosedKeyAnswersNotFound)
{
    const CRegistryKey key;
    SRegistryValue value;
    std::string name;
    EXPECT_EQ(ErrorNotFound(), key.Query("a", value));
    EXPECT_EQ(ErrorNotFound(), key.EnumValue(0, name, value));
}

TEST_F(RegistryTest, AFailedOpenClosesWhatWasOpen)
{
    Import("");
    CRegistryKey key;
    ASSERT_EQ(Success, Open(key, Key()));
    CRegistryKey moved(std::move(key));
    EXPECT_TRUE(moved.IsOpen());
    EXPECT_EQ(ErrorNotFound(), Open(moved, Key("\\B")));
    EXPECT_FALSE(moved.IsOpen());
}

TEST_F(RegistryTest, AnExpandableTextComesAsItIsAndIsExpandedByItsReader)
{
    const CScopedVariable place("KXRA_TEST_PLACE", "D:\\place");
    // "%KXRA_TEST_PLACE%\x"
    Import(
        "\"a\"=hex(2):25,00,4b,00,58,00,52,00,41,00,5f,00,54,00,45,00,53,00,54,00,5f,00,50,00,4c,00,41,00,43,00,\\\r\n"
        "  45,00,25,00,5c,00,78,00,00,00\r\n");
    EXPECT_EQ("%KXRA_TEST_PLACE%\\x", Text(Key(), "a"));
    EXPECT_EQ("D:\\place\\x", ExpandEnvironment(Text(Key(), "a")));
}

namespace {

struct SExpansion {
    char const *name, *text, *expanded;
};
class ExpandEnvironmentTest : public testing::TestWithParam<SExpansion> {};

} // namespace

TEST_P(ExpandEnvironmentTest, ReplacesKnownNamesOnly)
{
    const CScopedVariable known("KXRA_TEST_A", "value");
    const CScopedVariable empty("KXRA_TEST_E", "");
    const CScopedVariable unknown("KXRA_TEST_U", std::nullopt);
    EXPECT_EQ(GetParam().expanded, ExpandEnvironment(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Texts, ExpandEnvironmentTest,
                         testing::Values(SExpansion{"Empty", "", ""}, SExpansion{"NoSign", "plain", "plain"},
                                         SExpansion{"Known", "a%KXRA_TEST_A%b", "avalueb"},
                                         SExpansion{"EmptyValue", "a%KXRA_TEST_E%b", "ab"},
                                         SExpansion{"Unknown", "a%KXRA_TEST_U%b", "a%KXRA_TEST_U%b"},
                                         SExpansion{"OneSign", "50% of it", "50% of it"},
                                         SExpansion{"TwoSigns", "100%%", "100%%"},
                                         SExpansion{"Twice", "%KXRA_TEST_A%%KXRA_TEST_A%", "valuevalue"}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST(ExpandEnvironmentLimitTest, AVeryLongValueFits)
{
    const std::string value(10000, 'v');
    const CScopedVariable known("KXRA_TEST_A", value);
    EXPECT_EQ(value + value + "x", ExpandEnvironment("%KXRA_TEST_A%%KXRA_TEST_A%x"));
}
