#pragma once

#include "command_terminal/terminal_console_completer.h"
#include "python_terminal/terminal_python_console.h"
#include "tests/command_terminal/terminal_fixture.h"
#include "tests/python_terminal/console_display.h"

#include <QDeadlineTimer>
#include <QFocusEvent>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <thread>

/// A Python console in a window, beside something else that takes the focus, over a recording service. One at a time
/// has an interpreter.
class PythonConsoleBench : public TerminalFixture
{
public:
    /// Opens what a test has to see of a console, and counts what only it sees.
    class Console : public TerminalPythonConsole
    {
    public:
        using TerminalConsole::busy;
        using TerminalConsole::completer;
        using TerminalConsole::history;
        using TerminalConsole::inputMode;
        using TerminalConsole::promptEnd;
        using TerminalPythonConsole::TerminalPythonConsole;

        int paints = 0;
        Qt::FocusReason focusReason = Qt::NoFocusReason; ///< of the last focus that came

    protected:
        void paintEvent(QPaintEvent *event) override
        {
            ++paints;
            TerminalPythonConsole::paintEvent(event);
        }
        void focusInEvent(QFocusEvent *event) override
        {
            focusReason = event->reason();
            TerminalPythonConsole::focusInEvent(event);
        }
    };

    PythonConsoleBench()
    {
        auto *column = new QVBoxLayout(&window);
        column->addWidget(console);
        column->addWidget(elsewhere);
        window.resize(600, 400);
    }

    /// Shows the window, active, with the focus in the console, and waits for the interpreter's start.
    bool start()
    {
        window.show();
        window.activateWindow();
        console->setFocus();
        return QTest::qWaitForWindowActive(&window) && console->hasFocus() && waitForBanner();
    }

    bool waitForBanner()
    {
        const bool started = QTest::qWaitFor(
            [this] { return console->toPlainText().endsWith(QLatin1String("orbClient module.\n> ")); });
        bannerLines = console->document()->blockCount() - 1;
        return started;
    }

    /// Types a line and presses Return.
    void enter(const QString &line)
    {
        // Only keys that have a number of their own can be clicked.
        if (std::all_of(line.cbegin(), line.cend(), [](QChar c) { return c.unicode() < 0x80; }))
            QTest::keyClicks(console, line);
        else
            console->insertPlainText(line);
        QTest::keyClick(console, Qt::Key_Return);
    }

    /// The same, and waits until its statement has ended.
    bool run(const QString &line)
    {
        enter(line);
        return waitForPrompt();
    }

    /// Waits until nothing runs: the console takes a line, and no script asked for it.
    bool waitForPrompt()
    {
        return QTest::qWaitFor([this] { return isAtPrompt(); }, LongestWait);
    }
    bool waitForQuestion()
    {
        return QTest::qWaitFor([this] { return console->isEnabled() && console->inputMode; }, LongestWait);
    }

    bool isAtPrompt() const { return console->isEnabled() && !console->busy && !console->inputMode; }

    /// Without handling any event: waits until a script has called the service this often.
    bool waitForCalls(int count) const
    {
        const QDeadlineTimer deadline(LongestWait);
        while (backend.callCount() < count && !deadline.hasExpired())
            std::this_thread::yield();
        return backend.callCount() >= count;
    }

    /// The display behind the banner, as ConsoleDisplay::linesOf tells it.
    QStringList display() const { return ConsoleDisplay::linesOf(*console).mid(bannerLines); }

    std::vector<qint64> busyEvents() const { return observer.integersOf(KD::BusyChanged); }

    static constexpr int LongestWait = 10000; // ms, for what usually takes a few

    QWidget window;
    Console *const console = new Console(&window, mainData, observer);
    QLineEdit *const elsewhere = new QLineEdit(&window);
    int bannerLines = 0;
};
