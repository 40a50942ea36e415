#include "Snmp/Host/VersionText.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "Platform/Text.h"

namespace {

/// Low bytes of codes that stay without a further look, in ascending order.
constexpr unsigned char Kept[] = {10,  13,  139, 140, 155, 156, 159, 169, 171, 174, 178, 179, 187, 192, 193, 194, 196,
                                  198, 199, 200, 201, 202, 203, 206, 207, 212, 214, 217, 219, 220, 223, 224, 225, 226,
                                  228, 230, 231, 232, 233, 234, 235, 238, 239, 244, 246, 249, 251, 252, 255};

/// First byte plus 256 times the second, which counts as signed.
int CodeOf(char const * character, std::size_t size)
{
    const int first = static_cast<unsigned char>(character[0]);
    return size > 1 ? first + 256 * static_cast<signed char>(character[1]) : first;
}

bool IsControl(int code)
{
    return (code >= 0 && code < 0x20) || code == 0x7F;
}

bool Stays(int code)
{
    if (std::binary_search(std::begin(Kept), std::end(Kept), static_cast<unsigned char>(code & 0xFF))) return true;
    return !IsControl(code) && Platform::IsPrintOrSpaceOrLegal(static_cast<std::uint32_t>(code));
}

} // namespace

bool CleanVersionText(std::string & text, char replacement)
{
    std::string cleaned;
    bool changed = false;
    for (char const * at = text.c_str(); *at != '\0';) {
        const std::size_t size = Platform::CharSize(at);
        if (Stays(CodeOf(at, size))) {
            cleaned.append(at, size);
        } else {
            cleaned += replacement;
            changed = true;
        }
        at += size;
    }
    if (changed) text = std::move(cleaned);
    return changed;
}
