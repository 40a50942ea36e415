#include "Snmp/Host/VersionInfo.h"

#include "QueryFixture.h"
#include "Support/TempDirectory.h"

namespace {

constexpr char Probe[] = KXRA_VERSION_PROBE;

/// As units of 16 bits; text: Latin-1.
std::string Wide(std::string const & text)
{
    std::string bytes;
    for (const char c : text)
        bytes += {c, '\0'};
    return bytes;
}

class VersionInfoTest : public CQueryTest {
protected:
    /// A copy of the library whose text `from` reads `to`, which has the same length. A section of a file holds texts
    /// in bytes, a resource in units of 16 bits.
    std::string Patched(std::string from, std::string to)
    {
        std::ifstream file(Probe, std::ios::binary);
        std::string bytes{std::istreambuf_iterator<char>(file), {}};
        if (bytes.find(from) == std::string::npos) {
            from = Wide(from);
            to = Wide(to);
        }
        const std::size_t at = bytes.find(from);
        EXPECT_NE(std::string::npos, at);
        EXPECT_EQ(from.size(), to.size());
        bytes.replace(at, to.size(), to);
        return m_directory.Write("patched.so", bytes);
    }

    CTempDirectory m_directory;
};

std::string ErrorLine(Platform::ErrorCode error, char const * format)
{
    char text[128];
    std::snprintf(text, sizeof text, "\nCVersionResource    : ERROR 0x%X! %s FAILED!", error, format);
    return text;
}

} // namespace

TEST_F(VersionInfoTest, GivesTheTextsOfAFile)
{
    CVersionResource version;
    version.Load(Probe);
    Fake::ClearTrace();
    std::string text;
    EXPECT_NE(0, version.GetString(text, "FileDescription", 0, 0));
    EXPECT_EQ("Kestrix RAID SNMP agent", text);
    EXPECT_EQ(Probe, version.Path());
    EXPECT_THAT(
        Fake::TraceLines(),
        testing::ElementsAre(
            SLine{4, "\nCVersionResource    : Search version info entry for lang ID 0x0000 and code page 0 ..."},
            SLine{5, "\nCVersionResource    : Version resource contains 1 language(s):"},
            SLine{5, "\nCVersionResource    : Check version resource entry with lang ID 0x0409"},
            SLine{4, "\nCVersionResource    : ... version info entry for lang ID 0x0000 found (Return: Lang ID 0x0409, "
                     "Code page 1252)!"},
            SLine{5,
                  "\nCFileVersionInfo    : Query version info string \"\\StringFileInfo\\040904E4\\FileDescription\""},
            SLine{4,
                  "\nCVersionResource    : Version info string for \"FileDescription\": \"Kestrix RAID SNMP agent\""}));
}

TEST_F(VersionInfoTest, TheLanguageAskedForIsTakenWithTheCodePageOfTheBlock)
{
    CVersionResource version;
    version.Load(Probe);
    std::string text;
    EXPECT_NE(0, version.GetString(text, "CompanyName", 0x0409, 932));
    EXPECT_EQ("Norvane", text);
}

TEST_F(VersionInfoTest, ALanguageThatIsNotThereIsAnErrorAndTheOutputStays)
{
    CVersionResource version;
    version.Load(Probe);
    Fake::ClearTrace();
    std::string text = "kept";
    EXPECT_EQ(0, version.GetString(text, "CompanyName", 0x0407, 1252));
    EXPECT_EQ("kept", text);
    EXPECT_THAT(
        Fake::TraceLines(),
        testing::ElementsAre(
            SLine{4, "\nCVersionResource    : Search version info entry for lang ID 0x0407 and code page 1252 ..."},
            SLine{5, "\nCVersionResource    : Version resource contains 1 language(s):"},
            SLine{5, "\nCVersionResource    : Check version resource entry with lang ID 0x0409"},
            SLine{
                4,
                "\nCVersionResource    : ... version info entry for lang ID 0x0407 NOT found (Return: Lang ID 0x0407, "
                "Code page 1252)!"},
            SLine{1, ErrorLine(Platform::ErrorNotFound(), "ContainsLangId()")}));
}

TEST_F(VersionInfoTest, ATextThatIsNotThereIsAnError)
{
    CVersionResource version;
    version.Load(Probe);
    std::string text = "kept";
    EXPECT_EQ(0, version.GetString(text, "Nothing", 0, 0));
    EXPECT_EQ("kept", text);
    EXPECT_EQ((SLine{1, ErrorLine(Platform::ErrorNotFound(), "VerQueryValue()")}), Fake::TraceLines().back());
    EXPECT_EQ(0, version.GetString(text, std::string(1000, 'x').c_str(), 0, 0));
    EXPECT_EQ(0, version.GetString(text, nullptr, 0, 0));
}

TEST_F(VersionInfoTest, ATextIsCleaned)
{
    CVersionResource version;
    version.Load(Patched("Norvane", "N\x01rv\xA9ne").c_str());
    std::string text;
    EXPECT_NE(0, version.GetString(text, "CompanyName", 0, 0));
    EXPECT_EQ("N?rv\xA9ne", text);
    EXPECT_EQ((SLine{4, "\nCVersionResource    : Version info string for \"CompanyName\": \"N?rv\xA9ne\""}),
              Fake::TraceLines().back());
}

TEST_F(VersionInfoTest, GivesTheNumbers)
{
    CVersionResource version;
    EXPECT_EQ(0u, version.GetProductMajor());
    EXPECT_EQ(0u, version.GetProductMinor());
    version.Load(Probe);
    EXPECT_EQ(7u, version.GetProductMajor());
    EXPECT_EQ(10u, version.GetProductMinor());
    Platform::SFixedVersion fixed{};
    ASSERT_TRUE(version.GetFixed(fixed));
    EXPECT_EQ(2u, fixed.fileVersionLS >> 16);
}

TEST_F(VersionInfoTest, WithoutDataThereIsNothing)
{
    CVersionResource version;
    std::string text = "kept";
    Platform::SFixedVersion fixed{};
    EXPECT_EQ(0, version.GetString(text, "CompanyName", 0, 0));
    EXPECT_FALSE(version.GetFixed(fixed));
    EXPECT_EQ("kept", text);
    EXPECT_THAT(Fake::TraceLines(), testing::ElementsAre());
}

TEST_F(VersionInfoTest, AFailedLoadLeavesTheObjectAsItWas)
{
    CVersionResource version;
    version.Load(Probe);
    version.Load(nullptr);
    version.Load("");
    version.Load(m_directory.File("none").c_str());
    version.Load(m_directory.Write("text", "no library").c_str());
    EXPECT_EQ(7u, version.GetProductMajor());
    EXPECT_EQ(Probe, version.Path());
}

TEST_F(VersionInfoTest, SizeOfAMissingFileIsZeroWithItsTraces)
{
    const std::string path = m_directory.File("none");
    EXPECT_EQ(0u, CFileVersionInfo::GetSize(nullptr));
    EXPECT_THAT(Fake::TraceLines(), testing::ElementsAre());
    EXPECT_EQ(0u, CFileVersionInfo::GetSize(path.c_str()));
    char error[32];
    std::snprintf(error, sizeof error, "0x%X", Platform::ErrorNotFound());
    EXPECT_THAT(Fake::TraceLines(),
                testing::ElementsAre(SLine{3, "\nCFileVersionInfo    : System dir is: \"/no/system\""},
                                     SLine{1, "\nCFileVersionInfo    : ERROR " + std::string(error) +
                                                  "! GetFileVersionInfoSize() (\"" + path + "\") FAILED!"}));
}

TEST_F(VersionInfoTest, SizeOfAFileWithoutABlockIsZeroWithoutALookElsewhere)
{
    EXPECT_EQ(0u, CFileVersionInfo::GetSize(m_directory.Write("text", "no library").c_str()));
    EXPECT_EQ(1u, Fake::TraceLines().size());
}

TEST_F(VersionInfoTest, AMissingFileOfTheSystemIsLookedForInTheOtherDirectory)
{
    m_host.systemDirectory = m_directory.File("sys");
    m_host.otherDirectory = m_directory.File("other");
    std::filesystem::create_directory(m_host.systemDirectory);
    std::filesystem::create_directory(m_host.otherDirectory);
    std::filesystem::copy_file(Probe, m_host.otherDirectory + "/a.so");
    const std::string path = m_host.systemDirectory + "/a.so";
    EXPECT_EQ(CFileVersionInfo::GetSize(Probe), CFileVersionInfo::GetSize(path.c_str()));
    EXPECT_THAT(
        Fake::TraceLines(),
        testing::ElementsAre(
            SLine{3, "\nCFileVersionInfo    : System dir is: \"" + m_host.systemDirectory + "\""},
            SLine{3, "\nCFileVersionInfo    : Module system location is: \"" + m_host.otherDirectory + "\""},
            SLine{3, "\nCFileVersionInfo    : Check WOW64 system path: \"" + m_host.otherDirectory + "/a.so\""}));
    CVersionResource version;
    version.Load(path.c_str());
    EXPECT_EQ(7u, version.GetProductMajor());
}

TEST_F(VersionInfoTest, TheOtherPathIsCutAtTheLengthOfTheSystemDirectoryWhereverThatStands)
{
    const std::string folder = m_directory.File("sys");
    std::filesystem::create_directory(folder);
    const std::string path = folder + "/none.so";
    m_host.systemDirectory = folder.substr(folder.size() - 4);
    m_host.otherDirectory = "/other";
    EXPECT_EQ(0u, CFileVersionInfo::GetSize(path.c_str()));
    EXPECT_EQ((SLine{3, "\nCFileVersionInfo    : Check WOW64 system path: \"/other" + path.substr(4) + "\""}),
              Fake::TraceLines()[2]);
}
