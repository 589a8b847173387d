// RangeElementBox_T.h - the box by which a range tree indexes its elements.
//
// The range tree knows nothing of geometry: whatever type an element answers
// with GetBBox() is the box type of its tree, and that type brings the three
// things the tree asks of a box: an empty default value, the hull (|=), and
// the tests IntersectsWith and Contains. An element type whose box isn't
// GetBBox() (a point, which is its own box) specialises this template next to
// its own declaration, before any tree of it is used.
#pragma once

#include <utility>

namespace base
{
template <class T> struct RangeElementBox_T
{
    static auto Get(const T& value) { return value.GetBBox(); }
};

// The box type of an element type.
template <class T> using RangeBox_T = decltype(RangeElementBox_T<T>::Get(std::declval<const T&>()));
} // namespace base
