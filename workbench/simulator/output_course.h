#pragma once

namespace simulator
{

/// The way of an output's voltage and current from a time on, in closed form:
///
///     V(t) = voltage + slope t + bend t² + swing (e^(-rate t) - 1)
///     I(t) = current + currentSlope t, but never below 0
///
/// with t in s since `start`. Only one of `bend` and `rate` is not 0. Plain data.
struct OutputCourse
{
    double start = 0; ///< s on the plant's clock
    double voltage = 0; ///< V
    double slope = 0; ///< V/s
    double bend = 0; ///< V/s²
    double swing = 0; ///< V
    double rate = 0; ///< 1/s
    double current = 0; ///< A
    double currentSlope = 0; ///< A/s

    double voltageAt(double time) const;
    double currentAt(double time) const;

    /// The first time from `from` on at which the voltage comes from below and reaches the line that is at `level` at
    /// `from` and rises by `lineSlope`; `from` itself when it is above already and rises on. Infinity for never.
    double timeOfRise(double level, double lineSlope, double from) const;
    /// The same from above.
    double timeOfFall(double level, double lineSlope, double from) const;

    double timeOfCurrentRise(double level, double from) const;
    double timeOfCurrentFall(double level, double from) const;
};

} // namespace simulator
