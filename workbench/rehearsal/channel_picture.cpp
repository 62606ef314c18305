#include "workbench/rehearsal/channel_picture.h"

#include "workbench/rehearsal/axis.h"
#include "workbench/rehearsal/html_text.h"
#include "workbench/rehearsal/label_places.h"
#include "workbench/rehearsal/mark_strip.h"
#include "workbench/rehearsal/quantity_text.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace rehearsal
{

namespace
{

constexpr double Width = 1000; // of the drawing, which is stretched to the page's
constexpr double Height = 240;
constexpr int TimeTicks = 8;
constexpr int ValueTicks = 4;
constexpr double HeadRoom = 1.04;
constexpr double FarLimit = 2.5; // times the peak: a limit beyond would make the picture flat
constexpr double LeastBetweenMarks =
    Width / 100; // lines of commands and events: closer, they would be a grey field
constexpr double LabelHeight = 0.11; // of the lower of the two panels

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::ChannelPicture", text);
}

QString coordinate(double value)
{
    constexpr int Decimals = 1;
    QString text = QString::number(value, 'f', Decimals);
    if (text.endsWith(QLatin1String(".0")))
        text.chop(2);
    return text;
}

QString percent(double share)
{
    return QString::number(share * 100, 'f', 2) + QLatin1Char('%');
}

QString span(const char *cssClass, const QString &style, const QString &text)
{
    return QStringLiteral("<span class=\"%1\" style=\"%2\">%3</span>")
        .arg(QLatin1String(cssClass), style, html(text));
}

/// A horizontal line at a value.
struct Level
{
    double value = 0;
    QString cssClass;
    QString word; ///< left out where there is no room: the kind of line tells the same
    QString text;
};

/// The part of a picture that shows one quantity.
class Panel
{
public:
    Panel(const Recording &recording_, const ChannelRecord &channel_, Quantity quantity_)
        : recording(recording_), channel(channel_), quantity(quantity_)
    {
        collectLevels();
        chooseAxis();
        timeAxis = Axis::of(0, std::max(recording.duration, 1e-3), TimeTicks, false);
    }

    QString figure() const
    {
        return QStringLiteral("<div class=\"panel\"><div class=\"name\">%1%2</div><div class=\"plot\">%3"
                              "<div class=\"area\">%4</div><div class=\"levels\">%5</div></div></div>\n")
            .arg(html(title()), farLevels(), valueTicks(), drawing(), levelTexts());
    }

    static QString timeTicks(const Recording &recording)
    {
        const Axis axis = Axis::of(0, std::max(recording.duration, 1e-3), TimeTicks, false);
        QString ticks;
        const QVector<double> values = axis.ticks();
        for (const double tick : values)
            ticks += span("", QStringLiteral("left:") + percent(axis.share(tick)), axis.text(tick, 1));
        return QStringLiteral("<div class=\"row times\"><span class=\"rowname\">%1</span>"
                              "<div class=\"over\">%2</div></div>\n")
            .arg(html(tr("time, s")), ticks);
    }

private:
    double valueOf(const TracePoint &point) const
    {
        return quantity == Quantity::Voltage ? point.voltage : point.current;
    }

    const Peak &peak() const { return quantity == Quantity::Voltage ? channel.voltage : channel.current; }

    QString valueText(double value) const
    {
        return quantity == Quantity::Voltage ? voltageText(value) : currentText(value);
    }

    void collectLevels()
    {
        const double sign = peak().value < 0 ? -1 : 1;
        const double own = quantity == Quantity::Voltage ? channel.voltageLimit : channel.currentLimit;
        if (own > 0)
            levels.push_back({sign * std::abs(own), QStringLiteral("plant"), tr("plant"), valueText(own)});
        for (const int index : channel.limits) {
            const Limit &limit = recording.limits.at(index);
            if (limit.quantity == quantity)
                levels.push_back(
                    {sign * limit.value, QStringLiteral("limit"), tr("limit"), valueText(limit.value)});
        }
        const auto isLower = [](const Level &a, const Level &b) { return a.value < b.value; };
        std::stable_sort(levels.begin(), levels.end(), isLower);
        const auto isSame = [](const Level &a, const Level &b) {
            return a.text == b.text && a.cssClass == b.cssClass;
        };
        levels.erase(std::unique(levels.begin(), levels.end(), isSame), levels.end());
    }

    void chooseAxis()
    {
        double least = 0;
        double most = 0;
        for (const TracePoint &point : channel.trace.points()) {
            const double value = valueOf(point);
            least = std::min({least, value, quantity == Quantity::Voltage ? point.voltageSet : 0});
            most = std::max({most, value, quantity == Quantity::Voltage ? point.voltageSet : 0});
        }
        const double size = std::max(-least, most);
        // A line along the edge would be taken for the edge.
        least *= HeadRoom;
        most *= HeadRoom;
        for (const Level &level : levels) {
            if (size > 0 && std::abs(level.value) > FarLimit * size)
                continue;
            least = std::min(least, level.value);
            most = std::max(most, level.value);
        }
        axis = Axis::of(least, most, ValueTicks, true);
        const double largest = std::max(std::abs(axis.least), std::abs(axis.most));
        if (quantity == Quantity::Current)
            unit = largest >= 1 ? 1 : largest >= 1e-3 ? 1e-3 : largest >= 1e-6 ? 1e-6 : 1e-9;
    }

    QString label() const
    {
        const QString what = quantity == Quantity::Voltage ? tr("Voltage") : tr("Current");
        return tr("%1 of channel %2 over time: at most %3, at %4")
            .arg(what, channel.name(), valueText(peak().value), timeText(peak().time));
    }

    QString title() const
    {
        if (quantity == Quantity::Voltage)
            return tr("Voltage, V");
        const QString name = unit >= 1 ? QStringLiteral("A")
            : unit >= 1e-3             ? QStringLiteral("mA")
            : unit >= 1e-6             ? QStringLiteral("µA")
                                       : QStringLiteral("nA");
        return tr("Current, %1").arg(name);
    }

    bool isShown(const Level &level) const { return level.value >= axis.least && level.value <= axis.most; }

    QString valueTicks() const
    {
        QString ticks;
        const QVector<double> values = axis.ticks();
        for (const double tick : values)
            ticks += span("", QStringLiteral("bottom:") + percent(axis.share(tick)), axis.text(tick, unit));
        return QStringLiteral("<div class=\"values\">%1</div>").arg(ticks);
    }

    QString x(double time) const { return coordinate(timeAxis.share(time) * Width); }
    QString y(double value) const { return coordinate((1 - axis.share(value)) * Height); }

    QString horizontal(const QString &cssClass, double value) const
    {
        return QStringLiteral("<path class=\"%1\" d=\"M0 %2H%3\"/>")
            .arg(cssClass, y(value), coordinate(Width));
    }

    QString vertical(const QString &cssClass, double time) const
    {
        return QStringLiteral("<path class=\"%1\" d=\"M%2 0V%3\"/>")
            .arg(cssClass, x(time), coordinate(Height));
    }

    QString drawing() const
    {
        QString svg = QStringLiteral("<svg viewBox=\"0 0 %1 %2\" preserveAspectRatio=\"none\" role=\"img\" "
                                     "aria-label=\"%3\">")
                          .arg(coordinate(Width), coordinate(Height), html(label()));
        const QVector<double> values = axis.ticks();
        for (const double tick : values)
            svg += horizontal(tick == 0 ? QStringLiteral("zero") : QStringLiteral("grid"), tick);
        const QVector<double> times = timeAxis.ticks();
        for (const double tick : times)
            svg += vertical(QStringLiteral("grid"), tick);
        svg += markLines();
        for (const Level &level : levels) {
            if (isShown(level))
                svg += horizontal(level.cssClass, level.value);
        }
        if (quantity == Quantity::Voltage)
            svg += setLine();
        return svg + traceLine() + QStringLiteral("</svg>");
    }

    QString markLines() const
    {
        QString lines;
        double last[] = {-LeastBetweenMarks, -LeastBetweenMarks};
        for (const Mark &mark : channel.marks) {
            if (mark.kind == Mark::Command || mark.kind == Mark::Event) {
                const double place = timeAxis.share(mark.time) * Width;
                double &previous = last[mark.kind == Mark::Command ? 0 : 1];
                if (std::abs(place - previous) < LeastBetweenMarks)
                    continue;
                previous = place;
            }
            lines += vertical(QStringLiteral("mark ") + markClass(mark.kind), mark.time);
        }
        return lines;
    }

    QString setLine() const
    {
        QString path;
        double set = 0;
        for (const TracePoint &point : channel.trace.points()) {
            if (path.isEmpty())
                path = QStringLiteral("M%1 %2").arg(x(point.time), y(point.voltageSet));
            else if (point.voltageSet != set)
                path += QStringLiteral("H%1V%2").arg(x(point.time), y(point.voltageSet));
            set = point.voltageSet;
        }
        if (!path.isEmpty())
            path += QLatin1Char('H') + x(channel.trace.points().back().time);
        return QStringLiteral("<path class=\"set\" d=\"%1\"/>").arg(path);
    }

    QString traceLine() const
    {
        QString path;
        for (const TracePoint &point : channel.trace.points()) {
            path += path.isEmpty() ? QLatin1Char('M') : QLatin1Char('L');
            path += x(point.time) + QLatin1Char(' ') + y(valueOf(point));
        }
        return QStringLiteral("<path class=\"%1\" d=\"%2\"/>").arg(quantityName(quantity), path);
    }

    // Beside the drawing, where they cover no curve.
    QString levelTexts() const
    {
        QVector<double> shares;
        for (const Level &level : levels) {
            if (isShown(level))
                shares.append(axis.share(level.value));
        }
        const QVector<double> places = labelPlaces(shares, LabelHeight);
        auto place = places.begin();
        QString texts;
        for (const Level &level : levels) {
            if (isShown(level))
                texts += QStringLiteral("<span class=\"level %1\" style=\"bottom:%2\">"
                                        "<span class=\"word\">%3 </span>%4</span>")
                             .arg(level.cssClass, percent(*place++), html(level.word), html(level.text));
        }
        return texts;
    }

    QString farLevels() const
    {
        QStringList texts;
        for (const Level &level : levels) {
            if (!isShown(level))
                texts << (level.cssClass == QLatin1String("plant") ? tr("plant's limit %1") : tr("limit %1"))
                             .arg(level.text);
        }
        return texts.isEmpty()
            ? QString()
            : span("far", QString(), tr("beyond the picture: %1").arg(texts.join(QStringLiteral(", "))));
    }

    const Recording &recording;
    const ChannelRecord &channel;
    const Quantity quantity;
    std::vector<Level> levels;
    Axis axis;
    Axis timeAxis;
    double unit = 1;
};

QString keyEntry(const char *cssClass, const QString &text)
{
    return QStringLiteral("<li><svg aria-hidden=\"true\" viewBox=\"0 0 32 12\"><path class=\"%1\" d=\"M1 "
                          "6H31\"/></svg>%2</li>")
        .arg(QLatin1String(cssClass), html(text));
}

QString signEntry(Mark::Kind kind, const QString &text)
{
    return QStringLiteral("<li><span class=\"badge %1\">%2</span>%3</li>")
        .arg(markClass(kind), markSign(kind), html(text));
}

/// Touched by commands, and nothing came of it.
bool isQuiet(const ChannelRecord &record)
{
    const auto isCommand = [](const Mark &mark) { return mark.kind == Mark::Command; };
    return record.voltage.value == 0 && record.current.value == 0 && record.marksLeftOut == 0
        && std::all_of(record.marks.begin(), record.marks.end(), isCommand);
}

} // namespace

QString channelPicture(const Recording &recording, std::size_t channel)
{
    const ChannelRecord &record = recording.channels.at(channel);
    QString heading = html(tr("Channel %1").arg(record.name()));
    if (record.tripped)
        heading += QStringLiteral(" <span class=\"state bad\">%1</span>").arg(html(tr("✖ tripped")));
    if (record.reportedError)
        heading += QStringLiteral(" <span class=\"state bad\">%1</span>").arg(html(tr("✖ error")));
    if (record.crossed)
        heading += QStringLiteral(" <span class=\"state bad\">%1</span>").arg(html(tr("▲ limit crossed")));
    const QString picture = Panel(recording, record, Quantity::Voltage).figure()
        + Panel(recording, record, Quantity::Current).figure() + markStrip(recording, record)
        + Panel::timeTicks(recording) + markList(record);
    const QString shown = isQuiet(record) ? QStringLiteral("<details><summary>%1</summary>%2</details>\n")
                                                .arg(html(tr("0 V and 0 A all the time")), picture)
                                          : picture;
    return QStringLiteral(
               "<figure class=\"channel\" id=\"channel-%1\" data-channel=\"%2\"><figcaption><h3>%3</h3>"
               "<p>%4</p></figcaption>\n")
               .arg(channel)
               .arg(html(record.name()), heading,
                    html(tr("%1; nominal %2, %3; at the end: %4.")
                             .arg(record.controllerText, voltageText(record.voltageNominal),
                                  currentText(record.currentNominal), record.endState)))
        + shown + QStringLiteral("</figure>\n");
}

QString pictureKey()
{
    return QStringLiteral("<ul class=\"key\">") + keyEntry("voltage", tr("voltage"))
        + keyEntry("current", tr("current")) + keyEntry("set", tr("set voltage while on"))
        + keyEntry("limit", tr("limit of this rehearsal")) + keyEntry("plant", tr("the plant's own limit"))
        + signEntry(Mark::Command, tr("command; its number in the table of requests"))
        + signEntry(Mark::Event, tr("event")) + signEntry(Mark::Error, tr("error or trip"))
        + signEntry(Mark::Fault, tr("fault")) + signEntry(Mark::LimitCrossed, tr("limit crossed"))
        + QStringLiteral("</ul>\n");
}

} // namespace rehearsal
