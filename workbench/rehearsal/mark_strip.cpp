#include "workbench/rehearsal/mark_strip.h"

#include "workbench/rehearsal/html_text.h"
#include "workbench/rehearsal/quantity_text.h"

#include <QCoreApplication>

#include <algorithm>

namespace rehearsal
{

namespace
{

constexpr double BadgeWidth = 0.07; // of the strip
constexpr int MostInList = 12;
constexpr int MostInTip = 8;

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::MarkStrip", text);
}

/// Marks that share a badge.
struct Cluster
{
    std::vector<const Mark *> marks;

    Mark::Kind worst() const
    {
        const auto isLess = [](const Mark *a, const Mark *b) {
            return severity(a->kind) < severity(b->kind);
        };
        return (*std::max_element(marks.begin(), marks.end(), isLess))->kind;
    }

    static int severity(Mark::Kind kind)
    {
        switch (kind) {
        case Mark::Command:
            return 0;
        case Mark::Event:
            return 1;
        case Mark::Fault:
            return 2;
        case Mark::LimitCrossed:
            return 3;
        case Mark::Error:
            break;
        }
        return 4;
    }

    QString tip() const
    {
        QStringList lines;
        for (const Mark *mark : marks) {
            if (lines.size() == MostInTip) {
                lines << tr("and %1 more").arg(static_cast<int>(marks.size()) - MostInTip);
                break;
            }
            lines << timeText(mark->time) + QStringLiteral(": ") + mark->text;
        }
        return lines.join(QLatin1Char('\n'));
    }
};

std::vector<Cluster> clusters(const std::vector<const Mark *> &marks, double duration)
{
    std::vector<Cluster> result;
    for (const Mark *mark : marks) {
        if (result.empty() || mark->time - result.back().marks.front()->time > BadgeWidth * duration)
            result.emplace_back();
        result.back().marks.push_back(mark);
    }
    return result;
}

QString position(const Cluster &cluster, double duration)
{
    // A badge is centred there, and stays in the strip.
    return QStringLiteral("clamp(14px,%1%,calc(100% - 14px))")
        .arg(QString::number(cluster.marks.front()->time / duration * 100, 'f', 2));
}

QString commandBadge(const Cluster &cluster, double duration)
{
    const int first = cluster.marks.front()->request + 1;
    const int last = cluster.marks.back()->request + 1;
    QString text = QString::number(first);
    if (first == 0)
        text = markSign(Mark::Command);
    else if (last != first && last != 0)
        text += QStringLiteral("–") + QString::number(last);
    const QString link = first == 0 ? QStringLiteral("#requests") : QStringLiteral("#request-%1").arg(first);
    return QStringLiteral("<a class=\"badge command\" href=\"%1\" style=\"left:%2\" title=\"%3\">%4</a>")
        .arg(link, position(cluster, duration), html(cluster.tip()), text);
}

QString eventBadge(const Cluster &cluster, double duration)
{
    const Mark::Kind kind = cluster.worst();
    const auto count = static_cast<int>(cluster.marks.size());
    const QString text = markSign(kind) + (count > 1 ? QString::number(count) : QString());
    return QStringLiteral("<span class=\"badge %1\" style=\"left:%2\" title=\"%3\">%4</span>")
        .arg(markClass(kind), position(cluster, duration), html(cluster.tip()), text);
}

} // namespace

QString markClass(Mark::Kind kind)
{
    switch (kind) {
    case Mark::Command:
        return QStringLiteral("command");
    case Mark::Event:
        return QStringLiteral("event");
    case Mark::Error:
        return QStringLiteral("error");
    case Mark::Fault:
        return QStringLiteral("fault");
    case Mark::LimitCrossed:
        break;
    }
    return QStringLiteral("crossed");
}

QString markSign(Mark::Kind kind)
{
    switch (kind) {
    case Mark::Command:
        return QStringLiteral("1");
    case Mark::Event:
        return QStringLiteral("●");
    case Mark::Error:
        return QStringLiteral("✖");
    case Mark::Fault:
        return QStringLiteral("⚡");
    case Mark::LimitCrossed:
        break;
    }
    return QStringLiteral("▲");
}

QString markStrip(const Recording &recording, const ChannelRecord &channel)
{
    std::vector<const Mark *> commands;
    std::vector<const Mark *> others;
    for (const Mark &mark : channel.marks)
        (mark.kind == Mark::Command ? commands : others).push_back(&mark);
    const auto isEarlier = [](const Mark *a, const Mark *b) { return a->time < b->time; };
    std::stable_sort(commands.begin(), commands.end(), isEarlier);
    std::stable_sort(others.begin(), others.end(), isEarlier);

    const double duration = std::max(recording.duration, 1e-3);
    QString commandRow;
    for (const Cluster &cluster : clusters(commands, duration))
        commandRow += commandBadge(cluster, duration);
    QString eventRow;
    for (const Cluster &cluster : clusters(others, duration))
        eventRow += eventBadge(cluster, duration);
    QString rows =
        QStringLiteral(
            "<div class=\"row\"><span class=\"rowname\">%1</span><div class=\"over\">%2</div></div>")
            .arg(html(tr("commands")), commandRow);
    if (!others.empty())
        rows += QStringLiteral(
                    "<div class=\"row\"><span class=\"rowname\">%1</span><div class=\"over\">%2</div></div>")
                    .arg(html(tr("events")), eventRow);
    return QStringLiteral("<div class=\"strip\">%1</div>\n").arg(rows);
}

QString markList(const ChannelRecord &channel)
{
    QString items;
    int count = 0;
    for (const Mark &mark : channel.marks) {
        if (mark.kind == Mark::Command)
            continue;
        if (++count <= MostInList)
            items +=
                QStringLiteral("<li class=\"%1\">%2 %3: %4</li>")
                    .arg(markClass(mark.kind), markSign(mark.kind), timeText(mark.time), html(mark.text));
    }
    if (count > MostInList)
        items += QStringLiteral("<li>%1</li>")
                     .arg(html(tr("and %1 more, in the table of events").arg(count - MostInList)));
    if (channel.marksLeftOut > 0)
        items += QStringLiteral("<li>%1</li>")
                     .arg(html(tr("%1 more commands and events are not marked.").arg(channel.marksLeftOut)));
    return items.isEmpty() ? QString() : QStringLiteral("<ul class=\"happened\">%1</ul>\n").arg(items);
}

} // namespace rehearsal
