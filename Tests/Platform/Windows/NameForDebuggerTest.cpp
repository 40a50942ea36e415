#include "Platform/Thread.h"

#include <gtest/gtest.h>

#include <thread>

#include "Platform/Windows/ReplacedImport.h"

namespace {

/// What a debugger reads out of the exception.
struct STold {
    DWORD type;
    LPCSTR name;
    DWORD threadId;
    DWORD flags;
};

BOOL g_debugged = TRUE;
DWORD g_code = 0;
DWORD g_type = 0;
DWORD g_thread = 0;
std::string g_name;
decltype(::RaiseException) * g_raise = nullptr;
decltype(::AddVectoredExceptionHandler) * g_addHandler = nullptr;
PVECTORED_EXCEPTION_HANDLER g_handler = nullptr;

PVOID WINAPI KeepHandler(ULONG first, PVECTORED_EXCEPTION_HANDLER handler)
{
    g_handler = handler;
    return g_addHandler(first, handler);
}

/// What the handler that stands meanwhile does with an exception.
LONG AnswerTo(DWORD code)
{
    EXCEPTION_RECORD record{};
    record.ExceptionCode = code;
    EXCEPTION_POINTERS pointers{&record, nullptr};
    return g_handler != nullptr ? g_handler(&pointers) : 4711;
}

BOOL WINAPI TellWhetherDebugged()
{
    return g_debugged;
}
void WINAPI Raise(DWORD code, DWORD flags, DWORD count, ULONG_PTR const * arguments)
{
    g_code = code;
    if (count >= sizeof(STold) / sizeof(ULONG_PTR)) {
        auto const & told = *reinterpret_cast<STold const *>(arguments);
        g_type = told.type;
        g_name = told.name;
        g_thread = told.threadId;
    }
    g_raise(code, flags, count, arguments);
}

/// Names a new thread, and tells its id.
DWORD NameAThread(char const * name)
{
    const TReplacedImport<decltype(::IsDebuggerPresent)> present("IsDebuggerPresent", &TellWhetherDebugged);
    const TReplacedImport<decltype(::RaiseException)> raised("RaiseException", &Raise);
    const TReplacedImport<decltype(::AddVectoredExceptionHandler)> kept("AddVectoredExceptionHandler", &KeepHandler);
    g_raise = raised.System();
    g_addHandler = kept.System();
    g_handler = nullptr;
    g_code = 0;
    DWORD id = 0;
    std::thread([&] {
        id = ::GetCurrentThreadId();
        Platform::NameCurrentThread(name);
    }).join();
    return id;
}

} // namespace

TEST(NameForDebuggerTest, ADebuggerIsToldByTheExceptionThatItKnows)
{
    g_debugged = TRUE;
    const DWORD id = NameAThread("Thread_PollHandler");
    EXPECT_EQ(0x406D1388u, g_code);
    EXPECT_EQ(0x1000u, g_type);
    EXPECT_EQ("Thread_PollHandler", g_name);
    EXPECT_EQ(id, g_thread);
}

TEST(NameForDebuggerTest, BehindADebuggerThatDoesNotKnowTheExceptionTheThreadGoesOnAndNoOtherIsPassedOver)
{
    g_debugged = TRUE;
    NameAThread("name");
    EXPECT_EQ(EXCEPTION_CONTINUE_EXECUTION, AnswerTo(0x406D1388));
    EXPECT_EQ(EXCEPTION_CONTINUE_SEARCH, AnswerTo(STATUS_ACCESS_VIOLATION));
}

TEST(NameForDebuggerTest, WithoutADebuggerNothingIsRaised)
{
    g_debugged = FALSE;
    NameAThread("Thread_PollHandler");
    EXPECT_EQ(0u, g_code);
}
