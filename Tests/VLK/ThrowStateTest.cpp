#include "VLK/ThrowState.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "Foundation.h"
#include "VLK/ThreadCB.h"

using namespace VLK;
using namespace VLK::Exceptions;
using Internals::CThreadCB;
using Threading::CCurrentThread;

namespace {

unsigned int Fail()
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::IndexOutOfBounds);
    }
    VLK_THROW_NEXT(state)
}

unsigned int FailDeeper()
{
    CThrowState state;
    try {
        return Fail();
    }
    VLK_THROW_NEXT(state)
}

unsigned int FailWithCode(unsigned int code)
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::DataMissing);
    } catch (...) {
        VLK_CONTINUE(state, log);
        return log.tryThrow(code);
    }
}

bool FailAsFlag()
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::DataMissing);
    }
    VLK_THROW_NEXT_AS(state, false)
}

/// Drops the first error and goes on.
unsigned int FailAndGoOn()
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::DataMissing);
    }
    VLK_END_EXCEPTION(state)
    return URET_OK;
}

template <class TException>
unsigned int ThrowForeign(TException const & exception)
{
    CThrowState state;
    try {
        throw exception;
    }
    VLK_THROW_NEXT(state)
}

std::uint32_t ThreadError()
{
    return CCurrentThread().GetErrorLog().GetError();
}

} // namespace

class ThrowStateTest : public CFoundationTest {
protected:
    void TearDown() override { EXPECT_EQ(0, CThrowStateData::m_DisableCnt.Count()); }
};

TEST_F(ThrowStateTest, EnabledAnErrorIsAThrownUnsignedIntOfZero)
{
    EXPECT_THROW(Fail(), unsigned int);
    EXPECT_EQ(Errors::IndexOutOfBounds, RaisedBy([] { Fail(); }));
}

TEST_F(ThrowStateTest, DisabledAFailingFunctionReturnsZeroAndLeavesTheRecordInTheThreadsErrorLog)
{
    CThrowState state;
    state.DisableThrow();
    EXPECT_EQ(URET_Error, Fail());
    EXPECT_EQ(Errors::IndexOutOfBounds, ThreadError());
}

TEST_F(ThrowStateTest, DisabledTheCodeOfTheHandlerIsTheResult)
{
    CThrowState state;
    state.DisableThrow();
    EXPECT_EQ(URET_Timeout, FailWithCode(URET_Timeout));
    EXPECT_FALSE(FailAsFlag());
    EXPECT_EQ(Errors::DataMissing, ThreadError());
}

TEST_F(ThrowStateTest, DisabledOnlyTheOutermostFunctionSwallows)
{
    CThrowState state;
    state.DisableThrow();
    EXPECT_EQ(URET_Error, FailDeeper());
    // Origin and a place in each of the two functions: inside the foundation the exception flew.
    EXPECT_EQ(3u, CCurrentThread().GetErrorLog().GetLogCount());
}

TEST_F(ThrowStateTest, TheThreadKeepsTheLastRecordOnly)
{
    CThrowState state;
    state.DisableThrow();
    FailWithCode(0);
    Fail();
    EXPECT_EQ(Errors::IndexOutOfBounds, ThreadError());
}

TEST_F(ThrowStateTest, EnableAndDisableReturnTheFormerValue)
{
    CThrowState state;
    EXPECT_EQ(0u, state.DisableThrow());
    EXPECT_EQ(1u, state.DisableThrow());
    EXPECT_EQ(1u, state.EnableThrow());
    EXPECT_EQ(0u, state.EnableThrow());
}

TEST_F(ThrowStateTest, TheScopesEndRestoresTheFormerChoice)
{
    {
        CThrowState outer;
        outer.DisableThrow();
        {
            CThrowState inner;
            inner.EnableThrow();
            EXPECT_THROW(Fail(), unsigned int);
        }
        EXPECT_EQ(URET_Error, Fail());
    }
    EXPECT_THROW(Fail(), unsigned int);
}

TEST_F(ThrowStateTest, InsideAFunctionOfTheFoundationExceptionsAlwaysFly)
{
    CThrowState outer;
    outer.DisableThrow();
    CThrowState function; // what a function opens
    EXPECT_THROW(Fail(), unsigned int);
}

TEST_F(ThrowStateTest, TheCounterCountsThreadsNotCalls)
{
    CThrowState state;
    state.DisableThrow();
    state.DisableThrow();
    EXPECT_EQ(1, CThrowStateData::m_DisableCnt.Count());
    std::thread([] { // a wait for a thread of the foundation would itself be a call inside
        CThrowState other;
        other.DisableThrow();
        EXPECT_EQ(2, CThrowStateData::m_DisableCnt.Count());
    })
        .join();
    EXPECT_EQ(1, CThrowStateData::m_DisableCnt.Count());
    {
        CThrowState inner; // exceptions fly in here, so this thread isn't counted
        EXPECT_EQ(0, CThrowStateData::m_DisableCnt.Count());
    }
    EXPECT_EQ(1, CThrowStateData::m_DisableCnt.Count());
}

TEST_F(ThrowStateTest, DisablingOnOneThreadLeavesTheExceptionsOfOthersAsTheyAre)
{
    CThrowState state;
    state.DisableThrow();
    std::uint32_t raised = 0;
    RunToItsEnd([&] { raised = RaisedBy([] { Fail(); }); });
    EXPECT_EQ(Errors::IndexOutOfBounds, raised);
    EXPECT_EQ(0u, ThreadError());
    EXPECT_EQ(URET_Error, Fail());
}

TEST_F(ThrowStateTest, WhileTheCounterIsZeroAStateDoesNotTouchItsThread)
{
    std::thread([] {
        CThrowState state;
        EXPECT_EQ(nullptr, CThreadCB::Current());
    }).join();
}

TEST_F(ThrowStateTest, WhileTheCounterIsNotZeroAStateLendsAForeignThreadABlock)
{
    CThrowState disabled;
    disabled.DisableThrow();
    std::thread([] {
        {
            CThrowState state;
            EXPECT_NE(nullptr, CThreadCB::Current());
        }
        EXPECT_EQ(nullptr, CThreadCB::Current());
    }).join();
}

TEST_F(ThrowStateTest, AForeignThreadThatDisablesThrowingHasItsErrorLogForTheScope)
{
    std::thread([] {
        CThrowState state;
        state.DisableThrow();
        EXPECT_EQ(URET_Error, FailDeeper());
        EXPECT_EQ(Errors::IndexOutOfBounds, ThreadError());
    }).join();
}

TEST_F(ThrowStateTest, OnAForeignThreadWithoutAGuardTheExceptionFliesThroughAllFunctions)
{
    std::thread([] {
        EXPECT_THROW(FailDeeper(), unsigned int);
        EXPECT_EQ(nullptr, CThreadCB::Current());
    }).join();
}

TEST_F(ThrowStateTest, EndExceptionRecordsAndTheFunctionGoesOn)
{
    EXPECT_EQ(URET_OK, FailAndGoOn());
    EXPECT_EQ(Errors::DataMissing, ThreadError());
    EXPECT_THROW(Fail(), unsigned int);
}

TEST_F(ThrowStateTest, ContinueExceptionDisablesThrowingForTheRestOfTheScope)
{
    CThrowState state;
    try {
        Fail();
    } catch (unsigned int) {
        VLK_CONTINUE(state, log);
        EXPECT_EQ(URET_Error, FailWithCode(URET_Error)); // a handler's own calls don't throw
        EXPECT_EQ(Errors::IndexOutOfBounds, log.GetError());
    }
    EXPECT_EQ(URET_Error, Fail());
}

TEST_F(ThrowStateTest, AGuardInTheHandlerMakesExceptionsFlyAgainBehindIt)
{
    CThrowState state;
    try {
        Fail();
    } catch (unsigned int) {
        CThrowGuard guard;
        VLK_SOURCE(source);
        CExceptionLog log = state.ContinueException(guard, source);
        EXPECT_EQ(URET_Error, FailWithCode(URET_Error));
    }
    EXPECT_THROW(Fail(), unsigned int);
}

TEST_F(ThrowStateTest, AGuardThatWasNotUsedDoesNothing)
{
    CThrowState state;
    state.DisableThrow();
    {
        const CThrowGuard guard;
    }
    EXPECT_EQ(URET_Error, Fail());
}

TEST_F(ThrowStateTest, AnErrorRaisedWhileAnotherUnwindsDoesNotDisturbIt)
{
    struct SFailsAtItsEnd {
        ~SFailsAtItsEnd()
        {
            EXPECT_EQ(Errors::DataMissing, RaisedBy([] { FailWithCode(0); }));
        }
    };
    EXPECT_EQ(Errors::IndexOutOfBounds, RaisedBy([] {
                  const SFailsAtItsEnd local;
                  Fail();
              }));
}

TEST_F(ThrowStateTest, AnErrorRaisedInAHandlerBeforeItAsksDoesNotDisturbIt)
{
    CThrowState state;
    try {
        Fail();
    } catch (unsigned int) {
        EXPECT_EQ(Errors::DataMissing, RaisedBy([] { FailWithCode(0); }));
        VLK_CONTINUE(state, log);
        EXPECT_EQ(Errors::IndexOutOfBounds, log.GetError());
    }
}

TEST_F(ThrowStateTest, ARecordThatNoHandlerAskedForGoesWithTheNextRaise)
{
    EXPECT_THROW(Fail(), unsigned int);
    EXPECT_NE(nullptr, CThreadCB::Current()->m_pPending);
    EXPECT_EQ(Errors::DataMissing, RaisedBy([] { FailWithCode(0); }));
    EXPECT_EQ(nullptr, CThreadCB::Current()->m_pPending);
}

TEST_F(ThrowStateTest, ARecordThatNoHandlerAskedForGoesWithItsThread)
{
    RunToItsEnd([] { EXPECT_THROW(Fail(), unsigned int); }); // the leak check sees to it
}

TEST_F(ThrowStateTest, ContinueExceptionOutsideAHandlerStillFindsTheRecord)
{
    EXPECT_THROW(Fail(), unsigned int);
    CThrowState state;
    VLK_CONTINUE(state, log);
    EXPECT_EQ(Errors::IndexOutOfBounds, log.GetError());
}

TEST_F(ThrowStateTest, WithNothingPendingAHandlersLogIsEmptyAndReturnsItsCode)
{
    CThrowState state;
    VLK_CONTINUE(state, log);
    EXPECT_EQ(0u, log.GetError());
    EXPECT_EQ(7u, log.tryThrow(7));
}

const std::string kReading = "reading: " + std::system_category().message(5) + "\n";

struct SForeign {
    char const * name;
    unsigned int (*fail)();
    std::uint32_t code;
    std::uint32_t nativeKind;
    std::uint32_t nativeValue;
    char const * text;
};

class ForeignExceptionTest : public testing::TestWithParam<SForeign> {
private:
    Threading::CCallBackGuard m_Guard;
};

TEST_P(ForeignExceptionTest, LeavesAsTheFoundationsOwnWithARecord)
{
    CErrorLog log;
    EXPECT_EQ(GetParam().code, RaisedBy([] { GetParam().fail(); }, log));
    NATIVE_ERROR native;
    log.GetError(native);
    EXPECT_EQ(GetParam().nativeKind, native.kind);
    EXPECT_EQ(GetParam().nativeValue, native.value);
    EXPECT_STREQ(GetParam().text, log.GetErrorMsg(0));
}

TEST_P(ForeignExceptionTest, IsSwallowedWithThrowingDisabled)
{
    CThrowState state;
    state.DisableThrow();
    EXPECT_EQ(URET_Error, GetParam().fail());
    EXPECT_EQ(GetParam().code, ThreadError());
}

INSTANTIATE_TEST_SUITE_P(
    All, ForeignExceptionTest,
    testing::Values(
        SForeign{"NoMemory", [] { return ThrowForeign(std::bad_alloc()); }, Errors::OutOfMemory, 0, 0, ""},
        SForeign{"ArrayTooLarge", [] { return ThrowForeign(std::bad_array_new_length()); }, Errors::OutOfMemory, 0, 0,
                 ""},
        SForeign{"ContainerTooLong", [] { return ThrowForeign(std::length_error("long")); }, Errors::OutOfMemory, 0, 0,
                 ""},
        SForeign{"System", [] { return ThrowForeign(std::system_error(5, std::system_category(), "reading")); },
                 Errors::OperatingSystem, NativeOs, 5, kReading.c_str()},
        SForeign{"Other", [] { return ThrowForeign(std::runtime_error("odd")); }, Errors::General, 0, 0, "odd\n"},
        SForeign{"LongText", [] { return ThrowForeign(std::runtime_error(std::string(5000, 'x'))); }, Errors::General,
                 0, 0,
                 []() -> char const * {
                     static const std::string cut = std::string(255, 'x') + "\n";
                     return cut.c_str();
                 }()},
        SForeign{"NoExceptionClass", [] { return ThrowForeign("text"); }, Errors::General, 0, 0, ""}),
    [](const auto & test) { return std::string(test.param.name); });
