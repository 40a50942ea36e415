#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Ratio.h"
#include "VLK/Threads.h"
#include "VLK/WaitObjects.h"
#include "VLK/Waiter.h"

// Waits of the foundation against the same done by hand on descriptors. Everything runs on one thread, so that the
// figures tell what the layers cost and not what waking a thread costs.

namespace {

using VLK::Threading::CCallBackGuard;
using VLK::Threading::CEvent;
using VLK::Threading::CWaiter;

constexpr std::size_t kOperations = 20000;
constexpr unsigned int kTimeoutMs = 1000;

/// A bare event: an eventfd.
class CBareEvent {
public:
    CBareEvent() : m_descriptor(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ~CBareEvent() { ::close(m_descriptor); }
    CBareEvent(CBareEvent const &) = delete;
    CBareEvent & operator=(CBareEvent const &) = delete;

    void Set() const
    {
        const std::uint64_t one = 1;
        if (::write(m_descriptor, &one, sizeof one) != sizeof one) std::abort();
    }
    void Take() const
    {
        std::uint64_t count = 0;
        if (::read(m_descriptor, &count, sizeof count) != sizeof count) std::abort();
    }
    pollfd Polled() const { return {m_descriptor, POLLIN, 0}; }

private:
    int m_descriptor;
};

/// What both sides of a figure work on.
struct SObjects {
    explicit SObjects(std::size_t count) : bare(count), events(count)
    {
        for (CEvent & event : events) {
            event.Init(/*initialState=*/false, /*manualReset=*/false);
            waiter << event;
        }
        for (CBareEvent const & event : bare)
            polled.push_back(event.Polled());
    }

    CCallBackGuard guard; ///< the waits of a full thread: interruptible
    std::vector<CBareEvent> bare;
    std::vector<pollfd> polled;
    std::vector<CEvent> events;
    CWaiter waiter;
};

/// Set and wait, by turns: the event is signalled when the wait begins. The wait consumes the signal.
Bench::SPair SetAndWait()
{
    const auto objects = std::make_shared<SObjects>(1);
    return {[objects] {
                return Bench::NanosecondsEach(kOperations, [&] {
                    for (std::size_t i = 0; i < kOperations; ++i) {
                        objects->bare[0].Set();
                        if (::poll(objects->polled.data(), 1, kTimeoutMs) != 1) std::abort();
                        objects->bare[0].Take();
                    }
                });
            },
            [objects] {
                return Bench::NanosecondsEach(kOperations, [&] {
                    for (std::size_t i = 0; i < kOperations; ++i) {
                        objects->events[0].Set();
                        if (objects->events[0].Wait(kTimeoutMs) != VLK::URET_OK) std::abort();
                    }
                });
            }};
}

/// A wait for the first of `count` objects, of which the last is signalled just before and taken by the wait. The
/// list is made once.
Bench::SPair WaitForLastOf(std::size_t count)
{
    const auto objects = std::make_shared<SObjects>(count);
    const std::size_t last = count - 1;
    return {[objects, last] {
                return Bench::NanosecondsEach(kOperations, [&] {
                    for (std::size_t i = 0; i < kOperations; ++i) {
                        objects->bare[last].Set();
                        if (::poll(objects->polled.data(), objects->polled.size(), kTimeoutMs) != 1) std::abort();
                        std::size_t fired = 0;
                        while (objects->polled[fired].revents == 0)
                            ++fired;
                        objects->bare[fired].Take();
                    }
                });
            },
            [objects, last] {
                return Bench::NanosecondsEach(kOperations, [&] {
                    for (std::size_t i = 0; i < kOperations; ++i) {
                        objects->events[last].Set();
                        if (objects->waiter.Wait(kTimeoutMs, /*all=*/false) != VLK::URET_WaitObject0 + last)
                            std::abort();
                    }
                });
            }};
}

} // namespace

int main(int argc, char ** argv)
{
    Bench::AddRatio("EventSetAndWait", 1.25, SetAndWait);
    for (const std::size_t count : {3u, 16u, 63u})
        Bench::AddRatio("WaitForLastOf/" + std::to_string(count), 1.25, [count] { return WaitForLastOf(count); });
    return Bench::Main(argc, argv);
}
