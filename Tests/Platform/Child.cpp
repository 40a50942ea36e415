#include <cstdio>
#include <cstdlib>

#include "Platform/NamedMutex.h"

// Another process for the tests: it says that it runs and waits for the end of its input. With the name of a mutex it
// says whether it could take it, and ends without releasing it.
int main(int argc, char ** argv)
{
    Platform::NamedMutexHandle mutex = nullptr;
    char const * word = "running";
    if (argc > 1) {
        Platform::NewNamedMutex(mutex, argv[1]);
        word = Platform::TakeNamedMutex(mutex, 0) ? "taken" : "refused";
    }
    std::printf("%s\n", word);
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    std::_Exit(0);
}
