#ifndef TESTS_SUPPORT_MATCHES_PATTERN_H
#define TESTS_SUPPORT_MATCHES_PATTERN_H

#include <gmock/gmock.h>

#include <regex>
#include <string>

/// Whether the whole text matches a regular expression of ECMAScript, the same on each system (googletest's own knows
/// classes of characters on some only).
MATCHER_P(MatchesPattern, pattern, "matches " + std::string(pattern))
{
    return std::regex_match(std::string(arg), std::regex(pattern));
}

#endif
