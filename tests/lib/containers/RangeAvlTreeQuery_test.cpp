// RangeAvlTreeQuery_test.cpp - box queries of the range tree against a linear
// scan, and the tree's whole-value operations (equality, copy, clear, print).
#include "Tile.h"
#include "TreeInvariants.h"

#include "core/lib/vellum/Assert.h"
#include "lib/containers/RangeAvlTree.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using base::RangeAvlTree;
using geom::Box;
using geom::Point;
using geom::Unit;
using tree_check::RandomTile;
using tree_check::Tile;

namespace
{
// What a filtered iteration must give: every element that passes, in order.
std::vector<Tile> Scan(const std::vector<Tile>& elements, base::FilterMode mode, const Box& q)
{
    std::vector<Tile> out;
    for (const Tile& t : elements)
    {
        const bool pass = mode == base::k_NoFilter      ? true
                          : mode == base::k_SkipOutside ? t.m_Box.IntersectsWith(q)
                                                        : !q.Contains(t.m_Box);
        if (pass)
            out.push_back(t);
    }
    return out;
}

std::vector<Tile> Forward(const RangeAvlTree<Tile>& tree, base::FilterMode mode, const Box& q)
{
    std::vector<Tile> out;
    for (auto i = tree.BeginInRange(mode, q); i.IsDereferenceable(); ++i)
        out.push_back(*i);
    return out;
}

std::vector<Tile> Backward(const RangeAvlTree<Tile>& tree, base::FilterMode mode, const Box& q)
{
    std::vector<Tile> out;
    for (auto i = tree.LastInRange(mode, q); i.IsDereferenceable(); --i)
        out.insert(out.begin(), *i);
    return out;
}

Box RandomQuery(std::mt19937& random)
{
    std::uniform_real_distribution<double> where(-50.0, 1050.0);
    std::uniform_real_distribution<double> size(0.0, 400.0);
    const double x = where(random), y = where(random);
    return Box(Unit(x), Unit(x + size(random)), Unit(y), Unit(y + size(random)));
}
} // namespace

TEST(RangeAvlTreeQuery, FilteredIterationMatchesALinearScan)
{
    std::mt19937 random(424242);
    std::vector<Tile> model;
    for (int i = 0; i < 400; ++i)
        model.push_back(RandomTile(i, random));
    RangeAvlTree<Tile> tree;
    tree.Build(model);
    // Edits after the build, so that rotated shapes are queried too.
    for (int i = 0; i < 400; ++i)
    {
        const int at = static_cast<int>(random() % (model.size() + 1));
        const Tile tile = RandomTile(1000 + i, random);
        tree.InsertBefore(tree.begin() + at, tile);
        model.insert(model.begin() + at, tile);
        const int gone = static_cast<int>(random() % model.size());
        tree.Erase(tree.GetNthIterator(gone));
        model.erase(model.begin() + gone);
    }

    for (int trial = 0; trial < 300; ++trial)
    {
        // Mostly random boxes; some exactly an element's box, whose touching
        // neighbours must count as meeting it and which lies inside itself.
        const Box q = trial % 5 == 0 ? model[random() % model.size()].m_Box : RandomQuery(random);
        for (base::FilterMode mode : {base::k_NoFilter, base::k_SkipOutside, base::k_SkipInside})
        {
            const std::vector<Tile> expected = Scan(model, mode, q);
            ASSERT_EQ(Forward(tree, mode, q), expected) << "mode " << mode << " trial " << trial;
            ASSERT_EQ(Backward(tree, mode, q), expected) << "mode " << mode << " trial " << trial;
        }
    }
}

TEST(RangeAvlTreeQuery, MatchesComeInSequenceOrderNotInSpatialOrder)
{
    // A chain that runs right to left: sequence order is the reverse of x.
    std::vector<Point> points;
    for (int i = 0; i < 50; ++i)
        points.emplace_back(100 - 2 * i, i % 3);
    RangeAvlTree<Point> tree;
    tree.Build(points);
    const Box q(Unit(20), Unit(60), Unit(-1), Unit(1.5));
    std::vector<Point> found;
    for (auto i = tree.BeginInRange(base::k_SkipOutside, q); i.IsDereferenceable(); ++i)
        found.push_back(*i);
    std::vector<Point> expected;
    for (const Point& p : points)
        if (q.Contains(p))
            expected.push_back(p);
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(found, expected);
    EXPECT_GT(found.front().m_X, found.back().m_X);
}

TEST(RangeAvlTreeQuery, VerdictsOfTheRoot)
{
    // Three tiles; the root (the middle one) is far from the other two.
    const std::vector<Tile> tiles = {
        {0, Box(Unit(0), Unit(1), Unit(0), Unit(1))},
        {1, Box(Unit(10), Unit(11), Unit(10), Unit(11))},
        {2, Box(Unit(0), Unit(1), Unit(2), Unit(3))},
    };
    RangeAvlTree<Tile> tree;
    tree.Build(tiles);
    const auto* root = tree.GetRootNode();
    ASSERT_EQ(root->m_Value.m_Id, 1);
    using T = RangeAvlTree<Tile>;

    // A box that misses the whole tree: nothing below, and the query is over.
    const Box away(Unit(50), Unit(60), Unit(50), Unit(60));
    EXPECT_EQ(T::GetVerdict(root, base::k_SkipOutside, away), T::k_NothingBelow);
    EXPECT_FALSE(tree.BeginInRange(base::k_SkipOutside, away).IsDereferenceable());
    // A box that meets the children but not the root's tile.
    const Box near(Unit(0), Unit(1), Unit(0), Unit(3));
    EXPECT_EQ(T::GetVerdict(root, base::k_SkipOutside, near), T::k_MaybeBelow);
    EXPECT_EQ(T::GetVerdict(root, base::k_SkipOutside, tiles[1].m_Box), T::k_Matches);

    // Skipping what lies inside: a box around everything leaves nothing.
    const Box all(Unit(-1), Unit(20), Unit(-1), Unit(20));
    EXPECT_EQ(T::GetVerdict(root, base::k_SkipInside, all), T::k_NothingBelow);
    EXPECT_EQ(T::GetVerdict(root, base::k_SkipInside, tiles[1].m_Box), T::k_MaybeBelow);
    EXPECT_EQ(T::GetVerdict(root, base::k_SkipInside, near), T::k_Matches);
    EXPECT_EQ(T::GetVerdict(root, base::k_NoFilter, away), T::k_Matches);
}

namespace
{
// An element that counts its live instances, to see that the tree destroys
// what it constructs, once.
struct Counted
{
    static inline int s_Live = 0;
    explicit Counted(int id) : m_Id(id) { ++s_Live; }
    Counted(const Counted& other) : m_Id(other.m_Id) { ++s_Live; }
    Counted& operator=(const Counted&) = default;
    ~Counted() { --s_Live; }
    Box GetBBox() const { return Box(Point(m_Id, 0)); }
    bool operator==(const Counted& other) const { return m_Id == other.m_Id; }
    int m_Id;
};
} // namespace

TEST(RangeAvlTreeWhole, ClearCopyAndMoveOwnTheirElements)
{
    {
        std::vector<Counted> source;
        for (int i = 0; i < 100; ++i)
            source.emplace_back(i);
        RangeAvlTree<Counted> tree;
        tree.Build(source);
        EXPECT_EQ(Counted::s_Live, 200);
        tree.Erase(tree.begin() + 5);
        EXPECT_EQ(Counted::s_Live, 199);

        RangeAvlTree<Counted> copy(tree);
        EXPECT_EQ(Counted::s_Live, 298);
        EXPECT_TRUE(copy == tree);

        RangeAvlTree<Counted> moved(std::move(copy));
        EXPECT_EQ(Counted::s_Live, 298);
        EXPECT_TRUE(moved == tree);
        EXPECT_TRUE(copy.IsEmpty());

        tree.Clear();
        EXPECT_EQ(Counted::s_Live, 199);
        EXPECT_TRUE(tree.IsEmpty());
        tree.PushBack(Counted(7));
        EXPECT_EQ(tree.GetCount(), 1);
    }
    EXPECT_EQ(Counted::s_Live, 0);
}

TEST(RangeAvlTreeWhole, EqualityIsBySequence)
{
    const std::vector<Point> points = {Point(1, 2), Point(3, 4), Point(5, 6), Point(7, 8), Point(9, 0)};
    RangeAvlTree<Point> built, appended, shorter, reordered;
    built.Build(points);
    // Same sequence, different shape.
    for (const Point& p : points)
        appended.PushBack(p);
    EXPECT_TRUE(built == appended);

    shorter.Build(std::vector<Point>(points.begin(), points.end() - 1));
    EXPECT_FALSE(built == shorter);

    std::vector<Point> swapped = points;
    std::swap(swapped[1], swapped[3]);
    reordered.Build(swapped);
    EXPECT_FALSE(built == reordered);

    RangeAvlTree<Point> empty1, empty2;
    EXPECT_TRUE(empty1 == empty2);
    EXPECT_FALSE(empty1 == built);
}

TEST(RangeAvlTreeWhole, DebugTextShowsEveryNode)
{
    RangeAvlTree<Point> tree;
    const auto format = [](const Point& p) { return std::to_string(static_cast<int>(p.m_X.GetValue())); };
    EXPECT_EQ(tree.GetDebugText(format), "< Empty Tree >");
    tree.Build(std::vector<Point>{Point(11, 0), Point(22, 0), Point(33, 0)});
    const std::string text = tree.GetDebugText(format);
    EXPECT_EQ(text.rfind("ROOT:", 0), 0u);
    // The root line, unindented: balance 0, three nodes, element 22.
    EXPECT_NE(text.find("\n[+0 #3] 22\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  [+0 #1] 11\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  [+0 #1] 33\n"), std::string::npos) << text;
}
