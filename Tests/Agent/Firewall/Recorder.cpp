#include "Recorder.h"

#include <utility>

namespace Recorder {

SState & State()
{
    static SState state;
    return state;
}

bool Note(std::string call)
{
    State().calls.push_back(std::move(call));
    return State().failAt == State().calls.size() - 1;
}

} // namespace Recorder
