#ifndef TOOLS_NAMES_H
#define TOOLS_NAMES_H

#include <cstdint>
#include <string>

namespace Coresim {

/// Numbers for the report, each with its name behind it if it has one: "10022 (DISK_OFFLINE)", "99".
std::string EventText(std::int32_t event);
std::string ResultText(std::uint32_t result);

} // namespace Coresim

#endif
