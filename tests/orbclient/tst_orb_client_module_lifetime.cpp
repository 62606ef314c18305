#include "orbclient/orb_client_module.h"

#include "hostclient/orb_item_definitions.h"
#include "hostclient/orb_item_id.h"
#include "hostclient/orb_request_item.h"
#include "tests/support/python_interpreter.h"

#include <QtTest>

/// What outlives what: objects their client, the process its interpreters.
class TestOrbClientModuleLifetime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void objectsOutliveTheirClient_data();
    void objectsOutliveTheirClient();
    void objectsOutliveTheirClientBesideAnother();
    void clientsChangeBetweenTwoCalls();
    void aSharedClientLivesUntilTheLastModuleLetsGo();
    void interpretersComeAndGo();
};

namespace
{

/// A service with one connection, one crate, one module of two channels and a message that waits.
void fill(RecordingBackend &backend)
{
    backend.setControllers({{QStringLiteral("c1"), QString()}});
    OrbItemId crate(OrbItemId::Crate);
    crate.address = 1000;
    backend.setCrates({crate});
    OrbItemId module(OrbItemId::Module);
    module.address = 2;
    backend.setModules({module});
    backend.setCrateModules({module});
    backend.setItem(QStringLiteral("c1"),
                    QStringLiteral("0.2.") + OrbItemDefinitions::getItemNameModuleStatusnumberOfChannels(),
                    {QStringLiteral("2"), QString(), QStringLiteral("int"), 0});
    OrbRequestItem request;
    request.itemName = QStringLiteral("a");
    backend.setPassThroughMessages({request});
}

const QString MakeObjects = QStringLiteral(R"(
connection = orbClient.findConnection("c1")
crate = connection.crates[0]
module = connection.modules[0]
channel = module.channels[1]
frame = connection.getNextPassThroughMessage()
)");

} // namespace

void TestOrbClientModuleLifetime::objectsOutliveTheirClient_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");

    const auto row = [](const char *call, const char *before, const char *after) {
        QTest::newRow(call) << QString::fromLatin1(before) << QString::fromLatin1(after);
    };
    row("connection.setControlReboot(1)", "'ok'", "'error'");
    row("connection.rawCommand('{}')", "'ok'", "SystemError");
    row("connection.activateDataPassThrough()", "'ok'", "'error'");
    row("connection.sendMessage(frame)", "'ok'", "'error'");
    row("connection.sendMessageList([frame])", "'ok'", "'error'");
    row("connection.getNextPassThroughMessage()", "'error'", "'error'");
    row("connection.getPassThroughMessageList()", "[]", "[]");
    row("connection.getCrates()", "[0.1000]", "[]");
    row("connection.getModules()", "[0.2]", "[]");
    row("connection.getStatusSessionId()", "'error'", "'error'");
    row("connection.disconnect()", "'ok'", "'error'");
    row("crate.setControlPower(True)", "'ok'", "'error'");
    row("crate.getControlPower()", "True", "'error'");
    row("module.setControlClearAll(1)", "'ok'", "'error'");
    row("module.getStatusErrorCounter()", "7.0", "'error'");
    row("channel.setControlVoltageSet(5)", "'ok'", "'error'");
    row("channel.getControlVoltageSet()", "5.5", "'error'");
    row("[str(x) for x in (connection, crate, module, channel, frame)]",
        "['c1', '0.1000', '0.2', '0.2.1', ':a=']", "['c1', '0.1000', '0.2', '0.2.1', ':a=']");
    row("orbClient.getItem('c1', '0.2.1.Control.voltageSet')", "('0.2.1.Control.voltageSet', '5.5')",
        "'error'");
    row("orbClient.setDebugLevel(1)", "'ok'", "'error'");
    row("orbClient.findConnection('c2')", "'error'", "'error'");
    row("orbClient.getConnections()", "[c1]", "SystemError");
}

void TestOrbClientModuleLifetime::objectsOutliveTheirClient()
{
    QFETCH(QString, before);
    QFETCH(QString, after);

    const QString call = QString::fromLatin1(QTest::currentDataTag());
    PythonInterpreter python;
    auto backend = std::make_unique<RecordingBackend>();
    auto client = std::make_unique<OrbClient>(*backend);
    fill(*backend);
    backend->setItem(QStringLiteral("c1"), QStringLiteral("0.1000.Control.power"),
                     {QStringLiteral("true"), {}, {}, 0});
    backend->setItem(QStringLiteral("c1"), QStringLiteral("0.2.Status.errorCounter"),
                     {QStringLiteral("7"), {}, {}, 0});
    backend->setItem(QStringLiteral("c1"), QStringLiteral("0.2.1.Control.voltageSet"),
                     {QStringLiteral("5.5"), {}, {}, 0});
    python.setClient(client.get());
    QCOMPARE(python.exec(MakeObjects), QString());
    QCOMPARE(python.eval(call), before);

    // Its memory is gone too: whoever still calls it is caught by a checker.
    python.setClient(nullptr);
    client.reset();
    backend.reset();
    QCOMPARE(python.eval(call), after);
}

void TestOrbClientModuleLifetime::objectsOutliveTheirClientBesideAnother()
{
    PythonInterpreter python;
    fill(python.backend());
    auto backend = std::make_unique<RecordingBackend>();
    auto client = std::make_unique<OrbClient>(*backend);
    fill(*backend);
    python.setClient(client.get());
    QCOMPARE(python.exec(MakeObjects), QString());
    python.setClient(&python.client());
    client.reset();
    backend.reset();

    // What the one that went made is not taken over by the one that came.
    python.backend().clearCalls();
    QCOMPARE(python.eval(QStringLiteral("(connection.setControlReboot(1), crate.setControlPower(1), "
                                        "module.setControlClearAll(1), channel.setControlVoltageSet(1))")),
             QStringLiteral("('error', 'error', 'error', 'error')"));
    QVERIFY(python.backend().calls().isEmpty());
    QCOMPARE(python.eval(QStringLiteral("orbClient.findConnection('c1').setControlReboot(1)")),
             QStringLiteral("'ok'"));
}

void TestOrbClientModuleLifetime::clientsChangeBetweenTwoCalls()
{
    PythonInterpreter python;
    fill(python.backend());
    QCOMPARE(python.exec(MakeObjects), QString());
    for (int i = 0; i < 3; ++i) {
        python.setClient(nullptr);
        QCOMPARE(python.eval(QStringLiteral("(channel.setControlVoltageSet(1), orbClient.getVersion())")),
                 QStringLiteral("('error', 'error')"));
        // Given back, it works again, twice given or once.
        python.setClient(&python.client());
        python.setClient(&python.client());
        QCOMPARE(python.eval(QStringLiteral("channel.setControlVoltageSet(1)")), QStringLiteral("'ok'"));
    }
    python.setClient(nullptr);
    QCOMPARE(python.eval(QStringLiteral("channel.setControlVoltageSet(1)")), QStringLiteral("'error'"));
}

void TestOrbClientModuleLifetime::aSharedClientLivesUntilTheLastModuleLetsGo()
{
    PythonInterpreter python;
    fill(python.backend());
    QCOMPARE(python.exec(MakeObjects), QString());
    const PyRef second(PyInit_orbClientPython_3_for_ORB());
    QVERIFY(second);
    orbclient::setModuleClient(second.get(), &python.client());
    python.setClient(nullptr);
    QCOMPARE(python.eval(QStringLiteral("(channel.setControlVoltageSet(1), orbClient.getVersion())")),
             QStringLiteral("('ok', 'error')"));
    orbclient::setModuleClient(second.get(), nullptr);
    QCOMPARE(python.eval(QStringLiteral("channel.setControlVoltageSet(1)")), QStringLiteral("'error'"));
}

void TestOrbClientModuleLifetime::interpretersComeAndGo()
{
    constexpr int Times = 5;
    for (int i = 0; i < Times; ++i) {
        PythonInterpreter python;
        fill(python.backend());
        // Nothing of the interpreter before is left in this one.
        QCOMPARE(python.eval(QStringLiteral("connection")), QStringLiteral("NameError"));
        QCOMPARE(python.exec(MakeObjects), QString());
        QCOMPARE(python.eval(QStringLiteral(
                     "[type(x).__name__ for x in (connection, crate, module, channel, frame)]")),
                 QStringLiteral("['connection', 'crate', 'module', 'channel', 'dataFrame']"));
        QCOMPARE(python.eval(
                     QStringLiteral("(channel.setControlVoltageSet([1, 2]), connection.sendMessage(frame))")),
                 QStringLiteral("('ok', 'ok')"));
        QCOMPARE(python.eval(QStringLiteral("orbClient.channel.setControlVoltageSet.__doc__ is not None")),
                 QStringLiteral("True"));
        QCOMPARE(python.exec(QStringLiteral(R"(
class Derived(orbClient.channel):
    pass
kept = [Derived() for _ in range(100)]
kept[0].connection = kept
orbClient.kept = kept
import json
)")),
                 QString());
        QCOMPARE(python.eval(QStringLiteral("json.dumps(channel)")), QStringLiteral("AttributeError"));
        QCOMPARE(python.backend().callsOf(QStringLiteral("writeItem")).size(), 1);
    }
}

QTEST_GUILESS_MAIN(TestOrbClientModuleLifetime)

#include "tst_orb_client_module_lifetime.moc"
