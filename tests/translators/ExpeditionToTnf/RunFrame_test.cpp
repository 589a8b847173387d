// Whole-program tests of a run: the tree of the output file, its name, and
// how a run ends without its files or without its arguments.
#include "JobFixture.h"

#include <algorithm>
#include <cstdlib>

using RunFrame = JobFixture;

TEST_F(RunFrame, WritesTheWholeTreeInItsOrder)
{
    WriteMinimalJob();
    ASSERT_EQ(Translate("board.txt"), 0);
    // The extension the user gave is replaced, and nothing else is left.
    EXPECT_FALSE(fs::exists(OutputPath("board.txt")));
    ASSERT_TRUE(fs::exists(OutputPath("board.tnf")));
    EXPECT_FALSE(fs::exists(OutputPath("board.tnf.tmp")));
    EXPECT_TRUE(Errors().empty()) << Errors(); // silent on success

    const std::string text = OutputText("board.tnf");
    EXPECT_EQ(text.rfind("$begin 'TarvexNeutralFile'\n", 0), 0u);
    EXPECT_NE(text.find("\tVersion('4', '0')\n\tSource('MentorExpedition', 'Version 2002', '')\n\tDate='"),
              std::string::npos);

    io::CBlockPtr root = OutputTree("board.tnf");
    EXPECT_EQ(ChildNames(*root),
              (std::vector<std::string>{"Version", "Source", "Date", "DefaultUnits", "PadShapes", "PadStacks",
                                        "Symbols", "Footprints", "Materials", "Components", "LayoutData"}));
    const io::CBlock* layoutData = ChildBlock(*root, L"LayoutData");
    ASSERT_NE(layoutData, nullptr);
    EXPECT_EQ(ChildNames(*layoutData), (std::vector<std::string>{"LayoutCell", "Design"}));
    const io::CBlock* cell = ChildBlock(*layoutData, L"LayoutCell");
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(ChildNames(*cell), (std::vector<std::string>{"CellName", "Netlist", "Layout"}));
    EXPECT_EQ(ChildNames(*ChildBlock(*cell, L"Layout")),
              (std::vector<std::string>{"DefaultUnits", "Layers", "LayoutPorts", "LayoutComponents",
                                        "LayoutNets"}));
    const io::CBlock* design = ChildBlock(*layoutData, L"Design");
    ASSERT_NE(design, nullptr);
    EXPECT_EQ(ChildNames(*design), (std::vector<std::string>{"Name", "TopLayout", "Instances"}));
    EXPECT_EQ(ChildNames(*ChildBlock(*design, L"TopLayout")),
              (std::vector<std::string>{"Layers", "PhysicalDimensions"}));

    // The fixed values.
    AString value;
    ASSERT_NE(root->FindNamedValue(L"DefaultUnits"), nullptr);
    root->FindNamedValue(L"DefaultUnits")->Value().Query(value);
    EXPECT_EQ(value, AString(L"mm"));
    cell->FindNamedValue(L"CellName")->Value().Query(value);
    EXPECT_EQ(value, AString(L"ExpeditionBoard"));
    design->FindNamedValue(L"Name")->Value().Query(value);
    EXPECT_EQ(value, AString(L"ExpeditionBoard"));
    // The date reads like ctime's text, "Www Mmm dd hh:mm:ss yyyy".
    root->FindNamedValue(L"Date")->Value().Query(value);
    EXPECT_EQ(value.size(), 24u);
    EXPECT_EQ(value[13], L':');
    // With no pads in use, the pad shapes hold just the null pad.
    EXPECT_EQ(ChildNames(*ChildBlock(*root, L"PadShapes")), (std::vector<std::string>{"'NULLPAD'"}));
    EXPECT_TRUE(ChildBlock(*root, L"Symbols")->empty());
}

TEST_F(RunFrame, FindsFilesUnderTheirLowerCaseSpelling)
{
    WriteFile("jobprefs.hkp", "\n");
    WriteFile("padstack.hkp", "\n");
    WriteFile("cell.hkp", "\n");
    WriteFile("layout.hkp", "\n");
    WriteFile("pdb.hkp", "\n");
    ASSERT_EQ(Translate(), 0);
    EXPECT_TRUE(fs::exists(OutputPath()));
    EXPECT_TRUE(Errors().empty()) << Errors();
}

TEST_F(RunFrame, MissingRequiredFileEndsTheRunWithoutOutput)
{
    // Each required file in turn, in the reading order.
    for (const char* missing : {"JobPrefs.hkp", "Padstack.hkp", "Cell.hkp", "Layout.hkp", "PDB.hkp"})
    {
        fs::remove_all(JobDir());
        fs::create_directories(JobDir());
        WriteMinimalJob({missing});
        EXPECT_EQ(Translate(), 0);
        EXPECT_FALSE(fs::exists(OutputPath()));
        // The job directory and the file name are joined with "/" on every
        // system.
        AString lower(missing);
        const std::string text = JobDir().string() + "/" + lower.ToLower().AsAnsi().str() + " not found";
        EXPECT_EQ(Errors(), "File I/O Error: " + text + "\n");
#ifdef _WIN32
        // The same text in one box, also in silent mode.
        if (WindowsRun::CanOpenWindows())
        {
            EXPECT_EQ(Dialogs(), std::vector<std::string>{"File I/O Error: " + text});
        }
#endif
    }
    // The optional files are not missed.
    fs::remove_all(JobDir());
    fs::create_directories(JobDir());
    WriteMinimalJob();
    EXPECT_EQ(Translate(), 0);
    EXPECT_TRUE(fs::exists(OutputPath()));
}

#ifdef _WIN32
TEST_F(RunFrame, OtherArgumentCountsOpenTheFolderDialog)
{
    if (!WindowsRun::CanOpenWindows())
        GTEST_SKIP() << "no window driver: the dialogs cannot open";
    WriteMinimalJob();
    // The folder dialog is cancelled; the program ends without a word.
    for (const std::string& args : std::vector<std::string>{"", "\"" + JobDir().string() + "\"", "a b c"})
    {
        EXPECT_EQ(Run(args), 0);
        ASSERT_EQ(Dialogs().size(), 1u) << args;
        EXPECT_NE(Dialogs()[0].find("Select an ASCII Directory"), std::string::npos) << Dialogs()[0];
        EXPECT_TRUE(Errors().empty()) << Errors();
    }
    EXPECT_FALSE(fs::exists(OutputPath()));
}
#else
TEST_F(RunFrame, OtherArgumentCountsAskAndEndQuietlyWithoutAWayToAsk)
{
    WriteMinimalJob();
    // No terminal on standard input and no display: only the usage line.
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    for (const std::string& args : std::vector<std::string>{"", "\"" + JobDir().string() + "\"", "a b c"})
    {
        EXPECT_EQ(Run(args), 0);
        EXPECT_EQ(Errors(), "usage: ExpeditionToTnf <job-directory> <output.tnf>\n") << args;
    }
    EXPECT_FALSE(fs::exists(OutputPath()));
}
#endif

#ifndef _WIN32
TEST_F(RunFrame, AtATerminalItAsksAndReportsMissingCells)
{
    if (std::system("command -v script >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "no script(1) to give the program a terminal";
    WriteMinimalJob();
    // A placed cell that the cell library lacks.
    WriteFile("Layout.hkp", ".FILETYPE LAYOUT\n.PACKAGE_CELL \"GHOST\"\n ..XY (1, 1)\n ..ROTATION 0\n");
    const fs::path session = JobDir().parent_path() / "session.txt";
    const std::string command =
        "printf '%s\\n%s\\n' \"" + JobDir().string() + "\" \"" + OutputPath("asked.txt").string() +
        "\" | script -qec \"'" TNF_TRANSLATOR_EXE "'\" /dev/null >\"" + session.string() + "\" 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::ifstream in(session);
    std::stringstream text;
    text << in.rdbuf();
    const std::string seen = text.str();
    EXPECT_NE(seen.find("Select an ASCII Directory: "), std::string::npos) << seen;
    EXPECT_NE(seen.find("Save tnf file as ["), std::string::npos) << seen;
    EXPECT_NE(
        seen.find("Success Message: asked.tnf written successfully.\r\r\nSome cells were missing in the "
                  "database and were ignored"),
        std::string::npos)
        << seen;
    EXPECT_TRUE(fs::exists(OutputPath("asked.tnf")));
}
#endif
