#include "hostclient/dl_data_access.h"

#include "tests/hostkit/data_access_fixture.h"
#include "tests/hostkit/recording_subscriber.h"

#include <QEventLoop>
#include <QTimer>
#include <QtTest>

#include <memory>

/// What subscribers may do while they are told something, and what they no longer hear once they have left.
class TestDlDataAccessSubscribers : public QObject, private DataAccessFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void unsubscribedGetNothingThatIsQueued();
    void resubscribedGetNothingOfBefore();
    void subscriberMayLeaveInACall_data();
    void subscriberMayLeaveInACall();
    void subscriberMayRemoveAnother();
    void subscriberMayAddAnother();
    void subscriberMayLeaveWhenAsked();
    void subscriberMayRemoveAnotherWhenAsked();
    void subscriberMayRunAnEventLoop();
    void subscriberMaySendTheNextRequest();
    void answersDoNotStarveOtherEvents();
    void subscriberMayEndTheLayer();
    void ignoresNull();
};

void TestDlDataAccessSubscribers::unsubscribedGetNothingThatIsQueued()
{
    RecordingSubscriber gone;
    RecordingSubscriber stays;
    dataAccess->subscribeRawMessage(&gone);
    dataAccess->subscribeStructureChanged(&gone);
    dataAccess->subscribeRawMessage(&stays);
    send(A);
    dataAccess->unsubscribe(&gone);
    send(B);
    QTRY_COMPARE(stays.told, (QStringList{A, B}));
    QVERIFY(gone.told.isEmpty());
    QVERIFY(gone.queries.isEmpty());
    dataAccess->unsubscribe(&stays);
}

void TestDlDataAccessSubscribers::resubscribedGetNothingOfBefore()
{
    RecordingSubscriber subscriber;
    dataAccess->subscribeRawMessage(&subscriber);
    send(A);
    dataAccess->unsubscribe(&subscriber);
    dataAccess->subscribeRawMessage(&subscriber);
    send(B);
    QTRY_COMPARE(subscriber.told, QStringList(B));
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccessSubscribers::subscriberMayLeaveInACall_data()
{
    QTest::addColumn<bool>("wants");
    QTest::newRow("willing") << true;
    QTest::newRow("asked in vain") << false;
}

void TestDlDataAccessSubscribers::subscriberMayLeaveInACall()
{
    QFETCH(bool, wants);
    auto leaving = std::make_unique<RecordingSubscriber>();
    RecordingSubscriber stays;
    leaving->wants = wants;
    stays.wants = wants;
    int told = 0;
    leaving->onTold = [&](const QString &) {
        ++told;
        dataAccess->unsubscribe(leaving.get());
        // With a life that ends soon after, as a closing tool's does.
        QTimer::singleShot(0, this, [&leaving] { leaving.reset(); });
    };
    dataAccess->subscribeRawMessage(leaving.get());
    dataAccess->subscribeRawMessage(&stays);
    send(A);
    send(B);
    QTRY_COMPARE(stays.told, (QStringList{A, B}));
    QTRY_VERIFY(leaving == nullptr);
    QCOMPARE(told, 1);
    dataAccess->unsubscribe(&stays);
}

void TestDlDataAccessSubscribers::subscriberMayRemoveAnother()
{
    RecordingSubscriber first;
    auto second = std::make_unique<RecordingSubscriber>();
    RecordingSubscriber third;
    first.onTold = [&](const QString &) {
        if (second)
            dataAccess->unsubscribe(second.get());
        // Nothing is called on it any more: it may go at once.
        second.reset();
    };
    dataAccess->subscribeRawMessage(&first);
    dataAccess->subscribeRawMessage(second.get());
    dataAccess->subscribeRawMessage(&third);
    send(A);
    send(B);
    QTRY_COMPARE(third.told, (QStringList{A, B}));
    QCOMPARE(first.told, (QStringList{A, B}));
    QVERIFY(second == nullptr);
    dataAccess->unsubscribe(&first);
    dataAccess->unsubscribe(&third);
}

void TestDlDataAccessSubscribers::subscriberMayAddAnother()
{
    RecordingSubscriber first;
    RecordingSubscriber added;
    first.onTold = [&](const QString &) { dataAccess->subscribeRawMessage(&added); };
    dataAccess->subscribeRawMessage(&first);
    send(A);
    QTRY_COMPARE(first.told, QStringList(A));
    send(B);
    QTRY_COMPARE(added.told, QStringList(B));
    dataAccess->unsubscribe(&first);
    dataAccess->unsubscribe(&added);
}

void TestDlDataAccessSubscribers::subscriberMayLeaveWhenAsked()
{
    RecordingSubscriber subscriber;
    subscriber.onQuery = [&] { dataAccess->unsubscribe(&subscriber); };
    RecordingSubscriber stays;
    dataAccess->subscribeRawMessage(&subscriber);
    dataAccess->subscribeRawMessage(&stays);
    send(A);
    QTRY_COMPARE(stays.told, QStringList(A));
    QCOMPARE(subscriber.queries.size(), 1);
    QVERIFY(subscriber.told.isEmpty());
    dataAccess->unsubscribe(&stays);
}

void TestDlDataAccessSubscribers::subscriberMayRemoveAnotherWhenAsked()
{
    RecordingSubscriber first;
    auto second = std::make_unique<RecordingSubscriber>();
    bool asked = false;
    second->onQuery = [&] { asked = true; };
    first.onQuery = [&] {
        if (second)
            dataAccess->unsubscribe(second.get());
    };
    dataAccess->subscribeRawMessage(&first);
    dataAccess->subscribeRawMessage(second.get());
    send(A);
    QTRY_COMPARE(first.told, QStringList(A));
    QVERIFY(!asked);
    QVERIFY(second->told.isEmpty());
    dataAccess->unsubscribe(&first);
}

void TestDlDataAccessSubscribers::subscriberMayRunAnEventLoop()
{
    RecordingSubscriber subscriber;
    QEventLoop loop;
    subscriber.onTold = [&](const QString &text) {
        // As a dialog would: what is queued already must arrive while it is open.
        if (text == A)
            loop.exec();
        if (text == C)
            loop.quit();
    };
    dataAccess->subscribeRawMessage(&subscriber);
    send(A);
    send(B);
    send(C);
    QTRY_COMPARE(subscriber.told, (QStringList{A, B, C}));
    QVERIFY(!loop.isRunning());
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccessSubscribers::subscriberMaySendTheNextRequest()
{
    RecordingSubscriber subscriber;
    backend->setRawAnswer({true, QString(), {A}});
    int depth = 0;
    int deepest = 0;
    subscriber.onTold = [&](const QString &) {
        deepest = qMax(deepest, ++depth);
        QString response;
        if (subscriber.told.size() < 1000)
            dataAccess->executeRawOrbCommand(C, QString::number(subscriber.told.size()), response);
        --depth;
    };
    dataAccess->subscribeRawMessage(&subscriber);
    send(A);
    QTRY_COMPARE(subscriber.told.size(), 1000);
    QCOMPARE(deepest, 1);
    QCOMPARE(backend->requests().size(), 999);
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccessSubscribers::answersDoNotStarveOtherEvents()
{
    constexpr int Limit = 1000;
    RecordingSubscriber subscriber;
    bool otherEvent = false;
    subscriber.onTold = [&](const QString &) {
        if (!otherEvent && subscriber.told.size() < Limit)
            send(A);
    };
    dataAccess->subscribeRawMessage(&subscriber);
    send(A);
    // Queued behind the first delivery: its turn comes before that of the messages which the delivery provokes.
    QTimer::singleShot(0, this, [&] { otherEvent = true; });
    QTRY_VERIFY(otherEvent);
    QVERIFY2(subscriber.told.size() < Limit, qPrintable(QString::number(subscriber.told.size())));
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccessSubscribers::subscriberMayEndTheLayer()
{
    RecordingSubscriber first;
    RecordingSubscriber second;
    first.onTold = [&](const QString &) { dataAccess.reset(); };
    dataAccess->subscribeRawMessage(&first);
    dataAccess->subscribeRawMessage(&second);
    send(A);
    send(B);
    QTRY_VERIFY(dataAccess == nullptr);
    QCoreApplication::processEvents();
    QCOMPARE(first.told, QStringList(A));
    QVERIFY(second.told.isEmpty());
    QVERIFY(!backend->hasListener());
}

void TestDlDataAccessSubscribers::ignoresNull()
{
    dataAccess->subscribeRawMessage(nullptr);
    dataAccess->subscribeStructureChanged(nullptr);
    dataAccess->unsubscribe(nullptr);
    RecordingSubscriber subscriber;
    dataAccess->unsubscribe(&subscriber);
    dataAccess->subscribeRawMessage(&subscriber);
    send(A);
    QTRY_COMPARE(subscriber.told, QStringList(A));
    dataAccess->unsubscribe(&subscriber);
}

QTEST_GUILESS_MAIN(TestDlDataAccessSubscribers)
#include "tst_dl_data_access_subscribers.moc"
