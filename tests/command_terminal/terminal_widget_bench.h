#pragma once

#include "command_terminal/terminal_command_generation.h"
#include "command_terminal/terminal_orb_client_console.h"
#include "command_terminal/terminal_widget.h"
#include "tests/support/terminal_tool_bench.h"

#include <QCoreApplication>
#include <QLineEdit>

#include <memory>

/// A command terminal over a service with one controller.
class TerminalWidgetBench : public TerminalToolBench<TerminalWidget>
{
public:
    TerminalWidgetBench()
    {
        // A new subscriber is told of the structure that is there; let that pass with no controllers.
        settle();
        backend.setControllers({{controller(), QStringLiteral("The controller")}});
        backend.clearCalls();
        send(KD::ControllerChosen, controller());
        observer.clear();
    }

    static QString controller() { return QStringLiteral("Main"); }

    /// The service says something, and the console hears it.
    void say(const QString &message)
    {
        backend.sendRawMessage(controller(), message);
        settle();
    }

    /// Delivers what is posted, and what that posts in turn: a notification, then the refresh that it leads to.
    static void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents();
    }

    /// A request that nobody answers yet.
    void beginWaiting() { send(KD::Request, QStringLiteral("request")); }
    void endWaiting() { say(QStringLiteral(R"([{"trigger":"false"}])")); }

    QLineEdit *field(const char *name) const { return panel->findChild<QLineEdit *>(QLatin1String(name)); }

    TerminalOrbClientConsole *const console = tool->findChild<TerminalOrbClientConsole *>();
    TerminalCommandGeneration *const panel = tool->findChild<TerminalCommandGeneration *>();
};
