// The compact plane contour: a void of a few edges, held as its edges, must
// answer every question the writers and the pairing of voids ask exactly as
// the polygon it was made of, since the file is compared byte for byte.
#include "translators/ExpeditionToTnf/ExpeditionLayout.h"

#include "lib/math/geometry/Box.h"
#include "lib/math/geometry/Circle.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>

namespace
{
// Asks the contour and the polygon it came from the same questions.
void ExpectSameAnswers(const geom::Polygon& original, const ExpeditionPlanePolygon& compact, const char* what)
{
    SCOPED_TRACE(what);
    const geom::Polygon rebuilt = compact.GetPolygon();
    EXPECT_TRUE(rebuilt.IsEqualTo(original, 0.0));
    EXPECT_EQ(rebuilt.GetEdgeCount(), original.GetEdgeCount());
    const geom::Box a = compact.GetBBox(), b = original.GetBBox();
    EXPECT_EQ(a.GetMinX().GetValue(), b.GetMinX().GetValue());
    EXPECT_EQ(a.GetMinY().GetValue(), b.GetMinY().GetValue());
    EXPECT_EQ(a.GetMaxX().GetValue(), b.GetMaxX().GetValue());
    EXPECT_EQ(a.GetMaxY().GetValue(), b.GetMaxY().GetValue());
    EXPECT_EQ(rebuilt.GetArea().GetValue(), original.GetArea().GetValue());
    geom::Circle c1, c2;
    const bool circle1 = rebuilt.IsCircle(rebuilt.GetEpsilon(), &c1);
    const bool circle2 = original.IsCircle(original.GetEpsilon(), &c2);
    EXPECT_EQ(circle1, circle2);
    if (circle1 && circle2)
    {
        EXPECT_EQ(c1.GetCenter().m_X.GetValue(), c2.GetCenter().m_X.GetValue());
        EXPECT_EQ(c1.GetCenter().m_Y.GetValue(), c2.GetCenter().m_Y.GetValue());
        EXPECT_EQ(c1.GetRadius().GetValue(), c2.GetRadius().GetValue());
    }
    const std::vector<geom::Arc> e1 = rebuilt.GetEdges(), e2 = original.GetEdges();
    ASSERT_EQ(e1.size(), e2.size());
    for (size_t i = 0; i < e1.size(); ++i)
    {
        EXPECT_EQ(e1[i].GetStart().m_X.GetValue(), e2[i].GetStart().m_X.GetValue());
        EXPECT_EQ(e1[i].GetStart().m_Y.GetValue(), e2[i].GetStart().m_Y.GetValue());
        EXPECT_EQ(e1[i].GetHeight().GetValue(), e2[i].GetHeight().GetValue());
        EXPECT_EQ(e1[i].GetEnd().m_X.GetValue(), e2[i].GetEnd().m_X.GetValue());
        EXPECT_EQ(e1[i].GetEnd().m_Y.GetValue(), e2[i].GetEnd().m_Y.GetValue());
        EXPECT_EQ(e1[i].GetCenterAzimuth().GetValue(), e2[i].GetCenterAzimuth().GetValue());
    }
    // The single edge that the writer of voids asks for, where there is one.
    const std::optional<geom::Arc> single = compact.GetSingleEdge();
    EXPECT_EQ(single.has_value(), compact.IsHeldAsEdges() && e2.size() == 1);
    if (single && e2.size() == 1)
    {
        EXPECT_EQ(single->GetStart().m_X.GetValue(), e2[0].GetStart().m_X.GetValue());
        EXPECT_EQ(single->GetEnd().m_Y.GetValue(), e2[0].GetEnd().m_Y.GetValue());
        EXPECT_EQ(single->GetHeight().GetValue(), e2[0].GetHeight().GetValue());
        EXPECT_EQ(single->GetCenterAzimuth().GetValue(), e2[0].GetCenterAzimuth().GetValue());
    }
    // A point test and a relation with an outline around it.
    const geom::Point centre = b.GetCenter();
    EXPECT_EQ(rebuilt.GetRelation(centre, 1e-08), original.GetRelation(centre, 1e-08));
    const geom::Polygon around(geom::Box(geom::Point(b.GetMinX() - 1.0, b.GetMinY() - 1.0),
                                         geom::Point(b.GetMaxX() + 1.0, b.GetMaxY() + 1.0)),
                               0.0);
    EXPECT_EQ(around.GetRelation(rebuilt, 1e-09), around.GetRelation(original, 1e-09));
    EXPECT_EQ(compact.m_Width, 0.25);
}
} // namespace

TEST(PlanePolygon, SmallContoursComeBackEdgeForEdgeLargeOnesStayPolygons)
{
    std::mt19937 random(31);
    std::uniform_real_distribution<double> coordinate(-500.0, 500.0), size(0.01, 3.0);
    for (int round = 0; round < 200; ++round)
    {
        const geom::Point c(coordinate(random), coordinate(random));
        const double r = size(random), w = size(random), h = size(random);
        // The voids of a plane: clearances of round pads and vias, of square
        // and oblong pads, and those voids shrunk by a pen, as on a negative
        // plane.
        const geom::Polygon circle{geom::Circle(c, r)};
        const geom::Polygon box(geom::Box(c, geom::Point(c.m_X + w, c.m_Y + h)), 0.0);
        const geom::Polygon rounded(geom::Box(c, geom::Point(c.m_X + w, c.m_Y + h)), r * 0.3);
        const geom::Polygon obround(geom::Segment(c, geom::Point(c.m_X + w, c.m_Y)), h);
        for (const geom::Polygon* p : {&circle, &box, &rounded, &obround})
        {
            const ExpeditionPlanePolygon compact(*p, 0.25);
            EXPECT_TRUE(compact.IsHeldAsEdges());
            ExpectSameAnswers(*p, compact, "drawn");
            const geom::PolygonWithHolesCollection shrunk = p->Shrink(0.005, 1e-08, true, 0, 0.0);
            for (const geom::PolygonWithHoles& piece : shrunk.GetPolygonsWithHoles())
                ExpectSameAnswers(piece.GetPolygon(), ExpeditionPlanePolygon(piece.GetPolygon(), 0.25),
                                  "shrunk");
        }
    }
    // A contour of many edges, and an empty one, are kept as they are.
    std::vector<geom::Point> points;
    for (int i = 0; i < 40; ++i)
        points.emplace_back(std::cos(i * 0.157) * 10.0, std::sin(i * 0.157) * 10.0);
    const geom::Polygon many(points, true);
    const ExpeditionPlanePolygon kept(many, 0.25);
    EXPECT_FALSE(kept.IsHeldAsEdges());
    ExpectSameAnswers(many, kept, "many edges");
    const ExpeditionPlanePolygon empty(geom::Polygon(), 0.25);
    EXPECT_TRUE(empty.GetPolygon().empty());
    EXPECT_TRUE(empty.GetBBox().IsEmpty());
}

TEST(PlanePolygon, CopiesShareTheEdgesAndOutliveTheOriginal)
{
    const geom::Polygon circle{geom::Circle(geom::Point(3.0, 4.0), 0.4)};
    std::vector<geom::Point> points;
    for (int i = 0; i < 12; ++i)
        points.emplace_back(std::cos(i * 0.5236) * 5.0, std::sin(i * 0.5236) * 5.0);
    const geom::Polygon many(points, true);
    std::vector<ExpeditionPlanePolygon> copies;
    {
        const ExpeditionPlanePolygon original(circle, 0.25);
        for (int i = 0; i < 100; ++i) // the vector moves them as it grows
            copies.push_back(original);
        copies.emplace_back(many, 0.25);
    }
    // A box is held as a block of four edges that the copies share.
    const geom::Polygon box(geom::Box(geom::Point(1.0, 1.0), geom::Point(2.5, 1.75)), 0.0);
    std::vector<ExpeditionPlanePolygon> boxes(3, ExpeditionPlanePolygon(box, 0.25));
    boxes.erase(boxes.begin());
    ExpectSameAnswers(box, boxes.back(), "copy of a box");
    ExpectSameAnswers(circle, copies[0], "copy");
    ExpectSameAnswers(circle, copies[99], "last copy");
    // Assignment both ways between a contour held as edges and a polygon.
    ExpeditionPlanePolygon swapped = copies[100];
    swapped = copies[0];
    EXPECT_TRUE(swapped.IsHeldAsEdges());
    copies[0] = copies[100];
    EXPECT_FALSE(copies[0].IsHeldAsEdges());
    ExpectSameAnswers(many, copies[0], "assigned polygon");
    copies.erase(copies.begin() + 1, copies.begin() + 100);
    ExpectSameAnswers(circle, swapped, "assigned edges");
}
