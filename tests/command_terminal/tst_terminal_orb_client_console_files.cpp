// Command files: which lines of a text are run, and what lets the next one follow.
#include "tests/command_terminal/console_bench.h"

#include <QElapsedTimer>
#include <QSignalSpy>

namespace
{

/// The requests of a text that is run while the service refuses everything, so that no line waits.
QStringList linesRun(const QString &text, bool &started)
{
    ConsoleBench bench;
    bench.backend.setRawAnswer({false, QString(), {}});
    started = bench.console->runCommandFile(text);
    const bool ended = QTest::qWaitFor([&bench] { return !bench.console->isFileRunning(); });
    return ended ? bench.backend.requests() : QStringList{QStringLiteral("did not end")};
}

} // namespace

class TestTerminalOrbClientConsoleFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsTheLinesUpToTheStop_data();
    void runsTheLinesUpToTheStop();
    void eachKindOfLine();
    void lineStartsOnlyAfterTheOneBefore_data();
    void lineStartsOnlyAfterTheOneBefore();
    void itemDataLetTheNextLineFollow();
    void pauseDelaysTheNextLine();
    void badWaitDoesNotStopTheFile();
    void withoutControllerEveryLineFails();
    void controllerMayVanishDuringTheRun();
    void eachLineGoesToTheControllerOfTheMoment();
    void anotherFileStopsTheRunningOne();
    void linesAreEchoedAndRemembered();
    void replacesWhatWasTyped();
    void secondFileReplacesTheFirst();
    void fileStartedDuringARequestFollowsItsAnswer();
    void isRunningFromFirstLineToTheEnd();
    void stopEndsTheFile();
    void clearedDuringTheRun();
    void executionIsAnnouncedOncePerFile();
    void anyBytes_data();
    void anyBytes();
    void noLineFeedAtAll();
};

void TestTerminalOrbClientConsoleFiles::runsTheLinesUpToTheStop_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("run");
    const QStringList none;
    const QStringList a{QStringLiteral("a")};
    const QStringList ab{QStringLiteral("a"), QStringLiteral("b")};

    QTest::newRow("empty") << QString() << none;
    QTest::newRow("one line") << QStringLiteral("a\n") << a;
    QTest::newRow("two lines") << QStringLiteral("a\nb\n") << ab;
    QTest::newRow("last line without a line feed") << QStringLiteral("a\nb") << a;
    QTest::newRow("only line without a line feed") << QStringLiteral("a") << none;
    QTest::newRow("two line feeds collapse") << QStringLiteral("a\n\nb\n") << ab;
    QTest::newRow("three leave an empty line") << QStringLiteral("a\n\n\nb\n") << a;
    QTest::newRow("four leave an empty line") << QStringLiteral("a\n\n\n\nb\n") << a;
    QTest::newRow("two at the end") << QStringLiteral("a\nb\n\n") << ab;
    QTest::newRow("starts with a line feed") << QStringLiteral("\na\n") << none;
    QTest::newRow("starts with two line feeds") << QStringLiteral("\n\na\n") << none;
    QTest::newRow("line feeds only") << QStringLiteral("\n\n\n\n") << none;
    QTest::newRow("carriage return and line feed") << QStringLiteral("a\r\nb\r\n") << ab;
    QTest::newRow("carriage returns") << QStringLiteral("a\rb\r") << ab;
    QTest::newRow("two carriage returns collapse") << QStringLiteral("a\r\rb\r") << ab;
    QTest::newRow("mixed line ends") << QStringLiteral("a\rb\n") << ab;
    QTest::newRow("empty line between CR LF") << QStringLiteral("a\r\n\r\nb\r\n") << a;
    QTest::newRow("last line ends in CR") << QStringLiteral("a\nb\r") << ab;
    QTest::newRow("line of blanks is sent nowhere and stops nothing") << QStringLiteral("a\n  \t\nb\n") << ab;
    QTest::newRow("starts with a line of blanks") << QStringLiteral(" \na\nb\n") << ab;
    QTest::newRow("comments") << QStringLiteral("# x\na\n#\n  # y\nb\n") << ab;
    QTest::newRow("lines are trimmed") << QStringLiteral("  a \t\n\tb\n") << ab;
    QTest::newRow("text behind the stop") << QStringLiteral("a\n\n\nb\nc\n") << a;
}

void TestTerminalOrbClientConsoleFiles::runsTheLinesUpToTheStop()
{
    QFETCH(QString, text);
    QFETCH(QStringList, run);
    bool started = false;
    QCOMPARE(linesRun(text, started), run);
    QCOMPARE(started, !run.isEmpty());
}

void TestTerminalOrbClientConsoleFiles::eachKindOfLine()
{
    ConsoleBench bench;
    QVERIFY(bench.console->runCommandFile(QStringLiteral("# note\n \nwait 9\nwait 5000\nask\nrest\n")));
    const QStringList paused{QStringLiteral("white:> # note"),
                             QStringLiteral("white:> "),
                             QStringLiteral("white:> wait 9"),
                             QStringLiteral("red:bad wait instruction"),
                             QStringLiteral("white:> wait 5000"),
                             QStringLiteral("green:waiting for 5000 ms"),
                             QString()};
    QCOMPARE(bench.display(), paused);
    QVERIFY(bench.backend.requests().isEmpty());
    QVERIFY(bench.runOut());
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("ask")});
    QCOMPARE(bench.display().at(6), QStringLiteral("white:> ask"));
}

void TestTerminalOrbClientConsoleFiles::lineStartsOnlyAfterTheOneBefore_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("answered") << QStringLiteral("12.5 V");
    QTest::newRow("accepted") << ConsoleBench::success();
    QTest::newRow("failed") << ConsoleBench::failure("false");
    QTest::newRow("denied") << ConsoleBench::failure("denied");
    QTest::newRow("no data") << ConsoleBench::failure("noData");
    QTest::newRow("timed out") << QString();
}

void TestTerminalOrbClientConsoleFiles::lineStartsOnlyAfterTheOneBefore()
{
    QFETCH(QString, message);
    ConsoleBench bench;
    QVERIFY(bench.console->runCommandFile(QStringLiteral("one\ntwo\nthree\n")));
    QStringList expected;
    for (const char *line : {"one", "two", "three"}) {
        expected.append(QLatin1String(line));
        QCoreApplication::processEvents();
        QCOMPARE(bench.backend.requests(), expected);
        QVERIFY(bench.console->isFileRunning());
        if (message.isEmpty())
            QVERIFY(bench.runOut());
        else
            bench.say(message);
    }
    QCOMPARE(bench.backend.requests(), expected);
    QVERIFY(!bench.console->isFileRunning());
    QVERIFY(!bench.console->isWaiting());
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> "));
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0, 1, 0, 1, 0}));
}

void TestTerminalOrbClientConsoleFiles::itemDataLetTheNextLineFollow()
{
    ConsoleBench bench;
    const QString get = QStringLiteral(R"({"c":"getItem"})");
    QVERIFY(bench.console->runCommandFile(get + QStringLiteral("\nnext\n")));
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.backend.requests(), QStringList{get});
    bench.say(QStringLiteral("12.5 V"));
    QCOMPARE(bench.backend.requests(), QStringList({get, QStringLiteral("next")}));
}

void TestTerminalOrbClientConsoleFiles::pauseDelaysTheNextLine()
{
    ConsoleBench bench;
    QElapsedTimer elapsed;
    qint64 delay = -1;
    bench.backend.setRawHandler([&](const QString &, const QString &) {
        delay = elapsed.elapsed();
        return RecordingBackend::RawAnswer{};
    });
    elapsed.start();
    QVERIFY(bench.console->runCommandFile(QStringLiteral("wait 1000\nnext\n")));
    QTRY_VERIFY(delay >= 0);
    // A coarse timer is up to 5 % early, and both clocks cut milliseconds off.
    QVERIFY2(delay >= 950 - 2, qPrintable(QString::number(delay)));
}

void TestTerminalOrbClientConsoleFiles::badWaitDoesNotStopTheFile()
{
    bool started = false;
    QCOMPARE(linesRun(QStringLiteral("wait 10\na\nwait\nb\n"), started),
             QStringList({QStringLiteral("a"), QStringLiteral("wait"), QStringLiteral("b")}));
    QVERIFY(started);
}

void TestTerminalOrbClientConsoleFiles::withoutControllerEveryLineFails()
{
    ConsoleBench bench(false);
    QVERIFY(bench.console->runCommandFile(QStringLiteral("one\n# two\nwait 1000\n")));
    const QString error = QStringLiteral("red:no controller defined");
    const QStringList expected{
        QStringLiteral("white:> one"),       error, QStringLiteral("white:> # two"), error,
        QStringLiteral("white:> wait 1000"), error, QStringLiteral("white:> ")};
    QTRY_COMPARE(bench.display(), expected);
    QVERIFY(!bench.console->isFileRunning());
}

void TestTerminalOrbClientConsoleFiles::controllerMayVanishDuringTheRun()
{
    ConsoleBench bench;
    QVERIFY(bench.console->runCommandFile(QStringLiteral("one\ntwo\nthree\n")));
    bench.backend.setRawAnswer({false, QStringLiteral("no such controller"), {}});
    bench.say(ConsoleBench::success());
    QTRY_VERIFY(!bench.console->isFileRunning());
    QCOMPARE(bench.display().count(QStringLiteral("red:no such controller")), 2);
    QCOMPARE(bench.backend.requests().size(), 3);
    QVERIFY(bench.console->isEnabled());
}

void TestTerminalOrbClientConsoleFiles::eachLineGoesToTheControllerOfTheMoment()
{
    ConsoleBench bench;
    bench.console->runCommandFile(QStringLiteral("one\ntwo\n"));
    bench.choose(QStringLiteral("Other"));
    bench.say(ConsoleBench::success());
    const QVector<RecordedCall> calls = bench.backend.callsOf(QStringLiteral("rawRequest"));
    QCOMPARE(calls.size(), 2);
    QCOMPARE(calls.at(0).arguments.constFirst(), ConsoleBench::controller());
    QCOMPARE(calls.at(1).arguments.constFirst(), QStringLiteral("Other"));
    // The operator sees where the lines begin to go elsewhere.
    const QStringList display = bench.display();
    const int notice = display.indexOf(QStringLiteral("red:from here on to the controller Other"));
    QVERIFY2(notice > 0, qPrintable(display.join(QLatin1Char('|'))));
    QCOMPARE(display.value(notice + 1), QStringLiteral("white:> two"));
}

void TestTerminalOrbClientConsoleFiles::anotherFileStopsTheRunningOne()
{
    ConsoleBench bench;
    bench.console->runCommandFile(QStringLiteral("one\ntwo\n"));
    bench.console->runCommandFile(QStringLiteral("three\n"));
    QVERIFY(bench.display().contains(QStringLiteral("red:command file stopped")));
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.backend.requests(), (QStringList{QStringLiteral("one"), QStringLiteral("three")}));
}

void TestTerminalOrbClientConsoleFiles::linesAreEchoedAndRemembered()
{
    ConsoleBench bench;
    QVERIFY(bench.console->runCommandFile(QStringLiteral("  one \n# note\ntwo\n")));
    bench.say(ConsoleBench::success());
    bench.say(ConsoleBench::success());
    const QString accepted = QStringLiteral("green:") + ConsoleBench::success();
    const QStringList expected{QStringLiteral("white:> one"), accepted, QStringLiteral("white:> # note"),
                               QStringLiteral("white:> two"), accepted, QStringLiteral("white:> ")};
    QCOMPARE(bench.display(), expected);
    QCOMPARE(bench.console->history,
             QStringList({QStringLiteral("one"), QStringLiteral("# note"), QStringLiteral("two")}));
    QTest::keyClick(bench.console, Qt::Key_Up);
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> two"));
}

void TestTerminalOrbClientConsoleFiles::replacesWhatWasTyped()
{
    ConsoleBench bench;
    QTest::keyClicks(bench.console, QStringLiteral("half a line"));
    QVERIFY(bench.console->runCommandFile(QStringLiteral("one\n")));
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("one")});
    QCOMPARE(bench.display().constFirst(), QStringLiteral("white:> one"));
}

void TestTerminalOrbClientConsoleFiles::secondFileReplacesTheFirst()
{
    ConsoleBench bench;
    QVERIFY(bench.console->runCommandFile(QStringLiteral("one\ntwo\n")));
    bench.console->runCommandFile(QStringLiteral("three\nfour\n"));
    while (bench.console->isWaiting())
        bench.say(ConsoleBench::success());
    QVERIFY(!bench.console->isFileRunning());
    QCOMPARE(bench.backend.requests(),
             QStringList({QStringLiteral("one"), QStringLiteral("three"), QStringLiteral("four")}));
    // An empty one ends it as well.
    QVERIFY(bench.console->runCommandFile(QStringLiteral("five\nsix\n")));
    QVERIFY(!bench.console->runCommandFile(QString()));
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.backend.requests().size(), 4);
    QVERIFY(!bench.console->isFileRunning());
}

void TestTerminalOrbClientConsoleFiles::fileStartedDuringARequestFollowsItsAnswer()
{
    ConsoleBench bench;
    bench.enter(QStringLiteral("typed"));
    bench.console->runCommandFile(QStringLiteral("one\ntwo\n"));
    // The answer that comes first is the typed line's.
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("typed")});
    QCOMPARE(bench.display().constFirst(), QStringLiteral("white:> typed"));
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.backend.requests().constLast(), QStringLiteral("one"));
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.backend.requests().constLast(), QStringLiteral("two"));
    bench.say(ConsoleBench::success());
    QVERIFY(!bench.console->isFileRunning());
}

void TestTerminalOrbClientConsoleFiles::isRunningFromFirstLineToTheEnd()
{
    ConsoleBench bench;
    QVERIFY(!bench.console->isFileRunning());
    bench.console->runCommandFile(QStringLiteral("one\n"));
    QVERIFY(bench.console->isFileRunning());
    // The last line's answer ends it: there is no further one.
    bench.say(ConsoleBench::success());
    QVERIFY(!bench.console->isFileRunning());
    bench.enter(QStringLiteral("typed"));
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.backend.requests(), QStringList({QStringLiteral("one"), QStringLiteral("typed")}));
    QVERIFY(!bench.console->isFileRunning());
}

void TestTerminalOrbClientConsoleFiles::stopEndsTheFile()
{
    ConsoleBench bench;
    bench.console->runCommandFile(QStringLiteral("one\ntwo\n"));
    bench.console->stopExecution();
    QVERIFY(!bench.console->isFileRunning());
    QVERIFY(!bench.console->isWaiting());
    const QStringList display = bench.display();
    QVERIFY(display.at(display.size() - 2).startsWith(QLatin1String("red:")));
    QCOMPARE(display.constLast(), QStringLiteral("white:> "));
    // The answer that still comes does not wake it.
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("one")});
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
}

void TestTerminalOrbClientConsoleFiles::clearedDuringTheRun()
{
    ConsoleBench bench;
    bench.console->runCommandFile(QStringLiteral("one\ntwo\n"));
    bench.console->clearConsole(QString());
    QVERIFY(bench.console->isFileRunning());
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.backend.requests(), QStringList({QStringLiteral("one"), QStringLiteral("two")}));
    bench.say(ConsoleBench::success());
    QVERIFY(!bench.console->isFileRunning());
    QCOMPARE(bench.console->history, QStringList{QStringLiteral("two")});
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> "));
}

void TestTerminalOrbClientConsoleFiles::executionIsAnnouncedOncePerFile()
{
    ConsoleBench bench;
    QSignalSpy changes(bench.console, &TerminalOrbClientConsole::executionChanged);
    bench.console->runCommandFile(QStringLiteral("one\n# note\ntwo\n"));
    QCOMPARE(changes.size(), 1);
    bench.say(ConsoleBench::success());
    QCOMPARE(changes.size(), 1);
    bench.say(ConsoleBench::success());
    QCOMPARE(changes.size(), 2);
    QCOMPARE(changes.at(0).at(0).toBool(), true);
    QCOMPARE(changes.at(1).at(0).toBool(), false);
}

void TestTerminalOrbClientConsoleFiles::anyBytes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("run");
    const QStringList end{QStringLiteral("end")};

    QByteArray everyByte;
    for (int i = 0; i < 256; ++i)
        everyByte.append(char(i)); // one line feed and one carriage return among them
    const QString latin = QString::fromLatin1(everyByte.constData(), everyByte.size());
    QTest::newRow("every byte as Latin-1")
        << latin + QStringLiteral("\nend\n")
        << QStringList{latin.left(10).trimmed(), latin.mid(14).trimmed(), QStringLiteral("end")};
    QTest::newRow("zero characters") << QString(5, QChar(0)) + QStringLiteral("\nend\n")
                                     << QStringList({QString(5, QChar(0)), QStringLiteral("end")});
    QTest::newRow("bytes that are no UTF-8")
        << QString::fromUtf8("\xff\xfe\x80\nend\n")
        << QStringList({QString(3, QChar::ReplacementCharacter), QStringLiteral("end")});
    QTest::newRow("half surrogate pairs")
        << QString(QChar(0xd83d)) + QLatin1Char('\n') + QChar(0xdd0c) + QStringLiteral("\nend\n")
        << QStringList({QString(QChar(0xd83d)), QString(QChar(0xdd0c)), QStringLiteral("end")});
    QTest::newRow("prompts") << QStringLiteral("> > \nend\n")
                             << QStringList({QStringLiteral("> >"), QStringLiteral("end")});
    QTest::newRow("long line") << QString(300000, QLatin1Char('x')) + QStringLiteral("\nend\n")
                               << QStringList({QString(300000, QLatin1Char('x')), QStringLiteral("end")});
    QTest::newRow("long comment") << QLatin1Char('#') + QString(300000, QLatin1Char('x'))
            + QStringLiteral("\nend\n")
                                  << end;
}

void TestTerminalOrbClientConsoleFiles::anyBytes()
{
    QFETCH(QString, text);
    QFETCH(QStringList, run);
    bool started = false;
    QCOMPARE(linesRun(text, started), run);
    QVERIFY(started);
}

void TestTerminalOrbClientConsoleFiles::noLineFeedAtAll()
{
    ConsoleBench bench;
    QVERIFY(!bench.console->runCommandFile(QString(1000000, QLatin1Char('x'))));
    QVERIFY(!bench.console->isFileRunning());
    QVERIFY(bench.backend.requests().isEmpty());
    QCOMPARE(bench.display(), QStringList{QStringLiteral("white:> ")});
}

QTEST_MAIN(TestTerminalOrbClientConsoleFiles)
#include "tst_terminal_orb_client_console_files.moc"
