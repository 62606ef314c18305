#pragma once

#include <qwt_plot_picker.h>

namespace workbench
{

class StripChartLanes;

/// Says what the pointer is at, and lets the operator draw a frame around what is to be shown larger.
class StripChartZoom : public QwtPlotPicker
{
    Q_OBJECT

public:
    /// The plot's canvas owns it. The lanes are kept and outlive it.
    StripChartZoom(QwtPlot &plot, const StripChartLanes &lanes);

Q_SIGNALS:
    /// A frame was drawn, in pixels of the canvas.
    void chosen(const QRect &canvasArea);

protected:
    QwtText trackerText(const QPoint &position) const override;
    bool end(bool isComplete) override;

private:
    const StripChartLanes &lanes;
};

} // namespace workbench
