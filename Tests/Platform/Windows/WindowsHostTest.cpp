#include "Platform/Host.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "Platform/Environment.h"
#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours
#include "Platform/Windows/ReplacedImport.h"
#include "Support/ScopedVariable.h"

using namespace Platform;

namespace {

std::string NameOfKind(COMPUTER_NAME_FORMAT kind)
{
    char name[260] = {};
    DWORD size = sizeof name;
    EXPECT_NE(FALSE, ::GetComputerNameExA(kind, name, &size));
    return name;
}

DWORD g_accepted = 0; ///< the size of the record that the system knows
BOOL WINAPI TellVersion(LPOSVERSIONINFOA out)
{
    if (out->dwOSVersionInfoSize != g_accepted) {
        ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    out->dwMajorVersion = 5;
    out->dwMinorVersion = 1;
    out->dwBuildNumber = 2600;
    return TRUE;
}

} // namespace

TEST(WindowsHostTest, ComputerNameIsTheNameOfTheEnvironment)
{
    std::string name;
    ASSERT_EQ(Success, ComputerName(name, 16));
    char const * const known = std::getenv("COMPUTERNAME");
    ASSERT_NE(nullptr, known);
    EXPECT_EQ(known, name);
}

TEST(WindowsHostTest, DnsNamesAreTheTwoHalvesThatTheSystemTells)
{
    std::string host;
    std::string domain;
    ASSERT_EQ(Success, DnsName(host, domain));
    EXPECT_EQ(NameOfKind(ComputerNameDnsHostname), host);
    EXPECT_EQ(NameOfKind(ComputerNameDnsDomain), domain);
}

TEST(WindowsHostTest, SystemDirectoryIsTheSystemsOwn)
{
    std::string directory;
    ASSERT_EQ(Success, SystemDirectory(directory));
    EXPECT_TRUE(std::filesystem::is_directory(directory));
    char const * const known = std::getenv("windir");
    ASSERT_NE(nullptr, known);
    EXPECT_TRUE(std::filesystem::equivalent(known, directory)) << known << ' ' << directory;
    EXPECT_EQ('\\', PathSeparator());
}

TEST(WindowsHostTest, AVersionOfAtLeastTheOneThatIsAskedForIsReported)
{
    SOsVersion version{};
    ASSERT_EQ(Success, OsVersion(version));
    EXPECT_GE(version.major * 100 + version.minor, 602u) << "the firewall rules need 6.2";
    EXPECT_NE(0u, version.build);
}

TEST(WindowsHostTest, TheVersionIsAskedForOnceMoreInTheOlderForm)
{
    const TReplacedImport<decltype(::GetVersionExA)> told("GetVersionExA", &TellVersion);
    for (const DWORD size : {DWORD{sizeof(OSVERSIONINFOEXA)}, DWORD{sizeof(OSVERSIONINFOA)}}) {
        g_accepted = size;
        SOsVersion version{};
        EXPECT_EQ(Success, OsVersion(version));
        EXPECT_EQ(5u, version.major);
        EXPECT_EQ(1u, version.minor);
        EXPECT_EQ(2600u, version.build);
    }
    g_accepted = 0;
    SOsVersion version{1, 2, 3};
    EXPECT_EQ(ErrorInsufficientBuffer(), OsVersion(version));
    EXPECT_EQ(1u, version.major) << "kept";
}

TEST(WindowsHostTest, TheProcessorIsAnX64AndTheFirewallIsManaged)
{
    EXPECT_EQ(9u, Architecture());
    EXPECT_TRUE(HasManagedFirewall());
}

TEST(WindowsHostTest, TheStateDirectoryLiesUnderTheDataOfAllUsersUnlessItIsNamed)
{
    const CScopedVariable data("ProgramData", "C:\\Data");
    const CScopedVariable none("KXRA_STATE_DIRECTORY", std::nullopt);
    EXPECT_EQ("C:\\Data\\Kestrix\\snmpd", StateDirectory());
    const CScopedVariable named("KXRA_STATE_DIRECTORY", "D:\\state");
    EXPECT_EQ("D:\\state", StateDirectory());
}

TEST(WindowsHostTest, WithoutADirectoryForAllUsersThereIsNoStateDirectory)
{
    const CScopedVariable data("ProgramData", std::nullopt);
    const CScopedVariable none("KXRA_STATE_DIRECTORY", std::nullopt);
    EXPECT_EQ("", StateDirectory());
}

TEST(WindowsHostTest, AVariableIsSetForTheCLibraryAndTheSystem)
{
    const CScopedVariable restored("KXRA_TEST_SET", std::nullopt);
    EXPECT_EQ(Success, SetEnvironmentText("KXRA_TEST_SET", "value"));
    EXPECT_STREQ("value", std::getenv("KXRA_TEST_SET"));
    EXPECT_EQ(0, std::system("cmd /c if not \"%KXRA_TEST_SET%\"==\"value\" exit 1"));
}

TEST(WindowsHostTest, AnEmptyVariableIsThereForTheSystem)
{
    const CScopedVariable restored("KXRA_TEST_SET", std::nullopt);
    EXPECT_EQ(Success, SetEnvironmentText("KXRA_TEST_SET", ""));
    char value[8] = "kept";
    ::SetLastError(Success);
    EXPECT_EQ(0u, ::GetEnvironmentVariableA("KXRA_TEST_SET", value, sizeof value));
    EXPECT_EQ(Success, ::GetLastError());
    EXPECT_STREQ("", value);
}
