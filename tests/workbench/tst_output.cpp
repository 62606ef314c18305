#include "workbench/simulator/output.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <functional>

using namespace simulator;

Q_DECLARE_METATYPE(LoadLayout)

/// The electric side of a channel: 2 kV, 4 mA, 200 V/s.
class TestOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void againstSmallSteps_data();
    void againstSmallSteps();
    void chargesAtTheSetCurrent();
    void dischargesAfterItIsCutOff_data();
    void dischargesAfterItIsCutOff();
    void rampDownWaitsForTheLoad();
    void driftingLeakageTakesTheVoltageAway();
    void shortAndBack_data();
    void shortAndBack();
    void loadComesOff();
    void leakBeginsAndEnds();
    void nothingTurnsAtRest();
};

namespace
{

constexpr OutputRating Rating{2000, 0.004};
constexpr double Speed = 200; // V/s

LoadLayout load(double ohm, double farad, double leakage = 0, double drift = 0)
{
    LoadLayout result;
    result.resistance = ohm;
    result.capacitance = farad;
    result.leakage = leakage;
    result.leakageDrift = drift;
    return result;
}

/// An output whose turns are taken at their times.
class TurningOutput
{
public:
    explicit TurningOutput(const LoadLayout &layout) : output(layout, Rating, Rating.current) { }

    void advanceTo(double time)
    {
        for (int turns = 0; turns < 1000; ++turns) {
            const Output::NextTurn next = output.nextTurn(now);
            if (next.time > time)
                break;
            now = next.time;
            output.take(next.turn, now);
        }
        now = time;
    }
    double voltage() const { return output.voltage(now); }
    double current() const { return output.current(now); }

    Output output;
    double now = 0;
};

/// The same by small steps of the equations themselves.
class SteppedOutput
{
public:
    explicit SteppedOutput(const LoadLayout &layout) : hanging(layout) { }

    void advanceTo(double time)
    {
        constexpr double Step = 2e-5;
        while (now < time) {
            now += Step;
            const double toTarget = target - reference;
            const double slope = std::abs(toTarget) <= Speed * Step ? 0 : std::copysign(Speed, toTarget);
            reference = slope == 0 ? target : reference + slope * Step;
            const double leakage =
                volts > 0 || reference > 0 ? hanging.leakage + hanging.leakageDrift * now : 0;
            const double draws = volts / hanging.resistance + leakage;
            const double bleeds = hanging.resistance == NoLoad ? volts / (10 * 2000 / 0.004) : 0;
            // What takes the node to the reference in this step, as far as the source can.
            const double wanted = (reference - volts) / Step * hanging.capacitance + draws;
            const double given = isOn ? qBound(0.0, wanted, limit) : 0;
            const double bled = given > 0 ? 0 : bleeds;
            volts = std::max(0.0, volts + (given - draws - bled) / hanging.capacitance * Step);
            amperes = given;
        }
    }

    LoadLayout hanging;
    double now = 0;
    double target = 0;
    double reference = 0;
    double limit = Rating.current;
    double volts = 0;
    double amperes = 0;
    bool isOn = false;
};

} // namespace

void TestOutput::againstSmallSteps_data()
{
    QTest::addColumn<LoadLayout>("hanging");
    QTest::addColumn<double>("limit");
    QTest::newRow("little capacitance") << load(1e6, 1e-8) << 0.004;
    QTest::newRow("much capacitance") << load(1e6, 1e-6) << 0.004;
    QTest::newRow("limited on the way up") << load(1e6, 1e-6) << 0.0011;
    QTest::newRow("limited for good") << load(1e6, 5e-7) << 0.0005;
    QTest::newRow("limited by the capacitance") << load(NoLoad, 2e-5) << 0.002;
    QTest::newRow("no load") << load(NoLoad, 1e-6) << 0.004;
    QTest::newRow("leaking") << load(2e6, 1e-6, 0.0003) << 0.004;
    QTest::newRow("leaking without a load") << load(NoLoad, 1e-6, 0.0002) << 0.004;
    QTest::newRow("drifting") << load(2e6, 5e-7, 0.0001, 0.0001) << 0.0014;
    QTest::newRow("drifting without a load") << load(NoLoad, 1e-6, 0, 0.0001) << 0.0009;
}

void TestOutput::againstSmallSteps()
{
    QFETCH(LoadLayout, hanging);
    QFETCH(double, limit);
    TurningOutput output(hanging);
    SteppedOutput reference(hanging);
    output.output.setCurrentSet(limit, 0);
    reference.limit = limit;
    const auto agree = [&](double until) {
        for (double time = output.now; time <= until; time += 0.1) {
            output.advanceTo(time);
            reference.advanceTo(time);
            const double difference = std::abs(output.voltage() - reference.volts);
            if (difference > 0.001 * Rating.voltage) {
                qWarning("%g s: %g V, by steps %g V", time, output.voltage(), reference.volts);
                return false;
            }
        }
        return true;
    };
    const auto rampTo = [&](double volts) {
        output.output.rampTo(volts, Speed, output.now);
        reference.isOn = true;
        reference.reference = reference.volts;
        reference.target = volts;
    };
    QVERIFY(agree(1));
    rampTo(1000);
    QVERIFY(agree(9));
    rampTo(1400);
    QVERIFY(agree(13));
    rampTo(300);
    QVERIFY(agree(20));
    rampTo(800);
    QVERIFY(agree(25));
    output.output.cutOff(output.now);
    reference.isOn = false;
    reference.target = 0;
    reference.reference = 0;
    QVERIFY(agree(30));
}

void TestOutput::chargesAtTheSetCurrent()
{
    // 10 µF at 1 mA: 100 V/s, half of what the ramp asks for.
    TurningOutput output(load(NoLoad, 1e-5));
    output.output.setCurrentSet(0.001, 0);
    output.output.rampTo(1000, Speed, 0);
    output.advanceTo(2);
    QCOMPARE(output.voltage(), 200.0);
    QCOMPARE(output.current(), 0.001);
    QCOMPARE(output.output.regulation(), Output::Regulation::Current);
    output.advanceTo(9.99);
    QCOMPARE(output.output.regulation(), Output::Regulation::Current);
    output.advanceTo(10.001);
    QCOMPARE(output.output.regulation(), Output::Regulation::Voltage);
    QCOMPARE(output.voltage(), 1000.0);
    QCOMPARE(output.current(), 0.0);
}

void TestOutput::dischargesAfterItIsCutOff_data()
{
    QTest::addColumn<LoadLayout>("hanging");
    QTest::addColumn<double>("afterASecond");
    QTest::newRow("at once") << load(1e6, 0) << 0.0;
    QTest::newRow("a second") << load(1e6, 1e-6) << 1000 * std::exp(-1);
    QTest::newRow("ten seconds") << load(1e7, 1e-6) << 1000 * std::exp(-0.1);
    QTest::newRow("by the bleeder, 5 MOhm") << load(NoLoad, 1e-6) << 1000 * std::exp(-0.2);
    QTest::newRow("by the leakage, too")
        << load(NoLoad, 1e-6, 0.0001) << 1000 * std::exp(-0.2) - 500 * (1 - std::exp(-0.2));
}

void TestOutput::dischargesAfterItIsCutOff()
{
    QFETCH(LoadLayout, hanging);
    QFETCH(double, afterASecond);
    TurningOutput output(hanging);
    output.output.rampTo(1000, Speed, 0);
    output.advanceTo(20);
    QCOMPARE(output.voltage(), 1000.0);
    output.output.cutOff(20);
    output.advanceTo(21);
    QVERIFY(std::abs(output.voltage() - afterASecond) <= 0.001 * afterASecond);
    QCOMPARE(output.current(), 0.0);
    QVERIFY(!output.output.isRamping());
    output.advanceTo(1000);
    QCOMPARE(output.voltage(), 0.0);
    QCOMPARE(output.output.nextTurn(1000).turn, Output::Turn::None);
}

void TestOutput::rampDownWaitsForTheLoad()
{
    // 200 V/s would take 2 mA out of the 10 µF; the load takes 1 mA at first and less and less.
    TurningOutput output(load(1e6, 1e-5));
    output.output.rampTo(1000, Speed, 0);
    output.advanceTo(50);
    output.output.rampTo(0, Speed, 50);
    output.advanceTo(54);
    QVERIFY(std::abs(output.voltage() - 1000 * std::exp(-0.4)) < 1);
    QCOMPARE(output.current(), 0.0);
    QCOMPARE(output.output.regulation(), Output::Regulation::Draining);
    output.advanceTo(60); // the reference has arrived long since
    QVERIFY(output.output.isRamping());
    output.output.setCurrentSet(0.002, 60); // of no concern
    QVERIFY(output.output.isRamping());
    QCOMPARE(output.output.regulation(), Output::Regulation::Draining);
    QVERIFY(std::abs(output.voltage() - 1000 * std::exp(-1)) < 1);
}

void TestOutput::driftingLeakageTakesTheVoltageAway()
{
    // 1 mA into 500 kOhm at 500 V, and 10 µA more every second: limited to 2 mA from 100 s on, nothing left at 200 s.
    TurningOutput output(load(5e5, 0, 0, 1e-5));
    output.output.setCurrentSet(0.002, 0);
    output.output.rampTo(500, Speed, 0);
    output.advanceTo(99.9);
    QCOMPARE(output.output.regulation(), Output::Regulation::Voltage);
    QVERIFY(std::abs(output.current() - 0.001999) < 1e-9);
    output.advanceTo(100.1);
    QCOMPARE(output.output.regulation(), Output::Regulation::Current);
    output.advanceTo(150);
    QVERIFY(std::abs(output.voltage() - 250) < 0.01);
    QCOMPARE(output.current(), 0.002);
    output.advanceTo(250);
    QCOMPARE(output.voltage(), 0.0);
}

void TestOutput::shortAndBack_data()
{
    QTest::addColumn<double>("farad");
    QTest::addColumn<double>("backAfter"); // s
    QTest::newRow("at once") << 0.0 << 0.0;
    QTest::newRow("charging 2 µF at 4 mA without a load") << 2e-6 << 0.5;
}

void TestOutput::shortAndBack()
{
    QFETCH(double, farad);
    QFETCH(double, backAfter);
    TurningOutput output(load(NoLoad, farad));
    output.output.rampTo(1000, Speed, 0);
    output.advanceTo(20);
    output.output.setShorted(true, 20);
    QCOMPARE(output.voltage(), 0.0);
    QCOMPARE(output.current(), 0.004);
    QCOMPARE(output.output.regulation(), Output::Regulation::Current);
    output.advanceTo(30);
    QCOMPARE(output.voltage(), 0.0);
    output.output.setShorted(false, 30);
    if (backAfter > 0) {
        output.advanceTo(30 + backAfter / 2);
        QVERIFY(std::abs(output.voltage() - 500) < 1);
        output.advanceTo(30 + 0.999 * backAfter);
        QCOMPARE(output.output.regulation(), Output::Regulation::Current);
    }
    output.advanceTo(30 + 1.001 * backAfter);
    QCOMPARE(output.voltage(), 1000.0);
    QCOMPARE(output.output.regulation(), Output::Regulation::Voltage);
}

void TestOutput::loadComesOff()
{
    TurningOutput output(load(1e6, 0, 0.0005));
    output.output.rampTo(1000, Speed, 0);
    output.advanceTo(20);
    QCOMPARE(output.current(), 0.0015);
    output.output.setLoadOff(true, 20);
    QCOMPARE(output.current(), 0.0);
    QCOMPARE(output.voltage(), 1000.0);
    output.output.setLoadOff(false, 21);
    QCOMPARE(output.current(), 0.0015);
}

void TestOutput::leakBeginsAndEnds()
{
    TurningOutput output(load(1e6, 0));
    output.output.setCurrentSet(0.002, 0);
    output.output.rampTo(1000, Speed, 0);
    output.advanceTo(20);
    output.output.setLeak(0.0005, 20);
    QCOMPARE(output.current(), 0.0015);
    QCOMPARE(output.output.regulation(), Output::Regulation::Voltage);
    output.output.setLeak(0.0015, 21);
    QCOMPARE(output.output.regulation(), Output::Regulation::Current);
    QCOMPARE(output.voltage(), 500.0);
    output.output.setLeak(0, 22);
    QCOMPARE(output.voltage(), 1000.0);
    QCOMPARE(output.current(), 0.001);
}

void TestOutput::nothingTurnsAtRest()
{
    for (const LoadLayout &hanging : {load(1e6, 0), load(NoLoad, 1e-6, 1e-4), load(1e5, 1e-7)}) {
        TurningOutput output(hanging);
        QCOMPARE(output.output.nextTurn(0).turn, Output::Turn::None);
        output.output.rampTo(1000, Speed, 0);
        QVERIFY(output.output.nextTurn(0).turn != Output::Turn::None);
        output.advanceTo(100);
        QCOMPARE(output.output.nextTurn(100).turn, Output::Turn::None);
    }
}

QTEST_APPLESS_MAIN(TestOutput)
#include "tst_output.moc"
