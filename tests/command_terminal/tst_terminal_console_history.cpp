#include "command_terminal/terminal_console.h"

#include "tests/command_terminal/shown_console.h"

#include <QTest>

/// The history that Up and Down walk.
class TestTerminalConsoleHistory : public QObject, private ShownConsole
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void historyKeepsCommands_data();
    void historyKeepsCommands();
    void historyHasNoLimit();
    void browsesHistory_data();
    void browsesHistory();
    void browsingSavesWhatWasTyped();
    void entryMayBeChangedAndSent();
    void browsingIsForCommandsOnly();
};

void TestTerminalConsoleHistory::init()
{
    QVERIFY(showConsole());
}

void TestTerminalConsoleHistory::cleanup()
{
    closeConsole();
}

void TestTerminalConsoleHistory::historyKeepsCommands_data()
{
    QTest::addColumn<QStringList>("entered");
    QTest::addColumn<QStringList>("history");
    const QString a = QStringLiteral("A");
    const QString b = QStringLiteral("B");
    QTest::newRow("empty line") << QStringList{QString()} << QStringList();
    QTest::newRow("one") << QStringList{a} << QStringList{a};
    QTest::newRow("the same twice") << QStringList{a, a} << QStringList{a};
    QTest::newRow("the same three times") << QStringList{a, a, a} << QStringList{a};
    QTest::newRow("the same with an empty line between") << QStringList{a, QString(), a} << QStringList{a};
    QTest::newRow("back and forth") << QStringList{a, b, a} << QStringList{a, b, a};
    QTest::newRow("differs in case") << QStringList{a, QStringLiteral("a")}
                                     << QStringList{a, QStringLiteral("a")};
    QTest::newRow("the same once trimmed") << QStringList{a, QStringLiteral("A ")} << QStringList{a};
    QTest::newRow("blank") << QStringList{QStringLiteral(" ")} << QStringList{QStringLiteral(" ")};
}

void TestTerminalConsoleHistory::historyKeepsCommands()
{
    QFETCH(QStringList, entered);
    QFETCH(QStringList, history);
    for (const QString &line : std::as_const(entered))
        console->enterLine(line);
    QCOMPARE(console->executed.size(), entered.size());
    QCOMPARE(console->history, history);
    QCOMPARE(console->historyIndex, history.size());
}

void TestTerminalConsoleHistory::historyHasNoLimit()
{
    QStringList entered;
    for (int i = 0; i < 1500; ++i) {
        entered.append(QString::number(i));
        console->printText(entered.constLast() + QLatin1Char('\n'));
        console->executeInput();
    }
    QCOMPARE(console->history, entered);
}

void TestTerminalConsoleHistory::browsesHistory_data()
{
    QTest::addColumn<QString>("keys"); // u for Up, d for Down
    QTest::addColumn<QString>("input");
    QTest::addColumn<int>("index");
    QTest::newRow("newest") << QStringLiteral("u") << QStringLiteral("C") << 2;
    QTest::newRow("older") << QStringLiteral("uu") << QStringLiteral("B") << 1;
    QTest::newRow("oldest") << QStringLiteral("uuu") << QStringLiteral("A") << 0;
    QTest::newRow("stays at the oldest") << QStringLiteral("uuuuu") << QStringLiteral("A") << 0;
    QTest::newRow("back down") << QStringLiteral("uuuuud") << QStringLiteral("B") << 1;
    QTest::newRow("up and down") << QStringLiteral("ud") << QStringLiteral("typed") << 3;
    QTest::newRow("down past the newest") << QStringLiteral("uuuddd") << QStringLiteral("typed") << 3;
    QTest::newRow("further down") << QStringLiteral("uudddd") << QStringLiteral("typed") << 3;
    QTest::newRow("down first") << QStringLiteral("du") << QStringLiteral("C") << 2;
    QTest::newRow("twice") << QStringLiteral("uudduu") << QStringLiteral("B") << 1;
}

void TestTerminalConsoleHistory::browsesHistory()
{
    QFETCH(QString, keys);
    for (const QString &line : {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")})
        console->enterLine(line);
    console->type(QStringLiteral("typed"));
    for (const QChar key : std::as_const(keys))
        console->press(key == QLatin1Char('u') ? Qt::Key_Up : Qt::Key_Down);
    QTEST(console->input(), "input");
    QTEST(console->historyIndex, "index");
    QCOMPARE(console->cursorInInput(), console->input().size());
    QCOMPARE(console->coloursOf(console->promptEnd, console->input().size()), QList<QColor>{Qt::white});
    QCOMPARE(console->history.size(), 3);
}

void TestTerminalConsoleHistory::browsingSavesWhatWasTyped()
{
    console->press(Qt::Key_Up); // nothing to browse yet
    console->type(QStringLiteral("A"));
    console->press(Qt::Key_Up);
    console->press(Qt::Key_Down);
    QCOMPARE(console->input(), QStringLiteral("A"));
    console->press(Qt::Key_Return);

    console->type(QStringLiteral("half a line"));
    console->press(Qt::Key_Left);
    console->press(Qt::Key_Up);
    QCOMPARE(console->command, QStringLiteral("half a line")); // all of it, wherever the cursor is
    console->press(Qt::Key_Down);
    QCOMPARE(console->input(), QStringLiteral("half a line"));
    console->type(QStringLiteral(" more"));
    console->press(Qt::Key_Up);
    console->press(Qt::Key_Down);
    QCOMPARE(console->input(), QStringLiteral("half a line more"));
    QCOMPARE(console->executed, QStringList{QStringLiteral("A")});
}

void TestTerminalConsoleHistory::entryMayBeChangedAndSent()
{
    console->enterLine(QStringLiteral("A"));
    console->enterLine(QStringLiteral("B"));
    console->press(Qt::Key_Up);
    console->press(Qt::Key_Up);
    console->enterLine(QStringLiteral("2"));
    QCOMPARE(console->executed.constLast(), QStringLiteral("A2"));
    QCOMPARE(console->history, (QStringList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("A2")}));
    console->press(Qt::Key_Up);
    QCOMPARE(console->input(), QStringLiteral("A2"));
    console->press(Qt::Key_Return);
    QCOMPARE(console->history.size(), 3);
    QCOMPARE(console->historyIndex, 3);
}

void TestTerminalConsoleHistory::browsingIsForCommandsOnly()
{
    console->enterLine(QStringLiteral("A"));
    console->press(Qt::Key_Up);
    QCOMPARE(console->historyIndex, 0);
    console->printInputPrompt();
    console->type(QStringLiteral("answer"));
    console->press(Qt::Key_Down);
    console->press(Qt::Key_Up);
    QCOMPARE(console->input(), QStringLiteral("answer"));
    QCOMPARE(console->historyIndex, 0);
}

QTEST_MAIN(TestTerminalConsoleHistory)

#include "tst_terminal_console_history.moc"
