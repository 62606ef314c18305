#include "python_terminal/terminal_python_thread.h"

#include "tests/python_terminal/evaluator_under_test.h"

#include <QtTest>

#include <memory>

/// Files, and what functions find beside them: in a file and at the prompt.
class TestTerminalPythonThreadFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void files_data();
    void files();
    void filesSeeWhatWasTyped();
    void typedLinesSeeWhatAFileLeft();
    void filesLeaveAPendingStatementAlone();
    void largeFile();

    void functionsSeeNamesBesideThem_data();
    void functionsSeeNamesBesideThem();
    void namesAreSeenAtThePrompt_data();
    void namesAreSeenAtThePrompt();
    void builtinsAddedLaterAreSeen();
    void clearEndsWhatFunctionsSee();
    void modulesDoNotSeeTheUsersNames();

private:
    std::unique_ptr<EvaluatorUnderTest> evaluator;
};

void TestTerminalPythonThreadFiles::initTestCase()
{
    evaluator = std::make_unique<EvaluatorUnderTest>();
    evaluator->init();
}

void TestTerminalPythonThreadFiles::cleanupTestCase()
{
    evaluator.reset();
}

void TestTerminalPythonThreadFiles::init()
{
    evaluator->clear();
}

void TestTerminalPythonThreadFiles::files_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("signalTexts");

    const auto row = [](const char *name, const char *file, const QStringList &signalTexts) {
        QTest::newRow(name) << QString::fromUtf8(file) << signalTexts;
    };
    const QString done = QStringLiteral("done");
    row("empty", "", {done});
    row("comment", "# note", {done});
    row("no line feed at the end", "print(1)", {QStringLiteral("out 1"), QStringLiteral("out \n"), done});
    row("expressions are not displayed", "1\n'a'\n", {done});
    row("line feeds of other systems", "x = 1\r\nif x:\r\n    print(x)\r\n",
        {QStringLiteral("out 1"), QStringLiteral("out \n"), done});
    row("blocks with empty lines and comments", "if True:\n\n  # note\n  print(1)\n\n  print(2)\n",
        {QStringLiteral("out 1"), QStringLiteral("out \n"), QStringLiteral("out 2"), QStringLiteral("out \n"),
         done});
    row("umlauts", "print('ä€')\n", {QStringLiteral("out ä€"), QStringLiteral("out \n"), done});
    row("does not compile", "print(1)\na b\n", {done});
    row("does not compile at its very end", "print(1)\nx = (\n", {done});
    row("does not compile: wrong indentation", "print(1)\n  print(2)\n", {done});
    row("does not compile: return outside of a function", "print(1)\nreturn\n", {done});
    row("header without a body", "print(1)\nif True:\n", {done});
    row("raises", "print(1)\n1/0\nprint(2)\n",
        {QStringLiteral("out 1"), QStringLiteral("out \n"),
         QStringLiteral("err <class 'ZeroDivisionError'> division by zero <traceback object at 0x?>"), done});
    row("raises what reads like an incomplete line", "raise SyntaxError('unexpected EOF while parsing')",
        {QStringLiteral("err <class 'SyntaxError'> unexpected EOF while parsing <traceback object at 0x?>"),
         done});
    row("writes to standard error", "import sys\n_ = sys.stderr.write('e')\n",
        {QStringLiteral("err e"), done});
    row("leaves by exit", "import sys\nprint(1)\nsys.exit(4)\nprint(2)\n",
        {QStringLiteral("out 1"), QStringLiteral("out \n"),
         QStringLiteral("err <class 'SystemExit'> 4 <traceback object at 0x?>"), done});
}

void TestTerminalPythonThreadFiles::files()
{
    QFETCH(QString, file);
    QFETCH(QStringList, signalTexts);
    QCOMPARE(EvaluatorUnderTest::withoutAddresses(evaluator->execute(file)), signalTexts);
}

void TestTerminalPythonThreadFiles::filesSeeWhatWasTyped()
{
    evaluator->type(QStringLiteral("x = 5"));
    QCOMPARE(evaluator->shownByFile(QStringLiteral("def f():\n    return x\nprint(x, f())\n")),
             QStringLiteral("5 5\n"));
}

void TestTerminalPythonThreadFiles::typedLinesSeeWhatAFileLeft()
{
    evaluator->execute(QStringLiteral("import math\ndef f(x):\n    return math.floor(x) + y\ny = 1\n"));
    QCOMPARE(evaluator->shownBy(QStringLiteral("f(2.5), y")), QStringLiteral("(3, 1)\n"));
}

void TestTerminalPythonThreadFiles::filesLeaveAPendingStatementAlone()
{
    evaluator->type(QStringLiteral("x = ("));
    QCOMPARE(evaluator->shownByFile(QStringLiteral("print(1)")), QStringLiteral("1\n"));
    evaluator->type(QStringLiteral("6)"));
    QCOMPARE(evaluator->shownBy(QStringLiteral("x")), QStringLiteral("6\n"));
}

void TestTerminalPythonThreadFiles::largeFile()
{
    constexpr int Lines = 20'000;
    QString file = QStringLiteral("x = 0\n");
    for (int line = 0; line < Lines; ++line)
        file += QStringLiteral("x += 1 # a note, so that the line is of a usual length\n");
    file += QStringLiteral("print(x)\n");
    QCOMPARE(evaluator->shownByFile(file), QString::number(Lines) + QLatin1Char('\n'));
}

void TestTerminalPythonThreadFiles::functionsSeeNamesBesideThem_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("shown");

    const auto row = [](const char *name, const char *file, const char *shown) {
        QTest::newRow(name) << QString::fromLatin1(file) << QString::fromLatin1(shown);
    };
    row("functions call each other",
        "def even(n):\n    return n == 0 or odd(n - 1)\n"
        "def odd(n):\n    return n != 0 and even(n - 1)\nprint(even(10), odd(10))\n",
        "True False\n");
    row("a module imported at the top", "import math\ndef f():\n    return math.floor(1.5)\nprint(f())\n",
        "1\n");
    row("a name from a module", "from math import floor\ndef f():\n    return floor(1.5)\nprint(f())\n",
        "1\n");
    row("a constant", "Limit = 3\ndef f():\n    return Limit\nLimit = 4\nprint(f())\n", "4\n");
    row("comprehensions", "k = 2\nprint([k * i for i in (1, 2)], {k for i in (1,)}, {i: k for i in (1,)})\n",
        "[2, 4] {2} {1: 2}\n");
    row("nested comprehensions", "k = 1\nprint([[k + i + j for i in (1,)] for j in (2,)])\n", "[[4]]\n");
    row("generator expressions and lambdas", "k = 2\nprint(sum(k for i in (1, 2)), (lambda: k)())\n",
        "4 2\n");
    row("a class body", "k = 2\nclass C:\n    v = k + 1\n    w = [k for i in (1,)]\nprint(C.v, C.w)\n",
        "3 [2]\n");
    row("methods", "k = 2\nclass C:\n    def f(self):\n        return k, C\nprint(C().f() == (2, C))\n",
        "True\n");
    row("subclasses",
        "class A:\n    pass\ndef f():\n    class B(A):\n        pass\n    return B\nprint(f().__mro__[1] "
        "is A)\n",
        "True\n");
    row("nested functions",
        "k = 2\ndef f():\n    def g():\n        def h():\n            return k\n        return h()\n    "
        "return "
        "g()\nprint(f())\n",
        "2\n");
    row("closures keep their own names",
        "k = 2\ndef f(k):\n    def g():\n        return k\n    return g\nprint(f(7)())\n", "7\n");
    row("decorators",
        "def twice(f):\n    return lambda x: f(f(x))\n@twice\ndef g(x):\n    return x + 1\nprint(g(1))\n",
        "3\n");
    row("generators",
        "k = 2\ndef f():\n    yield k\n    yield g()\ndef g():\n    return 3\nprint(list(f()))\n",
        "[2, 3]\n");
    row("the main guard", "def main():\n    print('main')\nif __name__ == \"__main__\":\n    main()\n",
        "main\n");
    row("an exception of the file's own",
        "class Stop(Exception):\n    pass\ndef f():\n    raise Stop\ntry:\n    f()\nexcept Stop:\n    "
        "print('stopped')\n",
        "stopped\n");
    row("global statement",
        "def f():\n    global counted\n    counted = 1\nf()\ndef g():\n    return counted\nprint(g(), "
        "globals()['counted'])\n",
        "1 1\n");
    row("global counter that was set at the top",
        "def count():\n    global counter\n    counter = counter + 1\n    return counter\ncounter = "
        "5\nprint(count(), count())\n",
        "6 7\n");
    row("callbacks that a module calls",
        "k = 2\nimport functools\nprint(functools.reduce(lambda a, b: a * b * k, [1, 2]))\n", "4\n");
    row("threads",
        "import threading\nk = 2\ndone = []\ndef work():\n    done.append(k)\nt = "
        "threading.Thread(target=work)\n"
        "t.start()\nt.join()\nprint(done)\n",
        "[2]\n");
    row("a local name hides a built-in one", "def f():\n    return len\nlen = 3\nprint(f())\n", "3\n");
    row("built-in names", "def f():\n    return len('ab'), abs(-1), ValueError.__name__\nprint(f())\n",
        "(2, 1, 'ValueError')\n");
    row("imports inside of functions",
        "def f():\n    import os.path\n    return os.path.join('a', 'b')\nprint(f())\n", "a/b\n");
    row("classes inside of functions", "def f():\n    class C:\n        v = 1\n    return C.v\nprint(f())\n",
        "1\n");
    row("eval and exec inside of functions",
        "k = 2\ndef f():\n    exec('assert k == 2')\n    return eval('k')\nprint(f())\n", "2\n");
}

void TestTerminalPythonThreadFiles::functionsSeeNamesBesideThem()
{
    QFETCH(QString, file);
    QFETCH(QString, shown);
    QCOMPARE(evaluator->shownByFile(file), shown);
}

void TestTerminalPythonThreadFiles::namesAreSeenAtThePrompt_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("shown");

    const auto row = [](const char *name, std::initializer_list<const char *> lines, const char *shown) {
        QStringList texts;
        for (const char *line : lines)
            texts.append(QString::fromLatin1(line));
        QTest::newRow(name) << texts << QString::fromLatin1(shown);
    };
    row("recursion", {"def f(n): return 1 if n == 0 else n * f(n - 1)", "f(5)"}, "120\n");
    row("a later definition", {"def f(): return g()", "def g(): return 2", "f()"}, "2\n");
    row("an import", {"import math", "def f(): return math.floor(1.5)", "f()"}, "1\n");
    row("a changed value", {"x = 1", "def f(): return x", "x = 2", "f()"}, "2\n");
    row("a deleted value", {"x = 1", "def f(): return x", "del x", "f()"},
        "err <class 'NameError'> name 'x' is not defined <traceback object at 0x?>");
    row("a deleted global", {"globals()['y'] = 1", "def f(): return y", "del globals()['y']", "f()"},
        "err <class 'NameError'> name 'y' is not defined <traceback object at 0x?>");
    row("del of a global in a function", {"def f():\n  global z; z = 1; del z; return z", "f()"},
        "err <class 'NameError'> name 'z' is not defined <traceback object at 0x?>");
    row("an unknown name", {"def f(): return unknown", "f()"},
        "err <class 'NameError'> name 'unknown' is not defined <traceback object at 0x?>");
    row("an unknown name in a comprehension", {"[unknown for i in (1,)]"},
        "err <class 'NameError'> name 'unknown' is not defined <traceback object at 0x?>");
    row("a local name before its value", {"def f():\n  v = v; return v", "v = 1", "f()"},
        "err <class 'UnboundLocalError'> local variable 'v' referenced before assignment <traceback object "
        "at "
        "0x?>");
    row("a value replaces a built-in function, and no longer",
        {"abs = 3", "def f(): return abs", "f()", "del abs", "f()"}, "3\n<built-in function abs>\n");
    row("the last value", {"5", "def f(): return _", "f()"}, "5\n5\n");
}

void TestTerminalPythonThreadFiles::namesAreSeenAtThePrompt()
{
    QFETCH(QStringList, lines);
    QFETCH(QString, shown);
    QCOMPARE(EvaluatorUnderTest::shown(EvaluatorUnderTest::withoutAddresses(evaluator->type(lines))), shown);
}

void TestTerminalPythonThreadFiles::builtinsAddedLaterAreSeen()
{
    evaluator->type({QStringLiteral("import builtins"), QStringLiteral("builtins.added = 9"),
                     QStringLiteral("def f(): return added")});
    QCOMPARE(evaluator->shownBy(QStringLiteral("f(), added")), QStringLiteral("(9, 9)\n"));
    evaluator->type(QStringLiteral("del builtins.added"));
    QVERIFY(evaluator->shownBy(QStringLiteral("f()")).startsWith(QLatin1String("err <class 'NameError'>")));
}

void TestTerminalPythonThreadFiles::clearEndsWhatFunctionsSee()
{
    evaluator->type({QStringLiteral("x = 1"), QStringLiteral("def f(): return x"),
                     QStringLiteral("globals()['f'] = f"), QStringLiteral("f()")});
    evaluator->clear();
    QVERIFY(evaluator->shownBy(QStringLiteral("f()")).contains(QLatin1String("name 'x' is not defined")));
    evaluator->type(QStringLiteral("del globals()['f']"));
}

void TestTerminalPythonThreadFiles::modulesDoNotSeeTheUsersNames()
{
    evaluator->type({QStringLiteral("import types, builtins"), QStringLiteral("x = 1"),
                     QStringLiteral("m = types.ModuleType('m')")});
    QVERIFY(evaluator
                ->shownBy(QStringLiteral("exec('def f(): return x', m.__dict__, m.__dict__) or "
                                         "m.__dict__.update(__builtins__=builtins) or "
                                         "types.FunctionType(m.f.__code__, m.__dict__)()"))
                .contains(QLatin1String("name 'x' is not defined")));
    QVERIFY(evaluator->shownBy(QStringLiteral("import json; json.loads('[1]')")) == QLatin1String("[1]\n"));
}

QTEST_GUILESS_MAIN(TestTerminalPythonThreadFiles)
#include "tst_terminal_python_thread_files.moc"
