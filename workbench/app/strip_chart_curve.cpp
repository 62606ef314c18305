#include "workbench/app/strip_chart_curve.h"

#include <QPainter>

#include <qwt_scale_map.h>

#include <algorithm>

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
    QRectF area = canvasRect;
    if (lane.isValid()) {
        area.setTop(std::max(area.top(), yMap.transform(lane.maxValue())));
        area.setBottom(std::min(area.bottom(), yMap.transform(lane.minValue())));
    }
    if (area.isValid())
        QwtPlotCurve::drawCurve(painter, style, xMap, yMap, area, from, to);
}

} // namespace workbench
