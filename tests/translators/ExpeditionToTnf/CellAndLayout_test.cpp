// Cells, placed components, routing and the board, read into the model.
#include "JobFixture.h"

#include "core/lib/vellum/Assert.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

namespace
{
const char* const k_FourLayerJobPrefs = R"(.FILETYPE JOB_PREFERENCES
.PHYSICAL_LAYERS 4
.LAYER_STACKUP_SECTION
 ..SIGNAL_LAYER 1
  ...CONDUCTIVE_LAYER_NUMBER 1
  ...LAYER_DESCRIPTION "Top"
 ..PLANE_LAYER 2
  ...CONDUCTIVE_LAYER_NUMBER 2
  ...PLANE_TYPE NEGATIVE
 ..PLANE_LAYER 3
  ...CONDUCTIVE_LAYER_NUMBER 3
 ..SIGNAL_LAYER 4
  ...CONDUCTIVE_LAYER_NUMBER 4
  ...LAYER_DESCRIPTION "Bottom"
 ..ALLOW_BURIED_RESISTORS NO
)";

const char* const k_Cells = R"(.FILETYPE CELL_LIBRARY
.UNITS MM
.PACKAGE_CELL "SOIC8"
 ..PACKAGE_GROUP "IC"
 ..MOUNT_TYPE SURFACE
 ..NUMBER_LAYERS 2
 ..DIMENSION_SETTINGS ALL
  ...UNITS_DISPLAY MM
  ...DIM_LEVEL 2
 ..PIN "1"
  ...XY (-2.7, 1.905)
  ...PADSTACK "SMD_60x24"
 ..PIN "1"
  ...XY (-2.7, 0.635)
  ...PADSTACK "SMD_60x24"
  ...TEXT "Function" "EN"
 ..PIN "2"
  ...XY (-2.7, -0.635)
  ...ROTATION 90
  ...PADSTACK "SMD_60x24"
 ..PIN "1"
  ...XY (-2.7, -1.905)
  ...PADSTACK "SMD_60x24_B"
 ..SILKSCREEN_OUTLINE
  ...RECT_SHAPE
   ....XY (-2, -2.5) (2, 2.5)
   ....SHAPE_OPTIONS FILLED
  ...CIRCLE_PATH
   ....WIDTH 0.1
   ....XY (-1.5, 2)
   ....RADIUS 0.2
 ..TEXT "U*"
  ...XY (0, 3)
  ...TEXT_TYPE REF_DES
  ...TEXT_LYR SILKSCREEN_MNT_LYR
  ...HEIGHT 1
.UNITS TH
.PACKAGE_CELL "R0603"
 ..PIN "1"
  ...XY (-30, 0)
  ...PADSTACK "SMD_30x35"
 ..PIN "1_1"
  ...XY (30, 0)
  ...PADSTACK "SMD_30x35"
 ..DIMENSION_SETTINGS
  ...NOTHING_TO_SEE 1
 ..PIN "1"
  ...XY (0, 30)
  ...PADSTACK "SMD_30x35"
.REUSABLE_CIRCUIT_CELL "BLOCK"
 ..TRACE
  ...ROUTE_LYR LYR_4
  ...POLYLINE_PATH
   ....WIDTH 5
   ....XY (0, 0) (100, 0)
 ..VIA
  ...XY (100, 0)
  ...LAYER_PAIR LYR_1 LYR_4
  ...PADSTACK "VIA_10"
)";
} // namespace

using CellAndLayout = JobFixture;

TEST_F(CellAndLayout, CellsWithUniquePinsCarriedFieldsAndUnits)
{
    WriteFile("JobPrefs.hkp", k_FourLayerJobPrefs);
    WriteFile("Cell.hkp", k_Cells);
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    ElementList elements;
    parser.ReadJobPrefs(elements);
    parser.ReadCells(elements);

    ExpeditionFootprint* soic = parser.FindFootprint(elements, L"soic8");
    ASSERT_NE(soic, nullptr);
    std::vector<std::string> names;
    for (const ExpeditionPin* pin : soic->m_Pins)
        names.push_back(pin->m_Name.AsAnsi().str());
    EXPECT_EQ(names, (std::vector<std::string>{"1", "1_1", "2", "1_2"}));
    EXPECT_EQ(soic->m_Pins[1]->m_Attributes.size(), 1u);
    EXPECT_DOUBLE_EQ(soic->m_Pins[2]->m_Rotation, 90.0);
    EXPECT_DOUBLE_EQ(soic->m_Pins[3]->m_Y, -1.905);
    // Only the last shape of the outline record stays.
    ASSERT_EQ(soic->m_Shapes.size(), 1u);
    ASSERT_NE(soic->m_Shapes[0]->AsCircle(), nullptr);
    EXPECT_EQ(soic->m_Shapes[0]->GetLayerName(), AString(L"SILKSCREEN_TOP"));
    ASSERT_EQ(soic->m_Texts.size(), 1u);
    EXPECT_EQ(soic->m_Texts[0]->m_Layer, AString(L"SILKSCREEN_TOP"));
    EXPECT_EQ(soic->m_Texts[0]->m_TextType, AString(L"REF_DES"));
    EXPECT_EQ(parser.m_CellPadStacks[L"SOIC8"], (std::set<AString>{L"SMD_60x24", L"SMD_60x24_B"}));

    // ".UNITS TH" ended the first cell and counts for the second; the group
    // and mount type carry over.
    ExpeditionFootprint* resistor = parser.FindFootprint(elements, L"R0603");
    ASSERT_NE(resistor, nullptr);
    EXPECT_EQ(resistor->m_PackageGroup, AString(L"IC"));
    EXPECT_EQ(resistor->m_NumberLayers, 2u);
    ASSERT_EQ(resistor->m_Pins.size(), 3u);
    EXPECT_DOUBLE_EQ(resistor->m_Pins[0]->m_X, -30 * 0.0254);
    // "1_1" was taken already; the dimension block before this pin has no
    // dimension word and costs no line.
    EXPECT_EQ(resistor->m_Pins[2]->m_Name, AString(L"1_2"));

    ExpeditionFootprint* block = parser.FindFootprint(elements, L"BLOCK");
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(block->m_Traces.size(), 1u);
    EXPECT_EQ(block->m_Traces[0]->m_LayerName, AString(L"Bottom_4"));
    EXPECT_DOUBLE_EQ(block->m_Traces[0]->m_Width, 5 * 0.0254);
    ASSERT_EQ(block->m_Vias.size(), 1u);
    EXPECT_EQ(block->m_Vias[0]->m_FromLayer, AString(L"Top_1"));
    EXPECT_EQ(parser.m_UsedPadStacks.count(L"VIA_10"), 1u);
    for (auto* e : elements)
        delete e;
}

TEST(PinReconciliation, RenamingAndOrderingAgainstTheFootprint)
{
    ExpeditionParser parser(AString(L"."));
    auto pin = [](const wchar_t* name) { return new ExpeditionPin(name, L"", L"PS", 0, 0, 0, L"", {}); };
    ExpeditionFootprint footprint(L"F", L"", L"", 0, {pin(L"1"), pin(L"1_1")}, {}, {}, {}, {});
    std::vector<ExpeditionPin*> pins{pin(L"1"), pin(L"1")};
    parser.RenameDuplicatePins(&footprint, pins);
    EXPECT_EQ(pins[0]->m_Name, AString(L"1"));
    EXPECT_EQ(pins[1]->m_Name, AString(L"1_1"));

    // Different order: the footprint's order wins, the component's list stays.
    ExpeditionFootprint ba(L"BA", L"", L"", 0, {pin(L"B"), pin(L"A")}, {}, {}, {}, {});
    std::vector<ExpeditionPin*> ab{pin(L"a"), pin(L"b")};
    std::vector<ExpeditionPin*> ordered;
    parser.OrderPins(ba.m_Pins, ab, ordered);
    ASSERT_EQ(ordered.size(), 2u);
    EXPECT_EQ(ordered[0], ab[1]);
    EXPECT_EQ(ordered[1], ab[0]);
    // A pin that finds no partner keeps the component's order, and the
    // assertion says so.
    std::vector<ExpeditionPin*> ax{pin(L"A"), pin(L"X")};
    const unsigned long before = GetFailedAssertCount_G();
    const bool logging = LogFailedAsserts_G;
    LogFailedAsserts_G = true; // counted even if an earlier test silenced the site
    parser.OrderPins(ba.m_Pins, ax, ordered);
    LogFailedAsserts_G = logging;
    EXPECT_EQ(ordered, ax);
    EXPECT_GT(GetFailedAssertCount_G(), before);

    // Three pins on a footprint of two: renaming goes as far as it can.
    std::vector<ExpeditionPin*> three{pin(L"1"), pin(L"1"), pin(L"1")};
    parser.RenameDuplicatePins(&footprint, three);
    EXPECT_EQ(three[1]->m_Name, AString(L"1_1"));
    EXPECT_EQ(three[2]->m_Name, AString(L"1"));
    for (auto* list : {&pins, &ab, &ax, &three})
        for (auto* p : *list)
            delete p;
}

namespace
{
const char* const k_Layout = R"hkp(.FILETYPE LAYOUT
.UNITS MM
.PACKAGE_CELL "SOIC8"
 ..PID 101
 ..XY (10, 20)
 ..ROTATION 90
 ..PLACEMENT_LYR MNT_LYR
 ..FACEMENT TOP
 ..PIN "2"
  ...PADSTACK "SMD_60x24"
  ...NETNAME "SIG"
 ..PIN "1"
  ...PADSTACK "SMD_60x24"
  ...NETNAME "GND"
 ..PIN "1"
  ...PADSTACK "SMD_60x24"
  ...NETNAME "gnd"
 ..PIN "1"
  ...PADSTACK "SMD_60x24_B"
  ...PIN_OPTIONS OPP_SIDE
  ...ROTATION 30
 ..TEXT "U7"
  ...XY (0, 3)
  ...TEXT_TYPE REF_DES
  ...TEXT_LYR SILKSCREEN_MNT_LYR
 ..TEXT "Value" "LM358"
.PACKAGE_CELL "R0603"
 ..PID 102
 ..ROTATION 180
 ..PLACEMENT_LYR OPP_LYR
 ..FACEMENT BOTTOM
 ..PIN "1"
  ...PADSTACK "SMD_30x35"
  ...NETNAME "GND"
 ..PIN "1_1"
  ...PADSTACK "SMD_30x35"
 ..PIN "1"
  ...PADSTACK "SMD_30x35"
  ...NETNAME "SIG"
 ..TEXT "R1"
  ...TEXT_TYPE REF_DES
.PACKAGE_CELL "R0603"
 ..XY (5, 5)
 ..ROTATION 0
 ..PLACEMENT_LYR LYR_3
 ..PIN "1"
  ...PADSTACK "SMD_30x35"
.PACKAGE_CELL "GHOST"
 ..XY (1, 1)
 ..ROTATION 0
.PACKAGE_CELL "R0603"
 ..XY (2, 2)
 ..ROTATION 0
 ..COMPONENT_OPTIONS NOT_PLACED
.BOARD_OUTLINE
 ..POLYLINE_PATH
  ...WIDTH 0.2
  ...XY (0, 0) (50, 0) (50, 40) (0, 40) (0, 0)
.CONTOUR
 ..HOLE 1
 ..CIRCLE_PATH
  ...WIDTH 0
  ...XY (5, 5)
  ...RADIUS 1.6
.TRACE
 ..ROUTE_LYR LYR_1
 ..POLYLINE_PATH
  ...WIDTH 0.2
  ...XY (0, 0) (1, 1)
.TRACE
 ..ROUTE_LYR LYR_4
 ..NETNAME "SIG"
 ..POLYARC_PATH
  ...WIDTH 0.15
  ...XYR (0, 0, 0) (5, 0, 5) (10, 0, 0)
.NET "GND"
 ..TRACE
  ...ROUTE_LYR LYR_1
  ...POLYLINE_PATH
   ....WIDTH 0.3
   ....XY (1, 1) (2, 2)
 ..VIA
  ...XY (2, 2)
  ...LAYER_PAIR LYR_1 LYR_4
  ...PADSTACK "VIA_10"
.NET "gnd"
 ..VIA
  ...XY (3, 3)
  ...LAYER_PAIR LYR_1 LYR_7
  ...PADSTACK "VIA_10"
.NET "(net0)"
 ..VIA
  ...XY (4, 4)
  ...PADSTACK "VIA_12"
.NET "(net0)"
 ..VIA
  ...XY (5, 5)
  ...PADSTACK "VIA_12"
.NET "LOST"
 ..VIA
  ...XY (6, 6)
  ...PADSTACK "VIA_14"
)hkp";
} // namespace

TEST_F(CellAndLayout, PlacedComponentsNetlistRoutingAndBoard)
{
    WriteFile("JobPrefs.hkp", k_FourLayerJobPrefs);
    WriteFile("Cell.hkp", k_Cells);
    WriteFile("Layout.hkp", k_Layout);
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    ElementList elements;
    parser.ReadJobPrefs(elements);
    parser.ReadCells(elements);
    parser.ReadLayout(elements);

    std::vector<ExpeditionComponent*> components;
    std::vector<ExpeditionNetlist*> netlists;
    std::vector<ExpeditionBoard*> boards;
    for (auto* e : elements)
    {
        if (e->AsComponent())
            components.push_back(e->AsComponent());
        if (e->AsNetlist())
            netlists.push_back(e->AsNetlist());
        if (e->AsBoard())
            boards.push_back(e->AsBoard());
    }
    ASSERT_EQ(components.size(), 3u);

    // U7: pins renamed after the footprint and put in its order; the OPP_SIDE
    // pin turned to 180 - 30.
    const ExpeditionComponent* u7 = components[0];
    EXPECT_EQ(u7->m_LayerName, AString(L"Top_1"));
    EXPECT_DOUBLE_EQ(u7->m_X, 10.0);
    EXPECT_DOUBLE_EQ(u7->m_Rotation, 90.0);
    EXPECT_FALSE(u7->m_Mirrored);
    std::vector<std::string> pinNames;
    for (const ExpeditionPin* pin : u7->m_Pins)
        pinNames.push_back(pin->m_Name.AsAnsi().str());
    EXPECT_EQ(pinNames, (std::vector<std::string>{"1", "1_1", "2", "1_2"}));
    EXPECT_DOUBLE_EQ(u7->m_Pins[3]->m_Rotation, 150.0);
    EXPECT_EQ(parser.m_OppSidePadStacks.count(L"SMD_60x24_B"), 1u);
    ASSERT_EQ(u7->m_Attributes.size(), 1u); // a one-line text is an attribute
    EXPECT_EQ(u7->m_Texts.size(), 1u);

    // R1 on the bottom stands where U7 stood, as it gives no position; the
    // placement lines are read by position, so without XY the ROTATION
    // keyword is passed over and U7's rotation stays.
    const ExpeditionComponent* r1 = components[1];
    EXPECT_DOUBLE_EQ(r1->m_Rotation, 90.0);
    // Its pins "1", "1_1", "1" against the footprint's "1", "1_1", "1_2": the
    // repeats of "1" match three footprint pins by form, the sizes disagree,
    // and renaming goes as far as it can; the order stays the file's.
    EXPECT_EQ(r1->m_Pins[0]->m_Name, AString(L"1"));
    EXPECT_EQ(r1->m_Pins[1]->m_Name, AString(L"1_1"));
    EXPECT_EQ(r1->m_Pins[2]->m_Name, AString(L"1_1"));
    EXPECT_EQ(r1->m_LayerName, AString(L"Bottom_4"));
    EXPECT_TRUE(r1->m_Mirrored);
    EXPECT_DOUBLE_EQ(r1->m_X, 10.0);
    EXPECT_DOUBLE_EQ(r1->m_Y, 20.0);
    // The inner-layer component uses the variant of its footprint.
    const ExpeditionComponent* inner = components[2];
    EXPECT_EQ(inner->m_LayerName, AString(L"PLANE_3"));
    EXPECT_EQ(inner->m_FootprintName, AString(L"R0603_Layer_3"));
    ExpeditionFootprint* variant = parser.FindFootprint(elements, L"R0603_Layer_3");
    ASSERT_NE(variant, nullptr);
    EXPECT_EQ(variant->m_Pins.size(), 3u);
    EXPECT_TRUE(variant->m_Shapes.empty());

    // The missing cell is noted; the one not placed is not.
    EXPECT_EQ(parser.m_MissingCells, (std::vector<AString>{L"GHOST"}));
    EXPECT_EQ(parser.m_UsedNames, (std::set<AString>{L"R0603", L"R0603_Layer_3", L"SOIC8"}));
    EXPECT_EQ(parser.m_UsedPadStacks.count(L"SMD_60x24"), 1u);

    // Netlist: GND and gnd are one net; each connection once.
    ASSERT_EQ(netlists.size(), 2u);
    EXPECT_EQ(netlists[0]->m_Name, AString(L"GND"));
    EXPECT_EQ(netlists[0]->m_Pins, (std::vector<AString>{L"U7-1", L"U7-1_1", L"R1-1"}));
    EXPECT_EQ(netlists[0]->m_PinCount, 3u);
    EXPECT_EQ(netlists[1]->m_Pins, (std::vector<AString>{L"U7-2", L"R1-1_1"}));

    // Board with its outline and a circular contour.
    ASSERT_EQ(boards.size(), 1u);
    ASSERT_NE(boards[0]->m_Outline, nullptr);
    ASSERT_NE(boards[0]->m_Outline->AsPath(), nullptr);
    EXPECT_EQ(boards[0]->m_Outline->AsPath()->m_Vertices.size(), 5u);
    ASSERT_EQ(boards[0]->m_Contours.size(), 1u);
    EXPECT_DOUBLE_EQ(boards[0]->m_Contours[0]->AsCircle()->m_Radius, 1.6);

    // Routing: the free trace without a net is lost; two GND blocks make one
    // net; "(net0)" blocks make a net each, all named DUMMY; the last block,
    // ended by the end of the file, is lost.
    std::vector<ExpeditionLayoutNet*> nets = parser.m_Nets;
    ASSERT_EQ(nets.size(), 4u);
    EXPECT_EQ(nets[0]->m_Name, AString(L"SIG"));
    ASSERT_EQ(nets[0]->m_Traces.size(), 1u);
    EXPECT_EQ(nets[0]->m_Traces[0]->m_PathKind, AString(L"POLYARC_PATH"));
    EXPECT_EQ(nets[0]->m_Traces[0]->m_Vertices.size(), 2u);
    EXPECT_EQ(nets[1]->m_Name, AString(L"GND"));
    EXPECT_EQ(nets[1]->m_Traces.size(), 1u);
    ASSERT_EQ(nets[1]->m_Vias.size(), 2u);
    EXPECT_EQ(nets[1]->m_Vias[1]->m_ToLayer, AString(L"Bottom_4")); // layer 7 of 4: the bottom
    EXPECT_EQ(nets[2]->m_Name, AString(L"DUMMY"));
    EXPECT_EQ(nets[3]->m_Name, AString(L"DUMMY"));
    EXPECT_EQ(parser.m_UsedPadStacks.count(L"VIA_14"), 1u); // read, though its net was lost
    for (auto* e : elements)
        delete e;
}

namespace
{
// The items of a block as text, one per entry; nested blocks as their name.
std::vector<std::string> Items(const io::CBlock& block)
{
    std::vector<std::string> texts;
    for (auto it = block.begin(); it != block.end(); ++it)
    {
        if (block.Item(it)->IsBlock())
        {
            texts.push_back("[" + block.Item(it)->Name().AsAnsi().str() + "]");
            continue;
        }
        io::CString_ostream out;
        out.SetPrecision(10);
        block.Item(it)->write(out);
        texts.push_back(out.str());
    }
    return texts;
}
} // namespace

TEST_F(CellAndLayout, ComponentsNetlistAndCopperInTheFile)
{
    WriteMinimalJob();
    WriteFile("JobPrefs.hkp", k_FourLayerJobPrefs);
    WriteFile("Cell.hkp", k_Cells);
    WriteFile("Layout.hkp", k_Layout);
    ASSERT_EQ(Translate(), 0);
    io::CBlockPtr root = OutputTree();

    const io::CBlock* components = ChildBlock(*root, L"Components");
    ASSERT_NE(components, nullptr);
    EXPECT_EQ(ChildNames(*components),
              (std::vector<std::string>{"ExpeditionBoard", "Component0", "Component1", "Component2"}));
    EXPECT_EQ(Items(*ChildBlock(*components, L"ExpeditionBoard")),
              (std::vector<std::string>{"CompDef('', 'ExpeditionBoard', '', 'U', 1, 'ExpeditionBoard')"}));
    EXPECT_EQ(Items(*ChildBlock(*components, L"Component1")),
              (std::vector<std::string>{"CompDef('', 'R0603', '', 'R', 1)", "Terminal('1', '1', 'A', false)",
                                        "Terminal('1_1', '1_1', 'A', false)",
                                        "Terminal('1_1', '1_1', 'A', false)"}));
    // The inner-layer component has no reference designator: prefix U.
    EXPECT_EQ(Items(*ChildBlock(*components, L"Component2"))[0], "CompDef('', 'R0603_Layer_3', '', 'U', 1)");

    const io::CBlock* footprints = ChildBlock(*root, L"Footprints");
    ASSERT_NE(footprints, nullptr);
    EXPECT_EQ(ChildNames(*footprints), (std::vector<std::string>{"SOIC8", "R0603", "R0603_Layer_3"}));
    const io::CBlock* firstPin = Descend(*footprints, {L"SOIC8", L"FpPins", L"FpPindef"});
    ASSERT_NE(firstPin, nullptr);
    EXPECT_EQ(Items(*firstPin),
              (std::vector<std::string>{"FpPin('1', -2.7, 1.905, 'SMD_60x24', 0)", "[Properties]"}));

    // Pins by reference designator and index in the component's pin order;
    // the component without one is U0 here and in the placement.
    const io::CBlock* netlist = Descend(*root, {L"LayoutData", L"LayoutCell", L"Netlist"});
    ASSERT_NE(netlist, nullptr);
    std::vector<std::string> nets;
    for (auto it = netlist->begin(); it != netlist->end(); ++it)
    {
        const auto* block = static_cast<const io::CBlock*>(netlist->Item(it).Item());
        for (const std::string& item : Items(*block))
            nets.push_back(item);
    }
    EXPECT_EQ(nets,
              (std::vector<std::string>{"U7('Component0')", "[Properties]", "R1('Component1')",
                                        "[Properties]", "U0('Component2')", "[Properties]", "GND('Signal')",
                                        "NetPin='U7.0'", "NetPin='U7.1'", "NetPin='R1.0'", "SIG('Signal')",
                                        "NetPin='U7.2'", "NetPin='R1.1'", "NetPin='R1.2'"}));
    // R1 has two pins "1_1", and a net names them: all namesakes are written,
    // and the one warning of the program comes once, in silent mode too.
    EXPECT_NE(
        Errors().find("Duplicate Pins Warning: Some of the components contain multiple pins with the same "
                      "name\nYou may want to set a unique name for each pin in these components\nand "
                      "re-translate the design.\n"),
        std::string::npos)
        << Errors();

    const io::CBlock* placements =
        Descend(*root, {L"LayoutData", L"LayoutCell", L"Layout", L"LayoutComponents"});
    ASSERT_NE(placements, nullptr);
    std::vector<std::string> placed;
    for (auto it = placements->begin(); it != placements->end(); ++it)
        placed.push_back(Items(*static_cast<const io::CBlock*>(placements->Item(it).Item()))[0]);
    // R1 on the bottom: rotation 180 - 90, position untouched. The inner
    // component states no side and keeps R1's: mirrored, 180 - 0.
    EXPECT_EQ(placed, (std::vector<std::string>{
                          "LayoutCompInst('Top_1', 'SOIC8', 'U7', 10, 20, 90, false)",
                          "LayoutCompInst('Bottom_4', 'R0603', 'R1', 10, 20, 90, true)",
                          "LayoutCompInst('PLANE_3', 'R0603_Layer_3', 'U0', 5, 5, 180, true)"}));

    // Copper: the arc of the free trace behind its vertex, ids running on
    // into the board outline and its round cut-out.
    const io::CBlock* layoutNets = Descend(*root, {L"LayoutData", L"LayoutCell", L"Layout", L"LayoutNets"});
    ASSERT_NE(layoutNets, nullptr);
    std::vector<std::string> copper;
    for (auto it = layoutNets->begin(); it != layoutNets->end(); ++it)
        for (const std::string& item : Items(*static_cast<const io::CBlock*>(layoutNets->Item(it).Item())))
            copper.push_back(item);
    const std::string w15 = ", 0.15, 0.15, 'Round', 'Radiallymitered', 0.15)";
    const std::string w3 = ", 0.3, 0.3, 'Round', 'Radiallymitered', 0.3)";
    EXPECT_EQ(copper,
              (std::vector<std::string>{
                  "Name='SIG'",
                  "Graphics('Bottom_4', Path(1, vertex(0, 0" + w15 + ", Arc(-5), vertex(10, 0" + w15 + "))",
                  "Name='GND'",
                  "Graphics('Top_1', Path(2, vertex(1, 1" + w3 + ", vertex(2, 2" + w3 + "))",
                  "Via(3, 'Top_1', 'Bottom_4', 2, 2, 'VIA_10', 0)",
                  "Via(4, 'Top_1', 'Bottom_4', 3, 3, 'VIA_10', 0)",
                  "Name='DUMMY'",
                  "Via(5, '', '', 4, 4, 'VIA_12', 0)",
                  "Name='DUMMY'",
                  "Via(6, '', '', 5, 5, 'VIA_12', 0)",
              }));
    const io::CBlock* dimensions =
        Descend(*root, {L"LayoutData", L"Design", L"TopLayout", L"PhysicalDimensions"});
    ASSERT_NE(dimensions, nullptr);
    EXPECT_EQ(Items(*dimensions),
              (std::vector<std::string>{
                  "Polygon(7, 0.2, vertex(0, 0), vertex(50, 0), vertex(50, 40), vertex(0, 40), vertex(0, 0))",
                  "Cut('SIGNAL_1', 'SIGNAL_4', Circle(8, 0, 5, 5, 3.2))"}));
}

// The properties of a component instance: its part number, the type of that
// exact number, and the values of every part whose number matches without
// regard to case, in the code-unit order of the part table; a part without
// values falls back to the component's own Value text.
TEST_F(CellAndLayout, PartValuesOfEveryNumberMatchingWithoutCase)
{
    WriteMinimalJob();
    WriteFile("JobPrefs.hkp", k_FourLayerJobPrefs);
    WriteFile("Cell.hkp", k_Cells);
    std::string layout = k_Layout;
    const std::string u7Value = "..TEXT \"Value\" \"LM358\"\n";
    const std::string r1RefDes = "..TEXT \"R1\"\n  ...TEXT_TYPE REF_DES\n";
    ASSERT_NE(layout.find(u7Value), std::string::npos);
    ASSERT_NE(layout.find(r1RefDes), std::string::npos);
    layout.replace(layout.find(u7Value), u7Value.size(),
                   u7Value + "..TEXT \"cap-1u\"\n  ...TEXT_TYPE PARTNO\n");
    layout.replace(layout.find(r1RefDes), r1RefDes.size(),
                   r1RefDes + "..TEXT \"CAP-1U\"\n  ...TEXT_TYPE PARTNO\n");
    WriteFile("Layout.hkp", layout);
    WriteFile("PDB.hkp", ".FILETYPE PARTS_DB\n"
                         ".Part_Number\n ..Number \"Cap-1u\"\n ..RefPrefix \"C\"\n ..Prop \"Value\"=\"2u\"\n"
                         " ..Prop \"Parasitic_Resistance\"=\"0.01\"\n"
                         ".Part_Number\n ..Number \"CAP-1U\"\n ..Prop \"Type\"=\"Capacitor\"\n"
                         " ..Prop \"Value\"=\"1u\"\n");
    ASSERT_EQ(Translate(), 0);
    io::CBlockPtr root = OutputTree();
    const io::CBlock* netlist = Descend(*root, {L"LayoutData", L"LayoutCell", L"Netlist"});
    ASSERT_NE(netlist, nullptr);
    std::vector<std::vector<std::string>> properties;
    for (auto it = netlist->begin(); it != netlist->end(); ++it)
        if (netlist->Item(it)->Name() == L"Compinst")
        {
            const io::CBlock* block =
                ChildBlock(*static_cast<const io::CBlock*>(netlist->Item(it).Item()), L"Properties");
            ASSERT_NE(block, nullptr);
            properties.push_back(Items(*block));
        }

    // "CAP-1U" stands before "Cap-1u" in the table; the RefPrefix carries
    // over to the second part. An absent parasitic is one NUL character.
    const std::string nul(1, '\0');
    const std::vector<std::string> bothParts{"TextProp('Value', '1uF')",
                                             "TextProp('Parasitic_Capacitance', '1uF')",
                                             "TextProp('Parasitic_Resistance', '" + nul + "')",
                                             "TextProp('Parasitic_Inductance', '" + nul + "')",
                                             "TextProp('Value', '2uF')",
                                             "TextProp('Parasitic_Capacitance', '2uF')",
                                             "TextProp('Parasitic_Resistance', '0.01')",
                                             "TextProp('Parasitic_Inductance', '" + nul + "')"};
    std::vector<std::string> u7{"TextProp('PART_NUMBER', 'cap-1u')"};
    u7.insert(u7.end(), bothParts.begin(), bothParts.end());
    std::vector<std::string> r1{"TextProp('PART_NUMBER', 'CAP-1U')", "TextProp('Type', 'Capacitor')"};
    r1.insert(r1.end(), bothParts.begin(), bothParts.end());
    ASSERT_EQ(properties.size(), 3u);
    EXPECT_EQ(properties[0], u7); // its own Value text is not written
    EXPECT_EQ(properties[1], r1);
    EXPECT_TRUE(properties[2].empty());

    // Without part values the component's own Value text is written.
    WriteFile("PDB.hkp", ".FILETYPE PARTS_DB\n");
    ASSERT_EQ(Translate(), 0);
    root = OutputTree();
    netlist = Descend(*root, {L"LayoutData", L"LayoutCell", L"Netlist"});
    ASSERT_NE(netlist, nullptr);
    const io::CBlock* first = ChildBlock(*netlist, L"Compinst");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(ChildBlock(*first, L"Properties"), nullptr);
    EXPECT_EQ(Items(*ChildBlock(*first, L"Properties")),
              (std::vector<std::string>{"TextProp('PART_NUMBER', 'cap-1u')", "TextProp('Value', 'LM358')"}));
}
