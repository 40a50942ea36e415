// What the agent finds out when it is made.

#include <algorithm>

#include "Platform/Clock.h"
#include "Tests/Agent/Support/AgentUnderTest.h"
#include "Tests/Support/ScopedVariable.h"

namespace {

class ConfigurationTest : public CAgentTest {
protected:
    ConfigurationTest() { g_agentIntervals = kProduct; }

    /// A registry that names the product's directory, with its orDPatch.ini.
    void InstallIni(std::string const & text)
    {
        registry.Write(ProductKey(PathValue(CRegistryFixture::Quoted((folder / "product").string()))));
        WriteFile(folder / "product/bin/orDPatch.ini", text);
    }
    static std::string ProductKey(std::string const & values)
    {
        return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norvane\\Kestrix RAID]\n" + values;
    }
    static std::string PathValue(std::string const & value) { return "\"Path\"=" + value + '\n'; }
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
    /// What the trace says of a port that couldn't be had; empty when it says nothing.
    std::string PortFailure() const
    {
        for (std::string const & line : Trace())
            if (line.starts_with("\nCKestrixRAIDAgent(): no port in '")) return line;
        return {};
    }
    std::string IniFailure(char const * failure) const
    {
        return "\nCKestrixRAIDAgent(): no port in '" + (folder / "product" / "bin" / "orDPatch.ini").string() +
               "', it stays 3173: " + failure + "\n";
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
                  "\nCKestrixRAIDAgent(): check Kestrix file '" + host.SystemFile("ksVendor.ini").string() + "'",
                  "\nCKestrixRAIDAgent(): m_ASRunning = 60000, m_ASIniting = 180000, m_PortNumber = 3173"});
    EXPECT_EQ("", PortFailure());
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
    host.WriteSystemFile("ksVendor.ini", "[Vendor]\nName=Norvane\n");
    host.InstallService("Kestrix Services");
    Make();
    EXPECT_LT(0u, agent->m_StartTime);
    EXPECT_TRUE(Traced("\nCKestrixRAIDAgent(): Norvane Kestrix Services are installed"));
}

TEST_F(ConfigurationTest, AServiceThatIsNotInstalledMeansNoDelayedStart)
{
    host.WriteSystemFile("ksVendor.ini", "ServiceName=Nobody\n");
    Make();
    EXPECT_EQ(0u, agent->m_StartTime);
    ExpectTraced({"\nCKestrixRAIDAgent(): found service name 'Nobody'",
                  "\nCKestrixRAIDAgent(): Norvane Kestrix Services are not installed"});
}

TEST_F(ConfigurationTest, OnlyTheFirstServiceNameCounts)
{
    host.WriteSystemFile("ksVendor.ini", "x\nServiceName=First\nServiceName=Second\n");
    Make();
    EXPECT_TRUE(Traced("\nCKestrixRAIDAgent(): found service name 'First'"));
    EXPECT_FALSE(Traced("\nCKestrixRAIDAgent(): found service name 'Second'"));
}

TEST_F(ConfigurationTest, AServiceNameBehindOtherCharactersDoesNotCount)
{
    host.WriteSystemFile("ksVendor.ini", " ServiceName=A\n;ServiceName=B\nservicename=C\n");
    host.InstallService("Kestrix Services");
    Make();
    for (std::string const & line : Trace())
        EXPECT_FALSE(line.starts_with("\nCKestrixRAIDAgent(): found service name")) << line;
    EXPECT_LT(0u, agent->m_StartTime);
}

TEST_F(ConfigurationTest, AnEmptyServiceNameCountsAsNotInstalled)
{
    host.WriteSystemFile("ksVendor.ini", "ServiceName=");
    host.InstallService("Kestrix Services");
    Make();
    EXPECT_EQ(0u, agent->m_StartTime);
    ExpectTraced({"\nCKestrixRAIDAgent(): found service name ''",
                  "\nCKestrixRAIDAgent(): Norvane Kestrix Services are not installed"});
}

TEST_F(ConfigurationTest, AFileWithLineEndsOfAnotherSystemNamesTheSameService)
{
    InstallServices();
    host.WriteSystemFile("ksVendor.ini", "[Vendor]\r\nServiceName=Raid Manager\r\nOther=1\r\n");
    Make();
    EXPECT_TRUE(Traced("\nCKestrixRAIDAgent(): found service name 'Raid Manager'"));
    EXPECT_LT(0u, agent->m_StartTime);
}

TEST_F(ConfigurationTest, ADirectoryInPlaceOfTheVendorFileIsSurvived)
{
    host.MakeSystemFolder("ksVendor.ini");
    Make();
    EXPECT_EQ(0u, agent->m_StartTime);
}

TEST_F(ConfigurationTest, TheWaitsOfADelayedStartComeInSeconds)
{
    InstallServices();
    registry.Write(DelayKey("\"PWait\"=dword:0000000a\n\"IWait\"=dword:00000014\n"));
    Make();
    EXPECT_EQ(10000, agent->m_ASRunning);
    EXPECT_EQ(20000, agent->m_ASIniting);
    EXPECT_TRUE(Traced("\nCKestrixRAIDAgent(): m_ASRunning = 10000, m_ASIniting = 20000, m_PortNumber = 3173"));
}

TEST_F(ConfigurationTest, WaitsOfZeroAndMissingWaitsLeaveTheDefaults)
{
    InstallServices();
    registry.Write(DelayKey("\"PWait\"=dword:00000000\n"));
    Make();
    EXPECT_EQ(60000, agent->m_ASRunning);
    EXPECT_EQ(180000, agent->m_ASIniting);
}

TEST_F(ConfigurationTest, AWaitThatIsNoNumberLeavesTheDefault)
{
    InstallServices();
    registry.Write(DelayKey("\"PWait\"=\"10\"\n\"IWait\"=dword:00000001\n"));
    Make();
    EXPECT_EQ(60000, agent->m_ASRunning);
    EXPECT_EQ(1000, agent->m_ASIniting);
}

TEST_F(ConfigurationTest, WithoutManagementServicesTheWaitsAreNotRead)
{
    registry.Write(DelayKey("\"PWait\"=dword:0000000a\n\"IWait\"=dword:00000014\n"));
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
    registry.Write(ProductKey(PathValue(CRegistryFixture::Quoted((folder / "product").string()))));
    std::filesystem::create_directories(folder / "product/bin");
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber);
    std::string const failure = PortFailure();
    EXPECT_TRUE(failure.starts_with(IniFailure("it can't be read"))) << failure;
    EXPECT_NE(std::string::npos, failure.find("Message : INI-File does not exist\n")) << failure;
}

TEST_F(ConfigurationTest, AnUnreadableIniFileLeavesThePortAndTheTraceSaysWhy)
{
    registry.Write(ProductKey(PathValue(CRegistryFixture::Quoted((folder / "product").string()))));
    std::filesystem::create_directories(folder / "product/bin/orDPatch.ini");
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber);
    std::string const failure = PortFailure();
    EXPECT_TRUE(failure.starts_with(IniFailure("it can't be read"))) << failure;
    EXPECT_NE(std::string::npos, failure.find("Message : Can't access INI-file due to an I/O-error\n")) << failure;
}

TEST_F(ConfigurationTest, APortThatIsNoNumberLeavesThePortAndTheTraceSaysWhy)
{
    EXPECT_EQ(3173u, PortWithIni("[orDPatch]\nPort=12abc\n"));
    EXPECT_EQ(IniFailure("its value is no number"), PortFailure());
    agent.reset();
    Fake::ClearTrace();
    EXPECT_EQ(3173u, PortWithIni("[orDPatch]\nPort=1,2\n"));
    EXPECT_EQ(IniFailure("its value is no number"), PortFailure());
}

TEST_F(ConfigurationTest, AnIniFileThatAWriterKeepsAwayLeavesThePortAndTheTraceSaysWhy)
{
    registry.Write(ProductKey(PathValue(CRegistryFixture::Quoted((folder / "product").string()))));
    WriteFile(folder / "product/bin/orDPatch.ini.lck", "");
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber);
    EXPECT_EQ(IniFailure("it can't be read"), PortFailure());
}

TEST_F(ConfigurationTest, TheProductsPathMayHoldEnvironmentVariablesWhenItIsExpandable)
{
    const CScopedVariable product("KXRA_TEST_PRODUCT", (folder / "product").string());
    WriteFile(folder / "product/bin/orDPatch.ini", "[orDPatch]\nPort=4002\n");
    std::string const path = "%KXRA_TEST_PRODUCT%";
    registry.Write(ProductKey(PathValue(CRegistryFixture::Expandable(path))));
    Make();
    EXPECT_EQ(4002u, agent->m_PortNumber);

    agent.reset();
    registry.Write(ProductKey(PathValue(CRegistryFixture::Quoted(path))));
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber) << "an ordinary text is taken as it stands";
}

TEST_F(ConfigurationTest, APathOfAWrongTypeLeavesThePort)
{
    WriteFile(folder / "product/bin/orDPatch.ini", "[orDPatch]\nPort=4003\n");
    registry.Write(ProductKey("\"Path\"=dword:00000001\n"));
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber);
    EXPECT_EQ("", PortFailure());
}

TEST_F(ConfigurationTest, AnEmptyPathLeavesThePort)
{
    registry.Write(ProductKey("\"Path\"=\"\"\n"));
    Make();
    EXPECT_EQ(3173u, agent->m_PortNumber);
    EXPECT_EQ("", PortFailure());
}

} // namespace
