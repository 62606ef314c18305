#include "command_terminal/terminal_orb_client_console.h"

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_observer.h"

#include <QElapsedTimer>
#include <QScopedValueRollback>
#include <QTimerEvent>

namespace
{

constexpr int AnswerTimeoutMs = 2000;
constexpr int SliceMs = 30; // how long lines that need no answer may keep the window from painting

bool isFailureTrigger(const QString &message)
{
    return message == QLatin1String(R"([{"trigger":"false"}])")
        || message == QLatin1String(R"([{"trigger":"denied"}])")
        || message == QLatin1String(R"([{"trigger":"noData"}])");
}

bool isSuccessTrigger(const QString &message)
{
    return message == QLatin1String(R"([{"trigger":"true"}])");
}

} // namespace

TerminalOrbClientConsole::TerminalOrbClientConsole(QWidget *parent, KdMainData &hostData,
                                                   KdObserver &eventObserver)
    : TerminalConsole(parent, hostData, eventObserver)
{
    hostData.dataAccess->subscribeRawMessage(this);
}

TerminalOrbClientConsole::~TerminalOrbClientConsole()
{
    // A host that closes down may have taken its data access layer apart already.
    if (!mainData.shuttingDown)
        mainData.dataAccess->unsubscribe(this);
}

void TerminalOrbClientConsole::executeCommand(QString &commandText)
{
    const QString line = commandText.trimmed();
    if (controller.isEmpty()) {
        printError(tr("no controller defined"));
        printPrompt();
    } else if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) {
        printPrompt();
    } else if (line.startsWith(QLatin1String("wait "))) {
        executeWait(line);
    } else {
        executeRequest(line);
    }
    if (!waiting)
        continueFile();
}

void TerminalOrbClientConsole::executeWait(const QString &instruction)
{
    // The last five characters hold the number, whatever stands before them: a number of less than four digits is
    // refused, of one with six digits the last five count. This is meant.
    bool valid = false;
    const uint milliseconds = instruction.rightRef(5).toUInt(&valid, 10);
    if (!valid) {
        printError(tr("bad wait instruction"));
        printPrompt();
        return;
    }
    printSuccess(tr("waiting for %0 ms").arg(milliseconds));
    startWait(static_cast<int>(milliseconds));
}

void TerminalOrbClientConsole::executeRequest(const QString &request)
{
    QString reply;
    if (!mainData.dataAccess->executeRawOrbCommand(controller, request, reply)) {
        printError(reply);
        printPrompt();
        return;
    }
    if (!reply.isEmpty())
        printSuccess(reply);
    getItemPending = request.contains(QLatin1String(R"("c":"getItem")"));
    startWait(AnswerTimeoutMs);
}

void TerminalOrbClientConsole::startWait(int milliseconds)
{
    if (waiting)
        return;
    waiting = true;
    hadFocus = window()->focusWidget() == this; // also while another window is in front
    KdChildEvent busyEvent(KD::BusyChanged, qint64{1});
    observer.processChildEvent(busyEvent);
    // The focus stays in the tool: left to itself, a disabled widget hands it to whatever comes next in the window.
    if (hadFocus && parentWidget())
        parentWidget()->setFocus(Qt::OtherFocusReason);
    setEnabled(false);
    waitTimerId = startTimer(milliseconds, Qt::CoarseTimer);
    reportExecution();
}

void TerminalOrbClientConsole::endWait()
{
    if (!waiting)
        return;
    waiting = false;
    KdChildEvent idleEvent(KD::BusyChanged, qint64{0});
    observer.processChildEvent(idleEvent);
    setEnabled(true);
    killTimer(waitTimerId);
    waitTimerId = 0;
    returnFocus();
    printPrompt();
}

void TerminalOrbClientConsole::returnFocus()
{
    if (!hadFocus)
        return;
    hadFocus = false;
    // Unless the user has gone to another widget meanwhile: nobody wants the keys that he types there in a terminal.
    const QWidget *focused = window()->focusWidget();
    if (!focused || focused == this || focused == parentWidget())
        setFocus(Qt::OtherFocusReason);
}

// Raw messages

bool TerminalOrbClientConsole::wantsNotification(DlNotificationQuery &)
{
    return waiting;
}

void TerminalOrbClientConsole::rawMessageReceived(const QString &message)
{
    const bool failed = isFailureTrigger(message);
    if (!waiting) {
        // Nobody waits for it: it goes above the prompt, so that the line being typed stays whole.
        if (failed)
            printErrorAbovePrompt(message);
        else
            printSuccessAbovePrompt(message);
    } else if (failed) {
        printError(message);
        endWait();
    } else {
        printSuccess(message);
        const bool dataFollow = isSuccessTrigger(message) && getItemPending;
        if (!dataFollow)
            endWait();
    }
    if (!waiting)
        continueFile();
}

void TerminalOrbClientConsole::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == nextSlice.timerId()) {
        nextSlice.stop();
        busy = false;
        continueFile();
    } else if (waitTimerId != 0 && event->timerId() == waitTimerId) {
        endWait();
        continueFile();
    } else {
        TerminalConsole::timerEvent(event);
    }
}

void TerminalOrbClientConsole::handleEvent(KdChildEvent &event)
{
    if (event.type == KD::Request)
        typeLine(event.getStringArgument(0));
    else if (event.type == KD::ControllerChosen)
        controller = event.getStringArgument(0);
}

void TerminalOrbClientConsole::typeLine(const QString &line)
{
    removeInput();
    printText(line + QLatin1Char('\n'));
    executeInput();
}

// Command files

bool TerminalOrbClientConsole::runCommandFile(const QString &text)
{
    if (fileRunning && waiting)
        printError(tr("command file stopped"));
    else if (fileRunning)
        printErrorAbovePrompt(tr("command file stopped"));
    fileRunning = true;
    fileController = controller;
    fileText = text;
    fileText.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    // One pass from left to right, so that three line feeds in a row leave an empty line, which ends the run.
    fileText.replace(QLatin1String("\n\n"), QLatin1String("\n"));
    filePos = 0;
    bool started = false;
    if (!waiting) {
        const QScopedValueRollback<bool> guard(takingLines, true);
        started = takeNextLine();
    }
    reportExecution();
    continueFile();
    return started;
}

bool TerminalOrbClientConsole::takeNextLine()
{
    if (!fileRunning)
        return false;
    const int lineEnd = fileText.indexOf(QLatin1Char('\n'), filePos);
    if (lineEnd
        <= filePos) { // an empty line, or no line feed any more: a last line without one is never executed
        endFile();
        return false;
    }
    const QString line = fileText.mid(filePos, lineEnd - filePos).trimmed();
    filePos = lineEnd + 1;
    Q_EMIT fileLineTaken();
    noticeController();
    typeLine(line);
    return true;
}

// Each line goes to the controller of the moment; an operator has to see when that is not the file's any more.
void TerminalOrbClientConsole::noticeController()
{
    if (controller == fileController)
        return;
    fileController = controller;
    printErrorAbovePrompt(controller.isEmpty() ? tr("from here on without a controller")
                                               : tr("from here on to the controller %1").arg(controller));
}

void TerminalOrbClientConsole::continueFile()
{
    // Lines that need no answer follow each other in this loop; executing one leads back here, and must not go deeper.
    if (takingLines)
        return;
    const QScopedValueRollback<bool> guard(takingLines, true);
    QElapsedTimer slice;
    slice.start();
    while (fileRunning && !waiting) {
        if (slice.elapsed() >= SliceMs) {
            busy = true; // as between any two lines of a file, keys find nobody listening
            nextSlice.start(0, this);
            return;
        }
        takeNextLine();
    }
    reportExecution();
}

void TerminalOrbClientConsole::endFile()
{
    fileRunning = false;
    filePos = 0;
    fileText.clear();
    fileController.clear();
}

void TerminalOrbClientConsole::stopExecution()
{
    if (!waiting && !fileRunning)
        return;
    const QString notice = fileRunning ? tr("command file stopped") : tr("waiting stopped");
    endFile();
    nextSlice.stop();
    busy = false;
    if (waiting) {
        printError(notice);
        endWait();
    } else {
        printErrorAbovePrompt(notice);
    }
    reportExecution();
}

void TerminalOrbClientConsole::reportExecution()
{
    if (fileRunning != reportedFile) {
        reportedFile = fileRunning;
        Q_EMIT fileRunningChanged(fileRunning);
    }
    const bool active = waiting || fileRunning;
    if (active != reportedActive) {
        reportedActive = active;
        Q_EMIT executionChanged(active);
    }
}
