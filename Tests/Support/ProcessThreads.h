#ifndef TESTS_SUPPORT_PROCESS_THREADS_H
#define TESTS_SUPPORT_PROCESS_THREADS_H

#include <cstddef>

/// Number of threads that this process has now.
std::size_t ProcessThreads();

#endif
