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
    parser.OrderPins(ba.m_Pins, ax, ordered);
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
