// Allocators_test.cpp - the block allocator that stores tree nodes.
#include "core/lib/vellum/Allocators_T.h"
#include "core/lib/vellum/Assert.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <vector>

namespace
{
struct alignas(16) Wide
{
    double m_A, m_B, m_C;
};
} // namespace

TEST(BlockAllocatorTest, BlocksAreDistinctAlignedAndArraysDouble)
{
    BlockAllocator_T<Wide> allocator(4);
    std::set<void*> seen;
    std::vector<void*> blocks;
    for (int i = 0; i < 13; ++i)
    {
        void* block = allocator.Allocate();
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(Wide), 0u);
        EXPECT_TRUE(seen.insert(block).second);
        blocks.push_back(block);
        // Write the whole block: ASan would catch overlaps or short blocks.
        new (block) Wide{1.0 * i, 2.0, 3.0};
    }
    EXPECT_EQ(allocator.GetUsedBlocks(), 13u);
    // Arrays of 4, 8 and 16 blocks hold 13.
    EXPECT_EQ(allocator.GetCapacity(), 28u);
    for (void* block : blocks)
        allocator.Deallocate(block);
    EXPECT_EQ(allocator.GetUsedBlocks(), 0u);
}

TEST(BlockAllocatorTest, ReturnedBlocksAreReusedFirst)
{
    BlockAllocator_T<Wide> allocator(2);
    void* a = allocator.Allocate();
    void* b = allocator.Allocate();
    allocator.Deallocate(a);
    // The free list gives a back before any array grows.
    EXPECT_EQ(allocator.Allocate(), a);
    EXPECT_EQ(allocator.GetCapacity(), 2u);
    allocator.Deallocate(a);
    allocator.Deallocate(b);
}

TEST(BlockAllocatorTest, MisuseIsAsserted)
{
    // Count failures also at sites that have already reported once.
    const bool oldLog = LogFailedAsserts_G;
    LogFailedAsserts_G = true;
    const unsigned long before = GetFailedAssertCount_G();
    {
        BlockAllocator_T<int> allocator;
        allocator.Allocate(); // never returned: the destructor complains
    }
    EXPECT_GT(GetFailedAssertCount_G(), before);

    const unsigned long middle = GetFailedAssertCount_G();
    BlockAllocator_T<int> allocator;
    int local = 0;
    allocator.Deallocate(&local); // nothing was handed out
    EXPECT_GT(GetFailedAssertCount_G(), middle);
    LogFailedAsserts_G = oldLog;
}
