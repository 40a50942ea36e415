#include "Snmp/Frame/ErrorText.h"

#include "FrameFixture.h"

namespace {

struct SText {
    std::uint32_t code;
    char const * text;
};

class ErrorTextTest : public testing::TestWithParam<SText> {};
class StatusTextTest : public FrameTest, public testing::WithParamInterface<SText> {};

std::string CodeName(testing::TestParamInfo<SText> const & test)
{
    return "Code" + std::to_string(test.param.code);
}

} // namespace

TEST_P(ErrorTextTest, NamesTheStatus)
{
    EXPECT_STREQ(GetParam().text, SnmpErrorText(GetParam().code));
}

INSTANTIATE_TEST_SUITE_P(All, ErrorTextTest,
                         testing::Values(SText{0, "no error"}, SText{1, "too big"}, SText{2, "no such name"},
                                         SText{3, "bad value"}, SText{4, "value is read-only"},
                                         SText{5, "generic error"}, SText{6, "no access"}, SText{7, "wrong type"},
                                         SText{8, "wrong length"}, SText{9, "wrong encoding"}, SText{10, "wrong value"},
                                         SText{11, "no creation"}, SText{12, "inconsistent value"},
                                         SText{13, "resource unavailable"}, SText{14, "commit failed"},
                                         SText{15, "undo failed"}, SText{16, "authorization error"},
                                         SText{17, "not writeable"}, SText{18, "inconsistent name"},
                                         SText{19, "unknown"}, SText{0xFFFFFFFF, "unknown"}),
                         CodeName);

TEST_P(StatusTextTest, IsTracedWithItsCode)
{
    CSnmpAgent::SetAgentStatus(GetParam().code);
    EXPECT_EQ((Lines{Frame(3, std::string("Status changed to: ") + GetParam().text + " (" +
                                  std::to_string(static_cast<int>(GetParam().code)) + ")")}),
              Fake::TraceLines());
}

INSTANTIATE_TEST_SUITE_P(
    All, StatusTextTest,
    testing::Values(SText{0, "unknown"}, SText{1, "loaded"}, SText{2, "initializing"}, SText{3, "starting"},
                    SText{4, "started"}, SText{5, "stopping"}, SText{6, "stopped"}, SText{7, "unloading"},
                    SText{8, "unloaded"}, SText{9, "unknown"}, SText{10, "exception (SnmpExtensionInit)"},
                    SText{11, "exception (InitializeMib)"}, SText{12, "exception (SnmpExtensionClose)"},
                    SText{13, "exception (SnmpExtensionQuery)"}, SText{14, "exception (SnmpExtensionTrap)"},
                    SText{15, "exception"}, SText{16, "unknown"}),
    CodeName);
