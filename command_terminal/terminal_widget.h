#pragma once

#include "command_terminal/terminal_tool.h"

#include <QPointer>
#include <QStringList>

class QDropEvent;
class TerminalCommandGeneration;
class TerminalOrbClientConsole;

/// The dockable command terminal: tool bar on the left, the command form above the console or the file editor. GUI
/// thread only.
class TerminalWidget : public TerminalTool
{
    Q_OBJECT

public:
    /// `parent` owns the tool; state, main data and host outlive it. `instance` counts the host's tools of this class.
    TerminalWidget(QWidget *parent, TerminalPluginState *state, KdMainData &mainData, KdObserver &host,
                   unsigned int instance);
    ~TerminalWidget() override;

    /// Where the tool stands in the host's menu, translated.
    static QStringList menuPath();

    void parentEventOccured(KdParentEvent &event) override;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void clearConsole() override;
    void executeText(const QString &text) override;
    void consoleEvent(KdChildEvent &event) override;
    void busyChanged(bool nowBusy) override;
    bool canStop() const override;
    void stop() override;

private:
    void holdBackRefreshes();
    void takeStopKeysFromPanel();
    void takePanelFocus();
    void returnPanelFocus();
    bool canTakeDrop(const QDropEvent &event) const;

    TerminalOrbClientConsole *console = nullptr;
    TerminalCommandGeneration *commandPanel = nullptr;

    QPointer<QWidget> panelFocus; ///< the field of the command panel that had the focus when the wait began
    bool executing = false; ///< there is something to stop
};
