#include "Platform/Thread.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "Platform/StartedThreads.h"

#include <objbase.h>
#include <windows.h>

namespace {

using Platform::CWaitableHandle;
using Platform::Success;
using Platform::WaitResult;

/// A body that counts until it is told to end.
std::uint32_t CountOn(void * argument) noexcept
{
    auto * const its = static_cast<SAbandoned *>(argument);
    while (its->spin)
        ++its->behindTheWait;
    its->ended = true;
    return 5;
}

bool Counts(SAbandoned const & shared)
{
    const int before = shared.behindTheWait;
    return HoldsWithin(std::chrono::milliseconds(50), [&] { return shared.behindTheWait != before; });
}

TEST(ThreadTest, ARunningThreadStandsStillWhileItIsSuspended)
{
    SAbandoned * const shared = NewAbandoned();
    const SStarted thread = Start(&CountOn, shared);
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return shared->behindTheWait != 0; }));
    std::uint32_t previous = 99;
    ASSERT_EQ(Success, Platform::SuspendThread(thread.handle.Get(), previous));
    EXPECT_EQ(0u, previous);
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return !Counts(*shared); })); // the system may take a moment
    ASSERT_EQ(Success, Platform::ResumeThread(thread.handle.Get(), previous));
    EXPECT_EQ(1u, previous);
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return Counts(*shared); }));
    shared->spin = false;
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_NE(Success, Platform::SuspendThread(thread.handle.Get(), previous));
}

TEST(TerminateThreadTest, AThreadThatNeverWaitsEnds)
{
    SAbandoned * const shared = NewAbandoned();
    const SStarted thread = Start(&CountOn, shared);
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return shared->behindTheWait != 0; }));
    EXPECT_FALSE(Platform::TerminatedThreadsGoOn());
    EXPECT_EQ(Success, Platform::TerminateThread(thread.handle.Get(), 77));
    ASSERT_EQ(WaitResult::Signaled, Platform::WaitForOne(thread.handle.Get(), 0, /*wakeable=*/false).result)
        << "it is over when the call returns";
    EXPECT_EQ(77u, ExitCode(thread));
    shared->spin = false;
    EXPECT_FALSE(Counts(*shared));
    EXPECT_FALSE(shared->ended);
}

TEST(ThreadSlotTest, LookingLeavesTheLastErrorAlone)
{
    std::uint32_t slot = 0;
    ASSERT_EQ(Success, Platform::NewThreadSlot(slot));
    ::SetLastError(4711);
    EXPECT_EQ(nullptr, Platform::ThreadSlotValue(slot));
    EXPECT_EQ(4711u, ::GetLastError());
    Platform::FreeThreadSlot(slot);
}

std::wstring NameOfThisThread()
{
    using GetDescription = HRESULT(WINAPI *)(HANDLE thread, PWSTR * description);
    const FARPROC found = ::GetProcAddress(::GetModuleHandleA("kernelbase.dll"), "GetThreadDescription");
    if (found == nullptr) return L"(the system keeps no names)";
    PWSTR text = nullptr;
    reinterpret_cast<GetDescription>(reinterpret_cast<void (*)()>(found))(::GetCurrentThread(), &text);
    std::wstring name = text != nullptr ? text : L"(none)";
    ::LocalFree(text);
    return name;
}

TEST(ThreadNameTest, IsTheSystemsDescriptionOfTheThread)
{
    std::wstring longest;
    std::wstring ordinary;
    ::SetLastError(4711);
    std::thread([&] {
        Platform::NameCurrentThread("KXRA_MIB:Thread_AgentMain");
        ordinary = NameOfThisThread();
        Platform::NameCurrentThread(std::string(1000, 'x').c_str());
        longest = NameOfThisThread();
    }).join();
    EXPECT_EQ(L"KXRA_MIB:Thread_AgentMain", ordinary);
    EXPECT_EQ(std::wstring(255, L'x'), longest);
}

TEST(ThreadNameTest, NamingLeavesTheLastErrorAlone)
{
    ::SetLastError(4711);
    Platform::NameCurrentThread("name");
    Platform::NameCurrentThread(nullptr);
    EXPECT_EQ(4711u, ::GetLastError());
}

TEST(ComponentApartmentTest, IsAMultithreadedOneAndEntersAgain)
{
    std::thread([] {
        ASSERT_TRUE(Platform::EnterComponentApartment());
        EXPECT_TRUE(Platform::EnterComponentApartment());
        EXPECT_EQ(RPC_E_CHANGED_MODE, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        Platform::LeaveComponentApartment();
        Platform::LeaveComponentApartment();
    }).join();
}

TEST(ComponentApartmentTest, NothingIsOwedOnAThreadOfAnotherKind)
{
    std::thread([] {
        ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        EXPECT_FALSE(Platform::EnterComponentApartment());
        ::CoUninitialize();
    }).join();
}

TEST(ThreadTest, TheStackHasTheRoomThatWasAsked)
{
    constexpr std::uint32_t asked = 1048576;
    std::atomic<std::size_t> room{0};
    const SStarted thread = Start(
        [](void * place) noexcept -> std::uint32_t {
            ULONG_PTR low = 0;
            ULONG_PTR high = 0;
            ::GetCurrentThreadStackLimits(&low, &high);
            *static_cast<std::atomic<std::size_t> *>(place) = high - low;
            return 0;
        },
        &room, /*suspended=*/false, asked);
    ASSERT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_GE(room.load(), asked);
    EXPECT_LT(room.load(), asked + asked / 2) << "and not what the program's own stack has";
}

} // namespace
