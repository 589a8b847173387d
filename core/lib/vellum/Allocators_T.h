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
            m_Arrays = Array::Make(m_Arrays ? m_Arrays->m_Capacity * 2 : m_InitialCapacity, m_Arrays);
        Block* from_array = m_Arrays->Storage() + m_Arrays->m_Used++;
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

    // An array's bookkeeping and its blocks are one allocation: a tree of a
    // few nodes, such as the contour of a circular void, costs one heap block.
    struct Array
    {
        Array* m_Next;
        std::size_t m_Used;
        std::size_t m_Capacity;

        static constexpr bool k_OverAligned = alignof(Block) > __STDCPP_DEFAULT_NEW_ALIGNMENT__;
        // The blocks start behind the bookkeeping, at their own alignment.
        static constexpr std::size_t HeaderSize()
        {
            return (sizeof(Array) + alignof(Block) - 1) / alignof(Block) * alignof(Block);
        }

        static Array* Make(std::size_t capacity, Array* next)
        {
            if (capacity > (static_cast<std::size_t>(-1) - HeaderSize()) / sizeof(Block))
                throw std::bad_array_new_length();
            const std::size_t bytes = HeaderSize() + capacity * sizeof(Block);
            void* raw = k_OverAligned ? ::operator new(bytes, std::align_val_t(alignof(Block)))
                                      : ::operator new(bytes);
            return new (raw) Array{next, 0, capacity};
        }
        static void Free(Array* array)
        {
            if (k_OverAligned)
                ::operator delete(array, std::align_val_t(alignof(Block)));
            else
                ::operator delete(array);
        }
        Block* Storage()
        {
            return reinterpret_cast<Block*>(reinterpret_cast<unsigned char*>(this) + HeaderSize());
        }
    };

    void FreeArrays()
    {
        while (m_Arrays)
            Array::Free(std::exchange(m_Arrays, m_Arrays->m_Next));
        m_FreeList = nullptr;
    }

    std::size_t m_InitialCapacity;
    Array* m_Arrays = nullptr;
    Block* m_FreeList = nullptr;
    std::size_t m_UsedBlocks = 0;
};
