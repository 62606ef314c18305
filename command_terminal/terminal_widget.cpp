#include "command_terminal/terminal_widget.h"

#include "command_terminal/refresh_limiter.h"
#include "command_terminal/terminal_command_generation.h"
#include "command_terminal/terminal_orb_client_console.h"
#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_parent_event.h"
#include "hostsdk/kd_plugin_common.h"
#include "plugin/terminal_plugin_state.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>

TerminalWidget::TerminalWidget(QWidget *parent, TerminalPluginState *state, KdMainData &hostData,
                               KdObserver &eventHost, unsigned int toolInstance)
    : TerminalTool(parent, hostData, eventHost, state->terminalWidgetClassId, toolInstance),
      console(new TerminalOrbClientConsole(this, hostData, *this))
{
    setObjectName(QStringLiteral("commandTerminal"));
    addConsoleAndEditor(*console, state);
    commandPanel = new TerminalCommandGeneration(this, hostData, *this);
    commandPanel->setObjectName(QStringLiteral("commandPanel"));
    addAbove(*commandPanel);

    connect(console, &TerminalOrbClientConsole::executionChanged, this,
            [this](bool active) { executing = active; });
    holdBackRefreshes();
    takeStopKeysFromPanel();
}

TerminalWidget::~TerminalWidget() = default;

QStringList TerminalWidget::menuPath()
{
    return {tr("Window"), tr("Tools"), tr("Terminal")};
}

void TerminalWidget::clearConsole()
{
    console->clearConsole(QString());
}

void TerminalWidget::executeText(const QString &text)
{
    console->runCommandFile(text);
}

void TerminalWidget::consoleEvent(KdChildEvent &event)
{
    console->handleEvent(event);
}

void TerminalWidget::holdBackRefreshes()
{
    auto *refreshLimiter = new command_terminal::RefreshLimiter(this);
    connect(console, &TerminalOrbClientConsole::fileLineTaken, refreshLimiter,
            &command_terminal::RefreshLimiter::holdBack);
    connect(console, &TerminalOrbClientConsole::fileRunningChanged, refreshLimiter,
            [refreshLimiter](bool running) {
                if (!running)
                    refreshLimiter->release();
            });
}

// The focus: while the console waits it is disabled, and so is the form. The tool itself then holds the focus that
// one of them had, so that it neither wanders off to another tool nor is lost.

void TerminalWidget::busyChanged(bool nowBusy)
{
    if (nowBusy)
        takePanelFocus();
    commandPanel->setEnabled(!nowBusy);
    if (!nowBusy)
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

// Ctrl+C. A field and the list of a box claim these keys for themselves, a box searches its list for them, and a console
// that works on a file drops them, selection or not.

void TerminalWidget::takeStopKeysFromPanel()
{
    const QList<QWidget *> parts = commandPanel->findChildren<QWidget *>();
    for (QWidget *part : parts)
        takeStopKeysFrom(*part);
}

bool TerminalWidget::canStop() const
{
    return executing;
}

void TerminalWidget::stop()
{
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
