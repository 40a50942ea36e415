#ifndef TESTS_AGENT_FIREWALL_RECORDER_H
#define TESTS_AGENT_FIREWALL_RECORDER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What happens at the firewall in a test, and what the firewall answers. SeamRecorder.cpp stands in for the functions
/// of the platform, on every system; InterfaceRecorder.cpp for the interfaces behind them. One thread.
namespace Recorder {

struct SState {
    /// In order, "rule 1.put_Name Kestrix_RAID" or "release policy"; rules are numbered as they are made.
    std::vector<std::string> calls;
    std::optional<std::size_t> failAt; ///< the call of this place in `calls` fails
    std::uint32_t failure = 0x80070005;
    std::uint32_t enterResult = 0; ///< when CoInitializeEx doesn't fail
    std::vector<std::string> textsMade;
    int entered = 0;      ///< preparations of the thread that were not taken back
    int texts = 0;        ///< not freed yet
    int policies = 0;     ///< references that are left, of all policies
    int restrictions = 0; ///< likewise
    int rules = 0;        ///< likewise, of the collections
    int ruleObjects = 0;  ///< likewise
    int rulesMade = 0;    ///< number of the last one
};

SState & State();

/// Notes a call. True: it has to fail, with State().failure.
bool Note(std::string call);

} // namespace Recorder

#endif
