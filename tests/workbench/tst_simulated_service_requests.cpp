#include "workbench/simulator/simulated_service.h"

#include "tests/workbench/listener_log.h"
#include "workbench/simulator/stepped_clock.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <future>

using namespace simulator;
using std::chrono::milliseconds;

namespace
{

const QString Local = QStringLiteral("local");
const QString True = QStringLiteral("[{\"trigger\":\"true\"}]");
const QString False = QStringLiteral("[{\"trigger\":\"false\"}]");
const QString Denied = QStringLiteral("[{\"trigger\":\"denied\"}]");
const QString NoData = QStringLiteral("[{\"trigger\":\"noData\"}]");

QString command(const char *name, const char *place, const char *item, const char *value = "",
                const char *unit = "")
{
    // Field by field as the command builder writes it.
    const QStringList numbers = QString::fromLatin1(place).split(QLatin1Char('.'));
    return QStringLiteral(R"({"c":"%1","p":{"p":{"l":"%2","a":"%3","c":"%4"},"i":"%5","v":"%6","u":"%7"}})")
        .arg(QLatin1String(name), numbers.value(0), numbers.value(1), numbers.value(2), QLatin1String(item),
             QLatin1String(value), QLatin1String(unit));
}

QString request(const QStringList &commands)
{
    return QStringLiteral(R"({"i":"<session_id>","t":"request","c":[%1],"r":"websocket"})")
        .arg(commands.join(QLatin1Char(',')));
}

/// A listener that sends a request from inside a call, and takes itself away.
class AskingListener final : public OrbBackendListener
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

} // namespace

/// Raw requests and what comes back.
class TestSimulatedServiceRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void triggers_data();
    void triggers();
    void dataMessage_data();
    void dataMessage();
    void dataIsWhatTheItemReads();
    void textsAreEscaped();
    void commandsInOrder();
    void stopsAtTheFirstFailure();
    void setTakesItsUnit();
    void refusesAtOnce_data();
    void refusesAtOnce();
    void refusesControllersThatAreNotThere();
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
    /// Sends and waits for the trigger; and for the data when it is true.
    QStringList answerTo(const QString &text, int messages);

    std::shared_ptr<SteppedClock> clock;
    std::unique_ptr<SimulatedService> service;
    std::unique_ptr<ListenerLog> listener;
};

void TestSimulatedServiceRequests::init()
{
    clock = std::make_shared<SteppedClock>();
    service = std::make_unique<SimulatedService>(clock);
    service->setLatency(milliseconds(0));
    listener = std::make_unique<ListenerLog>();
    service->setListener(listener.get());
}

void TestSimulatedServiceRequests::cleanup()
{
    service.reset();
    listener.reset();
}

QStringList TestSimulatedServiceRequests::answerTo(const QString &text, int messages)
{
    const int before = listener->messageCount();
    QString reply = QStringLiteral("left over");
    if (!service->rawRequest(Local, text, reply) || !reply.isEmpty())
        return {reply};
    // A request that makes its own end visible: nothing of the one before can come after it.
    if (!service->rawRequest(Local, request({command("setItem", "0.0.0", "Control.clearAll", "0")}), reply))
        return {reply};
    const bool hasCome = QTest::qWaitFor(
        [this, before, messages] { return listener->messageCount() >= before + messages + 1; });
    const QStringList all = listener->messages();
    if (!hasCome || all.size() != before + messages + 1 || all.constLast() != True)
        return all;
    return all.mid(before, messages);
}

void TestSimulatedServiceRequests::triggers_data()
{
    QTest::addColumn<QString>("commandText");
    QTest::addColumn<QString>("trigger");
    const auto row = [](const char *name, const QString &text, const QString &trigger) {
        QTest::newRow(name) << text << trigger;
    };
    row("set", command("setItem", "0.0.1", "Control.voltageSet", "100", "V"), True);
    row("set without unit", command("setItem", "0.0.1", "Control.voltageSet", "100"), True);
    row("set of the system", command("setItem", "..", "Setup.cycleTime", "100"), True);
    row("set of a line", command("setItem", "0..", "Setup.cycleTime", "100"), True);
    row("set of a crate", command("setItem", "0.1000.", "Control.clearAll", "1"), True);
    row("set of a module", command("setItem", "0.3.", "Control.kill", "1"), True);
    row("bad number", command("setItem", "0.0.1", "Control.voltageSet", "a lot"), False);
    row("no value", command("setItem", "0.0.1", "Control.voltageSet", ""), False);
    row("beyond the limit", command("setItem", "0.0.1", "Control.voltageSet", "6001"), False);
    row("beyond the limit by its unit", command("setItem", "0.0.1", "Control.voltageSet", "6.1", "kV"),
        False);
    row("another unit", command("setItem", "0.0.1", "Control.voltageSet", "1", "A"), False);
    row("bad bool", command("setItem", "0.0.1", "Control.on", "yes"), False);
    row("set of what can only be read", command("setItem", "0.0.1", "Status.voltageMeasure", "1"), Denied);
    row("get of what can only be written", command("getItem", "0.0.1", "Control.clearAll"), Denied);
    row("unknown item", command("getItem", "0.0.1", "Status.happiness"), NoData);
    row("set of an unknown item", command("setItem", "0.0.1", "Status.happiness", "1"), NoData);
    row("item of another level", command("getItem", "0.0.", "Status.voltageMeasure"), NoData);
    row("placeholder for an item", command("getItem", "..", "Select a command"), NoData);
    row("unknown channel", command("getItem", "0.0.8", "Control.on"), NoData);
    row("unknown module", command("getItem", "0.4.1", "Control.on"), NoData);
    row("unknown crate", command("getItem", "0.1001.", "Control.power"), NoData);
    row("unknown line", command("getItem", "1..", "Status.heartBeat"), NoData);
    row("channel of a crate", command("getItem", "0.1000.0", "Control.on"), NoData);
}

void TestSimulatedServiceRequests::triggers()
{
    QFETCH(QString, commandText);
    QFETCH(QString, trigger);
    QCOMPARE(answerTo(request({commandText}), 1), QStringList{trigger});
}

void TestSimulatedServiceRequests::dataMessage_data()
{
    QTest::addColumn<QString>("commandText");
    QTest::addColumn<QString>("data");
    const QString time = QStringLiteral(R"("timestamp":1577836802.000}])");
    QTest::newRow("channel") << command("getItem", "0.0.1", "Status.voltageNominal")
                             << QStringLiteral(R"([{"controller":"local","line":0,"address":0,"channel":1,)"
                                               R"("item":"Status.voltageNominal","value":6000,"unit":"V",)")
            + time;
    QTest::newRow("module") << command("getItem", "0.3.", "Control.kill")
                            << QStringLiteral(R"([{"controller":"local","line":0,"address":3,)"
                                              R"("item":"Control.kill","value":false,"unit":"",)")
            + time;
    QTest::newRow("crate") << command("getItem", "0.1000.", "Status.runningState")
                           << QStringLiteral(R"([{"controller":"local","line":0,"address":1000,)"
                                             R"("item":"Status.runningState","value":"off","unit":"",)")
            + time;
    QTest::newRow("line") << command("getItem", "0..", "Setup.cycleTime")
                          << QStringLiteral(R"([{"controller":"local","line":0,)"
                                            R"("item":"Setup.cycleTime","value":200,"unit":"ms",)")
            + time;
    QTest::newRow("system") << command("getItem", "..", "Status.controllerName")
                            << QStringLiteral(
                                   R"([{"controller":"local",)"
                                   R"("item":"Status.controllerName","value":"Rehearsal controller",)"
                                   R"("unit":"",)")
            + time;
}

void TestSimulatedServiceRequests::dataMessage()
{
    QFETCH(QString, commandText);
    QFETCH(QString, data);
    clock->advance(std::chrono::seconds(2));
    QCOMPARE(answerTo(request({commandText}), 2), (QStringList{True, data}));
    QCOMPARE(listener->senders().constFirst(), Local);
}

void TestSimulatedServiceRequests::dataIsWhatTheItemReads()
{
    QCOMPARE(answerTo(request({command("setItem", "0.0.1", "Control.voltageSet", "3000"),
                               command("setItem", "0.0.1", "Control.on", "1")}),
                      1),
             QStringList{True});
    clock->advance(std::chrono::seconds(2));
    const QStringList answer = answerTo(request({command("getItem", "0.0.1", "Status.voltageMeasure")}), 2);
    QCOMPARE(answer.size(), 2);
    QJsonParseError error;
    const QJsonDocument data = QJsonDocument::fromJson(answer.constLast().toUtf8(), &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(data.array().at(0).toObject().value(QStringLiteral("value")).toDouble(), 1200.0);
}

void TestSimulatedServiceRequests::textsAreEscaped()
{
    const QString name = QString::fromUtf8("a \"quoted\\\" näme\n");
    QCOMPARE(service->openConnection(name, QStringLiteral("a:1"), QString(), QString()), TarnResult::Success);
    QString reply;
    QVERIFY(service->rawRequest(name, request({command("getItem", "..", "Status.connectionName")}), reply));
    QTRY_COMPARE(listener->messageCount(), 2);
    const QString data = listener->messages().constLast();
    QVERIFY(!data.contains(QLatin1Char('\n')));
    const QJsonObject object = QJsonDocument::fromJson(data.toUtf8()).array().at(0).toObject();
    QCOMPARE(object.value(QStringLiteral("value")).toString(), name);
    QCOMPARE(object.value(QStringLiteral("controller")).toString(), name);
}

void TestSimulatedServiceRequests::commandsInOrder()
{
    const QStringList answer = answerTo(request({command("getItem", "0.0.1", "Control.voltageSet"),
                                                 command("setItem", "0.0.1", "Control.voltageSet", "7"),
                                                 command("getItem", "0.0.1", "Control.voltageSet")}),
                                        2);
    QCOMPARE(answer.size(), 2);
    QCOMPARE(answer.constFirst(), True);
    const QJsonArray data = QJsonDocument::fromJson(answer.constLast().toUtf8()).array();
    QCOMPARE(data.size(), 2);
    QCOMPARE(data.at(0).toObject().value(QStringLiteral("value")).toDouble(), 0.0);
    QCOMPARE(data.at(1).toObject().value(QStringLiteral("value")).toDouble(), 7.0);
}

void TestSimulatedServiceRequests::stopsAtTheFirstFailure()
{
    QCOMPARE(answerTo(request({command("getItem", "0.0.1", "Control.voltageSet"),
                               command("setItem", "0.0.1", "Control.voltageSet", "7"),
                               command("setItem", "0.0.1", "Status.on", "1"),
                               command("setItem", "0.0.1", "Control.on", "1")}),
                      1),
             QStringList{Denied});
    OrbItemId id(OrbItemId::Channel);
    id.connectionName = Local;
    id.channel = 1;
    OrbItemReading reading;
    id.itemName = QStringLiteral("Control.voltageSet");
    QCOMPARE(service->readItem(id, reading), TarnResult::Success);
    QCOMPARE(reading.value, QStringLiteral("7"));
    id.itemName = QStringLiteral("Control.on");
    QCOMPARE(service->readItem(id, reading), TarnResult::Success);
    QCOMPARE(reading.value, QStringLiteral("false"));
}

void TestSimulatedServiceRequests::setTakesItsUnit()
{
    const QStringList answer =
        answerTo(request({command("setItem", "0.0.1", "Control.voltageSet", "1.5", "kV"),
                          command("getItem", "0.0.1", "Control.voltageSet")}),
                 2);
    QVERIFY2(answer.constLast().contains(QLatin1String("\"value\":1500,\"unit\":\"V\"")),
             qPrintable(answer.constLast()));
}

void TestSimulatedServiceRequests::refusesAtOnce_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("begin");
    QTest::newRow("malformed") << QStringLiteral("{\"t\"")
                               << QStringLiteral("malformed JSON at line 1, column ");
    QTest::newRow("empty") << QString() << QStringLiteral("malformed JSON at line 1, column 1: ");
    QTest::newRow("no request") << QStringLiteral("{\"t\":\"reply\"}")
                                << QStringLiteral("not a request: t is \"reply\"; allowed: ");
    QTest::newRow("too long") << QString(3 << 20, QLatin1Char(' '))
                              << QStringLiteral("the request has 3145728 characters");
}

void TestSimulatedServiceRequests::refusesAtOnce()
{
    QFETCH(QString, text);
    QFETCH(QString, begin);
    QString reply;
    QVERIFY(!service->rawRequest(Local, text, reply));
    QVERIFY2(reply.startsWith(begin), qPrintable(reply));
    // Nothing follows: the next request's answer is the first.
    QCOMPARE(answerTo(request({command("setItem", "0.0.1", "Control.on", "0")}), 1), QStringList{True});
    QCOMPARE(listener->messageCount(), 2);
}

void TestSimulatedServiceRequests::refusesControllersThatAreNotThere()
{
    const QString good = request({command("getItem", "..", "Status.heartBeat")});
    QString reply;
    QVERIFY(!service->rawRequest(QStringLiteral("No connection"), good, reply));
    QCOMPARE(reply,
             QStringLiteral("there is no controller \"No connection\"; there are: "
                            "\"Rehearsal controller\" (local), \"Bench supply\" (bench)"));
    QVERIFY(service->setControllerAvailable(Local, false));
    QVERIFY(!service->rawRequest(Local, good, reply));
    QCOMPARE(reply, QStringLiteral("there is no controller \"local\"; there are: \"Bench supply\" (bench)"));
    QVERIFY(service->setControllerAvailable(QStringLiteral("bench"), false));
    QVERIFY(!service->rawRequest(Local, good, reply));
    QCOMPARE(reply, QStringLiteral("there is no controller \"local\"; there is none at present"));
    QVERIFY(service->setControllerAvailable(Local, true));
    QVERIFY(service->rawRequest(QStringLiteral("Rehearsal controller"), good, reply));
    QVERIFY(reply.isEmpty());
    QTRY_COMPARE(listener->messageCount(), 2);
    QCOMPARE(listener->senders().constFirst(), Local);
}

void TestSimulatedServiceRequests::answersOnAnotherThread()
{
    QCOMPARE(answerTo(request({command("setItem", "0.0.1", "Control.on", "0")}), 1), QStringList{True});
    QVERIFY(listener->messageThread() != std::this_thread::get_id());
}

void TestSimulatedServiceRequests::answersInOrder()
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

void TestSimulatedServiceRequests::latency()
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

void TestSimulatedServiceRequests::shorterLatencyDoesNotOvertake()
{
    QString reply;
    service->setLatency(milliseconds(40));
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.1", "Control.on", "x")}), reply));
    service->setLatency(milliseconds(0));
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.1", "Control.on", "0")}), reply));
    QTRY_COMPARE(listener->messageCount(), 2);
    QCOMPARE(listener->messages(), (QStringList{False, True}));
}

void TestSimulatedServiceRequests::isCarriedOutWhenTheLatencyIsOver()
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

void TestSimulatedServiceRequests::vanishedControllerDoesNotAnswer()
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

void TestSimulatedServiceRequests::closedConnectionDoesNotAnswer()
{
    QString reply;
    service->setLatency(milliseconds(20));
    QVERIFY(service->rawRequest(Local, request({command("getItem", "0.0.1", "Control.on")}), reply));
    QCOMPARE(service->closeConnection(Local), TarnResult::Success);
    QVERIFY(service->rawRequest(QStringLiteral("bench"),
                                request({command("setItem", "0.0.1", "Control.on", "x")}), reply));
    QTRY_COMPARE(listener->messages(), QStringList{False});
}

void TestSimulatedServiceRequests::shutdownIsAnswered()
{
    QString reply;
    QVERIFY(service->rawRequest(Local, request({command("setItem", "..", "Control.shutdown", "1")}), reply));
    QTRY_COMPARE(listener->messages(), QStringList{True});
    QCOMPARE(listener->structureChanges(), 1);
    QVERIFY(!service->isControllerAvailable(Local));
}

void TestSimulatedServiceRequests::destroyedWithAnswersOutstanding()
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

void TestSimulatedServiceRequests::listenerAsksAndLeaves()
{
    AskingListener asking(*service);
    service->setListener(&asking);
    QString reply;
    QVERIFY(service->rawRequest(Local, request({command("setItem", "0.0.0", "Control.on", "0")}), reply));
    QCOMPARE(asking.done.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
    service->setListener(nullptr); // so that the call it left from is over, too
}

void TestSimulatedServiceRequests::noListenerNoAnswer()
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

QTEST_GUILESS_MAIN(TestSimulatedServiceRequests)
#include "tst_simulated_service_requests.moc"
