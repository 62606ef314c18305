#include "python_terminal/abandoned_worker.h"
#include "python_terminal/terminal_python_console.h"
#include "python_terminal/terminal_widget_python.h"
#include "tests/python_terminal/closing_test.h"
#include "tests/python_terminal/process_census.h"

#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <array>
#include <memory>

namespace
{

/// Says what every round left of the process' memory.
class RoundsMemory
{
public:
    explicit RoundsMemory(int count) : rounds(count) { }
    ~RoundsMemory() { qInfo("%.1f KiB a round", double(process_census::residentKiB() - before) / rounds); }
    RoundsMemory(const RoundsMemory &) = delete;
    RoundsMemory &operator=(const RoundsMemory &) = delete;

private:
    int rounds;
    qint64 before = process_census::residentKiB();
};

} // namespace

/// Closing while the interpreter starts, tools side by side, and what is left of a tool whose interpreter has ended.
class TestClosingStarts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { test.reset(); }

    void immediateOpenAndClose();
    void closeDuringTheStart_data();
    void closeDuringTheStart();
    void closeAtEveryStepOfTheStart();
    void twoAtOnce();
    void aSecondOneDisturbsNothing();
    void severalAtOnceInOneGo();
    void stoppedByTheHost_data();
    void stoppedByTheHost();
    void stoppedTwice();
    void aStoppedToolIsUsed();
    void whenPythonCannotStart();

private:
    std::unique_ptr<ClosingTest> test;
};

void TestClosingStarts::initTestCase()
{
    test = std::make_unique<ClosingTest>();
    QCOMPARE(test->prepare(), QString());
}

void TestClosingStarts::immediateOpenAndClose()
{
    OpenPythonTool &tool = test->openTool();
    constexpr int Times = 100;
    const RoundsMemory memory(Times);
    for (int i = 0; i < Times; ++i) {
        tool.openAtOnce();
        const qint64 time = tool.close();
        QVERIFY2(time < ClosingLimits::closeTime(), qPrintable(QStringLiteral("%1 ms").arg(time)));
    }
    QCOMPARE(test->whatIsLeft(), QString());
}

void TestClosingStarts::closeDuringTheStart_data()
{
    QTest::addColumn<int>("milliseconds");
    for (int milliseconds = 0; milliseconds <= 30; milliseconds += 2)
        QTest::addRow("%d ms after the beginning", milliseconds) << milliseconds;
}

/// That long after the worker was started, without one event being handled in between.
void TestClosingStarts::closeDuringTheStart()
{
    QFETCH(int, milliseconds);
    OpenPythonTool &tool = test->openTool();
    const RoundsMemory memory(ClosingLimits::rounds());
    for (int i = 0; i < ClosingLimits::rounds(); ++i) {
        QElapsedTimer timer;
        timer.start();
        tool.openAtOnce();
        while (timer.elapsed() < milliseconds)
            QThread::yieldCurrentThread();
        const qint64 time = tool.close();
        QVERIFY2(time < ClosingLimits::closeTime(), qPrintable(QStringLiteral("%1 ms").arg(time)));
    }
    QCOMPARE(test->whatIsLeft(), QString());
}

/// After each event that the start brings.
void TestClosingStarts::closeAtEveryStepOfTheStart()
{
    OpenPythonTool &tool = test->openTool();
    const RoundsMemory memory(ClosingLimits::rounds());
    for (int i = 0; i < ClosingLimits::rounds(); ++i) {
        tool.openAtOnce();
        for (int events = 0; events < i; ++events)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        const qint64 time = tool.close();
        QVERIFY2(time < ClosingLimits::closeTime(), qPrintable(QStringLiteral("%1 ms").arg(time)));
    }
    QCOMPARE(test->whatIsLeft(), QString());
}

void TestClosingStarts::twoAtOnce()
{
    OpenPythonTool &first = test->openTool();
    const RoundsMemory memory(ClosingLimits::rounds());
    for (int i = 0; i < ClosingLimits::rounds(); ++i) {
        OpenPythonTool second;
        QVERIFY(first.open());
        QVERIFY(!second.open());
        QCOMPARE(second.text(), QStringLiteral("Failed to initialize Python.> "));
        QVERIFY(first.evaluates());
        // In either order.
        if (i % 2 == 0) {
            QVERIFY(second.close() < ClosingLimits::closeTime());
            QVERIFY(first.evaluates());
            QVERIFY(first.close() < ClosingLimits::closeTime());
        } else {
            QVERIFY(first.close() < ClosingLimits::closeTime());
            OpenPythonTool third;
            QVERIFY(third.open());
            QVERIFY(second.close() < ClosingLimits::closeTime());
            QVERIFY(third.evaluates());
            QVERIFY(third.close() < ClosingLimits::closeTime());
        }
    }
    QCOMPARE(test->whatIsLeft(), QString());
}

void TestClosingStarts::aSecondOneDisturbsNothing()
{
    OpenPythonTool &first = test->openTool();
    QVERIFY(first.open());
    QVERIFY(first.run(QStringLiteral("print('reached')\n"
                                     "answer = input()\n"
                                     "print('answer ' + answer)\n")));
    QTRY_VERIFY(first.text().endsWith(QLatin1String("? ")));
    {
        OpenPythonTool second;
        QVERIFY(!second.open());
        // Whatever is done with it reaches nobody.
        second.console()->executeFile(QStringLiteral("answer = 'wrong'"));
        second.console()->resetConsole();
        second.console()->interrupt();
        QVERIFY(second.stop() < ClosingLimits::closeTime());
    }
    QTest::keyClicks(first.console(), QStringLiteral("right"));
    QTest::keyClick(first.console(), Qt::Key_Return);
    QTRY_VERIFY2(first.text().endsWith(QLatin1String("\nanswer right\n> ")), qPrintable(first.text()));
    QVERIFY(first.close() < ClosingLimits::closeTime());
    QCOMPARE(test->whatIsLeft(), QString());
}

/// Whoever comes first has it; nobody hangs, and the others report.
void TestClosingStarts::severalAtOnceInOneGo()
{
    const RoundsMemory memory(ClosingLimits::rounds());
    for (int i = 0; i < ClosingLimits::rounds(); ++i) {
        constexpr int Count = 5;
        // On a busy machine the one before may have been left to itself, and then ends by itself.
        QTRY_VERIFY(qApp->findChildren<AbandonedWorker *>().isEmpty());
        std::array<OpenPythonTool, Count> tools;
        for (OpenPythonTool &tool : tools)
            tool.openAtOnce();
        const auto count = [&tools](QLatin1String text) {
            return std::count_if(tools.cbegin(), tools.cend(),
                                 [text](const OpenPythonTool &tool) { return tool.text().contains(text); });
        };
        QTRY_COMPARE(count(QLatin1String("on the orbClient module.")), 1);
        QTRY_COMPARE(count(QLatin1String("Failed to initialize Python.")), Count - 1);
        for (OpenPythonTool &tool : tools)
            QVERIFY(tool.close() < ClosingLimits::closeTime());
    }
    QCOMPARE(test->whatIsLeft(), QString());
}

void TestClosingStarts::stoppedByTheHost_data()
{
    QTest::addColumn<QString>("script");

    QTest::newRow("idle") << QStringLiteral("print('reached')\n");
    QTest::newRow("busy") << QStringLiteral("print('reached')\nwhile True: pass\n");
    QTest::newRow("input") << QStringLiteral("print('reached')\ninput()\n");
    QTest::newRow("flood") << QStringLiteral("print('reached')\nwhile True: print(1)\n");
}

/// The tool stays, and so does its display; another one has the interpreter.
void TestClosingStarts::stoppedByTheHost()
{
    QFETCH(QString, script);
    OpenPythonTool &tool = test->openTool();
    for (int i = 0; i < ClosingLimits::variantRounds(); ++i) {
        QVERIFY(tool.open());
        QVERIFY(tool.run(script));
        QVERIFY(tool.stop() < ClosingLimits::closeTime());
        QVERIFY(tool.isOpen());
        OpenPythonTool next;
        QVERIFY2(next.open(), qPrintable(next.text()));
        QVERIFY(next.evaluates());
        QVERIFY(tool.close() < ClosingLimits::closeTime());
        QVERIFY(next.evaluates());
        QVERIFY(next.close() < ClosingLimits::closeTime());
    }
    QCOMPARE(test->whatIsLeft(), QString());
}

void TestClosingStarts::stoppedTwice()
{
    OpenPythonTool &tool = test->openTool();
    QVERIFY(tool.open());
    const QSignalSpy exits(tool.console(), &TerminalPythonConsole::exitEvaluator);
    QVERIFY(tool.stop() < ClosingLimits::closeTime());
    QVERIFY(tool.stop() < ClosingLimits::closeTime());
    tool.console()->stopEvaluator();
    QCOMPARE(exits.count(), 1);
    QVERIFY(tool.close() < ClosingLimits::closeTime());
    QCOMPARE(test->whatIsLeft(), QString());
}

/// Nothing that the user does reaches an interpreter, and nothing breaks.
void TestClosingStarts::aStoppedToolIsUsed()
{
    OpenPythonTool &tool = test->openTool();
    QVERIFY(tool.open());
    QVERIFY(tool.run(QStringLiteral("print('reached')\n")));
    QVERIFY(tool.stop() < ClosingLimits::closeTime());
    TerminalPythonConsole &console = *tool.console();
    console.resetConsole();
    QVERIFY(tool.text().contains(QLatin1String("help(orbClient)")));
    QTest::keyClicks(&console, QStringLiteral("print"));
    console.interrupt();
    QString answer = QStringLiteral("answer");
    console.submitInput(answer);
    QTest::keyClick(&console, Qt::Key_Return);
    QVERIFY(!console.isEnabled());
    console.interrupt();
    console.executeFile(QStringLiteral("1"));
    QCoreApplication::processEvents();
    QVERIFY(tool.close() < ClosingLimits::closeTime());
    QCOMPARE(test->whatIsLeft(), QString());
}

/// While another has the interpreter, a tool that never had one closes as well.
void TestClosingStarts::whenPythonCannotStart()
{
    OpenPythonTool &owner = test->openTool();
    QVERIFY(owner.open());
    for (int i = 0; i < ClosingLimits::variantRounds(); ++i) {
        OpenPythonTool tool;
        QVERIFY(!tool.open());
        QTest::keyClicks(tool.console(), QStringLiteral("1+1"));
        QTest::keyClick(tool.console(), Qt::Key_Return);
        QVERIFY(!tool.console()->isEnabled());
        QVERIFY(tool.close() < ClosingLimits::closeTime());
    }
    QTRY_COMPARE(process_census::workers(), 1);
    QVERIFY(owner.evaluates());
    owner.close();
    QCOMPARE(test->whatIsLeft(), QString());
}

QTEST_MAIN(TestClosingStarts)

#include "tst_closing_starts.moc"
