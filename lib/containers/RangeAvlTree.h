// RangeAvlTree.h - a position-ordered AVL tree whose nodes carry subtree boxes.
//
// The edges of a contour and the regions of a collection are sequences: their
// order is the order of the chain or of insertion, and there is no key. Each
// node of this tree holds one element followed by the box of its whole
// subtree, so the same tree answers position questions (index, n-th, insert
// before or after) and spatial ones (the elements whose boxes meet a query
// box, or those that stray outside it) without a second index. Matches always
// come in sequence order, never in an order by position in space.
#pragma once

#include "core/lib/vellum/Allocators_T.h"
#include "core/lib/vellum/Assert.h"
#include "lib/containers/AvlTree.h"
#include "lib/containers/RangeElementBox_T.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <iterator>
#include <new>
#include <string>
#include <utility>

namespace base
{
// How a range iteration filters the sequence.
enum FilterMode
{
    k_NoFilter = 0,    // every element
    k_SkipOutside = 1, // only elements whose box meets the query box
    k_SkipInside = 2   // only elements whose box doesn't lie wholly in the query box
};

// A tree node: the links, then the element, then the hull of the element boxes
// of the subtree.
template <class T, class BoxT = RangeBox_T<T>> struct RangeAvlNode_T : AvlNode
{
    template <class... Args> explicit RangeAvlNode_T(Args&&... args) : m_Value(std::forward<Args>(args)...) {}

    T m_Value;
    BoxT m_SubTreeBox;
};

// BoxT is the type of the element boxes; the elements' own by default.
template <class T, class BoxT = RangeBox_T<T>> class RangeAvlTree : protected AvlTree
{
public:
    using Node = RangeAvlNode_T<T, BoxT>;
    using box_type = BoxT;
    using value_type = T;

    // Verdict of a node against a filter.
    enum Verdict
    {
        k_NothingBelow = 0, // nothing in this subtree can match
        k_MaybeBelow = 1,   // the subtree may hold a match; this node's element doesn't
        k_Matches = 2       // this node's element matches
    };

    // A position in the sequence; the end position has no node.
    class iterator
    {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T*;
        using reference = const T&;

        iterator() = default;
        iterator(const RangeAvlTree* tree, Node* node) : m_TreePtr(tree), m_CurrentNode(node) {}

        const T& operator*() const
        {
            VELLUM_ASSERT(m_CurrentNode);
            return m_CurrentNode->m_Value;
        }
        const T* operator->() const { return &**this; }

        iterator& operator++()
        {
            VELLUM_ASSERT(m_CurrentNode);
            if (m_CurrentNode)
                m_CurrentNode = static_cast<Node*>(AvlTree::GetNext(m_CurrentNode));
            return *this;
        }
        iterator operator++(int)
        {
            iterator old = *this;
            ++*this;
            return old;
        }
        // Stepping back from the end gives the last element.
        iterator& operator--()
        {
            m_CurrentNode = m_CurrentNode ? static_cast<Node*>(AvlTree::GetPrevious(m_CurrentNode))
                                          : (m_TreePtr ? m_TreePtr->GetLastNode() : nullptr);
            return *this;
        }
        iterator operator--(int)
        {
            iterator old = *this;
            --*this;
            return old;
        }

        // Position in the sequence; the end is at the element count.
        int GetIndex() const
        {
            if (!m_CurrentNode)
                return m_TreePtr ? m_TreePtr->GetCount() : 0;
            return AvlTree::GetIndexOf(m_CurrentNode);
        }

        // The position incr places on. One step forward is a plain step; any
        // other distance goes through the index. Landing outside the sequence
        // asserts and gives the end.
        iterator operator+(int incr) const
        {
            if (incr == 0)
                return *this;
            if (incr == 1)
            {
                iterator ret = *this;
                return ++ret;
            }
            VELLUM_ASSERT(m_TreePtr && !m_TreePtr->IsEmpty());
            if (!m_TreePtr || m_TreePtr->IsEmpty())
                return *this;
            const int count = m_TreePtr->GetCount();
            const int target = GetIndex() + incr;
            if (target == count)
                return m_TreePtr->end();
            iterator ret(m_TreePtr, nullptr);
            if (target >= 0 && target < count)
                ret.m_CurrentNode = static_cast<Node*>(m_TreePtr->GetNth(target));
            VELLUM_ASSERT(ret.m_CurrentNode);
            return ret;
        }
        iterator operator-(int decr) const { return *this + -decr; }
        iterator& operator+=(int incr) { return *this = *this + incr; }

        // Sequence order of two positions of one tree.
        bool operator<(const iterator& to) const
        {
            VELLUM_ASSERT(m_TreePtr == to.m_TreePtr);
            return GetIndex() < to.GetIndex();
        }
        bool operator==(const iterator& other) const { return m_CurrentNode == other.m_CurrentNode; }

        const RangeAvlTree* m_TreePtr = nullptr;
        Node* m_CurrentNode = nullptr;
    };
    using const_iterator = iterator;

    // An iterator that visits only the elements that pass a filter, in
    // sequence order. It carries its filter mode and query box; a caller may
    // change the box between steps, for example to follow a contour from one
    // quadrant to the next.
    class range_iterator : public iterator
    {
    public:
        range_iterator() = default;
        range_iterator(const RangeAvlTree* tree, Node* node, FilterMode mode, const BoxT& box)
            : iterator(tree, node), m_Mode(mode), m_Box(box)
        {
        }

        bool IsDereferenceable() const { return this->m_TreePtr && this->m_CurrentNode; }

        range_iterator& operator++()
        {
            VELLUM_ASSERT(IsDereferenceable());
            if (!IsDereferenceable())
                return *this;
            if (m_Mode == k_NoFilter) // every node matches: the plain step is the same walk, cheaper
                iterator::operator++();
            else
                this->m_CurrentNode = this->m_TreePtr->NextInRange(this->m_CurrentNode, m_Mode, m_Box);
            return *this;
        }
        range_iterator& operator--()
        {
            VELLUM_ASSERT(IsDereferenceable());
            if (!IsDereferenceable())
                return *this;
            if (m_Mode == k_NoFilter)
                iterator::operator--();
            else
                this->m_CurrentNode = this->m_TreePtr->PreviousInRange(this->m_CurrentNode, m_Mode, m_Box);
            return *this;
        }

        FilterMode GetMode() const { return m_Mode; }
        const BoxT& GetBox() const { return m_Box; }
        void SetBox(const BoxT& box) { m_Box = box; }

    private:
        FilterMode m_Mode = k_NoFilter;
        BoxT m_Box;
    };

    RangeAvlTree() = default;
    // A tree is copied element by element into a balanced tree of its own.
    RangeAvlTree(const RangeAvlTree& from) { Build(from.begin(), from.GetCount()); }
    RangeAvlTree(RangeAvlTree&& from) noexcept : m_Allocator(std::move(from.m_Allocator)) { TakeOver(from); }
    RangeAvlTree& operator=(const RangeAvlTree& from)
    {
        if (this != &from)
        {
            Clear();
            Build(from.begin(), from.GetCount());
        }
        return *this;
    }
    RangeAvlTree& operator=(RangeAvlTree&& from) noexcept
    {
        if (this != &from)
        {
            Clear();
            m_Allocator = std::move(from.m_Allocator);
            TakeOver(from);
        }
        return *this;
    }
    ~RangeAvlTree() { Clear(); }

    using AvlTree::GetCount;
    using AvlTree::IsEmpty;
    int size() const { return GetCount(); }
    bool empty() const { return IsEmpty(); }

    iterator begin() const { return iterator(this, static_cast<Node*>(GetFirst())); }
    iterator end() const { return iterator(this, nullptr); }
    Node* GetRootNode() const { return static_cast<Node*>(GetRoot()); }
    Node* GetFirstNode() const { return static_cast<Node*>(GetFirst()); }
    Node* GetLastNode() const { return static_cast<Node*>(GetLast()); }

    // The box of all elements; empty for an empty tree.
    BoxT GetBBox() const { return GetRoot() ? GetRootNode()->m_SubTreeBox : BoxT(); }

    // Builds the tree from a sequence of n elements, balanced, in one pass.
    // The tree must be empty.
    template <class InputIt> void Build(InputIt first, int n)
    {
        VELLUM_ASSERT(IsEmpty());
        if (!IsEmpty() || n <= 0)
            return;
        if (m_Allocator.GetUsedBlocks() == 0 && m_Allocator.GetCapacity() == 0)
            m_Allocator.SetInitialCapacity(static_cast<std::size_t>(n));
        BuildNodes(
            n, [&]() -> AvlNode* { return NewNode(*first++); }, UpdateBox{});
    }
    template <class ForwardIt> void Build(ForwardIt first, ForwardIt last)
    {
        Build(first, static_cast<int>(std::distance(first, last)));
    }
    template <class Range> void Build(const Range& elements)
    {
        Build(std::begin(elements), std::end(elements));
    }

    // Inserts before a position (the end: at the back) and returns the new
    // element's position. A position of another tree inserts nothing.
    template <class V> iterator InsertBefore(iterator before_what_it, V&& value)
    {
        VELLUM_ASSERT(before_what_it.m_TreePtr == this);
        if (before_what_it.m_TreePtr != this)
            return end();
        Node* node_to_insert = NewNode(std::forward<V>(value));
        VELLUM_ASSERT(node_to_insert);
        LinkBefore(before_what_it.m_CurrentNode, node_to_insert, UpdateBox{});
        return iterator(this, node_to_insert);
    }
    // Inserts after a position. After the end means before the first element,
    // as if the sequence were a ring closed by the end position.
    template <class V> iterator InsertAfter(iterator after_what_it, V&& value)
    {
        VELLUM_ASSERT(after_what_it.m_TreePtr == this);
        if (after_what_it.m_TreePtr != this)
            return end();
        Node* node_to_insert = NewNode(std::forward<V>(value));
        VELLUM_ASSERT(node_to_insert);
        AvlNode* before =
            after_what_it.m_CurrentNode ? AvlTree::GetNext(after_what_it.m_CurrentNode) : GetFirst();
        LinkBefore(before, node_to_insert, UpdateBox{});
        return iterator(this, node_to_insert);
    }
    template <class V> iterator PushBack(V&& value) { return InsertBefore(end(), std::forward<V>(value)); }

    // Removes the element at i and returns the position after it.
    iterator Erase(iterator i)
    {
        VELLUM_ASSERT(i.m_TreePtr == this);
        Node* node = i.m_CurrentNode;
        if (i.m_TreePtr != this || !node)
        {
            VELLUM_ASSERT(node);
            return end();
        }
        const int old_c = GetCount();
        VELLUM_ASSERT(old_c > 0);
        Node* next = static_cast<Node*>(AvlTree::GetNext(node));
        Unlink(node, UpdateBox{});
        VELLUM_ASSERT(GetCount() == old_c - 1);
        DeleteNode(node);
        return iterator(this, next);
    }

    // Replaces the element at i, keeping its position; the boxes above it
    // follow.
    template <class V> void Replace(iterator i, V&& value)
    {
        VELLUM_ASSERT(i.m_TreePtr == this && i.m_CurrentNode);
        if (i.m_TreePtr != this || !i.m_CurrentNode)
            return;
        i.m_CurrentNode->m_Value = std::forward<V>(value);
        RefreshUpwards(i.m_CurrentNode, UpdateBox{});
    }

    // The position of element j; the end behind the assertion when j is out
    // of range.
    iterator GetNthIterator(int j) const { return iterator(this, static_cast<Node*>(GetNth(j))); }

    // Destroys all elements, children before parents, and returns the nodes.
    void Clear()
    {
        DestroySubTree(GetRootNode());
        Forget();
    }

    // Same elements in the same order.
    bool operator==(const RangeAvlTree& to) const
    {
        if (IsEmpty() != to.IsEmpty() || GetCount() != to.GetCount())
            return false;
        iterator i = begin();
        iterator ti = to.begin();
        for (; i != end() && ti != to.end(); ++i, ++ti)
            if (!(*i == *ti))
                return false;
        VELLUM_ASSERT(i == end() && ti == to.end());
        return true;
    }

    // --- Range queries ---

    // The judgement of one node under a filter, from its subtree box and the
    // box of its own element.
    static Verdict GetVerdict(const Node* node, FilterMode mode, const BoxT& box)
    {
        switch (mode)
        {
        case k_NoFilter:
            return k_Matches;
        case k_SkipOutside:
            if (!node->m_SubTreeBox.IntersectsWith(box))
                return k_NothingBelow;
            return RangeElementBox_T<T>::Get(node->m_Value).IntersectsWith(box) ? k_Matches : k_MaybeBelow;
        case k_SkipInside:
            if (box.Contains(node->m_SubTreeBox))
                return k_NothingBelow;
            return box.Contains(RangeElementBox_T<T>::Get(node->m_Value)) ? k_MaybeBelow : k_Matches;
        }
        VELLUM_ASSERT(!"This should never happen!");
        return k_Matches;
    }

    // The first element in sequence order that passes the filter.
    range_iterator BeginInRange(FilterMode mode, const BoxT& box) const
    {
        return range_iterator(this, FirstInRange(GetRootNode(), mode, box), mode, box);
    }
    // The last element in sequence order that passes the filter.
    range_iterator LastInRange(FilterMode mode, const BoxT& box) const
    {
        return range_iterator(this, LastInRangeOf(GetRootNode(), mode, box), mode, box);
    }
    // The end of a filtered iteration, for comparisons.
    range_iterator EndInRange(FilterMode mode, const BoxT& box) const
    {
        return range_iterator(this, nullptr, mode, box);
    }

    // The first match in a subtree: the left side first, then the node, then
    // the right side, cutting off subtrees that cannot match.
    static Node* FirstInRange(Node* node, FilterMode mode, const BoxT& box)
    {
        while (node)
        {
            const Verdict verdict = GetVerdict(node, mode, box);
            if (verdict == k_NothingBelow)
                return nullptr;
            if (Node* found = FirstInRange(Left(node), mode, box))
                return found;
            if (verdict == k_Matches)
                return node;
            node = Right(node);
        }
        return nullptr;
    }
    static Node* LastInRangeOf(Node* node, FilterMode mode, const BoxT& box)
    {
        while (node)
        {
            const Verdict verdict = GetVerdict(node, mode, box);
            if (verdict == k_NothingBelow)
                return nullptr;
            if (Node* found = LastInRangeOf(Right(node), mode, box))
                return found;
            if (verdict == k_Matches)
                return node;
            node = Left(node);
        }
        return nullptr;
    }

    // The next match after a node: its right subtree, then the ancestors that
    // follow it. An ancestor reached from its left side comes next in the
    // sequence; one reached from the right came before and is passed by. An
    // ancestor whose subtree cannot match ends the search: the subtree holds
    // the node we came from, which matched.
    static Node* NextInRange(const Node* node, FilterMode mode, const BoxT& box)
    {
        if (Node* found = FirstInRange(Right(node), mode, box))
            return found;
        const AvlNode* child = node;
        for (Node* ancestor = Parent(child); ancestor; child = ancestor, ancestor = Parent(child))
        {
            if (!child->IsLeft())
                continue;
            switch (GetVerdict(ancestor, mode, box))
            {
            case k_NothingBelow:
                return nullptr;
            case k_Matches:
                return ancestor;
            case k_MaybeBelow:
                if (Node* found = FirstInRange(Right(ancestor), mode, box))
                    return found;
                break;
            default:
                VELLUM_ASSERT(!"This should never happen!");
                return nullptr;
            }
        }
        return nullptr;
    }
    static Node* PreviousInRange(const Node* node, FilterMode mode, const BoxT& box)
    {
        if (Node* found = LastInRangeOf(Left(node), mode, box))
            return found;
        const AvlNode* child = node;
        for (Node* ancestor = Parent(child); ancestor; child = ancestor, ancestor = Parent(child))
        {
            if (child->IsLeft())
                continue;
            switch (GetVerdict(ancestor, mode, box))
            {
            case k_NothingBelow:
                return nullptr;
            case k_Matches:
                return ancestor;
            case k_MaybeBelow:
                if (Node* found = LastInRangeOf(Left(ancestor), mode, box))
                    return found;
                break;
            default:
                VELLUM_ASSERT(!"This should never happen!");
                return nullptr;
            }
        }
        return nullptr;
    }

    // --- Debugging ---

    // The tree as text: the root's address, then one line per node in
    // sequence order, indented by depth, with balance, count and the element
    // as format gives it.
    std::string GetDebugText(const std::function<std::string(const T&)>& format) const
    {
        if (IsEmpty())
            return "< Empty Tree >";
        char line[64];
        std::snprintf(line, sizeof line, "ROOT:%8.8x\n",
                      static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(GetRoot()) & 0xFFFFFFFFu));
        std::string text = line;
        for (iterator i = begin(); i != end(); ++i)
        {
            int depth = 0;
            for (const AvlNode* up = i.m_CurrentNode->GetParent(); up; up = up->GetParent())
                ++depth;
            std::snprintf(line, sizeof line, "%*s[%+d #%d] ", depth * 2, "", i.m_CurrentNode->GetBalance(),
                          i.m_CurrentNode->GetSubTreeNodesCount());
            text += line;
            text += format(*i);
            text += '\n';
        }
        return text;
    }

private:
    // The update function of this tree: the element's box grown by the
    // children's subtree boxes.
    struct UpdateBox
    {
        void operator()(AvlNode* avlNode) const
        {
            Node* node = static_cast<Node*>(avlNode);
            BoxT box = RangeElementBox_T<T>::Get(node->m_Value);
            if (const Node* left = Left(node))
                box |= left->m_SubTreeBox;
            if (const Node* right = Right(node))
                box |= right->m_SubTreeBox;
            node->m_SubTreeBox = box;
        }
    };

    static Node* Left(const AvlNode* node) { return static_cast<Node*>(node->GetLeft()); }
    static Node* Right(const AvlNode* node) { return static_cast<Node*>(node->GetRight()); }
    static Node* Parent(const AvlNode* node) { return static_cast<Node*>(node->GetParent()); }

    template <class V> Node* NewNode(V&& value)
    {
        return new (m_Allocator.Allocate()) Node(std::forward<V>(value));
    }
    void DeleteNode(Node* node)
    {
        node->~Node();
        m_Allocator.Deallocate(node);
    }
    void DestroySubTree(Node* node)
    {
        if (!node)
            return;
        // Both children are read first: a returned block reuses its first word.
        Node* left = Left(node);
        Node* right = Right(node);
        DestroySubTree(left);
        DestroySubTree(right);
        DeleteNode(node);
    }

    BlockAllocator_T<Node> m_Allocator;
};
} // namespace base
