#include "hostclient/orb_client.h"

#include "hostclient/orb_item_value.h"
#include "tests/support/recording_backend.h"
#include "tests/support/test_thread.h"

#include <QtTest>

#include <atomic>
#include <vector>

class TestOrbClientThreads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void threadsGetTheirOwnAnswers();
};

void TestOrbClientThreads::threadsGetTheirOwnAnswers()
{
    constexpr int Threads = 4;
    constexpr int Rounds = 500;
    RecordingBackend backend;
    backend.setControllers({{QStringLiteral("c"), QStringLiteral("C")}});
    for (int i = 0; i < Threads; ++i) {
        backend.setItem(QStringLiteral("c"), QStringLiteral("0.%1.Status.x").arg(i),
                        {QString::number(i), QString(), QStringLiteral("int"), 1});
    }
    OrbClient client(backend);
    std::atomic<int> wrong{0};
    std::vector<TestThread> threads;
    for (int i = 0; i < Threads; ++i) {
        threads.emplace_back([&client, &wrong, i] {
            const QByteArray path = "0." + QByteArray::number(i) + ".Status.x";
            OrbItemId id(OrbItemId::Module);
            id.connectionName = QStringLiteral("c");
            id.address = static_cast<quint32>(i);
            id.itemName = QStringLiteral("Status.x");
            for (int round = 0; round < Rounds; ++round) {
                const TarnItem item = client.getItem("c", path.constData());
                OrbItemValue value(id);
                QString response;
                const bool right = QByteArray(item.value) == QByteArray::number(i)
                    && client.readItemValue(value) && value.value() == QVariant(qlonglong(i))
                    && client.setItem("c", path.constData(), item.value) == TarnResult::Success
                    && client.executeRawOrbCommand(QStringLiteral("c"), QString::number(i), response)
                    && client.getConnectionsIndices(true).size() == 1;
                if (!right)
                    ++wrong;
            }
        });
    }
    for (TestThread &thread : threads)
        thread.wait();
    QCOMPARE(wrong.load(), 0);
    QCOMPARE(backend.callsOf(QStringLiteral("writeItem")).size(), Threads * Rounds);
    QCOMPARE(backend.requests().size(), Threads * Rounds);
}

QTEST_GUILESS_MAIN(TestOrbClientThreads)
#include "tst_orb_client_threads.moc"
