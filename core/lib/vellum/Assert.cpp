// Assert.cpp - the process-wide assertion flags and their reporting.
#include "core/lib/vellum/Assert.h"

#include <cstdio>
#include <cstring>
#include <string>

bool IgnoreAllAsserts_G = false;
bool LogFailedAsserts_G = false;

namespace
{
unsigned long failedAsserts = 0;
AssertObserver observer = nullptr;

// "lib/math/geometry/source/Polygon.cpp" is reported as
// "lib/math/geometry/source/Polygon": the place, not the file type.
std::string SourcePlace(const char* file)
{
    std::string place = file ? file : "";
    const auto slash = place.find_last_of("/\\");
    const auto dot = place.rfind('.');
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash))
        place.erase(dot);
    return place;
}
} // namespace

void ProcessAssertFailure_G(const char* file, int line, const char* expression, bool& ignore)
{
    ++failedAsserts;
    ignore = true;
    if (observer)
    {
        observer(SourcePlace(file).c_str(), line, expression ? expression : "");
        return;
    }
    std::fprintf(stderr, "Assertion failed: %s(%d): %s\n", SourcePlace(file).c_str(), line,
                 expression ? expression : "");
    std::fflush(stderr);
}

void LogAssertFailure_G(const char* file, int line, const char* expression)
{
    ++failedAsserts;
    if (observer)
    {
        observer(SourcePlace(file).c_str(), line, expression ? expression : "");
        return;
    }
    std::fprintf(stderr, "Assertion failed (logged): %s(%d): %s\n", SourcePlace(file).c_str(), line,
                 expression ? expression : "");
}

AssertObserver SetAssertObserver_G(AssertObserver replacement)
{
    const AssertObserver earlier = observer;
    observer = replacement;
    return earlier;
}

unsigned long GetFailedAssertCount_G()
{
    return failedAsserts;
}
