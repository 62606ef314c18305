#pragma once

#include "command_terminal/terminal_file_editor.h"
#include "command_terminal/terminal_toolbar.h"
#include "hostsdk/kd_child_event.h"
#include "plugin/terminal_plugin_state.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QAction>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>

#include <algorithm>

/// One of the terminals in a window, above something else that takes the focus, over a recording service. GUI thread
/// only.
template <class TerminalClass>
class TerminalToolBench : public TerminalFixture
{
public:
    class Tool : public TerminalClass
    {
    public:
        using TerminalClass::dragEnterEvent;
        using TerminalClass::dropEvent;
        using TerminalClass::instance;
        using TerminalClass::TerminalClass;
    };

    TerminalToolBench()
    {
        auto *column = new QVBoxLayout(&window);
        column->addWidget(tool);
        column->addWidget(elsewhere);
    }

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

    QAction *action(const char *text) const
    {
        const QList<QAction *> actions = toolbar->actions();
        const auto found = std::find_if(actions.cbegin(), actions.cend(), [&](const QAction *action) {
            return action->text() == QLatin1String(text);
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

    TerminalPluginState state{7, 8, {}, {}};
    QWidget window;
    Tool *const tool = new Tool(&window, &state, mainData, observer, 3);
    QLineEdit *const elsewhere = new QLineEdit(&window);
    TerminalToolbar *const toolbar = tool->template findChild<TerminalToolbar *>();
    TerminalFileEditor *const editor = tool->template findChild<TerminalFileEditor *>();
};
