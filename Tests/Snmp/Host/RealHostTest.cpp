#include <gtest/gtest.h>

#include "Platform/Module.h"
#include "Platform/Process.h"
#include "Snmp/Host/OsVersion.h"
#include "Snmp/Host/Process.h"
#include "Snmp/Host/ServiceMgr.h"
#include "Snmp/Host/VersionInfo.h"
#include "Support/ScopedVariable.h"
#include "Support/TempDirectory.h"

// The queries on the host that runs the test.

TEST(RealHostTest, AServiceOfTheUnitPathIsFound)
{
    const CTempDirectory directory;
    directory.Write("Kestrix\\x20Services.service", "[Service]\n" + std::string(3000, '#'));
    const CScopedVariable path("SYSTEMD_UNIT_PATH", directory.File(""));
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
    EXPECT_EQ(path.substr(path.rfind('/') + 1), name);
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
