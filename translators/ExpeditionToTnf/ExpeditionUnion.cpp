// ExpeditionUnion.cpp - the union of the pieces of a pad or a stroke.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include "lib/math/geometry/PolyArcIntersectionGraph2.h"
#include "lib/math/geometry/PolygonCollection.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

std::vector<geom::PolygonWithHoles>
ExpeditionParser::UnitePolygons(const std::vector<geom::Polygon>& polygons, double accuracy)
{
    geom::PolyArcIntersectionGraph2 graph(geom::PolygonCollection(polygons), accuracy);
    return graph.GetResult().GetPolygonsWithHoles();
}
