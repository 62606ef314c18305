#include "workbench/app/rehearse_output.h"

#include "workbench/rehearsal/quantity_text.h"
#include "workbench/rehearsal/report_json.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace workbench
{

namespace
{

QString tr(const char *text)
{
    return QCoreApplication::translate("workbench::RehearseOutput", text);
}

QString kindName(rehearsal::TranscriptLine::Kind kind)
{
    switch (kind) {
    case rehearsal::TranscriptLine::Output:
        return QStringLiteral("output");
    case rehearsal::TranscriptLine::Error:
        return QStringLiteral("error");
    case rehearsal::TranscriptLine::Input:
        break;
    }
    return QStringLiteral("input");
}

QString counted(int count, const QString &one, const QString &many)
{
    return QStringLiteral("%1 %2").arg(QString::number(count), count == 1 ? one : many);
}

/// What went wrong with a channel, behind the rest of its line; empty for nothing.
QString verdict(const rehearsal::ChannelRecord &channel)
{
    QString text;
    if (channel.tripped)
        text += tr("; tripped");
    if (channel.reportedError)
        text += tr("; reported an error");
    if (channel.crossed)
        text += tr("; crossed a limit");
    return text;
}

} // namespace

RehearseOutput::RehearseOutput(QIODevice &device, RehearseOptions::Format format)
    : out(&device), isJson(format == RehearseOptions::Format::Json)
{
    out.setCodec("UTF-8");
}

void RehearseOutput::begin(const rehearsal::FileRecord &file, const QString &controller)
{
    if (isJson) {
        printObject({{QStringLiteral("type"), QStringLiteral("begin")},
                     {QStringLiteral("time"), rehearsal::reported(file.begin)},
                     {QStringLiteral("file"), file.name},
                     {QStringLiteral("kind"),
                      file.isScript ? QStringLiteral("script") : QStringLiteral("commands")}});
        return;
    }
    out << (file.isScript ? tr("== %1").arg(file.name) : tr("== %1, to %2").arg(file.name, controller))
        << QLatin1Char('\n');
    out.flush();
}

void RehearseOutput::transcript(const QString &file, double time, rehearsal::TranscriptLine::Kind kind,
                                const QString &text)
{
    if (isJson) {
        printObject({{QStringLiteral("type"), QStringLiteral("transcript")},
                     {QStringLiteral("time"), rehearsal::reported(time)},
                     {QStringLiteral("file"), file},
                     {QStringLiteral("kind"), kindName(kind)},
                     {QStringLiteral("text"), text}});
        return;
    }
    out << text << QLatin1Char('\n');
    out.flush();
}

void RehearseOutput::finding(const rehearsal::Finding &finding)
{
    if (isJson)
        out << QString::fromUtf8(rehearsal::findingLine(finding)) << QLatin1Char('\n');
    else
        printFinding(finding);
    out.flush();
}

void RehearseOutput::printFinding(const rehearsal::Finding &finding)
{
    QStringList where;
    if (!finding.file.isEmpty() && finding.line > 0)
        where << QStringLiteral("%1:%2").arg(finding.file, QString::number(finding.line));
    else if (!finding.file.isEmpty())
        where << finding.file;
    if (std::isfinite(finding.time))
        where << rehearsal::timeText(finding.time);
    const QString head = finding.kind == rehearsal::Finding::Warning ? tr("WARNING") : tr("FAILED");
    out << QStringLiteral("%1 %2: %3").arg(head, where.join(QStringLiteral(", ")), finding.text.trimmed())
        << QLatin1Char('\n');
}

void RehearseOutput::result(const rehearsal::Recording &recording, const QString &page)
{
    if (isJson) {
        printObject({{QStringLiteral("type"), QStringLiteral("result")},
                     {QStringLiteral("exitCode"), recording.exitCode},
                     {QStringLiteral("duration"), rehearsal::reported(recording.duration)},
                     {QStringLiteral("failures"),
                      static_cast<int>(recording.failures.size()) + recording.failuresLeftOut},
                     {QStringLiteral("warnings"), static_cast<int>(recording.warnings.size())},
                     {QStringLiteral("channels"), static_cast<int>(recording.channels.size())},
                     {QStringLiteral("report"), page.isEmpty() ? QJsonValue() : QJsonValue(page)}});
        return;
    }
    printResult(recording, page);
    out.flush();
}

void RehearseOutput::printResult(const rehearsal::Recording &recording, const QString &page)
{
    out << QLatin1Char('\n');
    for (const rehearsal::ChannelRecord &channel : recording.channels) {
        out << tr("%1: at most %2 and %3, at the end %4%5")
                   .arg(channel.name(), rehearsal::voltageText(channel.voltage.value),
                        rehearsal::currentText(channel.current.value), channel.endState, verdict(channel))
            << QLatin1Char('\n');
    }
    if (!recording.interruption.isEmpty())
        out << recording.interruption << QLatin1Char('\n');
    const int failures = static_cast<int>(recording.failures.size()) + recording.failuresLeftOut;
    const auto warnings = static_cast<int>(recording.warnings.size());
    QStringList parts{counted(static_cast<int>(recording.files.size()), tr("file"), tr("files"))};
    const auto of = [&recording](const QString &outcome) {
        return std::count_if(
            recording.files.begin(), recording.files.end(),
            [&outcome](const rehearsal::FileRecord &file) { return file.outcome == outcome; });
    };
    for (const char *const outcome : {"stopped", "not run"}) {
        const auto files = of(QLatin1String(outcome));
        if (files > 0)
            parts << tr("%1 %2").arg(QString::number(files), QLatin1String(outcome));
    }
    parts << (failures == 0 ? tr("nothing failed") : counted(failures, tr("failure"), tr("failures")));
    if (warnings > 0)
        parts << counted(warnings, tr("warning"), tr("warnings"));
    out << parts.join(QStringLiteral(", ")) << QStringLiteral(" (") << rehearsal::timeText(recording.duration)
        << QStringLiteral(")\n");
    if (!page.isEmpty())
        out << tr("Report: %1").arg(page) << QLatin1Char('\n');
}

void RehearseOutput::printObject(const QJsonObject &object)
{
    out << QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) << QLatin1Char('\n');
    out.flush();
}

} // namespace workbench
