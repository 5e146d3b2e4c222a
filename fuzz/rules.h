#pragma once

// The rules that fuzz targets hold their readers to.

#include <cstdio>
#include <cstdlib>

namespace zib::fuzz {

/// Ends the run, loudly, when a rule is broken; the input is kept.
inline void check(bool holds, const char* rule)
{
    if (holds)
        return;
    std::fprintf(stderr, "Broken rule: %s\n", rule);
    std::abort();
}

} // namespace zib::fuzz
