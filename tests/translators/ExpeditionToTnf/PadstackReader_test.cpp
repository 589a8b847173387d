// Padstack.hkp read into holes, padstacks and pads: every pad form with its
// numbers, the first-or-last keyword rules, custom pads that unite or fall
// apart.
#include "JobFixture.h"

#include "translators/ExpeditionToTnf/ExpeditionParser.h"

namespace
{
const char* const k_Padstacks = R"hkp(.FILETYPE PADSTACK_LIBRARY
.PAD "EARLY"
 ..ROUND
  ...DIAMETER 10
.UNITS MM
.HOLE "DRILL_0.3"
 ..ROUND
  ...DIAMETER 0.3
.HOLE "SLOT_0.6x1.2"
 ..SLOT
  ...WIDTH 0.6
  ...LENGTH 1.2
.PAD "OCT6"
 ..OCTAGON
  ...DIAMETER 6
.PAD "THERM"
 ..4_WEB_ROUND_THERMAL
  ...DIAMETER 40
 ..TIE_LEG_WIDTH 0.2
 ..THERMAL_CLEARANCE 0.25
.PAD "RRECT"
 ..RADIUS_CORNER_RECTANGLE
  ...WIDTH 2
  ...HEIGHT 1
  ...RADIUS 0.25
.PAD "RCIRCLE"
 ..RADIUS_CORNER_RECTANGLE
  ...WIDTH 2
  ...HEIGHT 2
  ...RADIUS 1
.PAD "TWICE"
 ..SQUARE
  ...WIDTH 1
 ..ROUND
  ...DIAMETER 0.5
 ..OFFSET (0.1, -0.2)
.PAD "APART"
 ..CUSTOM
  ...CIRCLE_SHAPE
   ....XY (-2, 0)
   ....RADIUS 0.5
  ...CIRCLE_SHAPE
   ....XY (2, 0)
   ....RADIUS 0.5
  ...PAD_OPTIONS USER_GENERATED_NAME
.PAD "JOINED"
 ..CUSTOM
  ...RECT_SHAPE
   ....XY (-1, -0.5) (1, 0.5)
   ....SHAPE_OPTIONS FILLED
  ...CIRCLE_SHAPE
   ....XY (1, 0)
   ....RADIUS 0.5
  ...PAD_OPTIONS USER_GENERATED_NAME
.PAD "ONE_SHAPE"
 ..CUSTOM
  ...RECT_SHAPE
   ....XY (0, 0) (2, 1)
   ....SHAPE_OPTIONS FILLED
  ...TIMESTAMP 1700000000
.PADSTACK "VIA_0.3"
 ..PADSTACK_TYPE VIA
 ..TECHNOLOGY_OPTIONS FIRST LINE
 ..TECHNOLOGY_OPTIONS X
 ..TOP_PAD "OCT6"
 ..TOP_PAD "THERM"
 ..BOTTOM_PAD "OCT6"
 ..CLEARANCE_PAD "TWICE"
 ..CLEARANCE_PAD "THERM"
 ..LAYER 2
  ...PAD_NAME "RRECT"
 ..HOLE_NAME "DRILL_0.3"
 ..OFFSET (0.5, 0)
.HOLE "LOST_HOLE"
 ..ROUND
  ...DIAMETER 0.4
.PADSTACK "SMD"
 ..PADSTACK_TYPE PIN_SMD
 ..TOP_PAD "RRECT"
)hkp";
} // namespace

using PadstackReader = JobFixture;

TEST_F(PadstackReader, PadFormsHolesAndPadstacks)
{
    WriteFile("Padstack.hkp", k_Padstacks);
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    ElementList elements;
    parser.ReadPadstacks(elements);

    // Before the units line lengths are zero in this file.
    ExpeditionPad* early = parser.FindPad(L"EARLY");
    ASSERT_NE(early, nullptr);
    ASSERT_NE(early->m_Shape->AsCircle(), nullptr);
    EXPECT_EQ(early->m_Shape->AsCircle()->m_Radius, 0.0);

    ExpeditionPad* oct = parser.FindPad(L"OCT6");
    ASSERT_NE(oct, nullptr);
    EXPECT_EQ(oct->m_ShapeName, AString(L"POLYGON"));
    const auto& octVertices = oct->m_Shape->AsPolygon()->m_Vertices;
    ASSERT_EQ(octVertices.size(), 9u);
    EXPECT_DOUBLE_EQ(octVertices[0]->x, -1.0);
    EXPECT_DOUBLE_EQ(octVertices[0]->y, -3.0);

    ExpeditionPad* thermal = parser.FindPad(L"THERM");
    EXPECT_EQ(thermal->m_ShapeName, AString(L"Circle"));
    EXPECT_EQ(thermal->m_PadType, AString(L"Circle"));
    EXPECT_DOUBLE_EQ(thermal->m_Shape->AsCircle()->m_Radius, 20.0);
    EXPECT_DOUBLE_EQ(thermal->m_ThermalClearance, 0.25);

    // A rounded rectangle keeps four straight edges and four quarter arcs;
    // rounded by half its width it becomes a circle.
    ExpeditionPad* rrect = parser.FindPad(L"RRECT");
    ASSERT_NE(rrect->m_Shape, nullptr);
    ASSERT_NE(rrect->m_Shape->AsPolygon(), nullptr);
    int arcs = 0;
    for (const ExpeditionVertex* v : rrect->m_Shape->AsPolygon()->m_Vertices)
        arcs += v->arcHeight != 0.0;
    EXPECT_EQ(arcs, 4);
    ExpeditionPad* rcircle = parser.FindPad(L"RCIRCLE");
    ASSERT_NE(rcircle->m_Shape->AsCircle(), nullptr);
    EXPECT_NEAR(rcircle->m_Shape->AsCircle()->m_Radius, 1.0, 1e-9);
    EXPECT_EQ(rcircle->m_ShapeName, AString(L"POLYGON"));

    // The later shape keyword wins; the family is that of the later one.
    ExpeditionPad* twice = parser.FindPad(L"TWICE");
    ASSERT_NE(twice->m_Shape->AsCircle(), nullptr);
    EXPECT_DOUBLE_EQ(twice->m_OffsetX, 0.1);
    EXPECT_DOUBLE_EQ(twice->m_OffsetY, -0.2);

    // Two circles apart: two pads, the second hanging on the first.
    ExpeditionPad* apart = parser.FindPad(L"APART");
    ASSERT_NE(apart, nullptr);
    ASSERT_EQ(parser.m_PadLoops[L"APART"].size(), 1u);
    EXPECT_EQ(parser.m_PadLoops[L"APART"][0]->m_Name, AString(L"APART_UNCONN_1"));
    EXPECT_NE(parser.FindPad(L"APART_UNCONN_1"), nullptr);
    // A rectangle and a circle that overlap: one polygon with arcs.
    ExpeditionPad* joined = parser.FindPad(L"JOINED");
    ASSERT_NE(joined->m_Shape, nullptr);
    ASSERT_NE(joined->m_Shape->AsPolygon(), nullptr);
    EXPECT_EQ(joined->m_ShapeName, AString(L"POLYGON"));
    EXPECT_EQ(parser.m_PadLoops.count(L"JOINED"), 0u);
    // One shape is taken as read, and the rectangle's centre becomes the
    // negated offset.
    ExpeditionPad* one = parser.FindPad(L"ONE_SHAPE");
    ASSERT_NE(one->m_Shape->AsRectangle(), nullptr);
    EXPECT_EQ(one->m_ShapeName, AString(L"Rectangle"));
    EXPECT_DOUBLE_EQ(one->m_OffsetX, -1.0);
    EXPECT_DOUBLE_EQ(one->m_OffsetY, -0.5);

    ASSERT_EQ(parser.m_PadStacks.size(), 2u);
    const ExpeditionPadStack* via = parser.m_PadStacks[0];
    EXPECT_EQ(via->m_TopPad, AString(L"OCT6"));        // the first TOP_PAD
    EXPECT_EQ(via->m_ClearancePad, AString(L"THERM")); // the last CLEARANCE_PAD
    EXPECT_EQ(via->m_LayerPads.at(2), AString(L"RRECT"));
    EXPECT_EQ(via->m_TechnologyOptions, AString(L"X")); // cut where the first had its line end: none
    EXPECT_DOUBLE_EQ(via->m_OffsetX, 0.5);
    // The hole behind a padstack is part of that record and never exists.
    int holes = 0;
    for (auto* e : elements)
        if (ExpeditionPadHole* hole = e->AsPadHole())
        {
            ++holes;
            EXPECT_NE(hole->m_Name, AString(L"LOST_HOLE"));
            if (hole->m_Name == L"SLOT_0.6x1.2")
            {
                EXPECT_DOUBLE_EQ(hole->m_Diameter, 0.6);
                EXPECT_DOUBLE_EQ(hole->m_SlotLength, 1.2);
                EXPECT_EQ(hole->m_HoleShape, AString(L"Circle"));
            }
        }
    EXPECT_EQ(holes, 2);
    for (auto* e : elements)
        delete e;
}

TEST_F(PadstackReader, ChamferTakesNoUnitFactor)
{
    WriteFile("Padstack.hkp", "header\n.UNITS TH\n.PAD \"CH\"\n ..CHAMFERED_RECTANGLE\n  ...WIDTH 100\n"
                              "  ...HEIGHT 50\n  ...CHAMFER 10\n");
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    ElementList elements;
    parser.ReadPadstacks(elements);
    ExpeditionPad* pad = parser.FindPad(L"CH");
    ASSERT_NE(pad, nullptr);
    const auto& v = pad->m_Shape->AsPolygon()->m_Vertices;
    ASSERT_EQ(v.size(), 9u);
    // W = 2.54, H = 1.27, the chamfer 10 mm as it stands: it overshoots.
    EXPECT_DOUBLE_EQ(v[0]->x, 10.0 - 1.27);
    EXPECT_DOUBLE_EQ(v[0]->y, -0.635);
    EXPECT_DOUBLE_EQ(v[1]->x, 1.27 - 10.0);
    for (auto* e : elements)
        delete e;
}

TEST_F(PadstackReader, UsedPadstacksAndPadsReachTheFile)
{
    WriteMinimalJob();
    WriteFile("JobPrefs.hkp",
              "header\n.PHYSICAL_LAYERS 4\n.LAYER_STACKUP_SECTION\n ..SIGNAL_LAYER 1\n"
              "  ...CONDUCTIVE_LAYER_NUMBER 1\n ..PLANE_LAYER 2\n  ...CONDUCTIVE_LAYER_NUMBER 2\n"
              " ..SIGNAL_LAYER 3\n  ...CONDUCTIVE_LAYER_NUMBER 3\n ..SIGNAL_LAYER 4\n"
              "  ...CONDUCTIVE_LAYER_NUMBER 4\n ..ALLOW_BURIED_RESISTORS NO\n");
    WriteFile("Padstack.hkp", k_Padstacks);
    WriteFile("Cell.hkp",
              "header\n.PACKAGE_CELL \"TP\"\n ..PIN \"1\"\n  ...XY (0, 0)\n  ...PADSTACK \"SMD\"\n");
    WriteFile("Layout.hkp", "header\n.PACKAGE_CELL \"TP\"\n ..XY (1, 1)\n ..ROTATION 0\n ..PIN \"1\"\n"
                            "  ...PADSTACK \"SMD\"\n.NET \"GND\"\n ..VIA\n  ...XY (2, 2)\n"
                            "  ...PADSTACK \"VIA_0.3\"\n.BOARD_ORIGIN\n");
    ASSERT_EQ(Translate(), 0);
    io::CBlockPtr root = OutputTree();
    // The pads of the two used padstacks, in the order of the file, and the
    // null pad; a thermal word made a plain circle pad, which is written.
    EXPECT_EQ(ChildNames(*ChildBlock(*root, L"PadShapes")),
              (std::vector<std::string>{"OCT6", "THERM", "RRECT", "'NULLPAD'"}));
    const io::CBlock* padStacks = ChildBlock(*root, L"PadStacks");
    ASSERT_NE(padStacks, nullptr);
    EXPECT_EQ(ChildNames(*padStacks), (std::vector<std::string>{"VIA_0.3", "SMD"}));
    std::vector<std::string> via;
    const io::CBlock* viaBlock = ChildBlock(*padStacks, L"VIA_0.3");
    for (auto it = viaBlock->begin(); it != viaBlock->end(); ++it)
    {
        io::CString_ostream out;
        out.SetPrecision(10);
        viaBlock->Item(it)->write(out);
        via.push_back(out.str());
    }
    // Layer 2 takes the pad of its LAYER line; layer 3 has no internal pad.
    const std::string clearance = "Thermal(), NonConnect('THERM', 0, 0, 0, 0))";
    EXPECT_EQ(via, (std::vector<std::string>{"Hole(0.3)", "Top('OCT6', 0.5, 0, 0, " + clearance,
                                             "Signal('RRECT', 0.5, 0, 0, " + clearance,
                                             "Signal('NULLPAD', 0.5, 0, 0, " + clearance,
                                             "Bottom('OCT6', 0.5, 0, 0, " + clearance}));
}
