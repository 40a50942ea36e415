#ifndef SNMP_RECORD_FRAMES_H
#define SNMP_RECORD_FRAMES_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Snmp/Include/Fields.h"
#include "Snmp/Include/RecordTrace.h"
#include "VLK/StreamSocket.h"

/// How the records lie on the stream. A record is its frames one behind the other, without length or tag; a table
/// is the number of its entries and then the entries.
///
/// The frames of a record are a tuple of pointers to its members, in the order of the wire. The operations raise
/// what the stream raises, and catch nothing. One thread at a time, as the stream.
namespace SNMP {

using VLK::Sockets::CVlkSocket;

inline void ReadFrame(CVlkSocket & sock, int & field)
{
    sock >> field;
}
inline void ReadFrame(CVlkSocket & sock, unsigned long long & field)
{
    sock >> field;
}
inline void ReadFrame(CVlkSocket & sock, std::string & field)
{
    sock >> field;
}
template <int LOW, int HIGH, int FALLBACK>
void ReadFrame(CVlkSocket & sock, TRangedField<LOW, HIGH, FALLBACK> & field)
{
    int raw = field;
    sock >> raw;
    field = raw;
}

inline void WriteFrame(CVlkSocket & sock, int field)
{
    sock << field;
}
inline void WriteFrame(CVlkSocket & sock, unsigned long long field)
{
    sock << field;
}
inline void WriteFrame(CVlkSocket & sock, std::string const & field)
{
    sock << field;
}
template <int LOW, int HIGH, int FALLBACK>
void WriteFrame(CVlkSocket & sock, TRangedField<LOW, HIGH, FALLBACK> const & field)
{
    sock << static_cast<int>(field);
}

template <class TRecord, class TFrames>
void ReadRecord(TRecord & record, TFrames const & frames, CVlkSocket & sock, ERecord kind,
                std::source_location const & where = std::source_location::current())
{
    Traced(kind, EOperation::Read, where,
           [&] { std::apply([&](auto... member) { (ReadFrame(sock, record.*member), ...); }, frames); });
}

template <class TRecord, class TFrames>
void WriteRecord(TRecord const & record, TFrames const & frames, CVlkSocket & sock, ERecord kind,
                 std::source_location const & where = std::source_location::current())
{
    Traced(kind, EOperation::Write, where,
           [&] { std::apply([&](auto... member) { (WriteFrame(sock, record.*member), ...); }, frames); });
}

/// Room that is made ahead for the entries that a peer announces, in bytes; what lies beyond comes as they arrive.
inline constexpr std::size_t kRoomAhead = 4u << 20;

template <class TEntry>
void ReadTable(std::vector<TEntry> & table, CVlkSocket & sock, ERecord kind,
               std::source_location const & where = std::source_location::current())
{
    Traced(kind, EOperation::Read, where, [&] {
        // The scratch keeps the raw numbers; appending normalises them, and takes the texts, which the next reading
        // replaces anyway.
        TEntry scratch;
        table.clear();
        int count = 0;
        ReadFrame(sock, count);
        if (count <= 0) return;
        table.reserve(std::min(static_cast<std::size_t>(count), kRoomAhead / sizeof(TEntry)));
        for (int i = 0; i < count; ++i) {
            scratch.ReadData(sock);
            table.push_back(std::move(scratch));
        }
    });
}

template <class TEntry>
void WriteTable(std::vector<TEntry> const & table, CVlkSocket & sock, ERecord kind,
                std::source_location const & where = std::source_location::current())
{
    Traced(kind, EOperation::Write, where, [&] {
        WriteFrame(sock, static_cast<int>(table.size()));
        for (TEntry const & entry : table)
            entry.writeData(sock);
    });
}

} // namespace SNMP

#endif
