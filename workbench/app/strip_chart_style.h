#pragma once

#include <QColor>
#include <QPalette>
#include <QPen>

namespace workbench
{

/// How lines look. Colours can be told apart by everybody, and nothing is told by colour alone: each channel has a
/// dash pattern of its own besides, and voltage, current, set values and limits have widths of their own.
namespace strip_chart_style
{

bool isDark(const QPalette &palette);

/// Of the channel with that number in the chart; legible on the palette's base.
QColor colour(int channel, const QPalette &palette);

QPen voltagePen(int channel, const QPalette &palette);
QPen currentPen(int channel, const QPalette &palette);
QPen setPen(const QColor &colour);
QPen limitPen(const QColor &colour);
QPen gridPen(const QPalette &palette);

} // namespace strip_chart_style

} // namespace workbench
