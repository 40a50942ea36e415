#ifndef VLK_SRC_SOCKET_EVENT_H
#define VLK_SRC_SOCKET_EVENT_H

#include "Platform/Socket.h"

namespace VLK::Internals {

/// Makes the event of a socket when there is none yet, and clears the one that there is.
inline Platform::ErrorCode ReadySocketEvent(Platform::CWaitableHandle & event) noexcept
{
    if (event) return Platform::ResetNetworkEvent(event.Get());
    Platform::WaitHandle made = nullptr;
    const Platform::ErrorCode error = Platform::NewNetworkEvent(made);
    if (error == Platform::Success) event.Reset(made);
    return error;
}

} // namespace VLK::Internals

#endif
