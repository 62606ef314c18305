#pragma once

#include "command_terminal/terminal_console.h"
#include "hostclient/dl_message_subscriber.h"

#include <QBasicTimer>

class KdChildEvent;

/// The console of the command terminal: each line goes, as it stands, to the chosen controller, and the console then
/// waits, locked, for the answer, which comes back as raw messages. Lines that begin with "wait " pause instead,
/// lines that begin with "#" are comments. A command file is run line by line, each one starting when the one before
/// it has been answered, has timed out or has finished waiting. GUI thread only.
class TerminalOrbClientConsole : public TerminalConsole, public DlMessageSubscriber
{
    Q_OBJECT
    Q_PROPERTY(bool fileRunning READ isFileRunning NOTIFY fileRunningChanged)

public:
    /// `parent` owns the console; main data, its data access layer and the observer outlive it.
    TerminalOrbClientConsole(QWidget *parent, KdMainData &mainData, KdObserver &observer);
    ~TerminalOrbClientConsole() override;

    void executeCommand(QString &command) override;

    /// Starts a command file, in place of one that may still run; true when a first line was started. Takes effect
    /// after the answer when a request is outstanding.
    bool runCommandFile(const QString &text);

    /// Takes a request to type and execute, or the name of the controller that requests go to.
    void handleEvent(KdChildEvent &event);

    /// Ends a running command file and a wait at once. What was sent already may still be carried out and answered.
    void stopExecution();

    bool isFileRunning() const { return fileRunning; }

    bool wantsNotification(DlNotificationQuery &query) override;
    void rawMessageReceived(const QString &message) override;

Q_SIGNALS:
    /// Something began (true) or ended (false) that stopExecution can stop.
    void executionChanged(bool active);

    void fileRunningChanged(bool running);

    /// A line of a command file is about to be executed; thousands may follow each other within a second.
    void fileLineTaken();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void executeWait(const QString &instruction);
    void executeRequest(const QString &request);
    void startWait(int milliseconds);
    void endWait();
    void returnFocus();

    void typeLine(const QString &line);
    void noticeController();
    bool takeNextLine();
    void continueFile();
    void endFile();
    void reportExecution();

    bool waiting = false; ///< a request or a wait is outstanding; the console is disabled
    bool getItemPending =
        false; ///< the outstanding request asks for an item, whose data follow a "true" trigger
    QString controller; ///< name of the controller that requests go to; empty until one is chosen
    int waitTimerId = 0; ///< the timer that bounds the wait, 0 for none
    bool fileRunning = false;
    QString fileText; ///< the running command file, line ends normalised
    int filePos = 0; ///< where its next line starts
    QString fileController; ///< the controller that its last line went to

    bool takingLines = false; ///< a loop over the file's lines is at work further down the stack
    bool hadFocus = false; ///< the console had the focus when the wait began
    bool reportedActive = false;
    bool reportedFile = false;
    QBasicTimer nextSlice; ///< goes on with a long run of lines after the window had its turn
};
