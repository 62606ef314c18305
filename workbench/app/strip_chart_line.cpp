#include "workbench/app/strip_chart_line.h"

#include <algorithm>

namespace workbench
{

namespace
{

/// Gathers what falls into one column of pixels.
class Column
{
public:
    explicit Column(QPolygonF &line_) : line(line_) { }

    void begin(const QPointF &point)
    {
        flush();
        first = lowest = highest = last = point;
        hasPoint = true;
    }

    void add(const QPointF &point)
    {
        if (point.y() < lowest.y())
            lowest = point;
        if (point.y() > highest.y())
            highest = point;
        last = point;
    }

    void flush()
    {
        if (!hasPoint)
            return;
        append(first);
        const bool isLowestFirst = lowest.x() <= highest.x();
        append(isLowestFirst ? lowest : highest);
        append(isLowestFirst ? highest : lowest);
        append(last);
        hasPoint = false;
    }

private:
    /// Of points on one level only the first and the last are kept.
    void append(const QPointF &point)
    {
        const int size = line.size();
        if (size > 0 && line.at(size - 1) == point)
            return;
        if (size > 1 && line.at(size - 1).y() == point.y() && line.at(size - 2).y() == point.y())
            line.last() = point;
        else
            line.append(point);
    }

    QPolygonF &line;
    QPointF first;
    QPointF lowest;
    QPointF highest;
    QPointF last;
    bool hasPoint = false;
};

} // namespace

QPolygonF stripChartLine(const ChannelRecord &record, double ChannelSample::*quantity, double from, double to,
                         int columns)
{
    QPolygonF line;
    const auto &samples = record.samples();
    if (samples.empty() || columns <= 0 || !(to > from))
        return line;
    std::size_t begin = record.firstAt(from);
    begin -= begin > 0 ? 1 : 0;
    const std::size_t end = std::min(record.firstAt(to) + 1, samples.size());
    const double width = (to - from) / columns;
    Column column(line);
    double columnEnd = 0;
    for (std::size_t index = begin; index < end; ++index) {
        const ChannelSample &sample = samples[index];
        const QPointF point(sample.time, sample.*quantity);
        if (index == begin || sample.time >= columnEnd) {
            column.begin(point);
            columnEnd = sample.time + width;
        } else {
            column.add(point);
        }
    }
    column.flush();
    return line;
}

} // namespace workbench
