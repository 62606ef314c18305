#pragma once

#include "workbench/app/rehearse_options.h"
#include "workbench/rehearsal/command_file_review.h"
#include "workbench/rehearsal/recording.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTemporaryDir>
#include <QTimer>

#include <memory>

class QWidget;

namespace rehearsal
{
class HeldClock;
class Recorder;
} // namespace rehearsal

namespace workbench
{

class RehearseOutput;
class TerminalDriver;
class ToolHost;

/// Executes the files of a rehearsal one after the other in the plug-in's terminals, by their controls, and records what
/// happens. GUI thread only.
class RehearseRun : public QObject
{
    Q_OBJECT

public:
    /// Time that a terminal has to be ready, and that a script has to come to its end once it is stopped, in ms.
    static constexpr int ReadyTime = 10000;
    static constexpr int StopTime = 3000;

    /// What a run works with; all of it is kept and outlives the run. The host is started, the window shown, the
    /// recording has its files, and the clock is held.
    struct Stage
    {
        ToolHost &host;
        QWidget &window;
        rehearsal::HeldClock &clock;
        rehearsal::Recorder &recorder;
        rehearsal::Recording &recording;
        RehearseOutput &output;
    };

    RehearseRun(const RehearseOptions &options, const Stage &stage, QObject *parent = nullptr);
    ~RehearseRun() override;

    /// Begins. Everything else follows from the event loop.
    void start();

    /// Stops what is executed and ends the run; `reason` is a sentence for the report. Nothing happens at a second call.
    void interrupt(const QString &reason);

Q_SIGNALS:
    /// All files are done, or the run was interrupted; the recording is complete.
    void finished();

private:
    const RehearsalFile &file() const { return options.files.at(current); }

    void nextFile();
    bool openTerminal();
    void waitUntilReady();
    void execute();
    void waitForEnd();
    void waitForStop();
    void settle();
    void endFile(const QString &outcome);
    void end();

    void takeTranscript();
    void judgeLine(rehearsal::TranscriptLine::Kind kind, const QString &text);
    void judgeScript();
    void warnOfFile();
    void fail(rehearsal::Finding::Kind kind, int line, const QString &text);
    void warn(int line, const QString &text);

    const RehearseOptions options;
    const Stage stage;
    const QTemporaryDir outcomes; ///< where scripts tell how they ended
    QTimer look; ///< at the terminal's controls, which have no signals that a stranger could know
    QTimer record;
    QDeadlineTimer deadline;
    void (RehearseRun::*step)() = nullptr; ///< what the next look is for; null before and after the run
    std::unique_ptr<TerminalDriver> driver;
    std::size_t current = 0; ///< file
    rehearsal::CommandFileReview review; ///< of the current command file
    int linesEchoed = 0; ///< of it
    bool isInterrupted = false;
};

} // namespace workbench
