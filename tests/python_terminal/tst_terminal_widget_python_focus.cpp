#include "python_terminal/terminal_widget_python.h"

#include "tests/python_terminal/python_tool_bench.h"

#include <QtTest>

/// Which part of the tool has the focus, and with it the keys.
class TestTerminalWidgetPythonFocus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theToolHandsTheFocusOn_data();
    void theToolHandsTheFocusOn();
    void theConsoleHasTheFocusAgain();
    void theEditorShownMeanwhileKeepsTheFocus();
    void theConsoleShownWhileSomethingRunsLeavesTheKeysToTheTool();
    void shortcutsWhileSomethingRuns();

private:
    bool isRunning() const { return bench->console->activity() == TerminalPythonConsole::Activity::Running; }
    /// A statement that runs until it is interrupted, and has begun.
    bool beginLong()
    {
        bench->backend.clearCalls();
        bench->enter(QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)"));
        return bench->waitForCalls(1);
    }
    bool endLong()
    {
        bench->console->interrupt();
        return bench->waitForPrompt();
    }

    std::unique_ptr<PythonToolBench> bench;
};

void TestTerminalWidgetPythonFocus::init()
{
    bench = std::make_unique<PythonToolBench>();
    QVERIFY(bench->start());
    bench->observer.clear();
}

void TestTerminalWidgetPythonFocus::cleanup()
{
    bench.reset();
}

void TestTerminalWidgetPythonFocus::theToolHandsTheFocusOn_data()
{
    QTest::addColumn<bool>("editing");
    QTest::newRow("console") << false;
    QTest::newRow("editor") << true;
}

void TestTerminalWidgetPythonFocus::theToolHandsTheFocusOn()
{
    QFETCH(bool, editing);
    bench->send(editing ? KD::ShowEditor : KD::ShowTerminal);
    bench->elsewhere->setFocus();
    bench->tool->setFocus();
    QCOMPARE(bench->editor->hasFocus(), editing);
    QCOMPARE(bench->console->hasFocus(), !editing);
}

void TestTerminalWidgetPythonFocus::theConsoleHasTheFocusAgain()
{
    QVERIFY(beginLong());
    QTRY_VERIFY(bench->tool->hasFocus());
    QVERIFY(endLong());
    QVERIFY(bench->console->hasFocus());
    QTest::keyClicks(bench->window.focusWidget(), QStringLiteral("next"));
    QVERIFY(bench->text().endsWith(QLatin1String("> next")));
}

void TestTerminalWidgetPythonFocus::theEditorShownMeanwhileKeepsTheFocus()
{
    QVERIFY(beginLong());
    bench->send(KD::ShowEditor);
    QVERIFY(bench->editor->hasFocus());
    QVERIFY(endLong());
    QVERIFY(bench->editor->hasFocus());
    QVERIFY(!bench->console->isVisible());
}

void TestTerminalWidgetPythonFocus::theConsoleShownWhileSomethingRunsLeavesTheKeysToTheTool()
{
    QVERIFY(beginLong());
    bench->send(KD::ShowEditor);
    bench->send(KD::ShowTerminal);
    QTRY_VERIFY(bench->tool->hasFocus());
    bench->pressCtrlC();
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->console->hasFocus());
}

void TestTerminalWidgetPythonFocus::shortcutsWhileSomethingRuns()
{
    QVERIFY(beginLong());
    QTRY_VERIFY(bench->tool->hasFocus());
    QTest::keySequence(bench->window.focusWidget(), bench->action("Show Text Editor")->shortcut());
    QVERIFY(bench->editor->isVisible());
    QTest::keySequence(bench->window.focusWidget(), bench->action("Show Terminal")->shortcut());
    QVERIFY(bench->console->isVisible());
    QVERIFY(isRunning());
    QVERIFY(endLong());
}

QTEST_MAIN(TestTerminalWidgetPythonFocus)
#include "tst_terminal_widget_python_focus.moc"
