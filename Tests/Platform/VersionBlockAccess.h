#ifndef TESTS_PLATFORM_VERSION_BLOCK_ACCESS_H
#define TESTS_PLATFORM_VERSION_BLOCK_ACCESS_H

#include <gtest/gtest.h>

#include <string>

#include "Platform/Module.h"

/// The version block of a file that must have one.
inline std::string LoadVersionBlock(std::string const & path)
{
    Platform::ErrorCode error = 1;
    const std::uint32_t size = Platform::VersionBlockSize(path, error);
    EXPECT_NE(0u, size);
    EXPECT_EQ(Platform::Success, error);
    std::string block;
    EXPECT_EQ(Platform::Success, Platform::ReadVersionBlock(path, size, block));
    EXPECT_EQ(size, block.size());
    return block;
}

/// The text that a query finds in a block.
inline std::string VersionText(std::string const & block, std::string const & query)
{
    void const * data = nullptr;
    std::uint32_t size = 0;
    if (!Platform::QueryVersionBlock(block, query.c_str(), data, size)) return "<absent>";
    auto const * const text = static_cast<char const *>(data);
    EXPECT_EQ('\0', text[size - 1]);
    EXPECT_GE(text, block.data());
    EXPECT_LE(text + size, block.data() + block.size());
    return text;
}

#endif
