#include "Module.h"

#include <VLK/Application.h>
#include <VLK/Threads.h>
#include <cstdint>
#include <fstream>
#include <string_view>

#include "Uses.h"

using namespace VLK;
using Language_Support::CLanguageStrg;

namespace {

constexpr unsigned int kGerman = 0x6465; // "de"

std::string BigEndian(std::uint32_t value)
{
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
            static_cast<char>(value)};
}

/// A language file with one language.
std::string GermanFile(std::string const & texts)
{
    constexpr std::uint32_t magic = 0x25031961, countOfTexts = 2, countOfLanguages = 1, firstText = 60;
    std::string name = "Deutsch";
    name.resize(32);
    return BigEndian(magic) + BigEndian(countOfTexts) + BigEndian(countOfLanguages) + BigEndian(kGerman) +
           BigEndian(firstText) + BigEndian(static_cast<std::uint32_t>(texts.size())) +
           BigEndian(Language_Support::CLanguageSupport::EncodingUtf8) + name + texts;
}

bool Says(std::string_view text)
{
    return text == CLanguageStrg(g_texts.GetLngData(), TextGreeting).Native();
}

} // namespace

void UseLanguageFile(std::string const & directory)
{
    using namespace std::string_literals;
    std::ofstream(directory + "/consumer.nls", std::ios::binary) << GermanFile("Temperatur au\xC3\x9F"
                                                                               "erhalb des Bandes\0Guten Morgen\0"s);
    Misc::pVlkApp->SetNlsSearchPath(directory.c_str());

    Threading::CCurrentThread thread;
    REQUIRE(Says("Good morning"));
    thread.SetLngId(kGerman);
    REQUIRE(Says("Guten Morgen"));
    thread.SetLngId(0);
    REQUIRE(Says("Good morning"));
}
