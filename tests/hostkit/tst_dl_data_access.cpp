#include "hostclient/dl_data_access.h"

#include "hostclient/orb_client.h"
#include "hostclient/orb_item_value.h"
#include "tests/hostkit/data_access_fixture.h"
#include "tests/hostkit/recording_subscriber.h"

#include <QtTest>

/// What is delivered, to whom and when. What subscribers may do meanwhile has a test of its own.
class TestDlDataAccess : public QObject, private DataAccessFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void handsOutItsClient();
    void forwardsToTheBackend();

    void deliversLaterAndInOrder();
    void deliversNothingDuringARequest();
    void asksBeforeItDelivers();
    void deliversToThoseWhoWant();
    void deliversToAllWhenNobodyWants();
    void deliversOncePerSubscriber();
    void deliversFromTheSubscriptionOn();

    void welcomesStructureSubscribers();
    void welcomesOnlyTheNewOne();
    void welcomesOnlyThoseWhoWant();
    void followsStructureStatusAndValues();
    void logEntriesGoToEverySubscriber();
    void oneOrderForAllKinds();

    void destructionEndsDelivery();
    void burstsAreCheap();

private:
    static OrbItemId line(quint32 number)
    {
        OrbItemId id(OrbItemId::Line);
        id.line = number;
        return id;
    }
};

namespace
{

/// Counts the queued calls that an application delivers.
class EventCounter : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        calls += event->type() == QEvent::MetaCall ? 1 : 0;
        return false;
    }

    int calls = 0;
};

} // namespace

void TestDlDataAccess::handsOutItsClient()
{
    OrbClient *const client = dataAccess->getOrbClientPtr();
    QVERIFY(client != nullptr);
    QCOMPARE(dataAccess->getOrbClientPtr(), client);
    QVERIFY(client->checkHasConnection(C));
}

void TestDlDataAccess::forwardsToTheBackend()
{
    QString response = QStringLiteral("old");
    backend->setRawAnswer({false, QStringLiteral("refused"), {}});
    QVERIFY(!dataAccess->executeRawOrbCommand(C, A, response));
    QCOMPARE(response, QStringLiteral("refused"));
    QCOMPARE(backend->callsOf(QStringLiteral("rawRequest")).first().arguments, (QStringList{C, A}));

    QVector<QPair<QString, QString>> controllers;
    QVERIFY(dataAccess->getAllControllerNames(controllers));
    QCOMPARE(controllers.size(), 2);
    QCOMPARE(controllers.at(1), qMakePair(C, QStringLiteral("C")));
    QCOMPARE(dataAccess->getOrbConnectionIndex(C), 1);
    QCOMPARE(dataAccess->getOrbConnectionIndex(A), -1);
    backend->setControllers({});
    QVERIFY(!dataAccess->getAllControllerNames(controllers));
    QVERIFY(controllers.isEmpty());

    backend->setItemNames(OrbItemId::Module, {A, B});
    QVector<QString> names{C};
    QVERIFY(dataAccess->getOrbItemNames(OrbItemId::Module, names, true));
    QCOMPARE(names, (QVector<QString>{A, B}));
    QCOMPARE(backend->callsOf(QStringLiteral("itemNames")).last().arguments.last(),
             QStringLiteral("writableOnly"));
    QVERIFY(!dataAccess->getOrbItemNames(OrbItemId::Channel, names, false));
    QVERIFY(names.isEmpty());
    QCOMPARE(backend->callsOf(QStringLiteral("itemNames")).last().arguments.last(), QStringLiteral("all"));

    backend->setItem(C, QStringLiteral("Status.x"),
                     {QStringLiteral("7"), QStringLiteral("V"), QStringLiteral("int"), 1});
    OrbItemId id(OrbItemId::System);
    id.connectionName = C;
    id.itemName = QStringLiteral("Status.x");
    OrbItemValue value(id);
    dataAccess->readItemValue(value);
    QCOMPARE(value.value(), QVariant(7LL));
    id.itemName = QStringLiteral("Status.y");
    value.setId(id);
    dataAccess->readItemValue(value);
    QVERIFY(!value.value().isValid());
}

void TestDlDataAccess::deliversLaterAndInOrder()
{
    RecordingSubscriber subscriber;
    dataAccess->subscribeRawMessage(&subscriber);
    QStringList sent;
    for (int i = 0; i < 100; ++i) {
        sent.append(QString::number(i));
        send(sent.last());
    }
    QVERIFY(subscriber.told.isEmpty());
    QTRY_COMPARE(subscriber.told, sent);
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccess::deliversNothingDuringARequest()
{
    RecordingSubscriber subscriber;
    dataAccess->subscribeRawMessage(&subscriber);
    // A backend that answers at once is still heard only after the request.
    backend->setRawHandler([this](const QString &, const QString &request) {
        send(request);
        return RecordingBackend::RawAnswer();
    });
    QString response;
    QVERIFY(dataAccess->executeRawOrbCommand(C, A, response));
    QVERIFY(subscriber.told.isEmpty());
    QTRY_COMPARE(subscriber.told, QStringList(A));
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccess::asksBeforeItDelivers()
{
    RecordingSubscriber subscriber;
    dataAccess->subscribeRawMessage(&subscriber);
    bool askedFirst = false;
    subscriber.onTold = [&](const QString &) { askedFirst = subscriber.queries.size() == 1; };
    send(A);
    QTRY_COMPARE(subscriber.told.size(), 1);
    QVERIFY(askedFirst);
    QCOMPARE(subscriber.queries.first().kind, quint32(DlNotificationQuery::RawMessage));
    QCOMPARE(subscriber.queries.first().connection, 1u);
    QCOMPARE(subscriber.queries.first().reserved, 0u);

    backend->sendRawMessage(QStringLiteral("gone"), B);
    QTRY_COMPARE(subscriber.queries.size(), 2);
    QCOMPARE(subscriber.queries.last().connection, 0xFFFFFFFFu);
    QVERIFY(subscriber.queries.last().sequence > subscriber.queries.first().sequence);
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccess::deliversToThoseWhoWant()
{
    RecordingSubscriber busy;
    RecordingSubscriber idle;
    idle.wants = false;
    dataAccess->subscribeRawMessage(&idle);
    dataAccess->subscribeRawMessage(&busy);
    send(A);
    QTRY_COMPARE(busy.told, QStringList(A));
    QCOMPARE(idle.queries.size(), 1);
    QVERIFY(idle.told.isEmpty());
    dataAccess->unsubscribe(&idle);
    dataAccess->unsubscribe(&busy);
}

void TestDlDataAccess::deliversToAllWhenNobodyWants()
{
    RecordingSubscriber first;
    RecordingSubscriber second;
    RecordingSubscriber structure;
    first.wants = false;
    second.wants = false;
    structure.wants = false;
    dataAccess->subscribeRawMessage(&first);
    dataAccess->subscribeRawMessage(&second);
    dataAccess->subscribeStructureChanged(&structure);
    send(A);
    QTRY_COMPARE(second.told, QStringList(A));
    QCOMPARE(first.told, QStringList(A));
    QVERIFY(structure.told.isEmpty());
    // Asked about its welcome, never about a raw message.
    QCOMPARE(structure.queries.size(), 1);
    QCOMPARE(structure.queries.first().kind, 1u);
    for (RecordingSubscriber *subscriber : {&first, &second, &structure})
        dataAccess->unsubscribe(subscriber);
}

void TestDlDataAccess::deliversOncePerSubscriber()
{
    RecordingSubscriber subscriber;
    RecordingSubscriber last;
    dataAccess->subscribeRawMessage(&subscriber);
    dataAccess->subscribeRawMessage(&subscriber);
    dataAccess->subscribeRawMessage(&last);
    send(A);
    QTRY_COMPARE(last.told, QStringList(A));
    QCOMPARE(subscriber.told, QStringList(A));
    // One unsubscribe ends both.
    dataAccess->unsubscribe(&subscriber);
    send(B);
    QTRY_COMPARE(last.told, (QStringList{A, B}));
    QCOMPARE(subscriber.told, QStringList(A));
    dataAccess->unsubscribe(&last);
}

void TestDlDataAccess::deliversFromTheSubscriptionOn()
{
    RecordingSubscriber early;
    RecordingSubscriber late;
    dataAccess->subscribeRawMessage(&early);
    send(A);
    dataAccess->subscribeRawMessage(&late);
    send(B);
    QTRY_COMPARE(late.told, QStringList(B));
    QCOMPARE(early.told, (QStringList{A, B}));
    dataAccess->unsubscribe(&early);
    dataAccess->unsubscribe(&late);
}

void TestDlDataAccess::welcomesStructureSubscribers()
{
    RecordingSubscriber subscriber;
    dataAccess->subscribeStructureChanged(&subscriber);
    QVERIFY(subscriber.told.isEmpty());
    QTRY_COMPARE(subscriber.told, QStringList(QStringLiteral("structure")));
    QCOMPARE(subscriber.queries.size(), 1);
    QCOMPARE(subscriber.queries.first().kind, 1u);

    // Subscribing again is no news.
    dataAccess->subscribeStructureChanged(&subscriber);
    backend->sendStructureChanged(line(1));
    QTRY_COMPARE(subscriber.told, (QStringList{QStringLiteral("structure"), QStringLiteral("structure:1")}));
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccess::welcomesOnlyTheNewOne()
{
    RecordingSubscriber old;
    dataAccess->subscribeStructureChanged(&old);
    QTRY_COMPARE(old.told.size(), 1);
    RecordingSubscriber added;
    dataAccess->subscribeStructureChanged(&added);
    QTRY_COMPARE(added.told.size(), 1);
    QCOMPARE(old.told.size(), 1);
    dataAccess->unsubscribe(&old);
    dataAccess->unsubscribe(&added);
}

void TestDlDataAccess::welcomesOnlyThoseWhoWant()
{
    RecordingSubscriber subscriber;
    subscriber.wants = false;
    dataAccess->subscribeStructureChanged(&subscriber);
    backend->sendStructureChanged(line(1));
    QTRY_COMPARE(subscriber.queries.size(), 2);
    QVERIFY(subscriber.told.isEmpty());
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccess::followsStructureStatusAndValues()
{
    RecordingSubscriber structure;
    RecordingSubscriber raw;
    dataAccess->subscribeStructureChanged(&structure);
    dataAccess->subscribeRawMessage(&raw);
    OrbItemId placed = line(1);
    placed.connection = 1;
    backend->sendStructureChanged(placed);
    backend->sendStatusChanged(line(2));
    backend->sendValuesChanged(line(3));
    send(A);
    QTRY_COMPARE(raw.told, QStringList(A));
    QCOMPARE(structure.told,
             (QStringList{QStringLiteral("structure"), QStringLiteral("structure:1"),
                          QStringLiteral("status:2"), QStringLiteral("values:3")}));
    QCOMPARE(structure.queries.size(), 4);
    QCOMPARE(structure.queries.at(1).connection, 1u);
    QCOMPARE(structure.queries.at(2).kind, quint32(DlNotificationQuery::StatusChanged));
    QCOMPARE(structure.queries.at(3).kind, quint32(DlNotificationQuery::ValuesChanged));
    dataAccess->unsubscribe(&structure);
    dataAccess->unsubscribe(&raw);
}

void TestDlDataAccess::logEntriesGoToEverySubscriber()
{
    RecordingSubscriber structure;
    RecordingSubscriber raw;
    RecordingSubscriber both;
    RecordingSubscriber unwilling;
    unwilling.wants = false;
    dataAccess->subscribeStructureChanged(&structure);
    dataAccess->subscribeRawMessage(&raw);
    dataAccess->subscribeStructureChanged(&both);
    dataAccess->subscribeRawMessage(&both);
    dataAccess->subscribeRawMessage(&unwilling);
    OrbLogMessage entry;
    entry.text = QStringLiteral("x");
    backend->sendLogMessage(entry);
    const QString told = QStringLiteral("log:x");
    QTRY_COMPARE(both.told, (QStringList{QStringLiteral("structure"), told}));
    QCOMPARE(structure.told, (QStringList{QStringLiteral("structure"), told}));
    QCOMPARE(raw.told, QStringList(told));
    // Unlike a raw message, an entry that nobody wants is for nobody.
    QCOMPARE(unwilling.queries.size(), 1);
    QVERIFY(unwilling.told.isEmpty());
    for (RecordingSubscriber *subscriber : {&structure, &raw, &both, &unwilling})
        dataAccess->unsubscribe(subscriber);
}

void TestDlDataAccess::oneOrderForAllKinds()
{
    RecordingSubscriber subscriber;
    dataAccess->subscribeStructureChanged(&subscriber);
    dataAccess->subscribeRawMessage(&subscriber);
    send(A);
    backend->sendStatusChanged(line(1));
    send(B);
    backend->sendLogMessage({QDateTime(), 0, QStringLiteral("x")});
    send(C);
    QTRY_COMPARE(subscriber.told,
                 (QStringList{QStringLiteral("structure"), A, QStringLiteral("status:1"), B,
                              QStringLiteral("log:x"), C}));
    dataAccess->unsubscribe(&subscriber);
}

void TestDlDataAccess::destructionEndsDelivery()
{
    RecordingSubscriber subscriber;
    dataAccess->subscribeRawMessage(&subscriber);
    dataAccess->subscribeStructureChanged(&subscriber);
    send(A);
    QVERIFY(backend->hasListener());
    dataAccess.reset();
    QVERIFY(!backend->hasListener());
    send(B);
    QCoreApplication::processEvents();
    QVERIFY(subscriber.queries.isEmpty());
    QVERIFY(subscriber.told.isEmpty());
}

void TestDlDataAccess::burstsAreCheap()
{
    // Counted, not timed: a message more must not cost an event more.
    constexpr int Messages = 10000;
    RecordingSubscriber subscriber;
    dataAccess->subscribeRawMessage(&subscriber);
    for (int i = 0; i < Messages; ++i)
        send(QString::number(i));
    EventCounter counter;
    QCoreApplication::instance()->installEventFilter(&counter);
    QTRY_COMPARE(subscriber.told.size(), Messages);
    QCOMPARE(subscriber.told.last(), QString::number(Messages - 1));
    QCOMPARE(subscriber.queries.size(), Messages);
    QVERIFY2(counter.calls <= 2, qPrintable(QString::number(counter.calls)));
    dataAccess->unsubscribe(&subscriber);
}

QTEST_GUILESS_MAIN(TestDlDataAccess)
#include "tst_dl_data_access.moc"
