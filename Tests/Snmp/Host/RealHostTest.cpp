#include <gtest/gtest.h>

#include <filesystem>

#include "Platform/Module.h"
#include "Platform/Process.h"
#include "Snmp/Host/OsVersion.h"
#include "Snmp/Host/Process.h"
#include "Snmp/Host/ServiceMgr.h"
#include "Snmp/Host/VersionInfo.h"
#include "Support/HostFixture.h"

// The queries on the host that runs the test.

TEST(RealHostTest, AnInstalledServiceIsFound)
{
    CHostFixture host;
    host.InstallService("Kestrix Services", /*configurationBytes=*/3000);
    CServiceMgr manager;
    EXPECT_NE(0, manager.QueryService("Kestrix Services", nullptr));
    EXPECT_EQ(0, manager.QueryService("Kestrix", nullptr));
}

TEST(RealHostTest, ThisProcessHasItsProgramsName)
{
    std::string path;
    ASSERT_EQ(Platform::Success, Platform::ProgramPath(path));
    std::string name;
    EXPECT_EQ(1, CProcess::GetName(name, Platform::CurrentProcessId()));
    EXPECT_EQ(std::filesystem::path(path).filename().string(), name);
}

TEST(RealHostTest, IsProcessRunningIsTrueForANameThatNoProcessBears)
{
    EXPECT_TRUE(IsProcessRunning("SnmpTrapListen.exe"));
}

TEST(RealHostTest, TheKernelsVersionIsRead)
{
    COSVersion version;
    version.Read();
    EXPECT_GT(version.dwMajorVersion, 0u);
}
