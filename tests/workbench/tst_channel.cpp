#include "workbench/simulator/channel.h"

#include "workbench/simulator/item_text.h"
#include "workbench/simulator/plant_layout.h"

#include <QtTest>

#include <cmath>

using namespace simulator;

namespace
{

constexpr double Nominal = 2000; // V
constexpr double NominalCurrent = 0.004; // A
constexpr double Load = 1e6; // Ohm: half the nominal current at the nominal voltage

/// A channel of a 2 kV, 4 mA module at 10 %/s, in a time that the test steps.
class ChannelBench
{
public:
    explicit ChannelBench(double load = Load) : channel(load, NominalCurrent) { }

    QString text(const char *item)
    {
        const ItemDefinition &definition = *channelItems().find(QString::fromLatin1(item));
        return formatValue(definition, channel.read(definition, environment));
    }
    double number(const char *item) { return text(item).toDouble(); }
    bool isTrue(const char *item) { return text(item) == QLatin1String("true"); }

    TarnResult write(const char *item, const char *value)
    {
        const ItemDefinition &definition = *channelItems().find(QString::fromLatin1(item));
        ItemValue parsed;
        if (!parseValue(definition, QString::fromLatin1(value), QString(), parsed))
            return TarnResult::Failed;
        return channel.write(definition, parsed, environment);
    }
    bool set(const char *item, const char *value) { return write(item, value) == TarnResult::Success; }

    /// On, with the ramp done.
    bool rampedTo(const char *volts)
    {
        const bool isOn = set("Control.voltageSet", volts) && set("Control.on", "1");
        environment.now += 1000;
        return isOn;
    }

    void advance(double seconds) { environment.now += seconds; }

    ChannelEnvironment environment{Nominal, NominalCurrent, 10, 50, true, 100};
    Channel channel;
};

bool isWithin(double value, double expected, double fraction)
{
    return std::abs(value - expected) <= std::abs(expected) * fraction;
}

constexpr double OnePercent = 0.01;

} // namespace

class TestChannel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isOffAtFirst();
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
    void currentFollowsTheLoad_data();
    void currentFollowsTheLoad();
    void constantCurrent();
    void limits_data();
    void limits();
    void runningState();
    void endOfRamp();
    void rampEvents();
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

void TestChannel::rampsUp_data()
{
    QTest::addColumn<double>("rampspeed");
    QTest::newRow("a tenth of a percent a second") << 0.1;
    QTest::newRow("two percent") << 2.0;
    QTest::newRow("ten percent") << 10.0;
    QTest::newRow("fifty percent") << 50.0;
    QTest::newRow("a hundred percent") << 100.0;
}

void TestChannel::rampsUp()
{
    QFETCH(double, rampspeed);
    ChannelBench bench;
    bench.environment.voltageRampspeed = rampspeed;
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

void TestChannel::rampsDownWhenSwitchedOff()
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

void TestChannel::newSetValueWhileOff()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "700"));
    bench.advance(60);
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    QVERIFY(!bench.isTrue("Status.ramping"));
}

void TestChannel::newSetValueMidway_data()
{
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<double>("oneSecondLater");
    QTest::newRow("further up") << QByteArrayLiteral("1600") << 800.0;
    QTest::newRow("back down") << QByteArrayLiteral("100") << 400.0;
    QTest::newRow("to where it is") << QByteArrayLiteral("600") << 600.0;
}

void TestChannel::newSetValueMidway()
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

void TestChannel::switchedOffMidway()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(3);
    QVERIFY(bench.set("Control.on", "0"));
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 400, OnePercent));
}

void TestChannel::switchingOnTwiceDoesNotStartOver()
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

void TestChannel::ownRampspeeds()
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

void TestChannel::rampspeedWhileRamping()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(1);
    QVERIFY(bench.set("Control.voltageRampspeedUp", "50"));
    bench.advance(4);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 400, OnePercent));
    bench.environment.voltageRampspeed = 20;
    bench.channel.followModuleRampspeed(bench.environment);
    bench.advance(1);
    QVERIFY(isWithin(bench.number("Status.voltageMeasure"), 800, OnePercent));
}

void TestChannel::moduleRampspeedReplacesOwn()
{
    ChannelBench bench;
    QVERIFY(bench.set("Control.voltageRampspeedUp", "50"));
    bench.environment.voltageRampspeed = 20;
    QCOMPARE(bench.number("Control.voltageRampspeedUp"), 50.0);
    bench.channel.followModuleRampspeed(bench.environment);
    QCOMPARE(bench.number("Control.voltageRampspeedUp"), 400.0);
    QVERIFY(bench.set("Control.currentRampspeedUp", "1"));
    QCOMPARE(bench.number("Control.currentRampspeedUp"), 1.0);
    bench.channel.followModuleCurrentRampspeed();
    QCOMPARE(bench.number("Control.currentRampspeedUp"), 2.0);
}

void TestChannel::rampspeedRange_data()
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

void TestChannel::rampspeedRange()
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

void TestChannel::endOfRamp()
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

void TestChannel::rampEvents()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(bench.isTrue("Event.voltageRampUp"));
    QVERIFY(!bench.isTrue("Event.voltageRampDown"));
    QVERIFY(bench.set("Control.on", "0"));
    bench.advance(60);
    QVERIFY(bench.isTrue("Event.voltageRampDown"));
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
    QVERIFY(bench.set("Control.clearAll", "1"));
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
    bench.channel.dropOut(bench.environment);
    bench.environment.isPowered = false;
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
