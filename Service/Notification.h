#ifndef SERVICE_NOTIFICATION_H
#define SERVICE_NOTIFICATION_H

#include "NetSnmp.h"

#include <string>
#include <utility>

#include "TrapQuery.h"

namespace Service {

/// A trap in the form in which it travels: sysUpTime.0, snmpTrapOID.0 and its variables; behind those of a generic trap
/// snmpTrapEnterprise.0, since the name of any other tells the enterprise.
/// Threads: the owner of the loop.
class CNotification {
public:
    /// Takes the values of the trap.
    explicit CNotification(STrap & trap);
    CNotification(CNotification && other) noexcept : m_first(std::exchange(other.m_first, nullptr)) {}
    CNotification & operator=(CNotification && other) noexcept
    {
        std::swap(m_first, other.m_first);
        return *this;
    }
    CNotification(CNotification const &) = delete;
    CNotification & operator=(CNotification const &) = delete;
    ~CNotification() { snmp_free_varbind(m_first); }

    /// Its OID and, where one is known, its name (TrapText).
    std::string Text() const;
    /// Sends it to the receivers that this process knows.
    void SendToSinks() const;
    /// Sends it to the AgentX master, whose answer goes to `answered` with `argument` and the number that is
    /// returned here. 0: it couldn't be sent.
    int SendToMaster(netsnmp_session * master, snmp_callback answered, void * argument) const;

private:
    netsnmp_variable_list * Append(ArcView name);
    void AddTicks(ArcView name, std::uint32_t ticks);
    void AddOid(ArcView name, ArcView value);
    void Add(ArcView name, CValue const & value);

    netsnmp_variable_list * m_first = nullptr;
};

} // namespace Service

#endif
