#include "workbench/rehearsal/report_page.h"

#include "tests/rehearsal/example_recording.h"
#include "workbench/rehearsal/report_tables.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>

using rehearsal::Finding;
using rehearsal::Mark;
using rehearsal::Recording;
using rehearsal::reportPage;

namespace
{

QString part(const QString &page, const char *from, const char *to)
{
    const int begin = page.indexOf(QLatin1String(from));
    const int end = page.indexOf(QLatin1String(to), begin);
    return begin < 0 || end < 0 ? QString() : page.mid(begin, end - begin);
}

} // namespace

class TestReportPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Every tag is closed, every attribute quoted, whatever the files and requests were called.
    void isWellFormed_data()
    {
        QTest::addColumn<bool>("isEmpty");
        QTest::newRow("with everything") << false;
        QTest::newRow("with nothing") << true;
    }

    void isWellFormed()
    {
        QFETCH(bool, isEmpty);
        QString page = reportPage(isEmpty ? Recording() : exampleRecording());
        // Elements that need no end in HTML get one for the reader of XML.
        page.replace(QRegularExpression(QStringLiteral("<(meta|link)([^>]*)>")), QStringLiteral("<\\1\\2/>"));
        page.remove(QStringLiteral("<!DOCTYPE html>"));
        QXmlStreamReader reader(page);
        while (!reader.atEnd())
            reader.readNext();
        QVERIFY2(!reader.hasError(),
                 qPrintable(reader.errorString() + QLatin1Char(' ') + QString::number(reader.lineNumber())));
    }

    void nothingOfAFileIsMarkUp()
    {
        const QString page = reportPage(exampleRecording());
        QVERIFY(!page.contains(QStringLiteral("<script")));
        QVERIFY(!page.contains(QStringLiteral("<img")));
        QVERIFY(!page.contains(QStringLiteral("<down>")));
        QVERIFY(!page.contains(QStringLiteral("Rehearsal <controller>")));
        QVERIFY(page.contains(QStringLiteral("&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt;")));
        QVERIFY(page.contains(QStringLiteral("up &amp; &lt;down&gt;.txt")));
    }

    void needsNothingElse()
    {
        const QString page = reportPage(exampleRecording());
        QVERIFY(!page.contains(QRegularExpression(QStringLiteral("(src|href)=\"(?!#|data:,)"))));
        QVERIFY(!page.contains(QStringLiteral("url(")));
        QVERIFY(!page.contains(QStringLiteral("@import")));
        QVERIFY(page.contains(QStringLiteral("default-src 'none'")));
    }

    void everyChannelHasItsPicture()
    {
        const QString page = reportPage(exampleRecording());
        for (const char *name : {"local/0.2.1", "local/0.3.0"}) {
            const QString figure = part(
                page, qPrintable(QStringLiteral("data-channel=\"%1\"><figcaption>").arg(QLatin1String(name))),
                "</figure>");
            QVERIFY2(!figure.isEmpty(), name);
            QCOMPARE(figure.count(QStringLiteral("<path class=\"voltage\"")), 1);
            QCOMPARE(figure.count(QStringLiteral("<path class=\"current\"")), 1);
            QCOMPARE(figure.count(QStringLiteral("<path class=\"set\"")), 1);
        }
    }

    void aPictureShowsLimitsAndMarks()
    {
        const QString figure = part(reportPage(exampleRecording()), "<figure", "</figure>");
        QVERIFY(figure.contains(QStringLiteral("<path class=\"limit\"")));
        QVERIFY(figure.contains(QStringLiteral(">limit </span>800 V</span>")));
        QVERIFY(figure.contains(QStringLiteral(">plant </span>2000 V</span>")));
        QVERIFY2(figure.contains(QStringLiteral("beyond the picture: plant&#39;s limit 4 mA")),
                 "a limit that would make the picture flat is told instead");
        QCOMPARE(figure.count(QStringLiteral("<path class=\"mark command\"")), 2); // in both panels
        QCOMPARE(figure.count(QStringLiteral("<path class=\"mark error\"")), 2);
        QCOMPARE(figure.count(QStringLiteral("<path class=\"mark crossed\"")), 2);
        QVERIFY(figure.contains(QStringLiteral("href=\"#request-1\"")));
        QVERIFY(figure.contains(QStringLiteral("8.000 s: Event.currentTrip")));
        QVERIFY(figure.contains(QStringLiteral("tripped")));
    }

    void ofMuchTheGravestIsTold()
    {
        Recording recording = exampleRecording();
        std::vector<Mark> &marks = recording.channels.front().marks;
        marks.clear();
        for (int i = 0; i < 40; ++i)
            marks.push_back({Mark::Event, 0.1 * i, -1, QStringLiteral("Event.endOfRamp")});
        marks.push_back({Mark::Error, 9, -1, QStringLiteral("Error.currentTrip")});
        const QString list = part(reportPage(recording), "<ul class=\"happened\">", "</ul>");
        QCOMPARE(list.count(QStringLiteral("<li")), 13);
        QVERIFY2(list.contains(QStringLiteral("9.000 s: Error.currentTrip</li><li>and 29 more</li>")),
                 qPrintable(list));
    }

    // Not where the first is that shares it.
    void aBadgeIsWhereTheGravestIs()
    {
        Recording recording = exampleRecording();
        recording.channels.front().marks = {{Mark::Event, 2, -1, QStringLiteral("a")},
                                            {Mark::Fault, 2.2, -1, QStringLiteral("b")},
                                            {Mark::Event, 2.4, -1, QStringLiteral("c")}};
        const QString strip = part(reportPage(recording), "<div class=\"strip wide\">", "</div></div>");
        QVERIFY2(strip.contains(QStringLiteral("<span class=\"badge fault\" style=\"--at:22.00%\" "
                                               "title=\"2.000 s: a\n2.200 s: b\n2.400 s: c\">⚡3</span>")),
                 qPrintable(strip));
    }

    void aRefusedCommandLooksRefused()
    {
        Recording recording = exampleRecording();
        recording.channels.front().marks = {{Mark::Command, 1, 0, QStringLiteral("a")},
                                            {Mark::Command, 1.1, 1, QStringLiteral("b")},
                                            {Mark::Command, 5, 0, QStringLiteral("c")}};
        const QString strip = part(reportPage(recording), "<div class=\"strip wide\">", "</div></div>");
        QVERIFY2(strip.contains(QStringLiteral(
                     "<a class=\"badge command error\" href=\"#request-1\" style=\"--at:11.00%\" "
                     "title=\"1.000 s: a\n1.100 s: b\" aria-label=\"requests 1 to 2, failed\">✖1–2</a>")),
                 qPrintable(strip));
        QVERIFY2(strip.contains(QStringLiteral("aria-label=\"request 1\">1</a>")), qPrintable(strip));
    }

    // A page full of pictures of nothing would hide the others.
    void aQuietChannelIsFolded()
    {
        Recording recording = exampleRecording();
        rehearsal::ChannelRecord quiet(2000, 500, 0.01);
        quiet.controller = QStringLiteral("local");
        quiet.address = channelAddress(0, 3, 7);
        quiet.trace.add({0, 0, 0, 0});
        quiet.trace.add({10, 0, 0, 0});
        quiet.marks.push_back({Mark::Command, 1, 0, QStringLiteral("Control.on 0")});
        recording.channels.push_back(quiet);
        QString page = reportPage(recording);
        QCOMPARE(page.count(QStringLiteral("<details><summary>0 V and 0 A all the time</summary>")), 1);
        const QString figure = part(page, "data-channel=\"local/0.3.7\"><figcaption>", "</figure>");
        QVERIFY(figure.contains(QStringLiteral("<details><summary>0 V and 0 A")));
        QCOMPARE(figure.count(QStringLiteral("<path class=\"voltage\"")), 1);
        QVERIFY(part(page, "<tr data-channel=\"local/0.3.7\"", "</tr>")
                    .contains(QStringLiteral(">0 V</td><td class=\"number\" data-value=\"0\">–</td>")));

        recording.channels.back().marks.push_back(
            {Mark::Event, 2, -1, QStringLiteral("Event.externalInhibit")});
        page = reportPage(recording);
        QVERIFY(!page.contains(QStringLiteral("0 V and 0 A all the time")));
    }

    // A line for each of them would make the picture grey.
    void manyMarksLeaveThePictureReadable()
    {
        Recording recording = exampleRecording();
        std::vector<Mark> &marks = recording.channels.front().marks;
        marks.clear();
        for (int i = 0; i < 500; ++i)
            marks.push_back({i % 100 == 50 ? Mark::Error : Mark::Event, 0.02 * i, -1, QString()});
        const QString figure = part(reportPage(recording), "<figure", "</figure>");
        QCOMPARE(figure.count(QStringLiteral("<path class=\"mark error\"")), 2 * 5);
        QVERIFY(figure.count(QStringLiteral("<path class=\"mark event\"")) > 2 * 50);
        QVERIFY(figure.count(QStringLiteral("<path class=\"mark event\"")) <= 2 * 100);
    }

    // From 0 to 2000 V in 240 units, and 10 s in 1000.
    void theTraceIsWhereItBelongs()
    {
        const QString figure = part(reportPage(exampleRecording()), "<figure", "</figure>");
        QVERIFY2(figure.contains(QStringLiteral(
                     "<path class=\"voltage\" d=\"M0 240L100 240L600 120L800 120L800 240L1000 240\"/>")),
                 qPrintable(part(figure, "<path class=\"voltage\"", "/>")));
        QVERIFY2(figure.contains(QStringLiteral("<path class=\"set\" d=\"M0 240H100V120H800V240H1000\"/>")),
                 qPrintable(part(figure, "<path class=\"set\"", "/>")));
    }

    void aFailureLeadsToWhereItIsSeen()
    {
        Recording recording = exampleRecording();
        Finding refused;
        refused.kind = Finding::Request;
        refused.time = recording.requests.back().time;
        refused.file = recording.requests.back().file;
        recording.failures.push_back(refused);
        Finding unlisted = refused;
        unlisted.time = 99;
        recording.failures.push_back(unlisted);
        const QString page = reportPage(recording);
        QVERIFY(part(page, "<li class=\"limit\">", "</li>")
                    .contains(QStringLiteral("5.000 s · <a href=\"#channel-0\">local/0.2.1</a> · ")));
        const QString request = part(page, "<li class=\"request\">", "</li>");
        QVERIFY2(request.contains(QStringLiteral("<a href=\"#request-2\">request 2</a>")),
                 qPrintable(request));
        QCOMPARE(part(page, "<section id=\"failures\">", "</section>").count(QStringLiteral("request 2")), 1);
    }

    void tellsOfCrossedLimits()
    {
        const QString table = part(reportPage(exampleRecording()), "<table id=\"crossings\">", "</table>");
        QVERIFY2(table.contains(QStringLiteral("<td>*.voltage&lt;=800 V</td><td class=\"number\" "
                                               "data-value=\"2\">2</td><td class=\"number\" "
                                               "data-value=\"5\">5.000 s</td><td class=\"number\" "
                                               "data-value=\"1000\">1000 V</td>")),
                 qPrintable(table));
    }

    // The first screen answers: did it pass, what failed, when and where; how it was run comes after.
    void failuresComeFirst()
    {
        const QString page = reportPage(exampleRecording());
        QVERIFY(part(page, "<div class=\"verdict", "</div>")
                    .contains(QStringLiteral("1 × limit crossed, 1 × script failed. Warnings: 1.")));
        const QStringList order{QStringLiteral("<h1>"), QStringLiteral("<div class=\"verdict"),
                                QStringLiteral("<section id=\"failures\">"),
                                QStringLiteral("<section id=\"warnings\">"),
                                QStringLiteral("<section id=\"run\">")};
        QVector<int> places;
        for (const QString &element : order)
            places << page.indexOf(element);
        QVERIFY(places.first() > 0);
        QVERIFY(std::is_sorted(places.begin(), places.end()));
    }

    void failuresAreInTheOrderOfTime()
    {
        Recording recording;
        recording.failures.resize(4);
        recording.failures[0].time = 2;
        recording.failures[1].time = rehearsal::NoTime;
        recording.failures[2].time = 0.5;
        recording.failures[3].time = 1;
        QStringList times;
        const QStringList items =
            part(reportPage(recording), "<ul class=\"findings\">", "</ul>").split(QStringLiteral("<li"));
        for (const QString &item : items.mid(1))
            times << item.section(QStringLiteral("where\">"), 1).section(QLatin1Char('<'), 0, 0);
        QCOMPARE(times,
                 (QStringList{QStringLiteral("0.500 s"), QStringLiteral("1.000 s"), QStringLiteral("2.000 s"),
                              QString()}));
    }

    void aFileThatFailedIsSeen()
    {
        const QString table = part(reportPage(exampleRecording()), "<table id=\"files\">", "</table>");
        QCOMPARE(table.count(QStringLiteral("<tr class=\"bad\">")), 2);
        QVERIFY(table.contains(QStringLiteral("<td class=\"outcome\">✖ failed</td>")));
        Recording good = exampleRecording();
        good.files.front().outcome = QStringLiteral("done");
        QVERIFY(reportPage(good).contains(QStringLiteral("<td class=\"outcome\">✔ done</td>")));
    }

    void linksLeadSomewhere()
    {
        const QString page = reportPage(exampleRecording());
        QRegularExpressionMatchIterator links =
            QRegularExpression(QStringLiteral("href=\"#([^\"]+)\"")).globalMatch(page);
        int count = 0;
        while (links.hasNext()) {
            const QString target = links.next().captured(1);
            QCOMPARE(page.count(QStringLiteral(" id=\"%1\"").arg(target)), 1);
            ++count;
        }
        QVERIFY(count > 10);
    }

    void verdicts_data()
    {
        QTest::addColumn<int>("failures");
        QTest::addColumn<bool>("isInterrupted");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isGood");
        QTest::newRow("good") << 0 << false << QStringLiteral("✔ Nothing failed") << true;
        QTest::newRow("one") << 1 << false << QStringLiteral("✖ 1 failure<") << false;
        QTest::newRow("two") << 2 << false << QStringLiteral("✖ 2 failures") << false;
        QTest::newRow("interrupted") << 0 << true << QStringLiteral("interrupted") << false;
    }

    void verdicts()
    {
        QFETCH(int, failures);
        QFETCH(bool, isInterrupted);
        QFETCH(QString, text);
        QFETCH(bool, isGood);
        Recording recording;
        recording.failures.resize(static_cast<std::size_t>(failures));
        if (isInterrupted)
            recording.interruption = QStringLiteral("Interrupted by Ctrl+C.");
        const QString page = part(reportPage(recording), "<div class=\"verdict", "</div>");
        QVERIFY2(page.contains(text), qPrintable(page));
        QCOMPARE(page.contains(QStringLiteral("verdict good")), isGood);
    }

    void tellsWhatIsNotListed()
    {
        Recording recording = exampleRecording();
        recording.requestsLeftOut = 17;
        recording.failuresLeftOut = 23;
        const QString page = reportPage(recording);
        QVERIFY(page.contains(QStringLiteral("17 more are not listed")));
        QVERIFY(page.contains(QStringLiteral("23 more are not listed")));
        QVERIFY(page.contains(QStringLiteral("✖ 25 failures")));
        QVERIFY(part(page, "<div class=\"verdict", "</div>")
                    .contains(QStringLiteral("1 × script failed, and 23 more. Warnings: 1.")));
    }

    // Of each channel not more than may be listed, and of a thousand channels too much for a page.
    void rampsAreBounded()
    {
        Recording recording;
        rehearsal::ChannelRecord ramped = exampleRecording().channels.front();
        ramped.ramps.assign(1000, {1, 2, 0, 100});
        ramped.rampsLeftOut = 7;
        recording.channels.assign(11, ramped);
        const QString table = rehearsal::rampTable(recording);
        QCOMPARE(table.count(QStringLiteral("<tr>")), 1 + rehearsal::MostListedRamps);
        QVERIFY2(table.contains(QStringLiteral("1077 more are not listed")), qPrintable(table.right(200)));
    }

    // The terminal shows it later than it came in.
    void aRequestThatWasNotTakenIsLedTo()
    {
        Recording recording = exampleRecording();
        rehearsal::RequestRecord refused = recording.requests.front();
        refused.isTaken = false;
        refused.outcome = QStringLiteral("refused");
        // The same file again.
        for (const double time : {2.0, 3.0, 5.0}) {
            refused.time = time;
            recording.requests.push_back(refused);
        }
        Finding failure;
        failure.kind = Finding::Request;
        failure.time = 3.02;
        failure.file = refused.file;
        failure.line = refused.line;
        recording.failures = {failure};
        const QString request = part(reportPage(recording), "<li class=\"request\">", "</li>");
        QVERIFY2(request.contains(QStringLiteral("<a href=\"#request-4\">request 4</a>")),
                 qPrintable(request));
    }

    void manyFailuresAmongManyChannelsTakeNoTime()
    {
        Recording recording;
        rehearsal::ChannelRecord channel(10, 500, 0.01);
        channel.controller = QStringLiteral("local");
        for (int i = 0; i < 20000; ++i) {
            channel.address = channelAddress(0, quint32(i / 1000), i % 1000);
            recording.channels.push_back(channel);
        }
        Finding failure;
        failure.kind = Finding::Error;
        recording.failures.assign(1000, failure);
        recording.failures.back().channel = recording.channels.back().name();
        QElapsedTimer timer;
        timer.start();
        const QString list = rehearsal::findingList(recording, recording.failures, 0);
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(list.count(QStringLiteral("<a href=\"#channel-")), 1);
        QVERIFY(list.contains(QStringLiteral("<a href=\"#channel-19999\">local/0.19.999</a>")));
    }
};

QTEST_GUILESS_MAIN(TestReportPage)
#include "tst_report_page.moc"
