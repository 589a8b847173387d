// CollectionIterator_T.h - positions in a collection of regions, optionally filtered by a box.
//
// The polygon collections keep their entries in a range tree whose nodes carry
// the boxes of their subtrees. A filtered position visits only the entries
// whose outline box meets the query box (k_SkipOutside), or only those that
// stray outside it (base::k_SkipInside), in insertion order.
#pragma once

#include "lib/containers/RangeAvlTree.h"

#include <iterator>

namespace geom
{
// The range tree's filters, named as the shapes name them.
using base::FilterMode;
using base::k_NoFilter;
using base::k_SkipOutside;

// Entry is the element type of the collection, Implementation the shared
// storage holding the tree in m_Polygons.
template <class Entry, class Implementation> class CollectionIterator_T
{
public:
    using Tree = base::RangeAvlTree<Entry>;
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = const Entry*;
    using reference = const Entry&;

    CollectionIterator_T() = default;
    CollectionIterator_T(const Implementation* container, const typename Tree::range_iterator& i)
        : m_ContainerPtr(container), m_Iterator(i)
    {
    }

    const Entry& operator*() const { return *m_Iterator; }
    const Entry* operator->() const { return &*m_Iterator; }
    CollectionIterator_T& operator++()
    {
        VELLUM_ASSERT(IsDereferenceable());
        if (IsDereferenceable())
            ++m_Iterator;
        return *this;
    }
    CollectionIterator_T operator++(int)
    {
        CollectionIterator_T old = *this;
        ++*this;
        return old;
    }
    CollectionIterator_T& operator--()
    {
        VELLUM_ASSERT(m_ContainerPtr && m_Iterator != m_ContainerPtr->m_Polygons.begin());
        if (!m_ContainerPtr || m_Iterator == m_ContainerPtr->m_Polygons.begin())
            return *this;
        if (m_Iterator.m_CurrentNode)
            --m_Iterator;
        else
            m_Iterator = typename Tree::range_iterator(&m_ContainerPtr->m_Polygons,
                                                       m_ContainerPtr->m_Polygons.GetLastNode(),
                                                       m_Iterator.GetMode(), m_Iterator.GetBox());
        return *this;
    }

    bool IsDereferenceable() const { return m_ContainerPtr && m_Iterator.IsDereferenceable(); }
    int GetIndex() const { return m_Iterator.GetIndex(); }
    const typename Tree::range_iterator& GetTreeIterator() const { return m_Iterator; }

    friend bool operator==(const CollectionIterator_T& a, const CollectionIterator_T& b)
    {
        return a.m_Iterator.m_CurrentNode == b.m_Iterator.m_CurrentNode;
    }
    friend bool operator!=(const CollectionIterator_T& a, const CollectionIterator_T& b) { return !(a == b); }

private:
    const Implementation* m_ContainerPtr = nullptr;
    typename Tree::range_iterator m_Iterator;
};
} // namespace geom
