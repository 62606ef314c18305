#pragma once

#include "workbench/app/channel_record.h"

#include <QFont>
#include <QPalette>
#include <QStringList>

#include <qwt_plot_item.h>

#include <vector>

namespace workbench
{

class ChannelRecorder;

/// Draws what happened to the channels: a line at its time, a mark whose shape says how bad it is, and what it was in
/// words as long as there is room for the words.
class StripChartMarks : public QwtPlotItem
{
public:
    /// The recorder is kept and outlives the item.
    explicit StripChartMarks(const ChannelRecorder &recorder);

    void setLook(const QFont &textFont, const QPalette &colours);

    /// Writes in as many rows as fit into a part of a lane of that height, and returns the height (pixels) that marks
    /// and words take from its top.
    double useRowsFor(double laneHeight);

    int rtti() const override;
    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &canvasRect) const override;

    /// What was written when it was drawn last, in the order of drawing.
    const QStringList &writtenTexts() const { return written; }

private:
    /// A mark at its place in time.
    struct Placed
    {
        double x; ///< pixels
        int look;
        ChannelMark::Kind kind;
        QString text;
    };

    std::vector<Placed> place(const QwtScaleMap &xMap, const QRectF &canvasRect) const;
    void drawLines(QPainter &painter, const std::vector<Placed> &placed, const QRectF &canvasRect) const;
    void drawMark(QPainter &painter, const Placed &mark, const QRectF &canvasRect,
                  std::vector<std::vector<QRectF>> &rows) const;

    const ChannelRecorder &recorder;
    QFont font;
    QPalette palette;
    std::size_t textRows = 1;
    mutable QStringList written;
};

} // namespace workbench
