#include "orbclient/py_ref.h"
#include "orbclient/python_include.h"
#include "tests/plugin/built_plugin.h"

#include <QtTest>

#include <string>

namespace
{

QStringList namesIn(PyObject *object)
{
    const PyRef names(PyObject_Dir(object));
    QStringList texts;
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(names.get()); ++i)
        texts.append(QString::fromUtf8(PyUnicode_AsUTF8(PyList_GET_ITEM(names.get(), i))));
    return texts;
}

} // namespace

/// The plug-in's library as what brings the interpreter and the scripting module along.
class TestTerminalPluginPython : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void theEntryMakesTheModule();
    void eachCallMakesAModule();
    void theModuleWorks();

private:
    PyRef makeModule()
    {
        using Entry = PyObject *(*)();
        const auto entry = reinterpret_cast<Entry>(built.library.resolve("PyInit_orbClientPython_3_for_ORB"));
        return PyRef(entry ? entry() : nullptr);
    }

    BuiltPlugin built;
};

void TestTerminalPluginPython::initTestCase()
{
    // The user's own modules and settings stay out of it. Python keeps the pointer.
    qunsetenv("PYTHONPATH");
    qunsetenv("PYTHONHOME");
    static std::wstring home = QStringLiteral(PYTHON_HOME).toStdWString();
    Py_SetPythonHome(home.data());
    Py_NoUserSiteDirectory = 1;
    Py_DontWriteBytecodeFlag = 1;
    Py_InitializeEx(0);
}

void TestTerminalPluginPython::cleanupTestCase()
{
    QCOMPARE(Py_FinalizeEx(), 0);
}

void TestTerminalPluginPython::theEntryMakesTheModule()
{
    const PyRef module = makeModule();
    QVERIFY(module);
    QVERIFY(!PyErr_Occurred());
    QVERIFY(PyModule_Check(module.get()));
    QCOMPARE(PyModule_GetName(module.get()), "orbClientPython_3");
    const QStringList names = namesIn(module.get());
    for (const char *name :
         {"connect", "getVersion", "connection", "crate", "module", "channel", "dataFrame"})
        QVERIFY2(names.contains(QLatin1String(name)), name);
}

void TestTerminalPluginPython::eachCallMakesAModule()
{
    const PyRef first = makeModule();
    const PyRef second = makeModule();
    QVERIFY(first && second);
    QVERIFY(first.get() != second.get());
}

void TestTerminalPluginPython::theModuleWorks()
{
    const PyRef module = makeModule();
    QVERIFY(module);
    const PyRef channel(PyObject_CallMethod(module.get(), "channel", nullptr));
    QVERIFY(channel);
    // There is no client yet.
    const PyRef result(PyObject_CallMethod(channel.get(), "setControlOn", "i", 1));
    QVERIFY(result);
    QCOMPARE(PyUnicode_AsUTF8(result.get()), "error");
}

QTEST_APPLESS_MAIN(TestTerminalPluginPython)
#include "tst_terminal_plugin_python.moc"
