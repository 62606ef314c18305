#include "tests/python_terminal/closing_test.h"

#include <QtTest>

#include <csignal>
#include <memory>

/// The tool closes after a script has ended itself or its output, or wanted to end everything, and although it wants
/// to do much at its end.
class TestClosingExits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { test.reset(); }

    void scripts_data();
    void scripts();

private:
    std::unique_ptr<ClosingTest> test;
};

void TestClosingExits::initTestCase()
{
    // A handler that the process has already is left to it: the test library's would end the test.
    std::signal(SIGINT, SIG_DFL);
    test = std::make_unique<ClosingTest>();
    QCOMPARE(test->prepare(), QString());
}

void TestClosingExits::scripts_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("sleeps");
    const auto row = [](const char *name, const char *script, bool sleeps) {
        QTest::newRow(name) << QString::fromLatin1(script) << sleeps;
    };

    row("sys.exit", "import sys\nprint('reached')\nsys.exit()\n", true);
    row("exit", "print('reached')\nexit()\n", true);
    row("SIGINT", "import os, signal\nprint('reached')\nos.kill(os.getpid(), signal.SIGINT)\n", true);
    row("SIGINT while it sleeps", R"(
import os, signal, time
print('reached')
try:
    os.kill(os.getpid(), signal.SIGINT)
    time.sleep(60)
except KeyboardInterrupt:
    time.sleep(60)
)",
        true);
    row("closed output", "import sys\nprint('reached')\nsys.stdout.close()\n", true);
    row("sleeping exit function", R"(
import atexit, time
atexit.register(time.sleep, 60)
print('reached')
)",
        true);
    row("busy exit function", R"(
import atexit
def f():
    while True: pass
atexit.register(f)
print('reached')
)",
        true);
}

void TestClosingExits::scripts()
{
    QFETCH(QString, script);
    QFETCH(bool, sleeps);
    QCOMPARE(test->closeWhile(script, sleeps, ClosingLimits::rounds()), QString());
}

QTEST_MAIN(TestClosingExits)

#include "tst_closing_exits.moc"
