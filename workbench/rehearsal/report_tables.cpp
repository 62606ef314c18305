#include "workbench/rehearsal/report_tables.h"

#include "workbench/rehearsal/html_text.h"
#include "workbench/rehearsal/quantity_text.h"
#include "workbench/rehearsal/request_summary.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

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

QString row(const QStringList &cells, const QString &attributes = {})
{
    return QStringLiteral("<tr%1>%2</tr>\n").arg(attributes, cells.join(QString()));
}

QString table(const char *id, const QStringList &headings, const QString &rows)
{
    QString head;
    for (const QString &heading : headings)
        head += QStringLiteral("<th scope=\"col\">%1</th>").arg(html(heading));
    return QStringLiteral(
               "<div class=\"scroll\" tabindex=\"0\"><table id=\"%1\"><thead><tr>%2</tr></thead><tbody>\n%3"
               "</tbody></table></div>\n")
        .arg(QLatin1String(id), head, rows);
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

QString sourceText(const QString &file, int line)
{
    return line > 0 ? QStringLiteral("%1:%2").arg(file, QString::number(line)) : file;
}

/// Short; the whole name is in the table of files.
QString sourceCell(const RequestRecord &request)
{
    return QStringLiteral("<td title=\"%1\">%2</td>")
        .arg(html(request.file), html(sourceText(QFileInfo(request.file).fileName(), request.line)));
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

QString details(const QString &summary, const QString &text)
{
    return QStringLiteral("<details><summary>%1</summary><code>%2</code></details>").arg(summary, html(text));
}

} // namespace

QString fileTable(const Recording &recording)
{
    QString rows;
    for (const FileRecord &file : recording.files) {
        rows += row({textCell(file.name), textCell(file.isScript ? tr("Python file") : tr("command file")),
                     timeCell(file.begin), timeCell(file.end), textCell(file.outcome)});
    }
    return table("files", {tr("File"), tr("Kind"), tr("Begins"), tr("Ends"), tr("Outcome")}, rows);
}

QString findingList(const std::vector<Finding> &findings, int leftOut)
{
    if (findings.empty())
        return {};
    QString items;
    for (const Finding &finding : findings) {
        QStringList where;
        if (std::isfinite(finding.time))
            where << timeText(finding.time);
        if (!finding.file.isEmpty())
            where << sourceText(finding.file, finding.line);
        const bool isLong = finding.text.contains(QLatin1Char('\n'));
        items +=
            QStringLiteral("<li class=\"%1\"><strong>%2</strong> <span class=\"where\">%3</span>%4</li>\n")
                .arg(findingName(finding.kind), html(findingTitle(finding.kind)),
                     html(where.join(QStringLiteral(" · "))),
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
        if (verdicts.isEmpty())
            verdicts << tr("✔ no trip, no error, no limit crossed");
        rows += row({cell(channelLink(recording, i)),
                     numberCell(channel.voltage.value, voltageText(channel.voltage.value)),
                     timeCell(channel.voltage.time),
                     numberCell(channel.current.value, currentText(channel.current.value)),
                     timeCell(channel.current.time), textCell(verdicts.join(QStringLiteral(", "))),
                     textCell(channel.endState)},
                    QStringLiteral(" data-channel=\"%1\"").arg(html(channel.name())));
    }
    return table("peaks",
                 {tr("Channel"), tr("Highest voltage"), tr("at"), tr("Highest current"), tr("at"),
                  tr("Verdict"), tr("At the end")},
                 rows);
}

QString rampTable(const Recording &recording)
{
    QString rows;
    for (std::size_t i = 0; i < recording.channels.size(); ++i) {
        for (const Ramp &ramp : recording.channels.at(i).ramps) {
            const double seconds = ramp.end - ramp.begin;
            const QString shown = std::isfinite(seconds) ? timeText(seconds) : tr("not over");
            rows += row({cell(channelLink(recording, i)), timeCell(ramp.begin), timeCell(ramp.end),
                         numberCell(seconds, shown), numberCell(ramp.from, voltageText(ramp.from)),
                         numberCell(ramp.to, voltageText(ramp.to))});
        }
    }
    if (rows.isEmpty())
        return {};
    return table("ramps", {tr("Channel"), tr("Begins"), tr("Ends"), tr("Takes"), tr("From"), tr("To")}, rows);
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
                 textCell((isDone ? QStringLiteral("✔ ") : QStringLiteral("✖ ")) + outcome)},
                QStringLiteral(" id=\"request-%1\"%2")
                    .arg(number, isDone ? QString() : QStringLiteral(" class=\"bad\"")));
    }
    return table("request-table",
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
    return table("event-table", {tr("Time"), tr("Where"), tr("What")}, rows)
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
