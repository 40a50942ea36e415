#ifndef PLATFORM_POSIX_DESCRIPTOR_H
#define PLATFORM_POSIX_DESCRIPTOR_H

#include <cerrno>
#include <cstdint>

#include "Platform/Error.h"
#include "Platform/Handle.h"

namespace Platform {

inline ErrorCode LastErrno() noexcept
{
    return static_cast<ErrorCode>(errno);
}

struct SDescriptorTraits {
    using Type = int;
    static Type None() noexcept { return -1; }
    static void Close(Type descriptor) noexcept;
};
using CDescriptor = THandle<SDescriptorTraits>;

/// Moves a descriptor that took the place of a standard stream, so that output meant for the stream never
/// reaches it. Takes over the argument; the result is close-on-exec. -1 stays -1, errno is kept.
int BeyondStandardStreams(int descriptor) noexcept;

/// A non-blocking, close-on-exec event counter, never 0, 1 or 2. -1 with errno on failure.
int NewEventDescriptor(unsigned initial, bool countDown) noexcept;

/// Adds 1 to an event counter; one that is full stays signalled.
ErrorCode SignalDescriptor(int descriptor) noexcept;

/// Reads an event counter. False when it is 0 (`error` is Success then) or the read failed.
bool ConsumeDescriptor(int descriptor, ErrorCode & error) noexcept;

} // namespace Platform

#endif
