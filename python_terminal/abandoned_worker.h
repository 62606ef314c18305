#pragma once

#include <QBasicTimer>
#include <QObject>

#include <memory>

class QThread;
class TerminalPythonThread;

/// An interpreter that did not end in time, with its thread. It goes on being asked to end; when it has ended it is
/// deleted, with its thread and this object. Until then no other interpreter can start. At the end of the program one
/// that still runs is left as it is, for the operating system to end.
///
/// GUI thread only.
class AbandonedWorker : public QObject
{
    Q_OBJECT

public:
    /// Takes over both. Nobody may be connected to the evaluator any more, and the thread was asked to quit.
    static void take(std::unique_ptr<TerminalPythonThread> evaluator, std::unique_ptr<QThread> thread);
    ~AbandonedWorker() override;

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    AbandonedWorker(std::unique_ptr<TerminalPythonThread> evaluator, std::unique_ptr<QThread> thread);

    std::unique_ptr<TerminalPythonThread> evaluator;
    std::unique_ptr<QThread> thread;
    QBasicTimer knockTimer;
};
