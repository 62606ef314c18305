#include "hostsdk/kd_parent_event.h"
#include "python_terminal/terminal_python_console.h"
#include "tests/python_terminal/python_console_bench.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QtTest>

/// How the console shows what scripts write: together what arrives together, and yet as if it came one by one.
class TestTerminalPythonConsoleOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void togetherAsOneByOne_data();
    void togetherAsOneByOne();
    void isShownWithoutAnythingElse();
    void isShownInOrder_data();
    void isShownInOrder();
    void everythingIsShownBeforeThePrompt();
    void everythingIsShownBeforeAQuestion();
    void whatWasOnTheWayIsGoneWithAReset();
    void whatWasOnTheWayIsGoneWithTheEnd();
    void longTextsAreCut_data();
    void longTextsAreCut();
    void oneVeryLongText();
    void hostileTexts_data();
    void hostileTexts();

    void theScriptWaitsForTheConsole();
    void longTextsWaitEarlier();
    void theWindowStaysAlive_data();
    void theWindowStaysAlive();

private:
    QStringList shownBy(const QString &line)
    {
        const int before = bench->display().size();
        return bench->run(line) ? bench->display().mid(before) : QStringList{QStringLiteral("no prompt")};
    }
    /// A script that tells the service after every text that it wrote.
    static QString countingFlood(const QString &text)
    {
        return QStringLiteral("while True:\n    sys.stdout.write(%1)\n    orbClient.getConnections()\n")
            .arg(text);
    }
    /// How far a script has come when it gets no further, with no event handled meanwhile.
    int callsUntilTheScriptWaits() const;
    bool interruptAndWait()
    {
        bench->console->interrupt();
        return bench->waitForPrompt();
    }

    std::unique_ptr<PythonConsoleBench> bench;
};

namespace
{

/// The same console by the letter: every text and every change is shown when it comes.
class LiteralConsole : public TerminalConsole
{
public:
    using TerminalConsole::busy;
    using TerminalConsole::inputMode;
    using TerminalConsole::promptEnd;
    using TerminalConsole::TerminalConsole;

    void executeCommand(QString &) override { }
};

QString randomText(QRandomGenerator &random)
{
    const QStringList texts = {QString(),
                               QStringLiteral("\n"),
                               QStringLiteral("  \t "),
                               QStringLiteral("a"),
                               QStringLiteral(" b "),
                               QStringLiteral("one\ntwo"),
                               QStringLiteral("\n\nthree\r\n four\n"),
                               QStringLiteral("grün √ \u202e\u05d0\u05d1"),
                               QString(QChar(0xD800)),
                               QString(QChar::ParagraphSeparator) + QStringLiteral("x"),
                               QStringLiteral("y") + QChar(QChar::LineSeparator) + QStringLiteral("z"),
                               QStringLiteral("a\0b")};
    return texts.at(random.bounded(texts.size()));
}

} // namespace

void TestTerminalPythonConsoleOutput::init()
{
    bench = std::make_unique<PythonConsoleBench>();
    QVERIFY(bench->start());
}

void TestTerminalPythonConsoleOutput::cleanup()
{
    bench.reset();
}

// As one by one

void TestTerminalPythonConsoleOutput::togetherAsOneByOne_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 40; ++seed)
        QTest::addRow("%u", seed) << seed;
}

void TestTerminalPythonConsoleOutput::togetherAsOneByOne()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    RecordingObserver observer;
    LiteralConsole literal(nullptr, bench->mainData, observer);
    PythonConsoleBench::Console &console = *bench->console;
    // The worker hears nothing of this.
    const QSignalBlocker blocker(bench->console);
    console.clearConsole(QStringLiteral("banner\n"));
    literal.clearConsole(QStringLiteral("banner\n"));

    const auto write = [&](int most) {
        for (int i = random.bounded(most + 1); i > 0; --i) {
            const QString text = randomText(random);
            const bool isError = random.bounded(3) == 0;
            isError ? console.onInsertErrorText(text) : console.onInsertSuccessText(text);
            isError ? literal.printError(text) : literal.printSuccess(text);
            // Some of it may be due.
            if (random.bounded(40) == 0)
                QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        }
    };
    const auto enter = [&](const QString &line) {
        for (TerminalConsole *each : std::initializer_list<TerminalConsole *>{&console, &literal}) {
            QTest::keyClicks(each, line);
            QTest::keyClick(each, Qt::Key_Return);
        }
    };
    for (int statement = 0; statement < 40; ++statement) {
        enter(QStringLiteral("line %1").arg(statement));
        write(20);
        if (random.bounded(3) == 0) {
            console.onWaitingForStdIn();
            literal.printInputPrompt();
            enter(QStringLiteral("answer"));
            write(20);
        }
        const bool goesOn = random.bounded(2) == 0;
        console.onEvaluationComplete(goesOn);
        goesOn ? literal.printContinuationPrompt() : literal.printPrompt();
    }
    const QString difference = ConsoleDisplay::difference(console, literal);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(console.promptEnd, literal.promptEnd);
    QCOMPARE(console.busy, literal.busy);
    QCOMPARE(console.inputMode, literal.inputMode);
}

void TestTerminalPythonConsoleOutput::isShownWithoutAnythingElse()
{
    bench->enter(QStringLiteral("import time; print('early'); time.sleep(60)"));
    QTRY_COMPARE(bench->display().mid(1), (QStringList{QStringLiteral("green:early"), QString()}));
    QVERIFY(!bench->console->isEnabled());
    QVERIFY(interruptAndWait());
}

void TestTerminalPythonConsoleOutput::isShownInOrder_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("few") << 5;
    QTest::newRow("more than are shown together") << 700;
    QTest::newRow("more than the script may be ahead") << 3000;
}

void TestTerminalPythonConsoleOutput::isShownInOrder()
{
    QFETCH(int, count);
    QStringList expected;
    for (int i = 0; i < count; ++i) {
        const bool isError = i % 7 == 3;
        expected.append(
            QStringLiteral("%1:%2").arg(isError ? QStringLiteral("red") : QStringLiteral("green")).arg(i));
    }
    expected.append(QStringLiteral("white:> "));
    const QString file = QStringLiteral("for i in range(%1):\n"
                                        "    (sys.stderr if i % 7 == 3 else sys.stdout).write(str(i))\n");
    bench->console->executeFile(file.arg(count));
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(bench->display().mid(1), expected);
}

void TestTerminalPythonConsoleOutput::everythingIsShownBeforeThePrompt()
{
    for (int i = 0; i < 50; ++i) {
        const QString text = QStringLiteral("text%1").arg(i);
        QCOMPARE(shownBy(QStringLiteral("print('%1')").arg(text)),
                 (QStringList{QStringLiteral("green:") + text, QStringLiteral("white:> ")}));
    }
}

void TestTerminalPythonConsoleOutput::everythingIsShownBeforeAQuestion()
{
    bench->enter(QStringLiteral("print('before'); a = input('name'); print('after')"));
    QVERIFY(bench->waitForQuestion());
    QCOMPARE(bench->display().mid(1),
             (QStringList{QStringLiteral("green:before"), QStringLiteral("green:name"),
                          QStringLiteral("white:? ")}));
    QVERIFY(bench->run(QStringLiteral("x")));
    QCOMPARE(bench->display().mid(3),
             (QStringList{QStringLiteral("white:? x"), QStringLiteral("green:after"),
                          QStringLiteral("white:> ")}));
}

// On the way

void TestTerminalPythonConsoleOutput::whatWasOnTheWayIsGoneWithAReset()
{
    const QString fresh = bench->console->toPlainText();
    bench->console->executeFile(QStringLiteral("for i in range(300):\n    print('written before')\n"
                                               "orbClient.getConnections()\nimport time\ntime.sleep(60)\n"));
    QVERIFY(bench->waitForCalls(1));
    bench->console->resetConsole();
    QCOMPARE(bench->console->toPlainText(), fresh);
    QVERIFY(interruptAndWait());
    QVERIFY(!bench->console->toPlainText().contains(QLatin1String("written before")));
    QVERIFY(bench->console->toPlainText().contains(QLatin1String("KeyboardInterrupt")));
}

void TestTerminalPythonConsoleOutput::whatWasOnTheWayIsGoneWithTheEnd()
{
    bench->console->executeFile(QStringLiteral("for i in range(300):\n    print('written before')\n"
                                               "orbClient.getConnections()\nimport time\ntime.sleep(60)\n"));
    QVERIFY(bench->waitForCalls(1));
    KdParentEvent event(KD::StopInterpreter);
    bench->console->parentEventOccured(event);
    QCoreApplication::sendPostedEvents();
    // Nothing is left that could show it later.
    QVERIFY(QAbstractEventDispatcher::instance()->registeredTimers(bench->console).isEmpty());
    QVERIFY(!bench->console->toPlainText().contains(QLatin1String("written before")));
}

// Texts

void TestTerminalPythonConsoleOutput::longTextsAreCut_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("shown");
    QTest::addColumn<QString>("notice");
    QTest::newRow("longest") << 100000 << 100000 << QString();
    QTest::newRow("one more") << 100001 << 100000 << QStringLiteral(" [1 more character(s) not shown]");
    QTest::newRow("much more") << 250000 << 100000 << QStringLiteral(" [150000 more character(s) not shown]");
}

void TestTerminalPythonConsoleOutput::longTextsAreCut()
{
    QFETCH(int, length);
    QFETCH(int, shown);
    QFETCH(QString, notice);
    QCOMPARE(shownBy(QStringLiteral("print('x' * %1)").arg(length)),
             (QStringList{QStringLiteral("green:") + QString(shown, QLatin1Char('x')) + notice,
                          QStringLiteral("white:> ")}));
}

void TestTerminalPythonConsoleOutput::oneVeryLongText()
{
    QCOMPARE(shownBy(QStringLiteral("print('x' * 10000000); print('next')")).mid(1),
             (QStringList{QStringLiteral("green:next"), QStringLiteral("white:> ")}));
    QVERIFY(
        bench->console->toPlainText().contains(QLatin1String("x [9900000 more character(s) not shown]\n")));
}

void TestTerminalPythonConsoleOutput::hostileTexts_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("shown");
    QTest::newRow("right to left") << QStringLiteral("'\\u202e\\u05d0\\u05d1'")
                                   << QStringLiteral("green:\u202e\u05d0\u05d1");
    QTest::newRow("combining") << QStringLiteral("'a' + '\\u0301' * 50")
                               << QStringLiteral("green:a") + QString(50, QChar(0x301));
    QTest::newRow("beyond 16 bits") << QStringLiteral("'\\U0001f600'")
                                    << QStringLiteral("green:") + QString::fromUcs4(U"\U0001f600", 1);
    QTest::newRow("placeholders") << QStringLiteral("'%1 %2 %n' + 'x' * 0")
                                  << QStringLiteral("green:%1 %2 %n");
    QTest::newRow("separators") << QStringLiteral("'a\\u2029b'.upper()") << QStringLiteral("green:A|B");
}

void TestTerminalPythonConsoleOutput::hostileTexts()
{
    QFETCH(QString, expression);
    QFETCH(QString, shown);
    QStringList lines = shownBy(QStringLiteral("print(%1)").arg(expression));
    QCOMPARE(lines.takeLast(), QStringLiteral("white:> "));
    QCOMPARE(lines.join(QLatin1String("|")).replace(QLatin1String("|green:"), QLatin1String("|")), shown);
}

// Floods

int TestTerminalPythonConsoleOutput::callsUntilTheScriptWaits() const
{
    constexpr int Quiet = 300; // ms without a step mean that it waits
    const QDeadlineTimer deadline(PythonConsoleBench::LongestWait);
    QElapsedTimer sinceLast;
    sinceLast.start();
    int last = 0;
    while ((last == 0 || sinceLast.elapsed() < Quiet) && !deadline.hasExpired()) {
        const int calls = bench->backend.callCount();
        if (calls != last)
            sinceLast.restart();
        last = calls;
        std::this_thread::yield();
    }
    return last;
}

void TestTerminalPythonConsoleOutput::theScriptWaitsForTheConsole()
{
    bench->console->executeFile(countingFlood(QStringLiteral("'text'")));
    QVERIFY(bench->waitForCalls(900));
    const int ahead = callsUntilTheScriptWaits();
    QVERIFY2(ahead <= 1010, qPrintable(QString::number(ahead)));
    // It goes on when the console does.
    QTRY_VERIFY(bench->backend.callCount() > ahead + 5000);
    QVERIFY(interruptAndWait());
}

void TestTerminalPythonConsoleOutput::longTextsWaitEarlier()
{
    bench->console->executeFile(countingFlood(QStringLiteral("'x' * 50000")));
    const int ahead = callsUntilTheScriptWaits();
    QVERIFY2(ahead <= 100, qPrintable(QString::number(ahead)));
    QTRY_VERIFY(bench->backend.callCount() > ahead + 20);
    QVERIFY(interruptAndWait());
}

void TestTerminalPythonConsoleOutput::theWindowStaysAlive_data()
{
    QTest::addColumn<QString>("flood");
    QTest::newRow("numbers") << QStringLiteral("while True: print(1)");
    QTest::newRow("nothing to see") << QStringLiteral("while True: print()");
    QTest::newRow("two colours") << QStringLiteral(
        "while True: sys.stdout.write('out'); sys.stderr.write('err')");
    QTest::newRow("lines of 1,000") << QStringLiteral("while True: print('x' * 1000)");
    QTest::newRow("lines of 100,000") << QStringLiteral("while True: print('x' * 100000)");
    QTest::newRow("too long") << QStringLiteral("t = 'x' * 1000000\nwhile True: print(t)");
}

void TestTerminalPythonConsoleOutput::theWindowStaysAlive()
{
    constexpr int Interval = 50; // ms
    constexpr int Latest = 100; // ms after it was due
    constexpr int Ticks = 20;
    constexpr int MostAttempts = 5; // another program may have had the processor
    QFETCH(QString, flood);
    bench->console->executeFile(flood);
    qint64 worst = 0;
    int paints = 0;
    for (int attempt = 0; attempt == 0 || (worst > Latest && attempt < MostAttempts); ++attempt) {
        worst = 0;
        bench->console->paints = 0;
        int ticks = 0;
        QElapsedTimer sinceLast;
        QTimer timer;
        timer.setTimerType(Qt::PreciseTimer);
        connect(&timer, &QTimer::timeout, &timer, [&] {
            worst = qMax(worst, sinceLast.restart() - Interval);
            ++ticks;
        });
        sinceLast.start();
        timer.start(Interval);
        QTRY_VERIFY_WITH_TIMEOUT(ticks >= Ticks, PythonConsoleBench::LongestWait);
        paints = bench->console->paints;
    }
    qInfo("a 50 ms timer is at most %d ms late", int(worst));
    QVERIFY2(worst <= Latest, qPrintable(QString::number(worst)));
    QVERIFY2(paints >= Ticks / 2, qPrintable(QString::number(paints)));
    QElapsedTimer sinceInterrupt;
    sinceInterrupt.start();
    QVERIFY(interruptAndWait());
    qInfo("stopped in %d ms", int(sinceInterrupt.elapsed()));
    QVERIFY(bench->console->toPlainText().contains(QLatin1String("<class 'KeyboardInterrupt'>")));
    QVERIFY(bench->run(QStringLiteral("print('goes on')")));
    QCOMPARE(bench->display().at(bench->display().size() - 2), QStringLiteral("green:goes on"));
}

QTEST_MAIN(TestTerminalPythonConsoleOutput)
#include "tst_terminal_python_console_output.moc"
