#ifndef PLATFORM_MEMORY_H
#define PLATFORM_MEMORY_H

namespace Platform {

/// Tunes the C library's memory for a process that frees what it took within microseconds, over and over: small
/// pieces are joined with their neighbours at once instead of all together now and then. Before a second thread
/// runs. A hint, which may do nothing.
void TuneMemoryForShortRequests() noexcept;

} // namespace Platform

#endif
