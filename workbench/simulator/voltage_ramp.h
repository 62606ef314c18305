#pragma once

namespace simulator
{

/// A straight line from one voltage to another, computed when asked for. Voltages in V, speeds in V/s, times in s.
class VoltageRamp
{
public:
    double valueAt(double now) const;
    bool isRampingAt(double now) const { return now < endTime; }
    double target() const { return targetValue; }
    double endsAt() const { return endTime; }
    /// While it is ramping, in V/s; below 0 on the way down.
    double slope() const { return (targetValue - startValue) / (endTime - startTime); }

    /// Ramps from `from` at `now`. A speed must be above 0.
    void start(double from, double to, double speed, double now);

    /// Is at a voltage at once.
    void jumpTo(double value);

private:
    double startValue = 0;
    double targetValue = 0;
    double startTime = 0;
    double endTime = 0;
};

} // namespace simulator
