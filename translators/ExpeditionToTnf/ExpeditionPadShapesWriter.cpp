// ExpeditionPadShapesWriter.cpp - the PadShapes block: the outline of every
// pad that a used padstack refers to, and the null pad.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include "core/lib/vellum/Assert.h"
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"

#include <utility>

using io::CBlock_func;
using io::CBlockFuncPtr;
using io::CBlockPtr;

namespace
{
bool Is(const AString& text, const wchar_t* word)
{
    return text.CompareNoCase(word) == 0;
}

// width, height and the end radius of a rectangle-like pad, signed as they come.
void AddRectangleArguments(CBlock_func& function, const ExpeditionRectangle& rect, bool withRadius)
{
    const double width = rect.m_X2 - rect.m_X1;
    const double height = rect.m_Y2 - rect.m_Y1;
    function << width << height;
    if (withRadius)
        function << std::min(width * 0.5, height * 0.5);
}
} // namespace

// The shape function of a pad; a pad of several loops, an unknown shape word
// and a polygon of fewer than three vertices leave the entry without argument.
// False when the entry has no shape of the pad's own: nothing, or a circle of
// no size for a circle pad without its circle.
bool ExpeditionToTnf::AddPadShape(CBlock_func& entry, ExpeditionPad& pad)
{
    if (pad.IsMultiLoop())
        return false;
    ExpeditionShapes* shape = pad.m_Shape;
    if (Is(pad.m_ShapeName, L"Circle"))
    {
        ExpeditionCircle* circlePtr = shape ? shape->AsCircle() : nullptr;
        VELLUM_ASSERT(circlePtr);
        CBlock_func circle = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Circle);
        circle << (circlePtr ? 2.0 * circlePtr->m_Radius : 0.0);
        entry << circle;
        return circlePtr != nullptr;
    }
    const bool rectangle = Is(pad.m_ShapeName, L"Square") || Is(pad.m_ShapeName, L"Rectangle");
    const bool oblong = Is(pad.m_ShapeName, L"Oblong");
    const bool bullet = Is(pad.m_ShapeName, L"Bullet");
    if (rectangle || oblong || bullet)
    {
        ExpeditionRectangle* rectPtr = shape ? shape->AsRectangle() : nullptr;
        VELLUM_ASSERT(rectPtr);
        if (!rectPtr)
            return false;
        // The model's "Oblong" is the file's "Obround".
        CBlock_func function(rectangle ? L"Rectangle" : oblong ? L"Obround" : L"Bullet");
        AddRectangleArguments(function, *rectPtr, !rectangle);
        entry << function;
        return true;
    }
    if (Is(pad.m_ShapeName, L"Polygon"))
    {
        ExpeditionPolygon* polygon = shape ? shape->AsPolygon() : nullptr;
        if (!polygon || polygon->m_Vertices.size() < 3)
            return false;
        CBlock_func function = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Polygon);
        AddVertices(function, polygon->m_Vertices);
        entry << function;
        return true;
    }
    return false;
}

// One nested vertex per vertex, an Arc behind each vertex whose edge bulges.
void ExpeditionToTnf::AddVertices(CBlock_func& function, const std::vector<ExpeditionVertex*>& vertices)
{
    for (const ExpeditionVertex* v : vertices)
    {
        CBlock_func vertex = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Vertex);
        vertex << v->x << v->y;
        function << std::move(vertex);
        if (v->arcHeight != 0.0)
        {
            CBlock_func arc = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Arc);
            arc << v->arcHeight;
            function << std::move(arc);
        }
    }
}

CBlockPtr ExpeditionToTnf::WritePadShapes(ElementList& elements)
{
    CBlockPtr block(L"PadShapes");
    for (ExpeditionBaseElement* element : elements)
    {
        ExpeditionPad* pad = element->AsPad();
        if (!pad || Is(pad->m_PadType, L"Thermal") || !m_UsedPads.count(pad->m_Name))
            continue;
        CBlockFuncPtr entry(pad->m_Name);
        if (!AddPadShape(*entry, *pad) && m_Diagnostics && !pad->IsMultiLoop())
            m_Diagnostics->NullPadShape(pad->m_Name, pad->m_ShapeName);
        *block << entry;
        // The further loops of the pad stand right behind it, used or not.
        const auto loops = m_PadLoops.find(pad->m_Name);
        if (loops == m_PadLoops.end())
            continue;
        for (ExpeditionBaseElement* loop : loops->second)
            if (ExpeditionPad* loopPad = loop ? loop->AsPad() : nullptr)
            {
                CBlockFuncPtr loopEntry(loopPad->m_Name);
                if (!AddPadShape(*loopEntry, *loopPad) && m_Diagnostics && !loopPad->IsMultiLoop())
                    m_Diagnostics->NullPadShape(loopPad->m_Name, loopPad->m_ShapeName);
                *block << loopEntry;
            }
    }
    CBlock_func nullPad(L"'NULLPAD'");
    CBlock_func circle = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Circle);
    circle << 0.0;
    nullPad << circle;
    *block << nullPad;
    return block;
}
