// PolygonWithHolesCollection.h - a set of regions with holes, indexed by their outline boxes.
//
// What boolean operations return, and what the translator gathers its plane
// shapes in. Entries stay in insertion order; the operations keep them
// disjoint, the collection itself doesn't check. Copies share the tree until
// one of them is written.
#pragma once

#include "lib/math/geometry/PolygonWithHoles.h"

namespace geom
{
struct AvlPolygonWithHolesCollectionImplementation
{
    base::RangeAvlTree<PolygonWithHoles> m_Polygons;
};

class PolygonWithHolesCollection
{
public:
    using const_iterator =
        CollectionIterator_T<PolygonWithHoles, AvlPolygonWithHolesCollectionImplementation>;
    using iterator = const_iterator;

    PolygonWithHolesCollection() = default;
    // Built balanced from the vector; an empty vector leaves no implementation.
    explicit PolygonWithHolesCollection(const std::vector<PolygonWithHoles>& polygons);
    PolygonWithHolesCollection(const PolygonWithHolesCollection& from)
        : m_ImplRefCounter(from.m_ImplRefCounter)
    {
    }
    PolygonWithHolesCollection& operator=(const PolygonWithHolesCollection& from)
    {
        if (this != &from)
        {
            m_ImplRefCounter = from.m_ImplRefCounter;
            m_EndIterator = RefCounter_T<const_iterator>();
        }
        return *this;
    }

    // Appends a non-empty region.
    void AddPolygonWithHoles(const PolygonWithHoles& new_polygon);
    // Replaces the entry at i.
    void ModifyPolygonWithHoles(const const_iterator& i, const PolygonWithHoles& copy);

    int size() const { return m_ImplRefCounter.IsNull() ? 0 : m_ImplRefCounter->m_Polygons.GetCount(); }
    bool empty() const { return size() == 0; }
    Box GetBBox() const
    {
        return m_ImplRefCounter.IsNull() ? k_EmptyBox : m_ImplRefCounter->m_Polygons.GetBBox();
    }
    Unit GetEpsilon() const { return GetBBox().GetEpsilon(); }
    Area GetArea() const;
    bool IsSharedWith(const PolygonWithHolesCollection& other) const
    {
        return !m_ImplRefCounter.IsNull() && m_ImplRefCounter.Get() == other.m_ImplRefCounter.Get();
    }

    const_iterator begin() const;
    const_iterator end() const;
    const_iterator begin(FilterMode mode, const Box& box) const;
    std::vector<PolygonWithHoles> GetPolygonsWithHoles() const;

    // How the entries together lie to p (see PolygonCollection::GetRelation).
    PolygonRelation GetRelation(const Polygon& p, Unit accuracy) const;
    // The innermost entry whose outline holds the loop, or end(). Relaxed, the
    // loop need only lie in the outline's box grown by a hundred epsilons;
    // otherwise it must lie inside the outline itself.
    const_iterator FindEntryHolding(const Polygon& loop, Unit accuracy, bool relaxed) const;

    // Boolean operations on the intersection graph.
    PolygonWithHolesCollection Subtract(const PolygonWithHolesCollection& other, Unit accuracy) const;
    PolygonWithHolesCollection Unite(const PolygonWithHolesCollection& other, Unit accuracy) const;
    PolygonWithHolesCollection RemoveSelfIntersections(Unit accuracy) const;

    // Each entry with adjacent edges joined within accuracy.
    PolygonWithHolesCollection GetSimplified(Unit accuracy, bool* changed) const;
    // Each entry shrunk in turn, the parts gathered; changed tells whether
    // any entry came out different from what it was.
    PolygonWithHolesCollection Shrink(Unit by, Unit accuracy, bool resolve_loops, int joint_mode,
                                      Unit joint_value, bool* changed) const;

private:
    AvlPolygonWithHolesCollectionImplementation& MakeUnique();

    RefCounter_T<AvlPolygonWithHolesCollectionImplementation> m_ImplRefCounter;
    mutable RefCounter_T<const_iterator> m_EndIterator;
};
} // namespace geom
