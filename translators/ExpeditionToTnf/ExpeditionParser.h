// ExpeditionParser.h - the reader object of an Expedition job.
//
// One parser reads one job directory: a reader per file, in a fixed order,
// each turning records into elements of the design model (in millimetres) and
// leaving the tables that later readers and the writers need in the fields
// below. The parser owns none of the elements; its vectors are a second,
// non-owning view of the element list.
#pragma once

#include "core/lib/vellum/LongFileName.h"
#include "core/lib/vellum/streamio/TokenStream.h"
#include "translators/ExpeditionToTnf/ExpeditionLayout.h"
#include "translators/ExpeditionToTnf/ExpeditionNameIndex.h"

#include <map>
#include <set>
#include <utility>
#include <vector>

// The part being read from PDB.hkp.
struct ExpeditionPartWork;

class ExpeditionParser
{
public:
    explicit ExpeditionParser(const AString& directory);
    ~ExpeditionParser();
    ExpeditionParser(const ExpeditionParser&) = delete;
    ExpeditionParser& operator=(const ExpeditionParser&) = delete;

    // Reads the whole job into the element list. Returns only on success: a
    // missing required file or a corrupt token run ends the process.
    void Read(ElementList& elements);

    // The reading order, one step per file or pass.
    void ReadJobPrefs(ElementList& elements);
    void ReadPadstacks(ElementList& elements);
    void LookForNetProps();
    void ReadCells(ElementList& elements);
    void ReadLayout(ElementList& elements);
    bool ReadPlanes(double factor);
    void CompleteNets();
    void ReadNetClasses();
    void CleanPlaneShapes();
    void ReadPartDatabase();
    void CollectUsedPads(ElementList& elements);

    // Opens a file of the job under its given spelling or in lower case
    // (lowerName, when given, is the lower-case spelling to try). A required
    // file under neither spelling ends the run with "File I/O Error".
    // Returns false for a missing optional file.
    bool OpenJobFile(const AString& name, const AString& lowerName, bool required, LongFileName& found) const;

    // The next keyword behind its dots, and its level: the number of reads it
    // took to get past the lone dots. Eight reads are the limit; a longer run
    // of dots ends the process as a corrupt file. A token that begins with a
    // dot (".4_WEB_ROUND_THERMAL") takes the rest of its line.
    static int NextToken(io::CToken_istream& stream, AString& token);
    // The plainer form: reads past the lone dots, with no limit and no repair
    // of a leading dot. Returns the number of reads.
    static int NextPlainToken(io::CToken_istream& stream, AString& token);
    // The factor to millimetres of the text behind a units keyword.
    static double UnitFactor(const AString& text);
    // Reads the XY list of a polyline, each point times factor.
    static void ReadPolyline(io::CToken_istream& stream, std::vector<ExpeditionVertex*>& vertices,
                             double factor);
    // Reads the XYR list of a polyarc, each value times factor. A triple with
    // a non-zero radius is the centre of the arc from the triple before it to
    // the triple behind it (the first one, at the end of the list); the sign
    // of the radius gives the sense, its size is not used.
    static void ReadPolyarc(io::CToken_istream& stream, std::vector<ExpeditionVertex*>& vertices, double factor);
    // name if taken holds no equal name (without regard to case), else the
    // first free "name_1", "name_2", ...
    static AString MakeUniqueName(const AString& name, const std::vector<AString>& taken);

    // Look-ups by name without regard to case; the first match in list order,
    // or null.
    ExpeditionPad* FindPad(const AString& name);
    ExpeditionPadStack* FindPadStack(const ElementList& elements, const AString& name);
    ExpeditionFootprint* FindFootprint(const ElementList& elements, const AString& name);
    ExpeditionLayoutNet* FindNet(const AString& name);

    // Layer names of the stack-up; a missing entry is inserted empty.
    AString GetTopLayerName();
    AString GetBottomLayerName();
    // "MNT_LYR" (any case) is the top layer, every other word the bottom one.
    AString GetMountLayerName(const AString& word);
    double GetTolerance() const { return m_Tolerance; }

    // Clearances of a layer from the first rule of that layer (by name,
    // without regard to case), falling back from field to field; a layer
    // without rule gets k_DefaultClearance.
    double GetPlaneClearance(const AString& layerName) const;
    double GetPadClearance(const AString& layerName) const;
    // The double just below 0.1.
    static constexpr double k_DefaultClearance = 0.09999999999999999;

    // Shows the "File I/O Error" box with the text and ends the process with
    // exit status 0: the one way a reader stops a run.
    [[noreturn]] static void EndWithFileError(const AString& text);

    AString m_Directory;
    int m_PhysicalLayers = 0;
    ExpeditionPlaneConnection* m_DefaultViaConnection = nullptr;
    ExpeditionPlaneConnection* m_DefaultThruPadConnection = nullptr;
    ExpeditionPlaneConnection* m_DefaultSmdPadConnection = nullptr;
    std::map<int, AString> m_LayerNames;                    // conductive number to layer name
    std::vector<ExpeditionClearanceRule*> m_ClearanceRules; // subrules of NetClass.hkp
    std::map<AString, std::set<AString>> m_CellPadStacks;   // cell name to its pins' padstacks
    std::vector<AString> m_MissingCells;
    std::set<AString> m_UsedNames;
    std::set<AString> m_UsedPadStacks;
    std::set<AString> m_UsedPads;
    std::map<AString, ExpeditionPartValues*> m_PartValues;
    std::map<AString, AString> m_PartNames;
    std::map<AString, std::vector<ExpeditionPad*>> m_PadLoops;
    std::set<AString> m_OppSidePadStacks;
    std::vector<std::pair<AString, AString>> m_PlaneNets; // net name, layer name
    ExpeditionShapes* m_RouteBorder = nullptr;
    std::vector<ExpeditionLayoutNet*> m_Nets;
    std::vector<ExpeditionPadStack*> m_PadStacks;
    std::vector<ExpeditionPad*> m_Pads;
    std::map<int, ExpeditionLayer*> m_Layers;
    std::map<AString, AString> m_PartTypes;
    bool m_HasNetProps = true;
    double m_Tolerance = 1e-6;
    double m_LayoutUnitFactor = 1.0;

private:
    // The records of JobPrefs.hkp.
    ExpeditionPlaneConnection* ReadPlaneConnection(io::CToken_istream& stream, double factor);
    void ReadUserLayers(io::CToken_istream& stream, AString& token, ElementList& elements);
    void ReadStackup(io::CToken_istream& stream, AString& token, double factor, ElementList& elements);
    void ReadConductiveLayer(io::CToken_istream& stream, AString& token, double factor,
                             ElementList& elements);
    void ReadDielectricLayer(io::CToken_istream& stream, AString& token, double factor,
                             ElementList& elements);

    // The records of NetClass.hkp and PDB.hkp.
    void ReadMasterScheme(io::CToken_istream& stream, AString& token, int& level, double factor,
                          double values[]);
    const ExpeditionClearanceRule* FindClearanceRule(const AString& layerName) const;
    void ReadPartProperty(io::CToken_istream& stream, ExpeditionPartWork& part);
    void ClosePart(ExpeditionPartWork& part);

    ExpeditionNameIndex<ExpeditionPad> m_PadIndex;
    ExpeditionNameIndex<ExpeditionPadStack> m_PadStackIndex;
    ExpeditionNameIndex<ExpeditionFootprint> m_FootprintIndex;
    ExpeditionNameIndex<ExpeditionLayoutNet> m_NetIndex;
};
