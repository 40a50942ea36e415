// What the tool writes, read by the class that it is written for.

#include <gtest/gtest.h>

#include "Support/TempDirectory.h"
#include "Tools/NlsTool/Files.h"
#include "Tools/NlsTool/NlsFile.h"
#include "VLK/Application.h"
#include "VLK/Foundation.h"
#include "VLK/Language.h"

using namespace NlsTool;
using VLK::Language_Support::CLanguageStrg;
using VLK::Language_Support::CLanguageSupport;

namespace {

constexpr char const * Standard[] = {"one", "two"};
constexpr std::uint32_t German = 0x6465;
constexpr std::uint32_t French = 0x6672;
constexpr std::uint32_t Spanish = 0x6573;

class FoundationReadsTest : public CFoundationTest {
protected:
    FoundationReadsTest()
    {
        WriteWhole(m_directory.File("module.nls"),
                   PrintNlsFile({{German, "", U"Deutsch", EEncoding::EncodingUtf8, {U"eins", U"zw\u00F6lf"}},
                                 {French, "", U"fran\u00E7ais", EEncoding::EncodingNative, {U"\u00E9t\u00E9", U"deux"}},
                                 {Spanish, "", U"es", EEncoding::EncodingAbsent, {}}},
                                2));
        VLK::Misc::pVlkApp->SetNlsSearchPath(m_directory.File("").c_str());
    }
    ~FoundationReadsTest() override
    {
        VLK::Misc::pVlkApp->SetNlsSearchPath("");
        m_thread.SetLngId(0);
    }

    /// The text in the thread's language and the native character set.
    std::string Text(std::uint32_t language, std::size_t index)
    {
        m_thread.SetLngId(language);
        VLK::Strings::TString<32> text;
        text = CLanguageStrg(m_file.GetLngData(), index);
        return text.C_Str();
    }

    CTempDirectory m_directory;
    CLanguageSupport::CLngFile m_file{"module.nls", CLanguageSupport::Default_Language_ID, "utf-8", 1, Standard, 2};
    VLK::Threading::CCurrentThread m_thread;
};

TEST_F(FoundationReadsTest, EachLanguageInItsEncoding)
{
    EXPECT_EQ("eins", Text(German, 0));
    EXPECT_EQ("zw\xF6lf", Text(German, 1));
    EXPECT_EQ("\xE9t\xE9", Text(French, 0));
    EXPECT_EQ("deux", Text(French, 1));
}

TEST_F(FoundationReadsTest, AnAbsentLanguageShowsTheDefaults)
{
    EXPECT_EQ("one", Text(Spanish, 0));
    EXPECT_EQ("two", Text(Spanish, 1));
    EXPECT_EQ(EEncoding::EncodingAbsent, CLanguageStrg(m_file.GetLngData(), 0).IsUTF8());
}

TEST_F(FoundationReadsTest, TheNameStandsInTheLanguagesData)
{
    m_thread.SetLngId(French);
    EXPECT_STREQ("fran\xE7"
                 "ais",
                 m_file.GetLngData().name);
    m_thread.SetLngId(German);
    EXPECT_STREQ("Deutsch", m_file.GetLngData().name);
}

TEST_F(FoundationReadsTest, AFileCutAnywhereIsCorruptedAndTheDefaultsServe)
{
    std::string const whole = m_directory.Read("module.nls");
    m_thread.SetLngId(German);
    for (std::size_t size = 0; size != whole.size(); ++size) {
        m_directory.Write("cut.nls", whole.substr(0, size));
        CLanguageSupport::CLngFile file("cut.nls", CLanguageSupport::Default_Language_ID, "utf-8", 1, Standard, 2);
        EXPECT_EQ(VLK::Errors::CorruptedLanguageFile, RaisedBy([&] { file.GetLngData(); })) << size;
        EXPECT_STREQ("one", CLanguageStrg(file.GetLngData(), 0).Native()) << size;
    }
}

TEST_F(FoundationReadsTest, AFileWithAnyByteChangedIsCorruptedOrShowsTexts)
{
    std::string const whole = m_directory.Read("module.nls");
    m_thread.SetLngId(German);
    for (std::size_t i = 0; i != whole.size(); ++i) {
        std::string changed = whole;
        changed[i] = '\xFF';
        m_directory.Write("changed.nls", changed);
        CLanguageSupport::CLngFile file("changed.nls", CLanguageSupport::Default_Language_ID, "utf-8", 1, Standard, 2);
        std::uint32_t const raised = RaisedBy([&] {
            VLK::Strings::TString<32> text;
            for (std::size_t index = 0; index != 2; ++index)
                text << CLanguageStrg(file.GetLngData(), index);
            EXPECT_NE(0u, text.size()) << i;
        });
        EXPECT_TRUE(raised == 0 || raised == VLK::Errors::CorruptedLanguageFile) << i;
    }
}

} // namespace
