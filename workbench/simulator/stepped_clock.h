#pragma once

#include "workbench/simulator/simulation_clock.h"

#include <QtGlobal>

#include <atomic>
#include <chrono>

namespace simulator
{

/// Time that passes only when it is told to: for tests, and for runs that have to repeat exactly.
class SteppedClock final : public SimulationClock
{
public:
    double now() const override;

    /// Always the same instant, so that equal runs give equal timestamps.
    double startedAt() const override;

    /// Lets time pass; a step must not be negative.
    void advance(std::chrono::nanoseconds step);

private:
    std::atomic<qint64> elapsed{0}; // nanoseconds
};

} // namespace simulator
