#include "workbench/simulator/simulated_service.h"

#include "tests/workbench/request_fixture.h"

#include <QElapsedTimer>
#include <QtTest>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

using namespace simulator;
using std::chrono::milliseconds;

/// When, on which thread and to whom the service answers, and when it does not.
class TestSimulatedServiceAnswers : public QObject, private RequestFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void answersOnAnotherThread();
    void answersInOrder();
    void latency();
    void shorterLatencyDoesNotOvertake();
    void isCarriedOutWhenTheLatencyIsOver();
    void vanishedControllerDoesNotAnswer();
    void closedConnectionDoesNotAnswer();
    void shutdownIsAnswered();
    void destroyedWithAnswersOutstanding();
    void listenerAsksAndLeaves();
    void noListenerNoAnswer();

private:
    class AskingListener;
};

/// A listener that sends a request from inside a call, and takes itself away.
class TestSimulatedServiceAnswers::AskingListener final : public OrbBackendListener
{
public:
    explicit AskingListener(SimulatedService &askedService) : service(askedService) { }

    void rawMessage(const QString &, const QString &message) override
    {
        if (message == True) {
            QString reply;
            if (!isAsked)
                service.rawRequest(Local, request({command("setItem", "0.0.0", "Control.on", "x")}), reply);
            isAsked = true;
        } else if (message == False) {
            service.setListener(nullptr);
            done.set_value();
        }
    }
    void structureChanged(const OrbItemId &) override { }
    void valuesChanged(const OrbItemId &) override { }
    void statusChanged(const OrbItemId &) override { }
    void messageWasLogged(const OrbLogMessage &) override { }

    SimulatedService &service;
    bool isAsked = false;
    std::promise<void> done;
};

void TestSimulatedServiceAnswers::answersOnAnotherThread()
{
    QCOMPARE(answerTo(request({command("setItem", "0.0.1", "Control.on", "0")}), 1), QStringList{True});
    QVERIFY(listener->messageThread() != std::this_thread::get_id());
}

void TestSimulatedServiceAnswers::answersInOrder()
{
    constexpr int Requests = 500;
    QString reply;
    for (int i = 1; i <= Requests; ++i) {
        const QByteArray value = QByteArray::number(i);
        QVERIFY(
            service->rawRequest(Local,
                                request({command("setItem", "0.0.1", "Control.voltageSet", value.constData()),
                                         command("getItem", "0.0.1", "Control.voltageSet")}),
                                reply));
    }
    QTRY_COMPARE(listener->messageCount(), 2 * Requests);
    const QStringList messages = listener->messages();
    for (int i = 1; i <= Requests; ++i) {
        QCOMPARE(messages.at(2 * i - 2), True);
        QVERIFY(messages.at(2 * i - 1).contains(QStringLiteral("\"value\":%1,").arg(i)));
    }
}

void TestSimulatedServiceAnswers::latency()
{
    QCOMPARE(SimulatedService(clock).latency(), SimulatedService::DefaultLatency);
    constexpr int Latency = 60;
    service->setLatency(milliseconds(Latency));
    QCOMPARE(service->latency(), milliseconds(Latency));
    QElapsedTimer timer;
    timer.start();
    QString reply;
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.1", "Control.on", "0")}), reply));
    QTRY_COMPARE(listener->messageCount(), 1);
    QVERIFY(timer.elapsed() >= Latency);
    service->setLatency(milliseconds(-5));
    QCOMPARE(service->latency(), milliseconds(0));
}

void TestSimulatedServiceAnswers::shorterLatencyDoesNotOvertake()
{
    QString reply;
    service->setLatency(milliseconds(40));
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.1", "Control.on", "x")}), reply));
    service->setLatency(milliseconds(0));
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.1", "Control.on", "0")}), reply));
    QTRY_COMPARE(listener->messageCount(), 2);
    QCOMPARE(listener->messages(), (QStringList{False, True}));
}

void TestSimulatedServiceAnswers::isCarriedOutWhenTheLatencyIsOver()
{
    OrbItemId id(OrbItemId::Channel);
    id.connectionName = Local;
    id.channel = 1;
    id.itemName = QStringLiteral("Control.on");
    const auto isOn = [this, &id] {
        OrbItemReading reading;
        service->readItem(id, reading);
        return reading.value == QLatin1String("true");
    };
    QString reply;
    service->setLatency(std::chrono::hours(1));
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.1", "Control.on", "1")}), reply));
    QVERIFY(!isOn());
    service = std::make_unique<SimulatedService>(clock);
    service->setListener(listener.get());
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.1", "Control.on", "1")}), reply));
    QTRY_COMPARE(listener->messages(), QStringList{True});
    QVERIFY(isOn());
}

void TestSimulatedServiceAnswers::vanishedControllerDoesNotAnswer()
{
    QString reply;
    service->setLatency(milliseconds(20));
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.1", "Control.on", "1")}), reply));
    QVERIFY(service->setControllerAvailable(Local, false));
    QVERIFY(service->rawRequest(QStringLiteral("bench"),
                                request({command("setItem", "0.0.1", "Control.on", "x")}), reply));
    QTRY_COMPARE(listener->messageCount(), 1);
    QCOMPARE(listener->senders(), QStringList{QStringLiteral("bench")});
    QCOMPARE(listener->messages(), QStringList{False});
    QVERIFY(service->setControllerAvailable(Local, true));
    QVERIFY(answerTo(request({command("getItem", "0.0.1", "Control.on")}), 2)
                .constLast()
                .contains(QLatin1String("\"value\":false")));
}

void TestSimulatedServiceAnswers::closedConnectionDoesNotAnswer()
{
    QString reply;
    service->setLatency(milliseconds(20));
    QVERIFY(service->rawRequest(Local, request({command("getItem", "0.0.1", "Control.on")}), reply));
    QCOMPARE(service->closeConnection(Local), TarnResult::Success);
    QVERIFY(service->rawRequest(QStringLiteral("bench"),
                                request({command("setItem", "0.0.1", "Control.on", "x")}), reply));
    QTRY_COMPARE(listener->messages(), QStringList{False});
}

void TestSimulatedServiceAnswers::shutdownIsAnswered()
{
    QString reply;
    QVERIFY(service->rawRequest(Local, request({command("setItem", "..", "Control.shutdown", "1")}), reply));
    QTRY_COMPARE(listener->messages(), QStringList{True});
    QCOMPARE(listener->structureChanges(), 1);
    QVERIFY(!service->isControllerAvailable(Local));
}

void TestSimulatedServiceAnswers::destroyedWithAnswersOutstanding()
{
    QString reply;
    const QString text = request({command("getItem", "0.0.1", "Status.voltageMeasure")});
    for (const int delay : {0, 1, 3600000}) {
        auto shortLived = std::make_unique<SimulatedService>(clock);
        ListenerLog log;
        shortLived->setListener(&log);
        shortLived->setLatency(milliseconds(delay));
        for (int i = 0; i < 200; ++i)
            QVERIFY(shortLived->rawRequest(Local, text, reply));
        shortLived.reset();
        const int received = log.messageCount();
        QVERIFY(received <= 400);
        QVERIFY(delay < 1000 || received == 0);
    }
}

void TestSimulatedServiceAnswers::listenerAsksAndLeaves()
{
    AskingListener asking(*service);
    service->setListener(&asking);
    QString reply;
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.0", "Control.on", "0")}), reply));
    QCOMPARE(asking.done.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
    service->setListener(nullptr); // so that the call it left from is over, too
}

void TestSimulatedServiceAnswers::noListenerNoAnswer()
{
    service->setListener(nullptr);
    QString reply;
    QVERIFY(
        service->rawRequest(Local, request({command("setItem", "0.0.1", "Control.voltageSet", "9")}), reply));
    OrbItemId id(OrbItemId::Channel);
    id.connectionName = Local;
    id.channel = 1;
    id.itemName = QStringLiteral("Control.voltageSet");
    OrbItemReading reading;
    QTRY_VERIFY(service->readItem(id, reading) == TarnResult::Success && reading.value == QLatin1String("9"));
    QCOMPARE(listener->messageCount(), 0);
}

QTEST_GUILESS_MAIN(TestSimulatedServiceAnswers)
#include "tst_simulated_service_answers.moc"
