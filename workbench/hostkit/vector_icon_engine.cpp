#include "workbench/hostkit/vector_icon_engine.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>

#include <cmath>
#include <initializer_list>

namespace
{

/// A pencil for drawings on a square of 24 units, laid out on the pixels of a square of any size.
class Pencil
{
public:
    Pencil(QPainter &target, int sizeInPixels, const QColor &lineColor)
        : painter(target),
          scale(sizeInPixels / 24.0),
          width(std::max(1, qRound(sizeInPixels / 18.0))),
          color(lineColor)
    {
        QPen pen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        painter.setRenderHint(QPainter::Antialiasing);
    }

    /// A point whose horizontal and vertical lines cover whole pixels.
    QPointF at(double x, double y) const { return {snap(x), snap(y)}; }

    QPainterPath line(std::initializer_list<QPointF> points) const
    {
        QPainterPath path;
        for (const QPointF &point : points) {
            if (path.elementCount() == 0)
                path.moveTo(at(point.x(), point.y()));
            else
                path.lineTo(at(point.x(), point.y()));
        }
        return path;
    }

    void draw(std::initializer_list<QPointF> points) { painter.drawPath(line(points)); }

    void drawClosed(std::initializer_list<QPointF> points)
    {
        QPainterPath path = line(points);
        path.closeSubpath();
        painter.drawPath(path);
    }

    void fillClosed(std::initializer_list<QPointF> points)
    {
        painter.setBrush(color);
        drawClosed(points);
        painter.setBrush(Qt::NoBrush);
    }

    void frame(double left, double top, double right, double bottom, double radius)
    {
        painter.drawRoundedRect(QRectF(at(left, top), at(right, bottom)), radius * scale, radius * scale);
    }

private:
    double snap(double units) const
    {
        const double offset = (width % 2) / 2.0;
        return std::round(units * scale - offset) + offset;
    }

    QPainter &painter;
    const double scale;
    const int width;
    const QColor color;
};

void drawTerminal(Pencil &pencil)
{
    pencil.frame(2, 4, 22, 20, 2);
    pencil.draw({{6, 9}, {9.5, 12.5}, {6, 16}});
    pencil.draw({{12, 16}, {17, 16}});
}

void drawTextEditor(Pencil &pencil)
{
    // The page is open where the pencil lies on it.
    pencil.draw({{18, 7}, {18, 3}, {4, 3}, {4, 21}, {10, 21}});
    pencil.draw({{7.5, 8}, {14.5, 8}});
    pencil.draw({{7.5, 12}, {12.5, 12}});
    pencil.draw({{7.5, 16}, {10, 16}});
    pencil.drawClosed({{19.5, 10}, {22, 12.5}, {15, 19.5}, {12, 20.5}, {13, 16.5}});
}

void drawOpenFile(Pencil &pencil)
{
    pencil.draw({{3, 20}, {3, 5}, {9, 5}, {11, 7.5}, {19, 7.5}, {19, 11}});
    pencil.drawClosed({{3, 20}, {6.5, 11}, {22, 11}, {19, 20}});
}

void drawSaveFile(Pencil &pencil)
{
    pencil.drawClosed({{3, 3}, {17, 3}, {21, 7}, {21, 21}, {3, 21}});
    pencil.draw({{7, 3}, {7, 8.5}, {15, 8.5}, {15, 3}});
    pencil.draw({{7, 21}, {7, 13.5}, {17, 13.5}, {17, 21}});
}

void drawExecuteFile(Pencil &pencil)
{
    pencil.draw({{9, 21}, {4, 21}, {4, 3}, {14, 3}, {19, 8}, {19, 9}});
    pencil.draw({{14, 3}, {14, 8}, {19, 8}});
    pencil.fillClosed({{12, 12}, {21, 17}, {12, 22}});
}

void drawClear(Pencil &pencil)
{
    // A broom that sweeps to the left.
    pencil.draw({{21, 3}, {13.5, 10.5}});
    pencil.drawClosed({{11, 8}, {16, 13}, {14.5, 14.5}, {9.5, 9.5}});
    pencil.draw({{9.5, 9.5}, {3, 13}, {11, 21}, {14.5, 14.5}});
    pencil.draw({{5.5, 15.5}, {8, 14}});
    pencil.draw({{8, 18}, {10.5, 15.5}});
}

using Drawing = void (*)(Pencil &);

Drawing drawingOf(KD::IconType type)
{
    switch (type) {
    case KD::OpenFileIcon:
        return drawOpenFile;
    case KD::SaveFileIcon:
        return drawSaveFile;
    case KD::ClearIcon:
        return drawClear;
    case KD::TextEditorIcon:
        return drawTextEditor;
    case KD::TerminalIcon:
        return drawTerminal;
    case KD::ExecuteFileIcon:
        return drawExecuteFile;
    }
    return nullptr;
}

} // namespace

namespace hostkit
{

VectorIconEngine::VectorIconEngine(KD::IconType iconType) : type(iconType) { }

VectorIconEngine::~VectorIconEngine() = default;

bool VectorIconEngine::knows(KD::IconType type)
{
    return drawingOf(type) != nullptr;
}

void VectorIconEngine::paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state)
{
    const Drawing drawing = drawingOf(type);
    const double ratio = painter->device()->devicePixelRatioF();
    const int side = static_cast<int>(std::min(rect.width(), rect.height()) * ratio);
    if (drawing == nullptr || side <= 0)
        return;
    // A button that is on and cannot be pressed shows where one is; only what is not to be had is grey.
    const bool grey = mode == QIcon::Disabled && state == QIcon::Off;
    const QPalette::ColorGroup group = grey ? QPalette::Disabled : QPalette::Active;

    painter->save();
    painter->translate(rect.topLeft());
    painter->scale(1 / ratio, 1 / ratio);
    // Centred, on whole pixels.
    const int left = (static_cast<int>(rect.width() * ratio) - side) / 2;
    const int top = (static_cast<int>(rect.height() * ratio) - side) / 2;
    painter->translate(left, top);
    Pencil pencil(*painter, side, QGuiApplication::palette().color(group, QPalette::ButtonText));
    drawing(pencil);
    painter->restore();
}

QPixmap VectorIconEngine::pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state)
{
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    if (painter.isActive())
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
    return pixmap;
}

QIconEngine *VectorIconEngine::clone() const
{
    return new VectorIconEngine(type);
}

QString VectorIconEngine::key() const
{
    return QStringLiteral("VectorIconEngine");
}

} // namespace hostkit
