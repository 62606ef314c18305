#include "tests/workbench/channel_bench.h"

#include <QtTest>

using namespace simulator;

Q_DECLARE_METATYPE(FaultKind)

/// What a channel does by itself when something goes wrong. It always begins at 100 s.
class TestChannelProtection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void trip_data();
    void trip();
    void tripsAgain();
    void shortOverloadDoesNotTrip();
    void tripTimeWhileItRuns();
    void statusOfATrip();
    void inhibit_data();
    void inhibit();
    void inhibitOnItsWay();
    void inhibitKeepsOff();
    void inhibitActionWhileActive();
    void limits_data();
    void limits();
    void killWhileExceeded();
    void voltageBounds();
    void currentBounds();
    void boundsOfWhatIsMeasured_data();
    void boundsOfWhatIsMeasured();
    void clearingWhatStillIsTheCase_data();
    void clearingWhatStillIsTheCase();
    void emergencyLeavesTheDischargeToTheLoad();
    void masks();
};

namespace
{

constexpr double Microsecond = 1e-6;
constexpr double Start = 100; // s

bool isAt(double time, double expected)
{
    return std::abs(time - expected) <= Microsecond;
}

/// Two channels; the first is on its way to 1000 V and will be limited to half a milliampere at 500 V, 2.5 s later.
class OverloadBench : public ChannelBench
{
public:
    OverloadBench() : ChannelBench(moduleOf(resistiveLoad(Load), 2))
    {
        isReady = set("Control.voltageSet", "700", 1) && set("Control.on", "1", 1)
            && set("Control.currentSet", "0.0005") && set("Control.voltageSet", "1000")
            && set("Control.on", "1");
    }
    bool isReady = false;
};

} // namespace

void TestChannelProtection::trip_data()
{
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<QByteArray>("milliseconds");
    QTest::addColumn<bool>("kill");
    QTest::addColumn<double>("trippedAt"); // s after the start, below 0 for never
    QTest::addColumn<bool>("isOn");
    QTest::addColumn<double>("volts"); // a second after the trip
    QTest::addColumn<bool>("otherIsOn");
    const auto row = [](const char *name, const char *action, const char *time, bool kill, double at, bool on,
                        double volts, bool otherOn) {
        QTest::newRow(name) << QByteArray(action) << QByteArray(time) << kill << at << on << volts << otherOn;
    };
    row("no action", "0", "100", false, 2.6, true, 500, true);
    row("with ramp", "1", "100", false, 2.6, false, 300, true);
    row("without ramp", "2", "100", false, 2.6, false, 0, true);
    row("whole module", "3", "100", false, 2.6, false, 0, false);
    row("disabled", "4", "100", false, -1, true, 500, true);
    row("at once", "2", "0", false, 2.5, false, 0, true);
    row("a second", "2", "1000", false, 3.5, false, 0, true);
    row("a minute", "2", "60000", false, 62.5, false, 0, true);
    row("no action, kill", "0", "100", true, 2.6, false, 0, true);
    row("with ramp, kill", "1", "100", true, 2.6, false, 0, true);
    row("whole module, kill", "3", "100", true, 2.6, false, 0, false);
    row("disabled, kill", "4", "100", true, -1, true, 500, true);
}

void TestChannelProtection::trip()
{
    QFETCH(QByteArray, action);
    QFETCH(QByteArray, milliseconds);
    QFETCH(bool, kill);
    QFETCH(double, trippedAt);
    QFETCH(double, volts);
    OverloadBench bench;
    QVERIFY(bench.isReady);
    QVERIFY(bench.set("Setup.delayedTripAction", action.constData()));
    QVERIFY(bench.set("Setup.delayedTripTime", milliseconds.constData()));
    QVERIFY(bench.setModule("Control.kill", kill ? "1" : "0"));
    bench.advance(trippedAt > 0 ? trippedAt + 1 : 100);
    QVERIFY(isAt(bench.timeOf("Event.constantCurrent"), Start + 2.5));
    QCOMPARE(bench.isTrue("Event.currentTrip"), trippedAt > 0);
    QCOMPARE(bench.isTrue("Error.currentTrip"), trippedAt > 0);
    if (trippedAt > 0) {
        QVERIFY(isAt(bench.timeOf("Event.currentTrip"), Start + trippedAt));
        QVERIFY(isAt(bench.timeOf("Error.currentTrip"), Start + trippedAt));
    }
    QTEST(bench.isTrue("Control.on"), "isOn");
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), volts, OnePercent));
    QTEST(bench.isTrue("Control.on", 1), "otherIsOn");
    QVERIFY(!bench.isTrue("Event.currentTrip", 1));
}

void TestChannelProtection::tripsAgain()
{
    OverloadBench bench;
    bench.advance(10);
    QCOMPARE(bench.write("Control.clearAll", "1"), TarnResult::Failed);
    QVERIFY(bench.isTrue("Event.currentTrip")); // the current still is at its limit
    QVERIFY(bench.set("Control.currentSet", "0.004"));
    QVERIFY(!bench.isTrue("Status.currentTrip"));
    QVERIFY(bench.set("Control.clearAll", "1"));
    QVERIFY(!bench.isTrue("Event.currentTrip"));
    QVERIFY(bench.set("Control.currentSet", "0.0005"));
    bench.advance(0.099);
    QVERIFY(!bench.isTrue("Event.currentTrip"));
    bench.advance(0.002);
    QVERIFY(bench.isTrue("Event.currentTrip"));
    QVERIFY(isAt(bench.timeOf("Event.currentTrip"), Start + 10.1));
}

void TestChannelProtection::shortOverloadDoesNotTrip()
{
    ChannelBench bench;
    QVERIFY(bench.set("Setup.delayedTripAction", "2"));
    QVERIFY(bench.rampedTo("1000"));
    for (int overload = 0; overload < 5; ++overload) {
        bench.fault(FaultKind::Short, true);
        bench.advance(0.09);
        QVERIFY(bench.isTrue("Status.constantCurrent"));
        bench.fault(FaultKind::Short, false);
        bench.advance(0.05);
    }
    QVERIFY(bench.isTrue("Control.on"));
    QVERIFY(!bench.isTrue("Event.currentTrip"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 1000.0);
}

void TestChannelProtection::tripTimeWhileItRuns()
{
    OverloadBench bench;
    QVERIFY(bench.set("Setup.delayedTripTime", "5000"));
    bench.advance(4.5); // two seconds of the five
    QVERIFY(bench.set("Setup.delayedTripTime", "3000"));
    bench.advance(1.1);
    QVERIFY(isAt(bench.timeOf("Event.currentTrip"), Start + 5.5));
}

void TestChannelProtection::statusOfATrip()
{
    OverloadBench bench;
    bench.advance(2.59);
    QVERIFY(!bench.isTrue("Status.currentTrip"));
    bench.advance(0.02);
    QVERIFY(bench.isTrue("Status.currentTrip"));
    QCOMPARE(bench.text("Status.runningState"), QStringLiteral("error"));
    QVERIFY(bench.set("Control.on", "0"));
    QVERIFY(!bench.isTrue("Status.currentTrip"));
    QVERIFY(bench.isTrue("Event.currentTrip"));
}

void TestChannelProtection::inhibit_data()
{
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<bool>("isOn");
    QTest::addColumn<double>("volts"); // a second later
    QTest::addColumn<bool>("otherIsOn");
    QTest::newRow("no action") << QByteArray("0") << true << 1000.0 << true;
    QTest::newRow("with ramp") << QByteArray("1") << false << 800.0 << true;
    QTest::newRow("without ramp") << QByteArray("2") << false << 0.0 << true;
    QTest::newRow("whole module") << QByteArray("3") << false << 0.0 << false;
}

void TestChannelProtection::inhibit()
{
    QFETCH(QByteArray, action);
    QFETCH(double, volts);
    ChannelBench bench(moduleOf(resistiveLoad(Load), 2));
    QVERIFY(bench.set("Control.voltageSet", "700", 1));
    QVERIFY(bench.set("Control.on", "1", 1));
    QVERIFY(bench.set("Setup.externalInhibitAction", action.constData()));
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(!bench.isTrue("Status.externalInhibitActive"));
    bench.fault(FaultKind::ExternalInhibit, true);
    QVERIFY(bench.isTrue("Status.externalInhibitActive"));
    QVERIFY(isAt(bench.timeOf("Event.externalInhibitActive"), bench.now));
    QVERIFY(isAt(bench.timeOf("Error.externalInhibitActive"), bench.now));
    bench.advance(1);
    QTEST(bench.isTrue("Control.on"), "isOn");
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), volts, OnePercent));
    QTEST(bench.isTrue("Control.on", 1), "otherIsOn");
    bench.fault(FaultKind::ExternalInhibit, false);
    QVERIFY(!bench.isTrue("Status.externalInhibitActive"));
    QVERIFY(bench.isTrue("Event.externalInhibitActive"));
    QVERIFY(bench.isTrue("Error.externalInhibitActive"));
}

// On its way up it turns round where it is.
void TestChannelProtection::inhibitOnItsWay()
{
    ChannelBench bench;
    QVERIFY(bench.set("Setup.externalInhibitAction", "1"));
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(3); // 600 V
    bench.fault(FaultKind::ExternalInhibit, true);
    QVERIFY(bench.isTrue("Status.voltageRampDown"));
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 400, OnePercent));
    bench.fault(FaultKind::ExternalInhibit, false); // too late
    bench.advance(10);
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    QVERIFY(isAt(bench.timeOf("Event.endOfRamp"), Start + 6));
}

void TestChannelProtection::inhibitKeepsOff()
{
    ChannelBench bench;
    QVERIFY(bench.set("Setup.externalInhibitAction", "2"));
    bench.fault(FaultKind::ExternalInhibit, true);
    QCOMPARE(bench.write("Control.on", "1"), TarnResult::Failed);
    QVERIFY(bench.isTrue("Event.inputError"));
    bench.fault(FaultKind::ExternalInhibit, false);
    QVERIFY(bench.set("Control.on", "1"));
}

void TestChannelProtection::inhibitActionWhileActive()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    bench.fault(FaultKind::ExternalInhibit, true);
    QVERIFY(bench.isTrue("Control.on"));
    QVERIFY(bench.set("Setup.externalInhibitAction", "2"));
    QVERIFY(!bench.isTrue("Control.on"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
}

void TestChannelProtection::limits_data()
{
    QTest::addColumn<bool>("ofVoltage");
    QTest::addColumn<bool>("kill");
    QTest::newRow("voltage") << true << false;
    QTest::newRow("voltage, kill") << true << true;
    QTest::newRow("current") << false << false;
    QTest::newRow("current, kill") << false << true;
}

void TestChannelProtection::limits()
{
    QFETCH(bool, ofVoltage);
    QFETCH(bool, kill);
    ModuleLayout layout = moduleOf(resistiveLoad(Load));
    layout.voltageLimit = 50; // %: 1000 V
    layout.currentLimit = 25; // %: 1 mA, which the load draws at 1000 V
    // What is measured is a tenth more at the limit, so that it is there at 900 V and 0.9 mA, 4.5 s after the start.
    layout.measurement.voltageOffset = ofVoltage ? 100 : 0;
    layout.measurement.currentOffset = ofVoltage ? 0 : 0.0001;
    const char *const status = ofVoltage ? "Status.voltageLimitExceeded" : "Status.currentLimitExceeded";
    const char *const event = ofVoltage ? "Event.voltageLimitExceeded" : "Event.currentLimitExceeded";
    const char *const error = ofVoltage ? "Error.voltageLimitExceeded" : "Error.currentLimitExceeded";

    ChannelBench bench(layout);
    QCOMPARE(bench.number("Status.voltageLimit"), 1000.0);
    QCOMPARE(bench.number("Status.currentLimit"), 0.001);
    QCOMPARE(bench.number("Control.currentSet"), 0.001);
    QCOMPARE(bench.write("Control.voltageSet", "1000.1"), TarnResult::Failed);
    QCOMPARE(bench.write("Control.currentSet", "0.0010001"), TarnResult::Failed);
    QVERIFY(bench.setModule("Control.kill", kill ? "1" : "0"));
    QVERIFY(bench.set("Control.voltageSet", "990"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(4.49);
    QVERIFY(!bench.isTrue(status));
    bench.advance(0.02);
    QVERIFY(isWithin(bench.timeOf(event) - Start, 4.5, 0.001));
    QVERIFY(isWithin(bench.timeOf(error) - Start, 4.5, 0.001));
    QVERIFY(bench.isTrue(event));
    QVERIFY(bench.isTrue(error));
    QCOMPARE(bench.isTrue(status), !kill);
    QCOMPARE(bench.isTrue("Control.on"), !kill);
    if (kill)
        QVERIFY(bench.number("Status.voltageMeasure") <= layout.measurement.voltageOffset);
}

void TestChannelProtection::killWhileExceeded()
{
    ModuleLayout layout = moduleOf(resistiveLoad(Load));
    layout.measurement.voltageOffset = 100;
    ChannelBench bench(layout);
    QVERIFY(bench.rampedTo("1950"));
    QVERIFY(bench.isTrue("Status.voltageLimitExceeded"));
    QVERIFY(bench.isTrue("Control.on"));
    QVERIFY(bench.setModule("Control.kill", "1"));
    QVERIFY(!bench.isTrue("Control.on"));
}

void TestChannelProtection::voltageBounds()
{
    // After the short the output is charged again: C V / I = 1 µF · 900 V / 1 mA to within 100 V of 1000 V.
    LoadLayout load = capacitiveLoad(NoLoad, 1e-6);
    ChannelBench bench(load);
    QVERIFY(bench.set("Control.currentSet", "0.001"));
    QVERIFY(bench.set("Control.voltageBounds", "100"));
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(!bench.isTrue("Event.voltageBoundExceeded"));
    bench.fault(FaultKind::Short, true);
    QVERIFY(bench.isTrue("Status.voltageBoundExceeded"));
    QVERIFY(bench.isTrue("Status.voltageBoundLower"));
    QVERIFY(!bench.isTrue("Status.voltageBoundUpper"));
    bench.fault(FaultKind::Short, false);
    bench.advance(0.899);
    QVERIFY(bench.isTrue("Status.voltageBoundExceeded"));
    bench.advance(0.002);
    QVERIFY(!bench.isTrue("Status.voltageBoundExceeded"));
    QVERIFY(bench.isTrue("Event.voltageBoundExceeded"));
    QVERIFY(bench.isTrue("Event.voltageBoundLower"));
    QVERIFY(bench.isTrue("Error.voltageBoundExceeded"));
}

void TestChannelProtection::currentBounds()
{
    // The leakage drifts to half a milliampere below the set value, 2 mA, in 150 s of the plant's time.
    LoadLayout load = resistiveLoad(NoLoad);
    load.leakageDrift = 1e-5;
    ChannelBench bench(load);
    QVERIFY(bench.set("Control.currentSet", "0.002"));
    QVERIFY(bench.set("Control.voltageSet", "100"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(1);
    QVERIFY(bench.set("Control.currentBounds", "0.0005"));
    QVERIFY(bench.isTrue("Status.currentBoundExceeded"));
    bench.advance(48.99); // 149.99 s
    QVERIFY(bench.isTrue("Status.currentBoundExceeded"));
    bench.advance(0.02);
    QVERIFY(!bench.isTrue("Status.currentBoundExceeded"));
    QVERIFY(bench.isTrue("Event.currentBoundExceeded"));
    QVERIFY(bench.isTrue("Error.currentBoundExceeded"));
}

void TestChannelProtection::boundsOfWhatIsMeasured_data()
{
    QTest::addColumn<double>("voltageOffset");
    QTest::addColumn<double>("currentOffset");
    QTest::addColumn<QByteArray>("condition"); // empty for none
    QTest::addColumn<bool>("isUpper");
    QTest::newRow("exact") << 0.0 << 0.0 << QByteArray() << false;
    QTest::newRow("voltage a little too high") << 39.0 << 0.0 << QByteArray() << false;
    QTest::newRow("voltage too high") << 41.0 << 0.0 << QByteArray("voltageBoundExceeded") << true;
    QTest::newRow("voltage too low") << -41.0 << 0.0 << QByteArray("voltageBoundExceeded") << false;
    QTest::newRow("current a little too high") << 0.0 << 0.00024 << QByteArray() << false;
    QTest::newRow("current too high") << 0.0 << 0.00026 << QByteArray("currentBoundExceeded") << true;
    QTest::newRow("current too low") << 0.0 << -0.00006 << QByteArray("currentBoundExceeded") << false;
}

// The bounds are around 1000 V and 1.1 mA; the load draws 1 mA. They are looked at when the ramp is over, after 5 s.
void TestChannelProtection::boundsOfWhatIsMeasured()
{
    QFETCH(double, voltageOffset);
    QFETCH(double, currentOffset);
    QFETCH(QByteArray, condition);
    QFETCH(bool, isUpper);
    ModuleLayout layout = moduleOf(resistiveLoad(Load));
    layout.measurement.voltageOffset = voltageOffset;
    layout.measurement.currentOffset = currentOffset;
    ChannelBench bench(layout);
    QVERIFY(bench.set("Control.voltageBounds", "40"));
    QVERIFY(bench.set("Control.currentSet", "0.0011"));
    QVERIFY(bench.set("Control.currentBounds", "0.00015"));
    QVERIFY(bench.rampedTo("1000"));
    for (const QByteArray &name : {QByteArray("voltageBoundExceeded"), QByteArray("currentBoundExceeded")}) {
        QCOMPARE(bench.isTrue(("Status." + name).constData()), name == condition);
        QCOMPARE(bench.isTrue(("Error." + name).constData()), name == condition);
        if (name == condition)
            QVERIFY(isAt(bench.timeOf(("Event." + name).constData()), Start + 5));
    }
    const bool isVoltage = condition.startsWith("voltage");
    QCOMPARE(bench.isTrue("Status.voltageBoundUpper"), isVoltage && isUpper);
    QCOMPARE(bench.isTrue("Status.voltageBoundLower"), isVoltage && !isUpper);
    QVERIFY(bench.isTrue("Control.on")); // they only tell
}

void TestChannelProtection::clearingWhatStillIsTheCase_data()
{
    QTest::addColumn<FaultKind>("fault");
    QTest::addColumn<QByteArray>("item");
    QTest::newRow("inhibit") << FaultKind::ExternalInhibit << QByteArray("externalInhibitActive");
    QTest::newRow("trip") << FaultKind::Short << QByteArray("currentTrip");
}

void TestChannelProtection::clearingWhatStillIsTheCase()
{
    QFETCH(FaultKind, fault);
    QFETCH(QByteArray, item);
    const QByteArray event = "Event." + item;
    const QByteArray error = "Error." + item;
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    bench.fault(fault, true);
    bench.advance(1);
    QVERIFY(bench.isTrue(event.constData()));
    QVERIFY(bench.isTrue("Event.endOfRamp"));
    const int entries = bench.entriesOf(event.constData());
    QCOMPARE(bench.write("Control.clearAll", "1"), TarnResult::Failed);
    QCOMPARE(bench.write("Control.clearEvents", "1"), TarnResult::Failed);
    QCOMPARE(bench.write("Control.clearErrors", "1"), TarnResult::Failed);
    QCOMPARE(bench.write("Control.clearAll", "0"), TarnResult::Success); // which asks for nothing
    QVERIFY(bench.isTrue(event.constData()));
    QVERIFY(bench.isTrue(error.constData()));
    QVERIFY(!bench.isTrue("Event.endOfRamp")); // what is over is cleared all the same
    QVERIFY(!bench.isTrue("Event.inputError"));
    QCOMPARE(bench.number("Status.errorCounter"), 1.0);
    QCOMPARE(bench.entriesOf(event.constData()), entries);
    bench.fault(fault, false);
    bench.advance(1);
    QVERIFY(bench.isTrue(event.constData()));
    QVERIFY(bench.set("Control.clearEvents", "1"));
    QVERIFY(!bench.isTrue(event.constData()));
    QVERIFY(bench.isTrue(error.constData()));
    QVERIFY(bench.set("Control.clearErrors", "1"));
    QVERIFY(!bench.isTrue(error.constData()));
}

void TestChannelProtection::emergencyLeavesTheDischargeToTheLoad()
{
    ChannelBench bench(capacitiveLoad(Load, 1e-6)); // a second
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(bench.set("Control.emergency", "1"));
    QVERIFY(isAt(bench.timeOf("Error.emergency"), bench.now));
    QVERIFY(!bench.isTrue("Status.on"));
    QVERIFY(!bench.isTrue("Status.ramping"));
    QCOMPARE(bench.number("Status.currentMeasure"), 0.0);
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 1000 * std::exp(-1), OnePercent));
    QCOMPARE(bench.write("Control.on", "1"), TarnResult::Failed);
    QVERIFY(bench.set("Control.emergency", "0"));
    // On again, it goes on from the voltage that is left.
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 1000 * std::exp(-1) + 200, OnePercent));
}

void TestChannelProtection::masks()
{
    const auto without = [](ChannelCondition condition) { return QByteArray::number(~bit(condition)); };
    ChannelBench bench;
    QVERIFY(!bench.set("Control.voltageSet", "9999"));
    bench.fault(FaultKind::ExternalInhibit, true);
    QCOMPARE(bench.number("Status.eventCounter"), 2.0);
    QCOMPARE(bench.moduleText("Status.eventCounter"), QStringLiteral("2"));
    QVERIFY(bench.set("Control.channelEventMask", without(ChannelCondition::InputError).constData()));
    QCOMPARE(bench.number("Status.eventCounter"), 2.0);
    QCOMPARE(bench.moduleText("Status.eventCounter"), QStringLiteral("1"));
    QVERIFY(bench.setModule("Control.moduleChannelEventMask",
                            without(ChannelCondition::ExternalInhibit).constData()));
    QCOMPARE(bench.moduleText("Status.eventCounter"), QStringLiteral("0"));
    QCOMPARE(bench.moduleText("Status.errorCounter"), QStringLiteral("1"));
    QVERIFY(bench.isTrue("Event.externalInhibitActive"));
    QCOMPARE(bench.moduleText("Status.runningState"), QStringLiteral("error"));
    QVERIFY(bench.set("Control.channelEventMask", "4294967295"));
    QCOMPARE(bench.moduleText("Status.eventCounter"), QStringLiteral("1"));
}

QTEST_APPLESS_MAIN(TestChannelProtection)
#include "tst_channel_protection.moc"
