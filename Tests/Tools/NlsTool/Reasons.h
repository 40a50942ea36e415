#ifndef TESTS_TOOLS_NLS_TOOL_REASONS_H
#define TESTS_TOOLS_NLS_TOOL_REASONS_H

#include <string>
#include <utility>

#include "Tools/NlsTool/Problems.h"

/// What the work says is wrong; empty when it succeeds.
template <class TWork>
std::string ReasonsOf(TWork && work)
{
    try {
        std::forward<TWork>(work)();
        return {};
    } catch (NlsTool::CBadFile const & bad) {
        return bad.what();
    }
}

#endif
