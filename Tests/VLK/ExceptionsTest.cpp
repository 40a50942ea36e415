#include "VLK/Exceptions.h"

#include <gtest/gtest.h>

#include <boost/format.hpp>
#include <cstring>
#include <string>

#include "Foundation.h"
#include "VLK/ModuleInfo.h"

using namespace VLK;
using namespace VLK::Exceptions;
using Threading::CCurrentThread;

namespace {

/// Raises what the function makes of a new exception.
template <class TMake>
std::uint32_t RaisedFrom(TMake const & make, CErrorLog & log)
{
    return RaisedBy(
        [&] {
            CThrowState state;
            try {
                make(state.StartException(111));
            }
            VLK_THROW_NEXT_VOID(state)
        },
        log);
}

unsigned int g_uHandlerLine = 0;
unsigned int g_uRaiseLine = 0;

void FailWithText(char const * text)
{
    CThrowState state;
    try {
        g_uRaiseLine = __LINE__ + 1;
        VLK_RAISE_TEXT(state, Errors::MaxCount, "%s", text);
    } catch (...) {
        g_uHandlerLine = __LINE__ + 1;
        VLK_SOURCE(source);
        state.ThrowNext(source);
    }
}

/// An error that has passed `stages` places behind its origin, each with a message.
void FailThroughStages(unsigned int stages)
{
    CThrowState state;
    try {
        if (stages <= 1) VLK_RAISE_TEXT(state, Errors::MaxCount, "%s", "xorigin");
        FailThroughStages(stages - 1);
    } catch (...) {
        VLK_CONTINUE(state, log);
        log.Format("stage %d") << stages;
        log.tryThrow();
    }
}

} // namespace

class ExceptionsTest : public CFoundationTest {
protected:
    CErrorLog m_Log;
};

TEST_F(ExceptionsTest, TheRecordTellsCodeOriginAndPlaces)
{
    EXPECT_EQ(Errors::MaxCount, RaisedBy([] { FailWithText("xhello"); }, m_Log));
    EXPECT_EQ(Errors::MaxCount, m_Log.GetError());
    ASSERT_EQ(3u, m_Log.GetLogCount()); // origin, the function's handler, the test's handler
    SOURCE_INFO const * const origin = m_Log.GetSrcInfo(0);
    ASSERT_NE(nullptr, origin);
    EXPECT_EQ(&Misc::VLK_MODULE_INFO_VlkLib, origin->module);
    EXPECT_STREQ("ExceptionsTest.cpp", origin->file);
    EXPECT_EQ(g_uRaiseLine, origin->line);
    ASSERT_NE(nullptr, m_Log.GetSrcInfo(1));
    EXPECT_EQ(g_uHandlerLine, m_Log.GetSrcInfo(1)->line);
}

TEST_F(ExceptionsTest, AMessageLosesItsFirstCharacterInGetErrorMsg0)
{
    RaisedBy([] { FailWithText("hello"); }, m_Log);
    EXPECT_STREQ("ello\n", m_Log.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, AMessageThatEndsWithANewlineGetsNoSecondOne)
{
    RaisedBy([] { FailWithText("xone\ntwo\n"); }, m_Log);
    EXPECT_STREQ("one\ntwo\n", m_Log.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, AMessageOfOneCharacterIsOnlyItsNewline)
{
    RaisedBy([] { FailWithText("x"); }, m_Log);
    EXPECT_STREQ("\n", m_Log.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, ANewlineAloneIsNoMessage)
{
    RaisedBy([] { FailWithText("\n"); }, m_Log);
    EXPECT_STREQ("", m_Log.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, AMessageWithoutAnInserterIsLost)
{
    EXPECT_EQ(Errors::MaxCount, RaisedBy(
                                    [] {
                                        CThrowState state;
                                        try {
                                            VLK_RAISE_TEXT(state, Errors::MaxCount, "preformatted");
                                        }
                                        VLK_THROW_NEXT_VOID(state)
                                    },
                                    m_Log));
    EXPECT_STREQ("", m_Log.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, TextBehindTheLastValueIsNotPartOfTheMessage)
{
    RaisedBy(
        [] {
            CThrowState state;
            try {
                VLK_RAISE_TEXT(state, Errors::MaxCount, "xa %d of %d entries", 3, 4);
            }
            VLK_THROW_NEXT_VOID(state)
        },
        m_Log);
    EXPECT_STREQ("a 3 of 4\n", m_Log.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, AFormatErrorInAMessageIsSilent)
{
    EXPECT_EQ(Errors::MaxCount, RaisedBy(
                                    [] {
                                        CThrowState state;
                                        try {
                                            VLK_RAISE_TEXT(state, Errors::MaxCount, "xbad %s", 3);
                                        }
                                        VLK_THROW_NEXT_VOID(state)
                                    },
                                    m_Log));
    EXPECT_STREQ("bad \n", m_Log.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, PrepareThrowTakesTheNativeError)
{
    EXPECT_EQ(Errors::SyncCreate, RaisedFrom(
                                      [](CException && exception) {
                                          CFormatStreamCurrExc stream = exception.prepareThrow(
                                              Errors::SyncCreate, NATIVE_ERROR{NativeOs, 24}, "%d");
                                          stream << 10;
                                          stream.currExcGet()->tryThrow();
                                      },
                                      m_Log));
    NATIVE_ERROR native;
    EXPECT_EQ(Errors::SyncCreate, m_Log.GetError(native));
    EXPECT_EQ(NativeOs, native.kind);
    EXPECT_EQ(24u, native.value);
    EXPECT_STREQ("0\n", m_Log.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, BoostFormatWithNativeErrorStoresCodeAndNative)
{
    EXPECT_EQ(Errors::SyncCreate, RaisedFrom(
                                      [](CException && exception) {
                                          CFormatStreamCurrExc stream =
                                              exception.prepareThrow(Errors::SyncCreate, NATIVE_ERROR{NativeCrt, 2},
                                                                     boost::format("x%1%:%%s") % "file");
                                          stream << "gone";
                                          stream.currExcGet()->tryThrow();
                                      },
                                      m_Log));
    NATIVE_ERROR native;
    m_Log.GetError(native);
    EXPECT_EQ(NativeCrt, native.kind);
    EXPECT_STREQ("file:gone\n", m_Log.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, BoostFormatWithoutNativeErrorKeepsIgnoringTheCode)
{
    EXPECT_EQ(0u, RaisedFrom(
                      [](CException && exception) {
                          CFormatStreamCurrExc stream =
                              exception.prepareThrow(Errors::SyncCreate, boost::format("x%1%:%%s") % "file");
                          stream << "gone";
                          stream.currExcGet()->tryThrow();
                      },
                      m_Log));
    EXPECT_STREQ("file:gone\n", m_Log.GetErrorMsg(0));
    EXPECT_EQ(3u, m_Log.GetLogCount());
}

TEST_F(ExceptionsTest, PrepareThrowWithASourceKeepsThatOrigin)
{
    static SOURCE_INFO const elsewhere{&Misc::VLK_MODULE_INFO_VlkLib, "Elsewhere.cpp", 77};
    RaisedFrom(
        [](CException && exception) {
            CFormatStreamCurrExc stream = exception.prepareThrow(Errors::StreamOutput, elsewhere, "%s");
            stream << "xtext";
            stream.currExcGet()->tryThrow();
        },
        m_Log);
    ASSERT_EQ(3u, m_Log.GetLogCount());
    EXPECT_STREQ("Elsewhere.cpp", m_Log.GetSrcInfo(0)->file);
    EXPECT_EQ(77u, m_Log.GetSrcInfo(0)->line);
    EXPECT_STREQ("text\n", m_Log.GetErrorMsg(0));
    EXPECT_STREQ("", m_Log.GetErrorMsg(1));
}

TEST_F(ExceptionsTest, TryThrowAfterTheRecordWasClearedReturns)
{
    CThrowState state;
    CException exception = state.StartException(1);
    exception.Clear();
    exception.tryThrow();
    EXPECT_EQ(0u, exception.GetError());
}

TEST_F(ExceptionsTest, EachStagesMessageIsFoundAgain)
{
    RaisedBy([] { FailThroughStages(3); }, m_Log);
    ASSERT_EQ(5u, m_Log.GetLogCount());
    EXPECT_STREQ("origin\n", m_Log.GetErrorMsg(0));
    EXPECT_STREQ("stage 1\n", m_Log.GetErrorMsg(1));
    EXPECT_STREQ("stage 2\n", m_Log.GetErrorMsg(2));
    EXPECT_STREQ("stage 3\n", m_Log.GetErrorMsg(3));
    EXPECT_STREQ("", m_Log.GetErrorMsg(4)); // the test's handler said nothing
    EXPECT_EQ(nullptr, m_Log.GetErrorMsg(5));
    EXPECT_EQ(nullptr, m_Log.GetSrcInfo(5));
}

TEST_F(ExceptionsTest, AStagesMessageIsFoundWhereTheOriginHasNone)
{
    CThrowState state;
    try {
        try {
            VLK_RAISE(state, Errors::MaxCount);
        } catch (...) {
            VLK_CONTINUE(state, log);
            log.Format("%s") << "first stage";
            log.tryThrow();
        }
    } catch (...) {
        VLK_CONTINUE(state, log);
        log >> m_Log;
    }
    EXPECT_STREQ("", m_Log.GetErrorMsg(0));
    EXPECT_STREQ("first stage\n", m_Log.GetErrorMsg(1));
}

TEST_F(ExceptionsTest, TwoFormatsOfAStageAreOneMessage)
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::MaxCount);
    } catch (...) {
        VLK_CONTINUE(state, log);
        log.Format("%d, ") << 1;
        log.Format("%d") << 2;
        log >> m_Log;
    }
    EXPECT_STREQ("1, 2\n", m_Log.GetErrorMsg(1));
}

TEST_F(ExceptionsTest, ANinthStageGrowsTheTableAndTheOriginStaysRight)
{
    for (const unsigned int stages : {6u, 7u, 8u, 9u, 40u}) {
        RaisedBy([&] { FailThroughStages(stages); }, m_Log);
        ASSERT_EQ(stages + 2, m_Log.GetLogCount());
        ASSERT_NE(nullptr, m_Log.GetSrcInfo(0));
        EXPECT_STREQ("ExceptionsTest.cpp", m_Log.GetSrcInfo(0)->file);
        EXPECT_STREQ("origin\n", m_Log.GetErrorMsg(0));
        for (unsigned int i = 1; i <= stages; ++i) {
            EXPECT_EQ("stage " + std::to_string(i) + "\n", m_Log.GetErrorMsg(i));
            EXPECT_STREQ("ExceptionsTest.cpp", m_Log.GetSrcInfo(i)->file);
        }
    }
}

class MessageLengthTest : public testing::TestWithParam<std::size_t> {
private:
    Threading::CCallBackGuard m_Guard;
};

TEST_P(MessageLengthTest, AllOfTheTextIsKept)
{
    const std::string text(GetParam(), 'm');
    CErrorLog log;
    RaisedBy([&] { FailWithText(text.c_str()); }, log);
    EXPECT_EQ(text.substr(1) + "\n", log.GetErrorMsg(0));
    EXPECT_STREQ("ExceptionsTest.cpp", log.GetSrcInfo(0)->file);
    EXPECT_EQ(3u, log.GetLogCount());
}

INSTANTIATE_TEST_SUITE_P(AroundTheFirstBlock, MessageLengthTest,
                         testing::Values(1u, 804u, 805u, 806u, 807u, 808u, 809u, 1800u, 2000u, 100000u),
                         testing::PrintToStringParamName());

TEST_F(ExceptionsTest, AHandlersLogThatEndsBecomesTheThreadsErrorLog)
{
    CThrowState state;
    try {
        FailWithText("xtext");
    } catch (...) {
        VLK_CONTINUE(state, log);
        log.Format("%s") << "stage";
    }
    CErrorLog & threadLog = CCurrentThread().GetErrorLog();
    EXPECT_EQ(Errors::MaxCount, threadLog.GetError());
    EXPECT_STREQ("stage\n", threadLog.GetErrorMsg(2));
}

TEST_F(ExceptionsTest, ATakenRecordDoesNotThrowOn)
{
    CThrowState state;
    try {
        FailWithText("xtext");
    } catch (...) {
        VLK_CONTINUE(state, log);
        log >> m_Log;
        EXPECT_EQ(5u, log.tryThrow(5));
    }
    EXPECT_EQ(Errors::MaxCount, m_Log.GetError());
}

TEST_F(ExceptionsTest, AClearedRecordIsGone)
{
    CCurrentThread().GetErrorLog().Clear();
    CThrowState state;
    try {
        FailWithText("xtext");
    } catch (...) {
        VLK_CONTINUE(state, log);
        log.Clear();
        EXPECT_EQ(0u, log.GetError());
        log.SetHeader(1);
        log.Format("%d") << 1; // goes nowhere
    }
    EXPECT_EQ(0u, CCurrentThread().GetErrorLog().GetError());
}

TEST_F(ExceptionsTest, TheHeaderTravelsWithTheRecord)
{
    CThrowState state;
    try {
        FailWithText("xtext");
    } catch (...) {
        VLK_CONTINUE(state, log);
        log.SetHeader(0xABCD);
        log >> m_Log;
    }
    EXPECT_EQ(0xABCDu, m_Log.GetHeader());
}

TEST_F(ExceptionsTest, MovingARecordFreesTheTargetsAndEmptiesTheSource)
{
    CErrorLog target;
    RaisedBy([] { FailWithText("xold"); }, target);
    RaisedBy([] { FailWithText("xnew"); }, m_Log);
    m_Log >> target;
    EXPECT_STREQ("new\n", target.GetErrorMsg(0));
    EXPECT_EQ(0u, m_Log.GetError());
    EXPECT_EQ(0u, m_Log.GetLogCount());
    target >> target;
    EXPECT_STREQ("new\n", target.GetErrorMsg(0));
    target.Clear();
    EXPECT_EQ(nullptr, target.GetErrorMsg(0));
}

TEST_F(ExceptionsTest, AnEmptyLogAnswersWithNothing)
{
    NATIVE_ERROR native{1, 1};
    EXPECT_EQ(0u, m_Log.GetError(native));
    EXPECT_EQ(NativeNone, native.kind);
    EXPECT_EQ(0u, m_Log.GetLogCount());
    EXPECT_EQ(nullptr, m_Log.GetErrorMsg(0));
    EXPECT_EQ(nullptr, m_Log.GetSrcInfo(0));
    EXPECT_EQ(0u, m_Log.GetHeader());
}

TEST_F(ExceptionsTest, AfterAModuleWasUnloadedPlacesAreGoneButMessagesStay)
{
    RaisedBy([] { FailWithText("xtext"); }, m_Log);
    ASSERT_NE(nullptr, m_Log.GetSrcInfo(0));
    {
        const Misc::CModuleInfo shortLived(4001, "short-lived", "", nullptr, nullptr);
    }
    EXPECT_EQ(nullptr, m_Log.GetSrcInfo(0));
    EXPECT_EQ(nullptr, m_Log.GetSrcInfo(1));
    EXPECT_STREQ("text\n", m_Log.GetErrorMsg(0));
    EXPECT_EQ(3u, m_Log.GetLogCount());
}
