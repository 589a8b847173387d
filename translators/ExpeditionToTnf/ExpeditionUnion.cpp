// ExpeditionUnion.cpp - the union of the pieces of a pad or a stroke.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

std::vector<geom::PolygonWithHoles>
ExpeditionParser::UnitePolygons(const std::vector<geom::Polygon>& polygons, double accuracy)
{
    geom::PolygonWithHolesCollection united;
    for (const geom::Polygon& polygon : polygons)
    {
        if (polygon.empty())
            continue;
        const geom::PolygonWithHolesCollection piece(
            std::vector<geom::PolygonWithHoles>{geom::PolygonWithHoles(polygon)});
        united = united.empty() ? piece : united.Unite(piece, accuracy);
    }
    return united.GetPolygonsWithHoles();
}
