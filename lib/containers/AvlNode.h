// AvlNode.h - the three-word node of the position-ordered AVL trees.
//
// Every shape sequence of the geometry library (the edges of a contour, the
// regions of a collection) lives in trees of these nodes, so a node has to stay
// small: two links and one packed word. There is no right-child pointer and no
// separate parent pointer. m_Child is the left child if there is one, else the
// right child; a left child that has a right sibling keeps that sibling in
// m_Parent, and the sibling leads on to the parent. The packed word holds the
// side of the node, its AVL balance, the node count of its subtree and a mark
// that the node is in a tree.
#pragma once

#include "core/lib/vellum/Assert.h"

#include <cstdint>

namespace base
{
class AvlNode
{
public:
    // Bit layout of m_Word.
    static constexpr std::uint32_t k_IsLeftBit = 0x1u;
    static constexpr std::uint32_t k_BalanceMask = 0xEu; // bits 1..3, signed
    static constexpr std::uint32_t k_CountShift = 4;
    static constexpr std::uint32_t k_CountMask = 0x7FFFFFF0u; // bits 4..30
    static constexpr std::uint32_t k_InTreeBit = 0x80000000u;
    static constexpr std::uint32_t k_MaxCount = k_CountMask >> k_CountShift;
    // A fresh node: in a tree, count 1, balance 0.
    static constexpr std::uint32_t k_FreshWord = 0x80000010u;

    AvlNode() = default;
    AvlNode(const AvlNode&) = delete;
    AvlNode& operator=(const AvlNode&) = delete;

    bool IsLeft() const { return (m_Word & k_IsLeftBit) != 0; }
    bool IsInTree() const { return (m_Word & k_InTreeBit) != 0; }
    // Height of the right subtree minus that of the left; a 3-bit signed field.
    int GetBalance() const
    {
        const int low = static_cast<int>((m_Word & k_BalanceMask) >> 1);
        return (low & 4) ? low - 8 : low;
    }
    int GetSubTreeNodesCount() const { return static_cast<int>((m_Word & k_CountMask) >> k_CountShift); }
    std::uint32_t GetPackedWord() const { return m_Word; }

    // The left child, or null. A left child is always m_Child when it exists.
    AvlNode* GetLeft() const { return m_Child && m_Child->IsLeft() ? m_Child : nullptr; }

    // The right child, or null: m_Child itself when it isn't a left child, else
    // the left child's sibling link, unless that leads back here.
    AvlNode* GetRight() const
    {
        AvlNode* child = m_Child;
        if (!child)
            return nullptr;
        if (!child->IsLeft())
        {
            VELLUM_ASSERT(m_Child->m_Parent == this);
            return child;
        }
        AvlNode* ret = child->m_Parent;
        if (ret == this)
            return nullptr;
        VELLUM_ASSERT(!ret->IsLeft());
        return ret;
    }

    // The parent, or null at the root. A left child may hold its sibling in
    // m_Parent; the sibling's own m_Parent is then the parent.
    AvlNode* GetParent() const
    {
        AvlNode* ret = m_Parent;
        if (!ret || !IsLeft() || ret->m_Child == this)
            return ret;
        ret = ret->m_Parent;
        VELLUM_ASSERT(ret && ret->m_Child == this);
        return ret;
    }

    // Raw links, for tests and debug output.
    AvlNode* GetChildLink() const { return m_Child; }
    AvlNode* GetParentLink() const { return m_Parent; }

    // --- Changes, used by the trees only. ---

    // Makes the node fresh for insertion, keeping its side bit.
    void ResetWord() { m_Word = k_FreshWord | (m_Word & k_IsLeftBit); }
    // Marks the node as no longer in any tree.
    void Detach()
    {
        m_Child = nullptr;
        m_Parent = nullptr;
        m_Word = 0;
    }
    void SetBalance(int balance)
    {
        m_Word = (m_Word & ~k_BalanceMask) | ((static_cast<std::uint32_t>(balance) & 7u) << 1);
    }
    void SetSubTreeNodesCount(int count)
    {
        m_Word =
            (m_Word & ~k_CountMask) | ((static_cast<std::uint32_t>(count) << k_CountShift) & k_CountMask);
    }
    // The count from the children: 1 + left count + right count. Reports
    // whether it changed, which is what makes a refresh climb on.
    bool RefreshCount()
    {
        const AvlNode* left = GetLeft();
        const AvlNode* right = GetRight();
        const int count =
            1 + (left ? left->GetSubTreeNodesCount() : 0) + (right ? right->GetSubTreeNodesCount() : 0);
        if (count == GetSubTreeNodesCount())
            return false;
        SetSubTreeNodesCount(count);
        return true;
    }

    // Gives the node its children (either may be null) and rewrites their side
    // bits and back links by the packed scheme. The node's own m_Parent and
    // side belong to its parent's call and stay as they are.
    void SetChildren(AvlNode* left, AvlNode* right)
    {
        if (left)
        {
            left->m_Word |= k_IsLeftBit;
            left->m_Parent = right ? right : this;
        }
        if (right)
        {
            right->m_Word &= ~k_IsLeftBit;
            right->m_Parent = this;
        }
        m_Child = left ? left : right;
    }

    // Makes the node the root of its tree.
    void SetAsRoot()
    {
        m_Parent = nullptr;
        m_Word &= ~k_IsLeftBit;
    }

private:
    AvlNode* m_Child = nullptr;
    AvlNode* m_Parent = nullptr;
    std::uint32_t m_Word = 0;
};

static_assert(sizeof(AvlNode) == 3 * sizeof(void*), "an AVL node is three words");
} // namespace base
