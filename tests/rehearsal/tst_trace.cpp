#include "workbench/rehearsal/trace.h"

#include <QTest>

#include <algorithm>
#include <cmath>

using rehearsal::Trace;
using rehearsal::TracePoint;

Q_DECLARE_METATYPE(rehearsal::TracePoint)

namespace
{

constexpr double Tolerance = 1e-6;

double least(const Trace &trace)
{
    const auto &points = trace.points();
    return std::min_element(points.begin(), points.end(),
                            [](const TracePoint &a, const TracePoint &b) { return a.voltage < b.voltage; })
        ->voltage;
}

bool isOrdered(const Trace &trace)
{
    const auto &points = trace.points();
    return std::is_sorted(points.begin(), points.end(),
                          [](const TracePoint &a, const TracePoint &b) { return a.time < b.time; });
}

} // namespace

class TestTrace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStraightLineTakesItsEnds()
    {
        Trace trace(100, Tolerance, Tolerance);
        for (int i = 0; i <= 100; ++i)
            trace.add({i * 0.1, i * 10.0, i * 1e-3, 500});
        QCOMPARE(trace.points().size(), std::size_t{2});
        QCOMPARE(trace.points().front().voltage, 0.0);
        QCOMPARE(trace.points().back().voltage, 1000.0);
        QCOMPARE(trace.points().back().time, 10.0);
    }

    void aBendStays_data()
    {
        QTest::addColumn<TracePoint>("bend"); // on a line from 0 to 20 V in 2 s, but for one thing
        QTest::newRow("voltage") << TracePoint{1, 11, 0, 0};
        QTest::newRow("current") << TracePoint{1, 10, 0.1, 0};
        QTest::newRow("set voltage") << TracePoint{1, 10, 0, 30};
    }

    void aBendStays()
    {
        QFETCH(TracePoint, bend);
        Trace trace(100, Tolerance, Tolerance);
        trace.add({0, 0, 0, 0});
        trace.add(bend);
        trace.add({2, 20, 0, 0});
        QCOMPARE(trace.points().size(), std::size_t{3});
    }

    void aJumpStays()
    {
        Trace trace(100, Tolerance, Tolerance);
        for (const TracePoint &point : {TracePoint{0, 100, 0, 0}, TracePoint{1, 100, 0, 0},
                                        TracePoint{1, 0, 0, 0}, TracePoint{2, 0, 0, 0}})
            trace.add(point);
        QCOMPARE(trace.points().size(), std::size_t{4});
        QCOMPARE(trace.points().at(1).voltage, 100.0);
        QCOMPARE(trace.points().at(2).voltage, 0.0);
        QCOMPARE(trace.points().at(2).time, 1.0);
    }

    void aLatePointGoesToItsPlace()
    {
        Trace trace(100, Tolerance, Tolerance);
        trace.add({0, 0, 0, 0});
        trace.add({2, 5, 0, 0});
        trace.add({1, 50, 0, 0});
        QVERIFY(isOrdered(trace));
        QCOMPARE(trace.points().at(1).voltage, 50.0);
    }

    // What bends a little everywhere must not become straight.
    void aSlowCurveKeepsItsShape()
    {
        Trace trace(2000, Tolerance, Tolerance);
        const auto voltage = [](double time) { return std::exp(-time / 10000); };
        for (int i = 0; i <= 200000; ++i)
            trace.add({i * 0.05, voltage(i * 0.05), 0, 0});
        const auto &points = trace.points();
        QVERIFY(points.size() > 2);
        for (std::size_t i = 1; i < points.size(); ++i) {
            const double middle = (points.at(i - 1).time + points.at(i).time) / 2;
            const double drawn = (points.at(i - 1).voltage + points.at(i).voltage) / 2;
            QVERIFY2(std::abs(drawn - voltage(middle)) < 1e-3, qPrintable(QString::number(middle)));
        }
    }

    void manyPointsKeepEveryExtreme()
    {
        constexpr int most = 2000;
        Trace trace(most, 0, 0);
        const auto noise = [](int i) { return std::fmod(i * 7.31, 1.0); };
        for (int i = 0; i < 200000; ++i)
            trace.add({i * 0.05,
                       i == 77777        ? 9000
                           : i == 123456 ? -9000
                                         : noise(i),
                       i == 5 ? 3 : noise(i), 0});
        QVERIFY(trace.points().size() <= most);
        QVERIFY(trace.points().size() > most / 4);
        QVERIFY(isOrdered(trace));
        QCOMPARE(least(trace), -9000.0);
        const auto &points = trace.points();
        QVERIFY(std::any_of(points.begin(), points.end(), [](const TracePoint &point) {
            return point.voltage == 9000 && point.time == 77777 * 0.05;
        }));
        QVERIFY(std::any_of(points.begin(), points.end(),
                            [](const TracePoint &point) { return point.current == 3; }));
        QCOMPARE(points.front().time, 0.0);
        QCOMPARE(points.back().time, 199999 * 0.05);
    }
};

QTEST_GUILESS_MAIN(TestTrace)
#include "tst_trace.moc"
