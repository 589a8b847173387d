// RangeAvlTreeInterval_test.cpp - the range tree over a box type of its own.
//
// The tree takes its box type from its elements and asks of it only an empty
// value, a hull and two tests, so a sequence of time spans indexed by a
// one-dimensional interval works as well as the shapes of the geometry.
// Nothing of the geometry is included here.
#include "TreeInvariants.h"

#include "lib/containers/RangeAvlTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <type_traits>
#include <vector>

namespace
{
// A closed interval; empty when lower > upper.
struct Interval
{
    double m_Lower = 1;
    double m_Upper = 0;

    bool IsEmpty() const { return m_Lower > m_Upper; }
    Interval& operator|=(const Interval& other)
    {
        if (IsEmpty())
            return *this = other;
        if (!other.IsEmpty())
        {
            m_Lower = std::min(m_Lower, other.m_Lower);
            m_Upper = std::max(m_Upper, other.m_Upper);
        }
        return *this;
    }
    bool IntersectsWith(const Interval& other) const
    {
        return !IsEmpty() && !other.IsEmpty() && m_Lower <= other.m_Upper && other.m_Lower <= m_Upper;
    }
    bool Contains(const Interval& other) const
    {
        return !IsEmpty() && !other.IsEmpty() && m_Lower <= other.m_Lower && other.m_Upper <= m_Upper;
    }
    bool operator==(const Interval& other) const
    {
        return (IsEmpty() && other.IsEmpty()) || (m_Lower == other.m_Lower && m_Upper == other.m_Upper);
    }
};

struct Span
{
    int m_Id = 0;
    Interval m_Time;

    Interval GetBBox() const { return m_Time; }
    bool operator==(const Span& other) const { return m_Id == other.m_Id && m_Time == other.m_Time; }
};

static_assert(std::is_same_v<base::RangeAvlTree<Span>::box_type, Interval>);
} // namespace

TEST(RangeAvlTreeInterval, QueriesOverABoxTypeOfItsOwn)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> at(0, 1000), length(0, 30);
    std::vector<Span> model;
    for (int i = 0; i < 300; ++i)
    {
        const double t = at(random);
        model.push_back(Span{i, Interval{t, t + length(random)}});
    }
    base::RangeAvlTree<Span> tree;
    tree.Build(model);
    for (int i = 0; i < 100; ++i)
    {
        const int gone = static_cast<int>(random() % model.size());
        tree.Erase(tree.GetNthIterator(gone));
        model.erase(model.begin() + gone);
    }
    tree_check::ExpectTreeHolds(tree, model);
    for (int trial = 0; trial < 200; ++trial)
    {
        const double t = at(random);
        const Interval q{t, t + length(random) * 3};
        for (base::FilterMode mode : {base::k_SkipOutside, base::k_SkipInside})
        {
            std::vector<int> expected, found;
            for (const Span& s : model)
                if (mode == base::k_SkipOutside ? s.m_Time.IntersectsWith(q) : !q.Contains(s.m_Time))
                    expected.push_back(s.m_Id);
            for (auto i = tree.BeginInRange(mode, q); i.IsDereferenceable(); ++i)
                found.push_back(i->m_Id);
            ASSERT_EQ(found, expected) << "trial " << trial << " mode " << mode;
        }
    }
}
