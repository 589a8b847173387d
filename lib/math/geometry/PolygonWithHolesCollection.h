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
    : public BoxIndexedCollection_T<PolygonWithHoles, AvlPolygonWithHolesCollectionImplementation>
{
public:
    using BoxIndexedCollection_T::BoxIndexedCollection_T;

    // Appends a non-empty region.
    void AddPolygonWithHoles(const PolygonWithHoles& new_polygon) { AddEntry(new_polygon); }
    // Replaces the entry at i.
    void ModifyPolygonWithHoles(const const_iterator& i, const PolygonWithHoles& copy)
    {
        ModifyEntry(i, copy);
    }
    std::vector<PolygonWithHoles> GetPolygonsWithHoles() const { return GetEntries(); }

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
};
} // namespace geom
