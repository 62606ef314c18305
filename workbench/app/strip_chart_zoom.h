#pragma once

#include <qwt_plot_picker.h>

namespace workbench
{

/// Says what the pointer is at, and lets the operator draw a frame around what is to be shown larger.
class StripChartZoom : public QwtPlotPicker
{
    Q_OBJECT

public:
    /// The plot's canvas owns it.
    explicit StripChartZoom(QwtPlot &plot);

Q_SIGNALS:
    /// A frame was drawn, in pixels of the canvas.
    void chosen(const QRect &canvasArea);

protected:
    QwtText trackerText(const QPoint &position) const override;
    bool end(bool isComplete) override;
};

} // namespace workbench
