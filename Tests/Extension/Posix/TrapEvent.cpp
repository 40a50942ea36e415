#include "Tests/Extension/TrapEvent.h"

#include <poll.h>
#include <unistd.h>

#include <cstdint>

bool AwaitAndTake(SnmpHandle event, int ms)
{
    const int descriptor = static_cast<int>(reinterpret_cast<std::intptr_t>(event));
    pollfd wait{descriptor, POLLIN, 0};
    if (::poll(&wait, 1, ms) != 1) return false;
    std::uint64_t signal = 0;
    return ::read(descriptor, &signal, sizeof signal) == sizeof signal;
}
