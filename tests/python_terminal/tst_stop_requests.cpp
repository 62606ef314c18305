#include "python_terminal/stop_requests.h"

#include "tests/support/python_interpreter.h"
#include "tests/support/test_thread.h"

#include <QtTest>

#include <unistd.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

using python_terminal::RunningPython;
using python_terminal::StopRequests;

/// How another thread stops what Python runs on this one.
class TestStopRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void nothingIsInterruptedWhileNothingRuns();
    void nothingIsInterruptedInInternalCode();
    void interruptEndsWhatRuns_data();
    void interruptEndsWhatRuns();
    void interruptIsForOneScript();
    void lateInterruptIsForgotten();
    void interruptEndsOneWait();
    void closeEndsWhatRuns_data();
    void closeEndsWhatRuns();
    void closeIsForGood();
    void closeEndsEveryWait();
    void closeLetsAScriptCleanUp();
    void cleanUpHasItsTime();
    void raisesWhatWasAskedFor();
    void knockMayComeAtAnyTime();
    void pendingCallsStopWithoutSignals();
    void waitEndsWhenItIsDone();

private:
    /// Runs statements as a script while `ask` is called again and again on another thread, until they are through; from
    /// the moment on at which they call start(), when they do. Empty, or the name of the exception that ended them.
    QString runWhile(const QString &statements, const std::function<void()> &ask,
                     StopRequests::Code code = StopRequests::Code::Script);
    static QString run(const QString &statements);

    std::unique_ptr<PythonInterpreter> python;
    std::unique_ptr<StopRequests> stop;
};

namespace
{

const QString BusyLoop = QStringLiteral("while True: pass");
const QString NeverEnding = QStringLiteral("import time\ntime.sleep(1000)");

} // namespace

void TestStopRequests::initTestCase()
{
    python = std::make_unique<PythonInterpreter>();
}

void TestStopRequests::cleanupTestCase()
{
    python.reset();
}

void TestStopRequests::init()
{
    stop = std::make_unique<StopRequests>();
    stop->attach();
}

void TestStopRequests::cleanup()
{
    PyEval_SetTrace(nullptr, nullptr);
    stop->detach();
    stop.reset();
}

QString TestStopRequests::runWhile(const QString &statements, const std::function<void()> &ask,
                                   StopRequests::Code code)
{
    std::array<int, 2> startPipe{};
    if (pipe(startPipe.data()) != 0)
        return QStringLiteral("no pipe");
    std::mutex mutex;
    std::condition_variable end;
    bool ended = false;
    TestThread asker([&] {
        constexpr std::chrono::milliseconds Interval(1);
        char byte = 0;
        if (read(startPipe[0], &byte, 1) != 1)
            return;
        std::unique_lock<std::mutex> lock(mutex);
        while (!end.wait_for(lock, Interval, [&] { return ended; }))
            ask();
    });
    const QString prologue = QStringLiteral("import os\ndef start(): os.write(%1, b's')\n").arg(startPipe[1]);
    python->exec(prologue);
    if (!statements.contains(QLatin1String("start()")))
        python->exec(QStringLiteral("start()"));
    QString result;
    {
        const RunningPython running(*stop, code);
        result = run(statements);
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ended = true;
    }
    end.notify_one();
    close(startPipe[1]);
    asker.wait();
    close(startPipe[0]);
    return result;
}

/// As PythonInterpreter::exec, but what stopped the script must not stop the telling of it as well.
QString TestStopRequests::run(const QString &statements)
{
    PyObject *names = PyModule_GetDict(PyImport_AddModule("__main__"));
    const PyRef result(PyRun_String(statements.toUtf8().constData(), Py_file_input, names, names));
    PyObject *type = nullptr;
    PyObject *value = nullptr;
    PyObject *traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    const PyRef ownedType(type);
    const PyRef ownedValue(value);
    const PyRef ownedTraceback(traceback);
    PyEval_SetTrace(nullptr, nullptr);
    return type != nullptr ? QString::fromLatin1(reinterpret_cast<PyTypeObject *>(type)->tp_name) : QString();
}

void TestStopRequests::nothingIsInterruptedWhileNothingRuns()
{
    QVERIFY(!stop->interrupt());
    QVERIFY(!stop->isInterruptPending());
    QVERIFY(!stop->isWanted());
    const RunningPython running(*stop, StopRequests::Code::Script);
    QCOMPARE(python->exec(QStringLiteral("for i in range(100000): pass")), QString());
}

void TestStopRequests::nothingIsInterruptedInInternalCode()
{
    bool accepted = false;
    QCOMPARE(runWhile(
                 QStringLiteral("for i in range(100000): pass"),
                 [&] {
                     if (stop->interrupt())
                         accepted = true;
                 },
                 StopRequests::Code::Internal),
             QString());
    QVERIFY(!accepted);
    QVERIFY(!stop->isInterruptPending());
}

void TestStopRequests::interruptEndsWhatRuns_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("statements");

    const auto row = [](const char *name, const char *before, const char *statements) {
        QTest::newRow(name) << QString::fromLatin1(before) << QString::fromLatin1(statements);
    };
    row("busy loop", "", "while True: pass");
    row("sleep", "import time", "time.sleep(1000)");
    row("loop that catches errors", "",
        "while True:\n    try:\n        1 / 0\n    except Exception:\n        pass");
    row("endless generator", "", "any(x for x in iter(int, 1))");
    row("function", "def f():\n    while True: pass", "f()");
    row("socket", "import socket\na, b = socket.socketpair()", "a.recv(1)");
    row("select", "import select", "select.select([], [], [], 1000)");
    // This process ends with its standard input, so that none is ever left behind.
    row("process", "import subprocess\nchild = subprocess.Popen(['cat'], stdin=subprocess.PIPE)",
        "try:\n    child.wait()\nfinally:\n    child.communicate()");
    row("lock", "import threading\nlock = threading.Lock()\nlock.acquire()", "lock.acquire()");
    row("queue", "import queue\nempty = queue.Queue()", "empty.get()");
}

void TestStopRequests::interruptEndsWhatRuns()
{
    QFETCH(QString, before);
    QFETCH(QString, statements);
    bool asked = false;
    const QString result = runWhile(before + QStringLiteral("\nstart()\n") + statements, [&] {
        if (!asked)
            asked = stop->interrupt();
        else if (stop->isInterruptPending())
            stop->knock();
    });
    QCOMPARE(result, QStringLiteral("KeyboardInterrupt"));
    QVERIFY(!stop->isInterruptPending());
    QVERIFY(!stop->isClosing());
}

/// Asked for once, noticed once: a script may catch it and go on.
void TestStopRequests::interruptIsForOneScript()
{
    bool asked = false;
    const auto askOnce = [&] {
        if (!asked)
            asked = stop->interrupt();
        stop->knock();
    };
    QCOMPARE(runWhile(QStringLiteral("try:\n"
                                     "    start()\n"
                                     "    while True: pass\n"
                                     "except KeyboardInterrupt:\n"
                                     "    for i in range(100000): pass\n"
                                     "    caught = True"),
                      askOnce),
             QString());
    QCOMPARE(python->eval(QStringLiteral("caught")), QStringLiteral("True"));
    QCOMPARE(runWhile(QStringLiteral("for i in range(100000): pass"), askOnce), QString());
}

void TestStopRequests::lateInterruptIsForgotten()
{
    stop->enter(StopRequests::Code::Script);
    QVERIFY(stop->interrupt());
    QVERIFY(stop->isInterruptPending());
    stop->leave();
    QVERIFY(!stop->isInterruptPending());
    const RunningPython running(*stop, StopRequests::Code::Script);
    QCOMPARE(python->exec(QStringLiteral("for i in range(100000): pass")), QString());
}

void TestStopRequests::interruptEndsOneWait()
{
    const RunningPython running(*stop, StopRequests::Code::Script);
    const TestThread asker([this] { stop->interrupt(); });
    std::unique_lock<std::mutex> lock(stop->mutex);
    stop->waitUnlessStopped(lock, [] { return false; });
    lock.unlock();
    QVERIFY(stop->isWanted());
    QVERIFY(stop->raise());
    QCOMPARE(PythonInterpreter::takeException(), QStringLiteral("KeyboardInterrupt"));
    QVERIFY(!stop->isWanted());
}

void TestStopRequests::closeEndsWhatRuns_data()
{
    QTest::addColumn<QString>("statements");

    QTest::newRow("busy loop") << BusyLoop;
    QTest::newRow("sleep") << NeverEnding;
    QTest::newRow("busy loop that catches everything")
        << QStringLiteral("while True:\n    try:\n        while True: pass\n    except:\n        pass");
    QTest::newRow("sleep that catches everything") << QStringLiteral(
        "import time\nwhile True:\n    try:\n        time.sleep(1000)\n    except:\n        pass");
    QTest::newRow("a finally without an end")
        << QStringLiteral("try:\n    while True: pass\nfinally:\n    while True: pass");
    QTest::newRow("nested functions that catch everything")
        << QStringLiteral("def f():\n    while True:\n        try: g()\n        except BaseException: pass\n"
                          "def g():\n    while True:\n        try: h()\n        except BaseException: pass\n"
                          "def h():\n    while True: pass\nf()");
    QTest::newRow("a signal that is ignored")
        << QStringLiteral("import signal, time\nsignal.signal(signal.SIGURG, signal.SIG_IGN)\nwhile True:\n"
                          "    try:\n        time.sleep(1000)\n    except Exception:\n        pass");
    QTest::newRow("a signal that is somebody else's")
        << QStringLiteral("import signal, time\nsignal.signal(signal.SIGURG, lambda *a: None)\n"
                          "while True:\n    time.sleep(1000)");
    QTest::newRow("socket") << QStringLiteral("import socket\na, b = socket.socketpair()\na.recv(1)");
    QTest::newRow("a trace function of its own")
        << QStringLiteral("import sys\nsys.settrace(lambda *a: None)\nwhile True:\n"
                          "    try:\n        while True: pass\n    except: pass");
}

void TestStopRequests::closeEndsWhatRuns()
{
    QFETCH(QString, statements);
    QCOMPARE(runWhile(statements, [this] { stop->close(); }), QStringLiteral("SystemExit"));
    QVERIFY(stop->isClosing());
}

void TestStopRequests::closeIsForGood()
{
    stop->close();
    for (const StopRequests::Code code : {StopRequests::Code::Script, StopRequests::Code::Internal})
        QCOMPARE(runWhile(
                     BusyLoop, [this] { stop->knock(); }, code),
                 QStringLiteral("SystemExit"));
    QVERIFY(stop->isWanted());
}

void TestStopRequests::closeEndsEveryWait()
{
    stop->close();
    const RunningPython running(*stop, StopRequests::Code::Script);
    for (int count = 0; count < 3; ++count) {
        std::unique_lock<std::mutex> lock(stop->mutex);
        stop->waitUnlessStopped(lock, [] { return false; });
    }
    QVERIFY(stop->isClosing());
}

/// What should leave the hardware as it ought to be runs to its end when that is near.
void TestStopRequests::closeLetsAScriptCleanUp()
{
    QCOMPARE(runWhile(QStringLiteral("cleaned = False\n"
                                     "try:\n"
                                     "    start()\n"
                                     "    while True: pass\n"
                                     "finally:\n"
                                     "    cleaned = True"),
                      [this] { stop->close(); }),
             QStringLiteral("SystemExit"));
    QCOMPARE(python->eval(QStringLiteral("cleaned")), QStringLiteral("True"));
}

void TestStopRequests::cleanUpHasItsTime()
{
    constexpr std::chrono::milliseconds Time(200);
    stop->close();
    const RunningPython running(*stop, StopRequests::Code::Internal);
    const auto start = std::chrono::steady_clock::now();
    stop->allowCleanUp(Time);
    QVERIFY(!stop->raise());
    QCOMPARE(runWhile(
                 BusyLoop, [this] { stop->knock(); }, StopRequests::Code::Internal),
             QStringLiteral("SystemExit"));
    QVERIFY(std::chrono::steady_clock::now() - start >= Time);
}

void TestStopRequests::raisesWhatWasAskedFor()
{
    const RunningPython running(*stop, StopRequests::Code::Script);
    QVERIFY(!stop->raise());
    QVERIFY(stop->interrupt());
    QVERIFY(stop->raise());
    QCOMPARE(PythonInterpreter::takeException(), QStringLiteral("KeyboardInterrupt"));
    QVERIFY(!stop->raise());
    // A close takes the place of an interrupt.
    QVERIFY(stop->interrupt());
    stop->close();
    QVERIFY(stop->raise());
    QCOMPARE(PythonInterpreter::takeException(), QStringLiteral("SystemExit"));
}

void TestStopRequests::knockMayComeAtAnyTime()
{
    stop->knock();
    stop->close();
    stop->knock();
    stop->detach();
    stop->knock();
    {
        // Nobody is attached, so that nothing is stopped.
        const RunningPython running(*stop, StopRequests::Code::Script);
        stop->knock();
        QCOMPARE(python->exec(QStringLiteral("for i in range(100000): pass")), QString());
    }
    stop = std::make_unique<StopRequests>();
    stop->attach();
    const RunningPython running(*stop, StopRequests::Code::Script);
    QCOMPARE(python->exec(QStringLiteral("for i in range(100000): pass")), QString());
}

void TestStopRequests::pendingCallsStopWithoutSignals()
{
    stop->endSignals();
    QCOMPARE(python->exec(
                 QStringLiteral("import signal\nsignal.signal(signal.SIGURG, lambda *a: arrived.append(1))\n"
                                "arrived = []")),
             QString());
    QCOMPARE(runWhile(BusyLoop, [this] { stop->close(); }), QStringLiteral("SystemExit"));
    QCOMPARE(python->eval(QStringLiteral("arrived")), QStringLiteral("[]"));
}

void TestStopRequests::waitEndsWhenItIsDone()
{
    bool arrived = false;
    const TestThread supplier([&] {
        {
            const std::lock_guard<std::mutex> lock(stop->mutex);
            arrived = true;
        }
        stop->wakeUp.notify_all();
    });
    std::unique_lock<std::mutex> lock(stop->mutex);
    stop->waitUnlessStopped(lock, [&] { return arrived; });
    QVERIFY(arrived);
    QVERIFY(!stop->isWanted());
}

QTEST_GUILESS_MAIN(TestStopRequests)
#include "tst_stop_requests.moc"
