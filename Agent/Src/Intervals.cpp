#include "Agent/Src/Intervals.h"

SAgentIntervals g_agentIntervals{
    .firstWaitMs = 1000,
    .intervalMs = 30000,
    .listenerSpanMs = 60000,
    .listenerInitMs = 180000,
    .closeLooks = 50,
    .closeLookMs = 100,
    .firewallMs = 3000,
    .breakOffMs = 1000,
};
