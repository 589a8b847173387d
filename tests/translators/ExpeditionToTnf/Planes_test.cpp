// Plane copper: outlines and voids paired by nesting, pen widths worked into
// negative planes, thin contours kept or dropped, Planes.hkp blocks, and the
// plane items of the LayoutNets block.
#include "JobFixture.h"

#include "translators/ExpeditionToTnf/ExpeditionLayout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace
{
geom::Polygon Square(double x0, double y0, double side)
{
    return geom::Polygon(std::vector<geom::Point>{geom::Point(x0, y0), geom::Point(x0 + side, y0),
                                                  geom::Point(x0 + side, y0 + side),
                                                  geom::Point(x0, y0 + side)},
                         true);
}

double Area(const geom::Polygon& p)
{
    return std::fabs(p.GetArea().GetValue());
}

// The shoelace area of the vertex(x, y) items of a function, straight edges only.
double ShoelaceOfVertices(const io::CBlock_func& polygon)
{
    std::vector<std::pair<double, double>> points;
    for (size_t i = 0; i < polygon.GetArgumentCount(); ++i)
        if (auto* v = dynamic_cast<io::CBlock_func*>(polygon.GetArgumentItem(i)); v && v->Name() == L"vertex")
        {
            double x = 0, y = 0;
            v->GetArgumentValue(0).Query(x);
            v->GetArgumentValue(1).Query(y);
            points.emplace_back(x, y);
        }
    double twice = 0.0;
    for (size_t i = 0; i < points.size(); ++i)
    {
        const auto& a = points[i];
        const auto& b = points[(i + 1) % points.size()];
        twice += a.first * b.second - b.first * a.second;
    }
    return std::fabs(twice) * 0.5;
}

std::string Text(const io::CBlock_item& item)
{
    io::CString_ostream out;
    out.SetPrecision(10);
    item.write(out);
    return out.str();
}
} // namespace

TEST(Planes, OutlinesAndVoidsByNesting)
{
    ExpeditionLayoutNet net(L"GND", {}, {}, {});
    const AString layer(L"PLANE_2");
    // Three nested squares, a square apart, two crossing squares, two equal ones.
    for (const geom::Polygon& p :
         {Square(0, 0, 30), Square(5, 5, 20), Square(10, 10, 10), Square(100, 0, 10), Square(200, 0, 10),
          Square(205, 5, 10), Square(300, 0, 10), Square(300, 0, 10)})
        net.AddPlaneOutline(ExpeditionPlanePolygon(p, 0.0), layer, false);
    net.ResolvePlaneVoids();
    const std::vector<ExpeditionPlaneShape>& shapes = net.m_PlaneShapes[layer];
    // Seven outlines (depth 0 or 2), smallest first; the middle square is the
    // one void, and it hangs on the outer square, not on the innermost.
    ASSERT_EQ(shapes.size(), 7u);
    size_t withVoids = 0;
    for (const ExpeditionPlaneShape& shape : shapes)
        if (!shape.m_Voids.empty())
        {
            ++withVoids;
            EXPECT_DOUBLE_EQ(Area(shape.m_Polygon), 900.0);
            ASSERT_EQ(shape.m_Voids.size(), 1u);
            EXPECT_DOUBLE_EQ(Area(shape.m_Voids[0].GetPolygon()), 400.0);
        }
    EXPECT_EQ(withVoids, 1u);
    for (size_t i = 1; i < shapes.size(); ++i)
        EXPECT_LE(Area(shapes[i - 1].m_Polygon), Area(shapes[i].m_Polygon));
    // The raw contours are let go once paired; the voids keep their edges.
    EXPECT_TRUE(net.m_PlaneOutlines.empty());
}

TEST(Planes, NegativePenWidthAndThinContours)
{
    ExpeditionLayoutNet net(L"GND", {}, {}, {});
    // A 10 by 10 contour drawn with a pen of 0.2 on a negative plane is
    // 9.8 by 9.8 of copper-free area.
    net.AddPlaneOutline(ExpeditionPlanePolygon(Square(0, 0, 10), 0.2), L"NEG", true);
    ASSERT_EQ(net.m_PlaneOutlines[L"NEG"].size(), 1u);
    EXPECT_NEAR(Area(net.m_PlaneOutlines[L"NEG"][0].GetPolygon()), 9.8 * 9.8, 1e-9);
    EXPECT_EQ(net.m_PlaneOutlines[L"NEG"][0].m_Width, 0.0);
    // A pen wider than the contour leaves nothing.
    net.AddPlaneOutline(ExpeditionPlanePolygon(Square(50, 0, 1), 2.0), L"NEG", true);
    EXPECT_EQ(net.m_PlaneOutlines[L"NEG"].size(), 1u);

    // Thin contours against an outline of 30 with a void of 20 inside.
    const AString layer(L"POS");
    net.AddPlaneOutline(ExpeditionPlanePolygon(Square(0, 0, 30), 0.0), layer, false);
    net.AddPlaneOutline(ExpeditionPlanePolygon(Square(5, 5, 20), 0.0), layer, false);
    net.ResolvePlaneVoids();
    const auto line = [](double x0, double y0, double x1, double y1)
    {
        return ExpeditionPlanePolygon(
            geom::Polygon(std::vector<geom::Point>{geom::Point(x0, y0), geom::Point(x1, y1)}, true), 0.1);
    };
    net.AddPlaneLine(line(40, 0, 41, 0), layer);   // free space: kept
    net.AddPlaneLine(line(14, 15, 16, 15), layer); // in the void: kept
    net.AddPlaneLine(line(1, 1, 3, 1), layer);     // in the copper: dropped
    net.AddPlaneLine(line(4, 5, 6, 5), layer);     // centre on the void's edge, inside the copper: dropped
    net.AddPlaneLine(line(0, 0, 1, 0), L"EMPTY");  // a layer without shapes: kept
    net.ResolvePlaneLines();
    ASSERT_EQ(net.m_PlaneLines[layer].size(), 2u);
    EXPECT_EQ(net.m_PlaneLines[layer][0].GetBBox().GetMinX().GetValue(), 40.0);
    EXPECT_EQ(net.m_PlaneLines[layer][1].GetBBox().GetMinX().GetValue(), 14.0);
    EXPECT_EQ(net.m_PlaneShapes[layer].size(), 3u); // the outline and the two lines
    EXPECT_EQ(net.m_PlaneLines[L"EMPTY"].size(), 1u);
    EXPECT_EQ(net.m_PlaneShapes[L"EMPTY"].size(), 1u);
}

namespace
{
// Whether p lies inside the closed chain of points, by a ray to the right.
bool InsidePolygon(const std::vector<geom::Point>& ring, double x, double y)
{
    bool inside = false;
    for (size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++)
    {
        const double xi = ring[i].m_X.GetValue(), yi = ring[i].m_Y.GetValue();
        const double xj = ring[j].m_X.GetValue(), yj = ring[j].m_Y.GetValue();
        if ((yi > y) != (yj > y) && x < (xj - xi) * (y - yi) / (yj - yi) + xi)
            inside = !inside;
    }
    return inside;
}

// The distance from p to the nearest edge of the closed chain.
double DistanceToRing(const std::vector<geom::Point>& ring, double x, double y)
{
    double best = 1e300;
    for (size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++)
    {
        const double ax = ring[j].m_X.GetValue(), ay = ring[j].m_Y.GetValue();
        const double dx = ring[i].m_X.GetValue() - ax, dy = ring[i].m_Y.GetValue() - ay;
        const double t = std::clamp(((x - ax) * dx + (y - ay) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
        best = std::min(best, std::hypot(x - ax - t * dx, y - ay - t * dy));
    }
    return best;
}
} // namespace

// A plane of many voids: a star-shaped outline of 240 edges with pockets,
// and disjoint round voids inside it, in its pockets outside, crossing its
// edges and a hair away from them on either side. Each void is classed on
// its own by its centre and its distance to the edges; the pairing must hang
// exactly the voids inside on the outline and leave every other one an
// outline of its own, however it answers the many questions of one outline.
TEST(Planes, ManyVoidsAgainstOneOutlineAgreeWithAnIndependentClassing)
{
    std::vector<geom::Point> ring;
    const double pi = std::acos(-1.0);
    for (int i = 0; i < 240; ++i)
    {
        const double a = 2.0 * pi * i / 240.0;
        const double r = 0.08 * (1.0 + 0.3 * std::sin(7.0 * a));
        ring.emplace_back(0.1 + r * std::cos(a), 0.1 + r * std::sin(a));
    }
    ExpeditionLayoutNet net(L"GND", {}, {}, {});
    const AString layer(L"PLANE_3");
    net.AddPlaneOutline(ExpeditionPlanePolygon(geom::Polygon(ring, true), 0.0), layer, false);

    std::mt19937 random(7);
    std::uniform_real_distribution<double> where(0.0, 0.2), radius(2e-4, 5e-4), gap(2e-6, 2e-5);
    std::vector<std::array<double, 3>> circles; // x, y, r
    size_t inside = 0;
    for (int attempt = 0; attempt < 200000 && circles.size() < 3000; ++attempt)
    {
        double x = where(random), y = where(random);
        const double r = radius(random);
        double d = DistanceToRing(ring, x, y);
        // Every fourth void is moved to a hair from the nearest edge.
        if (attempt % 4 == 0 && d > r && d < 0.002)
        {
            // Along the direction away from the edge, by small steps.
            const double want = r + gap(random);
            for (int step = 0; step < 60 && std::fabs(d - want) > 1e-6; ++step)
            {
                const double h = 1e-7;
                const double gx = (DistanceToRing(ring, x + h, y) - d) / h;
                const double gy = (DistanceToRing(ring, x, y + h) - d) / h;
                x += (want - d) * gx;
                y += (want - d) * gy;
                d = DistanceToRing(ring, x, y);
            }
        }
        if (std::fabs(d - r) < 1e-6)
            continue; // too close to call either way
        bool apart = true;
        for (const auto& c : circles)
            if (std::hypot(c[0] - x, c[1] - y) <= c[2] + r + 1e-6)
            {
                apart = false;
                break;
            }
        if (!apart)
            continue;
        circles.push_back({x, y, r});
        if (d > r && InsidePolygon(ring, x, y))
            ++inside;
        net.AddPlaneOutline(ExpeditionPlanePolygon(geom::Polygon(geom::Circle(geom::Point(x, y), r)), 0.0),
                            layer, false);
    }
    ASSERT_GT(inside, 1000u);
    ASSERT_GT(circles.size() - inside, 300u);
    net.ResolvePlaneVoids();

    const std::vector<ExpeditionPlaneShape>& shapes = net.m_PlaneShapes[layer];
    ASSERT_EQ(shapes.size(), 1 + circles.size() - inside);
    const ExpeditionPlaneShape& outline = shapes.back(); // the largest
    EXPECT_NEAR(Area(outline.m_Polygon), Area(geom::Polygon(ring, true)), 1e-12);
    ASSERT_EQ(outline.m_Voids.size(), inside);
    for (const ExpeditionPlanePolygon& hole : outline.m_Voids)
    {
        const geom::Point c = hole.GetBBox().GetCenter();
        const double r = hole.GetBBox().GetWidth().GetValue() * 0.5;
        EXPECT_TRUE(InsidePolygon(ring, c.m_X.GetValue(), c.m_Y.GetValue()));
        EXPECT_GT(DistanceToRing(ring, c.m_X.GetValue(), c.m_Y.GetValue()), r);
    }
    for (size_t i = 0; i + 1 < shapes.size(); ++i)
        EXPECT_TRUE(shapes[i].m_Voids.empty());
}

namespace
{
const char* const k_PlaneJobPrefs = R"(header
.PHYSICAL_LAYERS 3
.LAYER_STACKUP_SECTION
 ..SIGNAL_LAYER 1
  ...CONDUCTIVE_LAYER_NUMBER 1
 ..PLANE_LAYER 2
  ...CONDUCTIVE_LAYER_NUMBER 2
  ...PLANE_TYPE NEGATIVE
 ..PLANE_LAYER 3
  ...CONDUCTIVE_LAYER_NUMBER 3
 ..ALLOW_BURIED_RESISTORS NO
)";

const char* const k_PlaneLayout = R"(header
.UNITS MM
.NET "VCC"
 ..VIA
  ...XY (5, 5)
  ...LAYER_PAIR LYR_1 LYR_3
  ...PADSTACK "V"
 ..NET_PROPERTIES NONE
.GENERATED_DATA
..PLANE_LYR LYR_3
..PLANE_NET "VCC"
...POLYLINE_PATH
....WIDTH 0
....XY (0, 0) (10, 0) (10, 10) (0, 10)
...CIRCLE_PATH
....WIDTH 0
....XY (5, 5)
....RADIUS 1
...POLYLINE_PATH
....WIDTH 0.1
....XY (20, 20) (21, 20)
..PLANE_LYR LYR_2
..PLANE_NET "VCC"
...RECT_PATH
....WIDTH 0.2
....XY (0, 0) (10, 10)
..PLANE_NET "NOBODY"
...RECT_PATH
....WIDTH 0.2
....XY (0, 0) (10, 10)
..DIMENSION
)";
} // namespace

using PlanesInFile = JobFixture;

TEST_F(PlanesInFile, GeneratedPlanesReachTheLayoutNets)
{
    WriteMinimalJob();
    WriteFile("JobPrefs.hkp", k_PlaneJobPrefs);
    WriteFile("Layout.hkp", k_PlaneLayout);
    ASSERT_EQ(Translate(), 0);
    io::CBlockPtr root = OutputTree();
    const io::CBlock* nets = ChildBlock(
        *ChildBlock(*ChildBlock(*ChildBlock(*root, L"LayoutData"), L"LayoutCell"), L"Layout"), L"LayoutNets");
    ASSERT_NE(nets, nullptr);
    ASSERT_EQ(nets->size(), 1u);
    const auto* vcc = static_cast<const io::CBlock*>(nets->Item(nets->begin()).Item());
    std::vector<io::CBlock_item*> items;
    for (auto it = vcc->begin(); it != vcc->end(); ++it)
        items.push_back(vcc->Item(it).Item());
    // Name, the thin line kept in free space, the via, then the plane shapes
    // by layer name: the negative plane's square shrunk by half the pen, and
    // the positive plane with its round void. The line's own shape is a
    // segment and is dropped.
    ASSERT_EQ(items.size(), 5u);
    EXPECT_EQ(Text(*items[1]),
              "Graphics('PLANE_3', Path(1, vertex(20, 20, 0.1, 0.1, 'Round', 'Radiallymitered', 0.1), "
              "vertex(21, 20, 0.1, 0.1, 'Round', 'Radiallymitered', 0.1)))");
    EXPECT_EQ(Text(*items[2]), "Via(2, 'SIGNAL_1', 'PLANE_3', 5, 5, 'V', 0)");

    auto* negative = dynamic_cast<io::CBlock_func*>(items[3]);
    ASSERT_NE(negative, nullptr);
    EXPECT_EQ(negative->GetArgumentValue(0).GetKind(), io::CBlock_value::k_String);
    auto* polygon = dynamic_cast<io::CBlock_func*>(negative->GetArgumentItem(1));
    ASSERT_NE(polygon, nullptr);
    EXPECT_EQ(polygon->Name(), AString(L"Polygon"));
    int id = 0;
    polygon->GetArgumentValue(0).Query(id);
    EXPECT_EQ(id, 3);
    EXPECT_EQ(polygon->GetArgumentCount(), 2u + 5u); // id, width, five vertices: written closed
    EXPECT_NEAR(ShoelaceOfVertices(*polygon), 9.8 * 9.8, 1e-9);

    auto* withVoids = dynamic_cast<io::CBlock*>(items[4]);
    ASSERT_NE(withVoids, nullptr);
    EXPECT_EQ(ChildNames(*withVoids), (std::vector<std::string>{"Layer", "Polygon", "voids"}));
    auto* outline = dynamic_cast<io::CBlock_func*>(withVoids->Item(std::next(withVoids->begin())).Item());
    ASSERT_NE(outline, nullptr);
    EXPECT_EQ(outline->GetArgumentCount(), 2u + 4u); // written open
    EXPECT_NEAR(ShoelaceOfVertices(*outline), 100.0, 1e-9);
    const io::CBlock* voids = ChildBlock(*withVoids, L"voids");
    ASSERT_NE(voids, nullptr);
    ASSERT_EQ(voids->size(), 1u);
    EXPECT_EQ(Text(*voids->Item(voids->begin())), "Circle(5, 0, 5, 5, 2)");
}

TEST_F(PlanesInFile, PlanesFileBlocksWithArcsCircleCutoutsAndPlaceholders)
{
    WriteMinimalJob();
    WriteFile("JobPrefs.hkp", k_PlaneJobPrefs);
    WriteFile("Layout.hkp", k_PlaneLayout);
    WriteFile("Planes.hkp",
              "$begin 'Planes'\n"
              "\t$begin 'P1'\n\t\tNet('VCC')\n\t\tLayer('3')\n\t\twidth(0)\n"
              "\t\tSeg(0, 0)\n\t\tSeg(10, 0)\n\t\tArc(10, 5, 5)\n\t\tSeg(10, 10)\n\t\tSeg(0, 10)\n"
              "\t\tSeg(0, 0)\n"
              "\t\t$begin 'Cutouts'\n\t\t\t$begin 'C1'\n\t\t\t\tcircle(4, 5, 1)\n\t\t\t$end 'C1'\n"
              "\t\t$end 'Cutouts'\n"
              "\t$end 'P1'\n"
              "\t$begin 'P2'\n\t\tDUMMY_APS=1\n\t\tNet('VCC')\n\t\tLayer('3')\n\t\tSeg(0, 0)\n"
              "\t\tSeg(9, 0)\n\t\tSeg(9, 9)\n\t\tSeg(0, 0)\n\t$end 'P2'\n"
              "\t$begin 'P3'\n\t\tNet('VCC')\n\t\tLayer('3')\n\t\tSeg(0, 0)\n\t\tSeg(5, 0)\n"
              "\t$end 'P3'\n"
              "$end 'Planes'\n");
    ASSERT_EQ(Translate(), 0);
    io::CBlockPtr root = OutputTree();
    const io::CBlock* nets = ChildBlock(
        *ChildBlock(*ChildBlock(*ChildBlock(*root, L"LayoutData"), L"LayoutCell"), L"Layout"), L"LayoutNets");
    ASSERT_NE(nets, nullptr);
    const auto* vcc = static_cast<const io::CBlock*>(nets->Item(nets->begin()).Item());
    // With a planes file, the generated polygons are passed over: only the
    // via and the one block with copper are left. The half circle bulging
    // out to the right is a counter-clockwise arc: height -5.
    std::vector<std::string> names = ChildNames(*vcc);
    EXPECT_EQ(names, (std::vector<std::string>{"Name", "Via", "PolygonWithVoids"}));
    const io::CBlock* shape = ChildBlock(*vcc, L"PolygonWithVoids");
    ASSERT_NE(shape, nullptr);
    std::vector<std::string> texts;
    for (auto it = shape->begin(); it != shape->end(); ++it)
        if (!shape->Item(it)->IsBlock())
            texts.push_back(Text(*shape->Item(it)));
    EXPECT_EQ(texts, (std::vector<std::string>{"Layer='PLANE_3'",
                                               "Polygon(2, 0, vertex(0, 0), vertex(10, 0), Arc(-5), "
                                               "vertex(10, 10), vertex(0, 10))"}));
    const io::CBlock* voids = ChildBlock(*shape, L"voids");
    ASSERT_NE(voids, nullptr);
    EXPECT_EQ(Text(*voids->Item(voids->begin())), "Circle(3, 0, 4, 5, 2)");
}
