// Assert.h - assertions that stay in the shipped program.
//
// A failed assertion never stops the run: the code behind it goes on and must
// stay defined. Each assertion site owns a silence flag, so that a person who
// has seen a failure once is not shown the same site again.
#pragma once

extern bool IgnoreAllAsserts_G;
extern bool LogFailedAsserts_G;

// Reports a failed assertion: one line on standard error with the file (below
// the source root, without extension), the line and the condition's text. The
// site is silenced afterwards, so each site speaks once per process.
void ProcessAssertFailure_G(const char* file, int line, const char* expression, bool& ignore);

// Records a failed assertion of a silenced site while LogFailedAsserts_G is set:
// the same line, prefixed "logged".
void LogAssertFailure_G(const char* file, int line, const char* expression);

// A program that reports failed assertions in its own words (the checking
// program) installs an observer: while one is installed, every failure goes
// to it instead of standard error, with the place as the report names it.
// Returns the observer it replaces; null goes back to standard error.
using AssertObserver = void (*)(const char* file, int line, const char* expression);
AssertObserver SetAssertObserver_G(AssertObserver observer);

// How many assertions have failed in this process (reported or logged); the
// tests read it to prove that a design's assertion fires.
unsigned long GetFailedAssertCount_G();

#define VELLUM_ASSERT(condition)                                                                             \
    do                                                                                                       \
    {                                                                                                        \
        static bool vellumSiteSilent_ = false;                                                               \
        if (!vellumSiteSilent_ && !IgnoreAllAsserts_G)                                                       \
        {                                                                                                    \
            if (!(condition))                                                                                \
                ProcessAssertFailure_G(__FILE__, __LINE__, #condition, vellumSiteSilent_);                   \
        }                                                                                                    \
        else if (LogFailedAsserts_G && !(condition))                                                         \
            LogAssertFailure_G(__FILE__, __LINE__, #condition);                                              \
    } while (false)
