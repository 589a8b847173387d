// PolygonGraphPending.cpp - placeholder of the one loop walk that the contour code calls before the
// intersection graph exists.
//
// Polygon::ResolveSelfCrossings splits a contour at its crossings and walks
// its simple loops; it belongs with the intersection graph and moves to that
// graph's source file, which then replaces this file. Until then a contour
// that crosses itself is reported and comes back as its normalised self.
#include "lib/math/geometry/Polygon.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

namespace geom
{
PolygonWithHolesCollection Polygon::ResolveSelfCrossings(const std::vector<Arc>& arcs,
                                                         const std::vector<Point>&, Unit, bool, bool)
{
    VELLUM_ASSERT(!"There is something to do here!");
    PolygonWithHolesCollection ret;
    const Polygon contour(arcs, true);
    if (!contour.empty())
        ret.AddPolygonWithHoles(PolygonWithHoles(contour));
    return ret;
}
} // namespace geom
