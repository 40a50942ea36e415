#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "Snmp/Mib/MibNames.h"
#include "Snmp/Mib/MibSlab.h"

namespace {

struct SLive {
    CMibSlab::SBlock block;
    std::size_t bytes;
    unsigned char mark;
};

bool IsIntact(SLive const & live)
{
    auto const * const bytes = static_cast<unsigned char const *>(live.block.memory);
    return std::all_of(bytes, bytes + live.bytes, [&live](unsigned char byte) { return byte == live.mark; });
}

TEST(MibSlabTest, BlocksOfAllSizesAreAlignedAndKeepTheirContent)
{
    CMibSlab slab;
    std::mt19937 random(7);
    std::vector<SLive> blocks;
    for (int step = 0; step < 20000; ++step) {
        if (blocks.size() < 3000 && random() % 3 != 0) {
            const std::size_t bytes = step % 100 == 0 ? 2000 : 1 + random() % 600;
            const SLive live{slab.Allocate(bytes), bytes, static_cast<unsigned char>(step)};
            ASSERT_EQ(0u, reinterpret_cast<std::uintptr_t>(live.block.memory) % 8);
            std::memset(live.block.memory, live.mark, bytes);
            blocks.push_back(live);
        } else if (!blocks.empty()) {
            std::swap(blocks[random() % blocks.size()], blocks.back());
            ASSERT_TRUE(IsIntact(blocks.back()));
            slab.Free(blocks.back().block.memory, blocks.back().block.place);
            blocks.pop_back();
        }
    }
    for (SLive const & live : blocks) {
        EXPECT_TRUE(IsIntact(live));
        slab.Free(live.block.memory, live.block.place);
    }
}

TEST(MibSlabTest, AFreedBlockIsTheNextOfItsSize)
{
    CMibSlab slab;
    const CMibSlab::SBlock kept = slab.Allocate(88);
    const CMibSlab::SBlock freed = slab.Allocate(88);
    slab.Free(freed.memory, freed.place);
    const CMibSlab::SBlock again = slab.Allocate(88);
    EXPECT_EQ(freed.memory, again.memory);
    slab.Free(again.memory, again.place);
    slab.Free(kept.memory, kept.place);
}

TEST(MibNamesTest, OneNameIsKeptOnceUntilItsLastUse)
{
    CMibNames names;
    SMibName const * const first = names.Acquire("kxrStatusOverall");
    EXPECT_EQ(first, names.Acquire("kxrStatusOverall"));
    EXPECT_NE(first, names.Acquire("kxrStatusControllers"));
    EXPECT_EQ("kxrStatusOverall", first->text);
    names.Release(first);
    EXPECT_EQ("kxrStatusOverall", first->text);
    EXPECT_EQ(1u, first->uses);
    names.Release(first);
    EXPECT_EQ(1u, names.Acquire("kxrStatusOverall")->uses);
}

TEST(MibNamesTest, AnEmptyNameNeedsNoPlace)
{
    CMibNames names;
    EXPECT_EQ(nullptr, names.Acquire(""));
    names.Release(nullptr);
}

} // namespace
