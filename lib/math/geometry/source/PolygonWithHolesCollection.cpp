// PolygonWithHolesCollection.cpp - a set of regions: finding the holder of a loop, per-entry operations.
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/GeomStl.h"

namespace geom
{
PolygonWithHolesCollection::const_iterator
PolygonWithHolesCollection::FindEntryHolding(const Polygon& loop, Unit accuracy, bool relaxed) const
{
    const Box loop_box = loop.GetBBox();
    if (empty() || loop.empty() || !GetBBox().IntersectsWith(loop_box))
        return end();
    const Unit margin = base::GetMaxOf_T(GetEpsilon(), loop.GetEpsilon()) * 100.0;
    const_iterator best = end();
    for (const_iterator i = begin(k_SkipOutside, loop_box); i != end(); ++i)
    {
        Box box = i->GetPolygon().GetBBox();
        if (relaxed)
            box = box.GetExpanded(margin);
        if (!box.Contains(loop_box))
            continue;
        if (!relaxed && i->GetPolygon().GetRelation(loop, accuracy) != k_OtherInsideThis)
            continue;
        // Nested outlines: the innermost holder wins.
        if (best == end() || best->GetPolygon().GetBBox().Contains(i->GetPolygon().GetBBox()))
            best = i;
    }
    return best;
}

PolygonWithHolesCollection PolygonWithHolesCollection::GetSimplified(Unit accuracy, bool* changed) const
{
    if (changed)
        *changed = false;
    std::vector<PolygonWithHoles> parts;
    parts.reserve(static_cast<size_t>(size()));
    for (const PolygonWithHoles& p : *this)
    {
        bool entry_changed = false;
        parts.push_back(p.GetSimplified(accuracy, &entry_changed));
        if (changed && entry_changed)
            *changed = true;
    }
    return PolygonWithHolesCollection(parts);
}

PolygonWithHolesCollection PolygonWithHolesCollection::Shrink(Unit by, Unit accuracy, bool resolve_loops,
                                                              int joint_mode, Unit joint_value,
                                                              bool* changed) const
{
    if (changed)
        *changed = false;
    std::vector<PolygonWithHoles> parts;
    for (const PolygonWithHoles& p : *this)
    {
        // A region without voids is its outline's business alone; voids grow
        // into the material and need the subtraction of the graph.
        const PolygonWithHolesCollection shrunk =
            p.HasHoles() ? p.Shrink(by, accuracy, resolve_loops, joint_mode, joint_value)
                         : p.GetPolygon().Shrink(by, accuracy, resolve_loops, joint_mode, joint_value);
        if (changed && !(shrunk.size() == 1 && *shrunk.begin() == p))
            *changed = true;
        for (const PolygonWithHoles& part : shrunk)
            parts.push_back(part);
    }
    return PolygonWithHolesCollection(parts);
}
} // namespace geom
