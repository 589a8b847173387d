// SvgArc.cpp - radius and flags of an SVG arc from ends and signed sagitta.
//
// With c the chord's length and h the sagitta, the radius is
// (c^2 / 4 + h^2) / (2 |h|); the arc is the longer way round exactly when
// |h| exceeds c / 2, that is when the middle lies farther from the chord than
// the centre does.
#include "tools/TnfView/SvgArc.h"

#include <cmath>

namespace tnfview
{
SvgArc SagittaToSvgArc_G(double x1, double y1, double x2, double y2, double sagitta)
{
    SvgArc arc;
    const double chord = std::hypot(x2 - x1, y2 - y1);
    const double height = std::fabs(sagitta);
    if (height == 0.0 || chord == 0.0 || !std::isfinite(chord) || !std::isfinite(height))
        return arc;
    arc.m_IsArc = true;
    arc.m_Radius = (chord * chord * 0.25 + height * height) / (2.0 * height);
    arc.m_LargeArc = height > chord * 0.5;
    // SVG's sweep flag 1 runs the arc through increasing angles of the page,
    // whose y axis points down; turning the y axis over reverses angles, so
    // that is the clockwise arc of the file, the positive sagitta.
    arc.m_Sweep = sagitta > 0.0;
    return arc;
}

} // namespace tnfview
