// Range_T.h - a closed interval of an ordered value type, possibly empty.
//
// Boxes are two of these, and the ordered containers prune their searches
// with them. Emptiness is carried by the bounds themselves (lower > upper), so
// a range is two numbers and nothing else; the default range is the canonical
// empty one, lower 1 and upper 0.
#pragma once

#include "core/lib/vellum/Assert.h"

namespace base
{
template <class T> class Range_T
{
public:
    Range_T() : m_Lower(T(1.0)), m_Upper(T(0.0)) {}
    Range_T(const T& lower, const T& upper) : m_Lower(lower), m_Upper(upper) {}

    bool IsEmpty() const { return m_Upper < m_Lower; }
    bool IsSingle() const { return m_Lower == m_Upper; }

    const T& GetLower() const
    {
        VELLUM_ASSERT(!IsEmpty());
        return m_Lower;
    }
    const T& GetUpper() const
    {
        VELLUM_ASSERT(!IsEmpty());
        return m_Upper;
    }
    // An empty range answers 0 behind the assertion.
    T GetLength() const
    {
        VELLUM_ASSERT(!IsEmpty());
        return IsEmpty() ? T(0.0) : m_Upper - m_Lower;
    }
    T GetMiddle() const { return (m_Lower + m_Upper) * 0.5; }

    // Grows both ends by a signed amount; a negative amount may empty the range.
    Range_T GetExpanded(const T& amount) const
    {
        if (IsEmpty())
            return *this;
        return Range_T(m_Lower - amount, m_Upper + amount);
    }

    bool Contains(const T& value) const { return !(value < m_Lower) && !(m_Upper < value); }
    bool Contains(const Range_T& other) const
    {
        return !IsEmpty() && !other.IsEmpty() && !(other.m_Lower < m_Lower) && !(m_Upper < other.m_Upper);
    }

    bool IntersectsWith(const Range_T& other) const
    {
        return !IsEmpty() && !other.IsEmpty() && !(other.m_Upper < m_Lower) && !(m_Upper < other.m_Lower);
    }

    // The smallest range holding both; an empty operand leaves the other one.
    Range_T GetHull(const Range_T& other) const
    {
        if (other.IsEmpty())
            return *this;
        if (IsEmpty())
            return other;
        return Range_T(other.m_Lower < m_Lower ? other.m_Lower : m_Lower,
                       m_Upper < other.m_Upper ? other.m_Upper : m_Upper);
    }
    Range_T GetHull(const T& value) const { return GetHull(Range_T(value, value)); }

    // The common part; empty when the two don't meet (bounds then cross).
    Range_T operator&(const Range_T& other) const
    {
        if (IsEmpty() || other.IsEmpty())
            return Range_T();
        return Range_T(m_Lower < other.m_Lower ? other.m_Lower : m_Lower,
                       other.m_Upper < m_Upper ? other.m_Upper : m_Upper);
    }

    // Maps a value linearly from this range onto the target range. A single
    // target range takes every value to its bound; a degenerate source has no
    // scale and maps to the target's lower bound behind the assertion.
    T MapValueTo(const T& value, const Range_T& target) const
    {
        VELLUM_ASSERT(!IsEmpty() && !IsSingle());
        if (target.IsSingle() || IsEmpty() || IsSingle())
            return target.m_Lower;
        return target.m_Lower + (value - m_Lower) * ((target.m_Upper - target.m_Lower) / (m_Upper - m_Lower));
    }

    bool operator==(const Range_T& other) const = default;

private:
    T m_Lower;
    T m_Upper;
};
} // namespace base
