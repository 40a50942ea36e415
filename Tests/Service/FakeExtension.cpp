/// An extension library that needs nothing but Platform, for the tests and benchmarks of the service. It serves a
/// region with some scalars and a table, and misbehaves as its environment tells it:
///
///   FAKE_REGION    root, default 1.3.6.1.4.1.88417.2.49
///   FAKE_ROWS      rows of the table, default 10;  FAKE_COLUMNS  its columns, default 31
///   FAKE_SLOW_MS   how long the slow object takes, default 0
///   FAKE_GENERIC   generic number of its traps, default 6
///   FAKE_FAULT     what goes wrong in queries: see kFaults
///   FAKE_INIT      "fail": it doesn't start; "noregion": it serves nothing
///   FAKE_LOG       file that gets a line for each of DllMain, SnmpExtensionInit and SnmpExtensionClose

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Clock.h"
#include "Platform/SnmpExtension.h"
#include "Platform/SnmpUtil.h"
#include "Platform/Wait.h"

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using CName = std::vector<std::uint32_t>;

/// Scalars of the group region.1, by number.
enum EScalar : std::uint32_t {
    kNumber = 1, // INTEGER, writable
    kText = 2,   // octets, writable
    kNull = 3,   // an object without a value
    kCounter64 = 4,
    kSlow = 5, // INTEGER that takes FAKE_SLOW_MS
    kObjectId = 6,
    kAddress = 7,
    kGauge = 8,
    kTicks = 9,
    kOpaque = 10,
    kBits = 11,
    kUnsigned = 12,
    kTrapBurst = 13,   // INTEGER, writable: so many traps at once
    kCalls = 14,       // calls of SnmpExtensionQuery so far
    kLongestList = 15, // bindings of the longest list so far
    kOverlap = 16,     // 1 once two calls were inside at the same time
    kTrapStream = 17,  // INTEGER, writable: so many traps, 50 a second
    kReadOnly = 18,    // INTEGER
    kPicky = 19,       // writable: answers with the status that is the value
    kLongText = 20,    // 1400 octets
    kSets = 21,        // bindings set so far
};

std::string Setting(char const * name, char const * otherwise)
{
    char const * value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

CName ParseName(std::string const & text)
{
    CName name;
    for (char const * at = text.c_str(); *at != 0;) {
        char * end = nullptr;
        name.push_back(static_cast<std::uint32_t>(std::strtoul(at, &end, 10)));
        at = *end == '.' ? end + 1 : end + std::strlen(end);
    }
    return name;
}

void Log(std::string const & line)
{
    const std::string file = Setting("FAKE_LOG", "");
    if (file.empty()) return;
    if (std::FILE * stream = std::fopen(file.c_str(), "a")) {
        std::fprintf(stream, "%s\n", line.c_str());
        std::fclose(stream);
    }
}

/// A scalar or a cell; column 0 is a scalar, row its number.
struct SObject {
    std::uint32_t column = 0;
    std::uint32_t row = 0;
};

/// A name wherever it lies, so that looking one up needs no copy of it.
struct SNameView {
    std::uint32_t const * ids;
    std::size_t length;
};

bool operator<(SNameView left, SNameView right)
{
    return std::lexicographical_compare(left.ids, left.ids + left.length, right.ids, right.ids + right.length);
}

SNameView ViewOf(CName const & name)
{
    return {name.data(), name.size()};
}

/// Rows alternate between numbers and texts, column by column.
std::string CellText(std::uint32_t column, std::uint32_t row)
{
    char text[32];
    std::snprintf(text, sizeof text, "cell %02u/%04u", column, row);
    return column % 2 == 0 ? text : "";
}

struct SFake {
#ifdef FAKE_SECOND
    CName region = ParseName("1.3.6.1.4.1.88417.3");
#else
    CName region = ParseName(Setting("FAKE_REGION", "1.3.6.1.4.1.88417.2.49"));
#endif
    std::string fault = Setting("FAKE_FAULT", "");
    std::int32_t genericTrap = std::stoi(Setting("FAKE_GENERIC", "6"));
    unsigned slowMs = static_cast<unsigned>(std::stoul(Setting("FAKE_SLOW_MS", "0")));
    CName lastScalar;
    CName table; // root of the cells, which are table.column.row
    std::uint32_t columns = static_cast<std::uint32_t>(std::stoul(Setting("FAKE_COLUMNS", "31")));
    std::vector<std::uint32_t> rows;             // numbers of the rows, ascending
    std::vector<std::vector<std::string>> texts; // of each row, by column
    std::int32_t number = 42;
    std::string text = "fake";
    std::uint32_t uptimeReference = 0;
    std::int32_t calls = 0;
    std::int32_t sets = 0;
    std::int32_t longestList = 0;
    std::atomic<int> inside{0};
    std::atomic<int> overlap{0};

    std::mutex trapLock; // guards traps and nextTrap
    std::deque<std::int32_t> traps;
    std::int32_t nextTrap = 1;
    Platform::CWaitableHandle trapEvent;
    std::thread stream;
    std::atomic<bool> closing{false};

    CName Under(std::initializer_list<std::uint32_t> tail) const
    {
        CName name = region;
        name.insert(name.end(), tail);
        return name;
    }

    void Fill()
    {
        lastScalar = Under({1, kSets, 0});
        table = Under({2, 1});
        const auto count = static_cast<std::uint32_t>(std::stoul(Setting("FAKE_ROWS", "10")));
        for (std::uint32_t row = 1; row <= count; ++row) {
            rows.push_back(row);
            texts.emplace_back();
            for (std::uint32_t column = 0; column <= columns; ++column)
                texts.back().push_back(CellText(column, row));
        }
    }

    bool HasRow(std::uint32_t row) const
    {
        return std::binary_search(rows.begin(), rows.end(), row);
    }

    /// The object of that name.
    bool Find(SNameView name, SObject & object) const
    {
        if (name.length == region.size() + 3 && std::equal(region.begin(), region.end(), name.ids)) {
            object = {0, name.ids[region.size() + 1]};
            return name.ids[region.size()] == 1 && name.ids[region.size() + 2] == 0 && object.row >= kNumber &&
                   object.row <= kSets;
        }
        if (name.length != table.size() + 2 || !std::equal(table.begin(), table.end(), name.ids)) return false;
        object = {name.ids[table.size()], name.ids[table.size() + 1]};
        return object.column >= 1 && object.column <= columns && HasRow(object.row);
    }

    /// The first object behind the name.
    bool FindNext(SNameView name, SObject & object) const
    {
        if (name < ViewOf(lastScalar)) return FindNextScalar(name, object);
        return FindNextCell(name, object);
    }

    bool FindNextScalar(SNameView name, SObject & object) const
    {
        std::uint32_t id = kNumber;
        while (!(name < ViewOf(Under({1, id, 0}))))
            ++id;
        object = {0, id};
        return true;
    }

    bool FindNextCell(SNameView name, SObject & object) const
    {
        if (rows.empty()) return false;
        const std::size_t size = table.size();
        std::uint32_t column = 1;
        auto row = rows.begin();
        if (name.length > size && std::equal(table.begin(), table.end(), name.ids)) {
            column = std::max(name.ids[size], 1U);
            if (name.ids[size] != 0 && name.length > size + 1)
                row = std::upper_bound(rows.begin(), rows.end(), name.ids[size + 1]);
        } else if (ViewOf(table) < name) {
            return false;
        }
        if (row == rows.end()) {
            ++column;
            row = rows.begin();
        }
        object = {column, *row};
        return column <= columns;
    }
};

SFake * g_fake = nullptr;

void PutName(RFC1157VarBind & binding, SNameView name)
{
    SnmpUtilMemFree(binding.name.ids);
    auto * ids = static_cast<std::uint32_t *>(SnmpUtilMemAlloc(static_cast<std::uint32_t>(name.length * 4)));
    std::memcpy(ids, name.ids, name.length * 4);
    binding.name.ids = ids;
    binding.name.idLength = static_cast<std::uint32_t>(name.length);
}

void PutName(RFC1157VarBind & binding, CName const & name)
{
    PutName(binding, ViewOf(name));
}

void PutName(RFC1157VarBind & binding, SObject const & object)
{
    if (object.column == 0) return PutName(binding, g_fake->Under({1, object.row, 0}));
    std::uint32_t ids[32];
    const std::size_t size = std::min<std::size_t>(g_fake->table.size(), 30);
    std::copy_n(g_fake->table.begin(), size, ids);
    ids[size] = object.column;
    ids[size + 1] = object.row;
    PutName(binding, SNameView{ids, size + 2});
}

void PutOctets(AsnAny & value, std::uint8_t type, std::string const & octets)
{
    auto * stream = static_cast<std::uint8_t *>(SnmpUtilMemAlloc(static_cast<std::uint32_t>(octets.size())));
    std::memcpy(stream, octets.data(), octets.size());
    value.asnType = type;
    value.asnValue.string.stream = stream;
    value.asnValue.string.length = static_cast<std::uint32_t>(octets.size());
    value.asnValue.string.dynamic = 1;
}

void PutInteger(AsnAny & value, std::int32_t number)
{
    value.asnType = ASN_INTEGER;
    value.asnValue.number = number;
}

void PutUnsigned(AsnAny & value, std::uint8_t type, std::uint32_t number)
{
    value.asnType = type;
    value.asnValue.unsigned32 = number;
}

void ReadCell(AsnAny & value, SObject const & object)
{
    if (object.column % 2 == 1) return PutInteger(value, static_cast<std::int32_t>(object.column * 1000 + object.row));
    const auto row = std::lower_bound(g_fake->rows.begin(), g_fake->rows.end(), object.row) - g_fake->rows.begin();
    PutOctets(value, ASN_OCTETSTRING, g_fake->texts[static_cast<std::size_t>(row)][object.column]);
}

void ReadScalar(AsnAny & value, std::uint32_t id)
{
    SFake & fake = *g_fake;
    switch (id) {
    case kNumber:
        return PutInteger(value, fake.number);
    case kText:
        return PutOctets(value, ASN_OCTETSTRING, fake.text);
    case kNull:
        value.asnType = ASN_NULL;
        return;
    case kCounter64:
        value.asnType = ASN_COUNTER64;
        value.asnValue.counter64.quadPart = 0x123456789ABCDEF0;
        return;
    case kSlow:
        std::this_thread::sleep_for(std::chrono::milliseconds(fake.slowMs));
        return PutInteger(value, 5);
    case kObjectId: {
        RFC1157VarBind holder{};
        PutName(holder, fake.region);
        value.asnType = ASN_OBJECTIDENTIFIER;
        value.asnValue.object = holder.name;
        return;
    }
    case kAddress:
        return PutOctets(value, ASN_IPADDRESS, std::string("\x0A\x01\x02\x03", 4));
    case kGauge:
        return PutUnsigned(value, ASN_GAUGE32, 4000000000U);
    case kTicks:
        return PutUnsigned(value, ASN_TIMETICKS, 123456);
    case kOpaque:
        return PutOctets(value, ASN_OPAQUE, std::string("\x9F\x78\x04\x42\xF6\x00\x00", 7));
    case kBits:
        return PutOctets(value, ASN_BITS, std::string("\xA0", 1));
    case kUnsigned:
        return PutUnsigned(value, ASN_UINTEGER32, 77);
    case kCalls:
        return PutInteger(value, fake.calls);
    case kLongestList:
        return PutInteger(value, fake.longestList);
    case kOverlap:
        return PutInteger(value, fake.overlap);
    case kLongText:
        return PutOctets(value, ASN_OCTETSTRING, std::string(1400, 'x'));
    case kSets:
        return PutInteger(value, fake.sets);
    default:
        return PutInteger(value, 0);
    }
}

void Read(AsnAny & value, SObject const & object)
{
    SnmpUtilAsnAnyFree(&value);
    if (object.column != 0)
        ReadCell(value, object);
    else
        ReadScalar(value, object.row);
}

CName NameOf(RFC1157VarBind const & binding)
{
    std::uint32_t const * ids = binding.name.ids;
    return CName(ids, ids + binding.name.idLength);
}

SNameView ViewOf(RFC1157VarBind const & binding)
{
    return {binding.name.ids, binding.name.idLength};
}

void QueueTrap()
{
    SFake & fake = *g_fake;
    {
        const std::lock_guard lock(fake.trapLock);
        fake.traps.push_back(fake.nextTrap++);
    }
    Platform::SetEvent(fake.trapEvent.Get());
}

void StreamTraps(std::int32_t count)
{
    auto next = std::chrono::steady_clock::now();
    for (std::int32_t i = 0; i < count && !g_fake->closing; ++i) {
        QueueTrap();
        next += std::chrono::milliseconds(20);
        std::this_thread::sleep_until(next);
    }
}

std::uint32_t CheckSet(SObject const & object, AsnAny const & value)
{
    if (object.column != 0 || object.row == kReadOnly) return SNMP_ERRORSTATUS_READONLY;
    if (object.row == kText) return value.asnType == ASN_OCTETSTRING ? 0 : SNMP_ERRORSTATUS_WRONGTYPE;
    if (value.asnType != ASN_INTEGER) return SNMP_ERRORSTATUS_WRONGTYPE;
    return 0;
}

std::uint32_t Write(SObject const & object, AsnAny const & value)
{
    SFake & fake = *g_fake;
    ++fake.sets;
    switch (object.row) {
    case kNumber:
        fake.number = value.asnValue.number;
        return 0;
    case kText: {
        std::uint8_t const * stream = value.asnValue.string.stream;
        fake.text.assign(stream, stream + value.asnValue.string.length);
        return 0;
    }
    case kSlow:
        std::this_thread::sleep_for(std::chrono::milliseconds(fake.slowMs));
        return 0;
    case kTrapBurst:
        for (std::int32_t i = 0; i < value.asnValue.number; ++i)
            QueueTrap();
        return 0;
    case kTrapStream:
        if (fake.stream.joinable()) fake.stream.join();
        fake.stream = std::thread(StreamTraps, std::int32_t{value.asnValue.number});
        return 0;
    case kPicky:
        return static_cast<std::uint32_t>(value.asnValue.number);
    default:
        return 0;
    }
}

std::uint32_t Get(RFC1157VarBind & binding)
{
    SObject object;
    if (!g_fake->Find(ViewOf(binding), object)) return SNMP_ERRORSTATUS_NOSUCHNAME;
    Read(binding.value, object);
    return 0;
}

std::uint32_t GetNext(RFC1157VarBind & binding)
{
    SObject object;
    if (!g_fake->FindNext(ViewOf(binding), object)) {
        CName behind = g_fake->region;
        ++behind.back();
        PutName(binding, behind);
        return 0;
    }
    PutName(binding, object);
    Read(binding.value, object);
    return 0;
}

/// One fault that spoils every answer; the second argument is the request.
struct SFault {
    char const * name;
    void (*spoil)(RFC1157VarBind & binding, CName const & asked);
};

const SFault kFaults[] = {
    {"nullname",
     [](RFC1157VarBind & binding, CName const &) {
         SnmpUtilMemFree(binding.name.ids);
         binding.name.ids = nullptr;
     }},
    {"hugename", [](RFC1157VarBind & binding, CName const &) { binding.name.idLength = 0x7FFFFFFF; }},
    {"emptyname", [](RFC1157VarBind & binding, CName const &) { binding.name.idLength = 0; }},
    {"outside",
     [](RFC1157VarBind & binding, CName const &) {
         PutName(binding, {1, 3, 6, 1, 4, 1, 1, 1});
     }},
    {"backwards",
     [](RFC1157VarBind & binding, CName const &) {
         PutName(binding, g_fake->Under({1, 1, 0}));
     }},
    {"standstill", [](RFC1157VarBind & binding, CName const & asked) { PutName(binding, asked); }},
    {"hugevalue",
     [](RFC1157VarBind & binding, CName const &) {
         SnmpUtilAsnAnyFree(&binding.value);
         PutOctets(binding.value, ASN_OCTETSTRING, "short");
         binding.value.asnValue.string.length = 0x7FFFFFFF;
     }},
    {"nullvalue",
     [](RFC1157VarBind & binding, CName const &) {
         SnmpUtilAsnAnyFree(&binding.value);
         binding.value.asnType = ASN_OCTETSTRING;
         binding.value.asnValue.string.stream = nullptr;
         binding.value.asnValue.string.length = 5;
     }},
    {"badaddress",
     [](RFC1157VarBind & binding, CName const &) {
         SnmpUtilAsnAnyFree(&binding.value);
         PutOctets(binding.value, ASN_IPADDRESS, "longer than four");
     }},
    {"badtype",
     [](RFC1157VarBind & binding, CName const &) {
         SnmpUtilAsnAnyFree(&binding.value);
         binding.value.asnType = 0x99;
     }},
};

void Spoil(RFC1157VarBindList & list, std::vector<CName> const & asked)
{
    for (SFault const & fault : kFaults) {
        if (g_fake->fault != fault.name) continue;
        for (std::uint32_t i = 0; i < list.len; ++i)
            fault.spoil(list.list[i], asked[i]);
    }
}

/// Counts who is inside, to find calls that overlap.
struct SInside {
    SInside()
    {
        if (++g_fake->inside > 1) g_fake->overlap = 1;
    }
    ~SInside() { --g_fake->inside; }
};

std::int32_t Set(RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t & index)
{
    std::int32_t result = 0;
    SObject object;
    for (std::uint32_t i = 0; i < list.len && status == 0; ++i) {
        if (!g_fake->Find(ViewOf(list.list[i]), object)) {
            status = SNMP_ERRORSTATUS_NOSUCHNAME;
        } else {
            result = 1;
            status = CheckSet(object, list.list[i].value);
        }
    }
    for (index = 0; index < list.len && status == 0; ++index) {
        g_fake->Find(ViewOf(list.list[index]), object);
        status = Write(object, list.list[index].value);
    }
    return result;
}

/// Faults of a whole call. False: none, go on.
bool FailWhole(RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t & index, std::int32_t & result)
{
    result = 1;
    if (g_fake->fault == "fail") {
        result = 0;
    } else if (g_fake->fault == "status99") {
        status = 99;
        index = 1;
    } else if (g_fake->fault == "badindex") {
        status = SNMP_ERRORSTATUS_NOSUCHNAME;
        index = 1000;
    } else if (g_fake->fault == "longerlist") {
        list.len += 1000;
    } else {
        return false;
    }
    return true;
}

} // namespace

FAKE_EXPORT std::int32_t DllMain(void *, std::uint32_t reason, void *)
{
    Log("DllMain " + std::to_string(reason));
    if (reason == DLL_PROCESS_ATTACH) {
        g_fake = new SFake;
        g_fake->Fill();
    } else if (reason == DLL_PROCESS_DETACH) {
        delete g_fake;
        g_fake = nullptr;
    }
    return 1;
}

FAKE_EXPORT std::int32_t SnmpExtensionInit(std::uint32_t uptimeReference, SnmpHandle * trapEvent,
                                           AsnObjectIdentifier * firstRegion)
{
    Log("Init");
    const std::string mode = Setting("FAKE_INIT", "");
    if (mode == "fail") return 0;
    g_fake->uptimeReference = uptimeReference;
    Platform::WaitHandle event = nullptr;
    if (Platform::NewEvent(event, /*initialState=*/false, /*manualReset=*/false) != Platform::Success) return 0;
    g_fake->trapEvent.Reset(event);
    *trapEvent = Platform::EventForHost(event);
    if (mode == "noregion") return 1;
    RFC1157VarBind holder{};
    PutName(holder, g_fake->region);
    *firstRegion = holder.name;
    return 1;
}

FAKE_EXPORT std::int32_t SnmpExtensionInitEx(AsnObjectIdentifier *)
{
    return 0;
}

FAKE_EXPORT std::int32_t SnmpExtensionQuery(std::uint8_t pduType, RFC1157VarBindList * list, std::uint32_t * status,
                                            std::uint32_t * index)
{
    const SInside inside;
    ++g_fake->calls;
    g_fake->longestList = std::max(g_fake->longestList, static_cast<std::int32_t>(list->len));
    *status = 0;
    *index = 0;
    std::int32_t result = 1;
    if (FailWhole(*list, *status, *index, result)) return result;
    if (pduType == SNMP_PDU_SET) return Set(*list, *status, *index);
    std::vector<CName> asked;
    for (std::uint32_t i = 0; i < list->len && *status == 0; ++i) {
        if (!g_fake->fault.empty()) asked.push_back(NameOf(list->list[i]));
        *status = pduType == SNMP_PDU_GET ? Get(list->list[i]) : GetNext(list->list[i]);
        *index = i + 1;
    }
    if (*status == 0) {
        *index = 0;
        if (!g_fake->fault.empty()) Spoil(*list, asked);
    }
    return 1;
}

FAKE_EXPORT std::int32_t SnmpExtensionTrap(AsnObjectIdentifier * enterprise, std::int32_t * genericTrap,
                                           std::int32_t * specificTrap, std::uint32_t * timeStamp,
                                           RFC1157VarBindList * list)
{
    const SInside inside;
    std::int32_t number = 0;
    {
        const std::lock_guard lock(g_fake->trapLock);
        if (g_fake->traps.empty()) return 0;
        number = g_fake->traps.front();
        g_fake->traps.pop_front();
    }
    RFC1157VarBind holder{};
    PutName(holder, g_fake->Under({2}));
    *enterprise = holder.name;
    *genericTrap = g_fake->genericTrap;
    *specificTrap = 7;
    *timeStamp = static_cast<std::uint32_t>(Platform::TickCountMs() / 10) - g_fake->uptimeReference;
    auto * bindings = static_cast<RFC1157VarBind *>(SnmpUtilMemAlloc(2 * sizeof(RFC1157VarBind)));
    std::memset(bindings, 0, 2 * sizeof(RFC1157VarBind));
    PutName(bindings[0], g_fake->Under({1, kNumber, 0}));
    PutInteger(bindings[0].value, number);
    PutName(bindings[1], g_fake->Under({1, kText, 0}));
    PutOctets(bindings[1].value, ASN_OCTETSTRING, "trap " + std::to_string(number));
    list->list = bindings;
    list->len = 2;
    return 1;
}

FAKE_EXPORT void SnmpExtensionClose()
{
    Log("Close");
    g_fake->closing = true;
    if (g_fake->stream.joinable()) g_fake->stream.join();
}
