#include "python_terminal/terminal_python_console.h"
#include "tests/command_terminal/context_translator.h"
#include "tests/python_terminal/python_console_bench.h"

#include <QtTest>

/// Files that the console executes, and its reset.
class TestTerminalPythonConsoleFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void executeFile_data();
    void executeFile();
    void executeFileSaysSoTranslated();
    void executeFileRemovesTheInput();
    void executeFileDuringAStatementEndsWithThePrompt();
    void executeFileAsks();
    void executeFileReports();
    void aFileDuringAFileFollowsIt();
    void aFileDuringAQuestionKeepsTheQuestion();

    void resetShowsTheBannerAlone();
    void resetForgetsNamesAndHistory();
    void resetClearsTheNamespaceOnce();
    void resetDuringAQuestionKeepsTheQuestion();
    void resetWhileSomethingRunsTakesNoLine();

private:
    QStringList answerOf(const QString &line)
    {
        const int before = bench->display().size();
        return bench->run(line) ? bench->display().mid(before) : QStringList{QStringLiteral("no prompt")};
    }
    QString text() const { return bench->console->toPlainText(); }

    std::unique_ptr<PythonConsoleBench> bench;
};

void TestTerminalPythonConsoleFiles::init()
{
    bench = std::make_unique<PythonConsoleBench>();
    QVERIFY(bench->start());
}

void TestTerminalPythonConsoleFiles::cleanup()
{
    bench.reset();
}

// Files

void TestTerminalPythonConsoleFiles::executeFile_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("display");
    const QString prompt = QStringLiteral("white:> ");
    const QString notice = QStringLiteral("white:> executing file");
    QTest::newRow("output") << QStringLiteral("def f():\n    print('out')\n\nf()\n")
                            << QStringList{notice, QStringLiteral("green:out"), prompt};
    QTest::newRow("values are not shown") << QStringLiteral("1\n2\n") << QStringList{notice, prompt};
    QTest::newRow("empty") << QString() << QStringList{notice, prompt};
    QTest::newRow("does not compile") << QStringLiteral("print(1)\na b\n") << QStringList{notice, prompt};
    QTest::newRow("ends in the middle") << QStringLiteral("x = (\n") << QStringList{notice, prompt};
}

void TestTerminalPythonConsoleFiles::executeFile()
{
    QFETCH(QString, file);
    QFETCH(QStringList, display);
    bench->console->executeFile(file);
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(bench->display(), display);
}

void TestTerminalPythonConsoleFiles::executeFileSaysSoTranslated()
{
    const ContextTranslator translator;
    bench->console->executeFile(QString());
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(bench->display().constFirst(), QStringLiteral("white:> [TerminalPythonConsole]executing file"));
}

void TestTerminalPythonConsoleFiles::executeFileRemovesTheInput()
{
    QTest::keyClicks(bench->console, QStringLiteral("half a line"));
    bench->console->executeFile(QStringLiteral("print(1)"));
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(bench->display(),
             (QStringList{QStringLiteral("white:> executing file"), QStringLiteral("green:1"),
                          QStringLiteral("white:> ")}));
    QVERIFY(bench->console->history.isEmpty());
}

void TestTerminalPythonConsoleFiles::executeFileDuringAStatementEndsWithThePrompt()
{
    QVERIFY(bench->run(QStringLiteral("x = (")));
    bench->console->executeFile(QStringLiteral("y = 5"));
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(bench->display().mid(1),
             (QStringList{QStringLiteral("white:. executing file"), QStringLiteral("white:> ")}));
    // The file's names are there, and the statement goes on where it was.
    QVERIFY(bench->run(QStringLiteral("y + 1)")));
    QCOMPARE(answerOf(QStringLiteral("x")).constFirst(), QStringLiteral("green:6"));
}

void TestTerminalPythonConsoleFiles::executeFileAsks()
{
    bench->console->executeFile(QStringLiteral("print('got', input('name'))\n"));
    QVERIFY(bench->waitForQuestion());
    QCOMPARE(
        answerOf(QStringLiteral("Ada")),
        (QStringList{QStringLiteral("green:got"), QStringLiteral("green:Ada"), QStringLiteral("white:> ")}));
}

void TestTerminalPythonConsoleFiles::executeFileReports()
{
    QSignalSpy handedOver(bench->console, &TerminalPythonConsole::executeFileInThread);
    bench->console->executeFile(QStringLiteral("1 / 0"));
    QCOMPARE(handedOver.size(), 1);
    QCOMPARE(handedOver.constFirst().constFirst().toString(), QStringLiteral("1 / 0"));
    QVERIFY(!bench->console->isEnabled());
    QCOMPARE(bench->busyEvents(), std::vector<qint64>{1});
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(bench->busyEvents(), (std::vector<qint64>{1, 0}));
    QVERIFY(bench->console->hasFocus());
    QVERIFY(bench->display().at(1).startsWith(
        QLatin1String("red:<class 'ZeroDivisionError'> division by zero <traceback object at 0x")));
}

void TestTerminalPythonConsoleFiles::aFileDuringAFileFollowsIt()
{
    bench->console->executeFile(QStringLiteral("a = input('first')\nprint('end of', a)\n"));
    QVERIFY(bench->waitForQuestion());
    bench->enter(QStringLiteral("one"));
    bench->console->executeFile(QStringLiteral("b = input('second')\nprint('end of', b)\n"));
    QTRY_VERIFY(text().endsWith(QLatin1String("second\n? ")));
    QVERIFY(text().contains(QLatin1String("first\n? one\n")));
    QVERIFY(text().contains(QLatin1String("end of\none\n")));
    QVERIFY(text().contains(QLatin1String("executing file\n")));
    // It can be stopped as any other.
    bench->console->interrupt();
    QVERIFY(bench->waitForPrompt());
    QVERIFY(text().contains(QLatin1String("KeyboardInterrupt")));
    QCOMPARE(bench->display().filter(QRegularExpression(QStringLiteral("^white:> "))),
             (QStringList{QStringLiteral("white:> executing file"), QStringLiteral("white:> ")}));
    QCOMPARE(bench->busyEvents().back(), qint64{0});
    QVERIFY(bench->run(QStringLiteral("1")));
}

void TestTerminalPythonConsoleFiles::aFileDuringAQuestionKeepsTheQuestion()
{
    bench->console->executeFile(QStringLiteral("print('got', input('name'))\n"));
    QVERIFY(bench->waitForQuestion());
    QTest::keyClicks(bench->console, QStringLiteral("half"));
    bench->console->executeFile(QStringLiteral("print('second')\n"));
    QCOMPARE(bench->display().mid(1),
             (QStringList{QStringLiteral("green:name"), QStringLiteral("white:? executing file"),
                          QStringLiteral("white:? ")}));
    QCOMPARE(answerOf(QStringLiteral("Ada")),
             (QStringList{QStringLiteral("green:got"), QStringLiteral("green:Ada"),
                          QStringLiteral("green:second"), QStringLiteral("white:> ")}));
}

// Reset

void TestTerminalPythonConsoleFiles::resetShowsTheBannerAlone()
{
    const QString fresh = text();
    QVERIFY(bench->run(QStringLiteral("print(1)")));
    QTest::keyClicks(bench->console, QStringLiteral("half"));
    bench->console->resetConsole();
    QCOMPARE(text(), fresh);
    QCOMPARE(bench->console->promptEnd, fresh.size());
    QVERIFY(bench->isAtPrompt());
}

void TestTerminalPythonConsoleFiles::resetForgetsNamesAndHistory()
{
    QVERIFY(bench->run(QStringLiteral("x = 1")));
    bench->console->resetConsole();
    QVERIFY(bench->console->history.isEmpty());
    QVERIFY(answerOf(QStringLiteral("x")).constFirst().startsWith(QLatin1String("red:<class 'NameError'>")));
    // What every session begins with is there again.
    QCOMPARE(answerOf(QStringLiteral("sorted(localdict)")).constFirst(),
             QStringLiteral("green:['ConsoleRedirection', 'completer', 'orbClient', 'rlcompleter', 'sys']"));
}

void TestTerminalPythonConsoleFiles::resetClearsTheNamespaceOnce()
{
    QSignalSpy cleared(bench->console, &TerminalPythonConsole::clearEvaluator);
    bench->console->resetConsole();
    QCOMPARE(cleared.size(), 1);
}

// The script waits still, and the user must see that the next line is for it.
void TestTerminalPythonConsoleFiles::resetDuringAQuestionKeepsTheQuestion()
{
    bench->enter(QStringLiteral("print('got', input())"));
    QVERIFY(bench->waitForQuestion());
    bench->console->resetConsole();
    QVERIFY(bench->console->inputMode);
    QVERIFY(text().endsWith(QLatin1String("\n? ")));
    QCOMPARE(
        answerOf(QStringLiteral("Ada")),
        (QStringList{QStringLiteral("green:got"), QStringLiteral("green:Ada"), QStringLiteral("white:> ")}));
}

void TestTerminalPythonConsoleFiles::resetWhileSomethingRunsTakesNoLine()
{
    QSignalSpy handedOver(bench->console, &TerminalPythonConsole::returnPressed);
    bench->console->executeFile(QStringLiteral("a = input()\norbClient.getConnections()\n"
                                               "import time\ntime.sleep(60)\n"));
    QVERIFY(bench->waitForQuestion());
    bench->enter(QStringLiteral("answer"));
    QVERIFY(bench->waitForCalls(1));
    bench->console->resetConsole();
    bench->enter(QStringLiteral("1"));
    QCOMPARE(handedOver.size(), 0);
    bench->console->interrupt();
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->run(QStringLiteral("1")));
    QCOMPARE(handedOver.size(), 1);
}

QTEST_MAIN(TestTerminalPythonConsoleFiles)
#include "tst_terminal_python_console_files.moc"
