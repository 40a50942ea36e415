#ifndef SNMP_FRAME_INTERVALS_H
#define SNMP_FRAME_INTERVALS_H

#include <cstdint>

/// How long the frame waits for its threads, in milliseconds. Fixed in the product; the one place where a test
/// shortens them, before it starts a thread.
struct SFrameIntervals {
    std::uint32_t stopMs = 30000;      ///< StopAgent for the main thread, before it is killed
    std::uint32_t recordEndMs = 10;    ///< a thread record at its end, for its thread
    std::uint32_t recordKillMs = 5000; ///< the same once more before the thread is killed
};

extern SFrameIntervals g_frameIntervals;

#endif
