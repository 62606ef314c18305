#include "orbclient/connection_object.h"

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "tests/support/python_interpreter.h"

#include <QtTest>

/// A connection's methods for messages that the service passes through to scripts.
class TestConnectionMessages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void activatesPassThrough_data();
    void activatesPassThrough();
    void getsTheNextMessage();
    void failsToGetAMessage_data();
    void failsToGetAMessage();
    void listsMessages();
    void readsMessageValues();
    void sendsMessages();
    void sendsNoMessage_data();
    void sendsNoMessage();
    void sendsMessageLists_data();
    void sendsMessageLists();
    void echoesWhatItReceives();

private:
    QStringList argumentsOf(const char *operation);

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

} // namespace

/// The arguments of the only call of an operation.
QStringList TestConnectionMessages::argumentsOf(const char *operation)
{
    const QVector<RecordedCall> calls = python.backend().callsOf(QString::fromLatin1(operation));
    if (calls.size() != 1)
        return {QStringLiteral("%1 calls of %2").arg(calls.size()).arg(QLatin1String(operation))};
    return calls.first().arguments;
}

void TestConnectionMessages::init()
{
    RecordingBackend &backend = python.backend();
    backend.setControllers({{QStringLiteral("c1"), QString()}, {QStringLiteral("c2"), QString()}});
    backend.setResult(TarnResult::Success);
    backend.setPassThroughMessages({});
    QCOMPARE(python.exec(QStringLiteral(R"(
def frame(item="a", **members):
    made = orbClient.dataFrame()
    made.item = item
    for name, value in members.items():
        setattr(made, name, value)
    return made
c = orbClient.findConnection("c1")
alone = orbClient.connection("x")
)")),
             QString());
    backend.clearCalls();
}

void TestConnectionMessages::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestConnectionMessages::activatesPassThrough_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("scriptName");
    QTest::newRow("by default") << QString() << QStringLiteral("script");
    QTest::newRow("named") << QStringLiteral("'watch.py'") << QStringLiteral("watch.py");
    QTest::newRow("empty") << QStringLiteral("''") << QString(QLatin1String(""));
    QTest::newRow("accent") << QStringLiteral("'\u00e9'") << QStringLiteral("\u00e9");
}

void TestConnectionMessages::activatesPassThrough()
{
    QFETCH(QString, arguments);
    QFETCH(QString, scriptName);

    QCOMPARE(python.eval(QStringLiteral("c.activateDataPassThrough(%1)").arg(arguments)),
             QStringLiteral("'ok'"));
    QCOMPARE(argumentsOf("activatePassThrough"), (QStringList{QStringLiteral("c1"), scriptName}));
}

void TestConnectionMessages::getsTheNextMessage()
{
    python.backend().setPassThroughMessages({request(QStringLiteral("a"), QStringLiteral("1")),
                                             request(QStringLiteral("b"), QStringLiteral("2"))});
    QCOMPARE(python.exec(QStringLiteral("f = c.getNextPassThroughMessage()")), QString());
    QCOMPARE(argumentsOf("takePassThroughMessage"), QStringList{QStringLiteral("c1")});
    QCOMPARE(python.eval(QStringLiteral(
                 "(type(f) is orbClient.dataFrame, f.connection, f.line, f.address, f.channel, "
                 "f.command, f.item, f.value)")),
             QStringLiteral("(True, 'c1', 0, 4, 1, 'setItem', 'a', '1')"));
    QCOMPARE(python.eval(QStringLiteral("c.getNextPassThroughMessage()")), QStringLiteral("setItem:b=2"));
    QCOMPARE(python.eval(QStringLiteral("c.getNextPassThroughMessage()")), QStringLiteral("'error'"));
}

void TestConnectionMessages::failsToGetAMessage_data()
{
    QTest::addColumn<QString>("expression");
    QTest::newRow("nothing waits") << QStringLiteral("c.getNextPassThroughMessage()");
    QTest::newRow("no client") << QStringLiteral("alone.getNextPassThroughMessage()");
}

void TestConnectionMessages::failsToGetAMessage()
{
    QFETCH(QString, expression);

    QCOMPARE(python.eval(expression), QStringLiteral("'error'"));
}

void TestConnectionMessages::listsMessages()
{
    QCOMPARE(python.eval(QStringLiteral("c.getPassThroughMessageList()")), QStringLiteral("[]"));
    QCOMPARE(argumentsOf("takePassThroughMessages"), QStringList{QStringLiteral("c1")});

    QVector<OrbRequestItem> requests;
    for (const char *name : {"z", "a", "m", "a"})
        requests.append(request(QString::fromLatin1(name), QString()));
    python.backend().setPassThroughMessages(requests);
    QCOMPARE(python.exec(QStringLiteral("l = c.getPassThroughMessageList()")), QString());
    QCOMPARE(python.eval(QStringLiteral("[f.item for f in l]")), QStringLiteral("['z', 'a', 'm', 'a']"));
    QCOMPARE(python.eval(QStringLiteral("(type(l), {type(f) for f in l} == {orbClient.dataFrame}, "
                                        "{f.connection for f in l})")),
             QStringLiteral("(<class 'list'>, True, {'c1'})"));
    QCOMPARE(python.eval(QStringLiteral("c.getPassThroughMessageList()")), QStringLiteral("[]"));
}

void TestConnectionMessages::readsMessageValues()
{
    OrbRequestItem item = request(QStringLiteral("a"), QStringLiteral("{\"b\":[\"x\",1],\"a\":5}"));
    item.rawJson = item.value;
    python.backend().setPassThroughMessages({item, item});
    QCOMPARE(python.eval(QStringLiteral("c.getNextPassThroughMessage().value")),
             QStringLiteral("{'a': '', 'b': ['x', '']}"));
    QCOMPARE(python.eval(QStringLiteral("c.getPassThroughMessageList()[0].value")),
             QStringLiteral("{'a': '', 'b': ['x', '']}"));
}

void TestConnectionMessages::sendsMessages()
{
    QCOMPARE(python.eval(QStringLiteral("c.sendMessage(frame('a', connection='other', line=1.9, address='1', "
                                        "channel=3, value=True, unit='V', command='setItem'))")),
             QStringLiteral("'ok'"));
    // The connection's name says where it goes; the frame's is part of what is sent.
    QCOMPARE(argumentsOf("sendPassThroughMessages"),
             (QStringList{QStringLiteral("c1"), QStringLiteral("1")}));
    const QVector<OrbItemValue> sent = python.backend().sentValues();
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.first().id().connectionName, QStringLiteral("other"));
    QCOMPARE(sent.first().id().line, 1U);
    QCOMPARE(sent.first().id().address, static_cast<quint32>(-1));
    QCOMPARE(sent.first().id().channel, 3);
    QCOMPARE(sent.first().id().itemName, QStringLiteral("a"));
    QCOMPARE(sent.first().value(), QVariant(1));
    QCOMPARE(sent.first().unit(), QStringLiteral("V"));
    QCOMPARE(sent.first().command(), QStringLiteral("setItem"));
}

void TestConnectionMessages::sendsNoMessage_data()
{
    QTest::addColumn<QString>("call");
    for (const char *call :
         {"c.sendMessage(5)", "c.sendMessage(None)", "c.sendMessage('a')", "c.sendMessage({})",
          "c.sendMessage([frame()])", "c.sendMessage(c)", "c.sendMessage(orbClient.dataFrame)",
          "c.sendMessage(type('D', (orbClient.dataFrame,), {})())", "c.sendMessageList([])",
          "c.sendMessageList([5, None, c])", "c.sendMessageList((frame(), frame()))",
          "c.sendMessageList(frame())", "c.sendMessageList(None)", "c.sendMessageList({1: frame()})",
          "c.sendMessageList(iter([frame()]))", "c.sendMessageList([[frame()]])",
          "c.sendMessageList([type('D', (orbClient.dataFrame,), {})()])", "alone.sendMessage(frame())",
          "alone.sendMessageList([frame()])"})
        QTest::newRow(call) << QString::fromLatin1(call);
}

void TestConnectionMessages::sendsNoMessage()
{
    QFETCH(QString, call);

    QCOMPARE(python.eval(call), QStringLiteral("'error'"));
    QVERIFY(python.backend().calls().isEmpty());
}

void TestConnectionMessages::sendsMessageLists_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QStringList>("items");

    const QStringList ab{QStringLiteral("a"), QStringLiteral("b")};
    QTest::newRow("one") << QStringLiteral("[frame('a')]") << QStringList{QStringLiteral("a")};
    QTest::newRow("two in order") << QStringLiteral("[frame('a'), frame('b')]") << ab;
    QTest::newRow("the same twice") << QStringLiteral("[frame('a')] * 2")
                                    << QStringList{QStringLiteral("a"), QStringLiteral("a")};
    QTest::newRow("with a number") << QStringLiteral("[frame('a'), 5]") << QStringList{QStringLiteral("a")};
    QTest::newRow("with others between")
        << QStringLiteral("[None, frame('a'), c, [frame('x')], frame('b'), 'b', {}]") << ab;
    QTest::newRow("a list of its own kind")
        << QStringLiteral("type('L', (list,), {})([frame('a'), frame('b')])") << ab;
}

void TestConnectionMessages::sendsMessageLists()
{
    QFETCH(QString, list);
    QFETCH(QStringList, items);

    QCOMPARE(python.eval(QStringLiteral("c.sendMessageList(%1)").arg(list)), QStringLiteral("'ok'"));
    QCOMPARE(argumentsOf("sendPassThroughMessages"),
             (QStringList{QStringLiteral("c1"), QString::number(items.size())}));
    QStringList sent;
    const QVector<OrbItemValue> values = python.backend().sentValues();
    for (const OrbItemValue &value : values)
        sent.append(value.id().itemName);
    QCOMPARE(sent, items);
}

void TestConnectionMessages::echoesWhatItReceives()
{
    python.backend().setPassThroughMessages({request(QStringLiteral("a"), QStringLiteral("1")),
                                             request(QStringLiteral("b"), QStringLiteral("2"))});
    QCOMPARE(python.eval(QStringLiteral("c.sendMessageList(c.getPassThroughMessageList())")),
             QStringLiteral("'ok'"));
    const QVector<OrbItemValue> sent = python.backend().sentValues();
    QCOMPARE(sent.size(), 2);
    QCOMPARE(sent.at(1).id().connectionName, QStringLiteral("c1"));
    QCOMPARE(sent.at(1).id().address, 4U);
    QCOMPARE(sent.at(1).id().channel, 1);
    QCOMPARE(sent.at(1).id().itemName, QStringLiteral("b"));
    QCOMPARE(sent.at(1).value(), QVariant(QStringLiteral("2")));
    QCOMPARE(sent.at(1).command(), QStringLiteral("setItem"));
}

QTEST_GUILESS_MAIN(TestConnectionMessages)

#include "tst_connection_messages.moc"
