// A run through the driver with a sink, as the checking program makes it: the
// writers' losses named by the file and line where the name was given, failed
// assertions at the place being read, the reader events of cut-short records,
// the counts of the job against those of the file, and the neutral file's
// text the same byte for byte with and without the sink.
#include "JobFixture.h"

#include "core/lib/vellum/streamio/TokenStream.h"
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include <regex>

namespace
{
const char* const k_Date = "Mon Jan  7 10:00:00 2030";

void Replace(std::string& text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
}

// A copy of a bundled example under a fresh directory; the files changed as
// the test asks are written back.
class ExampleCopy
{
public:
    ExampleCopy(const char* example, const std::string& name)
        : m_Dir(fs::temp_directory_path() / ("checked_run_" + name))
    {
        fs::remove_all(m_Dir);
        fs::create_directories(m_Dir);
        for (const auto& entry : fs::directory_iterator(fs::path(TNF_SOURCE_DIR) / "examples" / example))
            if (entry.path().extension() == ".hkp")
                fs::copy_file(entry.path(), m_Dir / entry.path().filename());
    }
    ~ExampleCopy() { fs::remove_all(m_Dir); }
    std::string Text(const char* file) const { return ReadFileBytes(m_Dir / file); }
    void Write(const char* file, const std::string& text) const
    {
        std::ofstream(m_Dir / file, std::ios::binary) << text;
    }
    const fs::path& Dir() const { return m_Dir; }

private:
    fs::path m_Dir;
};

// One run: the job read and written into memory with a fixed date.
struct CheckedRun
{
    ExpeditionDiagnostics m_Diagnostics;
    std::string m_Text;

    CheckedRun(const fs::path& job, bool withSink)
    {
        ExpeditionToTnf translator;
        {
            std::unique_ptr<ExpeditionDiagnostics::AssertListener> listening;
            if (withSink)
                listening = std::make_unique<ExpeditionDiagnostics::AssertListener>(m_Diagnostics);
            translator.ReadJob(AString(job.string().c_str()), withSink ? &m_Diagnostics : nullptr);
            io::CString_ostream out;
            translator.WriteNeutralFile(out, AString(k_Date));
            m_Text = out.str();
        }
        m_Diagnostics.Finish();
    }
    std::vector<std::string> Events(const std::string& kind) const
    {
        std::vector<std::string> found;
        for (const auto& e : m_Diagnostics.GetEvents())
            if (e.m_Kind == kind)
                found.push_back(e.m_File + ":" + std::to_string(e.m_Line));
        return found;
    }
    std::string TextOf(const std::string& kind) const
    {
        for (const auto& e : m_Diagnostics.GetEvents())
            if (e.m_Kind == kind)
                return e.m_Text;
        return std::string();
    }
};

std::string At(const char* file, size_t line)
{
    return std::string(file) + ":" + std::to_string(line);
}
} // namespace

TEST(CheckedRun, WritersNameWhatTheyCannotResolveWhereItWasGiven)
{
    ExampleCopy job("Demo4Layer", "writers");
    // A padstack that names a pad the file lacks, a used padstack whose pad
    // has no shape, a cell pin on a padstack the file lacks, a part number
    // the part database lacks, and the padstack that trips the reader's
    // debugging guard.
    std::string padstacks = job.Text("Padstack.hkp");
    Replace(padstacks, ".PAD \"RD0.60\"",
            ".PAD \"EMPTY\"\n..PAD_OPTIONS USER_GENERATED_NAME\n.PAD \"RD0.60\"");
    const size_t stacks = padstacks.find("\n.PADSTACK ");
    ASSERT_NE(stacks, std::string::npos);
    const size_t firstTop = padstacks.find("..TOP_PAD \"", stacks);
    const size_t secondStack = padstacks.find("\n.PADSTACK ", stacks + 1);
    const size_t secondTop = padstacks.find("..TOP_PAD \"", secondStack);
    ASSERT_NE(secondTop, std::string::npos);
    padstacks.replace(secondTop, padstacks.find('\n', secondTop) - secondTop, "..TOP_PAD \"EMPTY\"");
    padstacks.replace(firstTop, padstacks.find('\n', firstTop) - firstTop, "..TOP_PAD \"NO_SUCH_PAD\"");
    padstacks.insert(stacks + 1, ".PADSTACK \"SAPPHIRE39-28+VIA\"\n..PADSTACK_TYPE PIN_SMD\n");
    job.Write("Padstack.hkp", padstacks);
    std::string cells = job.Text("Cell.hkp");
    Replace(cells, "...PADSTACK \"SMD0603\"", "...PADSTACK \"NO_SUCH_STACK\"");
    job.Write("Cell.hkp", cells);
    std::string layout = job.Text("Layout.hkp");
    Replace(layout, "..TEXT \"LDO-3V3-SOIC8\"", "..TEXT \"NO-SUCH-PART\"");
    // A second REF_DES text: the netlist names J1's pins by the first, the
    // writer knows them by the last.
    Replace(layout, "..TEXT \"J1\"\n", "..TEXT \"J9\"\n...TEXT_TYPE REF_DES\n..TEXT \"J1\"\n");
    job.Write("Layout.hkp", layout);

    const CheckedRun run(job.Dir(), true);
    EXPECT_EQ(run.Events("unresolved-pad"),
              std::vector<std::string>{At("Padstack.hkp", LineHolding(padstacks, "NO_SUCH_PAD"))});
    EXPECT_EQ(run.Events("pad-shape-null"),
              std::vector<std::string>{At("Padstack.hkp", LineHolding(padstacks, ".PAD \"EMPTY\""))});
    EXPECT_EQ(run.Events("unresolved-padstack"),
              std::vector<std::string>{At("Cell.hkp", LineHolding(cells, "NO_SUCH_STACK"))});
    EXPECT_NE(run.TextOf("unresolved-padstack").find("pin 1 of cell \"SMD_0603\""), std::string::npos)
        << run.TextOf("unresolved-padstack");
    EXPECT_EQ(run.Events("unresolved-part-number"),
              std::vector<std::string>{At("Layout.hkp", LineHolding(layout, "NO-SUCH-PART"))});
    EXPECT_NE(run.TextOf("unresolved-part-number").find("component U"), std::string::npos)
        << run.TextOf("unresolved-part-number");
    const std::vector<std::string> pins = run.Events("unresolved-pin");
    ASSERT_FALSE(pins.empty());
    EXPECT_NE(run.TextOf("unresolved-pin").find("Pin \"J9-"), std::string::npos)
        << run.TextOf("unresolved-pin");
    // Both failed assertions stand behind their record, where the reader
    // meets the next one: the pad without a shape, and the debugging guard.
    EXPECT_EQ(
        run.Events("assertion-failed"),
        (std::vector<std::string>{At("Padstack.hkp", LineHolding(padstacks, ".PAD \"EMPTY\"") + 2),
                                  At("Padstack.hkp", LineHolding(padstacks, ".PADSTACK \"SAPPHIRE") + 2)}));
    size_t guards = 0;
    for (const auto& event : run.m_Diagnostics.GetEvents())
        guards +=
            event.m_Kind == "assertion-failed" && event.m_Text.find("SAPPHIRE39-28+VIA") != std::string::npos;
    EXPECT_EQ(guards, 1u);

    // The neutral file really lacks what the events say: the pin names a
    // padstack that has no entry.
    EXPECT_NE(run.m_Text.find("'NO_SUCH_STACK'"), std::string::npos);
    EXPECT_EQ(run.m_Text.find("$begin 'NO_SUCH_STACK'"), std::string::npos);
    EXPECT_NE(run.m_Text.find("$begin 'SMD0603'"), std::string::npos);
}

TEST(CheckedRun, RecordsCutShortByTheRecordBeforeThem)
{
    ExampleCopy job("Demo4Layer", "readers");
    // A connection record of two lines takes the keyword of the next one.
    std::string jobPrefs = job.Text("JobPrefs.hkp");
    Replace(jobPrefs, "..TIE_LEG_NUMBER_OPTION FOUR_LEGS\n..TIE_LEG_ROTATION_OPTION ROTATE_45\n",
            "..TIE_LEG_ROTATION_OPTION ROTATE_45\n");
    job.Write("JobPrefs.hkp", jobPrefs);
    // A dimension block whose first line with a dimension word stands behind
    // both pins of the first cell.
    std::string cells = job.Text("Cell.hkp");
    Replace(cells, "..NUMBER_LAYERS 2\n..PIN \"1\"",
            "..NUMBER_LAYERS 2\n..DIMENSION_SETTINGS 1\n..PIN \"1\"");
    Replace(cells, "...XY (0.8, 0)\n...ROTATION 0\n", "...XY (0.8, 0)\n...ROTATION 0\n...UNITS MM\n");
    job.Write("Cell.hkp", cells);

    const CheckedRun run(job.Dir(), true);
    const std::vector<std::string> expected{
        At("JobPrefs.hkp", LineHolding(jobPrefs, ".DEFAULT_THRU_PAD_CONNECTIONS")),
        At("JobPrefs.hkp", LineHolding(jobPrefs, ".TP_ASSIGNMENT_SECTION")),
        At("Cell.hkp", LineHolding(cells, "DIMENSION_SETTINGS"))};
    EXPECT_EQ(run.Events("section-cut-short"), expected);
    const std::string& swallowed = run.m_Diagnostics.GetEvents().back().m_Text;
    EXPECT_NE(swallowed.find("passes over 2 records"), std::string::npos) << swallowed;
    EXPECT_NE(swallowed.find("PIN at line " + std::to_string(LineHolding(cells, "..PIN \"1\""))),
              std::string::npos)
        << swallowed;

    // A dimension block that ends on its own next line loses nothing.
    ExampleCopy plain("Demo4Layer", "readers_plain");
    std::string tidy = plain.Text("Cell.hkp");
    Replace(tidy, "..NUMBER_LAYERS 2\n..PIN \"1\"",
            "..NUMBER_LAYERS 2\n..DIMENSION_SETTINGS 1\n...UNITS MM\n..PIN \"1\"");
    plain.Write("Cell.hkp", tidy);
    const CheckedRun clean(plain.Dir(), true);
    EXPECT_EQ(clean.Events("section-cut-short").size(), 1u); // TP_ASSIGNMENT_SECTION only

    // A line of dots alone among the lines passed over is a record without a
    // keyword.
    ExpeditionDiagnostics diagnostics;
    ExpeditionParser parser(AString(L"/nonexistent-job-directory"));
    parser.m_Diagnostics = &diagnostics;
    ElementList elements;
    io::CToken_istream stream(
        std::string(".FILETYPE CELL_LIBRARY\n.PACKAGE_CELL \"A\"\n..DIMENSION_SETTINGS\n..\n"
                    "...UNITS MM\n..PIN \"1\"\n"),
        AString(L"Cell.hkp"));
    parser.ReadCells(stream, elements);
    ASSERT_EQ(diagnostics.GetEvents().size(), 1u);
    EXPECT_EQ(diagnostics.GetEvents()[0].m_Line, 3u);
    EXPECT_NE(diagnostics.GetEvents()[0].m_Text.find("passes over 1 records"), std::string::npos);
    DeleteOwned_G(elements);
}

TEST(CheckedRun, CountsOfTheJobAgainstThoseOfTheFile)
{
    // The generator says what it put into the job; the readers must count
    // the same, and the writers, which lose nothing of this job, too.
    const fs::path dir = fs::temp_directory_path() / "checked_run_generated_counts";
    fs::remove_all(dir);
    if (GenerateJob(dir, "--size-mb 0.3 --planes-file --seed 7") != 0)
        GTEST_SKIP() << "python3 could not generate a job; the counts were not checked";
    const std::string summary = ReadFileBytes(dir / "generator_summary.json");
    const auto value = [&summary](const char* key)
    {
        std::smatch match;
        const std::string text = summary;
        if (!std::regex_search(text, match, std::regex(std::string("\"") + key + "\": ([0-9]+)")))
            return -1L;
        return std::stol(match[1].str());
    };
    const CheckedRun run(dir, true);
    const auto& job = run.m_Diagnostics.GetInJob();
    const auto& file = run.m_Diagnostics.GetInFile();
    const auto total = [](const std::map<std::string, size_t>& byLayer)
    {
        long sum = 0;
        for (const auto& [layer, n] : byLayer)
            sum += static_cast<long>(n);
        return sum;
    };
    EXPECT_EQ(static_cast<long>(job.m_Components), value("placed_parts"));
    EXPECT_EQ(static_cast<long>(job.m_Pins), value("pins"));
    EXPECT_EQ(static_cast<long>(job.m_Vias), value("vias"));
    EXPECT_EQ(total(job.m_Traces), value("traces") + value("tie_legs"));
    EXPECT_EQ(static_cast<long>(file.m_Components), value("expected_LayoutCompInst"));
    EXPECT_EQ(static_cast<long>(file.m_Vias), value("expected_Via"));
    EXPECT_EQ(total(file.m_Traces), value("expected_trace_Path"));
    EXPECT_EQ(total(file.m_PlaneVoids), value("plane_voids"));
    std::map<std::string, size_t> contoursInFile = file.m_PlaneOutlines;
    for (const auto& [layer, n] : file.m_PlaneVoids)
        contoursInFile[layer] += n;
    EXPECT_EQ(job.m_PlaneContours, contoursInFile);
    fs::remove_all(dir);

    // A trace without a net is in the job and not in the file, on its layer.
    ExampleCopy example("Demo4Layer", "counts");
    std::string layout = example.Text("Layout.hkp");
    layout.erase(layout.find(".NET \"")); // behind a net block the level is stale
    layout += ".TRACE\n..ROUTE_LYR LYR_1\n..POLYLINE_PATH\n...WIDTH 5\n...XY (0, 0) (1, 1)\n";
    example.Write("Layout.hkp", layout);
    const CheckedRun lossy(example.Dir(), true);
    const auto onTop = [](const std::map<std::string, size_t>& byLayer)
    {
        const auto found = byLayer.find("Top_1");
        return found == byLayer.end() ? size_t(0) : found->second;
    };
    EXPECT_EQ(onTop(lossy.m_Diagnostics.GetInJob().m_Traces),
              onTop(lossy.m_Diagnostics.GetInFile().m_Traces) + 1);
    EXPECT_EQ(lossy.Events("trace-without-net").size(), 1u);
}

TEST(CheckedRun, TheFileIsTheSameByteForByteWithAndWithoutTheSink)
{
    for (const char* example : {"Demo4Layer", "Minimal2Layer"})
    {
        const fs::path dir = fs::path(TNF_SOURCE_DIR) / "examples" / example;
        const CheckedRun with(dir, true), without(dir, false);
        EXPECT_GT(with.m_Text.size(), 1000u) << example;
        EXPECT_TRUE(with.m_Text == without.m_Text) << example;
        EXPECT_TRUE(without.m_Diagnostics.GetEvents().empty());
    }
#ifndef _WIN32
    // The program writes that text too, its own date aside. (On Windows the
    // whole-program tests compare the program's files.)
    const fs::path output = fs::temp_directory_path() / "checked_run_program.tnf";
    fs::remove(output);
    const std::string command = std::string("\"") + TNF_TRANSLATOR_EXE + "\" \"" + TNF_SOURCE_DIR +
                                "/examples/Demo4Layer\" \"" + output.string() + "\"";
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::string program = ReadFileBytes(output);
    const std::regex date("Date='[^']*'");
    const CheckedRun inProcess(fs::path(TNF_SOURCE_DIR) / "examples" / "Demo4Layer", true);
    EXPECT_TRUE(std::regex_replace(program, date, "Date") ==
                std::regex_replace(inProcess.m_Text, date, "Date"));
    EXPECT_NE(program.find("Date="), std::string::npos);
    fs::remove(output);
#endif

    // A generated job of a third of a megabyte with a planes file.
    const fs::path generated = fs::temp_directory_path() / "checked_run_generated";
    fs::remove_all(generated);
    if (GenerateJob(generated, "--size-mb 0.3 --planes-file --seed 3") != 0)
        GTEST_SKIP() << "python3 could not generate a job; the generated half of this test did not run";
    const CheckedRun with(generated, true), without(generated, false);
    EXPECT_GT(with.m_Text.size(), 100000u);
    EXPECT_TRUE(with.m_Text == without.m_Text);
    fs::remove_all(generated);
}
