#pragma once

#include <QPen>

#include <qwt_interval.h>

#include <memory>

class QFont;
class QwtPlot;
class QwtPlotGrid;
class QwtPlotMarker;

namespace workbench
{

/// The two parts of a chart that values are drawn in: voltages in the upper lane, currents in the lower one, so that no
/// curve of the one can lie on a curve of the other. The axes are as high as the chart, and have ticks and grid lines
/// in their own lane only. When the operator zooms the values, the lanes go with them. GUI thread only.
class StripChartLanes
{
public:
    /// The plot is kept and outlives the lanes. Its right axis becomes one of currents.
    explicit StripChartLanes(QwtPlot &plot);
    ~StripChartLanes();
    StripChartLanes(const StripChartLanes &) = delete;
    StripChartLanes &operator=(const StripChartLanes &) = delete;

    void setLook(const QFont &font, const QPen &gridPen, const QPen &borderPen);

    /// Height of the voltages' lane in pixels.
    double voltageHeight() const;

    /// Chooses axes that show at least these values (V, A), with so many pixels free above the voltages.
    void fit(const QwtInterval &volts, const QwtInterval &amperes, double pixelsAbove);

    /// Keeps the axes, which the operator chose, and makes room in the lanes for these values (V, A). Lanes that have
    /// grown may overlap.
    void grow(const QwtInterval &volts, const QwtInterval &amperes);

    /// Puts ticks and titles to the axes as they are now. To be called after every change of an axis.
    void label();

    /// The values that may be drawn: without an end on the side where there is no other lane.
    QwtInterval volts() const;
    QwtInterval amperes() const;

private:
    QwtInterval rounded(int axis, const QwtInterval &range, double share) const;
    int steps(double pixels) const;
    void setTicks(int axis, const QwtInterval &lane);
    void placeBorder();
    void setTitle(int axis, const QString &text);

    QwtPlot &plot;
    std::unique_ptr<QwtPlotGrid> voltageGrid; ///< and that of the time
    std::unique_ptr<QwtPlotGrid> currentGrid;
    std::unique_ptr<QwtPlotMarker> border;
    double lowestVolts = 0;
    double highestAmperes = 1;
};

} // namespace workbench
