#ifndef VLK_STREAM_SOCKET_H
#define VLK_STREAM_SOCKET_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "VLK/Exceptions.h"
#include "VLK/Export.h"
#include "VLK/Socket.h"
#include "VLK/Strings.h"

/// The typed stream on top of a connected socket. Docs/wire.md tells the bytes.
///
/// Every value is a frame: a tag, a number where the tag calls for one, and data where the number is its length. The
/// two sides take turns: the client sends a request and hands the turn over, the server answers and gives it back.
/// Between requests the server may say that events wait, or that it is alive; readers never see these two tags.
namespace VLK::Sockets {

/// First bytes of the frames. The low three bits of a tag that has a value hold the length of the value less 1; in
/// the two small integers the low five bits are the value itself.
enum STREAM_TAG : unsigned int {
    STC_Close = 0x00,
    STC_WaitAck = 0x01,
    STC_EndAck = 0x02,
    STC_EventsPending = 0x03,
    STC_GetEvents = 0x04,
    STC_KeepAlive = 0x05,
    STC_EmptyString = 0x06,
    STC_File = 0x70,
    STC_BinBlockStart = 0x78,
    STC_BinBlockNext = 0x80,
    STC_Request = 0x88,
    STC_Ack = 0x90,
    STC_String = 0x98,
    STC_Events = 0xA0,
    STC_Attach = 0xA8,
    STC_PosInt = 0xB0,
    STC_NegInt = 0xB8,
    STC_SmallPosInt = 0xC0,
    STC_SmallNegInt = 0xE0
};

/// Whose turn it is. The numbers stand in messages.
enum STREAM_STATE : unsigned int {
    ST_Closed = 0, ///< no socket attached
    ST_Idle = 1,
    ST_Send = 2,
    ST_Read = 3,
    ST_ReadBlock = 4,  ///< as ST_Read, inside a binary block
    ST_PeerClosed = 5, ///< server only
    ST_Error = 0x80    ///< added when an operation failed
};

/// What client and server have in common.
///
/// Owns     nothing: the socket stays its owner's, who keeps it alive; closing and aborting it is done here.
/// Threads  none but one at a time. No lock.
/// Time     a read waits as long as the timeout of the socket says.
/// Memory   one buffer of 1460 bytes in the object; what a peer claims to send is never taken for granted.
/// Errors   SocketState outside the states named, SocketInErrorState after a failure ("error" below), what the socket
///          raises, and SocketClosedByPeer when the connection ends inside a frame; between frames its end is read as
///          the tag STC_Close. A failure puts the object into error: only Skip(), Close() and Abort() work then.
///          With throwing disabled an operation that fails returns URET_Error; operators return the object, and
///          operator>> for integers stores 0.
class VLK_API CVlkSocket {
public:
    virtual ~CVlkSocket();
    CVlkSocket(CVlkSocket const &) = delete;
    CVlkSocket & operator=(CVlkSocket const &) = delete;

    /// Write one value; state ST_Send.
    CVlkSocket & operator<<(signed char value) { return WriteINT(static_cast<int>(value)); }
    CVlkSocket & operator<<(short value) { return WriteINT(static_cast<int>(value)); }
    CVlkSocket & operator<<(int value) { return WriteINT(value); }
    CVlkSocket & operator<<(long long value) { return WriteINT(value); }
    CVlkSocket & operator<<(unsigned char value) { return WriteUINT(static_cast<unsigned int>(value)); }
    CVlkSocket & operator<<(unsigned short value) { return WriteUINT(static_cast<unsigned int>(value)); }
    CVlkSocket & operator<<(unsigned int value) { return WriteUINT(value); }
    CVlkSocket & operator<<(unsigned long long value) { return WriteUINT(value); }
    CVlkSocket & operator<<(std::string const & text) { return WriteText(text.data(), text.size()); }
    CVlkSocket & operator<<(Strings::CSubStringRef const & text) { return WriteText(text.data(), text.size()); }
    /// Up to its NUL; null is the empty text.
    CVlkSocket & operator<<(char const * text);
    /// The file from its start up to the stream's position, which is the file's size to this. Raises OperatingSystem
    /// when it can't be read.
    CVlkSocket & operator<<(std::FILE * file);

    /// Read one value; state ST_Read. The range is that of the target, but numbers of the short form aren't checked,
    /// and an unsigned target takes a negative number as its two's complement. Raise IntegerOutOfRange, and
    /// SocketOutOfSync for a frame of another type, which can be read again then.
    CVlkSocket & operator>>(signed char & value) { return ReadTo(value); }
    CVlkSocket & operator>>(short & value) { return ReadTo(value); }
    CVlkSocket & operator>>(int & value) { return ReadTo(value); }
    CVlkSocket & operator>>(long long & value) { return ReadTo(value); }
    CVlkSocket & operator>>(unsigned char & value) { return ReadTo(value); }
    CVlkSocket & operator>>(unsigned short & value) { return ReadTo(value); }
    CVlkSocket & operator>>(unsigned int & value) { return ReadTo(value); }
    CVlkSocket & operator>>(unsigned long long & value) { return ReadTo(value); }
    /// Up to the first NUL; the whole frame is taken. Raises OutOfMemory, too; the text is unchanged then.
    CVlkSocket & operator>>(std::string & text);
    /// With inner NULs. The text is empty after a failure.
    CVlkSocket & operator>>(Strings::CStringVar & text);
    /// Writes the file to the stream. Raises OperatingSystem when that fails, and DataMissing.
    CVlkSocket & operator>>(std::FILE * file);

    /// Writes binary data as one frame; state ST_Send. continuation 0: it begins new data.
    CVlkSocket & Write(void const * data, unsigned long long size, unsigned int continuation);
    /// Reads binary data; ST_Read or ST_ReadBlock. read: bytes delivered. URET_OK at the end of the data; URET_MoreData
    /// when the room was too small, the rest being for the next calls (state ST_ReadBlock).
    unsigned int Read(void * data, unsigned long long size, unsigned long long & read);

    /// For records, which know the width of their fields' frames: as the operators. size: 1, 2, 4 or 8 bytes.
    long long ReadINT(unsigned long long size);
    unsigned long long ReadUINT(unsigned long long size);
    CVlkSocket & WriteINT(int value);
    CVlkSocket & WriteINT(long long value);
    CVlkSocket & WriteUINT(unsigned int value);
    CVlkSocket & WriteUINT(unsigned long long value);

    /// Whether an operation has failed and no Skip() has ended that yet. Tells a caller that disabled throwing what
    /// the operators, which return the object, can't.
    bool HasFailed() const noexcept { return (m_uState & ST_Error) != 0; }
    /// Aborts the connection, if there is one; any state.
    unsigned int Abort();
    /// For a CWaiter: the attached socket with mask 1. Empty without one.
    operator Threading::CWaitHandle() noexcept;

protected:
    CVlkSocket() noexcept;

    static constexpr std::size_t BufferSize = 1460;
    static constexpr unsigned int NoTag = 0x100;

    // What follows raises by itself and changes no state; its callers do.

    /// The next tag; value is left alone by tags that have none.
    unsigned int ReadCmd(unsigned long long & value);
    /// The next tag, which stays where it is.
    unsigned int PeekCmd();
    /// Fills the empty buffer. The peer's close is a single byte 0, once.
    void ReadData();
    /// Big-endian number of that many raw bytes.
    unsigned long long ReadInteger(unsigned int bytes);
    void ReadBlock(unsigned char * target, unsigned long long size);
    /// Passes over everything up to that tag, which stays there.
    void Skip(unsigned int tag);
    /// Turns from reading to writing: takes what is left in the buffer, which may only be tags that readers never see.
    void PrepareBufferForSend();
    void Flush();
    void WriteCmd(unsigned int tag, unsigned long long value);
    void WriteByte(unsigned int byte);
    void WriteBlock(unsigned char const * data, unsigned long long size);

    /// The state in which a failure leaves the object, besides being in error.
    enum class EAfterFailure { Same, Idle };
    /// Does the work of a public operation of the two sides, inside the library. What that raises puts the object into
    /// error and goes on, or, with throwing disabled, becomes the result 0.
    template <class TWork>
    auto Operation(Exceptions::SOURCE_INFO const & source, TWork const & work,
                   EAfterFailure after = EAfterFailure::Same);
    /// The same for the work of Attach(), a failure of which aborts the socket.
    template <class TWork>
    unsigned int Handshake(Exceptions::SOURCE_INFO const & source, CSocket & socket, TWork const & work);

    /// Takes the socket, for a handshake. Raises SocketAlreadyAttached.
    void Take(CSocket & socket);
    /// Puts a tag back, to be read again.
    void PutBack(unsigned int tag, unsigned long long value) noexcept;
    void RequireState(unsigned int expected, char const * message) const
    {
        if (m_uState != expected) [[unlikely]]
            RaiseWrongState(message);
    }
    void RaiseWrongState(char const * message) const;
    /// Reads a tag; one that is another is put back and raises SocketOutOfSync with the message.
    unsigned long long ReadExpected(unsigned int tag, char const * message);
    /// Discards up to the tag, in ST_Read and ST_ReadBlock, whether in error or not. The work of the public Skip().
    unsigned int SkipTo(unsigned int tag);

    CSocket * m_pSocket;
    unsigned int m_uPeerVersion;
    unsigned int m_uState;
    unsigned int m_uPeekedTag; ///< NoTag: none
    unsigned long long m_uPeekedValue;
    unsigned int m_uEventsPending;
    unsigned long long m_uBlockRemainder; ///< bytes of the present binary block not delivered yet
    unsigned long long m_uCount;          ///< bytes in the buffer that wait to be read, or to be sent
    unsigned char * m_pPosition;          ///< next byte to read or to write
    unsigned char m_Buffer[BufferSize];
    bool m_bSending; ///< what is in the buffer waits to be sent

private:
    friend class CValueReader;
    template <class TInteger>
    CVlkSocket & ReadTo(TInteger & value);
    template <class TWork>
    CVlkSocket & Writing(TWork const & work);
    template <class TWork>
    CVlkSocket & Reading(TWork const & work);
    CVlkSocket & WriteText(char const * text, std::size_t size);
    void SendBuffer();
    void SendChunks(Exceptions::CThrowState & state, std::FILE * file, unsigned long long size);
    void ReceiveBlock(Exceptions::CThrowState & state, std::FILE * file, unsigned long long size);
    void Refill();
    unsigned char TakeByte();
    inline void Advance(std::size_t bytes) noexcept;
    void Discard(unsigned long long bytes);
    unsigned int Classify(Exceptions::CThrowState & state, unsigned int byte, unsigned long long & value);
    unsigned long long ReadNumber(Exceptions::CThrowState & state, unsigned long long positiveLimit,
                                  unsigned long long negativeLimit);
    bool ReadTextLength(Exceptions::CThrowState & state, unsigned long long & length);
    void ReadLongText(Exceptions::CThrowState & state, std::string & text, unsigned long long length);
    void ReadTextInto(Exceptions::CThrowState & state, Strings::CStringVar & text, unsigned long long length);
    unsigned int DeliverBlock(unsigned char * place, unsigned long long size, unsigned long long & read);

    long long ReadINTFromPeer(unsigned long long size);
    unsigned long long ReadUINTFromPeer(unsigned long long size);

    /// Bytes of the buffer that wait to be read. What lies in them as a whole is taken at once; false: anything else,
    /// which is left to the reading that can wait and raise.
    struct VLK_API SUnread {
        unsigned char const * next;
        unsigned char const * end;

        template <class TInteger>
        bool Take(TInteger & value) noexcept;
        bool Take(std::string & text) noexcept;
        bool TakeNumber(unsigned long long positiveLimit, unsigned long long negativeLimit,
                        unsigned long long & value) noexcept;

    private:
        static unsigned long long BigEndian(unsigned char const * bytes, std::ptrdiff_t count) noexcept;
        // Return the place behind the frame; null: not taken. Static, so that the object need not lie in memory.
        static unsigned char const * LongNumber(unsigned char const * frame, unsigned char const * end,
                                                unsigned long long positiveLimit, unsigned long long negativeLimit,
                                                unsigned long long & value) noexcept;
        static unsigned char const * Text(unsigned char const * frame, unsigned char const * end,
                                          std::string & text) noexcept;
    };
    /// Nothing, where a value can't be taken from the buffer alone.
    SUnread Unread() const noexcept
    {
        const bool isPlain = m_uState == ST_Read && m_uPeekedTag == NoTag;
        return {m_pPosition, m_pPosition + (isPlain ? m_uCount : 0)};
    }
    void Leave(SUnread const & unread) noexcept { Advance(static_cast<std::size_t>(unread.next - m_pPosition)); }

    static constexpr unsigned long long LargestSigned(unsigned long long size) noexcept
    {
        return ~0ull >> (65 - 8 * size);
    }
    static constexpr unsigned long long LargestUnsigned(unsigned long long size) noexcept
    {
        return ~0ull >> (64 - 8 * size);
    }
};

/// The side that asks.
class VLK_API CVlkSocketClient : public CVlkSocket {
public:
    CVlkSocketClient() noexcept = default;
    /// Aborts the connection.
    ~CVlkSocketClient() override;

    /// Handshake on a connected socket. version: that of the application's interface, which must be the server's. On
    /// failure the socket is aborted. Raises SocketAlreadyAttached, Protocol, ConnectionRefused.
    unsigned int Attach(CSocket & socket, unsigned int version);
    /// Begins a request; ST_Idle to ST_Send. Nothing is sent yet.
    unsigned int StartRequest(unsigned int code);
    /// Sends the request and waits for the server's code; ST_Send to ST_Read. Raises Protocol.
    unsigned int WaitForAck(unsigned int & ack);
    /// Discards the rest of the answer and ends an error; EndRequest() comes next.
    unsigned int Skip() { return SkipTo(STC_EndAck); }
    /// ST_Read to ST_Idle. Raises SocketOutOfSync before the end of the answer.
    unsigned int EndRequest();

    /// URET_OK if there is something to handle, else URET_WouldBlock; doesn't ask the socket. ST_Idle.
    unsigned int CanRead();
    /// URET_OK at once if there is something to handle; else the result of the socket's wait. ST_Idle.
    unsigned int Wait(unsigned int timeout);
    /// The events that the server has noted since the last call; 0 without asking if it said nothing. ST_Idle. Raises
    /// Protocol.
    unsigned int GetEvents(unsigned long long & events);

    /// Orderly end: says so, waits for the peer's close, and closes. Failures on the way end in the thread's error log.
    unsigned int Close();

private:
    bool HasSomethingToHandle() const noexcept { return m_uEventsPending != 0 || m_uCount != 0; }
};

/// The side that answers.
class VLK_API CVlkSocketServer : public CVlkSocket {
public:
    CVlkSocketServer() noexcept : m_uEventMask(0) {}
    /// Aborts the connection.
    ~CVlkSocketServer() override;

    /// Handshake on an accepted socket. On failure the socket is aborted. A client of another version is refused and
    /// given the time to close the connection itself. Raises SocketAlreadyAttached, Protocol, ConnectionRejected.
    unsigned int Attach(CSocket & socket, unsigned int version);
    /// Waits for the next frame; ST_Idle. URET_OK: a request, ST_Read. URET_Timeout: it was a query for events, which
    /// is answered. URET_Disconnect: the client has closed, ST_PeerClosed. Raises Protocol.
    unsigned int WaitForRequest(unsigned int & code);
    /// The same if the socket is readable, else URET_WouldBlock.
    unsigned int CheckRequest(unsigned int & code);
    /// Begins the answer; ST_Read to ST_Send. Raises SocketOutOfSync before the end of the arguments.
    unsigned int SendAck(unsigned int ack);
    /// Sends the answer; ST_Send to ST_Idle.
    unsigned int EndAck();
    /// Discards the rest of the arguments and ends an error; SendAck() comes next.
    unsigned int Skip() { return SkipTo(STC_WaitAck); }

    /// Adds events; the client is told when none were noted before. Exactly ST_Idle.
    unsigned int SetEvents(unsigned long long mask);
    unsigned int SendKeepAlive();

    unsigned int Close();

private:
    void AwaitPeersClose();

    unsigned long long m_uEventMask; ///< events that the client has not fetched
};

// The values of a record lie in the buffer nearly always, and then nothing can fail.

inline void CVlkSocket::Advance(std::size_t bytes) noexcept
{
    m_pPosition += bytes;
    m_uCount -= bytes;
}

inline unsigned long long CVlkSocket::SUnread::BigEndian(unsigned char const * bytes, std::ptrdiff_t count) noexcept
{
    unsigned long long value = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i)
        value = value << 8 | bytes[i];
    return value;
}

inline unsigned char const * CVlkSocket::SUnread::LongNumber(unsigned char const * frame, unsigned char const * end,
                                                             unsigned long long positiveLimit,
                                                             unsigned long long negativeLimit,
                                                             unsigned long long & value) noexcept
{
    const unsigned int tag = *frame & 0xF8;
    const std::ptrdiff_t length = (*frame & 7) + 1;
    if ((tag != STC_PosInt && tag != STC_NegInt) || end - frame <= length) return nullptr;
    const unsigned long long number = BigEndian(frame + 1, length);
    if (number > (tag == STC_NegInt ? negativeLimit : positiveLimit)) return nullptr;
    value = tag == STC_NegInt ? 0 - number : number;
    return frame + 1 + length;
}

inline bool CVlkSocket::SUnread::TakeNumber(unsigned long long positiveLimit, unsigned long long negativeLimit,
                                            unsigned long long & value) noexcept
{
    if (next == end) return false;
    const unsigned int byte = *next;
    if (byte >= STC_SmallPosInt) {
        const unsigned long long small = byte & 0x1F;
        value = byte < STC_SmallNegInt ? small : 0 - small;
        ++next;
        return true;
    }
    unsigned char const * const behind = LongNumber(next, end, positiveLimit, negativeLimit, value);
    if (behind == nullptr) return false;
    next = behind;
    return true;
}

template <class TInteger>
inline bool CVlkSocket::SUnread::Take(TInteger & value) noexcept
{
    constexpr bool isSigned = static_cast<TInteger>(-1) < static_cast<TInteger>(0);
    constexpr unsigned long long negativeLimit = LargestSigned(sizeof(TInteger)) + 1;
    unsigned long long number = 0;
    if (!TakeNumber(isSigned ? negativeLimit - 1 : LargestUnsigned(sizeof(TInteger)), negativeLimit, number))
        return false;
    value = static_cast<TInteger>(number);
    return true;
}

inline bool CVlkSocket::SUnread::Take(std::string & text) noexcept
{
    if (next == end) return false;
    if (*next == STC_EmptyString) {
        text.clear();
        ++next;
        return true;
    }
    unsigned char const * const behind = Text(next, end, text);
    if (behind == nullptr) return false;
    next = behind;
    return true;
}

inline long long CVlkSocket::ReadINT(unsigned long long size)
{
    unsigned long long value = 0;
    SUnread unread = Unread();
    if (!unread.TakeNumber(LargestSigned(size), LargestSigned(size) + 1, value)) [[unlikely]]
        return ReadINTFromPeer(size);
    Leave(unread);
    return static_cast<long long>(value);
}

inline unsigned long long CVlkSocket::ReadUINT(unsigned long long size)
{
    unsigned long long value = 0;
    SUnread unread = Unread();
    if (!unread.TakeNumber(LargestUnsigned(size), LargestSigned(size) + 1, value)) [[unlikely]]
        return ReadUINTFromPeer(size);
    Leave(unread);
    return value;
}

template <class TInteger>
inline CVlkSocket & CVlkSocket::ReadTo(TInteger & value)
{
    constexpr bool isSigned = static_cast<TInteger>(-1) < static_cast<TInteger>(0);
    if constexpr (isSigned)
        value = static_cast<TInteger>(ReadINT(sizeof(TInteger)));
    else
        value = static_cast<TInteger>(ReadUINT(sizeof(TInteger)));
    return *this;
}

/// Reads one value behind the other, each as the stream's own operator does, but faster: for the fields of a record.
/// While it lives the stream is used through it alone, and by one thread.
class CValueReader {
public:
    explicit CValueReader(CVlkSocket & sock) noexcept : m_Sock(sock), m_Unread(sock.Unread()) {}
    ~CValueReader()
    {
        if (m_Unread.next != nullptr) m_Sock.Leave(m_Unread);
    }
    CValueReader(CValueReader const &) = delete;
    CValueReader & operator=(CValueReader const &) = delete;

    /// Integers and std::string. Raises as the stream's operator does.
    template <class TValue>
    VLK_FORCE_INLINE CValueReader & operator>>(TValue & value)
    {
        if (!TakeShortest(value)) {
            const CVlkSocket::SUnread unread = m_Unread;
            m_Unread = {nullptr, nullptr}; // when it raises, the stream has what is left
            m_Unread = ReadOther(m_Sock, unread, value);
        }
        return *this;
    }

private:
    // One byte alone is what most values are; only this is worth its code in every place.
    template <class TInteger>
    bool TakeShortest(TInteger & value) noexcept
    {
        if (m_Unread.next == m_Unread.end || *m_Unread.next < STC_SmallPosInt) return false;
        const int small = *m_Unread.next & 0x1F;
        value = static_cast<TInteger>(*m_Unread.next < STC_SmallNegInt ? small : -small);
        ++m_Unread.next;
        return true;
    }
    bool TakeShortest(std::string & text) noexcept
    {
        if (m_Unread.next == m_Unread.end || *m_Unread.next != STC_EmptyString) return false;
        text.clear();
        ++m_Unread.next;
        return true;
    }
    // Static, and not inline: so the members need not lie in memory.
    template <class TValue>
    static CVlkSocket::SUnread ReadOther(CVlkSocket & sock, CVlkSocket::SUnread unread, TValue & value);

    CVlkSocket & m_Sock;
    CVlkSocket::SUnread m_Unread; ///< null while the stream itself reads
};

template <class TValue>
CVlkSocket::SUnread CValueReader::ReadOther(CVlkSocket & sock, CVlkSocket::SUnread unread, TValue & value)
{
    if (unread.Take(value)) return unread;
    sock.Leave(unread);
    sock >> value;
    return sock.Unread();
}

} // namespace VLK::Sockets

#endif
