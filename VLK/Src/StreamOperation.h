#ifndef VLK_SRC_STREAM_OPERATION_H
#define VLK_SRC_STREAM_OPERATION_H

#include "VLK/Exceptions.h"
#include "VLK/StreamSocket.h"

/// What both sides of the handshake and of a cycle agree on.
namespace VLK::Internals {

inline constexpr unsigned int VersionBytes = 4;
inline constexpr unsigned long long ProtocolGeneration = 0x100; ///< value of the handshake's frame
inline constexpr char ExpectedIdle[] = "Current=%d, expected=ST_Idle";

} // namespace VLK::Internals

/// The frame that the public operations of a stream share. `source` is the place of the operation itself, since the
/// record of a failure tells the file that its raise stands in.
namespace VLK::Sockets {

template <class TWork>
auto CVlkSocket::Operation(Exceptions::SOURCE_INFO const & source, TWork const & work, EAfterFailure after)
{
    Exceptions::CThrowState state;
    using TResult = decltype(work(state));
    try {
        return work(state);
    } catch (...) {
        m_uState = (after == EAfterFailure::Idle ? unsigned{ST_Idle} : m_uState) | ST_Error;
        state.ThrowNext(source);
        return TResult(); // URET_Error, or the number 0
    }
}

template <class TWork>
unsigned int CVlkSocket::Handshake(Exceptions::SOURCE_INFO const & source, CSocket & socket, TWork const & work)
{
    Exceptions::CThrowState state;
    bool isTaken = false;
    try {
        Take(socket);
        isTaken = true;
        return work(state);
    } catch (...) {
        Exceptions::CExceptionLog log = state.ContinueException(source);
        if (isTaken)
            Abort();
        else
            socket.Abort();
        return log.tryThrow();
    }
}

} // namespace VLK::Sockets

#endif
