#include "Platform/Services.h"

#include <vector>

#include <gtest/gtest.h>

#include "Support/HostFixture.h"

using namespace Platform;

namespace {

constexpr char Name[] = "Kestrix Test Service";

class ServicesTest : public testing::Test {
protected:
    ServicesTest() { EXPECT_EQ(Success, OpenServiceManager(m_manager)); }
    ~ServicesTest() override { EXPECT_EQ(Success, CloseServiceManager(m_manager)); }
    bool Exists(char const * name)
    {
        ServiceHandle service = nullptr;
        if (OpenService(m_manager, name, service) != Success) {
            EXPECT_EQ(nullptr, service);
            return false;
        }
        CloseService(service);
        return true;
    }

    CHostFixture m_host; ///< before the manager, which may look at its means when it is opened
    ServiceManagerHandle m_manager = nullptr;
};

} // namespace

TEST_F(ServicesTest, AnInstalledServiceTellsItsConfigurationAndItsState)
{
    EXPECT_FALSE(Exists(Name));
    m_host.InstallService(Name);
    ServiceHandle service = nullptr;
    ASSERT_EQ(Success, OpenService(m_manager, Name, service));
    std::vector<char> buffer(8192);
    std::uint32_t needed = 0;
    EXPECT_EQ(Success, QueryServiceConfig(service, buffer.data(), 8192, needed));
    EXPECT_EQ(Success, QueryServiceStatus(service));
    CloseService(service);
}

TEST_F(ServicesTest, AServiceThatIsNotThereCannotBeOpened)
{
    m_host.InstallService(Name);
    EXPECT_FALSE(Exists("Kestrix Test Servic"));
    EXPECT_FALSE(Exists("Kestrix Test Service 2"));
    EXPECT_FALSE(Exists(""));
    EXPECT_FALSE(Exists(std::string(300, 'x').c_str()));
    EXPECT_TRUE(Exists(Name));
}

TEST_F(ServicesTest, AConfigurationThatDoesntFitTellsItsSize)
{
    m_host.InstallService(Name, /*configurationBytes=*/2000);
    ServiceHandle service = nullptr;
    ASSERT_EQ(Success, OpenService(m_manager, Name, service));
    std::vector<char> buffer(8192, '\0');
    std::uint32_t needed = 0;
    EXPECT_EQ(ErrorInsufficientBuffer(), QueryServiceConfig(service, buffer.data(), 1024, needed));
    EXPECT_GT(needed, 2000u);
    ASSERT_LE(needed, buffer.size());
    std::uint32_t again = 0;
    EXPECT_EQ(Success, QueryServiceConfig(service, buffer.data(), needed, again));
    CloseService(service);
}
