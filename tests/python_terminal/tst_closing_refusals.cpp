#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

/// The tool closes although a script handles every exception that would end it, or takes long to end.
class TestClosingRefusals : public ClosingScripts
{
    Q_OBJECT

public:
    TestClosingRefusals() : ClosingScripts(ClosingLimits::rounds()) { }

private:
    void addScripts() override;
};

void TestClosingRefusals::addScripts()
{
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

QTEST_MAIN(TestClosingRefusals)

#include "tst_closing_refusals.moc"
