#include "python_terminal/abandoned_worker.h"

#include "orbclient/live_clients.h"
#include "python_terminal/terminal_python_thread.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimerEvent>

#include <utility>

namespace
{

constexpr int KnockInterval = 20; // ms

/// A thread calls itself finished already while the interpreter is being ended on it.
bool hasEnded(QThread &thread)
{
    return thread.wait(0);
}

} // namespace

AbandonedWorker::AbandonedWorker(std::unique_ptr<TerminalPythonThread> ownEvaluator,
                                 std::unique_ptr<QThread> ownThread)
    : QObject(QCoreApplication::instance()), evaluator(std::move(ownEvaluator)), thread(std::move(ownThread))
{
    // The host's client may go from now on. A call that hangs is not waited for.
    orbclient::withdrawClients();
    knockTimer.start(KnockInterval, this);
}

AbandonedWorker::~AbandonedWorker()
{
    if (hasEnded(*thread))
        return;
    // It still uses them.
    static_cast<void>(evaluator.release());
    static_cast<void>(thread.release());
}

void AbandonedWorker::take(std::unique_ptr<TerminalPythonThread> evaluator, std::unique_ptr<QThread> thread)
{
    new AbandonedWorker(std::move(evaluator), std::move(thread)); // the application owns it
}

void AbandonedWorker::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != knockTimer.timerId()) {
        QObject::timerEvent(event);
    } else if (hasEnded(*thread)) {
        knockTimer.stop();
        deleteLater();
    } else {
        evaluator->knockAgain();
    }
}
