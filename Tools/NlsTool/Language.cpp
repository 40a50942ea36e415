#include "Tools/NlsTool/Language.h"

#include "Tools/NlsTool/Encoding.h"
#include "VLK/ModuleInfo.h"

namespace NlsTool {

namespace {

bool IsSmallLetter(char c) noexcept
{
    return c >= 'a' && c <= 'z';
}

} // namespace

SDefaults FoundationDefaults()
{
    auto & file = *VLK::Misc::VLK_MODULE_INFO_VlkLib.GetLanguageFile();
    VLK::Language_Support::LNGDATA & data = file.GetDefaultLngData();
    SDefaults defaults{data.languageId, {}};
    for (std::size_t i = 0; i != file.GetStringCount(); ++i)
        defaults.texts.push_back(FromUtf8(VLK::Language_Support::CLanguageStrg(data, i).Native()));
    return defaults;
}

std::uint32_t LanguageId(std::string_view letters) noexcept
{
    if (letters.size() != 2 || !IsSmallLetter(letters[0]) || !IsSmallLetter(letters[1])) return 0;
    return static_cast<std::uint32_t>(letters[0]) << 8 | static_cast<std::uint32_t>(letters[1]);
}

std::string LettersOf(std::uint32_t id)
{
    std::string const letters{static_cast<char>(id >> 8 & 0xFF), static_cast<char>(id & 0xFF)};
    return LanguageId(letters) == id ? letters : std::string();
}

std::string_view NameOf(EEncoding encoding) noexcept
{
    switch (encoding) {
    case EEncoding::EncodingNative:
        return "native";
    case EEncoding::EncodingUtf8:
        return "utf-8";
    default:
        return "absent";
    }
}

} // namespace NlsTool
