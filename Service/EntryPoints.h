#ifndef SERVICE_ENTRY_POINTS_H
#define SERVICE_ENTRY_POINTS_H

#include "Platform/SnmpExtension.h"

namespace Service {

/// The functions of one extension library. An extension is inside at most one of them at any moment.
struct SEntryPoints {
    DllMainFn main = nullptr; ///< may be missing
    SnmpExtensionInitFn init = nullptr;
    SnmpExtensionInitExFn initEx = nullptr;
    SnmpExtensionQueryFn query = nullptr;
    SnmpExtensionTrapFn trap = nullptr;
    SnmpExtensionCloseFn close = nullptr;
};

} // namespace Service

#endif
