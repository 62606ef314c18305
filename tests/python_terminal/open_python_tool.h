#pragma once

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "plugin/terminal_plugin_state.h"
#include "tests/support/recording_backend.h"
#include "tests/support/recording_observer.h"

#include <memory>

class TerminalPythonConsole;
class TerminalWidgetPython;

/// How often a state is gone through, and how long a close may take.
struct ClosingLimits
{
    /// Of each state that a tool is known to be closed in.
    static constexpr int rounds() { return 50; }
    /// Of each further form of such a state. CLOSING_CYCLES of the environment asks for more: all of them fifty times
    /// take a quarter of an hour, and more under sanitizers.
    static int variantRounds();
    /// In ms. Sanitizers slow Python down by a factor, which is taken into account.
    static qint64 closeTime();
};

/// The host's side of a Python terminal, and one such tool that can be opened and closed.
class OpenPythonTool
{
public:
    OpenPythonTool();
    ~OpenPythonTool();

    /// Opens the tool and waits for its banner. False when Python did not start, or nothing came. An interpreter that
    /// was left to itself, which on a busy machine any may be, is waited for.
    bool open();
    /// The same without waiting for such an interpreter.
    bool openBeside();
    /// Opens it without waiting for anything.
    void openAtOnce();
    /// Whether a line that is typed there is evaluated: 1+1.
    bool evaluates();
    /// Executes the text as a file and waits until it has printed "reached".
    bool run(const QString &script);
    /// Destroys the tool; how long that took, in ms, less the time for which the thread had no processor.
    qint64 close();
    /// The host ends its tools, which stay; how long that took, as above.
    qint64 stop();

    /// What the console shows; empty when nothing is open.
    QString text() const;
    bool isOpen() const { return tool != nullptr; }
    TerminalPythonConsole *console() const;
    TerminalWidgetPython *widget() const { return tool.get(); }
    RecordingBackend &recordingBackend() { return backend; }

private:
    RecordingBackend backend;
    DlDataAccess access{backend};
    KdMainData mainData{&access};
    RecordingObserver observer;
    TerminalPluginState state;
    std::unique_ptr<TerminalWidgetPython> tool;
};
