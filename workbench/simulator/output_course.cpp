#include "workbench/simulator/output_course.h"

#include <cmath>
#include <limits>

namespace simulator
{

namespace
{

constexpr double Never = std::numeric_limits<double>::infinity();
constexpr double Horizon = 1e9; // s; thirty years

/// How far the voltage is beyond a line, to the side that `sign` says. Times are in s since the course's start.
struct Distance
{
    const OutputCourse &course;
    double sign; // 1 above, -1 below
    double level; // V at the start
    double lineSlope; // V/s

    double at(double t) const
    {
        const double beyond = course.voltage - level + (course.slope - lineSlope) * t + course.bend * t * t
            + course.swing * std::expm1(-course.rate * t);
        return sign * beyond;
    }

    double growthAt(double t) const
    {
        return sign
            * (course.slope - lineSlope + 2 * course.bend * t
               - course.swing * course.rate * std::exp(-course.rate * t));
    }

    /// Where it turns from growing to shrinking or back; there is at most one such place. Infinity for none.
    double turningPoint() const
    {
        const double straight = course.slope - lineSlope;
        if (course.bend != 0)
            return -straight / (2 * course.bend);
        if (course.rate == 0 || course.swing == 0)
            return Never;
        const double left = straight / (course.swing * course.rate); // of what the exponential began with
        return left > 0 ? -std::log(left) / course.rate : Never;
    }

    /// The zero between `from`, where it is below 0, and `to`. It grows all the way.
    double zeroBetween(double from, double to) const
    {
        const double here = at(from);
        const double straight = course.slope - lineSlope;
        if (course.bend == 0 && (course.rate == 0 || course.swing == 0))
            return bounded(from - here / (sign * straight), to);
        if (straight == 0 && course.rate != 0) {
            const double left = 1 + (level - course.voltage) / course.swing; // e^(-rate t) at the zero
            return left > 0 ? bounded(-std::log(left) / course.rate, to) : Never;
        }
        return bisected(from, to);
    }

private:
    static double bounded(double t, double to) { return t <= to ? t : Never; }

    double bisected(double from, double to) const
    {
        double low = from;
        double high = to;
        if (to == Never) {
            double step = course.rate > 0 ? 1 / course.rate : 1e-3;
            high = from + step;
            while (at(high) < 0) {
                if (high > Horizon)
                    return Never;
                low = high;
                step *= 2;
                high += step;
            }
        } else if (at(to) < 0) {
            return Never;
        }
        for (;;) {
            const double middle = low + (high - low) / 2;
            if (middle <= low || middle >= high)
                return high;
            (at(middle) < 0 ? low : high) = middle;
        }
    }
};

/// The first time from `from` on at which it gets to 0 while it grows.
double firstReach(const Distance &distance, double from)
{
    const double turn = distance.turningPoint();
    const bool turnsLater = turn > from && turn != Never;
    const double firstEnd = turnsLater ? turn : Never;
    const double probe = turnsLater ? from + (turn - from) / 2
                                    : from + (distance.course.rate > 0 ? 1e-3 / distance.course.rate : 1e-3);
    if (distance.growthAt(probe) > 0) {
        if (distance.at(from) >= 0)
            return from;
        return distance.zeroBetween(from, firstEnd);
    }
    if (!turnsLater || distance.at(turn) >= 0)
        return Never;
    return distance.growthAt(turn + (turn - from) / 2) > 0 ? distance.zeroBetween(turn, Never) : Never;
}

double timeOf(double value, double slope, double level, double now)
{
    return now + (level - value) / slope;
}

} // namespace

double OutputCourse::voltageAt(double time) const
{
    const double t = time - start;
    return voltage + (slope + bend * t) * t + (rate != 0 ? swing * std::expm1(-rate * t) : 0);
}

double OutputCourse::currentAt(double time) const
{
    return std::fmax(0, current + currentSlope * (time - start));
}

double OutputCourse::timeOfRise(double level, double lineSlope, double from) const
{
    const double t = from - start;
    return start + firstReach({*this, 1, level - lineSlope * t, lineSlope}, t);
}

double OutputCourse::timeOfFall(double level, double lineSlope, double from) const
{
    const double t = from - start;
    return start + firstReach({*this, -1, level - lineSlope * t, lineSlope}, t);
}

double OutputCourse::timeOfCurrentRise(double level, double from) const
{
    if (currentSlope <= 0)
        return Never;
    return std::fmax(from, timeOf(current, currentSlope, level, start));
}

double OutputCourse::timeOfCurrentFall(double level, double from) const
{
    if (currentSlope >= 0)
        return Never;
    return std::fmax(from, timeOf(current, currentSlope, level, start));
}

} // namespace simulator
