// SvgArc.h - an edge of the neutral file, given by its ends and its signed
// sagitta, as the parameters of an SVG elliptical-arc command.
//
// The file's y axis points up; the page draws with y pointing down, so the
// page coordinates are (x, -y). A positive sagitta is a clockwise arc as seen
// with y up, which becomes counter-clockwise on the page: the sweep flag
// follows from the sign and the flip together. The arc's middle lies at the
// chord's middle plus the chord's left normal (the chord direction turned a
// quarter turn counter-clockwise, y up) times the sagitta.
#pragma once

namespace tnfview
{
struct SvgArc
{
    double m_Radius = 0.0;
    bool m_LargeArc = false;
    bool m_Sweep = false;
    // False for a straight edge (sagitta 0) or a chord of length 0: draw a
    // line to the end instead.
    bool m_IsArc = false;
};

// The SVG arc from (x1, y1) to (x2, y2), both in the file's y-up
// coordinates, that bulges by the signed sagitta.
SvgArc SagittaToSvgArc_G(double x1, double y1, double x2, double y2, double sagitta);

} // namespace tnfview
