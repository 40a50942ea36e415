#ifndef VLK_SRC_LOCAL_TIME_TEXT_H
#define VLK_SRC_LOCAL_TIME_TEXT_H

#include "VLK/Strings.h"

namespace VLK::Internals {

/// The present local time in the form of asctime, "Wed Jun 30 21:49:08 1993", without its newline. Independent of the
/// locale.
Strings::TString<32> LocalTimeText();

} // namespace VLK::Internals

#endif
