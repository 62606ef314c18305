#include "python_terminal/terminal_python_console.h"

#include "command_terminal/terminal_console_completer.h"
#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_observer.h"
#include "hostsdk/kd_parent_event.h"
#include "python_terminal/abandoned_worker.h"
#include "python_terminal/terminal_python_thread.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMetaEnum>
#include <QThread>
#include <QTimerEvent>

#include <memory>
#include <utility>

namespace
{

// What is written within this time is shown together: nobody sees a difference, and a flood of texts costs a tenth.
constexpr int OutputInterval = 20; // ms
// Half of what the worker runs ahead: in a flood it need not wait for the next time.
constexpr int MostTextsCollected = 500;
constexpr int KnockInterval = 5; // ms
constexpr int StopTime = 100; // ms, twice
// A line of this length still takes the window no noticeable time to lay out.
constexpr int LongestText = 100000;
constexpr int MostCharactersAtOnce = 100000;

QString cutToLongest(const QString &text)
{
    if (text.size() <= LongestText)
        return text;
    return TerminalPythonConsole::tr("%1 [%n more character(s) not shown]", nullptr,
                                     text.size() - LongestText)
        .arg(text.left(LongestText));
}

} // namespace

TerminalPythonConsole::TerminalPythonConsole(QWidget *parent, KdMainData &hostData, KdObserver &eventObserver)
    : TerminalConsole(parent, hostData, eventObserver),
      evaluator(new TerminalPythonThread(nullptr, &hostData)),
      workerThread(new QThread)
{
    startEvaluator();
}

void TerminalPythonConsole::startEvaluator()
{
    workerThread->setObjectName(QStringLiteral("python"));
    evaluator->moveToThread(workerThread);
    connectEvaluator();
    workerThread->start(QThread::InheritPriority);
    Q_EMIT initEvaluator();
    clearConsole(banner);
    Q_EMIT clearEvaluator();
}

TerminalPythonConsole::~TerminalPythonConsole()
{
    stopEvaluator();
}

void TerminalPythonConsole::connectEvaluator()
{
    using Thread = TerminalPythonThread;
    using Console = TerminalPythonConsole;
    connect(this, &Console::initEvaluator, evaluator, &Thread::onInit);
    connect(this, &Console::exitEvaluator, evaluator, &Thread::onExit);
    connect(this, &Console::clearEvaluator, evaluator, &Thread::onClear);
    connect(this, &Console::returnPressed, evaluator, &Thread::onReturnPressed);
    connect(this, &Console::complete, evaluator, &Thread::onComplete);
    connect(this, &Console::executeFileInThread, evaluator, &Thread::onExecuteFile);
    connect(evaluator, &Thread::initialized, this, &Console::onInitialized);
    connect(evaluator, &Thread::insertErrorText, this, &Console::onInsertErrorText);
    connect(evaluator, &Thread::insertSuccessText, this, &Console::onInsertSuccessText);
    connect(evaluator, &Thread::completed, this, &Console::onCompleted);
    connect(evaluator, &Thread::evaluationComplete, this, &Console::onEvaluationComplete);
    connect(evaluator, &Thread::waitingForStdIn, this, &Console::onWaitingForStdIn);
    // A thread that was told to quit runs no queued slot any more: the interpreter then ends here, on its own thread.
    connect(workerThread, &QThread::finished, evaluator, &Thread::onExit, Qt::DirectConnection);
}

TerminalPythonConsole::Activity TerminalPythonConsole::activity() const
{
    if (stopped)
        return Activity::Stopped;
    if (banner.isEmpty())
        return Activity::Starting;
    if (banner == TerminalPythonThread::failureText())
        return Activity::Failed;
    if (!evaluating)
        return Activity::Idle;
    return inputMode ? Activity::WaitingForInput : Activity::Running;
}

QString TerminalPythonConsole::activityName() const
{
    return QString::fromLatin1(QMetaEnum::fromType<Activity>().valueToKey(int(activity())));
}

// What the user does

void TerminalPythonConsole::executeCommand(QString &line)
{
    beginEvaluating();
    Q_EMIT returnPressed(line);
}

void TerminalPythonConsole::requestCompletion(QString &prefix)
{
    // A script that waits for an answer is in the way: its end would bring candidates for a line long gone.
    if (evaluating)
        return;
    // Return takes what the popup offers, and typing may be faster than the answers.
    if (completer->isVisible())
        offer(offered);
    Q_EMIT complete(prefix);
}

void TerminalPythonConsole::submitInput(QString &text)
{
    if (evaluator != nullptr)
        evaluator->setStdInText(text);
}

void TerminalPythonConsole::resetConsole()
{
    // What was written until now goes with the display.
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    showAllOutput();
    const bool asked = inputMode;
    clearConsole(banner);
    if (asked) {
        printText(QStringLiteral("\n"));
        printInputPrompt();
    }
    busy = evaluating && !asked;
    Q_EMIT clearEvaluator();
}

void TerminalPythonConsole::executeFile(const QString &text)
{
    const QString notice = tr("executing file") + QLatin1Char('\n');
    if (evaluating) {
        // It runs when what runs now has come to its end, whose output stays.
        ++filesToFollow;
        showAllOutput();
    }
    const bool asked = inputMode;
    if (asked || !evaluating)
        removeInput();
    beginEvaluating();
    printText(notice);
    if (asked)
        printInputPrompt();
    Q_EMIT executeFileInThread(text);
}

void TerminalPythonConsole::interrupt()
{
    if (evaluator == nullptr)
        return;
    if (evaluating) {
        leaveInputPrompt();
        interruptWanted = !evaluator->interrupt();
        knockTimer.start(KnockInterval, this);
    } else if (statementPending) {
        QMetaObject::invokeMethod(evaluator, &TerminalPythonThread::dropPendingCommand, Qt::QueuedConnection);
        statementPending = false;
        moveCursor(QTextCursor::End);
        printText(QStringLiteral("\n"));
        printPrompt();
    }
}

/// What is being typed there answers nobody any more.
void TerminalPythonConsole::leaveInputPrompt()
{
    if (!inputMode)
        return;
    inputMode = false;
    busy = true;
    moveCursor(QTextCursor::End);
    printText(QStringLiteral("\n"));
}

// Evaluating

void TerminalPythonConsole::reportBusy(bool isBusy)
{
    KdChildEvent event(KD::BusyChanged);
    event.setIntArgument(isBusy ? 1 : 0, 0);
    observer.processChildEvent(event);
}

void TerminalPythonConsole::beginEvaluating()
{
    if (evaluating)
        return;
    evaluating = true;
    reportBusy(true);
    hadFocus = hasFocus();
    setEnabled(false);
}

void TerminalPythonConsole::takeFocusBack()
{
    setEnabled(true);
    if (hadFocus)
        setFocus(Qt::OtherFocusReason);
}

void TerminalPythonConsole::onEvaluationComplete(bool flagMultilineCmd)
{
    showAllOutput();
    if (!evaluating)
        return;
    interruptWanted = false;
    if (filesToFollow > 0) {
        --filesToFollow;
        return;
    }
    evaluating = false;
    reportBusy(false);
    takeFocusBack();
    statementPending = flagMultilineCmd;
    if (flagMultilineCmd)
        printContinuationPrompt();
    else
        printPrompt();
}

void TerminalPythonConsole::onWaitingForStdIn()
{
    showAllOutput();
    reportBusy(false);
    takeFocusBack();
    printInputPrompt();
}

void TerminalPythonConsole::onInitialized(const QString &text)
{
    banner = text;
    clearConsole(banner);
    Q_EMIT clearEvaluator();
}

void TerminalPythonConsole::onCompleted(const QStringList &cc)
{
    // The line may have been handed over since it was asked for.
    if (!evaluating)
        offer(cc);
}

void TerminalPythonConsole::offer(const QStringList &candidates)
{
    const bool isThere = isWordThere();
    QStringList fitting;
    for (const QString &candidate : candidates) {
        if (completionPrefix.contains(candidate)) {
            fitting.clear(); // the word is complete, as the answer to it will say
            break;
        }
        if (isThere && candidate.startsWith(completionPrefix))
            fitting.append(candidate);
    }
    offered = fitting;
    showCompletions(offered);
}

bool TerminalPythonConsole::isWordThere() const
{
    if (completionStart == -1 || completionPrefix.isEmpty())
        return false;
    const int end = textCursor().position();
    QTextCursor word(document());
    word.setPosition(qMin(completionStart, end));
    word.setPosition(end, QTextCursor::KeepAnchor);
    return word.selectedText() == completionPrefix;
}

// Output: texts are collected as they come, and shown together.

void TerminalPythonConsole::onInsertErrorText(const QString &msg)
{
    collectOutput(msg, true);
}

void TerminalPythonConsole::onInsertSuccessText(const QString &msg)
{
    collectOutput(msg, false);
}

void TerminalPythonConsole::collectOutput(const QString &text, bool isError)
{
    if (stopped)
        return; // was under way at the end
    output.append({cutToLongest(text), isError});
    if (evaluator != nullptr)
        evaluator->textsTaken(TerminalPythonThread::weightOf(text)
                              - TerminalPythonThread::weightOf(output.constLast().text));
    if (output.size() >= MostTextsCollected)
        showSomeOutput();
    else if (!outputTimer.isActive())
        outputTimer.start(OutputInterval, this);
}

/// As much as the window can take without a noticeable pause.
void TerminalPythonConsole::showSomeOutput()
{
    int count = 0;
    int weight = 0;
    for (int characters = 0; count < output.size() && characters < MostCharactersAtOnce; ++count) {
        characters += output.at(count).text.size();
        weight += TerminalPythonThread::weightOf(output.at(count).text);
    }
    if (count == 0)
        return;
    printOutput(output.mid(0, count));
    output.remove(0, count);
    if (evaluator != nullptr)
        evaluator->textsTaken(weight);
}

void TerminalPythonConsole::showAllOutput()
{
    outputTimer.stop();
    while (!output.isEmpty())
        showSomeOutput();
}

void TerminalPythonConsole::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == outputTimer.timerId()) {
        showSomeOutput();
        if (output.isEmpty())
            outputTimer.stop();
    } else if (event->timerId() == knockTimer.timerId()) {
        knock();
    } else {
        TerminalConsole::timerEvent(event);
    }
}

/// Until the worker has noticed. What was handed over may not have begun yet when it was interrupted.
void TerminalPythonConsole::knock()
{
    if (evaluator != nullptr && evaluating && interruptWanted)
        interruptWanted = !evaluator->interrupt();
    if (evaluator == nullptr || !evaluating || (!interruptWanted && !evaluator->knockAgain()))
        knockTimer.stop();
}

// End

void TerminalPythonConsole::parentEventOccured(KdParentEvent &event)
{
    if (event.type == KD::StopInterpreter)
        stopEvaluator();
}

bool TerminalPythonConsole::waitForWorker(int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!workerThread->wait(KnockInterval)) {
        if (timer.elapsed() >= milliseconds)
            return false;
        evaluator->knockAgain();
    }
    return true;
}

void TerminalPythonConsole::stopEvaluator()
{
    if (stopped)
        return;
    evaluator->requestClose();
    Q_EMIT exitEvaluator();
    bool ended = waitForWorker(StopTime);
    stopped = true;
    disconnect(this, nullptr, evaluator, nullptr);
    disconnect(evaluator, nullptr, this, nullptr);
    workerThread->quit();
    ended = ended || waitForWorker(StopTime);
    knockTimer.stop();
    outputTimer.stop();
    output.clear(); // nobody is left to read it
    // A thread is never terminated: that would leave the interpreter's locks locked for the rest of the process.
    std::unique_ptr<TerminalPythonThread> ownEvaluator(std::exchange(evaluator, nullptr));
    std::unique_ptr<QThread> ownThread(std::exchange(workerThread, nullptr));
    if (!ended)
        AbandonedWorker::take(std::move(ownEvaluator), std::move(ownThread));
}
