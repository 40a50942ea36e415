#include "VLK/ResultCodes.h"

#include <gtest/gtest.h>

#include <string>

using namespace VLK;

struct SResultCode {
    char const * name;
    unsigned int code;
    unsigned int value;
};

class ResultCodeTest : public testing::TestWithParam<SResultCode> {};

TEST_P(ResultCodeTest, HasItsNumber)
{
    EXPECT_EQ(GetParam().value, GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(
    All, ResultCodeTest,
    testing::Values(SResultCode{"Error", URET_Error, 0}, SResultCode{"OK", URET_OK, 1},
                    SResultCode{"WaitObject0", URET_WaitObject0, 1}, SResultCode{"WaitObject1", URET_WaitObject1, 2},
                    SResultCode{"WaitObject2", URET_WaitObject2, 3},
                    SResultCode{"WaitAbandoned", URET_WaitAbandoned, 0x41}, SResultCode{"Timeout", URET_Timeout, 130},
                    SResultCode{"WouldBlock", URET_WouldBlock, 131}, SResultCode{"MoreData", URET_MoreData, 132},
                    SResultCode{"Disconnect", URET_Disconnect, 133}, SResultCode{"Closed", URET_Closed, 134}),
    [](const auto & test) { return std::string(test.param.name); });

TEST(ResultCodesTest, SuccessAndTheFirstObjectOfAWaitAreOneNumber)
{
    EXPECT_EQ(URET_OK, URET_WaitObject0);
}

TEST(ResultCodesTest, AbandonedLiesBehindTheLargestIndexOfAWait)
{
    EXPECT_LT(URET_WaitObject0 + 62, URET_WaitAbandoned);
}

struct SCodeParts {
    char const * name;
    std::uint32_t code;
    bool isScheme;
    std::uint32_t moduleId;
    std::uint32_t number;
};

class ErrorCodeTest : public testing::TestWithParam<SCodeParts> {};

TEST_P(ErrorCodeTest, TellsItsParts)
{
    EXPECT_EQ(GetParam().isScheme, IsSchemeError(GetParam().code));
    EXPECT_EQ(GetParam().moduleId, ErrorModuleId(GetParam().code));
    EXPECT_EQ(GetParam().number, ErrorNumber(GetParam().code));
}

INSTANTIATE_TEST_SUITE_P(Edges, ErrorCodeTest,
                         testing::Values(SCodeParts{"Foundation", 0x20010001, true, 1, 1},
                                         SCodeParts{"Agent", 0x210C0007, true, 268, 7},
                                         SCodeParts{"LargestModule", 0x3FFFFFFF, true, 0x1FFF, 0xFFFF},
                                         SCodeParts{"ModuleZero", 0x20000005, true, 0, 5},
                                         SCodeParts{"BitsAboveTheScheme", 0xE0010002, true, 1, 2},
                                         SCodeParts{"PlainModuleId", 268, false, 268, 268},
                                         SCodeParts{"WithoutTheBit", 0x1FFFFFFF, false, 0x1FFFFFFF, 0xFFFF}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST(ErrorCodeTest, IsMadeOfModuleAndNumber)
{
    EXPECT_EQ(0x20010062u, MakeErrorCode(1, 0x62));
    EXPECT_EQ(0x210C0001u, MakeErrorCode(268, 1));
    EXPECT_EQ(0x3FFFFFFFu, MakeErrorCode(0x1FFF, 0xFFFF));
}

TEST(ErrorCodeTest, FoundationCodesRunFrom1To62Hex)
{
    EXPECT_EQ(0x20010001u, Errors::General);
    EXPECT_EQ(0x2001000Fu, Errors::OutOfMemory);
    EXPECT_EQ(0x20010018u, Errors::SyncNotInitialized);
    EXPECT_EQ(0x20010036u, Errors::MaxCount);
    EXPECT_EQ(0x2001003Au, Errors::ThreadInterrupt);
    EXPECT_EQ(0x2001003Bu, Errors::WaitInterrupt);
    EXPECT_EQ(0x20010062u, Errors::SystemTime);
}
