// ExpeditionPlaneCleanup.cpp - the clean-up of the conductive shapes of the
// nets: cut-outs taken away, self-crossings repaired, edges moved in by a
// hundredth of the plane clearance, crumbs dropped, and pieces with holes
// told apart from pieces without.
//
// The cleaned shapes stay in the model: the planes of the neutral file are
// the nets' plane shapes, which this step does not touch. The route border
// comparison of the layout tool's own clean-up has no effect on any result
// and is left out.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <cmath>

void ExpeditionParser::CleanPlaneShapes(ElementList& elements)
{
    bool hasBoard = false;
    for (ExpeditionBaseElement* element : elements)
        hasBoard = hasBoard || element->AsBoard() != nullptr;
    for (ExpeditionBaseElement* element : elements)
    {
        ExpeditionLayoutNet* net = element->AsLayoutNet();
        if (!net || net->m_Name.CompareNoCase(L"DUMMY") == 0)
            continue;
        std::vector<std::vector<ExpeditionShapes*>> withVoids;
        std::vector<ExpeditionShapes*> singles;
        for (ExpeditionShapes* shape : net->m_Shapes)
            CleanShape(*shape, hasBoard, withVoids, singles);
        if (!withVoids.empty())
        {
            for (auto& entry : net->m_ShapesWithVoids)
                DeleteOwned_G(entry);
            net->m_ShapesWithVoids = withVoids;
        }
        DeleteOwned_G(net->m_Shapes);
        net->m_Shapes = singles;
    }
}

void ExpeditionParser::CleanShape(ExpeditionShapes& shape, bool hasBoard,
                                  std::vector<std::vector<ExpeditionShapes*>>& withVoids,
                                  std::vector<ExpeditionShapes*>& singles)
{
    const AString layer = shape.GetLayerName();
    const std::optional<geom::Polygon> polygon = ShapeToPolygon(&shape);
    if (!polygon)
        return; // the shape is dropped
    geom::PolygonWithHolesCollection collection(
        std::vector<geom::PolygonWithHoles>{geom::PolygonWithHoles(*polygon)});
    const double area = collection.GetArea().GetValue();

    // A cut-out that lies inside the copper becomes a hole; one across its
    // edge takes nothing away.
    if (hasBoard)
        for (const geom::Polygon& cutout : m_Cutouts)
            if (collection.GetRelation(cutout, m_Tolerance) == geom::k_OtherInsideThis)
                collection =
                    collection.Subtract(geom::PolygonWithHolesCollection(std::vector<geom::PolygonWithHoles>{
                                            geom::PolygonWithHoles(cutout)}),
                                        m_Tolerance);
    collection = collection.RemoveSelfIntersections(m_Tolerance);

    double by = GetPlaneClearance(layer) / 100.0;
    if (by == 0.0)
        by = m_Tolerance * 100.0;
    bool changed = false;
    const geom::PolygonWithHolesCollection shrunk = collection.Shrink(by, 0.0, true, 0, 0.0, &changed);
    if (changed)
        collection = shrunk;

    for (const geom::PolygonWithHoles& piece : collection.GetPolygonsWithHoles())
    {
        const geom::Polygon& outerPoly = piece.GetPolygon();
        VELLUM_ASSERT(!outerPoly.empty());
        if (!piece.HasHoles())
        {
            // Crumbs below a hundredth of the shape they came from go.
            if (area / 100.0 > std::fabs(outerPoly.GetArea().GetValue()))
                continue;
            if (ExpeditionShapes* single = ShapeFromPolygon(outerPoly, layer, false))
                singles.push_back(single);
            continue;
        }
        // An outline with voids must be a polygon, not a circle.
        std::vector<ExpeditionShapes*> entry{ShapeFromPolygon(outerPoly, layer, true)};
        for (const geom::Polygon& hole : piece.GetHoles().GetPolygons())
            entry.push_back(ShapeFromPolygon(hole, layer, false));
        withVoids.push_back(entry);
    }
}
