#ifndef SNMP_HOST_TRACE_FILE_H
#define SNMP_HOST_TRACE_FILE_H

#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/NamedMutex.h"

/// Name of the mutex that guards a trace file between processes.
std::string TraceMutexName(std::string const & path);

/// Appends a text to the trace file, which is opened and closed for it, so that a crash loses nothing.
/// A new file is written in UTF-16 (little-endian) behind FF FE; an old one goes on in the form that it has.
/// Lines end with CR LF.
///
/// limit  bytes from which on the file is first moved to `path` + ".txt"; 0: never
/// mutex  waited for at most 20 ms, and the write goes on without it then; null: none
/// text   of the system's character set
/// Any thread. A file that can't be opened loses the text. Raises nothing but out of memory.
void WriteTraceFile(std::string const & path, std::uint32_t limit, Platform::NamedMutexHandle mutex,
                    std::string_view text);

#endif
