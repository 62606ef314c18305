#include "tests/workbench/channel_bench.h"

#include <QtTest>

#include <cmath>

using namespace simulator;

/// What a channel does when its load breaks down. It always begins at 100 s.
class TestChannelSparks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sparks();
    void tooManySparks();
    void clearingErrorsForgetsSparks();
    void nothingSparksWithoutVoltage();
    void sparksByChance();
};

namespace
{

constexpr double Microsecond = 1e-6;
constexpr double Start = 100; // s

} // namespace

void TestChannelSparks::sparks()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    bench.fault(FaultKind::Spark, true, 3);
    const auto is = [&bench](double volts, bool arc) {
        return bench.number("Status.voltageMeasure") == volts && bench.isTrue("Status.arc") == arc
            && bench.isTrue("Status.constantCurrent") == arc;
    };
    for (int spark = 0; spark < 3; ++spark) {
        QVERIFY(is(0, true));
        QCOMPARE(bench.number("Status.currentMeasure"), NominalCurrent);
        bench.advance(0.00499);
        QVERIFY(is(0, true));
        bench.advance(0.00002); // 5.01 ms
        QVERIFY(is(1000, false));
        bench.advance(0.00498); // 9.99 ms
        QVERIFY(is(1000, false));
        bench.advance(0.000011);
    }
    QVERIFY(is(1000, false)); // there is no fourth
    QVERIFY(bench.isTrue("Event.arc"));
    QVERIFY(!bench.isTrue("Error.arc"));
    QVERIFY(bench.isTrue("Control.on"));
}

void TestChannelSparks::tooManySparks()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    const double start = bench.now;
    bench.fault(FaultKind::Spark, true, 20);
    bench.advance(1);
    QVERIFY(bench.isTrue("Error.arc"));
    QVERIFY(bench.isTrue("Event.arcError"));
    QVERIFY(std::abs(bench.timeOf("Error.arc") - (start + 0.04)) <= Microsecond); // the fifth
    QVERIFY(!bench.isTrue("Control.on"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
    QCOMPARE(bench.number("Status.currentMeasure"), 0.0);
}

void TestChannelSparks::clearingErrorsForgetsSparks()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    for (int times = 0; times < 3; ++times) {
        bench.fault(FaultKind::Spark, true, 4);
        bench.advance(1);
        QVERIFY(!bench.isTrue("Error.arc"));
        QVERIFY(bench.set("Control.clearErrors", "1"));
    }
    bench.fault(FaultKind::Spark, true, 4);
    bench.advance(1);
    QVERIFY(bench.set("Control.clearEvents", "1"));
    bench.fault(FaultKind::Spark, true, 1);
    QVERIFY(bench.isTrue("Error.arc"));
}

void TestChannelSparks::nothingSparksWithoutVoltage()
{
    ChannelBench bench;
    bench.fault(FaultKind::Spark, true, 3);
    bench.advance(1);
    QVERIFY(!bench.isTrue("Event.arc"));
    QCOMPARE(bench.number("Status.currentMeasure"), 0.0);
}

void TestChannelSparks::sparksByChance()
{
    constexpr double Interval = 20; // s
    LoadLayout load = resistiveLoad(Load);
    load.sparkInterval = Interval;
    ChannelBench bench(load);
    QVERIFY(bench.set("Control.voltageSet", "1000"));
    QVERIFY(bench.set("Control.on", "1"));
    bench.advance(100 * Interval);
    QVERIFY(!bench.isTrue("Event.arc")); // only above half the limit
    QVERIFY(bench.set("Control.voltageSet", "1500"));
    constexpr int Sparks = 400;
    for (int spark = 0; spark < Sparks; ++spark) {
        for (int second = 0; !bench.isTrue("Event.arc"); ++second) {
            QVERIFY(second < 100 * Interval);
            bench.advance(1);
        }
        bench.advance(0.01); // until the arc is over
        QVERIFY(bench.set("Control.clearAll", "1"));
        QVERIFY(bench.isTrue("Control.on"));
    }
    // The mean of 400 exponential intervals has a standard deviation of a twentieth.
    const double mean = (bench.now - Start - 100 * Interval - 2.5) / Sparks;
    QVERIFY2(isWithin(mean, Interval, 0.2), qPrintable(QString::number(mean)));
}

QTEST_APPLESS_MAIN(TestChannelSparks)
#include "tst_channel_sparks.moc"
