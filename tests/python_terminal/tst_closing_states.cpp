#include "tests/python_terminal/closing_test.h"

#include <QtTest>

#include <memory>

/// The tool closes whatever a script is doing, and opens again.
class TestClosingStates : public QObject
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

void TestClosingStates::initTestCase()
{
    test = std::make_unique<ClosingTest>();
    QCOMPARE(test->prepare(), QString());
}

void TestClosingStates::scripts_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("sleeps");
    const auto row = [](const char *name, const char *script, bool sleeps) {
        QTest::newRow(name) << QString::fromLatin1(script) << sleeps;
    };

    row("idle", "print('reached')\n", true);
    row("busy loop", "print('reached')\nwhile True: pass\n", false);
    row("time.sleep", "import time\nprint('reached')\ntime.sleep(60)\n", true);
    row("input", "print('reached')\ninput()\n", true);
    row("accept", R"(
import socket
s = socket.socket()
s.bind(('127.0.0.1', 0))
s.listen()
print('reached')
s.accept()
)",
        true);
    row("receive", R"(
import socket
a, b = socket.socketpair()
print('reached')
a.recv(1)
)",
        true);
    row("flood", "print('reached')\nwhile True: print(1)\n", false);
    row("daemon that is busy", R"(
import threading, time
def work():
    while True: pass
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        false);
    row("daemon that sleeps", R"(
import threading, time
def work(): time.sleep(60)
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("native threads", R"(
import ctypes
libc = ctypes.CDLL(None)
detached = ctypes.create_string_buffer(64)
libc.pthread_attr_init(detached)
libc.pthread_attr_setdetachstate(detached, 1)
print('reached')
while True:
    thread = ctypes.c_ulong()
    libc.pthread_create(ctypes.byref(thread), detached, libc.usleep, ctypes.c_void_p(1000))
    libc.usleep(1000)
)",
        false);
}

void TestClosingStates::scripts()
{
    QFETCH(QString, script);
    QFETCH(bool, sleeps);
    QCOMPARE(test->closeWhile(script, sleeps, ClosingLimits::rounds()), QString());
}

QTEST_MAIN(TestClosingStates)

#include "tst_closing_states.moc"
