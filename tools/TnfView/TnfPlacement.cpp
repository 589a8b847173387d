// TnfPlacement.cpp - rotations and mirrors of placed pads.
//
// Rotations by whole quarter turns are exact, so that a pad turned by 90
// degrees keeps its coordinates to the last bit.
#include "tools/TnfView/TnfPlacement.h"

#include <cmath>

namespace tnfview
{
namespace
{
void SinCosDegrees(double degrees, double& s, double& c)
{
    double turns = std::fmod(degrees, 360.0);
    if (turns < 0.0)
        turns += 360.0;
    if (turns == 0.0 || turns == 90.0 || turns == 180.0 || turns == 270.0)
    {
        const int q = static_cast<int>(turns / 90.0);
        const double sines[4] = {0.0, 1.0, 0.0, -1.0};
        s = sines[q];
        c = sines[(q + 1) % 4];
        return;
    }
    const double radians = turns * (3.14159265358979323846 / 180.0);
    s = std::sin(radians);
    c = std::cos(radians);
}
} // namespace

TnfPlacementMap TnfPlacementMap::Move(double dx, double dy)
{
    TnfPlacementMap map;
    map.m_Dx = dx;
    map.m_Dy = dy;
    return map;
}

TnfPlacementMap TnfPlacementMap::Rotate(double degrees)
{
    TnfPlacementMap map;
    double s = 0.0, c = 1.0;
    SinCosDegrees(degrees, s, c);
    map.m_A = c;
    map.m_B = -s;
    map.m_C = s;
    map.m_D = c;
    return map;
}

TnfPlacementMap TnfPlacementMap::MirrorX()
{
    TnfPlacementMap map;
    map.m_A = -1.0;
    return map;
}

TnfPlacementMap TnfPlacementMap::Component(double x, double y, double rotation, bool mirrored)
{
    if (mirrored)
        return Move(x, y) * Rotate(180.0 - rotation) * MirrorX();
    return Move(x, y) * Rotate(rotation);
}

TnfPlacementMap TnfPlacementMap::operator*(const TnfPlacementMap& o) const
{
    TnfPlacementMap r;
    r.m_A = m_A * o.m_A + m_B * o.m_C;
    r.m_B = m_A * o.m_B + m_B * o.m_D;
    r.m_C = m_C * o.m_A + m_D * o.m_C;
    r.m_D = m_C * o.m_B + m_D * o.m_D;
    r.m_Dx = m_A * o.m_Dx + m_B * o.m_Dy + m_Dx;
    r.m_Dy = m_C * o.m_Dx + m_D * o.m_Dy + m_Dy;
    return r;
}

void TnfPlacementMap::Apply(double& x, double& y) const
{
    const double nx = m_A * x + m_B * y + m_Dx;
    const double ny = m_C * x + m_D * y + m_Dy;
    x = nx;
    y = ny;
}

} // namespace tnfview
