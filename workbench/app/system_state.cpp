#include "workbench/app/system_state.h"

#include "workbench/app/translated_text.h"

#include <QPainter>
#include <QPixmap>
#include <QPolygonF>

#include <map>

namespace workbench
{

namespace
{

QPolygonF triangle(qreal top, qreal bottom)
{
    return QPolygonF({QPointF(8, top), QPointF(13.5, bottom), QPointF(2.5, bottom)});
}

void paintMark(QPainter &painter, SystemState state)
{
    const QColor grey(0x75, 0x7b, 0x82);
    const QColor green(0x2e, 0x8b, 0x3d);
    const QColor amber(0xc7, 0x7c, 0x02);
    const QColor red(0xc6, 0x28, 0x28);
    switch (state) {
    case SystemState::Unknown:
        break;
    case SystemState::Unavailable:
        painter.setPen(QPen(grey, 2, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(4, 8), QPointF(12, 8));
        break;
    case SystemState::Off:
        painter.setPen(QPen(grey, 1.6));
        painter.drawEllipse(QPointF(8, 8), 4.5, 4.5);
        break;
    case SystemState::On:
        painter.setBrush(green);
        painter.drawEllipse(QPointF(8, 8), 5.2, 5.2);
        break;
    case SystemState::Ramping:
        painter.setBrush(amber);
        painter.drawPolygon(QPolygonF({QPointF(8, 2), QPointF(14, 8), QPointF(8, 14), QPointF(2, 8)}));
        break;
    case SystemState::RampingUp:
        painter.setBrush(amber);
        painter.drawPolygon(triangle(3, 13));
        break;
    case SystemState::RampingDown:
        painter.setBrush(amber);
        painter.drawPolygon(triangle(13, 3));
        break;
    case SystemState::Emergency:
    case SystemState::Tripped:
    case SystemState::Error:
        painter.setBrush(red);
        painter.drawRoundedRect(QRectF(2.5, 2.5, 11, 11), 2, 2);
        painter.setPen(QPen(Qt::white, 2, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(8, 5), QPointF(8, 8.6));
        painter.drawPoint(QPointF(8, 11.4));
        break;
    }
}

QPixmap markPixmap(SystemState state, int scale, const QBrush &background)
{
    QPixmap pixmap(QSize(16, 16) * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(background);
    painter.drawEllipse(QRectF(0.5, 0.5, 15, 15));
    paintMark(painter, state);
    return pixmap;
}

QIcon makeIcon(SystemState state)
{
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        icon.addPixmap(markPixmap(state, scale, Qt::NoBrush));
        // The marks' colours are made for a light row; on a selected one they need a ground of their own.
        icon.addPixmap(markPixmap(state, scale, Qt::white), QIcon::Selected);
    }
    return icon;
}

} // namespace

QString stateText(SystemState state)
{
    switch (state) {
    case SystemState::Unknown:
        return {};
    case SystemState::Unavailable:
        return tr("not available");
    case SystemState::Off:
        return tr("off");
    case SystemState::On:
        return tr("on");
    case SystemState::Ramping:
        return tr("ramping");
    case SystemState::RampingUp:
        return tr("ramp up");
    case SystemState::RampingDown:
        return tr("ramp down");
    case SystemState::Emergency:
        return tr("emergency off");
    case SystemState::Tripped:
        return tr("tripped");
    case SystemState::Error:
        return tr("error");
    }
    return {};
}

QIcon stateIcon(SystemState state)
{
    static std::map<SystemState, QIcon> icons;
    if (state == SystemState::Unknown)
        return {};
    QIcon &icon = icons[state];
    if (icon.isNull())
        icon = makeIcon(state);
    return icon;
}

} // namespace workbench
