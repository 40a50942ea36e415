#include "Platform/Error.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <set>
#include <thread>

#include "Native/SocketErrors.h"
#include "Native/Wine.h"

using namespace Platform;

TEST(ErrorTest, TheConditionsToTellApartAreNoneTheSame)
{
    const std::set<ErrorCode> all{ErrorNotFound(),           ErrorAccessDenied(), ErrorAlreadyExists(),
                                  ErrorInsufficientBuffer(), ErrorWouldBlock(),   ErrorNotSupported()};
    EXPECT_EQ(6u, all.size());
    EXPECT_EQ(0u, all.count(Success));
}

TEST(ErrorTest, EachThreadHasItsOwnLastError)
{
    // Between the two settings and the look nothing else is called.
    std::atomic<int> step{0};
    std::thread other([&] {
        while (step != 1) {
        }
        Platform::SetLastError(1);
        step = 2;
    });
    Platform::SetLastError(4711);
    step = 1;
    while (step != 2) {
    }
    const ErrorCode error = LastError();
    other.join();
    EXPECT_EQ(4711u, error);
}

TEST(ErrorTest, TheKeeperPutsTheLastErrorBack)
{
    Platform::SetLastError(4711);
    {
        const CLastErrorKeeper keeper;
        Platform::SetLastError(1);
    }
    EXPECT_EQ(4711u, LastError());
}

TEST(ErrorTest, TheCLibrarysErrorIsErrno)
{
    errno = EDOM;
    EXPECT_EQ(EDOM, CrtError());
}

TEST(ErrorTest, TheCLibrarysTextIsNeverEmpty)
{
    EXPECT_EQ("No such file or directory", CrtErrorText(ENOENT));
    for (const int error : {0, EACCES, 4711, -1})
        EXPECT_FALSE(CrtErrorText(error).empty()) << error;
}

TEST(ErrorTest, TheSystemHasATextForItsErrorsAndNoneForOthers)
{
    for (const ErrorCode error :
         {ErrorNotFound(), ErrorAccessDenied(), ErrorAlreadyExists(), ErrorInsufficientBuffer(), ErrorNotSupported()})
        EXPECT_FALSE(ErrorText(error).empty()) << error;
    EXPECT_EQ("", ErrorText(0x0FFFFFFF));
}

TEST(ErrorTest, TheSystemHasATextForErrorsOfSocketsWhichWineCannotShow)
{
    if (RunsUnderWine()) GTEST_SKIP() << "Wine has no texts for some of them";
    for (const ErrorCode error : {ErrorWouldBlock(), kConnectionRefused, kConnectionReset, kNoSocket, kSentIntoReset})
        EXPECT_FALSE(ErrorText(error).empty()) << error;
}
