#include "python_terminal/terminal_widget_python.h"
#include "tests/python_terminal/python_tool_bench.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPushButton>
#include <QWindow>
#include <QtTest>

/// Ctrl+C: it stops the statement or the file that runs, drops a statement that is not complete yet, copies where text
/// is selected, and is nothing else.
class TestTerminalWidgetPythonStop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void stops_data();
    void stops();
    void stopsWhileTheEditorIsShown();
    void stopsAtOnce();
    void stopsAWaitingInput_data();
    void stopsAWaitingInput();
    void stopsWhatRunsAfterAnAnswer();
    void theToolHasTheKeysMeanwhile();
    void aClickOnTheDisabledConsoleBringsTheKeysBack();
    void theFocusReturns_data();
    void theFocusReturns();
    void theSessionGoesOn();
    void scriptsCanHandleIt();

    void dropsPendingLines();
    void dropsPendingLinesAndWhatIsTyped();
    void aStatementThatWasDroppedDoesNotGoOn();
    void dropsOnlyOnce();

    void copiesASelection_data();
    void copiesASelection();
    void copiesTheEditorsSelectionWhileSomethingRuns();
    void nothingRuns_data();
    void nothingRuns();
    void fromElsewhereItStopsNothing();
    void aHostsCopyActionDoesNotTakeTheKeys_data();
    void aHostsCopyActionDoesNotTakeTheKeys();
    void fromTheToolbarItStopsAsWell();
    void anInterruptNeverReachesTheNextStatement();
    void anInterruptWithoutAStatementReachesNone();

private:
    bool isRunning() const
    {
        return !bench->console->isEnabled() && bench->tool->cursor().shape() == Qt::BusyCursor;
    }
    bool isIdle() const
    {
        return bench->console->isEnabled() && bench->tool->cursor().shape() == Qt::ArrowCursor
            && bench->text().endsWith(QLatin1String("\n> "));
    }
    int interrupts() const { return bench->text().count(QLatin1String("<class 'KeyboardInterrupt'>")); }
    /// Enters a line, and waits until it has called the service.
    bool begin(const QString &line)
    {
        bench->enter(line);
        return bench->waitForCalls(1);
    }

    std::unique_ptr<PythonToolBench> bench;
};

void TestTerminalWidgetPythonStop::init()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    bench = std::make_unique<PythonToolBench>();
    QVERIFY(bench->start());
    bench->backend.clearCalls();
}

void TestTerminalWidgetPythonStop::cleanup()
{
    bench.reset();
}

// It stops

void TestTerminalWidgetPythonStop::stops_data()
{
    QTest::addColumn<QString>("file");
    const QString begun = QStringLiteral("import time, threading, re, socket\norbClient.getConnections()\n");
    const auto row = [&](const char *name, const char *text) {
        QTest::newRow(name) << begun + QString::fromLatin1(text);
    };
    row("loop", "while True:\n    pass\n");
    row("sleep", "time.sleep(60)\n");
    row("except Exception",
        "while True:\n    try:\n        time.sleep(0.001)\n    except Exception:\n        pass\n");
    row("busy except Exception",
        "while True:\n    try:\n        1 / 0\n    except Exception:\n        pass\n");
    row("flood", "while True:\n    print(1)\n");
    row("flood of errors", "while True:\n    sys.stderr.write('x')\n");
    row("lock", "lock = threading.Lock()\nlock.acquire()\nlock.acquire()\n");
    row("event", "threading.Event().wait()\n");
    row("event with a time", "threading.Event().wait(60)\n");
    row("other thread",
        "t = threading.Thread(target=lambda: [time.sleep(0.001) for i in range(10000)], daemon=True)\n"
        "t.start()\ntime.sleep(60)\n");
    row("socket", "s = socket.socket()\ns.bind(('127.0.0.1', 0))\ns.listen()\ns.accept()\n");
    row("calls of the client", "while True:\n    orbClient.getConnections()\n");
    row("function", "def f():\n    while True:\n        g()\ndef g():\n    time.sleep(0.001)\nf()\n");
}

void TestTerminalWidgetPythonStop::stops()
{
    QFETCH(QString, file);
    bench->runFile(file);
    QVERIFY(bench->waitForCalls(1));
    QVERIFY(isRunning());
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QVERIFY(isIdle());
    QCOMPARE(interrupts(), 1);
    const QStringList lines = bench->display();
    QVERIFY(
        lines.at(lines.size() - 2).startsWith(QLatin1String("red:<class 'KeyboardInterrupt'>  <traceback")));
    QVERIFY(bench->console->hasFocus());
}

void TestTerminalWidgetPythonStop::stopsWhileTheEditorIsShown()
{
    QVERIFY(begin(QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)")));
    bench->send(KD::ShowEditor);
    QVERIFY(bench->editor->hasFocus());
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(interrupts(), 1);
    QVERIFY(bench->editor->hasFocus());
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
}

// Before the worker has even begun with it.
void TestTerminalWidgetPythonStop::stopsAtOnce()
{
    for (int i = 1; i <= 50; ++i) {
        bench->enter(QStringLiteral("while True: pass"));
        if (i % 2 == 0)
            QTRY_VERIFY(bench->tool->hasFocus());
        bench->console->interrupt();
        QVERIFY(bench->waitForPrompt());
        QCOMPARE(interrupts(), i);
    }
}

void TestTerminalWidgetPythonStop::stopsAWaitingInput_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("typed");
    QTest::newRow("input") << QStringLiteral("a = input()") << QString();
    QTest::newRow("input with half an answer") << QStringLiteral("a = input()") << QStringLiteral("half");
    QTest::newRow("readline") << QStringLiteral("a = sys.stdin.readline()") << QString();
    QTest::newRow("every line") << QStringLiteral("for line in sys.stdin: pass") << QString();
}

void TestTerminalWidgetPythonStop::stopsAWaitingInput()
{
    QFETCH(QString, line);
    QFETCH(QString, typed);
    bench->enter(line);
    QVERIFY(bench->waitForQuestion());
    QTest::keyClicks(bench->console, typed);
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QVERIFY(isIdle());
    const QStringList lines = bench->display();
    QCOMPARE(lines.at(lines.size() - 3), QStringLiteral("white:? ") + typed);
    QVERIFY(lines.at(lines.size() - 2).startsWith(QLatin1String("red:<class 'KeyboardInterrupt'>")));
    QCOMPARE(interrupts(), 1);
    QVERIFY(bench->console->hasFocus());
    // What was typed there answers no later question.
    bench->enter(QStringLiteral("b = input()"));
    QVERIFY(bench->waitForQuestion());
    QVERIFY(bench->run(QStringLiteral("new")));
    QVERIFY(bench->run(QStringLiteral("b")));
    QVERIFY(bench->text().endsWith(QLatin1String("'new'\n> ")));
}

void TestTerminalWidgetPythonStop::stopsWhatRunsAfterAnAnswer()
{
    bench->enter(QStringLiteral("import time; input(); orbClient.getConnections(); time.sleep(60)"));
    QVERIFY(bench->waitForQuestion());
    bench->enter(QStringLiteral("answer"));
    QVERIFY(bench->waitForCalls(1));
    QVERIFY(bench->console->isEnabled()); // as it was for the answer
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(interrupts(), 1);
}

void TestTerminalWidgetPythonStop::theToolHasTheKeysMeanwhile()
{
    QVERIFY(begin(QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)")));
    QTRY_VERIFY(bench->tool->hasFocus());
    // What is typed meanwhile goes nowhere.
    QTest::keyClicks(bench->tool, QStringLiteral("typed"));
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QVERIFY(isIdle());
}

void TestTerminalWidgetPythonStop::aClickOnTheDisabledConsoleBringsTheKeysBack()
{
    QVERIFY(begin(QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)")));
    bench->elsewhere->setFocus();
    // Through the window, as a real click comes: a disabled widget lets it through to the one below.
    const QPoint place = bench->console->mapTo(&bench->window, bench->console->rect().center());
    QTest::mouseClick(bench->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    QVERIFY(bench->tool->hasFocus());
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(interrupts(), 1);
}

void TestTerminalWidgetPythonStop::theFocusReturns_data()
{
    QTest::addColumn<bool>("elsewhere");
    QTest::newRow("console") << false;
    QTest::newRow("elsewhere") << true;
}

void TestTerminalWidgetPythonStop::theFocusReturns()
{
    QFETCH(bool, elsewhere);
    if (elsewhere)
        bench->elsewhere->setFocus();
    QVERIFY(begin(QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)")));
    bench->console->interrupt();
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(bench->console->hasFocus(), !elsewhere);
    QCOMPARE(bench->elsewhere->hasFocus(), elsewhere);
}

void TestTerminalWidgetPythonStop::theSessionGoesOn()
{
    QVERIFY(bench->run(QStringLiteral("x = 1")));
    bench->runFile(QStringLiteral("x = 2\norbClient.getConnections()\nwhile True: pass\n"));
    QVERIFY(bench->waitForCalls(1));
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->run(QStringLiteral("print('x is', x)")));
    QVERIFY(bench->text().endsWith(QLatin1String("x is\n2\n> ")));
    bench->runFile(QStringLiteral("print('the file')\n"));
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->text().endsWith(QLatin1String("executing file\nthe file\n> ")));
}

void TestTerminalWidgetPythonStop::scriptsCanHandleIt()
{
    bench->runFile(QStringLiteral("import time\ntry:\n    orbClient.getConnections()\n    time.sleep(60)\n"
                                  "except KeyboardInterrupt:\n    print('ramping down')\n"
                                  "print('done')\n"));
    QVERIFY(bench->waitForCalls(1));
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->text().endsWith(QLatin1String("executing file\nramping down\ndone\n> ")));
    QCOMPARE(interrupts(), 0);
}

// It drops

void TestTerminalWidgetPythonStop::dropsPendingLines()
{
    QVERIFY(bench->run(QStringLiteral("x = (")));
    QVERIFY(bench->text().endsWith(QLatin1String("\n. ")));
    bench->pressCtrlC();
    QVERIFY(bench->text().endsWith(QLatin1String("> x = (\n. \n> ")));
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->run(QStringLiteral("print('fresh')")));
    QVERIFY(bench->text().endsWith(QLatin1String("fresh\n> ")));
    QCOMPARE(interrupts(), 0);
}

void TestTerminalWidgetPythonStop::dropsPendingLinesAndWhatIsTyped()
{
    QVERIFY(bench->run(QStringLiteral("x = (")));
    QTest::keyClicks(bench->console, QStringLiteral("half"));
    QTest::keyClick(bench->console, Qt::Key_Left);
    bench->pressCtrlC();
    QVERIFY(bench->text().endsWith(QLatin1String(". half\n> ")));
    QVERIFY(bench->run(QStringLiteral("print('fresh')")));
    QVERIFY(bench->text().endsWith(QLatin1String("> print('fresh')\nfresh\n> ")));
}

void TestTerminalWidgetPythonStop::aStatementThatWasDroppedDoesNotGoOn()
{
    QVERIFY(bench->run(QStringLiteral("for i in range(3):")));
    bench->pressCtrlC();
    QVERIFY(bench->run(QStringLiteral("    print('of the loop')")));
    QVERIFY(!bench->text().contains(QLatin1String("\nof the loop")));
    QVERIFY(bench->text().contains(QLatin1String("<class 'IndentationError'>")));
}

void TestTerminalWidgetPythonStop::dropsOnlyOnce()
{
    QVERIFY(bench->run(QStringLiteral("x = (")));
    bench->pressCtrlC();
    const QString dropped = bench->text();
    bench->pressCtrlC();
    QCOMPARE(bench->text(), dropped);
}

// It copies

void TestTerminalWidgetPythonStop::copiesASelection_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("prompt") << QStringLiteral("print(1)");
    QTest::newRow("continuation") << QStringLiteral("x = (");
    QTest::newRow("question") << QStringLiteral("input()");
}

void TestTerminalWidgetPythonStop::copiesASelection()
{
    QFETCH(QString, line);
    bench->enter(line);
    QTRY_VERIFY(bench->console->isEnabled());
    QTest::keyClicks(bench->console, QStringLiteral("abc"));
    for (int i = 0; i < 2; ++i)
        QTest::keyClick(bench->console, Qt::Key_Left, Qt::ShiftModifier);
    const QString before = bench->text();
    bench->pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("bc"));
    QCOMPARE(bench->text(), before);
    QCOMPARE(interrupts(), 0);
}

void TestTerminalWidgetPythonStop::copiesTheEditorsSelectionWhileSomethingRuns()
{
    QVERIFY(begin(QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)")));
    bench->send(KD::ShowEditor);
    bench->editor->setPlainText(QStringLiteral("the text"));
    bench->editor->selectAll();
    bench->pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("the text"));
    QVERIFY(isRunning());
    bench->console->interrupt();
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(interrupts(), 1);
}

// It is nothing else

void TestTerminalWidgetPythonStop::nothingRuns_data()
{
    QTest::addColumn<bool>("editing");
    QTest::newRow("console") << false;
    QTest::newRow("editor") << true;
}

void TestTerminalWidgetPythonStop::nothingRuns()
{
    QFETCH(bool, editing);
    QVERIFY(bench->run(QStringLiteral("1")));
    bench->send(editing ? KD::ShowEditor : KD::ShowTerminal);
    QTest::keyClicks(editing ? static_cast<QWidget *>(bench->editor) : bench->console, QStringLiteral("abc"));
    const QString before = bench->text();
    bench->observer.clear();
    bench->pressCtrlC();
    QCOMPARE(bench->text(), before);
    QCOMPARE(bench->editor->toPlainText(), editing ? QStringLiteral("abc") : QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
    QVERIFY(bench->observer.events().empty());
    bench->send(KD::ShowTerminal);
    QVERIFY(bench->run(QString()));
    QCOMPARE(interrupts(), 0);
}

void TestTerminalWidgetPythonStop::fromElsewhereItStopsNothing()
{
    // A text field would claim the keys for itself.
    QPushButton outside(&bench->window);
    outside.show();
    QVERIFY(begin(QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)")));
    outside.setFocus();
    QVERIFY(outside.hasFocus());
    bench->pressCtrlC();
    // An interrupt would be noticed by the time that another one is.
    QVERIFY(isRunning());
    bench->console->interrupt();
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(interrupts(), 1);
}

void TestTerminalWidgetPythonStop::aHostsCopyActionDoesNotTakeTheKeys_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("running") << QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)");
    QTest::newRow("question") << QStringLiteral("orbClient.getConnections(); input()");
}

void TestTerminalWidgetPythonStop::aHostsCopyActionDoesNotTakeTheKeys()
{
    QFETCH(QString, line);
    QAction hostCopy;
    hostCopy.setShortcut(QKeySequence::Copy);
    bench->window.addAction(&hostCopy);
    QSignalSpy triggered(&hostCopy, &QAction::triggered);
    QVERIFY(begin(line));
    QTRY_VERIFY(bench->tool->hasFocus() || bench->waitForQuestion());
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(interrupts(), 1);
    QCOMPARE(triggered.size(), 0);
    bench->elsewhere->setFocus();
    QPushButton outside(&bench->window);
    outside.show();
    outside.setFocus();
    bench->pressCtrlC();
    QCOMPARE(triggered.size(), 1);
}

void TestTerminalWidgetPythonStop::fromTheToolbarItStopsAsWell()
{
    QVERIFY(begin(QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)")));
    QTRY_VERIFY(bench->tool->hasFocus());
    bench->toolbar->widgetForAction(bench->action("Show Text Editor"))->setFocus();
    QVERIFY(!bench->tool->hasFocus());
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(interrupts(), 1);
}

void TestTerminalWidgetPythonStop::anInterruptNeverReachesTheNextStatement()
{
    // One interrupt after the other until the statement has ended, so that the last ones come as it ends.
    constexpr int Statements = 100;
    QString statement = QStringLiteral("for i in range(1000000): pass");
    for (int i = 0; i < Statements; ++i) {
        bench->console->executeCommand(statement);
        const QDeadlineTimer deadline(PythonToolBench::LongestWait);
        while (!bench->console->isEnabled() && !deadline.hasExpired()) {
            bench->console->interrupt();
            // Nobody presses faster.
            const QDeadlineTimer next(std::chrono::microseconds(100), Qt::PreciseTimer);
            while (!next.hasExpired())
                QCoreApplication::sendPostedEvents(bench->console);
        }
        const int before = interrupts();
        QCOMPARE(before, i + 1);
        for (const QString &line :
             {QStringLiteral("for i in range(200): x = %1"), QStringLiteral("y = %1")}) {
            QString next = line.arg(i);
            bench->console->executeCommand(next);
            QVERIFY(bench->waitForPrompt());
        }
        QCOMPARE(interrupts(), before);
    }
    QVERIFY(bench->run(QStringLiteral("print(x, y)")));
    QVERIFY2(bench->text().endsWith(QStringLiteral("\n%1\n%1\n> ").arg(Statements - 1)),
             qPrintable(bench->text().right(300)));
}

void TestTerminalWidgetPythonStop::anInterruptWithoutAStatementReachesNone()
{
    for (int i = 0; i < 20; ++i) {
        bench->pressCtrlC();
        QVERIFY(bench->run(QStringLiteral("for i in range(100): pass")));
    }
    QCOMPARE(interrupts(), 0);
}

QTEST_MAIN(TestTerminalWidgetPythonStop)
#include "tst_terminal_widget_python_stop.moc"
