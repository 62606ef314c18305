#include "workbench/app/strip_chart_lanes.h"

#include "workbench/app/strip_chart_axis.h"
#include "workbench/app/translated_text.h"

#include <QFontMetrics>
#include <QWidget>

#include <qwt_plot.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_marker.h>
#include <qwt_scale_engine.h>
#include <qwt_text.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace workbench
{

namespace
{

constexpr double VoltageShare = 0.62; // of the chart's height
constexpr double CurrentShare = 0.34; // what is left parts the two
constexpr double Headroom = 0.05; // of the range
constexpr double Endless = std::numeric_limits<double>::infinity();

} // namespace

StripChartLanes::StripChartLanes(QwtPlot &plot_)
    : plot(plot_),
      voltageGrid(std::make_unique<QwtPlotGrid>()),
      currentGrid(std::make_unique<QwtPlotGrid>()),
      border(std::make_unique<QwtPlotMarker>())
{
    plot.enableAxis(QwtPlot::yRight);
    plot.setAxisScaleDraw(QwtPlot::yRight, new CurrentScaleDraw); // the axis owns it
    for (const int axis : {QwtPlot::yLeft, QwtPlot::yRight})
        plot.axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Backbone, false);
    currentGrid->enableX(false);
    currentGrid->setYAxis(QwtPlot::yRight);
    border->setLineStyle(QwtPlotMarker::HLine);
    voltageGrid->attach(&plot);
    currentGrid->attach(&plot);
    border->attach(&plot);
}

StripChartLanes::~StripChartLanes() = default;

void StripChartLanes::setLook(const QFont &font, const QPen &gridPen, const QPen &borderPen)
{
    voltageGrid->setPen(gridPen);
    currentGrid->setPen(gridPen);
    border->setLinePen(borderPen);
    for (const int axis : {QwtPlot::yLeft, QwtPlot::yRight})
        plot.setAxisFont(axis, font);
}

double StripChartLanes::voltageHeight() const
{
    return VoltageShare * plot.canvas()->height();
}

void StripChartLanes::fit(const QwtInterval &volts, const QwtInterval &amperes, double pixelsAbove)
{
    const double left = std::max(1.0, voltageHeight() - pixelsAbove);
    const double headroom = std::max(Headroom, std::min(1.0, pixelsAbove / left));
    const auto withRoom = [](const QwtInterval &range, double above) {
        const double below = range.minValue() < 0 ? Headroom : 0;
        return QwtInterval(range.minValue() - below * range.width(),
                           range.maxValue() + above * range.width());
    };
    const QwtInterval upper = rounded(QwtPlot::yLeft, withRoom(volts, headroom), VoltageShare);
    const QwtInterval lower = rounded(QwtPlot::yRight, withRoom(amperes, Headroom), CurrentShare);
    lowestVolts = upper.minValue();
    highestAmperes = lower.maxValue();
    const double height = upper.width() / VoltageShare;
    plot.setAxisScale(QwtPlot::yLeft, upper.maxValue() - height, upper.maxValue());
    plot.setAxisScale(QwtPlot::yRight, lower.minValue(), lower.minValue() + lower.width() / CurrentShare);
}

void StripChartLanes::grow(const QwtInterval &volts, const QwtInterval &amperes)
{
    lowestVolts = std::min(lowestVolts, volts.minValue());
    highestAmperes = std::max(highestAmperes, amperes.maxValue());
}

void StripChartLanes::label()
{
    plot.updateAxes();
    setTicks(QwtPlot::yLeft, volts());
    setTicks(QwtPlot::yRight, amperes());
    plot.updateAxes();
    placeBorder();
    auto *draw = static_cast<CurrentScaleDraw *>(plot.axisScaleDraw(QwtPlot::yRight));
    const QwtInterval shown = plot.axisInterval(QwtPlot::yRight).intersect(amperes());
    draw->adaptTo(std::max(std::fabs(shown.minValue()), std::fabs(shown.maxValue())));
    setTitle(QwtPlot::yLeft, tr("Voltage / V"));
    setTitle(QwtPlot::yRight, tr("Current / %1").arg(draw->unit()));
}

QwtInterval StripChartLanes::volts() const
{
    return {lowestVolts, Endless};
}

QwtInterval StripChartLanes::amperes() const
{
    return {-Endless, highestAmperes};
}

/// The range up to the next ticks, in a lane with that share of the height.
QwtInterval StripChartLanes::rounded(int axis, const QwtInterval &range, double share) const
{
    double low = range.minValue();
    double high = range.maxValue();
    double step = 0;
    plot.axisScaleEngine(axis)->autoScale(steps(share * plot.canvas()->height()), low, high, step);
    return {low, high};
}

/// How many steps so much height has room for.
int StripChartLanes::steps(double pixels) const
{
    constexpr double LinesPerStep = 1.7; // of text
    constexpr int Most = 8;
    return std::clamp(static_cast<int>(pixels / (LinesPerStep * plot.fontMetrics().height())), 1, Most);
}

void StripChartLanes::setTicks(int axis, const QwtInterval &lane)
{
    constexpr int SmallSteps = 5;
    const QwtInterval range = plot.axisInterval(axis);
    const QwtInterval part = range.intersect(lane);
    QwtScaleDiv ticks(range.minValue(), range.maxValue());
    if (part.isValid() && part.width() > 0) {
        const double pixels = plot.canvas()->height() * part.width() / range.width();
        ticks = plot.axisScaleEngine(axis)->divideScale(part.minValue(), part.maxValue(), steps(pixels),
                                                        SmallSteps);
        ticks.setInterval(range);
    }
    plot.setAxisScaleDiv(axis, ticks);
}

/// Halfway between the lanes; it parts nothing where they overlap.
void StripChartLanes::placeBorder()
{
    const QwtInterval left = plot.axisInterval(QwtPlot::yLeft);
    const QwtInterval right = plot.axisInterval(QwtPlot::yRight);
    const double part = (highestAmperes - right.minValue()) / right.width();
    // Where the currents end, on the axis of the voltages.
    const double lowerEnd = left.minValue() + part * left.width();
    border->setVisible(lowerEnd <= lowestVolts);
    border->setYValue((lowerEnd + lowestVolts) / 2);
}

void StripChartLanes::setTitle(int axis, const QString &text)
{
    QwtText title(text);
    title.setFont(plot.axisFont(axis));
    title.setRenderFlags(Qt::AlignRight); // the end of the upright text that is beside the lane
    if (title != plot.axisTitle(axis))
        plot.setAxisTitle(axis, title);
}

} // namespace workbench
