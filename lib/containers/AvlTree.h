// AvlTree.h - the shape of a position-ordered AVL tree of AvlNode.
//
// The tree keeps a sequence in the order it was given; there is no key, and
// the balance serves position access (index of a node, n-th node) and the
// subtree summaries that derived trees keep, such as the boxes of a range
// tree. This class owns no storage: it links, unlinks and rebalances nodes
// that its caller allocates, and calls the caller's update function on every
// node whose subtree changed, lowered nodes before the nodes above them, so a
// summary can always be rebuilt from the children's summaries.
#pragma once

#include "core/lib/vellum/Assert.h"
#include "lib/containers/AvlNode.h"

namespace base
{
// The update function of a tree that keeps no summary beyond the counts.
struct AvlNoUpdate
{
    void operator()(AvlNode*) const {}
};

class AvlTree
{
public:
    AvlTree() = default;
    AvlTree(const AvlTree&) = delete;
    AvlTree& operator=(const AvlTree&) = delete;

    bool IsEmpty() const { return !m_Root; }
    // The number of nodes: the root's subtree count.
    int GetCount() const { return m_Root ? m_Root->GetSubTreeNodesCount() : 0; }
    AvlNode* GetRoot() const { return m_Root; }
    AvlNode* GetFirst() const { return m_First; }
    AvlNode* GetLast() const { return m_Last; }

    static int GetCountOf(const AvlNode* node) { return node ? node->GetSubTreeNodesCount() : 0; }

    static AvlNode* GetFirstOf(AvlNode* node)
    {
        if (node)
            while (AvlNode* left = node->GetLeft())
                node = left;
        return node;
    }
    static AvlNode* GetLastOf(AvlNode* node)
    {
        if (node)
            while (AvlNode* right = node->GetRight())
                node = right;
        return node;
    }

    // The node after this one in sequence order, or null after the last.
    static AvlNode* GetNext(const AvlNode* node)
    {
        if (AvlNode* right = node->GetRight())
            return GetFirstOf(right);
        for (;;)
        {
            AvlNode* parent = node->GetParent();
            if (!parent || node->IsLeft())
                return parent;
            node = parent;
        }
    }
    static AvlNode* GetPrevious(const AvlNode* node)
    {
        if (AvlNode* left = node->GetLeft())
            return GetLastOf(left);
        for (;;)
        {
            AvlNode* parent = node->GetParent();
            if (!parent || !node->IsLeft())
                return parent;
            node = parent;
        }
    }

    // Position of a node in the sequence: the nodes of its left subtree, and
    // for every ancestor reached from the right, that ancestor's left subtree
    // and the ancestor itself.
    static int GetIndexOf(const AvlNode* node)
    {
        int index = GetCountOf(node->GetLeft());
        for (const AvlNode* parent = node->GetParent(); parent; node = parent, parent = parent->GetParent())
            if (!node->IsLeft())
                index += GetCountOf(parent->GetLeft()) + 1;
        return index;
    }

    // The node at position j, found by walking down by the left counts. Null
    // behind the assertion when j is out of range.
    AvlNode* GetNth(int j) const
    {
        VELLUM_ASSERT(j >= 0 && j < GetCount());
        if (j < 0 || j >= GetCount())
            return nullptr;
        AvlNode* node = m_Root;
        while (node)
        {
            const int leftCount = GetCountOf(node->GetLeft());
            if (j < leftCount)
                node = node->GetLeft();
            else if (j == leftCount)
                return node;
            else
            {
                j -= leftCount + 1;
                node = node->GetRight();
            }
        }
        return nullptr;
    }

protected:
    // Builds the tree of n nodes in one pass and without rotations. make_next
    // hands out the nodes in sequence order. The right part of a range of n
    // gets (n - 1) / 2 nodes, the left the rest, so a left subtree is never
    // lower than its sibling and a balance of -1 or 0 says it all.
    template <class MakeNext, class Update> void BuildNodes(int n, MakeNext&& make_next, Update&& update)
    {
        VELLUM_ASSERT(IsEmpty());
        if (!IsEmpty())
            return;
        int height = 0;
        m_Root = BuildRange(n, height, make_next, update);
        if (m_Root)
            m_Root->SetAsRoot();
        m_First = GetFirstOf(m_Root);
        m_Last = GetLastOf(m_Root);
    }

    // Links a fresh node before position pos (null: at the end): as the left
    // child of pos when pos has none, otherwise as the right child of pos's
    // predecessor, which then has none. Then rebalances up to the root.
    template <class Update> void LinkBefore(AvlNode* pos, AvlNode* node, Update&& update)
    {
        node->ResetWord();
        node->SetChildren(nullptr, nullptr);
        if (!m_Root)
        {
            node->SetAsRoot();
            m_Root = m_First = m_Last = node;
            update(node);
            return;
        }
        if (!pos)
        {
            m_Last->SetChildren(m_Last->GetLeft(), node);
            m_Last = node;
        }
        else if (!pos->GetLeft())
        {
            pos->SetChildren(node, pos->GetRight());
            if (pos == m_First)
                m_First = node;
        }
        else
        {
            AvlNode* predecessor = GetLastOf(pos->GetLeft());
            predecessor->SetChildren(predecessor->GetLeft(), node);
        }
        update(node);
        RetraceAfterInsert(node, update);
    }

    // Unlinks a node and rebalances. A node with one child gives way to it; a
    // node with two is replaced by its predecessor when it leans left, else by
    // its successor, which takes over its balance, so that the taller side
    // gives up the node.
    template <class Update> void Unlink(AvlNode* node, Update&& update)
    {
        if (node == m_First)
            m_First = GetNext(node);
        if (node == m_Last)
            m_Last = GetPrevious(node);

        AvlNode* left = node->GetLeft();
        AvlNode* right = node->GetRight();
        const Place place = GetPlace(node);
        if (!place.m_Parent)
            VELLUM_ASSERT(node == m_Root);

        AvlNode* retraceFrom = nullptr;
        bool shrunkOnLeft = false;
        if (!left || !right)
        {
            Replace(place, left ? left : right);
            retraceFrom = place.m_Parent;
            shrunkOnLeft = place.m_IsLeft;
        }
        else if (node->GetBalance() < 0)
        {
            AvlNode* substitute = GetLastOf(left);
            if (substitute == left)
            {
                substitute->SetChildren(substitute->GetLeft(), right);
                retraceFrom = substitute;
                shrunkOnLeft = true;
            }
            else
            {
                AvlNode* above = substitute->GetParent();
                above->SetChildren(above->GetLeft(), substitute->GetLeft());
                substitute->SetChildren(left, right);
                retraceFrom = above;
                shrunkOnLeft = false;
            }
            substitute->SetBalance(node->GetBalance());
            Replace(place, substitute);
        }
        else
        {
            AvlNode* substitute = GetFirstOf(right);
            if (substitute == right)
            {
                substitute->SetChildren(left, substitute->GetRight());
                retraceFrom = substitute;
                shrunkOnLeft = false;
            }
            else
            {
                AvlNode* above = substitute->GetParent();
                above->SetChildren(substitute->GetRight(), above->GetRight());
                substitute->SetChildren(left, right);
                retraceFrom = above;
                shrunkOnLeft = true;
            }
            substitute->SetBalance(node->GetBalance());
            Replace(place, substitute);
        }
        node->Detach();
        RetraceAfterErase(retraceFrom, shrunkOnLeft, update);
    }

    // Refreshes count and summary of a node whose value changed, and of all
    // nodes above it.
    template <class Update> void RefreshUpwards(AvlNode* node, Update&& update)
    {
        for (; node; node = node->GetParent())
        {
            node->RefreshCount();
            update(node);
        }
    }

    // Forgets all nodes; the caller has already returned them.
    void Forget() { m_Root = m_First = m_Last = nullptr; }

    // Takes over another tree's nodes, leaving it empty.
    void TakeOver(AvlTree& from)
    {
        m_Root = from.m_Root;
        m_First = from.m_First;
        m_Last = from.m_Last;
        from.Forget();
    }

private:
    // Where a node hangs: its parent, its side, and the parent's two children
    // as they were, read before any link is rewritten.
    struct Place
    {
        AvlNode* m_Parent;
        bool m_IsLeft;
        AvlNode* m_ParentLeft;
        AvlNode* m_ParentRight;
    };

    static Place GetPlace(const AvlNode* node)
    {
        AvlNode* parent = node->GetParent();
        return Place{parent, node->IsLeft(), parent ? parent->GetLeft() : nullptr,
                     parent ? parent->GetRight() : nullptr};
    }

    // Puts replacement (possibly null) where the node of place was.
    void Replace(const Place& place, AvlNode* replacement)
    {
        if (!place.m_Parent)
        {
            m_Root = replacement;
            if (replacement)
                replacement->SetAsRoot();
        }
        else if (place.m_IsLeft)
            place.m_Parent->SetChildren(replacement, place.m_ParentRight);
        else
            place.m_Parent->SetChildren(place.m_ParentLeft, replacement);
    }

    template <class MakeNext, class Update>
    static AvlNode* BuildRange(int n, int& height, MakeNext& make_next, Update& update)
    {
        if (n <= 0)
        {
            height = 0;
            return nullptr;
        }
        const int rightCount = (n - 1) / 2;
        const int leftCount = n - rightCount - 1;
        int left_height = 0;
        int right_height = 0;
        AvlNode* left = BuildRange(leftCount, left_height, make_next, update);
        AvlNode* node = make_next();
        node->ResetWord();
        AvlNode* right = BuildRange(rightCount, right_height, make_next, update);
        VELLUM_ASSERT(left_height >= right_height);
        node->SetBalance(left_height > right_height ? -1 : 0);
        node->SetChildren(left, right);
        node->SetSubTreeNodesCount(n);
        update(node);
        height = left_height + 1;
        return node;
    }

    template <class Update> static void Refresh(AvlNode* node, Update& update)
    {
        node->RefreshCount();
        update(node);
    }

    // Walks from a new leaf to the root. While the subtree below has grown,
    // the balance moves towards the grown side; a balance of 0 means the
    // height held, and a rotation always restores it. Counts and summaries
    // are refreshed all the way up.
    template <class Update> void RetraceAfterInsert(AvlNode* child, Update& update)
    {
        bool grown = true;
        for (AvlNode* parent = child->GetParent(); parent; parent = child->GetParent())
        {
            if (grown)
            {
                const int balance = parent->GetBalance() + (child->IsLeft() ? -1 : +1);
                parent->SetBalance(balance);
                if (balance == 2 || balance == -2)
                {
                    bool dropped = false;
                    parent = Rotate(parent, update, dropped);
                    grown = false;
                }
                else
                {
                    Refresh(parent, update);
                    grown = balance != 0;
                }
            }
            else
                Refresh(parent, update);
            child = parent;
        }
    }

    // The mirror of the insertion walk: a balance that leaves 0 means the
    // height held; one that reaches 0 means it dropped, and so may a rotation.
    template <class Update> void RetraceAfterErase(AvlNode* node, bool shrunkOnLeft, Update& update)
    {
        bool shrunk = true;
        while (node)
        {
            if (shrunk)
            {
                const int balance = node->GetBalance() + (shrunkOnLeft ? +1 : -1);
                node->SetBalance(balance);
                if (balance == 2 || balance == -2)
                    node = Rotate(node, update, shrunk);
                else
                {
                    Refresh(node, update);
                    shrunk = balance == 0;
                }
            }
            else
                Refresh(node, update);
            shrunkOnLeft = node->IsLeft();
            node = node->GetParent();
        }
    }

    // Rebalances a subtree whose root has a balance of +2 or -2 by a single or
    // double rotation. Returns the new subtree root; dropped tells whether the
    // subtree became one level lower than before the rotation.
    template <class Update> AvlNode* Rotate(AvlNode* root, Update& update, bool& dropped)
    {
        // Every link is read before the first one is rewritten: a side bit
        // changed early would make a later GetLeft or GetRight lie.
        const Place place = GetPlace(root);
        AvlNode* top = nullptr;
        if (root->GetBalance() > 0)
        {
            VELLUM_ASSERT(root && root->GetBalance() == +2);
            AvlNode* outer = root->GetLeft();
            AvlNode* right = root->GetRight();
            AvlNode* rightLeft = right->GetLeft();
            AvlNode* rightRight = right->GetRight();
            const int rightBalance = right->GetBalance();
            if (rightBalance >= 0)
            {
                root->SetChildren(outer, rightLeft);
                right->SetChildren(root, rightRight);
                root->SetBalance(rightBalance == 0 ? +1 : 0);
                right->SetBalance(rightBalance == 0 ? -1 : 0);
                dropped = rightBalance != 0;
                Refresh(root, update);
                top = right;
            }
            else
            {
                AvlNode* middle = rightLeft;
                const int middleBalance = middle->GetBalance();
                AvlNode* middleLeft = middle->GetLeft();
                AvlNode* middleRight = middle->GetRight();
                root->SetChildren(outer, middleLeft);
                right->SetChildren(middleRight, rightRight);
                middle->SetChildren(root, right);
                root->SetBalance(middleBalance == +1 ? -1 : 0);
                right->SetBalance(middleBalance == -1 ? +1 : 0);
                middle->SetBalance(0);
                dropped = true;
                Refresh(root, update);
                Refresh(right, update);
                top = middle;
            }
        }
        else
        {
            VELLUM_ASSERT(root && root->GetBalance() == -2);
            AvlNode* outer = root->GetRight();
            AvlNode* left = root->GetLeft();
            AvlNode* leftLeft = left->GetLeft();
            AvlNode* leftRight = left->GetRight();
            const int leftBalance = left->GetBalance();
            if (leftBalance <= 0)
            {
                root->SetChildren(leftRight, outer);
                left->SetChildren(leftLeft, root);
                root->SetBalance(leftBalance == 0 ? -1 : 0);
                left->SetBalance(leftBalance == 0 ? +1 : 0);
                dropped = leftBalance != 0;
                Refresh(root, update);
                top = left;
            }
            else
            {
                AvlNode* middle = leftRight;
                const int middleBalance = middle->GetBalance();
                AvlNode* middleLeft = middle->GetLeft();
                AvlNode* middleRight = middle->GetRight();
                left->SetChildren(leftLeft, middleLeft);
                root->SetChildren(middleRight, outer);
                middle->SetChildren(left, root);
                left->SetBalance(middleBalance == +1 ? -1 : 0);
                root->SetBalance(middleBalance == -1 ? +1 : 0);
                middle->SetBalance(0);
                dropped = true;
                Refresh(left, update);
                Refresh(root, update);
                top = middle;
            }
        }
        Replace(place, top);
        Refresh(top, update);
        return top;
    }

    AvlNode* m_Root = nullptr;
    AvlNode* m_First = nullptr;
    AvlNode* m_Last = nullptr;
};
} // namespace base
