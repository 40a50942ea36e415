#ifndef SNMP_DICTIONARIES_H
#define SNMP_DICTIONARIES_H

#include "Snmp/Include/Dictionary.h"

/// The common vocabulary of the core service and its clients: numbers of the wire records and traps, and their names.
/// For diagnostics; no logic of the agent depends on it.
namespace SNMP::Dictionaries {

namespace Runs {

inline constexpr SNameRun kResultCodes[] = {
#include "Snmp/Include/Dictionaries/ResultCodes.inc"
};
inline constexpr SNameRun kEvents[] = {
#include "Snmp/Include/Dictionaries/Events.inc"
};
inline constexpr SNameRun kCommands[] = {
#include "Snmp/Include/Dictionaries/Commands.inc"
};
inline constexpr SNameRun kProperties[] = {
#include "Snmp/Include/Dictionaries/Properties.inc"
};
inline constexpr SNameRun kPropertyValues[] = {
#include "Snmp/Include/Dictionaries/PropertyValues.inc"
};

} // namespace Runs

/// Results of requests to the core service.
inline constexpr TDictionary<SizeOfDictionary(Runs::kResultCodes)> kResultCodes(Runs::kResultCodes);
/// Events of the core service; the number of an event is the specific-trap number of its trap.
inline constexpr TDictionary<SizeOfDictionary(Runs::kEvents)> kEvents(Runs::kEvents);
/// Requests that a client can put to the core service.
inline constexpr TDictionary<SizeOfDictionary(Runs::kCommands)> kCommands(Runs::kCommands);
/// Properties of the objects. 1 is UNDEFINED and 29900 is RUI_PROPERTIES: FRAME_END and OBJECT_NAME, which stand behind
/// them with the same identifiers, are rows without effect.
inline constexpr TDictionary<SizeOfDictionary(Runs::kProperties)> kProperties(Runs::kProperties);
/// Enumerated values of the properties. The name of 0 is empty.
inline constexpr TDictionary<SizeOfDictionary(Runs::kPropertyValues)> kPropertyValues(Runs::kPropertyValues);

} // namespace SNMP::Dictionaries

#endif
