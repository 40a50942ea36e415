#include "TrapText.h"

#include <cstring>

namespace Service {

std::string TrapText(oid const * name, std::size_t length)
{
    std::string text;
    for (std::size_t i = 0; i < length; ++i)
        text += (i == 0 ? "" : ".") + std::to_string(name[i]);
    // Where no module has this very OID, the label is the nearest name above it, if any, and the arcs that are left.
    char label[SPRINT_MAX_LEN];
    if (snprint_objid(label, sizeof label, name, length) > 0 && std::strchr(label, '.') == nullptr)
        text += " (" + std::string(label) + ")";
    return text;
}

} // namespace Service
