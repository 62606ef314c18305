#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

/// The tool closes although a script handles every exception, and lets a script leave things as they should be.
class TestClosingHandlers : public ClosingScripts
{
    Q_OBJECT

public:
    TestClosingHandlers() : ClosingScripts(ClosingLimits::variantRounds()) { }

private:
    void addScripts() override;
    void prepareProcess() override { useDefaultInterruptSignal(); }

private Q_SLOTS:
    void finallyRuns_data();
    void finallyRuns();
};

void TestClosingHandlers::addScripts()
{
    row("except around a lock", R"(
import threading
l = threading.Lock()
l.acquire()
print('reached')
while True:
    try: l.acquire()
    except: pass
)",
        true);
    row("except around a flood", R"(
print('reached')
while True:
    try:
        while True: print(1)
    except: pass
)",
        false);
    row("except around sys.exit", R"(
import sys
print('reached')
while True:
    try: sys.exit()
    except: pass
)",
        false);
    row("except around exit", R"(
print('reached')
while True:
    try: exit()
    except: pass
)",
        false);
    row("except around SIGINT", R"(
import os, signal, time
print('reached')
while True:
    try:
        os.kill(os.getpid(), signal.SIGINT)
        time.sleep(0.001)
    except: pass
)",
        true);
    row("except around a regular expression", R"(
import re
print('reached')
while True:
    try: re.match('(a+)+b', 'a' * 40)
    except: pass
)",
        false);
    row("except within except", R"(
import time
def f(depth):
    while True:
        try: time.sleep(60)
        except:
            if depth < 200: f(depth + 1)
print('reached')
f(0)
)",
        true);
    row("context manager that swallows everything", R"(
import time
class All:
    def __enter__(self): pass
    def __exit__(self, *error):
        time.sleep(60)
        return True
print('reached')
while True:
    with All(): time.sleep(60)
)",
        true);
    row("suppress", R"(
import contextlib, time
print('reached')
while True:
    with contextlib.suppress(BaseException): time.sleep(60)
)",
        true);
    row("generator", R"(
import time
def g():
    while True:
        try:
            time.sleep(60)
            yield 1
        except: pass
print('reached')
for x in g(): pass
)",
        true);
    row("generator that refuses to close", R"(
import time
def g():
    while True:
        try: yield 1
        except: pass
x = g()
next(x)
print('reached')
time.sleep(60)
)",
        true);
    row("no trace function", R"(
import sys
print('reached')
while True:
    try:
        while True: sys.settrace(None)
    except: pass
)",
        false);
    row("trace function of its own", R"(
import sys
def trace(*arguments): return trace
sys.settrace(trace)
print('reached')
while True:
    try:
        while True: sys.settrace(trace)
    except: pass
)",
        false);
    row("profile function", R"(
import sys
sys.setprofile(lambda *arguments: None)
def f(): pass
print('reached')
while True:
    try: f()
    except: pass
)",
        false);
    row("code without line numbers", R"(
code = compile('try:\n while 1: pass\nexcept: pass\n', 'x', 'exec')
print('reached')
while True:
    try: exec(code)
    except: pass
)",
        false);
    row("import that takes long", R"(
import importlib.util, sys, time
class Finder:
    def find_spec(self, name, path, target=None):
        if name == 'slow':
            print('reached')
            time.sleep(60)
sys.meta_path.insert(0, Finder())
import slow
)",
        true);
    row("comparison in C", R"(
class C:
    def __lt__(self, other):
        try:
            while True: pass
        except: return True
print('reached')
while True: sorted([C(), C(), C()])
)",
        false);
    row("object that is printed", R"(
import time
class C:
    def __repr__(self):
        while True:
            try: time.sleep(60)
            except: pass
print('reached')
print([C()])
)",
        true);
    row("exception whose text takes long", R"(
import time
class E(Exception):
    def __str__(self):
        print('reached')
        while True:
            try: time.sleep(60)
            except: pass
raise E
)",
        true);
    row("exec with names of its own", R"(
import builtins
print('reached')
while True:
    try: exec('for i in range(10 ** 9): pass', {'__builtins__': builtins})
    except: pass
)",
        false);
}

void TestClosingHandlers::finallyRuns_data()
{
    QTest::addColumn<QString>("script");

    QTest::newRow("finally") << QStringLiteral("import time\n"
                                               "try:\n"
                                               "    print('reached')\n"
                                               "    time.sleep(60)\n"
                                               "finally:\n"
                                               "    note('first')\n"
                                               "    note('second')\n");
    QTest::newRow("context manager") << QStringLiteral("import contextlib, time\n"
                                                       "@contextlib.contextmanager\n"
                                                       "def manager():\n"
                                                       "    try: yield\n"
                                                       "    finally:\n"
                                                       "        note('first')\n"
                                                       "        note('second')\n"
                                                       "with manager():\n"
                                                       "    print('reached')\n"
                                                       "    time.sleep(60)\n");
    QTest::newRow("atexit") << QStringLiteral("import atexit, time\n"
                                              "atexit.register(note, 'second')\n"
                                              "atexit.register(note, 'first')\n"
                                              "print('reached')\n"
                                              "time.sleep(60)\n");
    QTest::newRow("end of an object") << QStringLiteral("import time\n"
                                                        "class C:\n"
                                                        "    def __del__(self):\n"
                                                        "        note('first')\n"
                                                        "        note('second')\n"
                                                        "c = C()\n"
                                                        "print('reached')\n"
                                                        "time.sleep(60)\n");
    QTest::newRow("thread") << QStringLiteral("import threading, time\n"
                                              "def work():\n"
                                              "    try:\n"
                                              "        print('reached')\n"
                                              "        time.sleep(60)\n"
                                              "    finally:\n"
                                              "        note('first')\n"
                                              "        note('second')\n"
                                              "threading.Thread(target=work, daemon=True).start()\n"
                                              "time.sleep(60)\n");
}

/// What a script does to leave the hardware as it should be.
void TestClosingHandlers::finallyRuns()
{
    QFETCH(QString, script);
    const QTemporaryDir folder;
    QFile notes(folder.filePath(QStringLiteral("notes")));
    const QString note = QStringLiteral("def note(text, open=open):\n"
                                        "    with open('%1', 'a') as f: f.write(text + '\\n')\n")
                             .arg(notes.fileName());
    QCOMPARE(test->closeOnceWhile(note + script, true), QString());
    QVERIFY(notes.open(QIODevice::ReadOnly));
    QCOMPARE(notes.readAll(), QByteArray("first\nsecond\n"));
    notes.close();
    QCOMPARE(test->whatIsLeft(), QString());
}

QTEST_MAIN(TestClosingHandlers)

#include "tst_closing_handlers.moc"
