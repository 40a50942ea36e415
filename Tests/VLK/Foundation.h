#ifndef TESTS_VLK_FOUNDATION_H
#define TESTS_VLK_FOUNDATION_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

#include "Support/Deadline.h"
#include "VLK/Delegates.h"
#include "VLK/Exceptions.h"
#include "VLK/Strings.h"
#include "VLK/Threads.h"

/// What tests of the foundation need again and again.

/// A test on a full thread of the foundation: the test's own thread comes from outside.
class CFoundationTest : public testing::Test {
private:
    VLK::Threading::CCallBackGuard m_Guard;
};

/// Runs the function and catches what the foundation throws. Returns the error code, 0 when nothing was thrown;
/// `log` gets the record.
template <class TFunction>
std::uint32_t RaisedBy(TFunction && function, VLK::Exceptions::CErrorLog & log)
{
    VLK::Exceptions::CThrowState state;
    try {
        std::forward<TFunction>(function)();
        return 0;
    } catch (unsigned int object) {
        EXPECT_EQ(0u, object);
        VLK_CONTINUE(state, caught);
        const std::uint32_t error = caught.GetError();
        caught >> log;
        return error;
    }
}

template <class TFunction>
std::uint32_t RaisedBy(TFunction && function)
{
    VLK::Exceptions::CErrorLog log;
    return RaisedBy(std::forward<TFunction>(function), log);
}

/// A delegate on anything that can be called.
template <class TFunction>
VLK::Delegates_and_Calls::CDelegate DelegateOf(TFunction && function)
{
    return VLK::Delegates_and_Calls::TDelegate<VLK::Delegates_and_Calls::CCall>(std::forward<TFunction>(function));
}

/// Starts a thread of the foundation on the function.
template <class TFunction>
void StartThread(VLK::Threading::CThread & thread, TFunction && function)
{
    thread.Create(DelegateOf(std::forward<TFunction>(function)), /*suspended=*/false);
}

/// Runs the function on a thread of the foundation and waits for its end.
template <class TFunction>
void RunToItsEnd(TFunction && function)
{
    VLK::Threading::CThread thread;
    StartThread(thread, std::forward<TFunction>(function));
    ASSERT_EQ(VLK::URET_OK, thread.Wait(kDeadlineMs));
}

/// What a stream buffer makes of the value.
template <class TValue>
std::string Printed(char const * format, TValue const & value)
{
    VLK::Output_Streams::CChrStreamBuffer buffer(/*step=*/64);
    buffer.Format(format) << value;
    return buffer.GetBuffer() != nullptr ? std::string(buffer.GetBuffer(), buffer.GetLength()) : std::string();
}

#endif
