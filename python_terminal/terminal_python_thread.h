#pragma once

#include "orbclient/py_ref.h"
#include "python_terminal/process_settings.h"
#include "python_terminal/stop_requests.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>

class KdMainData;

/// Owns the Python 3.7 interpreter of one Python terminal. It lives on a worker thread, which is the only one that
/// touches the interpreter: slots run there, and everything that they find out travels back as signals. The few
/// operations for other threads say so.
///
/// There is one interpreter in a process. Whoever starts first has it until its onExit is done; a start in between
/// fails as any other failed start does, and disturbs nothing.
class TerminalPythonThread : public QObject
{
    Q_OBJECT

public:
    /// `parent` is always null: the object moves to a thread of its own. Main data outlive it.
    TerminalPythonThread(QObject *parent, KdMainData *mainData);
    ~TerminalPythonThread() override;

    /// What `initialized` brings when there is no interpreter.
    static QString failureText();

    // For the GUI thread

    /// Supplies a line, without its line feed, to a waiting readline.
    void setStdInText(const QString &text);
    /// The console took texts of this weight that were written: the worker never runs far ahead of it.
    void textsTaken(int weight);
    /// What a text counts: 1, and more when it is long.
    static int weightOf(const QString &text);
    /// Ends what runs at the moment with a KeyboardInterrupt; false, and nothing happens, when nothing runs.
    bool interrupt();
    /// Ends whatever runs, now or later; the interpreter is then only good for onExit. May be called again and again,
    /// and is, until the worker has noticed.
    void requestClose();
    /// Asks again for what was asked for and has not been noticed. True while there is anything of that kind.
    bool knockAgain();

    // For the stream objects, on the thread that runs Python, with the interpreter lock held

    /// Text that Python wrote. Blocks, without the lock, while the console is more than 1,000 texts, or one million
    /// characters, behind.
    void takeOutput(const QString &text, bool isError);
    /// Waits for a line, with the lock. False with an exception when the wait was stopped instead.
    bool readStdInLine(QString &line);

Q_SIGNALS:
    void insertErrorText(const QString &msg);
    void insertSuccessText(const QString &msg);
    void completed(const QStringList &cc);
    void evaluationComplete(bool flagMultilineCmd); ///< true: the statement goes on in the next line
    void waitingForStdIn();
    void initialized(const QString &txt); ///< the banner, or why there is none

public Q_SLOTS:
    void onReturnPressed(const QString &cmd);
    void onComplete(const QString &cmd);
    void onExecuteFile(const QString &txt);
    void onClear();
    void onInit();
    void onExit();

public:
    /// Drops the lines of a statement that is not complete yet. A slot by use: queued to the worker.
    Q_INVOKABLE void dropPendingCommand();

private:
    enum class StatementKind
    {
        Single,
        File,
    };

    void initialize();
    bool runStatement(const QString &text, StatementKind kind);
    PyRef evaluated(const PyRef &code);
    void setUpNamespace();
    void createRedirectors();
    QString banner() const;
    QString takeErrorText(bool &incomplete);
    bool completionOf(const QString &cmd, int state, QString &candidate);
    void runExitFunctions();
    void forgetNames();
    void endInterpreter();
    void releaseObjects();
    bool canRun() const { return isInitialized && !isFinalized && !stop.isClosing(); }

    KdMainData *mainData;
    PyObject *globals = nullptr; ///< of the module __main__; borrowed
    PyObject *locals = nullptr; ///< owned; every statement runs with it
    PyObject *stdoutRedirector = nullptr; ///< these three are owned
    PyObject *stderrRedirector = nullptr;
    PyObject *stdinRedirector = nullptr;
    QString captureBuffer; ///< what was written to standard output while capturing
    bool captureMode = false;
    bool isInitialized = false; ///< stays true after the interpreter's end
    bool isFinalized = false;
    QString pendingCommand; ///< a statement that is not complete yet, each line with its line feed

    python_terminal::ProcessSettings processSettings;
    python_terminal::StopRequests stop; ///< its mutex guards the next three
    QString stdinLine;
    bool stdinLineArrived = false;
    int weightUnderWay = 0; ///< of the texts that the console has not taken yet
};
