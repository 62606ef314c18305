#pragma once

#include <cstdio>
#include <cstdlib>

/// A promise was broken: libFuzzer keeps the input that did it.
inline void require(bool held, const char *promise)
{
    if (held)
        return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}
