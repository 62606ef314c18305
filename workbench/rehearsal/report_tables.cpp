#include "workbench/rehearsal/report_tables.h"

#include "workbench/rehearsal/html_text.h"
#include "workbench/rehearsal/quantity_text.h"
#include "workbench/rehearsal/request_summary.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace rehearsal
{

namespace
{

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::ReportTables", text);
}

QString cell(const QString &content)
{
    return QStringLiteral("<td>%1</td>").arg(content);
}

QString textCell(const QString &text)
{
    return cell(html(text));
}

QString outcomeCell(const QString &text)
{
    return QStringLiteral("<td class=\"outcome\">%1</td>").arg(html(text));
}

QString numberCell(double value, const QString &shown)
{
    if (!std::isfinite(value))
        return QStringLiteral("<td class=\"number\">%1</td>").arg(html(shown));
    return QStringLiteral("<td class=\"number\" data-value=\"%1\">%2</td>")
        .arg(reportedText(value), html(shown));
}

QString timeCell(double seconds)
{
    return numberCell(seconds, std::isfinite(seconds) ? timeText(seconds) : QStringLiteral("–"));
}

/// Of what never left zero, no time is the time of its peak.
QString peakTimeCell(const Peak &peak)
{
    return numberCell(peak.time, peak.value == 0 ? QStringLiteral("–") : timeText(peak.time));
}

QString row(const QStringList &cells, const QString &attributes = {})
{
    return QStringLiteral("<tr%1>%2</tr>\n").arg(attributes, cells.join(QString()));
}

/// The label is read out when the table is reached by key, from where it is scrolled.
QString table(const char *id, const QString &label, const QStringList &headings, const QString &rows)
{
    QString head;
    for (const QString &heading : headings)
        head += QStringLiteral("<th scope=\"col\">%1</th>").arg(html(heading));
    return QStringLiteral("<div class=\"scroll\" tabindex=\"0\" role=\"region\" aria-label=\"%1\"><table "
                          "id=\"%2\"><thead>"
                          "<tr>%3</tr></thead><tbody>\n%4</tbody></table></div>\n")
        .arg(html(label), QLatin1String(id), head, rows);
}

QString leftOutNote(int count)
{
    return count == 0
        ? QString()
        : QStringLiteral("<p class=\"note\">%1</p>\n").arg(html(tr("%1 more are not listed.").arg(count)));
}

QString channelLink(const Recording &recording, std::size_t index)
{
    return QStringLiteral("<a href=\"#channel-%1\">%2</a>")
        .arg(QString::number(index), html(recording.channels.at(index).name()));
}

/// Short; the whole name is in the table of files.
QString sourceText(const QString &file, int line)
{
    const QString name = QFileInfo(file).fileName();
    return line > 0 ? QStringLiteral("%1:%2").arg(name, QString::number(line)) : name;
}

QString sourceCell(const RequestRecord &request)
{
    return QStringLiteral("<td title=\"%1\">%2</td>")
        .arg(html(request.file), html(sourceText(request.file, request.line)));
}

QString findingTitle(Finding::Kind kind)
{
    switch (kind) {
    case Finding::Request:
        return tr("request failed");
    case Finding::TimeOut:
        return tr("timed out");
    case Finding::LimitCrossed:
        return tr("limit crossed");
    case Finding::Trip:
        return tr("channel tripped");
    case Finding::Error:
        return tr("channel error");
    case Finding::Script:
        return tr("script failed");
    case Finding::Run:
        return tr("rehearsal failed");
    case Finding::Warning:
        break;
    }
    return tr("warning");
}

/// The ways to what failures lead to, of as many channels as there may be.
class Links
{
public:
    explicit Links(const Recording &recording_) : recording(recording_)
    {
        for (std::size_t i = 0; i < recording.channels.size(); ++i)
            indices.insert(recording.channels.at(i).name(), i);
    }

    /// To the channel's picture; nothing for a channel that has none.
    QString toChannel(const QString &name) const
    {
        const auto found = indices.constFind(name);
        return found == indices.constEnd() ? QString() : channelLink(recording, *found);
    }

    /// To the request that failed; nothing when it is not listed.
    QString toRequest(const Finding &finding) const
    {
        if (finding.kind != Finding::Request && finding.kind != Finding::TimeOut)
            return {};
        // What was not taken is known to have failed only when the terminal has shown it; of the same line in a file
        // that was rehearsed twice it is the latest.
        for (std::size_t i = recording.requests.size(); i > 0; --i) {
            const RequestRecord &request = recording.requests.at(i - 1);
            const bool isThen = request.isTaken ? request.time == finding.time : request.time <= finding.time;
            if (isThen && request.file == finding.file && request.line == finding.line)
                return QStringLiteral("<a href=\"#request-%1\">%2</a>")
                    .arg(QString::number(i), html(tr("request %1").arg(i)));
        }
        return {};
    }

private:
    const Recording &recording;
    QHash<QString, std::size_t> indices; // of the channels, by name
};

/// When, at which channel, in which file.
QString findingPlace(const Links &links, const Finding &finding)
{
    QStringList place;
    if (std::isfinite(finding.time))
        place << html(timeText(finding.time));
    place << links.toChannel(finding.channel);
    if (!finding.file.isEmpty())
        place << QStringLiteral("<span title=\"%1\">%2</span>")
                     .arg(html(finding.file), html(sourceText(finding.file, finding.line)));
    place << links.toRequest(finding);
    place.removeAll(QString());
    return place.join(QStringLiteral(" · "));
}

/// In the order of time; a failure is known only when its answer is there. What has none is last.
std::vector<Finding> inOrder(std::vector<Finding> findings)
{
    const auto isEarlier = [](const Finding &a, const Finding &b) {
        return std::isfinite(a.time) && (!std::isfinite(b.time) || a.time < b.time);
    };
    std::stable_sort(findings.begin(), findings.end(), isEarlier);
    return findings;
}

QString rampRow(const QString &channel, const Ramp &ramp)
{
    const double seconds = ramp.end - ramp.begin;
    const QString shown = std::isfinite(seconds) ? timeText(seconds) : tr("not over");
    return row({cell(channel), timeCell(ramp.begin), timeCell(ramp.end), numberCell(seconds, shown),
                numberCell(ramp.from, voltageText(ramp.from)), numberCell(ramp.to, voltageText(ramp.to))});
}

QString details(const QString &summary, const QString &text)
{
    return QStringLiteral("<details><summary>%1</summary><code>%2</code></details>").arg(summary, html(text));
}

} // namespace

QString fileTable(const Recording &recording)
{
    QString rows;
    for (const FileRecord &file : recording.files) {
        const bool isDone = file.outcome == QLatin1String("done");
        rows += row({textCell(file.name), textCell(file.isScript ? tr("Python file") : tr("command file")),
                     timeCell(file.begin), timeCell(file.end),
                     outcomeCell((isDone ? QStringLiteral("✔ ") : QStringLiteral("✖ ")) + file.outcome)},
                    isDone ? QString() : QStringLiteral(" class=\"bad\""));
    }
    return table("files", tr("Files"), {tr("File"), tr("Kind"), tr("Begins"), tr("Ends"), tr("Outcome")},
                 rows);
}

QString findingCounts(const std::vector<Finding> &findings)
{
    QStringList titles;
    for (const Finding &finding : findings)
        titles << findingTitle(finding.kind);
    QStringList kinds = titles;
    kinds.removeDuplicates();
    QStringList counts;
    for (const QString &kind : std::as_const(kinds))
        counts << QStringLiteral("%1 × %2").arg(QString::number(titles.count(kind)), kind);
    return counts.join(QStringLiteral(", "));
}

QString findingList(const Recording &recording, const std::vector<Finding> &findings, int leftOut)
{
    if (findings.empty())
        return {};
    const Links links(recording);
    QString items;
    for (const Finding &finding : inOrder(findings)) {
        const bool isLong = finding.text.contains(QLatin1Char('\n'));
        items +=
            QStringLiteral("<li class=\"%1\"><strong>%2</strong> <span class=\"where\">%3</span>%4</li>\n")
                .arg(findingName(finding.kind), html(findingTitle(finding.kind)),
                     findingPlace(links, finding),
                     QStringLiteral("<%1>%2</%1>")
                         .arg(isLong ? QStringLiteral("pre") : QStringLiteral("p"), html(finding.text)));
    }
    return QStringLiteral("<ul class=\"findings\">\n%1</ul>\n").arg(items) + leftOutNote(leftOut);
}

QString peakTable(const Recording &recording)
{
    if (recording.channels.empty())
        return {};
    QString rows;
    for (std::size_t i = 0; i < recording.channels.size(); ++i) {
        const ChannelRecord &channel = recording.channels.at(i);
        QStringList verdicts;
        if (channel.tripped)
            verdicts << tr("✖ tripped");
        if (channel.reportedError)
            verdicts << tr("✖ error");
        if (channel.crossed)
            verdicts << tr("▲ limit crossed");
        const bool isGood = verdicts.isEmpty();
        if (isGood)
            verdicts << tr("✔ no trip, no error, no limit crossed");
        rows += row({cell(channelLink(recording, i)),
                     numberCell(channel.voltage.value, voltageText(channel.voltage.value)),
                     peakTimeCell(channel.voltage),
                     numberCell(channel.current.value, currentText(channel.current.value)),
                     peakTimeCell(channel.current), outcomeCell(verdicts.join(QStringLiteral(", "))),
                     textCell(channel.endState)},
                    QStringLiteral(" data-channel=\"%1\"%2")
                        .arg(html(channel.name()), isGood ? QString() : QStringLiteral(" class=\"bad\"")));
    }
    return table("peaks", tr("Peaks"),
                 {tr("Channel"), tr("Highest voltage"), tr("at"), tr("Highest current"), tr("at"),
                  tr("Verdict"), tr("At the end")},
                 rows);
}

QString crossingTable(const Recording &recording)
{
    QString rows;
    for (std::size_t i = 0; i < recording.channels.size(); ++i) {
        for (const Crossings &crossings : recording.channels.at(i).crossings) {
            const Limit &limit = recording.limits.at(crossings.limit);
            const QString highest = limit.quantity == Quantity::Voltage ? voltageText(crossings.highest)
                                                                        : currentText(crossings.highest);
            rows += row({cell(channelLink(recording, i)), textCell(limit.text),
                         numberCell(crossings.count, QString::number(crossings.count)),
                         timeCell(crossings.first), numberCell(crossings.highest, highest)});
        }
    }
    if (rows.isEmpty())
        return {};
    return table("crossings", tr("Crossed limits"),
                 {tr("Channel"), tr("Limit"), tr("Times"), tr("First at"), tr("Highest")}, rows);
}

QString rampTable(const Recording &recording)
{
    QString rows;
    int listed = 0;
    int leftOut = 0;
    for (std::size_t i = 0; i < recording.channels.size(); ++i) {
        const ChannelRecord &channel = recording.channels.at(i);
        const int count = qMin(static_cast<int>(channel.ramps.size()), MostListedRamps - listed);
        for (int number = 0; number < count; ++number)
            rows += rampRow(channelLink(recording, i), channel.ramps.at(static_cast<std::size_t>(number)));
        listed += count;
        leftOut += static_cast<int>(channel.ramps.size()) - count + channel.rampsLeftOut;
    }
    if (rows.isEmpty())
        return {};
    return table("ramps", tr("Ramps"),
                 {tr("Channel"), tr("Begins"), tr("Ends"), tr("Takes"), tr("From"), tr("To")}, rows)
        + leftOutNote(leftOut);
}

QString requestTable(const Recording &recording)
{
    if (recording.requests.empty())
        return {};
    QString rows;
    for (std::size_t i = 0; i < recording.requests.size(); ++i) {
        const RequestRecord &request = recording.requests.at(i);
        const QString number = QString::number(i + 1);
        const bool isDone = request.outcome == QLatin1String("done");
        const QString what = request.isWrite ? html(tr("write %1").arg(request.text))
                                             : details(html(requestSummary(request.text)), request.text);
        const QString values = answerSummary(request.answers);
        const QString answer = request.answers.isEmpty()
            ? QString()
            : details(html(values.isEmpty() ? request.outcome : values),
                      request.answers.join(QLatin1Char('\n')));
        const QString outcome = request.outcome.isEmpty() ? tr("open at the end") : request.outcome;
        rows +=
            row({cell(number), timeCell(request.time), textCell(request.controller), sourceCell(request),
                 cell(what), cell(answer),
                 numberCell(request.latency,
                            std::isfinite(request.latency) ? timeText(request.latency) : QStringLiteral("–")),
                 outcomeCell((isDone ? QStringLiteral("✔ ") : QStringLiteral("✖ ")) + outcome)},
                QStringLiteral(" id=\"request-%1\"%2")
                    .arg(number, isDone ? QString() : QStringLiteral(" class=\"bad\"")));
    }
    return table("request-table", tr("Requests and writes"),
                 {tr("No."), tr("Time"), tr("Controller"), tr("From"), tr("Request"), tr("Answer"),
                  tr("Latency"), tr("Outcome")},
                 rows)
        + leftOutNote(recording.requestsLeftOut);
}

QString eventTable(const Recording &recording)
{
    if (recording.events.empty())
        return {};
    QString rows;
    for (const EventRecord &event : recording.events)
        rows += row({timeCell(event.time), textCell(event.place), textCell(event.text)});
    return table("event-table", tr("Events and faults"), {tr("Time"), tr("Where"), tr("What")}, rows)
        + leftOutNote(recording.eventsLeftOut);
}

QString transcriptText(const Recording &recording)
{
    if (recording.transcript.empty())
        return {};
    QString lines;
    for (const TranscriptLine &line : recording.transcript) {
        const char *const kind = line.kind == TranscriptLine::Error ? "error"
            : line.kind == TranscriptLine::Output                   ? "output"
                                                                    : "input";
        lines += QStringLiteral("<span class=\"%1\">%2</span>\n").arg(QLatin1String(kind), html(line.text));
    }
    return QStringLiteral("<pre class=\"transcript\" tabindex=\"0\">%1</pre>\n").arg(lines)
        + leftOutNote(recording.transcriptLeftOut);
}

} // namespace rehearsal
