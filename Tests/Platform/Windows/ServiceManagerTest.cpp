#include "Platform/Services.h"

#include <vector>

#include <gtest/gtest.h>

#include "Platform/Process.h"
#include "Support/ChildProcess.h"
#include "Support/Windows/SystemHandle.h"

namespace {

/// A service that an administrator has created, with the system's own program for that.
class ServiceManagerTest : public testing::Test {
protected:
    static int Sc(std::vector<std::string> const & words) { return CChildProcess("sc.exe", words).End(); }
    void SetUp() override
    {
        ASSERT_EQ(0, Sc({"create", m_name, "binPath=", "C:\\kestrix test\\service.exe", "start=", "demand"}));
        ASSERT_EQ(Platform::Success, Platform::OpenServiceManager(m_manager));
    }
    void TearDown() override
    {
        Sc({"delete", m_name});
        Platform::CloseServiceManager(m_manager);
    }
    Platform::ErrorCode Open() { return Platform::OpenService(m_manager, m_name.c_str(), m_service); }

    const std::string m_name = "KestrixTest" + std::to_string(Platform::CurrentProcessId());
    Platform::ServiceManagerHandle m_manager = nullptr;
    Platform::ServiceHandle m_service = nullptr;
};

} // namespace

TEST_F(ServiceManagerTest, TheConfigurationIsTheSystemsOwnRecord)
{
    ASSERT_EQ(Platform::Success, Open());
    std::vector<char> buffer(1024);
    std::uint32_t needed = 0;
    ASSERT_EQ(Platform::Success, Platform::QueryServiceConfig(m_service, buffer.data(), 1024, needed));
    auto const & config = *reinterpret_cast<QUERY_SERVICE_CONFIGA const *>(buffer.data());
    EXPECT_STREQ("C:\\kestrix test\\service.exe", config.lpBinaryPathName);
    EXPECT_EQ(static_cast<DWORD>(SERVICE_DEMAND_START), config.dwStartType);
    EXPECT_EQ(Platform::Success, Platform::QueryServiceStatus(m_service));
    Platform::CloseService(m_service);
}

TEST_F(ServiceManagerTest, TheHandlesLetNobodyDoMoreThanConnectAndQuery)
{
    ASSERT_EQ(Platform::Success, Open());
    auto * const service = reinterpret_cast<SC_HANDLE>(m_service);
    EXPECT_EQ(FALSE, ::DeleteService(service));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    EXPECT_EQ(FALSE, ::StartServiceA(service, 0, nullptr));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    Platform::CloseService(m_service);
    DWORD bytes = 0;
    DWORD services = 0;
    EXPECT_EQ(FALSE, ::EnumServicesStatusA(reinterpret_cast<SC_HANDLE>(m_manager), SERVICE_WIN32, SERVICE_STATE_ALL,
                                           nullptr, 0, &bytes, &services, nullptr));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
}

TEST_F(ServiceManagerTest, WhatTheSystemRefusesIsToldWithItsError)
{
    const CNativeService mute(
        ::OpenServiceA(reinterpret_cast<SC_HANDLE>(m_manager), m_name.c_str(), SERVICE_ENUMERATE_DEPENDENTS));
    ASSERT_TRUE(static_cast<bool>(mute)) << ::GetLastError();
    auto * const service = reinterpret_cast<Platform::ServiceHandle>(mute.Get());
    std::vector<char> buffer(1024);
    std::uint32_t needed = 0;
    EXPECT_EQ(Platform::ErrorAccessDenied(), Platform::QueryServiceConfig(service, buffer.data(), 1024, needed));
    EXPECT_EQ(Platform::ErrorAccessDenied(), Platform::QueryServiceStatus(service));
    EXPECT_EQ(static_cast<Platform::ErrorCode>(ERROR_INVALID_HANDLE), Platform::CloseServiceManager(nullptr));
}

TEST_F(ServiceManagerTest, ADeletedServiceDoesntExist)
{
    ASSERT_EQ(0, Sc({"delete", m_name}));
    EXPECT_EQ(static_cast<Platform::ErrorCode>(ERROR_SERVICE_DOES_NOT_EXIST), Open());
    EXPECT_EQ(nullptr, m_service);
}

TEST_F(ServiceManagerTest, TheNameThatIsDisplayedIsNoName)
{
    ASSERT_EQ(0, Sc({"create", m_name + "2", "binPath=", "C:\\x.exe", "displayname=", "Kestrix displayed"}));
    EXPECT_EQ(static_cast<Platform::ErrorCode>(ERROR_SERVICE_DOES_NOT_EXIST),
              Platform::OpenService(m_manager, "Kestrix displayed", m_service));
    ASSERT_EQ(0, Sc({"delete", m_name + "2"}));
}
