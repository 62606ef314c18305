#include "python_terminal/console_redirection.h"

#include "orbclient/py_ref.h"
#include "python_terminal/terminal_python_thread.h"
#include "tests/python_terminal/evaluator_under_test.h"

#include <QtTest>

#include <memory>

/// The stream objects themselves: what they are, what becomes of a text, where a line comes from.
class TestConsoleRedirection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void moduleAndType_data();
    void moduleAndType();
    void slotsOfTheType();
    void flagsAreThoseOfTheScriptingModule();
    void documentation_data();
    void documentation();
    void oneSignalAWrite_data();
    void oneSignalAWrite();
    void failedWriteLeavesItsException_data();
    void failedWriteLeavesItsException();
    void streamsWithoutAHost_data();
    void streamsWithoutAHost();
    void newObjectsHaveTheHostAndTheKind();

    void readLine_data();
    void readLine();
    void earlyLineIsForgotten();
    void lineWithoutAnAnswerIsInterrupted();
    void readingHoldsOtherThreadsUp();

    void furtherMethods_data();
    void furtherMethods();
    void furtherReading_data();
    void furtherReading();
    void writeLinesFails_data();
    void writeLinesFails();

private:
    std::unique_ptr<EvaluatorUnderTest> evaluator;
};

namespace
{

using Texts = std::initializer_list<const char *>;

QStringList textsOf(Texts list)
{
    QStringList texts;
    for (const char *text : list)
        texts.append(QString::fromUtf8(text));
    return texts;
}

PyObject *streamNamed(const char *name)
{
    return PySys_GetObject(name); // borrowed
}

} // namespace

void TestConsoleRedirection::initTestCase()
{
    evaluator = std::make_unique<EvaluatorUnderTest>();
    evaluator->init();
}

void TestConsoleRedirection::cleanupTestCase()
{
    evaluator.reset();
}

void TestConsoleRedirection::init()
{
    evaluator->setAnswers({});
    evaluator->clear();
    evaluator->type(QStringLiteral("Stream = ConsoleRedirection.ConsoleRedirection"));
}

void TestConsoleRedirection::moduleAndType_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("value");

    const auto row = [](const char *expression, const char *value) {
        QTest::newRow(expression) << QString::fromLatin1(expression) << QString::fromLatin1(value);
    };
    row("ConsoleRedirection.__name__", "'ConsoleRedirection'");
    row("ConsoleRedirection.__doc__", "''");
    row("sorted(n for n in vars(ConsoleRedirection) if n[0] != '_')",
        "['ConsoleRedirection', 'stderr', 'stdin', 'stdout']");
    row("Stream", "<class 'redirection.ConsoleRedirection'>");
    row("Stream.__basicsize__, Stream.__itemsize__", "(32, 0)");
    row("Stream.__doc__", "None");
    row("Stream.__base__", "<class 'object'>");
    row("[type(s) is Stream for s in (sys.stdout, sys.stderr, sys.stdin)]", "[True, True, True]");
    row("hasattr(sys.stdout, '__dict__')", "False");
    row("'ConsoleRedirection' in sys.builtin_module_names", "True");
}

void TestConsoleRedirection::moduleAndType()
{
    QFETCH(QString, expression);
    QFETCH(QString, value);
    QCOMPARE(evaluator->shownBy(QStringLiteral("print(repr((%1)))").arg(expression)),
             value + QLatin1Char('\n'));
}

void TestConsoleRedirection::slotsOfTheType()
{
    bool plainMembers = false;
    bool plainEnd = false;
    long sizeOfState = 0;
    evaluator->onWorker([&] {
        const PyTypeObject *type = Py_TYPE(streamNamed("stdout"));
        plainMembers = type->tp_members == nullptr && type->tp_getset == nullptr;
        plainEnd = type->tp_dealloc == PyBaseObject_Type.tp_dealloc;
        const PyRef module(PyImport_ImportModule("ConsoleRedirection"));
        sizeOfState = static_cast<long>(PyModule_GetDef(module.get())->m_size);
    });
    QVERIFY(plainMembers);
    QVERIFY(plainEnd);
    QCOMPARE(sizeOfState, -1L);
}

void TestConsoleRedirection::flagsAreThoseOfTheScriptingModule()
{
    unsigned long flags = 0;
    unsigned long others = 0;
    evaluator->onWorker([&] {
        flags = Py_TYPE(streamNamed("stdout"))->tp_flags;
        const PyRef module(PyImport_ImportModule("orbClient"));
        const PyRef channel(PyObject_GetAttrString(module.get(), "channel"));
        others = PyType_GetFlags(reinterpret_cast<PyTypeObject *>(channel.get()));
    });
    // What Python itself adds to a type that is in use.
    constexpr unsigned long InUse = Py_TPFLAGS_READY | Py_TPFLAGS_VALID_VERSION_TAG;
    QCOMPARE(flags & ~InUse, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_DICT_SUBCLASS);
    QCOMPARE(flags & ~InUse, others & ~InUse);
}

void TestConsoleRedirection::documentation_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("text");

    QTest::newRow("__init__") << QStringLiteral("__init__")
                              << QStringLiteral("initialize the stdout/err redirector");
    QTest::newRow("write") << QStringLiteral("write")
                           << QStringLiteral("implement the write method to redirect stdout/err");
    QTest::newRow("readline") << QStringLiteral("readline")
                              << QStringLiteral("implement the readline method to redirect stdin");
}

void TestConsoleRedirection::documentation()
{
    QFETCH(QString, method);
    QFETCH(QString, text);
    QCOMPARE(evaluator->shownBy(QStringLiteral("print(Stream.%1.__doc__)").arg(method)),
             text + QLatin1Char('\n'));
}

void TestConsoleRedirection::oneSignalAWrite_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("signalTexts");

    const auto row = [](const char *name, const char *line, Texts signalTexts) {
        QTest::newRow(name) << QString::fromUtf8(line) << textsOf(signalTexts);
    };
    row("print", "print('a')", {"out a", "out \n", "done"});
    row("print of several", "print('a', 'b', sep='-', end='!')",
        {"out a", "out -", "out b", "out !", "done"});
    row("nothing", "_ = sys.stdout.write('')", {"out ", "done"});
    row("spaces and line feeds", "_ = sys.stdout.write('  a \\n\\n b\\t')", {"out   a \n\n b\t", "done"});
    row("a line feed", "_ = sys.stdout.write('\\n')", {"out \n", "done"});
    row("carriage return", "_ = sys.stdout.write('a\\rb\\r\\n')", {"out a\rb\r\n", "done"});
    row("to standard error", "_ = sys.stderr.write('a\\n')", {"err a\n", "done"});
    row("to standard input", "_ = sys.stdin.write('a')", {"out a", "done"});
    row("beyond ASCII", "_ = sys.stdout.write('\\xe4\\u20ac\\U0001f600')", {"out ä€😀", "done"});
    row("right to left and combining", "_ = sys.stdout.write('\\u05d0\\u0301e\\u0301')",
        {"out \u05d0\u0301e\u0301", "done"});
    row("the result is None", "sys.stdout.write('a') is None", {"out a", "out True", "out \n", "done"});
    row("__init__ does nothing", "print(sys.stderr.__init__(1, 2)); _ = sys.stderr.write('a')",
        {"out None", "out \n", "err a", "done"});
    row("a named argument", "sys.stdout.write(text='a')",
        {"err <class 'TypeError'> write() takes no keyword arguments <traceback object at 0x?>", "done"});
}

void TestConsoleRedirection::oneSignalAWrite()
{
    QFETCH(QString, line);
    QFETCH(QStringList, signalTexts);
    QCOMPARE(EvaluatorUnderTest::withoutAddresses(evaluator->type(line)), signalTexts);
}

void TestConsoleRedirection::failedWriteLeavesItsException_data()
{
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<QByteArray>("exception");

    QTest::newRow("no argument") << QByteArray("()") << QByteArray("TypeError");
    QTest::newRow("two arguments") << QByteArray("('a', 'b')") << QByteArray("TypeError");
    QTest::newRow("a number") << QByteArray("(5,)") << QByteArray("TypeError");
    QTest::newRow("None") << QByteArray("(None,)") << QByteArray("TypeError");
    QTest::newRow("bytes") << QByteArray("(b'a',)") << QByteArray("TypeError");
    QTest::newRow("a NUL inside") << QByteArray("('a\\0b',)") << QByteArray("ValueError");
    QTest::newRow("half a surrogate pair") << QByteArray("('\\ud800',)") << QByteArray("UnicodeEncodeError");
}

/// The method gives None and leaves an exception behind, which Python itself then complains about. Its function is
/// called past Python's check for that.
void TestConsoleRedirection::failedWriteLeavesItsException()
{
    QFETCH(QByteArray, arguments);
    QFETCH(QByteArray, exception);

    bool none = false;
    QByteArray left;
    const QStringList signalTexts = evaluator->onWorker([&] {
        PyObject *stream = streamNamed("stdout");
        const PyRef names(PyDict_New());
        PyDict_SetItemString(names.get(), "__builtins__", PyEval_GetBuiltins());
        const PyRef tuple(PyRun_String(arguments.constData(), Py_eval_input, names.get(), names.get()));
        const PyRef method(PyObject_GetAttrString(stream, "write"));
        const PyRef result(PyCFunction_GetFunction(method.get())(stream, tuple.get()));
        none = result.get() == Py_None;
        if (PyErr_Occurred() != nullptr)
            left = reinterpret_cast<PyTypeObject *>(PyErr_Occurred())->tp_name;
        PyErr_Clear();
    });
    QVERIFY(none);
    QCOMPARE(left, exception);
    QCOMPARE(signalTexts, QStringList());
}

void TestConsoleRedirection::streamsWithoutAHost_data()
{
    QTest::addColumn<QString>("stream");

    QTest::newRow("made by a script") << QStringLiteral("Stream()");
    QTest::newRow("made by a script, with arguments") << QStringLiteral("Stream(1, 'a')");
    QTest::newRow("of a subclass") << QStringLiteral("type('Sub', (Stream,), {})()");
}

void TestConsoleRedirection::streamsWithoutAHost()
{
    QFETCH(QString, stream);
    evaluator->type(QStringLiteral("stream = ") + stream);
    QCOMPARE(
        evaluator->shownBy(QStringLiteral("print(stream.write('a'), stream.write(5), stream.readline())")),
        QStringLiteral("None None None\n"));
    QCOMPARE(evaluator->shownBy(QStringLiteral("list(stream), stream.read()")),
             QStringLiteral("([], None)\n"));
}

void TestConsoleRedirection::newObjectsHaveTheHostAndTheKind()
{
    const QStringList signalTexts = evaluator->onWorker([this] {
        for (const bool isError : {true, false}) {
            const PyRef stream(python_terminal::newConsoleRedirection(evaluator->host(), isError));
            const PyRef result(PyObject_CallMethod(stream.get(), "write", "s", isError ? "e" : "o"));
        }
    });
    QCOMPARE(signalTexts, textsOf({"err e", "out o"}));
}

void TestConsoleRedirection::readLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QStringList>("signalTexts");

    const auto row = [](const char *name, const char *line, Texts answers, Texts signalTexts) {
        QTest::newRow(name) << QString::fromUtf8(line) << textsOf(answers) << textsOf(signalTexts);
    };
    row("line", "sys.stdin.readline()", {"abc"}, {"input", "out 'abc\\n'", "out \n", "done"});
    row("empty line", "sys.stdin.readline()", {""}, {"input", "out '\\n'", "out \n", "done"});
    row("spaces", "sys.stdin.readline()", {"  a "}, {"input", "out '  a \\n'", "out \n", "done"});
    row("beyond ASCII", "print(ascii(sys.stdin.readline()))", {"ä€😀"},
        {"input", "out '\\xe4\\u20ac\\U0001f600\\n'", "out \n", "done"});
    row("input", "input()", {"abc"}, {"input", "out 'abc'", "out \n", "done"});
    row("input with a prompt", "input('How much? ')", {"5"},
        {"out How much? ", "input", "out '5'", "out \n", "done"});
    row("input of an empty line", "input()", {""}, {"input", "out ''", "out \n", "done"});
    row("two inputs", "input() + input()", {"a", "b"}, {"input", "input", "out 'ab'", "out \n", "done"});
    row("of another stream", "sys.stdout.readline()", {"a"}, {"input", "out 'a\\n'", "out \n", "done"});
    row("in a file's function", "exec('def f(): return input()\\nprint(f())')", {"a"},
        {"input", "out a", "out \n", "done"});
}

void TestConsoleRedirection::readLine()
{
    QFETCH(QString, line);
    QFETCH(QStringList, answers);
    QFETCH(QStringList, signalTexts);
    evaluator->setAnswers(answers);
    QCOMPARE(evaluator->type(line), signalTexts);
}

/// A line that nobody waited for is none for who asks later.
void TestConsoleRedirection::earlyLineIsForgotten()
{
    evaluator->host()->setStdInText(QStringLiteral("early"));
    evaluator->setAnswers({QStringLiteral("asked for")});
    QCOMPARE(evaluator->shownBy(QStringLiteral("input()")), QStringLiteral("'asked for'\n"));
}

void TestConsoleRedirection::lineWithoutAnAnswerIsInterrupted()
{
    const QStringList expected =
        textsOf({"input", "err <class 'KeyboardInterrupt'>  <traceback object at 0x?>", "done"});
    for (const char *line : {"input()", "sys.stdin.readline()", "next(sys.stdin)", "sys.stdin.read()",
                             "sys.stdin.readlines()", "list(sys.stdin)"})
        QCOMPARE(EvaluatorUnderTest::withoutAddresses(evaluator->type(QString::fromLatin1(line))), expected);
}

/// While a line is waited for, nothing else of the interpreter runs: the lock is not given away, neither for the wait nor,
/// within the time that is set, for having been held for long.
void TestConsoleRedirection::readingHoldsOtherThreadsUp()
{
    evaluator->setAnswers({QStringLiteral("a")});
    const QString file = QStringLiteral(R"(
import threading
count = 0
ended = False
def work():
    started.set()
    go.wait()
    while not ended:
        localdict['count'] += 1
started = threading.Event()
go = threading.Event()
thread = threading.Thread(target=work)
sys.setswitchinterval(20)
thread.start()
started.wait()
go.set()
before = count
sys.stdin.readline()
after = count
ended = True
sys.setswitchinterval(0.005)
thread.join()
print(before, after)
)");
    QCOMPARE(evaluator->shownByFile(file), QStringLiteral("0 0\n"));
}

void TestConsoleRedirection::furtherMethods_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("signalTexts");

    const auto row = [](const char *line, Texts signalTexts) {
        QTest::newRow(line) << QString::fromLatin1(line) << textsOf(signalTexts);
    };
    row("print(sys.stdout.flush(), sys.stdin.flush())", {"out None", "out  ", "out None", "out \n", "done"});
    row("sys.stdout.isatty(), sys.stdin.isatty()", {"out (False, False)", "out \n", "done"});
    row("sys.stdout.writable(), sys.stdin.readable()", {"out (True, True)", "out \n", "done"});
    row("sys.stdout.seekable()", {"out False", "out \n", "done"});
    row("sys.stdout.encoding, sys.stdin.encoding", {"out ('utf-8', 'utf-8')", "out \n", "done"});
    row("sys.stdout.errors", {"out 'strict'", "out \n", "done"});
    row("sys.stdout.closed", {"out False", "out \n", "done"});
    row("print(sys.stdout.close()); print('a'); sys.stdout.closed",
        {"out None", "out \n", "out a", "out \n", "out False", "out \n", "done"});
    row("print(sys.stdin.close())", {"out None", "out \n", "done"});
    row("sys.stdout.writelines(['a', 'b\\n'])", {"out a", "out b\n", "done"});
    row("sys.stderr.writelines(['a', 'b\\n'])", {"err a", "err b\n", "done"});
    row("sys.stdout.writelines(str(i) for i in range(3))", {"out 0", "out 1", "out 2", "done"});
    row("sys.stdout.writelines('ab')", {"out a", "out b", "done"});
    row("sys.stdout.writelines([])", {"done"});
    row("print('a', flush=True)", {"out a", "out \n", "done"});
    row("iter(sys.stdin) is sys.stdin", {"out True", "out \n", "done"});
}

void TestConsoleRedirection::furtherMethods()
{
    QFETCH(QString, line);
    QFETCH(QStringList, signalTexts);
    QCOMPARE(evaluator->type(line), signalTexts);
}

void TestConsoleRedirection::furtherReading_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QString>("shown");

    const auto row = [](const char *name, const char *file, Texts answers, const char *shown) {
        QTest::newRow(name) << QString::fromLatin1(file) << textsOf(answers) << QString::fromLatin1(shown);
    };
    row("read", "import sys\nprint(repr(sys.stdin.read()))", {"a"}, "'a\\n'\n");
    row("readlines", "import sys\nprint(sys.stdin.readlines())", {"a"}, "['a\\n']\n");
    row("next", "import sys\nprint(repr(next(sys.stdin)))", {"a"}, "'a\\n'\n");
    row("iteration until a word",
        "import sys\nfor line in sys.stdin:\n    if line == 'end\\n': break\n    print(line, end='')\n",
        {"a", "b", "end"}, "a\nb\n");
    row("some lines", "import sys, itertools\nprint(list(itertools.islice(sys.stdin, 2)))", {"a", "b", "c"},
        "['a\\n', 'b\\n']\n");
    row("until an empty line", "print(list(iter(input, '')))", {"a", "b", ""}, "['a', 'b']\n");
}

void TestConsoleRedirection::furtherReading()
{
    QFETCH(QString, file);
    QFETCH(QStringList, answers);
    QFETCH(QString, shown);
    evaluator->setAnswers(answers);
    QCOMPARE(evaluator->shownByFile(file), shown);
}

void TestConsoleRedirection::writeLinesFails_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("exception");

    QTest::newRow("no iterable") << QStringLiteral("sys.stdout.writelines(5)") << QString()
                                 << QStringLiteral("err <class 'TypeError'>");
    QTest::newRow("no text") << QStringLiteral("sys.stdout.writelines(['a', 5, 'b'])") << QStringLiteral("a")
                             << QStringLiteral("err <class 'SystemError'>");
    QTest::newRow("an iterable that raises")
        << QStringLiteral("sys.stdout.writelines(1 / i and 'a' for i in (1, 0))") << QStringLiteral("a")
        << QStringLiteral("err <class 'ZeroDivisionError'>");
}

void TestConsoleRedirection::writeLinesFails()
{
    QFETCH(QString, line);
    QFETCH(QString, written);
    QFETCH(QString, exception);
    const QString shown = evaluator->shownBy(line);
    QVERIFY2(shown.startsWith(written + exception), qPrintable(shown));
}

QTEST_GUILESS_MAIN(TestConsoleRedirection)
#include "tst_console_redirection.moc"
