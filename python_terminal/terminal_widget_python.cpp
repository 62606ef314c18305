#include "python_terminal/terminal_widget_python.h"

#include "command_terminal/terminal_file_editor.h"
#include "command_terminal/terminal_toolbar.h"
#include "hostsdk/kd_child_event.h"
#include "plugin/terminal_plugin_state.h"
#include "python_terminal/terminal_python_console.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QPlainTextEdit>

namespace
{

constexpr int StopKeys = int(Qt::CTRL) | int(Qt::Key_C);

} // namespace

TerminalWidgetPython::TerminalWidgetPython(QWidget *parent, TerminalPluginState *state, KdMainData &hostData,
                                           KdObserver &eventHost, unsigned int toolInstance)
    : KdPluginWidget(parent, hostData, eventHost, state->pythonWidgetClassId, toolInstance)
{
    setObjectName(QStringLiteral("pythonTerminal"));
    toolbar = new TerminalToolbar(this, hostData, *this);
    toolbar->setObjectName(QStringLiteral("toolbar"));
    console = new TerminalPythonConsole(this, hostData, *this);
    console->setObjectName(QStringLiteral("console"));
    editor = new TerminalFileEditor(this, state, hostData, *this);
    editor->setObjectName(QStringLiteral("editor"));
    editor->setPythonMode(true);

    auto *column = new QVBoxLayout;
    column->addWidget(console);
    column->addWidget(editor);
    auto *row = new QHBoxLayout(this);
    row->addWidget(toolbar);
    row->addLayout(column);

    editor->hide();
    console->show();
    toolbar->setTerminalMode();
    setAcceptDrops(true);
    // A click on the console while it is disabled still brings the focus, and with it Ctrl+C, back to the tool.
    setFocusPolicy(Qt::ClickFocus);

    console->installEventFilter(this);
    editor->installEventFilter(this);
    installEventFilter(this);
}

TerminalWidgetPython::~TerminalWidgetPython() = default;

QStringList TerminalWidgetPython::menuPath()
{
    return {tr("Window"), tr("Tools"), tr("Python Terminal")};
}

void TerminalWidgetPython::processChildEvent(KdChildEvent &event)
{
    switch (event.type) {
    case KD::ShowTerminal:
        showConsole();
        break;
    case KD::ShowEditor:
        showEditor();
        break;
    case KD::OpenFile:
    case KD::SaveFile:
        editor->handleEvent(event);
        break;
    case KD::ExecuteFile:
        executeFile();
        break;
    case KD::ClearTerminal:
        if (console)
            console->resetConsole();
        break;
    case KD::Request:
        passRequest(event);
        break;
    case KD::ControllerChosen:
        break; // a script names its connection itself
    case KD::BusyChanged:
        setBusy(event.getIntArgument(0) != 0);
        break;
    case KD::ModifiedChanged:
        toolbar->setSaveEnabled(event.getIntArgument(0) != 0);
        break;
    default:
        host.processChildEvent(event);
        break;
    }
}

void TerminalWidgetPython::showConsole()
{
    editor->hide();
    console->show();
    toolbar->setTerminalMode();
    // A console that is disabled takes no focus, which would go from the hidden editor to whatever comes next.
    if (busy)
        setFocus(Qt::OtherFocusReason);
    else
        console->setFocus(Qt::OtherFocusReason);
}

void TerminalWidgetPython::showEditor()
{
    editor->show();
    console->hide();
    toolbar->setEditorMode();
    editor->setFocus(Qt::OtherFocusReason);
}

void TerminalWidgetPython::executeFile()
{
    const QString text = editor->wholeText();
    showConsole();
    console->executeFile(text);
}

void TerminalWidgetPython::passRequest(KdChildEvent &event)
{
    // The console has no use for a raw request.
    if (!console->isVisible() && editor->isVisible())
        editor->handleEvent(event);
}

void TerminalWidgetPython::setBusy(bool isBusy)
{
    busy = isBusy;
    setCursor(isBusy ? Qt::BusyCursor : Qt::ArrowCursor);
    // The console is about to be disabled: the tool keeps the keys, Ctrl+C among them.
    if (isBusy && console->hasFocus())
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (busy && !console->isEnabled() && console->isVisibleTo(this))
                    setFocus(Qt::OtherFocusReason);
            },
            Qt::QueuedConnection);
}

void TerminalWidgetPython::focusInEvent(QFocusEvent *event)
{
    KdPluginWidget::focusInEvent(event);
    if (busy)
        return;
    if (console->isVisibleTo(this))
        console->setFocus(Qt::OtherFocusReason);
    else
        editor->setFocus(Qt::OtherFocusReason);
}

// Ctrl+C. Claimed as a key and no shortcut of its own: next to a host's action with the same keys neither would be
// triggered. What has the focus in the tool hands the keys on to the tool unless it is an editor.

bool TerminalWidgetPython::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress)
        return KdPluginWidget::eventFilter(watched, event);
    const auto *keyEvent = static_cast<QKeyEvent *>(event);
    if ((int(keyEvent->modifiers()) | keyEvent->key()) != StopKeys)
        return KdPluginWidget::eventFilter(watched, event);
    event->accept();
    if (event->type() == QEvent::KeyPress)
        stopOrCopy();
    return true;
}

void TerminalWidgetPython::stopOrCopy()
{
    auto *text = qobject_cast<QPlainTextEdit *>(window()->focusWidget());
    if (text && text->textCursor().hasSelection())
        text->copy();
    else
        console->interrupt();
}

// The host

void TerminalWidgetPython::parentEventOccured(KdParentEvent &event)
{
    if (console)
        console->parentEventOccured(event);
}
