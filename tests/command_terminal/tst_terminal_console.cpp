#include "command_terminal/terminal_console.h"

#include "tests/command_terminal/shown_console.h"

#include <QScrollBar>
#include <QTest>

/// What the console shows: prompts, output and its colours.
class TestTerminalConsole : public QObject, private ShownConsole
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void startsWithAPrompt();
    void paintsWhiteOnBlack_data();
    void paintsWhiteOnBlack();

    void promptsTakeInput_data();
    void promptsTakeInput();
    void promptsScrollToTheCursor_data();
    void promptsScrollToTheCursor();
    void textIsInsertedAtTheCursor();
    void messagesAreTrimmedLines_data();
    void messagesAreTrimmedLines();
    void messagesScrollToTheCursor_data();
    void messagesScrollToTheCursor();
    void outputReplacesNoSelection();
    void messagesAbovePromptKeepTheTypedLine_data();
    void messagesAbovePromptKeepTheTypedLine();

    void clearEmptiesEverything_data();
    void clearEmptiesEverything();
    void removeInputKeepsThePrompt();
};

void TestTerminalConsole::init()
{
    QVERIFY(showConsole());
}

void TestTerminalConsole::cleanup()
{
    closeConsole();
}

void TestTerminalConsole::startsWithAPrompt()
{
    const ProbeConsole fresh(*host);
    QCOMPARE(fresh.toPlainText(), QStringLiteral("> "));
    QCOMPARE(fresh.promptEnd, 2);
    QCOMPARE(fresh.textCursor().position(), 2);
    QVERIFY(!fresh.busy);
    QVERIFY(!fresh.inputMode);
    QVERIFY(fresh.history.isEmpty());
    QCOMPARE(fresh.historyIndex, 0);
    QCOMPARE(fresh.timerId, 0);
    QCOMPARE(fresh.completionStart, -1);
    QVERIFY(fresh.completer);
    QCOMPARE(fresh.completer->parentWidget(), &fresh);
    QVERIFY(!fresh.isPopupOpen());
    QCOMPARE(fresh.tabStopDistance(), 40.0);
    QCOMPARE(fresh.currentCharFormat().foreground().color(), QColor(Qt::white));
}

void TestTerminalConsole::paintsWhiteOnBlack_data()
{
    QTest::addColumn<int>("group");
    QTest::newRow("active") << int{QPalette::Active};
    QTest::newRow("inactive") << int{QPalette::Inactive};
    QTest::newRow("disabled") << int{QPalette::Disabled};
}

void TestTerminalConsole::paintsWhiteOnBlack()
{
    QFETCH(int, group);
    const auto colourGroup = static_cast<QPalette::ColorGroup>(group);
    QCOMPARE(console->palette().color(colourGroup, QPalette::Base), QColor(Qt::black));
    QCOMPARE(console->palette().color(colourGroup, QPalette::Text), QColor(Qt::white));
}

// Prompts

using PromptOperation = void (TerminalConsole::*)();
Q_DECLARE_METATYPE(PromptOperation)

void TestTerminalConsole::promptsTakeInput_data()
{
    QTest::addColumn<PromptOperation>("print");
    QTest::addColumn<bool>("inputModeBefore");
    QTest::addColumn<QString>("prompt");
    QTest::addColumn<bool>("inputModeAfter");

    QTest::newRow("normal") << &TerminalConsole::printPrompt << false << QStringLiteral("> ") << false;
    QTest::newRow("normal leaves input mode")
        << &TerminalConsole::printPrompt << true << QStringLiteral("> ") << true;
    QTest::newRow("continuation") << &TerminalConsole::printContinuationPrompt << false
                                  << QStringLiteral(". ") << false;
    QTest::newRow("continuation leaves input mode")
        << &TerminalConsole::printContinuationPrompt << true << QStringLiteral(". ") << true;
    QTest::newRow("input") << &TerminalConsole::printInputPrompt << false << QStringLiteral("? ") << true;
    QTest::newRow("input again") << &TerminalConsole::printInputPrompt << true << QStringLiteral("? ")
                                 << true;
}

void TestTerminalConsole::promptsTakeInput()
{
    QFETCH(PromptOperation, print);
    QFETCH(bool, inputModeBefore);
    QFETCH(QString, prompt);

    console->printText(QStringLiteral("run\n"));
    console->busy = true;
    console->inputMode = inputModeBefore;
    (console.get()->*print)();

    QCOMPARE(console->toPlainText(), QStringLiteral("> run\n") + prompt);
    QCOMPARE(console->promptEnd, console->textCursor().position());
    QCOMPARE(console->promptEnd, console->toPlainText().size());
    QCOMPARE(console->coloursOf(console->promptEnd - 2, 2), QList<QColor>{Qt::white});
    QVERIFY(!console->busy);
    QTEST(console->inputMode, "inputModeAfter");
}

void TestTerminalConsole::promptsScrollToTheCursor_data()
{
    QTest::addColumn<PromptOperation>("print");
    QTest::newRow("normal") << &TerminalConsole::printPrompt;
    QTest::newRow("continuation") << &TerminalConsole::printContinuationPrompt;
    QTest::newRow("input") << &TerminalConsole::printInputPrompt;
}

void TestTerminalConsole::promptsScrollToTheCursor()
{
    QFETCH(PromptOperation, print);
    console->printText(QStringLiteral("line\n").repeated(200));
    console->verticalScrollBar()->setValue(0);
    QVERIFY(!console->viewport()->rect().contains(console->cursorRect()));
    (console.get()->*print)();
    QVERIFY(console->viewport()->rect().contains(console->cursorRect()));
}

// Output

void TestTerminalConsole::textIsInsertedAtTheCursor()
{
    console->type(QStringLiteral("ad"));
    console->moveTo(console->promptEnd + 1);
    console->printText(QStringLiteral("bc"));
    QCOMPARE(console->toPlainText(), QStringLiteral("> abcd"));
    QCOMPARE(console->textCursor().position(), console->promptEnd + 3);
    QCOMPARE(console->coloursOf(0, 6), QList<QColor>{Qt::white});
    // Exactly as it is: nothing is trimmed, nothing added.
    console->moveTo(6);
    console->printText(QStringLiteral("  x \n "));
    QCOMPARE(console->toPlainText(), QStringLiteral("> abcd  x \n "));
}

using MessageOperation = void (TerminalConsole::*)(const QString &);
Q_DECLARE_METATYPE(MessageOperation)

void TestTerminalConsole::messagesAreTrimmedLines_data()
{
    QTest::addColumn<MessageOperation>("print");
    QTest::addColumn<QColor>("colour");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");

    const struct
    {
        const char *name;
        MessageOperation print;
        QColor colour;
    } kinds[] = {{"error", &TerminalConsole::printError, Qt::red},
                 {"success", &TerminalConsole::printSuccess, Qt::green}};
    for (const auto &kind : kinds) {
        QTest::addRow("%s, plain", kind.name)
            << kind.print << kind.colour << QStringLiteral("done") << QStringLiteral("done\n");
        QTest::addRow("%s, white space around", kind.name)
            << kind.print << kind.colour << QStringLiteral(" \t\n a  b \r\n ") << QStringLiteral("a  b\n");
        QTest::addRow("%s, several lines", kind.name)
            << kind.print << kind.colour << QStringLiteral("a\n\nb\n") << QStringLiteral("a\n\nb\n");
        QTest::addRow("%s, empty", kind.name) << kind.print << kind.colour << QString() << QString();
        QTest::addRow("%s, only white space", kind.name)
            << kind.print << kind.colour << QStringLiteral(" \t\r\n") << QString();
    }
}

void TestTerminalConsole::messagesAreTrimmedLines()
{
    QFETCH(MessageOperation, print);
    QFETCH(QColor, colour);
    QFETCH(QString, text);
    QFETCH(QString, shown);

    console->printText(QStringLiteral("run\n"));
    const int start = console->textCursor().position();
    (console.get()->*print)(text);
    QCOMPARE(console->toPlainText(), QStringLiteral("> run\n") + shown);
    const QList<QColor> expected = shown.isEmpty() ? QList<QColor>() : QList<QColor>{colour};
    QCOMPARE(console->coloursOf(start, shown.trimmed().size()), expected);

    // White again, for what is printed and for what is typed.
    QCOMPARE(console->currentCharFormat().foreground().color(), QColor(Qt::white));
    console->type(QStringLiteral("x"));
    console->printText(QStringLiteral("y"));
    QCOMPARE(console->coloursOf(start + shown.size(), 2), QList<QColor>{Qt::white});
    QCOMPARE(console->coloursOf(0, start), QList<QColor>{Qt::white});
}

void TestTerminalConsole::messagesScrollToTheCursor_data()
{
    QTest::addColumn<MessageOperation>("print");
    QTest::newRow("error") << &TerminalConsole::printError;
    QTest::newRow("success") << &TerminalConsole::printSuccess;
}

void TestTerminalConsole::messagesScrollToTheCursor()
{
    QFETCH(MessageOperation, print);
    console->printText(QStringLiteral("line\n").repeated(200));
    console->verticalScrollBar()->setValue(0);
    QVERIFY(!console->viewport()->rect().contains(console->cursorRect()));
    (console.get()->*print)(QStringLiteral("done"));
    QVERIFY(console->viewport()->rect().contains(console->cursorRect()));
}

void TestTerminalConsole::outputReplacesNoSelection()
{
    console->printText(QStringLiteral("earlier\n"));
    console->printPrompt();
    console->type(QStringLiteral("typed"));
    console->selectAll();
    console->printText(QStringLiteral("!"));
    console->selectAll();
    console->printError(QStringLiteral("bad"));
    console->selectAll();
    console->printSuccess(QStringLiteral("good"));
    console->selectAll();
    console->printPrompt();
    QCOMPARE(console->toPlainText(), QStringLiteral("> earlier\n> typed!bad\ngood\n> "));
}

void TestTerminalConsole::messagesAbovePromptKeepTheTypedLine_data()
{
    QTest::addColumn<MessageOperation>("print");
    QTest::addColumn<PromptOperation>("printPrompt");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QColor>("colour");

    QTest::newRow("error") << &TerminalConsole::printErrorAbovePrompt << &TerminalConsole::printPrompt
                           << QStringLiteral(" no answer \n") << QStringLiteral("no answer\n")
                           << QColor(Qt::red);
    QTest::newRow("success") << &TerminalConsole::printSuccessAbovePrompt << &TerminalConsole::printPrompt
                             << QStringLiteral("good") << QStringLiteral("good\n") << QColor(Qt::green);
    QTest::newRow("several lines") << &TerminalConsole::printErrorAbovePrompt << &TerminalConsole::printPrompt
                                   << QStringLiteral("a\nb\nc") << QStringLiteral("a\nb\nc\n")
                                   << QColor(Qt::red);
    QTest::newRow("nothing") << &TerminalConsole::printErrorAbovePrompt << &TerminalConsole::printPrompt
                             << QStringLiteral(" \n") << QString() << QColor();
    QTest::newRow("above an input prompt")
        << &TerminalConsole::printErrorAbovePrompt << &TerminalConsole::printInputPrompt
        << QStringLiteral("bad") << QStringLiteral("bad\n") << QColor(Qt::red);
}

void TestTerminalConsole::messagesAbovePromptKeepTheTypedLine()
{
    QFETCH(MessageOperation, print);
    QFETCH(PromptOperation, printPrompt);
    QFETCH(QString, text);
    QFETCH(QString, shown);
    QFETCH(QColor, colour);

    console->printText(QStringLiteral("earlier\n"));
    const int lineStart = console->textCursor().position();
    (console.get()->*printPrompt)();
    const QString prompt = console->toPlainText().right(2);
    console->type(QStringLiteral("ab cd"));
    console->mark(console->promptEnd + 4, console->promptEnd + 1);
    (console.get()->*print)(text);

    QCOMPARE(console->toPlainText(),
             QStringLiteral("> earlier\n") + shown + prompt + QStringLiteral("ab cd"));
    QCOMPARE(console->input(), QStringLiteral("ab cd"));
    QCOMPARE(console->cursorInInput(), 1);
    QCOMPARE(console->textCursor().selectedText(), QStringLiteral("b c"));
    const QList<QColor> expected = shown.isEmpty() ? QList<QColor>() : QList<QColor>{colour};
    QCOMPARE(console->coloursOf(lineStart, shown.trimmed().size()), expected);
    QCOMPARE(console->coloursOf(console->promptEnd - 2, 7), QList<QColor>{Qt::white});

    console->moveTo(console->promptEnd + 5);
    console->type(QStringLiteral("e"));
    console->press(Qt::Key_Return);
    QCOMPARE(console->executed + console->submitted, QStringList{QStringLiteral("ab cde")});
}

// Clearing and removing

void TestTerminalConsole::clearEmptiesEverything_data()
{
    QTest::addColumn<QString>("banner");
    QTest::newRow("no banner") << QString();
    QTest::newRow("banner") << QStringLiteral("Welcome\n");
    QTest::newRow("banner without a line feed") << QStringLiteral("Welcome");
}

void TestTerminalConsole::clearEmptiesEverything()
{
    QFETCH(QString, banner);
    console->enterLine(QStringLiteral("first"));
    console->printError(QStringLiteral("bad"));
    console->printInputPrompt();
    console->type(QStringLiteral("half"));
    console->showCompletions({QStringLiteral("halfway")});
    QVERIFY(console->isPopupOpen());
    console->busy = true;
    console->historyIndex = 1;

    console->clearConsole(banner);
    QCOMPARE(console->toPlainText(), banner + QStringLiteral("> "));
    QCOMPARE(console->promptEnd, banner.size() + 2);
    QCOMPARE(console->textCursor().position(), banner.size() + 2);
    QCOMPARE(console->coloursOf(0, banner.trimmed().size()).size(), banner.isEmpty() ? 0 : 1);
    QCOMPARE(console->colourAt(0), QColor(Qt::white));
    QVERIFY(console->history.isEmpty());
    QCOMPARE(console->historyIndex, 0);
    QVERIFY(!console->busy);
    QVERIFY(!console->inputMode);
    QVERIFY(!console->isPopupOpen());
    QCOMPARE(console->completionStart, -1);

    console->enterLine(QStringLiteral("again"));
    QCOMPARE(console->executed, (QStringList{QStringLiteral("first"), QStringLiteral("again")}));
}

void TestTerminalConsole::removeInputKeepsThePrompt()
{
    console->printText(QStringLiteral("out\n"));
    console->printPrompt();
    console->type(QStringLiteral("one"));
    console->press(Qt::Key_Enter);
    console->type(QStringLiteral("two"));
    console->moveTo(console->promptEnd + 1);
    console->removeInput();
    QCOMPARE(console->toPlainText(), QStringLiteral("> out\n> "));
    QCOMPARE(console->cursorInInput(), 0);
    console->removeInput();
    QCOMPARE(console->toPlainText(), QStringLiteral("> out\n> "));
}

QTEST_MAIN(TestTerminalConsole)

#include "tst_terminal_console.moc"
