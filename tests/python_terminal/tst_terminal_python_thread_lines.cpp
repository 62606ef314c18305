#include "python_terminal/terminal_python_thread.h"

#include "tests/python_terminal/evaluator_under_test.h"

#include <QtTest>

#include <initializer_list>
#include <memory>

/// Lines as a user types them, and how errors read.
class TestTerminalPythonThreadLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void lines_data();
    void lines();
    void emptyAndCommentLinesLeaveAPendingStatement();
    void errorTexts_data();
    void errorTexts();
    void compileErrorsHaveNoTraceback();
    void noExceptionStaysSet_data();
    void noExceptionStaysSet();
    void signalsComeInTheOrderOfWriting();

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

const char *const EndOfFile = "unexpected EOF while parsing";

} // namespace

void TestTerminalPythonThreadLines::initTestCase()
{
    evaluator = std::make_unique<EvaluatorUnderTest>();
    evaluator->init();
}

void TestTerminalPythonThreadLines::cleanupTestCase()
{
    evaluator.reset();
}

void TestTerminalPythonThreadLines::init()
{
    evaluator->onWorker([this] { evaluator->host()->dropPendingCommand(); });
    evaluator->clear();
}

void TestTerminalPythonThreadLines::lines_data()
{
    QTest::addColumn<QStringList>("typed");
    QTest::addColumn<QStringList>("signalTexts");

    const auto row = [](const char *name, Texts typed, Texts signalTexts) {
        QTest::newRow(name) << textsOf(typed) << textsOf(signalTexts);
    };
    row("value", {"1 + 1"}, {"out 2", "out \n", "done"});
    row("no value", {"None"}, {"done"});
    row("statement", {"x = 1"}, {"done"});
    row("several statements in a line", {"x = 1; x; x + 1"}, {"out 1", "out \n", "out 2", "out \n", "done"});
    row("text", {"'a'"}, {"out 'a'", "out \n", "done"});
    row("umlauts, euro, a name of letters", {"größe = 'ä€'; print(größe)"}, {"out ä€", "out \n", "done"});
    row("empty", {""}, {"done"});
    row("comment", {"# note"}, {"done"});
    row("nothing but spaces", {"   "}, {"more"});
    row("comment after a statement", {"x = 1 # note:"}, {"done"});

    row("incomplete", {"x = ("}, {"more"});
    row("incomplete, completed", {"x = (", "1)", "x"}, {"more", "done", "out 1", "out \n", "done"});
    row("incomplete over several lines", {"x = [", "1,", "2,", "]", "x"},
        {"more", "more", "more", "done", "out [1, 2]", "out \n", "done"});
    row("incomplete, then wrong", {"x = (", "1 1)", "2"},
        {"more", "err <class 'SyntaxError'> ('invalid syntax', ('<stdin>', 2, 3, '1 1)\\n'))", "done",
         "out 2", "out \n", "done"});
    row("line joined by a backslash", {"x = 1 + \\", "2", "x"}, {"more", "done", "out 3", "out \n", "done"});
    row("compound statement runs after its first body line", {"for i in range(2):", "  print(i)"},
        {"more", "out 0", "out \n", "out 1", "out \n", "done"});
    row("body on the header's line", {"for i in (1,): print(i)"}, {"out 1", "out \n", "done"});
    row("an empty line does not end a block", {"if True:", "", "  print(1)"},
        {"more", "done", "out 1", "out \n", "done"});
    row("a second body line is a line of its own", {"if True:", "  x = 1", "  x = 2"},
        {"more", "done",
         "err <class 'IndentationError'> ('unexpected indent', ('<stdin>', 1, 2, '  x = 2\\n'))", "done"});
    row("nested headers", {"for i in (1, 2):", "  if i == 2:", "    print(i)"},
        {"more", "more", "out 2", "out \n", "done"});
    row("function", {"def f(x):", "  return x + 1", "f(1)"}, {"more", "done", "out 2", "out \n", "done"});
    row("class", {"class C:", "  y = 4", "C.y"}, {"more", "done", "out 4", "out \n", "done"});
    row("decorator", {"@staticmethod", "def f():", "  pass"}, {"more", "more", "done"});
    row("try without an end", {"try:", "  1/0"}, {"more", "more"});
    row("try with its end", {"try:", "  1/0", "except ZeroDivisionError:", "  print('caught')"},
        {"more", "more", "more", "out caught", "out \n", "done"});

    row("wrong", {"x = = 1"},
        {"err <class 'SyntaxError'> ('invalid syntax', ('<stdin>', 1, 5, 'x = = 1\\n'))", "done"});
    row("wrong is forgotten", {"x = = 1", "3"},
        {"err <class 'SyntaxError'> ('invalid syntax', ('<stdin>', 1, 5, 'x = = 1\\n'))", "done", "out 3",
         "out \n", "done"});
    row("open text of one line", {"x = 'a"},
        {"err <class 'SyntaxError'> ('EOL while scanning string literal', ('<stdin>', 1, 7, \"x = 'a\\n\"))",
         "done"});
    row("open text of several lines", {"'''a"},
        {"err <class 'SyntaxError'> ('EOF while scanning triple-quoted string literal', ('<stdin>', 1, 5, "
         "\"'''a\\n\"))",
         "done"});
    row("wrong, with a colon at its end", {"a b:"},
        {"err <class 'SyntaxError'> ('invalid syntax', ('<stdin>', 1, 3, 'a b:\\n'))", "more"});
    row("wrong, with a colon at its end, then a body", {"a b:", "  c", "1"},
        {"err <class 'SyntaxError'> ('invalid syntax', ('<stdin>', 1, 3, 'a b:\\n'))", "more",
         "err <class 'SyntaxError'> ('invalid syntax', ('<stdin>', 1, 3, 'a b:\\n'))", "done", "out 1",
         "out \n", "done"});
    row("error while running, with a colon at its end", {"1/0 # :"},
        {"err <class 'ZeroDivisionError'> division by zero <traceback object at 0x?>", "done"});
    row("error in a continued statement forgets it", {"x = (", "1/0)", "1"},
        {"more", "err <class 'ZeroDivisionError'> division by zero <traceback object at 0x?>", "done",
         "out 1", "out \n", "done"});
}

void TestTerminalPythonThreadLines::lines()
{
    QFETCH(QStringList, typed);
    QFETCH(QStringList, signalTexts);
    QCOMPARE(EvaluatorUnderTest::withoutAddresses(evaluator->type(typed)), signalTexts);
}

/// They end with the normal prompt, and the statement goes on with the line after them.
void TestTerminalPythonThreadLines::emptyAndCommentLinesLeaveAPendingStatement()
{
    const QStringList signalTexts = evaluator->type(textsOf({"x = (", "", "# 5,", "1)", "x"}));
    QCOMPARE(signalTexts, textsOf({"more", "done", "done", "done", "out 1", "out \n", "done"}));
}

void TestTerminalPythonThreadLines::errorTexts_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("text");

    const auto row = [](const char *line, const char *text) {
        QTest::newRow(line) << QString::fromUtf8(line) << QString::fromUtf8(text);
    };
    row("undefined", "<class 'NameError'> name 'undefined' is not defined <traceback object at 0x?>");
    row("raise ValueError", "<class 'ValueError'>  <traceback object at 0x?>");
    row("raise ValueError('a')", "<class 'ValueError'> a <traceback object at 0x?>");
    row("raise ValueError('ä\u20ac')", "<class 'ValueError'> ä\u20ac <traceback object at 0x?>");
    row("raise ValueError('a', 1)", "<class 'ValueError'> ('a', 1) <traceback object at 0x?>");
    row("raise ValueError(5)", "<class 'ValueError'> 5 <traceback object at 0x?>");
    row("raise KeyError('k')", "<class 'KeyError'> 'k' <traceback object at 0x?>");
    row("import nothing_of_that_name",
        "<class 'ModuleNotFoundError'> No module named 'nothing_of_that_name' <traceback object at 0x?>");
    row("raise type('E', (Exception,), {'__module__': 'm'})('v')",
        "<class 'm.E'> v <traceback object at 0x?>");
    // A value without a string of its own leaves its place empty.
    row("raise type('E', (Exception,), {'__module__': 'm', '__str__': None})('v')",
        "<class 'm.E'>  <traceback object at 0x?>");
    row("raise type('E', (Exception,), {'__module__': 'm', '__str__': lambda self: 5})('v')",
        "<class 'm.E'>  <traceback object at 0x?>");
    // A type without one is unknown.
    row("raise type('M', (type,), {'__str__': lambda self: 5})('E', (Exception,), {})('v')",
        "<unknown error type> v <traceback object at 0x?>");
    row("raise ValueError('x' * 100000)",
        qPrintable(QStringLiteral("<class 'ValueError'> %1 <traceback object at 0x?>")
                       .arg(QString(100000, QLatin1Char('x')))));
    row("sys.stdout.write(5)",
        "<class 'SystemError'> <method 'write' of 'redirection.ConsoleRedirection' objects> returned a "
        "result "
        "with an error set <traceback object at 0x?>");
    row("exec('a b')",
        "<class 'SyntaxError'> ('invalid syntax', ('<string>', 1, 3, 'a b\\n')) <traceback object at 0x?>");
    // What merely looks like an incomplete statement when it runs does not leave a prompt for its rest.
    row("raise SyntaxError('unexpected EOF while parsing')",
        "<class 'SyntaxError'> unexpected EOF while parsing <traceback object at 0x?>");
}

void TestTerminalPythonThreadLines::errorTexts()
{
    QFETCH(QString, line);
    QFETCH(QString, text);
    const QStringList expected = {QStringLiteral("err ") + text, QStringLiteral("done")};
    QCOMPARE(EvaluatorUnderTest::withoutAddresses(evaluator->type(line)), expected);
    QCOMPARE(EvaluatorUnderTest::withoutAddresses(evaluator->execute(line)), expected);
}

void TestTerminalPythonThreadLines::compileErrorsHaveNoTraceback()
{
    const QStringList signalTexts = evaluator->type(QStringLiteral("return 1"));
    QCOMPARE(signalTexts,
             textsOf({"err <class 'SyntaxError'> (\"'return' outside function\", ('<stdin>', 1, 0, None))",
                      "done"}));
    QVERIFY(!signalTexts.value(0).contains(QLatin1String(EndOfFile)));
}

void TestTerminalPythonThreadLines::noExceptionStaysSet_data()
{
    QTest::addColumn<QString>("line");

    for (const char *line : {"1/0", "a b", "x = (", "a b:", "sys.stdout.write(5)", "raise SystemExit",
                             "raise type('E', (Exception,), {'__str__': None})('v')", "1"})
        QTest::newRow(line) << QString::fromLatin1(line);
}

void TestTerminalPythonThreadLines::noExceptionStaysSet()
{
    QFETCH(QString, line);
    const auto nothingIsSet = [this] {
        bool set = true;
        evaluator->onWorker([&set] { set = PyErr_Occurred() != nullptr; });
        return !set;
    };
    evaluator->type(line);
    QVERIFY(nothingIsSet());
    evaluator->execute(line);
    QVERIFY(nothingIsSet());
    evaluator->complete(line);
    QVERIFY(nothingIsSet());
    evaluator->clear();
    QVERIFY(nothingIsSet());
}

void TestTerminalPythonThreadLines::signalsComeInTheOrderOfWriting()
{
    evaluator->setAnswers({QStringLiteral("x")});
    const QStringList signalTexts = evaluator->type(QStringLiteral(
        "_ = [sys.stdout.write('a'), sys.stderr.write('b'), input(), sys.stdout.write('c'), 1/0]"));
    QCOMPARE(EvaluatorUnderTest::withoutAddresses(signalTexts),
             textsOf({"out a", "err b", "input", "out c",
                      "err <class 'ZeroDivisionError'> division by zero <traceback object at 0x?>", "done"}));
}

QTEST_GUILESS_MAIN(TestTerminalPythonThreadLines)
#include "tst_terminal_python_thread_lines.moc"
