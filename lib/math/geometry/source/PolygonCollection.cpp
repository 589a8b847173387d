// PolygonCollection.cpp - per-entry operations on a set of polygons.
#include "lib/math/geometry/PolygonCollection.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/GeomStl.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

namespace geom
{
PolygonCollection PolygonCollection::GetSimplified(Unit accuracy, bool* changed) const
{
    if (changed)
        *changed = false;
    std::vector<Polygon> parts;
    parts.reserve(static_cast<size_t>(size()));
    for (const Polygon& p : *this)
    {
        bool entry_changed = false;
        parts.push_back(Polygon(p.GetSimplified(accuracy, &entry_changed), false));
        if (changed && entry_changed)
            *changed = true;
    }
    return PolygonCollection(parts);
}

PolygonWithHolesCollection PolygonCollection::Shrink(Unit by, Unit accuracy, bool resolve_loops,
                                                     int joint_mode, Unit joint_value, bool* changed) const
{
    if (changed)
        *changed = false;
    std::vector<PolygonWithHoles> parts;
    for (const Polygon& p : *this)
    {
        const PolygonWithHolesCollection shrunk =
            p.Shrink(by, accuracy, resolve_loops, joint_mode, joint_value);
        if (changed && !(shrunk.size() == 1 && shrunk.begin()->GetPolygon().IsSharedWith(p)))
            *changed = true;
        for (const PolygonWithHoles& part : shrunk)
            parts.push_back(part);
    }
    return PolygonWithHolesCollection(parts);
}
} // namespace geom
