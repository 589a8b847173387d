// ExpeditionPlanes.cpp - the plane copper of a net: outlines and voids as
// the layout tool generated them, paired into shapes with voids.
//
// The generated data gives a plane layer's contours side by side, outlines
// and voids alike. Nesting tells them apart: a contour inside an odd number
// of others is a void, inside an even number an outline (an island in a void
// is an outline again). The pairing looks up candidates through a grid of
// the contours' boxes, so a plane with tens of thousands of voids resolves
// in near-linear time; the answers are those of testing every pair.
#include "translators/ExpeditionToTnf/ExpeditionLayout.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <new>
#include <optional>
#include <utility>

namespace
{
// The contours whose boxes hold a point, found through a grid over all boxes.
// Boxes that span many cells are kept aside and always offered.
class BoxGrid
{
public:
    explicit BoxGrid(const std::vector<geom::Box>& boxes)
    {
        for (const geom::Box& box : boxes)
            if (!box.IsEmpty())
                m_All |= box;
        const size_t n = boxes.size();
        m_Cells = std::max<size_t>(1, static_cast<size_t>(std::sqrt(static_cast<double>(n))));
        m_Grid.resize(m_Cells * m_Cells);
        if (m_All.IsEmpty())
            return;
        for (size_t i = 0; i < n; ++i)
        {
            const geom::Box& box = boxes[i];
            if (box.IsEmpty())
                continue;
            const size_t x0 = Cell(box.GetMinX().GetValue(), true), x1 = Cell(box.GetMaxX().GetValue(), true);
            const size_t y0 = Cell(box.GetMinY().GetValue(), false),
                         y1 = Cell(box.GetMaxY().GetValue(), false);
            if ((x1 - x0 + 1) * (y1 - y0 + 1) > 16)
            {
                m_Large.push_back(i);
                continue;
            }
            for (size_t x = x0; x <= x1; ++x)
                for (size_t y = y0; y <= y1; ++y)
                    m_Grid[x * m_Cells + y].push_back(i);
        }
    }

    // Indices, ascending, of the boxes that may hold the point. The list is
    // the grid's own and holds until the next call.
    const std::vector<size_t>& Candidates(const geom::Point& p) const
    {
        if (m_All.IsEmpty())
            return m_Large;
        // Both lists are ascending already, and no box is in both.
        const auto& cell = m_Grid[Cell(p.m_X.GetValue(), true) * m_Cells + Cell(p.m_Y.GetValue(), false)];
        m_Found.resize(m_Large.size() + cell.size());
        std::merge(m_Large.begin(), m_Large.end(), cell.begin(), cell.end(), m_Found.begin());
        return m_Found;
    }

private:
    size_t Cell(double v, bool x) const
    {
        const double lo = (x ? m_All.GetMinX() : m_All.GetMinY()).GetValue();
        const double hi = (x ? m_All.GetMaxX() : m_All.GetMaxY()).GetValue();
        if (!(hi > lo))
            return 0;
        const double t = (v - lo) / (hi - lo) * static_cast<double>(m_Cells);
        if (!(t > 0.0))
            return 0;
        // A point far outside all boxes gives a t beyond any integer.
        if (!(t < static_cast<double>(m_Cells - 1)))
            return m_Cells - 1;
        return static_cast<size_t>(t);
    }

    geom::Box m_All;
    size_t m_Cells = 1;
    std::vector<std::vector<size_t>> m_Grid;
    std::vector<size_t> m_Large;
    mutable std::vector<size_t> m_Found;
};

// Whether inner's box lies in outer's, with room for the accuracy of the
// relation tests behind it.
bool BoxMayHold(const geom::Box& outer, const geom::Box& inner)
{
    const double slack = 1e-6;
    return inner.GetMinX().GetValue() >= outer.GetMinX().GetValue() - slack &&
           inner.GetMaxX().GetValue() <= outer.GetMaxX().GetValue() + slack &&
           inner.GetMinY().GetValue() >= outer.GetMinY().GetValue() - slack &&
           inner.GetMaxY().GetValue() <= outer.GetMaxY().GetValue() + slack;
}

geom::Point BoxCentre(const geom::Box& box)
{
    return box.GetCenter();
}
} // namespace

namespace
{
// The polygons of the contours that hold others, made once each. Only the
// first few are kept, so that a plane of voids inside voids holds no copy of
// them all; the others are made again for each question.
class ContainerCache
{
public:
    explicit ContainerCache(const std::vector<ExpeditionPlanePolygon>& contours) : m_Contours(contours) {}

    const geom::Polygon& Get(size_t index)
    {
        const auto found = m_Made.find(index);
        if (found != m_Made.end())
            return found->second;
        if (m_Made.size() < k_Kept)
            return m_Made.emplace(index, m_Contours[index].GetPolygon()).first->second;
        m_Spare = m_Contours[index].GetPolygon();
        return m_Spare;
    }

private:
    static constexpr size_t k_Kept = 64;
    const std::vector<ExpeditionPlanePolygon>& m_Contours;
    std::map<size_t, geom::Polygon> m_Made;
    geom::Polygon m_Spare;
};
} // namespace

namespace
{
// Where a contour that many small ones are tested against has its inside,
// cell by cell over its box. A cell that no edge comes near lies wholly
// inside the contour or wholly outside it, and so does every such cell it
// shares a side with: one point test answers for a whole region of them. A
// small contour whose box lies in the cells of one region is then held by
// the big one, or not, without a test of its own, and the answer is the one
// the test would give: no edge of either comes within the accuracy of the
// other, and its first point lies where the region's point lies. Near an
// edge the cells say nothing and the caller tests.
class ClearCells
{
public:
    enum Answer
    {
        k_Unknown,
        k_Held,
        k_NotHeld
    };

    // A grid of about cellCount cells over the contour's box; none at all for
    // a contour without area.
    ClearCells(const geom::Polygon& contour, double accuracy, size_t cellCount)
        : m_Contour(contour), m_Accuracy(accuracy)
    {
        const geom::Box box = contour.GetBBox();
        if (box.IsEmpty())
            return;
        m_X0 = box.GetMinX().GetValue();
        m_Y0 = box.GetMinY().GetValue();
        const double width = box.GetMaxX().GetValue() - m_X0, height = box.GetMaxY().GetValue() - m_Y0;
        if (!(width > 0.0 && height > 0.0 && std::isfinite(width) && std::isfinite(height)))
            return;
        // A box of no size in doubles (coordinates near the smallest double)
        // gets no grid: its side would come out as zero and its count of
        // cells without bound.
        const double wanted = static_cast<double>(std::max<size_t>(cellCount, 1));
        const double side = std::sqrt(width / wanted * height);
        if (!(side > 0.0 && std::isfinite(side)))
            return;
        const double nx = std::ceil(width / side), ny = std::ceil(height / side);
        if (!(nx >= 1.0 && ny >= 1.0 && nx * ny <= 4.0 * wanted))
            return;
        m_Nx = static_cast<size_t>(nx);
        m_Ny = static_cast<size_t>(ny);
        m_Dx = width / static_cast<double>(m_Nx);
        m_Dy = height / static_cast<double>(m_Ny);
        m_Region.assign(m_Nx * m_Ny, k_Free);
        for (const geom::Arc& edge : contour.GetEdges())
            MarkNear(edge.GetBBox());
        Label();
    }

    // Whether the contour holds a small one with this box, if the cells know.
    Answer Holds(const geom::Box& inner)
    {
        if (m_Region.empty() || inner.IsEmpty())
            return k_Unknown;
        size_t x0 = 0, x1 = 0, y0 = 0, y1 = 0;
        if (!Span(inner.GetMinX().GetValue() - k_Margin, inner.GetMaxX().GetValue() + k_Margin, m_X0, m_Dx,
                  m_Nx, x0, x1) ||
            !Span(inner.GetMinY().GetValue() - k_Margin, inner.GetMaxY().GetValue() + k_Margin, m_Y0, m_Dy,
                  m_Ny, y0, y1))
            return k_Unknown;
        const int32_t region = m_Region[x0 * m_Ny + y0];
        for (size_t x = x0; x <= x1; ++x)
            for (size_t y = y0; y <= y1; ++y)
                if (const int32_t r = m_Region[x * m_Ny + y]; r < 0 || r != region)
                    return k_Unknown;
        signed char& inside = m_Inside[static_cast<size_t>(region)];
        if (inside < 0)
        {
            const size_t cell = m_Seed[static_cast<size_t>(region)];
            const geom::Point centre(m_X0 + (static_cast<double>(cell / m_Ny) + 0.5) * m_Dx,
                                     m_Y0 + (static_cast<double>(cell % m_Ny) + 0.5) * m_Dy);
            inside = m_Contour.IsPointInside(centre, m_Accuracy) ? 1 : 0;
        }
        return inside ? k_Held : k_NotHeld;
    }

private:
    // How far from every edge a cell stays to count as clear: far beyond the
    // accuracy of the relation tests, far below the size of any void.
    static constexpr double k_Margin = 1e-6;
    static constexpr int32_t k_Free = -1; // not labelled yet
    static constexpr int32_t k_Near = -2; // an edge comes near

    // The cells that the interval [lo, hi] touches along one axis; false when
    // it leaves the grid. The index is monotone in the coordinate, so a point
    // within the interval never falls in a cell outside the span.
    static bool Span(double lo, double hi, double origin, double step, size_t count, size_t& first,
                     size_t& last)
    {
        const double a = std::floor((lo - origin) / step), b = std::floor((hi - origin) / step);
        if (!(a >= 0.0 && b < static_cast<double>(count)))
            return false;
        first = static_cast<size_t>(a);
        last = static_cast<size_t>(b);
        return true;
    }

    static size_t Clamped(double at, size_t count)
    {
        if (!(at > 0.0))
            return 0;
        return at < static_cast<double>(count - 1) ? static_cast<size_t>(at) : count - 1;
    }

    // Marks the cells that an edge's box, widened by the margin, touches.
    void MarkNear(const geom::Box& edge)
    {
        const size_t x0 = Clamped(std::floor((edge.GetMinX().GetValue() - k_Margin - m_X0) / m_Dx), m_Nx);
        const size_t x1 = Clamped(std::floor((edge.GetMaxX().GetValue() + k_Margin - m_X0) / m_Dx), m_Nx);
        const size_t y0 = Clamped(std::floor((edge.GetMinY().GetValue() - k_Margin - m_Y0) / m_Dy), m_Ny);
        const size_t y1 = Clamped(std::floor((edge.GetMaxY().GetValue() + k_Margin - m_Y0) / m_Dy), m_Ny);
        for (size_t x = x0; x <= x1; ++x)
            for (size_t y = y0; y <= y1; ++y)
                m_Region[x * m_Ny + y] = k_Near;
    }

    // Gives the clear cells that share sides one region number each.
    void Label()
    {
        std::vector<size_t> stack;
        for (size_t start = 0; start < m_Region.size(); ++start)
        {
            if (m_Region[start] != k_Free)
                continue;
            const auto region = static_cast<int32_t>(m_Seed.size());
            m_Seed.push_back(start);
            m_Region[start] = region;
            stack.push_back(start);
            while (!stack.empty())
            {
                const size_t cell = stack.back();
                stack.pop_back();
                const size_t x = cell / m_Ny, y = cell % m_Ny;
                const auto visit = [&](size_t next)
                {
                    if (m_Region[next] == k_Free)
                    {
                        m_Region[next] = region;
                        stack.push_back(next);
                    }
                };
                if (x > 0)
                    visit(cell - m_Ny);
                if (x + 1 < m_Nx)
                    visit(cell + m_Ny);
                if (y > 0)
                    visit(cell - 1);
                if (y + 1 < m_Ny)
                    visit(cell + 1);
            }
        }
        m_Inside.assign(m_Seed.size(), -1);
    }

    geom::Polygon m_Contour;
    double m_Accuracy;
    double m_X0 = 0.0, m_Y0 = 0.0, m_Dx = 1.0, m_Dy = 1.0;
    size_t m_Nx = 0, m_Ny = 0;
    std::vector<int32_t> m_Region;     // per cell: its region, or k_Near
    std::vector<size_t> m_Seed;        // per region: its first cell
    std::vector<signed char> m_Inside; // per region: 1 inside, 0 outside, -1 not asked yet
};

// The clear cells of the contours asked about often enough to pay for them,
// by the caller's number for the contour. A contour gets its cells at its
// k_Asked-th question; the first k_Kept such contours keep them.
class ClearCellsCache
{
public:
    ClearCellsCache(size_t contours, size_t cellCount, double accuracy)
        : m_Asked(contours, 0), m_CellCount(cellCount), m_Accuracy(accuracy)
    {
    }

    // The answer of the cells of contour `index`, made from `contour` when it
    // is asked often enough.
    template <class MakeContour>
    ClearCells::Answer Holds(size_t index, const geom::Box& inner, const MakeContour& contour)
    {
        const auto found = m_Cells.find(index);
        if (found != m_Cells.end())
            return found->second.Holds(inner);
        if (++m_Asked[index] < k_Asked || m_Cells.size() >= k_Kept)
            return ClearCells::k_Unknown;
        return m_Cells.emplace(index, ClearCells(contour(), m_Accuracy, m_CellCount))
            .first->second.Holds(inner);
    }

private:
    static constexpr unsigned k_Asked = 16;
    static constexpr size_t k_Kept = 8;
    std::vector<unsigned> m_Asked;
    std::map<size_t, ClearCells> m_Cells;
    size_t m_CellCount;
    double m_Accuracy;
};

} // namespace

namespace
{
// Whether two points are the same to the bit: only then does a round contour
// come back as the edge it was.
bool SameBits(const geom::Point& a, const geom::Point& b)
{
    const double ab[2] = {a.m_X.GetValue(), a.m_Y.GetValue()};
    const double bb[2] = {b.m_X.GetValue(), b.m_Y.GetValue()};
    return std::memcmp(ab, bb, sizeof(ab)) == 0;
}

// The most edges of a contour that is held as its edges: a circle has one, a
// box four, an obround four, a rounded box eight.
constexpr int k_FewEdges = 8;

} // namespace

struct ExpeditionPlanePolygon::Edges
{
    unsigned m_Users;
    unsigned m_Count;
};
const geom::Arc* ExpeditionPlanePolygon::EdgesOf(const Edges* edges)
{
    static_assert(sizeof(Edges) % alignof(geom::Arc) == 0, "the edges follow the header");
    return std::launder(
        reinterpret_cast<const geom::Arc*>(reinterpret_cast<const unsigned char*>(edges) + sizeof(Edges)));
}

// The edges of a contour of few edges, or null. Only a chain that builds a
// polygon again without complaint is taken apart: the polygon of its edges is
// then the same, edge for edge.
ExpeditionPlanePolygon::Edges* ExpeditionPlanePolygon::TakeApart(const geom::Polygon& polygon)
{
    const int count = polygon.GetEdgeCount();
    if (count < 1 || count > k_FewEdges || polygon.GetOpenClosed() != geom::k_Closed)
        return nullptr;
    const std::vector<geom::Arc> edges = polygon.GetEdges();
    if (!geom::IsPolyArcSequence_G(edges, geom::k_Closed))
        return nullptr;
    unsigned char* storage =
        static_cast<unsigned char*>(::operator new(sizeof(Edges) + edges.size() * sizeof(geom::Arc)));
    Edges* block = new (storage) Edges{1, static_cast<unsigned>(edges.size())};
    for (size_t i = 0; i < edges.size(); ++i)
        new (storage + sizeof(Edges) + i * sizeof(geom::Arc)) geom::Arc(edges[i]);
    return block;
}

ExpeditionPlanePolygon::ExpeditionPlanePolygon(const geom::Polygon& polygon, double width)
    : m_Form(polygon), m_Width(width)
{
    Edges* edges = TakeApart(polygon);
    if (!edges)
        return;
    const geom::Arc& first = EdgesOf(edges)[0];
    if (edges->m_Count == 1 && SameBits(first.GetStart(), first.GetEnd()))
    {
        // Nobody shares a round contour: it is kept in place of the block.
        m_Form = Round{first.GetStart(), first.GetHeight(), first.GetCenterAzimuth()};
        Release(edges);
    }
    else
        m_Form = edges;
}

ExpeditionPlanePolygon::ExpeditionPlanePolygon(const ExpeditionPlanePolygon& other)
    : m_Form(other.m_Form), m_Width(other.m_Width)
{
    if (Edges* const* edges = std::get_if<Edges*>(&m_Form); edges && *edges)
        ++(*edges)->m_Users;
}

ExpeditionPlanePolygon::ExpeditionPlanePolygon(ExpeditionPlanePolygon&& other) noexcept
    : m_Form(other.m_Form), m_Width(other.m_Width)
{
    if (Edges** edges = std::get_if<Edges*>(&other.m_Form))
        *edges = nullptr;
}

ExpeditionPlanePolygon& ExpeditionPlanePolygon::operator=(ExpeditionPlanePolygon other) noexcept
{
    std::swap(m_Form, other.m_Form);
    m_Width = other.m_Width;
    return *this;
}

ExpeditionPlanePolygon::~ExpeditionPlanePolygon()
{
    if (Edges* const* edges = std::get_if<Edges*>(&m_Form); edges && *edges)
        Release(*edges);
}

void ExpeditionPlanePolygon::Release(Edges* edges)
{
    if (--edges->m_Users > 0)
        return;
    const geom::Arc* arcs = EdgesOf(edges);
    for (unsigned i = 0; i < edges->m_Count; ++i)
        arcs[i].~Arc();
    edges->~Edges();
    ::operator delete(static_cast<void*>(edges));
}

geom::Polygon ExpeditionPlanePolygon::GetPolygon() const
{
    if (const geom::Polygon* polygon = std::get_if<geom::Polygon>(&m_Form))
        return *polygon;
    if (const Round* round = std::get_if<Round>(&m_Form))
        return geom::Polygon(std::vector<geom::Arc>{round->GetArc()}, false);
    const Edges* edges = std::get<Edges*>(m_Form);
    if (!edges)
        return geom::Polygon(geom::PolyArc(), false);
    const geom::Arc* arcs = EdgesOf(edges);
    return geom::Polygon(std::vector<geom::Arc>(arcs, arcs + edges->m_Count), false);
}

std::optional<geom::Arc> ExpeditionPlanePolygon::GetSingleEdge() const
{
    if (const Round* round = std::get_if<Round>(&m_Form))
        return round->GetArc();
    if (Edges* const* edges = std::get_if<Edges*>(&m_Form); edges && *edges && (*edges)->m_Count == 1)
        return EdgesOf(*edges)[0];
    return std::nullopt;
}

geom::Box ExpeditionPlanePolygon::GetBBox() const
{
    if (const geom::Polygon* polygon = std::get_if<geom::Polygon>(&m_Form))
        return polygon->GetBBox();
    // The hull of the edges' boxes, which is what the polygon's tree holds.
    geom::Box box;
    if (const Round* round = std::get_if<Round>(&m_Form))
    {
        box |= round->GetArc().GetBBox();
        return box;
    }
    const Edges* edges = std::get<Edges*>(m_Form);
    if (!edges)
        return box;
    const geom::Arc* arcs = EdgesOf(edges);
    for (unsigned i = 0; i < edges->m_Count; ++i)
        box |= arcs[i].GetBBox();
    return box;
}

void ExpeditionLayoutNet::AddPlaneOutline(const ExpeditionPlanePolygon& polygon, const AString& layerName,
                                          bool negative)
{
    if (!negative)
        m_PlaneOutlines[layerName].push_back(polygon);
    else
        AddPlaneOutline(polygon.GetPolygon(), polygon.m_Width, layerName, true);
}

void ExpeditionLayoutNet::AddPlaneOutline(const geom::Polygon& polygon, double width,
                                          const AString& layerName, bool negative)
{
    std::vector<ExpeditionPlanePolygon>& outlines = m_PlaneOutlines[layerName];
    if (!negative)
    {
        outlines.emplace_back(polygon, width);
        return;
    }
    const geom::PolygonWithHolesCollection shrunk = polygon.Shrink(width * 0.5, 1e-08, true, 0, 0.0);
    for (const geom::PolygonWithHoles& piece : shrunk.GetPolygonsWithHoles())
        outlines.emplace_back(piece.GetPolygon(), 0.0);
}

void ExpeditionLayoutNet::ResolvePlaneVoids()
{
    for (auto& entry : m_PlaneOutlines)
    {
        // A plain reference, not a structured binding: older compilers let
        // no lambda capture a binding.
        auto& polygons = entry.second;
        const size_t n = polygons.size();
        std::vector<geom::Box> boxes;
        boxes.reserve(n);
        for (const ExpeditionPlanePolygon& p : polygons)
            boxes.push_back(p.GetBBox());
        const BoxGrid grid(boxes);

        // Nesting depth: how many others hold this contour. The contours that
        // hold others are mostly the few outlines, each asked once per void:
        // the first ones met stay made for the whole layer.
        std::vector<size_t> outlines, voids;
        ContainerCache holders(polygons);
        // Cells enough that a plane's voids share them by the dozen.
        const size_t cellCount = std::clamp<size_t>(n * 4, 1024, size_t(1) << 19);
        ClearCellsCache holderCells(n, cellCount, 1e-08);
        for (size_t i = 0; i < n; ++i)
        {
            int depth = 0;
            std::optional<geom::Polygon> contour; // made when a box test first lets it through
            for (size_t j : grid.Candidates(BoxCentre(boxes[i])))
            {
                if (j == i || !BoxMayHold(boxes[j], boxes[i]))
                    continue;
                const ClearCells::Answer known =
                    holderCells.Holds(j, boxes[i], [&] { return holders.Get(j); });
                if (known != ClearCells::k_Unknown)
                {
                    depth += known == ClearCells::k_Held ? 1 : 0;
                    continue;
                }
                if (!contour)
                    contour = polygons[i].GetPolygon();
                if (holders.Get(j).GetRelation(*contour, 1e-08) == geom::k_OtherInsideThis)
                    ++depth;
            }
            (depth % 2 == 1 ? voids : outlines).push_back(i);
        }

        // Smallest outline first, equal areas in their order.
        std::multimap<double, size_t> byArea;
        for (size_t i : outlines)
            byArea.emplace(std::fabs(polygons[i].GetPolygon().GetArea().GetValue()), i);
        const size_t size = outlines.size();
        const size_t size2 = byArea.size();
        VELLUM_ASSERT(size2 == size);

        // Outlines that touch themselves are cleaned first; voids are then
        // tested against the cleaned contours. The outlines are kept by rank,
        // their place in the sorted order: a plane of many voids has few
        // outlines, and nothing of this is kept per void.
        std::vector<size_t> rank(n, n);
        std::vector<size_t> sorted;
        std::vector<geom::Polygon> contours;
        sorted.reserve(size2);
        contours.reserve(size2);
        for (const auto& [area, i] : byArea)
        {
            geom::Polygon contour = polygons[i].GetPolygon();
            if (!geom::Polygon::GetSelfIntersectionPoints(contour, 1e-09).empty())
            {
                const auto cleaned =
                    contour.RemoveSelfIntersections(1e-09, false, false, nullptr).GetPolygonsWithHoles();
                if (!cleaned.empty())
                    contour = cleaned.front().GetPolygon();
            }
            contours.push_back(contour);
            rank[i] = sorted.size();
            sorted.push_back(i);
        }
        std::vector<geom::Box> outlineBoxes;
        outlineBoxes.reserve(contours.size());
        for (const geom::Polygon& contour : contours)
            outlineBoxes.push_back(contour.GetBBox());

        // Each void to the first outline, in the sorted order, that holds it.
        // The voids of an outline are counted before they are copied, so that
        // a plane of many voids holds no spare room for more.
        std::vector<size_t> bestOf;
        bestOf.reserve(voids.size());
        std::vector<size_t> voidCount(sorted.size(), 0);
        ClearCellsCache outlineCells(sorted.size(), cellCount, 1e-09);
        for (size_t v : voids)
        {
            size_t best = n; // a rank
            std::optional<geom::Polygon> hole;
            const auto holds = [&](size_t r)
            {
                const ClearCells::Answer known = outlineCells.Holds(r, boxes[v], [&] { return contours[r]; });
                if (known != ClearCells::k_Unknown)
                    return known == ClearCells::k_Held;
                if (!hole)
                    hole = polygons[v].GetPolygon();
                return contours[r].GetRelation(*hole, 1e-09) == geom::k_OtherInsideThis;
            };
            for (size_t o : grid.Candidates(BoxCentre(boxes[v])))
            {
                const size_t r = rank[o];
                if (r == n || (best != n && r >= best))
                    continue;
                if (BoxMayHold(outlineBoxes[r], boxes[v]) && holds(r))
                    best = r;
            }
            // A contour cleaned of its self-crossings may have left its box:
            // those few outlines are tried through their own box as well.
            if (best == n)
                for (size_t r = 0; r < sorted.size(); ++r)
                {
                    if (!BoxMayHold(outlineBoxes[r], boxes[v]) || BoxMayHold(boxes[sorted[r]], boxes[v]))
                        continue;
                    if (holds(r))
                    {
                        best = r;
                        break;
                    }
                }
            bestOf.push_back(best);
            if (best != n)
                ++voidCount[best];
        }
        std::vector<std::vector<ExpeditionPlanePolygon>> taken(sorted.size());
        for (size_t r = 0; r < sorted.size(); ++r)
            taken[r].reserve(voidCount[r]);
        for (size_t k = 0; k < voids.size(); ++k)
            if (bestOf[k] != n)
                taken[bestOf[k]].push_back(std::move(polygons[voids[k]]));
        std::vector<ExpeditionPlaneShape>& shapes = m_PlaneShapes[entry.first];
        for (size_t r = 0; r < sorted.size(); ++r)
        {
            shapes.emplace_back(contours[r], polygons[sorted[r]].m_Width,
                                std::vector<ExpeditionPlanePolygon>());
            shapes.back().m_Voids.swap(taken[r]);
        }
        // The contours as read have been paired and are not asked for again:
        // a plane of millions of voids would otherwise hold each twice.
        std::vector<ExpeditionPlanePolygon>().swap(polygons);
    }
    m_PlaneOutlines.clear();
}

void ExpeditionLayoutNet::ResolvePlaneLines()
{
    std::map<AString, std::vector<ExpeditionPlanePolygon>> kept;
    for (const auto& [layer, lines] : m_PlaneLines)
    {
        const std::vector<ExpeditionPlaneShape> reference = m_PlaneShapes[layer];
        for (const ExpeditionPlanePolygon& line : lines)
        {
            const geom::Point c = line.GetBBox().GetCenter();
            bool inVoid = false, inOutline = false;
            for (const ExpeditionPlaneShape& shape : reference)
            {
                for (const ExpeditionPlanePolygon& hole : shape.m_Voids)
                    if (hole.GetBBox().Contains(c, 1e-08) &&
                        hole.GetPolygon().GetRelation(c, 1e-08) == geom::k_PointInside)
                    {
                        inVoid = true;
                        break;
                    }
                if (inVoid)
                    break;
            }
            if (!inVoid)
                for (const ExpeditionPlaneShape& shape : reference)
                    if (shape.m_Polygon.GetBBox().Contains(c, 1e-08) &&
                        shape.m_Polygon.GetRelation(c, 1e-08) == geom::k_PointInside)
                    {
                        inOutline = true;
                        break;
                    }
            // Copper of its own in free space or in a void; inside solid
            // copper it adds nothing.
            if (inVoid || !inOutline)
            {
                m_PlaneShapes[layer].emplace_back(line.GetPolygon(), line.m_Width,
                                                  std::vector<ExpeditionPlanePolygon>());
                kept[layer].push_back(line);
            }
        }
    }
    m_PlaneLines = kept;
}
