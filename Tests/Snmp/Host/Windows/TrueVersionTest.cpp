#include <gtest/gtest.h>

#include "Platform/Host.h"
#include "Platform/Module.h"
#include "Snmp/Host/OsVersion.h"
#include "Snmp/Host/VersionInfo.h"

TEST(TrueVersionTest, FromReportedVersion6_2OnTheKernelsFileTells)
{
    Platform::SOsVersion reported{};
    ASSERT_EQ(Platform::Success, Platform::OsVersion(reported));
    ASSERT_EQ(6u, reported.major) << "what a program without a manifest is told";
    ASSERT_EQ(2u, reported.minor);
    std::string file;
    ASSERT_TRUE(Platform::SystemVersionFile(file));
    CFileVersionInfo kernel;
    kernel.Load(file.c_str());
    Platform::SFixedVersion numbers{};
    ASSERT_TRUE(kernel.GetFixed(numbers));
    COSVersion version;
    version.Read();
    EXPECT_EQ(numbers.fileVersionMS >> 16, version.dwMajorVersion);
    EXPECT_EQ(numbers.fileVersionMS & 0xFFFF, version.dwMinorVersion);
    EXPECT_EQ(numbers.fileVersionLS >> 16, version.dwBuildNumber);
    EXPECT_NE(0u, version.dwBuildNumber);
}
