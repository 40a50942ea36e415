#include "Tools/Names.h"

#include "Snmp/Include/Dictionaries.h"

namespace Coresim {

namespace {

std::string WithName(std::string number, std::string_view name)
{
    if (name.empty()) return number;
    return number.append(" (").append(name).append(")");
}

} // namespace

std::string EventText(std::int32_t event)
{
    return WithName(std::to_string(event), SNMP::Dictionaries::kEvents.NameOf(event));
}

std::string ResultText(std::uint32_t result)
{
    return WithName(std::to_string(result), SNMP::Dictionaries::kResultCodes.NameOf(static_cast<std::int32_t>(result)));
}

} // namespace Coresim
