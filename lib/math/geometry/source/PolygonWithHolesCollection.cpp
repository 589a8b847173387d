// PolygonWithHolesCollection.cpp - a box-indexed set of regions: building, relations, finding the holder of a
// loop.
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/GeomStl.h"

namespace geom
{
PolygonWithHolesCollection::PolygonWithHolesCollection(const std::vector<PolygonWithHoles>& polygons)
{
    if (polygons.empty())
        return;
    m_ImplRefCounter = RefCounter_T<AvlPolygonWithHolesCollectionImplementation>(
        new AvlPolygonWithHolesCollectionImplementation);
    m_ImplRefCounter->m_Polygons.Build(polygons);
}

AvlPolygonWithHolesCollectionImplementation& PolygonWithHolesCollection::MakeUnique()
{
    m_EndIterator = RefCounter_T<const_iterator>();
    if (m_ImplRefCounter.IsNull())
        m_ImplRefCounter = RefCounter_T<AvlPolygonWithHolesCollectionImplementation>(
            new AvlPolygonWithHolesCollectionImplementation);
    else if (!m_ImplRefCounter.IsUniqueOwner())
        m_ImplRefCounter.MakeUniqueOwner();
    return *m_ImplRefCounter;
}

void PolygonWithHolesCollection::AddPolygonWithHoles(const PolygonWithHoles& new_polygon)
{
    VELLUM_ASSERT(!new_polygon.empty());
    if (new_polygon.empty())
        return;
    MakeUnique().m_Polygons.PushBack(new_polygon);
}

void PolygonWithHolesCollection::ModifyPolygonWithHoles(const const_iterator& i, const PolygonWithHoles& copy)
{
    VELLUM_ASSERT(i.IsDereferenceable());
    if (!i.IsDereferenceable())
        return;
    const int index = i.GetIndex();
    AvlPolygonWithHolesCollectionImplementation& data = MakeUnique();
    data.m_Polygons.Replace(data.m_Polygons.GetNthIterator(index), copy);
}

Area PolygonWithHolesCollection::GetArea() const
{
    Area ret = k_Area_0;
    for (const PolygonWithHoles& p : *this)
        ret += p.GetArea();
    return ret;
}

PolygonWithHolesCollection::const_iterator PolygonWithHolesCollection::begin() const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    const auto& tree = m_ImplRefCounter->m_Polygons;
    return const_iterator(m_ImplRefCounter.Get(), const_iterator::Tree::range_iterator(
                                                      &tree, tree.GetFirstNode(), k_NoFilter, Box()));
}

PolygonWithHolesCollection::const_iterator PolygonWithHolesCollection::end() const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    if (m_EndIterator.IsNull())
        m_EndIterator = RefCounter_T<const_iterator>(new const_iterator(
            m_ImplRefCounter.Get(),
            const_iterator::Tree::range_iterator(&m_ImplRefCounter->m_Polygons, nullptr, k_NoFilter, Box())));
    return *m_EndIterator;
}

PolygonWithHolesCollection::const_iterator PolygonWithHolesCollection::begin(FilterMode mode,
                                                                             const Box& box) const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    return const_iterator(m_ImplRefCounter.Get(), m_ImplRefCounter->m_Polygons.BeginInRange(mode, box));
}

std::vector<PolygonWithHoles> PolygonWithHolesCollection::GetPolygonsWithHoles() const
{
    return std::vector<PolygonWithHoles>(begin(), end());
}

PolygonRelation PolygonWithHolesCollection::GetRelation(const Polygon& p, Unit accuracy) const
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
