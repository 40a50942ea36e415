#include "Snmp/Host/OsVersion.h"

#include "QueryFixture.h"
#include "Support/TempDirectory.h"

namespace {

constexpr char UseFile[] =
    "\nCOSVersion          : Use file version info of kernel32.dll to retrieve the real OS version...";

class OsVersionTest : public CQueryTest {
protected:
    void Report(std::uint32_t major, std::uint32_t minor, std::uint32_t build)
    {
        m_host.major = major;
        m_host.minor = minor;
        m_host.build = build;
    }
    void ExpectVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t build) const
    {
        EXPECT_EQ(major, m_version.dwMajorVersion);
        EXPECT_EQ(minor, m_version.dwMinorVersion);
        EXPECT_EQ(build, m_version.dwBuildNumber);
    }
    COSVersion m_version;
};

} // namespace

TEST_F(OsVersionTest, AVersionBelow62Stands)
{
    m_host.hasVersionFile = true;
    m_host.versionFile = KXRA_VERSION_PROBE;
    Report(6, 1, 7601);
    m_version.Read();
    ExpectVersion(6, 1, 7601);
    EXPECT_THAT(
        Fake::TraceLines(),
        testing::ElementsAre(
            SLine{4, "\nCOSVersion          : OS version returned by GetVersionEx API : Major 6 Minor 1 Build 7601"}));
    Report(5, 9, 1);
    m_version.Read();
    ExpectVersion(5, 9, 1);
}

TEST_F(OsVersionTest, From62OnTheKernelsFileTells)
{
    m_host.hasVersionFile = true;
    m_host.versionFile = KXRA_VERSION_PROBE;
    Report(6, 2, 9200);
    m_version.Read();
    ExpectVersion(7, 10, 2);
    EXPECT_THAT(
        Fake::TraceLines(),
        testing::ElementsAre(
            SLine{4, "\nCOSVersion          : OS version returned by GetVersionEx API : Major 6 Minor 2 Build 9200"},
            SLine{4, UseFile},
            SLine{4, "\nCOSVersion          : OS Version read from kernel32.dll: Major 7 Minor 10 Build 2"}));
    Report(10, 0, 1);
    m_version.Read();
    ExpectVersion(7, 10, 2);
}

TEST_F(OsVersionTest, WithoutTheKernelsFileTheReportedVersionStands)
{
    Report(6, 5, 0);
    m_version.Read();
    ExpectVersion(6, 5, 0);
    EXPECT_EQ((SLine{4, UseFile}), Fake::TraceLines().back());
    m_host.hasVersionFile = true; // with an empty name
    m_version.Read();
    ExpectVersion(6, 5, 0);
    m_host.versionFile = "/no/such/file";
    m_version.Read();
    ExpectVersion(6, 5, 0);
}

TEST_F(OsVersionTest, ASystemThatDoesntTellGivesZeros)
{
    m_version.Read();
    m_host.versionError = 1;
    Fake::ClearTrace();
    m_version.Read();
    ExpectVersion(0, 0, 0);
    EXPECT_THAT(Fake::TraceLines(), testing::ElementsAre());
}
