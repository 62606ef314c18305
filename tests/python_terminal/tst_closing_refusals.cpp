#include "tests/python_terminal/closing_test.h"

#include <QtTest>

#include <memory>

/// The tool closes although a script handles every exception that would end it, or takes long to end.
class TestClosingRefusals : public QObject
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

void TestClosingRefusals::initTestCase()
{
    test = std::make_unique<ClosingTest>();
    QCOMPARE(test->prepare(), QString());
}

void TestClosingRefusals::scripts_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("sleeps");
    const auto row = [](const char *name, const char *script, bool sleeps) {
        QTest::newRow(name) << QString::fromLatin1(script) << sleeps;
    };

    row("except around a busy loop", R"(
print('reached')
while True:
    try:
        while True: pass
    except: pass
)",
        false);
    row("except around time.sleep", R"(
import time
print('reached')
while True:
    try: time.sleep(60)
    except: pass
)",
        true);
    row("except around input", R"(
print('reached')
while True:
    try: input()
    except: pass
)",
        true);
    row("except around accept", R"(
import socket
s = socket.socket()
s.bind(('127.0.0.1', 0))
s.listen()
print('reached')
while True:
    try: s.accept()
    except: pass
)",
        true);
    row("except around receive", R"(
import socket
a, b = socket.socketpair()
print('reached')
while True:
    try: a.recv(1)
    except: pass
)",
        true);
    row("busy finally", R"(
import time
try:
    print('reached')
    time.sleep(60)
finally:
    while True: pass
)",
        false);
    row("sleeping finally", R"(
import time
try:
    print('reached')
    time.sleep(60)
finally:
    time.sleep(60)
)",
        true);
}

void TestClosingRefusals::scripts()
{
    QFETCH(QString, script);
    QFETCH(bool, sleeps);
    QCOMPARE(test->closeWhile(script, sleeps, ClosingLimits::rounds()), QString());
}

QTEST_MAIN(TestClosingRefusals)

#include "tst_closing_refusals.moc"
