#include "workbench/simulator/channel.h"

#include "tests/workbench/channel_bench.h"
#include "workbench/simulator/plant_layout.h"

#include <QtTest>

using namespace simulator;

/// Load, limits, states, events and settings. The ramps have a test of their own.
class TestChannel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isOffAtFirst();
    void currentFollowsTheLoad_data();
    void currentFollowsTheLoad();
    void constantCurrent();
    void limits_data();
    void limits();
    void runningState();
    void eventsStayUntilCleared();
    void clearingKeepsWhatStillIsTheCase();
    void emergency();
    void bounds();
    void withoutPower();
    void settingsAreKept_data();
    void settingsAreKept();
};

void TestChannel::isOffAtFirst()
{
    ChannelBench bench;
    QVERIFY(!bench.isTrue("Control.on"));
    QVERIFY(!bench.isTrue("Status.on"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    QCOMPARE(bench.number("Status.currentMeasure"), 0.0);
    QCOMPARE(bench.number("Status.voltageNominal"), Nominal);
    QCOMPARE(bench.number("Status.voltageLimit"), Nominal);
    QCOMPARE(bench.number("Status.currentLimit"), NominalCurrent);
    QCOMPARE(bench.number("Status.eventCounter"), 0.0);
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("off"));
}

void TestChannel::currentFollowsTheLoad_data()
{
    QTest::addColumn<double>("load");
    QTest::addColumn<double>("current");
    QTest::newRow("1 MOhm") << 1e6 << 0.001;
    QTest::newRow("4 MOhm") << 4e6 << 0.00025;
    QTest::newRow("none") << NoLoad << 0.0;
}

void TestChannel::currentFollowsTheLoad()
{
    QFETCH(double, load);
    QFETCH(double, current);
    ChannelBench bench(load);
    QVERIFY(bench.rampedTo("1000"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 1000.0);
    QCOMPARE(bench.number("Status.currentMeasure"), current);
    QVERIFY(bench.isTrue("Status.constantVoltage"));
    QVERIFY(!bench.isTrue("Status.constantCurrent"));
}

void TestChannel::constantCurrent()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.currentSet", "0.0005"));
    QVERIFY(bench.rampedTo("1000"));
    QCOMPARE(bench.number("Status.currentMeasure"), 0.0005);
    QCOMPARE(bench.number("Status.voltageMeasure"), 500.0);
    QVERIFY(bench.isTrue("Status.constantCurrent"));
    QVERIFY(!bench.isTrue("Status.constantVoltage"));
    QVERIFY(bench.isTrue("Event.constantCurrent"));
    // What is asked for already starts nothing.
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(!bench.isTrue("Status.ramping"));
    // Down from the voltage that is there, not from the one that was asked for.
    QVERIFY(bench.set("Control.on", "0"));
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 300, OnePercent));
}

void TestChannel::limits_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("voltage at its limit") << QByteArray("Control.voltageSet") << QByteArray("2000") << true;
    QTest::newRow("voltage above") << QByteArray("Control.voltageSet") << QByteArray("2000.1") << false;
    QTest::newRow("voltage below 0") << QByteArray("Control.voltageSet") << QByteArray("-1") << false;
    QTest::newRow("current at its limit") << QByteArray("Control.currentSet") << QByteArray("0.004") << true;
    QTest::newRow("current above") << QByteArray("Control.currentSet") << QByteArray("0.0041") << false;
    QTest::newRow("current below 0") << QByteArray("Control.currentSet") << QByteArray("-0.001") << false;
}

void TestChannel::limits()
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

void TestChannel::runningState()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("info"));
    bench.advance(60);
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("ok"));
    QVERIFY(bench.set("Control.on", "0"));
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("info"));
    bench.advance(60);
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("off"));
}

void TestChannel::eventsStayUntilCleared()
{
    ChannelBench bench;
    QVERIFY(!bench.set("Control.voltageSet", "5000"));
    QCOMPARE(bench.number("Status.eventCounter"), 1.0);
    QVERIFY(!bench.set("Control.voltageSet", "6000"));
    QCOMPARE(bench.number("Status.eventCounter"), 1.0);
    bench.advance(1000);
    QVERIFY(bench.isTrue("Event.inputError"));
    QVERIFY(bench.set("Control.clearEvents", "0"));
    QVERIFY(bench.isTrue("Event.inputError"));
    QVERIFY(bench.set("Control.clearErrors", "1"));
    QVERIFY(bench.isTrue("Event.inputError"));
    QVERIFY(bench.set("Control.clearEvents", "1"));
    QVERIFY(!bench.isTrue("Event.inputError"));
    QCOMPARE(bench.number("Status.eventCounter"), 0.0);
}

void TestChannel::clearingKeepsWhatStillIsTheCase()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(bench.isTrue("Event.constantVoltage"));
    QVERIFY(bench.set("Control.clearAll", "1"));
    QVERIFY(bench.isTrue("Event.constantVoltage"));
    QVERIFY(!bench.isTrue("Event.voltageRampUp"));
    QCOMPARE(bench.number("Status.eventCounter"), 1.0);
}

void TestChannel::emergency()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(bench.set("Control.emergency", "1"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    QVERIFY(!bench.isTrue("Status.ramping"));
    QVERIFY(!bench.isTrue("Control.on"));
    QVERIFY(bench.isTrue("Status.emergency"));
    QVERIFY(bench.isTrue("Event.emergency"));
    QVERIFY(bench.isTrue("Error.emergency"));
    QCOMPARE(bench.number("Status.errorCounter"), 1.0);
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("error"));

    QCOMPARE(bench.write("Control.on", "1"), TarnResult::Failed);
    QVERIFY(!bench.isTrue("Status.on"));
    QVERIFY(bench.set("Control.on", "0"));
    QCOMPARE(bench.write("Control.clearAll", "1"), TarnResult::Failed);
    QVERIFY(bench.isTrue("Error.emergency"));

    QVERIFY(bench.set("Control.emergency", "0"));
    QVERIFY(!bench.isTrue("Status.emergency"));
    QVERIFY(bench.isTrue("Error.emergency"));
    QVERIFY(bench.set("Control.clearErrors", "1"));
    QVERIFY(!bench.isTrue("Error.emergency"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 200, OnePercent));
}

void TestChannel::bounds()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageBounds", "10"));
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(1);
    QVERIFY(!bench.isTrue("Status.voltageBoundExceeded")); // a ramp is meant to be away from the set value
    bench.advance(60);
    QVERIFY(!bench.isTrue("Status.voltageBoundExceeded"));
    QVERIFY(bench.set("Control.currentSet", "0.0005"));
    QVERIFY(bench.isTrue("Status.voltageBoundExceeded"));
    QVERIFY(bench.isTrue("Status.voltageBoundLower"));
    QVERIFY(!bench.isTrue("Status.voltageBoundUpper"));
    QVERIFY(bench.isTrue("Error.voltageBoundExceeded"));
    QVERIFY(bench.set("Control.currentSet", "0.004"));
    QVERIFY(!bench.isTrue("Status.voltageBoundExceeded"));
    QVERIFY(bench.isTrue("Event.voltageBoundLower"));

    QVERIFY(bench.set("Control.currentBounds", "0.0001"));
    QVERIFY(bench.isTrue("Status.currentBoundExceeded"));
}

void TestChannel::withoutPower()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    bench.module.setPowered(false, {}, bench.now);
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("disabled"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    QCOMPARE(bench.write("Control.on", "1"), TarnResult::Failed);
    QCOMPARE(bench.write("Control.voltageSet", "5"), TarnResult::Failed);
    QCOMPARE(bench.number("Control.voltageSet"), 1000.0);
}

void TestChannel::settingsAreKept_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QByteArray>("value");
    const auto row = [](const char *item, const char *value) {
        QTest::newRow(item) << QByteArray(item) << QByteArray(value);
    };
    row("Setup.delayedTripAction", "4");
    row("Setup.delayedTripTime", "250");
    row("Setup.externalInhibitAction", "3");
    row("Control.channelEventMask", "5");
    row("Control.vctCoefficient", "-0.5");
    row("Control.voltageBounds", "12.5");
    row("Control.currentBounds", "0.001");
    row("Setup.resistanceExternal", "1000000");
    row("Setup.voltageRampPriority", "2");
    row("Setup.voltageBottom", "33");
    row("Setup.outputPolarity", "1");
}

void TestChannel::settingsAreKept()
{
    QFETCH(QByteArray, item);
    QFETCH(QByteArray, value);
    ChannelBench bench;
    const QString before = bench.text(item.constData());
    QVERIFY(before.toUtf8() != value);
    QVERIFY(bench.set(item.constData(), value.constData()));
    QCOMPARE(bench.text(item.constData()).toUtf8(), value);
    QVERIFY(!bench.set(item.constData(), "-1e20"));
    QCOMPARE(bench.text(item.constData()).toUtf8(), value);
}

QTEST_APPLESS_MAIN(TestChannel)
#include "tst_channel.moc"
