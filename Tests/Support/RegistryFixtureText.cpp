#include <cstdio>

#include "Support/RegistryFixture.h"

std::string CRegistryFixture::Quoted(std::string const & text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

std::string CRegistryFixture::Expandable(std::string const & text)
{
    std::string bytes;
    for (const char c : text + '\0') {
        char unit[8];
        std::snprintf(unit, sizeof unit, "%s%02x,00", bytes.empty() ? "" : ",", static_cast<unsigned int>(c));
        bytes += unit;
    }
    return "hex(2):" + bytes;
}
