#include "Platform/Host.h"

#include <filesystem>

#include <gtest/gtest.h>

using namespace Platform;

TEST(HostTest, ComputerNameIsCutToItsRoom)
{
    std::string whole;
    std::string name;
    ASSERT_EQ(Success, ComputerName(whole, 260));
    EXPECT_FALSE(whole.empty());
    EXPECT_EQ(std::string::npos, whole.find('.'));
    for (std::uint32_t room = 1; room <= whole.size() + 1; ++room) {
        ASSERT_EQ(Success, ComputerName(name, room));
        EXPECT_EQ(whole.substr(0, room - 1), name);
    }
    ASSERT_EQ(Success, ComputerName(name, 0));
    EXPECT_EQ("", name);
}

TEST(HostTest, TheNameInUtf8IsTheSameNameWhole)
{
    std::string native;
    std::string utf8;
    ASSERT_EQ(Success, ComputerName(native, 260));
    ASSERT_EQ(Success, ComputerNameUtf8(utf8));
    EXPECT_EQ(std::filesystem::path(std::u8string(utf8.begin(), utf8.end())), std::filesystem::path(native));
}

TEST(HostTest, DnsNameHasNoDotInItsHost)
{
    std::string host;
    std::string domain;
    ASSERT_EQ(Success, DnsName(host, domain));
    EXPECT_FALSE(host.empty());
    EXPECT_EQ(std::string::npos, host.find('.'));
}

TEST(HostTest, TheSystemTellsAVersion)
{
    SOsVersion version{};
    ASSERT_EQ(Success, OsVersion(version));
    EXPECT_NE(0u, version.major);
}
