#include "workbench/app/strip_chart_plot.h"

#include "workbench/app/channel_recorder.h"
#include "workbench/app/strip_chart_curve.h"
#include "workbench/app/strip_chart_lanes.h"
#include "workbench/app/strip_chart_line.h"
#include "workbench/app/strip_chart_marks.h"
#include "workbench/app/strip_chart_zoom.h"

#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <qwt_legend.h>
#include <qwt_painter.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_map.h>

#include <algorithm>
#include <cmath>

namespace workbench
{

namespace
{

constexpr double LongestSpan = 2 * ChannelRecord::Span; // s
constexpr double WheelStep = 0.8;
constexpr double KeyStep = 0.1; // of what is shown
constexpr int ShortestInterval = 40; // ms between two drawings
constexpr int LongestInterval = 1000;
constexpr int ShortestDrag = 6; // pixels; less is a click

/// In the order of the plot's lines.
constexpr std::array<double ChannelSample::*, 6> Quantities = {
    &ChannelSample::voltage, &ChannelSample::voltageSet, &ChannelSample::voltageLimit,
    &ChannelSample::current, &ChannelSample::currentSet, &ChannelSample::currentLimit};

/// From the lowest to the highest value of the line.
QwtInterval rangeOf(const QPolygonF &line)
{
    if (line.isEmpty())
        return {};
    const auto isLower = [](const QPointF &a, const QPointF &b) { return a.y() < b.y(); };
    const auto [lowest, highest] = std::minmax_element(line.cbegin(), line.cend(), isLower);
    return {lowest->y(), highest->y()};
}

} // namespace

StripChartPlot::StripChartPlot(const ChannelRecorder &recorder_, QWidget *parent)
    : QwtPlot(parent),
      recorder(recorder_),
      lanes(std::make_unique<StripChartLanes>(*this)),
      marks(std::make_unique<StripChartMarks>(recorder_)),
      setKey(std::make_unique<QwtPlotCurve>(tr("set values"))),
      limitKey(std::make_unique<QwtPlotCurve>(tr("limits")))
{
    setObjectName(QStringLiteral("stripChartPlot"));
    QwtPainter::setRoundingAlignment(false); // slopes would have corners
    setAutoDelete(false); // the items are members
    setAutoReplot(false);
    setAccessibleName(tr("Chart of voltage and current over time"));

    insertLegend(new QwtLegend(this), BottomLegend);
    marks->attach(this);
    for (QwtPlotCurve *key : {setKey.get(), limitKey.get()}) {
        key->setLegendAttribute(QwtPlotCurve::LegendShowLine);
        key->setLegendIconSize(QSize(fontMetrics().height() * 2, fontMetrics().height() / 2));
    }

    auto *area = qobject_cast<QwtPlotCanvas *>(canvas());
    area->setFocusPolicy(Qt::StrongFocus);
    area->setFocusIndicator(QwtPlotCanvas::CanvasFocusIndicator);
    area->setFrameStyle(QFrame::Box | QFrame::Plain);
    area->setLineWidth(1);
    area->setAccessibleName(accessibleName());
    setFocusProxy(area);
    area->installEventFilter(this);
    auto *zoom = new StripChartZoom(*this, *lanes);
    connect(zoom, &StripChartZoom::chosen, this, &StripChartPlot::zoomTo);

    connect(&recorder, &ChannelRecorder::channelAdded, this, &StripChartPlot::addLines);
    connect(&recorder, &ChannelRecorder::channelRemoved, this, [this](int index) {
        lines.erase(lines.begin() + index);
        if (lines.empty())
            hasOwnValueScale = false; // was chosen for what is gone
        redraw();
    });
    connect(&recorder, &ChannelRecorder::recorded, this, &StripChartPlot::refresh);
    for (int index = 0; index < recorder.count(); ++index)
        addLines();
    applyLook();
}

StripChartPlot::~StripChartPlot() = default;

void StripChartPlot::setFollowing(bool follow)
{
    if (follow)
        hasOwnValueScale = false;
    if (follow != following) {
        following = follow;
        Q_EMIT followingChanged(follow);
    }
    redraw();
}

void StripChartPlot::setSpan(double seconds)
{
    followedSpan = std::clamp(seconds, ShortestSpan, LongestSpan);
    if (!following)
        showTimes(to - followedSpan, to);
    redraw();
}

void StripChartPlot::showAll()
{
    double first = recorder.now();
    for (int index = 0; index < recorder.count(); ++index) {
        const auto &samples = recorder.at(index).samples();
        if (!samples.empty())
            first = std::min(first, samples.front().time);
    }
    hasOwnValueScale = false;
    stopFollowing();
    showTimes(first, std::max(recorder.now(), first + ShortestSpan));
    redraw();
}

void StripChartPlot::setShown(Part part, bool shown)
{
    shownParts[part] = shown;
    redraw();
}

QStringList StripChartPlot::markTexts() const
{
    return marks->isVisible() ? marks->writtenTexts() : QStringList();
}

void StripChartPlot::zoomTime(double factor, double time)
{
    if (following) { // the newest stays at the edge
        setSpan(followedSpan * factor);
        return;
    }
    const double span = std::clamp((to - from) * factor, ShortestSpan, LongestSpan);
    const double before = (time - from) / (to - from) * span;
    showTimes(time - before, time - before + span);
    redraw();
}

void StripChartPlot::zoomValues(double factor, double y)
{
    hasOwnValueScale = true;
    for (const int axis : {yLeft, yRight}) {
        const QwtInterval range = axisInterval(axis);
        const double fixed = canvasMap(axis).invTransform(y);
        setAxisScale(axis, fixed - (fixed - range.minValue()) * factor,
                     fixed + (range.maxValue() - fixed) * factor);
    }
    redraw();
}

void StripChartPlot::moveBy(double pixelsX, double pixelsY)
{
    stopFollowing();
    const double seconds = pixelsX * (to - from) / std::max(1, canvas()->contentsRect().width());
    showTimes(from - seconds, to - seconds);
    if (pixelsY != 0) {
        hasOwnValueScale = true;
        for (const int axis : {yLeft, yRight}) {
            const QwtInterval range = axisInterval(axis);
            const double step = pixelsY * range.width() / std::max(1, canvas()->contentsRect().height());
            setAxisScale(axis, range.minValue() + step, range.maxValue() + step);
        }
    }
    redraw();
}

void StripChartPlot::refresh()
{
    if (!isVisible())
        return;
    // What moves by less than half a pixel need not be drawn anew.
    const double pixel = (to - from) / std::max(1, canvas()->width());
    const int interval = following
        ? std::clamp(static_cast<int>(pixel * 500), ShortestInterval, LongestInterval)
        : LongestInterval;
    if (!sinceReplot.isValid() || sinceReplot.elapsed() >= interval)
        redraw();
}

void StripChartPlot::redraw()
{
    sinceReplot.start();
    if (following) {
        to = std::max(recorder.now(), followedSpan);
        from = to - followedSpan;
    }
    setAxisScale(xBottom, from, to);
    showKey(*setKey, shownParts[SetValues]);
    showKey(*limitKey, shownParts[Limits]);
    marks->setVisible(shownParts[Events]);
    updateLines();
    replot();
}

/// In the legend, or not.
void StripChartPlot::showKey(QwtPlotCurve &key, bool isMeant)
{
    isMeant = isMeant && !lines.empty();
    if (isMeant != (key.plot() != nullptr))
        key.attach(isMeant ? this : nullptr);
}

bool StripChartPlot::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != canvas())
        return QwtPlot::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Wheel:
        return zoomByWheel(static_cast<QWheelEvent *>(event));
    case QEvent::KeyPress:
        return pressKey(static_cast<QKeyEvent *>(event)->key());
    case QEvent::MouseButtonDblClick:
        showAll();
        return true;
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        if (moveByPointer(event))
            return true;
        break;
    default:
        break;
    }
    return QwtPlot::eventFilter(watched, event);
}

void StripChartPlot::changeEvent(QEvent *event)
{
    QwtPlot::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        applyLook();
}

void StripChartPlot::showEvent(QShowEvent *event)
{
    QwtPlot::showEvent(event);
    redraw();
}

void StripChartPlot::applyLook()
{
    setCanvasBackground(palette().base());
    lanes->setLook(font(), strip_chart_style::gridPen(palette()),
                   QPen(palette().color(QPalette::Active, QPalette::Mid), 1));
    marks->setLook(font(), palette());
    const QColor ink = palette().color(QPalette::Text);
    setKey->setPen(strip_chart_style::setPen(ink));
    limitKey->setPen(strip_chart_style::limitPen(ink));
    for (std::size_t index = 0; index < lines.size(); ++index) {
        const int look = recorder.at(static_cast<int>(index)).look();
        const QColor colour = strip_chart_style::colour(look, palette());
        lines[index][Voltage]->setPen(strip_chart_style::voltagePen(look, palette()));
        lines[index][Current]->setPen(strip_chart_style::currentPen(look, palette()));
        for (const Line line : {VoltageSet, CurrentSet})
            lines[index][line]->setPen(strip_chart_style::setPen(colour));
        for (const Line line : {VoltageLimit, CurrentLimit})
            lines[index][line]->setPen(strip_chart_style::limitPen(colour));
    }
    QwtText time(tr("Time since the start / s"));
    time.setFont(font());
    setAxisTitle(xBottom, time);
    setAxisFont(xBottom, font());
    redraw();
}

void StripChartPlot::addLines()
{
    const ChannelRecord &record = recorder.at(static_cast<int>(lines.size()));
    Lines added;
    for (std::size_t number = 0; number < added.size(); ++number) {
        const bool isCurrent = number >= Current;
        const bool isMeasured = number == Voltage || number == Current;
        auto curve = std::make_unique<StripChartCurve>(
            (isCurrent ? tr("%1 current") : tr("%1 voltage")).arg(record.name()));
        curve->setYAxis(isCurrent ? yRight : yLeft);
        curve->setItemAttribute(QwtPlotItem::Legend, isMeasured);
        curve->setLegendAttribute(QwtPlotCurve::LegendShowLine);
        curve->setLegendIconSize(QSize(fontMetrics().height() * 3, fontMetrics().height() / 2));
        curve->setPaintAttribute(QwtPlotCurve::ClipPolygons);
        curve->setRenderHint(QwtPlotItem::RenderAntialiased);
        curve->setZ(isMeasured ? 2 : 1);
        if (!isMeasured)
            curve->setStyle(QwtPlotCurve::Steps);
        curve->attach(this);
        added[number] = std::move(curve);
    }
    lines.push_back(std::move(added));
    setKey->detach(); // comes back after all channels
    limitKey->detach();
    applyLook();
}

void StripChartPlot::updateLines()
{
    // What is off would otherwise be drawn in the range of its noise.
    constexpr double LeastVolts = 0.01; // of the limits
    constexpr double LeastAmperes = 0.001;
    QwtInterval volts = leastRange(VoltageLimit, LeastVolts);
    QwtInterval amperes = leastRange(CurrentLimit, LeastAmperes);
    for (std::size_t channel = 0; channel < lines.size(); ++channel) {
        for (const Line line : {Voltage, VoltageSet})
            volts |= updateLine(channel, line);
        amperes |= updateLine(channel, Current);
        // What is far above the rest does not make it small, and shows when it comes near: the limits, and the set
        // current, which is one too.
        for (const Line line : {VoltageLimit, CurrentSet, CurrentLimit})
            updateLine(channel, line);
    }
    scaleValues(volts, amperes);
}

/// The range of what is shown of it.
QwtInterval StripChartPlot::updateLine(std::size_t channel, Line line)
{
    const bool isLimit = line == VoltageLimit || line == CurrentLimit;
    const bool isSet = line == VoltageSet || line == CurrentSet;
    const bool isShown = isLimit ? shownParts[Limits] : !isSet || shownParts[SetValues];
    StripChartCurve &curve = *lines[channel][line];
    curve.setVisible(isShown);
    if (!isShown)
        return {};
    const int columns = std::max(1, canvas()->contentsRect().width());
    const ChannelRecord &record = recorder.at(static_cast<int>(channel));
    const QPolygonF points = stripChartLine(record, Quantities[line], from, to, columns);
    curve.setSamples(points);
    return rangeOf(points);
}

/// From 0 to that part of the largest of these limits.
QwtInterval StripChartPlot::leastRange(Line limit, double part) const
{
    constexpr double Least = 1e-9;
    double width = Least;
    for (int channel = 0; channel < recorder.count(); ++channel) {
        const auto &samples = recorder.at(channel).samples();
        if (!samples.empty())
            width = std::max(width, part * std::fabs(samples.back().*Quantities[limit]));
    }
    return {0, width};
}

void StripChartPlot::scaleValues(const QwtInterval &volts, const QwtInterval &amperes)
{
    const double markHeight = marks->useRowsFor(lanes->voltageHeight());
    if (hasOwnValueScale)
        lanes->grow(volts, amperes);
    else
        lanes->fit(volts, amperes, shownParts[Events] ? markHeight : 0);
    lanes->label();
    for (const Lines &channel : lines) {
        for (const Line line : {Voltage, VoltageSet, VoltageLimit})
            channel[line]->setLane(lanes->volts());
        for (const Line line : {Current, CurrentSet, CurrentLimit})
            channel[line]->setLane(lanes->amperes());
    }
}

void StripChartPlot::zoomTo(const QRect &canvasArea)
{
    if (canvasArea.width() < ShortestDrag || canvasArea.height() < ShortestDrag)
        return;
    const QwtScaleMap time = canvasMap(xBottom);
    const double first = time.invTransform(canvasArea.left());
    const double last = time.invTransform(canvasArea.right());
    stopFollowing();
    hasOwnValueScale = true;
    for (const int axis : {yLeft, yRight}) {
        const QwtScaleMap values = canvasMap(axis);
        setAxisScale(axis, values.invTransform(canvasArea.bottom()), values.invTransform(canvasArea.top()));
    }
    showTimes(first, std::max(last, first + ShortestSpan));
    redraw();
}

void StripChartPlot::stopFollowing()
{
    if (!following)
        return;
    following = false;
    Q_EMIT followingChanged(false);
}

void StripChartPlot::showTimes(double first, double last)
{
    from = first;
    to = last;
}

bool StripChartPlot::moveByPointer(QEvent *event)
{
    const auto *mouse = static_cast<QMouseEvent *>(event);
    if (event->type() == QEvent::MouseButtonPress) {
        isMoving = mouse->button() == Qt::MiddleButton
            || (mouse->button() == Qt::LeftButton && mouse->modifiers() == Qt::ShiftModifier);
        moveStart = mouse->pos();
        return isMoving;
    }
    if (!isMoving)
        return false;
    const QPoint moved = mouse->pos() - moveStart;
    moveStart = mouse->pos();
    if (!moved.isNull())
        moveBy(moved.x(), moved.y());
    if (event->type() == QEvent::MouseButtonRelease)
        isMoving = false;
    return true;
}

bool StripChartPlot::zoomByWheel(QWheelEvent *event)
{
    constexpr double Notch = 120; // eighths of a degree
    const QPoint turned = event->angleDelta();
    const double notches = (turned.y() != 0 ? turned.y() : turned.x()) / Notch;
    const double factor = std::pow(WheelStep, notches);
    if (event->modifiers().testFlag(Qt::ControlModifier))
        zoomValues(factor, event->position().y());
    else
        zoomTime(factor, canvasMap(xBottom).invTransform(event->position().x()));
    return true;
}

bool StripChartPlot::pressKey(int key)
{
    const double step = KeyStep * canvas()->contentsRect().width();
    switch (key) {
    case Qt::Key_Left:
        moveBy(step, 0);
        return true;
    case Qt::Key_Right:
        moveBy(-step, 0);
        return true;
    case Qt::Key_Plus:
        zoomTime(WheelStep, (from + to) / 2);
        return true;
    case Qt::Key_Minus:
        zoomTime(1 / WheelStep, (from + to) / 2);
        return true;
    case Qt::Key_Home:
        showAll();
        return true;
    case Qt::Key_End:
        setFollowing(true);
        return true;
    case Qt::Key_Space:
        setFollowing(!following);
        return true;
    default:
        return false;
    }
}

} // namespace workbench
