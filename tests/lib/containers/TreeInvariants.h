// TreeInvariants.h - an independent check of a RangeAvlTree against a model.
//
// The check walks the nodes through their raw links, recomputes heights,
// counts and boxes from scratch, and compares the sequence with a plain
// vector of what the tree should hold. It shares no arithmetic with the tree.
#pragma once

#include "core/lib/vellum/Assert.h"
#include "lib/containers/RangeAvlTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace tree_check
{
// While alive, a failed assertion is counted even at a site that has already
// spoken once, so a test can see its own failure whatever ran before it.
struct CountEveryAssert
{
    CountEveryAssert() { LogFailedAsserts_G = true; }
    ~CountEveryAssert() { LogFailedAsserts_G = m_Old; }
    CountEveryAssert(const CountEveryAssert&) = delete;
    CountEveryAssert& operator=(const CountEveryAssert&) = delete;
    bool m_Old = LogFailedAsserts_G;
};

// The hull of element boxes, recomputed from the elements.
template <class T> base::RangeBox_T<T> HullOf(const std::vector<T>& elements)
{
    base::RangeBox_T<T> hull;
    for (const T& e : elements)
        hull |= base::RangeElementBox_T<T>::Get(e);
    return hull;
}

struct Summary
{
    int m_Height = 0;
    int m_Count = 0;
};

// Checks one subtree and appends its elements in order; returns its height
// and node count as counted here.
template <class T>
Summary CheckNode(const base::RangeAvlNode_T<T>* node, const base::AvlNode* parent, std::vector<T>& out,
                  int& faults)
{
    if (!node)
        return {};
    using Node = base::RangeAvlNode_T<T>;
    const auto* left = static_cast<const Node*>(node->GetLeft());
    const auto* right = static_cast<const Node*>(node->GetRight());

    // The packed links: m_Child is the left child if any, else the right one;
    // a left child points to its sibling when there is one, else to us.
    const base::AvlNode* expectedChild = left ? static_cast<const base::AvlNode*>(left) : right;
    if (node->GetChildLink() != expectedChild)
        ++faults;
    if (left &&
        (!left->IsLeft() || left->GetParentLink() != (right ? static_cast<const base::AvlNode*>(right)
                                                            : static_cast<const base::AvlNode*>(node))))
        ++faults;
    if (right && (right->IsLeft() || right->GetParentLink() != node))
        ++faults;
    if (node->GetParent() != parent || !node->IsInTree())
        ++faults;

    const std::size_t firstOwn = out.size();
    const Summary l = CheckNode(left, node, out, faults);
    out.push_back(node->m_Value);
    const Summary r = CheckNode(right, node, out, faults);

    if (node->GetBalance() != r.m_Height - l.m_Height || r.m_Height - l.m_Height > 1 ||
        l.m_Height - r.m_Height > 1)
        ++faults;
    const int count = 1 + l.m_Count + r.m_Count;
    if (node->GetSubTreeNodesCount() != count)
        ++faults;
    const std::vector<T> subtree(out.begin() + static_cast<std::ptrdiff_t>(firstOwn), out.end());
    if (!(node->m_SubTreeBox == HullOf(subtree)))
        ++faults;
    return {1 + std::max(l.m_Height, r.m_Height), count};
}

// Everything a tree promises, against the model sequence.
template <class T> void ExpectTreeHolds(const base::RangeAvlTree<T>& tree, const std::vector<T>& model)
{
    int faults = 0;
    std::vector<T> inOrder;
    const auto* root = tree.GetRootNode();
    if (root && (root->GetParentLink() || root->IsLeft()))
        ++faults;
    CheckNode(root, nullptr, inOrder, faults);
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(inOrder, model);
    EXPECT_EQ(tree.GetCount(), static_cast<int>(model.size()));
    EXPECT_EQ(tree.IsEmpty(), model.empty());
    EXPECT_EQ(tree.GetBBox(), HullOf(model));

    // Iteration both ways by the threaded links.
    std::vector<T> forward(tree.begin(), tree.end());
    EXPECT_EQ(forward, model);
    std::vector<T> backward;
    for (auto i = tree.end(); i != tree.begin();)
        backward.push_back(*--i);
    std::reverse(backward.begin(), backward.end());
    EXPECT_EQ(backward, model);
}
} // namespace tree_check
