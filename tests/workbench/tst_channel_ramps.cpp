#include "workbench/simulator/channel.h"

#include "tests/workbench/channel_bench.h"

#include <QtTest>

/// The way of the voltage to what is asked for.
class TestChannelRamps : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rampsUp_data();
    void rampsUp();
    void rampsDownWhenSwitchedOff();
    void newSetValueWhileOff();
    void newSetValueMidway_data();
    void newSetValueMidway();
    void switchedOffMidway();
    void switchingOnTwiceDoesNotStartOver();
    void ownRampspeeds();
    void rampspeedWhileRamping();
    void moduleRampspeedReplacesOwn();
    void rampspeedRange_data();
    void rampspeedRange();
    void endOfRamp();
    void endOfRampWaitsForTheVoltage();
    void endOfRampThatTheCurrentLimits();
    void aHigherTargetIsEntered();
    void rampEvents();
};

void TestChannelRamps::rampsUp_data()
{
    QTest::addColumn<double>("rampspeed");
    QTest::newRow("a tenth of a percent a second") << 0.1;
    QTest::newRow("two percent") << 2.0;
    QTest::newRow("ten percent") << 10.0;
    QTest::newRow("fifty percent") << 50.0;
    QTest::newRow("a hundred percent") << 100.0;
}

void TestChannelRamps::rampsUp()
{
    QFETCH(double, rampspeed);
    ChannelBench bench;
    QVERIFY(bench.setModule("Control.voltageRampspeed", QByteArray::number(rampspeed).constData()));
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    const double duration = 1000 / (Nominal * rampspeed / 100);
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    for (int tenth = 1; tenth < 10; ++tenth) {
        bench.advance(duration / 10);
        QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 100.0 * tenth, OnePercent));
        QVERIFY(bench.isTrue("Status.ramping"));
        QVERIFY(bench.isTrue("Status.voltageRamping"));
        QVERIFY(bench.isTrue("Status.voltageRampUp"));
        QVERIFY(!bench.isTrue("Status.voltageRampDown"));
    }
    bench.advance(duration / 10 * 1.01);
    QCOMPARE(bench.number("Status.voltageMeasure"), 1000.0);
    QVERIFY(!bench.isTrue("Status.ramping"));
    QVERIFY(!bench.isTrue("Status.voltageRampUp"));
}

void TestChannelRamps::rampsDownWhenSwitchedOff()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(bench.set("Control.on", "0"));
    QVERIFY(!bench.isTrue("Status.on"));
    bench.advance(2);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 600, OnePercent));
    QVERIFY(bench.isTrue("Status.voltageRampDown"));
    QVERIFY(!bench.isTrue("Status.voltageRampUp"));
    bench.advance(3.01);
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    QVERIFY(!bench.isTrue("Status.ramping"));
    QCOMPARE(bench.number("Control.voltageSet"), 1000.0);
}

void TestChannelRamps::newSetValueWhileOff()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "700"));
    bench.advance(60);
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    QVERIFY(!bench.isTrue("Status.ramping"));
}

void TestChannelRamps::newSetValueMidway_data()
{
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<double>("oneSecondLater");
    QTest::newRow("further up") << QByteArrayLiteral("1600") << 800.0;
    QTest::newRow("back down") << QByteArrayLiteral("100") << 400.0;
    QTest::newRow("to where it is") << QByteArrayLiteral("600") << 600.0;
}

void TestChannelRamps::newSetValueMidway()
{
    QFETCH(QByteArray, target);
    QFETCH(double, oneSecondLater);
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(3);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 600, OnePercent));
    QVERIFY(bench.set("Control.voltageSet", target.constData()));
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 600, OnePercent));
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), oneSecondLater, OnePercent));
    bench.advance(60);
    QCOMPARE(bench.number("Status.voltageMeasure"), target.toDouble());
}

void TestChannelRamps::switchedOffMidway()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(3);
    QVERIFY(bench.set("Control.on", "0"));
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 400, OnePercent));
}

void TestChannelRamps::switchingOnTwiceDoesNotStartOver()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(3);
    QVERIFY(bench.set("Control.on", "1"));
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    bench.advance(2.01);
    QCOMPARE(bench.number("Status.voltageMeasure"), 1000.0);
}

void TestChannelRamps::ownRampspeeds()
{
    ChannelBench bench;
    QCOMPARE(bench.number("Control.voltageRampspeedUp"), 200.0);
    QCOMPARE(bench.number("Control.voltageRampspeedDown"), 200.0);
    QVERIFY(bench.set("Control.voltageRampspeedUp", "50"));
    QVERIFY(bench.set("Control.voltageRampspeedDown", "500"));
    QCOMPARE(bench.number("Control.voltageRampspeedUp"), 50.0);
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(10);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 500, OnePercent));
    QVERIFY(bench.set("Control.on", "0"));
    bench.advance(0.5);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 250, OnePercent));
}

void TestChannelRamps::rampspeedWhileRamping()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(1);
    QVERIFY(bench.set("Control.voltageRampspeedUp", "50"));
    bench.advance(4);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 400, OnePercent));
    QVERIFY(bench.setModule("Control.voltageRampspeed", "20"));
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 800, OnePercent));
}

void TestChannelRamps::moduleRampspeedReplacesOwn()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageRampspeedUp", "50"));
    QCOMPARE(bench.number("Control.voltageRampspeedUp"), 50.0);
    QVERIFY(bench.setModule("Control.voltageRampspeed", "20"));
    QCOMPARE(bench.number("Control.voltageRampspeedUp"), 400.0);
    QVERIFY(bench.set("Control.currentRampspeedUp", "1"));
    QCOMPARE(bench.number("Control.currentRampspeedUp"), 1.0);
    QVERIFY(bench.setModule("Control.currentRampspeed", "50"));
    QCOMPARE(bench.number("Control.currentRampspeedUp"), 2.0);
}

void TestChannelRamps::rampspeedRange_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("accepted");
    const auto row = [](const char *name, const char *item, const char *value, bool accepted) {
        QTest::newRow(name) << QByteArray(item) << QByteArray(value) << accepted;
    };
    row("slowest", "Control.voltageRampspeedUp", "0.02", true);
    row("too slow", "Control.voltageRampspeedUp", "0.0199", false);
    row("fastest", "Control.voltageRampspeedDown", "2000", true);
    row("too fast", "Control.voltageRampspeedDown", "2000.1", false);
    row("negative", "Control.voltageRampspeedUp", "-5", false);
    row("zero", "Control.voltageRampspeedUp", "0", false);
    row("lower minimum", "Status.voltageRampspeedMin", "0.001", true);
    row("minimum of nothing", "Status.voltageRampspeedMin", "0", false);
    row("minimum above maximum", "Status.voltageRampspeedMin", "2001", false);
    row("higher maximum", "Status.voltageRampspeedMax", "5000", true);
    row("maximum below minimum", "Status.voltageRampspeedMax", "0.01", false);
    row("current's too fast", "Control.currentRampspeedUp", "4.1", false);
    row("current's fastest", "Control.currentRampspeedUp", "4", true);
    row("current's minimum", "Status.currentRampspeedMin", "1", true);
    row("current's maximum", "Status.currentRampspeedMax", "8", true);
}

void TestChannelRamps::rampspeedRange()
{
    QFETCH(QByteArray, item);
    QFETCH(QByteArray, value);
    QFETCH(bool, accepted);
    ChannelBench bench;
    const double before = bench.number(item.constData());
    QCOMPARE(bench.set(item.constData(), value.constData()), accepted);
    QCOMPARE(bench.number(item.constData()), accepted ? value.toDouble() : before);
    QCOMPARE(bench.isTrue("Event.inputError"), !accepted);
}

void TestChannelRamps::endOfRamp()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(4.99);
    QVERIFY(!bench.isTrue("Event.endOfRamp"));
    bench.advance(0.02);
    QVERIFY(bench.isTrue("Event.endOfRamp"));
    QVERIFY(bench.set("Control.clearEvents", "1"));
    QVERIFY(!bench.isTrue("Event.endOfRamp"));
    // Also when nobody looked between the end of a ramp and the next command.
    QVERIFY(bench.set("Control.voltageSet", "500"));
    bench.advance(60);
    QVERIFY(bench.set("Control.on", "0"));
    QVERIFY(bench.isTrue("Event.endOfRamp"));
}

void TestChannelRamps::endOfRampWaitsForTheVoltage()
{
    // 10 µF at 1 mA: 100 V/s, half of the ramp.
    ChannelBench bench(capacitiveLoad(simulator::NoLoad, 1e-5));
    QVERIFY(bench.set("Control.currentSet", "0.001"));
    QVERIFY(bench.set("Setup.delayedTripAction", "4"));
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(9.99);
    QVERIFY(bench.isTrue("Status.constantCurrent"));
    QVERIFY(!bench.isTrue("Event.endOfRamp"));
    bench.advance(0.02);
    QVERIFY(bench.isTrue("Event.endOfRamp"));
    QVERIFY(isWithin(bench.timeOf("Event.endOfRamp") - 100, 10, 1e-6));

    // Down, the output is discharged by its bleeder of 5 MOhm, with a time constant of 50 s.
    QVERIFY(bench.set("Control.on", "0"));
    bench.advance(50);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 1000 * std::exp(-1), OnePercent));
    QVERIFY(bench.isTrue("Status.voltageRampDown"));
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("info"));
    bench.advance(1000);
    QVERIFY(!bench.isTrue("Status.ramping"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("off"));
}

void TestChannelRamps::endOfRampThatTheCurrentLimits()
{
    // 0.5 mA into 1 MOhm: the voltage stays at 500 V after 2.5 s, the ramp to 1000 V is over after 5 s.
    ChannelBench bench;
    QVERIFY(bench.set("Control.currentSet", "0.0005"));
    QVERIFY(bench.set("Setup.delayedTripAction", "4"));
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(60);
    QVERIFY(!bench.isTrue("Status.ramping"));
    const QVector<simulator::JournalEntry> entries = bench.run.journal.from(0, 1000);
    QVector<double> waypoints;
    for (const simulator::JournalEntry &entry : entries) {
        if (entry.kind == simulator::JournalEntry::Waypoint)
            waypoints.append(entry.time - 100);
    }
    QCOMPARE(waypoints.size(), 3);
    QCOMPARE(waypoints.at(0), 0.0);
    QVERIFY(isWithin(waypoints.at(1), 2.5, 1e-6));
    QVERIFY(isWithin(waypoints.at(2), 5, 1e-6));
}

// The course stays the same straight line, and what is asked for does not.
void TestChannelRamps::aHigherTargetIsEntered()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "500"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(1);
    QVERIFY(bench.set("Control.voltageSet", "800"));
    QVERIFY(bench.set("Control.voltageSet", "800"));
    bench.advance(60);
    QVector<QPair<double, double>> waypoints;
    const QVector<simulator::JournalEntry> entries = bench.run.journal.from(0, 1000);
    for (const simulator::JournalEntry &entry : entries) {
        if (entry.kind == simulator::JournalEntry::Waypoint)
            waypoints.append({entry.time - 100, entry.voltageSet});
    }
    QCOMPARE(waypoints, (QVector<QPair<double, double>>{{0.0, 500.0}, {1.0, 800.0}, {4.0, 800.0}}));
}

void TestChannelRamps::rampEvents()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(bench.isTrue("Event.voltageRampUp"));
    QVERIFY(!bench.isTrue("Event.voltageRampDown"));
    QVERIFY(bench.set("Control.on", "0"));
    bench.advance(60);
    QVERIFY(bench.isTrue("Event.voltageRampDown"));
}

QTEST_APPLESS_MAIN(TestChannelRamps)
#include "tst_channel_ramps.moc"
