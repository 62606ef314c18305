#include "workbench/app/strip_chart_zoom.h"

#include "workbench/app/strip_chart_lanes.h"
#include "workbench/app/system_values.h"

#include <QLocale>
#include <QPalette>

#include <qwt_picker_machine.h>
#include <qwt_plot.h>
#include <qwt_scale_map.h>
#include <qwt_text.h>

namespace workbench
{

StripChartZoom::StripChartZoom(QwtPlot &plot, const StripChartLanes &lanes_)
    : QwtPlotPicker(QwtPlot::xBottom, QwtPlot::yLeft, RectRubberBand, ActiveOnly, plot.canvas()),
      lanes(lanes_)
{
    setStateMachine(new QwtPickerDragRectMachine); // the picker owns it
    setMousePattern(QwtEventPattern::MouseSelect1, Qt::LeftButton);
    setTrackerMode(AlwaysOn);
    const QColor ink = plot.palette().color(QPalette::Text);
    setRubberBandPen(QPen(ink, 1, Qt::DashLine));
    setTrackerPen(ink);
    // Keys are the plot's.
    for (int code = 0; code < QwtEventPattern::KeyPatternCount; ++code)
        setKeyPattern(static_cast<QwtEventPattern::KeyPatternCode>(code), Qt::Key_unknown);
    setKeyPattern(QwtEventPattern::KeyAbort, Qt::Key_Escape);
}

QwtText StripChartZoom::trackerText(const QPoint &position) const
{
    constexpr int Decimals = 2;
    const double time = plot()->canvasMap(QwtPlot::xBottom).invTransform(position.x());
    const double volts = plot()->canvasMap(QwtPlot::yLeft).invTransform(position.y());
    const double amperes = plot()->canvasMap(QwtPlot::yRight).invTransform(position.y());
    const QString value = lanes.volts().contains(volts) ? voltageText(volts)
        : lanes.amperes().contains(amperes)             ? currentText(amperes)
                                                        : QString();
    QwtText text(tr("%1 s  %2").arg(QLocale().toString(time, 'f', Decimals), value));
    QColor ground = plot()->palette().color(QPalette::Base);
    constexpr int NearlyOpaque = 220;
    ground.setAlpha(NearlyOpaque);
    text.setBackgroundBrush(ground);
    text.setColor(plot()->palette().color(QPalette::Text));
    return text;
}

bool StripChartZoom::end(bool isComplete)
{
    const QPolygon corners = selection();
    if (!QwtPlotPicker::end(isComplete))
        return false;
    if (isComplete && corners.size() > 1)
        Q_EMIT chosen(QRect(corners.constFirst(), corners.constLast()).normalized());
    return true;
}

} // namespace workbench
