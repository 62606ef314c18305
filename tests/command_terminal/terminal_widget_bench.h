#pragma once

#include "command_terminal/terminal_command_generation.h"
#include "command_terminal/terminal_file_editor.h"
#include "command_terminal/terminal_orb_client_console.h"
#include "command_terminal/terminal_toolbar.h"
#include "command_terminal/terminal_widget.h"
#include "plugin/terminal_plugin_state.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QAction>
#include <QCoreApplication>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

/// A command terminal in a window, beside something else that takes the focus, over a recording service with one
/// controller.
class TerminalWidgetBench : public TerminalFixture
{
public:
    class Tool : public TerminalWidget
    {
    public:
        using TerminalWidget::dragEnterEvent;
        using TerminalWidget::dropEvent;
        using TerminalWidget::instance;
        using TerminalWidget::TerminalWidget;
    };

    TerminalWidgetBench()
    {
        // A new subscriber is told of the structure that is there; let that pass with no controllers.
        settle();
        backend.setControllers({{controller(), QStringLiteral("The controller")}});
        backend.clearCalls();
        auto *column = new QVBoxLayout(&window);
        column->addWidget(tool);
        column->addWidget(elsewhere);
        send(KD::ControllerChosen, controller());
        observer.clear();
    }

    static QString controller() { return QStringLiteral("Main"); }

    template <class Argument>
    void send(KD::EventType type, const Argument &argument)
    {
        KdChildEvent event(type, argument);
        tool->processChildEvent(event);
    }
    void send(KD::EventType type) { tool->childEventOccured(type); }

    bool showActive()
    {
        window.show();
        window.activateWindow();
        return QTest::qWaitForWindowActive(&window);
    }

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

    QAction *action(const char *text) const
    {
        const QList<QAction *> actions = toolbar->actions();
        const auto found = std::find_if(actions.cbegin(), actions.cend(), [&](const QAction *action) {
            return action->text() == QLatin1String(text);
        });
        Q_ASSERT(found != actions.cend());
        return *found;
    }
    QLineEdit *field(const char *name) const { return panel->findChild<QLineEdit *>(QLatin1String(name)); }

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

    TerminalPluginState state{7, 8, {}, {}};
    QWidget window;
    Tool *const tool = new Tool(&window, &state, mainData, observer, 3);
    QLineEdit *const elsewhere = new QLineEdit(&window);
    TerminalToolbar *const toolbar = tool->findChild<TerminalToolbar *>();
    TerminalOrbClientConsole *const console = tool->findChild<TerminalOrbClientConsole *>();
    TerminalFileEditor *const editor = tool->findChild<TerminalFileEditor *>();
    TerminalCommandGeneration *const panel = tool->findChild<TerminalCommandGeneration *>();
};
