#include "workbench/simulator/listener_gate.h"

#include "tests/workbench/listener_log.h"

#include <QtTest>

#include <atomic>
#include <future>

using namespace simulator;

class TestListenerGate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void callsNobodyWithoutAListener();
    void callsTheListener();
    void takingAwayWaitsForTheCallUnderWay();
    void waitsForCallsToTheOldListenerOnly();
    void aListenerMayTakeItselfAway();
    void aListenerMayCallBack();
};

void TestListenerGate::callsNobodyWithoutAListener()
{
    ListenerGate gate;
    bool isCalled = false;
    gate.call([&isCalled](OrbBackendListener &) { isCalled = true; });
    QVERIFY(!isCalled);
}

void TestListenerGate::callsTheListener()
{
    ListenerGate gate;
    ListenerLog log;
    gate.setListener(&log);
    OrbBackendListener *called = nullptr;
    gate.call([&called](OrbBackendListener &listener) { called = &listener; });
    QVERIFY(called == &log);
}

void TestListenerGate::takingAwayWaitsForTheCallUnderWay()
{
    for (int round = 0; round < 200; ++round) {
        ListenerGate gate;
        ListenerLog log;
        gate.setListener(&log);
        std::promise<void> entered;
        std::promise<void> mayLeave;
        std::atomic<bool> isOver{false};
        std::thread caller([&] {
            gate.call([&](OrbBackendListener &) {
                entered.set_value();
                mayLeave.get_future().wait();
                isOver = true;
            });
        });
        entered.get_future().wait();
        std::thread releaser([&mayLeave] { mayLeave.set_value(); });
        gate.setListener(nullptr);
        const bool wasOver = isOver;
        caller.join();
        releaser.join();
        QVERIFY(wasOver);
    }
}

void TestListenerGate::waitsForCallsToTheOldListenerOnly()
{
    ListenerGate gate;
    ListenerLog first;
    ListenerLog second;
    gate.setListener(&first);
    std::promise<void> replaced;
    std::promise<void> mayLeave;
    std::thread caller([&] {
        gate.call([&](OrbBackendListener &) {
            gate.setListener(&second);
            replaced.set_value();
            mayLeave.get_future().wait();
        });
    });
    replaced.get_future().wait();
    gate.setListener(nullptr); // returns, although the call to the first is still under way
    mayLeave.set_value();
    caller.join();
    bool isCalled = false;
    gate.call([&isCalled](OrbBackendListener &) { isCalled = true; });
    QVERIFY(!isCalled);
}

void TestListenerGate::aListenerMayTakeItselfAway()
{
    ListenerGate gate;
    ListenerLog log;
    gate.setListener(&log);
    int calls = 0;
    const auto takeAway = [&](OrbBackendListener &) {
        ++calls;
        gate.setListener(nullptr);
    };
    gate.call(takeAway);
    gate.call(takeAway);
    QCOMPARE(calls, 1);
}

void TestListenerGate::aListenerMayCallBack()
{
    ListenerGate gate;
    ListenerLog log;
    gate.setListener(&log);
    int calls = 0;
    gate.call([&](OrbBackendListener &) {
        ++calls;
        gate.call([&calls](OrbBackendListener &) { ++calls; });
    });
    QCOMPARE(calls, 2);
    gate.setListener(nullptr);
}

QTEST_APPLESS_MAIN(TestListenerGate)
#include "tst_listener_gate.moc"
