#include "python_terminal/abandoned_worker.h"
#include "tests/python_terminal/closing_test.h"
#include "tests/python_terminal/process_census.h"

#include <QApplication>
#include <QProcess>
#include <QtTest>

#include <memory>

#include <pthread.h>

namespace
{

/// A call that lasts until the test lets it go: no signal ends it.
class LongCall
{
public:
    LongCall() { pthread_mutex_lock(&mutex); }
    ~LongCall() { end(); }
    LongCall(const LongCall &) = delete;
    LongCall &operator=(const LongCall &) = delete;

    /// `library` is "PyDLL", which keeps the interpreter lock during calls, or "CDLL".
    /// The rest runs after the call, come what may.
    QString script(const QString &library, const QString &rest) const
    {
        return QStringLiteral("import atexit, ctypes, orbClient, time\n"
                              "atexit.register(time.sleep, 60)\n"
                              "call = ctypes.%1(None)\n"
                              "mutex = ctypes.c_void_p(%2)\n"
                              "print('reached')\n"
                              "try:\n"
                              "    call.pthread_mutex_lock(mutex)\n"
                              "finally:\n"
                              "    call.pthread_mutex_unlock(mutex)\n"
                              "    %3\n")
            .arg(library)
            .arg(reinterpret_cast<quintptr>(&mutex))
            .arg(rest);
    }

    void end()
    {
        if (!ended)
            pthread_mutex_unlock(&mutex);
        ended = true;
    }

private:
    mutable pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    bool ended = false;
};

int abandonedWorkers()
{
    return qApp->findChildren<AbandonedWorker *>().size();
}

const QLatin1String leaveArgument("leave-an-interpreter");

/// What the test starts as a process of its own: ends the program while an interpreter still runs.
int leaveAnInterpreter(const QString &script)
{
    OpenPythonTool tool;
    if (!tool.open() || !tool.run(script))
        return 1;
    tool.close();
    return abandonedWorkers() == 1 ? 0 : 2;
}

} // namespace

/// What cannot be interrupted is left to itself: the tool closes at once, and Python can be used again when that ends.
class TestClosingLongCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { test.reset(); }

    void leftToItself_data();
    void leftToItself();
    void signalsAreBlocked();
    void isAskedAgainAndAgain();
    void theProgramEnds_data();
    void theProgramEnds();

private:
    std::unique_ptr<ClosingTest> test;
};

void TestClosingLongCalls::initTestCase()
{
    test = std::make_unique<ClosingTest>();
    QCOMPARE(test->prepare(), QString());
}

void TestClosingLongCalls::leftToItself_data()
{
    QTest::addColumn<QString>("library");

    QTest::newRow("with the interpreter lock") << QStringLiteral("PyDLL");
    QTest::newRow("without it") << QStringLiteral("CDLL");
}

void TestClosingLongCalls::leftToItself()
{
    QFETCH(QString, library);
    OpenPythonTool &tool = test->openTool();
    for (int i = 0; i < ClosingLimits::variantRounds(); ++i) {
        LongCall call;
        QVERIFY(tool.open());
        QVERIFY(tool.run(call.script(library, QStringLiteral("orbClient.setDebugLevel(1)"))));
        QTRY_VERIFY(process_census::workerSleeps());
        tool.recordingBackend().clearCalls();
        const qint64 time = tool.close();
        QVERIFY2(time < ClosingLimits::closeTime(), qPrintable(QStringLiteral("%1 ms").arg(time)));
        QCOMPARE(abandonedWorkers(), 1);

        // Python cannot be had meanwhile, and whoever asks for it is told and closes as ever.
        QVERIFY(!tool.openBeside());
        QCOMPARE(tool.text(), QStringLiteral("Failed to initialize Python.> "));
        QVERIFY(tool.close() < ClosingLimits::closeTime());

        call.end();
        QTRY_COMPARE(process_census::workers(), 0);
        QTRY_COMPARE(abandonedWorkers(), 0);
        // The host may have destroyed its client by then.
        QCOMPARE(tool.recordingBackend().calls().size(), 0);
    }
    QCOMPARE(test->whatIsLeft(), QString());
}

/// By the script: nothing but the end of its sleep wakes it.
void TestClosingLongCalls::signalsAreBlocked()
{
    OpenPythonTool &tool = test->openTool();
    QVERIFY(tool.open());
    QVERIFY(tool.run(QStringLiteral("import signal, time\n"
                                    "signal.pthread_sigmask(signal.SIG_BLOCK, range(1, signal.NSIG))\n"
                                    "print('reached')\n"
                                    "time.sleep(2)\n"
                                    "while True: pass\n")));
    QTRY_VERIFY(process_census::workerSleeps());
    QVERIFY(tool.close() < ClosingLimits::closeTime());
    QCOMPARE(abandonedWorkers(), 1);
    QTRY_COMPARE(abandonedWorkers(), 0);
    QCOMPARE(test->whatIsLeft(), QString());
}

/// What comes after the call is stopped as it would have been before.
void TestClosingLongCalls::isAskedAgainAndAgain()
{
    OpenPythonTool &tool = test->openTool();
    for (int i = 0; i < ClosingLimits::variantRounds(); ++i) {
        LongCall call;
        QVERIFY(tool.open());
        QVERIFY(tool.run(call.script(QStringLiteral("CDLL"), QStringLiteral("time.sleep(60)"))));
        QTRY_VERIFY(process_census::workerSleeps());
        QVERIFY(tool.close() < ClosingLimits::closeTime());
        call.end();
        QTRY_COMPARE(abandonedWorkers(), 0);
    }
    QCOMPARE(test->whatIsLeft(), QString());
}

void TestClosingLongCalls::theProgramEnds_data()
{
    QTest::addColumn<QString>("script");

    QTest::newRow("with the interpreter lock") << QStringLiteral("import ctypes\n"
                                                                 "mutex = ctypes.create_string_buffer(256)\n"
                                                                 "call = ctypes.PyDLL(None)\n"
                                                                 "call.pthread_mutex_lock(mutex)\n"
                                                                 "print('reached')\n"
                                                                 "call.pthread_mutex_lock(mutex)\n");
    QTest::newRow("without it") << QStringLiteral("import ctypes\n"
                                                  "mutex = ctypes.create_string_buffer(256)\n"
                                                  "call = ctypes.CDLL(None)\n"
                                                  "call.pthread_mutex_lock(mutex)\n"
                                                  "print('reached')\n"
                                                  "call.pthread_mutex_lock(mutex)\n");
    QTest::newRow("computing") << QStringLiteral(
        "import itertools\n"
        "print('reached')\n"
        "for x in itertools.filterfalse(bool, itertools.repeat(1)): pass\n");
    QTest::newRow("calling the client")
        << QStringLiteral("import collections, itertools, orbClient\n"
                          "calls = map(orbClient.setDebugLevel, itertools.repeat(1))\n"
                          "print('reached')\n"
                          "collections.deque(calls, maxlen=0)\n");
}

/// The program ends as it always does, whatever the interpreter that was left to itself is doing.
void TestClosingLongCalls::theProgramEnds()
{
    QFETCH(QString, script);
    for (int i = 0; i < ClosingLimits::variantRounds() / 2; ++i) {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QCoreApplication::applicationFilePath(), {leaveArgument, script});
        QVERIFY(program.waitForFinished());
        const QByteArray output = program.readAll();
        QVERIFY2(program.exitStatus() == QProcess::NormalExit, output.constData());
        QVERIFY2(program.exitCode() == 0, output.constData());
    }
}

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == leaveArgument)
        return leaveAnInterpreter(arguments.at(2));
    TestClosingLongCalls test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_closing_long_calls.moc"
