#include "workbench/rehearsal/mark_strip.h"

#include "workbench/rehearsal/html_text.h"
#include "workbench/rehearsal/quantity_text.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace rehearsal
{

namespace
{

// In pixels, of the style's small text.
constexpr double CharacterWidth = 8;
constexpr double BadgeEdges = 12;
constexpr double BadgeGap = 2;
constexpr double WideStrip = 680; // the narrowest in which it is shown
constexpr double NarrowStrip = 230;
constexpr int MostInList = 12;
constexpr int MostInTip = 8;

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::MarkStrip", text);
}

int severity(Mark::Kind kind)
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

using Requests = std::vector<RequestRecord>;

/// Of a command: whether its request was anything but done.
bool hasFailed(const Mark &mark, const Requests &requests)
{
    return mark.request >= 0
        && requests[static_cast<std::size_t>(mark.request)].outcome != QLatin1String("done");
}

bool isEarlier(const Mark *a, const Mark *b)
{
    return a->time < b->time;
}

bool isGraver(const Mark *a, const Mark *b)
{
    return severity(a->kind) > severity(b->kind);
}

/// Marks that share a badge.
struct Cluster
{
    const Mark *gravest = nullptr; ///< the badge is where that is
    std::vector<const Mark *> marks;

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

int firstRequest(const Cluster &cluster)
{
    return cluster.marks.front()->request + 1;
}

int lastRequest(const Cluster &cluster)
{
    return cluster.marks.back()->request + 1;
}

bool hasFailed(const Cluster &cluster, const Requests &requests)
{
    return std::any_of(cluster.marks.begin(), cluster.marks.end(),
                       [&requests](const Mark *mark) { return hasFailed(*mark, requests); });
}

QString badgeText(const Cluster &cluster)
{
    const Mark::Kind kind = cluster.gravest->kind;
    if (kind != Mark::Command) {
        const auto count = static_cast<int>(cluster.marks.size());
        return markSign(kind) + (count > 1 ? QString::number(count) : QString());
    }
    const int first = firstRequest(cluster);
    const int last = lastRequest(cluster);
    if (first == 0)
        return QStringLiteral("…");
    return last == first || last == 0 ? QString::number(first) : QStringLiteral("%1–%2").arg(first).arg(last);
}

/// The most that a badge of the row may have to tell.
int mostCharacters(const std::vector<const Mark *> &marks)
{
    if (marks.empty() || marks.front()->kind != Mark::Command)
        return 1 + QString::number(marks.size()).size();
    int last = 0;
    for (const Mark *mark : marks)
        last = std::max(last, mark->request + 1);
    return 2 * QString::number(last).size() + 2; // "✖2–6"
}

/// So that no badge lies on another in a strip of this width. The gravest get theirs first, the others share.
std::vector<Cluster> clusters(std::vector<const Mark *> marks, const Requests &requests, double duration,
                              double stripWidth)
{
    const double width = mostCharacters(marks) * CharacterWidth + BadgeEdges;
    const double distance = (width + BadgeGap) / (stripWidth - width) * duration;
    std::stable_sort(marks.begin(), marks.end(), isEarlier);
    std::stable_sort(marks.begin(), marks.end(), isGraver);
    std::stable_partition(marks.begin(), marks.end(),
                          [&requests](const Mark *mark) { return hasFailed(*mark, requests); });
    std::vector<Cluster> result;
    for (const Mark *mark : marks) {
        const auto isNearer = [mark](const Cluster &a, const Cluster &b) {
            return std::abs(a.gravest->time - mark->time) < std::abs(b.gravest->time - mark->time);
        };
        auto nearest = std::min_element(result.begin(), result.end(), isNearer);
        if (nearest == result.end() || std::abs(nearest->gravest->time - mark->time) >= distance)
            nearest = result.insert(result.end(), {mark, {}});
        nearest->marks.push_back(mark);
    }
    for (Cluster &cluster : result)
        std::stable_sort(cluster.marks.begin(), cluster.marks.end(), isEarlier);
    return result;
}

QString position(const Cluster &cluster, double duration)
{
    return QString::number(cluster.gravest->time / duration * 100, 'f', 2) + QLatin1Char('%');
}

QString commandBadge(const Cluster &cluster, const Requests &requests, double duration)
{
    const int first = firstRequest(cluster);
    const int last = lastRequest(cluster);
    QString link = QStringLiteral("#request-%1").arg(first);
    QString spoken = tr("request %1").arg(first);
    if (first == 0) {
        link = QStringLiteral("#requests");
        spoken = tr("the table of requests");
    } else if (last > first) {
        spoken = tr("requests %1 to %2").arg(first).arg(last);
    }
    QString shown = badgeText(cluster);
    QString cssClass = markClass(Mark::Command);
    if (hasFailed(cluster, requests)) {
        shown.prepend(markSign(Mark::Error));
        spoken = tr("%1, failed").arg(spoken);
        cssClass += QLatin1Char(' ') + markClass(Mark::Error);
    }
    return QStringLiteral("<a class=\"badge %1\" href=\"%2\" style=\"--at:%3\" title=\"%4\" "
                          "aria-label=\"%5\">%6</a>")
        .arg(cssClass, link, position(cluster, duration), html(cluster.tip()), html(spoken), shown);
}

QString eventBadge(const Cluster &cluster, double duration)
{
    return QStringLiteral("<span class=\"badge %1\" style=\"--at:%2\" title=\"%3\">%4</span>")
        .arg(markClass(cluster.gravest->kind), position(cluster, duration), html(cluster.tip()),
             badgeText(cluster));
}

QString row(const QString &name, const QString &badges, const char *attributes)
{
    return badges.isEmpty() ? QString()
                            : QStringLiteral("<div class=\"row\"%1><span class=\"rowname\">%2</span>"
                                             "<div class=\"over\">%3</div></div>")
                                  .arg(QLatin1String(attributes), html(name), badges);
}

QString strip(const char *cssClass, double width, const std::vector<const Mark *> &commands,
              const std::vector<const Mark *> &others, const Recording &recording)
{
    const double duration = std::max(recording.duration, 1e-3);
    QString commandBadges;
    for (const Cluster &cluster : clusters(commands, recording.requests, duration, width))
        commandBadges += commandBadge(cluster, recording.requests, duration);
    QString eventBadges;
    for (const Cluster &cluster : clusters(others, recording.requests, duration, width))
        eventBadges += eventBadge(cluster, duration);
    // What the events' badges tell is read out from the list of what happened.
    return QStringLiteral("<div class=\"strip %1\">%2</div>\n")
        .arg(QLatin1String(cssClass),
             row(tr("commands"), commandBadges, "")
                 + row(tr("events"), eventBadges, " aria-hidden=\"true\""));
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
    return strip("wide", WideStrip, commands, others, recording)
        + strip("narrow", NarrowStrip, commands, others, recording);
}

QString markList(const ChannelRecord &channel)
{
    std::vector<const Mark *> marks;
    for (const Mark &mark : channel.marks) {
        if (mark.kind != Mark::Command)
            marks.push_back(&mark);
    }
    const int more = static_cast<int>(marks.size()) - MostInList;
    if (more > 0) {
        std::stable_sort(marks.begin(), marks.end(), isGraver);
        marks.resize(MostInList);
    }
    std::stable_sort(marks.begin(), marks.end(), isEarlier);

    QString items;
    for (const Mark *mark : marks)
        items +=
            QStringLiteral("<li class=\"%1\">%2 %3: %4</li>")
                .arg(markClass(mark->kind), markSign(mark->kind), timeText(mark->time), html(mark->text));
    if (more > 0)
        items += QStringLiteral("<li>%1</li>").arg(html(tr("and %1 more").arg(more)));
    if (channel.marksLeftOut > 0)
        items += QStringLiteral("<li>%1</li>")
                     .arg(html(tr("%1 more commands and events are not marked.").arg(channel.marksLeftOut)));
    return items.isEmpty() ? QString() : QStringLiteral("<ul class=\"happened\">%1</ul>\n").arg(items);
}

} // namespace rehearsal
