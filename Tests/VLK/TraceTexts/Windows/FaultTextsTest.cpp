// What a thread that ends by a fault writes to the foundation's trace.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FaultReport.h"
#include "Foundation.h"
#include "Support/KeptTrace.h"
#include "VLK/Application.h"

using namespace VLK;

namespace {

using Texts = std::vector<std::string>;

void TouchNothing()
{
    int volatile * volatile nowhere = nullptr;
    *nowhere = 1;
}

class FaultTextsTest : public CFoundationTest {
protected:
    FaultTextsTest()
    {
        Misc::pVlkApp->SetDebugWait(true);
        Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(TraceErrors);
        g_lines.clear();
    }
    ~FaultTextsTest() override
    {
        Misc::pVlkApp->SetDebugWait(false);
        Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(0);
        Internals::g_uDebugWait = 1;
    }

    /// The texts that the end of a thread left.
    template <class TWork>
    Texts AfterTheEndOf(TWork && work)
    {
        Threading::CThread thread;
        StartThread(thread, work);
        EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
        Texts texts;
        for (SLine const & line : g_lines)
            texts.push_back(line.text);
        return texts;
    }
};

TEST_F(FaultTextsTest, AFaultEndsTheThreadAloneAndCallsForADebugger)
{
    EXPECT_EQ((Texts{"QUITSCH, thread has terminated with Win32 exception!", "\n\nWait until a debugger attaches..."}),
              AfterTheEndOf(&TouchNothing));
}

TEST_F(FaultTextsTest, NoDebuggerIsCalledForWithoutTheProcessWideSwitch)
{
    Internals::g_uDebugWait = 0;
    EXPECT_EQ(Texts{"QUITSCH, thread has terminated with Win32 exception!"}, AfterTheEndOf(&TouchNothing));
}

TEST_F(FaultTextsTest, NothingIsSaidWhereErrorsAreNotTraced)
{
    Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(TraceGeneral);
    EXPECT_EQ(Texts{}, AfterTheEndOf(&TouchNothing));
}

} // namespace
