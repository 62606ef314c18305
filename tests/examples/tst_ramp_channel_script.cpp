#include "tests/examples/script_bench.h"

#include <QtTest>

#include <functional>
#include <memory>

namespace
{

const QString Script = QStringLiteral("ramp_channel.py");
const QString Channel = QStringLiteral("local:0.2.1.");
const QString IsOff = QStringLiteral("Channel 0.2.1 is off, at ");

QString item(const char *name)
{
    return Channel + QLatin1String(name);
}

} // namespace

Q_DECLARE_METATYPE(std::function<void(ScriptBench &)>)

/// Ramping a channel of the simulated system from a script.
class TestRampChannelScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { bench->renew(); }
    void cleanupTestCase() { bench.reset(); }

    void reachesTheVoltage();
    void goesToAnotherVoltage();
    void touchesNothing_data();
    void touchesNothing();
    void switchesOffAfterAProblem_data();
    void switchesOffAfterAProblem();
    void doesNotSwitchOnAfterARefusal_data();
    void doesNotSwitchOnAfterARefusal();
    void saysThatAChannelIsStillOn_data();
    void saysThatAChannelIsStillOn();
    void triesAgainToSwitchOff();

private:
    std::unique_ptr<ScriptBench> bench;
};

void TestRampChannelScript::initTestCase()
{
    bench = std::make_unique<ScriptBench>();
}

void TestRampChannelScript::reachesTheVoltage()
{
    const ScriptBench::Outcome outcome = bench->run(Script);
    QCOMPARE(outcome.error, QString());
    QVERIFY2(outcome.printed(QStringLiteral("Channel 0.2.1: 0.0 V, 0.000e+00 A")),
             qPrintable(outcome.output));
    QVERIFY2(outcome.printed(QStringLiteral("Channel 0.2.1: 250.0 V, 2.000e-04 A")),
             qPrintable(outcome.output));
    QVERIFY2(outcome.output.endsWith(QStringLiteral("Channel 0.2.1: 500.0 V, 4.000e-04 A\n"
                                                    "Channel 0.2.1 has reached 500 V. It stays on.\n")),
             qPrintable(outcome.output));
    QCOMPARE(bench->now(), 10.0); // 500 V at 50 V/s
    QCOMPARE(bench->read(item("Control.on")), QStringLiteral("true"));
    QCOMPARE(bench->readNumber(item("Status.voltageMeasure")), 500.0);
    QCOMPARE(bench->readNumber(item("Control.voltageRampspeedUp")), 50.0);
    QCOMPARE(bench->readNumber(item("Control.voltageRampspeedDown")), 50.0);
    QCOMPARE(bench->read(QStringLiteral("local:0.2.0.Control.on")), QStringLiteral("false"));
}

void TestRampChannelScript::goesToAnotherVoltage()
{
    QCOMPARE(bench->run(Script).error, QString());
    const ScriptBench::Outcome outcome =
        bench->run(Script, {{QStringLiteral("VOLTAGE"), QStringLiteral("100.0")}});
    QCOMPARE(outcome.error, QString());
    QVERIFY2(outcome.printed(QStringLiteral("Channel 0.2.1 has reached 100 V. It stays on.")),
             qPrintable(outcome.output));
    QCOMPARE(bench->readNumber(item("Status.voltageMeasure")), 100.0);
}

void TestRampChannelScript::touchesNothing_data()
{
    QTest::addColumn<QString>("constant");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("answeredItem");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("error");
    const QString voltage = QStringLiteral("VOLTAGE");
    QTest::newRow("above the limit") << voltage << QStringLiteral("2000.5") << QString() << QString()
                                     << QStringLiteral(
                                            "2000.5 V is not possible: channel 0.2.1 goes from 0 V to "
                                            "2000 V.");
    QTest::newRow("below 0 V") << voltage << QStringLiteral("-1") << QString() << QString()
                               << QStringLiteral(
                                      "-1 V is not possible: channel 0.2.1 goes from 0 V to 2000 V.");
    QTest::newRow("no number") << voltage << QStringLiteral("float('nan')") << QString() << QString()
                               << QStringLiteral(
                                      "nan V is not possible: channel 0.2.1 goes from 0 V to 2000 V.");
    QTest::newRow("limit is no number")
        << voltage << QStringLiteral("500") << item("Status.voltageLimit") << QStringLiteral("nan")
        << QStringLiteral("The voltage limit cannot be read: the answer is \"nan\".");
    QTest::newRow("no such line") << QStringLiteral("LINE") << QStringLiteral("1") << QString() << QString()
                                  << QStringLiteral("Connection \"local\" has no channel 1.2.1.");
    QTest::newRow("no such module") << QStringLiteral("MODULE") << QStringLiteral("7") << QString()
                                    << QString()
                                    << QStringLiteral("Connection \"local\" has no channel 0.7.1.");
    QTest::newRow("no such channel") << QStringLiteral("CHANNEL") << QStringLiteral("16") << QString()
                                     << QString()
                                     << QStringLiteral("Connection \"local\" has no channel 0.2.16.");
    const struct
    {
        const char *item;
        const char *text;
    } faults[] = {
        {"Event.currentTrip", "a current trip"},
        {"Event.voltageLimitExceeded", "a voltage above its limit"},
        {"Event.currentLimitExceeded", "a current above its limit"},
        {"Event.externalInhibitActive", "an external inhibit"},
        {"Event.emergency", "an emergency off"},
        {"Error.arc", "too many arcs"},
        {"Error.voltageBoundExceeded", "a voltage outside of its bounds"},
        {"Error.currentBoundExceeded", "a current outside of its bounds"},
    };
    for (const auto &fault : faults) {
        QTest::newRow(fault.item)
            << voltage << QStringLiteral("500") << item(fault.item) << QStringLiteral("true")
            << QStringLiteral("Channel 0.2.1 reports %1.").arg(QLatin1String(fault.text));
    }
}

void TestRampChannelScript::touchesNothing()
{
    QFETCH(QString, constant);
    QFETCH(QString, value);
    QFETCH(QString, answeredItem);
    QFETCH(QString, answer);
    QFETCH(QString, error);
    if (!answeredItem.isEmpty())
        bench->faults().answer(answeredItem, answer);
    const ScriptBench::Outcome outcome = bench->run(Script, {{constant, value}});
    QCOMPARE(outcome.error, QStringLiteral("RuntimeError: ") + error);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(bench->faults().writes(), QStringList());
}

void TestRampChannelScript::switchesOffAfterAProblem_data()
{
    using Problem = std::function<void(ScriptBench &)>;
    QTest::addColumn<Problem>("problem");
    QTest::addColumn<QString>("error");
    QTest::addColumn<int>("firstSecond"); // of the fall
    QTest::newRow("trip") << Problem([](ScriptBench &b) {
        b.at(3, [&b] { b.faults().answer(item("Event.currentTrip"), QStringLiteral("true")); });
    }) << QStringLiteral("Channel 0.2.1 reports a current trip.")
                          << 3;
    QTest::newRow("emergency off") << Problem(
        [](ScriptBench &b) { b.at(4, [&b] { b.write(item("Control.emergency"), QStringLiteral("1")); }); })
                                   << QStringLiteral("Channel 0.2.1 reports an emergency off.") << 4;
    QTest::newRow("output held by the current limit") << Problem([](ScriptBench &b) {
        b.write(item("Setup.delayedTripAction"), QStringLiteral("4")); // which would come first
        b.write(item("Control.currentSet"), QStringLiteral("0.0002"));
    }) << QStringLiteral("The current limit holds channel 0.2.1 at 250.0 V.")
                                                      << 10;
    QTest::newRow("voltage outside of its bounds") << Problem([](ScriptBench &b) {
        b.write(item("Setup.delayedTripAction"), QStringLiteral("4"));
        b.write(item("Control.currentSet"), QStringLiteral("0.0002"));
        b.write(item("Control.voltageBounds"), QStringLiteral("10"));
    }) << QStringLiteral("Channel 0.2.1 reports a voltage outside of its bounds.")
                                                   << 10;
    QTest::newRow("fault cannot be read") << Problem([](ScriptBench &b) {
        b.at(2, [&b] { b.faults().makeUnreadable(item("Event.externalInhibitActive")); });
    }) << QStringLiteral("Whether there is an external inhibit cannot be read: the answer is \"error\".")
                                          << 2;
    QTest::newRow("current cannot be read") << Problem([](ScriptBench &b) {
        b.at(2, [&b] { b.faults().makeUnreadable(item("Status.currentMeasure")); });
    }) << QStringLiteral("The measured current cannot be read: the answer is \"error\".")
                                            << 2;
    QTest::newRow("voltage never counts as reached")
        << Problem([](ScriptBench &b) { b.faults().answer(item("Status.ramping"), QStringLiteral("true")); })
        << QStringLiteral("Channel 0.2.1 did not reach 500 V within 60 s.") << 60;
}

void TestRampChannelScript::switchesOffAfterAProblem()
{
    QFETCH(std::function<void(ScriptBench &)>, problem);
    QFETCH(QString, error);
    QFETCH(int, firstSecond);
    problem(*bench);
    const ScriptBench::Outcome outcome = bench->run(Script);
    QCOMPARE(outcome.error, QStringLiteral("RuntimeError: ") + error);
    QVERIFY2(outcome.printed(QStringLiteral("Stopped: %1 Switching channel 0.2.1 off.").arg(error)),
             qPrintable(outcome.output));
    QVERIFY2(outcome.output.section(QLatin1Char('\n'), -2, -2).startsWith(IsOff), qPrintable(outcome.output));
    QVERIFY2(!outcome.output.contains(QStringLiteral("has reached")), qPrintable(outcome.output));
    QCOMPARE(bench->read(item("Control.on")), QStringLiteral("false"));
    QVERIFY(bench->readNumber(item("Status.voltageMeasure")) <= 60);
    QVERIFY2(bench->now() >= firstSecond && bench->now() <= firstSecond + 10,
             qPrintable(QString::number(bench->now())));
}

void TestRampChannelScript::doesNotSwitchOnAfterARefusal_data()
{
    QTest::addColumn<QString>("refused");
    QTest::addColumn<QString>("error");
    QTest::newRow("speed up") << item("Control.voltageRampspeedUp")
                              << QStringLiteral("The service refuses to ramp channel 0.2.1 up by 50 V/s.");
    QTest::newRow("speed down") << item("Control.voltageRampspeedDown")
                                << QStringLiteral(
                                       "The service refuses to ramp channel 0.2.1 down by 50 V/s.");
    QTest::newRow("voltage") << item("Control.voltageSet")
                             << QStringLiteral("The service refuses to set channel 0.2.1 to 500 V.");
    QTest::newRow("on") << item("Control.on")
                        << QStringLiteral("The service refuses to switch channel 0.2.1 on.");
}

void TestRampChannelScript::doesNotSwitchOnAfterARefusal()
{
    QFETCH(QString, refused);
    QFETCH(QString, error);
    bench->faults().refuseToWrite(refused);
    const ScriptBench::Outcome outcome = bench->run(Script);
    QCOMPARE(outcome.error, QStringLiteral("RuntimeError: ") + error);
    QVERIFY2(outcome.output.endsWith(IsOff + QStringLiteral("0.0 V.\n")), qPrintable(outcome.output));
    const bool switchedOn = bench->faults().writes().contains(item("Control.on=1"));
    QCOMPARE(switchedOn, refused == item("Control.on"));
    QCOMPARE(bench->read(item("Control.on")), QStringLiteral("false"));
}

void TestRampChannelScript::saysThatAChannelIsStillOn_data()
{
    using Problem = std::function<void(ScriptBench &)>;
    QTest::addColumn<Problem>("problem");
    QTest::addColumn<QString>("voltage");
    QTest::newRow("switching off is refused") << Problem([](ScriptBench &b) {
        b.faults().refuseToWrite(item("Control.on"));
        b.faults().answer(item("Event.currentTrip"), QStringLiteral("true"));
    }) << QStringLiteral("500.0");
    QTest::newRow("voltage cannot be read")
        << Problem([](ScriptBench &b) { b.faults().makeUnreadable(item("Status.voltageMeasure")); })
        << QStringLiteral("error");
    QTest::newRow("voltage does not fall") << Problem([](ScriptBench &b) {
        b.faults().answer(item("Event.currentTrip"), QStringLiteral("true"));
        b.faults().answer(item("Status.voltageMeasure"), QStringLiteral("61"));
    }) << QStringLiteral("61.0");
    QTest::newRow("voltage does not fall, negative") << Problem([](ScriptBench &b) {
        b.faults().answer(item("Event.currentTrip"), QStringLiteral("true"));
        b.faults().answer(item("Status.voltageMeasure"), QStringLiteral("-61"));
    }) << QStringLiteral("-61.0");
    QTest::newRow("on without a voltage") << Problem([](ScriptBench &b) {
        b.faults().refuseToWrite(item("Control.on"));
        b.faults().answer(item("Event.currentTrip"), QStringLiteral("true"));
        b.faults().answer(item("Status.voltageMeasure"), QStringLiteral("5"));
    }) << QStringLiteral("5.0");
    QTest::newRow("connection is lost")
        << Problem([](ScriptBench &b) { b.service().closeConnection(QStringLiteral("local")); })
        << QStringLiteral("error");
}

void TestRampChannelScript::saysThatAChannelIsStillOn()
{
    QFETCH(std::function<void(ScriptBench &)>, problem);
    QFETCH(QString, voltage);
    bench->at(2, [this, problem] { problem(*bench); });
    const ScriptBench::Outcome outcome = bench->run(Script);
    QCOMPARE(outcome.error,
             QStringLiteral("RuntimeError: CHANNEL 0.2.1 IS NOT OFF. Measured voltage: %1 (V). "
                            "Switch it off by hand.")
                 .arg(voltage));
    QVERIFY2(outcome.output.contains(QStringLiteral("Stopped: ")), qPrintable(outcome.output));
    QVERIFY2(!outcome.output.contains(IsOff), qPrintable(outcome.output));
    QCOMPARE(bench->now(), 62.0);
}

void TestRampChannelScript::triesAgainToSwitchOff()
{
    bench->at(2, [this] { bench->service().closeConnection(QStringLiteral("local")); });
    bench->at(20, [this] {
        bench->service().openConnection(QStringLiteral("local"), QStringLiteral("127.0.0.1:8080"), QString(),
                                        QString());
    });
    const ScriptBench::Outcome outcome = bench->run(Script);
    QVERIFY2(outcome.error.contains(QStringLiteral("cannot be read")), qPrintable(outcome.error));
    QVERIFY2(outcome.output.contains(IsOff), qPrintable(outcome.output));
    QCOMPARE(bench->read(item("Control.on")), QStringLiteral("false"));
}

QTEST_GUILESS_MAIN(TestRampChannelScript)
#include "tst_ramp_channel_script.moc"
