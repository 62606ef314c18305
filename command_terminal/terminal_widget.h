#pragma once

#include "hostsdk/kd_plugin_widget.h"

#include <QPointer>
#include <QStringList>

class QDropEvent;
class QMimeData;
class QShortcut;
class TerminalCommandGeneration;
class TerminalFileEditor;
class TerminalOrbClientConsole;
class TerminalToolbar;
struct TerminalPluginState;

/// The dockable command terminal: tool bar on the left, the command form above the console or the file editor. It is
/// the hub of what its parts report to each other and to the host. GUI thread only.
class TerminalWidget : public KdPluginWidget
{
    Q_OBJECT

public:
    /// `parent` owns the tool; state, main data and host outlive it. `instance` counts the host's tools of this class.
    TerminalWidget(QWidget *parent, TerminalPluginState *state, KdMainData &mainData, KdObserver &host,
                   unsigned int instance);
    ~TerminalWidget() override;

    /// Where the tool stands in the host's menu, translated.
    static QStringList menuPath();

    void processChildEvent(KdChildEvent &event) override;
    void parentEventOccured(KdParentEvent &event) override;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showConsole();
    void showEditor();
    void executeFile();
    void passRequest(KdChildEvent &event);
    void setBusy(bool busy);
    void takePanelFocus();
    void returnPanelFocus();
    void stopOrCopy();
    bool canTakeDrop(const QDropEvent &event) const;

    TerminalPluginState *pluginState;
    TerminalOrbClientConsole *console = nullptr;
    TerminalToolbar *toolbar = nullptr;
    TerminalFileEditor *editor = nullptr;
    TerminalCommandGeneration *commandPanel = nullptr;

    QShortcut *stopShortcut = nullptr; ///< Ctrl+C while there is something to stop
    QPointer<QWidget> panelFocus; ///< the field of the command panel that had the focus when the wait began
    bool waiting = false;
};
