#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

/// The tool closes whatever a script is doing, and opens again.
class TestClosingStates : public ClosingScripts
{
    Q_OBJECT

public:
    TestClosingStates() : ClosingScripts(ClosingLimits::rounds()) { }

private:
    void addScripts() override;
};

void TestClosingStates::addScripts()
{
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

QTEST_MAIN(TestClosingStates)

#include "tst_closing_states.moc"
