#pragma once

#include "workbench/simulator/simulation_clock.h"

#include <atomic>
#include <chrono>

namespace rehearsal
{

/// A clock that stands at 0 until it is released, and then goes as time passes: the plant's time begins with the first
/// file, however long it takes to open a terminal, so that a fault planned for the second second comes in the second
/// second of the run.
class HeldClock final : public simulator::SimulationClock
{
public:
    HeldClock();

    /// Once; from any thread.
    void release();

    double now() const override;
    double startedAt() const override;

private:
    using Clock = std::chrono::steady_clock;

    const double wallStart;
    std::atomic<Clock::rep> releasedAt{0}; ///< 0 while it is held
};

} // namespace rehearsal
