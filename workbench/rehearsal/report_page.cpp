#include "workbench/rehearsal/report_page.h"

#include "workbench/rehearsal/channel_picture.h"
#include "workbench/rehearsal/html_text.h"
#include "workbench/rehearsal/quantity_text.h"
#include "workbench/rehearsal/report_style.h"
#include "workbench/rehearsal/report_tables.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

namespace rehearsal
{

namespace
{

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::ReportPage", text);
}

/// Collects the sections of the page and the way to each.
class Page
{
public:
    void section(const char *id, const QString &heading, const QString &content)
    {
        if (content.isEmpty())
            return;
        const QString name = QLatin1String(id);
        links += QStringLiteral("<li><a href=\"#%1\">%2</a></li>").arg(name, html(heading));
        sections += QStringLiteral("<section id=\"%1\"><h2>%2</h2>\n%3</section>\n")
                        .arg(name, html(heading), content);
    }

    QString links;
    QString sections;
};

QString title(const Recording &recording)
{
    QStringList names;
    for (const FileRecord &file : recording.files)
        names << QFileInfo(file.name).fileName();
    constexpr int MostNames = 3;
    if (names.size() > MostNames)
        return tr("Rehearsal of %1 files").arg(names.size());
    return tr("Rehearsal of %1").arg(names.join(QStringLiteral(", ")));
}

QString verdict(const Recording &recording)
{
    const auto failures = static_cast<int>(recording.failures.size()) + recording.failuresLeftOut;
    const auto warnings = static_cast<int>(recording.warnings.size());
    const QString warned = warnings == 0 ? tr("No warnings.") : tr("Warnings: %1.").arg(warnings);
    QString head = tr("✔ Nothing failed");
    QString text = tr("No request failed or timed out, no limit was crossed, no channel tripped or reported "
                      "an error, no script raised. %1")
                       .arg(warned);
    if (failures > 0) {
        head = failures == 1 ? tr("✖ 1 failure") : tr("✖ %1 failures").arg(failures);
        const int more = recording.failuresLeftOut;
        const QString unlisted = more == 0 ? QString() : tr(", and %1 more").arg(more);
        text = tr("%1%2. %3").arg(findingCounts(recording.failures), unlisted, warned);
    }
    if (!recording.interruption.isEmpty()) {
        head += tr(" – interrupted");
        text = recording.interruption + QLatin1Char(' ') + text;
    }
    const bool isGood = failures == 0 && recording.interruption.isEmpty();
    return QStringLiteral(
               "<div class=\"verdict %1\" data-exit-code=\"%2\"><strong>%3</strong><p>%4</p></div>\n")
        .arg(isGood ? QStringLiteral("good") : QStringLiteral("bad"), QString::number(recording.exitCode),
             html(head), html(text));
}

QString fact(const QString &name, const QString &value)
{
    return QStringLiteral("<div><dt>%1</dt><dd>%2</dd></div>").arg(html(name), html(value));
}

QString facts(const Recording &recording)
{
    QStringList limits;
    for (const Limit &limit : recording.limits)
        limits << limit.text;
    return QStringLiteral("<dl class=\"facts\">")
        + fact(tr("Begun"), recording.startedAt.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss t")))
        + fact(tr("Took"), timeText(recording.duration))
        + fact(tr("Plant"), recording.plant.isEmpty() ? tr("built in") : recording.plant)
        + fact(tr("Seed"), QString::number(recording.seed))
        + fact(tr("Limits"), limits.isEmpty() ? tr("none given") : limits.join(QLatin1Char('\n')))
        + fact(tr("Channels touched"), QString::number(recording.channels.size()))
        + fact(tr("Exit code"), QString::number(recording.exitCode)) + QStringLiteral("</dl>\n");
}

QString pictures(const Recording &recording)
{
    if (recording.channels.empty())
        return QStringLiteral("<p>%1</p>\n").arg(html(tr("No channel was touched.")));
    QString result = pictureKey();
    for (std::size_t i = 0; i < recording.channels.size(); ++i)
        result += channelPicture(recording, i);
    return result;
}

} // namespace

QString reportPage(const Recording &recording)
{
    Page page;
    page.section("failures", tr("Failures"),
                 findingList(recording, recording.failures, recording.failuresLeftOut));
    page.section("warnings", tr("Warnings"), findingList(recording, recording.warnings, 0));
    page.section("run", tr("Run"), facts(recording));
    page.section("file-list", tr("Files"), fileTable(recording));
    page.section("peak-list", tr("Peaks"), peakTable(recording));
    page.section("crossing-list", tr("Crossed limits"), crossingTable(recording));
    page.section("channels", tr("Channels over time"), pictures(recording));
    page.section("ramp-list", tr("Ramps"), rampTable(recording));
    page.section("requests", tr("Requests and writes"), requestTable(recording));
    page.section("events", tr("Events and faults"), eventTable(recording));
    page.section("transcript", tr("Transcript"), transcriptText(recording));

    const QString name = html(title(recording));
    return QStringLiteral("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                          "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                          // Whatever a file may have brought in: nothing is executed, nothing is fetched.
                          "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                          "style-src 'unsafe-inline'; "
                          "img-src data:\">\n<link rel=\"icon\" href=\"data:,\">\n<title>")
        + name + QStringLiteral("</title>\n<style>") + reportStyle()
        + QStringLiteral("</style>\n</head>\n<body>\n<main>\n<h1>") + name + QStringLiteral("</h1>\n")
        + verdict(recording) + QStringLiteral("<nav aria-label=\"%1\"><ul>").arg(html(tr("Sections")))
        + page.links + QStringLiteral("</ul></nav>\n") + page.sections
        + QStringLiteral("<footer>%1</footer>\n</main>\n</body>\n</html>\n")
              .arg(html(tr("terminal-workbench %1. Everything here was simulated; no hardware was reached. "
                           "The same in "
                           "numbers: report.json, beside this page.")
                            .arg(recording.programVersion)));
}

} // namespace rehearsal
