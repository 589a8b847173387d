// NetClass.hkp clearances and PDB.hkp part values, read into the parser's
// tables.
#include "JobFixture.h"

#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include <cstring>

using RulesAndParts = JobFixture;

namespace
{
const char* const k_NetClass = R"hkp(.FILETYPE NET_CLASS
.UNITS TH
.NET_CLASS_SCHEME "Backplane"
 ..CLEARANCE_RULE_SET "Ignored"
  ...SUBRULE
   ....LAYER_NUM 1
   ....TRACE_TO_TRACE 99
.NET_CLASS_SCHEME "(master)"
 ..CLEARANCE_RULE_SET "Default"
  ...SUBRULE
   ....LAYER_NUM 1
   ....TRACE_TO_TRACE 5
   ....PLANE_TO_TRACE 10
   ....PLANE_TO_PAD 20
   ....PAD_TO_PAD 6
   ....MASK_TO_PAD 3
  ...SUBRULE
   ....LAYER_NUM 2
   ....PLANE_TO_PAD 7
   ....PLANE_TO_TRACE 8
   ....PLANE_TO_PLANE 12
  ...SUBRULE
   ....LAYER_NUM 9
 ..CLEARANCE_RULE_SET "Second"
  ...SUBRULE
   ....LAYER_NUM 3
   ....TRACE_TO_TRACE 40
)hkp";

const char* const k_Pdb = R"hkp(.FILETYPE PARTS_DB
.Part_Number
 ..Number "RES-0603-100"
 ..Name "100R 0603"
 ..RefPrefix "R"
 ..TopCell "RES0603"
 ..Prop "Value"="100"
 ..Prop "Value"="200"
 ..Prop "Type"="Resistor"
.Part_Number
 ..Number "RES-0603-1K"
 ..Prop "Value"="1k"
 ..Prop "Resistance"="1.2k"
.Part_Number
 ..Number "CAP-0402-1U"
 ..RefPrefix "C"
 ..Prop "Value"="1uF"
 ..Prop "ParaSitic_Inductance"="0.5nH"
.Part_Number
 ..Number "IC-SOIC8"
 ..Name "Opamp"
 ..RefPrefix "U"
 ..Prop "Value"="LM358"
.Part_Number
 ..Number "X-ODD"
 ..RefPrefix "X"
 ..Prop "Type"="Capacitance"
 ..Prop "Value"="2p"
.Part_Number
 ..Number "IND-0805"
 ..RefPrefix "L"
 ..Prop "Type"="Inductor"
 ..Prop "Value"="10u"
 ..Prop "Parasitic_Resistance"="0.1"
)hkp";
} // namespace

TEST_F(RulesAndParts, FirstRuleSetOfTheMasterSchemeWithInheritedValues)
{
    WriteFile("NetClass.hkp", k_NetClass);
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    parser.m_LayerNames[1] = L"Top_1";
    parser.m_LayerNames[2] = L"GND_2";
    parser.ReadNetClasses();

    ASSERT_EQ(parser.m_ClearanceRules.size(), 3u); // the second rule set and other schemes give none
    const ExpeditionClearanceRule* top = parser.m_ClearanceRules[0];
    EXPECT_EQ(top->m_LayerName, AString(L"Top_1"));
    EXPECT_DOUBLE_EQ(top->m_TraceToTrace, 5 * 0.0254);
    EXPECT_DOUBLE_EQ(top->m_PlaneToPad, 20 * 0.0254); // the later of the two words
    EXPECT_DOUBLE_EQ(top->m_PadToPad, 6 * 0.0254);
    EXPECT_EQ(top->m_SpareClearance, 0.0);
    const ExpeditionClearanceRule* gnd = parser.m_ClearanceRules[1];
    EXPECT_DOUBLE_EQ(gnd->m_PlaneToPad, 8 * 0.0254);
    EXPECT_DOUBLE_EQ(gnd->m_TraceToTrace, 5 * 0.0254);            // inherited from another layer's subrule
    EXPECT_TRUE(parser.m_ClearanceRules[2]->m_LayerName.empty()); // unknown layer number 9
    EXPECT_EQ(parser.m_LayerNames.count(9), 1u);                  // ... which the look-up inserted

    EXPECT_DOUBLE_EQ(parser.GetPlaneClearance(L"gnd_2"), 12 * 0.0254);
    EXPECT_DOUBLE_EQ(parser.GetPlaneClearance(L"Top_1"), 5 * 0.0254); // no plane-to-plane: trace-to-trace
    EXPECT_DOUBLE_EQ(parser.GetPadClearance(L"Top_1"), 6 * 0.0254);
    EXPECT_EQ(parser.GetPlaneClearance(L"Bottom"), 0.09999999999999999);
    std::uint64_t bits = 0;
    const double fallback = parser.GetPadClearance(L"Bottom");
    std::memcpy(&bits, &fallback, sizeof bits);
    EXPECT_EQ(bits, 0x3FB9999999999999ULL);
}

TEST_F(RulesAndParts, RuleOfAllZerosAndAbsentFileGiveTheDefault)
{
    WriteFile("NetClass.hkp", ".NET_CLASS_SCHEME \"(Master)\"\n ..CLEARANCE_RULE_SET \"A\"\n  ...SUBRULE\n"
                              "   ....LAYER_NUM 1\n");
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    parser.m_LayerNames[1] = L"Top_1";
    parser.ReadNetClasses();
    ASSERT_EQ(parser.m_ClearanceRules.size(), 1u);
    EXPECT_EQ(parser.GetPlaneClearance(L"Top_1"), ExpeditionParser::k_DefaultClearance);

    fs::remove(JobDir() / "NetClass.hkp");
    ExpeditionParser none(AString(JobDir().string().c_str()));
    none.ReadNetClasses();
    EXPECT_TRUE(none.m_ClearanceRules.empty());
}

TEST_F(RulesAndParts, PartValuesUnitsAndParasitics)
{
    WriteFile("PDB.hkp", k_Pdb);
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    parser.ReadPartDatabase();

    const AString absent(1, L'\0');
    auto values = [&](const wchar_t* part) { return parser.m_PartValues.at(AString(part)); };

    // The first value gets its unit; the second is dropped.
    EXPECT_EQ(values(L"RES-0603-100")->m_Value, AString(L"100Ohms"));
    EXPECT_EQ(values(L"RES-0603-100")->m_ParasiticCapacitance, absent);
    EXPECT_EQ(values(L"RES-0603-100")->m_ParasiticResistance, absent);
    EXPECT_EQ(parser.m_PartNames[L"RES-0603-100"], AString(L"100R 0603"));
    EXPECT_EQ(parser.m_PartTypes[L"RES-0603-100"], AString(L"Resistor"));
    // RefPrefix carried over from the part before; Resistance replaces the value, without unit.
    EXPECT_EQ(values(L"RES-0603-1K")->m_Value, AString(L"1.2k"));
    // The unit is added without looking, and the capacitance is copied to its field.
    EXPECT_EQ(values(L"CAP-0402-1U")->m_Value, AString(L"1uFF"));
    EXPECT_EQ(values(L"CAP-0402-1U")->m_ParasiticCapacitance, AString(L"1uFF"));
    EXPECT_EQ(values(L"CAP-0402-1U")->m_ParasiticInductance, AString(L"0.5nH"));
    EXPECT_EQ(values(L"CAP-0402-1U")->m_ParasiticResistance.size(), 1u);
    // Not a passive prefix: a name but no values, whatever the type says.
    EXPECT_EQ(parser.m_PartValues.count(L"IC-SOIC8"), 0u);
    EXPECT_EQ(parser.m_PartNames[L"IC-SOIC8"], AString(L"Opamp"));
    EXPECT_EQ(parser.m_PartValues.count(L"X-ODD"), 0u);
    // The last part is closed at the end of the file.
    ASSERT_EQ(parser.m_PartValues.count(L"IND-0805"), 1u);
    EXPECT_EQ(values(L"IND-0805")->m_Value, AString(L"10uH"));
    EXPECT_EQ(values(L"IND-0805")->m_ParasiticResistance, AString(L"0.1"));
}
