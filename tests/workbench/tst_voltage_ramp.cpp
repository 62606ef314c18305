#include "workbench/simulator/voltage_ramp.h"

#include <QtTest>

using namespace simulator;

class TestVoltageRamp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsAtZero();
    void followsALine_data();
    void followsALine();
    void isDoneAtItsEnd();
    void jumps();
};

void TestVoltageRamp::startsAtZero()
{
    const VoltageRamp ramp;
    QCOMPARE(ramp.valueAt(0), 0.0);
    QVERIFY(!ramp.isRampingAt(0));
}

void TestVoltageRamp::followsALine_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<double>("speed");
    QTest::addColumn<double>("after");
    QTest::addColumn<double>("value");
    QTest::newRow("begin") << 100.0 << 600.0 << 50.0 << 0.0 << 100.0;
    QTest::newRow("up") << 100.0 << 600.0 << 50.0 << 4.0 << 300.0;
    QTest::newRow("down") << 600.0 << 0.0 << 200.0 << 1.5 << 300.0;
    QTest::newRow("slow") << 0.0 << 6000.0 << 0.06 << 3600.0 << 216.0;
    QTest::newRow("end") << 0.0 << 600.0 << 200.0 << 3.0 << 600.0;
    QTest::newRow("long after") << 0.0 << 600.0 << 200.0 << 1e6 << 600.0;
}

void TestVoltageRamp::followsALine()
{
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(double, speed);
    QFETCH(double, after);
    constexpr double Start = 1000;
    VoltageRamp ramp;
    ramp.start(from, to, speed, Start);
    QTEST(ramp.valueAt(Start + after), "value");
}

void TestVoltageRamp::isDoneAtItsEnd()
{
    VoltageRamp ramp;
    ramp.start(0, 100, 10, 5);
    QVERIFY(ramp.isRampingAt(5));
    QVERIFY(ramp.isRampingAt(14.999));
    QVERIFY(!ramp.isRampingAt(15));
}

void TestVoltageRamp::jumps()
{
    VoltageRamp ramp;
    ramp.start(0, 100, 10, 5);
    ramp.jumpTo(40);
    QVERIFY(!ramp.isRampingAt(5));
    QCOMPARE(ramp.valueAt(5), 40.0);
    QCOMPARE(ramp.target(), 40.0);
}

QTEST_APPLESS_MAIN(TestVoltageRamp)
#include "tst_voltage_ramp.moc"
