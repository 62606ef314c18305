#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

#include <csignal>

namespace
{

void hostsHandler(int) { }

quintptr addressOf(void (*handler)(int))
{
    return reinterpret_cast<quintptr>(handler);
}

quintptr handlerOf(int number)
{
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    return addressOf(action.sa_handler);
}

} // namespace

/// The tool closes although a script has changed what signals do, and the host has its own handling back.
class TestClosingSignals : public ClosingScripts
{
    Q_OBJECT

public:
    TestClosingSignals() : ClosingScripts(ClosingLimits::variantRounds()) { }

private:
    void addScripts() override;
    void prepareProcess() override { useDefaultInterruptSignal(); }

private Q_SLOTS:
    void dispositions_data();
    void dispositions();
    void theHostsOwnChangesStay();
};

void TestClosingSignals::addScripts()
{
    row("ignored", R"(
import signal, time
signal.signal(signal.SIGURG, signal.SIG_IGN)
print('reached')
time.sleep(60)
)",
        true);
    row("default", R"(
import signal, time
signal.signal(signal.SIGURG, signal.SIG_DFL)
print('reached')
time.sleep(60)
)",
        true);
    row("ignored again and again", R"(
import signal, time
print('reached')
while True:
    try:
        signal.signal(signal.SIGURG, signal.SIG_IGN)
        time.sleep(60)
    except: pass
)",
        false);
    row("handled by a function", R"(
import signal, time
signal.signal(signal.SIGURG, lambda *arguments: None)
print('reached')
while True: time.sleep(60)
)",
        true);
    row("handled by a function that handles everything", R"(
import signal, time
def handler(*arguments):
    try: time.sleep(0.001)
    except: pass
signal.signal(signal.SIGURG, handler)
print('reached')
while True:
    try: time.sleep(60)
    except: pass
)",
        true);
    row("all signals ignored", R"(
import signal, time
for number in signal.Signals:
    if number not in (signal.SIGKILL, signal.SIGSTOP): signal.signal(number, signal.SIG_IGN)
print('reached')
time.sleep(60)
)",
        true);
    row("blocked in a busy loop", R"(
import signal
signal.pthread_sigmask(signal.SIG_BLOCK, range(1, signal.NSIG))
print('reached')
while True: pass
)",
        false);
    row("blocked at the prompt", R"(
import signal
signal.pthread_sigmask(signal.SIG_BLOCK, range(1, signal.NSIG))
print('reached')
)",
        true);
    row("blocked while input is waited for", R"(
import signal
signal.pthread_sigmask(signal.SIG_BLOCK, range(1, signal.NSIG))
print('reached')
input()
)",
        true);
    row("alarm", R"(
import signal
signal.signal(signal.SIGALRM, lambda *arguments: None)
signal.setitimer(signal.ITIMER_REAL, 0.05)
print('reached')
)",
        true);
    row("alarm again and again", R"(
import signal, time
signal.signal(signal.SIGALRM, lambda *arguments: None)
signal.setitimer(signal.ITIMER_REAL, 0.001, 0.001)
print('reached')
while True: time.sleep(60)
)",
        true);
    row("timers of the processor", R"(
import signal
signal.signal(signal.SIGPROF, lambda *arguments: None)
signal.signal(signal.SIGVTALRM, lambda *arguments: None)
signal.setitimer(signal.ITIMER_PROF, 0.01, 0.01)
signal.setitimer(signal.ITIMER_VIRTUAL, 0.01, 0.01)
print('reached')
while True: pass
)",
        false);
    row("wake-up descriptor", R"(
import signal, socket, time
a, b = socket.socketpair()
a.setblocking(False)
signal.set_wakeup_fd(a.fileno(), warn_on_full_buffer=False)
print('reached')
time.sleep(60)
)",
        true);
    row("waiting for a signal", R"(
import signal
print('reached')
signal.pause()
)",
        true);
}

void TestClosingSignals::dispositions_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("number");

    QTest::newRow("ignored") << QStringLiteral("signal.signal(signal.SIGUSR1, signal.SIG_IGN)") << SIGUSR1;
    QTest::newRow("handled") << QStringLiteral("signal.signal(signal.SIGUSR1, print)") << SIGUSR1;
    QTest::newRow("default") << QStringLiteral("signal.signal(signal.SIGUSR2, signal.SIG_DFL)") << SIGUSR2;
    QTest::newRow("handled in its place")
        << QStringLiteral("signal.signal(signal.SIGUSR2, print)") << SIGUSR2;
    QTest::newRow("what Python itself ignores") << QStringLiteral("pass") << SIGPIPE;
    QTest::newRow("what Python itself handles") << QStringLiteral("pass") << SIGINT;
    QTest::newRow("what interrupts") << QStringLiteral("signal.signal(signal.SIGURG, print)") << SIGURG;
}

/// The host handles SIGUSR2.
void TestClosingSignals::dispositions()
{
    QFETCH(QString, script);
    QFETCH(int, number);
    std::signal(SIGUSR1, SIG_DFL);
    std::signal(SIGUSR2, hostsHandler);
    const quintptr before = handlerOf(number);

    QCOMPARE(test->closeOnceWhile(QStringLiteral("import signal\n%1\nprint('reached')\n").arg(script), true),
             QString());
    QCOMPARE(handlerOf(number), before);
}

void TestClosingSignals::theHostsOwnChangesStay()
{
    std::signal(SIGUSR1, SIG_DFL);
    OpenPythonTool &tool = test->openTool();
    QVERIFY(tool.open());
    std::signal(SIGUSR1, hostsHandler);
    tool.close();
    QCOMPARE(handlerOf(SIGUSR1), addressOf(hostsHandler));
    std::signal(SIGUSR1, SIG_DFL);
}

QTEST_MAIN(TestClosingSignals)

#include "tst_closing_signals.moc"
