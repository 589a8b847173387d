// RefCounter_T.h - the counted pointer beneath the copy-on-write shapes.
//
// A contour, a collection or a cached iterator is shared between copies of
// its owner through one of these: two words, the object and a separately
// allocated 32-bit count. A modifying owner asks IsUniqueOwner() and, if it
// shares, makes its own copy first. The program has one thread, so the count
// is a plain integer.
#pragma once

#include "core/lib/vellum/Assert.h"

#include <cstdint>
#include <utility>

template <class T> class RefCounter_T
{
public:
    RefCounter_T() = default;

    // Takes ownership of a heap object; a null pointer makes a null counter.
    explicit RefCounter_T(T* data) : m_DataPtr(data), m_CounterPtr(data ? new std::uint32_t(1) : nullptr) {}

    RefCounter_T(const RefCounter_T& from) : m_DataPtr(from.m_DataPtr), m_CounterPtr(from.m_CounterPtr)
    {
        VELLUM_ASSERT(!m_DataPtr == !m_CounterPtr);
        if (m_CounterPtr)
            ++*m_CounterPtr;
    }

    RefCounter_T(RefCounter_T&& from) noexcept : m_DataPtr(from.m_DataPtr), m_CounterPtr(from.m_CounterPtr)
    {
        VELLUM_ASSERT(!m_DataPtr == !m_CounterPtr);
        from.m_DataPtr = nullptr;
        from.m_CounterPtr = nullptr;
    }

    RefCounter_T& operator=(const RefCounter_T& from)
    {
        VELLUM_ASSERT(!from.m_DataPtr == !from.m_CounterPtr);
        if (m_DataPtr == from.m_DataPtr)
            return *this;
        if (!IsNull())
            Release();
        m_DataPtr = from.m_DataPtr;
        m_CounterPtr = from.m_CounterPtr;
        if (m_CounterPtr)
            ++*m_CounterPtr;
        return *this;
    }

    RefCounter_T& operator=(RefCounter_T&& from) noexcept
    {
        VELLUM_ASSERT(!from.m_DataPtr == !from.m_CounterPtr);
        if (m_DataPtr == from.m_DataPtr)
            return *this;
        if (!IsNull())
            Release();
        m_DataPtr = std::exchange(from.m_DataPtr, nullptr);
        m_CounterPtr = std::exchange(from.m_CounterPtr, nullptr);
        return *this;
    }

    ~RefCounter_T()
    {
        if (!IsNull())
            Release();
    }

    // Gives up this share; the last share destroys the object and frees the
    // count. Both pointers are null afterwards. Kept out of line: inlined into
    // a caller that holds several shares of one count, the compiler cannot
    // see that only the last release frees it, and warns of a use after free.
    [[gnu::noinline]] void Release()
    {
        VELLUM_ASSERT(m_DataPtr && m_CounterPtr && *m_CounterPtr > 0);
        // Both pointers are taken out first, so that nothing of this share
        // refers to the count once it may be freed.
        T* const data = std::exchange(m_DataPtr, nullptr);
        std::uint32_t* const counter = std::exchange(m_CounterPtr, nullptr);
        if (counter && *counter > 0 && --*counter == 0)
        {
            delete data;
            delete counter;
        }
    }

    bool IsNull() const { return !m_DataPtr; }
    bool IsUniqueOwner() const { return m_CounterPtr && *m_CounterPtr == 1; }
    std::uint32_t GetShareCount() const { return m_CounterPtr ? *m_CounterPtr : 0; }

    // Copy-on-write step: a shared object is replaced by a private copy made
    // with T's copy constructor; a null or unique one stays as it is.
    void MakeUniqueOwner()
    {
        if (IsNull() || IsUniqueOwner())
            return;
        *this = RefCounter_T(new T(*m_DataPtr));
    }

    T* Get() const { return m_DataPtr; }
    T& operator*() const
    {
        VELLUM_ASSERT(m_DataPtr);
        return *m_DataPtr;
    }
    T* operator->() const
    {
        VELLUM_ASSERT(m_DataPtr);
        return m_DataPtr;
    }

private:
    T* m_DataPtr = nullptr;
    std::uint32_t* m_CounterPtr = nullptr;
};
