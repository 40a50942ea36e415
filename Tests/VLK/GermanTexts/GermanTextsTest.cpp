// The shipped language file, as the foundation finds and shows it.

#include <gtest/gtest.h>

#include <string>

#include "Foundation.h"
#include "VLK/Application.h"
#include "VLK/FormatStream.h"
#include "VLK/ModuleInfo.h"

using namespace VLK;

namespace {

constexpr unsigned int English = 0x656E; // "en"
constexpr unsigned int German = 0x6465;  // "de"
constexpr unsigned int French = 0x6672;  // "fr", which isn't shipped

class GermanTextsTest : public CFoundationTest {
protected:
    GermanTextsTest() { Misc::pVlkApp->SetNlsSearchPath("/nowhere;" KXRA_NLS_DIRECTORY); }
    ~GermanTextsTest() override { m_thread.SetLngId(0); }

    Threading::CCurrentThread m_thread;
};

/// A real failure's record, printed with the stack left out.
std::string PrintedFailure()
{
    Exceptions::CErrorLog log;
    Threading::CEvent event;
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { event.Set(); }, log));
    std::string const printed = Printed("%s", log);
    return printed.substr(0, printed.find("\nModule  : "));
}

std::string TextOf(std::uint32_t code)
{
    Strings::TString<256> text;
    Misc::VLK_MODULE_INFO_VlkLib.GetErrorMsg(text, code, /*direct=*/0);
    return text.C_Str();
}

std::string const InGerman =
    "Error   : orVLK::24 (0x20010018)\nMessage : Synchronisationsobjekt ist nicht initialisiert\n";
std::string const InEnglish = "Error   : orVLK::24 (0x20010018)\nMessage : Synchronization object not initialized\n";

TEST_F(GermanTextsTest, ARecordPrintsInTheLanguageOfTheThread)
{
    EXPECT_EQ(InEnglish, PrintedFailure());
    m_thread.SetLngId(German);
    EXPECT_EQ(InGerman, PrintedFailure());
    m_thread.SetLngId(English);
    EXPECT_EQ(InEnglish, PrintedFailure());
    m_thread.SetLngId(French);
    EXPECT_EQ(InEnglish, PrintedFailure());
    m_thread.SetLngId(0);
    EXPECT_EQ(InEnglish, PrintedFailure());
}

TEST_F(GermanTextsTest, ThreadsOfDifferentLanguagesPrintTheirOwnAtTheSameTime)
{
    struct SThread {
        unsigned int language;
        std::string const & expected;
        Threading::CThread thread{};
    };
    SThread threads[] = {{German, InGerman}, {English, InEnglish}, {German, InGerman}, {0, InEnglish}};
    Threading::CEvent start;
    start.Init(/*initialState=*/false, /*manualReset=*/true);
    for (SThread & each : threads)
        StartThread(each.thread, [&each, &start] {
            Threading::CCurrentThread().SetLngId(each.language);
            ASSERT_EQ(URET_OK, start.Wait(kDeadlineMs));
            for (int i = 0; i != 50; ++i)
                ASSERT_EQ(each.expected, PrintedFailure());
        });
    start.Set();
    for (SThread & each : threads)
        EXPECT_EQ(URET_OK, each.thread.Wait(kDeadlineMs));
}

TEST_F(GermanTextsTest, UmlautsAreOneByteInTheNativeSetAndTwoAsStored)
{
    m_thread.SetLngId(German);
    EXPECT_EQ("Sprachdatei ist besch\xE4"
              "digt",
              TextOf(Errors::CorruptedLanguageFile));
    Strings::TString<256> stored;
    Misc::VLK_MODULE_INFO_VlkLib.GetErrorMsg(stored, Errors::CorruptedLanguageFile, /*direct=*/1);
    EXPECT_STREQ("Sprachdatei ist besch\xC3\xA4"
                 "digt",
                 stored.C_Str());
}

TEST_F(GermanTextsTest, EveryCodeHasAGermanText)
{
    for (std::uint32_t code = 0x20010001; code <= 0x20010062; ++code) {
        m_thread.SetLngId(0);
        std::string const english = TextOf(code);
        m_thread.SetLngId(German);
        std::string const german = TextOf(code);
        EXPECT_FALSE(german.empty()) << std::hex << code;
        EXPECT_NE(english, german) << std::hex << code;
    }
    EXPECT_EQ("Zu diesem Fehler liegen keine Informationen vor!", TextOf(0x2001FFFF));
}

TEST_F(GermanTextsTest, TheFirstParameterOfARecordGivesTheTextAsItIsStored)
{
    Exceptions::CErrorLog log;
    m_thread.SetLngId(German);
    Exceptions::CThrowState state;
    try {
        VLK_RAISE(state, Errors::MaxCount);
    } catch (...) {
        VLK_CONTINUE(state, caught);
        caught >> log;
    }
    EXPECT_TRUE(Printed("%.1s", log)
                    .starts_with("Error   : orVLK::54 (0x20010036)\nMessage : H\xC3\xB6"
                                 "chstzahl erreicht\n"));
    EXPECT_TRUE(Printed("%s", log).starts_with("Error   : orVLK::54 (0x20010036)\nMessage : H\xF6"
                                               "chstzahl erreicht\n"));
}

} // namespace
