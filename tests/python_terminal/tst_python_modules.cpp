#include "python_terminal/terminal_python_thread.h"
#include "tests/python_terminal/evaluator_under_test.h"

#include <QProcess>
#include <QtTest>

#include <memory>

/// The standard library as a script in the terminal finds it, and text that programs trip over.
class TestPythonModules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void modulesImport();
    void everythingThatPythonImports();
    void extensionModulesWork_data();
    void extensionModulesWork();
    void modulesImportAgainInTheNextInterpreter();

    void oddText_data();
    void oddText();
    void oddTextTyped_data();
    void oddTextTyped();
    void longText_data();
    void longText();

private:
    std::unique_ptr<EvaluatorUnderTest> evaluator;
};

namespace
{

/// What every Python has, however it was built.
const char *const Modules =
    "__future__ abc aifc argparse array ast asynchat asyncio asyncio.subprocess asyncore atexit audioop "
    "base64 bdb "
    "binascii binhex bisect builtins cProfile calendar cgi cgitb chunk cmath cmd code codecs codeop "
    "collections "
    "collections.abc colorsys compileall concurrent.futures configparser contextlib contextvars copy copyreg "
    "csv "
    "ctypes ctypes.util dataclasses datetime decimal difflib dis distutils.core doctest dummy_threading "
    "email "
    "email.mime.text email.utils encodings.idna encodings.cp1252 encodings.utf_16 enum errno faulthandler "
    "filecmp "
    "fileinput fnmatch formatter fractions ftplib functools gc genericpath getopt getpass gettext glob gzip "
    "hashlib "
    "heapq hmac html html.parser http http.client http.cookies http.server imaplib imghdr imp importlib "
    "importlib.util importlib.resources inspect io ipaddress itertools json json.tool keyword linecache "
    "locale "
    "logging logging.config logging.handlers mailbox mailcap marshal math mimetypes mmap modulefinder "
    "multiprocessing multiprocessing.pool netrc nntplib ntpath nturl2path "
    "numbers "
    "opcode operator optparse os os.path parser pathlib pdb pickle pickletools pkgutil platform plistlib "
    "poplib "
    "pprint profile pstats py_compile pyclbr pydoc pydoc_data.topics pyexpat queue quopri random re reprlib "
    "rlcompleter runpy sched secrets select selectors shelve shlex shutil signal site smtpd smtplib sndhdr "
    "socket "
    "socketserver sqlite3 sre_compile sre_constants sre_parse ssl stat statistics string stringprep struct "
    "subprocess sunau symbol symtable sys sysconfig tabnanny tarfile telnetlib tempfile textwrap threading "
    "time "
    "timeit token tokenize trace traceback tracemalloc types typing unicodedata unittest unittest.mock "
    "urllib.error urllib.parse urllib.request uu uuid venv warnings wave weakref webbrowser "
    "wsgiref.simple_server "
    "xdrlib xml.dom.minidom xml.etree.ElementTree xml.sax xmlrpc.client xmlrpc.server zipapp zipfile "
    "zipimport zlib "
    "_asyncio _bisect _blake2 _codecs _collections _csv _ctypes _datetime _decimal _elementtree _hashlib "
    "_heapq "
    "_json _locale _lsprof _multiprocessing _opcode _pickle _queue _random _sha3 _socket _sqlite3 _sre _ssl "
    "_struct "
    "_thread _uuid "
#ifdef Q_OS_UNIX
    "crypt curses.ascii fcntl grp pipes posix posixpath pty pwd resource syslog termios tty _posixsubprocess "
#endif
    "orbClient";

/// Tries every name of a list; the names that fail are the result.
const QString TryToImport = QStringLiteral(R"(
import importlib
def failing(names):
    failed = []
    for name in names:
        try:
            importlib.import_module(name)
        except BaseException as error:
            failed.append(name)
    return failed
)");

/// Left out of the runtime, or no module to import for the sake of it: one opens a browser, others print.
const QString ListModules = QStringLiteral(R"(
import os, sys
left_out = {'test', 'idlelib', 'turtledemo', 'lib2to3', 'ensurepip', 'antigravity', 'this', '__phello__',
            '__phello__.foo', '__main__',
            '_tkinter', 'tkinter', 'turtle'}  # windows of another toolkit have no place in a console
def modules():
    names = set(sys.builtin_module_names)
    library = os.path.dirname(os.__file__)
    for folder in (library, os.path.join(library, 'lib-dynload')):
        for entry in os.listdir(folder):
            if entry.endswith('.py') or entry.endswith('.so'):
                names.add(entry.split('.')[0])
            elif os.path.exists(os.path.join(folder, entry, '__init__.py')):
                names.add(entry)
    return sorted(names - left_out)
)");

} // namespace

void TestPythonModules::initTestCase()
{
    evaluator = std::make_unique<EvaluatorUnderTest>();
    evaluator->init();
}

void TestPythonModules::cleanupTestCase()
{
    evaluator.reset();
}

void TestPythonModules::init()
{
    evaluator->onWorker([this] { evaluator->host()->dropPendingCommand(); });
    evaluator->clear();
}

void TestPythonModules::modulesImport()
{
    const QString file = TryToImport
        + QStringLiteral("names = '''%1'''.split()\nprint(len(names) > 200, failing(names))\n")
              .arg(QString::fromLatin1(Modules));
    QCOMPARE(evaluator->shownByFile(file), QStringLiteral("True []\n"));
}

/// Whatever the Python that was found at build time imports by itself.
void TestPythonModules::everythingThatPythonImports()
{
    QProcess python;
    python.start(
        QStringLiteral(PYTHON_EXECUTABLE),
        {QStringLiteral("-I"), QStringLiteral("-c"),
         ListModules + TryToImport
             + QStringLiteral("names = modules()\nfailed = failing(names)\n"
                              "print('\\n' + ' '.join(n for n in names if n not in failed), end='')\n")});
    constexpr int LongestRun = 120'000;
    QVERIFY2(python.waitForFinished(LongestRun), qPrintable(python.errorString()));
    const QString names =
        QString::fromUtf8(python.readAllStandardOutput()).section(QLatin1Char('\n'), -1).trimmed();
    QVERIFY2(names.contains(QLatin1String(" math ")), python.readAllStandardError().constData());

    const QString file =
        TryToImport + QStringLiteral("names = '%1'.split()\nresult = failing(names)\n").arg(names);
    evaluator->execute(file);
    QCOMPARE(evaluator->shownBy(QStringLiteral("len(names) > 200, result")), QStringLiteral("(True, [])\n"));
}

void TestPythonModules::extensionModulesWork_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("shown");

    const auto row = [](const char *name, const char *line, const char *shown) {
        QTest::newRow(name) << QString::fromUtf8(line) << QString::fromUtf8(shown) + QLatin1Char('\n');
    };
    row("math", "import math; math.factorial(20)", "2432902008176640000");
    row("socket", "import socket; a, b = socket.socketpair(); a.send(b'x'), b.recv(1), a.close(), b.close()",
        "(1, b'x', None, None)");
    row("ssl", "import ssl; ssl.create_default_context().verify_mode.name", "'CERT_REQUIRED'");
    row("ctypes", "import ctypes; ctypes.CDLL(None).abs(-5)", "5");
    row("ctypes callback", "import ctypes; ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_int)(lambda x: x + 1)(4)",
        "5");
    row("sqlite3",
        "import sqlite3; c = sqlite3.connect(':memory:'); c.execute('select 1 + 1').fetchall(), c.close()",
        "([(2,)], None)");
    row("zlib", "import zlib; zlib.decompress(zlib.compress(b'abc'))", "b'abc'");
    row("hashlib", "import hashlib; hashlib.sha256(b'').hexdigest()[:8]", "'e3b0c442'");
    row("decimal", "import decimal; decimal.Decimal('0.1') + decimal.Decimal('0.2')", "Decimal('0.3')");
    row("datetime", "import datetime; datetime.datetime.strptime('2020-02-29', '%Y-%m-%d').isoformat()",
        "'2020-02-29T00:00:00'");
    row("json", "import json; json.loads('{\"a\": 1.5}'), json.decoder.scanner.c_make_scanner is not None",
        "({'a': 1.5}, True)");
    row("struct and array", "import struct, array; struct.unpack('<h', array.array('b', [1, 1]).tobytes())",
        "(257,)");
    row("pickle", "import pickle; pickle.loads(pickle.dumps([1, 'a']))", "[1, 'a']");
    row("unicodedata", "import unicodedata; unicodedata.name('\\u20ac')", "'EURO SIGN'");
    row("select", "import select; select.select([], [], [], 0)", "([], [], [])");
    row("mmap", "import mmap; m = mmap.mmap(-1, 8); len(m), m.close()", "(8, None)");
    row("multiprocessing", "import multiprocessing; l = multiprocessing.Lock(); l.acquire(), l.release()",
        "(True, None)");
    row("random", "import random; random.seed(1); random.randint(1, 6)", "2");
    row("uuid", "import uuid; len(str(uuid.uuid4()))", "36");
    row("xml", "import xml.etree.ElementTree as t; t.fromstring('<a b=\"c\"/>').get('b')", "'c'");
    row("csv", "import csv; list(csv.reader(['1,\"a,b\"']))", "[['1', 'a,b']]");
    row("asyncio", "import asyncio; asyncio.get_event_loop().run_until_complete(asyncio.sleep(0, 7))", "7");
    row("futures", "from concurrent.futures import ThreadPoolExecutor as T; T(1).submit(len, 'ab').result()",
        "2");
    row("regular expressions", "import re; re.findall(r'(\\d+)V', '5V 70V')", "['5', '70']");
    row("codecs", "'\\u20ac'.encode('cp1252'), b'\\xe4'.decode('latin-1')", "(b'\\x80', 'ä')");
}

void TestPythonModules::extensionModulesWork()
{
    QFETCH(QString, line);
    QFETCH(QString, shown);
    QCOMPARE(evaluator->shownBy(line), shown);
}

/// A process keeps what an extension module once was; the next interpreter has to cope with that. One module does not,
/// in any program, and says so.
void TestPythonModules::modulesImportAgainInTheNextInterpreter()
{
    const QString file = TryToImport
        + QStringLiteral(
              "print([name for name in failing('''%1'''.split()) if name != 'tracemalloc'])\n"
              "import datetime, decimal, sqlite3, ctypes, ssl, json\n"
              "print(datetime.date(2020, 1, 1), decimal.Decimal(1) / 4, ctypes.c_int(5).value,\n"
              "      sqlite3.connect(':memory:').execute('select 2').fetchone(), json.dumps([1]))\n")
              .arg(QString::fromLatin1(Modules));
    const QString shown = QStringLiteral("[]\n2020-01-01 0.25 5 (2,) [1]\n");
    constexpr int Interpreters = 2;
    for (int count = 0; count < Interpreters; ++count) {
        cleanupTestCase();
        initTestCase();
        QCOMPARE(evaluator->shownByFile(file), shown);
    }
}

void TestPythonModules::oddText_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("shown"); // its beginning

    const auto row = [](const char *name, const char *line, const QString &shown) {
        QTest::newRow(name) << QString::fromUtf8(line) << shown;
    };
    const QString writeFailed = QStringLiteral("err <class 'SystemError'> <");
    row("half a surrogate pair", "print('\\ud800')", writeFailed);
    row("many of them", "print('\\udc80' * 100000)", writeFailed);
    row("half a pair as a value", "'\\ud800'", QStringLiteral("'\\ud800'\n"));
    row("half a pair as an error", "raise ValueError('a\\ud800b')",
        QStringLiteral("err <class 'ValueError'> a"));
    row("half a pair to standard error", "sys.stderr.write('\\ud800')", writeFailed);
    row("half a pair as a type's name", "raise type('\\ud800', (Exception,), {})",
        QStringLiteral("err <class '"));
    row("NUL", "print('a\\0b')", writeFailed);
    row("NUL as a value", "'a\\0b'", QStringLiteral("'a\\x00b'\n"));
    row("NUL as an error", "raise ValueError('a\\0b')", QStringLiteral("err <class 'ValueError'> a"));
    row("bytes", "print(bytes(range(256)))", QStringLiteral("b'\\x00\\x01"));
    row("right to left", "print('\\u05e9\\u05dc\\u05d5\\u05dd abc \\u202edef')",
        QString::fromUtf8("\u05e9\u05dc\u05d5\u05dd abc \u202edef\n"));
    row("combining", "print('e\\u0301' * 3)", QString::fromUtf8("e\u0301e\u0301e\u0301\n"));
    row("beyond the basic plane", "print('\\U0001f600\\U0010ffff')",
        QString::fromUtf8("\U0001f600\U0010ffff\n"));
    row("no characters", "print('\\ufffe\\uffff\\ufeff')", QString::fromUtf8("\ufffe\uffff\ufeff\n"));
    row("control characters", "print(''.join(map(chr, range(1, 32))), end='')",
        QStringLiteral("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c"));
    row("line and paragraph separators", "print('a\\u2028b\\u2029c')",
        QString::fromUtf8("a\u2028b\u2029c\n"));
    row("a prompt that is no text", "input('\\ud800')", QStringLiteral("err <class"));
    row("endless recursion", "f = lambda: f(); f()",
        QStringLiteral("err <class 'RecursionError'> maximum recursion depth exceeded"));
    row("a value that contains itself", "x = []; x.append(x); x", QStringLiteral("[[...]]\n"));
    row("a value that cannot be displayed", "type('T', (), {'__repr__': lambda self: 1 / 0})()",
        QStringLiteral("err <class 'ZeroDivisionError'>"));
    row("a closed stream", "sys.stdout.close(); print(1)", QStringLiteral("1\n"));
    row("no stream", "sys.stdout = None; print(1)", QString());
    row("no stream for a value", "del sys.stdout; 1",
        QStringLiteral("err <class 'RuntimeError'> lost sys.stdout"));
}

/// Shown, or an error: the terminal lives in any case.
void TestPythonModules::oddText()
{
    QFETCH(QString, line);
    QFETCH(QString, shown);
    const QString actual = evaluator->shownBy(line);
    QVERIFY2(actual.startsWith(shown), qPrintable(actual.left(200)));
    evaluator->clear();
    QCOMPARE(evaluator->shownBy(QStringLiteral("1")), QStringLiteral("1\n"));
}

void TestPythonModules::oddTextTyped_data()
{
    QTest::addColumn<QString>("line");

    QTest::newRow("NUL") << QStringLiteral("x = 1") + QChar(QChar::Null) + QStringLiteral("2");
    QTest::newRow("nothing but NUL") << QString(QChar(QChar::Null));
    QTest::newRow("half a surrogate pair") << QStringLiteral("x = '") + QChar(0xd800) + QStringLiteral("'");
    QTest::newRow("right to left") << QString::fromUtf8("x = '\u05d0\u202e'");
    QTest::newRow("line separator") << QString::fromUtf8("x = 1\u2028y = 2");
    QTest::newRow("carriage return") << QStringLiteral("x = 1\ry = 2");
    QTest::newRow("form feed") << QStringLiteral("\fx = 1");
    QTest::newRow("deep nesting") << QString(1000, QLatin1Char('('));
    QTest::newRow("a long line") << QStringLiteral("x = '") + QString(100'000, QLatin1Char('x'))
            + QStringLiteral("'");
    QTest::newRow("many brackets") << QStringLiteral("[") + QStringLiteral("1,").repeated(10'000)
            + QStringLiteral("]; None");
    QTest::newRow("a coding that is not there") << QStringLiteral("x = 1 # -*- coding: nothing -*-");
    QTest::newRow("a coding that is another") << QString::fromUtf8("x = 'ä' # -*- coding: utf-16 -*-");
}

/// As a line, a file and a word to complete.
void TestPythonModules::oddTextTyped()
{
    QFETCH(QString, line);
    QVERIFY(!evaluator->type(line).isEmpty());
    QCOMPARE(evaluator->execute(line).constLast(), QStringLiteral("done"));
    QVERIFY(evaluator->complete(line).value(0).startsWith(QLatin1String("candidates")));
    init();
    QCOMPARE(evaluator->shownBy(QStringLiteral("1")), QStringLiteral("1\n"));
}

void TestPythonModules::longText_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("length");

    constexpr int Long = 10'000'000;
    QTest::newRow("print") << QStringLiteral("print('x' * 10000000, end='')") << Long;
    QTest::newRow("write") << QStringLiteral("_ = sys.stdout.write('\\u20ac' * 10000000)") << Long;
    QTest::newRow("value") << QStringLiteral("'x' * 9999997") << Long; // with its quotes and a line feed
    QTest::newRow("lines") << QStringLiteral("print('x\\n' * 5000000, end='')") << Long;
    QTest::newRow("standard error") << QStringLiteral("_ = sys.stderr.write('x' * 9999996)")
                                    << Long; // "err "
}

void TestPythonModules::longText()
{
    QFETCH(QString, line);
    QFETCH(int, length);
    QCOMPARE(evaluator->shownBy(line).size(), length);
}

QTEST_GUILESS_MAIN(TestPythonModules)
#include "tst_python_modules.moc"
