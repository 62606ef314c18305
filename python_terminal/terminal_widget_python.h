#pragma once

#include "hostsdk/kd_plugin_widget.h"

#include <QStringList>

class TerminalFileEditor;
class TerminalPythonConsole;
class TerminalToolbar;
struct TerminalPluginState;

/// The dockable Python terminal: tool bar on the left, the Python console above the editor for Python files. It is the
/// hub of what its parts report to each other and to the host. GUI thread only.
class TerminalWidgetPython : public KdPluginWidget
{
    Q_OBJECT

public:
    /// `parent` owns the tool; state, main data and host outlive it. `instance` counts the host's tools of this class.
    TerminalWidgetPython(QWidget *parent, TerminalPluginState *state, KdMainData &mainData, KdObserver &host,
                         unsigned int instance);
    ~TerminalWidgetPython() override;

    /// Where the tool stands in the host's menu, translated.
    static QStringList menuPath();

    void processChildEvent(KdChildEvent &event) override;
    void parentEventOccured(KdParentEvent &event) override;

protected:
    void focusInEvent(QFocusEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showConsole();
    void showEditor();
    void executeFile();
    void passRequest(KdChildEvent &event);
    void setBusy(bool busy);
    void stopOrCopy();

    TerminalToolbar *toolbar = nullptr;
    TerminalPythonConsole *console = nullptr;
    TerminalFileEditor *editor = nullptr;
    bool busy = false; ///< the console is disabled
};
