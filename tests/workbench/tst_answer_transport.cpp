#include "workbench/simulator/answer_transport.h"

#include "tests/workbench/request_fixture.h"
#include "workbench/simulator/real_clock.h"

#include <QtTest>

#include <algorithm>
#include <cmath>

Q_DECLARE_METATYPE(simulator::FaultKind)
Q_DECLARE_METATYPE(TarnResult)

using namespace simulator;

/// Raw requests, their answers and the faults of the way between, in a time that the test steps.
class TestAnswerTransport : public QObject, private RequestFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(layoutWithLatency()); }
    void cleanup() { tearDown(); }

    void answersAfterTheLatency();
    void isCarriedOutAtItsOwnTime();
    void controllersDoNotWaitForEachOther();
    void slowAnswers();
    void droppedAnswer();
    void duplicatedAnswer();
    void reorderedAnswers();
    void keptAnswerComesWhenItIsMended();
    void disconnects();
    void comesBackBeforeTheAnswerWasDue();
    void closedConnectionLosesItsRequests();
    void shutdownLosesTheOtherRequests();
    void causedAgainLastsLonger();
    void scheduledFaults();
    void refusedFaults_data();
    void refusedFaults();
    void mendsWhatWasCaused_data();
    void mendsWhatWasCaused();
    void messagesToScripts();
    void comesBackWithoutAnybodyLooking();
    void equalRunsGiveEqualJournals();

private:
    static constexpr double Latency = 0.25; // s

    static PlantLayout layoutWithLatency()
    {
        PlantLayout layout = PlantLayout::rehearsal();
        layout.controllers.front().latency = Latency;
        return layout;
    }

    void start(const PlantLayout &layout)
    {
        clock = std::make_shared<SteppedClock>();
        service = std::make_unique<SimulatedService>(clock, layout);
        listener = std::make_unique<ListenerLog>();
        service->setListener(listener.get());
    }

    void stepTo(double seconds)
    {
        const auto wanted = std::chrono::nanoseconds(std::llround(seconds * 1e9));
        clock->advance(wanted - std::chrono::nanoseconds(std::llround(clock->now() * 1e9)));
    }

    void ask(const QString &controller, const char *value)
    {
        QString reply;
        QVERIFY2(service->rawRequest(
                     controller, request({command("setItem", "0.0.1", "Control.voltageSet", value)}), reply),
                 qPrintable(reply));
    }

    TarnResult cause(FaultKind kind, double duration = 0, double amount = 0)
    {
        return service->cause({kind, Local, {}, duration, amount});
    }

    TarnResult mend(FaultKind kind) { return service->mend({kind, Local, {}, 0, 0}); }

    QVector<JournalEntry> entries(JournalEntry::Kind kind)
    {
        QVector<JournalEntry> result;
        const QVector<JournalEntry> all = service->journal(0);
        std::copy_if(all.begin(), all.end(), std::back_inserter(result),
                     [kind](const JournalEntry &entry) { return entry.kind == kind; });
        return result;
    }

    // The requests that these entries belong to.
    QVector<int> requestsOf(JournalEntry::Kind kind)
    {
        QVector<int> result;
        const QVector<JournalEntry> found = entries(kind);
        for (const JournalEntry &entry : found)
            result << int(entry.request);
        return result;
    }

    QVector<double> timesOf(JournalEntry::Kind kind)
    {
        QVector<double> result;
        const QVector<JournalEntry> found = entries(kind);
        for (const JournalEntry &entry : found)
            result << entry.time;
        return result;
    }

    QString setValue()
    {
        OrbItemReading reading;
        service->readItem(channelItem("Control.voltageSet"), reading);
        return reading.value;
    }

    static bool isAbout(double value, double wanted) { return std::abs(value - wanted) <= 0.01 * wanted; }
};

void TestAnswerTransport::answersAfterTheLatency()
{
    ask(Local, "100");
    stepTo(0.249);
    QVERIFY(entries(JournalEntry::Answer).isEmpty());
    QCOMPARE(setValue(), QStringLiteral("0"));
    stepTo(0.251);
    const QVector<JournalEntry> answers = entries(JournalEntry::Answer);
    QCOMPARE(answers.size(), 1);
    QCOMPARE(answers.at(0).delay, Latency);
    QCOMPARE(answers.at(0).time, Latency);
    QCOMPARE(answers.at(0).text, True);
    QCOMPARE(setValue(), QStringLiteral("100"));
    QTRY_COMPARE(listener->messages(), QStringList{True});
    QVERIFY(listener->messageThread() != std::this_thread::get_id());
}

void TestAnswerTransport::isCarriedOutAtItsOwnTime()
{
    QString reply;
    QVERIFY(service->rawRequest(Local,
                                request({command("setItem", "0.0.1", "Control.voltageSet", "6000"),
                                         command("setItem", "0.0.1", "Control.on", "1")}),
                                reply));
    // One step over the request and half of the ramp of 600 V/s.
    stepTo(Latency + 5);
    OrbItemReading reading;
    QCOMPARE(service->readItem(channelItem("Status.voltageMeasure"), reading), TarnResult::Success);
    QVERIFY2(isAbout(reading.value.toDouble(), 3000), qPrintable(reading.value));
    const QVector<JournalEntry> writes = entries(JournalEntry::Write);
    QCOMPARE(writes.size(), 2);
    QCOMPARE(writes.at(0).time, Latency);
    QCOMPARE(writes.at(1).request, quint64(1));
}

void TestAnswerTransport::controllersDoNotWaitForEachOther()
{
    PlantLayout layout = layoutWithLatency();
    layout.controllers.back().latency = 0.001;
    start(layout);
    ask(Local, "1");
    ask(Bench, "2");
    stepTo(0.1);
    QCOMPARE(requestsOf(JournalEntry::Answer), QVector<int>{2});
    QTRY_COMPARE(listener->senders(), QStringList{Bench});
}

void TestAnswerTransport::slowAnswers()
{
    QCOMPARE(cause(FaultKind::SlowAnswers, 10, 2), TarnResult::Success);
    ask(Local, "1");
    stepTo(9.9);
    QCOMPARE(entries(JournalEntry::Answer).size(), 1);
    QVERIFY(isAbout(entries(JournalEntry::Answer).at(0).delay, 2.25));
    stepTo(10.1);
    QCOMPARE(timesOf(JournalEntry::FaultEnds), QVector<double>{10});
    ask(Local, "2");
    stepTo(20);
    QCOMPARE(entries(JournalEntry::Answer).size(), 2);
    QVERIFY(isAbout(entries(JournalEntry::Answer).at(1).delay, Latency));
}

void TestAnswerTransport::droppedAnswer()
{
    QCOMPARE(cause(FaultKind::DropAnswers), TarnResult::Success);
    ask(Local, "42");
    stepTo(1);
    QCOMPARE(setValue(), QStringLiteral("42")); // carried out all the same
    QCOMPARE(requestsOf(JournalEntry::AnswerLost), QVector<int>{1});
    QCOMPARE(timesOf(JournalEntry::AnswerLost), QVector<double>{Latency});
    QCOMPARE(timesOf(JournalEntry::FaultEnds), QVector<double>{Latency});
    ask(Local, "43");
    stepTo(2);
    QCOMPARE(requestsOf(JournalEntry::Answer), QVector<int>{2});
    QTRY_COMPARE(listener->messages(), QStringList{True});
}

void TestAnswerTransport::duplicatedAnswer()
{
    QCOMPARE(cause(FaultKind::DuplicateAnswers), TarnResult::Success);
    QString reply;
    QVERIFY(service->rawRequest(Local, request({command("getItem", "0.0.1", "Control.on")}), reply));
    stepTo(1);
    QCOMPARE(requestsOf(JournalEntry::Answer), (QVector<int>{1, 1, 1, 1}));
    QTRY_COMPARE(listener->messageCount(), 4);
    const QStringList messages = listener->messages();
    QCOMPARE(messages.at(0), True);
    QCOMPARE(messages.at(2), True);
    QCOMPARE(messages.at(3), messages.at(1));
    QVERIFY(messages.at(1).contains(QLatin1String("Control.on")));
    QCOMPARE(entries(JournalEntry::FaultEnds).size(), 1);
}

void TestAnswerTransport::reorderedAnswers()
{
    QCOMPARE(cause(FaultKind::ReorderAnswers), TarnResult::Success);
    ask(Local, "1");
    stepTo(1);
    QCOMPARE(setValue(), QStringLiteral("1"));
    QVERIFY(entries(JournalEntry::Answer).isEmpty());
    ask(Local, "a lot");
    stepTo(2);
    QCOMPARE(requestsOf(JournalEntry::Answer), (QVector<int>{2, 1}));
    QCOMPARE(entries(JournalEntry::Answer).at(1).delay, 1 + Latency);
    QTRY_COMPARE(listener->messages(), (QStringList{False, True}));
    QCOMPARE(entries(JournalEntry::FaultEnds).size(), 1);
}

void TestAnswerTransport::keptAnswerComesWhenItIsMended()
{
    QCOMPARE(cause(FaultKind::ReorderAnswers), TarnResult::Success);
    ask(Local, "1");
    stepTo(3);
    QCOMPARE(mend(FaultKind::ReorderAnswers), TarnResult::Success);
    QCOMPARE(timesOf(JournalEntry::Answer), QVector<double>{3});
    QTRY_COMPARE(listener->messages(), QStringList{True});
}

void TestAnswerTransport::disconnects()
{
    ask(Local, "1");
    stepTo(0.1);
    QCOMPARE(cause(FaultKind::Disconnect, 5), TarnResult::Success);
    QVERIFY(!service->isControllerAvailable(Local));
    QTRY_COMPARE(listener->structureChanges(), 1);
    QCOMPARE(requestsOf(JournalEntry::AnswerLost), QVector<int>{1});
    QString reply;
    QVERIFY(!service->rawRequest(Local, request({command("getItem", "0.0.1", "Control.on")}), reply));
    stepTo(5.09);
    QVERIFY(!service->isControllerAvailable(Local));
    stepTo(5.11);
    QVERIFY(service->isControllerAvailable(Local));
    QTRY_COMPARE(listener->structureChanges(), 2);
    QCOMPARE(timesOf(JournalEntry::ControllerLeft), QVector<double>{0.1});
    QVERIFY(isAbout(timesOf(JournalEntry::ControllerCame).value(0), 5.1));
    QCOMPARE(timesOf(JournalEntry::FaultBegins), QVector<double>{0.1});
    QVERIFY(isAbout(timesOf(JournalEntry::FaultEnds).value(0), 5.1));
    QCOMPARE(setValue(), QStringLiteral("0"));
    QCOMPARE(listener->messageCount(), 0);
}

void TestAnswerTransport::comesBackBeforeTheAnswerWasDue()
{
    ask(Local, "1");
    QCOMPARE(cause(FaultKind::Disconnect, 0.1), TarnResult::Success);
    stepTo(10);
    QVERIFY(service->isControllerAvailable(Local));
    QCOMPARE(setValue(), QStringLiteral("0"));
    QCOMPARE(requestsOf(JournalEntry::AnswerLost), QVector<int>{1});
    QVERIFY(entries(JournalEntry::Answer).isEmpty());
}

void TestAnswerTransport::closedConnectionLosesItsRequests()
{
    ask(Local, "1");
    QCOMPARE(service->closeConnection(Local), TarnResult::Success);
    QCOMPARE(service->openConnection(Local, QStringLiteral("127.0.0.1:8080"), {}, {}), TarnResult::Success);
    stepTo(1);
    QCOMPARE(requestsOf(JournalEntry::AnswerLost), QVector<int>{1});
    QCOMPARE(setValue(), QStringLiteral("0"));
}

void TestAnswerTransport::shutdownLosesTheOtherRequests()
{
    QString reply;
    QVERIFY(service->rawRequest(Local, request({command("setItem", "..", "Control.shutdown", "1")}), reply));
    ask(Local, "1");
    stepTo(1);
    QCOMPARE(requestsOf(JournalEntry::Answer), QVector<int>{1});
    QCOMPARE(requestsOf(JournalEntry::AnswerLost), QVector<int>{2});
    QTRY_COMPARE(listener->messages(), QStringList{True});
    QCOMPARE(mend(FaultKind::Disconnect), TarnResult::Success);
    QCOMPARE(setValue(), QStringLiteral("0"));
}

void TestAnswerTransport::causedAgainLastsLonger()
{
    QCOMPARE(cause(FaultKind::Disconnect, 5), TarnResult::Success);
    stepTo(3);
    QCOMPARE(cause(FaultKind::Disconnect, 5), TarnResult::Success);
    stepTo(7.9);
    QVERIFY(!service->isControllerAvailable(Local));
    stepTo(8.1);
    QVERIFY(service->isControllerAvailable(Local));
    QCOMPARE(timesOf(JournalEntry::ControllerCame), QVector<double>{8});
}

void TestAnswerTransport::scheduledFaults()
{
    PlantLayout layout = layoutWithLatency();
    layout.faults = {
        {30, {FaultKind::SlowAnswers, LocalText, {}, 1, 1}},
        {12, {FaultKind::Disconnect, Bench, {}, 2, 0}},
        {20, {FaultKind::DropAnswers, Local, {}, 0, 1}},
    };
    start(layout);
    stepTo(100);
    QVERIFY(service->isControllerAvailable(Bench));
    QCOMPARE(timesOf(JournalEntry::FaultBegins), (QVector<double>{12, 20, 30}));
    QCOMPARE(timesOf(JournalEntry::FaultEnds), (QVector<double>{14, 31}));
    QCOMPARE(timesOf(JournalEntry::ControllerLeft), QVector<double>{12});
    QCOMPARE(timesOf(JournalEntry::ControllerCame), QVector<double>{14});
    QCOMPARE(entries(JournalEntry::FaultBegins).at(0).text, QStringLiteral("disconnect"));
    QCOMPARE(entries(JournalEntry::FaultBegins).at(0).controller, Bench);
    QCOMPARE(entries(JournalEntry::FaultBegins).at(2).controller, Local);
    ask(Local, "1");
    stepTo(101);
    QCOMPARE(requestsOf(JournalEntry::AnswerLost), QVector<int>{1});
}

void TestAnswerTransport::refusedFaults_data()
{
    QTest::addColumn<FaultKind>("kind");
    QTest::addColumn<QString>("controller");
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("amount");
    QTest::addColumn<TarnResult>("result");
    QTest::newRow("unknown controller")
        << FaultKind::Disconnect << QStringLiteral("nobody") << 0.0 << 0.0 << TarnResult::NoData;
    QTest::newRow("slow by nothing") << FaultKind::SlowAnswers << Local << 0.0 << 0.0 << TarnResult::Failed;
    QTest::newRow("slow backwards") << FaultKind::SlowAnswers << Local << 0.0 << -1.0 << TarnResult::Failed;
    QTest::newRow("drop endlessly") << FaultKind::DropAnswers << Local << 0.0
                                    << std::numeric_limits<double>::infinity() << TarnResult::Failed;
    QTest::newRow("drop too many") << FaultKind::DropAnswers << Local << 0.0 << 1e10 << TarnResult::Failed;
    QTest::newRow("over before it began")
        << FaultKind::Disconnect << Local << -1.0 << 0.0 << TarnResult::Failed;
    QTest::newRow("no duration") << FaultKind::Disconnect << Local << std::numeric_limits<double>::quiet_NaN()
                                 << 0.0 << TarnResult::Failed;
}

void TestAnswerTransport::refusedFaults()
{
    QFETCH(FaultKind, kind);
    QFETCH(QString, controller);
    QFETCH(double, duration);
    QFETCH(double, amount);
    QTEST(service->cause({kind, controller, {}, duration, amount}), "result");
    QVERIFY(service->isControllerAvailable(Local));
    QCOMPARE(service->nextJournalNumber(), quint64(0));
}

void TestAnswerTransport::mendsWhatWasCaused_data()
{
    QTest::addColumn<FaultKind>("kind");
    for (const FaultKind kind : {FaultKind::Disconnect, FaultKind::SlowAnswers, FaultKind::DropAnswers,
                                 FaultKind::DuplicateAnswers, FaultKind::ReorderAnswers})
        QTest::newRow(qPrintable(faultName(kind))) << kind;
}

void TestAnswerTransport::mendsWhatWasCaused()
{
    QFETCH(FaultKind, kind);
    QCOMPARE(mend(kind), TarnResult::NoData);
    QCOMPARE(cause(kind, 60, 1), TarnResult::Success);
    stepTo(1);
    QCOMPARE(mend(kind), TarnResult::Success);
    QCOMPARE(mend(kind), TarnResult::NoData);
    QVERIFY(service->isControllerAvailable(Local));
    stepTo(100);
    QCOMPARE(timesOf(JournalEntry::FaultEnds), QVector<double>{1}); // and not once more after its duration
    ask(Local, "1");
    stepTo(101);
    QCOMPARE(requestsOf(JournalEntry::Answer), QVector<int>{1});
    QVERIFY(isAbout(entries(JournalEntry::Answer).at(0).delay, Latency));
}

void TestAnswerTransport::messagesToScripts()
{
    const auto message = [](double at, double every, const QString &controller, const char *item) {
        ScheduledMessage result;
        result.at = at;
        result.every = every;
        result.controller = controller;
        result.request.commandType = OrbRequestItem::GetItem;
        result.request.itemName = QString::fromLatin1(item);
        return result;
    };
    PlantLayout layout = layoutWithLatency();
    layout.messages = {message(5, 0, Local, "five"), message(2, 0, Local, "two"),
                       message(4, 3, Local, "again"), message(4.5, 0, Bench, "bench")};
    start(layout);
    const auto taken = [this] {
        QVector<OrbRequestItem> requests;
        service->takePassThroughMessages(Local, requests);
        QStringList items;
        for (const OrbRequestItem &request : std::as_const(requests))
            items << request.itemName;
        return items;
    };
    stepTo(3); // "two" finds no script
    QCOMPARE(service->activatePassThrough(Local, QStringLiteral("echo")), TarnResult::Success);
    stepTo(3.99);
    QCOMPARE(taken(), QStringList());
    stepTo(4.01);
    QCOMPARE(taken(), QStringList{QStringLiteral("again")});
    stepTo(10.5);
    QCOMPARE(taken(),
             (QStringList{QStringLiteral("five"), QStringLiteral("again"), QStringLiteral("again")}));
    QCOMPARE(entries(JournalEntry::PassThroughIn).size(), 4);
}

void TestAnswerTransport::comesBackWithoutAnybodyLooking()
{
    PlantLayout layout = PlantLayout::rehearsal();
    layout.faults = {{0.02, {FaultKind::Disconnect, Local, {}, 0.03, 0}}};
    service = std::make_unique<SimulatedService>(std::make_shared<RealClock>(), layout);
    service->setListener(listener.get());
    QTRY_COMPARE(listener->structureChanges(), 2);
    QVERIFY(service->isControllerAvailable(Local));
    const double away =
        timesOf(JournalEntry::ControllerCame).value(0) - timesOf(JournalEntry::ControllerLeft).value(0);
    QVERIFY(isAbout(away, 0.03));
}

void TestAnswerTransport::equalRunsGiveEqualJournals()
{
    const auto run = [this](quint32 seed, double largestStep) {
        PlantLayout layout = layoutWithLatency();
        layout.seed = seed;
        layout.controllers.front().jitter = 0.1;
        layout.faults = {{1.5, {FaultKind::DuplicateAnswers, Local, {}, 0, 3}},
                         {3.1, {FaultKind::ReorderAnswers, Local, {}, 0, 0}},
                         {4.05, {FaultKind::Disconnect, Local, {}, 0.7, 0}},
                         {12, {FaultKind::SlowAnswers, Local, {}, 1, 1}}};
        start(layout);
        QString reply;
        // A ramp, which comes to its end by itself in between.
        service->writeItem(channelItem("Control.voltageRampspeedUp"), QStringLiteral("100"));
        service->writeItem(channelItem("Control.on"), QStringLiteral("1"));
        for (int i = 0; i < 60; ++i) {
            const double next = (i + 1) * 0.1;
            const QByteArray value = QByteArray::number(i);
            service->rawRequest(Local,
                                request({command("setItem", "0.0.1", "Control.voltageSet", value.constData()),
                                         command("getItem", "0.0.1", "Control.voltageSet")}),
                                reply);
            while (clock->now() + largestStep < next) {
                stepTo(clock->now() + largestStep);
                service->nextJournalNumber();
            }
            stepTo(next);
        }
        // Down again, with nobody asking anything until long after.
        service->writeItem(channelItem("Control.on"), QStringLiteral("0"));
        stepTo(20);
        QStringList lines;
        const QVector<JournalEntry> all = service->journal(0);
        const auto isEarlier = [](const JournalEntry &a, const JournalEntry &b) { return a.time < b.time; };
        if (!std::is_sorted(all.begin(), all.end(), isEarlier))
            return QStringLiteral("out of order");
        for (const JournalEntry &entry : all)
            lines << journalLine(entry);
        return lines.join(QLatin1Char('\n'));
    };
    const QString first = run(5, 1);
    QVERIFY(first.contains(QLatin1String("answer lost")));
    QVERIFY(first.contains(QLatin1String("Event.endOfRamp")));
    QVERIFY(first.contains(QLatin1String("controller came")));
    QCOMPARE(run(5, 1), first);
    QCOMPARE(run(5, 0.013), first); // however often somebody looks
    QVERIFY(run(6, 1) != first);
}

QTEST_GUILESS_MAIN(TestAnswerTransport)
#include "tst_answer_transport.moc"
