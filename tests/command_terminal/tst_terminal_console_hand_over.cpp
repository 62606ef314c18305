#include "command_terminal/terminal_console.h"

#include "tests/command_terminal/shown_console.h"

#include <QTest>

/// What the console hands to its subclass, and when.
class TestTerminalConsoleHandOver : public QObject, private ShownConsole
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void executeInputRunsWithoutReturn_data();
    void executeInputRunsWithoutReturn();
    void executeInputIgnoresInputMode();

    void commandIsReadyBeforeItIsExecuted();
    void commandIsEmptyAfterwards();
    void inputIsSubmitted();
    void lineIsTrimmed_data();
    void lineIsTrimmed();
    void baseAnswersWithAPrompt();
    void staysDeafWithoutAPrompt();
};

void TestTerminalConsoleHandOver::init()
{
    QVERIFY(showConsole());
}

void TestTerminalConsoleHandOver::cleanup()
{
    closeConsole();
}

void TestTerminalConsoleHandOver::executeInputRunsWithoutReturn_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("cursor"); // in the document; -1 for where typing left it
    QTest::addColumn<QString>("executed");
    QTest::addColumn<QStringList>("history");

    QTest::newRow("whole input") << QStringLiteral("get") << -1 << QStringLiteral("get")
                                 << QStringList{QStringLiteral("get")};
    QTest::newRow("trailing blanks") << QStringLiteral("get  ") << -1 << QStringLiteral("get")
                                     << QStringList{QStringLiteral("get")};
    QTest::newRow("only up to the cursor")
        << QStringLiteral("get") << 4 << QStringLiteral("ge") << QStringList{QStringLiteral("ge")};
    QTest::newRow("cursor right behind the prompt")
        << QStringLiteral("get") << 2 << QString() << QStringList();
    QTest::newRow("cursor before the input") << QStringLiteral("get") << 1 << QString() << QStringList();
    QTest::newRow("nothing typed") << QString() << -1 << QString() << QStringList();
}

void TestTerminalConsoleHandOver::executeInputRunsWithoutReturn()
{
    QFETCH(QString, typed);
    QFETCH(int, cursor);
    QFETCH(QString, executed);
    QFETCH(QStringList, history);

    console->prompts = false;
    console->type(typed);
    console->showCompletions({QStringLiteral("getItem")});
    if (cursor >= 0)
        console->moveTo(cursor);
    console->executeInput();

    QCOMPARE(console->executed, QStringList{executed});
    QCOMPARE(console->history, history);
    QCOMPARE(console->historyIndex, history.size());
    QCOMPARE(console->atHook.history, history);
    QVERIFY(!console->atHook.busy); // being busy is Return's own step
    QCOMPARE(console->toPlainText(), QStringLiteral("> ") + typed); // no line feed
    QVERIFY(console->command.isEmpty());
    QVERIFY(!console->isPopupOpen());
}

void TestTerminalConsoleHandOver::executeInputIgnoresInputMode()
{
    console->printInputPrompt();
    console->type(QStringLiteral("get"));
    console->executeInput();
    QCOMPARE(console->executed, QStringList{QStringLiteral("get")});
    QVERIFY(console->submitted.isEmpty());
}

// Handing a line over

void TestTerminalConsoleHandOver::commandIsReadyBeforeItIsExecuted()
{
    console->enterLine(QStringLiteral("first"));
    QCOMPARE(console->executed, QStringList{QStringLiteral("first")});
    QVERIFY(console->atHook.busy);
    QCOMPARE(console->atHook.history, QStringList{QStringLiteral("first")});
    QCOMPARE(console->atHook.historyIndex, 1);
}

void TestTerminalConsoleHandOver::commandIsEmptyAfterwards()
{
    console->prompts = false;
    console->type(QStringLiteral("first"));
    console->showCompletions({QStringLiteral("first_of_all")});
    console->completer->hide(); // hidden, yet in progress, as when the answer has not come
    QVERIFY(console->completionStart != -1);
    console->press(Qt::Key_Return);
    QVERIFY(console->command.isEmpty());
    QCOMPARE(console->completionStart, -1);
}

void TestTerminalConsoleHandOver::inputIsSubmitted()
{
    console->enterLine(QStringLiteral("first"));
    console->printInputPrompt();
    console->enterLine(QStringLiteral("an answer \t"));
    QCOMPARE(console->submitted, QStringList{QStringLiteral("an answer")});
    QCOMPARE(console->executed, QStringList{QStringLiteral("first")});
    QVERIFY(console->atHook.busy);
    QVERIFY(!console->atHook.inputMode);
    QCOMPARE(console->history, QStringList{QStringLiteral("first")}); // an answer is no command
    QVERIFY(console->busy);
    QVERIFY(!console->inputMode);
    QVERIFY(console->toPlainText().endsWith(QStringLiteral("? an answer \t\n")));
}

void TestTerminalConsoleHandOver::lineIsTrimmed_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("line");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("plain") << QStringLiteral("get") << QStringLiteral("get");
    QTest::newRow("trailing blanks") << QStringLiteral("get  ") << QStringLiteral("get");
    QTest::newRow("leading blanks stay") << QStringLiteral("  get") << QStringLiteral("  get");
    QTest::newRow("one blank") << QStringLiteral(" ") << QStringLiteral(" ");
    QTest::newRow("many blanks") << QStringLiteral("    ") << QStringLiteral(" ");
    QTest::newRow("json") << QStringLiteral("{\"i\":\"\"} ") << QStringLiteral("{\"i\":\"\"}");
}

void TestTerminalConsoleHandOver::lineIsTrimmed()
{
    QFETCH(QString, typed);
    QFETCH(QString, line);
    console->enterLine(typed);
    QCOMPARE(console->executed, QStringList{line});
    QCOMPARE(console->history, line.isEmpty() ? QStringList() : QStringList{line});
    console->printInputPrompt();
    console->enterLine(typed);
    QCOMPARE(console->submitted, QStringList{line});
}

void TestTerminalConsoleHandOver::baseAnswersWithAPrompt()
{
    TerminalConsole base(nullptr, host->mainData, host->observer);
    QTest::keyClicks(&base, QStringLiteral("get"));
    base.showCompletions({QStringLiteral("getItem")});
    auto *popup = base.findChild<TerminalConsoleCompleter *>();
    QVERIFY(popup->isVisible());
    QString line = QStringLiteral("get");
    base.executeCommand(line);
    QCOMPARE(base.toPlainText(), QStringLiteral("> get> "));
    QVERIFY(!popup->isVisible());
    QTest::keyClicks(&base, QStringLiteral("x"));
    QTest::keyClick(&base, Qt::Key_Return);
    QCOMPARE(base.toPlainText(), QStringLiteral("> get> x\n> "));

    // The other hooks do nothing, and nobody answers an input either.
    base.printInputPrompt();
    QTest::keyClicks(&base, QStringLiteral("y"));
    QVERIFY(!popup->isVisible());
    QTest::keyClick(&base, Qt::Key_Return);
    QCOMPARE(base.toPlainText(), QStringLiteral("> get> x\n> ? y\n"));
}

void TestTerminalConsoleHandOver::staysDeafWithoutAPrompt()
{
    console->prompts = false;
    console->enterLine(QStringLiteral("first"));
    QVERIFY(console->busy);
    console->enterLine(QStringLiteral("lost"));
    QCOMPARE(console->executed, QStringList{QStringLiteral("first")});
    QCOMPARE(console->toPlainText(), QStringLiteral("> first\n"));
    console->printPrompt();
    console->enterLine(QStringLiteral("heard"));
    QCOMPARE(console->executed, (QStringList{QStringLiteral("first"), QStringLiteral("heard")}));
}

QTEST_MAIN(TestTerminalConsoleHandOver)

#include "tst_terminal_console_hand_over.moc"
