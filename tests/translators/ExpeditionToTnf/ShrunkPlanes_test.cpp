// Negative planes cut in two by the pen's width, and the example jobs run
// from start to end without one assertion line.
#include "JobFixture.h"

#include "translators/ExpeditionToTnf/ExpeditionLayout.h"

#include <cmath>

namespace
{
// Two 4 x 4 pads, 2 apart, joined by a neck 0.6 wide, as the points of a
// plane outline.
std::vector<geom::Point> DumbbellPoints()
{
    return {geom::Point(0, 0),   geom::Point(4, 0),   geom::Point(4, 1.7), geom::Point(6, 1.7),
            geom::Point(6, 0),   geom::Point(10, 0),  geom::Point(10, 4),  geom::Point(6, 4),
            geom::Point(6, 2.3), geom::Point(4, 2.3), geom::Point(4, 4),   geom::Point(0, 4)};
}

std::string Text(const io::CBlock_item& item)
{
    io::CString_ostream out;
    out.SetPrecision(10);
    item.write(out);
    return out.str();
}

const char* const k_NegativePlaneJobPrefs = R"(header
.PHYSICAL_LAYERS 2
.LAYER_STACKUP_SECTION
 ..SIGNAL_LAYER 1
  ...CONDUCTIVE_LAYER_NUMBER 1
 ..PLANE_LAYER 2
  ...CONDUCTIVE_LAYER_NUMBER 2
  ...PLANE_TYPE NEGATIVE
 ..ALLOW_BURIED_RESISTORS NO
)";

// The dumbbell drawn with a pen of 1.0 on the negative plane.
const char* const k_NeckedPlaneLayout = R"(header
.UNITS MM
.NET "VCC"
 ..VIA
  ...XY (20, 20)
  ...LAYER_PAIR LYR_1 LYR_2
  ...PADSTACK "V"
 ..NET_PROPERTIES NONE
.GENERATED_DATA
..PLANE_LYR LYR_2
..PLANE_NET "VCC"
...POLYLINE_PATH
....WIDTH 1.0
....XY (0, 0) (4, 0) (4, 1.7) (6, 1.7) (6, 0) (10, 0) (10, 4) (6, 4) (6, 2.3) (4, 2.3) (4, 4) (0, 4)
..DIMENSION
)";
} // namespace

TEST(ShrunkPlanes, BothPiecesOfANeckedNegativePlaneAreOutlines)
{
    // The pen's half width, 0.5, is more than half the neck: the neck's
    // copper-free area is gone, and each pad's remains.
    ExpeditionLayoutNet net(L"VCC", {}, {}, {});
    net.AddPlaneOutline(ExpeditionPlanePolygon(geom::Polygon(DumbbellPoints(), true), 1.0), L"NEG", true);
    const auto& outlines = net.m_PlaneOutlines[L"NEG"];
    ASSERT_EQ(outlines.size(), 2u);
    for (const ExpeditionPlanePolygon& piece : outlines)
    {
        // 3 x 3, and the sliver where the neck met the pad.
        EXPECT_GT(piece.GetPolygon().GetArea().GetValue(), 9.0);
        EXPECT_LT(piece.GetPolygon().GetArea().GetValue(), 9.02);
        EXPECT_EQ(piece.m_Width, 0.0);
    }
    EXPECT_LT(outlines[0].GetBBox().GetMaxX().GetValue(), 5.0);
    EXPECT_GT(outlines[1].GetBBox().GetMinX().GetValue(), 5.0);
}

using ShrunkPlanesInFile = JobFixture;

TEST_F(ShrunkPlanesInFile, BothPiecesOfANeckedNegativePlaneReachTheFile)
{
    WriteMinimalJob();
    WriteFile("JobPrefs.hkp", k_NegativePlaneJobPrefs);
    WriteFile("Layout.hkp", k_NeckedPlaneLayout);
    ASSERT_EQ(Translate(), 0);
    EXPECT_EQ(Errors().find("Assertion failed"), std::string::npos) << Errors();
    const io::CBlockPtr root = OutputTree();
    const io::CBlock* nets = Descend(*root, {L"LayoutData", L"LayoutCell", L"Layout", L"LayoutNets"});
    ASSERT_NE(nets, nullptr);
    ASSERT_EQ(nets->size(), 1u);
    const auto* vcc = static_cast<const io::CBlock*>(nets->Item(nets->begin()).Item());
    int pieces = 0;
    for (auto it = vcc->begin(); it != vcc->end(); ++it)
        if (Text(*vcc->Item(it).Item()).find("'PLANE_2', Polygon(") != std::string::npos)
            ++pieces;
    EXPECT_EQ(pieces, 2);
}

TEST_F(ShrunkPlanesInFile, ExampleJobsRunWithoutAnAssertion)
{
    for (const char* job : {"Demo4Layer", "Minimal2Layer"})
    {
        const std::string dir = std::string(TNF_SOURCE_DIR) + "/examples/" + job;
        const std::string output = (OutputPath(std::string(job) + ".tnf")).string();
        ASSERT_EQ(Run("\"" + dir + "\" \"" + output + "\""), 0) << job;
        EXPECT_EQ(Errors(), "") << job;
        EXPECT_GT(OutputText(std::string(job) + ".tnf").size(), 1000u) << job;
    }
}
