#pragma once

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "tests/support/recording_backend.h"

#include <QObject>
#include <QStringList>
#include <QThread>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class TerminalPythonThread;

/// An interpreter host on a worker thread, as a console has it, over a recording backend. It takes down every signal
/// of the host in the order in which they arrive, one text each:
///
///     out <text>            text was written to standard output
///     err <text>            text was written to standard error, or is an error
///     candidates <a> <b>    a completion is finished
///     done                  a line or a file was handled
///     more                  a line was handled, and its statement goes on in the next one
///     input                 a script waits for a line
///     start <text>          the start is finished
///
/// Every operation that sends something to the host returns once the host has handled it, with the signals that came
/// since the one before. GUI thread only.
class EvaluatorUnderTest : public QObject
{
    Q_OBJECT

public:
    EvaluatorUnderTest();
    /// Ends the interpreter, whatever it does.
    ~EvaluatorUnderTest() override;

    RecordingBackend &backend() { return recordingBackend; }
    OrbClient *client() { return access.getOrbClientPtr(); }
    TerminalPythonThread *host() { return evaluator.get(); }
    QThread &thread() { return workerThread; }

    QStringList init();
    QStringList type(const QString &line);
    /// One after the other, with the signals of all of them.
    QStringList type(const QStringList &lines);
    QStringList execute(const QString &file);
    QStringList complete(const QString &word);
    QStringList clear();
    QStringList exit();

    /// What the next calls of readline get, each line without its line feed. A script that asks for more is
    /// interrupted.
    void setAnswers(const QStringList &lines);

    /// What a line writes to standard output, as one text; after it, errors, each as the signal would be taken down.
    QString shownBy(const QString &line);
    /// The same of a file.
    QString shownByFile(const QString &text);

    /// Calls a function on the worker, with the interpreter lock held and not as a script that could be stopped.
    QStringList onWorker(const std::function<void()> &call) { return handled(call); }

    static QString shown(const QStringList &signalTexts);
    /// With "0x?" for every address, as in "<traceback object at 0x?>".
    static QStringList withoutAddresses(const QStringList &signalTexts);

Q_SIGNALS:
    void errandCame();
    void errandDone();

private:
    void connectSignals();
    void take(const QString &signalText);
    void answer();
    void send(const std::function<void()> &errand);
    void runErrand();
    /// Has the worker do something, waits for it, and for the arrival of what it sent.
    QStringList handled(const std::function<void()> &errand);

    RecordingBackend recordingBackend;
    DlDataAccess access{recordingBackend};
    KdMainData mainData{&access};
    QThread workerThread;
    std::unique_ptr<TerminalPythonThread> evaluator; ///< lives on the worker thread, and longer than that
    // Handed over by a lock of the standard library: the thread sanitizer does not see those within Qt's own.
    std::mutex errandMutex;
    std::deque<std::function<void()>> errands;
    QStringList taken;
    QStringList answers;
};
