#include "workbench/app/strip_chart_marks.h"

#include "workbench/app/channel_recorder.h"
#include "workbench/app/strip_chart_style.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStringList>

#include <qwt_scale_map.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

namespace workbench
{

namespace
{

constexpr int Rtti = QwtPlotItem::Rtti_PlotUserItem + 1;
constexpr std::size_t MostTextRows = 4;

void drawShape(QPainter &painter, ChannelMark::Kind kind, const QPointF &at, double size)
{
    const double half = size / 2;
    switch (kind) {
    case ChannelMark::Information:
        painter.drawEllipse(at, half, half);
        break;
    case ChannelMark::Warning:
        painter.drawPolygon(
            QPolygonF({at + QPointF(0, -half), at + QPointF(half, half), at + QPointF(-half, half)}));
        break;
    case ChannelMark::Trip:
        painter.drawLine(at + QPointF(-half, -half), at + QPointF(half, half));
        painter.drawLine(at + QPointF(-half, half), at + QPointF(half, -half));
        break;
    case ChannelMark::Simulated:
        painter.drawPolygon(QPolygonF(
            {at + QPointF(0, -half), at + QPointF(half, 0), at + QPointF(0, half), at + QPointF(-half, 0)}));
        break;
    }
}

} // namespace

StripChartMarks::StripChartMarks(const ChannelRecorder &recorder_) : recorder(recorder_)
{
    setItemAttribute(QwtPlotItem::Legend, false);
    constexpr double AboveLines = 100;
    setZ(AboveLines);
}

void StripChartMarks::setLook(const QFont &textFont, const QPalette &colours)
{
    font = textFont;
    palette = colours;
}

double StripChartMarks::useRowsFor(double laneHeight)
{
    constexpr double Part = 0.35; // of the lane; the rest is for the lines
    const double rowHeight = QFontMetricsF(font).height();
    const double rows = std::floor(Part * laneHeight / rowHeight);
    // The last row is for marks that have no room for their words.
    textRows = static_cast<std::size_t>(std::clamp(rows - 1, 1.0, static_cast<double>(MostTextRows)));
    return static_cast<double>(textRows + 1) * rowHeight;
}

int StripChartMarks::rtti() const
{
    return Rtti;
}

void StripChartMarks::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &,
                           const QRectF &canvasRect) const
{
    const std::vector<Placed> placed = place(xMap, canvasRect);
    painter->save();
    painter->setFont(font);
    painter->setBrush(Qt::NoBrush);
    // All lines first: none goes through words.
    drawLines(*painter, placed, canvasRect);
    painter->setRenderHint(QPainter::Antialiasing);
    written.clear();
    std::vector<std::vector<QRectF>> rows(textRows);
    for (const Placed &each : placed)
        drawMark(*painter, each, canvasRect, rows);
    painter->restore();
}

/// One in each column of pixels, that of what is worst: others would hide it, and take most of the time.
void StripChartMarks::drawLines(QPainter &painter, const std::vector<Placed> &placed,
                                const QRectF &canvasRect) const
{
    painter.setRenderHint(QPainter::Antialiasing, false);
    std::set<int> drawn;
    for (const Placed &each : placed) {
        const int column = static_cast<int>(std::lround(each.x));
        if (!drawn.insert(column).second)
            continue;
        painter.setPen(QPen(strip_chart_style::colour(each.look, palette), 1, Qt::DotLine));
        painter.drawLine(QPointF(column, canvasRect.top()), QPointF(column, canvasRect.bottom()));
    }
}

/// What is worse comes first, and so gets its words first.
std::vector<StripChartMarks::Placed> StripChartMarks::place(const QwtScaleMap &xMap,
                                                            const QRectF &canvasRect) const
{
    std::vector<Placed> placed;
    for (int channel = 0; channel < recorder.count(); ++channel) {
        const ChannelRecord &record = recorder.at(channel);
        for (const ChannelMark &mark : record.marks()) {
            const double x = xMap.transform(mark.time);
            if (canvasRect.left() <= x && x <= canvasRect.right())
                placed.push_back({x, record.look(), mark.kind,
                                  simulator::addressText(record.address()) + QLatin1Char(' ') + mark.text});
        }
    }
    std::stable_sort(placed.begin(), placed.end(), [](const Placed &a, const Placed &b) {
        return a.kind != b.kind ? a.kind > b.kind : a.x < b.x;
    });
    return placed;
}

/// In the first row that has room for its words; below all rows, without words, where none has.
void StripChartMarks::drawMark(QPainter &painter, const Placed &mark, const QRectF &canvasRect,
                               std::vector<std::vector<QRectF>> &rows) const
{
    const QFontMetricsF metrics(font);
    const double size = metrics.ascent() * 0.7;
    const double width = size + metrics.horizontalAdvance(mark.text) + metrics.height() / 2;
    const QPen ink(strip_chart_style::colour(mark.look, palette), 2);
    QRectF place(mark.x - size / 2, canvasRect.top(), width, metrics.height());
    const bool toTheLeft = place.right() > canvasRect.right();
    if (toTheLeft)
        place.moveRight(mark.x + size / 2);
    for (std::vector<QRectF> &row : rows) {
        const bool isTaken = std::any_of(row.begin(), row.end(),
                                         [&place](const QRectF &taken) { return taken.intersects(place); });
        if (isTaken) {
            place.translate(0, metrics.height());
            continue;
        }
        row.push_back(place);
        // On a ground of its own: lines run below it.
        QColor ground = palette.color(QPalette::Base);
        constexpr int NearlyOpaque = 215;
        ground.setAlpha(NearlyOpaque);
        painter.fillRect(place, ground);
        painter.setPen(palette.color(QPalette::Text));
        const double gap = size * 1.25;
        painter.drawText(toTheLeft ? place.adjusted(0, 0, -gap, 0) : place.adjusted(gap, 0, 0, 0),
                         static_cast<int>(Qt::AlignVCenter | (toTheLeft ? Qt::AlignRight : Qt::AlignLeft)),
                         mark.text);
        written.append(mark.text);
        break;
    }
    painter.setPen(ink);
    drawShape(painter, mark.kind, QPointF(mark.x, place.center().y()), size);
}

} // namespace workbench
