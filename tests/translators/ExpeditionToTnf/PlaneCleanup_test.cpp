// The clean-up of the nets' conductive shapes, and that it leaves the file
// as it is.
#include "JobFixture.h"

#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include <cmath>

namespace
{
ExpeditionPolygon* Outline(std::initializer_list<std::pair<double, double>> points)
{
    std::vector<ExpeditionVertex*> vertices;
    for (const auto& [x, y] : points)
        vertices.push_back(new ExpeditionVertex(x, y, 0.0));
    return new ExpeditionPolygon(L"Top_1", vertices, 0.0);
}

ExpeditionPolygon* Square(double x0, double y0, double side)
{
    return Outline({{x0, y0}, {x0 + side, y0}, {x0 + side, y0 + side}, {x0, y0 + side}});
}

// The area of an Expedition polygon of straight edges, by the shoelace.
double ShoelaceArea(const ExpeditionShapes* shape)
{
    const auto& v = const_cast<ExpeditionShapes*>(shape)->AsPolygon()->m_Vertices;
    double twice = 0.0;
    for (size_t i = 0; i < v.size(); ++i)
    {
        const ExpeditionVertex* a = v[i];
        const ExpeditionVertex* b = v[(i + 1) % v.size()];
        twice += a->x * b->y - b->x * a->y;
    }
    return std::fabs(twice) * 0.5;
}
} // namespace

TEST(PlaneCleanup, CutOutsSelfCrossingsCrumbsAndTheDummyNet)
{
    ExpeditionParser parser(AString(L"."));
    ElementList elements;
    elements.push_back(new ExpeditionBoard(0, 0, new ExpeditionCircle(L"Board", 0, 0, 100, 0), {}));
    parser.m_Cutouts.push_back(geom::Polygon(
        std::vector<geom::Point>{geom::Point(4, 4), geom::Point(6, 4), geom::Point(6, 6), geom::Point(4, 6)},
        true));
    parser.m_Cutouts.push_back(geom::Polygon(std::vector<geom::Point>{geom::Point(29, 4), geom::Point(31, 4),
                                                                      geom::Point(31, 6), geom::Point(29, 6)},
                                             true));
    // A square around the first cut-out; one that the second cut-out crosses;
    // two overlapping squares; a bow tie; a square with a tiny second loop
    // that turns the same way at one corner.
    auto* net = new ExpeditionLayoutNet(
        L"GND", {}, {},
        {Square(0, 0, 10), Square(20, 0, 10), Square(50, 0, 10), Square(55, 0, 10),
         Outline({{100, 0}, {120, 20}, {120, 0}, {100, 20}, {100, 0}}),
         Outline(
             {{200, 0}, {210, 0}, {210, 10}, {200, 10}, {200, 0}, {200.05, 0.05}, {200.1, 0}, {200, 0}})});
    auto* dummy = new ExpeditionLayoutNet(L"dummy", {}, {}, {Square(0, 0, 1)});
    ExpeditionShapes* dummyShape = dummy->m_Shapes[0];
    elements.push_back(net);
    elements.push_back(dummy);
    parser.CleanPlaneShapes(elements);

    // The cut-out inside the first square made it a shape with a hole.
    ASSERT_EQ(net->m_ShapesWithVoids.size(), 1u);
    ASSERT_EQ(net->m_ShapesWithVoids[0].size(), 2u);
    EXPECT_NEAR(ShoelaceArea(net->m_ShapesWithVoids[0][1]), 4.0, 0.01);
    // The crossed square and the two overlapping ones stay whole and apart,
    // shrunk by a hundredth of the default clearance.
    // The bow tie's loops turn opposite ways: the clockwise one is a hole with
    // no outline to hold it and goes. The tiny clockwise loop on the square's
    // edge is a notch: its 0.0025 come off the square.
    ASSERT_EQ(net->m_Shapes.size(), 3u + 1u + 1u);
    const double shrink = 0.09999999999999999 / 100.0;
    EXPECT_NEAR(ShoelaceArea(net->m_Shapes[0]), std::pow(10.0 - 2 * shrink, 2), 1e-6);
    EXPECT_NEAR(ShoelaceArea(net->m_Shapes[1]), std::pow(10.0 - 2 * shrink, 2), 1e-6);
    EXPECT_NEAR(ShoelaceArea(net->m_Shapes[3]), 100.0, 0.1);
    EXPECT_NEAR(ShoelaceArea(net->m_Shapes[4]), std::pow(10.0 - 2 * shrink, 2) - 0.0025,
                5e-4); // the notch moves in too
    // The dummy net keeps what was read.
    ASSERT_EQ(dummy->m_Shapes.size(), 1u);
    EXPECT_EQ(dummy->m_Shapes[0], dummyShape);
    for (auto* e : elements)
        delete e;
}

using CleanupInFile = JobFixture;

TEST_F(CleanupInFile, NetRulesChangeNothingInTheFile)
{
    const fs::path demo = fs::path(TNF_SOURCE_DIR) / "examples" / "Demo4Layer";
    for (const auto& entry : fs::directory_iterator(demo))
        if (entry.path().extension() == ".hkp")
            fs::copy_file(entry.path(), JobDir() / entry.path().filename());
    ASSERT_EQ(Translate("with.tnf"), 0);
    fs::remove(JobDir() / "NetClass.hkp");
    ASSERT_EQ(Translate("without.tnf"), 0);
    const auto withoutDate = [](std::string text)
    {
        const size_t date = text.find("\tDate='");
        if (date != std::string::npos)
            text.erase(date, text.find('\n', date) - date);
        return text;
    };
    const std::string with = withoutDate(OutputText("with.tnf"));
    EXPECT_GT(with.size(), 10000u);
    EXPECT_EQ(with, withoutDate(OutputText("without.tnf")));
}
