#ifndef SNMP_FRAME_TRAP_QUEUE_H
#define SNMP_FRAME_TRAP_QUEUE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

#include "Platform/CriticalSection.h"
#include "Platform/SnmpExtension.h"
#include "Snmp/Frame/Relaxed.h"

/// One trap that waits for the host. Owns its bindings and its enterprise.
struct STrapRecord {
    RFC1157VarBindList varBinds{};
    AsnObjectIdentifier enterprise{};
    std::uint32_t specificTrap = 0;

    STrapRecord() = default;
    STrapRecord(STrapRecord && other) noexcept;
    STrapRecord & operator=(STrapRecord &&) = delete;
    ~STrapRecord();
};

/// Traps on their way from the agent's threads to the host, first in, first out, without a bound.
/// Threads: any, for all operations. Lock: its own, held only while a record is moved in or out.
class CTrapQueue {
public:
    /// Parses the enterprise, copies the bindings and appends them. A text that is no OID gives an empty
    /// enterprise. Raises std::bad_alloc when there is no memory for a further record; nothing is queued then.
    void Append(char const * enterpriseOidText, std::uint32_t specificTrap, RFC1157VarBindList const * bindings);

    /// Takes the oldest record; nothing when there is none. The first look at the number of records happens
    /// without the lock, so a record that is being appended may be missed until the next call.
    std::optional<STrapRecord> Take() noexcept;

    /// Leaves the lock once when someone holds it, so that the queue can be destroyed.
    void AbandonLock() noexcept;

private:
    std::deque<STrapRecord> m_records;
    TRelaxed<std::size_t> m_count; ///< length of m_records, changed under the lock
    Platform::CCriticalSection m_lock;
};

#endif
