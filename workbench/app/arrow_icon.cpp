#include "workbench/app/arrow_icon.h"

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QPolygonF>

namespace workbench
{

namespace
{

QPixmap arrow(Qt::ArrowType direction, int scale, const QColor &colour)
{
    const QPolygonF right({QPointF(2, 6.5), QPointF(8, 6.5), QPointF(8, 3), QPointF(14, 8), QPointF(8, 13),
                           QPointF(8, 9.5), QPointF(2, 9.5)});
    constexpr int Size = 16;
    QImage image(QSize(Size, Size) * scale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawPolygon(right);
    painter.end();
    QPixmap pixmap = QPixmap::fromImage(direction == Qt::LeftArrow ? image.mirrored(true, false) : image);
    pixmap.setDevicePixelRatio(scale);
    return pixmap;
}

QIcon makeIcon(Qt::ArrowType direction)
{
    const QColor blue(0x2f, 0x7f, 0xc1);
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        icon.addPixmap(arrow(direction, scale, blue));
        icon.addPixmap(arrow(direction, scale, Qt::white), QIcon::Selected);
    }
    return icon;
}

} // namespace

QIcon arrowIcon(Qt::ArrowType direction)
{
    static const QIcon left = makeIcon(Qt::LeftArrow);
    static const QIcon right = makeIcon(Qt::RightArrow);
    return direction == Qt::LeftArrow ? left : right;
}

} // namespace workbench
