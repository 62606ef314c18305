#include "python_terminal/terminal_widget_python.h"

#include "command_terminal/terminal_file_editor.h"
#include "plugin/terminal_plugin_state.h"
#include "python_terminal/terminal_python_console.h"

TerminalWidgetPython::TerminalWidgetPython(QWidget *parent, TerminalPluginState *state, KdMainData &hostData,
                                           KdObserver &eventHost, unsigned int toolInstance)
    : TerminalTool(parent, hostData, eventHost, state->pythonWidgetClassId, toolInstance),
      console(new TerminalPythonConsole(this, hostData, *this))
{
    setObjectName(QStringLiteral("pythonTerminal"));
    addConsoleAndEditor(*console, state);
    editor->setPythonMode(true);
}

TerminalWidgetPython::~TerminalWidgetPython() = default;

QStringList TerminalWidgetPython::menuPath()
{
    return {tr("Window"), tr("Tools"), tr("Python Terminal")};
}

// A request that somebody else puts together, and the controller for it, mean nothing to this console: a script names
// its connection itself. So consoleEvent stays what it is.

void TerminalWidgetPython::clearConsole()
{
    console->resetConsole();
}

void TerminalWidgetPython::executeText(const QString &text)
{
    console->executeFile(text);
}

void TerminalWidgetPython::busyChanged(bool nowBusy)
{
    // The console is about to be disabled: the tool keeps the keys, Ctrl+C among them.
    if (nowBusy && console->hasFocus())
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (isBusy() && !console->isEnabled() && console->isVisibleTo(this))
                    setFocus(Qt::OtherFocusReason);
            },
            Qt::QueuedConnection);
}

bool TerminalWidgetPython::canStop() const
{
    return true; // with nothing running the keys drop a statement that is not complete yet
}

void TerminalWidgetPython::stop()
{
    console->interrupt();
}

// The host

void TerminalWidgetPython::parentEventOccured(KdParentEvent &event)
{
    if (console)
        console->parentEventOccured(event);
}
