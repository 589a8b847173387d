// RangeAvlTreeStructure_test.cpp - build, insert, erase and positions of the
// packed AVL tree, checked against a vector model and recomputed invariants.
#include "Tile.h"
#include "TreeInvariants.h"

#include "core/lib/vellum/Assert.h"
#include "lib/containers/RangeAvlTree.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

using base::AvlNode;
using base::RangeAvlTree;
using geom::Point;
using tree_check::CountEveryAssert;
using tree_check::ExpectTreeHolds;
using tree_check::RandomTile;
using tree_check::Tile;

namespace
{
std::vector<Point> PointsUpTo(int n)
{
    std::vector<Point> points;
    for (int i = 0; i < n; ++i)
        points.emplace_back(i, 10 * i);
    return points;
}

const AvlNode* Node(const RangeAvlTree<Point>& tree, int index)
{
    return tree.GetNthIterator(index).m_CurrentNode;
}
} // namespace

TEST(AvlNodeTest, IsThreeWords)
{
    EXPECT_EQ(sizeof(AvlNode), 3 * sizeof(void*));
}

TEST(RangeAvlTreeBuild, SmallShapesAndPackedWords)
{
    RangeAvlTree<Point> none;
    none.Build(PointsUpTo(0));
    EXPECT_EQ(none.GetRootNode(), nullptr);
    EXPECT_TRUE(none.begin() == none.end());

    RangeAvlTree<Point> one;
    one.Build(PointsUpTo(1));
    ASSERT_NE(one.GetRootNode(), nullptr);
    // In a tree, count 1, balance 0, not a left child.
    EXPECT_EQ(one.GetRootNode()->GetPackedWord(), 0x80000010u);

    // Two elements: the right part gets (2 - 1) / 2 = 0, so the second
    // element is the root and the first hangs to its left.
    RangeAvlTree<Point> two;
    two.Build(PointsUpTo(2));
    ASSERT_EQ(two.GetRootNode(), Node(two, 1));
    EXPECT_EQ(two.GetRootNode()->GetBalance(), -1);
    // Count 2 in bits 4.., balance -1 as 0b111 in bits 1..3, in-tree bit.
    EXPECT_EQ(two.GetRootNode()->GetPackedWord(), 0x8000002Eu);
    // A left child: side bit set, count 1; no sibling, so it points to its parent.
    EXPECT_EQ(Node(two, 0)->GetPackedWord(), 0x80000011u);
    EXPECT_EQ(Node(two, 0)->GetParentLink(), Node(two, 1));

    // Four: left part 2 (elements 0, 1), root element 2, right part 1.
    RangeAvlTree<Point> four;
    four.Build(PointsUpTo(4));
    const AvlNode* root = four.GetRootNode();
    ASSERT_EQ(root, Node(four, 2));
    EXPECT_EQ(root->GetBalance(), -1);
    EXPECT_EQ(root->GetChildLink(), Node(four, 1));
    // Element 1 is a left child with a right sibling: it points to element 3,
    // which points back to the root.
    EXPECT_EQ(Node(four, 1)->GetParentLink(), Node(four, 3));
    EXPECT_EQ(Node(four, 3)->GetParentLink(), root);
    EXPECT_EQ(Node(four, 1)->GetParent(), root);
    EXPECT_EQ(Node(four, 0)->GetParentLink(), Node(four, 1));
    EXPECT_EQ(Node(four, 1)->GetSubTreeNodesCount(), 2);
    ExpectTreeHolds(four, PointsUpTo(4));
}

TEST(RangeAvlTreeBuild, AnySizeIsBalancedWithoutRotations)
{
    for (int n : {3, 5, 7, 8, 15, 16, 17, 100, 1000, 4097})
    {
        SCOPED_TRACE(n);
        RangeAvlTree<Point> tree;
        tree.Build(PointsUpTo(n));
        ExpectTreeHolds(tree, PointsUpTo(n));
        // A one-pass build never leans right.
        for (auto i = tree.begin(); i != tree.end(); ++i)
            ASSERT_LE(i.m_CurrentNode->GetBalance(), 0);
    }
}

// Random edits against a vector, checking the whole tree after each one.
TEST(RangeAvlTreeEdit, RandomInsertEraseReplaceKeepsAllInvariants)
{
    std::mt19937 random(20261122);
    for (int round = 0; round < 4; ++round)
    {
        std::vector<Tile> model;
        RangeAvlTree<Tile> tree;
        if (round % 2)
        {
            for (int i = 0; i < 200; ++i)
                model.push_back(RandomTile(i, random));
            tree.Build(model);
        }
        int nextId = 1000;
        for (int step = 0; step < 1500; ++step)
        {
            const int size = static_cast<int>(model.size());
            const int op = static_cast<int>(random() % 10);
            const int at = static_cast<int>(random() % (size + 1)); // may be the end
            // Grow in the first half of a round, shrink in the second.
            const bool grow = step < 750 ? op < 6 : op < 3;
            if (grow || size == 0)
            {
                const Tile tile = RandomTile(nextId++, random);
                if (op % 2)
                {
                    auto i = tree.InsertBefore(tree.begin() + at, tile);
                    model.insert(model.begin() + at, tile);
                    ASSERT_EQ(i.GetIndex(), at);
                }
                else
                {
                    // After the end means in front of the first element.
                    auto i = tree.InsertAfter(tree.begin() + at, tile);
                    const int where = at == size ? 0 : at + 1;
                    model.insert(model.begin() + where, tile);
                    ASSERT_EQ(i.GetIndex(), where);
                }
            }
            else if (op == 9)
            {
                const int j = at % size;
                const Tile tile = RandomTile(nextId++, random);
                tree.Replace(tree.GetNthIterator(j), tile);
                model[j] = tile;
            }
            else
            {
                const int j = at % size;
                auto next = tree.Erase(tree.GetNthIterator(j));
                model.erase(model.begin() + j);
                ASSERT_EQ(next.GetIndex(), j);
            }
            ExpectTreeHolds(tree, model);
            if (HasFailure())
                return;
        }
    }
}

// Sorted runs at either end force the rotations of one kind; appends in
// the middle force the double rotations.
TEST(RangeAvlTreeEdit, MonotoneInsertionsAndErasuresStayBalanced)
{
    std::vector<Point> model;
    RangeAvlTree<Point> tree;
    for (int i = 0; i < 300; ++i)
    {
        tree.PushBack(Point(i, 0));
        model.emplace_back(i, 0);
        tree.InsertBefore(tree.begin(), Point(-i, 1));
        model.insert(model.begin(), Point(-i, 1));
        const int middle = static_cast<int>(model.size()) / 2;
        tree.InsertAfter(tree.GetNthIterator(middle), Point(i, 2));
        model.insert(model.begin() + middle + 1, Point(i, 2));
    }
    ExpectTreeHolds(tree, model);
    while (!model.empty())
    {
        tree.Erase(tree.begin());
        model.erase(model.begin());
        if (!model.empty())
        {
            tree.Erase(--tree.end());
            model.pop_back();
        }
        if (model.size() % 37 == 0)
            ExpectTreeHolds(tree, model);
    }
    ExpectTreeHolds(tree, model);
}

TEST(RangeAvlTreeEdit, ErasingTheOnlyNodeEmptiesTheTree)
{
    const CountEveryAssert counting;
    RangeAvlTree<Point> tree;
    tree.PushBack(Point(1, 1));
    const unsigned long before = GetFailedAssertCount_G();
    auto next = tree.Erase(tree.begin());
    EXPECT_EQ(GetFailedAssertCount_G(), before);
    EXPECT_TRUE(next == tree.end());
    EXPECT_TRUE(tree.IsEmpty());
    EXPECT_EQ(tree.GetRootNode(), nullptr);
    EXPECT_TRUE(tree.begin() == tree.end());
    // The tree is usable again.
    tree.PushBack(Point(2, 2));
    ExpectTreeHolds(tree, {Point(2, 2)});
}

TEST(RangeAvlTreePosition, IndexNthAdvanceAndOrderAgreeWithTheVector)
{
    std::mt19937 random(7);
    std::vector<Point> model;
    RangeAvlTree<Point> tree;
    // Built by random insertions, so the shape is not that of a build.
    for (int i = 0; i < 700; ++i)
    {
        const int at = static_cast<int>(random() % (model.size() + 1));
        tree.InsertBefore(tree.begin() + at, Point(i, 0));
        model.insert(model.begin() + at, Point(i, 0));
    }
    const int n = static_cast<int>(model.size());
    for (int k = 0; k < n; ++k)
    {
        auto i = tree.GetNthIterator(k);
        ASSERT_EQ(*i, model[k]);
        ASSERT_EQ(i.GetIndex(), k);
    }
    EXPECT_EQ(tree.end().GetIndex(), n);

    for (int trial = 0; trial < 2000; ++trial)
    {
        const int from = static_cast<int>(random() % (n + 1));
        const int to = static_cast<int>(random() % (n + 1));
        const auto a = tree.GetNthIterator(std::min(from, n - 1)) + (from == n ? 1 : 0);
        ASSERT_EQ(a.GetIndex(), from);
        const auto b = a + (to - from);
        ASSERT_EQ(b.GetIndex(), to);
        if (to < n)
        {
            ASSERT_EQ(*b, model[to]);
        }
        ASSERT_EQ(a < b, from < to);
    }
}

TEST(RangeAvlTreePosition, RefusalsAssertAndLeaveTheTreeIntact)
{
    const CountEveryAssert counting;
    RangeAvlTree<Point> tree, other;
    tree.Build(PointsUpTo(10));
    other.Build(PointsUpTo(2));

    unsigned long before = GetFailedAssertCount_G();
    tree.Erase(tree.end());
    tree.Erase(other.begin());
    tree.InsertBefore(other.end(), Point(0, 0));
    tree.Build(PointsUpTo(5)); // only an empty tree is built
    EXPECT_EQ(GetFailedAssertCount_G(), before + 4);
    ExpectTreeHolds(tree, PointsUpTo(10));
    ExpectTreeHolds(other, PointsUpTo(2));

    before = GetFailedAssertCount_G();
    EXPECT_TRUE(tree.GetNthIterator(10) == tree.end());
    EXPECT_TRUE(tree.GetNthIterator(-1) == tree.end());
    EXPECT_GT(GetFailedAssertCount_G(), before);

    before = GetFailedAssertCount_G();
    EXPECT_TRUE(tree.begin() + 11 == tree.end());
    EXPECT_TRUE(tree.begin() - 1 == tree.end());
    EXPECT_GT(GetFailedAssertCount_G(), before);

    // Landing exactly on the end is legal.
    before = GetFailedAssertCount_G();
    EXPECT_TRUE(tree.begin() + 10 == tree.end());
    EXPECT_TRUE(tree.end() - 10 == tree.begin());
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}
