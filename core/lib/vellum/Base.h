// Base.h - small numeric helpers of namespace base and the diagnostic print.
#pragma once

#include <cmath>

namespace base
{
// Remainder of value by divisor, with the sign of the value (as fmod).
template <class T> T GetModulo_T(const T& value, const T& divisor)
{
    return std::fmod(value, divisor);
}

// A random number in [0, 1]; the sequence is that of the C library's rand(),
// so a run is repeatable unless somebody seeds it.
double GetRandomDouble_G();
} // namespace base

// A diagnostic line in printf form, never shown to users. Written to standard
// error only when the environment variable TNF_DEBUG_PRINT is set; the level is
// printed in front of the line.
void DebugPrint(int level, const wchar_t* format, ...);
