// TnfViewProgram_test.cpp - the program from the outside: files that are no
// neutral file or are cut short give one message and no page; a good file
// gives a page with its counts; and the placement of a part on the bottom.
#include "tools/TnfView/TnfBoardReader.h"
#include "tools/TnfView/TnfPageWriter.h"
#include "tools/TnfView/TnfPlacement.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace
{
namespace fs = std::filesystem;

// A small board: two layers, one net with a trace, a via, a plane with a void,
// a part on the bottom, an outline.
const char* const k_Board = R"TNF($begin 'TarvexNeutralFile'
	Version('4', '0')
	Date='Mon Jan  5 10:00:00 2026'
	$begin 'PadShapes'
		RD1(Circle(1))
		SQ1(Rectangle(1, 1))
		'NULLPAD'(Circle(0))
	$end 'PadShapes'
	$begin 'PadStacks'
		$begin 'VIA'
			Hole(0.3)
			Top('RD1', 0, 0, 0, Thermal(), NonConnect())
			Bottom('RD1', 0, 0, 0, Thermal(), NonConnect())
		$end 'VIA'
		$begin 'SMD'
			Top('SQ1', 0, 0, 0, Thermal(), NonConnect())
		$end 'SMD'
	$end 'PadStacks'
	$begin 'Footprints'
		$begin 'FP'
			$begin 'FpPins'
				$begin 'FpPindef'
					FpPin('1', 1, 0, 'SMD', 0)
				$end 'FpPindef'
			$end 'FpPins'
		$end 'FP'
	$end 'Footprints'
	$begin 'Components'
		$begin 'Component0'
			CompDef('', 'FP', '', 'U', 1)
			Terminal('1', '1', 'A', false)
		$end 'Component0'
	$end 'Components'
	$begin 'LayoutData'
		$begin 'LayoutCell'
			$begin 'Netlist'
				$begin 'Compinst'
					U1('Component0')
				$end 'Compinst'
				$begin 'Net'
					N1('Signal')
					NetPin='U1.0'
				$end 'Net'
			$end 'Netlist'
			$begin 'Layout'
				$begin 'Layers'
					StackupLayer('TOP', 'Signal', 'Top', 0.03, 'copper')
					StackupLayer('D', 'Dielectric', 'neither', 1, 'FR4')
					StackupLayer('BOT', 'Signal', 'Bottom', 0.03, 'copper')
				$end 'Layers'
				$begin 'LayoutComponents'
					$begin 'LayoutComp'
						LayoutCompInst('BOT', 'FP', 'U1', 5, 5, 90, true)
					$end 'LayoutComp'
				$end 'LayoutComponents'
				$begin 'LayoutNets'
					$begin 'LayoutNet'
						Name='N1'
						Graphics('TOP', Path(1, vertex(1, 1, 0.5, 0.5, 'Round', 'Radiallymitered', 0.5), vertex(9, 1, 0.5, 0.5, 'Round', 'Radiallymitered', 0.5)))
						Via(2, 'TOP', 'BOT', 9, 1, 'VIA', 0)
						$begin 'PolygonWithVoids'
							Layer='BOT'
							Polygon(3, 0, vertex(0, 0), vertex(10, 0), vertex(10, 10), vertex(0, 10))
							$begin 'voids'
								Circle(4, 0, 2, 8, 1)
							$end 'voids'
						$end 'PolygonWithVoids'
					$end 'LayoutNet'
				$end 'LayoutNets'
			$end 'Layout'
		$end 'LayoutCell'
		$begin 'Design'
			$begin 'TopLayout'
				$begin 'PhysicalDimensions'
					Polygon(5, 0, vertex(0, 0), vertex(10, 0), vertex(10, 10), vertex(0, 10))
				$end 'PhysicalDimensions'
			$end 'TopLayout'
		$end 'Design'
	$end 'LayoutData'
$end 'TarvexNeutralFile'
)TNF";

std::string ReadAll(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

struct ProgramRun
{
    int m_Status;
    std::string m_Errors;
};

// Runs the program with the arguments (quoted as needed), standard output
// and standard error into files beside the output.
ProgramRun RunArguments(const std::string& arguments, const fs::path& dir, std::string* output = nullptr)
{
    const fs::path errors = dir / "stderr.txt", out = dir / "stdout.txt";
    std::string command = std::string("\"") + TNF_TNFVIEW_EXE + "\" " + arguments + " >\"" + out.string() +
                          "\" 2>\"" + errors.string() + "\"";
#ifdef _WIN32
    // cmd takes off the outermost pair of quotes.
    command = "\"" + command + "\"";
#endif
    const int status = std::system(command.c_str());
    ProgramRun run{status, ReadAll(errors)};
    if (output)
        *output = ReadAll(out);
    fs::remove(errors);
    fs::remove(out);
#ifndef _WIN32
    run.m_Status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
    return run;
}

ProgramRun RunTnfView(const fs::path& input, const fs::path& output)
{
    return RunArguments("\"" + input.string() + "\" \"" + output.string() + "\"", output.parent_path());
}

class TnfViewProgram : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_Dir = fs::temp_directory_path() /
                ("tnfview_test_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "_" +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(m_Dir);
    }
    void TearDown() override { fs::remove_all(m_Dir); }
    fs::path Write(const std::string& name, const std::string& text)
    {
        std::ofstream(m_Dir / name, std::ios::binary) << text;
        return m_Dir / name;
    }
    fs::path m_Dir;
};

TEST_F(TnfViewProgram, FilesThatAreNotWholeNeutralFilesGiveOneMessageAndNoPage)
{
    const std::string board = k_Board;
    const struct
    {
        const char* m_Name;
        std::string m_Text;
        const char* m_Says;
    } cases[] = {
        {"empty.tnf", "", "not a neutral file"},
        {"hkp.tnf", ".FILETYPE LAYOUT\n.VERSION \"VB99.0\"\n", "not a neutral file"},
        {"other.tnf", "$begin 'OrigTextBlk'\n$end 'OrigTextBlk'\n", "not a neutral file"},
        {"half.tnf", board.substr(0, board.size() / 2), "cut short"},
        {"lastline.tnf", board.substr(0, board.rfind("$end")), "cut short"},
        {"midline.tnf", board.substr(0, board.size() - 8), "cut short"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.m_Name);
        const fs::path output = m_Dir / "page.html";
        const ProgramRun run = RunTnfView(Write(c.m_Name, c.m_Text), output);
        EXPECT_EQ(run.m_Status, 1);
        EXPECT_NE(run.m_Errors.find(c.m_Says), std::string::npos) << run.m_Errors;
        EXPECT_NE(run.m_Errors.find(c.m_Name), std::string::npos) << run.m_Errors;
        EXPECT_EQ(std::count(run.m_Errors.begin(), run.m_Errors.end(), '\n'), 1) << run.m_Errors;
        EXPECT_FALSE(fs::exists(output));
        EXPECT_EQ(std::distance(fs::directory_iterator(m_Dir), fs::directory_iterator()), 1)
            << "a left-over file";
        fs::remove(m_Dir / c.m_Name);
    }
    const ProgramRun missing = RunTnfView(m_Dir / "absent.tnf", m_Dir / "page.html");
    EXPECT_EQ(missing.m_Status, 1);
    EXPECT_NE(missing.m_Errors.find("absent.tnf"), std::string::npos);
}

TEST_F(TnfViewProgram, AGoodFileGivesAPageWithItsDateAndCounts)
{
    const fs::path input = Write("small.tnf", k_Board);
    const fs::path output = m_Dir / "small.html";
    const ProgramRun run = RunTnfView(input, output);
    ASSERT_EQ(run.m_Status, 0) << run.m_Errors;
    EXPECT_EQ(run.m_Errors, "");
    const std::string page = ReadAll(output);
    EXPECT_NE(page.find("<title>small.tnf (Mon Jan  5 10:00:00 2026)"), std::string::npos);
    EXPECT_NE(page.find("1 nets &middot; 1 components &middot; 1 vias &middot; plane voids: TOP 0, BOT 1"),
              std::string::npos);
    // Nothing outside the page: no address, no file, no external script.
    EXPECT_EQ(page.find("src="), std::string::npos);
    EXPECT_EQ(page.find("href="), std::string::npos);
    EXPECT_EQ(page.find("http:", page.find("</svg>")), std::string::npos);
}

TEST_F(TnfViewProgram, VersionHelpAndUsage)
{
    std::string out;
    const ProgramRun version = RunArguments("--version", m_Dir, &out);
    EXPECT_EQ(version.m_Status, 0);
    EXPECT_EQ(out.rfind("TnfView ", 0), 0u) << out;
    EXPECT_NE(out.find_first_of("0123456789"), std::string::npos) << out;
    const ProgramRun help = RunArguments("--help", m_Dir, &out);
    EXPECT_EQ(help.m_Status, 0);
    EXPECT_NE(out.find("TnfView <file.tnf> [output.html]"), std::string::npos) << out;
    const ProgramRun none = RunArguments("", m_Dir, &out);
    EXPECT_EQ(none.m_Status, 1);
    EXPECT_NE(none.m_Errors.find("Usage"), std::string::npos);
}

TEST_F(TnfViewProgram, ThePageGoesBesideTheInputUnderItsNameByDefault)
{
    const fs::path input = Write("board.v2.tnf", k_Board);
    const ProgramRun run = RunArguments("\"" + input.string() + "\"", m_Dir);
    EXPECT_EQ(run.m_Status, 0) << run.m_Errors;
    EXPECT_TRUE(fs::exists(m_Dir / "board.v2.html"));
}

TEST(TnfPlacement, APartOnTheBottomIsMirroredInXThenTurnedByItsOwnRotation)
{
    // Written rotation 90 of a mirrored part is its own rotation 90. A pin at
    // (1, 0) of the footprint is mirrored to (-1, 0), then turned to (0, -1).
    const tnfview::TnfPlacementMap part = tnfview::TnfPlacementMap::Component(5, 5, 90, true);
    double x = 1, y = 0;
    part.Apply(x, y);
    EXPECT_DOUBLE_EQ(x, 5);
    EXPECT_DOUBLE_EQ(y, 4);
    EXPECT_TRUE(part.IsMirror());
    // On top, a part at 90 degrees turns (1, 0) to (0, 1).
    const tnfview::TnfPlacementMap top = tnfview::TnfPlacementMap::Component(5, 5, 90, false);
    x = 1, y = 0;
    top.Apply(x, y);
    EXPECT_DOUBLE_EQ(x, 5);
    EXPECT_DOUBLE_EQ(y, 6);
    EXPECT_FALSE(top.IsMirror());
}

TEST(TnfBoardReader, PadsPinsAndNetsOfTheSmallBoard)
{
    tnfview::TnfBoard board;
    std::string error;
    ASSERT_TRUE(tnfview::ParseTnfBoard_G(k_Board, board, error)) << error;
    ASSERT_EQ(board.m_Layers.size(), 2u);
    EXPECT_EQ(board.m_Layers[1].m_PlaneVoids, 1);
    EXPECT_EQ(board.m_PadShapes.count("NULLPAD"), 1u);
    ASSERT_EQ(board.m_PadStacks.at("VIA").m_Items.size(), 2u);
    EXPECT_EQ(board.m_PadStacks.at("VIA").m_Items[1].m_Layer, 1);
    EXPECT_DOUBLE_EQ(board.m_PadStacks.at("VIA").m_HoleWidth, 0.3);
    EXPECT_EQ(board.m_PinNets.at("U1.0"), 0);
    ASSERT_EQ(board.m_Nets.size(), 1u);
    EXPECT_EQ(board.m_Nets[0].m_Vias.size(), 1u);
    EXPECT_EQ(board.m_Nets[0].m_Shapes.size(), 2u);
    ASSERT_EQ(board.m_Placements.size(), 1u);
    EXPECT_TRUE(board.m_Placements[0].m_Mirrored);
}
} // namespace
