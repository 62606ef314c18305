#include "workbench/rehearsal/request_ledger.h"

#include "workbench/simulator/answer_transport.h"

#include <QTest>

#include <cmath>
#include <memory>

using rehearsal::Finding;
using rehearsal::Recording;
using rehearsal::RequestLedger;
using simulator::JournalEntry;

namespace
{

const char *const Get = R"({"i":"","t":"request","c":[{"c":"getItem","p":{"p":{},"i":"Status.heartBeat"}}]})";
const char *const Set =
    R"({"i":"","t":"request","c":[{"c":"setItem","p":{"p":{"l":"0","a":"2","c":"1"},"i":"Control.on","v":"1"}}]})";
const char *const Done = R"([{"trigger":"true"}])";
const char *const Data = R"([{"value":1,"unit":""}])";

JournalEntry entry(JournalEntry::Kind kind, double time, quint64 request, const char *text)
{
    JournalEntry made;
    made.kind = kind;
    made.time = time;
    made.request = request;
    made.controller = QStringLiteral("local");
    made.text = QString::fromLatin1(text);
    return made;
}

JournalEntry write(TarnResult result, quint64 request)
{
    JournalEntry made = entry(JournalEntry::Write, 1, request, "1");
    made.object.level = OrbItemId::Channel;
    made.object.line = 0;
    made.object.address = 2;
    made.object.channel = 1;
    made.item = QStringLiteral("Control.on");
    made.result = result;
    return made;
}

} // namespace

class TestRequestLedger : public QObject
{
    Q_OBJECT

private:
    Recording recording;
    QVector<Finding> failures;
    std::unique_ptr<RequestLedger> ledger;

    void ask(double time, quint64 number, const char *text)
    {
        ledger->addRequest(entry(JournalEntry::Request, time, number, text));
    }
    void answer(double time, quint64 number, const char *text)
    {
        JournalEntry made = entry(JournalEntry::Answer, time, number, text);
        made.delay = 0.25;
        ledger->addAnswer(made);
    }

private Q_SLOTS:
    void init()
    {
        recording = {};
        failures.clear();
        ledger = std::make_unique<RequestLedger>(
            recording, [this](const Finding &finding) { failures.append(finding); });
        ledger->beginFile(QStringLiteral("a.txt"),
                          {{1, QStringLiteral("# a")},
                           {2, QString::fromLatin1(Set)},
                           {4, QString::fromLatin1(Get)},
                           {5, QString::fromLatin1(Get)}});
    }

    void tiesAnswersToRequests()
    {
        ask(1, 11, Set);
        QVERIFY(ledger->hasOpenRequests());
        answer(1.25, 11, Done);
        QVERIFY(!ledger->hasOpenRequests());
        ask(2, 12, Get);
        answer(2.25, 12, Done);
        QVERIFY2(ledger->hasOpenRequests(), "the data are still to come");
        answer(2.25, 12, Data);
        QVERIFY(!ledger->hasOpenRequests());
        ledger->judge(100);
        QCOMPARE(failures.size(), 0);
        QCOMPARE(recording.requests.size(), std::size_t{2});
        const rehearsal::RequestRecord &get = recording.requests.at(1);
        QCOMPARE(get.text, QString::fromLatin1(Get));
        QCOMPARE(get.answers, (QStringList{QString::fromLatin1(Done), QString::fromLatin1(Data)}));
        QCOMPARE(get.latency, 0.25);
        QCOMPARE(get.outcome, QStringLiteral("done"));
        QCOMPARE(get.file, QStringLiteral("a.txt"));
    }

    void knowsTheLines()
    {
        ask(1, 1, Set);
        ask(2, 2, Get);
        ask(3, 3, Get);
        ask(4, 4, Get); // by somebody else
        QCOMPARE(recording.requests.at(0).line, 2);
        QCOMPARE(recording.requests.at(1).line, 4);
        QCOMPARE(recording.requests.at(2).line, 5);
        QCOMPARE(recording.requests.at(3).line, 0);
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("trigger");
        QTest::addColumn<QString>("outcome");
        QTest::newRow("false") << QStringLiteral(R"([{"trigger":"false"}])") << QStringLiteral("refused");
        QTest::newRow("denied") << QStringLiteral(R"([{"trigger":"denied"}])") << QStringLiteral("denied");
        QTest::newRow("noData") << QStringLiteral(R"([{"trigger":"noData"}])")
                                << QStringLiteral("no such item");
    }

    void refusals()
    {
        QFETCH(QString, trigger);
        QFETCH(QString, outcome);
        ask(1, 5, Get);
        answer(1.1, 5, qPrintable(trigger));
        QVERIFY(!ledger->hasOpenRequests());
        QCOMPARE(recording.requests.at(0).outcome, outcome);
        QCOMPARE(failures.size(), 1);
        const Finding &failure = failures.constFirst();
        QCOMPARE(failure.kind, Finding::Request);
        QCOMPARE(failure.file, QStringLiteral("a.txt"));
        QCOMPARE(failure.line, 4);
        QCOMPARE(failure.time, 1.0);
        QVERIFY2(failure.text.contains(outcome) && failure.text.contains(QStringLiteral("Status.heartBeat")),
                 qPrintable(failure.text));
    }

    // The terminal shows the refusal, and whoever reads the terminal counts it.
    void listsWhatWasRefusedAtOnceAndCountsItNot()
    {
        const QString reason = QStringLiteral("malformed JSON at line 1, column 1: illegal value");
        ask(1, 4, "# a");
        ledger->addRefusal(entry(JournalEntry::RequestRefused, 1, 4, qPrintable(reason)));
        QVERIFY(!ledger->hasOpenRequests());
        ask(1.5, 5, Set);
        answer(1.6, 5, Done);
        ledger->judge(100);
        QCOMPARE(failures.size(), 0);
        QCOMPARE(recording.requests.size(), std::size_t{2});
        const rehearsal::RequestRecord &record = recording.requests.at(0);
        QCOMPARE(record.text, QStringLiteral("# a"));
        QCOMPARE(record.line, 1);
        QCOMPARE(record.outcome, QStringLiteral("refused"));
        QCOMPARE(record.answers, QStringList{reason});
        QVERIFY(!record.isTaken);
        QVERIFY(recording.requests.at(1).isTaken);
        QVERIFY(std::isnan(record.latency));
        QCOMPARE(recording.requests.at(1).line, 2);
    }

    // Which is entered without its end.
    void knowsTheLineOfWhatIsTooLong()
    {
        const int most = simulator::AnswerTransport::LongestRefusedText;
        const QString tooLong(most + 1, QLatin1Char('x'));
        ledger->beginFile(QStringLiteral("a.txt"), {{1, QString(most - 1, QLatin1Char('x'))}, {2, tooLong}});
        ask(1, 1, qPrintable(tooLong.left(most)));
        QCOMPARE(recording.requests.at(0).line, 2);
    }

    // Of several commands in a request the one that was refused.
    void namesWhatWasRefused()
    {
        ask(1, 5, Set);
        QCOMPARE(ledger->addWrite(write(TarnResult::Denied, 5)), 0);
        answer(1.1, 5, R"([{"trigger":"denied"}])");
        QCOMPARE(failures.size(), 1);
        QVERIFY2(failures.constFirst().text.contains(QStringLiteral("\"0.2.1 Control.on 1\"")),
                 qPrintable(failures.constFirst().text));
        QCOMPARE(recording.requests.size(), std::size_t{1});
    }

    void timeOuts_data()
    {
        QTest::addColumn<bool>("comesTrigger");
        QTest::addColumn<double>("dataAt"); // 0: never
        QTest::addColumn<bool>("fails");
        QTest::newRow("nothing came") << false << 0.0 << true;
        QTest::newRow("only the trigger came") << true << 0.0 << true;
        QTest::newRow("the data came late") << true << 3.1 << true;
        QTest::newRow("the data came in time") << true << 2.9 << false;
    }

    void timeOuts()
    {
        QFETCH(bool, comesTrigger);
        QFETCH(double, dataAt);
        QFETCH(bool, fails);
        ask(1, 5, Get);
        if (comesTrigger)
            answer(1.1, 5, Done);
        ledger->judge(1 + RequestLedger::AnswerTime);
        QCOMPARE(failures.size(), 0);
        if (dataAt > 0)
            answer(dataAt, 5, Data);
        ledger->judge(1 + RequestLedger::AnswerTime + 0.2);
        QCOMPARE(failures.size(), fails ? 1 : 0);
        QVERIFY(!ledger->hasOpenRequests());
        QCOMPARE(recording.requests.at(0).outcome,
                 fails ? QStringLiteral("not answered") : QStringLiteral("done"));
        if (fails) {
            QCOMPARE(failures.constFirst().kind, Finding::TimeOut);
            QCOMPARE(failures.constFirst().line, 4);
        }
    }

    void listsALostAnswer()
    {
        ask(1, 5, Set);
        ledger->addLostAnswer(entry(JournalEntry::AnswerLost, 1, 5, Done));
        QCOMPARE(recording.requests.at(0).answers.size(), 1);
        QVERIFY(recording.requests.at(0).answers.constFirst().contains(QStringLiteral("lost")));
        QVERIFY(ledger->hasOpenRequests());
    }

    void aSecondAnswerChangesNothing()
    {
        ask(1, 5, Set);
        answer(1.1, 5, Done);
        answer(1.2, 5, R"([{"trigger":"false"}])");
        QCOMPARE(failures.size(), 0);
        QCOMPARE(recording.requests.at(0).outcome, QStringLiteral("done"));
        QCOMPARE(recording.requests.at(0).answers.size(), 2);
    }

    void aScriptsWrites_data()
    {
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("outcome");
        QTest::newRow("done") << int(TarnResult::Success) << QStringLiteral("done");
        QTest::newRow("refused") << int(TarnResult::Failed) << QStringLiteral("refused");
        QTest::newRow("denied") << int(TarnResult::Denied) << QStringLiteral("denied");
        QTest::newRow("no data") << int(TarnResult::NoData) << QStringLiteral("no such item");
        QTest::newRow("not connected") << int(TarnResult::NotConnected) << QStringLiteral("not connected");
    }

    void aScriptsWrites()
    {
        QFETCH(int, result);
        QFETCH(QString, outcome);
        ledger->beginFile(QStringLiteral("a.py"), {});
        QCOMPARE(ledger->addWrite(write(static_cast<TarnResult>(result), 0)), 0);
        const rehearsal::RequestRecord &record = recording.requests.at(0);
        QVERIFY(record.isWrite);
        QCOMPARE(record.text, QStringLiteral("0.2.1 Control.on 1"));
        QCOMPARE(record.outcome, outcome);
        QCOMPARE(record.file, QStringLiteral("a.py"));
        QCOMPARE(failures.size(), outcome == QLatin1String("done") ? 0 : 1);
    }

    void theListIsBounded()
    {
        for (int i = 0; i < RequestLedger::MostRequests + 3; ++i)
            QVERIFY((ledger->addWrite(write(TarnResult::Success, 0)) < 0)
                    == (i >= RequestLedger::MostRequests));
        QCOMPARE(recording.requests.size(), static_cast<std::size_t>(RequestLedger::MostRequests));
        QCOMPARE(recording.requestsLeftOut, 3);
        ask(1, 5, Get);
        ledger->judge(10);
        QCOMPARE(failures.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestRequestLedger)
#include "tst_request_ledger.moc"
