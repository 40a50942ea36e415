#ifndef TESTS_VLK_THROW_COUNTER_POSIX_LOADER_PATH_H
#define TESTS_VLK_THROW_COUNTER_POSIX_LOADER_PATH_H

/// The variable with the folders that the system's loader looks in, and what stands between two of them.
inline constexpr char kLoaderPath[] = "LD_LIBRARY_PATH";
inline constexpr char kLoaderPathSeparator = ':';

#endif
