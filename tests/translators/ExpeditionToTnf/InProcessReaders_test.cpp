// Each reader of the job fed its text from a string, in this process: the
// bundled four-layer example file by file, a planes file behind it, and the
// two ways a run ends (a missing required file, a run of dots) caught by the
// throwing file-error handler instead of ending the tests.
#include "JobFixture.h"

#include "translators/ExpeditionToTnf/ExpeditionParser.h"

namespace
{
std::string ExampleFile(const char* name)
{
    std::ifstream in(fs::path(TNF_SOURCE_DIR) / "examples" / "Demo4Layer" / name, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    EXPECT_FALSE(text.str().empty()) << name;
    return text.str();
}

// Installs the throwing handler for the life of a test, and puts the earlier
// one back.
class ThrowingFileErrors
{
public:
    ThrowingFileErrors() : m_Earlier(ExpeditionParser::SetFileErrorHandler(&ExpeditionParser::ThrowFileError))
    {
    }
    ~ThrowingFileErrors() { ExpeditionParser::SetFileErrorHandler(m_Earlier); }

private:
    ExpeditionParser::FileErrorHandler m_Earlier;
};

struct OwnedElements
{
    ElementList m_Elements;
    ~OwnedElements() { DeleteOwned_G(m_Elements); }
};
} // namespace

TEST(InProcessReaders, EveryFileKindFromAString)
{
    // No directory: nothing may be looked for on disk.
    ExpeditionParser parser(AString(L"/nonexistent-job-directory"));
    OwnedElements owned;
    ElementList& elements = owned.m_Elements;

    io::CToken_istream jobPrefs(ExampleFile("JobPrefs.hkp"), AString(L"JobPrefs.hkp"));
    parser.ReadJobPrefs(jobPrefs, elements);
    EXPECT_EQ(parser.m_PhysicalLayers, 4);
    EXPECT_EQ(parser.m_LayerNames.size(), 4u);

    io::CToken_istream padstacks(ExampleFile("Padstack.hkp"), AString(L"Padstack.hkp"));
    parser.ReadPadstacks(padstacks, elements);
    EXPECT_FALSE(parser.m_PadStacks.empty());
    EXPECT_FALSE(parser.m_Pads.empty());

    io::CToken_istream cells(ExampleFile("Cell.hkp"), AString(L"Cell.hkp"));
    parser.ReadCells(cells, elements);
    EXPECT_FALSE(parser.m_CellPadStacks.empty());

    io::CToken_istream layout(ExampleFile("Layout.hkp"), AString(L"Layout.hkp"));
    parser.ReadLayout(layout, elements, true);
    ExpeditionLayoutNet* net = parser.FindNet(L"+3V3");
    ASSERT_NE(net, nullptr);
    EXPECT_FALSE(parser.m_UsedNames.empty());

    // A plane of the net on the second conductive layer.
    io::CToken_istream planes(std::string("$begin 'Planes'\n"
                                          "\t$begin 'P1'\n\t\tNet('+3V3')\n\t\tLayer('2')\n\t\twidth(0)\n"
                                          "\t\tSeg(0, 0)\n\t\tSeg(10, 0)\n\t\tSeg(10, 10)\n\t\tSeg(0, 10)\n"
                                          "\t\tSeg(0, 0)\n\t$end 'P1'\n$end 'Planes'\n"),
                              AString(L"Planes.hkp"));
    const AString layer = parser.m_LayerNames[2];
    const size_t before = net->m_PlaneShapes[layer].size();
    parser.ReadPlanes(planes, 1.0);
    EXPECT_EQ(net->m_PlaneShapes[layer].size(), before + 1);

    io::CToken_istream netClass(ExampleFile("NetClass.hkp"), AString(L"NetClass.hkp"));
    parser.ReadNetClasses(netClass);
    EXPECT_FALSE(parser.m_ClearanceRules.empty());

    io::CToken_istream partDatabase(ExampleFile("PDB.hkp"), AString(L"PDB.hkp"));
    parser.ReadPartDatabase(partDatabase);
    EXPECT_EQ(parser.m_PartNames.count(L"CAP-0603-10U-X5R-10V"), 1u);
}

TEST(InProcessReaders, TheRunEndsThroughTheInstalledHandler)
{
    ThrowingFileErrors throwing;
    OwnedElements owned;

    // A required file under neither spelling: the second spelling is named.
    ExpeditionParser missing(AString(L"/nonexistent-job-directory"));
    try
    {
        missing.ReadJobPrefs(owned.m_Elements);
        ADD_FAILURE() << "a missing JobPrefs.hkp must end the run";
    }
    catch (const ExpeditionFileError& error)
    {
        EXPECT_EQ(error.GetText(), L"/nonexistent-job-directory/jobprefs.hkp not found");
    }

    // Eight reads are the limit: seven dots read, eight end the run.
    ExpeditionParser parser(AString(L"/nonexistent-job-directory"));
    io::CToken_istream seven(std::string("\n. . . . . . . KEYWORD 1\n"), AString(L"PDB.hkp"));
    EXPECT_NO_THROW(parser.ReadPartDatabase(seven));
    io::CToken_istream eight(std::string("\n. . . . . . . . KEYWORD 1\n"), AString(L"PDB.hkp"));
    try
    {
        parser.ReadPartDatabase(eight);
        ADD_FAILURE() << "eight dots must end the run";
    }
    catch (const ExpeditionFileError& error)
    {
        EXPECT_EQ(error.GetText(), L"Token read failure! File may be corrupted");
    }
}

#ifndef _WIN32
// On Windows the default ending opens a message box, which a death test
// cannot answer; the whole-program tests see it there.
TEST(InProcessReaders, TheDefaultEndingIsTheFileErrorBoxAndExitStatusZero)
{
    // The default handler ends the process: seen from outside, in a death test.
    ExpeditionParser::SetFileErrorHandler(nullptr);
    EXPECT_EXIT(
        {
            OwnedElements owned;
            ExpeditionParser parser(AString(L"/nonexistent-job-directory"));
            parser.ReadCells(owned.m_Elements);
        },
        ::testing::ExitedWithCode(0), "File I/O Error: /nonexistent-job-directory/cell.hkp not found");
}
#endif
