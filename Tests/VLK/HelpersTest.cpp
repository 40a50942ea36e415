#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "VLK/CircularBuffer.h"
#include "VLK/Directory.h"
#include "VLK/InvalidParameterHandler.h"

using namespace VLK;
using VLK::Internals::CCircularBuffer;
using VLK::Strings::CStringRef;

namespace {

TEST(CircularBufferTest, CutsLongTextsAndIgnoresEmptyOnes)
{
    auto const buffer = std::make_unique<CCircularBuffer>();
    buffer->Write(CStringRef("", 0));
    EXPECT_EQ(0u, buffer->GetIndex());
    std::string const text(300, 'x');
    buffer->Write(CStringRef(text.c_str(), text.size()));
    EXPECT_EQ(std::string(255, 'x'), buffer->Slot(0));
    buffer->Write(CStringRef("short", 5));
    EXPECT_STREQ("short", buffer->Slot(1));
    EXPECT_EQ(2u, buffer->GetIndex());
}

TEST(CircularBufferTest, TheOldestTextGivesWay)
{
    auto const buffer = std::make_unique<CCircularBuffer>();
    for (unsigned int i = 0; i != CCircularBuffer::SlotCount; ++i)
        buffer->Write(CStringRef("first round", 11));
    EXPECT_EQ(0u, buffer->GetIndex());
    buffer->Write(CStringRef("2nd", 3));
    EXPECT_STREQ("2nd", buffer->Slot(0));
    EXPECT_STREQ("first round", buffer->Slot(1));
}

TEST(DirectoryTest, CopiesAndMoves)
{
    FileSystem::CDirectory first;
    FileSystem::CDirectory second(first);
    FileSystem::CDirectory third(std::move(second));
    first = third;
    third = std::move(first);
    EXPECT_EQ(3 * sizeof(void *), sizeof third);
}

TEST(InvalidParameterHandlerTest, ScopesNestOnOneThreadAndAnotherThreadWaits)
{
    std::atomic<bool> entered{false};
    std::thread other;
    {
        Misc::RAII_RuntimeInvalidParameterHandler const outer;
        Misc::RAII_RuntimeInvalidParameterHandler const inner;
        other = std::thread([&] {
            Misc::RAII_RuntimeInvalidParameterHandler const waiting;
            entered = true;
        });
        EXPECT_FALSE(entered);
    }
    other.join();
    EXPECT_TRUE(entered);
}

} // namespace
