#include "workbench/simulator/module.h"

#include "tests/workbench/channel_bench.h"

#include <QtTest>

using namespace simulator;

Q_DECLARE_METATYPE(FaultKind)

/// What a module makes of its layout, its conditions and its masks. Faults and their times have a test of their own.
class TestModule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsItsLayout();
    void limitsOfTheLayout_data();
    void limitsOfTheLayout();
    void ownEventsCountUnlessMasked_data();
    void ownEventsCountUnlessMasked();
    void severalCausesKeepItOff();
    void settingsHoldWhileItIsOff();
    void clearingChannels_data();
    void clearingChannels();
    void clearingWhatStillIsTheCase();
    void warmsWithThePowerOfItsOutputs();
    void overheatsUnderLoad();
};

void TestModule::followsItsLayout()
{
    ModuleLayout layout = moduleOf(resistiveLoad(Load), 3);
    layout.isNegative = true;
    layout.voltageRampspeed = 25;
    layout.currentRampspeed = 5;
    layout.serialNumber = 123456;
    layout.firmwareName = QStringLiteral("SIM-3");
    layout.firmwareRelease = QStringLiteral("9.8.7");
    ChannelBench bench(layout);
    QCOMPARE(bench.moduleText("Control.voltageRampspeed"), QStringLiteral("25"));
    QCOMPARE(bench.moduleText("Control.currentRampspeed"), QStringLiteral("5"));
    QCOMPARE(bench.number("Control.voltageRampspeedUp"), 500.0);
    QCOMPARE(bench.number("Control.currentRampspeedUp"), 0.2);
    QCOMPARE(bench.moduleText("Status.serialNumber"), QStringLiteral("123456"));
    QCOMPARE(bench.moduleText("Status.firmwareName"), QStringLiteral("SIM-3"));
    QCOMPARE(bench.moduleText("Status.firmwareRelease"), QStringLiteral("9.8.7"));
    QCOMPARE(bench.moduleText("Status.numberOfChannels"), QStringLiteral("3"));
    QCOMPARE(bench.number("Setup.outputPolarity"), 1.0);
    QVERIFY(bench.set("Setup.outputPolarity", "0"));
    QCOMPARE(bench.number("Setup.outputPolarity"), 0.0);
    QCOMPARE(ChannelBench().number("Setup.outputPolarity"), 0.0);
}

void TestModule::limitsOfTheLayout_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("voltage at its limit") << QByteArray("Control.voltageSet") << QByteArray("1600") << true;
    QTest::newRow("voltage above") << QByteArray("Control.voltageSet") << QByteArray("1600.1") << false;
    QTest::newRow("current at its limit") << QByteArray("Control.currentSet") << QByteArray("0.002") << true;
    QTest::newRow("current above") << QByteArray("Control.currentSet") << QByteArray("0.0021") << false;
}

void TestModule::limitsOfTheLayout()
{
    QFETCH(QByteArray, item);
    QFETCH(QByteArray, value);
    QFETCH(bool, accepted);
    ModuleLayout layout = moduleOf(resistiveLoad(Load));
    layout.voltageLimit = 80; // % of 2 kV
    layout.currentLimit = 50; // % of 4 mA
    ChannelBench bench(layout);
    QCOMPARE(bench.number("Status.voltageLimit"), 1600.0);
    QCOMPARE(bench.number("Status.currentLimit"), 0.002);
    QCOMPARE(bench.set(item.constData(), value.constData()), accepted);
    QCOMPARE(bench.isTrue("Event.inputError"), !accepted);
}

void TestModule::ownEventsCountUnlessMasked_data()
{
    QTest::addColumn<FaultKind>("fault");
    QTest::addColumn<int>("events"); // with the interlock, where there is one; a need of service is none
    QTest::addColumn<quint32>("mask");
    QTest::addColumn<int>("unmasked");
    const quint32 interlock = bit(ModuleCondition::InterlockOut);
    QTest::newRow("safety loop") << FaultKind::SafetyLoopOpen << 2 << ~bit(ModuleCondition::SafetyLoopOpen)
                                 << 1;
    QTest::newRow("supply") << FaultKind::SupplyFailure << 2
                            << ~(bit(ModuleCondition::SupplyNotGood) | interlock) << 0;
    QTest::newRow("service") << FaultKind::NeedService << 0 << ~quint32(0) << 0;
    QTest::newRow("temperature") << FaultKind::Overheating << 2 << interlock << 1;
}

void TestModule::ownEventsCountUnlessMasked()
{
    QFETCH(FaultKind, fault);
    QFETCH(int, events);
    QFETCH(quint32, mask);
    QFETCH(int, unmasked);
    ChannelBench bench;
    bench.fault(fault, true);
    QCOMPARE(bench.moduleText("Status.eventCounter").toInt(), events);
    const int errors = fault == FaultKind::NeedService ? 1 : events;
    QCOMPARE(bench.moduleText("Status.errorCounter").toInt(), errors);
    QCOMPARE(bench.summary.counts().events, events);
    QVERIFY(bench.setModule("Control.moduleEventMask", QByteArray::number(mask).constData()));
    QCOMPARE(bench.moduleText("Status.eventCounter").toInt(), unmasked);
    QCOMPARE(bench.summary.counts().events, unmasked);
    QCOMPARE(bench.moduleText("Status.errorCounter").toInt(), errors);
}

void TestModule::severalCausesKeepItOff()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    bench.fault(FaultKind::SafetyLoopOpen, true);
    bench.fault(FaultKind::SupplyFailure, true);
    bench.fault(FaultKind::SafetyLoopOpen, false);
    QVERIFY(!bench.set("Control.on", "1"));
    QVERIFY(bench.isTrue("Event.inputError"));
    QCOMPARE(bench.moduleText("Status.interlockOut"), QStringLiteral("true"));
    bench.fault(FaultKind::SupplyFailure, false);
    QCOMPARE(bench.moduleText("Status.interlockOut"), QStringLiteral("false"));
    QVERIFY(!bench.isTrue("Control.on"));
    QVERIFY(bench.set("Control.on", "1"));
}

void TestModule::settingsHoldWhileItIsOff()
{
    ChannelBench bench;
    bench.fault(FaultKind::SafetyLoopOpen, true);
    QVERIFY(bench.set("Control.voltageSet", "500")); // only switching on is refused
    bench.fault(FaultKind::SafetyLoopOpen, false);
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(100);
    QCOMPARE(bench.number("Status.voltageMeasure"), 500.0);
}

void TestModule::clearingChannels_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::newRow("events") << QByteArray("Control.clearEvents");
    QTest::newRow("errors") << QByteArray("Control.clearErrors");
    QTest::newRow("all") << QByteArray("Control.clearAll");
}

// What lasts at one channel refuses it, and is no hindrance to the others.
void TestModule::clearingChannels()
{
    QFETCH(QByteArray, item);
    ChannelBench bench(moduleOf(resistiveLoad(Load), 3));
    for (std::size_t channel = 0; channel < 3; ++channel) {
        QVERIFY(bench.set("Control.emergency", "1", channel));
        if (channel != 1)
            QVERIFY(bench.set("Control.emergency", "0", channel));
    }
    QVERIFY(!bench.setModule(item.constData(), "1"));
    for (std::size_t channel = 0; channel < 3; ++channel) {
        QCOMPARE(bench.isTrue("Event.emergency", channel), channel == 1 || item.endsWith("Errors"));
        QCOMPARE(bench.isTrue("Error.emergency", channel), channel == 1 || item.endsWith("Events"));
    }
    QVERIFY(bench.set("Control.emergency", "0", 1));
    QVERIFY(bench.setModule(item.constData(), "1"));
    QCOMPARE(bench.isTrue("Event.emergency", 1), item.endsWith("Errors"));
    QCOMPARE(bench.isTrue("Error.emergency", 1), item.endsWith("Events"));
}

void TestModule::clearingWhatStillIsTheCase()
{
    ChannelBench bench;
    bench.fault(FaultKind::SafetyLoopOpen, true);
    for (const char *item : {"Control.clearAll", "Control.clearEvents", "Control.clearErrors"})
        QVERIFY2(!bench.setModule(item, "1"), item);
    QCOMPARE(bench.moduleText("Event.safetyLoopWasOpened"), QStringLiteral("true"));
    QCOMPARE(bench.moduleText("Error.safetyLoopWasOpened"), QStringLiteral("true"));
    bench.fault(FaultKind::SafetyLoopOpen, false);
    QVERIFY(bench.setModule("Control.clearErrors", "1"));
    QCOMPARE(bench.moduleText("Event.safetyLoopWasOpened"), QStringLiteral("true"));
    QCOMPARE(bench.moduleText("Error.safetyLoopWasOpened"), QStringLiteral("false"));
    QVERIFY(bench.setModule("Control.clearEvents", "1"));
    QCOMPARE(bench.moduleText("Event.safetyLoopWasOpened"), QStringLiteral("false"));
    QCOMPARE(bench.moduleText("Status.eventCounter"), QStringLiteral("0"));
}

void TestModule::warmsWithThePowerOfItsOutputs()
{
    // Half the nominal power, and so half of 25 degrees, with a time constant of two minutes.
    ChannelBench bench(5e5 * 2);
    const double cold = bench.moduleText("Status.temperature").toDouble();
    QVERIFY(bench.set("Control.voltageSet", "2000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(10 + 120);
    const double rise = bench.moduleText("Status.temperature").toDouble() - cold;
    QVERIFY(isWithin(rise, 12.5 * (1 - std::exp(-1)), OnePercent));
    bench.advance(3600);
    QVERIFY(isWithin(bench.moduleText("Status.temperature").toDouble() - cold, 12.5, OnePercent));
    QVERIFY(bench.set("Control.emergency", "1"));
    bench.advance(120);
    QVERIFY(
        isWithin(bench.moduleText("Status.temperature").toDouble() - cold, 12.5 * std::exp(-1), OnePercent));
    bench.module.setPowered(false, {}, bench.now);
    bench.advance(3600);
    QVERIFY(isWithin(bench.moduleText("Status.temperature").toDouble(), 23, OnePercent));
}

void TestModule::overheatsUnderLoad()
{
    // 30 degrees in standby, 25 more than that, and 12.5 by the load: above 60 when 5 of the 12.5 have come.
    ChannelBench bench(5e5 * 2);
    QCOMPARE(bench.moduleText("Status.temperature"), QStringLiteral("30"));
    bench.fault(FaultKind::Overheating, true, 25);
    QCOMPARE(bench.moduleText("Status.temperatureGood"), QStringLiteral("true"));
    QVERIFY(bench.set("Control.voltageSet", "2000"));
    QVERIFY(bench.set("Control.on", "1"));
    const double start = bench.now + 10; // of the ramp's end
    bench.advance(1000);
    QVERIFY(!bench.isTrue("Control.on"));
    QVERIFY(
        isWithin(bench.timeOf("Error.temperatureNotGood") - start, 120 * std::log(12.5 / 7.5), OnePercent));
    QVERIFY(bench.moduleText("Status.temperatureGood") == QLatin1String("true")); // cooled down since
    QVERIFY(bench.set("Control.on", "1"));
}

QTEST_APPLESS_MAIN(TestModule)
#include "tst_module.moc"
