#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

/// The tool closes whatever threads a script has started, and nothing of them is left.
class TestClosingThreads : public ClosingScripts
{
    Q_OBJECT

public:
    TestClosingThreads() : ClosingScripts(ClosingLimits::variantRounds()) { }

private:
    void addScripts() override;

private Q_SLOTS:
    void sleepOfAThread();
};

void TestClosingThreads::addScripts()
{
    row("daemon that sleeps beside an idle prompt", R"(
import threading, time
def work(): time.sleep(60)
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
)",
        true);
    row("daemon that is busy beside an idle prompt", R"(
import threading, time
def work():
    while True: pass
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
)",
        false);
    row("daemon that imported sleep", R"(
import threading, time
from time import sleep
def work(): sleep(60)
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("daemon that polls", R"(
import threading, time
def work():
    while True: time.sleep(0.001)
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("daemon that handles everything", R"(
import threading, time
def work():
    while True:
        try: time.sleep(60)
        except: pass
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("busy daemon that handles everything", R"(
import threading, time
def work():
    while True:
        try:
            while True: pass
        except: pass
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        false);
    row("daemon with a busy finally", R"(
import threading, time
def work():
    try: time.sleep(60)
    finally:
        while True: pass
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("daemon that waits for an event", R"(
import threading, time
def work(): threading.Event().wait()
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("daemon that waits for an event for a time", R"(
import threading, time
def work(): threading.Event().wait(60)
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("daemon that waits for a queue", R"(
import threading, time
import queue
def work():
    q = queue.Queue()
    while True: q.get()
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("daemon that waits for a lock", R"(
import threading, time
def work():
    lock = threading.Lock()
    lock.acquire()
    lock.acquire()
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("daemon that accepts", R"(
import threading, time
import socket
def work():
    s = socket.socket()
    s.bind(("127.0.0.1", 0))
    s.listen()
    s.accept()
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("daemon that receives", R"(
import threading, time
import socket
def work():
    a, b = socket.socketpair()
    a.recv(1)
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("daemon that prints", R"(
import threading, time
def work():
    while True: print(1)
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        false);
    row("daemon that prints beside a script that prints", R"(
import threading, time
def work():
    while True: print(1)
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
while True: print(2)
)",
        false);
    row("daemon that asks", R"(
import threading, time
def work():
    print('reached')
    input()
t = threading.Thread(target=work, daemon=True)
t.start()
time.sleep(60)
)",
        true);
    row("daemon that starts others", R"(
import threading, time
def work():
    while True:
        threading.Thread(target=time.sleep, args=(60,), daemon=True).start()
        time.sleep(0.01)
t = threading.Thread(target=work, daemon=True)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("thread that is busy", R"(
import threading, time
def work():
    while True: pass
t = threading.Thread(target=work, daemon=False)
t.start()

print('reached')
time.sleep(60)
)",
        false);
    row("thread that sleeps", R"(
import threading, time
def work(): time.sleep(60)
t = threading.Thread(target=work, daemon=False)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("thread that handles everything", R"(
import threading, time
def work():
    while True:
        try: time.sleep(60)
        except: pass
t = threading.Thread(target=work, daemon=False)
t.start()

print('reached')
time.sleep(60)
)",
        true);
    row("thread that is waited for", R"(
import threading, time
def work(): time.sleep(60)
t = threading.Thread(target=work, daemon=False)
t.start()

print('reached')
t.join()
)",
        true);
    row("thread that is done", R"(
import threading, time
def work(): pass
t = threading.Thread(target=work, daemon=False)
t.start()
t.join()
print('reached')
time.sleep(60)
)",
        true);
    row("many threads", R"(
import threading, time
for i in range(30): threading.Thread(target=time.sleep, args=(60,), daemon=i % 2 == 0).start()
print('reached')
time.sleep(60)
)",
        true);
    row("timer", R"(
import threading, time
threading.Timer(60, print).start()
print('reached')
time.sleep(60)
)",
        true);
    row("bare threads", R"(
import _thread, time
_thread.start_new_thread(time.sleep, (60,))
print('reached')
time.sleep(60)
)",
        true);
    row("switches that take long", R"(
import _thread, sys
def work():
    while True: pass
sys.setswitchinterval(100)
_thread.start_new_thread(work, ())
print('reached')
)",
        false);
}

/// It can be ended, and is otherwise what it always was.
void TestClosingThreads::sleepOfAThread()
{
    OpenPythonTool &tool = test->openTool();
    QVERIFY(tool.open());
    QVERIFY(
        tool.run(QStringLiteral("import threading, time\n"
                                "def work():\n"
                                "    for length in (-1, 'x', None, 1e300):\n"
                                "        try: time.sleep(length)\n"
                                "        except Exception as e: print(type(e).__name__)\n"
                                "    start = time.monotonic()\n"
                                "    time.sleep(0.05)\n"
                                "    time.sleep(0)\n"
                                "    print('slept' if time.monotonic() - start >= 0.05 else 'woke early')\n"
                                "t = threading.Thread(target=work)\n"
                                "t.start()\n"
                                "t.join()\n"
                                "print('reached')\n")));
    QVERIFY2(tool.text().contains(
                 QLatin1String("\nValueError\nTypeError\nTypeError\nOverflowError\nslept\nreached\n")),
             qPrintable(tool.text()));
    QVERIFY(tool.close() < ClosingLimits::closeTime());
    QCOMPARE(test->whatIsLeft(), QString());
}

QTEST_MAIN(TestClosingThreads)

#include "tst_closing_threads.moc"
