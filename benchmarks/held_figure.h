#pragma once

#include <QtGlobal>

#include <benchmark/benchmark.h>

#include <string>

/// Whether figures are held to their limits. A quick run, with BENCHMARKS_ONLY_RUN in the environment, may share its
/// machine with anything and only sees that all of it still runs.
inline bool areFiguresHeld()
{
    return qEnvironmentVariableIsEmpty("BENCHMARKS_ONLY_RUN");
}

/// How many figures missed their limits; the program fails when there are any.
inline int missedLimits = 0;

/// Prints a figure beside its limit, and remembers when it is above.
inline void hold(benchmark::State &state, const std::string &name, double figure, double limit)
{
    state.counters[name] = figure;
    state.counters[name + "_limit"] = limit;
    if (figure <= limit || !areFiguresHeld())
        return;
    ++missedLimits;
    state.SkipWithError((name + " is above its limit: " + std::to_string(figure)).c_str());
}
