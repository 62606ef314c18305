#include "workbench/simulator/simulated_service.h"

#include "tests/workbench/request_fixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

/// Raw requests and what they come to. When the answers come has a test of its own.
class TestSimulatedServiceRequests : public QObject, private RequestFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

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
    void entersWhatItRefuses_data();
    void entersWhatItRefuses();
    void keepsLittleOfARequestThatIsTooLong();
    void refusesControllersThatAreNotThere();
};

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

void TestSimulatedServiceRequests::entersWhatItRefuses_data()
{
    QTest::addColumn<QString>("connection");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("controller");
    const QString good = request({command("getItem", "..", "Status.heartBeat")});
    QTest::newRow("no JSON") << Local << QStringLiteral("what is\nthis") << Local;
    QTest::newRow("no request") << Local << QStringLiteral("{\"t\":\"reply\"}") << Local;
    QTest::newRow("empty") << Local << QString() << Local;
    QTest::newRow("by its display text") << LocalText << QStringLiteral("{") << Local;
    QTest::newRow("controller that is away") << Bench << good << Bench;
    QTest::newRow("no such controller") << QStringLiteral("nowhere") << good << QStringLiteral("nowhere");
}

void TestSimulatedServiceRequests::entersWhatItRefuses()
{
    QFETCH(QString, connection);
    QFETCH(QString, text);
    QFETCH(QString, controller);
    QVERIFY(service->setControllerAvailable(Bench, false));
    clock->advance(std::chrono::seconds(3));
    const quint64 first = service->nextJournalNumber();
    QString reply;
    QVERIFY(!service->rawRequest(connection, text, reply));
    const QVector<simulator::JournalEntry> entries = service->journal(first);
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries.at(0).kind, simulator::JournalEntry::Request);
    QCOMPARE(entries.at(0).text, text);
    QCOMPARE(entries.at(1).kind, simulator::JournalEntry::RequestRefused);
    QCOMPARE(entries.at(1).text, reply);
    QVERIFY(entries.at(0).request != 0);
    QCOMPARE(entries.at(1).request, entries.at(0).request);
    for (const simulator::JournalEntry &entry : entries) {
        QCOMPARE(entry.controller, controller);
        QCOMPARE(entry.time, 3.0);
    }
    // The next one has a number of its own.
    QVERIFY(service->rawRequest(Local, request({command("getItem", "..", "Status.heartBeat")}), reply));
    QVERIFY(service->journal(first).at(2).request > entries.at(0).request);
}

void TestSimulatedServiceRequests::keepsLittleOfARequestThatIsTooLong()
{
    const QString text(3 << 20, QLatin1Char(' '));
    QString reply;
    QVERIFY(!service->rawRequest(Local, text, reply));
    QCOMPARE(service->journal(0).at(0).text.size(), simulator::AnswerTransport::LongestRefusedText);
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

QTEST_GUILESS_MAIN(TestSimulatedServiceRequests)
#include "tst_simulated_service_requests.moc"
