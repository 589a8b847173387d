// TnfBoard.h - what the page shows of a neutral file: the conductive layers,
// pads and padstacks, placed pins, the copper of each net, the board outline.
//
// The reader fills it from the block tree, and the page writer draws it. All
// lengths are millimetres with y pointing up, as in the file. Names are held
// as UTF-8 text; the file's names are 8-bit, one character per byte.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tnfview
{
// A contour point; m_Sagitta belongs to the edge that starts here (0 is
// straight, positive clockwise).
struct TnfVertex
{
    double m_X = 0.0;
    double m_Y = 0.0;
    double m_Sagitta = 0.0;
};
using TnfContour = std::vector<TnfVertex>;

// A whole circle as a contour of two half circles, counter-clockwise.
TnfContour CircleContour_G(double cx, double cy, double radius);

struct TnfPadShape
{
    enum Kind
    {
        k_None, // a pad without outline, such as 'NULLPAD' or a multi-loop pad
        k_Circle,
        k_Rectangle,
        k_Obround,
        k_Bullet,
        k_Polygon,
    };
    Kind m_Kind = k_None;
    double m_Width = 0.0; // the diameter of a circle
    double m_Height = 0.0;
    TnfContour m_Outline; // of a polygon
};

// One pad of a padstack on one conductive layer, counted from the top (0)
// for a padstack on the top side.
struct TnfPadItem
{
    int m_Layer = 0;
    std::string m_Pad;
    double m_X = 0.0;
    double m_Y = 0.0;
};

struct TnfPadStack
{
    std::vector<TnfPadItem> m_Items;
    // A round drill has a length of 0; a slot has both.
    double m_HoleWidth = 0.0;
    double m_HoleLength = 0.0;
};

struct TnfFootprintPin
{
    std::string m_Name;
    double m_X = 0.0;
    double m_Y = 0.0;
    double m_Rotation = 0.0;
    std::string m_PadStack;
};

struct TnfPlacement
{
    std::string m_Layer;
    std::string m_Footprint;
    std::string m_RefDes;
    double m_X = 0.0;
    double m_Y = 0.0;
    double m_Rotation = 0.0; // as written: for a mirrored part, 180 minus its own
    bool m_Mirrored = false;
};

// Copper of a net on one layer.
struct TnfShape
{
    enum Kind
    {
        k_Trace, // an open contour, stroked with its width and round ends
        k_Fill,  // closed contours filled, with a pen of m_Width around them
        k_Plane, // an outline with its voids, filled even-odd
    };
    Kind m_Kind = k_Trace;
    int m_Layer = 0;
    double m_Width = 0.0;
    std::vector<TnfContour> m_Contours;
};

struct TnfVia
{
    int m_FromLayer = 0;
    int m_ToLayer = 0;
    double m_X = 0.0;
    double m_Y = 0.0;
    std::string m_PadStack;
};

struct TnfNet
{
    std::string m_Name;
    std::vector<TnfShape> m_Shapes;
    std::vector<TnfVia> m_Vias;
};

struct TnfLayer
{
    std::string m_Name;
    std::string m_Kind; // "Signal" or "MetalizedSignal"
    int m_PlaneVoids = 0;
};

struct TnfBoard
{
    std::string m_Date;
    std::vector<TnfLayer> m_Layers; // the conductive layers, top to bottom
    std::map<std::string, TnfPadShape> m_PadShapes;
    std::map<std::string, TnfPadStack> m_PadStacks;
    std::map<std::string, std::vector<TnfFootprintPin>> m_Footprints;
    std::vector<TnfPlacement> m_Placements;
    // The pin names of a reference designator, in the order the netlist
    // counts them.
    std::map<std::string, std::vector<std::string>> m_Terminals;
    // "REFDES.index" of a netlist pin to the index of its net in m_Nets.
    std::map<std::string, int> m_PinNets;
    // Every net: those of the layout with their copper, then those that only
    // the netlist names.
    std::vector<TnfNet> m_Nets;
    std::vector<TnfContour> m_Outline;
    std::vector<TnfContour> m_Cuts;
    int m_ViaCount = 0;

    // Index of a conductive layer by name, or -1.
    int LayerIndex(const std::string& name) const;
};

} // namespace tnfview
