#include "workbench/simulator/stepped_clock.h"

namespace simulator
{

double SteppedClock::now() const
{
    return static_cast<double>(elapsed.load()) * 1e-9;
}

double SteppedClock::startedAt() const
{
    constexpr double FirstOfJanuary2020 = 1577836800;
    return FirstOfJanuary2020;
}

void SteppedClock::advance(std::chrono::nanoseconds step)
{
    Q_ASSERT(step.count() >= 0);
    elapsed.fetch_add(step.count());
}

} // namespace simulator
