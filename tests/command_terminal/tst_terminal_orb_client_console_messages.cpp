// What the console makes of raw messages: triggers, the data of an answer, what nobody waits for, and rubbish.
#include "tests/command_terminal/console_bench.h"
#include "tests/command_terminal/processor_time.h"

namespace
{

QString getRequest()
{
    return QStringLiteral(R"({"c":[{"c":"getItem","p":{}}]})");
}

QString setRequest()
{
    return QStringLiteral(R"({"c":[{"c":"setItem","p":{}}]})");
}

/// What it costs to show an answer of one word.
double costOfWord(int length)
{
    ConsoleBench bench;
    bench.window.show();
    bench.enter(setRequest());
    const double before = processorTime();
    bench.say(QString(length, QLatin1Char('x')));
    return processorTime() - before;
}

void addTextsOfAnyKind()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("white space") << QStringLiteral(" \t\r\n ");
    QTest::newRow("data") << QStringLiteral(R"([{"v":"12.5","u":"V"}])");
    QTest::newRow("many lines") << QStringLiteral("a\nb\r\nc\rd\n\n\ne");
    QTest::newRow("looks like a prompt") << QStringLiteral("> # wait 1000\n> ");
    QTest::newRow("zero characters") << QStringLiteral("a") + QString(3, QChar(0)) + QStringLiteral("b");
    QTest::newRow("half a surrogate pair") << QStringLiteral("a") + QChar(0xd83d);
    QTest::newRow("beyond the BMP") << QStringLiteral("\U0001F50C\U0001F50C");
    QTest::newRow("right to left") << QStringLiteral("\u05d0\u05d1\u202e12");
    QTest::newRow("separators") << QStringLiteral("a\u2028b\u2029c");
    QTest::newRow("marks that the document uses itself")
        << QStringLiteral("a") + QChar(0xfdd0) + QStringLiteral("b") + QChar(0xfdd1) + QChar(0xfffc);
    QTest::newRow("HTML and place markers") << QStringLiteral("<b>%1</b>%0<img src=x>&amp;");
    QTest::newRow("one long line") << QString(200000, QLatin1Char('x'));
}

} // namespace

class TestTerminalOrbClientConsoleMessages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void failureTriggerEndsTheWaitInRed_data();
    void failureTriggerEndsTheWaitInRed();
    void trueTriggerEndsTheWaitOfOtherRequests_data();
    void trueTriggerEndsTheWaitOfOtherRequests();
    void trueTriggerKeepsAnItemRequestWaiting();
    void itemRequestEndsWithoutDataWhenTimeRunsOut();
    void itemRequestTakesDataWithoutTrigger();
    void anythingButATriggerIsData_data();
    void anythingButATriggerIsData();
    void messageEndsAPause();
    void lastAcceptedRequestDecidesAboutATriggerDuringAPause();
    void lateMessageIsStillPrinted_data();
    void lateMessageIsStillPrinted();
    void lateMessageLeavesTheTypedLineWhole();
    void lateMessageLeavesTheCursorInTheLine();
    void lateMessagesComeInOrder();
    void answerOfAnyContent_data() { addTextsOfAnyKind(); }
    void answerOfAnyContent();
    void lateMessageOfAnyContent_data() { addTextsOfAnyKind(); }
    void lateMessageOfAnyContent();
    void longWordsCostByTheirLength();
    void messagesWithinOneWaitAreOneAnswer();
    void wantsMessagesOnlyWhileItWaits();
};

void TestTerminalOrbClientConsoleMessages::failureTriggerEndsTheWaitInRed_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("message");
    for (const char *kind : {"false", "denied", "noData"}) {
        QTest::addRow("%s after setting", kind) << setRequest() << ConsoleBench::trigger(kind);
        QTest::addRow("%s after getting", kind) << getRequest() << ConsoleBench::trigger(kind);
    }
}

void TestTerminalOrbClientConsoleMessages::failureTriggerEndsTheWaitInRed()
{
    QFETCH(QString, request);
    QFETCH(QString, message);
    ConsoleBench bench;
    bench.enter(request);
    bench.say(message);
    const QStringList expected{QStringLiteral("white:> ") + request, QStringLiteral("red:") + message,
                               QStringLiteral("white:> ")};
    QCOMPARE(bench.display(), expected);
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.console->isEnabled());
    QVERIFY(bench.timers().isEmpty());
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
}

void TestTerminalOrbClientConsoleMessages::trueTriggerEndsTheWaitOfOtherRequests_data()
{
    QTest::addColumn<QString>("request");
    QTest::newRow("set") << setRequest();
    QTest::newRow("a blank after the colon") << QStringLiteral(R"({"c": "getItem"})");
    QTest::newRow("small letters") << QStringLiteral(R"({"c":"getitem"})");
    QTest::newRow("capital letter") << QStringLiteral(R"({"C":"getItem"})");
    QTest::newRow("name only") << QStringLiteral("getItem");
    QTest::newRow("longer name") << QStringLiteral(R"({"c":"getItems"})");
}

void TestTerminalOrbClientConsoleMessages::trueTriggerEndsTheWaitOfOtherRequests()
{
    QFETCH(QString, request);
    ConsoleBench bench;
    bench.enter(request);
    bench.say(ConsoleBench::success());
    const QStringList expected{QStringLiteral("white:> ") + request,
                               QStringLiteral("green:") + ConsoleBench::success(),
                               QStringLiteral("white:> ")};
    QCOMPARE(bench.display(), expected);
    QVERIFY(!bench.console->isWaiting());
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
}

void TestTerminalOrbClientConsoleMessages::trueTriggerKeepsAnItemRequestWaiting()
{
    ConsoleBench bench;
    bench.enter(getRequest());
    for (int i = 0; i < 2; ++i) {
        bench.say(ConsoleBench::success());
        QVERIFY(bench.console->isWaiting());
        QVERIFY(!bench.console->isEnabled());
        QCOMPARE(bench.timers().size(), 1);
        QCOMPARE(bench.busyEvents(), std::vector<qint64>{1});
    }
    bench.say(QStringLiteral("12.5 V"));
    const QString accepted = QStringLiteral("green:") + ConsoleBench::success();
    const QStringList expected{QStringLiteral("white:> ") + getRequest(), accepted, accepted,
                               QStringLiteral("green:12.5 V"), QStringLiteral("white:> ")};
    QCOMPARE(bench.display(), expected);
    QVERIFY(!bench.console->isWaiting());
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
}

void TestTerminalOrbClientConsoleMessages::itemRequestEndsWithoutDataWhenTimeRunsOut()
{
    ConsoleBench bench;
    bench.enter(getRequest());
    bench.say(ConsoleBench::success());
    QVERIFY(bench.runOut());
    QVERIFY(!bench.console->isWaiting());
    const QStringList expected{QStringLiteral("white:> ") + getRequest(),
                               QStringLiteral("green:") + ConsoleBench::success(),
                               QStringLiteral("white:> ")};
    QCOMPARE(bench.display(), expected);
}

void TestTerminalOrbClientConsoleMessages::itemRequestTakesDataWithoutTrigger()
{
    ConsoleBench bench;
    bench.enter(getRequest());
    bench.say(QStringLiteral("12.5 V"));
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.display().contains(QStringLiteral("green:12.5 V")));
}

void TestTerminalOrbClientConsoleMessages::anythingButATriggerIsData_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("capital letter") << QStringLiteral(R"([{"trigger":"False"}])");
    QTest::newRow("capital success") << QStringLiteral(R"([{"trigger":"True"}])");
    QTest::newRow("small d in no data") << QStringLiteral(R"([{"trigger":"nodata"}])");
    QTest::newRow("blank inside") << QStringLiteral(R"([{"trigger": "true"}])");
    QTest::newRow("blank before") << QLatin1Char(' ') + ConsoleBench::failure();
    QTest::newRow("line feed behind") << ConsoleBench::success() + QLatin1Char('\n');
    QTest::newRow("no brackets") << QStringLiteral(R"({"trigger":"false"})");
    QTest::newRow("two of them") << ConsoleBench::failure() + ConsoleBench::failure();
    QTest::newRow("other kind") << ConsoleBench::trigger("maybe");
    QTest::newRow("empty") << QString();
}

void TestTerminalOrbClientConsoleMessages::anythingButATriggerIsData()
{
    QFETCH(QString, message);
    ConsoleBench bench;
    bench.enter(getRequest());
    bench.say(message);
    QVERIFY(!bench.console->isWaiting());
    QStringList expected{QStringLiteral("white:> ") + getRequest()};
    if (!message.isEmpty())
        expected.append(QStringLiteral("green:") + message.trimmed());
    expected.append(QStringLiteral("white:> "));
    QCOMPARE(bench.display(), expected);
}

void TestTerminalOrbClientConsoleMessages::messageEndsAPause()
{
    ConsoleBench bench;
    bench.enter(QStringLiteral("wait 50000"));
    bench.say(QStringLiteral("a late answer"));
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.timers().isEmpty());
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
}

void TestTerminalOrbClientConsoleMessages::lastAcceptedRequestDecidesAboutATriggerDuringAPause()
{
    ConsoleBench bench;
    bench.enter(getRequest());
    QVERIFY(bench.runOut());
    bench.backend.setRawAnswer({false, QString(), {}});
    bench.enter(setRequest()); // refused, so it is not the last request
    bench.enter(QStringLiteral("wait 50000"));
    bench.say(ConsoleBench::success());
    QVERIFY(bench.console->isWaiting());
    bench.say(QStringLiteral("12.5 V"));
    QVERIFY(!bench.console->isWaiting());

    bench.backend.setRawAnswer({});
    bench.enter(setRequest());
    QVERIFY(bench.runOut());
    bench.enter(QStringLiteral("wait 50000"));
    bench.say(ConsoleBench::success());
    QVERIFY(!bench.console->isWaiting());
}

void TestTerminalOrbClientConsoleMessages::lateMessageIsStillPrinted_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("printed");
    for (const char *kind : {"false", "denied", "noData"})
        QTest::newRow(kind) << ConsoleBench::trigger(kind)
                            << QStringLiteral("red:") + ConsoleBench::trigger(kind);
    QTest::newRow("true") << ConsoleBench::success() << QStringLiteral("green:") + ConsoleBench::success();
    QTest::newRow("data") << QStringLiteral(" 12.5 V\n") << QStringLiteral("green:12.5 V");
}

void TestTerminalOrbClientConsoleMessages::lateMessageIsStillPrinted()
{
    QFETCH(QString, message);
    QFETCH(QString, printed);
    ConsoleBench bench;
    bench.say(message);
    QCOMPARE(bench.display(), QStringList({printed, QStringLiteral("white:> ")}));
    QVERIFY(!bench.console->isWaiting());
    QVERIFY(bench.observer.events().empty());
}

void TestTerminalOrbClientConsoleMessages::lateMessageLeavesTheTypedLineWhole()
{
    ConsoleBench bench;
    QTest::keyClicks(bench.console, QStringLiteral("{\"c\":"));
    bench.say(ConsoleBench::failure());
    bench.say(QStringLiteral("one\ntwo"));
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> {\"c\":"));
    QTest::keyClicks(bench.console, QStringLiteral("\"setItem\"}"));
    QTest::keyClick(bench.console, Qt::Key_Return);
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("{\"c\":\"setItem\"}")});
    QCOMPARE(bench.console->history, QStringList{QStringLiteral("{\"c\":\"setItem\"}")});
}

void TestTerminalOrbClientConsoleMessages::lateMessageLeavesTheCursorInTheLine()
{
    ConsoleBench bench;
    QTest::keyClicks(bench.console, QStringLiteral("abcdef"));
    QTest::keyClick(bench.console, Qt::Key_Left);
    QTest::keyClick(bench.console, Qt::Key_Left);
    bench.say(QStringLiteral("news"));
    QTest::keyClicks(bench.console, QStringLiteral("X"));
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> abcdXef"));
    // The prompt moved with the line: what stands before it stays protected.
    QTest::keyClick(bench.console, Qt::Key_Home);
    QTest::keyClick(bench.console, Qt::Key_Backspace);
    QCOMPARE(bench.display(), QStringList({QStringLiteral("green:news"), QStringLiteral("white:> abcdXef")}));
}

void TestTerminalOrbClientConsoleMessages::lateMessagesComeInOrder()
{
    ConsoleBench bench;
    for (const char *text : {"one", "two", "three"})
        bench.backend.sendRawMessage(ConsoleBench::controller(), QLatin1String(text));
    QCoreApplication::processEvents();
    QCOMPARE(bench.display(),
             QStringList({QStringLiteral("green:one"), QStringLiteral("green:two"),
                          QStringLiteral("green:three"), QStringLiteral("white:> ")}));
}

void TestTerminalOrbClientConsoleMessages::answerOfAnyContent()
{
    QFETCH(QString, text);
    ConsoleBench bench;
    bench.enter(setRequest());
    bench.say(text);
    QVERIFY(!bench.console->isWaiting());
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> "));
    bench.enter(QStringLiteral("next"));
    QCOMPARE(bench.backend.requests(), QStringList({setRequest(), QStringLiteral("next")}));
}

void TestTerminalOrbClientConsoleMessages::lateMessageOfAnyContent()
{
    QFETCH(QString, text);
    ConsoleBench bench;
    QTest::keyClicks(bench.console, QStringLiteral("half "));
    bench.say(text);
    QCOMPARE(bench.display().constLast(), QStringLiteral("white:> half "));
    bench.enter(QStringLiteral("whole"));
    QCOMPARE(bench.backend.requests(), QStringList{QStringLiteral("half whole")});
}

void TestTerminalOrbClientConsoleMessages::longWordsCostByTheirLength()
{
    costOfWord(1000); // fonts and caches
    const double brief = costOfWord(40000);
    const double longer = costOfWord(200000);
    // 5 if each character costs the same, 25 if it costs more behind others.
    QVERIFY2(longer / brief < 13, qPrintable(QStringLiteral("%1 s and %2 s").arg(brief).arg(longer)));
}

void TestTerminalOrbClientConsoleMessages::messagesWithinOneWaitAreOneAnswer()
{
    ConsoleBench bench;
    bench.backend.setRawAnswer(
        {true, QString(), {ConsoleBench::success(), QStringLiteral("12.5 V"), QStringLiteral("more")}});
    bench.enter(getRequest());
    const QStringList expected{QStringLiteral("green:") + ConsoleBench::success(),
                               QStringLiteral("green:12.5 V"), QStringLiteral("green:more"),
                               QStringLiteral("white:> ")};
    QTRY_COMPARE(bench.display().mid(1), expected);
    QCOMPARE(bench.busyEvents(), (std::vector<qint64>{1, 0}));
}

void TestTerminalOrbClientConsoleMessages::wantsMessagesOnlyWhileItWaits()
{
    ConsoleBench bench;
    for (const quint32 kind : {0U, 1U, 2U, 99U}) {
        DlNotificationQuery query;
        query.kind = kind;
        QVERIFY(!bench.console->wantsNotification(query));
    }
    bench.enter(setRequest());
    for (const quint32 kind : {0U, 1U, 2U, 99U}) {
        DlNotificationQuery query;
        query.kind = kind;
        QVERIFY(bench.console->wantsNotification(query));
    }
    bench.say(ConsoleBench::success());
    DlNotificationQuery query;
    QVERIFY(!bench.console->wantsNotification(query));
}

QTEST_MAIN(TestTerminalOrbClientConsoleMessages)
#include "tst_terminal_orb_client_console_messages.moc"
