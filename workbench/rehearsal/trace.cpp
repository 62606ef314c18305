#include "workbench/rehearsal/trace.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace rehearsal
{

namespace
{

constexpr std::size_t PointsOfPiece = 6; // kept of each: first, last, and two extremes of each quantity
constexpr double LongestLine = 20; // s: so that many small bends do not add up to a large one
constexpr std::size_t Share =
    2; // of the room is filled by thinning, so that it is not needed for every point

double between(double from, double to, double share)
{
    return from + (to - from) * share;
}

} // namespace

Trace::Trace(int most_, double voltageTolerance_, double currentTolerance_)
    : most(static_cast<std::size_t>(std::max(most_, 64))),
      voltageTolerance(voltageTolerance_),
      currentTolerance(currentTolerance_)
{ }

void Trace::add(const TracePoint &point)
{
    const auto isEarlier = [](double time, const TracePoint &other) { return time < other.time; };
    auto place = kept.end();
    if (!kept.empty() && point.time < kept.back().time)
        place = std::upper_bound(kept.begin(), kept.end(), point.time, isEarlier);
    const bool isLast = place == kept.end();
    if (isLast && kept.size() >= 2 && isOnLine(kept[kept.size() - 2], kept.back(), point)) {
        kept.back() = point;
        return;
    }
    kept.insert(place, point);
    if (kept.size() > most)
        thin();
}

bool Trace::isOnLine(const TracePoint &before, const TracePoint &middle, const TracePoint &after) const
{
    if (middle.time <= before.time || middle.time >= after.time || after.time - before.time > LongestLine)
        return false;
    const double share = (middle.time - before.time) / (after.time - before.time);
    const auto isNear = [](double a, double b, double tolerance) { return std::abs(a - b) <= tolerance; };
    // A straight line that is told to go elsewhere is no longer the same.
    return isNear(before.voltageSet, middle.voltageSet, 0) && isNear(middle.voltageSet, after.voltageSet, 0)
        && isNear(middle.voltage, between(before.voltage, after.voltage, share), voltageTolerance)
        && isNear(middle.current, between(before.current, after.current, share), currentTolerance);
}

void Trace::thin()
{
    const std::size_t pieces = std::max<std::size_t>(1, most / Share / PointsOfPiece);
    const double start = kept.front().time;
    const double length = std::max((kept.back().time - start) / static_cast<double>(pieces), 1e-12);
    std::vector<TracePoint> result;
    result.reserve(pieces * PointsOfPiece);
    auto first = kept.begin();
    for (std::size_t piece = 0; piece < pieces && first != kept.end(); ++piece) {
        const double end = start + length * static_cast<double>(piece + 1);
        const bool isLastPiece = piece + 1 == pieces;
        const auto last = isLastPiece
            ? kept.end()
            : std::find_if(first, kept.end(), [end](const TracePoint &point) { return point.time >= end; });
        if (first == last)
            continue;
        const auto lessVoltage = [](const TracePoint &a, const TracePoint &b) {
            return a.voltage < b.voltage;
        };
        const auto lessCurrent = [](const TracePoint &a, const TracePoint &b) {
            return a.current < b.current;
        };
        const auto voltages = std::minmax_element(first, last, lessVoltage);
        const auto currents = std::minmax_element(first, last, lessCurrent);
        const std::set<std::vector<TracePoint>::iterator> chosen{
            first, last - 1, voltages.first, voltages.second, currents.first, currents.second};
        for (const auto point : chosen)
            result.push_back(*point);
        first = last;
    }
    kept = std::move(result);
}

} // namespace rehearsal
