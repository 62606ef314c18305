#pragma once

#include "workbench/simulator/event_queue.h"

#include <functional>

namespace simulator
{

/// The temperature of a board, in degrees Celsius: it follows what heats it with one time constant, and knows when it
/// leaves the valid range and when it is back. `now` as everywhere in the plant.
class BoardTemperature final : public QueuedEvent
{
public:
    static constexpr double Highest = 60; // degrees; above, it is not good
    static constexpr double GoodAgain = 58; // degrees

    /// `eventQueue` is not owned and outlives it. `timeConstant` in s, above 0. `changed` is called with the time when
    /// isGood() has changed.
    BoardTemperature(EventQueue &eventQueue, double timeConstant, double atFirst,
                     std::function<void(double)> changed);

    double at(double now) const;
    bool isGood() const { return good; }

    /// From now on it is on the way to this.
    void approach(double degrees, double now);
    /// It is that much warmer than it would be.
    void setExcess(double degrees, double now);

protected:
    void happen(double time) override;

private:
    void look(double now);
    void plan(double now);

    EventQueue &queue;
    const std::function<void(double)> changed;
    const double timeConstant;
    double start = 0;
    double startDegrees;
    double target;
    double excess = 0;
    bool good = true;
};

} // namespace simulator
