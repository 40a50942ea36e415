#include "Log.h"

#include <cstdio>
#include <string>

#include "Platform/Supervisor.h"

namespace Service {

namespace {
bool g_withPriority = false; // written once, before any other thread runs
}

void CLog::Init() noexcept
{
    g_withPriority = Platform::StandardErrorIsJournal();
}

void CLog::Write(EPriority priority, std::string_view text) noexcept
try {
    std::string line;
    if (g_withPriority) line = "<" + std::to_string(static_cast<int>(priority)) + ">";
    line += "kxra-snmpd: ";
    const std::size_t begin = line.size();
    line += text;
    for (std::size_t i = begin; i < line.size(); ++i)
        if (line[i] == '\n' || line[i] == '\r') line[i] = ' ';
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
} catch (...) {
    std::fputs("kxra-snmpd: out of memory\n", stderr);
}

} // namespace Service
