#ifndef SERVICE_PUMP_H
#define SERVICE_PUMP_H

#include "NetSnmp.h"

#include <cstdint>
#include <vector>

namespace Service {

/// Waits for Net-SNMP's sockets and our own descriptors together, and lets Net-SNMP work.
/// Threads: the owner of the loop.
class CPump {
public:
    CPump();
    ~CPump();
    CPump(CPump const &) = delete;
    CPump & operator=(CPump const &) = delete;

    /// Watches a descriptor besides Net-SNMP's. It stays its owner's.
    void Watch(int descriptor) { m_own.push_back(descriptor); }
    /// Waits until something happens, at most `maxMs` milliseconds, below 0 as long as Net-SNMP allows, and
    /// serves Net-SNMP.
    void Turn(int maxMs);
    /// Serves what Net-SNMP has sent to itself: a subagent's requests and answers go through pipes inside the
    /// process, and going round the whole loop for each of them would cost more than the request.
    void ServeInside();
    /// Whether the descriptor was readable in the last turn.
    bool WasReadable(int descriptor) const;

private:
    bool Wait(int maxMs);
    void RunAlarms();

    netsnmp_large_fd_set m_read;
    netsnmp_large_fd_set m_write;
    netsnmp_large_fd_set m_except;
    netsnmp_large_fd_set m_inside;
    std::vector<int> m_own;
    std::uint64_t m_alarmsRunMs = 0;
    bool m_anything = false;
};

} // namespace Service

#endif
