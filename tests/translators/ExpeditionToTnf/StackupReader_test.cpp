// The stack-up of JobPrefs.hkp, from the file to the two Layers blocks, and the
// reading frame beneath it: keyword levels, units, point lists, names.
#include "JobFixture.h"

#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include <cmath>

namespace
{
// A six-layer board as the layout tool exports it: soldermask dielectrics
// outside the copper, a negative ground plane, user layers, units switched
// to thousandths after the first connection record.
const char* const k_SixLayerJobPrefs = R"(.UNITS MM
.FILETYPE JOB_PREFS
.VERSION "03.04"
.CREATOR "Expedition PCB 2007.9"
!.NUMBER_OF_LAYERS 6
.DEFAULT_VIA_CONNECTIONS
 ..TIE_LEG_WIDTH 0.25
 ..TIE_LEG_NUMBER_OPTION 4
 ..TIE_LEG_ROTATION_OPTION 45
.UNITS TH
.PHYSICAL_LAYERS 6
.USER_DEFINED_LAYERS_SECTION
 ..USER_LAYER_NAME "Fab Notes"
  ...USER_LAYER_NUMBER 101
 ..USER_LAYER_NAME "Keepout Drawing"
! The token behind a user layer without number is lost, this comment's "!".
.LAYER_STACKUP_SECTION
 ..DIELECTRIC_LAYER 1
  ...LAYER_DESCRIPTION "Top Soldermask"
  ...LAYER_THICKNESS 0.5
  ...DIELECTRIC_CONSTANT 3.5
  ...LAYER_TECHNOLOGY "LPI"
 ..SIGNAL_LAYER 2
  ...CONDUCTIVE_LAYER_NUMBER 1
  ...LAYER_DESCRIPTION "Top"
  ...LAYER_THICKNESS 1.4
  ...LAYER_RESISTIVITY 1.7
  ...LAYER_TECHNOLOGY "Half oz"
 ..DIELECTRIC_LAYER 3
  ...LAYER_THICKNESS 5
  ...DIELECTRIC_CONSTANT 4.2
 ..PLANE_LAYER 4
  ...CONDUCTIVE_LAYER_NUMBER 2
  ...LAYER_DESCRIPTION "GND"
  ...PLANE_TYPE NEGATIVE
  ...PLANE_NET "GND"
   ....PLANE_NET_CLEARANCE 12
   ....USE_ROUTE_BORDER Yes
  ...LAYER_THICKNESS 1.4
 ..DIELECTRIC_LAYER 5
  ...LAYER_THICKNESS 10
 ..SIGNAL_LAYER 6
  ...CONDUCTIVE_LAYER_NUMBER 3
  ...LAYER_THICKNESS 0.7
.UNITS MM
  ...DIELECTRIC_CONSTANT 9.9
 ..DIELECTRIC_LAYER 7
  ...LAYER_THICKNESS 10
 ..SIGNAL_LAYER 8
  ...CONDUCTIVE_LAYER_NUMBER 4
  ...LAYER_DESCRIPTION "Inner4"
  ...LAYER_THICKNESS 0.7
 ..DIELECTRIC_LAYER 9
  ...LAYER_THICKNESS 5
 ..PLANE_LAYER 10
  ...CONDUCTIVE_LAYER_NUMBER 5
  ...PLANE_NET "VCC"
   ....USE_ROUTE_BORDER No
  ...LAYER_THICKNESS 1.4
 ..DIELECTRIC_LAYER 11
  ...LAYER_THICKNESS 5
 ..SIGNAL_LAYER 12
  ...CONDUCTIVE_LAYER_NUMBER 6
  ...LAYER_DESCRIPTION "Bottom"
  ...LAYER_THICKNESS 1.4
 ..DIELECTRIC_LAYER 13
  ...LAYER_DESCRIPTION "Bottom Soldermask"
  ...LAYER_THICKNESS 0.5
 ..ALLOW_BURIED_RESISTORS NO
.DEFAULT_THRU_PAD_CONNECTIONS
 ..TIE_LEG_NUMBER_OPTION 2
 ..TIE_LEG_WIDTH 10
 ..TIE_LEG_ROTATION_OPTION 0
.TP_ASSIGNMENT_SECTION
.DEFAULT_SMD_PAD_CONNECTIONS
 ..TIE_LEG_WIDTH 8
 ..TIE_LEG_NUMBER_OPTION 2
 ..TIE_LEG_ROTATION_OPTION 90
)";

std::vector<std::string> ItemTexts(const io::CBlock& block)
{
    std::vector<std::string> texts;
    for (auto it = block.begin(); it != block.end(); ++it)
    {
        io::CString_ostream out;
        out.SetPrecision(10);
        block.Item(it)->write(out);
        texts.push_back(out.str());
    }
    return texts;
}
} // namespace

using StackupReader = JobFixture;

TEST_F(StackupReader, SixLayerStackupReachesBothLayersBlocks)
{
    WriteMinimalJob({"JobPrefs.hkp"});
    WriteFile("JobPrefs.hkp", k_SixLayerJobPrefs);
    ASSERT_EQ(Translate(), 0);
    ASSERT_TRUE(Errors().empty()) << Errors();

    io::CBlockPtr root = OutputTree();
    const io::CBlock* layoutData = ChildBlock(*root, L"LayoutData");
    ASSERT_NE(layoutData, nullptr);
    const io::CBlock* layout = ChildBlock(*ChildBlock(*layoutData, L"LayoutCell"), L"Layout");
    const io::CBlock* topLayout = ChildBlock(*ChildBlock(*layoutData, L"Design"), L"TopLayout");
    ASSERT_NE(layout, nullptr);
    ASSERT_NE(topLayout, nullptr);

    // Lengths in thousandths of an inch, worked out by hand: 1.4 th = 0.03556 mm,
    // 5 th = 0.127 mm, 0.7 th = 0.01778 mm. The dielectric behind layer 6 keeps
    // thousandths: the ".UNITS MM" inside the stack-up ends the record of layer 6
    // and is passed over. The soldermasks outside the copper are left out.
    const std::vector<std::string> expected{
        "Layer('Fab Notes', 'USER', 'Top')",
        "Layer('Keepout Drawing', 'USER', 'Top')",
        "Layer('ASSEMBLY_TOP', 'Assembly', 'Top')",
        "Layer('SILKSCREEN_TOP', 'SilkScreen', 'Top')",
        "Layer('SOLDERMASK_TOP', 'SolderMask', 'Top')",
        "Layer('SOLDERPASTE_TOP', 'SolderPaste', 'Top')",
        "Layer('PLACEMENT_TOP', 'User', 'Top')",
        "StackupLayer('Top_1', 'Signal', 'Top', 0.03556, 'copper')",
        "StackupLayer('Dielectric_3', 'Dielectric', 'neither', 0.127, 'FR4')",
        "StackupLayer('GND_2', 'MetalizedSignal', 'neither', 0.03556, 'copper')",
        "StackupLayer('Dielectric_5', 'Dielectric', 'neither', 0.254, 'FR4')",
        "StackupLayer('SIGNAL_3', 'Signal', 'neither', 0.01778, 'copper')",
        "StackupLayer('Dielectric_7', 'Dielectric', 'neither', 0.254, 'FR4')",
        "StackupLayer('Inner4_4', 'Signal', 'neither', 0.01778, 'copper')",
        "StackupLayer('Dielectric_9', 'Dielectric', 'neither', 0.127, 'FR4')",
        "StackupLayer('PLANE_5', 'Signal', 'neither', 0.03556, 'copper')",
        "StackupLayer('Dielectric_11', 'Dielectric', 'neither', 0.127, 'FR4')",
        "StackupLayer('Bottom_6', 'Signal', 'Bottom', 0.03556, 'copper')",
        "Layer('ASSEMBLY_BOTTOM', 'Assembly', 'Bottom')",
        "Layer('SILKSCREEN_BOTTOM', 'SilkScreen', 'Bottom')",
        "Layer('SOLDERMASK_BOTTOM', 'SolderMask', 'Bottom')",
        "Layer('SOLDERPASTE_BOTTOM', 'SolderPaste', 'Bottom')",
        "Layer('PLACEMENT_BOTTOM', 'User', 'Bottom')",
    };
    EXPECT_EQ(ItemTexts(*ChildBlock(*layout, L"Layers")), expected);
    EXPECT_EQ(ItemTexts(*ChildBlock(*topLayout, L"Layers")), expected);
}

TEST_F(StackupReader, ModelTablesOfTheStackup)
{
    WriteFile("JobPrefs.hkp", k_SixLayerJobPrefs);
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    ElementList elements;
    parser.ReadJobPrefs(elements);

    EXPECT_EQ(parser.m_PhysicalLayers, 6);
    ASSERT_EQ(elements.size(), 15u); // two user layers, thirteen stack-up layers
    EXPECT_EQ(parser.m_LayerNames.size(), 6u);
    EXPECT_EQ(parser.GetTopLayerName(), AString(L"Top_1"));
    EXPECT_EQ(parser.GetBottomLayerName(), AString(L"Bottom_6"));
    EXPECT_EQ(parser.GetMountLayerName(L"mnt_lyr"), AString(L"Top_1"));
    EXPECT_EQ(parser.GetMountLayerName(L"OPP_SIDE"), AString(L"Bottom_6"));

    // The second user layer had no number of its own and keeps the first one's.
    ExpeditionLayer* keepout = elements[1]->AsLayer();
    ASSERT_NE(keepout, nullptr);
    EXPECT_EQ(keepout->m_LayerNumber, 101);
    EXPECT_EQ(keepout->m_ConductiveNumber, -1);
    EXPECT_EQ(elements[1]->AsLayoutNet(), nullptr);

    ExpeditionLayer* top = parser.m_Layers[1];
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->m_LayerNumber, 2);
    EXPECT_EQ(top->m_Description, AString(L"Top"));
    EXPECT_DOUBLE_EQ(top->m_Resistivity, 1.7 * 0.0254); // scaled like a length
    EXPECT_EQ(top->m_PlaneType, AString(L"POSITIVE"));
    EXPECT_EQ(parser.m_Layers[2]->m_PlaneType, AString(L"NEGATIVE"));
    EXPECT_DOUBLE_EQ(parser.m_Layers[3]->m_DielectricConstant, 0.0); // its record ended before the constant
    ExpeditionLayer* dielectric3 = elements[4]->AsLayer();
    EXPECT_EQ(dielectric3->m_Name, AString(L"Dielectric_3"));
    EXPECT_DOUBLE_EQ(dielectric3->m_DielectricConstant, 4.2); // never scaled

    // Only the plane net that uses the route border is noted.
    ASSERT_EQ(parser.m_PlaneNets.size(), 1u);
    EXPECT_EQ(parser.m_PlaneNets[0].first, AString(L"GND"));
    EXPECT_EQ(parser.m_PlaneNets[0].second, AString(L"GND_2"));

    // The via record stood before the units line; the pad record behind it.
    ASSERT_NE(parser.m_DefaultViaConnection, nullptr);
    EXPECT_DOUBLE_EQ(parser.m_DefaultViaConnection->m_TieLegWidth, 0.25);
    EXPECT_EQ(parser.m_DefaultViaConnection->m_TieLegNumber, AString(L"4"));
    EXPECT_EQ(parser.m_DefaultViaConnection->m_TieLegRotation, AString(L"45"));
    ASSERT_NE(parser.m_DefaultThruPadConnection, nullptr);
    EXPECT_DOUBLE_EQ(parser.m_DefaultThruPadConnection->m_TieLegWidth, 10 * 0.0254);
    EXPECT_EQ(parser.m_DefaultThruPadConnection->m_TieLegNumber, AString(L"2"));
    EXPECT_EQ(parser.m_DefaultThruPadConnection->m_TieLegRotation, AString(L"0"));
    // Nothing behind the test-point section is read.
    EXPECT_EQ(parser.m_DefaultSmdPadConnection, nullptr);

    for (auto* e : elements)
        delete e;
}

TEST_F(StackupReader, TestPointSectionFirstLeavesNoLayersAndFirstLineIsDropped)
{
    WriteFile("JobPrefs.hkp",
              ".UNITS TH\n.TP_ASSIGNMENT_SECTION\n.LAYER_STACKUP_SECTION\n ..SIGNAL_LAYER 1\n");
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    ElementList elements;
    parser.ReadJobPrefs(elements);
    EXPECT_TRUE(elements.empty());

    // ".UNITS TH" on the first line has no effect; on the second it counts.
    WriteFile("JobPrefs.hkp", ".UNITS TH\n.LAYER_STACKUP_SECTION\n ..SIGNAL_LAYER 1\n  ...LAYER_THICKNESS 2\n"
                              " ..ALLOW_BURIED_RESISTORS\n");
    ExpeditionParser first(AString(JobDir().string().c_str()));
    first.ReadJobPrefs(elements);
    ASSERT_EQ(elements.size(), 1u);
    EXPECT_DOUBLE_EQ(elements[0]->AsLayer()->m_Thickness, 2.0);
    EXPECT_EQ(elements[0]->AsLayer()->m_Name, AString(L"SIGNAL_0")); // no conductive number
    WriteFile("JobPrefs.hkp", "header\n.UNITS TH\n.LAYER_STACKUP_SECTION\n ..SIGNAL_LAYER 1\n"
                              "  ...LAYER_THICKNESS 2\n ..ALLOW_BURIED_RESISTORS\n");
    ExpeditionParser second(AString(JobDir().string().c_str()));
    second.ReadJobPrefs(elements);
    ASSERT_EQ(elements.size(), 2u);
    EXPECT_DOUBLE_EQ(elements[1]->AsLayer()->m_Thickness, 2 * 0.0254);
    for (auto* e : elements)
        delete e;
}

TEST(ReadingFrame, KeywordLevelsUnitsAndLists)
{
    AString token;
    io::CToken_istream stream(std::string(".UNITS\n..PADSTACK_TYPE X\n..4_WEB_ROUND_THERMAL\n"
                                          ".......SEVEN\n"));
    EXPECT_EQ(ExpeditionParser::NextToken(stream, token), 2);
    EXPECT_EQ(token, AString(L"UNITS"));
    EXPECT_EQ(ExpeditionParser::NextToken(stream, token), 3);
    EXPECT_EQ(token, AString(L"PADSTACK_TYPE"));
    stream.NewLine();
    // The dot glued to the digit is repaired; the level is one less.
    EXPECT_EQ(ExpeditionParser::NextToken(stream, token), 2);
    EXPECT_EQ(token, AString(L"4_WEB_ROUND_THERMAL"));
    // Seven dots and the keyword: eight reads, the most there may be.
    EXPECT_EQ(ExpeditionParser::NextToken(stream, token), 8);
    EXPECT_EQ(token, AString(L"SEVEN"));

    EXPECT_EQ(ExpeditionParser::UnitFactor(L"th\r"), 0.0254);
    EXPECT_EQ(ExpeditionParser::UnitFactor(L"TH"), 0.0254);
    EXPECT_EQ(ExpeditionParser::UnitFactor(L"th "), 1.0);
    EXPECT_EQ(ExpeditionParser::UnitFactor(L"\r"), 1.0);
    EXPECT_EQ(ExpeditionParser::UnitFactor(L"In"), 25.4);
    EXPECT_EQ(ExpeditionParser::UnitFactor(L"um\r"), 0.001);
    EXPECT_EQ(ExpeditionParser::UnitFactor(L"1nm"), 1e-06);
    EXPECT_EQ(ExpeditionParser::UnitFactor(L"10NM"), 1e-05);
    EXPECT_EQ(ExpeditionParser::UnitFactor(L"mils"), 1.0);

    // A list glued to its keyword, going over lines, ended by the next keyword
    // (whose first dot it uses up), and one ended by the end of the file.
    io::CToken_istream list(std::string("..POLYLINE_PATH\n...XY(-22000, 17000)\n (-21000, 17000)"
                                        "(1, 2)\n..WIDTH 5\n...XY (0, 0) (1, 0)"));
    std::vector<ExpeditionVertex*> vertices;
    ExpeditionParser::ReadPolyline(list, vertices, 0.001);
    ASSERT_EQ(vertices.size(), 3u);
    EXPECT_DOUBLE_EQ(vertices[0]->x, -22.0);
    EXPECT_DOUBLE_EQ(vertices[1]->x, -21.0);
    EXPECT_DOUBLE_EQ(vertices[2]->y, 0.002);
    EXPECT_EQ(ExpeditionParser::NextToken(list, token), 2); // one dot left of two
    EXPECT_EQ(token, AString(L"WIDTH"));
    std::vector<ExpeditionVertex*> more;
    ExpeditionParser::ReadPolyline(list, more, 1.0);
    EXPECT_EQ(more.size(), 2u);
    for (auto* v : vertices)
        delete v;
    for (auto* v : more)
        delete v;

    // The middle triple is a centre and leaves no vertex: a half circle of
    // radius 5 from (0, 0) to (10, 0) around (5, 0), counter-clockwise, has
    // the sagitta 5 on the counter-clockwise side (negative).
    io::CToken_istream arcs(std::string("...XYR (0, 0, 0) (5, 0, 5) (10, 0, 0)\n"
                                        "...XYR (0, 0, 0) (1, 1, -2) (2, 0, 1)\n"));
    std::vector<ExpeditionVertex*> polyarc;
    ExpeditionParser::ReadPolyarc(arcs, polyarc, 1.0);
    ASSERT_EQ(polyarc.size(), 2u);
    EXPECT_DOUBLE_EQ(polyarc[0]->x, 0.0);
    EXPECT_NEAR(polyarc[0]->arcHeight, -5.0, 1e-12);
    EXPECT_EQ(polyarc[1]->arcHeight, 0.0);
    EXPECT_DOUBLE_EQ(polyarc[1]->x, 10.0);
    // Clockwise around (1, 1) from (0, 0) to (2, 0) is the long way, over the
    // top: three quarters of the circle, sagitta radius + 1 = sqrt(2) + 1,
    // positive for the clockwise sense. The last triple has a radius but nothing behind
    // it to be the centre of, so it is a plain vertex.
    std::vector<ExpeditionVertex*> second;
    ExpeditionParser::ReadPolyarc(arcs, second, 1.0);
    ASSERT_EQ(second.size(), 2u);
    EXPECT_NEAR(second[0]->arcHeight, std::sqrt(2.0) + 1.0, 1e-12);
    EXPECT_DOUBLE_EQ(second[1]->x, 2.0);
    EXPECT_EQ(second[1]->arcHeight, 0.0);
    for (auto* v : polyarc)
        delete v;
    for (auto* v : second)
        delete v;

    EXPECT_EQ(ExpeditionParser::MakeUniqueName(L"A1", {L"B1"}), AString(L"A1"));
    EXPECT_EQ(ExpeditionParser::MakeUniqueName(L"A1", {L"a1", L"A1_1", L"B"}), AString(L"A1_2"));
}

TEST(ReadingFrame, LookUpsGiveTheFirstMatchWithoutRegardToCase)
{
    ExpeditionParser parser(AString(L"."));
    ElementList elements;
    auto* first = new ExpeditionFootprint(L"SOIC8", L"", L"", 0, {}, {}, {}, {}, {});
    auto* second = new ExpeditionFootprint(L"soic8", L"", L"", 0, {}, {}, {}, {}, {});
    elements.push_back(new ExpeditionLayer(L"L", L"SIGNAL", L"", 1, 1, 0, 0, 0, L"POSITIVE"));
    elements.push_back(first);
    EXPECT_EQ(parser.FindFootprint(elements, L"Soic8"), first);
    EXPECT_EQ(parser.FindFootprint(elements, L"QFN"), nullptr);
    // Elements appended after a look-up are found too, and the first still wins.
    elements.push_back(second);
    auto* qfn = new ExpeditionFootprint(L"QFN", L"", L"", 0, {}, {}, {}, {}, {});
    elements.push_back(qfn);
    EXPECT_EQ(parser.FindFootprint(elements, L"qfn"), qfn);
    EXPECT_EQ(parser.FindFootprint(elements, L"SOIC8"), first);
    EXPECT_EQ(parser.FindPadStack(elements, L"SOIC8"), nullptr);

    auto* net = new ExpeditionLayoutNet(L"(NET0)", {}, {}, {});
    EXPECT_EQ(net->m_Name, AString(L"DUMMY"));
    parser.m_Nets.push_back(net);
    EXPECT_EQ(parser.FindNet(L"dummy"), net);
    for (auto* e : elements)
        delete e;
    delete net;
}

TEST_F(StackupReader, CorruptTokenRunEndsTheProgram)
{
    WriteMinimalJob({"JobPrefs.hkp"});
    // The plain top-level loop has no limit; the connection record reads with
    // one, and eight dots make the ninth read.
    WriteFile("JobPrefs.hkp", "header\n.........PHYSICAL_LAYERS 2\n.DEFAULT_VIA_CONNECTIONS\n"
                              " ........TIE_LEG_WIDTH 10\n");
    EXPECT_EQ(Translate(), 0);
    EXPECT_EQ(Errors(), "File I/O Error: Token read failure! File may be corrupted\n");
    EXPECT_FALSE(fs::exists(OutputPath()));
}
