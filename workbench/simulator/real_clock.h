#pragma once

#include "workbench/simulator/simulation_clock.h"

#include <chrono>

namespace simulator
{

/// Time as it passes. Setting the computer's clock does not move it.
class RealClock final : public SimulationClock
{
public:
    RealClock();

    double now() const override;
    double startedAt() const override;

private:
    const std::chrono::steady_clock::time_point start;
    const double wallStart;
};

} // namespace simulator
