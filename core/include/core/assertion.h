#pragma once
#include <cstdio>

namespace core {

// The one reporter of programming errors. It prints exactly
//   "ERROR: assert fail (<expression>) in <function> at <source>: <line>\n"
// to the standard error stream and returns: the caller then carries on with the
// fallback its own contract states. It never aborts.
inline void reportAssertion(const char* expression, const char* function,
                            const char* source, int line)
{
    std::fprintf(stderr, "ERROR: assert fail (%s) in %s at %s: %d\n",
                 expression, function, source, line);
}

// Returns `condition`; reports it first when it is false.
inline bool checkAssertion(bool condition, const char* expression, const char* function,
                           const char* source, int line)
{
    if (!condition)
        reportAssertion(expression, function, source, line);
    return condition;
}

} // namespace core

// Checks a condition and reports it when false; evaluates to the condition so that the
// caller writes its fallback in plain sight:  if (!CORE_CHECK(p, "Cls::fn", "dir/file")) return 0;
// `function` and `source` are the qualified function name and the project path of the
// source file, as they appear in the printed line.
#define CORE_CHECK(condition, function, source) \
    ::core::checkAssertion(static_cast<bool>(condition), #condition, function, source, __LINE__)
