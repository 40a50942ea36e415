#ifndef AGENT_POLL_HANDLER_H
#define AGENT_POLL_HANDLER_H

namespace SNMP {

class CKestrixRAIDAgent;

/// The body of Thread_PollHandler: the agent's one conversation with the core service. Connects, fetches what the
/// service flags, forwards its events as traps, answers progress queries, and ends the delayed start. Returns when
/// the terminate event or g_agentShutdown ask for it, or after a failure outside the conversation. Lets no
/// exception out.
void RunPollHandler(CKestrixRAIDAgent & agent) noexcept;

} // namespace SNMP

#endif
