#include "Agent/Src/Failure.h"

#include "VLK/FormatStream.h"
#include "VLK/Strings.h"

namespace SNMP {

std::string FailureText(VLK::Exceptions::CErrorLog const & log, bool stack)
{
    VLK::Strings::TString<512> text;
    text.Format(stack ? "%S" : "%s") << log;
    return {text.data(), text.size()};
}

std::string CrashText(VLK::Exceptions::CErrorLog const & log) noexcept
{
    try {
        VLK::Strings::TString<512> text;
        text.Format("\nKestrix RAID Agent schmiert gerade mit einer Exception ab!\nGrund: %S") << log;
        return {text.data(), text.size()};
    } catch (...) {
        return {};
    }
}

} // namespace SNMP
