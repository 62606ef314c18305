// What a line that is entered does: every kind of line, the events that the console takes and sends, and its life
// between subscribing and unsubscribing. Messages, waits and command files have programs of their own.
#include "tests/command_terminal/console_bench.h"
#include "tests/command_terminal/context_translator.h"

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>

static_assert(std::is_base_of_v<TerminalConsole, TerminalOrbClientConsole>);
static_assert(std::is_base_of_v<DlMessageSubscriber, TerminalOrbClientConsole>);

namespace
{

QString request()
{
    return QStringLiteral(R"({"c":"setItem"})");
}

/// Looks at the console while it reports that it is busy.
class WatchingObserver : public KdObserver
{
public:
    void processChildEvent(KdChildEvent &event) override
    {
        if (event.type == KD::BusyChanged && watch)
            watch(event.getIntArgument(0));
    }

    std::function<void(qint64)> watch;
};

} // namespace

class TestTerminalOrbClientConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsIdleWithAPrompt();
    void withoutControllerEveryLineIsAnError_data();
    void withoutControllerEveryLineIsAnError();
    void choosesAndForgetsTheController();
    void commentAndEmptyLineAreNotSent_data();
    void commentAndEmptyLineAreNotSent();
    void sendsTheRequestAsItStands_data();
    void sendsTheRequestAsItStands();
    void trimsTheRequest();
    void printsTheImmediateReply_data();
    void printsTheImmediateReply();
    void refusedRequestIsAnError_data();
    void refusedRequestIsAnError();
    void refusalOfTheLayerIsShown();
    void locksTheConsoleWhileItWaits();
    void keysDuringARequestAreLost();
    void reportsBusyBeforeItLocksAndIdleBeforeItUnlocks();
    void requestFromTheBuilderIsTypedAndExecuted();
    void requestFromTheBuilderReplacesWhatWasTyped();
    void requestFromTheBuilderWithLineBreaksIsOneRequest();
    void otherEventsAreIgnored();
    void remembersLinesThatWereEntered();
    void textsAreTranslatedInTheClassContext();
    void hearsMessagesFromItsConstructionOn();
    void hearsNothingAfterItsDestruction();
    void isDestroyedWithARequestOutstanding();
    void leavesTheLayerAloneWhenTheHostShutsDown();
};

void TestTerminalOrbClientConsole::startsIdleWithAPrompt()
{
    ConsoleBench bench(false);
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(!bench.console->isFileRunning());
    QVERIFY(bench.console->isEnabled());
    QCOMPARE(bench.display(), QStringList{QStringLiteral("white:> ")});
    QVERIFY(bench.observer.events().empty());
}

void TestTerminalOrbClientConsole::withoutControllerEveryLineIsAnError_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("request") << request();
    QTest::newRow("comment") << QStringLiteral("# hello");
    QTest::newRow("empty") << QString();
    QTest::newRow("wait") << QStringLiteral("wait 1000");
    QTest::newRow("bad wait") << QStringLiteral("wait 1");
}

void TestTerminalOrbClientConsole::withoutControllerEveryLineIsAnError()
{
    QFETCH(QString, line);
    ConsoleBench bench(false);
    bench.enter(line);
    const QStringList expected{QStringLiteral("white:> ") + line, QStringLiteral("red:no controller defined"),
                               QStringLiteral("white:> ")};
    QCOMPARE(bench.display(), expected);
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.backend.requests().isEmpty());
    QVERIFY(bench.observer.events().empty());
    QVERIFY(!bench.console->busy);
}

void TestTerminalOrbClientConsole::choosesAndForgetsTheController()
{
    ConsoleBench bench(false);
    bench.choose(QStringLiteral("Main"));
    bench.enter(request());
    bench.say(ConsoleBench::success());
    bench.choose(QStringLiteral("Second"));
    bench.enter(request());
    bench.say(ConsoleBench::success());

    const QVector<RecordedCall> calls = bench.backend.callsOf(QStringLiteral("rawRequest"));
    QCOMPARE(calls.size(), 2);
    QCOMPARE(calls.at(0).arguments, QStringList({QStringLiteral("Main"), request()}));
    QCOMPARE(calls.at(1).arguments, QStringList({QStringLiteral("Second"), request()}));

    bench.choose(QString());
    bench.enter(request());
    QCOMPARE(bench.backend.requests().size(), 2);
    QCOMPARE(bench.display().at(bench.display().size() - 2), QStringLiteral("red:no controller defined"));
}

void TestTerminalOrbClientConsole::commentAndEmptyLineAreNotSent_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("empty") << QString();
    QTest::newRow("blanks") << QStringLiteral("   ");
    QTest::newRow("comment") << QStringLiteral("# ramp up");
    QTest::newRow("comment without text") << QStringLiteral("#");
    QTest::newRow("indented comment") << QStringLiteral("  # ramp up");
    QTest::newRow("comment that looks like a wait") << QStringLiteral("#wait 1000");
}

void TestTerminalOrbClientConsole::commentAndEmptyLineAreNotSent()
{
    QFETCH(QString, line);
    ConsoleBench bench;
    bench.enter(line);
    QVERIFY(bench.backend.requests().isEmpty());
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.observer.events().empty());
    QCOMPARE(bench.display(), QStringList({QStringLiteral("white:> ") + line, QStringLiteral("white:> ")}));
}

void TestTerminalOrbClientConsole::sendsTheRequestAsItStands_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("JSON") << QStringLiteral(R"({"i":"<session_id>","t":"request","c":[{"c":"getItem"}]})");
    QTest::newRow("no JSON") << QStringLiteral("hello world");
    QTest::newRow("comment sign inside") << QStringLiteral("a # b");
    QTest::newRow("wait in capitals") << QStringLiteral("Wait 1000");
    QTest::newRow("wait without a blank") << QStringLiteral("wait");
    QTest::newRow("waiting") << QStringLiteral("waiting 1000");
    QTest::newRow("wait and a tab") << QStringLiteral("wait\t1000");
    QTest::newRow("blanks inside") << QStringLiteral("a  \t b");
    QTest::newRow("quotation marks and place markers") << QStringLiteral("\"%0 %1 %n\\");
    QTest::newRow("no-break space inside") << QStringLiteral("1\u00a0000");
    QTest::newRow("line separator inside") << QStringLiteral("a\u2028b");
    QTest::newRow("beyond the BMP") << QStringLiteral("\U0001F50C volt \U0001F50C");
    QTest::newRow("right to left") << QStringLiteral("\u05d0\u05d1 12 \u0627\u0644");
    QTest::newRow("zero character") << QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    QTest::newRow("half a surrogate pair") << QStringLiteral("a") + QChar(0xd83d) + QStringLiteral("b");
    QTest::newRow("long") << QString(100000, QLatin1Char('x'));
}

void TestTerminalOrbClientConsole::sendsTheRequestAsItStands()
{
    QFETCH(QString, line);
    ConsoleBench bench;
    bench.build(line);
    QCOMPARE(bench.backend.requests(), QStringList{line});
    QVERIFY(bench.console->isWaiting());
}

void TestTerminalOrbClientConsole::trimsTheRequest()
{
    ConsoleBench bench;
    bench.enter(QStringLiteral("   ") + request() + QStringLiteral("  "));
    QCOMPARE(bench.backend.requests(), QStringList{request()});
}

void TestTerminalOrbClientConsole::printsTheImmediateReply_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QStringList>("printed");
    QTest::newRow("none") << QString() << QStringList();
    QTest::newRow("text") << QStringLiteral("taken") << QStringList{QStringLiteral("green:taken")};
    QTest::newRow("trimmed") << QStringLiteral(" \n taken\n\n") << QStringList{QStringLiteral("green:taken")};
    QTest::newRow("two lines") << QStringLiteral("one\ntwo")
                               << QStringList{QStringLiteral("green:one"), QStringLiteral("green:two")};
    QTest::newRow("white space only") << QStringLiteral(" \n ") << QStringList();
}

void TestTerminalOrbClientConsole::printsTheImmediateReply()
{
    QFETCH(QString, reply);
    QFETCH(QStringList, printed);
    ConsoleBench bench;
    bench.backend.setRawAnswer({true, reply, {}});
    bench.enter(request());
    QVERIFY(bench.console->isWaiting());
    // No prompt yet: it comes with the end of the wait.
    const QStringList expected =
        QStringList{QStringLiteral("white:> ") + request()} + printed + QStringList{QString()};
    QCOMPARE(bench.display(), expected);
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> "));
}

void TestTerminalOrbClientConsole::refusedRequestIsAnError_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QStringList>("printed");
    QTest::newRow("with a text") << QStringLiteral("bad request")
                                 << QStringList{QStringLiteral("red:bad request")};
    QTest::newRow("trimmed") << QStringLiteral("\tbad request \n")
                             << QStringList{QStringLiteral("red:bad request")};
    QTest::newRow("without a text") << QString() << QStringList();
}

void TestTerminalOrbClientConsole::refusedRequestIsAnError()
{
    QFETCH(QString, reply);
    QFETCH(QStringList, printed);
    ConsoleBench bench;
    bench.backend.setRawAnswer({false, reply, {}});
    bench.enter(request());
    const QStringList expected = QStringList{QStringLiteral("white:> ") + request()} + printed
        + QStringList{QStringLiteral("white:> ")};
    QCOMPARE(bench.display(), expected);
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.observer.events().empty());
    QVERIFY(bench.console->isEnabled());
    QVERIFY(!bench.console->busy);
}

void TestTerminalOrbClientConsole::refusalOfTheLayerIsShown()
{
    ConsoleBench bench;
    bench.backend.setRawHandler([](const QString &name, const QString &) {
        return RecordingBackend::RawAnswer{
            name == ConsoleBench::controller(), QStringLiteral("no controller ") + name, {}};
    });
    bench.choose(QStringLiteral("gone"));
    bench.enter(request());
    QVERIFY(bench.display().contains(QStringLiteral("red:no controller gone")));
}

void TestTerminalOrbClientConsole::locksTheConsoleWhileItWaits()
{
    ConsoleBench bench;
    bench.enter(request());
    QVERIFY(!bench.console->isEnabled());
    QCOMPARE(bench.busyEvents(), std::vector<qint64>{1});
    bench.say(ConsoleBench::success());
    QVERIFY(bench.console->isEnabled());
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
}

void TestTerminalOrbClientConsole::keysDuringARequestAreLost()
{
    ConsoleBench bench;
    QVERIFY(bench.showActive());
    bench.enter(request());
    const QStringList before = bench.display();
    // By way of the window, as the window system delivers them.
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_Return, Qt::Key_Backspace, Qt::Key_Up})
        QTest::keyClick(bench.window.windowHandle(), key);
    QCOMPARE(bench.display(), before);
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> "));
    QCOMPARE(bench.backend.requests().size(), 1);
}

void TestTerminalOrbClientConsole::reportsBusyBeforeItLocksAndIdleBeforeItUnlocks()
{
    TerminalFixture fixture;
    WatchingObserver observer;
    ConsoleBench::Console console(nullptr, fixture.mainData, observer);
    KdChildEvent choice(KD::ControllerChosen, ConsoleBench::controller());
    console.handleEvent(choice);

    QStringList seen;
    observer.watch = [&](qint64 busy) {
        seen.append(QStringLiteral("%1 waiting %2 enabled %3 prompt %4")
                        .arg(busy)
                        .arg(console.isWaiting())
                        .arg(console.isEnabled())
                        .arg(console.toPlainText().endsWith(QLatin1String("\n> "))));
    };
    KdChildEvent event(KD::Request, request());
    console.handleEvent(event);
    console.rawMessageReceived(ConsoleBench::success());
    QCOMPARE(seen,
             QStringList({QStringLiteral("1 waiting 1 enabled 1 prompt 0"),
                          QStringLiteral("0 waiting 0 enabled 0 prompt 0")}));
    QVERIFY(console.isEnabled());
    QVERIFY(console.toPlainText().endsWith(QLatin1String("\n> ")));
}

void TestTerminalOrbClientConsole::requestFromTheBuilderIsTypedAndExecuted()
{
    ConsoleBench bench;
    bench.build(request());
    QCOMPARE(bench.backend.requests(), QStringList{request()});
    QCOMPARE(bench.display(), QStringList({QStringLiteral("white:> ") + request(), QString()}));
    bench.say(ConsoleBench::success());
    QTest::keyClick(bench.console, Qt::Key_Up);
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> ") + request());
}

void TestTerminalOrbClientConsole::requestFromTheBuilderReplacesWhatWasTyped()
{
    ConsoleBench bench;
    QTest::keyClicks(bench.console, QStringLiteral("half a line"));
    QTest::keyClick(bench.console, Qt::Key_Home);
    QTest::keyClick(bench.console, Qt::Key_Right);
    bench.build(request());
    QCOMPARE(bench.backend.requests(), QStringList{request()});
    QCOMPARE(bench.display(), QStringList({QStringLiteral("white:> ") + request(), QString()}));
}

void TestTerminalOrbClientConsole::requestFromTheBuilderWithLineBreaksIsOneRequest()
{
    ConsoleBench bench;
    bench.build(QStringLiteral("{\n 1\n}"));
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("{\n 1\n}")});
}

void TestTerminalOrbClientConsole::otherEventsAreIgnored()
{
    ConsoleBench bench;
    const QStringList before = bench.display();
    for (quint32 type = 250; type < 265; ++type) {
        if (type == KD::Request || type == KD::ControllerChosen)
            continue;
        KdChildEvent event(static_cast<KD::EventType>(type), QStringLiteral("x"));
        bench.console->handleEvent(event);
    }
    QCOMPARE(bench.display(), before);
    QVERIFY(bench.backend.requests().isEmpty());
    QVERIFY(bench.observer.events().empty());
    bench.enter(request());
    QCOMPARE(bench.backend.callsOf(QStringLiteral("rawRequest")).at(0).arguments.at(0),
             ConsoleBench::controller());
}

void TestTerminalOrbClientConsole::remembersLinesThatWereEntered()
{
    ConsoleBench bench;
    bench.backend.setRawAnswer({false, QString(), {}});
    bench.enter(QStringLiteral("one"));
    bench.enter(QStringLiteral("# two"));
    bench.enter(QStringLiteral("wait 1"));
    bench.enter(QString());
    bench.build(QStringLiteral("three"));
    bench.build(QStringLiteral("three"));
    QCOMPARE(bench.console->history,
             QStringList({QStringLiteral("one"), QStringLiteral("# two"), QStringLiteral("wait 1"),
                          QStringLiteral("three")}));
}

void TestTerminalOrbClientConsole::textsAreTranslatedInTheClassContext()
{
    const ContextTranslator translator;
    ConsoleBench bench(false);
    bench.enter(QStringLiteral("x"));
    bench.choose(ConsoleBench::controller());
    bench.enter(QStringLiteral("wait 1"));
    bench.enter(QStringLiteral("wait 4321"));
    const QStringList display = bench.display();
    QVERIFY(display.contains(QStringLiteral("red:[TerminalOrbClientConsole]no controller defined")));
    QVERIFY(display.contains(QStringLiteral("red:[TerminalOrbClientConsole]bad wait instruction")));
    QVERIFY(display.contains(QStringLiteral("green:[TerminalOrbClientConsole]waiting for 4321 ms")));
}

void TestTerminalOrbClientConsole::hearsMessagesFromItsConstructionOn()
{
    ConsoleBench bench(false);
    bench.say(QStringLiteral("hello"));
    QVERIFY(bench.display().contains(QStringLiteral("green:hello")));
}

void TestTerminalOrbClientConsole::hearsNothingAfterItsDestruction()
{
    TerminalFixture fixture;
    // Its memory stays, so that a call to what is gone hits a pure operation and not somebody else's object.
    std::optional<ConsoleBench::Console> console;
    console.emplace(nullptr, fixture.mainData, fixture.observer);
    const ConsoleBench::Console other(nullptr, fixture.mainData, fixture.observer);
    fixture.backend.sendRawMessage(QStringLiteral("Main"), QStringLiteral("on its way"));
    console.reset();
    fixture.backend.sendRawMessage(QStringLiteral("Main"), QStringLiteral("late"));
    QTRY_VERIFY(other.toPlainText().contains(QLatin1String("late")));
}

void TestTerminalOrbClientConsole::isDestroyedWithARequestOutstanding()
{
    ConsoleBench bench;
    bench.console->runCommandFile(QStringLiteral("one\ntwo\n"));
    QVERIFY(bench.console->isWaiting());
    const ConsoleBench::Console other(nullptr, bench.mainData, bench.observer);
    std::unique_ptr<QWidget>(bench.tool).reset();
    bench.say(ConsoleBench::success());
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("one")});
    QVERIFY(other.toPlainText().contains(ConsoleBench::success()));
}

void TestTerminalOrbClientConsole::leavesTheLayerAloneWhenTheHostShutsDown()
{
    RecordingBackend backend;
    auto dataAccess = std::make_unique<DlDataAccess>(backend);
    KdMainData mainData(dataAccess.get());
    RecordingObserver observer;
    auto console = std::make_unique<ConsoleBench::Console>(nullptr, mainData, observer);
    mainData.shuttingDown = true;
    mainData.dataAccess = nullptr;
    dataAccess.reset();
    console.reset(); // would run into the null pointer
    QVERIFY(!backend.hasListener());
}

QTEST_MAIN(TestTerminalOrbClientConsole)
#include "tst_terminal_orb_client_console.moc"
