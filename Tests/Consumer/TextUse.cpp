#include "Module.h"

#include <VLK/Application.h>
#include <VLK/FormatStream.h>
#include <VLK/Functions.h>
#include <VLK/Strings.h>
#include <string_view>

#include "Uses.h"

using namespace VLK;

void UseTexts()
{
    Strings::TString<16> name;
    name << "front" << ' ' << "fan";
    REQUIRE(std::string_view(name.C_Str()) == "front fan");

    std::string utf8;
    Strings::ToUTF8(L"25 \u00B0C", utf8);
    REQUIRE(utf8 == "25 \xC2\xB0"
                    "C");

    Output_Streams::CChrStreamBuffer buffer(/*step=*/64);
    buffer.Format("%s turns at %d rpm (%08x)") << name << 1200 << 255u;
    REQUIRE(std::string_view(buffer.GetBuffer()) == "front fan turns at 1200 rpm (000000ff)");

    Strings::TString<256> program;
    REQUIRE(Misc::CVlkApplication::GetProcessPath(program) == 1);
    REQUIRE(std::string_view(program.C_Str()).find("kxra_consumer") != std::string_view::npos);
    REQUIRE(Functions::GetModuleInfo(kModuleId) == &g_consumerModule);
}
