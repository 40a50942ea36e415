#ifndef TOOLS_FAILURE_TEXT_H
#define TOOLS_FAILURE_TEXT_H

#include <string>

namespace Coresim {

/// The text of the foundation's failure that is being handled, in one line. Call it in a catch block, once: it
/// takes the error's record.
std::string TakeFailureText();

} // namespace Coresim

#endif
