// The text of doubles in the neutral file: the quick scaling must give, byte
// for byte, what the exact conversion of printf's %g gives, on every kind of
// value a layout holds and on the awkward ones (halves, powers of ten,
// carries into the next power, the edges of the fixed form).
#include "core/lib/vellum/streamio/Stream.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <random>
#include <string>

using io::FormatDouble_G;

namespace
{
// The exact conversion, as the standard library does it.
std::string Exact(double value, int digits)
{
    if (value == 0.0)
        return "0";
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, digits);
    return std::string(buffer, result.ptr);
}

// Checks the value and its negative at every precision; returns the failures.
int Mismatches(double value)
{
    int failures = 0;
    for (int digits = 1; digits <= 17; ++digits)
        for (const double v : {value, -value})
        {
            const std::string got = FormatDouble_G(v, digits);
            const std::string want = Exact(v, digits);
            if (got != want)
            {
                ADD_FAILURE() << "%." << digits << "g of " << Exact(v, 17) << ": " << got << " instead of "
                              << want;
                ++failures;
            }
        }
    return failures;
}
} // namespace

TEST(NumberText, HandPickedValues)
{
    EXPECT_EQ(FormatDouble_G(0.0123, 10), "0.0123");
    EXPECT_EQ(FormatDouble_G(1e6, 10), "1000000");
    EXPECT_EQ(FormatDouble_G(1e10, 10), "1e+10");
    EXPECT_EQ(FormatDouble_G(0.0001, 10), "0.0001");
    EXPECT_EQ(FormatDouble_G(0.00001, 10), "1e-05");
    EXPECT_EQ(FormatDouble_G(-2.5e-7, 10), "-2.5e-07");
    EXPECT_EQ(FormatDouble_G(123.456, 4), "123.5");
    EXPECT_EQ(FormatDouble_G(9.9999999996, 10), "10");
    EXPECT_EQ(FormatDouble_G(-0.0, 10), "0");
    for (const double v : {0.5,
                           1.5,
                           2.5,
                           0.125,
                           1.0,
                           10.0,
                           100.0,
                           1e-4,
                           9.999e-5,
                           1e-5,
                           99999.5,
                           1234567890.5,
                           0.1,
                           0.3,
                           1.0 / 3.0,
                           2.0 / 3.0,
                           123456789012345.0,
                           1e22,
                           1e23,
                           1e-300,
                           5e-324,
                           1.7976931348623157e308,
                           0.000123456789012,
                           4.35e-05,
                           9.9999999995,
                           9.99999999949,
                           999999999.95,
                           0.012300000000000002})
        EXPECT_EQ(Mismatches(v), 0);
}

TEST(NumberText, RandomValuesOfEveryMagnitudeAndLayoutCoordinates)
{
    std::mt19937_64 random(20261125);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::uniform_int_distribution<int> power(-30, 30);
    std::uniform_int_distribution<long long> micrometres(-2000000, 2000000);
    int failures = 0;
    for (int i = 0; i < 20000 && failures < 20; ++i)
    {
        // Any magnitude, and the noise of a unit factor on a whole number of
        // micrometres or of tenths of a mil, as a reader leaves coordinates.
        failures += Mismatches((1.0 + 9.0 * unit(random)) * std::pow(10.0, power(random)));
        failures += Mismatches(static_cast<double>(micrometres(random)) * 1e-6);
        failures += Mismatches(static_cast<double>(micrometres(random)) * 2.54e-6);
        // Exact halves of the last place kept, and values a hair beside them.
        const double half =
            (static_cast<double>(micrometres(random)) + 0.5) * std::pow(10.0, power(random) / 3);
        failures += Mismatches(half);
        failures += Mismatches(std::nextafter(half, 0.0));
        failures += Mismatches(std::nextafter(half, 1e300));
        // Just below and above powers of ten, where the exponent turns.
        const double ten = std::pow(10.0, power(random));
        failures += Mismatches(std::nextafter(ten, 0.0));
        failures += Mismatches(ten * (1.0 - 1e-11 * unit(random)));
    }
    EXPECT_EQ(failures, 0);
}
