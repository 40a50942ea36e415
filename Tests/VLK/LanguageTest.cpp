#include "VLK/Language.h"

#include <gtest/gtest.h>

#include <boost/filesystem/path.hpp>
#include <string>
#include <thread>
#include <vector>

#include "Foundation.h"
#include "Support/TempDirectory.h"
#include "VLK/Application.h"
#include "VLK/FormatStream.h"

using namespace VLK;
using namespace VLK::Language_Support;
using VLK::Strings::CStringEx;
using VLK::Strings::TString;

namespace {

constexpr char const * Standard[] = {"one", "two \xC3\xA4"};
constexpr unsigned int German = 0x6465; // "de"
constexpr unsigned int French = 0x6672; // "fr"
constexpr std::uint32_t Corrupted = 0x2001000A;

std::string Number(std::uint32_t value)
{
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
            static_cast<char>(value)};
}

struct SLanguage {
    unsigned int id;
    unsigned int encoding;
    std::string texts;
};

std::string FileOf(std::vector<SLanguage> const & languages, std::uint32_t magic = 0x25031961, std::uint32_t count = 2)
{
    std::string file = Number(magic) + Number(count) + Number(static_cast<std::uint32_t>(languages.size()));
    std::string texts;
    std::size_t const start = 12 + 48 * languages.size();
    for (SLanguage const & language : languages) {
        std::string name = "language";
        name.resize(32);
        file += Number(language.id) + Number(static_cast<std::uint32_t>(start + texts.size())) +
                Number(static_cast<std::uint32_t>(language.texts.size())) + Number(language.encoding) + name;
        texts += language.texts;
    }
    return file + texts;
}

class LanguageTest : public CFoundationTest {
protected:
    LanguageTest() { Misc::pVlkApp->SetNlsSearchPath(("/nowhere;;" + m_Directory.File("")).c_str()); }
    ~LanguageTest() override
    {
        Misc::pVlkApp->SetNlsSearchPath("");
        Threading::CCurrentThread().SetLngId(0);
    }
    void Put(std::string const & content) const { m_Directory.Write("test.nls", content); }
    static std::string Converted(CLanguageSupport::CLngFile & file, std::size_t index)
    {
        TString<32> text;
        text = CLanguageStrg(file.GetLngData(), index);
        return text.C_Str();
    }

    CTempDirectory m_Directory; // outlives the file that lies open in it
    CLanguageSupport::CLngFile m_File{"test.nls", CLanguageSupport::Default_Language_ID, "utf-8", 1, Standard, 2};
    Threading::CCurrentThread m_Thread;
};

TEST_F(LanguageTest, WithoutAFileTheDefaultServes)
{
    EXPECT_EQ(&m_File.GetDefaultLngData(), &m_File.GetLngData());
    m_Thread.SetLngId(German);
    EXPECT_EQ(&m_File.GetDefaultLngData(), &m_File.GetLngData());
    EXPECT_EQ("two \xE4", Converted(m_File, 1));
}

TEST_F(LanguageTest, TheThreadsLanguageIsTakenFromTheFile)
{
    Put(FileOf({{German, 0, std::string("eins\0zwei\0", 10)}, {French, 1, std::string("un\0\xC3\xA9t\xC3\xA9\0", 9)}}));
    m_Thread.SetLngId(German);
    EXPECT_EQ("eins", Converted(m_File, 0));
    EXPECT_EQ("zwei", Converted(m_File, 1));
    m_Thread.SetLngId(French);
    EXPECT_EQ("\xE9t\xE9", Converted(m_File, 1));
    m_Thread.SetLngId(0);
    EXPECT_EQ("one", Converted(m_File, 0));
    m_Thread.SetLngId(0x7878); // a language that the file lacks
    EXPECT_EQ("one", Converted(m_File, 0));
}

TEST_F(LanguageTest, LanguageZeroOfTheThreadReadsAs25966WhateverTheDefaultTableIs)
{
    constexpr unsigned int english = 25966;
    Put(FileOf({{english, 0, std::string("file\0two\0", 9)}}));
    CLanguageSupport::CLngFile french("test.nls", French, "utf-8", 1, Standard, 2);
    m_Thread.SetLngId(0);
    EXPECT_EQ("file", Converted(french, 0));
    m_Thread.SetLngId(French);
    EXPECT_EQ("one", Converted(french, 0));
    // A file can't replace the compiled-in texts of their own language.
    m_Thread.SetLngId(english);
    EXPECT_EQ("one", Converted(m_File, 0));
}

TEST_F(LanguageTest, NativeTextIsTakenByReference)
{
    Put(FileOf({{German, 0, std::string("eins\0zwei\0", 10)}}));
    m_Thread.SetLngId(German);
    CLanguageStrg const text(m_File.GetLngData(), 1);
    TString<32> const reference(text);
    EXPECT_EQ(text.Native(), reference.data());
    EXPECT_EQ(0u, reference.Capacity());
    m_Thread.SetLngId(0);
    TString<32> const converted(CLanguageStrg(m_File.GetLngData(), 1));
    EXPECT_STREQ("two \xE4", converted.C_Str());
    TString<32> appended;
    appended = "a ";
    appended << CLanguageStrg(m_File.GetLngData(), 0);
    appended += CLanguageStrg(m_File.GetLngData(), 1);
    EXPECT_STREQ("a onetwo \xE4", appended.C_Str());
    TString<32> formatted;
    formatted.Format("<%s>") << CLanguageStrg(m_File.GetLngData(), 0);
    EXPECT_STREQ("<one>", formatted.C_Str());
}

TEST_F(LanguageTest, ALanguageWithoutTextsTakesTheDefaults)
{
    Put(FileOf({{German, 2, ""}}));
    m_Thread.SetLngId(German);
    CLanguageStrg const text(m_File.GetLngData(), 1);
    EXPECT_EQ(2u, text.IsUTF8());
    TString<32> out;
    out = "x";
    EXPECT_EQ(1u, text.UTF8ToChar(out, 0));
    EXPECT_STREQ("xtwo \xE4", out.C_Str());
    EXPECT_EQ(1u, text.UTF8ToChar(out, 1));
    EXPECT_STREQ("two \xE4", out.C_Str());
    EXPECT_EQ(0u, CLanguageStrg(m_File.GetDefaultLngData(), 0).UTF8ToChar(out, 1));
}

TEST_F(LanguageTest, ATextThatIsMissingIsEmpty)
{
    Put(FileOf({{German, 0, "eins"}})); // neither the NUL nor the second text
    m_Thread.SetLngId(German);
    EXPECT_EQ("eins", Converted(m_File, 0));
    EXPECT_EQ("", Converted(m_File, 1));
    EXPECT_EQ(nullptr, CLanguageStrg(m_File.GetLngData(), 2).Native());
}

TEST_F(LanguageTest, ACutSequenceEndsTheText)
{
    Put(FileOf({{German, 1, std::string("x\xC3\0y\0", 5)}}));
    m_Thread.SetLngId(German);
    EXPECT_EQ("x", Converted(m_File, 0));
}

TEST_F(LanguageTest, AnEmptySearchPathIsAskedForAgain)
{
    Put(FileOf({{German, 0, std::string("eins\0zwei\0", 10)}}));
    m_Thread.SetLngId(German);
    Misc::pVlkApp->SetNlsSearchPath("");
    EXPECT_EQ("one", Converted(m_File, 0));
    Misc::pVlkApp->SetNlsSearchPath(boost::filesystem::path(m_Directory.File("")));
    EXPECT_EQ("eins", Converted(m_File, 0));
}

TEST_F(LanguageTest, AFileIsSearchedOnce)
{
    m_Thread.SetLngId(German);
    EXPECT_EQ("one", Converted(m_File, 0));
    Put(FileOf({{German, 0, std::string("eins\0zwei\0", 10)}}));
    EXPECT_EQ("one", Converted(m_File, 0));
}

TEST_F(LanguageTest, ThreadsThatAskForTheSameLanguageAtOnceGetTheSameTexts)
{
    Put(FileOf({{German, 0, std::string("eins\0zwei\0", 10)}}));
    std::vector<std::thread> threads;
    for (int i = 0; i != 4; ++i)
        threads.emplace_back([&] {
            Threading::CCallBackGuard const guard;
            Threading::CCurrentThread().SetLngId(German);
            EXPECT_EQ("zwei", Converted(m_File, 1));
        });
    for (std::thread & thread : threads)
        thread.join();
}

struct SCorrupted {
    char const * name;
    std::string content;
};

class CorruptedLanguageTest : public LanguageTest, public testing::WithParamInterface<SCorrupted> {};

TEST_P(CorruptedLanguageTest, RaisesOnceThenTheDefaultServes)
{
    Put(GetParam().content);
    EXPECT_EQ(Corrupted, RaisedBy([&] { m_File.GetLngData(); }));
    EXPECT_EQ("one", Converted(m_File, 0));
}

std::string const Good = FileOf({{German, 0, std::string("eins\0zwei\0", 10)}});

INSTANTIATE_TEST_SUITE_P(
    Edges, CorruptedLanguageTest,
    testing::Values(SCorrupted{"Empty", ""}, SCorrupted{"WrongMagic", FileOf({}, 1)},
                    SCorrupted{"WrongCount", FileOf({}, 0x25031961, 3)}, SCorrupted{"NoCount", Good.substr(0, 6)},
                    SCorrupted{"NoLanguageCount", Good.substr(0, 9)}, SCorrupted{"CutHeader", Good.substr(0, 40)},
                    SCorrupted{"OneByteMore", Good + "x"}, SCorrupted{"OneByteLess", Good.substr(0, Good.size() - 1)},
                    SCorrupted{"FourMilliardLanguages", Number(0x25031961) + Number(2) + Number(0xFFFFFFFF)}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(LanguageTest, TextsOutsideOfTheFileRaiseWhenTheyAreAskedFor)
{
    std::string file = Good;
    file.replace(16, 4, Number(100000));
    Put(file);
    m_Thread.SetLngId(German);
    EXPECT_EQ(Corrupted, RaisedBy([&] { m_File.GetLngData(); }));
}

} // namespace
