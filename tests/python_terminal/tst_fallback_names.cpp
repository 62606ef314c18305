#include "python_terminal/fallback_names.h"

#include "tests/support/python_interpreter.h"

#include <QtTest>

#include <memory>

/// The names that functions fall back to, in dictionaries of the test's own.
class TestFallbackNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void names_data();
    void names();
    void ownItemsComeFirst();
    void isAskedThroughItemAccess();
    void keyErrors_data();
    void keyErrors();
    void holdsTheLocals();
    void cyclesAreCollected();
    void outlastsItsLocals();
    void attributesOfTheModule();
    void namesOfTheModule();

private:
    /// Sets up "names", "local" and a function of "f" that runs in `code` with them.
    void setUpNames();

    std::unique_ptr<PythonInterpreter> python;
};

void TestFallbackNames::initTestCase()
{
    python = std::make_unique<PythonInterpreter>();
}

void TestFallbackNames::cleanupTestCase()
{
    python.reset();
}

void TestFallbackNames::setUpNames()
{
    const PyRef local(PyDict_New());
    const PyRef names(python_terminal::newFallbackNames(local.get()));
    QVERIFY(names);
    python->bind(QStringLiteral("local"), local.get());
    python->bind(QStringLiteral("names"), names.get());
    QCOMPARE(python->exec(QStringLiteral(R"(
def run(text):
    own = {'__builtins__': names, '__name__': 'own'}
    exec(compile(text, 'text', 'exec'), own, local)
    return local.get('result')
)")),
             QString());
}

void TestFallbackNames::names_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");

    const auto row = [](const char *name, const char *text, const char *result) {
        QTest::newRow(name) << QString::fromLatin1(text) << QString::fromLatin1(result);
    };
    row("a local name", "x = 1\ndef f(): return x\nresult = f()", "1");
    row("a built-in name", "def f(): return len('ab')\nresult = f()", "2");
    row("a local name hides a built-in one", "len = 3\ndef f(): return len\nresult = f()", "3");
    row("a global name hides a local one",
        "exec('x = 1', {}, locals())\ndef f():\n  globals()['x'] = 2\n  return x\ny = f()\nresult = y, x",
        "(2, 1)");
    row("itself", "def f(n): return n and n + f(n - 1)\nresult = f(4)", "10");
    row("comprehension", "x = 2\nresult = [x for i in (1, 2)]", "[2, 2]");
    row("class", "x = 2\nclass C:\n  y = [x for i in (1,)]\nresult = C.y", "[2]");
    row("import in a function", "def f():\n  import math\n  return math.floor(1.5)\nresult = f()", "1");
    row("class in a function", "def f():\n  class C: pass\n  return C.__name__\nresult = f()", "'C'");
    row("no such name", "def f(): return nothing\nf()", "NameError");
    row("a deleted name", "x = 1\ndef f(): return x\ndel x\nf()", "NameError");
    row("assert", "def f(): assert False\nf()", "AssertionError");
    row("exception handlers",
        "def f():\n  try: return nothing\n  except NameError as e: return str(e)\nresult = f()",
        "\"name 'nothing' is not defined\"");
    row("the display of names",
        "def f(): return sorted(n for n in dir() if n == 'y') or vars()\nresult = f()", "{}");
}

void TestFallbackNames::names()
{
    QFETCH(QString, text);
    QFETCH(QString, result);
    setUpNames();
    python->bind(QStringLiteral("text"), PyRef(PyUnicode_FromString(text.toUtf8().constData())).get());
    QCOMPARE(python->eval(QStringLiteral("run(text)")), result);
}

/// What Python looks up in the dictionary itself is in it, whatever a script calls its own things.
void TestFallbackNames::ownItemsComeFirst()
{
    setUpNames();
    QCOMPARE(python->eval(QStringLiteral("sorted(names)")),
             QStringLiteral("['__build_class__', '__import__']"));
    python->exec(QStringLiteral("local['__import__'] = 1"));
    QCOMPARE(python->eval(QStringLiteral("names['__import__'] is __import__")), QStringLiteral("True"));
}

void TestFallbackNames::isAskedThroughItemAccess()
{
    setUpNames();
    QCOMPARE(python->eval(QStringLiteral("isinstance(names, dict), type(names) is dict")),
             QStringLiteral("(True, False)"));
    python->exec(QStringLiteral("import builtins; builtins.added = 5"));
    QCOMPARE(python->eval(QStringLiteral("names['added']")), QStringLiteral("5"));
    python->exec(QStringLiteral("del builtins.added"));
    QCOMPARE(python->eval(QStringLiteral("names['added']")), QStringLiteral("KeyError"));
    python->exec(QStringLiteral("local['added'] = 6"));
    QCOMPARE(python->eval(QStringLiteral("names['added']")), QStringLiteral("6"));
}

void TestFallbackNames::keyErrors_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("error");

    QTest::newRow("unknown") << QStringLiteral("'nothing'") << QStringLiteral("KeyError");
    QTest::newRow("no text") << QStringLiteral("5") << QStringLiteral("KeyError");
    QTest::newRow("no key") << QStringLiteral("[]") << QStringLiteral("TypeError");
}

void TestFallbackNames::keyErrors()
{
    QFETCH(QString, key);
    QFETCH(QString, error);
    setUpNames();
    QCOMPARE(python->eval(QStringLiteral("names[%1]").arg(key)), error);
}

void TestFallbackNames::holdsTheLocals()
{
    PyRef local(PyDict_New());
    const Py_ssize_t before = Py_REFCNT(local.get());
    PyRef names(python_terminal::newFallbackNames(local.get()));
    PyRef attributes(python_terminal::newModuleAttributes(local.get()));
    PyRef list(python_terminal::newModuleNames(local.get()));
    QCOMPARE(Py_REFCNT(local.get()), before + 3);
    names = PyRef();
    QCOMPARE(Py_REFCNT(local.get()), before + 2);
    attributes = PyRef();
    list = PyRef();
    QCOMPARE(Py_REFCNT(local.get()), before);
}

/// A function holds its globals, these hold the names, these hold the locals, which hold the function.
void TestFallbackNames::cyclesAreCollected()
{
    setUpNames();
    QCOMPARE(python->exec(QStringLiteral(R"(
import gc, weakref
run('''
class C: pass
def f(): return C
''')
reference = weakref.ref(local['C'])
del run, local, names
)")),
             QString());
    QCOMPARE(python->eval(QStringLiteral("gc.collect() >= 0 and reference() is None")),
             QStringLiteral("True"));
}

/// The collector may ask for it at any time.
void TestFallbackNames::outlastsItsLocals()
{
    setUpNames();
    const PyRef names(python->evaluate(QStringLiteral("names")));
    python->exec(QStringLiteral("local['x'] = 1"));
    QCOMPARE(Py_TYPE(names.get())->tp_clear(names.get()), 0);
    QCOMPARE(python->eval(QStringLiteral("names['len'] is len")), QStringLiteral("True"));
    QCOMPARE(python->eval(QStringLiteral("names['x']")), QStringLiteral("KeyError"));
}

void TestFallbackNames::attributesOfTheModule()
{
    setUpNames();
    python->exec(QStringLiteral("import types; module = types.ModuleType('m'); module.own = 1\n"
                                "local['x'] = 5; local['own'] = 2"));
    const PyRef local(python->evaluate(QStringLiteral("local")));
    const PyRef attributes(python_terminal::newModuleAttributes(local.get()));
    python->bind(QStringLiteral("attributes"), attributes.get());
    python->exec(QStringLiteral("module.__getattr__ = attributes"));
    QCOMPARE(python->eval(QStringLiteral("module.x, module.own")), QStringLiteral("(5, 1)"));
    QCOMPARE(python->eval(QStringLiteral("module.nothing")), QStringLiteral("AttributeError"));
    QCOMPARE(python->eval(QStringLiteral("hasattr(module, 'nothing'), getattr(module, 'nothing', 7)")),
             QStringLiteral("(False, 7)"));
    python->exec(QStringLiteral("del local['x']"));
    QCOMPARE(python->eval(QStringLiteral("module.x")), QStringLiteral("AttributeError"));
}

void TestFallbackNames::namesOfTheModule()
{
    setUpNames();
    python->exec(QStringLiteral("local['of_the_script'] = 5; of_the_module = 6"));
    const PyRef local(python->evaluate(QStringLiteral("local")));
    const PyRef list(python_terminal::newModuleNames(local.get()));
    python->bind(QStringLiteral("__dir__"), list.get());
    python->exec(QStringLiteral("import sys, types; listed = dir(sys.modules['__main__'])"));
    QCOMPARE(python->eval(
                 QStringLiteral("'of_the_script' in listed, 'of_the_module' in listed, '__name__' in listed, "
                                "'nothing' in listed")),
             QStringLiteral("(True, True, True, False)"));
    QCOMPARE(python->eval(QStringLiteral("'of_the_script' in globals()")), QStringLiteral("False"));
}

QTEST_GUILESS_MAIN(TestFallbackNames)
#include "tst_fallback_names.moc"
