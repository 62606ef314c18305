#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

/// The tool closes in whatever call a script is, and whatever it has done to its output.
class TestClosingCalls : public ClosingScripts
{
    Q_OBJECT

public:
    TestClosingCalls() : ClosingScripts(ClosingLimits::variantRounds()) { }

private:
    void addScripts() override;
};

void TestClosingCalls::addScripts()
{
    row("busy loop in a function", R"(
def spin():
    i = 0
    while True:
        i += 1
print('reached')
spin()
)",
        false);
    row("reading lines", "import sys\nprint('reached')\nfor line in sys.stdin: pass\n", true);
    row("lock", "import threading\nl = threading.Lock()\nl.acquire()\nprint('reached')\nl.acquire()\n", true);
    row("queue", "import queue\nprint('reached')\nqueue.Queue().get()\n", true);
    row("event with a time", "import threading\nprint('reached')\nthreading.Event().wait(60)\n", true);
    row("select", R"(
import select, socket
a, b = socket.socketpair()
print('reached')
select.select([a], [], [])
)",
        true);
    row("poll", R"(
import select, socket
a, b = socket.socketpair()
p = select.poll()
p.register(a)
print('reached')
while True: p.poll(60000)
)",
        false);
    row("read of a pipe", R"(
import os
r, w = os.pipe()
r, w = os.fdopen(r), os.fdopen(w, 'w')
print('reached')
r.read()
)",
        true);
    row("pipe that nobody reads", R"(
import os
r, w = os.pipe()
r, w = os.fdopen(r), os.fdopen(w, 'w')
print('reached')
while True: os.write(w.fileno(), b'x' * 4096)
)",
        true);
    row("child process", "import subprocess\nprint('reached')\nsubprocess.run(['sleep', '60'])\n", true);
    row("forked process", R"(
import os, time
pid = os.fork()
if pid == 0:
    time.sleep(0.2)
    os._exit(0)
print('reached')
os.waitpid(pid, 0)
time.sleep(60)
)",
        true);
    row("asyncio", R"(
import asyncio
async def main():
    print('reached')
    await asyncio.sleep(60)
asyncio.run(main())
)",
        true);
    row("asyncio with a handler of a signal", R"(
import asyncio, signal
async def main():
    asyncio.get_event_loop().add_signal_handler(signal.SIGUSR1, print)
    print('reached')
    await asyncio.sleep(60)
asyncio.run(main())
)",
        true);
    row("regular expression", "import re\nprint('reached')\nre.match('(a+)+b', 'a' * 40)\n", false);
    row("faulthandler", R"(
import faulthandler, tempfile, time
f = tempfile.TemporaryFile()
faulthandler.enable(f)
faulthandler.dump_traceback_later(60, file=f)
print('reached')
time.sleep(60)
)",
        true);

    // What a script writes.
    row("flood of errors", "import sys\nprint('reached')\nwhile True: sys.stderr.write('x')\n", false);
    row("flood of long lines", "print('reached')\nwhile True: print('x' * 90000)\n", false);
    row("flood of empty texts", "print('reached')\nwhile True: print('', end='')\n", false);
    row("one long line", "print('reached')\nprint('x' * 10000000)\n", false);
    row("output replaced",
        "import sys, io\nprint('reached')\nsys.stdout = io.StringIO()\nwhile True: print(1)\n", false);
    row("output deleted", "import sys\nprint('reached')\ndel sys.stdout, sys.stderr\n", true);

    // A script that ends, or wants to end everything.
    row("exit with a text", "print('reached')\nexit('bye')\n", true);
    row("recursion", R"(
def f(): f()
print('reached')
while True:
    try: f()
    except RecursionError: pass
)",
        false);
}

QTEST_MAIN(TestClosingCalls)

#include "tst_closing_calls.moc"
