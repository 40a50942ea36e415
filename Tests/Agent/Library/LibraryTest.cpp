// KXRA_MIB as a host loads it.

#include "Agent/Src/Intervals.h"
#include "Platform/Module.h"
#include "Tests/Agent/Library/LibraryFixture.h"
#include "Tests/Support/ProcessThreads.h"

namespace {

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
    std::size_t const threads = ProcessThreads();
    std::uint32_t const handles = Handles();
    for (int i = 0; i < 10; ++i) {
        life();
        EXPECT_FALSE(IsLoaded(KXRA_FAST_LIBRARY)) << "it really goes";
    }
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return ProcessThreads() == threads; }));
    EXPECT_EQ(handles, Handles());
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
    registry.Write("this is no registry\n[HKEY_LOCAL_MACHINE\\SOFTWARE\n\"Path\"=\n");
    CLoadedExtension broken(KXRA_FAST_LIBRARY);
    CSession session(broken);
    EXPECT_TRUE(session.Started());
    registry.Write("");
    CLoadedExtension missing(KXRA_LIBRARY);
    missing.Call(DLL_PROCESS_ATTACH);
    missing.Call(DLL_PROCESS_DETACH);
}

} // namespace
