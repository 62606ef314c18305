#include "command_terminal/terminal_console.h"

#include "tests/command_terminal/probe_console.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QTest>

#include <memory>

/// What the console hands to its subclass, and when.
class TstTerminalConsoleHandOver : public QObject
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

private:
    std::unique_ptr<TerminalFixture> host;
    std::unique_ptr<ProbeConsole> console;
};

void TstTerminalConsoleHandOver::init()
{
    host = std::make_unique<TerminalFixture>();
    console = std::make_unique<ProbeConsole>(*host);
    console->resize(400, 200);
    console->show();
    console->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(console.get()));
}

void TstTerminalConsoleHandOver::cleanup()
{
    console.reset();
    host.reset();
}

void TstTerminalConsoleHandOver::executeInputRunsWithoutReturn_data()
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

void TstTerminalConsoleHandOver::executeInputRunsWithoutReturn()
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

void TstTerminalConsoleHandOver::executeInputIgnoresInputMode()
{
    console->printInputPrompt();
    console->type(QStringLiteral("get"));
    console->executeInput();
    QCOMPARE(console->executed, QStringList{QStringLiteral("get")});
    QVERIFY(console->submitted.isEmpty());
}

// Handing a line over

void TstTerminalConsoleHandOver::commandIsReadyBeforeItIsExecuted()
{
    console->enterLine(QStringLiteral("first"));
    QCOMPARE(console->executed, QStringList{QStringLiteral("first")});
    QVERIFY(console->atHook.busy);
    QCOMPARE(console->atHook.history, QStringList{QStringLiteral("first")});
    QCOMPARE(console->atHook.historyIndex, 1);
}

void TstTerminalConsoleHandOver::commandIsEmptyAfterwards()
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

void TstTerminalConsoleHandOver::inputIsSubmitted()
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

void TstTerminalConsoleHandOver::lineIsTrimmed_data()
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

void TstTerminalConsoleHandOver::lineIsTrimmed()
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

void TstTerminalConsoleHandOver::baseAnswersWithAPrompt()
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

void TstTerminalConsoleHandOver::staysDeafWithoutAPrompt()
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

QTEST_MAIN(TstTerminalConsoleHandOver)

#include "tst_terminal_console_hand_over.moc"
