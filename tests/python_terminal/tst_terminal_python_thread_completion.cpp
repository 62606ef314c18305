#include "python_terminal/terminal_python_thread.h"

#include "hostclient/orb_item_definitions.h"
#include "hostclient/orb_item_id.h"
#include "tests/python_terminal/evaluator_under_test.h"

#include <QtTest>

#include <memory>

/// What a user is offered for a word, and that being offered it does nothing to the hardware.
class TestTerminalPythonThreadCompletion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void words_data();
    void words();
    void namesOfTheUser();
    void candidates_data();
    void candidates();
    void runsToItsBound_data();
    void runsToItsBound();
    void nothingIsShownMeanwhile();
    void outputIsShownAgainAfterwards();
    void withoutACompleter();
    void leavesAPendingStatementAlone();
    void asksTheHardwareNothing_data();
    void asksTheHardwareNothing();

private:
    void fillBackend();
    void useCompleter(const QString &result);

    std::unique_ptr<EvaluatorUnderTest> evaluator;
};

void TestTerminalPythonThreadCompletion::initTestCase()
{
    evaluator = std::make_unique<EvaluatorUnderTest>();
    fillBackend();
    evaluator->init();
}

void TestTerminalPythonThreadCompletion::cleanupTestCase()
{
    evaluator.reset();
}

void TestTerminalPythonThreadCompletion::init()
{
    evaluator->clear();
}

/// A service with one connection, one crate, one module of two channels.
void TestTerminalPythonThreadCompletion::fillBackend()
{
    RecordingBackend &backend = evaluator->backend();
    backend.setControllers({{QStringLiteral("c1"), QString()}});
    OrbItemId crate(OrbItemId::Crate);
    crate.address = 1000;
    backend.setCrates({crate});
    OrbItemId module(OrbItemId::Module);
    module.address = 2;
    backend.setModules({module});
    backend.setCrateModules({module});
    backend.setItem(QStringLiteral("c1"),
                    QStringLiteral("0.2.") + OrbItemDefinitions::getItemNameModuleStatusnumberOfChannels(),
                    {QStringLiteral("2"), QString(), QStringLiteral("int"), 0});
}

/// Puts a completer in place whose answer for a state is an expression; `calls` counts how often it was asked.
void TestTerminalPythonThreadCompletion::useCompleter(const QString &result)
{
    const QString file = QStringLiteral("calls = 0\n"
                                        "class Given:\n"
                                        "    def complete(self, text, state):\n"
                                        "        localdict['calls'] += 1\n"
                                        "        return %1\n"
                                        "completer = Given()\n")
                             .arg(result);
    QCOMPARE(evaluator->execute(file), QStringList(QStringLiteral("done")));
}

void TestTerminalPythonThreadCompletion::words_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("candidates");

    const auto row = [](const char *word, const char *candidates) {
        QTest::newRow(*word != '\0' ? word : "empty")
            << QString::fromUtf8(word) << QString::fromUtf8(candidates);
    };
    row("", "");
    row("p", "");
    row("pri", "");
    row("äöü", "");
    row("prin", " print");
    row("rang", " range");
    row("Zero", " ZeroDivisionError");
    // The word is one of the candidates already.
    row("print", "");
    row("range", "");
    row("sys.", nullptr);
    row("sys.stdo", " sys.stdout");
    row("sys.stdout.wri", " sys.stdout.writable sys.stdout.write sys.stdout.writelines");
    row("sys.stdout.write", "");
    // Keywords come with the space that follows them.
    row("lamb", " lambda ");
    row("nothing.of", "");
    row("nothing_of", "");
    row("1234", "");
    // What does not even compile as an argument.
    row("a\"bc", "");
    row("abc\\", "");
    row("abc\n", "");
    row("\", 0) or 1/0 #", "");
}

void TestTerminalPythonThreadCompletion::words()
{
    QFETCH(QString, word);
    QFETCH(QString, candidates);
    const QStringList signalTexts = evaluator->complete(word);
    if (word == QLatin1String("sys.")) {
        QCOMPARE(signalTexts.size(), 1);
        QVERIFY(signalTexts.value(0).contains(QLatin1String(" sys.argv ")));
        QVERIFY(signalTexts.value(0).contains(QLatin1String(" sys.exit ")));
    } else {
        QCOMPARE(signalTexts, QStringList(QStringLiteral("candidates") + candidates));
    }
}

void TestTerminalPythonThreadCompletion::namesOfTheUser()
{
    evaluator->type({QStringLiteral("voltage_set = voltage_ramp = 1"),
                     QStringLiteral("def voltage_of(): pass"),
                     QStringLiteral("class C: limit_low = limit_high = 1")});
    QCOMPARE(evaluator->complete(QStringLiteral("volt")),
             QStringList(QStringLiteral("candidates voltage_set voltage_ramp voltage_of")));
    QCOMPARE(evaluator->complete(QStringLiteral("C.li")),
             QStringList(QStringLiteral("candidates C.limit_high C.limit_low")));
    evaluator->clear();
    QCOMPARE(evaluator->complete(QStringLiteral("volt")), QStringList(QStringLiteral("candidates")));
}

void TestTerminalPythonThreadCompletion::candidates_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("candidates");
    QTest::addColumn<int>("calls");

    const auto row = [](const char *name, const char *given, const char *word, const char *candidates,
                        int calls) {
        QTest::newRow(name) << QString::fromUtf8(given) << QString::fromUtf8(word)
                            << QString::fromUtf8(candidates) << calls;
    };
    constexpr int Bound = 1000;
    row("in their order", "['beta', 'alpha']", "word", " beta alpha", Bound);
    row("an opening bracket is cut", "['alpha(', 'beta((']", "word", " alpha beta(", Bound);
    row("nothing else is cut", "['al(pha', 'beta)', '(gamma']", "word", " al(pha beta) (gamma", Bound);
    row("single characters", "['a', 'bc', 'd']", "word", " bc", Bound);
    row("a single character with a bracket", "['a(']", "word", " a", Bound);
    row("the empty text", "['', 'ab']", "word", " ab", Bound);
    row("duplicates", "['alpha', 'beta', 'alpha(', 'beta']", "word", " alpha beta", Bound);
    row("None in between", "['alpha', None, None, 'beta']", "word", " alpha beta", Bound);
    row("text with a quotation mark", "[\"it's\"]", "word", " \"it's\"", Bound);
    row("no text at all", "[12345, 12]", "word", " 12345", Bound);
    row("letters of all kinds", "['gr\u00f6\u00dfe\u20ac']", "word", " größe€", Bound);
    row("the word itself", "['alpha', 'word', 'beta']", "word", "", 2);
    row("the word itself as a function", "['word(']", "word", "", 1);
    row("a part of the word", "['or', 'beta']", "word", "", 1);
    row("only case differs", "['WORD', 'Word']", "word", " WORD Word", Bound);
    row("the word is a part", "['words', 'sword']", "word", " words sword", Bound);
    row("an error ends it, with what there is", "['alpha', 'beta', 1/0 if state == 2 else None]", "word",
        " alpha beta", 3);
    row("so does a wish to end", "['alpha', sys.exit() if state == 1 else None]", "word", " alpha", 2);
}

void TestTerminalPythonThreadCompletion::candidates()
{
    QFETCH(QString, given);
    QFETCH(QString, word);
    QFETCH(QString, candidates);
    QFETCH(int, calls);

    useCompleter(QStringLiteral("dict(enumerate(%1)).get(state)").arg(given));
    QCOMPARE(evaluator->complete(word), QStringList(QStringLiteral("candidates") + candidates));
    QCOMPARE(evaluator->shownBy(QStringLiteral("calls")), QString::number(calls) + QLatin1Char('\n'));
}

void TestTerminalPythonThreadCompletion::runsToItsBound_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("listed");

    QTest::newRow("none") << 0 << 0;
    QTest::newRow("one less than the bound") << 999 << 999;
    QTest::newRow("the bound") << 1000 << 1000;
    QTest::newRow("more") << 1500 << 1000;
}

void TestTerminalPythonThreadCompletion::runsToItsBound()
{
    QFETCH(int, number);
    QFETCH(int, listed);

    useCompleter(QStringLiteral("'name%d' % state if state < {} else None")
                     .replace(QStringLiteral("{}"), QString::number(number)));
    const QStringList signalTexts = evaluator->complete(QStringLiteral("word"));
    QCOMPARE(signalTexts.size(), 1);
    QCOMPARE(signalTexts.value(0).split(QLatin1Char(' ')).size() - 1, listed);
    QCOMPARE(evaluator->shownBy(QStringLiteral("calls")), QStringLiteral("1000\n"));
}

/// What is written to standard output is taken for a result, what is written to standard error is dropped.
void TestTerminalPythonThreadCompletion::nothingIsShownMeanwhile()
{
    useCompleter(QStringLiteral(
        "sys.stdout.write('written') and sys.stderr.write('warning') if state == 0 else None"));
    QCOMPARE(evaluator->complete(QStringLiteral("word")), QStringList(QStringLiteral("candidates written")));
    useCompleter(QStringLiteral("sys.stderr.write('warning')"));
    QCOMPARE(evaluator->complete(QStringLiteral("word")), QStringList(QStringLiteral("candidates")));
}

void TestTerminalPythonThreadCompletion::outputIsShownAgainAfterwards()
{
    evaluator->complete(QStringLiteral("prin"));
    QCOMPARE(evaluator->type(QStringLiteral("_ = sys.stdout.write('a'), sys.stderr.write('b')")),
             QStringList({QStringLiteral("out a"), QStringLiteral("err b"), QStringLiteral("done")}));
    evaluator->complete(QStringLiteral("a\"bc"));
    QCOMPARE(evaluator->shownBy(QStringLiteral("print(1)")), QStringLiteral("1\n"));
}

void TestTerminalPythonThreadCompletion::withoutACompleter()
{
    evaluator->type(QStringLiteral("del completer"));
    QCOMPARE(evaluator->complete(QStringLiteral("prin")), QStringList(QStringLiteral("candidates")));
}

void TestTerminalPythonThreadCompletion::leavesAPendingStatementAlone()
{
    evaluator->type(QStringLiteral("x = ("));
    evaluator->complete(QStringLiteral("prin"));
    QCOMPARE(evaluator->type(QStringLiteral("2)")), QStringList(QStringLiteral("done")));
    QCOMPARE(evaluator->shownBy(QStringLiteral("x")), QStringLiteral("2\n"));
}

void TestTerminalPythonThreadCompletion::asksTheHardwareNothing_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("oneOfThem");

    const auto row = [](const char *word, const char *oneOfThem) {
        QTest::newRow(word) << QString::fromLatin1(word) << QString::fromLatin1(oneOfThem);
    };
    row("orbClient.", "orbClient.getConnections");
    row("orbClient.getI", "orbClient.getItem");
    row("orbClient.channel.", "orbClient.channel.getControlVoltageSet");
    row("connection.", "connection.getCrates");
    row("connection.getStatus", "connection.getStatusSessionId");
    row("crate.", "crate.getControlPower");
    row("module.", "module.getStatusErrorCounter");
    row("channel.", "channel.setControlVoltageSet");
    row("channel.getControlVoltageS", "channel.getControlVoltageSet");
    // Not even what a call would give.
    row("module.getStatusErrorCounter().", nullptr);
    row("connection.crates[0].", nullptr);
}

void TestTerminalPythonThreadCompletion::asksTheHardwareNothing()
{
    QFETCH(QString, word);
    QFETCH(QString, oneOfThem);

    QCOMPARE(evaluator->execute(QStringLiteral("connection = orbClient.findConnection('c1')\n"
                                               "crate = connection.crates[0]\n"
                                               "module = connection.modules[0]\n"
                                               "channel = module.channels[1]\n")),
             QStringList(QStringLiteral("done")));
    QVERIFY(!evaluator->backend().calls().isEmpty());
    evaluator->backend().clearCalls();
    const QStringList offered = evaluator->complete(word).value(0).split(QLatin1Char(' ')).mid(1);
    QCOMPARE(evaluator->backend().calls().size(), 0);
    if (oneOfThem.isEmpty())
        QCOMPARE(offered, QStringList());
    else
        QVERIFY2(offered.contains(oneOfThem), qPrintable(offered.join(QLatin1Char(' '))));
}

QTEST_GUILESS_MAIN(TestTerminalPythonThreadCompletion)
#include "tst_terminal_python_thread_completion.moc"
