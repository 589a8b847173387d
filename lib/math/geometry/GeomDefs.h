// GeomDefs.h - enumerations, numeric limits and the trigonometry of the geometry library.
//
// Every shape of namespace geom shares these: the direction of rotation, the
// selector of angle units, the one exception type, the noise floor of doubles
// and the trigonometric functions. All sine, cosine and inverse results pass a
// single truncation step, so that a process can ask for coarser trigonometry
// (and thus reproducible bits across runtimes) through one environment variable.
#pragma once

#include "core/lib/vellum/Numeric_T.h"

#include <cfloat>

namespace geom
{
// Direction of rotation. k_NoDirection is the third answer of tests that may
// find none (collinear points, straight edges, zero area).
enum Direction
{
    k_CCW = 0,
    k_CW = 1,
    k_NoDirection = 2
};

// The unit in which an angle or azimuth is given to a constructor or asked for.
enum AngleUnit
{
    k_Degrees = 0,
    k_Radians = 1,
    k_Quadrants = 2,
    k_Octants = 3
};

// The library's only exception type; thrown where an operation cannot go on
// (an impossible topology, a negative point budget) and caught by the boolean
// operations, which then return an empty result.
enum Exception
{
    k_GeometryFailure = 0,
    k_NegativeCount = 1
};

// The answer of an operation that may fail: m_Value is meaningful only when
// m_Success is set. Intersections of two curves return a pair of these.
template <class T> struct Result_T
{
    bool m_Success = false;
    T m_Value{};
};

// Largest usable coordinate: far below DBL_MAX, so that sums, differences and
// products with small factors never overflow.
inline constexpr double k_InfiniteValue = DBL_MAX / 1000000;
// The bound that GetEpsilon accepts: a thousandfold margin above the usable range.
inline constexpr double k_EpsilonLimit = DBL_MAX / 1000000 * 1001;

inline constexpr double k_Pi = 3.141592653589793;
inline constexpr double k_TwoPi = 6.283185307179586;

// The factor of each AngleUnit to radians, and back.
inline constexpr double k_DegreesToRadians = 0.017453292519943295;
inline constexpr double k_QuadrantsToRadians = 1.5707963267948966;
inline constexpr double k_OctantsToRadians = 0.7853981633974483;
inline constexpr double k_RadiansToDegrees = 57.29577951308232;
inline constexpr double k_RadiansToQuadrants = 0.6366197723675814;
inline constexpr double k_RadiansToOctants = 1.2732395447351628;

// A thousand units in the last place of the value's magnitude, never zero: the
// noise a computed length or area can carry. Azimuths use factor 1.
inline double GetEpsilonOf_G(double magnitude, double factor)
{
    double e = magnitude * DBL_EPSILON;
    if (e == 0)
        e = DBL_MIN;
    return e * factor;
}

// Applies the process-wide trigonometric truncation: with the environment
// variable TARVEX_STUDIO_GEOMETRY_TRIG_TRUNC set to n in [0, 16), a result is
// rounded half away from zero to n decimals; otherwise it passes unchanged.
// The variable is read once per process.
double TruncateTrig_G(double value);

// The scale of the truncation (10^n), or 0 when results pass unchanged.
double GetTrigTruncationScale_G();

// The runtime's functions, each passed through TruncateTrig_G.
double GetSin_G(double radians);
double GetCos_G(double radians);
double GetTan_G(double radians);
double GetAtan_G(double value);
double GetAtan2_G(double y, double x);
} // namespace geom
