#include "workbench/app/strip_chart_style.h"

#include <QVector>

#include <array>

namespace workbench::strip_chart_style
{

namespace
{

constexpr std::size_t Colours = 6;
constexpr std::size_t Patterns = 4; // with six colours: twelve channels of which no two look the same

constexpr std::array<QRgb, Colours> OnLight = {0xff0072b2, 0xffb84a00, 0xff00795a,
                                               0xff9b3f77, 0xff8a6100, 0xff4a4a4a};
constexpr std::array<QRgb, Colours> OnDark = {0xff6cc0f0, 0xffff9a56, 0xff3fd0a4,
                                              0xffe79ac6, 0xfff0e442, 0xffdcdcdc};
constexpr int DarkBelow = 128; // lightness of the ground

QVector<qreal> voltagePattern(int channel)
{
    static const std::array<QVector<qreal>, Patterns> patterns = {
        QVector<qreal>(), {7, 3}, {7, 2, 1, 2}, {7, 2, 1, 2, 1, 2}};
    return patterns[static_cast<std::size_t>(channel) % Patterns];
}

QVector<qreal> currentPattern(int channel)
{
    static const std::array<QVector<qreal>, Patterns> patterns = {
        QVector<qreal>{2, 2}, {4, 2, 2, 2}, {4, 4}, {2, 2, 2, 2, 6, 2}};
    return patterns[static_cast<std::size_t>(channel) % Patterns];
}

QPen pen(const QColor &colour, qreal width, const QVector<qreal> &pattern)
{
    QPen result(colour, width, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin);
    if (!pattern.isEmpty())
        result.setDashPattern(pattern);
    return result;
}

} // namespace

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Base).lightness() < DarkBelow;
}

QColor colour(int channel, const QPalette &palette)
{
    const auto &colours = isDark(palette) ? OnDark : OnLight;
    return QColor::fromRgb(colours[static_cast<std::size_t>(channel) % Colours]);
}

QPen voltagePen(int channel, const QPalette &palette)
{
    constexpr qreal Width = 2.4;
    return pen(colour(channel, palette), Width, voltagePattern(channel));
}

QPen currentPen(int channel, const QPalette &palette)
{
    constexpr qreal Width = 1.6;
    return pen(colour(channel, palette), Width, currentPattern(channel));
}

QPen setPen(const QColor &colour)
{
    return pen(colour, 1, {});
}

QPen limitPen(const QColor &colour)
{
    return pen(colour, 1, {1, 5});
}

QPen gridPen(const QPalette &palette)
{
    QColor ink = palette.color(QPalette::Text);
    constexpr int Faint = 45;
    ink.setAlpha(Faint);
    return {ink, 0};
}

} // namespace workbench::strip_chart_style
