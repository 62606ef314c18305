#pragma once

namespace simulator
{

/// The time that the plant lives in. Callable from any thread.
class SimulationClock
{
public:
    virtual ~SimulationClock() = default;

    /// Seconds since the clock was made; never goes back.
    virtual double now() const = 0;

    /// Seconds since 1970-01-01 UTC at which the clock was made.
    virtual double startedAt() const = 0;

protected:
    SimulationClock() = default;
    SimulationClock(const SimulationClock &) = default;
    SimulationClock &operator=(const SimulationClock &) = default;
};

} // namespace simulator
