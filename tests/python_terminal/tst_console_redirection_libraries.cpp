#include "python_terminal/console_redirection.h"

#include "tests/python_terminal/evaluator_under_test.h"

#include <QtTest>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <memory>

/// What scripts use every day on standard streams, through the standard library.
class TestConsoleRedirectionLibraries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void libraries_data();
    void libraries();

private:
    std::unique_ptr<EvaluatorUnderTest> evaluator;
};

void TestConsoleRedirectionLibraries::initTestCase()
{
    // A host that was not started from a terminal has none, and nobody types a password into it there.
    const int terminal = open("/dev/tty", O_RDWR | O_NOCTTY);
    if (terminal >= 0) {
        QCOMPARE(ioctl(terminal, TIOCNOTTY), 0);
        close(terminal);
    }
    evaluator = std::make_unique<EvaluatorUnderTest>();
    evaluator->init();
}

void TestConsoleRedirectionLibraries::cleanupTestCase()
{
    evaluator.reset();
}

void TestConsoleRedirectionLibraries::init()
{
    evaluator->setAnswers({});
    evaluator->clear();
}

void TestConsoleRedirectionLibraries::libraries_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QStringList>("shown"); // pieces of what is shown, in their order

    const auto row = [](const char *name, const char *file, std::initializer_list<const char *> answers,
                        std::initializer_list<const char *> shown) {
        QStringList answerTexts;
        for (const char *answer : answers)
            answerTexts.append(QString::fromUtf8(answer));
        QStringList shownTexts;
        for (const char *text : shown)
            shownTexts.append(QString::fromUtf8(text));
        QTest::newRow(name) << QString::fromUtf8(file) << answerTexts << shownTexts;
    };
    row("print with flush", "print('a', 'b', sep='', flush=True)", {}, {"ab\n"});
    row("logging", "import logging\nlogging.getLogger('plant').warning('too %s', 'hot')\n", {},
        {"err too hot\n"});
    row("logging to standard output", R"(
import logging, sys
log = logging.getLogger('out')
handler = logging.StreamHandler(sys.stdout)
handler.setFormatter(logging.Formatter('%(levelname)s %(message)s'))
log.addHandler(handler)
log.error('ramped')
log.removeHandler(handler)
)",
        {}, {"ERROR ramped", "\n"});
    row("unittest", R"(
import unittest
class Test(unittest.TestCase):
    def test_right(self):
        self.assertEqual(1 + 1, 2)
    def test_wrong(self):
        self.assertEqual(1 + 1, 3)
suite = unittest.defaultTestLoader.loadTestsFromTestCase(Test)
result = unittest.TextTestRunner().run(suite)
print(result.testsRun, len(result.failures))
)",
        {}, {"2 1\n", "FAIL: test_wrong", "Ran 2 tests", "FAILED", "failures=1"});
    row("unittest.main", R"(
import unittest
class Test(unittest.TestCase):
    def test_right(self):
        pass
if __name__ == '__main__':
    unittest.main(exit=False)
)",
        {}, {"Ran 1 test", "OK"});
    row("doctest", R"(
import doctest
def half(x):
    """
    >>> half(4)
    2.0
    >>> half(5)
    3
    """
    return x / 2
doctest.run_docstring_examples(half, {'half': half}, name='half')
)",
        {}, {"Failed example:", "half(5)", "Got:", "2.5"});
    row("pdb", "import pdb\npdb.run('x = 5; y = 6')\n", {"p 1 + 1", "c"}, {"(Pdb) ", "2", "(Pdb) "});
    row("breakpoint", "def f():\n    inside = 3\n    breakpoint()\nf()\nprint('after')\n", {"p inside", "c"},
        {"(Pdb) ", "3", "after\n"});
    row("help on a function", "help(len)", {},
        {"Help on built-in function len", "Return the number of items"});
    row("help on the scripting module", "import orbClient\nhelp(orbClient)", {},
        {"Help on ", "orbClient", "getConnections"});
    row("help in a dialogue", "help()", {"len", "quit"},
        {"help> ", "Help on built-in function len", "help> "});
    row("getpass", "import getpass\nprint(getpass.getpass('Key: '))", {"secret"}, {"secret\n", "err Key: "});
    row("cmd", R"(
import cmd
class Shell(cmd.Cmd):
    prompt = 'hv> '
    def do_ramp(self, argument):
        print('ramping', argument)
    def do_quit(self, argument):
        return True
Shell().cmdloop('welcome')
)",
        {"ramp 5", "quit"}, {"welcome", "hv> ", "ramping 5\n", "hv> "});
    row("cmd without input()", R"(
import cmd
class Shell(cmd.Cmd):
    use_rawinput = False
    def do_quit(self, argument):
        print('left')
        return True
Shell().cmdloop()
)",
        {"quit"}, {"(Cmd) ", "left\n"});
    row("code", "import code\ncode.interact(banner='inner', local={}, exitmsg='outer')\n",
        {"6 * 7", "exit()"}, {"42", "err"});
    row("warnings", "import warnings\nwarnings.warn('careful')", {}, {"err ", "UserWarning: careful"});
    row("traceback", R"(
import traceback
try:
    1 / 0
except ZeroDivisionError:
    traceback.print_exc()
)",
        {}, {"err Traceback (most recent call last):", "ZeroDivisionError: division by zero"});
    row("exception in a thread", R"(
import threading
def work():
    raise ValueError('from a thread')
thread = threading.Thread(target=work)
thread.start()
thread.join()
)",
        {}, {"Exception in thread", "ValueError: from a thread"});
    row("exception that cannot be raised", R"(
class Ending:
    def __del__(self):
        raise ValueError('from the end')
Ending()
)",
        {}, {"Exception ignored in", "ValueError", "from the end"});
    row("output of threads", R"(
import threading
threads = [threading.Thread(target=print, args=(i,)) for i in range(5)]
for thread in threads:
    thread.start()
    thread.join()
)",
        {}, {"0\n1\n2\n3\n4\n"});
    row("argparse", R"(
import argparse
parser = argparse.ArgumentParser(prog='ramp')
parser.add_argument('--voltage', type=float)
print(parser.parse_args(['--voltage', '5']).voltage)
parser.parse_args(['--voltage', 'much'])
)",
        {}, {"5.0\n", "usage: ramp", "invalid float value", "<class 'SystemExit'> 2"});
    row("argparse help", R"(
import argparse
argparse.ArgumentParser(prog='ramp', description='Ramps.').parse_args(['-h'])
)",
        {}, {"usage: ramp", "Ramps.", "<class 'SystemExit'> 0"});
    row("json", "import json, sys\njson.dump({'a': [1, None]}, sys.stdout)", {}, {"{\"a\": [1, null]}"});
    row("json from a line", "import json, sys\nprint(json.loads(sys.stdin.readline()))", {"[1, 2]"},
        {"[1, 2]\n"});
    row("csv", "import csv, sys\n_ = csv.writer(sys.stdout).writerow([1, 'a b'])", {}, {"1,a b\r\n"});
    row("csv from lines", "import csv, sys\nprint(next(csv.reader(sys.stdin)))", {"1,2"}, {"['1', '2']\n"});
    row("pprint", "import pprint\npprint.pprint({'b': 1, 'a': [2]})", {}, {"{'a': [2], 'b': 1}\n"});
    row("redirect_stdout", R"(
import contextlib, io
with contextlib.redirect_stdout(io.StringIO()) as kept:
    print('inside')
print(repr(kept.getvalue()))
)",
        {}, {"'inside\\n'\n"});
    row("redirect_stderr to the console", R"(
import contextlib, sys
with contextlib.redirect_stderr(sys.stdout):
    _ = sys.stderr.write('plain')
)",
        {}, {"plain"});
    row("a stream in between", R"(
import sys
class Tee:
    def __init__(self, stream):
        self.stream = stream
    def write(self, text):
        self.stream.write(text.upper())
    def flush(self):
        self.stream.flush()
before = sys.stdout
sys.stdout = Tee(before)
print('loud', flush=True)
sys.stdout = before
)",
        {}, {"LOUD\n"});
    row("cProfile", "import cProfile\ncProfile.run('sum([1, 2])')", {},
        {"function calls in", "{built-in method builtins.sum}"});
    row("timeit", "import timeit\nprint(timeit.timeit('1', number=10) >= 0)", {}, {"True\n"});
    row("dis", "import dis\ndis.dis(compile('x = 1', 'f', 'exec'))", {}, {"STORE_NAME"});
    row("asyncio", R"(
import asyncio
async def main():
    await asyncio.sleep(0)
    print('awaited')
asyncio.get_event_loop().run_until_complete(main())
)",
        {}, {"awaited\n"});
    row("subprocess", R"(
import subprocess
print(subprocess.run(['echo', 'child'], stdout=subprocess.PIPE, universal_newlines=True).stdout, end='')
)",
        {}, {"child\n"});
    row("fileinput",
        "import fileinput\nfor line in fileinput.input('-'):\n    print(line.strip())\n    break\n",
        {"from a file"}, {"from a file\n"});
    row("the credits", "print(copyright)", {}, {"Copyright (c)"});
    row("the licence, page by page", "license()", {"q"},
        {"Hit Return for more, or q (and Return) to quit: "});
}

void TestConsoleRedirectionLibraries::libraries()
{
    QFETCH(QString, file);
    QFETCH(QStringList, answers);
    QFETCH(QStringList, shown);

    evaluator->setAnswers(answers);
    const QStringList signalTexts = evaluator->execute(file);
    QCOMPARE(signalTexts.constLast(), QStringLiteral("done"));
    const QString text = EvaluatorUnderTest::shown(signalTexts);
    int position = 0;
    for (const QString &piece : std::as_const(shown)) {
        const int found = text.indexOf(piece, position);
        QVERIFY2(found >= 0, qPrintable(QStringLiteral("\"%1\" is missing in:\n%2").arg(piece, text)));
        position = found + piece.size();
    }
    QVERIFY2(!text.contains(QLatin1String("AttributeError")), qPrintable(text));
}

QTEST_GUILESS_MAIN(TestConsoleRedirectionLibraries)
#include "tst_console_redirection_libraries.moc"
