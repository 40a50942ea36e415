#include "Platform/Host.h"

#include <cstdio>

#include <gtest/gtest.h>

#include <sys/utsname.h>

#include "Support/ScopedVariable.h"

using namespace Platform;

TEST(UnixHostTest, ComputerNameIsTheShortNameCutToItsRoom)
{
    utsname system{};
    ASSERT_EQ(0, ::uname(&system));
    const std::string node = system.nodename;
    const std::string shortName = node.substr(0, node.find('.'));
    std::string name;
    ASSERT_EQ(Success, ComputerName(name, 260));
    EXPECT_EQ(shortName, name);
    ASSERT_EQ(Success, ComputerName(name, 3));
    EXPECT_EQ(shortName.substr(0, 2), name);
    ASSERT_EQ(Success, ComputerName(name, 1));
    EXPECT_EQ("", name);
    ASSERT_EQ(Success, ComputerName(name, 0));
    EXPECT_EQ("", name);
}

TEST(UnixHostTest, SystemDirectoryComesFromItsVariable)
{
    std::string directory;
    {
        const CScopedVariable variable("KXRA_SYSTEM_DIRECTORY", "/some/where");
        ASSERT_EQ(Success, SystemDirectory(directory));
        EXPECT_EQ("/some/where", directory);
    }
    for (const std::optional<std::string> & value : {std::optional<std::string>(), std::optional<std::string>("")}) {
        const CScopedVariable variable("KXRA_SYSTEM_DIRECTORY", value);
        ASSERT_EQ(Success, SystemDirectory(directory));
        EXPECT_EQ("/etc/kestrix", directory);
    }
    EXPECT_EQ('/', PathSeparator());
}

TEST(UnixHostTest, OsVersionIsTheKernelsRelease)
{
    utsname system{};
    ASSERT_EQ(0, ::uname(&system));
    SOsVersion version{};
    ASSERT_EQ(Success, OsVersion(version));
    const std::string start = std::to_string(version.major) + "." + std::to_string(version.minor);
    EXPECT_EQ(0u, std::string(system.release).rfind(start, 0));
}

TEST(UnixHostTest, ArchitectureHasThePlatformsNumber)
{
    utsname system{};
    ASSERT_EQ(0, ::uname(&system));
    const std::string machine = system.machine;
    if (machine == "x86_64")
        EXPECT_EQ(9u, Architecture());
    else
        EXPECT_NE(9u, Architecture());
    EXPECT_FALSE(HasManagedFirewall());
}
