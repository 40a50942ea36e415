#ifndef AGENT_INTERVALS_H
#define AGENT_INTERVALS_H

/// How long the RAID agent waits, in milliseconds. Fixed in the product; the one place where a test shortens them,
/// before it makes an agent.
struct SAgentIntervals {
    unsigned int firstWaitMs; ///< from the start of the poll thread to the first connection attempt
    unsigned int intervalMs;  ///< between attempts, and of silence between ticks
    int listenerSpanMs;       ///< how long a delayed start looks for the trap listener
    int listenerInitMs;       ///< how long the trap listener is then given to initialise
    unsigned int closeLooks;  ///< how often CloseMib looks whether the poll thread has ended
    unsigned int closeLookMs; ///< the pause between two looks
    unsigned int firewallMs;  ///< what the constructor waits after it has added the firewall rules
    unsigned int breakOffMs;  ///< for a poll thread that hangs in a wait, to leave it before it is killed
};

extern SAgentIntervals g_agentIntervals;

#endif
