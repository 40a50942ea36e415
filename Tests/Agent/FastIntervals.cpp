#include "Agent/Src/Intervals.h"

// A second is a long time for a test.
SAgentIntervals g_agentIntervals{
    .firstWaitMs = 20,
    .intervalMs = 300,
    .listenerSpanMs = 600,
    .listenerInitMs = 900,
    .closeLooks = 50,
    .closeLookMs = 20,
    .firewallMs = 30,
    .breakOffMs = 1000,
};
