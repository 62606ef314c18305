#pragma once

#include "command_terminal/terminal_console.h"

#include <QBasicTimer>
#include <QVector>

class KdParentEvent;
class QThread;
class TerminalPythonThread;

/// The interactive Python console: its lines, its requests for completion and its answers to input() go to an
/// interpreter on a worker thread, whose output comes back as signals. While a statement runs the console is disabled.
/// GUI thread only.
class TerminalPythonConsole : public TerminalConsole
{
    Q_OBJECT

public:
    /// What the console is doing.
    enum class Activity
    {
        Starting,
        Failed, ///< there is no interpreter
        Idle, ///< it takes a line
        Running,
        WaitingForInput, ///< a statement runs, and waits for a line
        Stopped,
    };
    Q_ENUM(Activity)

    /// Starts the interpreter. `parent` owns the console; main data, their client and the observer outlive it.
    TerminalPythonConsole(QWidget *parent, KdMainData &mainData, KdObserver &observer);
    ~TerminalPythonConsole() override;

    void executeCommand(QString &command) override;
    void requestCompletion(QString &prefix) override;
    void submitInput(QString &text) override;

    Activity activity() const;
    /// The same, by the name of its value, for a host that does not know the class.
    Q_INVOKABLE QString activityName() const;

    /// Shows the banner alone, and forgets the user's names.
    void resetConsole();

    /// Executes a text as the contents of a file.
    void executeFile(const QString &text);

    /// Ends the interpreter, whatever it is doing, and for good. Takes at most a fifth of a second; an interpreter that
    /// does not end by then is left to itself and ends when it can.
    void stopEvaluator();

    /// Ends the running statement or file with a KeyboardInterrupt; while nothing runs, drops a statement that is not
    /// complete yet.
    void interrupt();

    /// The host's own events; only the one that ends the host's tools means anything here.
    void parentEventOccured(KdParentEvent &event);

Q_SIGNALS:
    void initEvaluator();
    void exitEvaluator();
    void clearEvaluator();
    void returnPressed(const QString &cmd);
    void complete(const QString &cmd);
    void executeFileInThread(const QString &txt);

public Q_SLOTS:
    void onInitialized(const QString &text);
    void onInsertErrorText(const QString &msg);
    void onInsertSuccessText(const QString &msg);
    void onCompleted(const QStringList &cc);
    void onEvaluationComplete(bool flagMultilineCmd);
    void onWaitingForStdIn();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void startEvaluator();
    void connectEvaluator();
    void beginEvaluating();
    void takeFocusBack();
    void leaveInputPrompt();
    /// Shows those of the candidates that go on from the word before the cursor: all of them when they answer that word,
    /// what is left of them when they answered an earlier one, none when the word is one of them or is gone.
    void offer(const QStringList &candidates);
    /// Whether the word that was asked for last is still in front of the cursor.
    bool isWordThere() const;
    void reportBusy(bool busy);
    void collectOutput(const QString &text, bool isError);
    void showSomeOutput();
    void showAllOutput();
    void knock();
    bool waitForWorker(int milliseconds);

    TerminalPythonThread *evaluator = nullptr; ///< lives on the worker thread; null once it is stopped
    QThread *workerThread = nullptr; ///< likewise
    QString banner;
    bool evaluating = false; ///< a statement or a file runs, and the console is disabled
    int filesToFollow = 0; ///< handed over while that runs
    bool hadFocus = false; ///< the console had the focus when that began
    bool stopped = false;
    bool statementPending = false; ///< the last prompt asked for the continuation of a statement

    bool interruptWanted = false; ///< what is to be interrupted has not begun yet

    QStringList offered; ///< the candidates that were shown last

    QVector<ConsoleOutput> output; ///< written and not shown yet
    QBasicTimer outputTimer;
    QBasicTimer knockTimer; ///< runs while an interrupt has not been noticed
};
