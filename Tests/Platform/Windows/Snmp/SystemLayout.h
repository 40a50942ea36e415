#ifndef TESTS_PLATFORM_WINDOWS_SNMP_SYSTEM_LAYOUT_H
#define TESTS_PLATFORM_WINDOWS_SNMP_SYSTEM_LAYOUT_H

#include <cstddef>
#include <string>
#include <vector>

/// Size of a structure of the extension interface, and where its fields begin.
struct SLayout {
    std::string name;
    std::size_t size;
    std::vector<std::size_t> offsets;
    bool operator==(SLayout const &) const = default;
};

/// As the system's own header has them, whose names are the same as ours and so can't stand in one file with them.
std::vector<SLayout> SystemLayout();

#endif
