#include "Platform/Console.h"

#include <gtest/gtest.h>

#include <string>

#include "Platform/Error.h"
#include "Platform/Windows/ConsoleProcess.h"
#include "Platform/Windows/ReplacedImport.h"

using namespace Platform;

namespace {

/// A screen of its own in the place of the standard output for a scope.
class CScreen {
public:
    CScreen() : m_old(::GetStdHandle(STD_OUTPUT_HANDLE))
    {
        m_screen = ::CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                               nullptr, CONSOLE_TEXTMODE_BUFFER, nullptr);
        ::SetStdHandle(STD_OUTPUT_HANDLE, m_screen);
    }
    ~CScreen()
    {
        ::SetStdHandle(STD_OUTPUT_HANDLE, m_old);
        OpenConsole(); // so that nobody writes to the screen that goes
        if (IsThere()) ::CloseHandle(m_screen);
    }
    CScreen(CScreen const &) = delete;
    CScreen & operator=(CScreen const &) = delete;

    bool IsThere() const { return m_screen != INVALID_HANDLE_VALUE; }
    /// The first characters of the first line.
    std::string Text(DWORD length) const
    {
        std::string text(length, '\0');
        DWORD read = 0;
        ::ReadConsoleOutputCharacterA(m_screen, text.data(), length, COORD{0, 0}, &read);
        text.resize(read);
        return text;
    }

private:
    HANDLE m_old;
    HANDLE m_screen = INVALID_HANDLE_VALUE;
};

/// A console of which the standard output is known behind its making.
BOOL WINAPI MakeConsole()
{
    ::SetStdHandle(STD_OUTPUT_HANDLE, ::GetStdHandle(STD_ERROR_HANDLE));
    return TRUE;
}

} // namespace

TEST(ConsoleTest, AConsoleIsMadeAheadOfTheLookForItsOutput)
{
    const TReplacedImport<decltype(::AllocConsole)> made("AllocConsole", &MakeConsole);
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    ::SetStdHandle(STD_OUTPUT_HANDLE, nullptr);
    const bool opened = OpenConsole();
    ::SetStdHandle(STD_OUTPUT_HANDLE, output);
    EXPECT_TRUE(opened);
    EXPECT_TRUE(OpenConsole());
}

TEST(ConsoleTest, WritesToTheScreenOfTheConsole)
{
    const CConsoleProcess process;
    if (!process.IsThis()) return;
    const CScreen screen;
    ASSERT_TRUE(screen.IsThere()) << ::GetLastError();
    EXPECT_TRUE(OpenConsole());
    WriteConsole("some text", 9);
    EXPECT_EQ("some text", screen.Text(9));
}

TEST(ConsoleTest, WithoutAStandardOutputThereIsNoConsole)
{
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    ::SetStdHandle(STD_OUTPUT_HANDLE, nullptr);
    ::AllocConsole();
    ::SetStdHandle(STD_OUTPUT_HANDLE, INVALID_HANDLE_VALUE);
    ::SetLastError(4711);
    const bool opened = OpenConsole();
    WriteConsole("lost", 4);
    const ErrorCode error = LastError();
    ::SetStdHandle(STD_OUTPUT_HANDLE, output);
    EXPECT_FALSE(opened);
    EXPECT_EQ(4711u, error);
    EXPECT_TRUE(OpenConsole());
}
