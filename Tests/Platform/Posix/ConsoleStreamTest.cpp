#include "Platform/Console.h"

#include <csignal>
#include <cstring>

#include <gtest/gtest.h>

#include <unistd.h>

#include "Platform/Error.h"

using namespace Platform;

namespace {

/// Puts another descriptor in the place of the standard output for a scope; -1 closes it.
class CStandardOutput {
public:
    explicit CStandardOutput(int descriptor) : m_old(::dup(STDOUT_FILENO))
    {
        std::fflush(stdout);
        if (descriptor == -1)
            ::close(STDOUT_FILENO);
        else
            ::dup2(descriptor, STDOUT_FILENO);
    }
    ~CStandardOutput()
    {
        ::dup2(m_old, STDOUT_FILENO);
        ::close(m_old);
    }

private:
    int m_old;
};

} // namespace

TEST(ConsoleTest, WritesToTheStandardOutput)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    {
        const CStandardOutput output(ends[1]);
        EXPECT_TRUE(OpenConsole());
        WriteConsole("some text", 9);
    }
    ::close(ends[1]);
    char text[32] = {};
    EXPECT_EQ(9, ::read(ends[0], text, sizeof text));
    EXPECT_STREQ("some text", text);
    ::close(ends[0]);
}

TEST(ConsoleTest, WithoutAStandardOutputThereIsNoConsole)
{
    bool opened = true;
    {
        const CStandardOutput output(-1);
        opened = OpenConsole();
        WriteConsole("lost", 4);
    }
    EXPECT_FALSE(opened);
    EXPECT_TRUE(OpenConsole());
}

TEST(ConsoleTest, AReaderThatWentAwayRaisesNoSignalAndChangesNoMask)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    ::close(ends[0]);
    sigset_t before;
    sigset_t after;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &before);
    SetLastError(4711);
    {
        const CStandardOutput output(ends[1]); // SIGPIPE would end the process here
        WriteConsole("lost", 4);
        EXPECT_EQ(4711u, LastError());
    }
    ::close(ends[1]);
    ::pthread_sigmask(SIG_SETMASK, nullptr, &after);
    EXPECT_EQ(::sigismember(&before, SIGPIPE), ::sigismember(&after, SIGPIPE));
    sigset_t pending;
    ::sigpending(&pending);
    EXPECT_EQ(0, ::sigismember(&pending, SIGPIPE));
}
