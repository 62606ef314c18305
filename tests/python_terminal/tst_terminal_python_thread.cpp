#include "python_terminal/terminal_python_thread.h"

#include "orbclient/orb_client_module.h"
#include "tests/python_terminal/evaluator_under_test.h"

#include <QtTest>

#include <memory>

/// The host's life: before its start, the start, the names that a user finds, a reset, the end.
class TestTerminalPythonThread : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void bannerTellsVersionAndPlatform();
    void nothingHappensBeforeTheStart();
    void nothingHappensAfterTheEnd();
    void secondHostFailsToStart();
    void interpreterStartsAgainAfterItsEnd();

    void namesAreSetUp_data();
    void namesAreSetUp();
    void startSaysNothingButTheBanner();

    void clearForgetsLocalNames();
    void clearKeepsGlobalNames();
    void clearKeepsStreamObjects();
    void clearRestoresStreams();
    void clearKeepsPendingCommand();
    void clearOutlastsFailingStatements();
    void droppedPendingCommandIsForgotten();

    void scriptsReachTheBackend();
    void clearHandsOverTheClient();
    void nothingEndsTheProcess_data();
    void nothingEndsTheProcess();

private:
    std::unique_ptr<EvaluatorUnderTest> evaluator;
};

void TestTerminalPythonThread::init()
{
    evaluator = std::make_unique<EvaluatorUnderTest>();
}

void TestTerminalPythonThread::cleanup()
{
    evaluator.reset();
}

void TestTerminalPythonThread::bannerTellsVersionAndPlatform()
{
    const QStringList started = evaluator->init();
    const QString banner = QStringLiteral("start Python ") + QString::fromLatin1(Py_GetVersion())
        + QStringLiteral(" on ") + QString::fromLatin1(Py_GetPlatform())
        + QStringLiteral("\nType \"help\", \"copyright\", \"credits\" or \"license\" for more information."
                         "\nType \"help(orbClient)\" for more information on the orbClient module.\n");
    QCOMPARE(started, QStringList(banner));
    QVERIFY2(banner.startsWith(QLatin1String("start Python 3.7.")), qPrintable(banner));
}

void TestTerminalPythonThread::nothingHappensBeforeTheStart()
{
    QCOMPARE(evaluator->type(QStringLiteral("1")), QStringList());
    QCOMPARE(evaluator->type(QString()), QStringList());
    QCOMPARE(evaluator->type(QStringLiteral("# note")), QStringList());
    QCOMPARE(evaluator->execute(QStringLiteral("print(1)")), QStringList());
    QCOMPARE(evaluator->complete(QStringLiteral("prin")), QStringList());
    QCOMPARE(evaluator->complete(QStringLiteral("pri")), QStringList());
    QCOMPARE(evaluator->clear(), QStringList());
    QCOMPARE(evaluator->exit(), QStringList());
}

void TestTerminalPythonThread::nothingHappensAfterTheEnd()
{
    evaluator->init();
    TerminalPythonThread *host = evaluator->host();
    const QStringList signalTexts = evaluator->onWorker([host] {
        host->onExit();
        host->onReturnPressed(QStringLiteral("1"));
        host->onExecuteFile(QStringLiteral("print(1)"));
        host->onComplete(QStringLiteral("prin"));
        host->onClear();
        host->onExit();
    });
    QCOMPARE(signalTexts, QStringList());
}

void TestTerminalPythonThread::secondHostFailsToStart()
{
    evaluator->init();
    evaluator->type(QStringLiteral("x = 1"));

    EvaluatorUnderTest second;
    QCOMPARE(second.init(), QStringList(QStringLiteral("start Failed to initialize Python.")));
    QCOMPARE(second.type(QStringLiteral("1")), QStringList());
    QCOMPARE(second.complete(QStringLiteral("prin")), QStringList());
    QCOMPARE(evaluator->shownBy(QStringLiteral("x")), QStringLiteral("1\n"));
    second.exit();
    QCOMPARE(evaluator->shownBy(QStringLiteral("x")), QStringLiteral("1\n"));
}

void TestTerminalPythonThread::interpreterStartsAgainAfterItsEnd()
{
    evaluator->init();
    evaluator->type(QStringLiteral("x = 1"));
    QCOMPARE(evaluator->exit(), QStringList());

    EvaluatorUnderTest next;
    QVERIFY(next.init().value(0).startsWith(QLatin1String("start Python 3.7.")));
    QCOMPARE(next.shownBy(QStringLiteral("'x' in localdict")), QStringLiteral("False\n"));
    QCOMPARE(next.shownBy(QStringLiteral("import math; math.floor(2.5)")), QStringLiteral("2\n"));
}

void TestTerminalPythonThread::namesAreSetUp_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("value");

    const auto row = [](const char *name, const char *expression, const char *value) {
        QTest::newRow(name) << QString::fromLatin1(expression) << QString::fromLatin1(value);
    };
    row("local names", "sorted(localdict)",
        "['ConsoleRedirection', 'completer', 'orbClient', 'rlcompleter', 'sys']");
    row("localdict is the dictionary of statements", "localdict is locals()", "True");
    row("localdict is published", "globals()['localdict'] is localdict", "True");
    row("globals are those of __main__", "globals() is sys.modules['__main__'].__dict__", "True");
    row("completer", "type(completer) is rlcompleter.Completer, completer.namespace is localdict",
        "(True, True)");
    row("streams",
        "[getattr(sys, n) is getattr(ConsoleRedirection, n) for n in ('stdout', 'stderr', 'stdin')]",
        "[True, True, True]");
    row("each stream an object of its own", "len({id(sys.stdout), id(sys.stderr), id(sys.stdin)})", "3");
    row("argv", "sys.argv", "['']");
    row("name", "__name__", "'__main__'");
    row("one search path", "sys.path[0].endswith('/python-3.7.1/Lib'), len(sys.path)", "(True, 1)");
}

void TestTerminalPythonThread::namesAreSetUp()
{
    QFETCH(QString, expression);
    QFETCH(QString, value);

    evaluator->init();
    // After the start, and once more after each reset.
    for (int round = 0; round < 3; ++round) {
        QCOMPARE(evaluator->shownBy(expression), value + QLatin1Char('\n'));
        QCOMPARE(evaluator->clear(), QStringList());
    }
}

void TestTerminalPythonThread::startSaysNothingButTheBanner()
{
    QCOMPARE(evaluator->init().size(), 1);
    QCOMPARE(evaluator->clear(), QStringList());
    QCOMPARE(evaluator->clear(), QStringList());
}

void TestTerminalPythonThread::clearForgetsLocalNames()
{
    evaluator->init();
    evaluator->type(
        {QStringLiteral("x = 1"), QStringLiteral("def f(): return 2"), QStringLiteral("sys = 3")});
    evaluator->clear();
    QCOMPARE(evaluator->shownBy(QStringLiteral("'x' in localdict, 'f' in localdict, type(sys).__name__")),
             QStringLiteral("(False, False, 'module')\n"));
}

void TestTerminalPythonThread::clearKeepsGlobalNames()
{
    evaluator->init();
    evaluator->type(QStringLiteral("globals()['kept'] = 5"));
    evaluator->clear();
    QCOMPARE(evaluator->shownBy(QStringLiteral("kept")), QStringLiteral("5\n"));
}

void TestTerminalPythonThread::clearKeepsStreamObjects()
{
    evaluator->init();
    evaluator->type(QStringLiteral("globals()['before'] = sys.stdout, sys.stderr, sys.stdin"));
    evaluator->clear();
    QCOMPARE(evaluator->shownBy(
                 QStringLiteral("[a is b for a, b in zip(before, (sys.stdout, sys.stderr, sys.stdin))]")),
             QStringLiteral("[True, True, True]\n"));
}

void TestTerminalPythonThread::clearRestoresStreams()
{
    evaluator->init();
    evaluator->type({QStringLiteral("sys.stdout = sys.stderr = sys.stdin = None"),
                     QStringLiteral("ConsoleRedirection.stdout = ConsoleRedirection.stderr = None")});
    QCOMPARE(evaluator->shownBy(QStringLiteral("print(1)")), QString());
    evaluator->clear();
    QCOMPARE(evaluator->type(QStringLiteral("_ = sys.stdout.write('a'), sys.stderr.write('b')")),
             QStringList({QStringLiteral("out a"), QStringLiteral("err b"), QStringLiteral("done")}));
}

void TestTerminalPythonThread::clearKeepsPendingCommand()
{
    evaluator->init();
    QCOMPARE(evaluator->type(QStringLiteral("x = (")), QStringList(QStringLiteral("more")));
    evaluator->clear();
    QCOMPARE(evaluator->type(QStringLiteral("7)")), QStringList(QStringLiteral("done")));
    QCOMPARE(evaluator->shownBy(QStringLiteral("x")), QStringLiteral("7\n"));
}

void TestTerminalPythonThread::clearOutlastsFailingStatements()
{
    evaluator->init();
    evaluator->type(QStringLiteral("sys.modules['rlcompleter'] = None"));
    // Neither the import nor the completer works now; what comes after them does, and nobody hears of it.
    QCOMPARE(evaluator->clear(), QStringList());
    QCOMPARE(evaluator->shownBy(QStringLiteral("sorted(localdict), sys.stdout is ConsoleRedirection.stdout")),
             QStringLiteral("(['ConsoleRedirection', 'orbClient', 'sys'], True)\n"));
    evaluator->type(QStringLiteral("del sys.modules['rlcompleter']"));
    evaluator->clear();
    QCOMPARE(evaluator->shownBy(QStringLiteral("'completer' in localdict")), QStringLiteral("True\n"));
}

void TestTerminalPythonThread::droppedPendingCommandIsForgotten()
{
    evaluator->init();
    evaluator->type(QStringLiteral("x = ("));
    evaluator->onWorker([this] { evaluator->host()->dropPendingCommand(); });
    QCOMPARE(evaluator->type(QStringLiteral("5")),
             QStringList({QStringLiteral("out 5"), QStringLiteral("out \n"), QStringLiteral("done")}));
}

void TestTerminalPythonThread::scriptsReachTheBackend()
{
    evaluator->backend().setControllers({{QStringLiteral("c1"), QStringLiteral("first")}});
    evaluator->init();
    QCOMPARE(evaluator->shownBy(QStringLiteral("len(orbClient.getConnections())")), QStringLiteral("1\n"));
    QVERIFY(!evaluator->backend().callsOf(QStringLiteral("controllers")).isEmpty());
}

void TestTerminalPythonThread::clearHandsOverTheClient()
{
    evaluator->backend().setControllers({{QStringLiteral("c1"), QStringLiteral("first")}});
    evaluator->init();
    evaluator->onWorker([] {
        const PyRef module(PyImport_ImportModule("orbClient"));
        orbclient::setModuleClient(module.get(), nullptr);
    });
    const QString count = QStringLiteral("len(orbClient.getConnections())");
    QVERIFY(evaluator->shownBy(count).startsWith(QLatin1String("err <class 'SystemError'>")));
    evaluator->clear();
    QCOMPARE(evaluator->shownBy(count), QStringLiteral("1\n"));
}

void TestTerminalPythonThread::nothingEndsTheProcess_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("error");

    const auto row = [](const char *line, const char *error) {
        QTest::newRow(line) << QString::fromLatin1(line) << QString::fromLatin1(error);
    };
    row("sys.exit()", "err <class 'SystemExit'>  <traceback object at 0x?>");
    row("sys.exit(3)", "err <class 'SystemExit'> 3 <traceback object at 0x?>");
    row("sys.exit('why')", "err <class 'SystemExit'> why <traceback object at 0x?>");
    row("exit()", "err <class 'SystemExit'> None <traceback object at 0x?>");
    row("quit(2)", "err <class 'SystemExit'> 2 <traceback object at 0x?>");
    row("raise SystemExit", "err <class 'SystemExit'>  <traceback object at 0x?>");
    row("raise KeyboardInterrupt", "err <class 'KeyboardInterrupt'>  <traceback object at 0x?>");
    row("raise GeneratorExit(1)", "err <class 'GeneratorExit'> 1 <traceback object at 0x?>");
}

void TestTerminalPythonThread::nothingEndsTheProcess()
{
    QFETCH(QString, line);
    QFETCH(QString, error);

    evaluator->init();
    const QStringList expected = {error, QStringLiteral("done")};
    QCOMPARE(EvaluatorUnderTest::withoutAddresses(evaluator->type(line)), expected);
    QCOMPARE(EvaluatorUnderTest::withoutAddresses(evaluator->execute(line)), expected);
    QCOMPARE(evaluator->shownBy(QStringLiteral("1")), QStringLiteral("1\n"));
}

QTEST_GUILESS_MAIN(TestTerminalPythonThread)
#include "tst_terminal_python_thread.moc"
