#include "workbench/app/strip_chart_curve.h"

#include <QPainter>

namespace workbench
{

StripChartCurve::StripChartCurve(const QString &title) : QwtPlotCurve(title) { }

void StripChartCurve::drawCurve(QPainter *painter, int style, const QwtScaleMap &xMap,
                                const QwtScaleMap &yMap, const QRectF &canvasRect, int from, int to) const
{
    if (to - from > canvasRect.width()) {
        painter->setRenderHint(QPainter::Antialiasing, false);
        painter->setPen(QPen(pen().color(), 0));
    }
    QwtPlotCurve::drawCurve(painter, style, xMap, yMap, canvasRect, from, to);
}

} // namespace workbench
