#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "Foundation.h"
#include "Platform/Error.h"
#include "VLK/FormatStream.h"
#include "VLK/ModuleInfo.h"

using namespace VLK;
using namespace VLK::Exceptions;

namespace {

struct SRaise {
    std::uint32_t code = Errors::MaxCount;
    NATIVE_ERROR native{NativeNone, 0};
    char const * text = nullptr;      ///< null: no message
    char const * stageText = nullptr; ///< null: no message
};

unsigned int g_uRaiseLine = 0;
unsigned int g_uStageLine = 0;
unsigned int g_uCatchLine = 0;

void Fail(SRaise const & raise)
{
    CThrowState state;
    try {
        g_uRaiseLine = __LINE__ + 1;
        CException exception = state.StartException(__LINE__);
        CFormatStreamCurrExc stream = exception.prepareThrow(raise.code, raise.native, "%s");
        if (raise.text != nullptr) stream << raise.text;
        stream.currExcGet()->tryThrow();
    } catch (...) {
        g_uStageLine = __LINE__ + 1;
        VLK_CONTINUE(state, log);
        if (raise.stageText != nullptr) log.Format("%s") << raise.stageText;
        log.tryThrow();
    }
}

void Record(SRaise const & raise, CErrorLog & log)
{
    CThrowState state;
    try {
        Fail(raise);
    } catch (...) {
        g_uCatchLine = __LINE__ + 1;
        VLK_CONTINUE(state, caught);
        caught >> log;
    }
}

std::string At(unsigned int line)
{
    return "orVLK::ErrorLogPrintTest.cpp@" + std::to_string(line) + "\n";
}

std::string Head()
{
    return "Error   : orVLK::54 (0x20010036)\nMessage : Max count reached\n";
}

std::string Stack()
{
    return "\nErrLog-Stack:\n\n " + At(g_uStageLine) + " " + At(g_uCatchLine);
}

} // namespace

class ErrorLogPrintTest : public CFoundationTest {
protected:
    CErrorLog m_Log;
};

TEST_F(ErrorLogPrintTest, SmallSGivesTheHeadOnly)
{
    Record({}, m_Log);
    EXPECT_EQ(Head() + "\nModule  : " + At(g_uRaiseLine), Printed("%s", m_Log));
}

TEST_F(ErrorLogPrintTest, LargeSGivesTheStackToo)
{
    Record({}, m_Log);
    EXPECT_EQ(Head() + "\nModule  : " + At(g_uRaiseLine) + Stack(), Printed("%S", m_Log));
}

TEST_F(ErrorLogPrintTest, WithoutAPlaceholderTheStackIsPrinted)
{
    Record({}, m_Log);
    EXPECT_EQ("log:\n" + Head() + "\nModule  : " + At(g_uRaiseLine) + Stack(), Printed("log:\n", m_Log));
}

TEST_F(ErrorLogPrintTest, TheOriginsMessageFollowsTheHead)
{
    SRaise raise;
    raise.text = "xcurrent=5";
    Record(raise, m_Log);
    EXPECT_EQ(Head() + "          --> current=5\n\nModule  : " + At(g_uRaiseLine), Printed("%s", m_Log));
}

TEST_F(ErrorLogPrintTest, FurtherLinesOfTheMessageStandUnderTheFirst)
{
    SRaise raise;
    raise.text = "xone\ntwo";
    Record(raise, m_Log);
    EXPECT_EQ(Head() + "          --> one\n              two\n\nModule  : " + At(g_uRaiseLine), Printed("%s", m_Log));
}

TEST_F(ErrorLogPrintTest, StagesShowTheirMessages)
{
    SRaise raise;
    raise.stageText = "while testing";
    Record(raise, m_Log);
    EXPECT_EQ(Head() + "\nModule  : " + At(g_uRaiseLine) + "\nErrLog-Stack:\n\n " + At(g_uStageLine) +
                  "  while testing\n\n " + At(g_uCatchLine),
              Printed("%S", m_Log));
}

TEST_F(ErrorLogPrintTest, ANativeErrorOfTheSystemIsNamedWithItsText)
{
    const Platform::ErrorCode error = Platform::ErrorAccessDenied();
    SRaise raise;
    raise.native = OsError(error);
    Record(raise, m_Log);
    char number[32];
    std::snprintf(number, sizeof number, "%u (0x%X)", error, error);
    EXPECT_EQ(Head() + "\nModule  : " + At(g_uRaiseLine) + "\nN-Error : OS::" + number +
                  "\nMessage : " + Platform::ErrorText(error) + "\n",
              Printed("%s", m_Log));
}

TEST_F(ErrorLogPrintTest, ANativeErrorOfTheCLibraryIsNamedToo)
{
    SRaise raise;
    raise.native = {NativeCrt, 2};
    Record(raise, m_Log);
    EXPECT_EQ(Head() + "\nModule  : " + At(g_uRaiseLine) +
                  "\nN-Error : C-LIB::2 (0x2)\nMessage : " + Platform::CrtErrorText(2) + "\n",
              Printed("%s", m_Log));
}

TEST_F(ErrorLogPrintTest, ANativeErrorOfAnUnknownKindIsPrintedInNumbers)
{
    SRaise raise;
    raise.native = {77, 31};
    Record(raise, m_Log);
    EXPECT_EQ(Head() + "\nModule  : " + At(g_uRaiseLine) + "\nError   : 77::31 (0x1F)\n", Printed("%s", m_Log));
}

TEST_F(ErrorLogPrintTest, ACodeOfAnUnregisteredModuleIsPrintedInNumbersWithoutMessage)
{
    SRaise raise;
    raise.code = 0x20070003;
    Record(raise, m_Log);
    EXPECT_EQ("Error   : 7::3 (0x20070003)\n\nModule  : " + At(g_uRaiseLine), Printed("%s", m_Log));
}

TEST_F(ErrorLogPrintTest, ACodeWithoutATextSaysSo)
{
    SRaise raise;
    raise.code = 0x2001FFFF;
    Record(raise, m_Log);
    EXPECT_EQ("Error   : orVLK::65535 (0x2001FFFF)\nMessage : No information available for this error!\n\nModule  : " +
                  At(g_uRaiseLine),
              Printed("%s", m_Log));
}

TEST_F(ErrorLogPrintTest, TheFirstParameterSelectsTheStoredText)
{
    Record({}, m_Log);
    EXPECT_EQ(Head() + "\nModule  : " + At(g_uRaiseLine), Printed("%.1s", m_Log));
}

TEST_F(ErrorLogPrintTest, AnEmptyLogPrintsCodeZero)
{
    EXPECT_EQ("Error   : 0::0 (0x0)\n", Printed("%S", m_Log));
}

TEST_F(ErrorLogPrintTest, AfterAnUnloadTheStagesSourcesAreLost)
{
    SRaise raise;
    raise.stageText = "while testing";
    Record(raise, m_Log);
    {
        const Misc::CModuleInfo shortLived(4002, "short-lived", "", nullptr, nullptr);
    }
    EXPECT_EQ(Head() + "\nErrLog-Stack:\n\n Source information lost!  while testing\n\n Source information lost!",
              Printed("%S", m_Log));
}

TEST_F(ErrorLogPrintTest, TheRecordIsIndentedToTheColumnWhereItBegins)
{
    Record({}, m_Log);
    EXPECT_EQ("log: Error   : orVLK::54 (0x20010036)\n     Message : Max count reached\n     \n     Module  : " +
                  At(g_uRaiseLine) + "|",
              Printed("log: %s|", m_Log));
}

TEST_F(ErrorLogPrintTest, TheLeftMarginIsBackBehindTheRecord)
{
    Record({}, m_Log);
    Output_Streams::CChrStreamBuffer buffer(64);
    buffer.SetLeftMargin(3);
    buffer.Format("%s") << m_Log;
    EXPECT_EQ(3u, buffer.GetLeftMargin());
}

TEST_F(ErrorLogPrintTest, APointerPlaceholderPrintsThePointer)
{
    CErrorLog const & log = m_Log;
    EXPECT_EQ(Printed("%p", static_cast<void const *>(&log)), Printed("%p", log));
}

class ErrorLogKindTest : public testing::TestWithParam<char const *> {
private:
    Threading::CCallBackGuard m_Guard;
};

TEST_P(ErrorLogKindTest, IsAStreamError)
{
    CErrorLog log;
    EXPECT_EQ(Errors::StreamOutput, RaisedBy([&] { Printed(GetParam(), log); }));
}

INSTANTIATE_TEST_SUITE_P(OtherTypes, ErrorLogKindTest, testing::Values("%d", "%x", "%c", "%h", "%u"),
                         [](const auto & test) { return std::string("Type_") + test.param[1]; });

TEST_F(ErrorLogPrintTest, OneRecordCanBeTheMessageOfAnother)
{
    Record({}, m_Log);
    CThrowState state;
    CErrorLog outer;
    try {
        VLK_RAISE(state, Errors::General);
    } catch (...) {
        VLK_CONTINUE(state, log);
        log.Format("%s") << m_Log;
        log >> outer;
    }
    EXPECT_EQ(Head() + "\nModule  : " + At(g_uRaiseLine), outer.GetErrorMsg(1));
}
