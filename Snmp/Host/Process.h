#ifndef SNMP_HOST_PROCESS_H
#define SNMP_HOST_PROCESS_H

#include <cstdint>
#include <string>

/// Names of processes. Any thread. Nothing is thrown.
class CProcess {
public:
    /// Puts the name of a process's program into `out`; for the system's own processes, which can't be opened,
    /// their well-known name. Returns 1 if `out` holds a name then, be it the one it held before.
    static int GetName(std::string & out, std::uint32_t pid) noexcept;
};

/// True as soon as any process that can be opened bears another name than `name` (case doesn't count); false only
/// if no process could be examined, or every one that could be examined bears that name. Any thread. Nothing is
/// thrown.
bool IsProcessRunning(char const * name) noexcept;

#endif
