// Command files of very many lines that need no answer: they neither deepen the stack nor freeze the window, and what
// they cost grows with their number.
#include "tests/command_terminal/console_bench.h"
#include "tests/command_terminal/processor_time.h"

#include <QTimer>

#include <algorithm>
#include <limits>

namespace
{

/// Notes how deep the stack is whenever a line is executed.
class DepthProbe : public ConsoleBench::Console
{
public:
    using Console::Console;

    void executeCommand(QString &text) override
    {
        // Not the address of a variable: the address sanitizer keeps those elsewhere.
        const auto frame = reinterpret_cast<quintptr>(__builtin_frame_address(0));
        deepest = std::min(deepest, frame);
        ++lines;
        Console::executeCommand(text);
    }

    quintptr deepest = std::numeric_limits<quintptr>::max();
    int lines = 0;
};

/// Enough for the calls from the test to one line; not enough for a call per line, however small.
constexpr quintptr StackBound = 40000;

QString manyLines(const QString &line, int count)
{
    return (line + QLatin1Char('\n')).repeated(count);
}

/// How long that takes depends on the machine: the time that a test may take bounds it.
void runToTheEnd(const TerminalOrbClientConsole &console)
{
    while (console.isFileRunning())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

double costOf(int lines)
{
    ConsoleBench bench;
    const double before = processorTime();
    bench.console->runCommandFile(manyLines(QStringLiteral("# comment"), lines));
    runToTheEnd(*bench.console);
    return processorTime() - before;
}

} // namespace

class TestTerminalOrbClientConsoleLongFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesDoNotDeepenTheStack_data();
    void linesDoNotDeepenTheStack();
    void answeredRequestsDoNotDeepenTheStack();
    void costGrowsWithTheNumberOfLines();
    void windowLivesMeanwhile();
    void keysMeanwhileAreLost();
    void messageMeanwhileIsPrinted();
    void stopMeanwhileEndsIt();
    void emptyFileMeanwhileEndsIt();
    void clearedMeanwhile();
    void destroyedMeanwhile();
};

void TestTerminalOrbClientConsoleLongFiles::linesDoNotDeepenTheStack_data()
{
    QTest::addColumn<QString>("controller");
    QTest::addColumn<QString>("line");
    const QString controller = ConsoleBench::controller();
    QTest::newRow("comments") << controller << QStringLiteral("# comment");
    QTest::newRow("blanks") << controller << QStringLiteral("  ");
    QTest::newRow("bad waits") << controller << QStringLiteral("wait 1");
    QTest::newRow("refused requests") << controller << QStringLiteral("request");
    QTest::newRow("no controller") << QString() << QStringLiteral("request");
}

void TestTerminalOrbClientConsoleLongFiles::linesDoNotDeepenTheStack()
{
    QFETCH(QString, controller);
    QFETCH(QString, line);
    TerminalFixture fixture;
    fixture.backend.setRawAnswer({false, QStringLiteral("refused"), {}});
    DepthProbe console(nullptr, fixture.mainData, fixture.observer);
    KdChildEvent choice(KD::ControllerChosen, controller);
    console.handleEvent(choice);

    constexpr int Lines = 5000;
    const auto here = reinterpret_cast<quintptr>(__builtin_frame_address(0));
    QVERIFY(console.runCommandFile(manyLines(line, Lines)));
    runToTheEnd(console);
    QCOMPARE(console.lines, Lines);
    QVERIFY2(here - console.deepest < StackBound, qPrintable(QString::number(here - console.deepest)));
}

void TestTerminalOrbClientConsoleLongFiles::answeredRequestsDoNotDeepenTheStack()
{
    TerminalFixture fixture;
    fixture.backend.setRawAnswer({true, QString(), {ConsoleBench::success()}});
    DepthProbe console(nullptr, fixture.mainData, fixture.observer);
    KdChildEvent choice(KD::ControllerChosen, ConsoleBench::controller());
    console.handleEvent(choice);

    constexpr int Lines = 1000;
    const auto here = reinterpret_cast<quintptr>(__builtin_frame_address(0));
    QVERIFY(console.runCommandFile(manyLines(QStringLiteral("request"), Lines)));
    runToTheEnd(console);
    QCOMPARE(fixture.backend.requests().size(), Lines);
    QVERIFY2(here - console.deepest < StackBound, qPrintable(QString::number(here - console.deepest)));
}

void TestTerminalOrbClientConsoleLongFiles::costGrowsWithTheNumberOfLines()
{
    costOf(2000); // fonts and caches
    const double few = costOf(2000);
    const double many = costOf(20000);
    // 10 if the cost of a line is always the same, 100 if it grew with the lines before it.
    QVERIFY2(many / few < 30, qPrintable(QStringLiteral("%1 s and %2 s").arg(few).arg(many)));
}

void TestTerminalOrbClientConsoleLongFiles::windowLivesMeanwhile()
{
    ConsoleBench bench;
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] { ticks += bench.console->isFileRunning() ? 1 : 0; });
    timer.start(0);
    constexpr int Lines = 10000;
    QVERIFY(bench.console->runCommandFile(manyLines(QStringLiteral("# comment"), Lines)));
    QVERIFY(bench.console->isFileRunning());
    runToTheEnd(*bench.console);
    QVERIFY2(ticks >= 2, qPrintable(QString::number(ticks)));
    QCOMPARE(bench.console->document()->blockCount(), Lines + 1);
    // The prompt at the end takes input again.
    QTRY_VERIFY(!bench.console->busy);
    bench.enter(QStringLiteral("next"));
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("next")});
}

void TestTerminalOrbClientConsoleLongFiles::keysMeanwhileAreLost()
{
    ConsoleBench bench;
    QVERIFY(bench.console->runCommandFile(manyLines(QStringLiteral("# comment"), 10000)));
    QVERIFY(bench.console->isFileRunning());
    bench.enter(QStringLiteral("lost"));
    runToTheEnd(*bench.console);
    QVERIFY(bench.backend.requests().isEmpty());
    QVERIFY(!bench.console->toPlainText().contains(QLatin1String("lost")));
}

void TestTerminalOrbClientConsoleLongFiles::messageMeanwhileIsPrinted()
{
    ConsoleBench bench;
    constexpr int Lines = 10000;
    QVERIFY(bench.console->runCommandFile(manyLines(QStringLiteral("# comment"), Lines)));
    const int before = bench.console->document()->blockCount();
    QVERIFY(before < Lines);
    // Straight from the layer: it advances the file by itself.
    bench.console->rawMessageReceived(ConsoleBench::failure());
    QVERIFY(bench.console->document()->blockCount() > before + 1);
    runToTheEnd(*bench.console);
    QCOMPARE(bench.display().count(QStringLiteral("red:") + ConsoleBench::failure()), 1);
    QCOMPARE(bench.display().count(QStringLiteral("white:> # comment")), Lines);
    QCOMPARE(bench.console->document()->blockCount(), Lines + 2);
}

void TestTerminalOrbClientConsoleLongFiles::stopMeanwhileEndsIt()
{
    ConsoleBench bench;
    constexpr int Lines = 10000;
    QVERIFY(bench.console->runCommandFile(manyLines(QStringLiteral("# comment"), Lines)));
    QVERIFY(bench.console->isFileRunning());
    bench.console->stopExecution();
    QVERIFY(!bench.console->isFileRunning());
    const int blocks = bench.console->document()->blockCount();
    QVERIFY(blocks < Lines);
    QVERIFY(bench.timers().isEmpty());
    const QStringList display = bench.display();
    QVERIFY(display.at(display.size() - 2).startsWith(QLatin1String("red:")));
    QCOMPARE(display.constLast(), QStringLiteral("white:> "));
    bench.enter(QStringLiteral("next"));
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("next")});
    QCOMPARE(bench.console->document()->blockCount(), blocks + 1);
}

void TestTerminalOrbClientConsoleLongFiles::emptyFileMeanwhileEndsIt()
{
    ConsoleBench bench;
    QVERIFY(bench.console->runCommandFile(manyLines(QStringLiteral("# comment"), 10000)));
    QVERIFY(!bench.console->runCommandFile(QString()));
    QVERIFY(!bench.console->isFileRunning());
    // No line follows that would print a prompt, and yet the keys are heard again.
    QTRY_VERIFY(!bench.console->busy);
    bench.enter(QStringLiteral("next"));
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("next")});
}

void TestTerminalOrbClientConsoleLongFiles::clearedMeanwhile()
{
    ConsoleBench bench;
    constexpr int Lines = 10000;
    QVERIFY(bench.console->runCommandFile(manyLines(QStringLiteral("# comment"), Lines)));
    QVERIFY(bench.console->isFileRunning());
    bench.console->clearConsole(QString());
    runToTheEnd(*bench.console);
    QVERIFY(bench.console->document()->blockCount() < Lines);
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> "));
}

void TestTerminalOrbClientConsoleLongFiles::destroyedMeanwhile()
{
    TerminalFixture fixture;
    {
        DepthProbe console(nullptr, fixture.mainData, fixture.observer);
        QVERIFY(console.runCommandFile(manyLines(QStringLiteral("# comment"), 10000)));
        QVERIFY(console.isFileRunning());
    }
    fixture.backend.sendRawMessage(ConsoleBench::controller(), ConsoleBench::success());
    QCoreApplication::processEvents();
    QVERIFY(fixture.observer.events().empty());
}

QTEST_MAIN(TestTerminalOrbClientConsoleLongFiles)
#include "tst_terminal_orb_client_console_long_files.moc"
