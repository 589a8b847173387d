// ExpeditionToTnf.cpp - the order of a run and the root of the neutral file.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include "core/lib/vellum/LongFileName.h"
#include "core/lib/vellum/streamio/TokenStream.h"
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionUserInterface.h"

#include <algorithm>
#include <ctime>
#include <memory>

using io::CBlock_func;
using io::CBlock_value;
using io::CBlockFuncPtr;
using io::CBlockPtr;
using io::CNamed_value_manip;

ExpeditionToTnf::ExpeditionToTnf() = default;

ExpeditionToTnf::~ExpeditionToTnf()
{
    m_RunParser.reset();
    for (auto it = m_RunElements.rbegin(); it != m_RunElements.rend(); ++it)
        delete *it;
    for (auto& [name, slots] : m_PadStackLayers)
        for (PadStackLayerEntry* slot : slots)
            delete slot;
    // Translate frees the part values at its end; a run in two halves leaves
    // them here.
    for (auto& [part, values] : m_PartValues)
        delete values;
    delete m_DefaultSmdPadConnection;
    delete m_DefaultThruPadConnection;
    delete m_DefaultViaConnection;
}

AString ExpeditionToTnf::MakeDateText()
{
    const std::time_t now = std::time(nullptr);
    const char* text = std::ctime(&now);
    AString date(text ? text : "");
    const size_t lineFeed = date.find(L'\n', 0);
    if (lineFeed != AString::npos && lineFeed > 0)
        date = date.substr(0, lineFeed);
    return date;
}

namespace
{
// No board is built with more conductive layers than this; a stack-up record
// with a higher number is no evidence for a bigger stack-up.
constexpr int k_MostConductiveLayers = 256;
} // namespace

// PHYSICAL_LAYERS is the highest conductive number of the stack-up. Every
// through padstack gets one item per layer up to it, so a hostile count would
// make a file of gigabytes out of a few bytes; it is held to the conductive
// layers that the stack-up really has, and to no less than none.
int ExpeditionToTnf::BoundedPhysicalLayers(const ExpeditionParser& parser)
{
    int highest = 0;
    for (const auto& [number, layer] : parser.m_Layers)
        if (number <= k_MostConductiveLayers)
            highest = std::max(highest, number);
    return std::clamp(parser.m_PhysicalLayers, 0, highest);
}

void ExpeditionToTnf::TakeOverFromParser(ExpeditionParser& parser)
{
    m_PhysicalLayers = BoundedPhysicalLayers(parser);
    // The driver owns the connection records from now on.
    m_DefaultViaConnection = parser.m_DefaultViaConnection;
    m_DefaultThruPadConnection = parser.m_DefaultThruPadConnection;
    m_DefaultSmdPadConnection = parser.m_DefaultSmdPadConnection;
    parser.m_DefaultViaConnection = nullptr;
    parser.m_DefaultThruPadConnection = nullptr;
    parser.m_DefaultSmdPadConnection = nullptr;
    m_UsedNames = parser.m_UsedNames;
    m_UsedPadStacks = parser.m_UsedPadStacks;
    m_UsedPads = parser.m_UsedPads;
    m_PartValues = parser.m_PartValues;
    parser.m_PartValues.clear();
    m_LayerNames = parser.m_LayerNames;
    m_PartNames = parser.m_PartNames;
    for (const auto& [pad, loops] : parser.m_PadLoops)
        m_PadLoops[pad].assign(loops.begin(), loops.end());
    m_OppSidePadStacks = parser.m_OppSidePadStacks;
    m_PartTypes = parser.m_PartTypes;
}

void ExpeditionToTnf::ReserveReferenceDesignators(ElementList& elements)
{
    for (ExpeditionBaseElement* element : elements)
    {
        ExpeditionComponent* component = element->AsComponent();
        if (!component)
            continue;
        // The last REF_DES text of the component counts.
        const AString refDes = component->TextOfType(L"REF_DES", true);
        if (!refDes.empty() && refDes[0] == L'U')
            m_ReservedRefDes.insert(refDes);
    }
}

void ExpeditionToTnf::Translate(const AString& directory, const AString& outputFile, bool interactive)
{
    // 1-3. Read the whole job and take over what the readers leave.
    ReadJob(directory);

    // 4-6. Date, output name and stream; the file is opened before any block exists.
    const AString date = MakeDateText();
    LongFileName file(outputFile);
    file.ChangeExt(GetFileExtension(3));
    [[maybe_unused]] io::CToken_grammar grammar;
    io::CToken_ostream stream(file, 32);
    stream.SetPrecision(10);

    // 7-18. The tree, onto the stream. The stream writes into a temporary
    // file that only Close puts in place.
    WriteNeutralFile(stream, date);

    // 19-20. Report.
    AString success = file.NameWithExt() + L" written successfully.";
    if (HasMissingCells())
        success += L"\r\nSome cells were missing in the database and were ignored";
    if (interactive)
        ExpeditionUi::ShowMessage_G(AString(L"Success Message"), success);
    stream.Close();

    // 21. The part values were the driver's to free.
    for (auto& [part, values] : m_PartValues)
    {
        delete values;
        values = nullptr;
    }
    // 22. The run is over. What it built is freed with the driver, so that a
    // program about to end can leave that to the system.
}

void ExpeditionToTnf::ReadJob(const AString& directory, ExpeditionDiagnostics* diagnostics)
{
    m_Diagnostics = diagnostics;
    m_RunParser = std::make_unique<ExpeditionParser>(directory);
    m_RunParser->m_Diagnostics = diagnostics;
    m_RunParser->Read(m_RunElements);
    TakeOverFromParser(*m_RunParser);
}

bool ExpeditionToTnf::HasMissingCells() const
{
    return m_RunParser && !m_RunParser->m_MissingCells.empty();
}

void ExpeditionToTnf::WriteNeutralFile(io::CAbstract_ostream& out, const AString& date)
{
    ElementList& elements = m_RunElements;
    out.SetPrecision(10);

    // 7. The root and its head items. The tree of a large board repeats a few
    // names and texts millions of times; they are held once.
    io::CBlock_text_sharing sharedTexts;
    io::CBlock_stream root(out, L"TarvexNeutralFile");
    CBlock_func version(L"Version");
    version << L"4" << L"0";
    root << version;
    CBlock_func source(L"Source");
    source << AString(L"MentorExpedition") << AString(L"Version 2002") << AString();
    root << source;
    AString dateText = date;
    root << CNamed_value_manip<AString>(L"Date", CBlock_value(dateText), &dateText);
    root << CNamed_value_manip<AString>(L"DefaultUnits", CBlock_value(L"mm"));

    // 8. The two names of the unconnected net are left as the model has them:
    // the netlist writer turns "(net0)" into "DUMMY" itself.
    for (ExpeditionBaseElement* element : elements)
        if (ExpeditionLayoutNet* net = element->AsLayoutNet())
            if (net->m_Name.CompareNoCase(L"(net0)") == 0 ||
                net->m_Name.CompareNoCase(L"Unconnected_net") == 0)
                net->m_Name = AString(net->m_Name);

    // 9. Reference designators that begin with "U" are taken.
    ReserveReferenceDesignators(elements);

    // 10-18. The blocks, in the file's order. Each goes to the stream as soon
    // as it is complete and is let go, so that a large board is never held as
    // a model and a whole tree side by side; the text is the one the whole
    // tree would give. A sink hears which block is being built.
    const auto writing = [this](const char* block)
    {
        if (m_Diagnostics)
            m_Diagnostics->Writing(block);
    };
    writing("PadShapes");
    root << WritePadShapes(elements);
    writing("PadStacks");
    root << WritePadStacks(elements);
    writing("Footprints");
    ExpandPins(elements);
    root << CBlockPtr(L"Symbols");
    root << WriteFootprints(elements);
    root << CBlockPtr(L"Materials");
    writing("Components");
    root << WriteComponents(elements);
    writing("LayoutData");
    WriteLayoutData(elements, root);
    root.Close();
    writing(nullptr);
}

void ExpeditionToTnf::WriteLayoutData(ElementList& elements, io::CBlock_stream& root)
{
    io::CBlock_stream layoutData(root, L"LayoutData");
    io::CBlock_stream layoutCell(layoutData, L"LayoutCell");
    layoutCell << CNamed_value_manip<AString>(L"CellName", CBlock_value(L"ExpeditionBoard"));

    // The netlist first, then the layout: the running shape id counts through
    // the layout nets before it reaches the physical dimensions.
    WriteNetlist(elements, layoutCell);
    {
        io::CBlock_stream layout(layoutCell, L"Layout");
        layout << CNamed_value_manip<AString>(L"DefaultUnits", CBlock_value(L"mm"));
        layout << WriteLayers(elements);
        layout << CBlockPtr(L"LayoutPorts");
        layout << WriteLayoutComponents(elements);
        WriteLayoutNets(elements, layout);
    }
    layoutCell.Close();

    io::CBlock_stream design(layoutData, L"Design");
    design << CNamed_value_manip<AString>(L"Name", CBlock_value(L"ExpeditionBoard"));
    {
        io::CBlock_stream topLayout(design, L"TopLayout");
        topLayout << WriteLayers(elements);
        topLayout << WritePhysicalDimensions(elements);
    }
    design << CBlockPtr(L"Instances");
}
