// ExpeditionLayout.h - the design model of one Expedition job.
//
// Everything that stands for itself in a design (layer, padstack, pad, hole,
// footprint, placed component, routed net, netlist entry, board) is an
// ExpeditionBaseElement in one flat list, in the order the readers made them;
// pins, texts, traces and vias are plain records owned by their element.
// Elements refer to each other by name only. Every length is in millimetres,
// converted by the readers; rotations stay in degrees.
#pragma once

#include "core/lib/vellum/AString.h"
#include "lib/math/geometry/Polygon.h"

#include <map>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

class ExpeditionPadStack;
class ExpeditionPad;
class ExpeditionPadHole;
class ExpeditionLayoutNet;
class ExpeditionComponent;
class ExpeditionBoard;
class ExpeditionFootprint;
class ExpeditionNetlist;
class ExpeditionLayer;

class ExpeditionPath;
class ExpeditionPolygon;
class ExpeditionCircle;
class ExpeditionRectangle;

// Base of the design model. The As... operations are the model's only type
// test: a writer walks the element list and skips entries that answer null.
class ExpeditionBaseElement
{
public:
    ExpeditionBaseElement() = default;
    ExpeditionBaseElement(const ExpeditionBaseElement&) = delete;
    ExpeditionBaseElement& operator=(const ExpeditionBaseElement&) = delete;
    virtual ~ExpeditionBaseElement() = default;

    virtual ExpeditionPadStack* AsPadStack() { return nullptr; }
    virtual ExpeditionPad* AsPad() { return nullptr; }
    virtual ExpeditionPadHole* AsPadHole() { return nullptr; }
    virtual ExpeditionLayoutNet* AsLayoutNet() { return nullptr; }
    virtual ExpeditionComponent* AsComponent() { return nullptr; }
    virtual ExpeditionBoard* AsBoard() { return nullptr; }
    virtual ExpeditionFootprint* AsFootprint() { return nullptr; }
    virtual ExpeditionNetlist* AsNetlist() { return nullptr; }
    virtual ExpeditionLayer* AsLayer() { return nullptr; }
};

using ElementList = std::vector<ExpeditionBaseElement*>;

// ------------------------------------------------------------ plain records

// A name that many records repeat: a layer, a padstack, a net, a font, an
// option line. A large board holds a few thousand such names hundreds of
// thousands of times over, so each text is held once for the whole run and a
// record keeps a pointer to it. It reads as the AString it stands for, and
// comparisons are those of AString.
class ExpeditionName
{
public:
    ExpeditionName();
    ExpeditionName(const AString& text) : m_Text(Intern(text)) {}
    ExpeditionName(const wchar_t* text) : ExpeditionName(AString(text)) {}
    ExpeditionName& operator=(const AString& text)
    {
        m_Text = Intern(text);
        return *this;
    }
    ExpeditionName& operator=(const wchar_t* text) { return *this = AString(text); }

    operator const AString&() const { return *m_Text; }
    const AString& str() const { return *m_Text; }
    const AString* operator->() const { return m_Text; }

    bool empty() const { return m_Text->empty(); }
    size_t size() const { return m_Text->size(); }
    const wchar_t* c_str() const { return m_Text->c_str(); }
    wchar_t operator[](size_t pos) const { return (*m_Text)[pos]; }
    size_t find(wchar_t ch, size_t pos = 0) const { return m_Text->find(ch, pos); }
    AString substr(size_t pos = 0, size_t count = AString::npos) const { return m_Text->substr(pos, count); }
    int Compare(const AString& other) const { return m_Text->Compare(other); }
    int CompareNoCase(const AString& other) const { return m_Text->CompareNoCase(other); }
    int CompareNoCase(const wchar_t* other) const { return m_Text->CompareNoCase(other); }
    bool Match(const AString& pattern) const { return m_Text->Match(pattern); }
    AString_const<char> AsAnsi() const { return m_Text->AsAnsi(); }

    friend bool operator==(const ExpeditionName& a, const ExpeditionName& b)
    {
        return *a.m_Text == *b.m_Text;
    }
    friend bool operator==(const ExpeditionName& a, const AString& b) { return *a.m_Text == b; }
    friend bool operator==(const AString& a, const ExpeditionName& b) { return a == *b.m_Text; }
    friend bool operator==(const ExpeditionName& a, const wchar_t* b) { return *a.m_Text == b; }
    friend bool operator<(const ExpeditionName& a, const ExpeditionName& b) { return *a.m_Text < *b.m_Text; }
    friend AString operator+(const ExpeditionName& a, const AString& b) { return *a.m_Text + b; }
    friend AString operator+(const ExpeditionName& a, const wchar_t* b) { return *a.m_Text + b; }
    friend AString operator+(const AString& a, const ExpeditionName& b) { return a + *b.m_Text; }
    friend AString operator+(const wchar_t* a, const ExpeditionName& b) { return a + *b.m_Text; }

private:
    // The run's one copy of the text; the table only grows, and a text once
    // in it stays where it is.
    static const AString* Intern(const AString& text);
    const AString* m_Text;
};

// One corner of a path or polygon. arcHeight 0.0 is a straight edge to the
// next vertex; otherwise the signed sagitta of the arc on that edge (a whole
// circle, from an edge whose ends coincide, holds plus or minus its diameter).
struct ExpeditionVertex
{
    ExpeditionVertex(double x_, double y_, double arcHeight_) : x(x_), y(y_), arcHeight(arcHeight_) {}
    double x;
    double y;
    double arcHeight;
};

// A name and value that the file gives on one line.
struct ExpeditionAttribute
{
    ExpeditionAttribute(const AString& name_, const AString& value_) : name(name_), value(value_) {}
    AString name;
    AString value;
};

// A pin of a footprint or of a placed component.
struct ExpeditionPin
{
    ExpeditionPin(const AString& name, const AString& netName, const AString& padStackName, double x,
                  double y, double rotation, const AString& options,
                  const std::vector<ExpeditionAttribute>& attributes)
        : m_Name(name), m_NetName(netName), m_PadStackName(padStackName), m_X(x), m_Y(y),
          m_Rotation(rotation), m_Options(options), m_Attributes(attributes)
    {
    }
    const AString& GetName() const { return m_Name.str(); }
    const AString& GetNetName() const { return m_NetName.str(); }
    const AString& GetPadStackName() const { return m_PadStackName.str(); }
    double GetX() const { return m_X; }
    double GetY() const { return m_Y; }
    double GetRotation() const { return m_Rotation; }
    const AString& GetOptions() const { return m_Options.str(); }
    const std::vector<ExpeditionAttribute>& GetAttributes() const { return m_Attributes; }

    ExpeditionName m_Name;         // unique within a footprint after renaming
    ExpeditionName m_NetName;      // NETNAME; empty in a footprint
    ExpeditionName m_PadStackName; // the only field changed after construction
    double m_X;
    double m_Y;
    double m_Rotation;                             // degrees counter-clockwise, after the OPP_SIDE correction
    ExpeditionName m_Options;                      // PIN_OPTIONS
    std::vector<ExpeditionAttribute> m_Attributes; // level-four TEXT pairs
};

// One text item.
struct ExpeditionText
{
    ExpeditionText(const AString& text, const AString& layer, const AString& textType, const AString& font,
                   const AString& horzJust, const AString& vertJust, double height, double rotation,
                   double strokeWidth, double x, double y, const AString& options)
        : m_Text(text), m_Layer(layer), m_TextType(textType), m_Font(font), m_HorzJust(horzJust),
          m_VertJust(vertJust), m_Height(height), m_Rotation(rotation), m_StrokeWidth(strokeWidth), m_X(x),
          m_Y(y), m_Options(options)
    {
    }
    AString m_Text;
    ExpeditionName m_Layer;    // after the layer mapping of the reader
    ExpeditionName m_TextType; // TEXT_TYPE, for instance "REF_DES"
    ExpeditionName m_Font;     // FONT
    ExpeditionName m_HorzJust; // HORZ_JUST
    ExpeditionName m_VertJust; // VERT_JUST
    double m_Height;           // HEIGHT
    double m_Rotation;         // ROTATION
    double m_StrokeWidth;      // STROKE_WIDTH and WIDTH
    double m_X;
    double m_Y;
    ExpeditionName m_Options; // rest of the TEXT_OPTIONS line
};

// One via.
struct ExpeditionVia
{
    ExpeditionVia(const AString& padStackName, const AString& fromLayer, const AString& toLayer, double x,
                  double y)
        : m_PadStackName(padStackName), m_FromLayer(fromLayer), m_ToLayer(toLayer), m_X(x), m_Y(y)
    {
    }
    ExpeditionName m_PadStackName; // PADSTACK
    ExpeditionName m_FromLayer;    // first layer of LAYER_PAIR, as a layer name
    ExpeditionName m_ToLayer;      // second layer of LAYER_PAIR
    double m_X;
    double m_Y;
};

// One routed trace.
struct ExpeditionTrace
{
    // A large board has millions of traces of a few vertices each: the
    // vertices are held in one array per trace, with no spare room.
    ExpeditionTrace(const AString& layerName, const AString& options, const AString& pathKind, double width,
                    std::vector<ExpeditionVertex> vertices)
        : m_LayerName(layerName), m_Options(options), m_PathKind(pathKind), m_Width(width),
          m_Vertices(std::move(vertices))
    {
        if (m_Vertices.capacity() != m_Vertices.size())
            m_Vertices.shrink_to_fit();
    }
    ExpeditionTrace(const ExpeditionTrace&) = delete;
    ExpeditionTrace& operator=(const ExpeditionTrace&) = delete;

    ExpeditionName m_LayerName;               // ROUTE_LYR as a layer name
    ExpeditionName m_Options;                 // rest of the TRACE_OPTIONS line
    ExpeditionName m_PathKind;                // "POLYLINE_PATH" or "POLYARC_PATH"; empty for a tie leg
    double m_Width;                           // WIDTH
    std::vector<ExpeditionVertex> m_Vertices; // the centre line
};

// A record of the default plane connections of the job.
struct ExpeditionPlaneConnection
{
    ExpeditionPlaneConnection(double tieLegWidth, double spare, const AString& tieLegNumber,
                              const AString& tieLegRotation)
        : m_TieLegWidth(tieLegWidth), m_Spare(spare), m_TieLegNumber(tieLegNumber),
          m_TieLegRotation(tieLegRotation)
    {
    }
    double m_TieLegWidth;
    double m_Spare; // always 0.0
    AString m_TieLegNumber;
    AString m_TieLegRotation;
};

// ------------------------------------------------------------------ shapes

// A piece of drawn geometry in the terms of the file, on a layer named by text.
class ExpeditionShapes
{
public:
    ExpeditionShapes() = default;
    ExpeditionShapes(const ExpeditionShapes&) = delete;
    ExpeditionShapes& operator=(const ExpeditionShapes&) = delete;
    virtual ~ExpeditionShapes() = default;

    virtual ExpeditionPath* AsPath() { return nullptr; }
    virtual ExpeditionPolygon* AsPolygon() { return nullptr; }
    virtual ExpeditionCircle* AsCircle() { return nullptr; }
    virtual ExpeditionRectangle* AsRectangle() { return nullptr; }
    virtual AString GetLayerName() const = 0;
    virtual double GetWidth() const = 0;
};

// A line of a width.
class ExpeditionPath : public ExpeditionShapes
{
public:
    ExpeditionPath(const AString& layerName, double width, const std::vector<ExpeditionVertex*>& vertices)
        : m_LayerName(layerName), m_Width(width), m_Vertices(vertices)
    {
    }
    ~ExpeditionPath() override;
    ExpeditionPath* AsPath() override { return this; }
    AString GetLayerName() const override { return m_LayerName; }
    double GetWidth() const override { return m_Width; }

    AString m_LayerName;
    double m_Width;
    std::vector<ExpeditionVertex*> m_Vertices;
};

// A closed area; the closing edge from the last vertex to the first is implied.
class ExpeditionPolygon : public ExpeditionShapes
{
public:
    ExpeditionPolygon(const AString& layerName, const std::vector<ExpeditionVertex*>& vertices, double width)
        : m_LayerName(layerName), m_Vertices(vertices), m_Width(width)
    {
    }
    ~ExpeditionPolygon() override;
    ExpeditionPolygon* AsPolygon() override { return this; }
    AString GetLayerName() const override { return m_LayerName; }
    double GetWidth() const override { return m_Width; }

    AString m_LayerName;
    AString m_Text; // always empty
    std::vector<ExpeditionVertex*> m_Vertices;
    double m_Width;
};

class ExpeditionCircle : public ExpeditionShapes
{
public:
    ExpeditionCircle(const AString& layerName, double x, double y, double radius, double width)
        : m_LayerName(layerName), m_X(x), m_Y(y), m_Radius(radius), m_Width(width)
    {
    }
    ExpeditionCircle* AsCircle() override { return this; }
    AString GetLayerName() const override { return m_LayerName; }
    double GetWidth() const override { return m_Width; }

    AString m_LayerName;
    double m_X;
    double m_Y;
    double m_Radius;
    double m_Width;
};

class ExpeditionRectangle : public ExpeditionShapes
{
public:
    ExpeditionRectangle(const AString& layerName, double x1, double y1, double x2, double y2, double width)
        : m_LayerName(layerName), m_X1(x1), m_Y1(y1), m_X2(x2), m_Y2(y2), m_Width(width)
    {
    }
    ExpeditionRectangle* AsRectangle() override { return this; }
    AString GetLayerName() const override { return m_LayerName; }
    double GetWidth() const override { return m_Width; }

    AString m_LayerName;
    double m_X1; // first corner as the file gives it
    double m_Y1;
    double m_X2; // opposite corner
    double m_Y2;
    double m_Width;
};

// ---------------------------------------------------------------- elements

// The board: one per BOARD_OUTLINE block.
class ExpeditionBoard : public ExpeditionBaseElement
{
public:
    ExpeditionBoard(double originX, double originY, ExpeditionShapes* outline,
                    const std::vector<ExpeditionShapes*>& contours)
        : m_OriginX(originX), m_OriginY(originY), m_Outline(outline), m_Contours(contours)
    {
    }
    ~ExpeditionBoard() override;
    ExpeditionBoard* AsBoard() override { return this; }
    double GetOriginX() const { return m_OriginX; }
    double GetOriginY() const { return m_OriginY; }
    ExpeditionShapes* GetOutline() const { return m_Outline; }
    const std::vector<ExpeditionShapes*>& GetContours() const { return m_Contours; }

    double m_OriginX;                          // BOARD_ORIGIN x
    double m_OriginY;                          // BOARD_ORIGIN y
    ExpeditionShapes* m_Outline;               // owned
    std::vector<ExpeditionShapes*> m_Contours; // CONTOUR shapes: holes and cut-outs, owned
};

// One entry of the job's layer tables: conductive, dielectric or user layer.
class ExpeditionLayer : public ExpeditionBaseElement
{
public:
    ExpeditionLayer(const AString& name, const AString& type, const AString& description, int layerNumber,
                    int conductiveNumber, double thickness, double resistivity, double dielectricConstant,
                    const AString& planeType)
        : m_Name(name), m_Type(type), m_Description(description), m_LayerNumber(layerNumber),
          m_ConductiveNumber(conductiveNumber), m_Thickness(thickness), m_Resistivity(resistivity),
          m_DielectricConstant(dielectricConstant), m_PlaneType(planeType)
    {
    }
    ExpeditionLayer* AsLayer() override { return this; }
    const AString& GetName() const { return m_Name; }
    const AString& GetType() const { return m_Type; }
    const AString& GetDescription() const { return m_Description; }
    int GetLayerNumber() const { return m_LayerNumber; }
    int GetConductiveNumber() const { return m_ConductiveNumber; }
    double GetThickness() const { return m_Thickness; }
    double GetResistivity() const { return m_Resistivity; }
    double GetDielectricConstant() const { return m_DielectricConstant; }
    const AString& GetPlaneType() const { return m_PlaneType; }

    AString m_Name;
    AString m_Type;              // "SIGNAL", "DIELECTRIC" or "USER"; a plane is "SIGNAL" too
    AString m_Description;       // LAYER_DESCRIPTION; "USER" for a user layer
    int m_LayerNumber;           // number behind the layer keyword; USER_LAYER_NUMBER for a user layer
    int m_ConductiveNumber;      // CONDUCTIVE_LAYER_NUMBER; -1 for dielectric and user layers
    double m_Thickness;          // LAYER_THICKNESS
    double m_Resistivity;        // LAYER_RESISTIVITY, scaled by the unit factor as if it were a length
    double m_DielectricConstant; // DIELECTRIC_CONSTANT
    AString m_PlaneType;         // PLANE_TYPE; "POSITIVE" when absent on a conductive layer
};

// One cell of Cell.hkp, or its variant for an inner mounting layer.
class ExpeditionFootprint : public ExpeditionBaseElement
{
public:
    ExpeditionFootprint(const AString& name, const AString& packageGroup, const AString& mountType,
                        unsigned numberLayers, const std::vector<ExpeditionPin*>& pins,
                        const std::vector<ExpeditionShapes*>& shapes,
                        const std::vector<ExpeditionText*>& texts, const std::vector<ExpeditionVia*>& vias,
                        const std::vector<ExpeditionTrace*>& traces)
        : m_Name(name), m_PackageGroup(packageGroup), m_MountType(mountType), m_NumberLayers(numberLayers),
          m_Pins(pins), m_Shapes(shapes), m_Texts(texts), m_Vias(vias), m_Traces(traces)
    {
    }
    ~ExpeditionFootprint() override;
    ExpeditionFootprint* AsFootprint() override { return this; }
    const AString& GetName() const { return m_Name; }
    const AString& GetPackageGroup() const { return m_PackageGroup; }
    const AString& GetMountType() const { return m_MountType; }
    unsigned GetNumberLayers() const { return m_NumberLayers; }
    const std::vector<ExpeditionPin*>& GetPins() const { return m_Pins; }

    AString m_Name;          // the cell's name; compared without regard to case
    AString m_PackageGroup;  // PACKAGE_GROUP
    AString m_MountType;     // MOUNT_TYPE
    unsigned m_NumberLayers; // NUMBER_LAYERS
    std::vector<ExpeditionPin*> m_Pins;
    std::vector<ExpeditionShapes*> m_Shapes;
    std::vector<ExpeditionText*> m_Texts;
    std::vector<ExpeditionVia*> m_Vias;
    std::vector<ExpeditionTrace*> m_Traces;
};

// Deletes what a vector owns, last first; null entries are skipped.
template <class T> void DeleteOwned_G(std::vector<T*>& items)
{
    for (auto it = items.rbegin(); it != items.rend(); ++it)
        delete *it;
    items.clear();
}

// A hole of Padstack.hkp.
class ExpeditionPadHole : public ExpeditionBaseElement
{
public:
    ExpeditionPadHole(const AString& name, const AString& holeShape, double diameter, double slotLength,
                      double offsetX, double offsetY, const std::vector<AString>& layers,
                      const AString& text1, const AString& text2)
        : m_Name(name), m_HoleShape(holeShape), m_Diameter(diameter), m_SlotLength(slotLength),
          m_OffsetX(offsetX), m_OffsetY(offsetY), m_Layers(layers), m_Text1(text1), m_Text2(text2)
    {
    }
    ExpeditionPadHole* AsPadHole() override { return this; }
    const AString& GetName() const { return m_Name; }

    AString m_Name;      // HOLE name, the key
    AString m_HoleShape; // "Circle" for every kind of hole read
    double m_Diameter;   // first value of the size line
    double m_SlotLength; // second value of a "SLOT"
    double m_OffsetX;
    double m_OffsetY;
    std::vector<AString> m_Layers;
    AString m_Text1;
    AString m_Text2;
};

// A pad: a named outline centred on the origin.
class ExpeditionPad : public ExpeditionBaseElement
{
public:
    ExpeditionPad(const AString& name, const AString& padType, const AString& shapeName,
                  ExpeditionShapes* shape, double tieLegWidth, double thermalClearance, double offsetX,
                  double offsetY)
        : m_Name(name), m_PadType(padType), m_ShapeName(shapeName), m_Shape(shape),
          m_TieLegWidth(tieLegWidth), m_ThermalClearance(thermalClearance), m_OffsetX(offsetX),
          m_OffsetY(offsetY)
    {
    }
    ~ExpeditionPad() override;
    ExpeditionPad* AsPad() override { return this; }
    virtual bool IsMultiLoop() const { return false; }
    const AString& GetName() const { return m_Name; }

    AString m_Name;
    AString m_PadType;         // the family of the shape keyword
    AString m_ShapeName;       // "Circle", "Rectangle" or "POLYGON"
    ExpeditionShapes* m_Shape; // owned, may be null
    double m_TieLegWidth;      // TIE_LEG_WIDTH
    double m_ThermalClearance; // THERMAL_CLEARANCE
    double m_OffsetX;          // OFFSET
    double m_OffsetY;
};

// A pad whose outline is several shapes.
class ExpeditionMultiLoopPad : public ExpeditionPad
{
public:
    ExpeditionMultiLoopPad(const AString& name, const AString& padType, const AString& shapeName,
                           double tieLegWidth, double thermalClearance, double offsetX, double offsetY,
                           const std::vector<ExpeditionShapes*>& loops)
        : ExpeditionPad(name, padType, shapeName, nullptr, tieLegWidth, thermalClearance, offsetX, offsetY),
          m_Loops(loops)
    {
    }
    bool IsMultiLoop() const override { return true; }
    // Copies the loops into the caller's vector and returns their number.
    size_t GetLoops(std::vector<ExpeditionShapes*>& loops) const
    {
        loops = m_Loops;
        return loops.size();
    }

    std::vector<ExpeditionShapes*> m_Loops; // not owned
};

// A padstack of Padstack.hkp, or its variant for an inner mounting layer.
class ExpeditionPadStack : public ExpeditionBaseElement
{
public:
    ExpeditionPadStack(const AString& name, const AString& padStackType, const AString& technology,
                       const AString& technologyOptions, const AString& topPad, const AString& internalPad,
                       const AString& bottomPad, const AString& topSolderMaskPad,
                       const AString& bottomSolderMaskPad, const AString& clearancePad,
                       const AString& thermalPad, const AString& holeName,
                       const std::map<int, AString>& layerPads, double offsetX, double offsetY)
        : m_Name(name), m_PadStackType(padStackType), m_Technology(technology),
          m_TechnologyOptions(technologyOptions), m_TopPad(topPad), m_InternalPad(internalPad),
          m_BottomPad(bottomPad), m_TopSolderMaskPad(topSolderMaskPad),
          m_BottomSolderMaskPad(bottomSolderMaskPad), m_ClearancePad(clearancePad), m_ThermalPad(thermalPad),
          m_HoleName(holeName), m_LayerPads(layerPads), m_OffsetX(offsetX), m_OffsetY(offsetY)
    {
    }
    ExpeditionPadStack* AsPadStack() override { return this; }
    const AString& GetPadStackName() const { return m_Name; }

    AString m_Name;                     // the key
    AString m_PadStackType;             // PADSTACK_TYPE
    AString m_Technology;               // TECHNOLOGY
    AString m_TechnologyOptions;        // TECHNOLOGY_OPTIONS
    AString m_TopPad;                   // TOP_PAD
    AString m_InternalPad;              // INTERNAL_PAD
    AString m_BottomPad;                // BOTTOM_PAD
    AString m_TopSolderMaskPad;         // TOP_SOLDERMASK_PAD
    AString m_BottomSolderMaskPad;      // BOTTOM_SOLDERMASK_PAD
    AString m_ClearancePad;             // CLEARANCE_PAD
    AString m_ThermalPad;               // THERMAL_PAD
    AString m_HoleName;                 // HOLE_NAME
    std::map<int, AString> m_LayerPads; // pads of the LAYER lines
    double m_OffsetX;                   // OFFSET
    double m_OffsetY;
};

// A placed cell.
class ExpeditionComponent : public ExpeditionBaseElement
{
public:
    ExpeditionComponent(const AString& footprintName, const AString& layerName, const AString& text, double x,
                        double y, double rotation, bool mirrored, const std::vector<ExpeditionPin*>& pins,
                        const std::vector<ExpeditionShapes*>& shapes,
                        const std::vector<ExpeditionText*>& texts,
                        const std::vector<ExpeditionAttribute>& attributes)
        : m_FootprintName(footprintName), m_LayerName(layerName), m_Text(text), m_X(x), m_Y(y),
          m_Rotation(rotation), m_Mirrored(mirrored), m_Pins(pins), m_Shapes(shapes), m_Texts(texts),
          m_Attributes(attributes)
    {
    }
    ~ExpeditionComponent() override;
    ExpeditionComponent* AsComponent() override { return this; }
    const AString& GetFootprintName() const { return m_FootprintName.str(); }
    const std::vector<ExpeditionText*>& GetTexts() const { return m_Texts; }
    // The first or the last text whose type is exactly textType ("REF_DES",
    // "PARTNO"), or null.
    const ExpeditionText* FindText(const wchar_t* textType, bool last) const
    {
        const ExpeditionText* found = nullptr;
        for (const ExpeditionText* text : m_Texts)
            if (text && text->m_TextType == textType)
            {
                found = text;
                if (!last)
                    break;
            }
        return found;
    }
    // Its text, or empty.
    AString TextOfType(const wchar_t* textType, bool last) const
    {
        const ExpeditionText* text = FindText(textType, last);
        return text ? text->m_Text : AString();
    }

    ExpeditionName m_FootprintName; // the cell, or its "%s_Layer_%d" variant
    ExpeditionName m_LayerName;     // the mounting layer
    AString m_Text;                 // always empty
    double m_X;
    double m_Y;
    double m_Rotation; // degrees as in the file
    bool m_Mirrored;   // FACEMENT other than "TOP"
    std::vector<ExpeditionPin*> m_Pins;
    std::vector<ExpeditionShapes*> m_Shapes;
    std::vector<ExpeditionText*> m_Texts;
    std::vector<ExpeditionAttribute> m_Attributes;
};

// One net of the netlist that has pins.
class ExpeditionNetlist : public ExpeditionBaseElement
{
public:
    ExpeditionNetlist(const AString& name, unsigned pinCount, const std::vector<AString>& pins)
        : m_Name(name), m_PinCount(pinCount), m_Pins(pins)
    {
    }
    ExpeditionNetlist* AsNetlist() override { return this; }
    const AString& GetName() const { return m_Name; }

    AString m_Name;
    unsigned m_PinCount;         // the number of entries
    std::vector<AString> m_Pins; // "refdes-pin", in order of first appearance, each once
};

// A plane contour with the width of the pen that drew it; 0.0 where the pen
// has been worked into the contour.
//
// The plane of a large board has hundreds of thousands of voids, nearly all
// of them circles, boxes and obrounds around the pads and vias of other nets.
// A contour of so few edges is held as its edges alone, shared by the copies
// that the outlines and the shapes with voids keep, and it becomes a polygon
// again, the same edge for edge, only for the moment a caller needs one. A
// contour of one edge that ends where it starts, the round void of a pad or
// via, is held in place as its point, height and azimuth, without a block of
// its own. A contour of more edges is held as the polygon it is.
class ExpeditionPlanePolygon
{
public:
    ExpeditionPlanePolygon(const geom::Polygon& polygon, double width);
    ExpeditionPlanePolygon(const ExpeditionPlanePolygon& other);
    ExpeditionPlanePolygon(ExpeditionPlanePolygon&& other) noexcept;
    ExpeditionPlanePolygon& operator=(ExpeditionPlanePolygon other) noexcept;
    ~ExpeditionPlanePolygon();

    // The contour as a polygon.
    geom::Polygon GetPolygon() const;
    // Its box, without the polygon.
    geom::Box GetBBox() const;
    // Whether it is held as its edges alone.
    bool IsHeldAsEdges() const { return !std::holds_alternative<geom::Polygon>(m_Form); }
    // The one edge of a contour held as a single edge (a whole circle), else
    // none: what a writer asks of most voids, without making the polygon.
    std::optional<geom::Arc> GetSingleEdge() const;

private:
    // The edges of a contour of few, in one block with the count of their
    // users and their number.
    struct Edges;
    static Edges* TakeApart(const geom::Polygon& polygon);
    static void Release(Edges* edges);
    static const geom::Arc* EdgesOf(const Edges* edges);

    // The one edge of a contour of one whose end is its start, as the edge
    // would be made again from it.
    struct Round
    {
        geom::Point m_Start;
        geom::Unit m_Height;
        geom::Azimuth m_Azimuth;
        geom::Arc GetArc() const { return geom::Arc(m_Start, m_Start, m_Height, m_Azimuth); }
    };
    // A contour of many edges; the edges of a contour of few, shared by the
    // copies (null once moved from); or a round one.
    std::variant<geom::Polygon, Edges*, Round> m_Form;

public:
    double m_Width;
};

// A plane outline with the voids inside it; an island has none.
struct ExpeditionPlaneShape
{
    ExpeditionPlaneShape(const geom::Polygon& polygon, double width,
                         const std::vector<ExpeditionPlanePolygon>& voids)
        : m_Polygon(polygon), m_Width(width), m_Voids(voids)
    {
    }
    geom::Polygon m_Polygon;
    double m_Width;
    std::vector<ExpeditionPlanePolygon> m_Voids;
};

// A routed net: its traces, vias and copper.
class ExpeditionLayoutNet : public ExpeditionBaseElement
{
public:
    // A name "(net0)" or "UNCONNECTED_NET", in any case, is stored as "DUMMY".
    ExpeditionLayoutNet(const AString& name, const std::vector<ExpeditionTrace*>& traces,
                        const std::vector<ExpeditionVia*>& vias,
                        const std::vector<ExpeditionShapes*>& shapes);
    ~ExpeditionLayoutNet() override;
    ExpeditionLayoutNet* AsLayoutNet() override { return this; }
    const AString& GetName() const { return m_Name; }

    AString m_Name;
    std::vector<ExpeditionTrace*> m_Traces;
    std::vector<ExpeditionVia*> m_Vias;
    std::vector<std::vector<ExpeditionShapes*>> m_ShapesWithVoids; // outline first, then its holes
    std::vector<ExpeditionShapes*> m_Shapes;                       // conductive shapes without holes
    // Plane copper by layer name (case counts): finished shapes with voids,
    // raw outlines and voids as read (let go once they are paired), and
    // contours of fewer than 3 points.
    std::map<AString, std::vector<ExpeditionPlaneShape>> m_PlaneShapes;
    std::map<AString, std::vector<ExpeditionPlanePolygon>> m_PlaneOutlines;
    std::map<AString, std::vector<ExpeditionPlanePolygon>> m_PlaneLines;

    void AddTraces(const std::vector<ExpeditionTrace*>& traces)
    {
        m_Traces.insert(m_Traces.end(), traces.begin(), traces.end());
    }
    void AddVias(const std::vector<ExpeditionVia*>& vias)
    {
        m_Vias.insert(m_Vias.end(), vias.begin(), vias.end());
    }
    void AddShapes(const std::vector<ExpeditionShapes*>& shapes)
    {
        m_Shapes.insert(m_Shapes.end(), shapes.begin(), shapes.end());
    }
    void AddPlaneShape(const ExpeditionPlaneShape& shape, const AString& layerName)
    {
        m_PlaneShapes[layerName].push_back(shape);
    }
    // An outline or void as read; on a negative layer the pen's width is
    // worked into the contour by shrinking it by half the width.
    void AddPlaneOutline(const ExpeditionPlanePolygon& polygon, const AString& layerName, bool negative);
    // The same for a contour as read, which a negative layer shrinks as it is,
    // without taking it apart first.
    void AddPlaneOutline(const geom::Polygon& polygon, double width, const AString& layerName, bool negative);
    void AddPlaneLine(const ExpeditionPlanePolygon& polygon, const AString& layerName)
    {
        m_PlaneLines[layerName].push_back(polygon);
    }
    size_t GetPlaneLines(std::map<AString, std::vector<ExpeditionPlanePolygon>>& lines) const
    {
        lines = m_PlaneLines;
        return lines.size();
    }
    // Pairs the outlines with the voids inside them: odd nesting depth makes a
    // void, and a void goes to the innermost outline that holds it. The raw
    // contours are released afterwards; it runs once per net.
    void ResolvePlaneVoids();
    // Keeps the thin plane contours that stand in free space or in a void.
    void ResolvePlaneLines();
    // Frees the traces, vias, shapes and plane copper. The writer of the nets
    // calls it once a net's items are in the block tree, so that a large
    // board never holds its copper twice, as model and as tree.
    void ReleaseCopper();
};

// The values of one part number of PDB.hkp.
struct ExpeditionPartValues
{
    ExpeditionPartValues(const AString& value, const AString& parasiticCapacitance,
                         const AString& parasiticResistance, const AString& parasiticInductance)
        : m_Value(value), m_ParasiticCapacitance(parasiticCapacitance),
          m_ParasiticResistance(parasiticResistance), m_ParasiticInductance(parasiticInductance)
    {
    }
    AString m_Value;
    AString m_ParasiticCapacitance;
    AString m_ParasiticResistance;
    AString m_ParasiticInductance;
};

// The clearances of one subrule of NetClass.hkp, in millimetres.
struct ExpeditionClearanceRule
{
    ExpeditionClearanceRule(const AString& layerName, double traceToTrace, double traceToPad,
                            double traceToVia, double viaToVia, double viaToPad, double spareClearance,
                            double padToPad, double planeToPad, double planeToVia, double planeToPlane)
        : m_LayerName(layerName), m_TraceToTrace(traceToTrace), m_TraceToPad(traceToPad),
          m_TraceToVia(traceToVia), m_ViaToVia(viaToVia), m_ViaToPad(viaToPad),
          m_SpareClearance(spareClearance), m_PadToPad(padToPad), m_PlaneToPad(planeToPad),
          m_PlaneToVia(planeToVia), m_PlaneToPlane(planeToPlane)
    {
    }
    AString m_LayerName;     // LAYER_NUM by way of the layer names
    double m_TraceToTrace;   // TRACE_TO_TRACE
    double m_TraceToPad;     // TRACE_TO_PAD
    double m_TraceToVia;     // TRACE_TO_VIA
    double m_ViaToVia;       // VIA_TO_VIA
    double m_ViaToPad;       // VIA_TO_PAD
    double m_SpareClearance; // always 0.0
    double m_PadToPad;       // PAD_TO_PAD
    double m_PlaneToPad;     // PLANE_TO_TRACE and PLANE_TO_PAD: the later in the subrule wins
    double m_PlaneToVia;     // PLANE_TO_VIA
    double m_PlaneToPlane;   // PLANE_TO_PLANE
};
