// Hostile jobs: counts, numbers and names that no sane tool writes, read
// without undefined behaviour, runaway output or lost memory.
#include "JobFixture.h"

#include "translators/ExpeditionToTnf/ExpeditionParser.h"

namespace
{
const char* const k_TwoLayerStackup = ".LAYER_STACKUP_SECTION\n"
                                      " ..SIGNAL_LAYER 1\n  ...CONDUCTIVE_LAYER_NUMBER 1\n"
                                      " ..SIGNAL_LAYER 2\n  ...CONDUCTIVE_LAYER_NUMBER 2\n"
                                      " ..ALLOW_BURIED_RESISTORS NO\n";

const char* const k_ViaPadstack = ".FILETYPE PADSTACK_LIBRARY\n.UNITS MM\n"
                                  ".HOLE \"DRILL\"\n ..ROUND\n  ...DIAMETER 0.3\n"
                                  ".PAD \"P\"\n ..ROUND\n  ...DIAMETER 0.6\n"
                                  ".PADSTACK \"VIA\"\n ..PADSTACK_TYPE VIA\n ..TOP_PAD \"P\"\n"
                                  " ..BOTTOM_PAD \"P\"\n ..INTERNAL_PAD \"P\"\n ..HOLE_NAME \"DRILL\"\n";

const char* const k_OneVia = ".FILETYPE LAYOUT\n.UNITS MM\n.NET \"N\"\n ..VIA\n  ...XY (2, 2)\n"
                             "  ...PADSTACK \"VIA\"\n";

std::vector<std::string> ItemNames(const io::CBlock& block)
{
    std::vector<std::string> names;
    for (auto it = block.begin(); it != block.end(); ++it)
        names.push_back(block.Item(it)->Name().AsAnsi().str());
    return names;
}

// Files left in a folder beside the expected ones: a temporary file that an
// interrupted or failed run did not clear away.
std::vector<std::string> StrayFiles(const fs::path& folder, const std::vector<std::string>& expected)
{
    std::vector<std::string> stray;
    for (const auto& entry : fs::directory_iterator(folder))
    {
        const std::string name = entry.path().filename().string();
        if (std::find(expected.begin(), expected.end(), name) == expected.end())
            stray.push_back(name);
    }
    return stray;
}
} // namespace

using HostileInput = JobFixture;

// A layer count far beyond the stack-up, or below nothing, would make one
// padstack item per layer up to it: gigabytes from a few bytes, or an
// overflow. It is held to the two layers the stack-up has.
TEST_F(HostileInput, LayerCountHeldToTheStackup)
{
    for (const char* count : {"-2147483648", "2147483647", "1000000", "3", "-1"})
    {
        SCOPED_TRACE(count);
        WriteMinimalJob();
        WriteFile("JobPrefs.hkp",
                  std::string("header\n.PHYSICAL_LAYERS ") + count + "\n" + k_TwoLayerStackup);
        WriteFile("Padstack.hkp", k_ViaPadstack);
        WriteFile("Layout.hkp", k_OneVia);
        ASSERT_EQ(Translate(), 0);
        ASSERT_TRUE(fs::exists(OutputPath()));
        EXPECT_EQ(StrayFiles(OutputPath().parent_path(), {"job", "out.tnf", "stderr.txt"}),
                  std::vector<std::string>());
        const io::CBlockPtr root = OutputTree();
        const io::CBlock* via = Descend(*root, {L"PadStacks", L"VIA"});
        ASSERT_NE(via, nullptr);
        EXPECT_EQ(ItemNames(*via), (std::vector<std::string>{"Hole", "Top", "Bottom"}));
        fs::remove(OutputPath());
    }
}

// nan, inf and numbers beyond a double are no numbers: the target keeps its
// value, as for any other token that isn't one. Nor is 1e308, far beyond
// any design; 1e15 is the largest number.
TEST(HostileNumbers, NonFiniteAndOutOfRangeTokensAreNoNumbers)
{
    io::CToken_istream in(std::string("nan inf -inf INFINITY 1e999 -1e999 1e308 1e15 99999999999999999999 "
                                      "99999999999999999999 2147483648 NaN(0x1) 7"));
    for (int i = 0; i < 7; ++i)
    {
        double value = 1.5;
        in >> value;
        EXPECT_EQ(value, 1.5) << "token " << i;
    }
    double big = 0.0;
    in >> big;
    EXPECT_EQ(big, 1e15);
    double twenty = 0.0;
    in >> twenty;
    EXPECT_EQ(twenty, 0.0); // 1e20
    int whole = 3;
    in >> whole;
    EXPECT_EQ(whole, 3); // beyond an int
    in >> whole;
    EXPECT_EQ(whole, 3);
    double glued = 2.0;
    in >> glued;
    EXPECT_EQ(glued, 2.0);

    // A coordinate glued to its bracket goes through another conversion.
    io::CToken_istream xy(std::string("nan, 4) inf, 5"));
    double x = 1.0, y = 1.0;
    ExpeditionParser::ReadXY(xy, x, y);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 4.0);
}

// A second record of a default connection replaces the first, which is freed
// (the sanitizer build finds a leak otherwise).
TEST_F(HostileInput, SecondConnectionRecordReplacesTheFirst)
{
    WriteFile("JobPrefs.hkp", "header\n.DEFAULT_VIA_CONNECTIONS\n ..TIE_LEG_WIDTH 10\n"
                              " ..TIE_LEG_NUMBER_OPTION 4\n ..TIE_LEG_ROTATION_OPTION 45\n"
                              ".DEFAULT_VIA_CONNECTIONS\n ..TIE_LEG_WIDTH 12\n"
                              " ..TIE_LEG_NUMBER_OPTION 2\n ..TIE_LEG_ROTATION_OPTION 0\n");
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    ElementList elements;
    parser.ReadJobPrefs(elements);
    ASSERT_NE(parser.m_DefaultViaConnection, nullptr);
    EXPECT_EQ(parser.m_DefaultViaConnection->m_TieLegWidth, 12.0);
    EXPECT_EQ(parser.m_DefaultViaConnection->m_TieLegNumber, AString(L"2"));
    for (auto* e : elements)
        delete e;
}

// Thousands of pins of one name: the cell's names are made unique, and a
// placed component that repeats the name takes them in order, in near-linear
// time. The names are those that a search from 1 gives.
TEST_F(HostileInput, ThousandsOfPinsOfOneName)
{
    constexpr int k_Pins = 5000;
    std::string cell = ".FILETYPE CELL_LIBRARY\n.UNITS MM\n.PACKAGE_CELL \"MANY\"\n";
    for (int i = 0; i < k_Pins; ++i)
        cell += " ..PIN \"1\"\n  ...XY (0, 0)\n  ...PADSTACK \"PS\"\n";
    // Taken already by the renaming above, and a name of another case.
    cell += " ..PIN \"1_7\"\n  ...XY (0, 0)\n  ...PADSTACK \"PS\"\n";
    cell += " ..PIN \"a\"\n  ...XY (0, 0)\n  ...PADSTACK \"PS\"\n";
    cell += " ..PIN \"A\"\n  ...XY (0, 0)\n  ...PADSTACK \"PS\"\n";
    WriteFile("Cell.hkp", cell);
    ExpeditionParser parser(AString(JobDir().string().c_str()));
    ElementList elements;
    parser.ReadCells(elements);
    ExpeditionFootprint* many = parser.FindFootprint(elements, L"MANY");
    ASSERT_NE(many, nullptr);
    ASSERT_EQ(many->m_Pins.size(), static_cast<size_t>(k_Pins + 3));
    EXPECT_EQ(many->m_Pins[0]->m_Name, AString(L"1"));
    EXPECT_EQ(many->m_Pins[1]->m_Name, AString(L"1_1"));
    EXPECT_EQ(many->m_Pins[k_Pins - 1]->m_Name, AString(L"1_4999"));
    EXPECT_EQ(many->m_Pins[k_Pins]->m_Name, AString(L"1_7_1"));
    EXPECT_EQ(many->m_Pins[k_Pins + 1]->m_Name, AString(L"a"));
    EXPECT_EQ(many->m_Pins[k_Pins + 2]->m_Name, AString(L"A_1"));

    // The component lists "1" for each of the first pins, then the others.
    auto pin = [](const AString& name) { return new ExpeditionPin(name, L"", L"PS", 0, 0, 0, L"", {}); };
    std::vector<ExpeditionPin*> pins;
    for (int i = 0; i < k_Pins; ++i)
        pins.push_back(pin(L"1"));
    pins.push_back(pin(L"1_7_1"));
    pins.push_back(pin(L"a"));
    pins.push_back(pin(L"A_1"));
    parser.RenameDuplicatePins(many, pins);
    for (size_t i = 0; i < many->m_Pins.size(); ++i)
        ASSERT_EQ(pins[i]->m_Name, many->m_Pins[i]->m_Name) << "pin " << i;
    std::vector<ExpeditionPin*> reversed(pins.rbegin(), pins.rend());
    std::vector<ExpeditionPin*> ordered;
    parser.OrderPins(many->m_Pins, reversed, ordered);
    EXPECT_EQ(ordered, pins);
    for (auto* p : pins)
        delete p;
    for (auto* e : elements)
        delete e;
}

// The match of repeated names is by form: the name followed by "_*", with
// regard to case, and with a "*" in the name a wildcard of its own; a name
// that occurs once takes its footprint pin's spelling as well.
TEST(HostilePinNames, RepeatsMatchByFormAsTheWalkDid)
{
    ExpeditionParser parser(AString(L"."));
    auto pin = [](const wchar_t* name) { return new ExpeditionPin(name, L"", L"PS", 0, 0, 0, L"", {}); };
    ExpeditionFootprint footprint(L"F", L"", L"", 0,
                                  {pin(L"1"), pin(L"x*"), pin(L"1_1"), pin(L"xy_2"), pin(L"1_A"), pin(L"B")},
                                  {}, {}, {}, {});
    std::vector<ExpeditionPin*> pins{pin(L"1"), pin(L"1"), pin(L"x*"), pin(L"1"), pin(L"X*"), pin(L"b")};
    parser.RenameDuplicatePins(&footprint, pins);
    std::vector<std::string> names;
    for (const ExpeditionPin* p : pins)
        names.push_back(p->m_Name.AsAnsi().str());
    // "1" takes 1, 1_1, 1_A; "x*" (with "X*") takes x* and xy_2, which
    // matches the pattern "x*_*"; "b" takes "B".
    EXPECT_EQ(names, (std::vector<std::string>{"1", "1_1", "x*", "1_A", "xy_2", "B"}));
    for (auto* p : pins)
        delete p;
}
