// The conversation with the core service.

#include <thread>

#include "Snmp/Frame/Globals.h"
#include "Tests/Agent/Support/AgentUnderTest.h"

namespace {

class PollHandlerTest : public CAgentTest {
protected:
    bool Shows(std::string const & root, std::vector<SShownObject> const & objects)
    {
        return HoldsWithin(kDeadline, [&] { return agent->Walk(root) == objects; });
    }
    bool Awaits(std::string const & line)
    {
        return HoldsWithin(kDeadline, [&] { return Traced(line); });
    }
};

TEST_F(PollHandlerTest, TheHandshakeIsVersion267AndThenTheAgentIsSilent)
{
    Start();
    std::optional<CRawConnection> connection = peer.Accept(kDeadlineMs);
    ASSERT_TRUE(connection.has_value());
    EXPECT_EQ("00 00 01 0B A9 01 00 ", Wire::Hex(connection->Receive(7)));
    connection->Send(Wire::kWelcome);
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    EXPECT_TRUE(Awaits("\nnach PSock.CanRead() tRet=131\n"));
    EXPECT_TRUE(connection->IsSilentFor(50));
    ExpectTraced({"\nStart Thread_PollHandler.", "\ntoConnect-Status 1", "\nWaiter init0.", "\nTimeout.",
                  "\nConnect localhost.", "\nConnected localhost.", "\nAttached.", "\nStart SendTrap.",
                  "\nEnd SendTrap.", "\nWaiter init 1.", "\nStart While-Schleife.", "\nvor PSock.CanRead()\n",
                  "\nnach PSock.CanRead() tRet=131\n"});
}

TEST_F(PollHandlerTest, AMaskOfSixRunsRequestsOneAndTwoInThatOrderEachInItsOwnCycle)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(connection.Send(Wire::kEventsPending));
    EXPECT_EQ("04 ", Wire::Hex(connection.Receive(1)));
    ASSERT_TRUE(connection.Send(Wire::Events(6)));
    EXPECT_EQ("88 01 C1 01 ", Wire::Hex(connection.Receive(4)));
    EXPECT_TRUE(connection.IsSilentFor(20)) << "the next request comes behind the answer";
    ASSERT_TRUE(connection.Send(Wire::Ack(0) + Wire::Int(1) + AnswerOf(1, 0) + Wire::kEndAck));
    EXPECT_EQ("88 02 C1 01 ", Wire::Hex(connection.Receive(4)));
    ASSERT_TRUE(connection.Send(Wire::Ack(0) + Wire::Int(1) + AnswerOf(2, 0) + Wire::kEndAck));
    EXPECT_TRUE(Shows("1.3.", ShownAfter(1, 0)));
    EXPECT_TRUE(Shows("1.4.2.", ShownAfter(2, 0)));
    ExpectTraced({"\ntRet=1\n",
                  "\nCSock.IsConnected()=1\n",
                  "\nFlags=6\n",
                  "\nPrüfe Event-Flag.",
                  "\nFlags=7\n",
                  "\nrequest=0\n",
                  "\nPrüfe Event-Flag.",
                  "\nFlags=5\n",
                  "\nrequest=1\n",
                  "\nDaten werden ausgewertet!",
                  "\nAdapterStatus:Phase 1",
                  "\nAdapterStatus:Phase 2",
                  "\n-- Delete \"kxrStatus\" group --",
                  "\n-- Insert \"kxrStatus\" group --",
                  "\nAdapterStatus:Phase 3",
                  "\nPSock.Skip:Phase 4",
                  "\nDaten wurden ... ",
                  "              ... ausgewertet!",
                  "\nPrüfe Event-Flag.",
                  "\nFlags=1\n",
                  "\nrequest=2\n",
                  "\nDaten werden ausgewertet!",
                  "\nAdapterTable:Phase 1",
                  "\nAdapterTable:Phase 2",
                  "\nAdapterTable:Phase 3",
                  "\nPSock.Skip:Phase 4"});
    EXPECT_TRUE(Awaits("              ... URET_WaitObject0: alle events abgehandelt!"));
    EXPECT_TRUE(Awaits("\nEnde eines Schleifendurchgangs"));
}

TEST_F(PollHandlerTest, TheWalkOverTheFlippedBitsEndsAtTheSixtyFifthPosition)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(Serve(connection, 1, AnswerOf(1, 0)));
    ASSERT_TRUE(Awaits("              ... URET_WaitObject0: alle events abgehandelt!"));
    EXPECT_EQ(65u, TimesTraced("\nPrüfe Event-Flag."));
    EXPECT_TRUE(Traced("\nrequest=40\n")) << "where the position counts modulo 64 and finds bit 0 as it was left";
    EXPECT_FALSE(Traced("\nrequest=41\n"));
}

struct SMask {
    char const * name;
    std::uint64_t mask;
    std::vector<unsigned int> requests;
};
void PrintTo(SMask const & mask, std::ostream * out)
{
    *out << std::hex << mask.mask;
}

class MaskTest : public PollHandlerTest, public testing::WithParamInterface<SMask> {};

TEST_P(MaskTest, ServesTheseRequestsAndNoOthers)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, GetParam().mask));
    for (unsigned int const number : GetParam().requests)
        ASSERT_TRUE(Serve(connection, number, AnswerOf(number, 0)));
    EXPECT_TRUE(Awaits(GetParam().mask == 0 ? "              ... URET_WaitObject0: null event (0) abgehandelt!"
                                            : "              ... URET_WaitObject0: alle events abgehandelt!"));
    EXPECT_TRUE(connection.IsSilentFor(20));

    // What was dropped isn't remembered.
    ASSERT_TRUE(Flag(connection, 0x2));
    EXPECT_TRUE(Serve(connection, 1, AnswerOf(1, 1)));
    EXPECT_TRUE(Shows("1.3.", ShownAfter(1, 1)));
    EXPECT_TRUE(connection.IsSilentFor(20));
}

INSTANTIATE_TEST_SUITE_P(
    Masks, MaskTest,
    testing::Values(SMask{"Nothing", 0x0, {}}, SMask{"BitZeroAlone", 0x1, {}},
                    SMask{"BitZeroEndsTheWalkAtOnce", 0x7, {}}, SMask{"BitsOneAndTwo", 0x6, {1, 2}},
                    SMask{"BitTenIsDropped", 0x402, {1}}, SMask{"BitTenAlone", 0x400, {}},
                    SMask{"BitSixtyThreeIsDropped", 0x8000000000000004u, {2}}, SMask{"AllOnes", ~std::uint64_t{0}, {}},
                    SMask{"AllButBitZero", ~std::uint64_t{1}, {1, 2, 3, 4, 5, 6, 7, 8, 9}},
                    SMask{"EveryRequest", kAllFlags, {1, 2, 3, 4, 5, 6, 7, 8, 9}}, SMask{"Events", 0x200, {9}}),
    [](auto const & test) { return std::string(test.param.name); });

struct STraceName {
    unsigned int number;
    char const * name;
};
void PrintTo(STraceName const & request, std::ostream * out)
{
    *out << request.number;
}

class TraceNameTest : public PollHandlerTest, public testing::WithParamInterface<STraceName> {};

TEST_P(TraceNameTest, NamesItsThreePhases)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 1ull << GetParam().number));
    ASSERT_TRUE(Serve(connection, GetParam().number, AnswerOf(GetParam().number, 0)));
    ASSERT_TRUE(Awaits("              ... URET_WaitObject0: alle events abgehandelt!"));
    std::string const name = std::string("\n") + GetParam().name;
    ExpectTraced({name + ":Phase 1", name + ":Phase 2", name + ":Phase 3", "\nPSock.Skip:Phase 4"});
}

INSTANTIATE_TEST_SUITE_P(Requests, TraceNameTest,
                         testing::Values(STraceName{1, "AdapterStatus"}, STraceName{2, "AdapterTable"},
                                         STraceName{3, "AdapterInfo"}, STraceName{4, "LogicalDriveTable"},
                                         STraceName{5, "LogicalDriveInfo"}, STraceName{6, "PhysicalDeviceTable"},
                                         STraceName{7, "PhysicalDeviceInfo"},
                                         STraceName{8, "LogicalDriveContentsTable"}),
                         [](auto const & test) { return std::string(test.param.name); });

TEST_F(PollHandlerTest, ThePeersMibVersionIsNotCompared)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(connection.Expect(Wire::Request(1) + Wire::Int(1) + Wire::kWaitAck));
    connection.Send(Wire::Ack(77) + Wire::Int(-4711) + AnswerOf(1, 0) + Wire::kEndAck);
    EXPECT_TRUE(Shows("1.3.", ShownAfter(1, 0)));
}

TEST_F(PollHandlerTest, FramesBehindTheRecordAreSkipped)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x6));
    ASSERT_TRUE(Serve(connection, 1, AnswerOf(1, 0) + Wire::Int(1000) + Wire::Text("more") + Wire::Int(7)));
    ASSERT_TRUE(Serve(connection, 2, AnswerOf(2, 0)));
    EXPECT_TRUE(Shows("1.4.2.", ShownAfter(2, 0)));
}

TEST_F(PollHandlerTest, KeepAlivesAndNoticesAmongTheFramesAreNoticed)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(connection.Expect(Wire::Request(1) + Wire::Int(1) + Wire::kWaitAck));
    connection.Send(Wire::kKeepAlive + Wire::Ack(0) + Wire::kEventsPending + Wire::Int(1) + Wire::kKeepAlive +
                    AnswerOf(1, 0) + Wire::kKeepAlive + Wire::kEndAck);
    // The notice that came during the request is served without a further one.
    ASSERT_TRUE(connection.Expect(Wire::kGetEvents));
    connection.Send(Wire::Events(0x4));
    ASSERT_TRUE(Serve(connection, 2, AnswerOf(2, 0)));
    EXPECT_TRUE(Shows("1.4.2.", ShownAfter(2, 0)));
}

TEST_F(PollHandlerTest, ALostConnectionSendsUnexpectedDisconnectAndTheAgentComesBack)
{
    g_agentIntervals.intervalMs = 20;
    CRawConnection first = StartConnected();
    first.Close();
    EXPECT_EQ(4, agent->AwaitTrap().specific);
    CRawConnection second = peer.AcceptAgent();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    EXPECT_TRUE(Traced("\nCSock.IsConnected()=0\n"));
    EXPECT_EQ(1, agent->m_AgentState);
}

TEST_F(PollHandlerTest, AServiceThatStaysDownIsReportedOnceAtTheLoss)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection first = StartConnected();
    peer.StopListening();
    first.Close();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] {
        return TimesTraced("\nKestrix RAID Agent konnte sich nicht mit dem ORBA Service verbinden!") >= 3;
    }));
    EXPECT_EQ(std::vector<int>{4}, agent->TrapNumbers());
    ExpectTraced({"\nCatch: Exeption-Status 1", "\nCatch: toConnect-Status 1",
                  "\nKestrix RAID Agent konnte sich nicht mit dem ORBA Service verbinden!"});
    EXPECT_EQ(3, agent->m_AgentState);
}

TEST_F(PollHandlerTest, ARefusedAttachIsAFailureOfStepTwoWithoutATrap)
{
    g_agentIntervals.intervalMs = 5;
    Start();
    std::optional<CRawConnection> connection = peer.Accept(kDeadlineMs);
    ASSERT_TRUE(connection.has_value());
    ASSERT_TRUE(connection->Expect(Wire::kHello));
    connection->Send(Wire::kRefusal);
    EXPECT_TRUE(Awaits("\nCatch: Exeption-Status 2"));
    EXPECT_TRUE(connection->AwaitClose());
    EXPECT_TRUE(agent->TrapNumbers().empty());
    CRawConnection again = peer.AcceptAgent();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    EXPECT_EQ(3, agent->m_AgentState) << "nothing restores the state";
}

TEST_F(PollHandlerTest, APeerThatClosesAtOnceIsAFailureOfStepTwo)
{
    g_agentIntervals.intervalMs = 5;
    Start();
    std::optional<CRawConnection> connection = peer.Accept(kDeadlineMs);
    ASSERT_TRUE(connection.has_value());
    connection->Close();
    EXPECT_TRUE(Awaits("\nCatch: Exeption-Status 2"));
    CRawConnection again = peer.AcceptAgent();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
}

TEST_F(PollHandlerTest, AFailureInsideGetEventsSendsDisconnectedAndNotUnexpectedDisconnect)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(connection.Send(Wire::kEventsPending));
    ASSERT_TRUE(connection.Expect(Wire::kGetEvents));
    connection.Send(Wire::Int(5)); // no event mask
    EXPECT_EQ(3, agent->AwaitTrap().specific);
    EXPECT_TRUE(Awaits("\nCatch: Exeption-Status 5"));
    CRawConnection again = peer.AcceptAgent();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
}

TEST_F(PollHandlerTest, GarbageOutsideARequestIsAFailureOfStepFive)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection connection = StartConnected();
    connection.Send("garbage");
    EXPECT_EQ(3, agent->AwaitTrap().specific);
    EXPECT_TRUE(Awaits("\nCatch: Exeption-Status 5"));
    CRawConnection again = peer.AcceptAgent();
}

struct SBadAnswer {
    char const * name;
    Wire::CBytes answer; ///< behind the request's frames
    int step;
};
void PrintTo(SBadAnswer const & answer, std::ostream * out)
{
    *out << Wire::Hex(answer.answer);
}

class BadAnswerTest : public PollHandlerTest, public testing::WithParamInterface<SBadAnswer> {};

TEST_P(BadAnswerTest, EndsTheConnectionWithoutATrapAndLeavesTheOldGroup)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(Serve(connection, 1, AnswerOf(1, 0)));
    ASSERT_TRUE(Shows("1.3.", ShownAfter(1, 0)));
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(connection.Expect(Wire::Request(1) + Wire::Int(1) + Wire::kWaitAck));
    connection.Send(GetParam().answer);
    EXPECT_TRUE(Awaits("\nCatch: Exeption-Status " + std::to_string(GetParam().step)));
    EXPECT_TRUE(connection.AwaitClose());
    EXPECT_EQ(ShownAfter(1, 0), agent->Walk("1.3."));
    EXPECT_TRUE(agent->TrapNumbers().empty());
    EXPECT_EQ(3, agent->m_AgentState);
    CRawConnection again = peer.AcceptAgent();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    ASSERT_TRUE(Flag(again, 0x2));
    ASSERT_TRUE(Serve(again, 1, AnswerOf(1, 1)));
    EXPECT_TRUE(Shows("1.3.", ShownAfter(1, 1)));
}

Wire::CBytes BehindVersion(Wire::CBytes const & bytes)
{
    return Wire::Ack(0) + Wire::Int(1) + bytes;
}

INSTANTIATE_TEST_SUITE_P(
    Answers, BadAnswerTest,
    testing::Values(SBadAnswer{"NoAck", Wire::Int(1), 7}, SBadAnswer{"ATagThatIsRefused", Wire::CBytes("\x10", 1), 7},
                    SBadAnswer{"ATextForTheVersion", Wire::Ack(0) + Wire::Text("1"), 8},
                    SBadAnswer{"ATextForANumber", BehindVersion(Wire::Int(1) + Wire::Text("x")), 8},
                    SBadAnswer{"ANumberOfMoreThan32Bits", BehindVersion(Wire::Int(2147483648LL)), 8},
                    SBadAnswer{"ANumberOf64Bits",
                               BehindVersion(Wire::CBytes("\xB7\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 9)), 8},
                    SBadAnswer{"TheEndTooEarly", BehindVersion(Wire::Int(1) + Wire::Int(2) + Wire::kEndAck), 8},
                    SBadAnswer{"ATagThatIsRefusedAmongTheData", BehindVersion(Wire::Int(1) + "\x07"), 8}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(PollHandlerTest, TheTerminateEventDuringAConnectionClosesItInOrderWithOneTrap)
{
    CRawConnection connection = StartConnected();
    agent->m_Terminate.Set();
    EXPECT_EQ("00 ", Wire::Hex(connection.Receive(1)));
    EXPECT_EQ("", Wire::Hex(connection.Receive(1))) << "and the agent's sending has ended";
    connection.Close();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return HasEnded(); }));
    EXPECT_EQ(std::vector<int>{3}, agent->TrapNumbers());
    ExpectTraced({"\ntRet=3\n", "switch URET_WaitObject2", "\nStart SendTrap.", "\nEnde eines Schleifendurchgangs",
                  "\nEnde While-Schleife.", "\nFinish Thread_PollHandler."});
}

TEST_F(PollHandlerTest, TheTerminateEventBeforeTheFirstConnectionSendsOneTrapToo)
{
    g_agentIntervals.firstWaitMs = 30000;
    Start();
    agent->m_Terminate.Set();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return HasEnded(); }));
    EXPECT_EQ(std::vector<int>{3}, agent->TrapNumbers());
    ExpectTraced({"\nTerminate.", "\nFinish Thread_PollHandler."});
}

TEST_F(PollHandlerTest, TheTerminateEventBetweenTwoAttemptsEndsTheThreadAtOnce)
{
    CRawConnection connection = StartConnected();
    peer.StopListening();
    connection.Close();
    EXPECT_EQ(4, agent->AwaitTrap().specific);
    agent->m_Terminate.Set();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return HasEnded(); }));
    EXPECT_EQ(std::vector<int>{3}, agent->TrapNumbers());
}

TEST_F(PollHandlerTest, AShutdownIsSeenWhenAnEventMaskOfZeroComes)
{
    CRawConnection connection = StartConnected();
    connection.Send(Wire::kEventsPending);
    ASSERT_TRUE(connection.Expect(Wire::kGetEvents));
    // The handshake's own data may have woken the thread once for nothing; from here on it waits for the mask.
    std::string const nullEvent = "              ... URET_WaitObject0: null event (0) abgehandelt!";
    std::size_t const nullEvents = TimesTraced(nullEvent);
    SignalShutdown();
    connection.Send(Wire::Events(0));
    ASSERT_TRUE(connection.Expect(Wire::kClose));
    connection.Close();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return HasEnded(); }));
    EXPECT_EQ(std::vector<int>{3}, agent->TrapNumbers());
    EXPECT_TRUE(Traced("\nDer Service will terminieren"));
    EXPECT_EQ(nullEvents, TimesTraced(nullEvent));
}

TEST_F(PollHandlerTest, AShutdownIsSeenAheadOfEachRequest)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x6));
    ASSERT_TRUE(connection.Expect(Wire::Request(1) + Wire::Int(1) + Wire::kWaitAck));
    SignalShutdown();
    connection.Send(Wire::Ack(0) + Wire::Int(1) + AnswerOf(1, 0) + Wire::kEndAck);
    ASSERT_TRUE(connection.Expect(Wire::kClose)) << "and not request 2";
    connection.Close();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return HasEnded(); }));
    EXPECT_EQ(std::vector<int>{3}, agent->TrapNumbers());
    ExpectTraced({"\nDer Service will terminieren", "              ... URET_WaitObject0: alle events abgehandelt!"});
}

TEST_F(PollHandlerTest, AShutdownIsSeenAtATick)
{
    g_agentIntervals.intervalMs = 20;
    CRawConnection connection = StartConnected();
    SignalShutdown();
    ASSERT_TRUE(connection.Expect(Wire::kClose));
    connection.Close();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return HasEnded(); }));
    ExpectTraced({"\ntRet=130\n", "\nDer Service will terminieren"});
}

TEST_F(PollHandlerTest, OnAHostWithoutManagementServicesATickDoesNothing)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return TimesTraced("\ntRet=130\n") >= 5; }));
    EXPECT_TRUE(connection.IsSilentFor(10));
    EXPECT_TRUE(agent->TrapNumbers().empty());
    for (std::string const & line : Trace())
        EXPECT_FALSE(line.starts_with("\nStartTime") || line.starts_with("\nWait ")) << line;
}

TEST_F(PollHandlerTest, AChattyPeerWithoutFlagsPutsTheTickOff)
{
    g_agentIntervals.intervalMs = 2000;
    CRawConnection connection = StartConnected();
    auto const end = std::chrono::steady_clock::now() + std::chrono::milliseconds(3000);
    while (std::chrono::steady_clock::now() < end) {
        ASSERT_TRUE(connection.Send(Wire::kEventsPending));
        ASSERT_TRUE(connection.Expect(Wire::kGetEvents));
        ASSERT_TRUE(connection.Send(Wire::Events(0)));
    }
    EXPECT_FALSE(Traced("\ntRet=130\n"));
}

TEST_F(PollHandlerTest, AFailureOutsideTheConversationEndsTheThreadForGood)
{
    g_agentIntervals.intervalMs = 5;
    g_agentIntervals.closeLooks = 1;
    CRawConnection connection = StartConnected();
    agent->CloseMib(); // the peer doesn't close, so the thread is broken off
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return HasEnded(); }));
}

} // namespace
