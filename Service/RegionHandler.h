#ifndef SERVICE_REGION_HANDLER_H
#define SERVICE_REGION_HANDLER_H

#include "NetSnmp.h"

#include <string>

#include "Arcs.h"
#include "Loop.h"

namespace Service {

/// Where requests for a region go.
struct SRegion {
    CLoop & loop;
    CExtensionLibrary & library;
};

/// Registers a subtree with Net-SNMP, whose requests become jobs for the extension. `region` lives as long as the
/// registration, which ends with the process. False with one line in `error`.
bool RegisterRegion(SRegion & region, CArcs const & root, std::string & error);

} // namespace Service

#endif
