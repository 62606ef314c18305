#include "tests/examples/script_bench.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

namespace
{

const QString Script = QStringLiteral("iv_curve.py");

QString item(const char *name)
{
    return QStringLiteral("local:0.2.1.") + QLatin1String(name);
}

} // namespace

Q_DECLARE_METATYPE(std::function<void(ScriptBench &)>)

/// Measuring a curve of a channel of the simulated system, whose load is 1.25 MOhm, into a file.
class TestIvCurveScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { folder.reset(); }
    void cleanupTestCase() { bench.reset(); }

    void writesTheCurve();
    void switchesOnAtZero();
    void endsAtTheCurrentLimit();
    void touchesNothing_data();
    void touchesNothing();
    void neverWritesOverAFile();
    void keepsWhatItHasAfterAProblem_data();
    void keepsWhatItHasAfterAProblem();
    void doesNotSwitchOnAgain();
    void saysThatAChannelIsStillOn();
    void saysThatTheCurrentLimitStays();

private:
    ScriptBench::Outcome run(ScriptBench::Constants constants = {});
    /// The lines of the file without the first cell, which is the time.
    QStringList lines() const;

    std::unique_ptr<ScriptBench> bench;
    std::unique_ptr<QTemporaryDir> folder;
    QString path;
};

void TestIvCurveScript::initTestCase()
{
    bench = std::make_unique<ScriptBench>();
}

void TestIvCurveScript::init()
{
    bench->renew();
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
    path = folder->filePath(QStringLiteral("curve.csv"));
}

ScriptBench::Outcome TestIvCurveScript::run(ScriptBench::Constants constants)
{
    constants.append({QStringLiteral("CSV_FILE"), QStringLiteral("r'%1'").arg(path)});
    return bench->run(Script, constants);
}

QStringList TestIvCurveScript::lines() const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {file.errorString()};
    QStringList result;
    const QStringList all = QString::fromUtf8(file.readAll()).split(QStringLiteral("\r\n"));
    for (const QString &line : all)
        result.append(line.section(QLatin1Char(','), 1));
    return result;
}

void TestIvCurveScript::writesTheCurve()
{
    const ScriptBench::Outcome outcome = run();
    QCOMPARE(outcome.error, QString());
    QCOMPARE(lines(),
             (QStringList{QStringLiteral("voltage set (V),voltage (V),current (A),limited by current"),
                          QStringLiteral("0,0.0,0.0,no"), QStringLiteral("100,100.0,8e-05,no"),
                          QStringLiteral("200,200.0,0.00016,no"), QStringLiteral("300,300.0,0.00024,no"),
                          QStringLiteral("400,400.0,0.00032,no"), QStringLiteral("500,500.0,0.0004,no"),
                          QString()}));
    QVERIFY2(outcome.printed(QStringLiteral("Channel 0.2.1: 300.0 V, 2.400e-04 A")),
             qPrintable(outcome.output));
    QVERIFY2(outcome.printed(QStringLiteral("The curve is in ") + path), qPrintable(outcome.output));
    QVERIFY2(outcome.output.contains(QStringLiteral("Channel 0.2.1 is off, at ")),
             qPrintable(outcome.output));
    QCOMPARE(bench->read(item("Control.on")), QStringLiteral("false"));
    QVERIFY(bench->readNumber(item("Status.voltageMeasure")) <= 60);
    QCOMPARE(bench->readNumber(item("Control.currentSet")), 0.004); // as it was before

    // The times are those at which the values were taken: a step of 100 V takes 2 s and settles for 2 s.
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> rows = file.readAll().split('\n');
    QCOMPARE(rows.at(0).split(',').at(0), QByteArray("time (s since 1970)"));
    const double first = rows.at(1).split(',').at(0).toDouble();
    const double second = rows.at(2).split(',').at(0).toDouble();
    QVERIFY(first > 0);
    QVERIFY2(second - first >= 4 && second - first <= 5, qPrintable(QString::number(second - first)));
}

// Whatever voltage was set before, a channel goes there as soon as it is switched on.
void TestIvCurveScript::switchesOnAtZero()
{
    bench->write(item("Control.voltageSet"), QStringLiteral("1500"));
    QCOMPARE(run().error, QString());
    const QStringList writes = bench->faults().writes();
    const int on = writes.indexOf(item("Control.on=1"));
    QVERIFY(on > 0);
    QCOMPARE(writes.at(on - 1), item("Control.voltageSet=0"));
}

void TestIvCurveScript::endsAtTheCurrentLimit()
{
    bench->write(item("Setup.delayedTripAction"), QStringLiteral("2"));
    const ScriptBench::Outcome outcome = run({{QStringLiteral("MOST_CURRENT"), QStringLiteral("0.0002")}});
    QCOMPARE(outcome.error, QString());
    QCOMPARE(lines().mid(3),
             (QStringList{QStringLiteral("200,200.0,0.00016,no"), QStringLiteral("300,250.0,0.0002,yes"),
                          QString()}));
    QVERIFY2(
        outcome.printed(QStringLiteral("The current limit of 0.0002 A is reached; the curve ends here.")),
        qPrintable(outcome.output));
    QCOMPARE(bench->read(item("Control.on")), QStringLiteral("false"));
    QCOMPARE(bench->readNumber(item("Control.currentSet")), 0.004);
    // The limit is no problem here, and is one again afterwards.
    QCOMPARE(bench->read(item("Event.currentTrip")), QStringLiteral("false"));
    QCOMPARE(bench->read(item("Setup.delayedTripAction")), QStringLiteral("2"));
}

void TestIvCurveScript::touchesNothing_data()
{
    using Problem = std::function<void(ScriptBench &)>;
    QTest::addColumn<Problem>("problem");
    QTest::addColumn<QString>("constant");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("error");
    const Problem none = [](ScriptBench &) {};
    const QString voltages = QStringLiteral("VOLTAGES");
    const QString hundred = QStringLiteral("[100]");
    QTest::newRow("above the limit") << none << voltages << QStringLiteral("[0, 2500, 100]")
                                     << QStringLiteral(
                                            "2500 V is not possible: channel 0.2.1 goes from 0 V to 2000 V.");
    QTest::newRow("below 0 V") << none << voltages << QStringLiteral("[-5]")
                               << QStringLiteral(
                                      "-5 V is not possible: channel 0.2.1 goes from 0 V to 2000 V.");
    QTest::newRow("no such channel") << none << QStringLiteral("CHANNEL") << QStringLiteral("99")
                                     << QStringLiteral("Connection \"local\" has no channel 0.2.99.");
    QTest::newRow("in use") << Problem([](ScriptBench &b) {
        b.write(item("Control.on"), QStringLiteral("1"));
    }) << voltages << hundred
                            << QStringLiteral("Channel 0.2.1 is in use: it is on already.");
    QTest::newRow("tripped before") << Problem([](ScriptBench &b) {
        b.faults().answer(item("Event.currentTrip"), QStringLiteral("true"));
    }) << voltages << hundred << QStringLiteral("Channel 0.2.1 reports a current trip.");
    QTest::newRow("unknown current limit")
        << Problem([](ScriptBench &b) { b.faults().makeUnreadable(item("Control.currentSet")); }) << voltages
        << hundred << QStringLiteral("The current limit cannot be read: the answer is \"error\".");
}

void TestIvCurveScript::touchesNothing()
{
    QFETCH(std::function<void(ScriptBench &)>, problem);
    QFETCH(QString, constant);
    QFETCH(QString, value);
    QFETCH(QString, error);
    problem(*bench);
    QCOMPARE(run({{constant, value}}).error, QStringLiteral("RuntimeError: ") + error);
    QCOMPARE(bench->faults().writes(), QStringList());
    QVERIFY(!QFile::exists(path));
}

void TestIvCurveScript::neverWritesOverAFile()
{
    QCOMPARE(run({{QStringLiteral("VOLTAGES"), QStringLiteral("[10]")}}).error, QString());
    const QStringList before = lines();
    bench->faults().clearWrites();
    const ScriptBench::Outcome outcome = run();
    QVERIFY2(outcome.error.startsWith(QStringLiteral("FileExistsError: ")), qPrintable(outcome.error));
    QCOMPARE(lines(), before);
    QCOMPARE(bench->faults().writes(), QStringList());
}

void TestIvCurveScript::keepsWhatItHasAfterAProblem_data()
{
    using Problem = std::function<void(ScriptBench &)>;
    QTest::addColumn<Problem>("problem");
    QTest::addColumn<QString>("error");
    QTest::newRow("trip") << Problem([](ScriptBench &b) {
        b.faults().answer(item("Event.currentTrip"), QStringLiteral("true"));
    }) << QStringLiteral("Channel 0.2.1 reports a current trip.");
    QTest::newRow("emergency off") << Problem([](ScriptBench &b) {
        b.write(item("Control.emergency"), QStringLiteral("1"));
    }) << QStringLiteral("Channel 0.2.1 reports an emergency off.");
    QTest::newRow("switched off by hand")
        << Problem([](ScriptBench &b) { b.write(item("Control.on"), QStringLiteral("0")); })
        << QStringLiteral("Channel 0.2.1 was switched off by something else.");
    QTest::newRow("voltage is refused")
        << Problem([](ScriptBench &b) { b.faults().refuseToWrite(item("Control.voltageSet")); })
        << QStringLiteral("The service refuses to set channel 0.2.1 to 200 V.");
    QTest::newRow("current cannot be read")
        << Problem([](ScriptBench &b) { b.faults().makeUnreadable(item("Status.currentMeasure")); })
        << QStringLiteral("The measured current cannot be read: the answer is \"error\".");
    QTest::newRow("ramp does not end")
        << Problem([](ScriptBench &b) { b.faults().answer(item("Status.ramping"), QStringLiteral("true")); })
        << QStringLiteral("Channel 0.2.1 did not come to 200 V within 60 s.");
}

void TestIvCurveScript::keepsWhatItHasAfterAProblem()
{
    QFETCH(std::function<void(ScriptBench &)>, problem);
    QFETCH(QString, error);
    bench->when(QStringLiteral("100.0 V"), [this, problem] { problem(*bench); });
    const ScriptBench::Outcome outcome = run();
    QCOMPARE(outcome.error, QStringLiteral("RuntimeError: ") + error);
    QVERIFY2(outcome.printed(QStringLiteral("Stopped: %1 Switching channel 0.2.1 off.").arg(error)),
             qPrintable(outcome.output));
    QVERIFY2(outcome.output.section(QLatin1Char('\n'), -2, -2)
                 .startsWith(QStringLiteral("Channel 0.2.1 is off, at ")),
             qPrintable(outcome.output));
    QCOMPARE(lines().mid(1),
             (QStringList{QStringLiteral("0,0.0,0.0,no"), QStringLiteral("100,100.0,8e-05,no"), QString()}));
    QCOMPARE(bench->read(item("Control.on")), QStringLiteral("false"));
    QVERIFY(bench->readNumber(item("Status.voltageMeasure")) <= 60);
    QCOMPARE(bench->readNumber(item("Control.currentSet")), 0.004);
}

void TestIvCurveScript::doesNotSwitchOnAgain()
{
    bench->when(QStringLiteral("100.0 V"), [this] { bench->write(item("Control.on"), QStringLiteral("0")); });
    QVERIFY(!run().error.isEmpty());
    QCOMPARE(bench->faults().writes().count(item("Control.on=1")), 1);
}

void TestIvCurveScript::saysThatAChannelIsStillOn()
{
    bench->when(QStringLiteral("200.0 V"), [this] { bench->faults().refuseToWrite(item("Control.on")); });
    const ScriptBench::Outcome outcome = run();
    QCOMPARE(outcome.error,
             QStringLiteral("RuntimeError: CHANNEL 0.2.1 IS NOT OFF. Measured voltage: 500.0 (V). "
                            "Switch it off by hand."));
    QVERIFY2(!outcome.output.contains(QStringLiteral("The curve is in")), qPrintable(outcome.output));
    QCOMPARE(lines().size(), 8); // the curve is complete all the same
}

void TestIvCurveScript::saysThatTheCurrentLimitStays()
{
    bench->when(QStringLiteral("200.0 V"),
                [this] { bench->faults().refuseToWrite(item("Control.currentSet")); });
    const ScriptBench::Outcome outcome = run();
    QCOMPARE(outcome.error,
             QStringLiteral("RuntimeError: The service refuses to limit channel 0.2.1 to 0.004 A again."));
    QCOMPARE(bench->read(item("Control.on")), QStringLiteral("false"));
}

QTEST_GUILESS_MAIN(TestIvCurveScript)
#include "tst_iv_curve_script.moc"
