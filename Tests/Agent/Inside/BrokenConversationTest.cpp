// A core service that goes away in the middle of anything.

#include <future>

#include "Platform/Process.h"
#include "Tests/Agent/Support/AgentUnderTest.h"

namespace {

class BrokenConversationTest : public CAgentTest {
protected:
    BrokenConversationTest()
    {
        g_agentIntervals.intervalMs = 1;
        Fake::EnableTrace(false);
    }

    /// Serves everything that a mask of all flags asks for.
    static bool ServeAll(CRawConnection & connection, unsigned int variant)
    {
        if (!Flag(connection, kAllFlags)) return false;
        for (unsigned int number = 1; number <= 9; ++number)
            if (!Serve(connection, number, AnswerOf(number, variant))) return false;
        return true;
    }

    /// What the peer says in that conversation, the notice and the mask included, piece by piece with what it waits
    /// for ahead of each.
    struct SPiece {
        Wire::CBytes expected;
        Wire::CBytes sent;
    };
    static std::vector<SPiece> Conversation(unsigned int variant)
    {
        std::vector<SPiece> pieces{
            {Wire::kHello, Wire::kWelcome}, {"", Wire::kEventsPending}, {Wire::kGetEvents, Wire::Events(kAllFlags)}};
        for (unsigned int number = 1; number <= 9; ++number)
            pieces.push_back({Wire::Request(number) + Wire::Int(1) + Wire::kWaitAck,
                              Wire::Ack(0) + Wire::Int(1) + AnswerOf(number, variant) + Wire::kEndAck});
        return pieces;
    }
    static std::size_t SizeOf(std::vector<SPiece> const & pieces)
    {
        std::size_t size = 0;
        for (SPiece const & piece : pieces)
            size += piece.sent.size();
        return size;
    }
    /// Says so many bytes of it and closes.
    static void SayAndClose(CRawConnection & connection, std::vector<SPiece> const & pieces, std::size_t bytes)
    {
        for (SPiece const & piece : pieces) {
            ASSERT_EQ(Wire::Hex(piece.expected), Wire::Hex(connection.Receive(piece.expected.size())));
            connection.Send(piece.sent.substr(0, bytes));
            if (bytes < piece.sent.size()) break;
            bytes -= piece.sent.size();
        }
        connection.ShutdownSend();
        EXPECT_TRUE(connection.AwaitClose() || connection.AwaitClose());
        connection.Close();
    }
    CRawConnection NextConnection()
    {
        std::optional<CRawConnection> connection = peer.Accept(kDeadlineMs);
        if (!connection) {
            ADD_FAILURE() << "the agent doesn't come back";
            return CRawConnection(Platform::NoSocket);
        }
        return std::move(*connection);
    }
    /// How many groups show the variant wholly; every other one must show `other` wholly.
    unsigned int GroupsOf(unsigned int variant, unsigned int other)
    {
        unsigned int count = 0;
        for (unsigned int number = 1; number <= kShownRequests; ++number) {
            std::vector<SShownObject> const shown = agent->Walk(RootOf(number));
            if (shown == ShownAfter(number, variant)) {
                ++count;
            } else {
                EXPECT_EQ(ShownAfter(number, other), shown) << "group of request " << number;
            }
        }
        return count;
    }
};

TEST_F(BrokenConversationTest, AClosedConnectionAtAnyByteLeavesEachGroupWholeAndTheAgentComesBack)
{
    std::vector<SPiece> const conversation = Conversation(1);
    std::size_t const size = SizeOf(conversation);
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(ServeAll(connection, 0));
    connection.ShutdownSend();
    std::uint32_t handles = 0;
    for (std::size_t cut = 0; cut <= size; ++cut) {
        SCOPED_TRACE("closed behind byte " + std::to_string(cut));
        connection = NextConnection();
        SayAndClose(connection, conversation, cut);
        // Back at the next attempt, with each group either wholly old or wholly new.
        connection = peer.AcceptAgent();
        GroupsOf(1, 0);
        ASSERT_TRUE(ServeAll(connection, 0));
        ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return agent->Walk(RootOf(8)) == ShownAfter(8, 0); }));
        connection.ShutdownSend();
        ASSERT_TRUE(connection.AwaitClose() || connection.AwaitClose());
        connection.Close();
        agent->TrapNumbers();
        std::uint32_t now = 0;
        if (cut % 100 == 10) {
            ASSERT_TRUE(Platform::HandleCount(now));
            if (handles == 0) handles = now;
            EXPECT_LE(now, handles + 3) << "of the connection that may be coming up at this moment";
        }
        if (testing::Test::HasFailure()) return;
    }
}

TEST_F(BrokenConversationTest, AClosedConnectionInTheProgressExchangeReleasesTheReaderAtAnyByte)
{
    Wire::CBytes const answer = Wire::Ack(0) + Wire::Int(1) + Wire::Int(100000) + Wire::kEndAck;
    CRawConnection connection = StartConnected();
    for (std::size_t cut = 0; cut < answer.size(); ++cut) {
        auto call = std::async(std::launch::async, [this] {
            RFC1157VarBind binding{};
            std::uint32_t arcs[2] = {3, 5};
            binding.name.idLength = 2;
            binding.name.ids = arcs;
            binding.value.asnType = ASN_NULL;
            return agent->fGetProgress(&binding, 0);
        });
        ASSERT_TRUE(connection.Expect(Wire::Request(11) + Wire::Int(1) + Wire::Int(3) + Wire::Int(5) + Wire::kWaitAck));
        connection.Send(answer.substr(0, cut));
        connection.Close();
        EXPECT_EQ(0u, call.get()) << "cut at " << cut;
        connection = peer.AcceptAgent();
    }
}

TEST_F(BrokenConversationTest, TheZeroByteOfAClosedConnectionCompletesTheLastValueOfARecordAsSettled)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(connection.Expect(Wire::Request(1) + Wire::Int(1) + Wire::kWaitAck));
    Wire::CBytes const status = Wire::Int(1) + Wire::Int(2) + Wire::Int(3) + Wire::Int(1000); // ends in B1 03 E8
    connection.Send(Wire::Ack(0) + Wire::Int(1) + status.substr(0, status.size() - 1));
    connection.ShutdownSend();
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] {
        return agent->Get("1.3.4.0").value_or(SShownObject{}).value == "768"; // B1 03 00
    }));
}

TEST_F(BrokenConversationTest, TheZeroByteOfAClosedConnectionCompletesTheHandshakeAsSettledAndTheAgentComesBack)
{
    Start();
    CRawConnection connection = NextConnection();
    ASSERT_TRUE(connection.Expect(Wire::kHello));
    connection.Send(Wire::kWelcome.substr(0, 2)); // A9 01, and the zero byte that belongs there anyway
    connection.ShutdownSend();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    EXPECT_EQ(3, agent->AwaitTrap().specific);
    EXPECT_TRUE(connection.AwaitClose());
    CRawConnection again = peer.AcceptAgent();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
}

TEST_F(BrokenConversationTest, APeerThatStopsInMidFrameHoldsOnlyTheConversationUp)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(ServeAll(connection, 0));
    ASSERT_TRUE(Flag(connection, 0x40));
    ASSERT_TRUE(connection.Expect(Wire::Request(6) + Wire::Int(1) + Wire::kWaitAck));
    Wire::CBytes const answer = Wire::Ack(0) + Wire::Int(1) + AnswerOf(6, 1) + Wire::kEndAck;
    connection.Send(answer.substr(0, answer.size() / 2));
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(ShownAfter(6, 0), agent->Walk(RootOf(6)));
    connection.Send(answer.substr(answer.size() / 2));
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return agent->Walk(RootOf(6)) == ShownAfter(6, 1); }));
}

TEST_F(BrokenConversationTest, ALengthBeyondAllMemoryIsAFailureLikeAnyOther)
{
    for (char const * const length : {"\x9F\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", "\x9F\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}) {
        CRawConnection connection = agent == nullptr ? StartConnected() : peer.AcceptAgent();
        ASSERT_TRUE(Flag(connection, 0x4));
        ASSERT_TRUE(connection.Expect(Wire::Request(2) + Wire::Int(1) + Wire::kWaitAck));
        connection.Send(Wire::Ack(0) + Wire::Int(1) + Wire::Int(1) + Wire::Int(7) + Wire::CBytes(length, 9));
        EXPECT_TRUE(connection.AwaitClose());
    }
    CRawConnection again = peer.AcceptAgent();
    ASSERT_TRUE(ServeAll(again, 0));
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return agent->Walk(RootOf(8)) == ShownAfter(8, 0); }));
}

TEST_F(BrokenConversationTest, ACountBeyondAllMemoryIsAFailureWhenTheDataEnds)
{
    for (unsigned int const number : {2u, 4u, 6u, 8u, 9u}) {
        CRawConnection connection = agent == nullptr ? StartConnected() : peer.AcceptAgent();
        ASSERT_TRUE(Flag(connection, 1ull << number));
        ASSERT_TRUE(connection.Expect(Wire::Request(number) + Wire::Int(1) + Wire::kWaitAck));
        connection.Send(Wire::Ack(0) + Wire::Int(1) + Wire::Int(2147483647) + AnswerOf(number, 0).substr(1));
        connection.ShutdownSend();
        EXPECT_TRUE(connection.AwaitClose());
        EXPECT_TRUE(agent->Walk("1.4.").empty());
    }
    CRawConnection again = peer.AcceptAgent();
}

TEST_F(BrokenConversationTest, EveryByteAloneInPlaceOfAnAnswerIsSurvived)
{
    CRawConnection connection = StartConnected();
    for (unsigned int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        ASSERT_TRUE(Flag(connection, 0x4));
        ASSERT_TRUE(connection.Expect(Wire::Request(2) + Wire::Int(1) + Wire::kWaitAck));
        connection.Send(Wire::Ack(0) + Wire::Int(1) + Wire::CBytes(300, static_cast<char>(byte)));
        connection.ShutdownSend();
        ASSERT_TRUE(connection.AwaitClose() || connection.AwaitClose());
        connection = peer.AcceptAgent();
    }
    ASSERT_TRUE(ServeAll(connection, 0));
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return agent->Walk(RootOf(8)) == ShownAfter(8, 0); }));
}

TEST_F(BrokenConversationTest, AnAgentThatIsStoppedAtAnyMomentOfAConversationEnds)
{
    std::vector<SPiece> const conversation = Conversation(0);
    g_agentIntervals.closeLooks = 3;
    g_agentIntervals.breakOffMs = kDeadlineMs;
    for (std::size_t cut = 0; cut < SizeOf(conversation); cut += 37) {
        Start();
        CRawConnection connection = NextConnection();
        std::size_t left = cut;
        for (SPiece const & piece : conversation) {
            ASSERT_EQ(Wire::Hex(piece.expected), Wire::Hex(connection.Receive(piece.expected.size())));
            connection.Send(piece.sent.substr(0, left));
            if (left < piece.sent.size()) break;
            left -= piece.sent.size();
        }
        agent->CloseMib();
        EXPECT_FALSE(agent->m_PollThread.WasTerminated()) << "cut at " << cut;
        agent.reset();
    }
}

} // namespace
