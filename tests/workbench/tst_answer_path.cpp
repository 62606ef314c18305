#include "workbench/simulator/answer_path.h"

#include <QtTest>

#include <cmath>
#include <set>

Q_DECLARE_METATYPE(simulator::FaultKind)

using namespace simulator;
using std::chrono::milliseconds;

/// How long requests to a controller are under way, and what goes out instead of an answer.
class TestAnswerPath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layoutsLatencyIsPlantTime();
    void servicesLatencyIsRealTime();
    void servicesLatencyCountsInWhatIsSlow();
    void jitterIsSpread();
    void jitterFollowsTheSeed();
    void slowAnswers();
    void keepsTheOrder();
    void dropsAnswers();
    void duplicatesAnswers();
    void reordersAnswers();
    void keptAnswerIsReleased();
    void lostOnesAreNotCountedTwice();
    void endsAtOnce_data();
    void endsAtOnce();
    void dropsAConnection();
};

namespace
{

using RealTime = AnswerPath::RealTime;

const RealTime::time_point Soon = RealTime::now();
const RealTime::time_point Later = RealTime::time_point::max();

ControllerLayout layout(double latency, double jitter = 0)
{
    ControllerLayout result;
    result.latency = latency;
    result.jitter = jitter;
    return result;
}

PendingRequest request(quint64 number, double askedAt = 0, const QString &connection = {})
{
    PendingRequest result;
    result.number = number;
    result.askedAt = askedAt;
    result.connection = connection;
    return result;
}

ReadyAnswer answer(quint64 number)
{
    ReadyAnswer result;
    result.request = number;
    return result;
}

// The numbers of the requests whose answers go out when these answers come along.
QVector<int> sent(AnswerPath &path, const QVector<int> &numbers)
{
    QVector<int> result;
    for (const int number : numbers) {
        const std::vector<ReadyAnswer> out = path.send(answer(quint64(number)));
        for (const ReadyAnswer &one : out)
            result << int(one.request);
    }
    return result;
}

std::vector<double> jitterOf(quint32 seed)
{
    AnswerPath path(layout(1, 0.5), seed);
    std::vector<double> result;
    for (quint64 i = 0; i < 1000; ++i) {
        path.ask(request(i), milliseconds(0));
        result.push_back(path.takeNext().due);
    }
    return result;
}

} // namespace

void TestAnswerPath::layoutsLatencyIsPlantTime()
{
    AnswerPath path(layout(0.25), 1);
    QVERIFY(std::isinf(path.nextDue(0, Later)));
    QCOMPARE(path.nextLook(0, Soon), RealTime::time_point::max());
    path.ask(request(1, 10), std::chrono::hours(1));
    QCOMPARE(path.nextDue(10, Soon), 10.25);
    QVERIFY(path.nextLook(10, Soon) - Soon >= milliseconds(250));
    QVERIFY(path.nextLook(10, Soon) - Soon < milliseconds(251));
    QCOMPARE(path.takeNext().number, quint64(1));
    QVERIFY(std::isinf(path.nextDue(20, Later)));
}

void TestAnswerPath::servicesLatencyIsRealTime()
{
    AnswerPath path(layout(-1), 1);
    path.ask(request(1, 10), std::chrono::hours(1));
    QVERIFY(std::isinf(path.nextDue(1000, RealTime::now())));
    QCOMPARE(path.nextDue(1000, RealTime::now() + std::chrono::hours(2)), 1000.0);
    QVERIFY(path.nextLook(1000, RealTime::now()) > RealTime::now() + std::chrono::minutes(59));
}

void TestAnswerPath::servicesLatencyCountsInWhatIsSlow()
{
    AnswerPath path(layout(-1), 1);
    path.begin(FaultKind::SlowAnswers, 2);
    path.ask(request(1, 10), milliseconds(500));
    QCOMPARE(path.nextDue(10, Soon), 12.5);
}

void TestAnswerPath::jitterIsSpread()
{
    const std::vector<double> dues = jitterOf(1);
    int inTheUpperHalf = 0;
    for (const double due : dues) {
        QVERIFY(due >= 1 && due < 1.5);
        inTheUpperHalf += due >= 1.25 ? 1 : 0;
    }
    QVERIFY2(inTheUpperHalf > 430 && inTheUpperHalf < 570, qPrintable(QString::number(inTheUpperHalf)));
    QCOMPARE(std::set<double>(dues.begin(), dues.end()).size(), dues.size());
}

void TestAnswerPath::jitterFollowsTheSeed()
{
    QVERIFY(jitterOf(7) == jitterOf(7));
    QVERIFY(jitterOf(7) != jitterOf(8));
}

void TestAnswerPath::slowAnswers()
{
    AnswerPath path(layout(0.25), 1);
    path.begin(FaultKind::SlowAnswers, 1.5);
    QVERIFY(path.isActive(FaultKind::SlowAnswers));
    path.ask(request(1), milliseconds(0));
    QCOMPARE(path.takeNext().due, 1.75);
    path.end(FaultKind::SlowAnswers);
    QVERIFY(!path.isActive(FaultKind::SlowAnswers));
    path.ask(request(2), milliseconds(0));
    QCOMPARE(path.takeNext().due, 0.25);
}

void TestAnswerPath::keepsTheOrder()
{
    AnswerPath path(layout(0.25), 1);
    path.begin(FaultKind::SlowAnswers, 1.5);
    path.ask(request(1, 0), milliseconds(0));
    path.end(FaultKind::SlowAnswers);
    path.ask(request(2, 1), milliseconds(0));
    QCOMPARE(path.takeNext().number, quint64(1));
    QCOMPARE(path.nextDue(0, Soon), 1.75);
    QCOMPARE(path.takeNext().number, quint64(2));
}

void TestAnswerPath::dropsAnswers()
{
    AnswerPath path(layout(0), 1);
    path.begin(FaultKind::DropAnswers, 0); // as good as one
    path.begin(FaultKind::DropAnswers, 2); // and two more
    QCOMPARE(sent(path, {1, 2, 3, 4, 5}), (QVector<int>{4, 5}));
    QVERIFY(!path.isActive(FaultKind::DropAnswers));
}

void TestAnswerPath::duplicatesAnswers()
{
    AnswerPath path(layout(0), 1);
    path.begin(FaultKind::DuplicateAnswers, 2);
    QCOMPARE(sent(path, {1, 2, 3}), (QVector<int>{1, 1, 2, 2, 3}));
    QVERIFY(!path.isActive(FaultKind::DuplicateAnswers));
}

void TestAnswerPath::reordersAnswers()
{
    AnswerPath path(layout(0), 1);
    path.begin(FaultKind::ReorderAnswers, 0);
    QCOMPARE(sent(path, {1}), QVector<int>());
    QVERIFY(path.isActive(FaultKind::ReorderAnswers));
    QCOMPARE(sent(path, {2}), (QVector<int>{2, 1}));
    QVERIFY(!path.isActive(FaultKind::ReorderAnswers));
    QCOMPARE(sent(path, {3, 4}), (QVector<int>{3, 4}));
}

void TestAnswerPath::keptAnswerIsReleased()
{
    AnswerPath path(layout(0), 1);
    path.begin(FaultKind::ReorderAnswers, 0);
    sent(path, {1});
    const std::vector<ReadyAnswer> kept = path.takeKept();
    QCOMPARE(kept.size(), std::size_t(1));
    QCOMPARE(kept.front().request, quint64(1));
    QVERIFY(path.takeKept().empty());
}

void TestAnswerPath::lostOnesAreNotCountedTwice()
{
    AnswerPath path(layout(0), 1);
    path.begin(FaultKind::DropAnswers, 1);
    path.begin(FaultKind::DuplicateAnswers, 1);
    path.begin(FaultKind::ReorderAnswers, 0);
    QCOMPARE(sent(path, {1, 2, 3, 4}), (QVector<int>{3, 3, 2, 4}));
}

void TestAnswerPath::endsAtOnce_data()
{
    QTest::addColumn<FaultKind>("kind");
    QTest::newRow("slow") << FaultKind::SlowAnswers;
    QTest::newRow("drop") << FaultKind::DropAnswers;
    QTest::newRow("duplicate") << FaultKind::DuplicateAnswers;
    QTest::newRow("reorder") << FaultKind::ReorderAnswers;
}

void TestAnswerPath::endsAtOnce()
{
    QFETCH(FaultKind, kind);
    AnswerPath path(layout(0), 1);
    path.begin(kind, 10);
    QVERIFY(path.isActive(kind));
    path.end(kind);
    QVERIFY(!path.isActive(kind));
    QCOMPARE(sent(path, {1, 2}), (QVector<int>{1, 2}));
    path.ask(request(3), milliseconds(0));
    QCOMPARE(path.takeNext().due, 0.0);
}

void TestAnswerPath::dropsAConnection()
{
    AnswerPath path(layout(1), 1);
    const QString one = QStringLiteral("one");
    const QString other = QStringLiteral("other");
    path.ask(request(1, 0, one), milliseconds(0));
    path.ask(request(2, 0, other), milliseconds(0));
    path.begin(FaultKind::ReorderAnswers, 0);
    ReadyAnswer kept = answer(9);
    kept.connection = one;
    path.send(kept);

    const std::vector<PendingRequest> dropped = path.drop(one);
    QCOMPARE(dropped.size(), std::size_t(2));
    QCOMPARE(dropped.at(0).number, quint64(9));
    QCOMPARE(dropped.at(1).number, quint64(1));
    QCOMPARE(path.drop().size(), std::size_t(1));
    QVERIFY(path.drop().empty());
    QVERIFY(path.takeKept().empty());
}

QTEST_APPLESS_MAIN(TestAnswerPath)
#include "tst_answer_path.moc"
