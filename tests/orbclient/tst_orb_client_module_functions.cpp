#include "orbclient/orb_client_module.h"

#include "tests/support/python_interpreter.h"

#include <QtTest>

/// What the module's functions do with a client and without one.
class TestOrbClientModuleFunctions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void connects_data();
    void connects();
    void failsToConnect_data();
    void failsToConnect();
    void saysOkWhenTheConnectionIsNotThere_data();
    void saysOkWhenTheConnectionIsNotThere();
    void getsItems();
    void getsItemTextsUnconverted_data();
    void getsItemTextsUnconverted();
    void getsNoItem_data();
    void getsNoItem();
    void setsItems();
    void listsConnections_data();
    void listsConnections();
    void listsConnectionsInTheClientsOrder();
    void listsNoConnections();
    void findsConnections();
    void givesDistinctObjects();
    void setsTheDebugLevel();
    void tellsTheVersion();
    void refusesArguments_data();
    void refusesArguments();
    void failsWithoutAClient_data();
    void failsWithoutAClient();

private:
    QStringList argumentsOf(const char *operation);

    PythonInterpreter python;
};

namespace
{

/// A service that takes every connection and knows none of them afterwards.
class ForgetfulBackend final : public RecordingBackend
{
public:
    int connectionIndex(const QString &) const override { return -1; }
};

} // namespace

/// The arguments of the only call of an operation.
QStringList TestOrbClientModuleFunctions::argumentsOf(const char *operation)
{
    const QVector<RecordedCall> calls = python.backend().callsOf(QString::fromLatin1(operation));
    if (calls.size() != 1)
        return {QStringLiteral("%1 calls of %2").arg(calls.size()).arg(QLatin1String(operation))};
    return calls.first().arguments;
}

void TestOrbClientModuleFunctions::init()
{
    python.setClient(&python.client());
    python.backend().setControllers({});
    python.backend().setLocalConnection(QString());
    python.backend().setCrates({});
    python.backend().setModules({});
    python.backend().setResult(TarnResult::Success);
    python.backend().clearCalls();
}

void TestOrbClientModuleFunctions::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestOrbClientModuleFunctions::connects_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QStringList>("arguments");

    const auto texts = [](std::initializer_list<const char *> list) {
        QStringList result;
        for (const char *text : list)
            result.append(QString::fromUtf8(text));
        return result;
    };
    const QString connection = QStringLiteral("openConnection");
    const QString script = QStringLiteral("openScriptConnection");
    QTest::newRow("name and address") << QStringLiteral("connect('c1', '10.0.0.1:8081')") << connection
                                      << texts({"c1", "10.0.0.1:8081", nullptr, nullptr});
    QTest::newRow("login") << QStringLiteral("connect('c1', '10.0.0.1:8081', 'me')") << connection
                           << texts({"c1", "10.0.0.1:8081", "me", nullptr});
    QTest::newRow("login and password") << QStringLiteral("connect('c1', '10.0.0.1:8081', 'me', 'secret')")
                                        << connection << texts({"c1", "10.0.0.1:8081", "me", "secret"});
    QTest::newRow("empty login and password")
        << QStringLiteral("connect('c1', 'a', '', '')") << connection << texts({"c1", "a", "", ""});
    QTest::newRow("accents") << QStringLiteral("connect('c1', 'h\u00e9', '\u03a9', '\u20ac')") << connection
                             << texts({"c1", "h\u00e9", "\u03a9", "\u20ac"});
    QTest::newRow("script") << QStringLiteral(
        "scriptConnect('c1', '10.0.0.1:8081', 'watch.py', 's-7', 'me', 'pw')")
                            << script << texts({"c1", "10.0.0.1:8081", "watch.py", "s-7", "me", "pw"});
    QTest::newRow("script with empty texts") << QStringLiteral("scriptConnect('c1', '', '', '', '', '')")
                                             << script << texts({"c1", "", "", "", "", ""});
}

void TestOrbClientModuleFunctions::connects()
{
    QFETCH(QString, call);
    QFETCH(QString, operation);
    QFETCH(QStringList, arguments);

    QCOMPARE(python.exec(QStringLiteral("c = orbClient.") + call), QString());
    QCOMPARE(python.eval(QStringLiteral("(type(c) is orbClient.connection, c.name)")),
             QStringLiteral("(True, 'c1')"));
    const QStringList received = argumentsOf(operation.toLatin1().constData());
    QCOMPARE(received, arguments);
    // Text that was left out is null, which differs from one that is empty.
    for (int i = 0; i < arguments.size(); ++i)
        QCOMPARE(received.at(i).isNull(), arguments.at(i).isNull());
    QCOMPARE(python.eval(QStringLiteral("c.setControlReboot(1)")), QStringLiteral("'ok'"));
}

void TestOrbClientModuleFunctions::failsToConnect_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<int>("result");
    for (const TarnResult result :
         {TarnResult::Failed, TarnResult::Denied, TarnResult::NoData, TarnResult::NotConnected}) {
        const int code = static_cast<int>(result);
        QTest::addRow("connect %d", code) << QStringLiteral("connect('c1', 'a')") << code;
        QTest::addRow("scriptConnect %d", code)
            << QStringLiteral("scriptConnect('c1', 'a', 'b', 'c', 'd', 'e')") << code;
    }
}

void TestOrbClientModuleFunctions::failsToConnect()
{
    QFETCH(QString, call);
    QFETCH(int, result);

    // A connection of that name is there from before, and does not make a failure a success.
    python.backend().setControllers({{QStringLiteral("c1"), QString()}});
    python.backend().setResult(static_cast<TarnResult>(result));
    QCOMPARE(python.eval(QStringLiteral("orbClient.") + call), QStringLiteral("'error'"));
}

void TestOrbClientModuleFunctions::saysOkWhenTheConnectionIsNotThere_data()
{
    QTest::addColumn<QString>("call");
    QTest::newRow("connect") << QStringLiteral("connect('c1', 'a')");
    QTest::newRow("scriptConnect") << QStringLiteral("scriptConnect('c1', 'a', 'b', 'c', 'd', 'e')");
}

void TestOrbClientModuleFunctions::saysOkWhenTheConnectionIsNotThere()
{
    QFETCH(QString, call);

    ForgetfulBackend backend;
    OrbClient client(backend);
    python.setClient(&client);
    const QString result = python.eval(QStringLiteral("orbClient.") + call);
    python.setClient(&python.client());
    QCOMPARE(result, QStringLiteral("'ok'"));
}

void TestOrbClientModuleFunctions::getsItems()
{
    python.backend().setItem(QStringLiteral("c1"), QStringLiteral("0.4.1.Status.voltageMeasure"),
                             {QStringLiteral("12.5"), QStringLiteral("V"), QStringLiteral("float"), 17});
    QCOMPARE(python.eval(QStringLiteral("orbClient.getItem('c1', '0.4.1.Status.voltageMeasure')")),
             QStringLiteral("('0.4.1.Status.voltageMeasure', '12.5')"));
    QCOMPARE(argumentsOf("readItem"), QStringList{QStringLiteral("c1:0.4.1.Status.voltageMeasure")});
}

void TestOrbClientModuleFunctions::getsItemTextsUnconverted_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const QString &value, const QString &expected) {
        QTest::newRow(name) << value << expected;
    };
    row("number", QStringLiteral("5"), QStringLiteral("('x', '5')"));
    row("truth", QStringLiteral("true"), QStringLiteral("('x', 'true')"));
    row("empty", QString(), QStringLiteral("('x', '')"));
    row("error", QStringLiteral("error"), QStringLiteral("('x', 'error')"));
    row("accent", QStringLiteral("\u00b5A"), QStringLiteral("('x', '\u00b5A')"));
    row("as long as its field", QString(128, QLatin1Char('v')),
        QStringLiteral("('x', '%1')").arg(QString(128, QLatin1Char('v'))));
    row("cut to its field", QString(200, QLatin1Char('v')),
        QStringLiteral("('x', '%1')").arg(QString(128, QLatin1Char('v'))));
}

void TestOrbClientModuleFunctions::getsItemTextsUnconverted()
{
    QFETCH(QString, value);

    python.backend().setItem(QStringLiteral("c1"), QStringLiteral("x"),
                             {value, QStringLiteral("9"), QString(), 0});
    QTEST(python.eval(QStringLiteral("orbClient.getItem('c1', 'x')")), "expected");
}

void TestOrbClientModuleFunctions::getsNoItem_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::newRow("unknown item") << QStringLiteral("'c1', 'Status.nothing'");
    QTest::newRow("unknown connection") << QStringLiteral("'c2', 'x'");
    QTest::newRow("no path") << QStringLiteral("'c1', ''");
    QTest::newRow("no such path") << QStringLiteral("'c1', '..'");
    QTest::newRow("long path") << QStringLiteral("'c1', 'x' * 100000");
}

void TestOrbClientModuleFunctions::getsNoItem()
{
    QFETCH(QString, arguments);

    python.backend().setItem(QStringLiteral("c1"), QStringLiteral("x"),
                             {QStringLiteral("5"), QString(), QString(), 0});
    QCOMPARE(python.eval(QStringLiteral("orbClient.getItem(%1)").arg(arguments)), QStringLiteral("'error'"));
}

void TestOrbClientModuleFunctions::setsItems()
{
    QCOMPARE(python.eval(QStringLiteral("orbClient.setItem('c1', '0.4.1.Control.voltageSet', '100.50')")),
             QStringLiteral("'ok'"));
    QCOMPARE(argumentsOf("writeItem"),
             (QStringList{QStringLiteral("c1:0.4.1.Control.voltageSet"), QStringLiteral("100.50")}));
    QCOMPARE(python.eval(QStringLiteral("orbClient.setItem('c1', 'Control.wifi', '')")),
             QStringLiteral("'ok'"));

    python.backend().setResult(TarnResult::Denied);
    QCOMPARE(python.eval(QStringLiteral("orbClient.setItem('c1', 'Control.wifi', '1')")),
             QStringLiteral("'error'"));
}

void TestOrbClientModuleFunctions::listsConnections_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("expected");

    const QString all = QStringLiteral("['bench', 'hall', 'local']");
    const QString remote = QStringLiteral("['bench', 'hall']");
    QTest::newRow("by default") << QString() << all;
    QTest::newRow("1") << QStringLiteral("1") << all;
    QTest::newRow("0") << QStringLiteral("0") << remote;
    QTest::newRow("True") << QStringLiteral("True") << all;
    QTest::newRow("False") << QStringLiteral("False") << remote;
    QTest::newRow("any other number") << QStringLiteral("-7") << all;
}

void TestOrbClientModuleFunctions::listsConnections()
{
    QFETCH(QString, arguments);

    python.backend().setControllers({{QStringLiteral("local"), QStringLiteral("Local service")},
                                     {QStringLiteral("bench"), QString()},
                                     {QStringLiteral("hall"), QString()}});
    python.backend().setLocalConnection(QStringLiteral("local"));
    QCOMPARE(python.exec(QStringLiteral("l = orbClient.getConnections(%1)").arg(arguments)), QString());
    QTEST(python.eval(QStringLiteral("sorted(c.name for c in l)")), "expected");
    QCOMPARE(python.eval(QStringLiteral("type(l), {type(c) for c in l} == {orbClient.connection}")),
             QStringLiteral("(<class 'list'>, True)"));
    QCOMPARE(python.eval(QStringLiteral("{c.setControlReboot(1) for c in l}")), QStringLiteral("{'ok'}"));
}

void TestOrbClientModuleFunctions::listsConnectionsInTheClientsOrder()
{
    QVector<QPair<QString, QString>> controllers;
    for (int i = 0; i < 50; ++i)
        controllers.append({QStringLiteral("c%1").arg(i * 7), QString()});
    python.backend().setControllers(controllers);
    const QStringList names = python.client().getConnectionsIndices(true).keys();
    QCOMPARE(names.size(), controllers.size());
    QCOMPARE(python.eval(QStringLiteral("[c.name for c in orbClient.getConnections()]")),
             QStringLiteral("['%1']").arg(names.join(QLatin1String("', '"))));
}

void TestOrbClientModuleFunctions::listsNoConnections()
{
    QCOMPARE(python.eval(QStringLiteral("orbClient.getConnections()")), QStringLiteral("[]"));
    python.backend().setControllers({{QStringLiteral("local"), QString()}});
    python.backend().setLocalConnection(QStringLiteral("local"));
    QCOMPARE(python.eval(QStringLiteral("orbClient.getConnections(0)")), QStringLiteral("[]"));
}

void TestOrbClientModuleFunctions::findsConnections()
{
    python.backend().setControllers(
        {{QStringLiteral("c1"), QString()}, {QStringLiteral("h\u00e9"), QString()}});
    QCOMPARE(python.exec(QStringLiteral("c = orbClient.findConnection('c1')")), QString());
    QCOMPARE(python.eval(QStringLiteral("(type(c) is orbClient.connection, c.name)")),
             QStringLiteral("(True, 'c1')"));
    QCOMPARE(python.eval(QStringLiteral("orbClient.findConnection('h\u00e9').name")),
             QStringLiteral("'h\u00e9'"));
    QCOMPARE(python.eval(QStringLiteral("orbClient.findConnection('c2')")), QStringLiteral("'error'"));
    QCOMPARE(python.eval(QStringLiteral("orbClient.findConnection('')")), QStringLiteral("'error'"));
    QCOMPARE(python.eval(QStringLiteral("orbClient.findConnection('C1')")), QStringLiteral("'error'"));
}

void TestOrbClientModuleFunctions::givesDistinctObjects()
{
    python.backend().setControllers({{QStringLiteral("c1"), QString()}});
    QCOMPARE(python.exec(QStringLiteral(R"(
a, b = orbClient.findConnection("c1"), orbClient.findConnection("c1")
c, d = orbClient.getConnections()[0], orbClient.getConnections()[0]
e = orbClient.connect("c1", "a")
)")),
             QString());
    QCOMPARE(python.eval(QStringLiteral("len({id(x) for x in (a, b, c, d, e)})")), QStringLiteral("5"));
    QCOMPARE(python.exec(QStringLiteral("a.name = 'changed'")), QString());
    QCOMPARE(python.eval(QStringLiteral("(b.name, orbClient.findConnection('c1').name)")),
             QStringLiteral("('c1', 'c1')"));
}

void TestOrbClientModuleFunctions::setsTheDebugLevel()
{
    for (const int level : {0, 1, 2, -5, 2147483647}) {
        python.backend().clearCalls();
        QCOMPARE(python.eval(QStringLiteral("orbClient.setDebugLevel(%1)").arg(level)),
                 QStringLiteral("'ok'"));
        QCOMPARE(argumentsOf("setDebugLevel"), QStringList{QString::number(level)});
    }
    python.backend().setResult(TarnResult::Failed);
    QCOMPARE(python.eval(QStringLiteral("orbClient.setDebugLevel(3)")), QStringLiteral("'error'"));
}

void TestOrbClientModuleFunctions::tellsTheVersion()
{
    QVERIFY(!OrbClient::getVersionString().isEmpty());
    QCOMPARE(python.eval(QStringLiteral("orbClient.getVersion()")),
             QStringLiteral("'%1'").arg(OrbClient::getVersionString()));
}

void TestOrbClientModuleFunctions::refusesArguments_data()
{
    QTest::addColumn<QString>("expected");

    const QString type = QStringLiteral("TypeError");
    for (const char *call : {"connect()",
                             "connect('a')",
                             "connect('a', 'b', 'c', 'd', 'e')",
                             "connect('a', 5)",
                             "connect(None, 'b')",
                             "connect('a', 'b', None)",
                             "connect(b'a', 'b')",
                             "connect(connection='a', address='b')",
                             "connect('a', 'b', login='c')",
                             "scriptConnect()",
                             "scriptConnect('a', 'b', 'c')",
                             "scriptConnect('a', 'b', 'c', 'd', 'e')",
                             "scriptConnect('a', 'b', 'c', 'd', 'e', 'f', 'g')",
                             "scriptConnect('a', 'b', 'c', 'd', 'e', 6)",
                             "getItem()",
                             "getItem('a')",
                             "getItem('a', 'b', 'c')",
                             "getItem('a', 1)",
                             "getItem(connection='a', item='b')",
                             "setItem()",
                             "setItem('a', 'b')",
                             "setItem('a', 'b', 5)",
                             "setItem('a', 'b', None)",
                             "setItem('a', 'b', 'c', 'd')",
                             "getConnections('1')",
                             "getConnections(None)",
                             "getConnections(1, 2)",
                             "getConnections(1.0)",
                             "getConnections(local=1)",
                             "findConnection()",
                             "findConnection(5)",
                             "findConnection(None)",
                             "findConnection('a', 'b')",
                             "findConnection(orbClient.connection('a'))",
                             "setDebugLevel()",
                             "setDebugLevel('1')",
                             "setDebugLevel(1.0)",
                             "setDebugLevel(None)",
                             "setDebugLevel(1, 2)",
                             "getVersion(1)",
                             "getVersion(None)",
                             "getVersion(a=1)"})
        QTest::newRow(call) << type;
    for (const char *call :
         {"setDebugLevel(2**31)", "setDebugLevel(-2**40)", "getConnections(2**31)", "getConnections(10**30)"})
        QTest::newRow(call) << QStringLiteral("OverflowError");
    // A text with a NUL cannot become an 8-bit text, nor can half of a pair.
    for (const char *call : {"connect('a\\0', 'b')", "findConnection('a\\0b')", "getItem('a', '\\0')",
                             "setItem('a', 'b', 'c\\0d')", "scriptConnect('a', 'b', 'c', 'd', 'e', '\\0')"})
        QTest::newRow(call) << QStringLiteral("ValueError");
    for (const char *call : {"connect('\\ud800', 'b')", "findConnection('\\udfff')",
                             "getItem('a', '\\ud800')", "setItem('a', 'b', '\\ud800')"})
        QTest::newRow(call) << QStringLiteral("UnicodeEncodeError");
}

void TestOrbClientModuleFunctions::refusesArguments()
{
    const QString call = QStringLiteral("orbClient.") + QString::fromLatin1(QTest::currentDataTag());
    QTEST(python.eval(call), "expected");
    QVERIFY(python.backend().calls().isEmpty());

    // Arguments are looked at first, client or not.
    python.setClient(nullptr);
    QTEST(python.eval(call), "expected");
}

void TestOrbClientModuleFunctions::failsWithoutAClient_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("expected");

    const QString error = QStringLiteral("'error'");
    QTest::newRow("connect") << QStringLiteral("connect('c1', 'a')") << error;
    QTest::newRow("connect with login") << QStringLiteral("connect('c1', 'a', 'b', 'c')") << error;
    QTest::newRow("scriptConnect") << QStringLiteral("scriptConnect('c1', 'a', 'b', 'c', 'd', 'e')") << error;
    QTest::newRow("getItem") << QStringLiteral("getItem('c1', 'x')") << error;
    QTest::newRow("setItem") << QStringLiteral("setItem('c1', 'x', '1')") << error;
    QTest::newRow("findConnection") << QStringLiteral("findConnection('c1')") << error;
    QTest::newRow("setDebugLevel") << QStringLiteral("setDebugLevel(1)") << error;
    QTest::newRow("getVersion") << QStringLiteral("getVersion()") << error;
    // Python's own word for a function that gives neither a result nor a reason.
    QTest::newRow("getConnections") << QStringLiteral("getConnections()") << QStringLiteral("SystemError");
    QTest::newRow("getConnections without the local one")
        << QStringLiteral("getConnections(0)") << QStringLiteral("SystemError");
}

void TestOrbClientModuleFunctions::failsWithoutAClient()
{
    QFETCH(QString, call);

    python.backend().setControllers({{QStringLiteral("c1"), QString()}});
    python.setClient(nullptr);
    QTEST(python.eval(QStringLiteral("orbClient.") + call), "expected");
    QVERIFY(python.backend().calls().isEmpty());
}

QTEST_GUILESS_MAIN(TestOrbClientModuleFunctions)

#include "tst_orb_client_module_functions.moc"
