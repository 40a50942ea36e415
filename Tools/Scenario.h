#ifndef TOOLS_SCENARIO_H
#define TOOLS_SCENARIO_H

#include <string>

#include "Tools/Estate.h"
#include "Tools/Timeline.h"

namespace Coresim {

struct SScenario {
    SEstate estate;
    STimeline timeline;
};

/// Reads a scenario file (XML; kxra-coresim's manual page tells its form). Raises CBadInput with "file:line: reason"
/// when it can't be read or holds anything that isn't understood.
SScenario ReadScenario(std::string const & path);

} // namespace Coresim

#endif
