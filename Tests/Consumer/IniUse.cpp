#include "Module.h"

#include <VLK/IniFile.h>
#include <fstream>
#include <iterator>

#include "Uses.h"

using namespace VLK::INI_Files;

namespace {

constexpr unsigned int kDeadline = 20000; // ms

std::string Content(std::string const & file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace

void UseIniFile(std::string const & directory)
{
    std::string const path = directory + "/sensors.ini";
    std::ofstream(path)
        << "; written by hand\n[Sensors]\n; the two of the front\nNames = intake, outlet\nLimit = 0x50\n";

    CIniFile file;
    file.Lock(path, kDeadline);
    CIniSection sensors = file["Sensors"];
    CIniList list;
    sensors["Names"].GetValue(list);
    REQUIRE(list.Count() == 2);
    std::string name;
    list[1].GetValue(name);
    REQUIRE(name == "outlet");
    int limit = 0;
    sensors["Limit"].GetValue(limit);
    REQUIRE(limit == 80);
    int interval = 0;
    sensors["Interval"].GetValue(interval, 30);
    REQUIRE(interval == 30);

    CIniList channels;
    channels.AddValue(1).AddValue(2).AddValue("spare");
    sensors["Channels"].SetValue(channels);
    REQUIRE(file.Flush(kDeadline) == VLK::URET_OK);

    std::string const written = Content(path);
    REQUIRE(written.find("written by hand") != std::string::npos);
    REQUIRE(written.find("the two of the front") != std::string::npos);
    CIniFile again;
    again.Read(path, kDeadline);
    CIniList read;
    again["Sensors"]["Channels"].GetValue(read);
    REQUIRE(read.Count() == 3);
}
