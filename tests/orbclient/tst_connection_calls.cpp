#include "orbclient/connection_object.h"

#include "hostclient/orb_request_item.h"
#include "tests/support/python_interpreter.h"

#include <QtTest>

#include <cstring>

/// The methods of a connection that are more than an item.
class TestConnectionCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void sendsRawCommands_data();
    void sendsRawCommands();
    void disconnects();
    void listsFreshDevices_data();
    void listsFreshDevices();
    void listsNoDevices_data();
    void listsNoDevices();
    void passesResultsOn_data();
    void passesResultsOn();
    void usesTheNameOfNow_data();
    void usesTheNameOfNow();
    void refusesArguments_data();
    void refusesArguments();
    void worksForNoSubclass_data();
    void worksForNoSubclass();
    void failsWithoutAClient_data();
    void failsWithoutAClient();

private:
    QStringList argumentsOf(const char *operation);
    QString callDirectly(const char *method, const QString &self, const QString &arguments);

    PythonInterpreter python;
};

namespace
{

OrbRequestItem request(const QString &itemName, const QString &value)
{
    OrbRequestItem item;
    item.commandType = OrbRequestItem::SetItem;
    item.line = 0;
    item.address = 4;
    item.channel = 1;
    item.itemName = itemName;
    item.value = value;
    return item;
}

OrbItemId deviceId(OrbItemId::Type type, quint32 line, quint32 address)
{
    OrbItemId id(type);
    id.line = line;
    id.address = address;
    return id;
}

const PyMethodDef *methodOf(const PyTypeObject &type, const char *name)
{
    for (const PyMethodDef *method = type.tp_methods; method->ml_name != nullptr; ++method) {
        if (std::strcmp(method->ml_name, name) == 0)
            return method;
    }
    return nullptr;
}

} // namespace

/// The arguments of the only call of an operation.
QStringList TestConnectionCalls::argumentsOf(const char *operation)
{
    const QVector<RecordedCall> calls = python.backend().callsOf(QString::fromLatin1(operation));
    if (calls.size() != 1)
        return {QStringLiteral("%1 calls of %2").arg(calls.size()).arg(QLatin1String(operation))};
    return calls.first().arguments;
}

/// What becomes of a method's C function, which Python itself would turn into a SystemError where it gives nothing.
QString TestConnectionCalls::callDirectly(const char *method, const QString &self, const QString &arguments)
{
    const PyMethodDef *definition = methodOf(orbclient::connectionType, method);
    const PyRef object = python.evaluate(self);
    const PyRef tuple = python.evaluate(arguments);
    if (definition == nullptr || !object || !tuple)
        return QStringLiteral("nothing to call");
    return PythonInterpreter::describe(
        PythonInterpreter::callDirectly(*definition, object.get(), tuple.get()));
}

void TestConnectionCalls::init()
{
    RecordingBackend &backend = python.backend();
    backend.setControllers({{QStringLiteral("c1"), QString()}, {QStringLiteral("c2"), QString()}});
    backend.setResult(TarnResult::Success);
    backend.setCrates({});
    backend.setModules({});
    backend.setPassThroughMessages({});
    backend.setRawAnswer({});
    QCOMPARE(python.exec(QStringLiteral(R"(
class Derived(orbClient.connection):
    pass
def frame(item="a", **members):
    made = orbClient.dataFrame()
    made.item = item
    for name, value in members.items():
        setattr(made, name, value)
    return made
c = orbClient.findConnection("c1")
alone = orbClient.connection("x")
derived = Derived("c1")
# What an object of a subclass holds is never let go; held by an object that is never freed, it is not lost.
keeper = orbClient.dataFrame()
keeper.value = derived
)")),
             QString());
    backend.clearCalls();
}

void TestConnectionCalls::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestConnectionCalls::sendsRawCommands_data()
{
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("expected");

    QTest::newRow("taken over") << true << QString() << QStringLiteral("'ok'");
    QTest::newRow("taken over with a reply") << true << QStringLiteral("{}") << QStringLiteral("'ok'");
    QTest::newRow("refused with a reply")
        << false << QStringLiteral("{\"a\":1}") << QStringLiteral("'{\"a\":1}'");
    QTest::newRow("refused with an accent")
        << false << QStringLiteral("\u00b5A") << QStringLiteral("'\u00b5A'");
    QTest::newRow("refused in silence") << false << QString() << QStringLiteral("'error'");
    QTest::newRow("refused with the word ok") << false << QStringLiteral("ok") << QStringLiteral("'ok'");
}

void TestConnectionCalls::sendsRawCommands()
{
    QFETCH(bool, accepted);
    QFETCH(QString, reply);

    python.backend().setRawAnswer({accepted, reply, {}});
    QTEST(python.eval(QStringLiteral("c.rawCommand('{\"i\":\"\u00b5\"}')")), "expected");
    QCOMPARE(argumentsOf("rawRequest"),
             (QStringList{QStringLiteral("c1"), QStringLiteral("{\"i\":\"\u00b5\"}")}));
}

void TestConnectionCalls::disconnects()
{
    QCOMPARE(python.eval(QStringLiteral("c.disconnect()")), QStringLiteral("'ok'"));
    QCOMPARE(argumentsOf("closeConnection"), QStringList{QStringLiteral("c1")});
    QCOMPARE(python.eval(QStringLiteral("orbClient.findConnection('c1')")), QStringLiteral("'error'"));
    QCOMPARE(python.eval(QStringLiteral("c.disconnect()")), QStringLiteral("'error'"));
}

void TestConnectionCalls::listsFreshDevices_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("type");
    QTest::newRow("crates") << QStringLiteral("getCrates") << QStringLiteral("crates")
                            << QStringLiteral("crate");
    QTest::newRow("modules") << QStringLiteral("getModules") << QStringLiteral("modules")
                             << QStringLiteral("module");
}

void TestConnectionCalls::listsFreshDevices()
{
    QFETCH(QString, method);
    QFETCH(QString, member);
    QFETCH(QString, type);

    const auto fill = [](QString text, const QString &first, const QString &second = QString()) {
        return text.replace(QLatin1String("$1"), first).replace(QLatin1String("$2"), second);
    };
    python.backend().setCrates({deviceId(OrbItemId::Crate, 0, 1000), deviceId(OrbItemId::Crate, 3, 1002)});
    python.backend().setModules({deviceId(OrbItemId::Module, 0, 1000), deviceId(OrbItemId::Module, 3, 1002)});
    const QString statements = QStringLiteral(R"(
c = orbClient.findConnection("c1")
held = c.$2
inside = list(held)
first, second = c.$1(), c.$1()
)");
    QCOMPARE(python.exec(fill(statements, method, member)), QString());
    QCOMPARE(python.eval(QStringLiteral("[str(x) for x in first]")), QStringLiteral("['0.1000', '3.1002']"));
    QCOMPARE(python.eval(fill(QStringLiteral("[(type(x) is orbClient.$1, x.connection, x.line, x.address) "
                                             "for x in second]"),
                              type)),
             QStringLiteral("[(True, 'c1', 0, 1000), (True, 'c1', 3, 1002)]"));
    QCOMPARE(python.eval(QStringLiteral("(type(first), len({id(x) for x in first + second + inside}))")),
             QStringLiteral("(<class 'list'>, 6)"));
    QCOMPARE(
        python.eval(fill(
            QStringLiteral("(c.$1 is held, all(a is b for a, b in zip(held, inside)), len(held))"), member)),
        QStringLiteral("(True, True, 2)"));

    // The service is asked anew each time.
    python.backend().setCrates({deviceId(OrbItemId::Crate, 7, 1000)});
    python.backend().setModules({deviceId(OrbItemId::Module, 7, 1000)});
    QCOMPARE(python.eval(fill(QStringLiteral("(c.$1(), len(c.$2))"), method, member)),
             QStringLiteral("([7.1000], 2)"));
}

void TestConnectionCalls::listsNoDevices_data()
{
    QTest::addColumn<QString>("expression");
    QTest::newRow("no crates") << QStringLiteral("c.getCrates()");
    QTest::newRow("no modules") << QStringLiteral("c.getModules()");
    QTest::newRow("crates of a closed connection") << QStringLiteral("(c.disconnect(), c.getCrates())[1]");
    QTest::newRow("modules of a closed connection") << QStringLiteral("(c.disconnect(), c.getModules())[1]");
    QTest::newRow("crates without a client") << QStringLiteral("alone.getCrates()");
    QTest::newRow("modules without a client") << QStringLiteral("alone.getModules()");
}

void TestConnectionCalls::listsNoDevices()
{
    QFETCH(QString, expression);

    QCOMPARE(python.eval(expression), QStringLiteral("[]"));
}

void TestConnectionCalls::passesResultsOn_data()
{
    QTest::addColumn<QString>("call");
    for (const char *call : {"disconnect()", "activateDataPassThrough()", "activateDataPassThrough('a')",
                             "sendMessage(frame())", "sendMessageList([frame(), 5])"})
        QTest::newRow(call) << QString::fromLatin1(call);
}

void TestConnectionCalls::passesResultsOn()
{
    QFETCH(QString, call);

    for (const TarnResult result :
         {TarnResult::Failed, TarnResult::Denied, TarnResult::NoData, TarnResult::NotConnected}) {
        python.backend().setResult(result);
        QCOMPARE(python.eval(QStringLiteral("c.") + call), QStringLiteral("'error'"));
    }
    python.backend().setResult(TarnResult::Success);
    QCOMPARE(python.eval(QStringLiteral("c.") + call), QStringLiteral("'ok'"));
}

void TestConnectionCalls::usesTheNameOfNow_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("expected");
    QTest::newRow("another") << QStringLiteral("c.name = 'c2'") << QStringLiteral("c2");
    QTest::newRow("unset") << QStringLiteral("del c.name") << QString(QLatin1String(""));
    QTest::newRow("number") << QStringLiteral("c.name = 7") << QStringLiteral("7");
    QTest::newRow("list") << QStringLiteral("c.name = ['c1']") << QStringLiteral("[c1, ]");
    QTest::newRow("itself") << QStringLiteral("c.name = c") << QString(QLatin1String(""));
}

void TestConnectionCalls::usesTheNameOfNow()
{
    QFETCH(QString, statement);
    QFETCH(QString, expected);

    QCOMPARE(python.exec(statement), QString());
    python.backend().setPassThroughMessages({request(QStringLiteral("a"), QString())});
    QCOMPARE(python.exec(QStringLiteral(R"(
c.rawCommand("{}")
c.activateDataPassThrough()
f = c.getNextPassThroughMessage()
c.getPassThroughMessageList()
c.sendMessage(frame())
c.sendMessageList([frame()])
c.getCrates()
c.getModules()
c.disconnect()
)")),
             QString());
    for (const char *operation : {"rawRequest", "activatePassThrough", "takePassThroughMessage",
                                  "takePassThroughMessages", "crates", "modules", "closeConnection"})
        QCOMPARE(argumentsOf(operation).value(0), expected);
    const QVector<RecordedCall> sends = python.backend().callsOf(QStringLiteral("sendPassThroughMessages"));
    QCOMPARE(sends.size(), 2);
    for (const RecordedCall &send : sends)
        QCOMPARE(send.arguments.first(), expected);
    QCOMPARE(python.eval(QStringLiteral("f.connection")), QStringLiteral("'%1'").arg(expected));
}

void TestConnectionCalls::refusesArguments_data()
{
    QTest::addColumn<QString>("expected");

    for (const char *call : {"rawCommand()",
                             "rawCommand(5)",
                             "rawCommand(None)",
                             "rawCommand(b'a')",
                             "rawCommand('a', 'b')",
                             "rawCommand({})",
                             "rawCommand(command='a')",
                             "disconnect(1)",
                             "disconnect(None)",
                             "getCrates(1)",
                             "getModules('a')",
                             "activateDataPassThrough(5)",
                             "activateDataPassThrough(None)",
                             "activateDataPassThrough('a', 'b')",
                             "activateDataPassThrough(scriptName='a')",
                             "getNextPassThroughMessage(1)",
                             "getPassThroughMessageList(1)",
                             "sendMessage()",
                             "sendMessage(frame(), frame())",
                             "sendMessage(frame=frame())",
                             "sendMessageList()",
                             "sendMessageList([], [])",
                             "sendMessageList(frames=[])"})
        QTest::newRow(call) << QStringLiteral("TypeError");
    QTest::newRow("rawCommand('a\\0')") << QStringLiteral("ValueError");
    QTest::newRow("activateDataPassThrough('\\0')") << QStringLiteral("ValueError");
    QTest::newRow("rawCommand('\\ud800')") << QStringLiteral("UnicodeEncodeError");
}

void TestConnectionCalls::refusesArguments()
{
    const QString call = QString::fromLatin1(QTest::currentDataTag());
    QTEST(python.eval(QStringLiteral("c.") + call), "expected");
    QTEST(python.eval(QStringLiteral("alone.") + call), "expected");
    QVERIFY(python.backend().calls().isEmpty());
}

void TestConnectionCalls::worksForNoSubclass_data()
{
    QTest::addColumn<QString>("arguments");

    QTest::newRow("rawCommand") << QStringLiteral("('{}',)");
    QTest::newRow("disconnect") << QStringLiteral("()");
    QTest::newRow("getCrates") << QStringLiteral("()");
    QTest::newRow("getModules") << QStringLiteral("()");
    QTest::newRow("activateDataPassThrough") << QStringLiteral("()");
    QTest::newRow("getNextPassThroughMessage") << QStringLiteral("()");
    QTest::newRow("getPassThroughMessageList") << QStringLiteral("()");
    QTest::newRow("sendMessage") << QStringLiteral("(frame(),)");
    QTest::newRow("sendMessageList") << QStringLiteral("([frame()],)");
}

void TestConnectionCalls::worksForNoSubclass()
{
    QFETCH(QString, arguments);

    const char *method = QTest::currentDataTag();
    // Not what Python would call it with either: only what is exactly a connection passes.
    for (const char *self : {"derived", "orbClient.channel()", "frame()", "5"})
        QCOMPARE(callDirectly(method, QString::fromLatin1(self), arguments), PythonInterpreter::NoObject);
    QCOMPARE(python.eval(QStringLiteral("derived.%1(*%2)").arg(QLatin1String(method), arguments)),
             QStringLiteral("SystemError"));
    QVERIFY(python.backend().calls().isEmpty());
}

void TestConnectionCalls::failsWithoutAClient_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("expected");

    const QString error = QStringLiteral("'error'");
    QTest::newRow("rawCommand") << QStringLiteral("('{}',)") << PythonInterpreter::NoObject;
    QTest::newRow("disconnect") << QStringLiteral("()") << error;
    QTest::newRow("activateDataPassThrough") << QStringLiteral("()") << error;
    QTest::newRow("getNextPassThroughMessage") << QStringLiteral("()") << error;
    QTest::newRow("sendMessage") << QStringLiteral("(frame(),)") << error;
    QTest::newRow("sendMessageList") << QStringLiteral("([frame()],)") << error;
    QTest::newRow("getPassThroughMessageList") << QStringLiteral("()") << QStringLiteral("[]");
}

void TestConnectionCalls::failsWithoutAClient()
{
    QFETCH(QString, arguments);

    // Of the name of a connection that is there, but made by a script.
    for (const char *self : {"orbClient.connection('c1')", "alone", "orbClient.connection()"})
        QTEST(callDirectly(QTest::currentDataTag(), QString::fromLatin1(self), arguments), "expected");
    QVERIFY(python.backend().calls().isEmpty());
}

QTEST_GUILESS_MAIN(TestConnectionCalls)

#include "tst_connection_calls.moc"
