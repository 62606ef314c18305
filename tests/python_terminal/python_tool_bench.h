#pragma once

#include "python_terminal/terminal_python_console.h"
#include "python_terminal/terminal_widget_python.h"
#include "tests/python_terminal/console_display.h"
#include "tests/support/terminal_tool_bench.h"

#include <QDeadlineTimer>
#include <QTest>

#include <thread>

/// A Python terminal in a window. One at a time has an interpreter.
class PythonToolBench : public TerminalToolBench<TerminalWidgetPython>
{
public:
    PythonToolBench() { window.resize(600, 400); }

    /// Shows the window, active, with the focus in the console, and waits for the interpreter's start.
    bool start()
    {
        if (!showActive())
            return false;
        console->setFocus();
        return console->hasFocus() && waitForText("orbClient module.\n> ");
    }

    /// Types a line into the console and presses Return.
    void enter(const QString &line)
    {
        QTest::keyClicks(console, line);
        QTest::keyClick(console, Qt::Key_Return);
    }
    bool run(const QString &line)
    {
        enter(line);
        return waitForPrompt();
    }
    /// Executes a text as the editor's file.
    void runFile(const QString &text)
    {
        editor->setPlainText(text);
        send(KD::ExecuteFile);
    }

    /// Presses keys where the focus is in the window.
    void press(int key, Qt::KeyboardModifiers modifiers) const
    {
        QTest::keyClick(window.focusWidget(), static_cast<Qt::Key>(key), modifiers);
    }
    void pressCtrlC() const { press(Qt::Key_C, Qt::ControlModifier); }

    bool waitForPrompt() const
    {
        return QTest::qWaitFor(
            [this] { return console->activity() == TerminalPythonConsole::Activity::Idle; }, LongestWait);
    }
    bool waitForQuestion() const
    {
        return QTest::qWaitFor(
            [this] { return console->activity() == TerminalPythonConsole::Activity::WaitingForInput; },
            LongestWait);
    }
    /// Waits until the display ends with a text.
    bool waitForText(const char *end) const
    {
        return QTest::qWaitFor([&] { return text().endsWith(QLatin1String(end)); }, LongestWait);
    }
    /// Without handling any event: waits until a script has called the service this often.
    bool waitForCalls(int count) const
    {
        const QDeadlineTimer deadline(LongestWait);
        while (backend.callCount() < count && !deadline.hasExpired())
            std::this_thread::yield();
        return backend.callCount() >= count;
    }

    QString text() const { return console->toPlainText(); }
    QStringList display() const { return ConsoleDisplay::linesOf(*console); }

    static constexpr int LongestWait = 10000; // ms, for what usually takes a few

    TerminalPythonConsole *const console = tool->findChild<TerminalPythonConsole *>();
};
