#include "Pump.h"

#include <limits>

#include "Platform/Clock.h"
#include "Platform/LoopEvents.h"

namespace Service {

CPump::CPump()
{
    netsnmp_large_fd_set_init(&m_read, FD_SETSIZE);
    netsnmp_large_fd_set_init(&m_write, FD_SETSIZE);
    netsnmp_large_fd_set_init(&m_except, FD_SETSIZE);
    netsnmp_large_fd_set_init(&m_inside, FD_SETSIZE);
}

CPump::~CPump()
{
    netsnmp_large_fd_set_cleanup(&m_read);
    netsnmp_large_fd_set_cleanup(&m_write);
    netsnmp_large_fd_set_cleanup(&m_except);
    netsnmp_large_fd_set_cleanup(&m_inside);
}

bool CPump::Wait(int maxMs)
{
    timeval time{std::numeric_limits<int>::max(), 0};
    int descriptors = 0;
    int forEver = 1; // becomes 0 when Net-SNMP has something to do at a time, which is in `time` then
    NETSNMP_LARGE_FD_ZERO(&m_read);
    NETSNMP_LARGE_FD_ZERO(&m_write);
    NETSNMP_LARGE_FD_ZERO(&m_except);
    snmp_select_info2(&descriptors, &m_read, &time, &forEver);
    netsnmp_external_event_info2(&descriptors, &m_read, &m_write, &m_except);
    for (const int own : m_own) {
        NETSNMP_LARGE_FD_SET(own, &m_read);
        descriptors = own >= descriptors ? own + 1 : descriptors;
    }
    if (maxMs >= 0 && (forEver != 0 || time.tv_sec * 1000 + time.tv_usec / 1000 >= maxMs)) {
        time = {maxMs / 1000, (maxMs % 1000) * 1000};
        forEver = 0;
    }
    const int count =
        netsnmp_large_fd_set_select(descriptors, &m_read, &m_write, &m_except, forEver != 0 ? nullptr : &time);
    m_anything = count > 0;
    if (!m_anything) return false;
    int left = count;
    netsnmp_dispatch_external_events2(&left, &m_read, &m_write, &m_except);
    return true;
}

void CPump::Turn(int maxMs)
{
    if (Wait(maxMs))
        snmp_read2(&m_read);
    else
        snmp_timeout();
    ServeInside();
    snmp_store_if_needed();
    RunAlarms();
    netsnmp_check_outstanding_agent_requests();
}

void CPump::RunAlarms()
{
    // Looking costs a good part of a short turn, and no alarm is due more finely than this.
    const std::uint64_t nowMs = Platform::MonotonicMs();
    if (nowMs == m_alarmsRunMs) return;
    m_alarmsRunMs = nowMs;
    run_alarms();
}

void CPump::ServeInside()
{
    // Only a subagent has both.
    if (agentx_callback_sess == nullptr || callback_master_sess == nullptr) return;
    netsnmp_session * const sessions[] = {callback_master_sess, agentx_callback_sess};
    void * handles[2];
    int sockets[2];
    for (int i = 0; i < 2; ++i) {
        handles[i] = snmp_sess_pointer(sessions[i]);
        if (handles[i] == nullptr) return;
        sockets[i] = snmp_sess_transport(handles[i])->sock;
    }
    const unsigned readable = Platform::ReadableNow(sockets[0], sockets[1]);
    for (unsigned i = 0; i < 2; ++i) {
        if ((readable >> i & 1U) == 0) continue;
        NETSNMP_LARGE_FD_ZERO(&m_inside);
        NETSNMP_LARGE_FD_SET(sockets[i], &m_inside);
        snmp_sess_read2(handles[i], &m_inside);
    }
}

bool CPump::WasReadable(int descriptor) const
{
    // A descriptor that isn't our own may have been closed meanwhile; its bit in the set then says nothing.
    return m_anything && NETSNMP_LARGE_FD_ISSET(descriptor, const_cast<netsnmp_large_fd_set *>(&m_read)) != 0;
}

} // namespace Service
