#ifndef TOOLS_NLS_TOOL_PLACEHOLDERS_H
#define TOOLS_NLS_TOOL_PLACEHOLDERS_H

#include <string>
#include <string_view>

namespace NlsTool {

/// Whether a translation takes the values that the program inserts into the default text.
///
/// A default that is a format of the format streams ("%s", "%0*X") is translated by a format whose placeholders are
/// of the same conversions in the same order; width, alignment and margin are free. Any other default that has a "%"
/// is a resort mask ("%1", "%2"), and its translation uses the same fields in any order.
/// returns  what is wrong; empty if nothing is
std::string FaultOfPlaceholders(std::u32string_view standard, std::u32string_view translation);

} // namespace NlsTool

#endif
