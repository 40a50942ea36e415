#ifndef SNMP_HOST_VERSION_TEXT_H
#define SNMP_HOST_VERSION_TEXT_H

#include <string>

/// Puts `replacement` in the place of each character of a version text that can't be shown: control characters, and
/// what the system's character set calls neither printable nor space nor legal. A fixed list of codes stays in any
/// case. A character of several bytes becomes one replacement. Returns whether the text changed.
bool CleanVersionText(std::string & text, char replacement);

#endif
