#pragma once

#include "workbench/app/strip_chart_style.h"

#include <QElapsedTimer>

#include <qwt_interval.h>
#include <qwt_plot.h>

#include <array>
#include <memory>
#include <vector>

class QwtPlotCurve;

namespace workbench
{

class ChannelRecorder;
class StripChartCurve;
class StripChartLanes;
class StripChartMarks;

/// Draws the recorded channels over time: voltages above, on the left axis, currents below, on the right one. It follows
/// the time until the operator zooms or moves it; recording goes on meanwhile. GUI thread only.
///
/// Pointer: a drag zooms in, a drag with Shift or the middle button moves, the wheel zooms the time and with Ctrl the
/// values, a double click shows everything. Keys: Left and Right move, Plus and Minus zoom, Home shows everything, End
/// and Space follow the time again, with all values; Space stops following too.
class StripChartPlot : public QwtPlot
{
    Q_OBJECT

public:
    enum Part
    {
        SetValues,
        Limits,
        Events,
        PartCount
    };

    static constexpr double ShortestSpan = 0.02; ///< s

    /// The recorder is kept and outlives the plot.
    explicit StripChartPlot(const ChannelRecorder &recorder, QWidget *parent = nullptr);
    ~StripChartPlot() override;

    bool isFollowing() const { return following; }
    /// To follow is to show all values too, whatever range of them was chosen.
    void setFollowing(bool follow);

    /// s of time that are shown while it follows.
    double span() const { return followedSpan; }
    void setSpan(double seconds);

    /// Everything that is recorded, and no longer following.
    void showAll();

    void setShown(Part part, bool shown);

    /// What is shown right now, in s.
    double firstTime() const { return from; }
    double lastTime() const { return to; }

    /// The marks' words that are shown.
    QStringList markTexts() const;

    /// Zooms in by a factor below 1, out by one above it; `time` stays where it is.
    void zoomTime(double factor, double time);
    void zoomValues(double factor, double y); ///< `y` in pixels of the canvas stays where it is
    void moveBy(double pixelsX, double pixelsY);

    /// Draws what is new, when it would make a difference.
    void refresh();
    /// Draws everything.
    void redraw();

Q_SIGNALS:
    void followingChanged(bool isFollowing);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    enum Line
    {
        Voltage,
        VoltageSet,
        VoltageLimit,
        Current,
        CurrentSet,
        CurrentLimit,
        LineCount
    };
    using Lines = std::array<std::unique_ptr<StripChartCurve>, LineCount>;

    void applyLook();
    void showKey(QwtPlotCurve &key, bool isMeant);
    void addLines();
    void updateLines();
    QwtInterval updateLine(std::size_t channel, Line line);
    QwtInterval leastRange(Line limit, double part) const;
    void scaleValues(const QwtInterval &volts, const QwtInterval &amperes);
    void zoomTo(const QRect &canvasArea);
    void stopFollowing();
    void showTimes(double first, double last);
    bool moveByPointer(QEvent *event);
    bool zoomByWheel(QWheelEvent *event);
    bool pressKey(int key);

    const ChannelRecorder &recorder;
    std::unique_ptr<StripChartLanes> lanes;
    std::unique_ptr<StripChartMarks> marks;
    std::unique_ptr<QwtPlotCurve> setKey; ///< say in the legend what the thin lines are
    std::unique_ptr<QwtPlotCurve> limitKey;
    std::vector<Lines> lines; ///< one for each channel
    std::array<bool, PartCount> shownParts{true, true, true};
    bool following = true;
    bool hasOwnValueScale = false; ///< the operator chose the range of the values
    double followedSpan = 60;
    double from = 0;
    double to = 60;
    QPoint moveStart;
    bool isMoving = false;
    QElapsedTimer sinceReplot;
};

} // namespace workbench
