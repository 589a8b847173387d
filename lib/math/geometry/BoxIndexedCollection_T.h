// BoxIndexedCollection_T.h - the common body of the polygon collections.
//
// The entries stay in the order of insertion in a range tree whose subtree
// boxes let a query visit only the entries near a shape. Copies share the tree
// until one of them is written. PolygonCollection and
// PolygonWithHolesCollection add the operations of their own entry type.
#pragma once

#include "core/lib/vellum/Assert.h"
#include "core/lib/vellum/RefCounter_T.h"
#include "lib/math/geometry/CollectionIterator_T.h"
#include "lib/math/geometry/GeomStl.h"
#include "lib/math/geometry/Polygon.h"

#include <vector>

namespace geom
{
// Entry is the element type; Implementation the shared storage, which holds the
// tree in m_Polygons.
template <class Entry, class Implementation> class BoxIndexedCollection_T
{
public:
    using const_iterator = CollectionIterator_T<Entry, Implementation>;
    using iterator = const_iterator;

    BoxIndexedCollection_T() = default;
    // Built balanced from the vector; an empty vector leaves no implementation.
    explicit BoxIndexedCollection_T(const std::vector<Entry>& entries)
    {
        if (entries.empty())
            return;
        m_ImplRefCounter = RefCounter_T<Implementation>(new Implementation);
        m_ImplRefCounter->m_Polygons.Build(entries);
    }
    BoxIndexedCollection_T(const BoxIndexedCollection_T& from) : m_ImplRefCounter(from.m_ImplRefCounter) {}
    BoxIndexedCollection_T& operator=(const BoxIndexedCollection_T& from)
    {
        if (this != &from)
        {
            m_ImplRefCounter = from.m_ImplRefCounter;
            m_EndIterator = RefCounter_T<const_iterator>();
        }
        return *this;
    }

    int size() const { return m_ImplRefCounter.IsNull() ? 0 : m_ImplRefCounter->m_Polygons.GetCount(); }
    bool empty() const { return size() == 0; }
    Box GetBBox() const
    {
        return m_ImplRefCounter.IsNull() ? k_EmptyBox : m_ImplRefCounter->m_Polygons.GetBBox();
    }
    Unit GetEpsilon() const { return GetBBox().GetEpsilon(); }
    Area GetArea() const
    {
        Area ret = k_Area_0;
        for (const Entry& entry : *this)
            ret += entry.GetArea();
        return ret;
    }
    bool IsSharedWith(const BoxIndexedCollection_T& other) const
    {
        return !m_ImplRefCounter.IsNull() && m_ImplRefCounter.Get() == other.m_ImplRefCounter.Get();
    }

    const_iterator begin() const
    {
        if (m_ImplRefCounter.IsNull())
            return const_iterator();
        const auto& tree = m_ImplRefCounter->m_Polygons;
        return const_iterator(m_ImplRefCounter.Get(), typename const_iterator::Tree::range_iterator(
                                                          &tree, tree.GetFirstNode(), k_NoFilter, Box()));
    }
    // The end position is made once per tree, since loops ask for it at every
    // step.
    const_iterator end() const
    {
        if (m_ImplRefCounter.IsNull())
            return const_iterator();
        if (m_EndIterator.IsNull())
            m_EndIterator = RefCounter_T<const_iterator>(new const_iterator(
                m_ImplRefCounter.Get(), typename const_iterator::Tree::range_iterator(
                                            &m_ImplRefCounter->m_Polygons, nullptr, k_NoFilter, Box())));
        return *m_EndIterator;
    }
    // The first entry that passes the filter on the box.
    const_iterator begin(FilterMode mode, const Box& box) const
    {
        if (m_ImplRefCounter.IsNull())
            return const_iterator();
        return const_iterator(m_ImplRefCounter.Get(), m_ImplRefCounter->m_Polygons.BeginInRange(mode, box));
    }

    // How the entries together lie to p: none meeting p is k_NoIntersection,
    // all inside p is k_ThisInsideOther, p inside one entry k_OtherInsideThis,
    // anything else k_Crossing.
    PolygonRelation GetRelation(const Polygon& p, Unit accuracy) const
    {
        VELLUM_ASSERT(accuracy >= GetEpsilon() * 0.999);
        if (empty() || p.empty())
            return k_NoIntersection;
        const Box p_box = GetExpandedBBox_T(p, accuracy);
        if (!GetExpandedBBox_T(*this, accuracy).IntersectsWith(p_box))
            return k_NoIntersection;
        int inside = 0;
        for (const_iterator i = begin(k_SkipOutside, p_box); i != end(); ++i)
        {
            switch (i->GetRelation(p, accuracy))
            {
            case k_NoIntersection:
                break;
            case k_ThisInsideOther:
                ++inside;
                break;
            case k_OtherInsideThis:
                return k_OtherInsideThis;
            case k_Crossing:
                return k_Crossing;
            default:
                VELLUM_ASSERT(!"This should never happen!");
                return k_RelationError;
            }
        }
        if (inside == 0)
            return k_NoIntersection;
        return inside == size() ? k_ThisInsideOther : k_Crossing;
    }

protected:
    std::vector<Entry> GetEntries() const { return std::vector<Entry>(begin(), end()); }
    // Appends a non-empty entry.
    void AddEntry(const Entry& entry)
    {
        VELLUM_ASSERT(!entry.empty());
        if (entry.empty())
            return;
        MakeUnique().m_Polygons.PushBack(entry);
    }
    // Replaces the entry at i.
    void ModifyEntry(const const_iterator& i, const Entry& copy)
    {
        VELLUM_ASSERT(i.IsDereferenceable());
        if (!i.IsDereferenceable())
            return;
        // The position is found again by index: a shared tree is copied first.
        const int index = i.GetIndex();
        Implementation& data = MakeUnique();
        data.m_Polygons.Replace(data.m_Polygons.GetNthIterator(index), copy);
    }

private:
    // The tree for writing: made if there is none, copied if it is shared.
    Implementation& MakeUnique()
    {
        m_EndIterator = RefCounter_T<const_iterator>();
        if (m_ImplRefCounter.IsNull())
            m_ImplRefCounter = RefCounter_T<Implementation>(new Implementation);
        else if (!m_ImplRefCounter.IsUniqueOwner())
            m_ImplRefCounter.MakeUniqueOwner();
        return *m_ImplRefCounter;
    }

    RefCounter_T<Implementation> m_ImplRefCounter;
    mutable RefCounter_T<const_iterator> m_EndIterator;
};
} // namespace geom
