#include "Snmp/Frame/ErrorText.h"

#include <iterator>

namespace {

constexpr char const * kTexts[] = {"no error",
                                   "too big",
                                   "no such name",
                                   "bad value",
                                   "value is read-only",
                                   "generic error",
                                   "no access",
                                   "wrong type",
                                   "wrong length",
                                   "wrong encoding",
                                   "wrong value",
                                   "no creation",
                                   "inconsistent value",
                                   "resource unavailable",
                                   "commit failed",
                                   "undo failed",
                                   "authorization error",
                                   "not writeable",
                                   "inconsistent name"};

} // namespace

char const * SnmpErrorText(std::uint32_t status) noexcept
{
    return status < std::size(kTexts) ? kTexts[status] : "unknown";
}
