#ifndef SERVICE_TRANSLATE_H
#define SERVICE_TRANSLATE_H

#include "NetSnmp.h"

#include "Bindings.h"

namespace Service {

/// Names and values between Net-SNMP and the extension interface.

/// The arcs of a name. False when one is wider than an extension's arcs: then no object has that name.
bool ToArcs(oid const * name, std::size_t length, CArcs & out);
/// The arcs behind which the same objects follow as behind `name`: as ToArcs, but a name with an arc that is
/// too wide becomes the last name that an extension can have before it.
void ToStart(oid const * name, std::size_t length, CArcs & out);

/// Puts the name and the value, which is usable, into a variable. False: no memory.
bool PutName(netsnmp_variable_list & variable, ArcView name) noexcept;
bool PutValue(netsnmp_variable_list & variable, CValue const & value) noexcept;

/// The value of a variable that a manager wants to set, in memory of its own. False: a type or arc that no
/// extension knows.
bool ToAny(netsnmp_variable_list const & variable, AsnAny & out);

} // namespace Service

#endif
