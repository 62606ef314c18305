#include "workbench/simulator/crate.h"

#include "tests/workbench/controller_bench.h"

#include <QtTest>

#include <cmath>

using namespace simulator;

/// Power, life and heat of a crate. Faults and their times have a test of their own.
class TestCrate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void livesOnMainsOrBattery();
    void powerNeedsMainsAndSupply();
    void switchesItselfOffWhenItIsHot();
    void warmsWithItsModules();
    void overheatsUnderLoad();
    void countsItsOwnConditions();
    void lettingTheVoltageDownTakesItsTime();
};

namespace
{

class CrateBench : public ControllerBench
{
public:
    void fault(FaultKind kind, bool begins, double amount = 0)
    {
        Fault what;
        what.kind = kind;
        what.object = Crate1000;
        what.amount = amount;
        run.queue.runUntil(now);
        controller.applyFault(what, begins, now);
    }
};

bool isNear(double value, double expected, double tolerance)
{
    return std::abs(value - expected) <= tolerance;
}

} // namespace

void TestCrate::livesOnMainsOrBattery()
{
    CrateBench bench;
    QVERIFY(bench.isTrue(Crate1000, "Status.isAlive"));
    bench.fault(FaultKind::MainsFailure, true);
    QVERIFY(bench.isTrue(Crate1000, "Status.isAlive"));
    QCOMPARE(bench.text(Crate1000, "Status.runningState"), QStringLiteral("error"));
    bench.fault(FaultKind::BatteryFailure, true);
    QVERIFY(!bench.isTrue(Crate1000, "Status.isAlive"));
    QCOMPARE(bench.text(Crate1000, "Status.runningState"), QStringLiteral("disabled"));
    bench.fault(FaultKind::MainsFailure, false);
    QVERIFY(bench.isTrue(Crate1000, "Status.isAlive"));
    bench.fault(FaultKind::BatteryFailure, false);
    QVERIFY(bench.set(Crate1000, "Control.clearAll", "1"));
    QCOMPARE(bench.text(Crate1000, "Status.runningState"), QStringLiteral("off"));
}

void TestCrate::powerNeedsMainsAndSupply()
{
    CrateBench bench;
    bench.fault(FaultKind::MainsFailure, true);
    bench.fault(FaultKind::CrateSupplyFailure, true);
    QVERIFY(!bench.isTrue(Module0, "Status.isAlive"));
    bench.fault(FaultKind::MainsFailure, false);
    QVERIFY(!bench.isTrue(Module0, "Status.isAlive"));
    bench.fault(FaultKind::CrateSupplyFailure, false);
    QVERIFY(bench.isTrue(Module0, "Status.isAlive"));
    // Switched off meanwhile, it stays off.
    bench.fault(FaultKind::MainsFailure, true);
    QVERIFY(bench.set(Crate1000, "Control.power", "0"));
    bench.fault(FaultKind::MainsFailure, false);
    QVERIFY(!bench.isTrue(Module0, "Status.isAlive"));
    QVERIFY(bench.set(Crate1000, "Control.power", "1"));
    QVERIFY(bench.isTrue(Module0, "Status.isAlive"));
}

void TestCrate::switchesItselfOffWhenItIsHot()
{
    CrateBench bench;
    QVERIFY(bench.ramp(Channel00, "3000"));
    bench.now += 60;
    bench.fault(FaultKind::CrateOverheating, true);
    QVERIFY(!bench.isTrue(Crate1000, "Control.power"));
    QCOMPARE(bench.number(Channel00, "Status.voltageMeasure"), 0.0);
    QCOMPARE(bench.write(Crate1000, "Control.power", "1"), TarnResult::Failed);
    bench.fault(FaultKind::CrateOverheating, false);
    QVERIFY(!bench.isTrue(Crate1000, "Control.power")); // nothing comes on by itself
    QVERIFY(bench.set(Crate1000, "Control.power", "1"));
    // A few degrees more are none of its business.
    bench.fault(FaultKind::CrateOverheating, true, 10);
    QVERIFY(bench.isTrue(Crate1000, "Control.power"));
    QVERIFY(isNear(bench.number(Crate1000, "Status.temperature1"), 41, 0.5));
}

void TestCrate::warmsWithItsModules()
{
    // All outputs of the first of four modules at 40 % of their power but one that has no load: 35 % of a quarter of
    // 10 degrees, with a time constant of five minutes.
    CrateBench bench;
    QCOMPARE(bench.number(Crate1000, "Status.temperature1"), 31.0);
    for (qint32 channel = 0; channel < 8; ++channel)
        QVERIFY(bench.ramp({OrbItemId::Channel, 0, 0, channel}, "6000"));
    const double rise = 0.35 / 4 * 10;
    bench.now += 10 + 300;
    QVERIFY(
        isNear(bench.number(Crate1000, "Status.temperature1"), 31 + rise * (1 - std::exp(-1)), 0.01 * rise));
    bench.now += 10000;
    QVERIFY(isNear(bench.number(Crate1000, "Status.temperature1"), 31 + rise, 0.01 * rise));
    QVERIFY(bench.set(Crate1000, "Control.power", "0"));
    bench.now += 300;
    const double cold = 23.5;
    const double expected = cold + (31 + rise - cold) * std::exp(-1);
    QVERIFY(isNear(bench.number(Crate1000, "Status.temperature1"), expected, 0.01 * (31 + rise - cold)));
}

void TestCrate::overheatsUnderLoad()
{
    // A degree below 60, until all outputs are at 40 % of their power but one in each module that has no load.
    CrateBench bench;
    bench.fault(FaultKind::CrateOverheating, true, 28);
    QVERIFY(bench.isTrue(Crate1000, "Status.temperatureGood"));
    double heat = 0;
    const double start = bench.now;
    constexpr int ChannelsOfModules[] = {8, 12, 16, 16};
    constexpr const char *Volts[] = {"6000", "3000", "2000", "500"};
    for (quint32 module = 0; module < 4; ++module) {
        const int channels = ChannelsOfModules[module];
        heat += 0.4 * (channels - 1) / channels / 4;
        for (qint32 channel = 0; channel < channels; ++channel)
            QVERIFY(bench.ramp({OrbItemId::Channel, 0, module, channel}, Volts[module]));
    }
    const double ramped = 10;
    const double until = start + ramped - 300 * std::log(1 - 1 / (10 * heat));
    bench.now = start + ramped + 0.99 * (until - start - ramped);
    QVERIFY(bench.isTrue(Channel00, "Control.on"));
    QVERIFY(bench.isTrue(Crate1000, "Control.power"));
    bench.now = start + ramped + 1.01 * (until - start - ramped);
    QVERIFY(!bench.isTrue(Channel00, "Control.on"));
    QVERIFY(!bench.isTrue(Crate1000, "Control.power"));
    QVERIFY(bench.isTrue(Crate1000, "Error.temperatureNotGood"));
    QCOMPARE(bench.write(Crate1000, "Control.power", "1"), TarnResult::Failed);
    // Cold at last, it can be switched on again: below 58.
    bench.now += 3000;
    QVERIFY(bench.isTrue(Crate1000, "Status.temperatureGood"));
    QVERIFY(bench.set(Crate1000, "Control.power", "1"));
}

void TestCrate::countsItsOwnConditions()
{
    CrateBench bench;
    bench.fault(FaultKind::BatteryFailure, true);
    QCOMPARE(bench.number(Crate1000, "Status.eventCounter"), 1.0);
    QCOMPARE(bench.number(Crate1000, "Status.errorCounter"), 1.0);
    for (const char *item : {"Control.clearAll", "Control.clearEvents", "Control.clearErrors"})
        QVERIFY2(!bench.set(Crate1000, item, "1"), item);
    QVERIFY(bench.isTrue(Crate1000, "Error.batteryNotGood")); // it still is the case
    bench.fault(FaultKind::BatteryFailure, false);
    QVERIFY(bench.set(Crate1000, "Control.clearErrors", "1"));
    QVERIFY(bench.isTrue(Crate1000, "Event.batteryNotGood"));
    QCOMPARE(bench.number(Crate1000, "Status.errorCounter"), 0.0);
    QVERIFY(bench.set(Crate1000, "Control.clearEvents", "1"));
    QCOMPARE(bench.number(Crate1000, "Status.eventCounter"), 0.0);
}

void TestCrate::lettingTheVoltageDownTakesItsTime()
{
    // An output that is off and still charged is dangerous to touch.
    ControllerLayout layout = PlantLayout::rehearsal().controllers.front();
    for (LoadLayout &load : layout.lines[0].crates[0].modules[0].loads) {
        load.resistance = 1e7;
        load.capacitance = 1e-6; // ten seconds
    }
    PlantRun run;
    Controller controller(layout, run);
    const ConnectionView view;
    const auto set = [&](const ObjectAddress &object, const char *item, double value, double now) {
        const ItemDefinition &definition =
            *Controller::itemsOf(object.level)->find(QString::fromLatin1(item));
        return controller.write(object, definition, ItemValue::of(value), now) == TarnResult::Success;
    };
    const auto isOn = [&](double now) {
        return controller.read(Crate1000, *crateItems().find(QStringLiteral("Status.on")), view, now)
            .isTrue();
    };
    QVERIFY(set(Channel00, "Control.voltageSet", 600, 0));
    QVERIFY(set(Channel00, "Control.on", 1, 0));
    QVERIFY(isOn(60));
    QVERIFY(set(Channel00, "Control.emergency", 1, 60));
    const double until = 60 + 10 * std::log(600 / 63.0);
    QVERIFY(isOn(60 + 0.99 * (until - 60)));
    QVERIFY(!isOn(60 + 1.01 * (until - 60)));
}

QTEST_APPLESS_MAIN(TestCrate)
#include "tst_crate.moc"
