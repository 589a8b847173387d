// Transformation.h - a similarity of the plane: mirror, scale, rotation, then shift.
//
// Placed components carry their pads and outlines from footprint coordinates
// to board coordinates by one of these. The mirror flips x (a component placed
// on the far side of the board) before the scale and rotation apply, so a
// mirrored shape turns the other way round and arcs change their direction.
#pragma once

#include "lib/math/geometry/Point.h"

namespace geom
{
class Transformation
{
public:
    // The identity.
    Transformation() = default;
    Transformation(const Vector& offset, Angle rotation, double scale = 1.0, bool mirror = false)
        : m_Offset(offset), m_Rotation(rotation), m_Scale(scale), m_Mirror(mirror)
    {
    }

    const Vector& GetOffset() const { return m_Offset; }
    Angle GetRotation() const { return m_Rotation; }
    double GetScale() const { return m_Scale; }
    bool IsMirror() const { return m_Mirror; }

    Vector Apply(const Vector& v) const
    {
        const Vector mirrored = m_Mirror ? Vector(-v.GetX(), v.GetY()) : v;
        return (mirrored * m_Scale).GetRotated(m_Rotation);
    }
    Point Apply(const Point& p) const { return k_Point_0 + Apply(p - k_Point_0) + m_Offset; }
    // A direction: mirrored about the y axis, then turned; a shift doesn't
    // change directions, and a negative scale adds half a turn.
    Azimuth Apply(Azimuth azimuth) const
    {
        Azimuth ret = m_Mirror ? Azimuth(k_Pi - azimuth.GetValue()) : azimuth;
        if (m_Scale < 0)
            ret = ret.GetOpposite();
        return ret + m_Rotation;
    }

private:
    Vector m_Offset;
    Angle m_Rotation;
    double m_Scale = 1.0;
    bool m_Mirror = false;
};
} // namespace geom
