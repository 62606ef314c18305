#pragma once

#include <qwt_plot_curve.h>

namespace workbench
{

/// A line that is drawn thin and plain where it has more points than there are pixels: dashes say nothing there, and
/// would take nearly all of the time. In the legend it looks as ever.
class StripChartCurve : public QwtPlotCurve
{
public:
    explicit StripChartCurve(const QString &title);

protected:
    void drawCurve(QPainter *painter, int style, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
                   const QRectF &canvasRect, int from, int to) const override;
};

} // namespace workbench
