#include "Module.h"

#include <VLK/Threads.h>
#include <cstdio>
#include <string>

#include "Uses.h"

int main(int argc, char ** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: kxra_consumer DIRECTORY\n");
        return 2;
    }
    std::string const directory = argv[1];
    VLK::Threading::CCallBackGuard const thread; // the first thread comes from outside
    try {
        UseTexts();
        UseWaits();
        UsePool();
        UseIniFile(directory);
        UseLanguageFile(directory);
        UseXml(directory);
        UseErrorRecord();
        UseStreamProtocol();
        UseTrace(directory); // at last: the masks hold for the rest of the process
    } catch (unsigned int) {
        std::fprintf(stderr, "an error of the foundation that nobody expected\n");
        return 1;
    }
    if (!AllHeld()) return 1;
    std::puts("all families used");
    return 0;
}
