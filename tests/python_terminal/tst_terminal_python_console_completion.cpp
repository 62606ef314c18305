#include "command_terminal/terminal_console_completer_contents.h"
#include "python_terminal/terminal_python_console.h"
#include "tests/python_terminal/python_console_bench.h"

#include <QtTest>

namespace
{

/// Counts the events of one type that an object gets.
class EventCount : public QObject
{
public:
    EventCount(QObject *watched, QEvent::Type countedType) : type(countedType)
    {
        watched->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == type)
            ++count;
        return QObject::eventFilter(watched, event);
    }

    int count = 0;

private:
    const QEvent::Type type;
};

} // namespace

/// Completion from the key to the popup and back into the line.
class TestTerminalPythonConsoleCompletion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void asksForTheWordBeforeTheCursor();
    void offers_data();
    void offers();
    void offersNothing_data();
    void offersNothing();
    void everythingInTheModule();
    void membersOfAChannelAskTheServiceNothing();
    void accepting_data();
    void accepting();
    void choosingAnother();
    void typingOnCloses();
    void nothingThatTheWordHasLeftBehind_data();
    void nothingThatTheWordHasLeftBehind();
    void noneForAnEarlierWord();
    void noneForAWordThatIsGone_data();
    void noneForAWordThatIsGone();
    void narrowsBeforeTheAnswer();
    void noneForALineThatWasHandedOver();
    void noneForAnAnswer();
    void noneForWhatAResetForgot();

private:
    bool isOpen() const { return bench->console->completer->isVisible(); }
    QStringList candidates() const
    {
        const auto *contents = bench->console->completer->findChild<TerminalConsoleCompleterContents *>();
        QStringList list;
        for (int row = 0; !contents->candidate(row).isEmpty(); ++row)
            list.append(contents->candidate(row));
        return list;
    }
    QString input() const { return bench->console->toPlainText().mid(bench->console->promptEnd); }
    /// Types a text and waits for the answer to each of its words.
    bool type(const QString &text)
    {
        const QSignalSpy asked(bench->console, &TerminalPythonConsole::complete);
        const EventCount arrivals(bench->console, QEvent::MetaCall); // from other threads
        QTest::keyClicks(bench->console, text);
        return QTest::qWaitFor([&] { return arrivals.count >= asked.size(); },
                               PythonConsoleBench::LongestWait)
            && asked.size() == text.size();
    }

    std::unique_ptr<PythonConsoleBench> bench;
};

void TestTerminalPythonConsoleCompletion::init()
{
    bench = std::make_unique<PythonConsoleBench>();
    QVERIFY(bench->start());
    // The end of the start is not the answer to anything.
    QVERIFY(bench->run(QStringLiteral("# started")));
}

void TestTerminalPythonConsoleCompletion::cleanup()
{
    bench.reset();
}

void TestTerminalPythonConsoleCompletion::asksForTheWordBeforeTheCursor()
{
    const QSignalSpy asked(bench->console, &TerminalPythonConsole::complete);
    QTest::keyClicks(bench->console, QStringLiteral("a=b.c"));
    QStringList words;
    for (const QList<QVariant> &arguments : asked)
        words.append(arguments.constFirst().toString());
    QCOMPARE(words,
             (QStringList{QStringLiteral("a"), QString(), QStringLiteral("b"), QStringLiteral("b."),
                          QStringLiteral("b.c")}));
}

void TestTerminalPythonConsoleCompletion::offers_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("offered");
    QTest::newRow("built-in") << QString() << QStringLiteral("prin") << QStringList{QStringLiteral("print")};
    QTest::newRow("within a line") << QString() << QStringLiteral("x = 5 + prin")
                                   << QStringList{QStringLiteral("print")};
    QTest::newRow("keyword") << QString() << QStringLiteral("whil") << QStringList{QStringLiteral("while ")};
    QTest::newRow("own name") << QStringLiteral("voltage = 5") << QStringLiteral("volt")
                              << QStringList{QStringLiteral("voltage")};
    QTest::newRow("several") << QStringLiteral("volt2 = volt1 = 5") << QStringLiteral("volt")
                             << QStringList{QStringLiteral("volt1"), QStringLiteral("volt2")};
    QTest::newRow("member") << QString() << QStringLiteral("sys.maxs")
                            << QStringList{QStringLiteral("sys.maxsize")};
}

void TestTerminalPythonConsoleCompletion::offers()
{
    QFETCH(QString, before);
    QFETCH(QString, typed);
    QFETCH(QStringList, offered);
    QVERIFY(bench->run(before));
    QVERIFY(type(typed));
    QVERIFY(isOpen());
    QStringList sorted = candidates();
    sorted.sort();
    QCOMPARE(sorted, offered);
    QVERIFY(bench->console->hasFocus());
}

void TestTerminalPythonConsoleCompletion::offersNothing_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("too short") << QStringLiteral("pri");
    QTest::newRow("complete") << QStringLiteral("print");
    QTest::newRow("unknown") << QStringLiteral("unknownName");
    QTest::newRow("unknown object") << QStringLiteral("unknownName.mem");
    QTest::newRow("behind the word") << QStringLiteral("prin ");
    QTest::newRow("quote") << QStringLiteral("prin\"");
}

void TestTerminalPythonConsoleCompletion::offersNothing()
{
    QFETCH(QString, typed);
    QVERIFY(type(typed));
    QVERIFY(!isOpen());
    QCOMPARE(input(), typed);
}

void TestTerminalPythonConsoleCompletion::everythingInTheModule()
{
    QVERIFY(type(QStringLiteral("orbClient.")));
    QVERIFY(isOpen());
    QStringList names;
    for (const char *name :
         {"channel", "connect", "connection", "crate", "dataFrame", "findConnection", "getConnections",
          "getItem", "getVersion", "module", "scriptConnect", "setDebugLevel", "setItem"})
        names.append(QStringLiteral("orbClient.") + QLatin1String(name));
    QCOMPARE(candidates(), names);
}

void TestTerminalPythonConsoleCompletion::membersOfAChannelAskTheServiceNothing()
{
    QVERIFY(bench->run(QStringLiteral("channel = orbClient.channel.__new__(orbClient.channel)")));
    bench->backend.clearCalls();
    QVERIFY(type(QStringLiteral("channel.getStatusV")));
    QVERIFY(isOpen());
    QVERIFY(candidates().contains(QStringLiteral("channel.getStatusVoltageMeasure")));
    QVERIFY(bench->backend.calls().isEmpty());
}

void TestTerminalPythonConsoleCompletion::accepting_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Tab") << int(Qt::Key_Tab);
    QTest::newRow("Return") << int(Qt::Key_Return);
}

void TestTerminalPythonConsoleCompletion::accepting()
{
    QFETCH(int, key);
    QVERIFY(type(QStringLiteral("x = sys.maxs")));
    QVERIFY(isOpen());
    QTest::keyClick(bench->console, static_cast<Qt::Key>(key));
    QCOMPARE(input(), QStringLiteral("x = sys.maxsize"));
    QVERIFY(!isOpen());
    QVERIFY(bench->isAtPrompt());
    QVERIFY(bench->run(QString()));
    QVERIFY(bench->run(QStringLiteral("x == sys.maxsize")));
    QCOMPARE(bench->display().at(bench->display().size() - 2), QStringLiteral("green:True"));
}

void TestTerminalPythonConsoleCompletion::choosingAnother()
{
    QVERIFY(bench->run(QStringLiteral("volt2 = volt1 = 5")));
    QVERIFY(type(QStringLiteral("volt")));
    const QStringList offered = candidates();
    QCOMPARE(offered.size(), 2);
    QTest::keyClick(bench->console, Qt::Key_Down);
    QTest::keyClick(bench->console, Qt::Key_Tab);
    QCOMPARE(input(), offered.at(1));
}

void TestTerminalPythonConsoleCompletion::typingOnCloses()
{
    QVERIFY(type(QStringLiteral("prin")));
    QVERIFY(isOpen());
    QVERIFY(type(QStringLiteral("t")));
    QVERIFY(!isOpen());
}

void TestTerminalPythonConsoleCompletion::nothingThatTheWordHasLeftBehind_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("call") << QStringLiteral("e()");
    QTest::newRow("operator") << QStringLiteral("= 3");
    QTest::newRow("another word") << QStringLiteral(" or 3");
    QTest::newRow("another letter") << QStringLiteral("X");
}

// Typed so fast that no answer came in between: Return executes the line.
void TestTerminalPythonConsoleCompletion::nothingThatTheWordHasLeftBehind()
{
    QFETCH(QString, typed);
    QVERIFY(bench->run(QStringLiteral("def voltage(): return 5")));
    QVERIFY(bench->run(QStringLiteral("voltag = voltagX = 2")));
    QVERIFY(type(QStringLiteral("volt")));
    QVERIFY(isOpen());
    QTest::keyClicks(bench->console, QStringLiteral("ag") + typed);
    QVERIFY(!isOpen());
    QTest::keyClick(bench->console, Qt::Key_Return);
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->console->toPlainText().contains(QStringLiteral("> voltag") + typed + QLatin1Char('\n')));
}

void TestTerminalPythonConsoleCompletion::noneForAnEarlierWord()
{
    QVERIFY(bench->run(QStringLiteral("voltage = 5")));
    const EventCount appearances(bench->console->completer, QEvent::Show);
    QVERIFY(type(QStringLiteral("voltage = sys.maxsize")));
    QCOMPARE(appearances.count, 0);
    QVERIFY(type(QStringLiteral(" + prin"))); // the answer to this one shows it
    QCOMPARE(appearances.count, 1);
}

void TestTerminalPythonConsoleCompletion::noneForAWordThatIsGone_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("deleted") << Qt::Key_Backspace;
    QTest::newRow("left") << Qt::Key_Left;
    QTest::newRow("closed") << Qt::Key_End;
    QTest::newRow("replaced from the history") << Qt::Key_Up;
}

// Before the answer comes.
void TestTerminalPythonConsoleCompletion::noneForAWordThatIsGone()
{
    QFETCH(Qt::Key, key);
    QVERIFY(bench->run(QStringLiteral("voltage = 5")));
    QVERIFY(bench->run(QStringLiteral("voltag = 6")));
    const EventCount appearances(bench->console->completer, QEvent::Show);
    const EventCount arrivals(bench->console, QEvent::MetaCall);
    QTest::keyClicks(bench->console, QStringLiteral("volt"));
    QTest::keyClick(bench->console, key);
    QTRY_VERIFY_WITH_TIMEOUT(arrivals.count >= 4, PythonConsoleBench::LongestWait);
    QCOMPARE(appearances.count, 0);
}

void TestTerminalPythonConsoleCompletion::narrowsBeforeTheAnswer()
{
    QVERIFY(bench->run(QStringLiteral("volt123 = volt113 = volt2 = 5")));
    QVERIFY(type(QStringLiteral("volt")));
    QCOMPARE(candidates().size(), 3);
    QTest::keyClicks(bench->console, QStringLiteral("1"));
    QCOMPARE(candidates().size(), 2);
    QTest::keyClicks(bench->console, QStringLiteral("2"));
    QVERIFY(isOpen());
    QCOMPARE(candidates(), QStringList(QStringLiteral("volt123")));
}

// The answer to its last word comes when the line is already with the interpreter.
void TestTerminalPythonConsoleCompletion::noneForALineThatWasHandedOver()
{
    for (int i = 0; i < 10; ++i) {
        bench->enter(QStringLiteral("prin"));
        QVERIFY(bench->waitForPrompt());
        QVERIFY(!isOpen());
    }
}

void TestTerminalPythonConsoleCompletion::noneForAnAnswer()
{
    bench->enter(QStringLiteral("a = input()"));
    QVERIFY(bench->waitForQuestion());
    const QSignalSpy asked(bench->console, &TerminalPythonConsole::complete);
    bench->enter(QStringLiteral("prin"));
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(asked.size(), 0);
    // What would have been asked meanwhile is answered before this.
    QVERIFY(type(QStringLiteral("x")));
    QVERIFY(!isOpen());
}

void TestTerminalPythonConsoleCompletion::noneForWhatAResetForgot()
{
    QVERIFY(bench->run(QStringLiteral("voltage = 5")));
    bench->console->resetConsole();
    QVERIFY(type(QStringLiteral("volt")));
    QVERIFY(!isOpen());
}

QTEST_MAIN(TestTerminalPythonConsoleCompletion)
#include "tst_terminal_python_console_completion.moc"
