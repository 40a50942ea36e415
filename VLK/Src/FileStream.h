#ifndef VLK_SRC_FILE_STREAM_H
#define VLK_SRC_FILE_STREAM_H

#include <cstdio>
#include <memory>

namespace VLK::Internals {

struct SFileCloser {
    void operator()(std::FILE * file) const noexcept { std::fclose(file); }
};

/// Owns a stream of the C library; null: none.
using CFile = std::unique_ptr<std::FILE, SFileCloser>;

} // namespace VLK::Internals

#endif
