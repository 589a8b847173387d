// TnfPlacement.h - the placement of a pad on the board: rotation, mirror and
// move, as one affine map of the plane.
#pragma once

namespace tnfview
{
class TnfPlacementMap
{
public:
    // The identity.
    TnfPlacementMap() = default;

    static TnfPlacementMap Move(double dx, double dy);
    // Counter-clockwise by degrees, about the origin, y up.
    static TnfPlacementMap Rotate(double degrees);
    // x becomes -x: the footprint seen from the other side of the board.
    static TnfPlacementMap MirrorX();
    // A component as LayoutCompInst places it. A mirrored part is written with
    // 180 minus its own rotation; its footprint is mirrored in x first and then
    // turned by its own rotation.
    static TnfPlacementMap Component(double x, double y, double rotation, bool mirrored);

    // This map after other: (this * other)(p) = this(other(p)).
    TnfPlacementMap operator*(const TnfPlacementMap& other) const;

    void Apply(double& x, double& y) const;
    // A mirror reverses the sense of arcs.
    bool IsMirror() const { return m_A * m_D - m_B * m_C < 0.0; }

private:
    // x' = a x + b y + dx, y' = c x + d y + dy.
    double m_A = 1.0, m_B = 0.0, m_C = 0.0, m_D = 1.0;
    double m_Dx = 0.0, m_Dy = 0.0;
};

} // namespace tnfview
