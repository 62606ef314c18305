#include "workbench/rehearsal/axis.h"

#include <algorithm>
#include <cmath>

namespace rehearsal
{

namespace
{

/// 1, 2 or 5 times a power of ten, not below `least`.
double roundStep(double least)
{
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least * (1 - 1e-9))
            return factor * power;
    }
    return 10 * power;
}

} // namespace

Axis Axis::of(double least, double most, int ticks, bool isRounded)
{
    Axis axis;
    const double size = std::max(std::abs(least), std::abs(most));
    if (most - least <= size * 1e-9)
        most = least + (size > 0 ? size : 1);
    axis.step = roundStep((most - least) / std::max(ticks, 1));
    axis.least = isRounded ? std::floor(least / axis.step + 1e-9) * axis.step : least;
    axis.most = isRounded ? std::ceil(most / axis.step - 1e-9) * axis.step : most;
    return axis;
}

QVector<double> Axis::ticks() const
{
    QVector<double> result;
    const auto first = static_cast<qint64>(std::ceil(least / step - 1e-9));
    const auto last = static_cast<qint64>(std::floor(most / step + 1e-9));
    for (qint64 i = first; i <= last; ++i)
        result.append(static_cast<double>(i) * step);
    return result;
}

QString Axis::text(double tick, double unit) const
{
    const int decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step / unit) + 1e-9)));
    // The sum of steps at zero may be off by next to nothing.
    const double shown = std::abs(tick) < step / 2 ? 0 : tick / unit;
    return QString::number(shown, 'f', decimals);
}

} // namespace rehearsal
