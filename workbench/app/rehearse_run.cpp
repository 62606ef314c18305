#include "workbench/app/rehearse_run.h"

#include "hostsdk/kd_plugin_widget.h"
#include "workbench/app/command_terminal_driver.h"
#include "workbench/app/python_terminal_driver.h"
#include "workbench/app/rehearse_output.h"
#include "workbench/app/tool_host.h"
#include "workbench/rehearsal/held_clock.h"
#include "workbench/rehearsal/recorder.h"
#include "workbench/rehearsal/script_wrapper.h"

#include <QDir>

namespace workbench
{

namespace
{

using rehearsal::Finding;
using rehearsal::TranscriptLine;

constexpr int LookInterval = 20; // ms
constexpr int RecordInterval = static_cast<int>(rehearsal::Recorder::Interval * 1000); // ms

TranscriptLine::Kind kindOf(TerminalLine::Kind kind)
{
    switch (kind) {
    case TerminalLine::Success:
        return TranscriptLine::Output;
    case TerminalLine::Error:
        return TranscriptLine::Error;
    case TerminalLine::Plain:
        break;
    }
    return TranscriptLine::Input;
}

} // namespace

RehearseRun::RehearseRun(const RehearseOptions &options_, const Stage &stage_, QObject *parent)
    : QObject(parent), options(options_), stage(stage_)
{
    look.setInterval(LookInterval);
    connect(&look, &QTimer::timeout, this, [this] { (this->*step)(); });
    record.setInterval(RecordInterval);
    connect(&record, &QTimer::timeout, this, [this] { stage.recorder.poll(); });
}

RehearseRun::~RehearseRun() = default;

void RehearseRun::start()
{
    look.start();
    nextFile();
}

void RehearseRun::interrupt(const QString &reason)
{
    if (isInterrupted || !step)
        return;
    isInterrupted = true;
    stage.recording.interruption = reason;
    const bool isExecuting = step == &RehearseRun::waitForEnd;
    if (isExecuting) {
        driver->stop();
        deadline.setRemainingTime(StopTime);
        step = &RehearseRun::waitForStop;
    } else if (step != &RehearseRun::waitForStop) {
        end();
    }
}

void RehearseRun::nextFile()
{
    driver.reset();
    linesEchoed = 0;
    review = {};
    if (current == options.files.size()) {
        deadline.setRemainingTime(static_cast<qint64>(options.settleTime * 1000));
        step = &RehearseRun::settle;
        return;
    }
    if (!openTerminal()) {
        endFile(QStringLiteral("not run"));
        return;
    }
    deadline.setRemainingTime(ReadyTime);
    step = &RehearseRun::waitUntilReady;
}

bool RehearseRun::openTerminal()
{
    const int index = file().isScript ? 1 : 0; // of the plug-in's tools
    const QVector<quint32> classes = stage.host.toolClasses();
    QWidget *tool = nullptr;
    if (index < classes.size()) {
        tool = stage.host.openTool(classes.at(index), &stage.window, 0);
        stage.host.announceShown(classes.at(index));
    }
    if (!tool) {
        fail(Finding::Run, 0,
             file().isScript ? tr("The plug-in has no Python terminal that could be opened.")
                             : tr("The plug-in has no command terminal that could be opened."));
        return false;
    }
    tool->show();
    if (file().isScript)
        driver = std::make_unique<PythonTerminalDriver>(*tool);
    else
        driver = std::make_unique<CommandTerminalDriver>(*tool);
    const QString missing = driver->missingControl();
    if (!missing.isEmpty())
        fail(Finding::Run, 0, tr("The terminal cannot be operated: it has no \"%1\".").arg(missing));
    return missing.isEmpty();
}

void RehearseRun::waitUntilReady()
{
    QString error = driver->obstacle();
    if (error.isEmpty()) {
        if (!driver->isReady() && !deadline.hasExpired())
            return;
        if (driver->prepare(options.controller, error)) {
            execute();
            return;
        }
    }
    fail(Finding::Run, 0, error);
    endFile(QStringLiteral("not run"));
}

void RehearseRun::execute()
{
    stage.clock.release();
    record.start();
    // What an earlier file has left there is none of this one's.
    driver->clear();
    if (!file().isScript)
        review = rehearsal::reviewCommandFile(file().text);
    stage.recorder.beginFile(current, review.executed);
    stage.output.begin(stage.recording.files.at(current),
                       options.controller.isEmpty() ? options.plant.controllers.front().displayText
                                                    : options.controller);
    warnOfFile();
    driver->edit(file().isScript ? rehearsal::wrappedScript(file().text, file().name,
                                                            outcomes.filePath(QString::number(current)))
                                 : file().text);
    driver->execute();
    step = &RehearseRun::waitForEnd;
}

void RehearseRun::waitForEnd()
{
    takeTranscript();
    const QString obstacle = driver->obstacle();
    if (!obstacle.isEmpty()) {
        fail(Finding::Run, 0, obstacle);
        endFile(QStringLiteral("failed"));
        return;
    }
    if (driver->waitsForUser()) {
        fail(Finding::Script, 0, tr("The script waits for a line that somebody types, and nobody is there."));
        driver->stop();
        deadline.setRemainingTime(StopTime);
        step = &RehearseRun::waitForStop;
        return;
    }
    if (driver->isBusy())
        return;
    takeTranscript();
    if (file().isScript)
        judgeScript();
    endFile(QStringLiteral("done"));
}

void RehearseRun::waitForStop()
{
    takeTranscript();
    const bool isStuck = driver->isBusy();
    if (isStuck && !deadline.hasExpired())
        return;
    if (isStuck) {
        fail(Finding::Run, 0, tr("The script could not be stopped. What comes after it is not rehearsed."));
        isInterrupted = true;
    }
    endFile(QStringLiteral("stopped"));
}

void RehearseRun::endFile(const QString &outcome)
{
    stage.recorder.endFile(outcome);
    ++current;
    if (isInterrupted)
        end();
    else
        nextFile();
}

void RehearseRun::settle()
{
    const bool isSettled = stage.recorder.isSettled();
    if (!isSettled && !deadline.hasExpired())
        return;
    if (!isSettled) {
        Finding finding;
        finding.text =
            tr("Channels still ramped when the rehearsal ended, %1 s after the last file. What becomes of "
               "them is not in it; --settle gives them longer.")
                .arg(options.settleTime);
        stage.recorder.add(finding);
    }
    end();
}

void RehearseRun::end()
{
    look.stop();
    record.stop();
    step = nullptr;
    stage.recorder.finish();
    Q_EMIT finished();
}

void RehearseRun::takeTranscript()
{
    const QVector<TerminalLine> lines = driver->takeLines();
    for (const TerminalLine &line : lines) {
        const TranscriptLine::Kind kind = kindOf(line.kind);
        stage.recorder.addTranscript(kind, line.text);
        stage.output.transcript(file().name, stage.recorder.now(), kind, line.text);
        // What is shown of the stop itself is nobody's failure.
        if (!file().isScript && step == &RehearseRun::waitForEnd)
            judgeLine(kind, line.text);
    }
    // What came of it stands behind the line then, and not a moment later.
    if (!lines.isEmpty())
        stage.recorder.poll();
}

/// What a command terminal shows besides answers. A request that was not taken is in the journal too, but has no answer
/// there to be judged.
void RehearseRun::judgeLine(TranscriptLine::Kind kind, const QString &text)
{
    static const QLatin1String prompt("> ");
    if (kind == TranscriptLine::Input && text.startsWith(prompt)) {
        ++linesEchoed;
        return;
    }
    if (kind != TranscriptLine::Error || text.startsWith(QLatin1String("[{\"trigger\":")) || linesEchoed < 1
        || linesEchoed > review.executed.size())
        return;
    const rehearsal::CommandLine &line = review.executed.at(linesEchoed - 1);
    // A wait that is none was warned of.
    if (!line.text.startsWith(QLatin1String("wait ")))
        fail(Finding::Request, line.number, tr("The request was not taken: %1").arg(text));
}

void RehearseRun::judgeScript()
{
    rehearsal::ScriptOutcome outcome;
    if (!rehearsal::readScriptOutcome(outcomes.filePath(QString::number(current)), outcome)) {
        fail(Finding::Script, 0, tr("The script came to an end, and it is not known how."));
        return;
    }
    switch (outcome.kind) {
    case rehearsal::ScriptOutcome::Done:
        break;
    case rehearsal::ScriptOutcome::DoesNotCompile:
        fail(Finding::Script, outcome.line, tr("The script does not compile:\n%1").arg(outcome.text));
        break;
    case rehearsal::ScriptOutcome::Raised:
        fail(Finding::Script, outcome.line, tr("The script raised:\n%1").arg(outcome.text));
        break;
    case rehearsal::ScriptOutcome::Exited:
        fail(Finding::Script, outcome.line, tr("The script exited with: %1").arg(outcome.text));
        break;
    }
}

/// Of what is odd about it, before it is executed.
void RehearseRun::warnOfFile()
{
    if (file().foreignLine > 0) {
        const QString text =
            tr("This line is not UTF-8. The file is read as ISO 8859-1, as the terminal's editor does.");
        const QString ofScript = tr("Python itself might read it otherwise, or refuse it: save it as UTF-8.");
        warn(file().foreignLine, file().isScript ? text + QLatin1Char(' ') + ofScript : text);
    }
    if (file().isScript && file().text.trimmed().isEmpty())
        warn(0, tr("The script is empty."));
    for (const rehearsal::Remark &remark : std::as_const(review.remarks))
        warn(remark.line, remark.text);
}

void RehearseRun::fail(Finding::Kind kind, int line, const QString &text)
{
    Finding finding;
    finding.kind = kind;
    finding.file = file().name;
    finding.line = line;
    finding.text = text;
    stage.recorder.add(finding);
}

void RehearseRun::warn(int line, const QString &text)
{
    Finding finding;
    finding.file = file().name;
    finding.line = line;
    finding.text = text;
    stage.recorder.add(finding);
}

} // namespace workbench
