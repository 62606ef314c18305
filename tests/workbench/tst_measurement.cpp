#include "tests/workbench/channel_bench.h"

#include <QtTest>

#include <cmath>
#include <vector>

using namespace simulator;

/// What a module measures of what is there.
class TestMeasurement : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void offset();
    void steps();
    void noise_data();
    void noise();
    void readingChangesNothing();
    void oneValueForEachSample();
    void channelsAndSeedsDiffer();
    void filterSmooths();
    void nothingIsMeasuredWithoutPower();
};

namespace
{

ModuleLayout noisyModule(std::size_t channels = 1)
{
    ModuleLayout layout = moduleOf(resistiveLoad(Load), channels);
    layout.measurement.voltageNoise = 0.2;
    layout.measurement.currentNoise = 2e-7;
    return layout;
}

struct Spread
{
    double mean = 0;
    double deviation = 0;
};

/// Of that many samples, one after the other.
Spread spreadOf(ChannelBench &bench, const char *item, int samples)
{
    double sum = 0;
    double squares = 0;
    for (int i = 0; i < samples; ++i) {
        bench.advance(0.002); // a sample later, at 500 a second
        const double value = bench.number(item);
        sum += value;
        squares += value * value;
    }
    const double mean = sum / samples;
    return {mean, std::sqrt(squares / samples - mean * mean)};
}

} // namespace

void TestMeasurement::offset()
{
    ModuleLayout layout = moduleOf(resistiveLoad(Load));
    layout.measurement.voltageOffset = -1.5;
    layout.measurement.currentOffset = 1e-6;
    ChannelBench bench(layout);
    QCOMPARE(bench.number("Status.voltageMeasure"), -1.5);
    QVERIFY(bench.rampedTo("1000"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 998.5);
    QCOMPARE(bench.number("Status.currentMeasure"), 0.001001);
    const ChannelSnapshot snapshot = bench.module.channelSnapshot(0, bench.now);
    QCOMPARE(snapshot.voltage, 1000.0);
    QCOMPARE(snapshot.current, 0.001);
}

void TestMeasurement::steps()
{
    ModuleLayout layout = moduleOf(resistiveLoad(Load));
    layout.measurement.voltageStep = 0.25;
    layout.measurement.currentStep = 1e-6;
    ChannelBench bench(layout);
    QVERIFY(bench.rampedTo("1000.3"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 1000.25);
    QCOMPARE(bench.number("Status.currentMeasure"), 0.001);
    QVERIFY(bench.rampedTo("1000.4"));
    QCOMPARE(bench.number("Status.voltageMeasure"), 1000.5);
}

void TestMeasurement::noise_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("deviation");
    QTest::newRow("voltage") << QByteArray("Status.voltageMeasure") << 1000.0 << 0.2;
    QTest::newRow("current") << QByteArray("Status.currentMeasure") << 0.001 << 2e-7;
}

void TestMeasurement::noise()
{
    QFETCH(QByteArray, item);
    QFETCH(double, value);
    QFETCH(double, deviation);
    ChannelBench bench(noisyModule());
    QVERIFY(bench.rampedTo("1000"));
    constexpr int Samples = 20000;
    const Spread spread = spreadOf(bench, item.constData(), Samples);
    // Five standard deviations of a mean and of a standard deviation of as many samples.
    QVERIFY(std::abs(spread.mean - value) < 5 * deviation / std::sqrt(Samples));
    QVERIFY(std::abs(spread.deviation - deviation) < 5 * deviation / std::sqrt(2 * Samples));
}

void TestMeasurement::readingChangesNothing()
{
    ChannelBench often(noisyModule());
    ChannelBench once(noisyModule());
    QVERIFY(often.rampedTo("1000"));
    QVERIFY(once.rampedTo("1000"));
    for (int i = 0; i < 1000; ++i) {
        often.number("Status.voltageMeasure");
        often.number("Status.currentMeasure");
        often.advance(0.001);
    }
    once.advance(often.now - once.now);
    QCOMPARE(once.text("Status.voltageMeasure"), often.text("Status.voltageMeasure"));
    QCOMPARE(once.text("Status.currentMeasure"), often.text("Status.currentMeasure"));
}

void TestMeasurement::oneValueForEachSample()
{
    ChannelBench bench(noisyModule());
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(bench.setModule("Setup.adcSampleRate", "5"));
    bench.advance(0.01);
    const QString sample = bench.text("Status.voltageMeasure");
    bench.advance(0.18);
    QCOMPARE(bench.text("Status.voltageMeasure"), sample);
    bench.advance(0.02);
    QVERIFY(bench.text("Status.voltageMeasure") != sample);
}

void TestMeasurement::channelsAndSeedsDiffer()
{
    ChannelBench bench(noisyModule(2));
    QVERIFY(bench.text("Status.voltageMeasure", 0) != bench.text("Status.voltageMeasure", 1));
    PlantRun otherRun(2);
    RunningSummary above(nullptr);
    const Module other(noisyModule(2), {&otherRun, &above, QStringLiteral("local"), 0});
    const Module same(noisyModule(2), {&bench.run, &above, QStringLiteral("local"), 0});
    const Module elsewhere(noisyModule(2), {&bench.run, &above, QStringLiteral("bench"), 0});
    const ItemDefinition &item = *channelItems().find(QStringLiteral("Status.voltageMeasure"));
    const auto value = [&](const Module &module) {
        return formatValue(item, module.readChannel(0, item, bench.now));
    };
    QCOMPARE(value(same), bench.text("Status.voltageMeasure"));
    QVERIFY(value(other) != value(same));
    QVERIFY(value(elsewhere) != value(same));
}

void TestMeasurement::filterSmooths()
{
    ChannelBench bench(noisyModule());
    QVERIFY(bench.rampedTo("1000"));
    QVERIFY(bench.setModule("Setup.digitalFilter", "1024")); // 16 times as many steps: a quarter of the noise
    const Spread spread = spreadOf(bench, "Status.voltageMeasure", 5000);
    QVERIFY(isWithin(spread.deviation, 0.05, 0.06));
}

void TestMeasurement::nothingIsMeasuredWithoutPower()
{
    ModuleLayout layout = noisyModule();
    layout.measurement.voltageOffset = 5;
    ChannelBench bench(layout);
    bench.module.setPowered(false, {}, bench.now);
    QCOMPARE(bench.number("Status.voltageMeasure"), 0.0);
}

QTEST_APPLESS_MAIN(TestMeasurement)
#include "tst_measurement.moc"
