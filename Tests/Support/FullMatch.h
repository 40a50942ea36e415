#ifndef TESTS_SUPPORT_FULL_MATCH_H
#define TESTS_SUPPORT_FULL_MATCH_H

#include <gmock/gmock.h>

#include <regex>
#include <string>

/// Matches a text that is as the regular expression (ECMAScript) says, from its first to its last character. The test
/// library's own matchers know no brackets on some systems.
MATCHER_P(FullyMatches, pattern, "is as /" + std::string(pattern) + "/ says")
{
    return std::regex_match(std::string(arg), std::regex(std::string(pattern)));
}

#endif
