// How long the console waits, what happens meanwhile, and who has the focus afterwards.
#include "tests/command_terminal/console_bench.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTimerEvent>

namespace
{

QString request()
{
    return QStringLiteral(R"({"c":"setItem"})");
}

} // namespace

class TestTerminalOrbClientConsoleWaits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheLastFiveCharacters_data();
    void readsTheLastFiveCharacters();
    void badWaitInstruction_data();
    void badWaitInstruction();
    void pauseLocksTheConsole();
    void pauseLastsAsLongAsItSays();
    void answerIsAwaitedForTwoSeconds();
    void timeRunsOutSilently();
    void requestDuringAWaitChangesNothingAboutIt();
    void otherTimersDoNotEndTheWait();
    void watchesThePopupWithATimerOfItsBase();
    void focusReturnsAfterTheWait();
    void focusReturnsWithoutAParent();
    void focusIsNotStolen();
    void focusIsNotTakenByAConsoleThatHadNone();
    void focusStaysInTheToolDuringTheWait();
    void clearedDuringAWait();
    void stopEndsAPauseAtOnce();
    void stopEndsARequestAtOnce();
    void stopWithoutAnythingToStop();
    void answerAfterAStopIsPrintedAboveThePrompt();
    void executionIsAnnounced();
};

void TestTerminalOrbClientConsoleWaits::readsTheLastFiveCharacters_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("four digits") << QStringLiteral("wait 1000") << 1000;
    QTest::newRow("four digits, another number") << QStringLiteral("wait 4321") << 4321;
    QTest::newRow("five digits") << QStringLiteral("wait 12345") << 12345;
    QTest::newRow("most") << QStringLiteral("wait 99999") << 99999;
    QTest::newRow("six digits count from the second") << QStringLiteral("wait 101500") << 1500;
    QTest::newRow("seven digits count from the third") << QStringLiteral("wait 9901500") << 1500;
    QTest::newRow("one digit after enough blanks") << QStringLiteral("wait     7") << 7;
    QTest::newRow("two digits after enough blanks") << QStringLiteral("wait    42") << 42;
    QTest::newRow("three digits after enough blanks") << QStringLiteral("wait  500") << 500;
    QTest::newRow("three digits and a blank before") << QStringLiteral("wait  5000") << 5000;
    QTest::newRow("zeros in front") << QStringLiteral("wait 0300") << 300;
    QTest::newRow("nothing") << QStringLiteral("wait 00000") << 0;
    QTest::newRow("whatever stands before") << QStringLiteral("wait for about 1500") << 1500;
    QTest::newRow("sign outside the last five") << QStringLiteral("wait -01500") << 1500;
    QTest::newRow("trimmed") << QStringLiteral("  wait 1000\t ") << 1000;
}

void TestTerminalOrbClientConsoleWaits::readsTheLastFiveCharacters()
{
    QFETCH(QString, line);
    QFETCH(int, milliseconds);
    ConsoleBench bench;
    bench.build(line);
    const QStringList expected{QStringLiteral("white:> ") + line,
                               QStringLiteral("green:waiting for %1 ms").arg(milliseconds), QString()};
    QCOMPARE(bench.display(), expected);
    QVERIFY(bench.console->isWaiting());
    QVERIFY(bench.backend.requests().isEmpty());
    QCOMPARE(bench.timers().size(), 1);
    // The event loop keeps waits of more than 20 s to the second.
    const int tolerance = milliseconds > 20000 ? 1000 : 0;
    QVERIFY(qAbs(bench.timers().constFirst().interval - milliseconds) <= tolerance);
}

void TestTerminalOrbClientConsoleWaits::badWaitInstruction_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("one digit") << QStringLiteral("wait 1");
    QTest::newRow("two digits") << QStringLiteral("wait 10");
    QTest::newRow("three digits") << QStringLiteral("wait 100");
    QTest::newRow("one digit after two blanks") << QStringLiteral("wait  1");
    QTest::newRow("letters") << QStringLiteral("wait abcde");
    QTest::newRow("unit behind") << QStringLiteral("wait 1000ms");
    QTest::newRow("negative") << QStringLiteral("wait -1000");
    QTest::newRow("fraction") << QStringLiteral("wait 100.5");
    QTest::newRow("exponent") << QStringLiteral("wait 100e1");
    QTest::newRow("thousands separator") << QStringLiteral("wait 1,000");
    QTest::newRow("hexadecimal") << QStringLiteral("wait 0x100");
    QTest::newRow("blank inside") << QStringLiteral("wait 10 00");
    QTest::newRow("other digits") << QStringLiteral("wait \u0661\u0662\u0663\u0664\u0665");
    QTest::newRow("zero character") << QStringLiteral("wait 10") + QChar(0) + QStringLiteral("00");
}

void TestTerminalOrbClientConsoleWaits::badWaitInstruction()
{
    QFETCH(QString, line);
    ConsoleBench bench;
    bench.build(line);
    const QStringList expected{QStringLiteral("white:> ") + line, QStringLiteral("red:bad wait instruction"),
                               QStringLiteral("white:> ")};
    QCOMPARE(bench.display(), expected);
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.timers().isEmpty());
    QVERIFY(bench.observer.events().empty());
    QVERIFY(bench.backend.requests().isEmpty());
}

void TestTerminalOrbClientConsoleWaits::pauseLocksTheConsole()
{
    ConsoleBench bench;
    bench.enter(QStringLiteral("wait 5000"));
    QVERIFY(!bench.console->isEnabled());
    QVERIFY(bench.console->isWaiting());
    QCOMPARE(bench.busyEvents(), std::vector<qint64>{1});
    QCOMPARE(bench.timers().constFirst().timerType, Qt::CoarseTimer);
}

void TestTerminalOrbClientConsoleWaits::pauseLastsAsLongAsItSays()
{
    ConsoleBench bench;
    QElapsedTimer elapsed;
    elapsed.start();
    bench.enter(QStringLiteral("wait 0400"));
    QTRY_VERIFY(!bench.console->isWaiting());
    // A coarse timer is up to 5 % early.
    QVERIFY2(elapsed.elapsed() >= 380 - 2, qPrintable(QString::number(elapsed.elapsed())));
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> "));
}

void TestTerminalOrbClientConsoleWaits::answerIsAwaitedForTwoSeconds()
{
    ConsoleBench bench;
    QElapsedTimer elapsed;
    elapsed.start();
    bench.enter(request());
    QCOMPARE(bench.timers().size(), 1);
    QCOMPARE(bench.timers().constFirst().interval, 2000);
    QCOMPARE(bench.timers().constFirst().timerType, Qt::CoarseTimer);
    QTRY_VERIFY(!bench.console->isWaiting());
    QVERIFY2(elapsed.elapsed() >= 1900 - 2, qPrintable(QString::number(elapsed.elapsed())));
}

void TestTerminalOrbClientConsoleWaits::timeRunsOutSilently()
{
    ConsoleBench bench;
    bench.enter(request());
    QTimerEvent late(bench.timers().constFirst().timerId);
    QVERIFY(bench.runOut());
    const QStringList expected{QStringLiteral("white:> ") + request(), QStringLiteral("white:> ")};
    QCOMPARE(bench.display(), expected);
    QVERIFY(bench.console->isEnabled());
    QVERIFY(bench.timers().isEmpty());
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
    // A tick that was on its way already finds nothing to end.
    QCoreApplication::sendEvent(bench.console, &late);
    QCOMPARE(bench.display(), expected);
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
}

void TestTerminalOrbClientConsoleWaits::requestDuringAWaitChangesNothingAboutIt()
{
    ConsoleBench bench;
    bench.enter(QStringLiteral("wait 5000"));
    const int timer = bench.timers().constFirst().timerId;
    bench.build(request());
    QCOMPARE(bench.backend.requests(), QStringList{request()});
    QCOMPARE(bench.timers().size(), 1);
    QCOMPARE(bench.timers().constFirst().timerId, timer);
    QCOMPARE(bench.timers().constFirst().interval, 5000);
    QCOMPARE(bench.busyEvents(), std::vector<qint64>{1});
    bench.say(ConsoleBench::success());
    QVERIFY(!bench.console->isWaiting());
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
}

void TestTerminalOrbClientConsoleWaits::otherTimersDoNotEndTheWait()
{
    ConsoleBench bench;
    bench.enter(request());
    const int other = bench.console->startTimer(60000);
    QTimerEvent event(other);
    QCoreApplication::sendEvent(bench.console, &event);
    QTimerEvent none(0);
    QCoreApplication::sendEvent(bench.console, &none);
    QVERIFY(bench.console->isWaiting());
    QCOMPARE(bench.busyEvents(), std::vector<qint64>{1});
}

void TestTerminalOrbClientConsoleWaits::watchesThePopupWithATimerOfItsBase()
{
    ConsoleBench bench;
    // Neither console nor popup has the focus, so the base closes the completion at the first tick.
    bench.console->timerId = bench.console->startTimer(0);
    QTRY_COMPARE(bench.console->timerId, 0);
    QVERIFY(bench.timers().isEmpty());
}

void TestTerminalOrbClientConsoleWaits::focusReturnsAfterTheWait()
{
    ConsoleBench bench;
    QVERIFY(bench.showActive());
    bench.enter(request());
    QVERIFY(!bench.console->hasFocus());
    bench.say(ConsoleBench::success());
    QVERIFY(bench.console->hasFocus());
    // And keys reach it as before.
    QTest::keyClick(bench.window.windowHandle(), Qt::Key_A);
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> a"));
}

void TestTerminalOrbClientConsoleWaits::focusReturnsWithoutAParent()
{
    TerminalFixture fixture;
    ConsoleBench::Console console(nullptr, fixture.mainData, fixture.observer);
    console.show();
    console.activateWindow();
    console.setFocus();
    QVERIFY(QTest::qWaitForWindowActive(&console));
    QTRY_VERIFY(console.hasFocus());
    KdChildEvent choice(KD::ControllerChosen, ConsoleBench::controller());
    console.handleEvent(choice);
    KdChildEvent event(KD::Request, request());
    console.handleEvent(event);
    QVERIFY(console.isWaiting());
    console.rawMessageReceived(ConsoleBench::success());
    QTRY_VERIFY(console.hasFocus());
}

void TestTerminalOrbClientConsoleWaits::focusIsNotStolen()
{
    ConsoleBench bench;
    QVERIFY(bench.showActive());
    bench.enter(request());
    bench.elsewhere->setFocus();
    bench.say(ConsoleBench::success());
    QVERIFY(bench.elsewhere->hasFocus());
    QTest::keyClick(bench.window.windowHandle(), Qt::Key_A);
    QCOMPARE(bench.elsewhere->text(), QStringLiteral("a"));
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> "));
}

void TestTerminalOrbClientConsoleWaits::focusIsNotTakenByAConsoleThatHadNone()
{
    ConsoleBench bench;
    QVERIFY(bench.showActive());
    bench.elsewhere->setFocus();
    bench.build(request()); // as the builder's buttons do
    QVERIFY(bench.elsewhere->hasFocus());
    bench.say(ConsoleBench::success());
    QVERIFY(bench.elsewhere->hasFocus());
}

void TestTerminalOrbClientConsoleWaits::focusStaysInTheToolDuringTheWait()
{
    ConsoleBench bench;
    QVERIFY(bench.showActive());
    bench.enter(request());
    // Where the tool's own shortcuts work.
    QCOMPARE(QApplication::focusWidget(), bench.tool);
    QTest::keyClick(bench.window.windowHandle(), Qt::Key_A);
    QVERIFY(bench.elsewhere->text().isEmpty());
}

void TestTerminalOrbClientConsoleWaits::clearedDuringAWait()
{
    ConsoleBench bench;
    bench.enter(request());
    bench.console->clearConsole(QString());
    QVERIFY(bench.console->isWaiting());
    QVERIFY(!bench.console->isEnabled());
    bench.say(QStringLiteral("12.5 V"));
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.console->isEnabled());
    QVERIFY(bench.console->toPlainText().contains(QStringLiteral("12.5 V\n> ")));
    bench.enter(QStringLiteral("next"));
    QCOMPARE(bench.backend.requests(), QStringList({request(), QStringLiteral("next")}));
}

void TestTerminalOrbClientConsoleWaits::stopEndsAPauseAtOnce()
{
    ConsoleBench bench;
    bench.enter(QStringLiteral("wait 50000"));
    bench.console->stopExecution();
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.console->isEnabled());
    QVERIFY(bench.timers().isEmpty());
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
    const QStringList display = bench.display();
    QVERIFY(display.at(display.size() - 2).startsWith(QLatin1String("red:")));
    QCOMPARE(display.constLast(), QStringLiteral("white:> "));
    bench.enter(QStringLiteral("next"));
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("next")});
}

void TestTerminalOrbClientConsoleWaits::stopEndsARequestAtOnce()
{
    ConsoleBench bench;
    bench.enter(request());
    bench.console->stopExecution();
    QVERIFY(!bench.console->isWaiting());
    const QStringList display = bench.display();
    QVERIFY(display.at(display.size() - 2).startsWith(QLatin1String("red:")));
    QCOMPARE(display.constLast(), QStringLiteral("white:> "));
}

void TestTerminalOrbClientConsoleWaits::stopWithoutAnythingToStop()
{
    ConsoleBench bench;
    QSignalSpy changes(bench.console, &TerminalOrbClientConsole::executionChanged);
    QTest::keyClicks(bench.console, QStringLiteral("half a line"));
    bench.console->stopExecution();
    QCOMPARE(bench.display(), QStringList{QStringLiteral("white:> half a line")});
    QVERIFY(bench.observer.events().empty());
    QVERIFY(changes.isEmpty());
}

void TestTerminalOrbClientConsoleWaits::answerAfterAStopIsPrintedAboveThePrompt()
{
    ConsoleBench bench;
    bench.enter(request());
    bench.console->stopExecution();
    QTest::keyClicks(bench.console, QStringLiteral("half"));
    bench.say(ConsoleBench::failure());
    const QStringList display = bench.display();
    QCOMPARE(display.at(display.size() - 2), QStringLiteral("red:") + ConsoleBench::failure());
    QCOMPARE(display.constLast(), QStringLiteral("white:> half"));
}

void TestTerminalOrbClientConsoleWaits::executionIsAnnounced()
{
    ConsoleBench bench;
    QSignalSpy changes(bench.console, &TerminalOrbClientConsole::executionChanged);
    bench.enter(request());
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0).at(0).toBool(), true);
    bench.say(ConsoleBench::success());
    // One answer, one end.
    QTRY_COMPARE(changes.size(), 2);
    QCOMPARE(changes.at(1).at(0).toBool(), false);
    bench.enter(QStringLiteral("# nothing to stop"));
    QCOMPARE(changes.size(), 2);
}

QTEST_MAIN(TestTerminalOrbClientConsoleWaits)
#include "tst_terminal_orb_client_console_waits.moc"
