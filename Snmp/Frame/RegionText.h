#ifndef SNMP_FRAME_REGION_TEXT_H
#define SNMP_FRAME_REGION_TEXT_H

#include <string>

#include "Platform/SnmpExtension.h"

/// The value of a region as text for a trace: an octet string up to its first zero byte, an object identifier
/// or an address as numbers with dots between them. Values of other types leave `out` as it is.
void RegionToPlainText(RFC1157VarBind const & binding, std::string & out);

#endif
