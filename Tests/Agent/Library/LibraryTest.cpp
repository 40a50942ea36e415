// KXRA_MIB as a host loads it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>

#include "Agent/Src/Intervals.h"
#include "Platform/Module.h"
#include "Platform/Process.h"
#include "Tests/Agent/Support/Estate.h"
#include "Tests/Agent/Support/RawPeer.h"
#include "Tests/Extension/LoadedExtension.h"
#include "Tests/Support/Deadline.h"

namespace {

constexpr char kRoot[] = "1.3.6.1.4.1.88417.2.49";

std::size_t Threads()
{
    std::size_t count = 0;
    for ([[maybe_unused]] auto const & entry : std::filesystem::directory_iterator("/proc/self/task"))
        ++count;
    return count;
}

std::uint32_t Handles()
{
    std::uint32_t count = 0;
    EXPECT_TRUE(Platform::HandleCount(count));
    return count;
}

struct SSymbol {
    std::string kind;
    std::string name;
};

std::vector<SSymbol> ExportedSymbols(std::string const & file)
{
    std::string const command = std::string(NM_PROGRAM) + " -D -C --defined-only '" + file + "'";
    std::unique_ptr<FILE, int (*)(FILE *)> const output(::popen(command.c_str(), "r"), &::pclose);
    std::vector<SSymbol> symbols;
    char line[8192];
    while (output && std::fgets(line, sizeof line, output.get()) != nullptr) {
        std::istringstream words(line);
        std::string address;
        SSymbol symbol;
        words >> address >> symbol.kind >> std::ws;
        std::getline(words, symbol.name);
        symbols.push_back(symbol);
    }
    return symbols;
}

class LibraryTest : public testing::Test {
protected:
    LibraryTest()
        : folder(std::filesystem::temp_directory_path() /
                 ("kxra_library_" + std::to_string(::rand()) + "_" + std::to_string(Platform::CurrentProcessId())))
    {
        std::filesystem::create_directories(folder / "bin");
        WriteFile("registry.reg", "Windows Registry Editor Version 5.00\n\n"
                                  "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norvane\\Kestrix RAID]\n\"Path\"=\"" +
                                      folder.string() + "\"\n");
        WriteFile("bin/orDPatch.ini", "[orDPatch]\nPort=" + std::to_string(peer.Port()) + "\n");
        ::setenv("KXRA_REGISTRY", (folder / "registry.reg").c_str(), 1);
        ::setenv("KXRA_SYSTEM_DIRECTORY", folder.c_str(), 1);
    }
    ~LibraryTest() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    void WriteFile(std::string const & name, std::string const & text)
    {
        std::ofstream(folder / name, std::ios::binary) << text;
    }

    std::filesystem::path const folder;
    CRawPeer peer;
};

TEST_F(LibraryTest, ShowsTheSixFunctionsAndTheFoundationAndNothingElse)
{
    for (char const * const file : {KXRA_LIBRARY, KXRA_FAST_LIBRARY}) {
        std::set<std::string> functions;
        std::vector<std::string> strange;
        std::size_t foundation = 0;
        for (SSymbol const & symbol : ExportedSymbols(file)) {
            EXPECT_NE("u", symbol.kind) << symbol.name << " keeps the library in memory";
            if (symbol.name.find("VLK::") != std::string::npos) {
                ++foundation;
            } else if (symbol.name.find("::") == std::string::npos) {
                functions.insert(symbol.name);
            } else {
                strange.push_back(symbol.name);
            }
        }
        EXPECT_EQ((std::set<std::string>{"DllMain", "SnmpExtensionClose", "SnmpExtensionInit", "SnmpExtensionInitEx",
                                         "SnmpExtensionQuery", "SnmpExtensionTrap"}),
                  functions);
        EXPECT_TRUE(strange.empty()) << strange.front();
        EXPECT_LT(100u, foundation);
    }
}

TEST_F(LibraryTest, ShowsTheClassesOfTheFoundationWithTheirTypeInformation)
{
    std::set<std::string> names;
    for (SSymbol const & symbol : ExportedSymbols(KXRA_LIBRARY))
        names.insert(symbol.name);
    for (char const * const type :
         {"VLK::Sockets::CSocket", "VLK::Sockets::CVlkSocketClient", "VLK::Sockets::CVlkSocketServer",
          "VLK::Threading::CThread", "VLK::Threading::CEvent", "VLK::Strings::CStringVar",
          "VLK::Output_Streams::CFormatStream", "VLK::INI_Files::CIniFile", "VLK::Trace::CTrace",
          "VLK::Misc::CModuleInfo", "VLK::Misc::CVlkApplication", "VLK::Exceptions::CException"}) {
        EXPECT_TRUE(names.contains(std::string("typeinfo for ") + type)) << type;
        // A thread adds no virtual operation of its own; its users bring the table along.
        if (type != std::string("VLK::Threading::CThread")) {
            EXPECT_TRUE(names.contains(std::string("vtable for ") + type)) << type;
        }
    }
}

TEST_F(LibraryTest, BearsItsVersionBlock)
{
    for (char const * const file : {KXRA_LIBRARY, KXRA_FAST_LIBRARY}) {
        Platform::ErrorCode error = Platform::Success;
        std::uint32_t const size = Platform::VersionBlockSize(file, error);
        ASSERT_NE(0u, size);
        std::string block;
        ASSERT_EQ(Platform::Success, Platform::ReadVersionBlock(file, size, block));
        void const * data = nullptr;
        std::uint32_t length = 0;
        ASSERT_TRUE(Platform::QueryVersionBlock(block, "\\", data, length));
        auto const & numbers = *static_cast<Platform::SFixedVersion const *>(data);
        EXPECT_EQ(7u << 16 | 10u, numbers.productVersionMS);
        EXPECT_EQ(2u << 16, numbers.productVersionLS);
    }
}

TEST_F(LibraryTest, TheProductsIntervalsAreTheSettledOnes)
{
    EXPECT_EQ(1000u, g_agentIntervals.firstWaitMs);
    EXPECT_EQ(30000u, g_agentIntervals.intervalMs);
    EXPECT_EQ(60000, g_agentIntervals.listenerSpanMs);
    EXPECT_EQ(180000, g_agentIntervals.listenerInitMs);
    EXPECT_EQ(50u, g_agentIntervals.closeLooks);
    EXPECT_EQ(100u, g_agentIntervals.closeLookMs);
    EXPECT_EQ(3000u, g_agentIntervals.firewallMs);
}

TEST_F(LibraryTest, ServesTheRegionAndTheAgentsOwnGroupWithoutACoreService)
{
    peer.StopListening();
    CLoadedExtension extension(KXRA_LIBRARY);
    CSession session(extension);
    ASSERT_TRUE(session.Started());
    EXPECT_EQ(std::vector<std::string>{kRoot}, session.Regions());
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return session.GetNext(kRoot).status == 0; }));
    EXPECT_EQ("Kestrix RAID SNMP agent", session.Get(std::string(kRoot) + ".1.1.1.0").value);
    EXPECT_EQ("Norvane", session.Get(std::string(kRoot) + ".1.1.2.0").value);
    EXPECT_EQ("7.10.2", session.Get(std::string(kRoot) + ".1.1.3.0").value);
    EXPECT_EQ("1.3.6.1.4.1.88417.2.50", session.GetNext(std::string(kRoot) + ".1.1.4.0").oid) << "the region's end";
    EXPECT_EQ(2u, session.Get(std::string(kRoot) + ".1.3.1.0").status);
}

TEST_F(LibraryTest, TheProductItselfTalksToTheCoreService)
{
    CLoadedExtension extension(KXRA_LIBRARY);
    CSession session(extension);
    CRawConnection connection = peer.AcceptAgent();
    ASSERT_TRUE(session.AwaitTrapEvent(static_cast<int>(kDeadlineMs)));
    STrap trap;
    ASSERT_TRUE(session.TakeTrap(trap));
    EXPECT_EQ("1.3.6.1.4.1.88417.2.49.2", trap.enterprise);
    EXPECT_EQ(6, trap.generic);
    EXPECT_EQ(2, trap.specific);
    EXPECT_EQ(8u, trap.bindings.size());
    EXPECT_FALSE(session.TakeTrap(trap));
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(Serve(connection, 1, AnswerOf(1, 0)));
    for (SShownObject const & object : ShownAfter(1, 0))
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] {
            return session.Get(std::string(kRoot) + "." + object.oid).value == object.value;
        })) << object.oid;
    EXPECT_EQ(4u, session.SetNumber(std::string(kRoot) + ".1.3.1.0", 1).status);
    connection.ShutdownSend();
}

TEST_F(LibraryTest, IsLoadedUsedAndUnloadedAgainAndAgainWithoutARest)
{
    auto const life = [&] {
        CLoadedExtension extension(KXRA_FAST_LIBRARY);
        CSession session(extension);
        CRawConnection connection = peer.AcceptAgent();
        EXPECT_TRUE(Flag(connection, kAllShown));
        for (unsigned int number = 1; number <= kShownRequests; ++number)
            EXPECT_TRUE(Serve(connection, number, AnswerOf(number, 0)));
        connection.ShutdownSend();
    };
    life();
    std::size_t const threads = Threads();
    std::uint32_t const handles = Handles();
    for (int i = 0; i < 10; ++i) {
        life();
        EXPECT_FALSE(IsLoaded(KXRA_FAST_LIBRARY)) << "it really goes";
    }
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return Threads() == threads; }));
    EXPECT_EQ(handles, Handles());
}

TEST_F(LibraryTest, AttachAndDetachWithoutAStartLeaveNothing)
{
    std::uint32_t handles = 0;
    for (int i = 0; i < 5; ++i) {
        {
            CLoadedExtension extension(KXRA_LIBRARY);
            EXPECT_EQ(1, extension.dllMain(nullptr, DLL_PROCESS_ATTACH, nullptr));
            EXPECT_EQ(1, extension.dllMain(nullptr, DLL_PROCESS_DETACH, nullptr));
        }
        EXPECT_FALSE(IsLoaded(KXRA_LIBRARY));
        if (i == 0) handles = Handles();
    }
    EXPECT_EQ(handles, Handles());
}

TEST_F(LibraryTest, ALibraryThatStaysLoadedIsAttachedAgain)
{
    CLoadedExtension extension(KXRA_FAST_LIBRARY);
    for (int i = 0; i < 3; ++i) {
        CSession session(extension);
        CRawConnection connection = peer.AcceptAgent();
        ASSERT_TRUE(Flag(connection, 0x2));
        ASSERT_TRUE(Serve(connection, 1, AnswerOf(1, 0)));
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return session.Get(std::string(kRoot) + ".1.3.1.0").status == 0; }));
        connection.ShutdownSend();
    }
}

TEST_F(LibraryTest, ACoreServiceThatHangsInMidFrameDoesNotKeepTheLibraryInMemory)
{
    {
        CLoadedExtension extension(KXRA_FAST_LIBRARY);
        CSession session(extension);
        CRawConnection connection = peer.AcceptAgent();
        ASSERT_TRUE(Flag(connection, 0x2));
        ASSERT_TRUE(connection.Expect(Wire::Request(1) + Wire::Int(1) + Wire::kWaitAck));
        connection.Send(Wire::Ack(0) + "\xB3");
        session.Close();
        EXPECT_TRUE(connection.AwaitClose());
    }
    EXPECT_FALSE(IsLoaded(KXRA_FAST_LIBRARY));
}

TEST_F(LibraryTest, LoadsWithoutAnyConfigurationAndWithABrokenOne)
{
    for (char const * const ini : {"[orDPatch]\nPort=none\n", "\xFF\xFE\x00[", "[orDPatch", "=\n[", ""}) {
        WriteFile("bin/orDPatch.ini", ini);
        CLoadedExtension extension(KXRA_FAST_LIBRARY);
        CSession session(extension);
        EXPECT_TRUE(session.Started());
    }
    WriteFile("registry.reg", "this is no registry\n[HKEY_LOCAL_MACHINE\\SOFTWARE\n\"Path\"=\n");
    CLoadedExtension broken(KXRA_FAST_LIBRARY);
    CSession session(broken);
    EXPECT_TRUE(session.Started());
    ::setenv("KXRA_REGISTRY", "/nowhere/registry.reg", 1);
    CLoadedExtension missing(KXRA_LIBRARY);
    EXPECT_EQ(1, missing.dllMain(nullptr, DLL_PROCESS_ATTACH, nullptr));
    EXPECT_EQ(1, missing.dllMain(nullptr, DLL_PROCESS_DETACH, nullptr));
}

} // namespace
