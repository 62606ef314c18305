#pragma once

#include "command_terminal/terminal_orb_client_console.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QAbstractEventDispatcher>
#include <QLineEdit>
#include <QTest>
#include <QTextBlock>
#include <QTimerEvent>
#include <QVBoxLayout>

/// A raw console in a tool of its own, beside something else that takes the focus, over a recording service.
class ConsoleBench : public TerminalFixture
{
public:
    /// Opens what a test has to see of a console.
    class Console : public TerminalOrbClientConsole
    {
    public:
        using TerminalConsole::busy;
        using TerminalConsole::history;
        using TerminalConsole::promptEnd;
        using TerminalConsole::timerId;
        using TerminalOrbClientConsole::TerminalOrbClientConsole;

        bool isWaiting()
        {
            DlNotificationQuery query;
            return wantsNotification(query);
        }
    };

    static QString controller() { return QStringLiteral("Main"); }
    static QString failure(const char *kind = "false") { return trigger(kind); }
    static QString success() { return trigger("true"); }
    static QString trigger(const char *kind)
    {
        return QStringLiteral(R"([{"trigger":"%1"}])").arg(QLatin1String(kind));
    }

    explicit ConsoleBench(bool withController = true)
    {
        backend.setControllers({{controller(), QStringLiteral("The controller")}});
        auto *row = new QVBoxLayout(&window);
        row->addWidget(tool);
        row->addWidget(elsewhere);
        (new QVBoxLayout(tool))->addWidget(console);
        if (withController)
            choose(controller());
    }

    void choose(const QString &name)
    {
        KdChildEvent event(KD::ControllerChosen, name);
        console->handleEvent(event);
    }

    /// A request as the command builder sends it.
    void build(const QString &request)
    {
        KdChildEvent event(KD::Request, request);
        console->handleEvent(event);
    }

    /// Types a line and presses Return.
    void enter(const QString &line)
    {
        QTest::keyClicks(console, line);
        QTest::keyClick(console, Qt::Key_Return);
    }

    /// The service says something, and the console hears it.
    void say(const QString &message)
    {
        backend.sendRawMessage(controller(), message);
        QCoreApplication::processEvents();
    }

    /// Shows the window, active, with the focus in the console.
    bool showActive()
    {
        window.show();
        window.activateWindow();
        console->setFocus();
        return QTest::qWaitForWindowActive(&window) && console->hasFocus();
    }

    /// The display line by line, each stretch of one colour as "colour:text".
    QStringList display() const
    {
        QStringList lines;
        for (QTextBlock block = console->document()->begin(); block.isValid(); block = block.next())
            lines.append(coloured(block));
        return lines;
    }

    std::vector<qint64> busyEvents() const { return observer.integersOf(KD::BusyChanged); }

    /// The timers that the console runs.
    QList<QAbstractEventDispatcher::TimerInfo> timers() const
    {
        return QAbstractEventDispatcher::instance()->registeredTimers(console);
    }

    /// Lets the time of the outstanding wait run out now; false when none is outstanding.
    bool runOut()
    {
        const auto running = timers();
        if (running.size() != 1)
            return false;
        QTimerEvent event(running.constFirst().timerId);
        QCoreApplication::sendEvent(console, &event);
        return true;
    }

    QWidget window;
    QWidget *const tool = new QWidget(&window);
    QLineEdit *const elsewhere = new QLineEdit(&window);
    Console *const console = new Console(tool, mainData, observer);

private:
    static QString coloured(const QTextBlock &block)
    {
        QString line;
        QString last;
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QString colour = nameOf(it.fragment().charFormat().foreground().color());
            if (colour != last)
                line += (last.isEmpty() ? QString() : QStringLiteral("|")) + colour + QLatin1Char(':');
            line += it.fragment().text();
            last = colour;
        }
        return line;
    }

    static QString nameOf(const QColor &colour)
    {
        if (colour == QColor(Qt::white))
            return QStringLiteral("white");
        if (colour == QColor(Qt::red))
            return QStringLiteral("red");
        if (colour == QColor(Qt::green))
            return QStringLiteral("green");
        return colour.name();
    }
};
