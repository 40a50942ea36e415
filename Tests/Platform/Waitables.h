#ifndef TESTS_PLATFORM_WAITABLES_H
#define TESTS_PLATFORM_WAITABLES_H

#include <gtest/gtest.h>

#include <cstdint>
#include <thread>
#include <vector>

#include "Platform/Wait.h"
#include "Support/Deadline.h"

/// Short words for the objects of Platform/Wait.h.

inline Platform::CWaitableHandle Event(bool initialState, bool manualReset)
{
    Platform::WaitHandle handle = nullptr;
    EXPECT_EQ(Platform::Success, Platform::NewEvent(handle, initialState, manualReset));
    return Platform::CWaitableHandle(handle);
}

inline Platform::CWaitableHandle Mutex(bool initialOwner)
{
    Platform::WaitHandle handle = nullptr;
    EXPECT_EQ(Platform::Success, Platform::NewMutex(handle, initialOwner));
    return Platform::CWaitableHandle(handle);
}

inline Platform::CWaitableHandle Semaphore(std::uint32_t initial, std::uint32_t maximum)
{
    Platform::WaitHandle handle = nullptr;
    EXPECT_EQ(Platform::Success, Platform::NewSemaphore(handle, initial, maximum));
    return Platform::CWaitableHandle(handle);
}

inline Platform::WaitResult Look(Platform::CWaitableHandle const & object)
{
    return Platform::WaitForOne(object.Get(), 0, false).result;
}

inline Platform::WaitResult Await(Platform::CWaitableHandle const & object)
{
    return Platform::WaitForOne(object.Get(), kDeadlineMs, false).result;
}

inline void RunToItsEnd(auto body)
{
    std::thread(body).join();
}

/// Several objects for Platform::WaitForMany.
class CObjects {
public:
    CObjects & operator<<(Platform::CWaitableHandle const & object)
    {
        m_handles.push_back(object.Get());
        return *this;
    }
    Platform::SWaitOutcome Wait(bool all, std::uint32_t timeoutMs, bool wakeable = false) const
    {
        return Platform::WaitForMany(m_handles.data(), static_cast<unsigned>(m_handles.size()), all, timeoutMs,
                                     wakeable);
    }
    Platform::SWaitOutcome First(std::uint32_t timeoutMs = 0) const { return Wait(false, timeoutMs); }
    Platform::SWaitOutcome All(std::uint32_t timeoutMs = 0) const { return Wait(true, timeoutMs); }

private:
    std::vector<Platform::WaitHandle> m_handles;
};

#endif
