// The PadShapes and PadStacks blocks, written from a model built by hand; the
// expected texts are worked out from the rules of the file, item by item.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include "core/lib/vellum/streamio/TokenStream.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
std::string Text(const io::CBlock& block)
{
    io::CString_ostream out;
    out.SetPrecision(10);
    out << block;
    return out.str();
}

struct Model
{
    ElementList m_Elements;
    ~Model()
    {
        for (auto* e : m_Elements)
            delete e;
    }
    ExpeditionPad* Pad(const wchar_t* name, const wchar_t* type, const wchar_t* shapeName,
                       ExpeditionShapes* shape, double offsetX = 0.0, double thermalClearance = 0.0)
    {
        auto* pad = new ExpeditionPad(name, type, shapeName, shape, 0.0, thermalClearance, offsetX, 0.0);
        m_Elements.push_back(pad);
        return pad;
    }
    void PadStack(const wchar_t* name, const wchar_t* type, const wchar_t* top, const wchar_t* internal,
                  const wchar_t* bottom, const wchar_t* clearance, const wchar_t* thermal,
                  const wchar_t* hole, std::map<int, AString> layerPads = {}, double offsetX = 0.0)
    {
        m_Elements.push_back(new ExpeditionPadStack(name, type, L"", L"", top, internal, bottom, L"", L"",
                                                    clearance, thermal, hole, layerPads, offsetX, 0.0));
    }
};
} // namespace

TEST(PadWriters, PadShapesOfEveryForm)
{
    Model model;
    model.Pad(L"RND", L"Circle", L"Circle", new ExpeditionCircle(L"", 0, 0, 0.5, 0));
    model.Pad(L"SQ", L"SQUARE", L"SQUARE", new ExpeditionRectangle(L"", -0.5, -0.5, 0.5, 0.5, 0));
    model.Pad(L"OBL", L"OBLONG", L"OBLONG", new ExpeditionRectangle(L"", -2, -1, 2, 1, 0));
    model.Pad(L"FNG", L"BULLET", L"BULLET", new ExpeditionRectangle(L"", -2, -1, 2, 1, 0));
    model.Pad(L"ZERO", L"RECTANGLE", L"RECTANGLE", new ExpeditionRectangle(L"", 0, 0, 0, 0, 0));
    model.Pad(L"TRI", L"POLYGON", L"POLYGON",
              new ExpeditionPolygon(L"",
                                    {new ExpeditionVertex(0, 0, 0), new ExpeditionVertex(2, 0, -0.5),
                                     new ExpeditionVertex(1, 1, 0)},
                                    0));
    model.Pad(L"LINE", L"POLYGON", L"POLYGON",
              new ExpeditionPolygon(L"", {new ExpeditionVertex(0, 0, 0), new ExpeditionVertex(1, 0, 0)}, 0));
    model.Pad(L"THRM", L"Thermal", L"Circle", new ExpeditionCircle(L"", 0, 0, 1, 0));
    model.Pad(L"UNUSED", L"Circle", L"Circle", new ExpeditionCircle(L"", 0, 0, 1, 0));
    ExpeditionPad* loop =
        model.Pad(L"CU_UNCONN_1", L"CUSTOM", L"Circle", new ExpeditionCircle(L"", 3, 0, 0.25, 0));
    model.Pad(L"CU", L"CUSTOM", L"Rectangle", new ExpeditionRectangle(L"", -1, -1, 1, 1, 0));

    ExpeditionToTnf writer;
    writer.m_UsedPads = {L"RND", L"SQ", L"OBL", L"FNG", L"ZERO", L"TRI", L"LINE", L"THRM", L"CU"};
    writer.m_PadLoops[L"CU"] = {loop};
    EXPECT_EQ(Text(*writer.WritePadShapes(model.m_Elements)),
              "$begin 'PadShapes'\n"
              "\tRND(Circle(1))\n"
              "\tSQ(Rectangle(1, 1))\n"
              "\tOBL(Obround(4, 2, 1))\n"
              "\tFNG(Bullet(4, 2, 1))\n"
              "\tZERO(Rectangle(0, 0))\n"
              "\tTRI(Polygon(vertex(0, 0), vertex(2, 0), Arc(-0.5), vertex(1, 1)))\n"
              "\tLINE()\n"
              "\tCU(Rectangle(2, 2))\n"
              "\tCU_UNCONN_1(Circle(0.5))\n"
              "\t'NULLPAD'(Circle(0))\n"
              "$end 'PadShapes'\n");
}

TEST(PadWriters, PadStacksByTypeWithOffsetsPlanesAndVariants)
{
    Model model;
    model.Pad(L"P1", L"Circle", L"Circle", new ExpeditionCircle(L"", 0, 0, 0.5, 0), 0.1);
    model.Pad(L"P2", L"Circle", L"Circle", new ExpeditionCircle(L"", 0, 0, 0.4, 0), -0.2);
    model.Pad(L"C1", L"Circle", L"Circle", new ExpeditionCircle(L"", 0, 0, 0.7, 0));
    model.Pad(L"T1", L"Thermal", L"Circle", new ExpeditionCircle(L"", 0, 0, 0.7, 0), 0.0, 0.3);
    model.Pad(L"SMD", L"RECTANGLE", L"RECTANGLE", new ExpeditionRectangle(L"", -1, -1, 1, 1, 0));
    ExpeditionPad* loop =
        model.Pad(L"CU_UNCONN_1", L"CUSTOM", L"Circle", new ExpeditionCircle(L"", 3, 0, 1, 0));
    model.Pad(L"CU", L"CUSTOM", L"Circle", new ExpeditionCircle(L"", 0, 0, 1, 0));
    model.m_Elements.push_back(new ExpeditionPadHole(L"H1", L"Circle", 0.8, 0.0, 0, 0, {}, L"", L""));
    model.m_Elements.push_back(new ExpeditionPadHole(L"SLOT", L"Circle", 0.6, 1.2, 0, 0, {}, L"", L""));
    model.PadStack(L"THRU", L"PIN_THROUGH", L"P1", L"P2", L"", L"C1", L"T1", L"H1", {}, 0.05);
    model.PadStack(L"VIA8", L"VIA", L"P2", L"P2", L"P2", L"", L"", L"SLOT", {{3, L"P1"}});
    model.PadStack(L"SMD1", L"PIN_SMD", L"SMD", L"", L"", L"", L"", L"");
    model.PadStack(L"CUST", L"PIN_SMD", L"CU", L"", L"", L"", L"", L"");
    model.PadStack(L"ODD", L"EDGE_CONNECTOR", L"P1", L"", L"", L"", L"", L"");
    model.PadStack(L"NOTUSED", L"PIN_SMD", L"P1", L"", L"", L"", L"", L"");

    ExpeditionToTnf writer;
    writer.m_PhysicalLayers = 4;
    writer.m_LayerNames = {{1, L"Top_1"}, {2, L"PLANE_2"}, {3, L"SIGNAL_3"}, {4, L"Bottom_4"}};
    writer.m_UsedPadStacks = {L"THRU", L"VIA8", L"SMD1", L"CUST", L"ODD"};
    writer.m_OppSidePadStacks = {L"SMD1", L"THRU"};
    writer.m_PadLoops[L"CU"] = {loop};
    // THRU sits at x 0.05; a pad moved by a moves it by -a. The thermal pad
    // counts on the plane layer only; the clearance's fifth argument is added
    // after the walk. VIA8's layer 3 takes its pad from the per-layer table.
    EXPECT_EQ(Text(*writer.WritePadStacks(model.m_Elements)),
              "$begin 'PadStacks'\n"
              "\t$begin 'THRU'\n"
              "\t\tHole(0.8)\n"
              "\t\tTop('P1', -0.05, 0, 0, Thermal(), NonConnect('C1', 0, 0, 0, 0))\n"
              "\t\tSignal('P2', 0.25, 0, 0, Thermal(), NonConnect('C1', 0, 0, 0, 0.3))\n"
              "\t\tSignal('P2', 0.25, 0, 0, Thermal(), NonConnect('C1', 0, 0, 0, 0))\n"
              "\t\tBottom('NULLPAD', 0.05, 0, 0, Thermal(), NonConnect('C1', 0, 0, 0, 0))\n"
              "\t$end 'THRU'\n"
              "\t$begin 'VIA8'\n"
              "\t\tHole(Rectangle(0.6, 1.2))\n"
              "\t\tTop('P2', 0.2, 0, 0, Thermal(), NonConnect())\n"
              "\t\tSignal('P2', 0.2, 0, 0, Thermal(), NonConnect())\n"
              "\t\tSignal('P1', -0.1, 0, 0, Thermal(), NonConnect())\n"
              "\t\tBottom('P2', 0.2, 0, 0, Thermal(), NonConnect())\n"
              "\t$end 'VIA8'\n"
              "\t$begin 'SMD1'\n"
              "\t\tTop('SMD', 0, 0, 0, Thermal(), NonConnect())\n"
              "\t$end 'SMD1'\n"
              "\t$begin 'SMD1_XMirrored'\n"
              "\t\tBottom('NULLPAD', 0, 0, 0, Thermal(), NonConnect())\n"
              "\t$end 'SMD1_XMirrored'\n"
              "\t$begin 'CUST'\n"
              "\t\tTop('CU', 0, 0, 0, Thermal(), NonConnect())\n"
              "\t$end 'CUST'\n"
              "\t$begin 'ODD'\n"
              "\t$end 'ODD'\n"
              "\t$begin 'CUST_XTRA_1'\n"
              "\t\tTop('CU_UNCONN_1', 0, 0, 0, Thermal(), NonConnect())\n"
              "\t$end 'CUST_XTRA_1'\n"
              "$end 'PadStacks'\n");
    ASSERT_EQ(writer.m_PadStackExtras.count(L"CUST"), 1u);
    EXPECT_EQ(writer.m_PadStackExtras[L"CUST"], (std::vector<AString>{L"CUST_XTRA_1"}));
    ASSERT_EQ(writer.m_PadStackLayers[L"CUST"].size(), 1u);
    EXPECT_EQ(writer.m_PadStackLayers[L"CUST"][0]->m_PadName, AString(L"CU"));
}

TEST(BoardWriter, OutlinesAndCutOutsOfEveryKind)
{
    ElementList elements;
    std::vector<ExpeditionShapes*> contours{
        new ExpeditionRectangle(L"Board", 10, 10, 14, 12, 0.0),
        new ExpeditionPath(L"Board", 0.1, {new ExpeditionVertex(1, 1, 0)}), // too short: no cut, no id
        new ExpeditionPolygon(L"Board",
                              {new ExpeditionVertex(20, 20, 0), new ExpeditionVertex(22, 20, 0.5),
                               new ExpeditionVertex(21, 22, 0)},
                              0.3)};
    elements.push_back(
        new ExpeditionBoard(0, 0, new ExpeditionRectangle(L"Board", 0, 0, 50, 40, 0.0), contours));
    elements.push_back(new ExpeditionBoard(0, 0, new ExpeditionCircle(L"Board", 0, 0, 10, 0.2), {}));
    ExpeditionToTnf writer;
    writer.m_PhysicalLayers = 6;
    writer.m_NextShapeId = 40; // the layout nets came first
    io::CBlockPtr block = writer.WritePhysicalDimensions(elements);
    std::vector<const io::CBlock_func*> items;
    for (auto it = block->begin(); it != block->end(); ++it)
        items.push_back(static_cast<const io::CBlock_func*>(block->Item(it).Item()));
    ASSERT_EQ(items.size(), 4u);
    const auto itemText = [](const io::CBlock_item& item)
    {
        io::CString_ostream out;
        out.SetPrecision(10);
        item.write(out);
        return out.str();
    };
    // A rectangle outline is four vertices without a closing one; the cut-outs
    // keep their kind and span the stack-up by formed names; ids go on.
    EXPECT_EQ(itemText(*items[0]),
              "Polygon(41, 0, vertex(0, 0), vertex(50, 0), vertex(50, 40), vertex(0, 40))");
    EXPECT_EQ(itemText(*items[1]), "Cut('SIGNAL_1', 'SIGNAL_6', Rectangle(42, 0, 12, 11, 4, 2, 0))");
    EXPECT_EQ(itemText(*items[2]), "Cut('SIGNAL_1', 'SIGNAL_6', Polygon(43, 0, vertex(20, 20), vertex(22, "
                                   "20), Arc(0.5), vertex(21, 22)))");
    // A round board is a polygon of points 20 degrees apart, the last on the
    // first, all on the circle.
    const io::CBlock_func& round = *items[3];
    int id = 0;
    double width = 0.0;
    round.GetArgumentValue(0).Query(id);
    round.GetArgumentValue(1).Query(width);
    EXPECT_EQ(id, 44);
    EXPECT_EQ(width, 0.2);
    ASSERT_EQ(round.GetArgumentCount(), 2u + 19u);
    std::vector<std::pair<double, double>> points;
    for (size_t i = 2; i < round.GetArgumentCount(); ++i)
    {
        const auto* vertex = dynamic_cast<const io::CBlock_func*>(round.GetArgumentItem(i));
        ASSERT_NE(vertex, nullptr);
        double x = 0, y = 0;
        vertex->GetArgumentValue(0).Query(x);
        vertex->GetArgumentValue(1).Query(y);
        EXPECT_NEAR(std::hypot(x, y), 10.0, 1e-9);
        points.emplace_back(x, y);
    }
    EXPECT_EQ(points.front(), points.back());
    for (auto* e : elements)
        delete e;
}
