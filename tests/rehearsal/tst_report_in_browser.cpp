#include "tests/rehearsal/browser.h"
#include "tests/rehearsal/rehearsal_program.h"

#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTest>

using browser::show;
using browser::Shown;

namespace
{

/// Writes into the page what a reader would see of it.
const char *const Measure = R"(
const box = element => element.getBoundingClientRect();
const seen = {
  width: innerWidth,
  needed: document.documentElement.scrollWidth,
  figures: [...document.querySelectorAll('figure.channel')].map(figure => ({
    channel: figure.dataset.channel,
    drawings: [...figure.querySelectorAll('svg')].map(svg => ({
      width: box(svg).width, height: box(svg).height,
      trace: svg.querySelector('path.voltage, path.current').getTotalLength(),
    })),
    outside: [...figure.querySelectorAll('.badge, .level, .times span')]
      .filter(e => box(e).left < 0 || box(e).right > innerWidth + 0.5).length,
  })),
  unclosed: [...document.querySelectorAll('.scroll')].filter(e => box(e).right > innerWidth).length,
  small: [...document.querySelectorAll('main *')]
    .filter(e => e.childNodes.length === 1 && e.firstChild.nodeType === 3 && e.checkVisibility()
      && parseFloat(getComputedStyle(e).fontSize) < 9).length,
};
)";

/// The cells' numbers, as the page has them, of the first row that has this attribute.
QVector<double> rowValues(const QString &dom, const QString &attribute)
{
    QVector<double> values;
    const int begin = dom.indexOf(QStringLiteral("<tr ") + attribute);
    const QString row =
        begin < 0 ? QString() : dom.mid(begin, dom.indexOf(QStringLiteral("</tr>"), begin) - begin);
    QRegularExpressionMatchIterator cells =
        QRegularExpression(QStringLiteral("data-value=\"([^\"]+)\"")).globalMatch(row);
    while (cells.hasNext())
        values.append(cells.next().captured(1).toDouble());
    return values;
}

} // namespace

/// The report's page in a real browser: one rehearsal, looked at in several widths.
class TestReportInBrowser : public QObject
{
    Q_OBJECT

private:
    RehearsalProgram program;
    QString reportDir;
    QJsonObject report;

    QByteArray page() const
    {
        QFile file(reportDir + QStringLiteral("/report.html"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QByteArray set =
            R"({"i":"<script>document.title='x'</script>","t":"request","c":[{"c":"setItem","p":{"p":)"
            R"({"l":"0","a":"%1","c":"%2"},"i":"%3","v":"%4","u":""}}],"r":"websocket"})"
            "\n";
        const auto command = [&set](const char *module, const char *channel, const char *item,
                                    const char *value) {
            return QByteArray(set)
                .replace("%1", module)
                .replace("%2", channel)
                .replace("%3", item)
                .replace("%4", value);
        };
        QByteArray commands = "# <img src=x onerror=alert(1)>\nwait 100\n";
        for (const char *channel : {"1", "2", "3"})
            commands +=
                command("2", channel, "Control.voltageSet", "200") + command("2", channel, "Control.on", "1");
        commands += "wait 1500\n" + command("2", "1", "Control.voltageSet", "99999");
        reportDir = program.path(QStringLiteral("report"));
        const auto outcome = RehearsalProgram::run(
            {program.write(QStringLiteral("a<b>&'c.txt"), commands),
             program.write(QStringLiteral("b.py"), "raise ValueError('<script>alert(2)</script>')\n"),
             QStringLiteral("--limit"), QStringLiteral("0.2.2.voltage<=150 V"), QStringLiteral("--faults"),
             program.write(QStringLiteral("faults.json"),
                           R"({"faults":[{"at":1.2,"fault":"short","channel":"0.2.3"}]})"),
             QStringLiteral("--report"), reportDir});
        QCOMPARE(outcome.exitCode, 1);
        report = RehearsalProgram::readReport(reportDir);
        QCOMPARE(report.value(QLatin1String("channels")).toArray().size(), 3);
    }

    void saysNothingInTheConsole()
    {
        Shown shown;
        show(reportDir + QStringLiteral("/report.html"), 1200, shown);
        QCOMPARE(shown.messages, QString());
        QVERIFY(shown.dom.contains(QStringLiteral("<h1>Rehearsal of a&lt;b&gt;&amp;'c.txt, b.py</h1>")));
        QVERIFY(!shown.dom.contains(QStringLiteral("<img")));
        QVERIFY(!shown.dom.contains(QStringLiteral("<script")));
    }

    // So that the silence above means something; and a script that came in all the same is not executed.
    void executesNoScript()
    {
        const QString path =
            program.write(QStringLiteral("intruder.html"),
                          page().replace("</body>", "<script>document.body.id='done'</script></body>"));
        Shown shown;
        show(path, 1200, shown);
        QVERIFY2(shown.messages.contains(QStringLiteral("Content Security Policy")),
                 qPrintable(shown.messages));
        QVERIFY(!shown.dom.contains(QStringLiteral("<body id=\"done\"")));
    }

    void isSeen_data()
    {
        QTest::addColumn<int>("width");
        QTest::newRow("on a screen") << 1200;
        QTest::newRow("on a phone") << 400;
    }

    void isSeen()
    {
        QFETCH(int, width);
        Shown shown;
        show(program.write(QStringLiteral("measured.html"), browser::framed(page(), Measure, width, 900)),
             1400, shown);
        const QJsonObject seen = browser::seen(shown);
        QVERIFY2(!seen.isEmpty(), qPrintable(shown.messages));
        QCOMPARE(seen.value(QLatin1String("width")).toInt(), width);
        QVERIFY2(seen.value(QLatin1String("needed")).toInt() <= width,
                 qPrintable(QString::number(seen.value(QLatin1String("needed")).toInt())));
        QCOMPARE(seen.value(QLatin1String("unclosed")).toInt(), 0);
        QCOMPARE(seen.value(QLatin1String("small")).toInt(), 0);
        const QJsonArray figures = seen.value(QLatin1String("figures")).toArray();
        QCOMPARE(figures.size(), 3);
        for (int i = 0; i < figures.size(); ++i) {
            QCOMPARE(
                figures.at(i)[QLatin1String("channel")].toString(),
                report.value(QLatin1String("channels")).toArray().at(i)[QLatin1String("name")].toString());
            QCOMPARE(figures.at(i)[QLatin1String("outside")].toInt(), 0);
            const QJsonArray drawings = figures.at(i)[QLatin1String("drawings")].toArray();
            QCOMPARE(drawings.size(), 2);
            for (const QJsonValue &drawing : drawings) {
                QVERIFY(drawing[QLatin1String("width")].toDouble() > width * 0.6);
                QVERIFY(drawing[QLatin1String("height")].toDouble() > 100);
                QVERIFY(drawing[QLatin1String("trace")].toDouble() > 900); // of 1000 units from left to right
            }
        }
    }

    void hasTheValuesOfTheReport()
    {
        Shown shown;
        show(reportDir + QStringLiteral("/report.html"), 1200, shown);
        const QJsonArray channels = report.value(QLatin1String("channels")).toArray();
        for (const QJsonValue &channel : channels) {
            const QString name = channel[QLatin1String("name")].toString();
            const QJsonValue voltage = channel[QLatin1String("voltagePeak")];
            const QJsonValue current = channel[QLatin1String("currentPeak")];
            QCOMPARE(rowValues(shown.dom, QStringLiteral("data-channel=\"%1\"").arg(name)),
                     (QVector<double>{voltage[QLatin1String("value")].toDouble(),
                                      voltage[QLatin1String("time")].toDouble(),
                                      current[QLatin1String("value")].toDouble(),
                                      current[QLatin1String("time")].toDouble()}));
        }
        const QJsonArray requests = report.value(QLatin1String("requests")).toArray();
        QCOMPARE(requests.size(), 7);
        for (int i = 0; i < requests.size(); ++i) {
            QCOMPARE(rowValues(shown.dom, QStringLiteral("id=\"request-%1\"").arg(i + 1)),
                     (QVector<double>{requests.at(i)[QLatin1String("time")].toDouble(),
                                      requests.at(i)[QLatin1String("latency")].toDouble()}));
        }
        const int failures = report.value(QLatin1String("failures")).toArray().size();
        QVERIFY(failures >= 3); // a limit, a request, a script
        QVERIFY(shown.dom.contains(QStringLiteral("✖ %1 failures").arg(failures)));
    }
};

QTEST_GUILESS_MAIN(TestReportInBrowser)
#include "tst_report_in_browser.moc"
