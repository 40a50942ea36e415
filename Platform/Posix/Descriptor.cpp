#include "Descriptor.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Platform {

void SDescriptorTraits::Close(Type descriptor) noexcept
{
    const CLastErrorKeeper keeper;
    ::close(descriptor);
}

int BeyondStandardStreams(int descriptor) noexcept
{
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    const CDescriptor low(descriptor);
    return ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

int NewEventDescriptor(unsigned initial, bool countDown) noexcept
{
    return BeyondStandardStreams(::eventfd(initial, EFD_NONBLOCK | EFD_CLOEXEC | (countDown ? EFD_SEMAPHORE : 0)));
}

ErrorCode SignalDescriptor(int descriptor) noexcept
{
    const std::uint64_t one = 1;
    while (::write(descriptor, &one, sizeof one) < 0) {
        if (errno == EAGAIN) return Success; // full, so it is signalled
        if (errno != EINTR) return LastErrno();
    }
    return Success;
}

bool ConsumeDescriptor(int descriptor, ErrorCode & error) noexcept
{
    std::uint64_t count = 0;
    error = Success;
    while (::read(descriptor, &count, sizeof count) < 0) {
        if (errno == EINTR) continue;
        if (errno != EAGAIN) error = LastErrno();
        return false;
    }
    return true;
}

} // namespace Platform
