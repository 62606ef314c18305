#pragma once

#include "hostsdk/kd_plugin_widget.h"

#include <QString>

class QVBoxLayout;
class TerminalConsole;
class TerminalFileEditor;
class TerminalToolbar;
struct TerminalPluginState;

/// What both terminals are: a tool bar on the left, beside it a console or, in its place, the file editor. It is the
/// hub of what its parts report to each other and to the host, keeps the focus inside the tool while the console is
/// busy, and takes Ctrl+C. GUI thread only.
///
/// The constructor of a subclass makes the console, and hands it to addConsoleAndEditor before any other part.
class TerminalTool : public KdPluginWidget
{
    Q_OBJECT

public:
    ~TerminalTool() override;

    void processChildEvent(KdChildEvent &event) override;

protected:
    /// Makes the tool bar. `parent` owns the tool; main data and host outlive it. `instance` counts the host's tools
    /// of this class.
    TerminalTool(QWidget *parent, KdMainData &mainData, KdObserver &host, unsigned int uniqueWidgetClassId,
                 unsigned int instance);

    /// Makes the editor, and shows the console, which is a child of the tool. `state` outlives the tool.
    void addConsoleAndEditor(TerminalConsole &console, TerminalPluginState *state);

    /// Shows a part above console and editor, over their whole width. The tool becomes its parent.
    void addAbove(QWidget &part);

    /// Takes Ctrl+C from a part that would otherwise make something of it itself. Console, editor and tool bar need no
    /// call. The part is a child of the tool.
    void takeStopKeysFrom(QWidget &part);

    /// Whether a part reported that it is busy, and did not report its end yet.
    bool isBusy() const { return busy; }

    void focusInEvent(QFocusEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

    // What the terminals differ in.

    virtual void clearConsole() = 0;

    /// The editor's text is to be executed; the console is shown already.
    virtual void executeText(const QString &text) = 0;

    /// A request while the console is shown, or the controller that was chosen. Does nothing by default. The event
    /// stays the caller's.
    virtual void consoleEvent(KdChildEvent &event);

    /// A part became busy, or is no longer; the cursor says so already. Does nothing by default.
    virtual void busyChanged(bool nowBusy);

    /// Whether Ctrl+C, with no text selected, is the tool's at this moment.
    virtual bool canStop() const = 0;

    /// Ctrl+C with no text selected.
    virtual void stop() = 0;

    TerminalToolbar *toolbar = nullptr;
    TerminalFileEditor *editor = nullptr;

private:
    void showConsole();
    void showEditor();
    void executeFile();
    void passRequest(KdChildEvent &event);
    void setBusy(bool nowBusy);
    void stopOrCopy();

    QVBoxLayout *column = nullptr; ///< what is beside the tool bar
    TerminalConsole *shownConsole = nullptr; ///< the subclass's console
    bool busy = false;
};
