#ifndef SERVICE_REGION_HANDLER_H
#define SERVICE_REGION_HANDLER_H

#include "NetSnmp.h"

#include <string>

#include "Arcs.h"
#include "Loop.h"
#include "WalkJob.h"

namespace Service {

/// A region of an extension, and where requests for it go.
struct SRegion {
    CLoop & loop;
    CExtensionLibrary & extension;
    CArcs root;
    CWalkJobPool walks{};
};

/// Registers the region with Net-SNMP, whose requests become jobs for the extension. `region` lives as long as the
/// registration, which ends with Net-SNMP. False with one line in `error`.
bool RegisterRegion(SRegion & region, std::string & error);

} // namespace Service

#endif
