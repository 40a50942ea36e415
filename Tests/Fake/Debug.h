#ifndef TESTS_FAKE_DEBUG_H
#define TESTS_FAKE_DEBUG_H

#include <string>
#include <vector>

/// A CDebug that keeps its lines in memory instead of writing them. A test program that lists Tests/Fake/Debug.cpp
/// among its sources gets it in place of the real one. Any thread.
namespace Fake {

struct STraceLine {
    unsigned level;
    std::string text;

    bool operator==(STraceLine const &) const = default;
};

/// What CDebug::Enabled() says from now on; off at the start. CDebug::Init doesn't change it.
void EnableTrace(bool enabled);

/// The lines of all threads since the last ClearTrace, in order.
std::vector<STraceLine> TraceLines();
void ClearTrace();

/// The last call of CDebug::Init: the application name, with " (banner)" behind it if a banner was asked for.
std::string LastTraceInit();

} // namespace Fake

#endif
