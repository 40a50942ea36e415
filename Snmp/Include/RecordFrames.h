#ifndef SNMP_RECORD_FRAMES_H
#define SNMP_RECORD_FRAMES_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "Snmp/Include/Fields.h"
#include "Snmp/Include/RecordTrace.h"
#include "VLK/StreamSocket.h"

/// How the records lie on the stream. A record is its frames one behind the other, without length or tag; a table
/// is the number of its entries and then the entries.
///
/// The operations raise what the stream raises, and catch nothing. With throwing disabled they end with the stream's
/// failure, too. One thread at a time, as the stream.
namespace SNMP {

using VLK::Sockets::CVlkSocket;

// What the stream reads and writes of a field.

template <class TPlain>
TPlain & Raw(TPlain & field) noexcept
{
    return field;
}
template <int LOW, int HIGH, int FALLBACK>
int & Raw(TRangedField<LOW, HIGH, FALLBACK> & field) noexcept
{
    return field.Raw();
}
template <int LOW, int HIGH, int FALLBACK>
int Raw(TRangedField<LOW, HIGH, FALLBACK> const & field) noexcept
{
    return field;
}

template <class TPlain>
void NormaliseField(TPlain &) noexcept
{
}
template <int LOW, int HIGH, int FALLBACK>
void NormaliseField(TRangedField<LOW, HIGH, FALLBACK> & field) noexcept
{
    field.Normalise();
}

/// The frames of a record: pointers to its members, in the order of the wire.
template <auto... MEMBERS>
struct TFrames {
    template <class TRecord>
    static void Read(TRecord & record, CVlkSocket & sock)
    {
        VLK::Sockets::CValueReader reader(sock);
        static_cast<void>((reader >> ... >> Raw(record.*MEMBERS)));
    }
    template <class TRecord>
    static void Write(TRecord const & record, CVlkSocket & sock)
    {
        static_cast<void>((sock << ... << Raw(record.*MEMBERS)));
    }
    /// Makes of the record what a copy of it would be.
    template <class TRecord>
    static void Normalise(TRecord & record) noexcept
    {
        (NormaliseField(record.*MEMBERS), ...);
    }
};

template <class TFrameList, class TRecord>
void ReadRecord(TRecord & record, CVlkSocket & sock, ERecord kind,
                std::source_location const & where = std::source_location::current())
{
    Traced(kind, EOperation::Read, where, [&] { TFrameList::Read(record, sock); });
}

template <class TFrameList, class TRecord>
void WriteRecord(TRecord const & record, CVlkSocket & sock, ERecord kind,
                 std::source_location const & where = std::source_location::current())
{
    Traced(kind, EOperation::Write, where, [&] { TFrameList::Write(record, sock); });
}

/// Takes the last entry of a table away at its end, unless it is complete.
template <class TEntry>
struct SUnfinishedEntry {
    std::vector<TEntry> & table;
    bool isComplete = false;
    ~SUnfinishedEntry()
    {
        if (!isComplete) table.pop_back();
    }
};

/// Appends the next entry of the stream. It is read in its place and normalised then, which spares the copy that
/// would normalise it. False: it failed on a thread that disabled throwing.
template <class TFrameList, class TEntry>
bool AppendEntry(std::vector<TEntry> & table, CVlkSocket & sock)
{
    TEntry & entry = table.emplace_back();
    SUnfinishedEntry<TEntry> unfinished{table};
    entry.ReadData(sock);
    if (sock.HasFailed()) return false;
    TFrameList::Normalise(entry);
    unfinished.isComplete = true;
    return true;
}

/// Room that is made ahead for the entries that a peer announces, in bytes; what lies beyond comes as they arrive.
inline constexpr std::size_t kRoomAhead = 4u << 20;

template <class TFrameList, class TEntry>
void ReadTable(std::vector<TEntry> & table, CVlkSocket & sock, ERecord kind,
               std::source_location const & where = std::source_location::current())
{
    Traced(kind, EOperation::Read, where, [&] {
        table.clear();
        int count = 0;
        sock >> count;
        if (count <= 0) return;
        table.reserve(std::min(static_cast<std::size_t>(count), kRoomAhead / sizeof(TEntry)));
        for (int i = 0; i < count && AppendEntry<TFrameList>(table, sock);)
            ++i;
    });
}

template <class TEntry>
void WriteTable(std::vector<TEntry> const & table, CVlkSocket & sock, ERecord kind,
                std::source_location const & where = std::source_location::current())
{
    Traced(kind, EOperation::Write, where, [&] {
        sock << static_cast<int>(table.size());
        for (TEntry const & entry : table)
            entry.writeData(sock);
    });
}

} // namespace SNMP

#endif
