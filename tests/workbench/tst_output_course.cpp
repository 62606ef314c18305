#include "workbench/simulator/output_course.h"

#include <QtTest>

#include <cmath>
#include <limits>

using namespace simulator;

Q_DECLARE_METATYPE(OutputCourse)

/// Where a course is, and when it gets somewhere.
class TestOutputCourse : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values();
    void crossings_data();
    void crossings();
    void crossingsAreWhereTheCourseIs();
    void currentCrossings();
};

namespace
{

constexpr double Never = std::numeric_limits<double>::infinity();

OutputCourse course(double voltage, double slope, double bend = 0, double swing = 0, double rate = 0)
{
    OutputCourse result;
    result.start = 10;
    result.voltage = voltage;
    result.slope = slope;
    result.bend = bend;
    result.swing = swing;
    result.rate = rate;
    return result;
}

} // namespace

void TestOutputCourse::values()
{
    const OutputCourse straight = course(100, 20);
    QCOMPARE(straight.voltageAt(10), 100.0);
    QCOMPARE(straight.voltageAt(12.5), 150.0);
    const OutputCourse falling = course(1000, 0, 0, 1000, 0.5);
    QCOMPARE(falling.voltageAt(12), 1000 * std::exp(-1));
    const OutputCourse bent = course(0, 10, -1);
    QCOMPARE(bent.voltageAt(14), 40.0 - 16.0);
    OutputCourse current = straight;
    current.current = 0.001;
    current.currentSlope = -0.0005;
    QCOMPARE(current.currentAt(11), 0.0005);
    QCOMPARE(current.currentAt(13), 0.0); // a source cannot take any
}

void TestOutputCourse::crossings_data()
{
    QTest::addColumn<OutputCourse>("way");
    QTest::addColumn<bool>("rises");
    QTest::addColumn<double>("level"); // at `from`
    QTest::addColumn<double>("lineSlope");
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("time");
    const auto row = [](const char *name, const OutputCourse &way, bool rises, double level, double lineSlope,
                        double from, double time) {
        QTest::newRow(name) << way << rises << level << lineSlope << from << time;
    };
    const OutputCourse up = course(100, 20);
    row("straight up", up, true, 200, 0, 10, 15);
    row("straight up, from later", up, true, 200, 0, 13, 15);
    row("straight up, passed", up, true, 200, 0, 16, 16);
    row("straight up, never from above", up, false, 200, 0, 10, Never);
    row("straight up, never below", up, false, 50, 0, 10, Never);
    row("straight down", course(100, -20), false, 40, 0, 10, 13);
    row("straight down, never up", course(100, -20), true, 140, 0, 10, Never);
    row("flat", course(100, 0), true, 101, 0, 10, Never);
    row("flat above", course(100, 0), true, 99, 0, 10, Never);
    row("catches a line", up, true, 110, 10, 10, 11);
    row("catches a line, from later", up, true, 135, 10, 11, 12.5);
    row("does not catch a faster line", up, true, 110, 30, 10, Never);
    row("a falling line comes down to it", course(100, 0), true, 130, -10, 10, 13);

    const OutputCourse discharge = course(1000, 0, 0, 1000, 0.5); // to 0, time constant 2 s
    row("discharge", discharge, false, 1000 * std::exp(-1), 0, 10, 12);
    row("discharge, far", discharge, false, 1e-3, 0, 10, 10 + 2 * std::log(1e6));
    row("discharge, never 0", discharge, false, 0, 0, 10, Never);
    row("discharge, never up", discharge, true, 2000, 0, 10, Never);
    const OutputCourse charge = course(0, 0, 0, -500, 0.5); // to 500
    row("charge", charge, true, 500 * (1 - std::exp(-0.5)), 0, 10, 11);
    row("charge, not so far", charge, true, 500, 0, 10, Never);
    row("charge catches a falling line", charge, true, 500 * (1 - std::exp(-0.5)) + 100, -100, 10, 11);

    const OutputCourse thrown = course(0, 10, -1); // up to 25 after 5 s and down again
    row("thrown up", thrown, true, 24, 0, 10, 14);
    row("thrown, coming down", thrown, false, 24, 0, 10, 16);
    row("thrown, not so high", thrown, true, 26, 0, 10, Never);
    row("thrown, looked for when it comes down", thrown, true, 24, 0, 15.5, Never);

    // 100 (1 - e^-t) - 10 t: up to its highest place at t = ln 10, and down again.
    const OutputCourse drifting = course(0, -10, 0, -100, 1);
    row("drifting up", drifting, true, 100 * (1 - std::exp(-1)) - 10, 0, 10, 11);
    row("drifting down again", drifting, false, 100 * (1 - std::exp(-6)) - 60, 0, 10, 16);
    row("drifting, not so high", drifting, true, 70, 0, 10, Never);
}

void TestOutputCourse::crossings()
{
    QFETCH(OutputCourse, way);
    QFETCH(bool, rises);
    QFETCH(double, level);
    QFETCH(double, lineSlope);
    QFETCH(double, from);
    QFETCH(double, time);
    const double found =
        rises ? way.timeOfRise(level, lineSlope, from) : way.timeOfFall(level, lineSlope, from);
    if (time == Never)
        QCOMPARE(found, Never);
    else
        QVERIFY2(std::abs(found - time) < 1e-6, qPrintable(QString::number(found, 'g', 12)));
}

void TestOutputCourse::crossingsAreWhereTheCourseIs()
{
    // A course of each sort against levels all over it: at the time that is found, it is there and goes the right way.
    int crossings = 0;
    for (const OutputCourse &way : {course(100, 20), course(0, 10, -1), course(50, -3, 0, 700, 0.3),
                                    course(50, -3, 0, -700, 0.3), course(900, 0, 0, 900, 4)}) {
        for (double level = -400; level < 1000; level += 36.7) {
            for (const double lineSlope : {0.0, 5.0, -8.0}) {
                const double rise = way.timeOfRise(level, lineSlope, 10);
                const double fall = way.timeOfFall(level, lineSlope, 10);
                const auto distance = [&](double time) {
                    return way.voltageAt(time) - level - lineSlope * (time - 10);
                };
                if (rise > 10 && rise < Never) {
                    ++crossings;
                    QVERIFY(std::abs(distance(rise)) < 1e-6);
                    QVERIFY(distance(rise - 1e-4) < 0 && distance(rise + 1e-4) > 0);
                }
                if (fall > 10 && fall < Never) {
                    ++crossings;
                    QVERIFY(std::abs(distance(fall)) < 1e-6);
                    QVERIFY(distance(fall - 1e-4) > 0 && distance(fall + 1e-4) < 0);
                }
            }
        }
    }
    QVERIFY(crossings > 100);
}

void TestOutputCourse::currentCrossings()
{
    OutputCourse way = course(0, 100);
    way.current = 0.001;
    way.currentSlope = 0.0002;
    QCOMPARE(way.timeOfCurrentRise(0.002, 10), 15.0);
    QCOMPARE(way.timeOfCurrentRise(0.002, 17), 17.0);
    QCOMPARE(way.timeOfCurrentFall(0.002, 10), Never);
    way.currentSlope = -0.0002;
    QCOMPARE(way.timeOfCurrentFall(0.0005, 10), 12.5);
    QCOMPARE(way.timeOfCurrentRise(0.002, 10), Never);
}

QTEST_APPLESS_MAIN(TestOutputCourse)
#include "tst_output_course.moc"
