#include "workbench/simulator/simulated_service.h"

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "tests/workbench/listener_log.h"

#include <QtTest>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

using namespace simulator;

namespace
{

const QString Local = QStringLiteral("local");
constexpr int Rounds = 400;

OrbItemId channelItem(qint32 channel, const QString &item)
{
    OrbItemId id(OrbItemId::Channel);
    id.connectionName = Local;
    id.channel = channel;
    id.itemName = item;
    return id;
}

QString getRequest()
{
    return QStringLiteral(R"({"t":"request","c":[{"c":"getItem",)"
                          R"("p":{"p":{"l":0,"a":0,"c":0},"i":"Status.voltageMeasure"}}]})");
}

void runAll(const std::vector<std::function<void()>> &jobs)
{
    std::vector<std::thread> threads;
    threads.reserve(jobs.size());
    for (const auto &job : jobs)
        threads.emplace_back(job);
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace

/// The service called from several threads at once; what it is for shows under the thread sanitizer.
class TestSimulatedServiceThreads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readersAndWriters();
    void everyRequestIsAnsweredOnce();
    void listenersComeAndGo();
    void controllersAndConnectionsComeAndGo();
    void faultsWhileSomebodyLooks();
};

void TestSimulatedServiceThreads::readersAndWriters()
{
    SimulatedService service;
    ListenerLog listener;
    service.setListener(&listener);
    std::atomic<int> failures{0};
    const auto writer = [&](qint32 channel) {
        for (int i = 0; i < Rounds; ++i) {
            const QString value = QString::number(i);
            OrbItemReading reading;
            // Each writer has its own channel, so it reads what it wrote.
            if (service.writeItem(channelItem(channel, QStringLiteral("Control.voltageSet")), value)
                    != TarnResult::Success
                || service.readItem(channelItem(channel, QStringLiteral("Control.voltageSet")), reading)
                    != TarnResult::Success
                || reading.value != value)
                ++failures;
        }
    };
    const auto reader = [&] {
        OrbItemId crate(OrbItemId::Crate);
        crate.connectionName = Local;
        crate.address = 1000;
        for (int i = 0; i < Rounds; ++i) {
            OrbItemReading reading;
            QVector<OrbItemId> ids;
            QVector<QString> names;
            crate.itemName = QStringLiteral("Status.runningState");
            if (service.readItem(crate, reading) != TarnResult::Success || !service.crateModules(crate, ids)
                || ids.size() != 4 || !service.itemNames(crate, false, names)
                || service.controllers().size() != 2)
                ++failures;
        }
    };
    runAll({[&] { writer(0); }, [&] { writer(1); }, [&] { writer(2); }, reader, reader});
    QCOMPARE(failures.load(), 0);
    QCOMPARE(listener.changedValues().size(), 3 * Rounds);
}

void TestSimulatedServiceThreads::everyRequestIsAnsweredOnce()
{
    SimulatedService service;
    ListenerLog listener;
    service.setLatency(std::chrono::milliseconds(0));
    service.setListener(&listener);
    std::atomic<int> failures{0};
    const auto asker = [&] {
        QString reply;
        for (int i = 0; i < Rounds; ++i) {
            if (!service.rawRequest(Local, getRequest(), reply) || !reply.isEmpty())
                ++failures;
        }
    };
    runAll({asker, asker, asker});
    QCOMPARE(failures.load(), 0);
    QTRY_COMPARE(listener.messageCount(), 3 * 2 * Rounds);
    const QStringList messages = listener.messages();
    for (int i = 0; i < messages.size(); ++i)
        QCOMPARE(messages.at(i) == QLatin1String("[{\"trigger\":\"true\"}]"), i % 2 == 0);
}

void TestSimulatedServiceThreads::listenersComeAndGo()
{
    SimulatedService service;
    service.setLatency(std::chrono::milliseconds(0));
    std::atomic<bool> isOver{false};
    std::atomic<int> lateCalls{0};
    const auto asker = [&] {
        QString reply;
        while (!isOver) {
            service.rawRequest(Local, getRequest(), reply);
            service.writeItem(channelItem(0, QStringLiteral("Control.voltageSet")), QStringLiteral("5"));
        }
    };
    const auto changer = [&] {
        for (int i = 0; i < Rounds; ++i) {
            const auto listener = std::make_unique<ListenerLog>();
            service.setListener(listener.get());
            service.setListener(nullptr);
            // Nobody may touch it from here on.
            const int messages = listener->messageCount();
            const int values = listener->changedValues().size();
            std::this_thread::yield();
            if (listener->messageCount() != messages || listener->changedValues().size() != values)
                ++lateCalls;
        }
        isOver = true;
    };
    runAll({asker, asker, changer});
    QCOMPARE(lateCalls.load(), 0);
}

void TestSimulatedServiceThreads::controllersAndConnectionsComeAndGo()
{
    SimulatedService service;
    ListenerLog listener;
    service.setLatency(std::chrono::milliseconds(0));
    service.setListener(&listener);
    std::atomic<bool> isOver{false};
    std::atomic<int> failures{0};
    const QString own = QStringLiteral("own");
    const auto switcher = [&] {
        for (int i = 0; i < Rounds; ++i)
            service.setControllerAvailable(Local, i % 2 == 1);
        isOver = true;
    };
    const auto connector = [&] {
        while (!isOver) {
            service.openConnection(own, QStringLiteral("127.0.0.1:8081"), QString(), QString());
            service.activatePassThrough(own, QStringLiteral("script"));
            service.injectPassThroughMessage(own, OrbRequestItem());
            service.sendPassThroughMessages(own, {OrbItemValue()});
            service.closeConnection(own);
        }
    };
    const auto user = [&] {
        QString reply;
        QVector<OrbItemId> ids;
        OrbItemReading reading;
        QVector<OrbRequestItem> requests;
        while (!isOver) {
            const bool isTaken = service.rawRequest(Local, getRequest(), reply);
            const TarnResult result = service.readItem(channelItem(0, QStringLiteral("Status.on")), reading);
            if (isTaken != reply.isEmpty()
                || (result != TarnResult::Success && result != TarnResult::NotConnected))
                ++failures;
            service.modules(own, ids);
            service.takePassThroughMessages(own, requests);
            service.takeSentPassThroughMessages(own);
            service.connectionIndex(own);
        }
    };
    runAll({switcher, connector, user, user});
    QCOMPARE(failures.load(), 0);
    QVERIFY(service.isControllerAvailable(Local));
    // It is all there still.
    QCOMPARE(service.connectionIndex(Local), 0);
    const int before = listener.messageCount();
    QString reply;
    QVERIFY(service.rawRequest(Local, getRequest(), reply));
    QTRY_VERIFY(listener.messageCount() >= before + 2);
}

void TestSimulatedServiceThreads::faultsWhileSomebodyLooks()
{
    SimulatedService service;
    std::atomic<int> failures{0};
    std::atomic<int> causing{3};
    const auto causer = [&](qint32 channel, FaultKind kind) {
        Fault fault;
        fault.kind = kind;
        fault.controller = Local;
        fault.object = {OrbItemId::Channel, 0, 0, channel};
        fault.amount = 0.0005;
        for (int i = 0; i < Rounds; ++i) {
            service.writeItem(channelItem(channel, QStringLiteral("Control.on")), QString::number(i % 2));
            if (service.cause(fault) != TarnResult::Success || service.mend(fault) != TarnResult::Success)
                ++failures;
        }
        --causing;
    };
    quint64 next = 0;
    const auto watcher = [&] {
        while (causing > 0) {
            const QVector<JournalEntry> entries = service.journal(next);
            for (const JournalEntry &entry : entries)
                failures += entry.number == next++ ? 0 : 1;
            ChannelSnapshot snapshot;
            if (!service.channelSnapshot(Local, {OrbItemId::Channel, 0, 0, 0}, snapshot))
                ++failures;
        }
    };
    runAll({[&] { causer(0, FaultKind::Short); }, [&] { causer(1, FaultKind::Leak); },
            [&] { causer(2, FaultKind::ExternalInhibit); }, watcher});
    QCOMPARE(failures.load(), 0);
    QVERIFY(service.nextJournalNumber() >= quint64(3 * 3 * Rounds)); // writes, beginnings and ends
}

QTEST_GUILESS_MAIN(TestSimulatedServiceThreads)
#include "tst_simulated_service_threads.moc"
