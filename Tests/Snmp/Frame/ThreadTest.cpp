#include "Snmp/Frame/Thread.h"

#include "FrameFixture.h"
#include "Snmp/Frame/Intervals.h"
#include "Support/Deadline.h"

namespace {

/// A body that runs until it is released, and its counters.
struct SBody {
    void Release() { release.Open(); }
    bool Ends()
    {
        return HoldsWithin(kDeadline, [this] { return ended.load(); });
    }
    static std::uint32_t Run(void * argument) noexcept
    {
        SBody & body = *static_cast<SBody *>(argument);
        body.entered = true;
        body.release.Pass();
        body.ended = true;
        return 7;
    }

    CGate release;
    std::atomic<bool> entered{false}, ended{false};
};

class FrameThreadTest : public FrameTest {
protected:
    /// The body has begun when this returns: a thread that is killed before never runs.
    void StartBody(CThread & thread)
    {
        ASSERT_TRUE(thread.Start(&SBody::Run, &m_body, 0));
        ASSERT_TRUE(HoldsWithin(kDeadline, [this] { return m_body.entered.load(); }));
    }
    /// The body never ends, or, where no thread can be ended by force, ends by itself before the test does.
    void ExpectKilled()
    {
        m_body.Release();
        if (Platform::TerminatedThreadsGoOn()) {
            EXPECT_TRUE(m_body.Ends());
        } else {
            EXPECT_FALSE(m_body.ended);
        }
    }
    SBody m_body;
};

} // namespace

TEST_F(FrameThreadTest, AFreshRecordHasNothingAndTerminates)
{
    const CThread thread;
    EXPECT_FALSE(thread.handle);
    EXPECT_EQ("", thread.name);
    EXPECT_EQ(0u, thread.id);
    EXPECT_EQ(0u, thread.lastError);
    EXPECT_EQ(1, thread.bTerminateThread);
    EXPECT_FALSE(thread.WasTerminated());
}

TEST_F(FrameThreadTest, WithoutAThreadWaitingAndKillingSucceed)
{
    CThread thread;
    EXPECT_EQ(1, thread.WaitForThreadExit(Platform::Infinite));
    EXPECT_EQ(1, thread.KillThread(0));
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_TRUE(Fake::TraceLines().empty());
}

TEST_F(FrameThreadTest, WaitingForARunningThreadTimesOut)
{
    CThread thread;
    StartBody(thread);
    EXPECT_TRUE(thread.IsRunning());
    EXPECT_EQ(0, thread.WaitForThreadExit(0));
    m_body.Release();
    EXPECT_EQ(1, thread.WaitForThreadExit(kDeadlineMs));
    EXPECT_EQ(1, thread.WaitForThreadExit(0)) << "a thread that has ended";
    EXPECT_FALSE(thread.IsRunning());
}

TEST_F(FrameThreadTest, KillingAThreadThatHasEndedClosesTheHandleWithoutAWarning)
{
    CThread thread;
    StartBody(thread);
    m_body.Release();
    ASSERT_EQ(1, thread.WaitForThreadExit(kDeadlineMs));
    EXPECT_EQ(1, thread.KillThread(0));
    EXPECT_FALSE(thread.handle);
    EXPECT_FALSE(thread.WasTerminated());
    EXPECT_TRUE(Fake::TraceLines().empty());
}

TEST_F(FrameThreadTest, KillingARunningThreadWarnsAndClosesTheHandle)
{
    CThread thread;
    thread.name = "worker";
    StartBody(thread);
    const std::uint32_t killed = CThread::TerminatedCount();
    EXPECT_EQ(1, thread.KillThread(0));
    EXPECT_FALSE(thread.handle);
    EXPECT_TRUE(thread.WasTerminated());
    EXPECT_EQ(killed + 1, CThread::TerminatedCount());
    EXPECT_EQ((Lines{{1, "\n\n## WARNING! RUNNING THREAD " + std::to_string(thread.id) +
                             " (\"worker\") TERMINATED!  ###\n"}}),
              Fake::TraceLines());
    ExpectKilled();
}

TEST_F(FrameThreadTest, AThreadThatCannotStartLeavesItsError)
{
    g_fakes.startThreadError = kFakeError;
    CThread thread;
    EXPECT_FALSE(thread.Start(&SBody::Run, &m_body, 0));
    EXPECT_EQ(kFakeError, thread.lastError);
    EXPECT_FALSE(thread.handle);
}

TEST_F(FrameThreadTest, TheRecordsEndWaitsForItsThread)
{
    {
        CThread thread;
        thread.name = "ends";
        StartBody(thread);
        m_body.Release();
    }
    EXPECT_EQ((Lines{{5, "\n~CThread - name=\"ends\" (bTerminateThread=1)"}}), Fake::TraceLines());
    EXPECT_TRUE(m_body.Ends());
}

TEST_F(FrameThreadTest, TheRecordsEndKillsAThreadThatGoesOn)
{
    g_frameIntervals.recordKillMs = 20;
    {
        CThread thread;
        StartBody(thread);
    }
    EXPECT_EQ(1u, CountTraced("\n~CThread - name=\"\" (bTerminateThread=1)"));
    EXPECT_EQ(1u, CountTraced("TERMINATED!  ###\n"));
    ExpectKilled();
}

TEST_F(FrameThreadTest, TheRecordsEndLeavesTheThreadAloneWithoutTheFlag)
{
    {
        CThread thread;
        thread.bTerminateThread = 0;
        StartBody(thread);
    }
    EXPECT_EQ((Lines{{5, "\n~CThread - name=\"\" (bTerminateThread=0)"}}), Fake::TraceLines());
    m_body.Release();
    EXPECT_TRUE(m_body.Ends());
}

TEST_F(FrameTest, TheIntervalsOfTheProduct)
{
    const SFrameIntervals product;
    EXPECT_EQ(30000u, product.stopMs);
    EXPECT_EQ(10u, product.recordEndMs);
    EXPECT_EQ(5000u, product.recordKillMs);
}

namespace {

struct SModuleName {
    char const * name;
    char const * path;
    char const * expected;
};

class ModuleNameTest : public testing::TestWithParam<SModuleName> {};

} // namespace

TEST_P(ModuleNameTest, IsTheFileNameWithoutDirectoryAndExtension)
{
    SetModuleName(NativePath(GetParam().path).c_str());
    EXPECT_STREQ(GetParam().expected, g_moduleName);
}

INSTANTIATE_TEST_SUITE_P(Edges, ModuleNameTest,
                         testing::Values(SModuleName{"Library", "/usr/lib/KXRA_MIB.so", "KXRA_MIB"},
                                         SModuleName{"NoExtension", "/usr/lib/KXRA_MIB", "KXRA_MIB"},
                                         SModuleName{"DotInTheDirectory", "/usr/lib.d/KXRA_MIB", "KXRA_MIB"},
                                         SModuleName{"TwoDots", "/a/b.c.so", "b.c"},
                                         SModuleName{"NoDirectory", "KXRA_MIB.so", "KXRA_MIB"},
                                         SModuleName{"Directory", "/usr/lib/", ""}, SModuleName{"Empty", "", ""}),
                         [](auto const & test) { return std::string(test.param.name); });

TEST(LongModuleNameTest, IsCutToItsRoom)
{
    SetModuleName(NativePath("/" + std::string(2000, 'x') + ".so"));
    EXPECT_EQ(std::string(kModuleNameRoom - 1, 'x'), g_moduleName);
}
