#include <filesystem>

#include "RegistryEditor.h"

std::string RegistryFileBytes(std::string const & lines)
{
    const std::string text = "Windows Registry Editor Version 5.00\r\n\r\n" + lines;
    std::string bytes = "\xFF\xFE";
    // A path is the library's means to get from UTF-8 to UTF-16.
    for (const char16_t unit : std::filesystem::path(std::u8string(text.begin(), text.end())).u16string()) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}
