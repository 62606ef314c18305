#pragma once

#include "command_terminal/terminal_tool.h"

#include <QStringList>

class TerminalPythonConsole;

/// The dockable Python terminal: tool bar on the left, the Python console above the editor for Python files. GUI
/// thread only.
class TerminalWidgetPython : public TerminalTool
{
    Q_OBJECT

public:
    /// `parent` owns the tool; state, main data and host outlive it. `instance` counts the host's tools of this class.
    TerminalWidgetPython(QWidget *parent, TerminalPluginState *state, KdMainData &mainData, KdObserver &host,
                         unsigned int instance);
    ~TerminalWidgetPython() override;

    /// Where the tool stands in the host's menu, translated.
    static QStringList menuPath();

    void parentEventOccured(KdParentEvent &event) override;

protected:
    void clearConsole() override;
    void executeText(const QString &text) override;
    void busyChanged(bool nowBusy) override;
    bool canStop() const override;
    void stop() override;

private:
    TerminalPythonConsole *console = nullptr;
};
