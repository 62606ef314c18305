#include "hostclient/dl_data_access.h"

#include "hostclient/orb_client.h"
#include "tests/hostkit/recording_subscriber.h"
#include "tests/support/recording_backend.h"
#include "tests/support/test_thread.h"

#include <QThread>
#include <QtTest>

#include <atomic>
#include <memory>
#include <vector>

class TestDlDataAccessThreads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deliversOnItsOwnThread();
    void keepsTheOrderOfEachThread();
    void subscribersComeAndGoWhileMessagesArrive();
    void isCalledFromTwoThreads();
    void endsWhileMessagesArrive();
};

namespace
{

const QString Name = QStringLiteral("c");

} // namespace

void TestDlDataAccessThreads::deliversOnItsOwnThread()
{
    RecordingBackend backend;
    DlDataAccess dataAccess(backend);
    RecordingSubscriber subscriber;
    bool rightThread = true;
    const auto look = [&] { rightThread = rightThread && QThread::currentThread() == thread(); };
    subscriber.onQuery = look;
    subscriber.onTold = [&](const QString &) { look(); };
    dataAccess.subscribeRawMessage(&subscriber);
    TestThread worker([&] {
        dataAccess.subscribeStructureChanged(&subscriber);
        backend.sendRawMessage(Name, QStringLiteral("a"));
        backend.sendStructureChanged(OrbItemId(OrbItemId::Line));
        backend.sendValuesChanged(OrbItemId(OrbItemId::Line));
        backend.sendStatusChanged(OrbItemId(OrbItemId::Line));
        backend.sendLogMessage({QDateTime(), 1, QStringLiteral("x")});
    });
    worker.wait();
    QTRY_COMPARE(subscriber.told.size(), 6);
    QVERIFY(rightThread);
    dataAccess.unsubscribe(&subscriber);
}

void TestDlDataAccessThreads::keepsTheOrderOfEachThread()
{
    constexpr int Messages = 2000;
    constexpr int Threads = 3;
    RecordingBackend backend;
    DlDataAccess dataAccess(backend);
    RecordingSubscriber subscriber;
    dataAccess.subscribeRawMessage(&subscriber);
    std::vector<TestThread> workers;
    for (int t = 0; t < Threads; ++t) {
        workers.emplace_back([&backend, t] {
            for (int i = 0; i < Messages; ++i)
                backend.sendRawMessage(Name, QStringLiteral("%1 %2").arg(t).arg(i));
        });
    }
    QTRY_COMPARE(subscriber.told.size(), Threads * Messages);
    for (TestThread &worker : workers)
        worker.wait();
    QVector<int> next(Threads, 0);
    for (const QString &text : std::as_const(subscriber.told)) {
        const int thread = text.section(QLatin1Char(' '), 0, 0).toInt();
        QCOMPARE(text.section(QLatin1Char(' '), 1, 1).toInt(), next.at(thread));
        ++next[thread];
    }
    dataAccess.unsubscribe(&subscriber);
}

void TestDlDataAccessThreads::subscribersComeAndGoWhileMessagesArrive()
{
    RecordingBackend backend;
    DlDataAccess dataAccess(backend);
    std::atomic<bool> stop{false};
    TestThread worker([&] {
        for (quint32 i = 0; !stop; ++i) {
            backend.sendRawMessage(Name, QString::number(i));
            OrbItemId id(OrbItemId::Line);
            id.line = i;
            backend.sendStructureChanged(id);
            std::this_thread::yield();
        }
    });
    int told = 0;
    for (int round = 0; round < 100; ++round) {
        RecordingSubscriber first;
        auto second = std::make_unique<RecordingSubscriber>();
        first.onTold = [&](const QString &) {
            if (second)
                dataAccess.unsubscribe(second.get());
            second.reset();
        };
        dataAccess.subscribeRawMessage(&first);
        dataAccess.subscribeStructureChanged(second.get());
        dataAccess.subscribeRawMessage(second.get());
        QVERIFY(QTest::qWaitFor([&] { return second == nullptr && !first.told.isEmpty(); }));
        dataAccess.unsubscribe(&first);
        told += first.told.size();
    }
    stop = true;
    worker.wait();
    QVERIFY(told >= 100);
}

void TestDlDataAccessThreads::isCalledFromTwoThreads()
{
    constexpr int Requests = 500;
    RecordingBackend backend;
    backend.setControllers({{Name, QStringLiteral("C")}});
    backend.setItem(Name, QStringLiteral("Status.x"),
                    {QStringLiteral("1"), QString(), QStringLiteral("int"), 1});
    backend.setRawAnswer({true, QString(), {QStringLiteral("true"), QStringLiteral("data")}});
    DlDataAccess dataAccess(backend);
    RecordingSubscriber subscriber;
    dataAccess.subscribeRawMessage(&subscriber);

    std::atomic<int> failed{0};
    TestThread interpreter([&] {
        OrbClient &client = *dataAccess.getOrbClientPtr();
        for (int i = 0; i < Requests; ++i) {
            const TarnItem item = client.getItem("c", "Status.x");
            if (item.path[0] == '\0' || client.setItem("c", "Status.x", "1") != TarnResult::Success)
                ++failed;
        }
    });
    for (int i = 0; i < Requests; ++i) {
        QString response;
        QVERIFY(dataAccess.executeRawOrbCommand(Name, QString::number(i), response));
        QVector<QPair<QString, QString>> controllers;
        QVERIFY(dataAccess.getAllControllerNames(controllers));
        QCoreApplication::processEvents();
    }
    interpreter.wait();
    QCOMPARE(failed.load(), 0);
    QTRY_COMPARE(subscriber.told.size(), 2 * Requests);
    QCOMPARE(subscriber.told.count(QStringLiteral("data")), Requests);
    dataAccess.unsubscribe(&subscriber);
}

void TestDlDataAccessThreads::endsWhileMessagesArrive()
{
    RecordingBackend backend;
    std::atomic<bool> stop{false};
    TestThread worker([&] {
        while (!stop) {
            backend.sendRawMessage(Name, QStringLiteral("a"));
            std::this_thread::yield();
        }
    });
    RecordingSubscriber subscriber;
    for (int round = 0; round < 50; ++round) {
        auto dataAccess = std::make_unique<DlDataAccess>(backend);
        dataAccess->subscribeRawMessage(&subscriber);
        QVERIFY(QTest::qWaitFor([&] { return !subscriber.told.isEmpty(); }));
        dataAccess.reset();
        subscriber.told.clear();
        QCoreApplication::processEvents();
        QVERIFY(subscriber.told.isEmpty());
        QVERIFY(!backend.hasListener());
    }
    stop = true;
    worker.wait();
}

QTEST_GUILESS_MAIN(TestDlDataAccessThreads)
#include "tst_dl_data_access_threads.moc"
