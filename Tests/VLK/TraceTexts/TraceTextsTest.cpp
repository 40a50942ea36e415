// What sockets, events and threads write to the foundation's trace.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "Native/SocketErrors.h"
#include "Native/Wine.h"
#include "SocketPair.h"
#include "Support/KeptTrace.h"

using namespace VLK;

namespace {

class TraceTextsTest : public CFoundationTest {
protected:
    ~TraceTextsTest() override { Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(0); }

    /// The texts that the work traces under this bit.
    template <class TWork>
    std::vector<std::string> Traced(std::uint32_t bit, TWork && work)
    {
        g_lines.clear();
        Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(bit);
        work();
        Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(0);
        std::vector<std::string> texts;
        for (SLine const & line : g_lines) {
            EXPECT_EQ(bit, line.flag);
            EXPECT_EQ(1u, line.module);
            texts.push_back(line.text);
        }
        return texts;
    }

    char m_Data[16] = {};
    unsigned long long m_uRead = 0;
};

using Texts = std::vector<std::string>;

TEST_F(TraceTextsTest, AReadOfAllTellsItsThreeSteps)
{
    SSocketPair pair;
    SendBytes(pair.server, {'a', 'b'});
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs));
    EXPECT_EQ((Texts{"Before recv() to read 2 bytes, ReadMode 0",
                     "After recv() we have read 2 bytes, CheckBlocking() return 1", "OK, we have read all (2) bytes"}),
              Traced(TraceInformation, [&] { pair.client.Read(m_Data, 2, nullptr, Sockets::RM_Normal); }));
    for (SLine const & line : g_lines)
        EXPECT_EQ("VLK::Sockets::CSocket::Read", line.function);
}

TEST_F(TraceTextsTest, APeekTellsItsMode)
{
    SSocketPair pair;
    SendBytes(pair.server, {'a', 'b'});
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs));
    EXPECT_EQ((Texts{"Before recv() to read 16 bytes, ReadMode 1",
                     "After recv() we have read 2 bytes, CheckBlocking() return 1"}),
              Traced(TraceInformation, [&] { pair.client.Read(m_Data, 16, &m_uRead, Sockets::RM_Peek); }));
}

TEST_F(TraceTextsTest, AReadOfNothingCountsItsAttempts)
{
    SSocketPair pair;
    EXPECT_EQ(
        (Texts{"Before recv() to read 10 bytes, ReadMode 0",
               "After recv() we have read -1 bytes, CheckBlocking() return 131", "URET_WouldBlock iteration = 1"}),
        Traced(TraceInformation, [&] { pair.client.Read(m_Data, 10, &m_uRead, Sockets::RM_Normal); }));
}

TEST_F(TraceTextsTest, AFailedReadTellsTheSystemsErrorAsWineCannotShow)
{
    if (RunsUnderWine()) GTEST_SKIP() << "Wine shows a reset as an orderly end";
    SSocketPair pair;
    CloseByReset(pair.server);
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs));
    EXPECT_EQ(
        (Texts{"Before recv() to read 10 bytes, ReadMode 0", "::GetLastError = " + std::to_string(kConnectionReset),
               "After recv() we have read -1 bytes, CheckBlocking() return 0"}),
        Traced(TraceInformation, [&] {
            EXPECT_EQ(Errors::SocketFunction,
                      RaisedBy([&] { pair.client.Read(m_Data, 10, &m_uRead, Sockets::RM_Normal); }));
        }));
}

TEST_F(TraceTextsTest, AFastEventTellsItsHandleTimeoutsAndResults)
{
    const Texts texts = Traced(TraceEvents, [] {
        Threading::CFastEvent event;
        event.Init(1);
        event.Wait(0);
        event.Set();
        event.Wait(0x1F);
    });
    ASSERT_EQ(6u, texts.size());
    const std::string created = "After CreateEvent handle=(";
    ASSERT_EQ(created, texts[0].substr(0, created.size()));
    const std::string handle = texts[0].substr(created.size(), texts[0].size() - created.size() - 1);
    EXPECT_EQ((Texts{created + handle + ")", "Before Tcb->Wait(" + handle + ", x0)",
                     "After Tcb->Wait(" + handle + ", x0)=130", "Before Tcb->Wait(" + handle + ", x1f)",
                     "After Tcb->Wait(" + handle + ", x1f)=1", "Before CloseHandle(" + handle + ")"}),
              texts);
}

TEST_F(TraceTextsTest, AThreadThatEndsWithAnExceptionSaysSoWithItsLog)
{
    unsigned int id = 0;
    const Texts texts = Traced(TraceErrors, [&] {
        Threading::CThread thread;
        StartThread(thread, [] { Threading::CEvent().Set(); });
        ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
        id = thread.GetThreadID();
    });
    ASSERT_EQ(1u, texts.size());
    char expected[80];
    std::snprintf(expected, sizeof expected, "QUIETSCH, Thread 0x%x has terminated with exception!!!\n", id);
    EXPECT_EQ(expected, texts[0].substr(0, std::string(expected).size()));
    EXPECT_NE(std::string::npos, texts[0].find("Synchronization object not initialized")) << texts[0];
}

} // namespace
