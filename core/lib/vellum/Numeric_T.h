// Numeric_T.h - sign, absolute value, bounds and rounded division for any ordered number type.
//
// The geometry works on several thin double wrappers (lengths, areas, angles);
// these templates let one spelling of abs/min/max/sign serve all of them, so
// that assertion texts read the same wherever they stand.
#pragma once

#include <cmath>

namespace base
{
// The sign of a value; k_Zero is a real third answer, not an error.
enum Sign
{
    k_Minus = -1,
    k_Zero = 0,
    k_Plus = 1
};

template <class T> T GetAbsOf_T(const T& value)
{
    return value < T(0) ? -value : value;
}

template <class T> const T& GetMinOf_T(const T& a, const T& b)
{
    return b < a ? b : a;
}

template <class T> const T& GetMaxOf_T(const T& a, const T& b)
{
    return a < b ? b : a;
}

template <class T> Sign GetSignOf_T(const T& value)
{
    if (value < T(0))
        return k_Minus;
    if (T(0) < value)
        return k_Plus;
    return k_Zero;
}

// The quotient of two doubles rounded to the nearest whole number, halves away
// from zero, so that rounding to a grid is symmetric about the origin.
template <class T> T RoundDivide_T(const T& value, const T& divisor)
{
    return std::round(value / divisor);
}
} // namespace base
