// ExpeditionToTnf.h - the driver of a translation and the writers of the
// neutral file's blocks.
//
// One ExpeditionToTnf serves one run: Translate reads the job through
// ExpeditionParser, takes over the tables the readers leave, and builds the
// block tree, one writer per block in the file's fixed order; each top-level
// block goes to the output stream as soon as it is complete. The maps and
// sets below are what passes between the writers.
#pragma once

#include "core/lib/vellum/streamio/Block.h"
#include "translators/ExpeditionToTnf/ExpeditionLayout.h"

#include <map>
#include <memory>
#include <set>
#include <vector>

class ExpeditionDiagnostics;
class ExpeditionParser;

// One layer item of a padstack whose pad has further loops.
struct PadStackLayerEntry
{
    PadStackLayerEntry(const AString& padName, const AString& layerLabel, double x, double y, double rotation,
                       const io::CBlockFuncPtr& thermal, const io::CBlockFuncPtr& nonConnect)
        : m_PadName(padName), m_LayerLabel(layerLabel), m_X(x), m_Y(y), m_Rotation(rotation),
          m_Thermal(thermal), m_NonConnect(nonConnect)
    {
    }
    AString m_PadName;
    AString m_LayerLabel; // "Top", "Signal" or "Bottom"
    double m_X;
    double m_Y;
    double m_Rotation;
    io::CBlockFuncPtr m_Thermal;    // shares the item's Thermal
    io::CBlockFuncPtr m_NonConnect; // shares the item's NonConnect
};

class ExpeditionToTnf
{
public:
    ExpeditionToTnf();
    ~ExpeditionToTnf();
    ExpeditionToTnf(const ExpeditionToTnf&) = delete;
    ExpeditionToTnf& operator=(const ExpeditionToTnf&) = delete;

    // Performs one run: reads the job in directory and writes outputFile with
    // the neutral file's extension. In interactive mode success is reported
    // in a message box.
    void Translate(const AString& directory, const AString& outputFile, bool interactive);

    // The two halves of a run, for a caller that wants the text somewhere
    // else or not at all, such as the checking program. ReadJob reads the job
    // and takes over what the readers leave (steps 1 to 3); a job that cannot
    // be read ends the run through the parser's file-error handler.
    // WriteNeutralFile builds the tree and writes it onto out (steps 7 to 18)
    // with the given date text. A sink, when given, hears what the readers
    // and writers drop; nothing written depends on it.
    void ReadJob(const AString& directory, ExpeditionDiagnostics* diagnostics = nullptr);
    void WriteNeutralFile(io::CAbstract_ostream& out, const AString& date);
    // Whether some placed cells were not in the cell library.
    bool HasMissingCells() const;

    // The date text of the file: ctime's local time without its line feed.
    static AString MakeDateText();

    // Block writers, in the order the run calls them.
    io::CBlockPtr WritePadShapes(ElementList& elements);
    io::CBlockPtr WritePadStacks(ElementList& elements);
    void ExpandPins(ElementList& elements);
    io::CBlockPtr WriteFootprints(ElementList& elements);
    io::CBlockPtr WriteComponents(ElementList& elements);
    // Writes LayoutData into the root as its blocks are complete.
    void WriteLayoutData(ElementList& elements, io::CBlock_stream& root);
    // Writes the Netlist block into the layout cell an item at a time.
    void WriteNetlist(ElementList& elements, io::CBlock_stream& layoutCell);
    io::CBlockPtr WriteLayers(ElementList& elements);
    io::CBlockPtr WriteLayoutComponents(ElementList& elements);
    // Writes LayoutNets into the layout one net at a time, freeing each net's
    // copper once it is written.
    void WriteLayoutNets(ElementList& elements, io::CBlock_stream& layout);
    io::CBlockPtr WritePhysicalDimensions(ElementList& elements);

    int m_PhysicalLayers = 0;
    int m_NextShapeId = 0; // running id of geometric items; the first is 1
    ExpeditionPlaneConnection* m_DefaultViaConnection = nullptr;
    ExpeditionPlaneConnection* m_DefaultThruPadConnection = nullptr;
    ExpeditionPlaneConnection* m_DefaultSmdPadConnection = nullptr;
    std::set<AString> m_UsedNames;
    std::set<AString> m_UsedPadStacks;
    std::set<AString> m_UsedPads;
    std::map<AString, ExpeditionPartValues*> m_PartValues;
    std::map<int, AString> m_LayerNames;
    std::map<AString, AString> m_PartNames;
    std::map<AString, std::vector<ExpeditionBaseElement*>> m_PadLoops;
    std::map<AString, std::vector<PadStackLayerEntry*>> m_PadStackLayers;
    std::map<AString, std::vector<AString>> m_PadStackExtras;
    std::set<AString> m_OppSidePadStacks;
    std::set<AString> m_ReservedRefDes;
    std::map<AString, AString> m_PartTypes;
    // Where the writers report what they drop; null in the translator.
    ExpeditionDiagnostics* m_Diagnostics = nullptr;

    // The first "U%d" from counter on that no component's reference
    // designator holds; the counter is left at the number returned.
    AString NextFreeRefDes(int& counter) const;
    // The component's REF_DES text (the first or the last of them), or, for
    // one without, the next free name of the writer's own counter.
    AString RefDesOrNextFree(const ExpeditionComponent& component, bool last, int& counter) const;
    // The padstack of the named pin of the first footprint of that name that
    // has it (names without regard to case), or empty.
    AString FindFootprintPadStack(const ElementList& elements, const AString& footprintName,
                                  const AString& pinName) const;
    static AString ComponentPrefix(const ExpeditionComponent& component);

    // Pieces shared by the writers.
    // An empty function of a name that a layout repeats millions of times;
    // each such name is held once for the whole file.
    enum RepeatedName
    {
        k_Vertex,
        k_Arc,
        k_Graphics,
        k_Path,
        k_Via,
        k_Circle,
        k_Polygon,
        k_RepeatedNames
    };
    static io::CBlock_func NewFunc(RepeatedName name);
    static void AddVertices(io::CBlock_func& function, const std::vector<ExpeditionVertex*>& vertices);
    // vertex(x, y, w, w, "Round", "Radiallymitered", w) per vertex of a line.
    static void AddPathVertices(io::CBlock_func& function, const std::vector<ExpeditionVertex*>& vertices,
                                double width);
    static void AddPathVertices(io::CBlock_func& function, const std::vector<ExpeditionVertex>& vertices,
                                double width);

private:
    // What a run built: the model and the reader.
    ElementList m_RunElements;
    std::unique_ptr<ExpeditionParser> m_RunParser;

    void WriteBoardOutline(io::CBlock& block, ExpeditionShapes& outline);
    void WriteBoardCut(io::CBlock& block, ExpeditionShapes& contour);
    void WritePlaneLines(io::CBlock_stream& entry, const ExpeditionLayoutNet& net);
    void WritePlaneShapes(io::CBlock_stream& entry, const ExpeditionLayoutNet& net);
    void WritePolygonWithVoids(io::CBlock_stream& entry, const AString& layer,
                               const ExpeditionPlaneShape& shape);
    void ExpandNetPins(ElementList& elements);
    struct NetlistPins;
    struct PartValuesIndex;
    io::CBlockPtr WriteComponentProperties(const ExpeditionComponent& component, const AString& partNumber,
                                           const PartValuesIndex& partValues);
    void WriteNets(ElementList& elements, NetlistPins& pins, io::CBlock_stream& block);
    struct PadStackLookup;
    io::CBlockFuncPtr MakeHoleItem(const ExpeditionPadStack& padStack, const PadStackLookup& lookup);
    io::CBlockFuncPtr MakeLayerItem(const ExpeditionPadStack& padStack, const wchar_t* label, int layer,
                                    const PadStackLookup& lookup, bool& hasLoops,
                                    std::vector<PadStackLayerEntry*>& slots);
    void StoreLayerSlots(const AString& name, bool hasLoops, std::vector<PadStackLayerEntry*>& slots);
    io::CBlockPtr WriteMirroredPadStack(const ExpeditionPadStack& padStack, const PadStackLookup& lookup);
    void WriteExtraPadStacks(io::CBlock& block);
    io::CBlockFuncPtr MakeExtraLayerItem(const std::vector<PadStackLayerEntry*>& slots, size_t j, size_t k);
    bool AddPadShape(io::CBlock_func& entry, ExpeditionPad& pad);
    void TakeOverFromParser(ExpeditionParser& parser);
    static int BoundedPhysicalLayers(const ExpeditionParser& parser);
    void ReserveReferenceDesignators(ElementList& elements);
    // What the writers have put into the file, kept only for a sink: the
    // names that later blocks refer to.
    std::set<AString> m_WrittenPadStacks;
    std::set<AString> m_WrittenFootprints;
    void CheckPadStackWritten(const AString& padStack, const AString& name, const std::string& askedBy);
};
