// Base.cpp - numeric helpers and the diagnostic print.
#include "core/lib/vellum/Base.h"

#include "core/lib/vellum/AString.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

double base::GetRandomDouble_G()
{
    return static_cast<double>(std::rand()) / static_cast<double>(RAND_MAX);
}

void DebugPrint(int level, const wchar_t* format, ...)
{
    static const bool enabled = std::getenv("TNF_DEBUG_PRINT") != nullptr;
    if (!enabled || !format)
        return;
    va_list args;
    va_start(args, format);
    AString text;
    text.FormatV(format, args);
    va_end(args);
    std::fprintf(stderr, "[%d] %s\n", level, text.AsAnsi().c_str());
}
