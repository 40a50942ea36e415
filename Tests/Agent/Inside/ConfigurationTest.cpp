// What the agent finds out when it is made.

#include <algorithm>
#include <cstdlib>

#include "Platform/Clock.h"
#include "Tests/Agent/Support/AgentUnderTest.h"

namespace {

class ConfigurationTest : public CAgentTest {
protected:
    ConfigurationTest() { g_agentIntervals = kProduct; }

    /// A registry that names the product's directory, with its orDPatch.ini.
    void InstallIni(std::string const & text)
    {
        WriteRegistry(ProductKey("\"Path\"=\"" + (folder / "product").string() + "\"\n"));
        WriteFile(folder / "product/bin/orDPatch.ini", text);
    }
    static std::string ProductKey(std::string const & values)
    {
        return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norvane\\Kestrix RAID]\n" + values;
    }
    static std::string DelayKey(std::string const & values)
    {
        return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norvane\\Kestrix RAID\\KXRA_MIB\\CurrentVersion]\n" + values;
    }
    std::uint32_t PortWithIni(std::string const & text)
    {
        InstallIni(text);
        Make();
        return agent->m_PortNumber;
    }
    bool PortFailureTraced() const
    {
        for (std::string const & line : Trace())
            if (line.starts_with("\nCKestrixRAIDAgent(): no port in '")) return true;
        return false;
    }

    static constexpr SAgentIntervals kProduct{1000, 30000, 60000, 180000, 50, 100, 3000, 1000};
};

TEST_F(ConfigurationTest, AHostWithoutAnythingHasNoDelayedStartAndTheDefaultPort)
{
    Make();
    EXPECT_EQ(0u, agent->m_StartTime);
    EXPECT_EQ(60000, agent->m_ASRunning);
    EXPECT_EQ(180000, agent->m_ASIniting);
    EXPECT_EQ(3173u, agent->m_PortNumber);
    EXPECT_EQ(0, agent->m_AgentState);
    ExpectTraced({"\nCKestrixRAIDAgent(): c'tor...",
                  "\nCKestrixRAIDAgent(): check Kestrix file '" + (systemFolder / "ksVendor.ini").string() + "'",
                  "\nCKestrixRAIDAgent(): m_ASRunning = 60000, m_ASIniting = 180000, m_PortNumber = 3173"});
    EXPECT_FALSE(PortFailureTraced());
}

TEST_F(ConfigurationTest, TheLifeOfTheObjectIsTracedAtItsLevels)
{
    Make();
    agent.reset();
    std::vector<Fake::STraceLine> const lines = Fake::TraceLines();
    auto const levelOf = [&](std::string const & text) {
        for (Fake::STraceLine const & line : lines)
            if (line.text == text) return line.level;
        return 0u;
    };
    EXPECT_EQ(2u, levelOf("\nCKestrixRAIDAgent(): c'tor..."));
    EXPECT_EQ(2u, levelOf("\n~CKestrixRAIDAgent():\t cleanup..."));
    EXPECT_EQ(4u, levelOf("\n~CKestrixRAIDAgent(): cleanup done."));
    auto const done = std::find_if(lines.begin(), lines.end(), [](Fake::STraceLine const & line) {
        return line.text == "\n~CKestrixRAIDAgent(): cleanup done.";
    });
    ASSERT_NE(lines.end(), done);
    EXPECT_EQ((Fake::STraceLine{1, "\n"}), done[1]);
}

TEST_F(ConfigurationTest, ManagementServicesDelayTheStartFromNowOn)
{
    InstallServices();
    std::uint64_t const before = Platform::UnixTimeMs();
    Make();
    EXPECT_LE(before, agent->m_StartTime);
    EXPECT_GE(Platform::UnixTimeMs(), agent->m_StartTime);
    ExpectTraced({"\nCKestrixRAIDAgent(): found service name 'Raid Manager'",
                  "\nCKestrixRAIDAgent(): Norvane Kestrix Services are installed"});
}

TEST_F(ConfigurationTest, AFileWithoutAServiceNameAsksForTheDefaultService)
{
    WriteFile(systemFolder / "ksVendor.ini", "[Vendor]\nName=Norvane\n");
    WriteFile(unitFolder / "Kestrix\\x20Services.service", "[Service]\nExecStart=/bin/true\n");
    Make();
    EXPECT_LT(0u, agent->m_StartTime);
    EXPECT_TRUE(Traced("\nCKestrixRAIDAgent(): Norvane Kestrix Services are installed"));
}

TEST_F(ConfigurationTest, AServiceThatIsNotInstalledMeansNoDelayedStart)
{
    WriteFile(systemFolder / "ksVendor.ini", "ServiceName=Nobody\n");
    Make();
    EXPECT_EQ(0u, agent->m_StartTime);
    ExpectTraced({"\nCKestrixRAIDAgent(): found service name 'Nobody'",
                  "\nCKestrixRAIDAgent(): Norvane Kestrix Services are not installed"});
}

TEST_F(ConfigurationTest, OnlyTheFirstServiceNameCounts)
{
    WriteFile(systemFolder / "ksVendor.ini", "x\nServiceName=First\nServiceName=Second\n");
    Make();
    EXPECT_TRUE(Traced("\nCKestrixRAIDAgent(): found service name 'First'"));
    EXPECT_FALSE(Traced("\nCKestrixRAIDAgent(): found service name 'Second'"));
}

TEST_F(ConfigurationTest, AServiceNameBehindOtherCharactersDoesNotCount)
{
    WriteFile(systemFolder / "ksVendor.ini", " ServiceName=A\n;ServiceName=B\nservicename=C\n");
    WriteFile(unitFolder / "Kestrix\\x20Services.service", "[Service]\nExecStart=/bin/true\n");
    Make();
    for (std::string const & line : Trace())
        EXPECT_FALSE(line.starts_with("\nCKestrixRAIDAgent(): found service name")) << line;
    EXPECT_LT(0u, agent->m_StartTime);
}

TEST_F(ConfigurationTest, AnEmptyServiceNameCountsAsNotInstalled)
{
    WriteFile(systemFolder / "ksVendor.ini", "ServiceName=");
    WriteFile(unitFolder / "Kestrix\\x20Services.service", "[Service]\nExecStart=/bin/true\n");
    Make();
    EXPECT_EQ(0u, agent->m_StartTime);
    ExpectTraced({"\nCKestrixRAIDAgent(): found service name ''",
                  "\nCKestrixRAIDAgent(): Norvane Kestrix Services are not installed"});
}

TEST_F(ConfigurationTest, AFileWithLineEndsOfAnotherSystemNamesTheSameService)
{
    InstallServices();
    WriteFile(systemFolder / "ksVendor.ini", "[Vendor]\r\nServiceName=Raid Manager\r\nOther=1\r\n");
    Make();
    EXPECT_TRUE(Traced("\nCKestrixRAIDAgent(): found service name 'Raid Manager'"));
    EXPECT_LT(0u, agent->m_StartTime);
}

TEST_F(ConfigurationTest, ADirectoryInPlaceOfTheVendorFileIsSurvived)
{
    std::filesystem::create_directories(systemFolder / "ksVendor.ini");
    Make();
    EXPECT_EQ(0u, agent->m_StartTime);
}

TEST_F(ConfigurationTest, TheWaitsOfADelayedStartComeInSeconds)
{
    InstallServices();
    WriteRegistry(DelayKey("\"PWait\"=dword:0000000a\n\"IWait\"=dword:00000014\n"));
    Make();
    EXPECT_EQ(10000, agent->m_ASRunning);
    EXPECT_EQ(20000, agent->m_ASIniting);
    EXPECT_TRUE(Traced("\nCKestrixRAIDAgent(): m_ASRunning = 10000, m_ASIniting = 20000, m_PortNumber = 3173"));
}

TEST_F(ConfigurationTest, WaitsOfZeroAndMissingWaitsLeaveTheDefaults)
{
    InstallServices();
    WriteRegistry(DelayKey("\"PWait\"=dword:00000000\n"));
    Make();
    EXPECT_EQ(60000, agent->m_ASRunning);
    EXPECT_EQ(180000, agent->m_ASIniting);
}

TEST_F(ConfigurationTest, AWaitThatIsNoNumberLeavesTheDefault)
{
    InstallServices();
    WriteRegistry(DelayKey("\"PWait\"=\"10\"\n\"IWait\"=dword:00000001\n"));
    Make();
    EXPECT_EQ(60000, agent->m_ASRunning);
    EXPECT_EQ(1000, agent->m_ASIniting);
}

TEST_F(ConfigurationTest, WithoutManagementServicesTheWaitsAreNotRead)
{
    WriteRegistry(DelayKey("\"PWait\"=dword:0000000a\n\"IWait\"=dword:00000014\n"));
    Make();
    EXPECT_EQ(60000, agent->m_ASRunning);
    EXPECT_EQ(180000, agent->m_ASIniting);
}

TEST_F(ConfigurationTest, ThePortComesFromTheProductsIniFile)
{
    EXPECT_EQ(4000u, PortWithIni("[orDPatch]\nPort = 4000\n"));
    EXPECT_TRUE(Traced("\nCKestrixRAIDAgent(): m_ASRunning = 60000, m_ASIniting = 180000, m_PortNumber = 4000"));
}

TEST_F(ConfigurationTest, SectionAndKeyOfThePortIgnoreCase)
{
    EXPECT_EQ(4001u, PortWithIni("[ORDPATCH]\r\nport=0xFA1\r\n"));
}

TEST_F(ConfigurationTest, AnIniFileWithoutTheSectionOrTheKeyLeavesThePort)
{
    EXPECT_EQ(3173u, PortWithIni("[other]\nPort=4000\n"));
    agent.reset();
    EXPECT_EQ(3173u, PortWithIni("[orDPatch]\nHost=x\n"));
    agent.reset();
    EXPECT_EQ(3173u, PortWithIni(""));
}

TEST_F(ConfigurationTest, AMissingIniFileLeavesThePortAndTheTraceSaysWhy)
{
    WriteRegistry(ProductKey("\"Path\"=\"" + (folder / "nowhere").string() + "\"\n"));
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber);
    EXPECT_TRUE(PortFailureTraced());
}

TEST_F(ConfigurationTest, AnUnreadableIniFileLeavesThePortAndTheTraceSaysWhy)
{
    WriteRegistry(ProductKey("\"Path\"=\"" + (folder / "product").string() + "\"\n"));
    std::filesystem::create_directories(folder / "product/bin/orDPatch.ini");
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber);
    EXPECT_TRUE(PortFailureTraced());
}

TEST_F(ConfigurationTest, APortThatIsNoNumberLeavesThePortAndTheTraceSaysWhy)
{
    EXPECT_EQ(3173u, PortWithIni("[orDPatch]\nPort=12abc\n"));
    EXPECT_TRUE(PortFailureTraced());
    agent.reset();
    Fake::ClearTrace();
    EXPECT_EQ(3173u, PortWithIni("[orDPatch]\nPort=1,2\n"));
    EXPECT_TRUE(PortFailureTraced());
}

TEST_F(ConfigurationTest, TheProductsPathMayHoldEnvironmentVariablesWhenItIsExpandable)
{
    ::setenv("KXRA_TEST_PRODUCT", (folder / "product").c_str(), 1);
    WriteFile(folder / "product/bin/orDPatch.ini", "[orDPatch]\nPort=4002\n");
    std::string const path = "%KXRA_TEST_PRODUCT%";
    std::string bytes;
    for (char const c : path + '\0') {
        char byte[8];
        std::snprintf(byte, sizeof byte, "%s%02x,00", bytes.empty() ? "" : ",", static_cast<unsigned int>(c));
        bytes += byte;
    }
    WriteRegistry(ProductKey("\"Path\"=hex(2):" + bytes + "\n"));
    Make();
    EXPECT_EQ(4002u, agent->m_PortNumber);

    agent.reset();
    WriteRegistry(ProductKey("\"Path\"=\"" + path + "\"\n"));
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber) << "an ordinary text is taken as it stands";
}

TEST_F(ConfigurationTest, APathOfAWrongTypeLeavesThePort)
{
    WriteFile(folder / "product/bin/orDPatch.ini", "[orDPatch]\nPort=4003\n");
    WriteRegistry(ProductKey("\"Path\"=dword:00000001\n"));
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber);
    EXPECT_FALSE(PortFailureTraced());
}

TEST_F(ConfigurationTest, AnEmptyPathLeavesThePort)
{
    WriteRegistry(ProductKey("\"Path\"=\"\"\n"));
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber);
    EXPECT_FALSE(PortFailureTraced());
}

} // namespace
