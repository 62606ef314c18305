#include "workbench/app/strip_chart_axis.h"

#include <QLocale>

#include <qwt_text.h>

#include <cmath>
#include <iterator>

namespace workbench
{

bool CurrentScaleDraw::adaptTo(double amperes)
{
    struct Unit
    {
        double factor;
        const char *text;
    };
    static constexpr Unit Units[] = {{1, "A"}, {1e3, "mA"}, {1e6, "\u00b5A"}, {1e9, "nA"}};
    const Unit *best = std::begin(Units);
    constexpr double Most = 2; // 800 µA is easier to read than 0.8 mA
    while (best + 1 != std::end(Units) && amperes * best->factor < Most)
        ++best;
    if (best->factor == factor)
        return false;
    factor = best->factor;
    unitText = QString::fromUtf8(best->text);
    invalidateCache();
    return true;
}

QwtText CurrentScaleDraw::label(double value) const
{
    // Without the last digits of a product that is not quite round.
    constexpr double Round = 1e6;
    return QLocale().toString(std::round(value * factor * Round) / Round);
}

} // namespace workbench
