#include "UnitName.h"

namespace {

constexpr std::size_t MaxUnitNameBytes = 255;

bool Stays(char byte) noexcept
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == ':' || byte == '_' || byte == '.';
}

} // namespace

std::string Platform::EscapeUnitName(std::string_view text)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte == '/') {
            escaped += '-';
        } else if (Stays(text[i]) && !(byte == '.' && i == 0)) {
            escaped += text[i];
        } else {
            escaped += "\\x";
            escaped += digits[byte >> 4];
            escaped += digits[byte & 15];
        }
    }
    return escaped;
}

std::string Platform::ServiceUnitName(char const * service)
{
    if (service == nullptr || *service == '\0') return {};
    std::string unit = EscapeUnitName(service) + ".service";
    return unit.size() <= MaxUnitNameBytes ? unit : std::string();
}
