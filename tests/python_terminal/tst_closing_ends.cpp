#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

/// What a script has registered for its end runs when the tool closes, but not for long.
class TestClosingEnds : public ClosingScripts
{
    Q_OBJECT

public:
    TestClosingEnds() : ClosingScripts(ClosingLimits::variantRounds()) { }

private:
    void addScripts() override;
};

void TestClosingEnds::addScripts()
{
    row("exit function that handles everything", R"(
import atexit, time
def f():
    while True:
        try: time.sleep(60)
        except: pass
atexit.register(f)
print('reached')
)",
        true);
    row("exit function that asks", R"(
import atexit
atexit.register(input)
print('reached')
)",
        true);
    row("exit function that prints", R"(
import atexit
def f():
    while True: print(1)
atexit.register(f)
print('reached')
)",
        true);
    row("exit function after exit function", R"(
import atexit, time
for i in range(5): atexit.register(time.sleep, 60)
print('reached')
)",
        true);
    row("exit function beside a script that sleeps", R"(
import atexit, time
atexit.register(time.sleep, 60)
print('reached')
time.sleep(60)
)",
        true);
    row("exit function that starts a thread", R"(
import atexit, threading, time
def f():
    threading.Thread(target=time.sleep, args=(60,)).start()
atexit.register(f)
print('reached')
)",
        true);
    row("exit function that exits", R"(
import atexit, sys
atexit.register(sys.exit)
print('reached')
)",
        true);
    row("object that sleeps at its end", R"(
import time
class C:
    def __del__(self): time.sleep(60)
x = [C() for i in range(10)]
print('reached')
)",
        true);
    row("object that is busy at its end", R"(
class C:
    def __del__(self):
        while True: pass
x = [C() for i in range(10)]
print('reached')
)",
        true);
    row("object in a cycle", R"(
import time
class C:
    def __init__(self): self.me = self
    def __del__(self): time.sleep(60)
x = [C() for i in range(10)]
print('reached')
)",
        true);
    row("object that handles everything at its end", R"(
import time
class C:
    def __del__(self):
        while True:
            try: time.sleep(60)
            except: pass
x = C()
print('reached')
)",
        true);
    row("global object", R"(
import time
class C:
    def __del__(self): time.sleep(60)
def f():
    global x
    x = C()
f()
print('reached')
)",
        true);
    row("object that another module holds", R"(
import string
class C:
    def __del__(self):
        while True: pass
string.held = C()
print('reached')
)",
        true);
    row("object that comes back", R"(
class C:
    def __del__(self):
        global kept
        kept = self
x = C()
print('reached')
)",
        true);
    row("objects without end", R"(
class C:
    def __del__(self):
        global x
        x = C()
x = C()
print('reached')
)",
        true);
    row("call at an end", R"(
import time, weakref
class C: pass
x = C()
weakref.finalize(x, time.sleep, 60)
print('reached')
)",
        true);
    row("object that ends in a loop", R"(
class C:
    def __del__(self):
        try: sum(range(1000))
        except: pass
print('reached')
while True: C()
)",
        false);
    row("deleted modules", R"(
import sys
for name in ('threading', 'atexit', 'gc', 'signal', 'time'): sys.modules.pop(name, None)
print('reached')
)",
        true);
    row("broken modules", R"(
import sys
for name in ('threading', 'atexit', 'gc', 'orbClient', 'ConsoleRedirection'): sys.modules[name] = None
print('reached')
)",
        true);
    row("no names", R"(
import builtins
print('reached')
globals().clear()
)",
        true);
    row("import that is replaced", R"(
import builtins, time
print('reached')
builtins.__import__ = lambda *arguments: time.sleep(60)
__builtins__['__import__'] = builtins.__import__
)",
        true);
    row("output that raises", R"(
import sys
class Output:
    def write(self, text): raise ValueError
    def flush(self): raise ValueError
print('reached')
sys.stdout = sys.stderr = Output()
)",
        true);
    row("output that sleeps", R"(
import sys, time
class Output:
    def write(self, text): time.sleep(60)
    def flush(self): time.sleep(60)
print('reached')
sys.stdout = sys.stderr = Output()
)",
        true);
}

QTEST_MAIN(TestClosingEnds)

#include "tst_closing_ends.moc"
