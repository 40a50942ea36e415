#include "Support/ProcessThreads.h"

#include <filesystem>

std::size_t ProcessThreads()
{
    std::size_t count = 0;
    for ([[maybe_unused]] auto const & entry : std::filesystem::directory_iterator("/proc/self/task"))
        ++count;
    return count;
}
