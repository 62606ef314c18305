#pragma once

#include "workbench/simulator/simulation_clock.h"

namespace simulator
{

/// One moment of another clock's time, for what is carried out at a moment that has passed.
class MomentClock final : public SimulationClock
{
public:
    MomentClock(double moment, double clockStartedAt) : time(moment), start(clockStartedAt) { }

    double now() const override { return time; }
    double startedAt() const override { return start; }

private:
    double time;
    double start;
};

} // namespace simulator
