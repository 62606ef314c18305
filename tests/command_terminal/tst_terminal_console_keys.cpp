#include "command_terminal/terminal_console.h"

#include "tests/command_terminal/shown_console.h"

#include <QTest>

namespace
{

const QString Typed = QStringLiteral("ab cd");
constexpr int End = 5; // behind `Typed`

QStringList none()
{
    return {};
}

QStringList one(const QString &line)
{
    return {line};
}

} // namespace

/// The console's key table, row by row.
class TestTerminalConsoleKeys : public QObject, private ShownConsole
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void keyWithoutPopup_data();
    void keyWithoutPopup();
    void keyWithPopup_data();
    void keyWithPopup();
    void keyIsDroppedWhileBusy_data();
    void keyIsDroppedWhileBusy();

    void stopsAtThePrompt_data();
    void stopsAtThePrompt();
    void marksOnlyTheInput_data();
    void marksOnlyTheInput();
    void leavesCursorBeforeThePrompt_data();
    void leavesCursorBeforeThePrompt();
    void backspaceDeletesTheSelection();
    void backspaceRightAfterThePromptChangesNothing();
    void backspaceByWordsStopsAtThePrompt_data();
    void backspaceByWordsStopsAtThePrompt();
    void returnSendsTheWholeInput_data();
    void returnSendsTheWholeInput();
    void keypadEnterOnlyBreaksTheLine_data();
    void keypadEnterOnlyBreaksTheLine();

private:
    void typeWith(bool inputMode);
};

void TestTerminalConsoleKeys::init()
{
    QVERIFY(showConsole());
}

void TestTerminalConsoleKeys::cleanup()
{
    closeConsole();
}

/// Two commands lie behind; then `Typed` is typed after a normal or an input prompt.
void TestTerminalConsoleKeys::typeWith(bool inputMode)
{
    console->enterLine(QStringLiteral("first"));
    console->enterLine(QStringLiteral("second"));
    if (inputMode)
        console->printInputPrompt();
    console->type(Typed);
    QCOMPARE(console->completionPrefix, QStringLiteral("cd"));
    console->executed.clear();
    console->requested.clear();
}

void TestTerminalConsoleKeys::keyWithoutPopup_data()
{
    QTest::addColumn<bool>("inputMode");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("cursor"); // all positions count from the end of the prompt
    QTest::addColumn<QString>("input"); // after the key; that of the next prompt after a line was handed over
    QTest::addColumn<int>("cursorAfter");
    QTest::addColumn<QStringList>("executed");
    QTest::addColumn<QStringList>("submitted");
    QTest::addColumn<QStringList>("requested");
    QTest::addColumn<int>("completionStart"); // -1 for closed

    // What is the same in both modes.
    for (const bool mode : {false, true}) {
        const char *where = mode ? "input" : "normal";
        const auto row = [&](const char *name) -> QTestData & {
            return QTest::addRow("%s, %s", where, name) << mode;
        };
        row("Tab") << Qt::Key_Tab << End << Typed + QLatin1Char('\t') << 6 << none() << none() << one({})
                   << 6;
        row("Tab inside") << Qt::Key_Tab << 1 << QStringLiteral("a\tb cd") << 2 << none() << none() << one({})
                          << 2;
        row("Enter") << Qt::Key_Enter << End << Typed + QLatin1Char('\n') << 6 << none() << none() << one({})
                     << 6;
        row("Enter inside") << Qt::Key_Enter << 1 << QStringLiteral("a\nb cd") << 2 << none() << none()
                            << one({}) << 2;
        row("letter") << Qt::Key_X << End << QStringLiteral("ab cdx") << 6 << none() << none()
                      << one(QStringLiteral("cdx")) << 3;
        row("letter inside") << Qt::Key_X << 1 << QStringLiteral("axb cd") << 2 << none() << none()
                             << one(QStringLiteral("ax")) << 0;
        row("blank") << Qt::Key_Space << End << QStringLiteral("ab cd ") << 6 << none() << none() << one({})
                     << 6;
        row("letter at the prompt") << Qt::Key_X << 0 << QStringLiteral("xab cd") << 1 << none() << none()
                                    << one(QStringLiteral("x")) << 0;
        row("Delete") << Qt::Key_Delete << 0 << QStringLiteral("b cd") << 0 << none() << none() << one({})
                      << -1;
        row("Escape") << Qt::Key_Escape << End << Typed << End << none() << none()
                      << one(QStringLiteral("cd")) << 3;
        row("function key") << Qt::Key_F5 << 4 << Typed << 4 << none() << none() << one(QStringLiteral("c"))
                            << 3;
        row("Backspace") << Qt::Key_Backspace << End << QStringLiteral("ab c") << 4 << none() << none()
                         << none() << -1;
        row("Backspace inside") << Qt::Key_Backspace << 1 << QStringLiteral("b cd") << 0 << none() << none()
                                << none() << -1;
        row("Backspace at the prompt")
            << Qt::Key_Backspace << 0 << Typed << 0 << none() << none() << none() << -1;
        row("Home") << Qt::Key_Home << End << Typed << 0 << none() << none() << none() << -1;
        row("Home at the prompt") << Qt::Key_Home << 0 << Typed << 0 << none() << none() << none() << -1;
        row("Left") << Qt::Key_Left << End << Typed << 4 << none() << none() << none() << -1;
        row("Left at the prompt") << Qt::Key_Left << 0 << Typed << 0 << none() << none() << none() << -1;
        row("Page Up") << Qt::Key_PageUp << End << Typed << 0 << none() << none() << none() << -1;
        row("Page Up at the prompt") << Qt::Key_PageUp << 0 << Typed << 0 << none() << none() << none() << -1;
        row("End") << Qt::Key_End << 1 << Typed << End << none() << none() << none() << -1;
        row("Right") << Qt::Key_Right << 1 << Typed << 2 << none() << none() << none() << -1;
        row("Right at the end") << Qt::Key_Right << End << Typed << End << none() << none() << none() << -1;
        row("Page Down at the end") << Qt::Key_PageDown << End << Typed << End << none() << none() << none()
                                    << -1;
    }

    // What differs.
    QTest::newRow("normal, Return") << false << Qt::Key_Return << End << QString() << 0 << one(Typed)
                                    << none() << none() << -1;
    QTest::newRow("input, Return") << true << Qt::Key_Return << End << Typed + QLatin1Char('\n') << 6
                                   << none() << one(Typed) << none() << -1;
    QTest::newRow("normal, Return inside")
        << false << Qt::Key_Return << 1 << QString() << 0 << one(Typed) << none() << none() << -1;
    QTest::newRow("input, Return inside") << true << Qt::Key_Return << 1 << Typed + QLatin1Char('\n') << 6
                                          << none() << one(Typed) << none() << -1;
    QTest::newRow("normal, Up") << false << Qt::Key_Up << End << QStringLiteral("second") << 6 << none()
                                << none() << none() << 3;
    QTest::newRow("input, Up") << true << Qt::Key_Up << 1 << Typed << 1 << none() << none() << none() << 3;
    QTest::newRow("normal, Down when not browsing")
        << false << Qt::Key_Down << 1 << Typed << 1 << none() << none() << none() << 3;
    QTest::newRow("input, Down") << true << Qt::Key_Down << 1 << Typed << 1 << none() << none() << none()
                                 << 3;
}

void TestTerminalConsoleKeys::keyWithoutPopup()
{
    QFETCH(bool, inputMode);
    QFETCH(Qt::Key, key);
    QFETCH(int, cursor);
    QFETCH(int, completionStart);

    typeWith(inputMode);
    console->moveTo(console->promptEnd + cursor);
    console->press(key);

    QTEST(console->input(), "input");
    QTEST(console->cursorInInput(), "cursorAfter");
    QVERIFY(!console->textCursor().hasSelection());
    QTEST(console->executed, "executed");
    QTEST(console->submitted, "submitted");
    QTEST(console->requested, "requested");
    QCOMPARE(console->completionStart, completionStart < 0 ? -1 : console->promptEnd + completionStart);
    QVERIFY(!console->isPopupOpen());
    QVERIFY(console->toPlainText().startsWith(QStringLiteral("> first\n> second\n> ")));
}

void TestTerminalConsoleKeys::keyWithPopup_data()
{
    QTest::addColumn<bool>("inputMode");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("input"); // after the key
    QTest::addColumn<QString>("current"); // in the popup, "cde" before the key; empty when it is closed
    QTest::addColumn<QStringList>("submitted");

    const QString first = QStringLiteral("cdd");
    const QString second = QStringLiteral("cde");
    const QString third = QStringLiteral("cdf");

    for (const bool mode : {false, true}) {
        const char *where = mode ? "input" : "normal";
        const auto row = [&](const char *name) -> QTestData & {
            return QTest::addRow("%s, %s", where, name) << mode;
        };
        row("Up") << Qt::Key_Up << Typed << first << none();
        row("Down") << Qt::Key_Down << Typed << third << none();
        row("Enter") << Qt::Key_Enter << Typed + QLatin1Char('\n') << second << none();
        row("letter") << Qt::Key_X << Typed + QLatin1Char('x') << second << none();
        row("Backspace") << Qt::Key_Backspace << QStringLiteral("ab c") << QString() << none();
        row("Home") << Qt::Key_Home << Typed << QString() << none();
        row("Left") << Qt::Key_Left << Typed << QString() << none();
        row("Page Up") << Qt::Key_PageUp << Typed << QString() << none();
        row("End") << Qt::Key_End << Typed << QString() << none();
        row("Right") << Qt::Key_Right << Typed << QString() << none();
        row("Page Down") << Qt::Key_PageDown << Typed << QString() << none();
    }
    QTest::newRow("normal, Tab") << false << Qt::Key_Tab << QStringLiteral("ab cde") << QString() << none();
    QTest::newRow("normal, Return") << false << Qt::Key_Return << QStringLiteral("ab cde") << QString()
                                    << none();
    QTest::newRow("input, Tab") << true << Qt::Key_Tab << Typed + QLatin1Char('\t') << second << none();
    QTest::newRow("input, Return") << true << Qt::Key_Return << Typed + QLatin1Char('\n') << QString()
                                   << one(Typed);
}

void TestTerminalConsoleKeys::keyWithPopup()
{
    QFETCH(bool, inputMode);
    QFETCH(Qt::Key, key);
    QFETCH(QString, current);

    typeWith(inputMode);
    console->showCompletions({QStringLiteral("cdd"), QStringLiteral("cde"), QStringLiteral("cdf")});
    console->press(Qt::Key_Down);
    QVERIFY(console->isPopupOpen());
    QCOMPARE(console->completer->currentCompletion(), QStringLiteral("cde"));
    console->press(key);

    QTEST(console->input(), "input");
    QTEST(console->submitted, "submitted");
    QCOMPARE(console->executed, none());
    QCOMPARE(console->isPopupOpen(), !current.isEmpty());
    if (current.isEmpty())
        QCOMPARE(console->completionStart, -1);
    else
        QCOMPARE(console->completer->currentCompletion(), current);
    QCOMPARE(console->historyIndex, 2); // no key went to the history
    QVERIFY(console->hasFocus());
}

void TestTerminalConsoleKeys::keyIsDroppedWhileBusy_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<bool>("inputMode");
    for (const bool mode : {false, true}) {
        for (const Qt::Key key :
             {Qt::Key_Tab, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Home,
              Qt::Key_Left, Qt::Key_PageUp, Qt::Key_End, Qt::Key_Right, Qt::Key_PageDown, Qt::Key_Up,
              Qt::Key_Down, Qt::Key_X, Qt::Key_Space})
            QTest::addRow("%s, %s", mode ? "input" : "normal", qPrintable(QKeySequence(key).toString()))
                << key << mode;
    }
}

void TestTerminalConsoleKeys::keyIsDroppedWhileBusy()
{
    QFETCH(Qt::Key, key);
    QFETCH(bool, inputMode);

    typeWith(inputMode);
    console->showCompletions({QStringLiteral("cdd"), QStringLiteral("cde")});
    const int cursor = console->promptEnd + 2;
    console->moveTo(cursor);
    const QString text = console->toPlainText();
    console->busy = true;
    console->press(key);

    QCOMPARE(console->toPlainText(), text);
    QCOMPARE(console->textCursor().position(), cursor);
    QCOMPARE(console->executed + console->submitted + console->requested, none());
    QVERIFY(console->isPopupOpen());
    QCOMPARE(console->completer->currentCompletion(), QStringLiteral("cdd"));
    QCOMPARE(console->historyIndex, 2);
    QVERIFY(console->busy);
}

// Single keys, closer

using KeyCombination = QPair<Qt::Key, Qt::KeyboardModifiers>;

void TestTerminalConsoleKeys::stopsAtThePrompt_data()
{
    QTest::addColumn<KeyCombination>("keys");
    QTest::newRow("Home") << KeyCombination(Qt::Key_Home, Qt::NoModifier);
    QTest::newRow("Ctrl+Home") << KeyCombination(Qt::Key_Home, Qt::ControlModifier);
    QTest::newRow("Left") << KeyCombination(Qt::Key_Left, Qt::NoModifier);
    QTest::newRow("Ctrl+Left") << KeyCombination(Qt::Key_Left, Qt::ControlModifier);
    QTest::newRow("Page Up") << KeyCombination(Qt::Key_PageUp, Qt::NoModifier);
}

void TestTerminalConsoleKeys::stopsAtThePrompt()
{
    QFETCH(KeyCombination, keys);
    console->printText(QStringLiteral("line\n").repeated(100));
    console->printPrompt();
    console->type(QStringLiteral("abc"));
    for (int i = 0; i < 10; ++i)
        console->press(keys.first, keys.second);
    QCOMPARE(console->cursorInInput(), 0);
    QVERIFY(!console->textCursor().hasSelection());
}

void TestTerminalConsoleKeys::marksOnlyTheInput_data()
{
    stopsAtThePrompt_data();
}

void TestTerminalConsoleKeys::marksOnlyTheInput()
{
    QFETCH(KeyCombination, keys);
    console->printText(QStringLiteral("line\n").repeated(100));
    console->printPrompt();
    console->type(QStringLiteral("abc"));
    for (int i = 0; i < 10; ++i)
        console->press(keys.first, keys.second | Qt::ShiftModifier);
    QCOMPARE(console->cursorInInput(), 0);
    QCOMPARE(console->textCursor().selectedText(), QStringLiteral("abc"));
}

void TestTerminalConsoleKeys::leavesCursorBeforeThePrompt_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Home") << Qt::Key_Home;
    QTest::newRow("Left") << Qt::Key_Left;
    QTest::newRow("Page Up") << Qt::Key_PageUp;
    QTest::newRow("Backspace") << Qt::Key_Backspace;
}

void TestTerminalConsoleKeys::leavesCursorBeforeThePrompt()
{
    QFETCH(Qt::Key, key);
    console->printText(QStringLiteral("one\ntwo\n"));
    console->printPrompt();
    console->moveTo(4);
    const QString text = console->toPlainText();
    console->press(key);
    QCOMPARE(console->textCursor().position(), 4);
    QCOMPARE(console->toPlainText(), text);
}

void TestTerminalConsoleKeys::backspaceDeletesTheSelection()
{
    console->type(QStringLiteral("abcdef"));
    console->mark(console->promptEnd + 2, console->promptEnd); // cursor at the prompt
    console->press(Qt::Key_Backspace);
    QCOMPARE(console->toPlainText(), QStringLiteral("> cdef"));
    console->mark(console->promptEnd + 1, console->promptEnd + 3);
    console->press(Qt::Key_Backspace);
    QCOMPARE(console->toPlainText(), QStringLiteral("> cf"));
    console->mark(
        0, console->promptEnd); // all of it earlier output: nothing is deleted, and nothing in its place
    console->press(Qt::Key_Backspace);
    QCOMPARE(console->toPlainText(), QStringLiteral("> cf"));
}

void TestTerminalConsoleKeys::backspaceRightAfterThePromptChangesNothing()
{
    console->printText(QStringLiteral("out\n"));
    console->printPrompt();
    for (const Qt::KeyboardModifiers modifiers :
         {Qt::KeyboardModifiers(), Qt::KeyboardModifiers(Qt::ShiftModifier),
          Qt::KeyboardModifiers(Qt::ControlModifier), Qt::KeyboardModifiers(Qt::AltModifier),
          Qt::ControlModifier | Qt::ShiftModifier}) {
        console->press(Qt::Key_Backspace, modifiers);
        QCOMPARE(console->toPlainText(), QStringLiteral("> out\n> "));
        QCOMPARE(console->cursorInInput(), 0);
    }
}

void TestTerminalConsoleKeys::backspaceByWordsStopsAtThePrompt_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("left");
    QTest::newRow("last of two words") << QStringLiteral("one two") << QStringLiteral("one ");
    QTest::newRow("only word") << QStringLiteral("one") << QString();
    QTest::newRow("blank, which runs on into the prompt") << QStringLiteral(" ") << QString();
}

void TestTerminalConsoleKeys::backspaceByWordsStopsAtThePrompt()
{
    QFETCH(QString, typed);
    QFETCH(QString, left);
    console->type(typed);
    console->press(Qt::Key_Backspace, Qt::ControlModifier);
    QCOMPARE(console->toPlainText(), QStringLiteral("> ") + left);
}

void TestTerminalConsoleKeys::returnSendsTheWholeInput_data()
{
    QTest::addColumn<KeyCombination>("keys");
    QTest::newRow("Return") << KeyCombination(Qt::Key_Return, Qt::NoModifier);
    QTest::newRow("Shift+Return") << KeyCombination(Qt::Key_Return, Qt::ShiftModifier);
    QTest::newRow("Ctrl+Return") << KeyCombination(Qt::Key_Return, Qt::ControlModifier);
}

void TestTerminalConsoleKeys::returnSendsTheWholeInput()
{
    QFETCH(KeyCombination, keys);
    console->type(QStringLiteral("get item"));
    console->selectAll();
    console->press(keys.first, keys.second);
    QCOMPARE(console->executed, one(QStringLiteral("get item")));
    QCOMPARE(console->toPlainText(), QStringLiteral("> get item\n> "));
}

void TestTerminalConsoleKeys::keypadEnterOnlyBreaksTheLine_data()
{
    QTest::addColumn<KeyCombination>("keys");
    QTest::newRow("keypad") << KeyCombination(Qt::Key_Enter, Qt::KeypadModifier);
    QTest::newRow("without the keypad's modifier") << KeyCombination(Qt::Key_Enter, Qt::NoModifier);
    QTest::newRow("with Shift") << KeyCombination(Qt::Key_Enter, Qt::KeypadModifier | Qt::ShiftModifier);
}

void TestTerminalConsoleKeys::keypadEnterOnlyBreaksTheLine()
{
    QFETCH(KeyCombination, keys);
    console->type(QStringLiteral("one"));
    console->press(keys.first, keys.second);
    QCOMPARE(console->executed, none());
    QCOMPARE(console->input(), QStringLiteral("one\n"));
    console->enterLine(QStringLiteral("two  "));
    QCOMPARE(console->executed, one(QStringLiteral("one\ntwo")));
}

QTEST_MAIN(TestTerminalConsoleKeys)

#include "tst_terminal_console_keys.moc"
