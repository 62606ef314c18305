#pragma once

#include "workbench/app/options.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <memory>

class QTextStream;

namespace workbench
{

class MainWindow;
class TerminalDriver;

/// Does what the command line asked for, in a real terminal, while the window is up: executes a command file or a
/// Python file and prints the transcript, or shows a file in the editor, and saves a picture. GUI thread only.
class UnattendedRun : public QObject
{
    Q_OBJECT

public:
    /// Window and streams are kept and outlive the run. The transcript goes to `out`, complaints to `err`.
    UnattendedRun(const Options &options, MainWindow &window, QTextStream &out, QTextStream &err,
                  QObject *parent = nullptr);
    ~UnattendedRun() override;

    /// Begins; the window is shown by now. Everything else follows from the event loop.
    void start();

    /// Time that a terminal has to be ready, in ms.
    static constexpr int ReadyTime = 10000;

Q_SIGNALS:
    /// All is done (0) or something could not be (1, and the reason was printed).
    void finished(int exitCode);

private:
    bool openTerminal();
    bool executesFile() const { return !options.commandFile.isEmpty() || !options.pythonFile.isEmpty(); }
    void waitUntilReady();
    bool failedAtObstacle();
    void begin();
    void waitForEnd();
    void printNewLines();
    void takePicture();
    void end(int exitCode);
    void fail(const QString &text);

    const Options options;
    MainWindow &window;
    QTextStream &out;
    QTextStream &err;
    QString fileText;
    std::unique_ptr<TerminalDriver> driver;
    QTimer poll; ///< looks at the terminal's controls, which have no signals that a stranger could know
    QDeadlineTimer readyDeadline;
    void (UnattendedRun::*step)() = nullptr; ///< what the next look is for; null before and after the run
};

} // namespace workbench
