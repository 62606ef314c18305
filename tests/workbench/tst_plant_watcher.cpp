#include "workbench/app/plant_watcher.h"

#include "tests/workbench/plant_bench.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

using simulator::JournalEntry;
using workbench::PlantWatcher;

class TestPlantWatcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsEachEntryOnce()
    {
        PlantBench bench;
        PlantWatcher watcher(bench.service);
        QVector<JournalEntry> told;
        connect(&watcher, &PlantWatcher::happened, this,
                [&told](const QVector<JournalEntry> &entries) { told += entries; });
        watcher.poll();
        QVERIFY(told.isEmpty());
        QVERIFY(bench.set(PlantBench::channel(1), "Control.voltageSet", QStringLiteral("100")));
        QVERIFY(bench.set(PlantBench::channel(2), "Control.voltageSet", QStringLiteral("200")));
        watcher.poll();
        watcher.poll();
        QCOMPARE(told.size(), 2);
        QCOMPARE(told.at(0).text, QStringLiteral("100"));
        QCOMPARE(told.at(1).object, PlantBench::address(2));
    }

    void tellsALotInPieces()
    {
        PlantBench bench;
        PlantWatcher watcher(bench.service);
        int told = 0;
        int pieces = 0;
        connect(&watcher, &PlantWatcher::happened, this, [&](const QVector<JournalEntry> &entries) {
            told += entries.size();
            ++pieces;
        });
        constexpr int Many = 12000;
        for (int number = 0; number < Many; ++number)
            bench.set(PlantBench::channel(1), "Control.voltageSet", QStringLiteral("100"));
        watcher.poll();
        QCOMPARE(told, Many);
        QVERIFY(pieces > 1);
    }

    void runsOnlyWhileItIsNeeded()
    {
        PlantBench bench;
        PlantWatcher watcher(bench.service);
        QSignalSpy polls(&watcher, &PlantWatcher::polled);
        QObject chart;
        auto log = std::make_unique<QObject>();
        QVERIFY(!watcher.isRunning());
        watcher.setNeeded(&chart, true);
        watcher.setNeeded(log.get(), true);
        QTRY_VERIFY(polls.size() >= 2);
        watcher.setNeeded(&chart, false);
        QVERIFY(watcher.isRunning());
        log.reset(); // who is gone needs nothing
        QVERIFY(!watcher.isRunning());
    }

    void countsAUserOnce()
    {
        PlantBench bench;
        PlantWatcher watcher(bench.service);
        QObject user;
        watcher.setNeeded(&user, true);
        watcher.setNeeded(&user, true);
        watcher.setNeeded(&user, false);
        QVERIFY(!watcher.isRunning());
    }

    void catchesUpOnWhatNobodySaw()
    {
        PlantBench bench;
        PlantWatcher watcher(bench.service);
        QVector<JournalEntry> told;
        connect(&watcher, &PlantWatcher::happened, this,
                [&told](const QVector<JournalEntry> &entries) { told += entries; });
        bench.set(PlantBench::channel(1), "Control.voltageSet", QStringLiteral("100"));
        QObject user;
        watcher.setNeeded(&user, true);
        QTRY_COMPARE(told.size(), 1);
    }

    void stopsForAll()
    {
        PlantBench bench;
        PlantWatcher watcher(bench.service);
        QObject user;
        watcher.setNeeded(&user, true);
        watcher.stop();
        QVERIFY(!watcher.isRunning());
        watcher.setNeeded(&user, true);
        QVERIFY(watcher.isRunning());
    }
};

QTEST_GUILESS_MAIN(TestPlantWatcher)

#include "tst_plant_watcher.moc"
