#include "workbench/simulator/event_queue.h"

#include <QtTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <vector>

using namespace simulator;

namespace
{

class TestEvent final : public QueuedEvent
{
public:
    std::function<void(double)> action;

protected:
    void happen(double time) override { action(time); }
};

} // namespace

class TestEventQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void inTheOrderOfTheirTimes();
    void ofTheSameTimeInTheOrderOfTheirRanks();
    void onlyWhatIsDue();
    void movedAndTakenOut();
    void anEventMayQueueItselfAgain();
    void anEventMayTakeOutAnother();
    void aTimeThatHasPassedIsNow();
    void timeDoesNotGoBack();
    void anyOrderOfChanges();
};

void TestEventQueue::inTheOrderOfTheirTimes()
{
    EventQueue queue;
    std::vector<double> times;
    std::vector<TestEvent> events(5);
    const double due[] = {3, 1, 5, 2, 4};
    for (std::size_t i = 0; i < events.size(); ++i) {
        events[i].action = [&times](double time) { times.push_back(time); };
        queue.setDue(events[i], due[i]);
    }
    queue.runUntil(10);
    QCOMPARE(times, (std::vector<double>{1, 2, 3, 4, 5}));
    QVERIFY(queue.isEmpty());
    QCOMPARE(events[0].dueTime(), QueuedEvent::Never);
}

void TestEventQueue::ofTheSameTimeInTheOrderOfTheirRanks()
{
    EventQueue queue;
    std::vector<int> order;
    std::vector<TestEvent> events(4);
    for (int i = 0; i < 4; ++i) {
        queue.rank(events[std::size_t(i)]);
        events[std::size_t(i)].action = [&order, i](double) { order.push_back(i); };
    }
    for (const std::size_t i : {2, 0, 3, 1})
        queue.setDue(events[i], 7);
    queue.runUntil(7);
    QCOMPARE(order, (std::vector<int>{0, 1, 2, 3}));
}

void TestEventQueue::onlyWhatIsDue()
{
    EventQueue queue;
    int happened = 0;
    TestEvent event;
    event.action = [&happened](double) { ++happened; };
    queue.setDue(event, 2);
    queue.runUntil(1.999);
    QCOMPARE(happened, 0);
    queue.runUntil(2);
    QCOMPARE(happened, 1);
    queue.runUntil(100);
    QCOMPARE(happened, 1);
}

void TestEventQueue::movedAndTakenOut()
{
    EventQueue queue;
    std::vector<double> times;
    TestEvent earlier;
    TestEvent later;
    TestEvent never;
    for (TestEvent *event : {&earlier, &later, &never})
        event->action = [&times](double time) { times.push_back(time); };
    queue.setDue(earlier, 5);
    queue.setDue(later, 1);
    queue.setDue(never, 2);
    queue.setDue(earlier, 0.5);
    queue.setDue(later, 9);
    queue.setDue(never, QueuedEvent::Never);
    queue.setDue(never, QueuedEvent::Never);
    QCOMPARE(queue.size(), std::size_t(2));
    queue.runUntil(10);
    QCOMPARE(times, (std::vector<double>{0.5, 9}));
}

void TestEventQueue::anEventMayQueueItselfAgain()
{
    EventQueue queue;
    std::vector<double> times;
    TestEvent event;
    event.action = [&](double time) {
        times.push_back(time);
        queue.setDue(event, time + 2);
    };
    queue.setDue(event, 1);
    queue.runUntil(6);
    QCOMPARE(times, (std::vector<double>{1, 3, 5}));
    QCOMPARE(event.dueTime(), 7.0);
    queue.setDue(event, QueuedEvent::Never);
}

void TestEventQueue::anEventMayTakeOutAnother()
{
    EventQueue queue;
    TestEvent first;
    TestEvent second;
    bool secondHappened = false;
    first.action = [&](double) { queue.setDue(second, QueuedEvent::Never); };
    second.action = [&](double) { secondHappened = true; };
    queue.setDue(first, 1);
    queue.setDue(second, 1.5);
    queue.runUntil(2);
    QVERIFY(!secondHappened);
}

void TestEventQueue::aTimeThatHasPassedIsNow()
{
    EventQueue queue;
    double at = 0;
    TestEvent event;
    event.action = [&at](double time) { at = time; };
    queue.runUntil(5);
    queue.setDue(event, 3);
    queue.runUntil(6);
    QCOMPARE(at, 5.0);
}

void TestEventQueue::timeDoesNotGoBack()
{
    EventQueue queue;
    double at = 0;
    TestEvent event;
    event.action = [&at](double time) { at = time; };
    queue.runUntil(5);
    queue.runUntil(2);
    queue.setDue(event, 1);
    queue.runUntil(2);
    QCOMPARE(at, 0.0);
    queue.runUntil(5);
    QCOMPARE(at, 5.0);
}

void TestEventQueue::anyOrderOfChanges()
{
    std::mt19937 random(1);
    EventQueue queue;
    std::vector<TestEvent> events(200);
    std::vector<std::pair<double, int>> happened;
    for (int i = 0; i < 200; ++i) {
        queue.rank(events[std::size_t(i)]);
        events[std::size_t(i)].action = [&happened, i](double time) { happened.emplace_back(time, i); };
    }
    for (int change = 0; change < 5000; ++change) {
        const double time = random() % 5 == 0 ? QueuedEvent::Never : double(random() % 100);
        queue.setDue(events[random() % 200], time);
    }
    std::vector<std::pair<double, int>> expected;
    for (int i = 0; i < 200; ++i) {
        if (events[std::size_t(i)].dueTime() != QueuedEvent::Never)
            expected.emplace_back(events[std::size_t(i)].dueTime(), i);
    }
    std::sort(expected.begin(), expected.end());
    QCOMPARE(queue.size(), expected.size());
    queue.runUntil(1000);
    QVERIFY(expected.size() > 100);
    QVERIFY(happened == expected);
}

QTEST_APPLESS_MAIN(TestEventQueue)
#include "tst_event_queue.moc"
