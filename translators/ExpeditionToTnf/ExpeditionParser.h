// ExpeditionParser.h - the reader object of an Expedition job.
//
// One parser reads one job directory: a reader per file, in a fixed order,
// each turning records into elements of the design model (in millimetres) and
// leaving the tables that later readers and the writers need in the fields
// below. The parser owns none of the elements; its vectors are a second,
// non-owning view of the element list.
#pragma once

#include "core/lib/vellum/LongFileName.h"
#include "core/lib/vellum/streamio/Block.h"
#include "core/lib/vellum/streamio/TokenStream.h"
#include "lib/math/geometry/Polygon.h"
#include "translators/ExpeditionToTnf/ExpeditionLayout.h"
#include "translators/ExpeditionToTnf/ExpeditionNameIndex.h"

#include <optional>

#include <map>
#include <set>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

// The part being read from PDB.hkp.
struct ExpeditionPartWork;
struct ExpeditionReaderCursor;
class ExpeditionDiagnostics;

// What ExpeditionParser::ThrowFileError throws: the message of a run that
// cannot go on, without the box and without ending the process.
class ExpeditionFileError : public std::runtime_error
{
public:
    explicit ExpeditionFileError(const AString& text) : std::runtime_error(text.AsAnsi().str()), m_Text(text)
    {
    }
    const AString& GetText() const { return m_Text; }

private:
    AString m_Text;
};

class ExpeditionParser
{
public:
    explicit ExpeditionParser(const AString& directory);
    ~ExpeditionParser();
    ExpeditionParser(const ExpeditionParser&) = delete;
    ExpeditionParser& operator=(const ExpeditionParser&) = delete;

    // Reads the whole job into the element list. Returns only on success: a
    // missing required file or a corrupt token run ends the run through the
    // file-error handler below.
    void Read(ElementList& elements);

    // The reading order, one step per file or pass. Each file reader comes
    // twice: the form without a stream finds and opens the job's file, the
    // form with one reads whatever text it is given, so that a test or a
    // fuzzer can feed a reader a string in-process:
    //     io::CToken_istream stream(std::string(".UNITS MM\n..."), AString(L"Cell.hkp"));
    //     parser.ReadCells(stream, elements);
    void ReadJobPrefs(ElementList& elements);
    void ReadJobPrefs(io::CToken_istream& stream, ElementList& elements);
    void ReadPadstacks(ElementList& elements);
    void ReadPadstacks(io::CToken_istream& stream, ElementList& elements);
    void LookForNetProps();
    void ReadCells(ElementList& elements);
    void ReadCells(io::CToken_istream& stream, ElementList& elements);
    void ReadLayout(ElementList& elements);
    // hasPlanesFile: whether the job has a Planes.hkp, which takes over the
    // plane geometry from the layout's generated data.
    void ReadLayout(io::CToken_istream& stream, ElementList& elements, bool hasPlanesFile);
    bool ReadPlanes(double factor);
    void ReadPlanes(io::CToken_istream& stream, double factor);
    void CompleteNets();
    void ReadNetClasses();
    void ReadNetClasses(io::CToken_istream& stream);
    void CleanPlaneShapes(ElementList& elements);
    void ReadPartDatabase();
    void ReadPartDatabase(io::CToken_istream& stream);
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
    // The point behind an XY keyword: "(x, y)", or the older "x, y".
    static void ReadXY(io::CToken_istream& stream, double& x, double& y);
    // "(x1, y1) (x2, y2)" of a rectangle, and "(x, y)" of a circle's centre.
    static void ReadCorners(io::CToken_istream& stream, double& x1, double& y1, double& x2, double& y2);
    static void ReadCentre(io::CToken_istream& stream, double& x, double& y);
    // The factor to millimetres of the text behind a units keyword.
    static double UnitFactor(const AString& text);
    // Reads the XY list of a polyline, each point times factor.
    static void ReadPolyline(io::CToken_istream& stream, std::vector<ExpeditionVertex>& vertices,
                             double factor);
    static void ReadPolyline(io::CToken_istream& stream, std::vector<ExpeditionVertex*>& vertices,
                             double factor);
    // Reads the XYR list of a polyarc, each value times factor. A triple with
    // a non-zero radius is the centre of the arc from the triple before it to
    // the triple behind it (the first one, at the end of the list); the sign
    // of the radius gives the sense, its size is not used.
    static void ReadPolyarc(io::CToken_istream& stream, std::vector<ExpeditionVertex>& vertices,
                            double factor);
    static void ReadPolyarc(io::CToken_istream& stream, std::vector<ExpeditionVertex*>& vertices,
                            double factor);
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

    // The one way a reader stops a run: a required file that is missing, or a
    // run of dots too long for a keyword. The run ends through the installed
    // handler, which gets the message text. The default handler shows the
    // "File I/O Error" box with the text and ends the process with exit status
    // 0. An in-process caller (a test, a fuzzer, a checking program) installs
    // ThrowFileError, or its own handler, which must not return: a handler
    // that returns is followed by the default ending. SetFileErrorHandler
    // returns the handler it replaces; null installs the default.
    using FileErrorHandler = void (*)(const AString& text);
    [[noreturn]] static void EndWithFileError(const AString& text);
    static FileErrorHandler SetFileErrorHandler(FileErrorHandler handler);
    // A handler that throws ExpeditionFileError with the text.
    [[noreturn]] static void ThrowFileError(const AString& text);

    AString m_Directory;
    // Where the readers report what they drop or change, and where; null in
    // the translator, which then pays one test per place.
    ExpeditionDiagnostics* m_Diagnostics = nullptr;
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
    std::vector<geom::Polygon> m_Cutouts; // board cut-outs taken out of the copper; no reader fills it
    std::vector<ExpeditionLayoutNet*> m_Nets;
    std::vector<ExpeditionPadStack*> m_PadStacks;
    std::vector<ExpeditionPad*> m_Pads;
    std::map<int, ExpeditionLayer*> m_Layers;
    std::map<AString, AString> m_PartTypes;
    bool m_HasNetProps = true;
    double m_Tolerance = 1e-6;
    double m_LayoutUnitFactor = 1.0;

    // A shape as an arc polygon: a path as the outline of its stroke, a
    // polygon, circle or rectangle as its contour; nothing for too few vertices.
    std::optional<geom::Polygon> ShapeToPolygon(ExpeditionShapes* shape);
    std::optional<geom::Polygon> PathToPolygon(const ExpeditionPath& path);
    // An Expedition shape for a polygon: a circle stays a circle unless
    // keepCircleAsPolygon; null for a polygon of fewer than two edges.
    ExpeditionShapes* ShapeFromPolygon(const geom::Polygon& polygon, const AString& layerName,
                                       bool keepCircleAsPolygon);
    // The union of the polygons, read out as regions with holes.
    std::vector<geom::PolygonWithHoles> UnitePolygons(const std::vector<geom::Polygon>& polygons,
                                                      double accuracy);

    // Pin reconciliation of a placed component against its footprint.
    void RenameDuplicatePins(ExpeditionFootprint* footprint, std::vector<ExpeditionPin*>& pins);
    void OrderPins(const std::vector<ExpeditionPin*>& footprintPins, const std::vector<ExpeditionPin*>& pins,
                   std::vector<ExpeditionPin*>& orderedPins);

    // The layer of a word that ends in a conductive number ("LYR_3"); other
    // words give the mounting layer by GetMountLayerName.
    AString LayerNameOfWord(const AString& word);
    // Appends shapes to the net of that name (without regard to case), or
    // makes the net.
    void AddShapesToNet(const AString& netName, const std::vector<ExpeditionShapes*>& shapes,
                        ElementList& elements);
    bool HasMultiLoopPad(const ExpeditionPadStack* padStack);
    bool IsNegativeLayer(const AString& layerName);

    // Body readers shared by Cell.hkp and Layout.hkp. Each is entered on its
    // keyword and leaves the keyword that ended its record in the cursor's
    // token; they take the cursor by value, so the caller's level stays that
    // of the last keyword it read itself.
    ExpeditionPin* ReadCellPin(ExpeditionReaderCursor at);
    // The lines of a pin record as the file gives them; a placed pin also
    // passes over a PID line.
    struct PinRecord
    {
        AString m_Name, m_NetName, m_PadStackName, m_Options;
        double m_X = 0.0, m_Y = 0.0, m_Rotation = 0.0;
        std::vector<ExpeditionAttribute> m_Attributes;
    };
    void ReadPinLines(ExpeditionReaderCursor at, bool placed, PinRecord& pin);
    void ReadGraphic(ExpeditionReaderCursor at, std::vector<ExpeditionShapes*>& shapes);
    void ReadText(ExpeditionReaderCursor at, std::vector<ExpeditionText*>& texts,
                  std::vector<ExpeditionAttribute>& attributes);
    // A trace record; with limit 0 the record of a net block or a cell, with
    // limit k_OneDot or k_TwoDots a free trace, whose NETNAME goes to netName.
    ExpeditionTrace* ReadTrace(ExpeditionReaderCursor at, int limit, AString& netName);
    ExpeditionVia* ReadVia(ExpeditionReaderCursor at, AString& netName);

private:
    // The records of JobPrefs.hkp.
    ExpeditionPlaneConnection* ReadPlaneConnection(io::CToken_istream& stream, double factor);
    void ReadUserLayers(ExpeditionReaderCursor at, ElementList& elements);
    void ReadStackup(ExpeditionReaderCursor at, ElementList& elements);
    void ReadConductiveLayer(ExpeditionReaderCursor& at, ElementList& elements);
    void ReadDielectricLayer(ExpeditionReaderCursor& at, ElementList& elements);

    // A path record (POLYLINE_PATH, POLYARC_PATH, RECT_PATH, CIRCLE_PATH) as
    // the file gives it, lengths not yet scaled.
    struct PathRecord
    {
        double m_Width = 0.0;
        std::vector<ExpeditionVertex*> m_Vertices;
        double m_X1 = 0.0, m_Y1 = 0.0, m_X2 = 0.0, m_Y2 = 0.0; // corners, or the centre in X1, Y1
        double m_Radius = 0.0;
        bool m_HasXY = false;
    };
    static bool IsPathKeyword(const AString& token);
    static bool ReadPathRecord(io::CToken_istream& stream, AString& token, PathRecord& path);
    // The shape of a path record on a layer; a rectangle without corners
    // gives none. The vertices move into the shape.
    static ExpeditionShapes* MakePathShape(const AString& kind, const AString& layer, PathRecord& path,
                                           double factor, bool filledPolygon);
    ExpeditionLayoutNet* FindElementNet(const ElementList& elements, const AString& name);

public:
    // One triple of an XYR list: a point, or an arc centre when r is not 0.
    struct XYRTriple
    {
        double x, y, r;
    };

private:
    // Looks for the next XYR keyword (by NextToken, at least once) and reads
    // its triples, times factor; false if the file ended without one.
    static bool ReadXYRTriples(io::CToken_istream& stream, std::vector<XYRTriple>& triples, double factor);

    // The records of Layout.hkp.
    struct PlacementState // kept from one placed cell to the next
    {
        AString m_LayerName = AString(L"Tarvex_Dummy");
        int m_LayerNumber = 0;
        double m_X = 0.0, m_Y = 0.0, m_Rotation = 0.0;
        bool m_Mirrored = false;
    };
    static bool IsPlacedCellKeyword(const AString& token);
    // What one placed cell gives, until it becomes a component or is dropped.
    struct PlacedCellRecord
    {
        AString m_CellName;
        AString m_Options; // COMPONENT_OPTIONS
        std::vector<ExpeditionPin*> m_Pins;
        std::vector<ExpeditionShapes*> m_Shapes;
        std::vector<ExpeditionText*> m_Texts;
        std::vector<ExpeditionAttribute> m_Attributes;
    };
    void ReadPlacedCells(ExpeditionReaderCursor at, PlacementState& state, ElementList& elements);
    void ReadPlacedCellBody(ExpeditionReaderCursor& at, PlacementState& state, PlacedCellRecord& cell,
                            ElementList& elements);
    void ReadPlacedPin(ExpeditionReaderCursor at, const PlacementState& state,
                       std::vector<ExpeditionPin*>& pins);
    void MakeComponent(PlacedCellRecord& cell, PlacementState& state, double factor, ElementList& elements);
    void AddNetlistEntries(const ExpeditionComponent& component, ElementList& elements);
    AString GetInnerLayerFootprintName(ElementList& elements, const AString& cellName, int layer);
    ExpeditionPadStack* GetInnerLayerPadStack(ElementList& elements, const AString& sourceName, int layer);
    void ReadBoard(ExpeditionReaderCursor at, ElementList& elements);
    void ReadRouteOutline(ExpeditionReaderCursor at, ElementList& elements);
    ExpeditionLayoutNet* GetOrMakeNet(const AString& netName, ElementList& elements,
                                      std::vector<ExpeditionTrace*> traces, std::vector<ExpeditionVia*> vias,
                                      std::vector<ExpeditionShapes*> shapes, bool& made);
    void ReadNetBlock(ExpeditionReaderCursor at, ElementList& elements);
    void FlushNetBlock(const AString& netName, std::vector<ExpeditionTrace*>& traces,
                       std::vector<ExpeditionVia*>& vias, std::vector<ExpeditionShapes*>& shapes,
                       ElementList& elements);
    void ReadFreeTrace(ExpeditionReaderCursor at, int limit, ElementList& elements);
    void ReadPlacedVia(ExpeditionReaderCursor at);
    // An area record moves its caller's level: the list or net block around
    // it ends on the level of the keyword that ended the area.
    void ReadConductiveAreaRecord(ExpeditionReaderCursor& at, std::vector<ExpeditionShapes*>& shapes,
                                  AString& netName);
    void ReadConductiveAreas(ExpeditionReaderCursor at, int limit, bool obstructs, ElementList& elements);
    void FlushConductiveAreas(const AString& netName, std::vector<ExpeditionShapes*>& shapes,
                              ElementList& elements);

    // A plane polygon of the generated data as the file gives it, in
    // millimetres.
    struct GeneratedPlane
    {
        enum Kind
        {
            k_Box,    // two corners, min and max
            k_Circle, // the centre, and m_Radius
            k_Points, // a closed polyline
            k_Arcs,   // the XYR triples of a polyarc
        } m_Kind = k_Points;
        std::vector<std::pair<double, double>> m_Points;
        std::vector<XYRTriple> m_Triples;
        double m_Radius = 0.0;
        double m_Width = 0.0;
    };
    void ReadGeneratedData(ExpeditionReaderCursor at, bool hasPlanesFile);
    void ReadGeneratedRectangle(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net, const AString& layer);
    void ReadGeneratedCircle(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net, const AString& layer);
    void ReadGeneratedPolyline(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net, const AString& layer);
    void ReadGeneratedPolyarc(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net, const AString& layer,
                              bool withWidth);
    void ReadTieLeg(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net, const AString& layer);

    void ReadPlaneBlock(io::CBlock& block, double factor);
    void CleanShape(ExpeditionShapes& shape, bool hasBoard,
                    std::vector<std::vector<ExpeditionShapes*>>& withVoids,
                    std::vector<ExpeditionShapes*>& singles);
    geom::Polygon ReadPlaneCutout(io::CBlock& contour, double factor);

    // Plane geometry of the nets, built from what the readers found.
    void AddGeneratedPlane(ExpeditionLayoutNet* net, const AString& layer, const GeneratedPlane& plane);
    void AddConductiveShapesAsPlanes(ExpeditionLayoutNet& net, const std::vector<ExpeditionShapes*>& shapes);
    void AddMultiLoopPinShapes(const AString& netName, const ExpeditionPadStack& padStack, double x, double y,
                               const PlacementState& state, double factor);

    // The records of Cell.hkp.
    void ReadCellRecord(ExpeditionReaderCursor at, ElementList& elements);
    static void SkipDimensionSettings(io::CToken_istream& stream);
    static void ReportSwallowedLines(ExpeditionDiagnostics& diagnostics, const io::CToken_istream& stream,
                                     size_t from);

    // The records of Padstack.hkp.
    void ReadHoleRecord(ExpeditionReaderCursor at, ElementList& elements);
    void ReadPadStackRecord(ExpeditionReaderCursor at, ElementList& elements);
    void ReadPadRecord(ExpeditionReaderCursor at, ElementList& elements);
    struct PadWork;
    bool ReadPadShape(io::CToken_istream& stream, const AString& keyword, double factor, PadWork& pad);
    void ReadCustomPad(ExpeditionReaderCursor& at, PadWork& pad);
    void AddCustomShape(ExpeditionReaderCursor& at, PadWork& pad);
    void FinishCustomPad(PadWork& pad);
    void MakePads(const AString& name, double factor, PadWork& pad, ElementList& elements);
    std::vector<ExpeditionPad*> m_LoosePads; // pads of a split custom pad that nothing else holds

    // The records of NetClass.hkp and PDB.hkp.
    void ReadMasterScheme(ExpeditionReaderCursor& at, double values[]);
    const ExpeditionClearanceRule* FindClearanceRule(const AString& layerName) const;
    void ReadPartProperty(io::CToken_istream& stream, ExpeditionPartWork& part);
    void ClosePart(ExpeditionPartWork& part);

    // Carried from one cell to the next, as the file's cells inherit them.
    AString m_CellPackageGroup;
    AString m_CellMountType;
    unsigned m_CellNumberLayers = 0;

    ExpeditionNameIndex<ExpeditionPad> m_PadIndex;
    ExpeditionNameIndex<ExpeditionPadStack> m_PadStackIndex;
    ExpeditionNameIndex<ExpeditionFootprint> m_FootprintIndex;
    ExpeditionNameIndex<ExpeditionLayoutNet> m_NetIndex;
    ExpeditionNameIndex<ExpeditionLayoutNet> m_ElementNetIndex;
    ExpeditionNameIndex<ExpeditionNetlist> m_NetlistIndex;
    std::unordered_map<const ExpeditionNetlist*,
                       std::unordered_set<std::wstring, AStringNoCaseHash, AStringNoCaseEqual>>
        m_NetlistConnections;
    ExpeditionNameIndex<ExpeditionPadStack> m_PadStackListIndex;
    std::unordered_set<std::wstring, AStringNoCaseHash, AStringNoCaseEqual> m_MultiLoopPadNames;
    size_t m_MultiLoopPadsScanned = 0;
};
