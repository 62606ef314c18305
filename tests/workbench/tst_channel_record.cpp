#include "workbench/app/channel_record.h"

#include <QTest>

using workbench::ChannelMark;
using workbench::ChannelRecord;
using workbench::ChannelSample;

namespace
{

ChannelRecord channel()
{
    return ChannelRecord(QStringLiteral("bench"), {OrbItemId::Channel, 0, 3, 7});
}

ChannelSample sampleAt(double time, double voltage)
{
    ChannelSample sample;
    sample.time = time;
    sample.voltage = voltage;
    return sample;
}

} // namespace

class TestChannelRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasAName() { QCOMPARE(channel().name(), QStringLiteral("bench 0.3.7")); }

    void keepsEverySampleThatSaysSomething()
    {
        ChannelRecord record = channel();
        for (int step = 0; step < 10; ++step)
            record.add(sampleAt(step, step * 100));
        QCOMPARE(record.samples().size(), std::size_t(10));
        QCOMPARE(record.samples().at(4).voltage, 400.0);
    }

    void keepsTheEndsOfWhatStaysTheSame()
    {
        ChannelRecord record = channel();
        for (int step = 0; step < 1000; ++step)
            record.add(sampleAt(step, 500));
        record.add(sampleAt(1000, 0));
        QCOMPARE(record.samples().size(), std::size_t(3));
        QCOMPARE(record.samples().at(0).time, 0.0);
        QCOMPARE(record.samples().at(1).time, 999.0);
        QCOMPARE(record.samples().at(1).voltage, 500.0);
        QCOMPARE(record.samples().at(2).voltage, 0.0);
    }

    void keepsAStep()
    {
        ChannelRecord record = channel();
        record.add(sampleAt(1, 500));
        record.add(sampleAt(1, 0));
        record.add(sampleAt(1, 0)); // is there already
        QCOMPARE(record.samples().size(), std::size_t(2));
    }

    void leavesOutWhatGoesBackInTime()
    {
        ChannelRecord record = channel();
        record.add(sampleAt(2, 500));
        record.add(sampleAt(1, 400));
        QCOMPARE(record.samples().size(), std::size_t(1));
    }

    void forgetsWhatIsOlderThanItsSpan()
    {
        ChannelRecord record = channel();
        constexpr int Seconds = static_cast<int>(ChannelRecord::Span) + 500;
        for (int second = 0; second <= Seconds; ++second) {
            record.add(sampleAt(second, second));
            record.add(ChannelMark{double(second), ChannelMark::Trip, QStringLiteral("trip")});
        }
        // One before the span stays, so that the line begins at its edge.
        QCOMPARE(record.samples().front().time, 499.0);
        QVERIFY(record.marks().size() <= ChannelRecord::MostMarks);
        QVERIFY(record.marks().front().time >= 500);
    }

    void neverTakesMoreThanItsMemory()
    {
        ChannelRecord record = channel();
        for (std::size_t step = 0; step < ChannelRecord::MostSamples + 100; ++step)
            record.add(sampleAt(double(step) / 1000, double(step)));
        QCOMPARE(record.samples().size(), ChannelRecord::MostSamples);
        QCOMPARE(record.samples().back().voltage, double(ChannelRecord::MostSamples + 99));
    }

    void findsASampleByTime_data()
    {
        QTest::addColumn<double>("time");
        QTest::addColumn<int>("index");
        QTest::newRow("before all") << -1.0 << 0;
        QTest::newRow("at one") << 10.0 << 1;
        QTest::newRow("between two") << 10.5 << 2;
        QTest::newRow("after all") << 99.0 << 3;
    }

    void findsASampleByTime()
    {
        QFETCH(double, time);
        QFETCH(int, index);
        ChannelRecord record = channel();
        for (const double each : {0.0, 10.0, 20.0})
            record.add(sampleAt(each, each));
        QCOMPARE(static_cast<int>(record.firstAt(time)), index);
    }

    void forgetsOnRequest()
    {
        ChannelRecord record = channel();
        record.add(sampleAt(1, 500));
        record.add(ChannelMark{1, ChannelMark::Trip, QStringLiteral("trip")});
        record.clear();
        QVERIFY(record.samples().empty());
        QVERIFY(record.marks().empty());
    }
};

QTEST_GUILESS_MAIN(TestChannelRecord)

#include "tst_channel_record.moc"
