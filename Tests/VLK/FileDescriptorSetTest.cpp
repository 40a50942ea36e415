#include "VLK/FileDescriptorSet.h"

#include <gtest/gtest.h>

#include "Foundation.h"

using VLK::Misc::CFileDescriptorSet;

namespace {

constexpr std::size_t NoSocket = ~std::size_t{0};

TEST(FileDescriptorSetTest, ASocketIsInOnce)
{
    CFileDescriptorSet set;
    EXPECT_EQ(1u, set.Set(7));
    EXPECT_EQ(1u, set.Set(7));
    EXPECT_EQ(1u, set.Size());
    EXPECT_TRUE(set.IsSet(7));
    EXPECT_FALSE(set.IsSet(8));
}

TEST(FileDescriptorSetTest, MinusOneChangesNothing)
{
    CFileDescriptorSet set;
    set.Set(NoSocket);
    EXPECT_EQ(0u, set.Size());
    EXPECT_FALSE(set.IsSet(NoSocket));
    set.Set(1);
    set.Clear(NoSocket);
    EXPECT_EQ(1u, set.Size());
}

TEST(FileDescriptorSetTest, ClearKeepsTheOrder)
{
    CFileDescriptorSet set;
    for (std::size_t socket : {3, 1, 2})
        set.Set(socket);
    set.Clear(3);
    set.Clear(9);
    ASSERT_EQ(2u, set.Size());
    EXPECT_EQ(1u, set.Get(0));
    EXPECT_EQ(2u, set.Get(1));
    set.Zero();
    EXPECT_EQ(0u, set.Size());
}

TEST(FileDescriptorSetTest, TheSixtyFifthMovesToTheHeap)
{
    CFileDescriptorSet set;
    for (std::size_t socket = 0; socket != 64; ++socket)
        set.Set(socket);
    EXPECT_EQ(64u, set.Capacity());
    set.Set(64);
    EXPECT_EQ(130u, set.Capacity());
    ASSERT_EQ(65u, set.Size());
    for (std::size_t i = 0; i != 65; ++i)
        EXPECT_EQ(i, set.Get(i));
}

TEST(FileDescriptorSetTest, ResizeNeverShrinksButToNothing)
{
    CFileDescriptorSet set;
    set.Resize(32);
    EXPECT_EQ(64u, set.Capacity());
    set.Set(5);
    set.Resize(100);
    EXPECT_EQ(100u, set.Capacity());
    set.Resize(99);
    EXPECT_EQ(100u, set.Capacity());
    set.Resize(0);
    EXPECT_EQ(64u, set.Capacity());
    EXPECT_TRUE(set.IsSet(5));
    set.Resize(70);
    set.Free();
    EXPECT_EQ(64u, set.Capacity());
    EXPECT_EQ(0u, set.Size());
}

TEST(FileDescriptorSetTest, ClearKeepsTheOrderOnTheHeapToo)
{
    CFileDescriptorSet set;
    for (std::size_t socket = 0; socket != 70; ++socket)
        set.Set(socket);
    set.Clear(0);
    set.Clear(69);
    ASSERT_EQ(68u, set.Size());
    for (std::size_t i = 0; i != 68; ++i)
        EXPECT_EQ(i + 1, set.Get(i));
    EXPECT_FALSE(set.IsSet(0));
    EXPECT_FALSE(set.IsSet(69));
    EXPECT_EQ(130u, set.Capacity());
}

TEST(FileDescriptorSetTest, BackInsideTheObjectTheFirst64Stay)
{
    CFileDescriptorSet set;
    for (std::size_t socket = 0; socket != 65; ++socket)
        set.Set(socket);
    set.Resize(0);
    ASSERT_EQ(64u, set.Size());
    EXPECT_EQ(0u, set.Get(0));
    EXPECT_EQ(63u, set.Get(63));
    EXPECT_FALSE(set.IsSet(64));
}

} // namespace
