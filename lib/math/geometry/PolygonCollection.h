// PolygonCollection.h - a set of polygons indexed by their boxes.
//
// The holes of a region are one of these, and so is any loose set of outlines.
// Order, box queries and sharing are those of BoxIndexedCollection_T.
#pragma once

#include "lib/math/geometry/BoxIndexedCollection_T.h"
#include "lib/math/geometry/Polygon.h"

namespace geom
{
struct AvlPolygonCollectionImplementation
{
    base::RangeAvlTree<Polygon> m_Polygons;
};

class PolygonCollection : public BoxIndexedCollection_T<Polygon, AvlPolygonCollectionImplementation>
{
public:
    using BoxIndexedCollection_T::BoxIndexedCollection_T;

    // Appends a non-empty polygon.
    void AddPolygon(const Polygon& new_polygon) { AddEntry(new_polygon); }
    // Replaces the entry at i.
    void ModifyPolygon(const const_iterator& i, const Polygon& copy) { ModifyEntry(i, copy); }
    std::vector<Polygon> GetPolygons() const { return GetEntries(); }

    // Each entry with adjacent edges joined within accuracy.
    PolygonCollection GetSimplified(Unit accuracy, bool* changed) const;
    // Each entry shrunk in turn (see Polygon::Shrink), the parts gathered.
    PolygonWithHolesCollection Shrink(Unit by, Unit accuracy, bool resolve_loops, int joint_mode,
                                      Unit joint_value, bool* changed) const;
};
} // namespace geom
