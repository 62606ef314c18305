#include "tests/examples/script_bench.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace
{

const QString Lister = QStringLiteral("list_everything.py");
const QString Logger = QStringLiteral("log_measured_values.py");
const QString Echo = QStringLiteral("pass_through_echo.py");
const QString Local = QStringLiteral("local");

OrbRequestItem request(OrbRequestItem::CommandType command, qint32 channel, const QString &value,
                       const QString &rawJson)
{
    OrbRequestItem result;
    result.commandType = command;
    result.line = 1;
    result.address = 2;
    result.channel = channel;
    result.itemName = QStringLiteral("Control.voltageSet");
    result.value = value;
    result.unit = QStringLiteral("V");
    result.rawJson = rawJson;
    return result;
}

} // namespace

/// The scripts that list, log and echo, which leave the simulated system as it is.
class TestReadingScripts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { folder.reset(); }
    void cleanupTestCase() { bench.reset(); }

    void listsEverything();
    void listsWhatCannotBeRead();
    void listsWithoutAConnectionHalfWay();

    void logsEveryChannel();
    void logsOneConnection();
    void leavesCellsEmpty();
    void endsTheLogWithoutAConnection();
    void neverWritesOverALog();

    void echoesRequests();
    void echoesWhatHasNoPlainValue();
    void saysThatRequestsCannotBeHadOrAnswered_data();
    void saysThatRequestsCannotBeHadOrAnswered();
    void noticesThatTheConnectionIsGone();

private:
    void rampUp();
    ScriptBench::Outcome runLogger(ScriptBench::Constants constants);
    QList<QStringList> logRows() const;

    std::unique_ptr<ScriptBench> bench;
    std::unique_ptr<QTemporaryDir> folder;
    QString path;
};

void TestReadingScripts::initTestCase()
{
    qputenv("TZ", "XST-9"); // the log's times are UTC wherever it is written
    bench = std::make_unique<ScriptBench>();
}

void TestReadingScripts::init()
{
    bench->renew();
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
    path = folder->filePath(QStringLiteral("log.csv"));
}

// Channel 0.2.1 is on its way from 0 V to 500 V, at 250 V.
void TestReadingScripts::rampUp()
{
    bench->write(QStringLiteral("local:0.2.1.Control.voltageRampspeedUp"), QStringLiteral("50"));
    bench->write(QStringLiteral("local:0.2.1.Control.voltageSet"), QStringLiteral("500"));
    bench->write(QStringLiteral("local:0.2.1.Control.on"), QStringLiteral("1"));
    bench->letTimePass(5);
}

void TestReadingScripts::listsEverything()
{
    rampUp();
    const ScriptBench::Outcome outcome = bench->run(Lister);
    QCOMPARE(outcome.error, QString());
    const QStringList expected{
        QStringLiteral("Connection bench: connected, crates: 0, modules: 1, channels: 4"),
        QStringLiteral("Connection local: connected, crates: 1, modules: 4, channels: 52"),
        QStringLiteral("  Crate 0.1000: SIM-CC 3.2.0, power on, 27.5 C, info"),
        QStringLiteral("  Module 0.1: SIM-HV12 7.12.0, serial number 480102, 29.0 C, off"),
        QStringLiteral("    channel            set      measured         current  state"),
        QStringLiteral("    0.1.0            0.0 V         0.0 V     0.000e+00 A  off"),
        QStringLiteral("    0.2.1          500.0 V       250.0 V     2.000e-04 A  info"),
    };
    for (const QString &line : expected)
        QVERIFY2(outcome.printed(line), qPrintable(line + QLatin1Char('\n') + outcome.output));
    QCOMPARE(outcome.output.count(QRegularExpression(QStringLiteral(" A  (off|info)\n"))), 56);
    QCOMPARE(outcome.output.count(QStringLiteral("  Module 0.")), 5);
    QCOMPARE(bench->faults().writes(), QStringList());
}

void TestReadingScripts::listsWhatCannotBeRead()
{
    bench->faults().makeUnreadable(QStringLiteral("local:0.2.1.Status.voltageMeasure"));
    bench->faults().makeUnreadable(QStringLiteral("local:0.1000.Control.power"));
    bench->faults().makeUnreadable(QStringLiteral("local:0.3.Status.numberOfChannels"));
    const ScriptBench::Outcome outcome = bench->run(Lister);
    QCOMPARE(outcome.error, QString());
    QVERIFY2(outcome.printed(QStringLiteral("    0.2.1            0.0 V         error     0.000e+00 A  off")),
             qPrintable(outcome.output));
    QVERIFY2(outcome.printed(QStringLiteral("  Crate 0.1000: SIM-CC 3.2.0, power unknown, 27.5 C, off")),
             qPrintable(outcome.output));
    QVERIFY2(outcome.printed(QStringLiteral("    Its channels cannot be read.")), qPrintable(outcome.output));
    QVERIFY2(
        outcome.printed(QStringLiteral("Connection local: connected, crates: 1, modules: 4, channels: 36")),
        qPrintable(outcome.output));
}

void TestReadingScripts::listsWithoutAConnectionHalfWay()
{
    bench->when(QStringLiteral("Module 0.2:"), [this] { bench->service().closeConnection(Local); });
    const ScriptBench::Outcome outcome = bench->run(Lister);
    QCOMPARE(outcome.error, QString());
    QVERIFY2(outcome.printed(QStringLiteral("    0.1.0            0.0 V         0.0 V     0.000e+00 A  off")),
             qPrintable(outcome.output));
    QVERIFY2(
        outcome.printed(QStringLiteral("    0.2.0            error         error           error  error")),
        qPrintable(outcome.output));
}

ScriptBench::Outcome TestReadingScripts::runLogger(ScriptBench::Constants constants)
{
    constants.append({QStringLiteral("CSV_FILE"), QStringLiteral("r'%1'").arg(path)});
    return bench->run(Logger, constants);
}

QList<QStringList> TestReadingScripts::logRows() const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {{file.errorString()}};
    QList<QStringList> rows;
    const QStringList lines =
        QString::fromUtf8(file.readAll()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
    for (const QString &line : lines)
        rows.append(line.split(QLatin1Char(',')));
    return rows;
}

void TestReadingScripts::logsEveryChannel()
{
    rampUp();
    const ScriptBench::Outcome outcome = runLogger({{QStringLiteral("DURATION"), QStringLiteral("2.0")}});
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output, QStringLiteral("3 rounds of 56 channels are in %1\n").arg(path));
    const QList<QStringList> rows = logRows();
    QCOMPARE(rows.size(), 1 + 3 * 56);
    QCOMPARE(rows.first(),
             (QStringList{QStringLiteral("connection"), QStringLiteral("channel"),
                          QStringLiteral("time of voltage (UTC)"), QStringLiteral("voltage (V)"),
                          QStringLiteral("time of current (UTC)"), QStringLiteral("current (A)")}));
    QList<QStringList> ramping;
    for (const QStringList &row : rows) {
        if (row.at(0) == Local && row.at(1) == QStringLiteral("0.2.1"))
            ramping.append(row);
    }
    QCOMPARE(ramping.size(), 3);
    const simulator::SteppedClock zero;
    for (int i = 0; i < ramping.size(); ++i) {
        const QString time =
            QDateTime::fromMSecsSinceEpoch(qRound64((zero.startedAt() + 5 + i) * 1000), Qt::UTC)
                .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
        QCOMPARE(ramping.at(i).at(2), time);
        QCOMPARE(ramping.at(i).at(3).toDouble(), 250.0 + 50 * i);
        QCOMPARE(ramping.at(i).at(4), time);
        QCOMPARE(ramping.at(i).at(5).toDouble(), (250.0 + 50 * i) / 1.25e6);
    }
    QCOMPARE(bench->faults().writes(), QStringList());
}

void TestReadingScripts::logsOneConnection()
{
    const ScriptBench::Outcome outcome =
        runLogger({{QStringLiteral("DURATION"), QStringLiteral("0")},
                   {QStringLiteral("CONNECTIONS"), QStringLiteral("[\"bench\"]")}});
    QCOMPARE(outcome.output, QStringLiteral("1 rounds of 4 channels are in %1\n").arg(path));
    QCOMPARE(logRows().size(), 5);
    QCOMPARE(logRows().last().mid(0, 2), (QStringList{QStringLiteral("bench"), QStringLiteral("0.0.3")}));
}

void TestReadingScripts::leavesCellsEmpty()
{
    bench->faults().makeUnreadable(QStringLiteral("bench:0.0.1.Status.voltageMeasure"));
    const ScriptBench::Outcome outcome =
        runLogger({{QStringLiteral("DURATION"), QStringLiteral("1")},
                   {QStringLiteral("CONNECTIONS"), QStringLiteral("[\"bench\"]")}});
    QCOMPARE(outcome.error, QString());
    QVERIFY2(outcome.printed(QStringLiteral("2 values could not be read; their cells are empty.")),
             qPrintable(outcome.output));
    const QStringList row = logRows().at(2);
    QCOMPARE(row.mid(0, 4),
             (QStringList{QStringLiteral("bench"), QStringLiteral("0.0.1"), QString(), QString()}));
    QVERIFY(!row.at(4).isEmpty());
    QCOMPARE(row.at(5), QStringLiteral("0.0"));
}

void TestReadingScripts::endsTheLogWithoutAConnection()
{
    bench->at(1.5, [this] { bench->service().closeConnection(QStringLiteral("bench")); });
    const ScriptBench::Outcome outcome =
        runLogger({{QStringLiteral("CONNECTIONS"), QStringLiteral("[\"bench\"]")}});
    QCOMPARE(outcome.error,
             QStringLiteral("RuntimeError: No value can be read any more; the log ends after 3 rounds: ")
                 + path);
    QCOMPARE(logRows().size(), 1 + 3 * 4);
    QCOMPARE(logRows().at(5).at(3), QStringLiteral("0.0"));
    QCOMPARE(bench->now(), 2.0);
}

void TestReadingScripts::neverWritesOverALog()
{
    QCOMPARE(runLogger({{QStringLiteral("DURATION"), QStringLiteral("0")}}).error, QString());
    const QList<QStringList> before = logRows();
    const ScriptBench::Outcome outcome = runLogger({});
    QVERIFY2(outcome.error.startsWith(QStringLiteral("FileExistsError: ")), qPrintable(outcome.error));
    QCOMPARE(logRows(), before);
}

void TestReadingScripts::echoesRequests()
{
    const QString raw = QStringLiteral("{\"c\":\"setItem\"}");
    bench->at(1, [this, raw] {
        QCOMPARE(bench->service().passThroughScript(Local), QStringLiteral("echo"));
        const OrbRequestItem set = request(OrbRequestItem::SetItem, 3, QStringLiteral("12.5"), raw);
        QCOMPARE(bench->service().injectPassThroughMessage(Local, set), TarnResult::Success);
    });
    bench->at(2, [this, raw] {
        const OrbRequestItem get = request(OrbRequestItem::GetItem, -1, QString(), raw);
        QCOMPARE(bench->service().injectPassThroughMessage(Local, get), TarnResult::Success);
        QCOMPARE(bench->service().injectPassThroughMessage(Local, get), TarnResult::Success);
    });
    const ScriptBench::Outcome outcome =
        bench->run(Echo, {{QStringLiteral("DURATION"), QStringLiteral("3.0")}});
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output,
             QStringLiteral("Waiting for requests on connection \"local\" for 3 s.\n"
                            "1.2.3 setItem:Control.voltageSet=12.5V\n"
                            "1.2.-1 getItem:Control.voltageSet=V\n"
                            "1.2.-1 getItem:Control.voltageSet=V\n"
                            "3 requests were echoed.\n"));
    const QVector<OrbItemValue> sent = bench->service().takeSentPassThroughMessages(Local);
    QCOMPARE(sent.size(), 3);
    const OrbItemValue &first = sent.first();
    QCOMPARE(first.command(), QStringLiteral("setItem"));
    QCOMPARE(first.id().connectionName, Local);
    QCOMPARE(first.id().line, 1U);
    QCOMPARE(first.id().address, 2U);
    QCOMPARE(first.id().channel, 3);
    QCOMPARE(first.id().itemName, QStringLiteral("Control.voltageSet"));
    QCOMPARE(first.value(), QVariant(QStringLiteral("12.5")));
    QCOMPARE(first.unit(), QStringLiteral("V"));
    QCOMPARE(sent.last().command(), QStringLiteral("getItem"));
    QCOMPARE(sent.last().id().channel, -1);
    QVERIFY(bench->now() >= 3 && bench->now() <= 3.5);
}

void TestReadingScripts::echoesWhatHasNoPlainValue()
{
    const QString raw = QStringLiteral("{\"a\":5,\"b\":[\"x\",1]}");
    bench->at(1, [this, raw] {
        const OrbRequestItem nested = request(OrbRequestItem::SetItem, 3, raw, raw);
        QCOMPARE(bench->service().injectPassThroughMessage(Local, nested), TarnResult::Success);
    });
    QCOMPARE(bench->run(Echo).error, QString());
    const QVector<OrbItemValue> sent = bench->service().takeSentPassThroughMessages(Local);
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.first().value(), QVariant(raw));
}

void TestReadingScripts::saysThatRequestsCannotBeHadOrAnswered_data()
{
    QTest::addColumn<bool>("isActivated");
    QTest::addColumn<QString>("error");
    QTest::newRow("no requests for scripts")
        << false << QStringLiteral("RuntimeError: Connection \"local\" does not hand requests to scripts.");
    QTest::newRow("answers are refused")
        << true << QStringLiteral("RuntimeError: 1 answers could not be sent to connection \"local\".");
}

void TestReadingScripts::saysThatRequestsCannotBeHadOrAnswered()
{
    QFETCH(bool, isActivated);
    bench->faults().refuseToSend();
    if (!isActivated)
        bench->faults().refuseToActivate();
    bench->at(1, [this] {
        const OrbRequestItem get = request(OrbRequestItem::GetItem, 0, QString(), QStringLiteral("{}"));
        QCOMPARE(bench->service().injectPassThroughMessage(Local, get), TarnResult::Success);
    });
    QTEST(bench->run(Echo).error, "error");
}

void TestReadingScripts::noticesThatTheConnectionIsGone()
{
    bench->at(1, [this] { bench->service().closeConnection(Local); });
    const ScriptBench::Outcome outcome = bench->run(Echo);
    QCOMPARE(outcome.error, QStringLiteral("RuntimeError: Connection \"local\" is gone, after 0 requests."));
    QVERIFY(bench->now() < 2);
}

QTEST_GUILESS_MAIN(TestReadingScripts)
#include "tst_reading_scripts.moc"
