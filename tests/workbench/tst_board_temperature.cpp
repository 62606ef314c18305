#include "workbench/simulator/board_temperature.h"

#include <QtTest>

#include <cmath>
#include <vector>

using namespace simulator;

class TestBoardTemperature : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsInFirstOrder();
    void leavesTheRangeAndComesBack();
    void excess();
    void excessWhileItWarmsUp();
    void restCostsNothing();
};

namespace
{

constexpr double TimeConstant = 100; // s

/// A board at 30 degrees at first.
struct TemperatureBench
{
    EventQueue queue;
    std::vector<double> changes; // s
    BoardTemperature board{queue, TimeConstant, 30, [this](double time) { changes.push_back(time); }};
};

bool isNear(double value, double expected)
{
    return std::abs(value - expected) < 1e-6;
}

} // namespace

void TestBoardTemperature::followsInFirstOrder()
{
    TemperatureBench bench;
    QVERIFY(isNear(bench.board.at(50), 30));
    bench.board.approach(50, 50);
    QVERIFY(isNear(bench.board.at(50), 30));
    QVERIFY(isNear(bench.board.at(150), 50 - 20 * std::exp(-1)));
    bench.board.approach(30, 150);
    QVERIFY(isNear(bench.board.at(250), 30 + 20 * (1 - std::exp(-1)) * std::exp(-1)));
    QVERIFY(isNear(bench.board.at(1e5), 30));
    QVERIFY(bench.board.isGood());
    QVERIFY(bench.changes.empty());
}

void TestBoardTemperature::leavesTheRangeAndComesBack()
{
    TemperatureBench bench;
    bench.board.approach(90, 0);
    const double left = TimeConstant * std::log(2); // half of the way from 30 to 90
    bench.queue.runUntil(left - 0.001);
    QVERIFY(bench.board.isGood());
    bench.queue.runUntil(left + 0.001);
    QVERIFY(!bench.board.isGood());
    bench.queue.runUntil(1000);
    QCOMPARE(bench.changes.size(), std::size_t(1));
    QVERIFY(isNear(bench.changes[0], left));
    bench.board.approach(30, 1000);
    bench.queue.runUntil(10000);
    QVERIFY(bench.board.isGood());
    QCOMPARE(bench.changes.size(), std::size_t(2));
    const double hot = 90 - 60 * std::exp(-10);
    QVERIFY(isNear(bench.changes[1], 1000 + TimeConstant * std::log((hot - 30) / 28))); // at 58
}

void TestBoardTemperature::excess()
{
    TemperatureBench bench;
    bench.board.setExcess(40, 7);
    QVERIFY(isNear(bench.board.at(7), 70));
    QVERIFY(!bench.board.isGood());
    QCOMPARE(bench.changes, std::vector<double>{7});
    bench.board.setExcess(29, 8); // 59: not good again yet
    QVERIFY(!bench.board.isGood());
    bench.board.setExcess(0, 9);
    QVERIFY(bench.board.isGood());
    QCOMPARE(bench.changes, (std::vector<double>{7, 9}));
}

void TestBoardTemperature::excessWhileItWarmsUp()
{
    TemperatureBench bench;
    bench.board.approach(50, 0);
    bench.board.setExcess(20, 0); // 50 now, 70 at last
    QVERIFY(bench.board.isGood());
    bench.queue.runUntil(1000);
    QVERIFY(!bench.board.isGood());
    QCOMPARE(bench.changes.size(), std::size_t(1));
    QVERIFY(isNear(bench.changes[0], TimeConstant * std::log(2)));
}

void TestBoardTemperature::restCostsNothing()
{
    TemperatureBench bench;
    bench.board.approach(55, 1);
    QVERIFY(bench.queue.isEmpty()); // it never gets there
    bench.board.approach(65, 2);
    QVERIFY(!bench.queue.isEmpty());
    bench.queue.runUntil(10000);
    QVERIFY(bench.queue.isEmpty());
    QVERIFY(!bench.board.isGood());
}

QTEST_APPLESS_MAIN(TestBoardTemperature)
#include "tst_board_temperature.moc"
