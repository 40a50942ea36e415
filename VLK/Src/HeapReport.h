#ifndef VLK_SRC_HEAP_REPORT_H
#define VLK_SRC_HEAP_REPORT_H

#include "Platform/Runtime.h"

namespace VLK::Internals {

/// Reports a damaged heap: to the trace, or, with toTrace 0, to the debugger, which stops the process.
void ReportHeap(Platform::HeapState heap, unsigned int toTrace) noexcept;

} // namespace VLK::Internals

#endif
