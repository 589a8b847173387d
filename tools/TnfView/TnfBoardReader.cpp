// TnfBoardReader.cpp - walks the block tree of a neutral file and keeps what
// the page draws.
//
// The block reader never fails: damaged text ends a block where the damage
// starts. So the file is first checked at both ends: it must open with the
// root block's "$begin" line and close with its "$end" line. A file cut short
// anywhere loses that last line. Inside, the walk is lenient in the way of the
// translator's own readers: an item of an unexpected form is passed over.
#include "tools/TnfView/TnfBoardReader.h"

#include "core/lib/vellum/LongFileName.h"
#include "core/lib/vellum/streamio/Block.h"
#include "core/lib/vellum/streamio/TokenStream.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace tnfview
{
namespace
{
constexpr std::string_view k_RootBegin = "$begin 'TarvexNeutralFile'";
constexpr std::string_view k_RootEnd = "$end 'TarvexNeutralFile'";

// The file's names are 8-bit text, one character per code unit; the page is
// UTF-8.
std::string Utf8(const AString& text)
{
    std::string out;
    out.reserve(text.size());
    for (wchar_t wc : text)
    {
        const unsigned c = static_cast<unsigned>(wc) & 0xFFu;
        if (c < 0x80)
            out.push_back(static_cast<char>(c));
        else
        {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return out;
}

const io::CBlock* AsBlock(const io::CBlock_ptr<io::CBlock_item>& item)
{
    return item->IsBlock() ? static_cast<const io::CBlock*>(item.Item()) : nullptr;
}
const io::CBlock_func* AsFunc(const io::CBlock_item* item)
{
    return item && item->IsFunc() ? static_cast<const io::CBlock_func*>(item) : nullptr;
}

const io::CBlock* FindChild(const io::CBlock* block, const wchar_t* name)
{
    if (!block)
        return nullptr;
    for (const auto& item : *block)
        if (const io::CBlock* child = AsBlock(item); child && child->Name() == name)
            return child;
    return nullptr;
}

double Number(const io::CBlock_func& func, size_t index)
{
    double value = 0.0;
    if (index < func.GetArgumentCount() && func.GetArgumentValue(index).Query(value) && std::isfinite(value))
        return value;
    return 0.0;
}

std::string Text(const io::CBlock_func& func, size_t index)
{
    AString value;
    if (index < func.GetArgumentCount())
        func.GetArgumentValue(index).Query(value);
    return Utf8(value);
}

const io::CBlock_func* Nested(const io::CBlock_func& func, size_t index)
{
    return index < func.GetArgumentCount() ? AsFunc(func.GetArgumentItem(index)) : nullptr;
}

// The vertex and Arc items of a Path or Polygon from an argument on; the
// width of a path's line is the third argument of its vertices.
TnfContour ReadContour(const io::CBlock_func& func, size_t first, double* lineWidth = nullptr)
{
    TnfContour contour;
    for (size_t i = first; i < func.GetArgumentCount(); ++i)
    {
        const io::CBlock_func* item = Nested(func, i);
        if (!item)
            continue;
        if (item->Name() == L"vertex")
        {
            contour.push_back({Number(*item, 0), Number(*item, 1), 0.0});
            if (lineWidth && contour.size() == 1)
                *lineWidth = std::fabs(Number(*item, 2));
        }
        else if (item->Name() == L"Arc" && !contour.empty())
            contour.back().m_Sagitta = Number(*item, 0);
    }
    return contour;
}

class BoardReader
{
public:
    explicit BoardReader(TnfBoard& board) : m_Board(board) {}

    void Read(const io::CBlock& root)
    {
        for (const auto& item : root)
            if (item->IsNamedValue() && item->Name() == L"Date")
            {
                AString date;
                static_cast<const io::CBlock_named_value*>(item.Item())->Value().Query(date);
                m_Board.m_Date = Utf8(date);
            }
        const io::CBlock* layoutData = FindChild(&root, L"LayoutData");
        const io::CBlock* cell = FindChild(layoutData, L"LayoutCell");
        const io::CBlock* layout = FindChild(cell, L"Layout");
        ReadLayers(FindChild(layout, L"Layers"));
        ReadPadShapes(FindChild(&root, L"PadShapes"));
        ReadPadStacks(FindChild(&root, L"PadStacks"));
        ReadFootprints(FindChild(&root, L"Footprints"));
        ReadLayoutNets(FindChild(layout, L"LayoutNets"));
        ReadNetlist(FindChild(cell, L"Netlist"), FindChild(&root, L"Components"));
        ReadPlacements(FindChild(layout, L"LayoutComponents"));
        const io::CBlock* top = FindChild(FindChild(layoutData, L"Design"), L"TopLayout");
        ReadDimensions(FindChild(top, L"PhysicalDimensions"));
    }

private:
    void ReadLayers(const io::CBlock* layers)
    {
        if (!layers)
            return;
        for (const auto& item : *layers)
        {
            const io::CBlock_func* func = AsFunc(item.Item());
            if (!func || func->Name() != L"StackupLayer")
                continue;
            const std::string kind = Text(*func, 1);
            if (kind != "Dielectric")
                m_Board.m_Layers.push_back({Text(*func, 0), kind, 0});
        }
    }

    void ReadPadShapes(const io::CBlock* shapes)
    {
        if (!shapes)
            return;
        for (const auto& item : *shapes)
        {
            const io::CBlock_func* func = AsFunc(item.Item());
            if (!func)
                continue;
            TnfPadShape shape;
            if (const io::CBlock_func* form = Nested(*func, 0))
            {
                const AString& kind = form->Name();
                shape.m_Width = Number(*form, 0);
                shape.m_Height = Number(*form, 1);
                if (kind == L"Circle")
                    shape.m_Kind = TnfPadShape::k_Circle;
                else if (kind == L"Rectangle")
                    shape.m_Kind = TnfPadShape::k_Rectangle;
                else if (kind == L"Obround")
                    shape.m_Kind = TnfPadShape::k_Obround;
                else if (kind == L"Bullet")
                    shape.m_Kind = TnfPadShape::k_Bullet;
                else if (kind == L"Polygon")
                {
                    shape.m_Kind = TnfPadShape::k_Polygon;
                    shape.m_Outline = ReadContour(*form, 0);
                }
            }
            // A quoted name such as 'NULLPAD' is the pad that padstacks call
            // NULLPAD.
            std::string name = Utf8(func->Name());
            if (name.size() >= 2 && name.front() == '\'' && name.back() == '\'')
                name = name.substr(1, name.size() - 2);
            m_Board.m_PadShapes.emplace(name, shape);
        }
    }

    void ReadPadStacks(const io::CBlock* stacks)
    {
        if (!stacks)
            return;
        const int last = static_cast<int>(m_Board.m_Layers.size()) - 1;
        for (const auto& item : *stacks)
        {
            const io::CBlock* block = AsBlock(item);
            if (!block)
                continue;
            TnfPadStack stack;
            int signal = 0;
            for (const auto& child : *block)
            {
                const io::CBlock_func* func = AsFunc(child.Item());
                if (!func)
                    continue;
                const AString& label = func->Name();
                if (label == L"Hole")
                    ReadHole(*func, stack);
                int layer = -1;
                if (label == L"Top")
                    layer = 0;
                else if (label == L"Bottom")
                    layer = last;
                else if (label == L"Signal")
                    layer = ++signal;
                if (layer >= 0 && layer <= last)
                    stack.m_Items.push_back({layer, Text(*func, 0), Number(*func, 1), Number(*func, 2)});
            }
            m_Board.m_PadStacks.emplace(Utf8(block->Name()), std::move(stack));
        }
    }

    static void ReadHole(const io::CBlock_func& hole, TnfPadStack& stack)
    {
        if (const io::CBlock_func* slot = Nested(hole, 0))
        {
            stack.m_HoleWidth = Number(*slot, 0);
            stack.m_HoleLength = Number(*slot, 1);
        }
        else
            stack.m_HoleWidth = Number(hole, 0);
    }

    void ReadFootprints(const io::CBlock* footprints)
    {
        if (!footprints)
            return;
        for (const auto& item : *footprints)
        {
            const io::CBlock* footprint = AsBlock(item);
            const io::CBlock* pins = footprint ? FindChild(footprint, L"FpPins") : nullptr;
            if (!pins)
                continue;
            std::vector<TnfFootprintPin>& list = m_Board.m_Footprints[Utf8(footprint->Name())];
            for (const auto& def : *pins)
            {
                const io::CBlock* pinDef = AsBlock(def);
                if (!pinDef)
                    continue;
                for (const auto& child : *pinDef)
                    if (const io::CBlock_func* pin = AsFunc(child.Item()); pin && pin->Name() == L"FpPin")
                        list.push_back({Text(*pin, 0), Number(*pin, 1), Number(*pin, 2), Number(*pin, 4),
                                        Text(*pin, 3)});
            }
        }
    }

    int NetIndex(const std::string& name)
    {
        auto [it, added] = m_NetIndex.emplace(name, static_cast<int>(m_Board.m_Nets.size()));
        if (added)
            m_Board.m_Nets.push_back({name, {}, {}});
        return it->second;
    }

    void ReadLayoutNets(const io::CBlock* nets)
    {
        if (!nets)
            return;
        for (const auto& item : *nets)
        {
            const io::CBlock* block = AsBlock(item);
            if (!block)
                continue;
            AString name;
            if (const io::CBlock_named_value* named = block->FindNamedValue(L"Name"))
                named->Value().Query(name);
            const int index = NetIndex(Utf8(name));
            for (const auto& child : *block)
                ReadNetItem(child, m_Board.m_Nets[index]);
        }
    }

    void ReadNetItem(const io::CBlock_ptr<io::CBlock_item>& item, TnfNet& net)
    {
        if (const io::CBlock* block = AsBlock(item))
        {
            if (block->Name() == L"PolygonWithVoids")
                ReadPlane(*block, net);
            return;
        }
        const io::CBlock_func* func = AsFunc(item.Item());
        if (!func)
            return;
        if (func->Name() == L"Via")
        {
            const int from = m_Board.LayerIndex(Text(*func, 1));
            const int to = m_Board.LayerIndex(Text(*func, 2));
            ++m_Board.m_ViaCount;
            if (from >= 0 && to >= 0)
                net.m_Vias.push_back({std::min(from, to), std::max(from, to), Number(*func, 3),
                                      Number(*func, 4), Text(*func, 5)});
        }
        else if (func->Name() == L"Graphics")
        {
            const int layer = m_Board.LayerIndex(Text(*func, 0));
            const io::CBlock_func* shape = Nested(*func, 1);
            if (layer >= 0 && shape)
                ReadGraphic(*shape, layer, net);
        }
    }

    static void ReadGraphic(const io::CBlock_func& shape, int layer, TnfNet& net)
    {
        TnfShape out;
        out.m_Layer = layer;
        if (shape.Name() == L"Path")
        {
            out.m_Kind = TnfShape::k_Trace;
            out.m_Contours.push_back(ReadContour(shape, 1, &out.m_Width));
        }
        else if (shape.Name() == L"Polygon")
        {
            out.m_Kind = TnfShape::k_Fill;
            out.m_Width = std::fabs(Number(shape, 1));
            out.m_Contours.push_back(ReadContour(shape, 2));
        }
        else if (shape.Name() == L"Circle")
        {
            out.m_Kind = TnfShape::k_Fill;
            out.m_Width = std::fabs(Number(shape, 1));
            out.m_Contours.push_back(
                CircleContour_G(Number(shape, 2), Number(shape, 3), Number(shape, 4) * 0.5));
        }
        else
            return;
        net.m_Shapes.push_back(std::move(out));
    }

    void ReadPlane(const io::CBlock& block, TnfNet& net)
    {
        AString layerName;
        if (const io::CBlock_named_value* named = block.FindNamedValue(L"Layer"))
            named->Value().Query(layerName);
        const int layer = m_Board.LayerIndex(Utf8(layerName));
        if (layer < 0)
            return;
        TnfShape plane;
        plane.m_Kind = TnfShape::k_Plane;
        plane.m_Layer = layer;
        for (const auto& item : block)
        {
            if (const io::CBlock_func* outline = AsFunc(item.Item());
                outline && outline->Name() == L"Polygon")
            {
                plane.m_Width = std::fabs(Number(*outline, 1));
                plane.m_Contours.insert(plane.m_Contours.begin(), ReadContour(*outline, 2));
            }
            const io::CBlock* voids = AsBlock(item);
            if (!voids || voids->Name() != L"voids")
                continue;
            for (const auto& v : *voids)
            {
                const io::CBlock_func* shape = AsFunc(v.Item());
                if (!shape)
                    continue;
                if (shape->Name() == L"Polygon")
                    plane.m_Contours.push_back(ReadContour(*shape, 2));
                else if (shape->Name() == L"Circle")
                    plane.m_Contours.push_back(
                        CircleContour_G(Number(*shape, 2), Number(*shape, 3), Number(*shape, 4) * 0.5));
                else
                    continue;
                ++m_Board.m_Layers[layer].m_PlaneVoids;
            }
        }
        net.m_Shapes.push_back(std::move(plane));
    }

    // Which net each placed pin is on: Compinst names the component type of
    // a reference designator, the type lists the pins in the order the
    // netlist counts them, and each Net names its pins "REFDES.index".
    void ReadNetlist(const io::CBlock* netlist, const io::CBlock* components)
    {
        if (!netlist)
            return;
        std::map<AString, const io::CBlock*> types;
        if (components)
            for (const auto& item : *components)
                if (const io::CBlock* type = AsBlock(item))
                    types.emplace(type->Name(), type);
        for (const auto& item : *netlist)
        {
            const io::CBlock* block = AsBlock(item);
            if (!block)
                continue;
            if (block->Name() == L"Compinst")
                ReadCompinst(*block, types);
            else if (block->Name() == L"Net")
                ReadNet(*block);
        }
    }

    void ReadCompinst(const io::CBlock& block, const std::map<AString, const io::CBlock*>& types)
    {
        for (const auto& child : block)
        {
            const io::CBlock_func* func = AsFunc(child.Item());
            if (!func)
                continue;
            AString typeName;
            if (func->GetArgumentCount() > 0)
                func->GetArgumentValue(0).Query(typeName);
            std::vector<std::string>& pins = m_Board.m_Terminals[Utf8(func->Name())];
            auto type = types.find(typeName);
            if (type == types.end())
                return;
            for (const auto& t : *type->second)
                if (const io::CBlock_func* terminal = AsFunc(t.Item());
                    terminal && terminal->Name() == L"Terminal")
                    pins.push_back(Text(*terminal, 0));
            return;
        }
    }

    void ReadNet(const io::CBlock& block)
    {
        int net = -1;
        for (const auto& child : block)
        {
            if (const io::CBlock_func* func = AsFunc(child.Item()); func && net < 0)
                net = NetIndex(Utf8(func->Name()));
            if (!child->IsNamedValue() || child->Name() != L"NetPin" || net < 0)
                continue;
            AString pin;
            static_cast<const io::CBlock_named_value*>(child.Item())->Value().Query(pin);
            m_Board.m_PinNets[Utf8(pin)] = net;
        }
    }

    void ReadPlacements(const io::CBlock* components)
    {
        if (!components)
            return;
        for (const auto& item : *components)
        {
            const io::CBlock* block = AsBlock(item);
            if (!block)
                continue;
            for (const auto& child : *block)
            {
                const io::CBlock_func* f = AsFunc(child.Item());
                if (!f || f->Name() != L"LayoutCompInst")
                    continue;
                bool mirrored = false;
                if (f->GetArgumentCount() > 6)
                    f->GetArgumentValue(6).Query(mirrored);
                m_Board.m_Placements.push_back({Text(*f, 0), Text(*f, 1), Text(*f, 2), Number(*f, 3),
                                                Number(*f, 4), Number(*f, 5), mirrored});
            }
        }
    }

    void ReadDimensions(const io::CBlock* dimensions)
    {
        if (!dimensions)
            return;
        for (const auto& item : *dimensions)
        {
            const io::CBlock_func* func = AsFunc(item.Item());
            if (!func)
                continue;
            if (func->Name() == L"Polygon")
                m_Board.m_Outline.push_back(ReadContour(*func, 2));
            else if (func->Name() == L"Cut")
                if (const io::CBlock_func* shape = Nested(*func, 2))
                    m_Board.m_Cuts.push_back(CutContour(*shape));
        }
    }

    // A cut-out of any kind as a closed contour.
    static TnfContour CutContour(const io::CBlock_func& shape)
    {
        if (shape.Name() == L"Path")
            return ReadContour(shape, 1);
        if (shape.Name() == L"Polygon")
            return ReadContour(shape, 2);
        const double cx = Number(shape, 2), cy = Number(shape, 3);
        if (shape.Name() == L"Circle")
            return CircleContour_G(cx, cy, Number(shape, 4) * 0.5);
        if (shape.Name() == L"Rectangle")
        {
            const double w = Number(shape, 4) * 0.5, h = Number(shape, 5) * 0.5;
            return {
                {cx - w, cy - h, 0.0}, {cx + w, cy - h, 0.0}, {cx + w, cy + h, 0.0}, {cx - w, cy + h, 0.0}};
        }
        return {};
    }

    TnfBoard& m_Board;
    std::map<std::string, int> m_NetIndex;
};

// The last line of the text that is not blank.
std::string_view LastLine(std::string_view text)
{
    size_t end = text.find_last_not_of(" \t\r\n");
    if (end == std::string_view::npos)
        return {};
    const size_t start = text.find_last_of('\n', end);
    const std::string_view line = text.substr(start == std::string_view::npos ? 0 : start + 1);
    return line.substr(0, line.find_last_not_of(" \t\r\n") + 1);
}
} // namespace

TnfContour CircleContour_G(double cx, double cy, double radius)
{
    // From the right through the top to the left and back: counter-clockwise
    // with y up, which is a negative sagitta on both halves.
    return {{cx + radius, cy, -radius}, {cx - radius, cy, -radius}};
}

int TnfBoard::LayerIndex(const std::string& name) const
{
    for (size_t i = 0; i < m_Layers.size(); ++i)
        if (m_Layers[i].m_Name == name)
            return static_cast<int>(i);
    return -1;
}

bool ParseTnfBoard_G(std::string text, TnfBoard& board, std::string& error)
{
    std::string_view view(text);
    if (view.substr(0, 3) == "\xEF\xBB\xBF")
        view.remove_prefix(3);
    const size_t first = view.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || view.substr(first, k_RootBegin.size()) != k_RootBegin)
    {
        error = "not a neutral file: it does not begin with " + std::string(k_RootBegin);
        return false;
    }
    if (LastLine(view).find(k_RootEnd) == std::string_view::npos)
    {
        error = "the neutral file is cut short: it does not end with " + std::string(k_RootEnd);
        return false;
    }
    io::CBlock_text_sharing sharing;
    io::CToken_istream in(std::move(text));
    io::CBlock root(AString(L"TarvexNeutralFile"));
    in >> root;
    BoardReader(board).Read(root);
    if (board.m_Layers.empty())
    {
        error = "the neutral file has no conductive layer in its stack-up";
        return false;
    }
    return true;
}

bool ReadTnfBoard_G(const std::string& path, TnfBoard& board, std::string& error)
{
    std::string text;
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
    {
        error = "cannot be read";
        return false;
    }
    // One read into a string of the file's size where the size is known; a
    // file of a large board runs to hundreds of MB.
    std::error_code ec;
    const auto size = std::filesystem::file_size(path, ec);
    if (!ec && size < (std::uintmax_t(1) << 40))
        text.reserve(static_cast<size_t>(size) + 1);
    char buffer[1 << 16];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, f)) > 0;)
        text.append(buffer, n);
    const bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed)
    {
        error = "cannot be read";
        return false;
    }
    return ParseTnfBoard_G(std::move(text), board, error);
}

} // namespace tnfview
