#pragma once

#include <vector>

namespace rehearsal
{

/// A channel at one moment. Plain data.
struct TracePoint
{
    double time = 0; ///< s
    double voltage = 0; ///< V
    double current = 0; ///< A
    double voltageSet = 0; ///< V that it is told to have: 0 while it is off
};

/// The course of a channel in a bounded number of points. A point on the straight line between its neighbours is left
/// out. When there are too many, the time is cut into equal pieces, and of each the first point, the last and those of
/// the least and the greatest voltage and current are kept: no extreme is ever lost.
class Trace
{
public:
    /// `most` is at least 64; voltages and currents that differ by less than `voltageTolerance` (V) and
    /// `currentTolerance` (A) from the straight line are on it.
    Trace(int most, double voltageTolerance, double currentTolerance);

    /// In any order; of points of the same time the later added comes later.
    void add(const TracePoint &point);

    /// By time, at most `most` of them.
    const std::vector<TracePoint> &points() const { return kept; }

private:
    bool isOnLine(const TracePoint &before, const TracePoint &between, const TracePoint &after) const;
    void thin();

    std::size_t most;
    double voltageTolerance;
    double currentTolerance;
    std::vector<TracePoint> kept;
};

} // namespace rehearsal
