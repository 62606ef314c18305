#pragma once

#include "command_terminal/terminal_file_editor.h"
#include "command_terminal/terminal_toolbar.h"
#include "plugin/terminal_plugin_state.h"
#include "python_terminal/terminal_python_console.h"
#include "python_terminal/terminal_widget_python.h"
#include "tests/command_terminal/terminal_fixture.h"
#include "tests/python_terminal/console_display.h"

#include <QAction>
#include <QDeadlineTimer>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <thread>

/// A Python terminal in a window, beside something else that takes the focus, over a recording service. One at a time
/// has an interpreter.
class PythonToolBench : public TerminalFixture
{
public:
    class Tool : public TerminalWidgetPython
    {
    public:
        using TerminalWidgetPython::instance;
        using TerminalWidgetPython::TerminalWidgetPython;
    };

    PythonToolBench()
    {
        auto *column = new QVBoxLayout(&window);
        column->addWidget(tool);
        column->addWidget(elsewhere);
        window.resize(600, 400);
    }

    /// Shows the window, active, with the focus in the console, and waits for the interpreter's start.
    bool start()
    {
        window.show();
        window.activateWindow();
        console->setFocus();
        return QTest::qWaitForWindowActive(&window) && console->hasFocus()
            && waitForText("orbClient module.\n> ");
    }

    template <class Argument>
    void send(KD::EventType type, const Argument &argument)
    {
        KdChildEvent event(type, argument);
        tool->processChildEvent(event);
    }
    void send(KD::EventType type) { tool->childEventOccured(type); }

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

    QAction *action(const char *name) const
    {
        const QList<QAction *> actions = toolbar->actions();
        const auto found = std::find_if(actions.cbegin(), actions.cend(), [&](const QAction *action) {
            return action->text() == QLatin1String(name);
        });
        Q_ASSERT(found != actions.cend());
        return *found;
    }

    /// Which of the two modes the tool bar is in, by its buttons.
    bool toolbarInTerminalMode() const
    {
        return action("Show Terminal")->isChecked() && action("Clear Terminal")->isVisible()
            && !action("Open File")->isVisible();
    }
    bool toolbarInEditorMode() const
    {
        return action("Show Text Editor")->isChecked() && !action("Clear Terminal")->isVisible()
            && action("Open File")->isVisible();
    }

    static constexpr int LongestWait = 10000; // ms, for what usually takes a few

    TerminalPluginState state{7, 8, {}, {}};
    QWidget window;
    Tool *const tool = new Tool(&window, &state, mainData, observer, 3);
    QLineEdit *const elsewhere = new QLineEdit(&window);
    TerminalToolbar *const toolbar = tool->findChild<TerminalToolbar *>();
    TerminalPythonConsole *const console = tool->findChild<TerminalPythonConsole *>();
    TerminalFileEditor *const editor = tool->findChild<TerminalFileEditor *>();
};
