// PolygonCollection.h - a set of polygons indexed by their boxes.
//
// The holes of a region are one of these, and so is any loose set of outlines.
// The entries stay in the order of insertion; the tree's subtree boxes let a
// query visit only the entries near a shape. Copies share the tree until one
// of them is written.
#pragma once

#include "lib/math/geometry/CollectionIterator_T.h"
#include "lib/math/geometry/Polygon.h"

namespace geom
{
struct AvlPolygonCollectionImplementation
{
    base::RangeAvlTree<Polygon> m_Polygons;
};

class PolygonCollection
{
public:
    using const_iterator = CollectionIterator_T<Polygon, AvlPolygonCollectionImplementation>;
    using iterator = const_iterator;

    PolygonCollection() = default;
    // Built balanced from the vector; an empty vector leaves no implementation.
    explicit PolygonCollection(const std::vector<Polygon>& polygons);
    PolygonCollection(const PolygonCollection& from) : m_ImplRefCounter(from.m_ImplRefCounter) {}
    PolygonCollection& operator=(const PolygonCollection& from)
    {
        if (this != &from)
        {
            m_ImplRefCounter = from.m_ImplRefCounter;
            m_EndIterator = RefCounter_T<const_iterator>();
        }
        return *this;
    }

    // Appends a non-empty polygon.
    void AddPolygon(const Polygon& new_polygon);
    // Replaces the entry at i.
    void ModifyPolygon(const const_iterator& i, const Polygon& copy);

    int size() const { return m_ImplRefCounter.IsNull() ? 0 : m_ImplRefCounter->m_Polygons.GetCount(); }
    bool empty() const { return size() == 0; }
    Box GetBBox() const
    {
        return m_ImplRefCounter.IsNull() ? k_EmptyBox : m_ImplRefCounter->m_Polygons.GetBBox();
    }
    Unit GetEpsilon() const { return GetBBox().GetEpsilon(); }
    Area GetArea() const;
    bool IsSharedWith(const PolygonCollection& other) const
    {
        return !m_ImplRefCounter.IsNull() && m_ImplRefCounter.Get() == other.m_ImplRefCounter.Get();
    }

    const_iterator begin() const;
    const_iterator end() const;
    // The first entry that passes the filter on the box.
    const_iterator begin(FilterMode mode, const Box& box) const;
    std::vector<Polygon> GetPolygons() const;

    // How the entries together lie to p: none meeting p is k_NoIntersection,
    // all inside p is k_ThisInsideOther, p inside one entry k_OtherInsideThis,
    // anything else k_Crossing.
    PolygonRelation GetRelation(const Polygon& p, Unit accuracy) const;

    // Each entry with adjacent edges joined within accuracy.
    PolygonCollection GetSimplified(Unit accuracy, bool* changed) const;
    // Each entry shrunk in turn (see Polygon::Shrink), the parts gathered.
    PolygonWithHolesCollection Shrink(Unit by, Unit accuracy, bool resolve_loops, int joint_mode,
                                      Unit joint_value, bool* changed) const;

private:
    AvlPolygonCollectionImplementation& MakeUnique();

    RefCounter_T<AvlPolygonCollectionImplementation> m_ImplRefCounter;
    mutable RefCounter_T<const_iterator> m_EndIterator;
};
} // namespace geom
