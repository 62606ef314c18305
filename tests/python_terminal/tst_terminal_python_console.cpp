#include "python_terminal/terminal_python_console.h"

#include "tests/python_terminal/python_console_bench.h"

#include <QMetaMethod>
#include <QtTest>

/// What the console shows and reports: its start, lines that are typed, and questions.
class TestTerminalPythonConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void signalsAndSlots();
    void bannerThenPrompt();
    void theBannerReplacesWhatWasTyped();
    void everyBannerSetsUpTheNamespace();

    void lines_data();
    void lines();
    void outputIsColoured_data();
    void outputIsColoured();
    void aLineIsHandedOverOnce();
    void beginEvaluating();
    void beginEvaluatingTwice();
    void endEvaluating_data();
    void endEvaluating();
    void endEvaluatingWhenNothingRuns_data();
    void endEvaluatingWhenNothingRuns();
    void theFocusComesBack();
    void theFocusElsewhereStaysThere();
    void theHistoryHoldsWhatWasTyped();

    void continuation();
    void aBlockRunsWithItsFirstLine();
    void emptyLinesAndCommentsKeepThePendingStatement_data();
    void emptyLinesAndCommentsKeepThePendingStatement();

    void asksForInput();
    void answersAreNotHistory();
    void answersReachTheScript_data();
    void answersReachTheScript();
    void severalQuestions();
    void theFocusComesForAQuestion();
    void theFocusElsewhereStaysThereForAQuestion();

private:
    QStringList answerOf(const QString &line)
    {
        const int before = bench->display().size();
        return bench->run(line) ? bench->display().mid(before) : QStringList{QStringLiteral("no prompt")};
    }
    QString text() const { return bench->console->toPlainText(); }

    std::unique_ptr<PythonConsoleBench> bench;
};

void TestTerminalPythonConsole::init()
{
    bench = std::make_unique<PythonConsoleBench>();
    QVERIFY(bench->start());
}

void TestTerminalPythonConsole::cleanup()
{
    bench.reset();
}

// Start

void TestTerminalPythonConsole::signalsAndSlots()
{
    QStringList signalNames;
    QStringList slotNames;
    const QMetaObject &meta = TerminalPythonConsole::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() == QMetaMethod::Signal)
            signalNames.append(QString::fromLatin1(method.methodSignature()));
        else if (method.methodType() == QMetaMethod::Slot)
            slotNames.append(QString::fromLatin1(method.methodSignature()));
    }
    QCOMPARE(
        signalNames,
        (QStringList{QStringLiteral("initEvaluator()"), QStringLiteral("exitEvaluator()"),
                     QStringLiteral("clearEvaluator()"), QStringLiteral("returnPressed(QString)"),
                     QStringLiteral("complete(QString)"), QStringLiteral("executeFileInThread(QString)")}));
    QCOMPARE(slotNames,
             (QStringList{
                 QStringLiteral("onInitialized(QString)"), QStringLiteral("onInsertErrorText(QString)"),
                 QStringLiteral("onInsertSuccessText(QString)"), QStringLiteral("onCompleted(QStringList)"),
                 QStringLiteral("onEvaluationComplete(bool)"), QStringLiteral("onWaitingForStdIn()")}));
}

void TestTerminalPythonConsole::bannerThenPrompt()
{
    const QRegularExpression expected(QStringLiteral(
        "\\APython 3\\.7\\.\\d+ [^\\n]*\\n[^\\n]* on \\w+\\n"
        "Type \"help\", \"copyright\", \"credits\" or \"license\" for more information\\.\\n"
        "Type \"help\\(orbClient\\)\" for more information on the orbClient module\\.\\n> \\z"));
    QVERIFY2(expected.match(text()).hasMatch(), qPrintable(text()));
    const QStringList lines = ConsoleDisplay::linesOf(*bench->console);
    QVERIFY(std::all_of(lines.cbegin(), lines.cend(), [](const QString &line) {
        return line.startsWith(QLatin1String("white:")) && !line.contains(QLatin1Char('|'));
    }));
    QVERIFY(bench->console->isEnabled());
    QVERIFY(bench->busyEvents().empty());
}

void TestTerminalPythonConsole::theBannerReplacesWhatWasTyped()
{
    bench.reset();
    PythonConsoleBench early;
    // No event is handled in between: the interpreter may have started, but the console does not know.
    QCOMPARE(early.console->toPlainText(), QStringLiteral("> "));
    early.console->history.append(QStringLiteral("of before"));
    QTest::keyClicks(early.console, QStringLiteral("xyz"));
    QCOMPARE(early.console->toPlainText(), QStringLiteral("> xyz"));
    QVERIFY(early.waitForBanner());
    QVERIFY(!early.console->toPlainText().contains(QLatin1String("xyz")));
    QVERIFY(early.console->history.isEmpty());
}

void TestTerminalPythonConsole::everyBannerSetsUpTheNamespace()
{
    bench.reset();
    PythonConsoleBench early;
    QSignalSpy cleared(early.console, &TerminalPythonConsole::clearEvaluator);
    QVERIFY(early.waitForBanner());
    QCOMPARE(cleared.size(), 1);
    QVERIFY(early.run(QStringLiteral("x = 1")));
    early.console->onInitialized(QStringLiteral("another banner\n"));
    QCOMPARE(early.console->toPlainText(), QStringLiteral("another banner\n> "));
    QCOMPARE(cleared.size(), 2);
    early.bannerLines = 1;
    QVERIFY(early.run(QStringLiteral("x")));
    QVERIFY(early.display().at(1).startsWith(QLatin1String("red:<class 'NameError'> name 'x'")));
}

// Lines

void TestTerminalPythonConsole::lines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("display");
    const QString prompt = QStringLiteral("white:> ");
    QTest::newRow("output") << QStringLiteral(
        "print(1)") << QStringList{prompt + QStringLiteral("print(1)"), QStringLiteral("green:1"), prompt};
    QTest::newRow("value") << QStringLiteral(
        "'a' * 3") << QStringList{prompt + QStringLiteral("'a' * 3"), QStringLiteral("green:'aaa'"), prompt};
    QTest::newRow("nothing") << QStringLiteral("x = 1")
                             << QStringList{prompt + QStringLiteral("x = 1"), prompt};
    QTest::newRow("empty") << QString() << QStringList{prompt, prompt};
    QTest::newRow("comment") << QStringLiteral("# note")
                             << QStringList{prompt + QStringLiteral("# note"), prompt};
    QTest::newRow("several texts")
        << QStringLiteral("print(1, 2)")
        // The blank between the two is a text of its own, in which there is nothing to see.
        << QStringList{prompt + QStringLiteral("print(1, 2)"), QStringLiteral("green:1"),
                       QStringLiteral("green:2"), prompt};
    QTest::newRow("lines in one text")
        << QStringLiteral("print('  a\\n b  ')")
        << QStringList{prompt + QStringLiteral("print('  a\\n b  ')"), QStringLiteral("green:a"),
                       QStringLiteral("green: b"), prompt};
    QTest::newRow("error output") << QStringLiteral("n = sys.stderr.write('bad')")
                                  << QStringList{prompt + QStringLiteral("n = sys.stderr.write('bad')"),
                                                 QStringLiteral("red:bad"), prompt};
    QTest::newRow("both") << QStringLiteral("print(1); n = sys.stderr.write('bad'); print(2)")
                          << QStringList{
                                 prompt + QStringLiteral("print(1); n = sys.stderr.write('bad'); print(2)"),
                                 QStringLiteral("green:1"), QStringLiteral("red:bad"),
                                 QStringLiteral("green:2"), prompt};
    QTest::newRow("syntax error")
        << QStringLiteral("a b")
        << QStringList{
               prompt + QStringLiteral("a b"),
               QStringLiteral("red:<class 'SyntaxError'> ('invalid syntax', ('<stdin>', 1, 3, 'a b\\n'))"),
               prompt};
    QTest::newRow("beyond ASCII") << QStringLiteral("print('grün √')")
                                  << QStringList{prompt + QStringLiteral("print('grün √')"),
                                                 QStringLiteral("green:grün √"), prompt};
}

void TestTerminalPythonConsole::lines()
{
    QFETCH(QString, line);
    QFETCH(QStringList, display);
    QVERIFY(bench->run(line));
    QCOMPARE(bench->display(), display);
}

void TestTerminalPythonConsole::outputIsColoured_data()
{
    QTest::addColumn<bool>("error");
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("line");
    QTest::newRow("success") << false << QStringLiteral("a text") << QStringLiteral("white:> |green:a text");
    QTest::newRow("error") << true << QStringLiteral("a text") << QStringLiteral("white:> |red:a text");
    QTest::newRow("blanks around") << true << QStringLiteral(" \t a text \n\n")
                                   << QStringLiteral("white:> |red:a text");
    QTest::newRow("line feed alone") << false << QStringLiteral("\n") << QString();
    QTest::newRow("empty") << true << QString() << QString();
}

void TestTerminalPythonConsole::outputIsColoured()
{
    QFETCH(bool, error);
    QFETCH(QString, written);
    QFETCH(QString, line);
    error ? bench->console->onInsertErrorText(written) : bench->console->onInsertSuccessText(written);
    // Whatever is shown next stands behind it.
    bench->console->onEvaluationComplete(false);
    QCOMPARE(bench->display(),
             line.isEmpty() ? QStringList{QStringLiteral("white:> ")} : (QStringList{line, QString()}));
}

void TestTerminalPythonConsole::aLineIsHandedOverOnce()
{
    QSignalSpy handedOver(bench->console, &TerminalPythonConsole::returnPressed);
    bench->enter(QStringLiteral("print('one')"));
    QCOMPARE(handedOver.size(), 1);
    QCOMPARE(handedOver.constFirst().constFirst().toString(), QStringLiteral("print('one')"));
    // The console's own prompt is not printed: there is none until the statement has ended.
    QVERIFY(text().endsWith(QLatin1String("> print('one')\n")));
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(handedOver.size(), 1);
}

void TestTerminalPythonConsole::beginEvaluating()
{
    QVERIFY(bench->busyEvents().empty());
    bench->enter(QStringLiteral("1"));
    QCOMPARE(bench->busyEvents(), std::vector<qint64>{1});
    QVERIFY(!bench->console->isEnabled());
    QVERIFY(!bench->console->hasFocus());
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(bench->busyEvents(), (std::vector<qint64>{1, 0}));
    QCOMPARE(bench->observer.events().size(), std::size_t{2});
}

void TestTerminalPythonConsole::beginEvaluatingTwice()
{
    QString first = QStringLiteral("print('first')");
    QString second = QStringLiteral("print('second')");
    bench->console->executeCommand(first);
    bench->console->executeCommand(second);
    QCOMPARE(bench->busyEvents(), std::vector<qint64>{1});
    QTRY_VERIFY(text().contains(QLatin1String("second\n")));
    // One of the two ends it; the other then shows no prompt.
    QCOMPARE(bench->busyEvents(), (std::vector<qint64>{1, 0}));
    QCOMPARE(text().count(QLatin1String("> ")), 2);
}

void TestTerminalPythonConsole::endEvaluating_data()
{
    QTest::addColumn<bool>("goesOn");
    QTest::addColumn<QString>("prompt");
    QTest::newRow("complete") << false << QStringLiteral("white:> ");
    QTest::newRow("goes on") << true << QStringLiteral("white:. ");
}

void TestTerminalPythonConsole::endEvaluating()
{
    QFETCH(bool, goesOn);
    QFETCH(QString, prompt);
    {
        // The worker hears nothing of this line.
        const QSignalBlocker blocker(bench->console);
        bench->enter(QStringLiteral("line"));
    }
    bench->console->onEvaluationComplete(goesOn);
    QCOMPARE(bench->busyEvents(), (std::vector<qint64>{1, 0}));
    QVERIFY(bench->isAtPrompt());
    QVERIFY(bench->console->hasFocus());
    QCOMPARE(bench->console->focusReason, Qt::OtherFocusReason);
    QCOMPARE(bench->display(), (QStringList{QStringLiteral("white:> line"), prompt}));
    QCOMPARE(bench->console->promptEnd, text().size());
}

void TestTerminalPythonConsole::endEvaluatingWhenNothingRuns_data()
{
    QTest::addColumn<bool>("goesOn");
    QTest::newRow("complete") << false;
    QTest::newRow("goes on") << true;
}

void TestTerminalPythonConsole::endEvaluatingWhenNothingRuns()
{
    QFETCH(bool, goesOn);
    const QString before = text();
    bench->elsewhere->setFocus();
    bench->console->onEvaluationComplete(goesOn);
    QCOMPARE(text(), before);
    QVERIFY(bench->busyEvents().empty());
    QVERIFY(bench->elsewhere->hasFocus());
}

void TestTerminalPythonConsole::theFocusComesBack()
{
    bench->enter(QStringLiteral("1"));
    bench->elsewhere->setFocus();
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->console->hasFocus());
    QCOMPARE(bench->console->focusReason, Qt::OtherFocusReason);
}

void TestTerminalPythonConsole::theFocusElsewhereStaysThere()
{
    bench->elsewhere->setFocus();
    QVERIFY(bench->run(QStringLiteral("1")));
    QVERIFY(bench->elsewhere->hasFocus());
}

void TestTerminalPythonConsole::theHistoryHoldsWhatWasTyped()
{
    for (const char *line : {"1", "2", "2", "# note"})
        QVERIFY(bench->run(QString::fromLatin1(line)));
    QCOMPARE(bench->console->history,
             (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("# note")}));
    QTest::keyClick(bench->console, Qt::Key_Up);
    QTest::keyClick(bench->console, Qt::Key_Up);
    QVERIFY(text().endsWith(QLatin1String("> 2")));
}

// Statements of several lines

void TestTerminalPythonConsole::continuation()
{
    QVERIFY(bench->run(QStringLiteral("x = (")));
    QCOMPARE(bench->display().constLast(), QStringLiteral("white:. "));
    QVERIFY(bench->run(QStringLiteral("1)")));
    QCOMPARE(answerOf(QStringLiteral("x")),
             (QStringList{QStringLiteral("green:1"), QStringLiteral("white:> ")}));
    QCOMPARE(
        bench->display(),
        (QStringList{QStringLiteral("white:> x = ("), QStringLiteral("white:. 1)"),
                     QStringLiteral("white:> x"), QStringLiteral("green:1"), QStringLiteral("white:> ")}));
}

void TestTerminalPythonConsole::aBlockRunsWithItsFirstLine()
{
    QVERIFY(bench->run(QStringLiteral("for i in range(2):")));
    QCOMPARE(bench->display().constLast(), QStringLiteral("white:. "));
    QCOMPARE(answerOf(QStringLiteral(" print(i)")),
             (QStringList{QStringLiteral("green:0"), QStringLiteral("green:1"), QStringLiteral("white:> ")}));
}

void TestTerminalPythonConsole::emptyLinesAndCommentsKeepThePendingStatement_data()
{
    QTest::addColumn<QString>("between");
    QTest::newRow("empty") << QString();
    QTest::newRow("comment") << QStringLiteral("# note");
}

void TestTerminalPythonConsole::emptyLinesAndCommentsKeepThePendingStatement()
{
    QFETCH(QString, between);
    QVERIFY(bench->run(QStringLiteral("x = (")));
    // The prompt is the normal one again, which is meant; the statement is still there.
    QCOMPARE(answerOf(between), QStringList{QStringLiteral("white:> ")});
    QVERIFY(bench->run(QStringLiteral("2)")));
    QCOMPARE(answerOf(QStringLiteral("x")).constFirst(), QStringLiteral("green:2"));
}

// Questions

void TestTerminalPythonConsole::asksForInput()
{
    bench->enter(QStringLiteral("a = input('name')"));
    QVERIFY(bench->waitForQuestion());
    QCOMPARE(bench->busyEvents(), (std::vector<qint64>{1, 0}));
    QVERIFY(bench->console->hasFocus());
    QCOMPARE(bench->console->focusReason, Qt::OtherFocusReason);
    QCOMPARE(bench->display(),
             (QStringList{QStringLiteral("white:> a = input('name')"), QStringLiteral("green:name"),
                          QStringLiteral("white:? ")}));
    bench->enter(QStringLiteral("Ada"));
    QVERIFY(bench->waitForPrompt());
    // Evaluating went on until here.
    QCOMPARE(bench->busyEvents(), (std::vector<qint64>{1, 0, 0}));
    QCOMPARE(answerOf(QStringLiteral("a")).constFirst(), QStringLiteral("green:'Ada'"));
}

void TestTerminalPythonConsole::answersAreNotHistory()
{
    QSignalSpy handedOver(bench->console, &TerminalPythonConsole::returnPressed);
    bench->enter(QStringLiteral("a = input()"));
    QVERIFY(bench->waitForQuestion());
    QVERIFY(bench->run(QStringLiteral("secret")));
    QCOMPARE(bench->console->history, QStringList{QStringLiteral("a = input()")});
    QCOMPARE(handedOver.size(), 1);
}

void TestTerminalPythonConsole::answersReachTheScript_data()
{
    QTest::addColumn<QString>("question");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("got");
    const QString input = QStringLiteral("input()");
    const QString line = QStringLiteral("sys.stdin.readline()");
    QTest::newRow("input") << input << QStringLiteral("a b") << QStringLiteral("green:'a b'");
    QTest::newRow("empty input") << input << QString() << QStringLiteral("green:''");
    // The console cuts the blanks at the end of every line.
    QTest::newRow("blanks") << input << QStringLiteral("  a  ") << QStringLiteral("green:'  a'");
    QTest::newRow("beyond ASCII") << input << QStringLiteral("grün √") << QStringLiteral("green:'grün √'");
    QTest::newRow("comment") << input << QStringLiteral("# 5") << QStringLiteral("green:'# 5'");
    QTest::newRow("line") << line << QStringLiteral("a b") << QStringLiteral("green:'a b\\n'");
    QTest::newRow("empty line") << line << QString() << QStringLiteral("green:'\\n'");
}

void TestTerminalPythonConsole::answersReachTheScript()
{
    QFETCH(QString, question);
    QFETCH(QString, answer);
    QFETCH(QString, got);
    bench->enter(question);
    QVERIFY(bench->waitForQuestion());
    QCOMPARE(answerOf(answer), (QStringList{got, QStringLiteral("white:> ")}));
}

void TestTerminalPythonConsole::severalQuestions()
{
    bench->enter(QStringLiteral("print(input('one'), input('two'))"));
    QVERIFY(bench->waitForQuestion());
    bench->enter(QStringLiteral("1"));
    QTRY_VERIFY(text().endsWith(QLatin1String("two\n? ")));
    QVERIFY(bench->run(QStringLiteral("2")));
    QCOMPARE(bench->display().mid(1),
             (QStringList{QStringLiteral("green:one"), QStringLiteral("white:? 1"),
                          QStringLiteral("green:two"), QStringLiteral("white:? 2"), QStringLiteral("green:1"),
                          QStringLiteral("green:2"), QStringLiteral("white:> ")}));
    QCOMPARE(bench->busyEvents(), (std::vector<qint64>{1, 0, 0, 0}));
}

void TestTerminalPythonConsole::theFocusComesForAQuestion()
{
    bench->enter(QStringLiteral("input()"));
    bench->elsewhere->setFocus();
    QVERIFY(bench->waitForQuestion());
    QVERIFY(bench->console->hasFocus());
}

void TestTerminalPythonConsole::theFocusElsewhereStaysThereForAQuestion()
{
    bench->elsewhere->setFocus();
    bench->enter(QStringLiteral("input()"));
    QVERIFY(bench->waitForQuestion());
    QVERIFY(bench->elsewhere->hasFocus());
}

QTEST_MAIN(TestTerminalPythonConsole)
#include "tst_terminal_python_console.moc"
