// PolygonCollection.cpp - a box-indexed set of polygons: building, relations, per-entry operations.
#include "lib/math/geometry/PolygonCollection.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/GeomStl.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

namespace geom
{
PolygonCollection::PolygonCollection(const std::vector<Polygon>& polygons)
{
    if (polygons.empty())
        return;
    m_ImplRefCounter =
        RefCounter_T<AvlPolygonCollectionImplementation>(new AvlPolygonCollectionImplementation);
    m_ImplRefCounter->m_Polygons.Build(polygons);
}

AvlPolygonCollectionImplementation& PolygonCollection::MakeUnique()
{
    m_EndIterator = RefCounter_T<const_iterator>();
    if (m_ImplRefCounter.IsNull())
        m_ImplRefCounter =
            RefCounter_T<AvlPolygonCollectionImplementation>(new AvlPolygonCollectionImplementation);
    else if (!m_ImplRefCounter.IsUniqueOwner())
        m_ImplRefCounter.MakeUniqueOwner();
    return *m_ImplRefCounter;
}

void PolygonCollection::AddPolygon(const Polygon& new_polygon)
{
    VELLUM_ASSERT(!new_polygon.empty());
    if (new_polygon.empty())
        return;
    MakeUnique().m_Polygons.PushBack(new_polygon);
}

void PolygonCollection::ModifyPolygon(const const_iterator& i, const Polygon& copy)
{
    VELLUM_ASSERT(i.IsDereferenceable());
    if (!i.IsDereferenceable())
        return;
    // The position is found again by index: a shared tree is copied first.
    const int index = i.GetIndex();
    AvlPolygonCollectionImplementation& data = MakeUnique();
    data.m_Polygons.Replace(data.m_Polygons.GetNthIterator(index), copy);
}

Area PolygonCollection::GetArea() const
{
    Area ret = k_Area_0;
    for (const Polygon& p : *this)
        ret += p.GetArea();
    return ret;
}

PolygonCollection::const_iterator PolygonCollection::begin() const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    const auto& tree = m_ImplRefCounter->m_Polygons;
    return const_iterator(m_ImplRefCounter.Get(), const_iterator::Tree::range_iterator(
                                                      &tree, tree.GetFirstNode(), k_NoFilter, Box()));
}

PolygonCollection::const_iterator PolygonCollection::end() const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    if (m_EndIterator.IsNull())
        m_EndIterator = RefCounter_T<const_iterator>(new const_iterator(
            m_ImplRefCounter.Get(),
            const_iterator::Tree::range_iterator(&m_ImplRefCounter->m_Polygons, nullptr, k_NoFilter, Box())));
    return *m_EndIterator;
}

PolygonCollection::const_iterator PolygonCollection::begin(FilterMode mode, const Box& box) const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    return const_iterator(m_ImplRefCounter.Get(), m_ImplRefCounter->m_Polygons.BeginInRange(mode, box));
}

std::vector<Polygon> PolygonCollection::GetPolygons() const
{
    return std::vector<Polygon>(begin(), end());
}

PolygonRelation PolygonCollection::GetRelation(const Polygon& p, Unit accuracy) const
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
