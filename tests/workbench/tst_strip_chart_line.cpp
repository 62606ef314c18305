#include "workbench/app/strip_chart_line.h"

#include <QTest>

#include <algorithm>
#include <cmath>

using workbench::ChannelRecord;
using workbench::ChannelSample;
using workbench::stripChartLine;

namespace
{

constexpr int Columns = 100;

ChannelRecord recordOf(int samples, double (*voltage)(int))
{
    ChannelRecord record(QStringLiteral("local"), {OrbItemId::Channel, 0, 0, 1});
    for (int number = 0; number < samples; ++number) {
        ChannelSample sample;
        sample.time = number * 0.01;
        sample.voltage = voltage(number);
        record.add(sample);
    }
    return record;
}

QPolygonF line(const ChannelRecord &record, double from, double to)
{
    return stripChartLine(record, &ChannelSample::voltage, from, to, Columns);
}

} // namespace

class TestStripChartLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void drawsFewSamplesAsTheyAre()
    {
        const ChannelRecord record = recordOf(5, [](int number) { return number * number * 1.0; });
        const QPolygonF drawn = line(record, 0, 0.04);
        QCOMPARE(drawn.size(), 5);
        QCOMPARE(drawn.at(3), QPointF(0.03, 9));
    }

    void hasNoMorePointsThanCanBeSeen()
    {
        const ChannelRecord record = recordOf(20000, [](int number) { return std::sin(number * 1.0); });
        const QPolygonF drawn = line(record, 0, 200);
        QVERIFY(drawn.size() <= 4 * (Columns + 2));
        QVERIFY(drawn.size() > Columns);
        const auto isLater = [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); };
        QVERIFY(std::is_sorted(drawn.begin(), drawn.end(), isLater));
    }

    void losesNoPeak()
    {
        // One sample of twenty thousand, amid a level line and in the middle of a column.
        const ChannelRecord record = recordOf(20000, [](int number) {
            return number == 12345 ? -700.0 : number == 7777 ? 900.0 : 500.0 + number % 2;
        });
        const QPolygonF drawn = line(record, 0, 200);
        QVERIFY(drawn.contains(QPointF(12345 * 0.01, -700)));
        QVERIFY(drawn.contains(QPointF(7777 * 0.01, 900)));
    }

    void reachesBeyondBothEdges()
    {
        const ChannelRecord record = recordOf(1000, [](int number) { return number * 1.0; });
        const QPolygonF drawn = line(record, 2.005, 3.005);
        QVERIFY(drawn.constFirst().x() <= 2.005);
        QVERIFY(drawn.constLast().x() >= 3.005);
        QVERIFY(drawn.constFirst().x() > 1.98);
        QVERIFY(drawn.constLast().x() < 3.04);
    }

    void drawsALevelAsTwoPoints()
    {
        ChannelRecord record = recordOf(1000, [](int number) { return number * 1.0; });
        const QPolygonF drawn = stripChartLine(record, &ChannelSample::voltageSet, 0, 9.99, Columns);
        QCOMPARE(drawn.size(), 2);
        QCOMPARE(drawn.constLast(), QPointF(9.99, 0));
    }

    void drawsNothingOfNothing()
    {
        const ChannelRecord record(QStringLiteral("local"), {OrbItemId::Channel, 0, 0, 1});
        QVERIFY(line(record, 0, 10).isEmpty());
        QVERIFY(line(recordOf(5, [](int) { return 1.0; }), 10, 10).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestStripChartLine)

#include "tst_strip_chart_line.moc"
