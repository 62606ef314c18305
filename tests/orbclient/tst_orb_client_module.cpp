#include "orbclient/orb_client_module.h"

#include "tests/support/python_interpreter.h"

#include <QtTest>

#include <array>
#include <cstring>

/// The module as such: its definition, its contents and its state.
class TestOrbClientModule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void hasItsDefinition();
    void listsItsContentsInOrder();
    void namesItsTypes_data();
    void namesItsTypes();
    void takesArgumentTuplesEverywhere();
    void describesItsFunctions_data();
    void describesItsFunctions();
    void keepsItsClientInTheFirstWord();
    void leavesOtherModulesAlone();
    void leavesWhatIsNoModuleAlone();
    void canBeMadeTwice();
    void canBeImportedAgain();
    void keepsTheTypesReferencesBalanced();

private:
    PythonInterpreter python;
};

namespace
{

constexpr std::size_t StateSize = 80;

using StateWords = std::array<void *, StateSize / sizeof(void *)>;

StateWords stateOf(PyObject *module)
{
    StateWords words{};
    std::memcpy(words.data(), PyModule_GetState(module), StateSize);
    return words;
}

StateWords onlyFirst(void *word)
{
    StateWords words{};
    words[0] = word;
    return words;
}

/// A module that is not ours, with a state just like it.
PyModuleDef strangeDefinition = {
    PyModuleDef_HEAD_INIT, "orbClientPython_3", "", StateSize, nullptr, nullptr, nullptr, nullptr, nullptr};

struct FunctionRow
{
    const char *name;
    const char *docstring;
};

const std::array<FunctionRow, 8> Functions = {{
    {"connect",
     "orbClient.connect(<connection name>, <ip:port>, <login>, < password>) attempts to establish a new "
     "connection to "
     "an ORBservice."},
    {"scriptConnect",
     "The function orbClient.scriptConnect(<connection name>, <ip:port>, <script_name>) is used by scripts "
     "having been "
     "launched by ORBservice. It allows callbacks to the parent ORBservice."},
    {"getItem", "This function retrieves an item from the ORBservice connection."},
    {"setItem", "This function sets an item over the ORBservice connection."},
    {"getConnections",
     "orbClient.getConnections(<flag local>) retrieves the list of open ORBservice connections. If <flag "
     "local> is "
     "set, the connection to the local ORBservice is also included."},
    {"findConnection",
     "orbClient.findConnection(<connection name>) returns an ORBservice connection object corrsponding to "
     "<connection name> if it exists."},
    {"setDebugLevel",
     "This function enables printing of error messages to stderr (level = 1) or stderr/stdout (level = 2)."},
    {"getVersion", "This function returns the version of the Python module."},
}};

} // namespace

void TestOrbClientModule::initTestCase()
{
    QCOMPARE(python.exec(QStringLiteral("import gc, importlib, sys")), QString());
}

void TestOrbClientModule::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestOrbClientModule::hasItsDefinition()
{
    const PyModuleDef *definition = PyModule_GetDef(python.module());
    QVERIFY(definition);
    QCOMPARE(definition->m_name, "orbClientPython_3");
    QCOMPARE(definition->m_doc, "");
    QCOMPARE(definition->m_size, static_cast<Py_ssize_t>(StateSize));
    QVERIFY(!definition->m_slots);
    QVERIFY(!definition->m_traverse);
    QVERIFY(!definition->m_clear);
    QVERIFY(!definition->m_free);
    QCOMPARE(python.eval(QStringLiteral("(orbClient.__name__, orbClient.__doc__)")),
             QStringLiteral("('orbClientPython_3', '')"));
}

void TestOrbClientModule::listsItsContentsInOrder()
{
    QCOMPARE(python.eval(QStringLiteral("[name for name in vars(orbClient) if not name.startswith('__')]")),
             QStringLiteral(
                 "['connect', 'scriptConnect', 'getItem', 'setItem', 'getConnections', 'findConnection', "
                 "'setDebugLevel', 'getVersion', 'connection', 'crate', 'module', 'channel', "
                 "'dataFrame']"));
}

void TestOrbClientModule::namesItsTypes_data()
{
    QTest::addColumn<QString>("type");
    for (const char *type : {"connection", "crate", "module", "channel", "dataFrame"})
        QTest::newRow(type) << QString::fromLatin1(type);
}

void TestOrbClientModule::namesItsTypes()
{
    QFETCH(QString, type);

    QCOMPARE(python.eval(QStringLiteral("orbClient.") + type),
             QStringLiteral("<class 'orbClient.%1'>").arg(type));
    QCOMPARE(python.eval(QStringLiteral("type(orbClient.%1())").arg(type)),
             QStringLiteral("<class 'orbClient.%1'>").arg(type));
    QCOMPARE(python.eval(QStringLiteral("orbClient.%1.__doc__").arg(type)),
             type == QLatin1String("dataFrame") ? QStringLiteral("'orbService data frame objects'")
                                                : QStringLiteral("'orbService %1 objects'").arg(type));
}

void TestOrbClientModule::takesArgumentTuplesEverywhere()
{
    const PyMethodDef *row = PyModule_GetDef(python.module())->m_methods;
    for (const FunctionRow &function : Functions) {
        QCOMPARE(row->ml_name, function.name);
        QCOMPARE(row->ml_flags, METH_VARARGS);
        ++row;
    }
    QVERIFY(!row->ml_name);
}

void TestOrbClientModule::describesItsFunctions_data()
{
    QTest::addColumn<QString>("docstring");
    for (const FunctionRow &function : Functions)
        QTest::newRow(function.name) << QString::fromLatin1(function.docstring);
}

void TestOrbClientModule::describesItsFunctions()
{
    QFETCH(QString, docstring);

    const QString name = QString::fromLatin1(QTest::currentDataTag());
    const PyRef text = python.evaluate(QStringLiteral("orbClient.%1.__doc__").arg(name));
    QVERIFY(text);
    QCOMPARE(PythonInterpreter::textOf(text.get()), docstring);
    QCOMPARE(python.eval(QStringLiteral("type(orbClient.%1).__name__").arg(name)),
             QStringLiteral("'builtin_function_or_method'"));
}

void TestOrbClientModule::keepsItsClientInTheFirstWord()
{
    QCOMPARE(stateOf(python.module()), onlyFirst(&python.client()));

    // Nothing that a script does writes to the rest.
    python.backend().setControllers({{QStringLiteral("c1"), QString()}});
    QCOMPARE(python.exec(QStringLiteral(R"(
orbClient.connect("c2", "127.0.0.1:1", "a", "b")
orbClient.scriptConnect("c3", "127.0.0.1:1", "a", "b", "c", "d")
orbClient.findConnection("c1")
orbClient.getConnections()
orbClient.getItem("c1", "x")
orbClient.setItem("c1", "x", "1")
orbClient.setDebugLevel(2)
orbClient.getVersion()
)")),
             QString());
    QCOMPARE(stateOf(python.module()), onlyFirst(&python.client()));

    python.setClient(nullptr);
    QCOMPARE(stateOf(python.module()), StateWords{});
    OrbClient other(python.backend());
    python.setClient(&other);
    QCOMPARE(stateOf(python.module()), onlyFirst(&other));
    python.setClient(&python.client());
    QCOMPARE(stateOf(python.module()), onlyFirst(&python.client()));
}

void TestOrbClientModule::leavesOtherModulesAlone()
{
    const PyRef strange(PyModule_Create2(&strangeDefinition, PYTHON_API_VERSION));
    QVERIFY(strange);
    std::memset(PyModule_GetState(strange.get()), 0, StateSize);
    orbclient::setModuleClient(strange.get(), &python.client());
    QCOMPARE(stateOf(strange.get()), StateWords{});

    // And such a module does not make the client one that may be called: objects of a client that was never given to
    // our own module work through nothing.
    OrbClient other(python.backend());
    orbclient::setModuleClient(strange.get(), &other);
    QCOMPARE(stateOf(python.module()), onlyFirst(&python.client()));
    QCOMPARE(stateOf(strange.get()), StateWords{});
}

void TestOrbClientModule::leavesWhatIsNoModuleAlone()
{
    for (const char *expression : {"sys", "importlib", "type(sys)('orbClientPython_3')", "5", "None",
                                   "object()", "orbClient.connection", "orbClient.connection('c1')", "{}"}) {
        const PyRef object = python.evaluate(QString::fromLatin1(expression));
        QVERIFY2(object, expression);
        orbclient::setModuleClient(object.get(), &python.client());
        QCOMPARE(PythonInterpreter::takeException(), QString());
        orbclient::setModuleClient(object.get(), nullptr);
        QCOMPARE(PythonInterpreter::takeException(), QString());
    }
    QCOMPARE(python.eval(QStringLiteral("orbClient.setItem('c1', 'x', '1')")), QStringLiteral("'ok'"));
}

void TestOrbClientModule::canBeMadeTwice()
{
    const PyRef second(PyInit_orbClientPython_3_for_ORB());
    QVERIFY(second);
    QVERIFY(second.get() != python.module());
    QCOMPARE(stateOf(second.get()), StateWords{});
    QCOMPARE(stateOf(python.module()), onlyFirst(&python.client()));

    python.bind(QStringLiteral("second"), second.get());
    QCOMPARE(python.eval(QStringLiteral("second.getVersion()")), QStringLiteral("'error'"));
    QCOMPARE(python.eval(QStringLiteral("second.connection is orbClient.connection")),
             QStringLiteral("True"));

    RecordingBackend secondBackend;
    secondBackend.setControllers({{QStringLiteral("other"), QString()}});
    {
        OrbClient client(secondBackend);
        orbclient::setModuleClient(second.get(), &client);
        QCOMPARE(stateOf(second.get()), onlyFirst(&client));
        python.backend().setControllers({{QStringLiteral("c1"), QString()}});
        QCOMPARE(python.eval(QStringLiteral("(second.getConnections(), orbClient.getConnections())")),
                 QStringLiteral("([other], [c1])"));
        QCOMPARE(python.exec(QStringLiteral("held = second.findConnection('other')")), QString());
        QCOMPARE(python.eval(QStringLiteral("held.setControlReboot(1)")), QStringLiteral("'ok'"));
        orbclient::setModuleClient(second.get(), nullptr);
    }

    // One module's client is gone, the other's is not.
    QCOMPARE(python.eval(QStringLiteral("held.setControlReboot(1)")), QStringLiteral("'error'"));
    QCOMPARE(python.eval(QStringLiteral("orbClient.findConnection('c1').setControlReboot(1)")),
             QStringLiteral("'ok'"));
    QCOMPARE(python.exec(QStringLiteral("del second, held")), QString());
}

void TestOrbClientModule::canBeImportedAgain()
{
    QCOMPARE(python.exec(QStringLiteral("import orbClient as same")), QString());
    QCOMPARE(python.eval(QStringLiteral("same is orbClient")), QStringLiteral("True"));

    QCOMPARE(python.exec(QStringLiteral(R"(
kept = sys.modules.pop("orbClient")
fresh = importlib.import_module("orbClient")
sys.modules["orbClient"] = kept
)")),
             QString());
    const PyRef fresh = python.evaluate(QStringLiteral("fresh"));
    QVERIFY(fresh);
    QVERIFY(fresh.get() != python.module());
    QCOMPARE(stateOf(fresh.get()), StateWords{});
    QCOMPARE(python.eval(QStringLiteral("fresh.getVersion()")), QStringLiteral("'error'"));
    QCOMPARE(python.eval(QStringLiteral("fresh.getConnections()")), QStringLiteral("SystemError"));
    QVERIFY(python.eval(QStringLiteral("orbClient.getVersion()")) != QStringLiteral("'error'"));
}

void TestOrbClientModule::keepsTheTypesReferencesBalanced()
{
    // Each module holds one reference to each type and lets go of it.
    const QString counts =
        QStringLiteral("[sys.getrefcount(t) for t in (orbClient.connection, orbClient.crate, "
                       "orbClient.module, orbClient.channel, orbClient.dataFrame)]");
    // A module and its functions hold each other.
    const auto collect = [this] { return python.exec(QStringLiteral("gc.collect()")); };
    QCOMPARE(collect(), QString());
    const QString before = python.eval(counts);
    for (int i = 0; i < 10; ++i) {
        const PyRef another(PyInit_orbClientPython_3_for_ORB());
        QVERIFY(another);
        QVERIFY(python.eval(counts) != before);
    }
    QCOMPARE(collect(), QString());
    QCOMPARE(python.eval(counts), before);
}

QTEST_GUILESS_MAIN(TestOrbClientModule)

#include "tst_orb_client_module.moc"
