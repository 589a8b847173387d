// TnfPageWriter.cpp - the board drawn as inline SVG in one HTML page.
//
// A large board holds hundreds of thousands of traces and pads, and a browser
// slows down with every element of the page. So the copper of one net on one
// layer goes into a few path elements only: one for the planes (filled
// even-odd, so voids stay open), one for filled shapes, one per line width
// for traces, and one per diameter for round pads, which are drawn as lines
// of length zero with round ends, a dozen bytes each. Other pads are written
// as filled outlines, all turned counter-clockwise so that overlapping pads
// of one net don't cancel under the non-zero rule. The net of a path is an
// index into a table of the script; the pins are a second table, which the
// script searches for the pin under the pointer.
#include "tools/TnfView/TnfPageWriter.h"

#include "tools/TnfView/SvgArc.h"
#include "tools/TnfView/TnfPageScript.h"
#include "tools/TnfView/TnfPlacement.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

namespace tnfview
{
namespace
{
void AppendNumber(std::string& out, double value, int decimals = 4)
{
    if (!std::isfinite(value))
        value = 0.0;
    value = std::clamp(value, -1e9, 1e9);
    char buffer[48];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
    char* end = result.ptr;
    if (std::find(buffer, end, '.') != end)
    {
        while (end[-1] == '0')
            --end;
        if (end[-1] == '.')
            --end;
    }
    if (end - buffer == 2 && buffer[0] == '-' && buffer[1] == '0')
        out.push_back('0');
    else
        out.append(buffer, end);
}

// A point of the board as page coordinates, y pointing down.
void AppendPoint(std::string& out, double x, double y)
{
    AppendNumber(out, x);
    out.push_back(' ');
    AppendNumber(out, -y);
}

void AppendEdge(std::string& out, const TnfVertex& from, const TnfVertex& to)
{
    const SvgArc arc = SagittaToSvgArc_G(from.m_X, from.m_Y, to.m_X, to.m_Y, from.m_Sagitta);
    if (!arc.m_IsArc)
    {
        out.push_back('L');
        AppendPoint(out, to.m_X, to.m_Y);
        return;
    }
    out.push_back('A');
    AppendNumber(out, arc.m_Radius);
    out.push_back(' ');
    AppendNumber(out, arc.m_Radius);
    out += arc.m_LargeArc ? " 0 1 " : " 0 0 ";
    out += arc.m_Sweep ? "1 " : "0 ";
    AppendPoint(out, to.m_X, to.m_Y);
}

// A contour as path data; a closed one returns to its start along the edge of
// its last vertex.
void AppendContour(std::string& out, const TnfContour& contour, bool closed)
{
    if (contour.empty())
        return;
    out.push_back('M');
    AppendPoint(out, contour[0].m_X, contour[0].m_Y);
    if (contour.size() == 1 && !closed)
        out += "h0";
    for (size_t i = 1; i < contour.size(); ++i)
        AppendEdge(out, contour[i - 1], contour[i]);
    if (closed)
    {
        const TnfVertex& last = contour.back();
        if (last.m_Sagitta != 0.0 || last.m_X != contour[0].m_X || last.m_Y != contour[0].m_Y)
            AppendEdge(out, last, contour[0]);
        out.push_back('Z');
    }
}

// Twice the signed area of a closed contour, arcs included: positive when it
// runs counter-clockwise.
double SignedArea(const TnfContour& contour)
{
    double area = 0.0;
    for (size_t i = 0; i < contour.size(); ++i)
    {
        const TnfVertex& a = contour[i];
        const TnfVertex& b = contour[(i + 1) % contour.size()];
        area += a.m_X * b.m_Y - b.m_X * a.m_Y;
        const SvgArc arc = SagittaToSvgArc_G(a.m_X, a.m_Y, b.m_X, b.m_Y, a.m_Sagitta);
        if (!arc.m_IsArc)
            continue;
        // The circular segment between chord and arc; a positive sagitta
        // bulges to the left of the edge, into a counter-clockwise contour.
        const double r = arc.m_Radius;
        const double half = std::asin(std::min(1.0, std::hypot(b.m_X - a.m_X, b.m_Y - a.m_Y) / (2.0 * r)));
        const double angle = arc.m_LargeArc ? 2.0 * (3.14159265358979323846 - half) : 2.0 * half;
        const double segment = r * r * (angle - std::sin(angle));
        area += a.m_Sagitta > 0.0 ? -segment : segment;
    }
    return area;
}

TnfContour Reversed(const TnfContour& contour)
{
    TnfContour out;
    out.reserve(contour.size());
    const size_t n = contour.size();
    for (size_t i = 0; i < n; ++i)
    {
        // The edge that ended at vertex k now starts there.
        const size_t k = n - 1 - i;
        const size_t before = (k + n - 1) % n;
        out.push_back({contour[k].m_X, contour[k].m_Y, -contour[before].m_Sagitta});
    }
    return out;
}

TnfContour Placed(const TnfContour& contour, const TnfPlacementMap& map)
{
    TnfContour out = contour;
    const double sense = map.IsMirror() ? -1.0 : 1.0;
    for (TnfVertex& v : out)
    {
        map.Apply(v.m_X, v.m_Y);
        v.m_Sagitta *= sense;
    }
    return out;
}

// The paths of one layer, by net, kind and pen.
struct PathKey
{
    int m_Net;
    char m_Kind; // 'p' plane, 'f' fill, 't' trace, 'd' round pad
    double m_Width;
    bool operator<(const PathKey& o) const
    {
        return std::tie(m_Kind, m_Net, m_Width) < std::tie(o.m_Kind, o.m_Net, o.m_Width);
    }
};
// The pads and traces of one net come one after another, so the last path
// used is kept at hand.
class LayerPaths
{
public:
    std::string& operator[](const PathKey& key)
    {
        if (!m_Last || m_LastKey < key || key < m_LastKey)
        {
            m_LastKey = key;
            m_Last = &m_Paths[key];
        }
        return *m_Last;
    }
    const std::map<PathKey, std::string>& All() const { return m_Paths; }

private:
    std::map<PathKey, std::string> m_Paths;
    PathKey m_LastKey{};
    std::string* m_Last = nullptr;
};

struct Box
{
    double m_MinX = std::numeric_limits<double>::infinity();
    double m_MinY = std::numeric_limits<double>::infinity();
    double m_MaxX = -std::numeric_limits<double>::infinity();
    double m_MaxY = -std::numeric_limits<double>::infinity();
    void Add(double x, double y)
    {
        if (!std::isfinite(x) || !std::isfinite(y))
            return;
        m_MinX = std::min(m_MinX, x);
        m_MinY = std::min(m_MinY, y);
        m_MaxX = std::max(m_MaxX, x);
        m_MaxY = std::max(m_MaxY, y);
    }
    bool Empty() const { return !(m_MinX <= m_MaxX); }
};

void AppendJsonString(std::string& out, const std::string& text)
{
    out.push_back('"');
    for (char ch : text)
    {
        const unsigned char c = static_cast<unsigned char>(ch);
        if (c == '"' || c == '\\')
        {
            out.push_back('\\');
            out.push_back(ch);
        }
        else if (c < 0x20 || c == '<' || c == '>' || c == '&')
        {
            // Also keeps "</script>" out of the script.
            static const char* k_Hex = "0123456789abcdef";
            out += "\\u00";
            out.push_back(k_Hex[c >> 4]);
            out.push_back(k_Hex[c & 15]);
        }
        else
            out.push_back(ch);
    }
    out.push_back('"');
}

std::string Html(const std::string& text)
{
    std::string out;
    for (char c : text)
    {
        switch (c)
        {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out.push_back(c);
        }
    }
    return out;
}

class PageBuilder
{
public:
    explicit PageBuilder(const TnfBoard& board) : m_Board(board), m_Layers(board.m_Layers.size()) {}

    std::string Build(const std::string& fileName)
    {
        for (size_t n = 0; n < m_Board.m_Nets.size(); ++n)
            AddNet(static_cast<int>(n), m_Board.m_Nets[n]);
        for (const TnfPlacement& placement : m_Board.m_Placements)
            AddComponent(placement);
        for (const TnfContour& c : m_Board.m_Outline)
            for (const TnfVertex& v : c)
                m_Box.Add(v.m_X, v.m_Y);
        if (m_Box.Empty())
            m_Box = m_Content;
        if (m_Box.Empty())
            m_Box.Add(0.0, 0.0);
        return Page(fileName);
    }

private:
    void AddContourBox(const TnfContour& contour, double pen)
    {
        for (const TnfVertex& v : contour)
        {
            m_Content.Add(v.m_X - pen, v.m_Y - pen);
            m_Content.Add(v.m_X + pen, v.m_Y + pen);
        }
    }

    void AddNet(int n, const TnfNet& net)
    {
        for (const TnfShape& shape : net.m_Shapes)
        {
            LayerPaths& paths = m_Layers[shape.m_Layer];
            for (const TnfContour& contour : shape.m_Contours)
            {
                AddContourBox(contour, shape.m_Width * 0.5);
                if (shape.m_Kind == TnfShape::k_Trace)
                    AppendContour(paths[{n, 't', shape.m_Width}], contour, false);
                else if (shape.m_Kind == TnfShape::k_Plane)
                    AppendContour(paths[{n, 'p', 0.0}], contour, true);
                else
                    AddFill(paths, n, SignedArea(contour) < 0.0 ? Reversed(contour) : contour);
                if (shape.m_Kind != TnfShape::k_Trace && shape.m_Width > 0.0)
                    AppendContour(paths[{n, 't', shape.m_Width}], contour, true);
            }
        }
        for (const TnfVia& via : net.m_Vias)
        {
            auto stack = m_Board.m_PadStacks.find(via.m_PadStack);
            if (stack == m_Board.m_PadStacks.end())
                continue;
            const TnfPlacementMap at = TnfPlacementMap::Move(via.m_X, via.m_Y);
            for (const TnfPadItem& item : stack->second.m_Items)
                if (item.m_Layer >= via.m_FromLayer && item.m_Layer <= via.m_ToLayer)
                    AddPad(item.m_Layer, n, item, at);
            AddHole(stack->second, at);
            m_Content.Add(via.m_X, via.m_Y);
        }
    }

    void AddFill(LayerPaths& paths, int n, const TnfContour& contour)
    {
        AppendContour(paths[{n, 'f', 0.0}], contour, true);
    }

    // One pad of a padstack, at its place in the padstack, on a layer.
    double AddPad(int layer, int n, const TnfPadItem& item, const TnfPlacementMap& placement)
    {
        auto found = m_Board.m_PadShapes.find(item.m_Pad);
        if (found == m_Board.m_PadShapes.end() || layer < 0 || layer >= static_cast<int>(m_Layers.size()))
            return 0.0;
        const TnfPadShape& pad = found->second;
        const TnfPlacementMap at = placement * TnfPlacementMap::Move(item.m_X, item.m_Y);
        LayerPaths& paths = m_Layers[layer];
        const double w = std::fabs(pad.m_Width), h = std::fabs(pad.m_Height);
        double x = 0.0, y = 0.0;
        at.Apply(x, y);
        m_Content.Add(x, y);
        switch (pad.m_Kind)
        {
        case TnfPadShape::k_None:
            return 0.0;
        case TnfPadShape::k_Circle:
            if (w > 0.0)
                AppendContour(paths[{n, 'd', w}], {{x, y, 0.0}}, false);
            return w * 0.5;
        case TnfPadShape::k_Obround:
            if (w != h)
            {
                // A line with round ends as wide as the shorter side.
                const double half = std::fabs(w - h) * 0.5;
                TnfContour line = w > h ? TnfContour{{-half, 0.0, 0.0}, {half, 0.0, 0.0}}
                                        : TnfContour{{0.0, -half, 0.0}, {0.0, half, 0.0}};
                AppendContour(paths[{n, 't', std::min(w, h)}], Placed(line, at), false);
            }
            else if (w > 0.0)
                AppendContour(paths[{n, 'd', w}], {{x, y, 0.0}}, false);
            return std::hypot(w, h) * 0.5;
        case TnfPadShape::k_Rectangle:
            AddPlacedFill(
                paths, n,
                {{-w / 2, -h / 2, 0.0}, {w / 2, -h / 2, 0.0}, {w / 2, h / 2, 0.0}, {-w / 2, h / 2, 0.0}}, at);
            return std::hypot(w, h) * 0.5;
        case TnfPadShape::k_Bullet:
            AddPlacedFill(paths, n, BulletContour(w, h), at);
            return std::hypot(w, h) * 0.5;
        case TnfPadShape::k_Polygon:
        {
            double reach = 0.0;
            for (const TnfVertex& v : pad.m_Outline)
                reach = std::max(reach, std::hypot(v.m_X, v.m_Y) + std::fabs(v.m_Sagitta));
            AddPlacedFill(paths, n, pad.m_Outline, at);
            return reach;
        }
        }
        return 0.0;
    }

    // A rectangle with one half-round end: on the right, or on the top of a
    // pad taller than wide.
    static TnfContour BulletContour(double w, double h)
    {
        if (w >= h)
        {
            const double a = w / 2 - h / 2;
            return {{-w / 2, -h / 2, 0.0}, {a, -h / 2, -h / 2}, {a, h / 2, 0.0}, {-w / 2, h / 2, 0.0}};
        }
        const double a = h / 2 - w / 2;
        return {{-w / 2, -h / 2, 0.0}, {w / 2, -h / 2, 0.0}, {w / 2, a, -w / 2}, {-w / 2, a, 0.0}};
    }

    void AddPlacedFill(LayerPaths& paths, int n, const TnfContour& contour, const TnfPlacementMap& at)
    {
        if (contour.size() < 2)
            return;
        TnfContour placed = Placed(contour, at);
        if (SignedArea(placed) < 0.0)
            placed = Reversed(placed);
        AddFill(paths, n, placed);
    }

    void AddHole(const TnfPadStack& stack, const TnfPlacementMap& at)
    {
        const double w = std::fabs(stack.m_HoleWidth), l = std::fabs(stack.m_HoleLength);
        if (w <= 0.0)
            return;
        if (l <= 0.0 || l == w)
        {
            double x = 0.0, y = 0.0;
            at.Apply(x, y);
            AppendContour(m_Holes[{-1, 'd', w}], {{x, y, 0.0}}, false);
            return;
        }
        // A slot: as wide as the smaller size, along the larger one.
        const double half = std::fabs(l - w) * 0.5;
        TnfContour line = w > l ? TnfContour{{-half, 0.0, 0.0}, {half, 0.0, 0.0}}
                                : TnfContour{{0.0, -half, 0.0}, {0.0, half, 0.0}};
        AppendContour(m_Holes[{-1, 't', std::min(w, l)}], Placed(line, at), false);
    }

    void AddComponent(const TnfPlacement& placement)
    {
        auto footprint = m_Board.m_Footprints.find(placement.m_Footprint);
        if (footprint == m_Board.m_Footprints.end())
            return;
        const int component = static_cast<int>(m_RefDes.size());
        m_RefDes.push_back(placement.m_RefDes);
        const TnfPlacementMap part = TnfPlacementMap::Component(placement.m_X, placement.m_Y,
                                                                placement.m_Rotation, placement.m_Mirrored);
        const int last = static_cast<int>(m_Layers.size()) - 1;
        auto terminals = m_Board.m_Terminals.find(placement.m_RefDes);
        for (size_t p = 0; p < footprint->second.size(); ++p)
        {
            const TnfFootprintPin& pin = footprint->second[p];
            const int net = PinNet(placement.m_RefDes, terminals, pin.m_Name, p);
            const TnfPlacementMap at =
                part * TnfPlacementMap::Move(pin.m_X, pin.m_Y) * TnfPlacementMap::Rotate(pin.m_Rotation);
            PinRecord record{0.0, 0.0, 0.0, last, 0};
            at.Apply(record.m_X, record.m_Y);
            auto stack = m_Board.m_PadStacks.find(pin.m_PadStack);
            if (stack != m_Board.m_PadStacks.end())
            {
                for (const TnfPadItem& item : stack->second.m_Items)
                {
                    const int layer = placement.m_Mirrored ? last - item.m_Layer : item.m_Layer;
                    const double r = AddPad(layer, net, item, at);
                    record.m_Reach = std::max(record.m_Reach, r + std::hypot(item.m_X, item.m_Y));
                    record.m_FirstLayer = std::min(record.m_FirstLayer, layer);
                    record.m_LastLayer = std::max(record.m_LastLayer, layer);
                }
                AddHole(stack->second, at);
            }
            AppendPin(record, component, pin.m_Name, net);
        }
    }

    int PinNet(const std::string& refDes,
               std::map<std::string, std::vector<std::string>>::const_iterator terminals,
               const std::string& pinName, size_t footprintIndex) const
    {
        size_t index = footprintIndex;
        if (terminals != m_Board.m_Terminals.end())
        {
            auto it = std::find(terminals->second.begin(), terminals->second.end(), pinName);
            if (it != terminals->second.end())
                index = static_cast<size_t>(it - terminals->second.begin());
        }
        auto found = m_Board.m_PinNets.find(refDes + "." + std::to_string(index));
        return found == m_Board.m_PinNets.end() ? -1 : found->second;
    }

    // Where a placed pin is and how far its pads reach, on which layers.
    struct PinRecord
    {
        double m_X, m_Y, m_Reach;
        int m_FirstLayer, m_LastLayer;
    };

    void AppendPin(const PinRecord& pin, int component, const std::string& name, int net)
    {
        if (!m_Pins.empty())
            m_Pins.push_back(',');
        m_Pins.push_back('[');
        AppendNumber(m_Pins, pin.m_X);
        m_Pins.push_back(',');
        AppendNumber(m_Pins, pin.m_Y);
        m_Pins.push_back(',');
        AppendNumber(m_Pins, pin.m_Reach);
        m_Pins += ',' + std::to_string(component) + ',';
        AppendJsonString(m_Pins, name);
        m_Pins += ',' + std::to_string(net) + ',' + std::to_string(pin.m_FirstLayer) + ',' +
                  std::to_string(std::max(pin.m_FirstLayer, pin.m_LastLayer)) + ']';
    }

    static void AppendPaths(std::string& out, const LayerPaths& paths)
    {
        for (const auto& [key, d] : paths.All())
        {
            out += "<path class=\"";
            out.push_back(key.m_Kind);
            out += '"';
            if (key.m_Net >= 0)
                out += " data-n=\"" + std::to_string(key.m_Net) + '"';
            if (key.m_Kind == 't' || key.m_Kind == 'd')
            {
                out += " stroke-width=\"";
                AppendNumber(out, key.m_Width);
                out += '"';
            }
            out += " d=\"";
            out += d;
            out += "\"/>\n";
        }
    }

    std::string Header(const std::string& fileName) const
    {
        std::string out = "<header><h1>" + Html(fileName) + "</h1><p>";
        if (!m_Board.m_Date.empty())
            out += "<span id=\"date\">" + Html(m_Board.m_Date) + "</span> &middot; ";
        out += "<span id=\"counts\">" + std::to_string(m_Board.m_Nets.size()) + " nets &middot; " +
               std::to_string(m_Board.m_Placements.size()) + " components &middot; " +
               std::to_string(m_Board.m_ViaCount) + " vias &middot; plane voids:";
        for (size_t i = 0; i < m_Board.m_Layers.size(); ++i)
            out += (i ? ", " : " ") + Html(m_Board.m_Layers[i].m_Name) + " " +
                   std::to_string(m_Board.m_Layers[i].m_PlaneVoids);
        out += "</span></p></header>\n";
        return out;
    }

    std::string Legend() const
    {
        std::string out = "<aside id=\"legend\"><h2>Layers</h2>\n";
        const int count = static_cast<int>(m_Board.m_Layers.size());
        for (int i = 0; i < count; ++i)
        {
            const TnfLayer& layer = m_Board.m_Layers[i];
            out += "<label><input type=\"checkbox\" checked data-layer=\"" + std::to_string(i) +
                   "\"><span class=\"swatch\" style=\"background:" + LayerColour_G(i, count) + "\"></span>" +
                   Html(layer.m_Name) + " <small>" + Html(layer.m_Kind) + "</small></label>\n";
        }
        out += "<label><input type=\"checkbox\" checked data-group=\"holes\"><span class=\"swatch "
               "holes\"></span>"
               "Drill holes</label>\n";
        out +=
            "<label><input type=\"checkbox\" checked data-group=\"edge\"><span class=\"swatch edge\"></span>"
            "Board edge</label>\n</aside>\n";
        return out;
    }

    void Svg(std::string& out) const
    {
        size_t size = m_Pins.size();
        for (const LayerPaths& layer : m_Layers)
            for (const auto& path : layer.All())
                size += path.second.size() + 64;
        out.reserve(out.size() + size + (1 << 16));
        const double w = m_Box.m_MaxX - m_Box.m_MinX, h = m_Box.m_MaxY - m_Box.m_MinY;
        const double margin = std::max(std::max(w, h) * 0.03, 0.5);
        out += "<div id=\"view\"><svg id=\"board\" xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"";
        AppendNumber(out, m_Box.m_MinX - margin);
        out.push_back(' ');
        AppendNumber(out, -m_Box.m_MaxY - margin);
        out.push_back(' ');
        AppendNumber(out, w + 2 * margin);
        out.push_back(' ');
        AppendNumber(out, h + 2 * margin);
        out += "\">\n<path id=\"substrate\" d=\"";
        for (const TnfContour& c : m_Board.m_Outline)
            AppendContour(out, c, true);
        for (const TnfContour& c : m_Board.m_Cuts)
            AppendContour(out, c, true);
        out += "\"/>\n";
        // The bottom layer first, so that the top copper lies on top.
        const int count = static_cast<int>(m_Layers.size());
        for (int i = count - 1; i >= 0; --i)
        {
            out += "<g class=\"layer\" id=\"layer-" + std::to_string(i) +
                   "\" style=\"color:" + LayerColour_G(i, count) + "\">\n";
            AppendPaths(out, m_Layers[i]);
            out += "</g>\n";
        }
        out += "<g id=\"holes\">\n";
        AppendPaths(out, m_Holes);
        out += "</g>\n<path id=\"edge\" d=\"";
        for (const TnfContour& c : m_Board.m_Outline)
            AppendContour(out, c, true);
        for (const TnfContour& c : m_Board.m_Cuts)
            AppendContour(out, c, true);
        out += "\"/>\n</svg></div>\n";
    }

    void Data(std::string& out, const std::string& fileName) const
    {
        out += "<script>\nconst TNF = {\"file\":";
        AppendJsonString(out, fileName);
        out += ",\n\"layers\":[";
        for (size_t i = 0; i < m_Board.m_Layers.size(); ++i)
        {
            out += i ? "," : "";
            AppendJsonString(out, m_Board.m_Layers[i].m_Name);
        }
        out += "],\n\"nets\":[";
        for (size_t i = 0; i < m_Board.m_Nets.size(); ++i)
        {
            out += i ? "," : "";
            AppendJsonString(out, m_Board.m_Nets[i].m_Name);
        }
        out += "],\n\"components\":[";
        for (size_t i = 0; i < m_RefDes.size(); ++i)
        {
            out += i ? "," : "";
            AppendJsonString(out, m_RefDes[i]);
        }
        out += "],\n\"pins\":[" + m_Pins + "]};\n</script>\n";
    }

    std::string Page(const std::string& fileName) const
    {
        std::string out = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>";
        out += Html(fileName);
        if (!m_Board.m_Date.empty())
            out += " (" + Html(m_Board.m_Date) + ")";
        out += " - TnfView</title>\n<style>\n";
        out += k_PageStyle;
        out += "</style>\n</head>\n<body>\n" + Header(fileName) + "<main>\n" + Legend();
        Svg(out);
        out += "</main>\n<div id=\"info\">&nbsp;</div>\n";
        Data(out, fileName);
        out += "<script>\n";
        out += k_PageScript;
        out += "</script>\n</body>\n</html>\n";
        return out;
    }

    const TnfBoard& m_Board;
    std::vector<LayerPaths> m_Layers;
    LayerPaths m_Holes;
    std::vector<std::string> m_RefDes;
    std::string m_Pins;
    Box m_Box;
    Box m_Content;
};
} // namespace

const char* LayerColour_G(int layer, int count)
{
    if (layer == 0)
        return "#d8322a";
    if (layer == count - 1)
        return "#2f64e0";
    static const char* const k_Inner[] = {"#e0a82a", "#2fb34f", "#b044d6", "#2ab8c8",
                                          "#e8742a", "#93cf3a", "#d6508f", "#8a8ff0"};
    return k_Inner[(layer - 1) % 8];
}

std::string WriteTnfPage_G(const TnfBoard& board, const std::string& fileName)
{
    return PageBuilder(board).Build(fileName);
}

} // namespace tnfview
