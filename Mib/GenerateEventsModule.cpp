// Writes KESTRIX-RAID-EVENTS-MIB to the file that is named on the command line. A step of the build.

#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>

#include "Mib/EventsModule.h"

namespace {

void Write(char const * path)
{
    std::string const text = Mib::EventsModule();
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error(std::string(path) + ": can't be written");
}

} // namespace

int main(int argc, char ** argv)
{
    if (argc != 2) {
        std::fputs("usage: kxra_mibgen FILE\n", stderr);
        return 2;
    }
    try {
        Write(argv[1]);
        return 0;
    } catch (std::exception const & error) {
        std::fprintf(stderr, "kxra_mibgen: %s\n", error.what());
        return 1;
    }
}
