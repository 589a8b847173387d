// Allocators_T.h - the block allocator that stores the nodes of a tree.
//
// A contour of thousands of edges would otherwise cost thousands of small heap
// allocations. The allocator hands out fixed-size blocks from arrays that
// double in capacity, and keeps returned blocks on a free list for the next
// allocation; the arrays go back to the heap only with the allocator. Blocks
// are raw storage: the caller constructs and destroys what it puts in them.
#pragma once

#include "core/lib/vellum/Assert.h"

#include <cstddef>
#include <new>
#include <utility>

template <class T> class BlockAllocator_T
{
public:
    static constexpr std::size_t k_DefaultInitialCapacity = 16;

    explicit BlockAllocator_T(std::size_t initialCapacity = k_DefaultInitialCapacity)
        : m_InitialCapacity(initialCapacity ? initialCapacity : 1)
    {
    }
    BlockAllocator_T(const BlockAllocator_T&) = delete;
    BlockAllocator_T& operator=(const BlockAllocator_T&) = delete;

    BlockAllocator_T(BlockAllocator_T&& from) noexcept
        : m_InitialCapacity(from.m_InitialCapacity), m_Arrays(std::exchange(from.m_Arrays, nullptr)),
          m_FreeList(std::exchange(from.m_FreeList, nullptr)),
          m_UsedBlocks(std::exchange(from.m_UsedBlocks, 0))
    {
    }

    BlockAllocator_T& operator=(BlockAllocator_T&& from) noexcept
    {
        if (this != &from)
        {
            FreeArrays();
            m_InitialCapacity = from.m_InitialCapacity;
            m_Arrays = std::exchange(from.m_Arrays, nullptr);
            m_FreeList = std::exchange(from.m_FreeList, nullptr);
            m_UsedBlocks = std::exchange(from.m_UsedBlocks, 0);
        }
        return *this;
    }

    // Every block must have come back by now.
    ~BlockAllocator_T()
    {
        VELLUM_ASSERT(m_UsedBlocks == 0);
        FreeArrays();
    }

    // The capacity of the first array; takes effect only while none exists,
    // which lets a tree that is built from n elements get them in one array.
    void SetInitialCapacity(std::size_t capacity)
    {
        if (capacity)
            m_InitialCapacity = capacity;
    }

    // Storage for one T, uninitialised.
    void* Allocate()
    {
        ++m_UsedBlocks;
        if (m_FreeList)
        {
            Block* block = m_FreeList;
            m_FreeList = block->m_NextFree;
            return block;
        }
        if (!m_Arrays || m_Arrays->m_Used == m_Arrays->m_Capacity)
            m_Arrays = new Array(m_Arrays ? m_Arrays->m_Capacity * 2 : m_InitialCapacity, m_Arrays);
        Block* from_array = m_Arrays->m_Storage + m_Arrays->m_Used++;
        VELLUM_ASSERT(from_array);
        return from_array;
    }

    // Returns a block; it goes on the free list, not back to the heap.
    void Deallocate(void* storage)
    {
        VELLUM_ASSERT(m_UsedBlocks >= 1);
        if (!storage || m_UsedBlocks == 0)
            return;
        --m_UsedBlocks;
        Block* block = static_cast<Block*>(storage);
        block->m_NextFree = m_FreeList;
        m_FreeList = block;
    }

    std::size_t GetUsedBlocks() const { return m_UsedBlocks; }
    // Blocks held in all arrays, used or not.
    std::size_t GetCapacity() const
    {
        std::size_t total = 0;
        for (const Array* array = m_Arrays; array; array = array->m_Next)
            total += array->m_Capacity;
        return total;
    }

private:
    union Block
    {
        Block* m_NextFree;
        alignas(T) unsigned char m_Bytes[sizeof(T)];
    };

    struct Array
    {
        Array(std::size_t capacity, Array* next)
            : m_Next(next), m_Used(0), m_Capacity(capacity), m_Storage(new Block[capacity])
        {
        }
        ~Array() { delete[] m_Storage; }
        Array(const Array&) = delete;
        Array& operator=(const Array&) = delete;

        Array* m_Next;
        std::size_t m_Used;
        std::size_t m_Capacity;
        Block* m_Storage;
    };

    void FreeArrays()
    {
        while (m_Arrays)
            delete std::exchange(m_Arrays, m_Arrays->m_Next);
        m_FreeList = nullptr;
    }

    std::size_t m_InitialCapacity;
    Array* m_Arrays = nullptr;
    Block* m_FreeList = nullptr;
    std::size_t m_UsedBlocks = 0;
};
