#include "workbench/simulator/answer_queue.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <future>
#include <vector>

using namespace simulator;
using std::chrono::milliseconds;

class TestAnswerQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsOnAnotherThread();
    void waitsForTheDelay();
    void keepsTheOrder();
    void dropsWhatIsOutstanding();
    void takesNothingAfterTheStop();
    void takesJobsFromJobs();
    void alarmDoesNotWaitForJobs();
    void laterAlarmReplacesTheEarlier();
    void alarmIsDroppedWithTheRest();
};

void TestAnswerQueue::runsOnAnotherThread()
{
    AnswerQueue queue;
    std::promise<std::thread::id> ran;
    queue.post(milliseconds(0), [&ran] { ran.set_value(std::this_thread::get_id()); });
    QVERIFY(ran.get_future().get() != std::this_thread::get_id());
}

void TestAnswerQueue::waitsForTheDelay()
{
    constexpr int Delay = 50;
    AnswerQueue queue;
    std::promise<void> ran;
    QElapsedTimer timer;
    timer.start();
    queue.post(milliseconds(Delay), [&ran] { ran.set_value(); });
    ran.get_future().wait();
    QVERIFY(timer.elapsed() >= Delay);
}

void TestAnswerQueue::keepsTheOrder()
{
    constexpr int Jobs = 1000;
    AnswerQueue queue;
    std::vector<int> order;
    std::promise<void> done;
    // The first is due last of all.
    queue.post(milliseconds(30), [&order] { order.push_back(0); });
    for (int i = 1; i < Jobs; ++i)
        queue.post(milliseconds(i % 3), [&order, i] { order.push_back(i); });
    queue.post(milliseconds(0), [&done] { done.set_value(); });
    done.get_future().wait();
    QCOMPARE(order.size(), std::size_t(Jobs));
    for (int i = 0; i < Jobs; ++i)
        QCOMPARE(order[std::size_t(i)], i);
}

void TestAnswerQueue::dropsWhatIsOutstanding()
{
    std::atomic<int> count{0};
    {
        AnswerQueue queue;
        for (int i = 0; i < 10; ++i)
            queue.post(std::chrono::hours(1), [&count] { ++count; });
    }
    QCOMPARE(count.load(), 0);
}

void TestAnswerQueue::takesNothingAfterTheStop()
{
    AnswerQueue queue;
    queue.stop();
    const auto token = std::make_shared<int>(0);
    queue.post(milliseconds(0), [token] { ++*token; });
    queue.stop();
    QCOMPARE(token.use_count(), 1L);
}

void TestAnswerQueue::takesJobsFromJobs()
{
    AnswerQueue queue;
    std::promise<int> ran;
    queue.post(milliseconds(0), [&] { queue.post(milliseconds(0), [&ran] { ran.set_value(7); }); });
    QCOMPARE(ran.get_future().get(), 7);
}

void TestAnswerQueue::alarmDoesNotWaitForJobs()
{
    constexpr int Delay = 30;
    AnswerQueue queue;
    std::promise<void> ran;
    QElapsedTimer timer;
    timer.start();
    queue.post(std::chrono::hours(1), [] {});
    queue.setAlarm(std::chrono::steady_clock::now() + milliseconds(Delay), [&ran] { ran.set_value(); });
    ran.get_future().wait();
    QVERIFY(timer.elapsed() >= Delay);
}

void TestAnswerQueue::laterAlarmReplacesTheEarlier()
{
    AnswerQueue queue;
    std::promise<int> ran;
    std::atomic<int> earlier{0};
    const auto now = std::chrono::steady_clock::now();
    queue.setAlarm(now + std::chrono::hours(1), [&earlier] { ++earlier; });
    queue.setAlarm(now + milliseconds(1), [&ran] { ran.set_value(7); });
    QCOMPARE(ran.get_future().get(), 7);
    queue.stop();
    QCOMPARE(earlier.load(), 0);
}

void TestAnswerQueue::alarmIsDroppedWithTheRest()
{
    const auto token = std::make_shared<int>(0);
    AnswerQueue queue;
    queue.setAlarm(std::chrono::steady_clock::now() + std::chrono::hours(1), [token] { ++*token; });
    queue.stop();
    queue.setAlarm(std::chrono::steady_clock::now(), [token] { ++*token; });
    QCOMPARE(token.use_count(), 1L);
    QCOMPARE(*token, 0);
}

QTEST_APPLESS_MAIN(TestAnswerQueue)
#include "tst_answer_queue.moc"
