// The diagnostics of a read: for each kind of event a small change to the
// bundled example that causes it, and the event naming the right file and
// line; tallies of skipped lines; file-level troubles; and a read with a
// sink that leaves the model as a read without one does.
#include "JobFixture.h"

#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

namespace
{
std::string ExampleText(const char* name)
{
    std::ifstream in(fs::path(TNF_SOURCE_DIR) / "examples" / "Demo4Layer" / name, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

size_t LineCount(const std::string& text)
{
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

struct Read
{
    ExpeditionDiagnostics m_Diagnostics;
    ExpeditionParser m_Parser{AString(L"/nonexistent-job-directory")};
    ElementList m_Elements;
    explicit Read(bool withSink = true)
    {
        if (withSink)
            m_Parser.m_Diagnostics = &m_Diagnostics;
    }
    ~Read() { DeleteOwned_G(m_Elements); }
    // The four files of the example that the layout needs, the layout given.
    void Job(const std::string& layout)
    {
        io::CToken_istream jobPrefs(ExampleText("JobPrefs.hkp"), AString(L"JobPrefs.hkp"));
        m_Parser.ReadJobPrefs(jobPrefs, m_Elements);
        io::CToken_istream padstacks(ExampleText("Padstack.hkp"), AString(L"Padstack.hkp"));
        m_Parser.ReadPadstacks(padstacks, m_Elements);
        io::CToken_istream cells(ExampleText("Cell.hkp"), AString(L"Cell.hkp"));
        m_Parser.ReadCells(cells, m_Elements);
        io::CToken_istream stream(layout, AString(L"Layout.hkp"));
        m_Parser.ReadLayout(stream, m_Elements, false);
    }
    std::vector<std::string> Events(const std::string& kind) const
    {
        std::vector<std::string> found;
        for (const auto& e : m_Diagnostics.GetEvents())
            if (e.m_Kind == kind)
                found.push_back(e.m_File + ":" + std::to_string(e.m_Line));
        return found;
    }
    const ExpeditionDiagnostics::Event* First(const std::string& kind) const
    {
        for (const auto& e : m_Diagnostics.GetEvents())
            if (e.m_Kind == kind)
                return &e;
        return nullptr;
    }
};

void Replace(std::string& text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
}
} // namespace

TEST(Diagnostics, LayoutLossesNameTheirFileAndLine)
{
    // The placed cells of the example, then records that lose data, the
    // last a net block that the end of the file cuts off.
    std::string layout = ExampleText("Layout.hkp");
    Replace(layout, ".PACKAGE_CELL \"HDR_1X2_P254\"", ".PACKAGE_CELL \"NO_SUCH_CELL\"");
    layout.erase(layout.find(".NET \""));
    const size_t end = LineCount(layout);
    layout += ".TRACE\n" // end + 1: a free trace without NETNAME
              "..ROUTE_LYR LYR_1\n"
              "..POLYLINE_PATH\n"
              "...WIDTH 5\n"
              "...XY (0, 0) (1, 1)\n"
              ".FOO_BAR 1\n"    // end + 6: unknown
              ".NET \"TAIL\"\n" // end + 7: runs to the end of the file
              "..TRACE\n"
              "...ROUTE_LYR LYR_1\n"
              "...POLYLINE_PATH\n"
              "....WIDTH 5\n"
              "....XY (0, 0) (1, 1)\n";
    Read read;
    read.Job(layout);

    const std::string cellLine = "Layout.hkp:" + std::to_string(LineHolding(layout, "NO_SUCH_CELL"));
    EXPECT_EQ(read.Events("missing-cell"), std::vector<std::string>{cellLine});
    const auto* missing = read.First("missing-cell");
    ASSERT_NE(missing, nullptr);
    EXPECT_NE(missing->m_Text.find("J1"), std::string::npos) << missing->m_Text;
    EXPECT_NE(missing->m_Text.find("NO_SUCH_CELL"), std::string::npos) << missing->m_Text;

    EXPECT_EQ(read.Events("trace-without-net"),
              std::vector<std::string>{"Layout.hkp:" + std::to_string(end + 1)});
    EXPECT_EQ(read.Events("record-lost-at-end"),
              std::vector<std::string>{"Layout.hkp:" + std::to_string(end + 7)});
    const auto* lost = read.First("record-lost-at-end");
    ASSERT_NE(lost, nullptr);
    EXPECT_NE(lost->m_Text.find("\"TAIL\""), std::string::npos);
    EXPECT_NE(lost->m_Text.find("1 traces"), std::string::npos) << lost->m_Text;

    const auto& layoutFile = read.m_Diagnostics.GetFiles().at("Layout.hkp");
    EXPECT_EQ(layoutFile.m_Lines, LineCount(layout));
    const auto& unknown = layoutFile.m_Skipped.at("FOO_BAR");
    EXPECT_FALSE(unknown.m_NotNeeded);
    EXPECT_EQ(unknown.m_Count, 1u);
    EXPECT_EQ(unknown.m_FirstLines, std::vector<size_t>{end + 6});
    // The head of the file is skipped too, but as not needed.
    const auto& version = layoutFile.m_Skipped.at("VERSION");
    EXPECT_TRUE(version.m_NotNeeded);
    EXPECT_EQ(version.m_FirstLines, std::vector<size_t>{LineHolding(layout, ".VERSION")});
    // Every loss counts; lines not needed don't.
    EXPECT_GE(read.m_Diagnostics.LossCount(), 4u);
}

TEST(Diagnostics, PlaneDataOfANetWithoutCopper)
{
    std::string layout = ExampleText("Layout.hkp");
    Replace(layout, "..PLANE_NET \"GND\"", "..PLANE_NET \"NOPE\"");
    Read read;
    read.Job(layout);
    EXPECT_EQ(read.Events("unresolved-net"),
              std::vector<std::string>{"Layout.hkp:" + std::to_string(LineHolding(layout, "\"NOPE\""))});
    // The same plane in Planes.hkp: the block is named.
    io::CToken_istream planes(std::string("$begin 'Planes'\n\t$begin 'P7'\n\t\tNet('NOPE')\n\t\tLayer('2')\n"
                                          "\t\tSeg(0, 0)\n\t\tSeg(10, 0)\n\t\tSeg(10, 10)\n\t\tSeg(0, 0)\n"
                                          "\t$end 'P7'\n$end 'Planes'\n"),
                              AString(L"Planes.hkp"));
    read.m_Parser.ReadPlanes(planes, 1.0);
    const auto events = read.Events("unresolved-net");
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[1], "Planes.hkp:2"); // the line of the block's $begin
    EXPECT_NE(read.m_Diagnostics.GetEvents().back().m_Text.find("'P7'"), std::string::npos);
}

TEST(Diagnostics, NegativePlaneContoursThinnerThanThePenOrCutApart)
{
    Read read;
    read.Job(ExampleText("Layout.hkp"));
    const auto block =
        [](const char* name, const char* width, const std::vector<std::pair<double, double>>& points)
    {
        std::string text = std::string("\t$begin '") + name +
                           "'\n\t\tNet('+3V3')\n\t\tLayer('2')\n\t\twidth(" + width + ")\n";
        for (const auto& [x, y] : points)
            text += "\t\tSeg(" + std::to_string(x) + ", " + std::to_string(y) + ")\n";
        return text + "\t$end '" + name + "'\n";
    };
    // Layer 2 of the example is negative. A square of 10 under a pen of 20
    // cannot shrink; two squares joined by a neck of 0.5 fall apart under a
    // pen of 2.
    const std::string text = "$begin 'Planes'\n" +
                             block("Thin", "20", {{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}) +
                             block("Dumbbell", "2",
                                   {{0, 0},
                                    {10, 0},
                                    {10, 4.75},
                                    {20, 4.75},
                                    {20, 0},
                                    {30, 0},
                                    {30, 10},
                                    {20, 10},
                                    {20, 5.25},
                                    {10, 5.25},
                                    {10, 10},
                                    {0, 10},
                                    {0, 0}}) +
                             "$end 'Planes'\n";
    io::CToken_istream planes(text, AString(L"Planes.hkp"));
    read.m_Parser.ReadPlanes(planes, 1.0);
    const auto* unshrunk = read.First("negative-plane-unshrunk");
    ASSERT_NE(unshrunk, nullptr);
    EXPECT_EQ(read.Events("negative-plane-unshrunk"), std::vector<std::string>{"Planes.hkp:2"});
    EXPECT_EQ(read.Events("plane-dropped"), std::vector<std::string>{"Planes.hkp:12"});
    EXPECT_NE(unshrunk->m_Text.find("'Thin'"), std::string::npos) << unshrunk->m_Text;
    const auto* dropped = read.First("plane-dropped");
    ASSERT_NE(dropped, nullptr);
    EXPECT_NE(dropped->m_Text.find("'Dumbbell'"), std::string::npos) << dropped->m_Text;
    EXPECT_NE(dropped->m_Text.find(": 1 pieces"), std::string::npos) << dropped->m_Text;
}

TEST(Diagnostics, StackupSectionCutShort)
{
    const std::string jobPrefs = ExampleText("JobPrefs.hkp");
    Read read;
    io::CToken_istream stream(jobPrefs, AString(L"JobPrefs.hkp"));
    read.m_Parser.ReadJobPrefs(stream, read.m_Elements);
    EXPECT_EQ(
        read.Events("section-cut-short"),
        std::vector<std::string>{"JobPrefs.hkp:" + std::to_string(LineHolding(jobPrefs, ".TP_ASSIGNMENT"))});
}

TEST(Diagnostics, UserLayerWithoutNumberSwallowsTheKeywordBehindIt)
{
    Read read;
    io::CToken_istream stream(std::string(".FILETYPE JOB_PREFS\n"
                                          ".USER_DEFINED_LAYERS_SECTION\n"
                                          " ..USER_LAYER_NAME \"Fab\"\n"
                                          "  ...USER_LAYER_NUMBER 101\n"
                                          " ..USER_LAYER_NAME \"Keepout\"\n"
                                          ".PHYSICAL_LAYERS 4\n"),
                              AString(L"JobPrefs.hkp"));
    read.m_Parser.ReadJobPrefs(stream, read.m_Elements);
    EXPECT_EQ(read.m_Parser.m_PhysicalLayers, 0); // the loss is real
    EXPECT_EQ(read.Events("section-cut-short"), std::vector<std::string>{"JobPrefs.hkp:6"});
    const auto* event = read.First("section-cut-short");
    ASSERT_NE(event, nullptr);
    EXPECT_NE(event->m_Text.find("\"Keepout\""), std::string::npos);
    EXPECT_NE(event->m_Text.find("PHYSICAL_LAYERS"), std::string::npos);
}

TEST(Diagnostics, FilesThatReadAsNothing)
{
    std::string crOnly = ExampleText("Cell.hkp");
    std::replace(crOnly.begin(), crOnly.end(), '\n', '\r');
    std::string utf16 = "\xff\xfe";
    for (const char c : std::string(".FILETYPE CELL_LIBRARY\r\n.UNITS MM\r\n"))
        utf16 += std::string(1, c) + '\0';
    Read read;
    io::CToken_istream cr(crOnly, AString(L"Cell.hkp"));
    read.m_Parser.ReadCells(cr, read.m_Elements);
    io::CToken_istream wide(utf16, AString(L"Padstack.hkp"));
    read.m_Parser.ReadPadstacks(wide, read.m_Elements);
    io::CToken_istream unreadable(LongFileName(AString(L"/nonexistent-job-directory/PDB.hkp")), 0);
    read.m_Parser.ReadPartDatabase(unreadable);
    EXPECT_EQ(read.Events("cr-only-line-ends"), std::vector<std::string>{"Cell.hkp:1"});
    EXPECT_EQ(read.Events("utf16-text"), std::vector<std::string>{"Padstack.hkp:1"});
    EXPECT_EQ(read.Events("file-unreadable"), std::vector<std::string>{"PDB.hkp:0"});
    // The lines of the CR-only file are still those an editor shows.
    EXPECT_EQ(read.m_Diagnostics.GetFiles().at("Cell.hkp").m_Lines, LineCount(ExampleText("Cell.hkp")));
}

TEST(Diagnostics, ASinkLeavesTheModelAsItIs)
{
    // Component by component and net by net, the model read with a sink is
    // the model read without one.
    const auto fingerprint = [](const ElementList& elements)
    {
        std::vector<std::string> lines;
        for (ExpeditionBaseElement* e : elements)
        {
            if (ExpeditionComponent* c = e->AsComponent())
                lines.push_back("component " + c->GetFootprintName().AsAnsi().str() + " " +
                                std::to_string(c->m_X) + " " + std::to_string(c->m_Y) + " pins " +
                                std::to_string(c->m_Pins.size()));
            else if (ExpeditionLayoutNet* n = e->AsLayoutNet())
                lines.push_back("net " + n->m_Name.AsAnsi().str() + " " + std::to_string(n->m_Traces.size()) +
                                " " + std::to_string(n->m_Vias.size()) + " " +
                                std::to_string(n->m_Shapes.size()));
            else
                lines.push_back("element");
        }
        return lines;
    };
    Read with(true), without(false);
    with.Job(ExampleText("Layout.hkp"));
    without.Job(ExampleText("Layout.hkp"));
    EXPECT_FALSE(with.m_Diagnostics.GetFiles().empty());
    EXPECT_TRUE(without.m_Diagnostics.GetFiles().empty());
    EXPECT_EQ(fingerprint(with.m_Elements), fingerprint(without.m_Elements));
    EXPECT_GT(fingerprint(with.m_Elements).size(), 20u);

    // The same for the whole reading order on a generated job of a megabyte
    // with a planes file.
    const fs::path job = fs::temp_directory_path() / "diagnostics_generated_job";
    fs::remove_all(job);
    const std::string command = std::string("python3 \"") + TNF_SOURCE_DIR + "/bench/generate_job.py\" \"" +
                                job.string() + "\" --size-mb 1 --planes-file >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0)
        GTEST_SKIP() << "python3 could not generate a job; the generated half of this test did not run";
    Read full(true), plain(false);
    full.m_Parser.m_Directory = AString(job.string().c_str());
    plain.m_Parser.m_Directory = AString(job.string().c_str());
    full.m_Parser.Read(full.m_Elements);
    plain.m_Parser.Read(plain.m_Elements);
    EXPECT_EQ(full.m_Diagnostics.GetFiles().count("Planes.hkp"), 1u);
    EXPECT_EQ(fingerprint(full.m_Elements), fingerprint(plain.m_Elements));
    EXPECT_GT(fingerprint(full.m_Elements).size(), 1000u);
    fs::remove_all(job);
}
