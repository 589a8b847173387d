// GeomDefs.cpp - the trigonometric truncation and the truncated runtime functions.
//
// Truncation exists so that geometry built on different runtimes can be made to
// agree bit for bit: with few enough decimals kept, the last-place differences
// of sin and cos libraries vanish.
#include "lib/math/geometry/GeomDefs.h"

#include <cmath>
#include <cstdlib>

namespace geom
{
namespace
{
double ReadTruncationScale()
{
    const char* text = std::getenv("TARVEX_STUDIO_GEOMETRY_TRIG_TRUNC");
    if (!text)
        return 0;
    char* end = nullptr;
    const long digits = std::strtol(text, &end, 10);
    if (end == text || digits < 0 || digits >= 16)
        return 0;
    return std::pow(10.0, static_cast<double>(digits));
}
} // namespace

double GetTrigTruncationScale_G()
{
    // A function-local static: initialised once, thread-safely, on first use.
    static const double scale = ReadTruncationScale();
    return scale;
}

double TruncateTrig_G(double value)
{
    const double scale = GetTrigTruncationScale_G();
    if (scale == 0)
        return value;
    const double magnitude = std::floor(std::fabs(value) * scale + 0.5) / scale;
    return value < 0 ? -magnitude : magnitude;
}

double GetSin_G(double radians)
{
    return TruncateTrig_G(std::sin(radians));
}

double GetCos_G(double radians)
{
    return TruncateTrig_G(std::cos(radians));
}

double GetTan_G(double radians)
{
    return TruncateTrig_G(std::tan(radians));
}

double GetAtan_G(double value)
{
    return TruncateTrig_G(std::atan(value));
}

double GetAtan2_G(double y, double x)
{
    return TruncateTrig_G(std::atan2(y, x));
}
} // namespace geom
