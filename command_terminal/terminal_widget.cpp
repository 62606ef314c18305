#include "command_terminal/terminal_widget.h"

#include "command_terminal/refresh_limiter.h"
#include "command_terminal/terminal_command_generation.h"
#include "command_terminal/terminal_file_editor.h"
#include "command_terminal/terminal_orb_client_console.h"
#include "command_terminal/terminal_toolbar.h"
#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_parent_event.h"
#include "hostsdk/kd_plugin_common.h"
#include "plugin/terminal_plugin_state.h"

#include <QBoxLayout>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QShortcut>

namespace
{

constexpr int StopKeys = int(Qt::CTRL) | int(Qt::Key_C);

} // namespace

TerminalWidget::TerminalWidget(QWidget *parent, TerminalPluginState *state, KdMainData &hostData,
                               KdObserver &eventHost, unsigned int toolInstance)
    : KdPluginWidget(parent, hostData, eventHost, state->terminalWidgetClassId, toolInstance),
      pluginState(state)
{
    setObjectName(QStringLiteral("commandTerminal"));
    toolbar = new TerminalToolbar(this, hostData, *this);
    toolbar->setObjectName(QStringLiteral("toolbar"));
    console = new TerminalOrbClientConsole(this, hostData, *this);
    console->setObjectName(QStringLiteral("console"));
    editor = new TerminalFileEditor(this, pluginState, hostData, *this);
    editor->setObjectName(QStringLiteral("editor"));
    commandPanel = new TerminalCommandGeneration(this, hostData, *this);
    commandPanel->setObjectName(QStringLiteral("commandPanel"));

    auto *column = new QVBoxLayout;
    column->addWidget(commandPanel);
    column->addWidget(console);
    column->addWidget(editor);
    auto *row = new QHBoxLayout(this);
    row->addWidget(toolbar);
    row->addLayout(column);

    editor->hide();
    console->show();
    toolbar->setTerminalMode();
    setAcceptDrops(true);
    // A click on the console while it waits, disabled, still brings the focus, and with it Ctrl+C, back to the tool.
    setFocusPolicy(Qt::ClickFocus);

    stopShortcut = new QShortcut(QKeySequence(StopKeys), this);
    stopShortcut->setContext(Qt::WidgetWithChildrenShortcut);
    stopShortcut->setEnabled(false);
    connect(stopShortcut, &QShortcut::activated, this, &TerminalWidget::stopOrCopy);
    connect(console, &TerminalOrbClientConsole::executionChanged, stopShortcut, &QShortcut::setEnabled);
    auto *refreshLimiter = new command_terminal::RefreshLimiter(this);
    connect(console, &TerminalOrbClientConsole::fileLineTaken, refreshLimiter,
            &command_terminal::RefreshLimiter::holdBack);
    connect(console, &TerminalOrbClientConsole::fileRunningChanged, refreshLimiter,
            [refreshLimiter](bool running) {
                if (!running)
                    refreshLimiter->release();
            });
    console->installEventFilter(this);
    editor->installEventFilter(this);
    const QList<QLineEdit *> fields = commandPanel->findChildren<QLineEdit *>();
    for (QLineEdit *field : fields)
        field->installEventFilter(this);
}

TerminalWidget::~TerminalWidget() = default;

QStringList TerminalWidget::menuPath()
{
    return {tr("Window"), tr("Tools"), tr("Terminal")};
}

void TerminalWidget::processChildEvent(KdChildEvent &event)
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
            console->clearConsole(QString());
        break;
    case KD::Request:
        passRequest(event);
        break;
    case KD::ControllerChosen:
        console->handleEvent(event);
        break;
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

void TerminalWidget::showConsole()
{
    editor->hide();
    console->show();
    toolbar->setTerminalMode();
    // A console that waits takes no focus, which would go from the hidden editor to whatever comes next in the window.
    if (waiting)
        setFocus(Qt::OtherFocusReason);
    else
        console->setFocus(Qt::OtherFocusReason);
}

void TerminalWidget::showEditor()
{
    editor->show();
    console->hide();
    toolbar->setEditorMode();
    editor->setFocus(Qt::OtherFocusReason);
}

void TerminalWidget::executeFile()
{
    const QString text = editor->wholeText();
    showConsole();
    console->runCommandFile(text);
}

void TerminalWidget::passRequest(KdChildEvent &event)
{
    if (console->isVisible())
        console->handleEvent(event);
    else if (editor->isVisible())
        editor->handleEvent(event);
}

// The focus: while the console waits it is disabled, and so is the form. The tool itself then holds the focus that
// one of them had, so that it neither wanders off to another tool nor is lost.

void TerminalWidget::setBusy(bool busy)
{
    waiting = busy;
    if (busy)
        takePanelFocus();
    commandPanel->setEnabled(!busy);
    setCursor(busy ? Qt::BusyCursor : Qt::ArrowCursor);
    if (!busy)
        returnPanelFocus();
}

void TerminalWidget::takePanelFocus()
{
    QWidget *focused = window()->focusWidget();
    if (!focused || !commandPanel->isAncestorOf(focused))
        return;
    setFocus(Qt::OtherFocusReason);
    panelFocus = focused;
}

void TerminalWidget::returnPanelFocus()
{
    if (panelFocus && window()->focusWidget() == this)
        panelFocus->setFocus(Qt::OtherFocusReason);
    panelFocus.clear();
}

void TerminalWidget::focusInEvent(QFocusEvent *event)
{
    KdPluginWidget::focusInEvent(event);
    if (waiting)
        return;
    if (console->isVisibleTo(this))
        console->setFocus(Qt::OtherFocusReason);
    else
        editor->setFocus(Qt::OtherFocusReason);
}

// Ctrl+C. A field claims these keys for itself, and a console that works on a file drops them, selection or not.

bool TerminalWidget::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && stopShortcut->isEnabled()) {
        const auto *keyEvent = static_cast<QKeyEvent *>(event);
        if ((int(keyEvent->modifiers()) | keyEvent->key()) == StopKeys) {
            event->ignore();
            return true;
        }
    }
    return KdPluginWidget::eventFilter(watched, event);
}

void TerminalWidget::stopOrCopy()
{
    QWidget *focused = window()->focusWidget();
    auto *text = qobject_cast<QPlainTextEdit *>(focused);
    auto *field = qobject_cast<QLineEdit *>(focused);
    if (text && text->textCursor().hasSelection())
        text->copy();
    else if (field && field->hasSelectedText())
        field->copy();
    else
        console->stopExecution();
}

// The host

void TerminalWidget::parentEventOccured(KdParentEvent &event)
{
    if ((event.type == KD::ItemSelected || event.type == KD::ItemActivated) && commandPanel)
        commandPanel->setItemId(event.getHardwareId(0));
}

bool TerminalWidget::canTakeDrop(const QDropEvent &event) const
{
    return (event.possibleActions() & (Qt::CopyAction | Qt::MoveAction))
        && event.mimeData()->hasFormat(mainData.getDndMimeType());
}

void TerminalWidget::dragEnterEvent(QDragEnterEvent *event)
{
    if (canTakeDrop(*event))
        event->acceptProposedAction();
}

void TerminalWidget::dropEvent(QDropEvent *event)
{
    QVector<OrbItemId> items;
    if (!commandPanel || !canTakeDrop(*event)
        || !KdPluginCommon::parseDragAndDropString(event->mimeData(), items) || items.isEmpty())
        return;
    commandPanel->setItemId(items.constFirst());
    event->acceptProposedAction();
}
