#include "workbench/simulator/simulated_service.h"

#include "hostclient/orb_item_definitions.h"
#include "tests/workbench/service_fixture.h"

#include <QtTest>

/// The controllers, the connections to them, and both coming and going.
class TestSimulatedServiceConnections : public QObject, private ServiceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void listsItsControllers();
    void namesOfConnections_data();
    void namesOfConnections();
    void opensAConnection();
    void opensByAddress();
    void refusesToOpen_data();
    void refusesToOpen();
    void closesAConnection();
    void reopenedNameKeepsItsIndex();
    void tellsWhoIsConnected();
    void remembersTheScriptThatOpened();
    void controllerGoesAndComesBack();
    void shutdownTakesTheControllerAway();
};

void TestSimulatedServiceConnections::listsItsControllers()
{
    const QVector<QPair<QString, QString>> expected{{Local, LocalText},
                                                    {Bench, QStringLiteral("Bench supply")}};
    QCOMPARE(service->controllers(), expected);
    QCOMPARE(service->allControllers(), expected);
}

void TestSimulatedServiceConnections::namesOfConnections_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("isLocal");
    QTest::newRow("local") << Local << 0 << true;
    QTest::newRow("local's text") << LocalText << 0 << true;
    QTest::newRow("bench") << Bench << 1 << false;
    QTest::newRow("other case") << QStringLiteral("LOCAL") << -1 << false;
    QTest::newRow("empty") << QString() << -1 << false;
    QTest::newRow("nobody") << QStringLiteral("nobody") << -1 << false;
}

void TestSimulatedServiceConnections::namesOfConnections()
{
    QFETCH(QString, name);
    QTEST(service->connectionIndex(name), "index");
    QTEST(service->isLocal(name), "isLocal");
}

void TestSimulatedServiceConnections::opensAConnection()
{
    const QString name = QStringLiteral("hv");
    QCOMPARE(
        service->openConnection(name, QStringLiteral("10.1.2.3:8080"), QStringLiteral("user"), QString()),
        TarnResult::Success);
    QCOMPARE(service->connectionIndex(name), 2);
    QVERIFY(!service->isLocal(name));
    QCOMPARE(service->controllers().size(), 3);
    QCOMPARE(service->controllers().at(2), qMakePair(name, QStringLiteral("Rehearsal controller (hv)")));
    QCOMPARE(service->allControllers().size(), 2);
    QCOMPARE(listener->structureChanges(), 1);
    QCOMPARE(listener->changedStatus().size(), 1);
    QCOMPARE(listener->changedStatus().constFirst().connection, 2);
    QVector<OrbItemId> modules;
    QVERIFY(service->modules(name, modules));
    QCOMPARE(modules.size(), 4);
    QCOMPARE(modules.constFirst().connectionName, name);
    // It is the same plant.
    OrbItemId id = channelItem("Control.voltageSet");
    QCOMPARE(service->writeItem(id, QStringLiteral("123")), TarnResult::Success);
    id.connectionName = name;
    OrbItemReading reading;
    QCOMPARE(service->readItem(id, reading), TarnResult::Success);
    QCOMPARE(reading.value, QStringLiteral("123"));
}

void TestSimulatedServiceConnections::opensByAddress()
{
    const QString name = QStringLiteral("hv");
    QCOMPARE(service->openConnection(name, QStringLiteral("127.0.0.1:8081"), QString(), QString()),
             TarnResult::Success);
    QVector<OrbItemId> modules;
    QVERIFY(service->modules(name, modules));
    QCOMPARE(modules.size(), 1);
}

void TestSimulatedServiceConnections::refusesToOpen_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("address");
    QTest::newRow("no name") << QString() << QStringLiteral("127.0.0.1:8080");
    QTest::newRow("open already") << Local << QStringLiteral("127.0.0.1:8080");
    QTest::newRow("text of one that is open") << LocalText << QStringLiteral("127.0.0.1:8080");
    QTest::newRow("no address") << QStringLiteral("hv") << QString();
    QTest::newRow("no port") << QStringLiteral("hv") << QStringLiteral("127.0.0.1");
    QTest::newRow("no host") << QStringLiteral("hv") << QStringLiteral(":8080");
    QTest::newRow("port is a word") << QStringLiteral("hv") << QStringLiteral("127.0.0.1:web");
    QTest::newRow("port 0") << QStringLiteral("hv") << QStringLiteral("127.0.0.1:0");
    QTest::newRow("port too large") << QStringLiteral("hv") << QStringLiteral("127.0.0.1:65536");
}

void TestSimulatedServiceConnections::refusesToOpen()
{
    QFETCH(QString, name);
    QFETCH(QString, address);
    QCOMPARE(service->openConnection(name, address, QString(), QString()), TarnResult::Failed);
    QCOMPARE(service->controllers().size(), 2);
    QCOMPARE(listener->structureChanges(), 0);
}

void TestSimulatedServiceConnections::closesAConnection()
{
    QCOMPARE(service->closeConnection(Bench), TarnResult::Success);
    QCOMPARE(service->connectionIndex(Bench), -1);
    QCOMPARE(service->controllers().size(), 1);
    QCOMPARE(listener->structureChanges(), 1);
    QCOMPARE(listener->changedStatus().size(), 1);
    QCOMPARE(service->closeConnection(Bench), TarnResult::NotConnected);
    QCOMPARE(service->closeConnection(QStringLiteral("nobody")), TarnResult::NoData);
    OrbItemReading reading;
    QCOMPARE(service->readItem(systemItem(Bench, QStringLiteral("Status.heartBeat")), reading),
             TarnResult::NotConnected);
}

void TestSimulatedServiceConnections::reopenedNameKeepsItsIndex()
{
    QCOMPARE(service->closeConnection(Local), TarnResult::Success);
    QCOMPARE(service->openConnection(QStringLiteral("hv"), QStringLiteral("a:1"), QString(), QString()),
             TarnResult::Success);
    QCOMPARE(service->connectionIndex(QStringLiteral("hv")), 2);
    QCOMPARE(service->openConnection(Local, QStringLiteral("a:1"), QString(), QString()),
             TarnResult::Success);
    QCOMPARE(service->connectionIndex(Local), 0);
}

void TestSimulatedServiceConnections::tellsWhoIsConnected()
{
    const auto read = [this](const QString &connection, const QString &item) {
        OrbItemReading reading;
        const bool isRead = service->readItem(systemItem(connection, item), reading) == TarnResult::Success;
        return isRead ? reading.value : QStringLiteral("failed");
    };
    const QString clients = QStringLiteral("Status.connectedClients");
    const QString hv = QStringLiteral("hv");
    QCOMPARE(read(Local, clients), QStringLiteral("1"));
    QCOMPARE(service->openConnection(hv, QStringLiteral("a:1"), QString(), QString()), TarnResult::Success);
    QCOMPARE(read(Local, clients), QStringLiteral("2"));
    QCOMPARE(read(Bench, clients), QStringLiteral("1"));
    QCOMPARE(read(Local, OrbItemDefinitions::getItemNameSystemStatuscontrollerName()), LocalText);
    QCOMPARE(read(hv, OrbItemDefinitions::getItemNameSystemStatuscontrollerName()),
             QStringLiteral("Rehearsal controller (hv)"));
    QCOMPARE(read(hv, OrbItemDefinitions::getItemNameSystemStatusconnectionName()), hv);
    QVERIFY(read(hv, QStringLiteral("Status.sessionId")) != read(Local, QStringLiteral("Status.sessionId")));
    QCOMPARE(service->closeConnection(hv), TarnResult::Success);
    QCOMPARE(read(Local, clients), QStringLiteral("1"));
}

void TestSimulatedServiceConnections::remembersTheScriptThatOpened()
{
    const auto session = [this](const QString &connection) {
        OrbItemReading reading;
        const OrbItemId id = systemItem(connection, QStringLiteral("Status.sessionId"));
        return service->readItem(id, reading) == TarnResult::Success ? reading.value : QString();
    };
    const auto open = [this](const QString &name, const QString &address, const QString &sessionId) {
        return service->openScriptConnection(name, address, QStringLiteral("ramp.py"), sessionId, QString(),
                                             QString());
    };
    const QString parent = QStringLiteral("parent");
    const QString address = QStringLiteral("127.0.0.1:8081");
    QCOMPARE(open(parent, address, QStringLiteral("42")), TarnResult::Success);
    QCOMPARE(service->connectionScript(parent), QStringLiteral("ramp.py"));
    QCOMPARE(session(parent), QStringLiteral("42"));
    QCOMPARE(listener->structureChanges(), 1);
    QVector<OrbItemId> modules;
    QVERIFY(service->modules(parent, modules));
    QCOMPARE(modules.size(), 1); // the bench's

    QCOMPARE(open(parent, address, QStringLiteral("43")), TarnResult::Failed);
    QCOMPARE(session(parent), QStringLiteral("42"));
    QCOMPARE(service->connectionScript(Local), QString());
    QCOMPARE(service->connectionScript(QStringLiteral("nobody")), QString());

    const QString other = QStringLiteral("other");
    QCOMPARE(open(other, address, QString()), TarnResult::Success);
    QVERIFY(!session(other).isEmpty());
    QVERIFY(session(other) != session(Bench));

    // Once closed, the name is anybody's.
    QCOMPARE(service->closeConnection(parent), TarnResult::Success);
    QCOMPARE(service->openConnection(parent, address, QString(), QString()), TarnResult::Success);
    QCOMPARE(service->connectionScript(parent), QString());
    QVERIFY(session(parent) != QStringLiteral("42"));
}

void TestSimulatedServiceConnections::controllerGoesAndComesBack()
{
    QVERIFY(!service->setControllerAvailable(QStringLiteral("nobody"), false));
    QVERIFY(service->setControllerAvailable(LocalText, false));
    QCOMPARE(listener->structureChanges(), 1);
    QVERIFY(!service->isControllerAvailable(Local));
    QCOMPARE(service->controllers().size(), 1);
    QCOMPARE(service->allControllers().size(), 2);
    QCOMPARE(service->connectionIndex(Local), -1);
    OrbItemReading reading;
    QCOMPARE(service->readItem(channelItem("Control.on"), reading), TarnResult::NotConnected);
    QCOMPARE(service->writeItem(channelItem("Control.on"), QStringLiteral("1")), TarnResult::NotConnected);
    QVector<OrbItemId> ids;
    QVERIFY(!service->modules(Local, ids));
    QCOMPARE(service->openConnection(QStringLiteral("hv"), QStringLiteral("a:1"), QString(), QString()),
             TarnResult::NotConnected);

    QVERIFY(service->setControllerAvailable(Local, false)); // it is away already: nothing to tell
    QCOMPARE(listener->structureChanges(), 1);
    QVERIFY(service->setControllerAvailable(Local, true));
    QCOMPARE(listener->structureChanges(), 2);
    QVERIFY(service->isControllerAvailable(Local));
    QCOMPARE(service->connectionIndex(Local), 0);
    QCOMPARE(service->readItem(channelItem("Control.on"), reading), TarnResult::Success);
}

void TestSimulatedServiceConnections::shutdownTakesTheControllerAway()
{
    QCOMPARE(service->writeItem(systemItem(Local, QStringLiteral("Control.shutdown")), QStringLiteral("1")),
             TarnResult::Success);
    QVERIFY(!service->isControllerAvailable(Local));
    QCOMPARE(listener->structureChanges(), 1);
}

QTEST_GUILESS_MAIN(TestSimulatedServiceConnections)
#include "tst_simulated_service_connections.moc"
