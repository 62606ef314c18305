#include "workbench/rehearsal/report_json.h"

#include "tests/rehearsal/example_recording.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTest>

using rehearsal::Recording;

namespace
{

QJsonObject read(const Recording &recording)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(rehearsal::reportJson(recording), &error);
    if (error.error != QJsonParseError::NoError)
        qFatal("%s", qPrintable(error.errorString()));
    return document.object();
}

QJsonValue at(const QJsonObject &object, const char *list, int index)
{
    return object.value(QLatin1String(list)).toArray().at(index);
}

/// The names of all fields, however deep.
void collectNames(const QJsonValue &value, QSet<QString> &names)
{
    const QJsonArray array = value.toArray();
    for (const QJsonValue &element : array)
        collectNames(element, names);
    const QJsonObject object = value.toObject();
    for (auto field = object.begin(); field != object.end(); ++field) {
        names.insert(field.key());
        collectNames(field.value(), names);
    }
}

} // namespace

class TestReportJson : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsWhatWasRun()
    {
        const QJsonObject report = read(exampleRecording());
        QCOMPARE(report.value(QLatin1String("schema")).toInt(), 1);
        QCOMPARE(report.value(QLatin1String("startedAt")).toString(),
                 QStringLiteral("2030-01-02T03:04:05.000Z"));
        QCOMPARE(report.value(QLatin1String("duration")).toDouble(), 10.0);
        QCOMPARE(report.value(QLatin1String("exitCode")).toInt(), 1);
        QCOMPARE(report.value(QLatin1String("seed")).toInt(), 7);
        QVERIFY(report.value(QLatin1String("plant")).isNull());
        QCOMPARE(at(report, "limits", 0)[QLatin1String("text")].toString(),
                 QStringLiteral("*.voltage<=800 V"));
        QCOMPARE(at(report, "files", 0)[QLatin1String("name")].toString(), QStringLiteral("up & <down>.txt"));
        QCOMPARE(at(report, "files", 0)[QLatin1String("kind")].toString(), QStringLiteral("commands"));
        QCOMPARE(at(report, "files", 1)[QLatin1String("kind")].toString(), QStringLiteral("script"));
        QVERIFY(at(report, "files", 1)[QLatin1String("end")].isNull());
    }

    void tellsOfAChannel()
    {
        const QJsonValue channel = at(read(exampleRecording()), "channels", 0);
        QCOMPARE(channel[QLatin1String("name")].toString(), QStringLiteral("local/0.2.1"));
        QCOMPARE(channel[QLatin1String("voltagePeak")][QLatin1String("value")].toDouble(), 1000.0);
        QCOMPARE(channel[QLatin1String("voltagePeak")][QLatin1String("time")].toDouble(), 6.0);
        QCOMPARE(channel[QLatin1String("currentPeak")][QLatin1String("value")].toDouble(), 0.0008);
        QVERIFY(channel[QLatin1String("tripped")].toBool());
        QCOMPARE(channel[QLatin1String("ramps")].toArray().at(0)[QLatin1String("seconds")].toDouble(), 5.0);
        QVERIFY(channel[QLatin1String("ramps")].toArray().at(1)[QLatin1String("seconds")].isNull());
        QCOMPARE(channel[QLatin1String("marks")].toArray().at(2)[QLatin1String("kind")].toString(),
                 QStringLiteral("error"));
        const QJsonValue trace = channel[QLatin1String("trace")];
        QCOMPARE(trace[QLatin1String("time")].toArray(), (QJsonArray{0, 1, 6, 8, 8, 10}));
        QCOMPARE(trace[QLatin1String("voltage")].toArray(), (QJsonArray{0, 0, 1000, 1000, 0, 0}));
        QCOMPARE(trace[QLatin1String("current")].toArray().size(), 6);
        QCOMPARE(trace[QLatin1String("voltageSet")].toArray().at(1).toDouble(), 1000.0);
    }

    void tellsOfRequestsAndFindings()
    {
        const QJsonObject report = read(exampleRecording());
        const QJsonValue request = at(report, "requests", 0);
        QCOMPARE(request[QLatin1String("line")].toInt(), 3);
        QCOMPARE(request[QLatin1String("latency")].toDouble(), 0.005);
        QCOMPARE(request[QLatin1String("kind")].toString(), QStringLiteral("request"));
        QVERIFY(request[QLatin1String("text")].toString().contains(QStringLiteral("<script>")));
        const QJsonValue write = at(report, "requests", 1);
        QCOMPARE(write[QLatin1String("kind")].toString(), QStringLiteral("write"));
        QVERIFY(write[QLatin1String("latency")].isNull());
        QVERIFY(write[QLatin1String("line")].isNull());
        QCOMPARE(at(report, "failures", 0)[QLatin1String("kind")].toString(), QStringLiteral("limit"));
        QCOMPARE(at(report, "failures", 1)[QLatin1String("line")].toInt(), 12);
        QCOMPARE(at(report, "warnings", 0)[QLatin1String("line")].toInt(), 4);
        QVERIFY(at(report, "warnings", 0)[QLatin1String("time")].isNull());
        QCOMPARE(at(report, "events", 0)[QLatin1String("place")].toString(), QStringLiteral("local/0.2.1"));
        QCOMPARE(at(report, "transcript", 2)[QLatin1String("kind")].toString(), QStringLiteral("error"));
    }

    void everyFieldIsDocumented()
    {
        QFile guide(QStringLiteral(GUIDE));
        QVERIFY(guide.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(guide.readAll()).section(QStringLiteral("## The report"), 1);
        QSet<QString> names;
        collectNames(read(exampleRecording()), names);
        QVERIFY(names.size() > 40);
        for (const QString &name : std::as_const(names))
            QVERIFY2(text.contains(QStringLiteral("`%1`").arg(name)), qPrintable(name));
    }

    void anEmptyRecording()
    {
        const QJsonObject report = read({});
        for (const char *list : {"files", "limits", "channels", "requests", "events", "failures", "warnings"})
            QVERIFY2(report.value(QLatin1String(list)).isArray(), list);
    }

    void aFindingIsOneLine()
    {
        const QByteArray line = rehearsal::findingLine(exampleRecording().failures.at(1));
        QVERIFY(!line.contains('\n'));
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        QCOMPARE(object.value(QLatin1String("type")).toString(), QStringLiteral("failure"));
        QCOMPARE(object.value(QLatin1String("kind")).toString(), QStringLiteral("script"));
        QVERIFY(object.value(QLatin1String("text")).toString().contains(QLatin1Char('\n')));
        const QByteArray warning = rehearsal::findingLine(exampleRecording().warnings.at(0));
        QCOMPARE(QJsonDocument::fromJson(warning).object().value(QLatin1String("type")).toString(),
                 QStringLiteral("warning"));
    }
};

QTEST_GUILESS_MAIN(TestReportJson)
#include "tst_report_json.moc"
