#pragma once

#include <qwt_interval.h>
#include <qwt_plot_curve.h>

namespace workbench
{

/// A line that is drawn thin and plain where it has more points than there are pixels: dashes say nothing there, and
/// would take nearly all of the time. In the legend it looks as ever.
class StripChartCurve : public QwtPlotCurve
{
public:
    explicit StripChartCurve(const QString &title);

    /// Only values in this range are drawn.
    void setLane(const QwtInterval &values) { lane = values; }

protected:
    void drawCurve(QPainter *painter, int style, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
                   const QRectF &canvasRect, int from, int to) const override;

private:
    QwtInterval lane;
};

} // namespace workbench
