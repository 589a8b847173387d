// Shapes at the far end of the doubles: the geometry stays defined.
//
// Coordinates near 1e300 are finite, but their squares, products and
// differences overflow to infinity and on to no number at all. Nothing may
// then reach an undefined conversion to an integer, crash or hang: the
// sanitizer build runs these cases and reports any undefined behaviour.
// The results themselves carry no promise beyond being well-formed.
#include "lib/math/geometry/Polygon.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <gtest/gtest.h>

#include <vector>

using namespace geom;

namespace
{
Polygon Quad(double x, double y, double size, double sagitta)
{
    const Point a(x, y), b(x + size, y), c(x + size, y + size), d(x, y + size);
    return Polygon(std::vector<Arc>{Arc(a, b, Unit(sagitta)), Arc(b, c, k_Unit_0), Arc(c, d, Unit(-sagitta)),
                                    Arc(d, a, k_Unit_0)},
                   true);
}
} // namespace

TEST(HugeCoordinates, BooleansAndOffsetsStayDefined)
{
    int runs = 0;
    for (const double scale : {1e150, 1e200, 1e300, 1.7e308})
        for (const double sagitta : {0.0, 1e-9, 0.25})
        {
            const Polygon a = Quad(scale * 0.5, -scale * 0.25, scale * 0.1, sagitta * scale * 0.1);
            const Polygon b = Quad(scale * 0.52, -scale * 0.24, scale * 0.1, -sagitta * scale * 0.05);
            const Polygon tiny = Quad(scale * 0.5, -scale * 0.25, 1.0, 0.1);
            const Unit accuracy(1e-6);
            for (const Polygon* p : {&a, &b, &tiny})
            {
                (void)p->Unite(a, accuracy);
                (void)p->Subtract(b, accuracy);
                (void)PolygonWithHoles(*p).Intersect(tiny, accuracy);
                (void)p->RemoveSelfIntersections(accuracy, false, false, nullptr);
                (void)p->Shrink(Unit(scale * 0.01), accuracy, true, 0, k_Unit_0);
                (void)p->Expand(Unit(scale * 0.01), accuracy, true, 0, k_Unit_0);
                (void)p->Expand(Unit(0.5), accuracy, true, 0, k_Unit_0);
                (void)p->GetPoints(k_Degree_90 * 0.01, true, 1000);
                ++runs;
            }
        }
    // Reaching here without a sanitizer report, a crash or a hang is the test.
    EXPECT_EQ(runs, 36);
}
