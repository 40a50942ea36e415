#include "Platform/Registry.h"

#include <atomic>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "Platform/Text.h"
#include "Support/ScopedVariable.h"
#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

constexpr char Header[] = "Windows Registry Editor Version 5.00\r\n\r\n";

std::string Utf16(std::string const & text)
{
    std::u16string units;
    EXPECT_TRUE(ToUtf16(text.data(), text.size(), units));
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : units) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::string Bytes(std::string const & text)
{
    std::string out;
    for (const char c : text) {
        if (!out.empty()) out += ',';
        constexpr char digits[] = "0123456789abcdef";
        out += {digits[static_cast<unsigned char>(c) >> 4], digits[static_cast<unsigned char>(c) & 15]};
    }
    return out;
}

class RegistryFileTest : public testing::Test {
protected:
    void Use(std::string const & bytes) { m_directory.Write("test.reg", bytes); }
    void UseLines(std::string const & lines) { Use(Header + lines); }
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
    std::string File() const { return m_directory.File("test.reg"); }

    CTempDirectory m_directory;
    CScopedVariable m_variable{"KXRA_REGISTRY", m_directory.File("test.reg")};
};

} // namespace

TEST_F(RegistryFileTest, AMissingFileIsAnEmptyRegistry)
{
    CRegistryKey key;
    testing::internal::CaptureStderr();
    EXPECT_EQ(ErrorNotFound(), Open(key, "SOFTWARE"));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_FALSE(key.IsOpen());
}

TEST_F(RegistryFileTest, ReadsEveryKindOfValue)
{
    UseLines("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kinds]\r\n"
             "@=\"the default\"\r\n"
             "\"text\"=\"C:\\\\Data\\\\\\\"q\\\"\"\r\n"
             "\"empty\"=\"\"\r\n"
             "\"dword\"=dword:0000ABcd\r\n"
             "\"short\"=dword:7\r\n"
             "\"binary\"=hex:01,ff,00\r\n"
             "\"nothing\"=hex:\r\n"
             "\"expand\"=hex(2):25,00,41,00,25,00,00,00\r\n"
             "\"multi\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n"
             "\"string\"=hex(1):fc,00,00,00\r\n"
             "\"qword\"=hex(b):01,02,03,04,05,06,07,08\r\n"
             "\"none\"=hex(0):2a\r\n"
             "\"raw dword\"=hex(4):01,02,00,00\r\n");
    const std::string key = "SOFTWARE\\Kinds";
    EXPECT_EQ("the default", Text(key, ""));
    EXPECT_EQ("C:\\Data\\\"q\"", Text(key, "text"));
    EXPECT_EQ(RegString, Value(key, "empty").type);
    EXPECT_EQ("", Text(key, "empty"));
    EXPECT_EQ(RegDword, Value(key, "dword").type);
    EXPECT_EQ(std::string("\xCD\xAB\0\0", 4), Text(key, "dword"));
    EXPECT_EQ(std::string("\x07\0\0\0", 4), Text(key, "short"));
    EXPECT_EQ(RegBinary, Value(key, "binary").type);
    EXPECT_EQ(std::string("\x01\xFF\0", 3), Text(key, "binary"));
    EXPECT_EQ("", Text(key, "nothing"));
    EXPECT_EQ(RegExpandString, Value(key, "expand").type);
    EXPECT_EQ("%A%", Text(key, "expand"));
    EXPECT_EQ(RegMultiString, Value(key, "multi").type);
    EXPECT_EQ(std::string("a\0b", 3), Text(key, "multi"));
    EXPECT_EQ(RegString, Value(key, "string").type);
    EXPECT_EQ("ü", Text(key, "string"));
    EXPECT_EQ(RegQword, Value(key, "qword").type);
    EXPECT_EQ(8u, Text(key, "qword").size());
    EXPECT_EQ(RegNone, Value(key, "none").type);
    CRegistryKey opened;
    ASSERT_EQ(Success, Open(opened, key));
    std::uint32_t number = 0;
    EXPECT_TRUE(ReadDword(opened, "raw dword", number));
    EXPECT_EQ(0x201u, number);
    EXPECT_FALSE(ReadDword(opened, "text", number));
    EXPECT_FALSE(ReadDword(opened, "binary", number));
    EXPECT_FALSE(ReadDword(opened, "missing", number));
    EXPECT_EQ(0x201u, number);
}

TEST_F(RegistryFileTest, ReadsUtf8WithAMarkAndUtf16WithAMark)
{
    const std::string text = std::string(Header) + "[HKLM\\Grüße]\r\n\"Wert\"=\"süß 𝄞\"\r\n";
    for (std::string const & bytes : {text, "\xEF\xBB\xBF" + text, Utf16(text), Utf16(text) + "x"}) {
        Use(bytes);
        EXPECT_EQ("süß 𝄞", Text("grÜße", "WERT")) << bytes.size();
    }
}

TEST_F(RegistryFileTest, LineEndsMayBeOfEitherKindAndTheLastMayBeMissing)
{
    Use("Windows Registry Editor Version 5.00\n[HKLM\\A]\n\"a\"=\"1\"\r\n\"b\"=\"2\"");
    EXPECT_EQ("1", Text("A", "a"));
    EXPECT_EQ("2", Text("A", "b"));
}

TEST_F(RegistryFileTest, ContinuedLinesAreJoined)
{
    UseLines(
        "[HKLM\\A]\r\n\"a\"=hex:01,\\\r\n  02,03,\\\r\n\t04\r\n\"b\"=hex(2):41,00,\\\n  42,00\n\"c\"=\\\n dword:5\n");
    EXPECT_EQ("\x01\x02\x03\x04", Text("A", "a"));
    EXPECT_EQ("AB", Text("A", "b"));
    EXPECT_EQ(RegDword, Value("A", "c").type);
}

TEST_F(RegistryFileTest, AContinuationThatNeverComesLosesOnlyItsOwnValue)
{
    testing::internal::CaptureStderr();
    UseLines("[HKLM\\A]\n\"a\"=hex:01,\\\n\"b\"=\"kept\"\n\"c\"=hex:01,\\\n[HKLM\\B]\n\"d\"=\"kept\"\n\"e\"=hex:02,\\");
    EXPECT_EQ("kept", Text("A", "b"));
    EXPECT_EQ("kept", Text("B", "d"));
    EXPECT_EQ(0xFFFFu, Value("A", "a").type);
    EXPECT_EQ(0xFFFFu, Value("B", "e").type);
    EXPECT_EQ(File() + ":4: the continued line is missing, the line is passed over\n" + File() +
                  ":6: the continued line is missing, the line is passed over\n" + File() +
                  ":9: the continued line is missing, the line is passed over\n",
              testing::internal::GetCapturedStderr());
}

TEST_F(RegistryFileTest, CommentsAndBlanksAreNoMatter)
{
    UseLines("; a comment\n   [HKLM\\A]  ; of the key\n  ;\"x\"=\"1\"\n \"a\" = \"semi;colon\" ; text\n"
             "\"b\" = dword:2 ; C:\\\n\"c\"=hex:0a, 0b ;\n[HKLM\\B]]\n\"d\"=\"1\"\n");
    EXPECT_EQ("semi;colon", Text("A", "a"));
    EXPECT_EQ(std::string("\x02\0\0\0", 4), Text("A", "b"));
    EXPECT_EQ("\n\v", Text("A", "c"));
    EXPECT_EQ("1", Text("B]", "d"));
    EXPECT_EQ(0xFFFFu, Value("A", "x").type);
}

TEST_F(RegistryFileTest, NamesCompareWithoutCaseAndTheLaterValueWinsAtTheEarlierPlace)
{
    UseLines("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Abc]\n\"one\"=\"1\"\n\"TWO\"=\"2\"\n"
             "[hklm\\software\\ABC]\n\"ONE\"=\"3\"\n\"three\"=dword:3\n");
    CRegistryKey key;
    ASSERT_EQ(Success, Open(key, "Software\\aBC"));
    std::string name;
    SRegistryValue value;
    ASSERT_EQ(Success, key.EnumValue(0, name, value));
    EXPECT_EQ("one", name);
    EXPECT_EQ("3", value.data);
    ASSERT_EQ(Success, key.EnumValue(1, name, value));
    EXPECT_EQ("TWO", name);
    ASSERT_EQ(Success, key.EnumValue(2, name, value));
    EXPECT_EQ(RegDword, value.type);
    EXPECT_EQ(ErrorNotFound(), key.EnumValue(3, name, value));
    EXPECT_EQ("three", name);
}

TEST_F(RegistryFileTest, KeysAndValuesCanBeRemoved)
{
    UseLines("[HKLM\\A\\B]\n\"a\"=\"1\"\n\"b\"=\"2\"\n\"c\"=\"3\"\n[HKLM\\C\\D\\E]\n\"x\"=\"1\"\n"
             "[HKLM\\A\\B]\n\"B\"=-\n\"gone\"=-\n[-HKLM\\c\\d]\n\"y\"=\"ignored\"\n[-HKLM\\no\\such]\n");
    CRegistryKey key;
    ASSERT_EQ(Success, Open(key, "A\\B"));
    std::string name;
    SRegistryValue value;
    EXPECT_EQ(ErrorNotFound(), key.Query("b", value));
    ASSERT_EQ(Success, key.EnumValue(1, name, value));
    EXPECT_EQ("c", name);
    ASSERT_EQ(Success, key.Query("c", value));
    EXPECT_EQ("3", value.data);
    EXPECT_TRUE(Exists("C"));
    EXPECT_FALSE(Exists("C\\D"));
    EXPECT_FALSE(Exists("C\\D\\E"));
    EXPECT_FALSE(Exists("no"));
}

TEST_F(RegistryFileTest, ParentsOfAKeyExistAndSharpNamesAreOrdinary)
{
    UseLines("[HKLM\\SOFTWARE\\Halvorn Systems\\#Setup]\n\"FileRoot\"=\"D:\\\\\"\n");
    EXPECT_TRUE(Exists(""));
    EXPECT_TRUE(Exists("SOFTWARE"));
    EXPECT_TRUE(Exists("SOFTWARE\\Halvorn Systems"));
    EXPECT_TRUE(Exists("SOFTWARE\\Halvorn Systems\\#Setup\\"));
    EXPECT_EQ("D:\\", Text("SOFTWARE\\Halvorn Systems\\#Setup", "FileRoot"));
    EXPECT_FALSE(Exists("\\SOFTWARE"));
    EXPECT_FALSE(Exists("SOFTWARE\\\\Halvorn Systems"));
    EXPECT_FALSE(Exists("SOFTWARE\\Halvorn"));
}

TEST_F(RegistryFileTest, OtherHivesArePassedOverInSilence)
{
    testing::internal::CaptureStderr();
    UseLines("[HKEY_CURRENT_USER\\A]\n\"a\"=\"1\"\n[HKLM\\B]\n\"b\"=\"1\"\n");
    EXPECT_FALSE(Exists("A"));
    EXPECT_EQ("1", Text("B", "b"));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST_F(RegistryFileTest, AllViewsAndFullAccessShowTheSame)
{
    UseLines("[HKLM\\A]\n\"a\"=\"1\"\n");
    for (const RegistryView view : {RegistryView::Default, RegistryView::View64, RegistryView::View32})
        for (const RegistryAccess access : {RegistryAccess::Read, RegistryAccess::Full}) {
            CRegistryKey key;
            ASSERT_EQ(Success, key.Open("A", view, access));
            SRegistryValue value;
            EXPECT_EQ(Success, key.Query("a", value));
        }
}

TEST_F(RegistryFileTest, AChangedFileIsSeenAtTheNextOpenAndAnOpenKeyStaysAsItWas)
{
    UseLines("[HKLM\\A]\n\"a\"=\"1\"\n");
    CRegistryKey old;
    ASSERT_EQ(Success, Open(old, "A"));
    for (int i = 2; i < 10; ++i) { // the same size each time, as fast as it goes
        UseLines("[HKLM\\A]\n\"a\"=\"" + std::to_string(i) + "\"\n");
        EXPECT_EQ(std::to_string(i), Text("A", "a"));
    }
    SRegistryValue value;
    ASSERT_EQ(Success, old.Query("a", value));
    EXPECT_EQ("1", value.data);
    std::filesystem::remove(File());
    EXPECT_FALSE(Exists("A"));
    ASSERT_EQ(Success, old.Query("a", value));
}

TEST_F(RegistryFileTest, AnOldFileIsReadFromMemoryUntilItChanges)
{
    UseLines("[HKLM\\A]\n\"a\"=\"1\"\n");
    const auto longAgo = std::filesystem::last_write_time(File()) - std::chrono::hours(1);
    std::filesystem::last_write_time(File(), longAgo);
    EXPECT_EQ("1", Text("A", "a"));
    EXPECT_EQ("1", Text("A", "a"));
    UseLines("[HKLM\\A]\n\"a\"=\"2\"\n");
    EXPECT_EQ("2", Text("A", "a"));
}

TEST_F(RegistryFileTest, AnotherFileIsTakenWhenTheVariableChanges)
{
    UseLines("[HKLM\\A]\n\"a\"=\"1\"\n");
    EXPECT_EQ("1", Text("A", "a"));
    const CScopedVariable other("KXRA_REGISTRY", m_directory.Write("b.reg", std::string(Header) + "[HKLM\\B]\n"));
    EXPECT_TRUE(Exists("B"));
    EXPECT_FALSE(Exists("A"));
}

TEST_F(RegistryFileTest, AFileThatIsNoFileIsReportedOnceAndAnswersItsError)
{
    std::filesystem::create_directory(File());
    testing::internal::CaptureStderr();
    CRegistryKey key;
    const ErrorCode error = Open(key, "A");
    EXPECT_NE(Success, error);
    EXPECT_NE(ErrorNotFound(), error);
    EXPECT_EQ(error, Open(key, "A"));
    EXPECT_EQ(File() + ": can't be read: " + CrtErrorText(static_cast<int>(error)) + "\n",
              testing::internal::GetCapturedStderr());
}

TEST_F(RegistryFileTest, ABadLineIsReportedOnceThoughTheFileIsReadAgain)
{
    testing::internal::CaptureStderr();
    UseLines("[HKLM\\A]\nnonsense\n\"a\"=\"1\"\n");
    EXPECT_EQ("1", Text("A", "a"));
    EXPECT_EQ("1", Text("A", "a"));
    UseLines("[HKLM\\A]\nnonsense\n\"a\"=\"22\"\n");
    EXPECT_EQ("22", Text("A", "a"));
    EXPECT_EQ(File() + ":4: neither a key nor a value nor a comment, the line is passed over\n",
              testing::internal::GetCapturedStderr());
}

TEST_F(RegistryFileTest, AFileWithoutTheHeaderIsReadAndReported)
{
    testing::internal::CaptureStderr();
    Use("[HKLM\\A]\n\"a\"=\"1\"\n");
    EXPECT_EQ("1", Text("A", "a"));
    EXPECT_EQ(File() +
                  ":1: the file doesn't begin with \"Windows Registry Editor Version 5.00\", the line is passed over\n",
              testing::internal::GetCapturedStderr());
}

TEST_F(RegistryFileTest, NoBytesWhateverBreakIt)
{
    std::mt19937 random(4711);
    const std::string sample = std::string(Header) +
                               "[HKLM\\A\\B]\r\n\"a\"=hex(2):41,00,\\\r\n 42,00\r\n@=\"x\\\\y\"\r\n"
                               "[-HKLM\\A]\r\n\"b\"=dword:1\r\n";
    testing::internal::CaptureStderr();
    for (int i = 0; i < 300; ++i) {
        std::string bytes = i % 2 == 0 ? sample : Utf16(sample);
        bytes.resize(random() % (bytes.size() + 1));
        for (unsigned flips = random() % 8; flips != 0 && !bytes.empty(); --flips)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        Use(bytes);
        Exists("A\\B");
        EXPECT_TRUE(Exists(""));
    }
    testing::internal::GetCapturedStderr();
}

TEST_F(RegistryFileTest, AHugeBinaryFileIsCutAndItsReportsAreLimited)
{
    constexpr std::string_view garbage = "\x01garbage that is no line of a registry, over and over again\n";
    std::string bytes(std::string(Header) + "[HKLM\\A]\n");
    const std::size_t lines = ((16U << 20) - bytes.size() + garbage.size() - 1) / garbage.size(); // the last one is cut
    while (bytes.size() < (17U << 20))
        bytes += garbage;
    Use(bytes + "[HKLM\\Z]\n");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(Exists("A"));
    EXPECT_FALSE(Exists("Z"));
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, report.find("longer than 16777216 bytes"));
    EXPECT_NE(std::string::npos, report.find(":103: neither")) << "the hundredth";
    EXPECT_EQ(std::string::npos, report.find(":104: neither"));
    EXPECT_NE(std::string::npos, report.find(": " + std::to_string(lines - 100) + " more lines can't be read"));
}

TEST_F(RegistryFileTest, AValueOfVeryManyLinesTakesTimeInProportion)
{
    constexpr std::size_t lines = 2'000'000;
    std::string bytes;
    for (std::size_t i = 0; i < lines; ++i)
        bytes += "1,\\\n";
    UseLines("[HKLM\\A]\n\"a\"=hex:" + bytes + "2\n\"b\"=\"behind\"\n");
    EXPECT_EQ(lines + 1, Text("A", "a").size());
    EXPECT_EQ("behind", Text("A", "b"));
}

TEST_F(RegistryFileTest, ManyThreadsReadWhileTheFileChanges)
{
    UseLines("[HKLM\\A]\n\"a\"=\"1\"\n");
    std::atomic<bool> stop{false};
    std::atomic<unsigned> misses{0};
    const auto replace = [&](char const * text) {
        m_directory.Write("new.reg", std::string(Header) + "[HKLM\\A]\n\"a\"=\"" + text + "\"\n");
        std::filesystem::rename(m_directory.File("new.reg"), File());
    };
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i)
        readers.emplace_back([&] {
            while (!stop) {
                const std::string text = Text("A", "a");
                if (text != "1" && text != "2") ++misses;
            }
        });
    for (int i = 0; i < 100; ++i)
        replace(i % 2 == 0 ? "2" : "1");
    stop = true;
    for (std::thread & reader : readers)
        reader.join();
    EXPECT_EQ(0u, misses);
}

namespace {

struct SBadLine {
    char const * name;
    std::string line;
    char const * reason;
};
class RegistryFileBadLineTest : public RegistryFileTest, public testing::WithParamInterface<SBadLine> {};

} // namespace

TEST_P(RegistryFileBadLineTest, IsReportedWithItsNumberAndPassedOver)
{
    testing::internal::CaptureStderr();
    UseLines("[HKLM\\Before]\n\"a\"=\"1\"\n" + GetParam().line + "\n[HKLM\\After]\n\"b\"=\"2\"\n");
    EXPECT_EQ("1", Text("Before", "a"));
    EXPECT_EQ("2", Text("After", "b"));
    CRegistryKey key;
    std::string name;
    SRegistryValue value;
    ASSERT_EQ(Success, Open(key, "Before"));
    EXPECT_EQ(ErrorNotFound(), key.EnumValue(1, name, value));
    EXPECT_EQ(File() + ":5: " + GetParam().reason + ", the line is passed over\n",
              testing::internal::GetCapturedStderr());
}

INSTANTIATE_TEST_SUITE_P(
    Lines, RegistryFileBadLineTest,
    testing::Values(SBadLine{"Nonsense", "nonsense", "neither a key nor a value nor a comment"},
                    SBadLine{"OpenQuoteOfName", "\"x=\"1\"", "an equals sign must follow the value's name"},
                    SBadLine{"OpenQuoteOfText", "\"x\"=\"1", "the closing quote is missing"},
                    SBadLine{"NoEqualsSign", "\"x\" \"1\"", "an equals sign must follow the value's name"},
                    SBadLine{"NoData", "\"x\"=", "the data is of no known kind"},
                    SBadLine{"UnknownKind", "\"x\"=word:1", "the data is of no known kind"},
                    SBadLine{"TextBehindText", "\"x\"=\"1\"2", "something follows the closing quote"},
                    SBadLine{"DwordEmpty", "\"x\"=dword:", "a dword has 1 to 8 hexadecimal digits"},
                    SBadLine{"DwordTooLong", "\"x\"=dword:000000001", "a dword has 1 to 8 hexadecimal digits"},
                    SBadLine{"DwordNoHex", "\"x\"=dword:12g", "a dword has 1 to 8 hexadecimal digits"},
                    SBadLine{"DwordSigned", "\"x\"=dword:-1", "a dword has 1 to 8 hexadecimal digits"},
                    SBadLine{"ByteTooLong", "\"x\"=hex:001", "a byte has one or two hexadecimal digits"},
                    SBadLine{"ByteNoHex", "\"x\"=hex:0x", "the list of bytes holds something else"},
                    SBadLine{"ByteMissing", "\"x\"=hex:01,,02", "the list of bytes holds something else"},
                    SBadLine{"HexWithoutColon", "\"x\"=hex", "a colon must stand ahead of the bytes"},
                    SBadLine{"TypeOpen", "\"x\"=hex(2:00", "the type's closing bracket is missing"},
                    SBadLine{"TypeNoNumber", "\"x\"=hex(z):00", "the type is no hexadecimal number"},
                    SBadLine{"OddText", "\"x\"=hex(2):41,00,42", "a text in bytes has an odd number of them"},
                    SBadLine{"KeyOpen", "[HKLM\\X", "the key's closing bracket is missing"},
                    SBadLine{"KeyUnknownHive", "[HKXX\\X]", "the key lies in no known hive"},
                    SBadLine{"KeyEmpty", "[]", "the key lies in no known hive"},
                    SBadLine{"KeyEmptyPart", "[HKLM\\X\\\\Y]", "a part of the key's name is empty"},
                    SBadLine{"KeyPartTooLong", "[HKLM\\" + std::string(766, 'x') + "]",
                             "a part of the key's name is too long"},
                    SBadLine{"KeyTooDeep",
                             "[HKLM" +
                                 [] {
                                     std::string p;
                                     for (int i = 0; i < 513; ++i)
                                         p += "\\x";
                                     return p;
                                 }() +
                                 "]",
                             "the key lies too deep"},
                    SBadLine{"RemovedHive", "[-HKLM]", "a hive can't be removed"},
                    SBadLine{"Nul", std::string("\"x\"=\"1\0\"", 9), "the line holds a NUL"}),
    [](const auto & test) { return std::string(test.param.name); });

TEST_F(RegistryFileTest, ValuesOfABadKeyDontFallToTheKeyBefore)
{
    testing::internal::CaptureStderr();
    UseLines("\"early\"=\"1\"\n[HKLM\\A]\n[HKXX\\B]\n\"x\"=\"1\"\n");
    EXPECT_EQ(0xFFFFu, Value("A", "x").type);
    EXPECT_EQ(File() + ":3: the value stands ahead of the first key, the line is passed over\n" + File() +
                  ":5: the key lies in no known hive, the line is passed over\n",
              testing::internal::GetCapturedStderr());
}

TEST_F(RegistryFileTest, ALongTextSurvives)
{
    const std::string text(100000, 'x');
    UseLines("[HKLM\\A]\n\"a\"=\"" + text + "\"\n\"b\"=hex:" + Bytes(text) + "\n");
    EXPECT_EQ(text, Text("A", "a"));
    EXPECT_EQ(text, Text("A", "b"));
}

TEST(ExpandEnvironmentSignTest, TheSignBehindAnUnknownNameMayOpenTheNext)
{
    const CScopedVariable known("KXRA_TEST_A", "value");
    const CScopedVariable unknown("KXRA_TEST_U", std::nullopt);
    EXPECT_EQ("%KXRA_TEST_Uvalue", ExpandEnvironment("%KXRA_TEST_U%KXRA_TEST_A%"));
}
