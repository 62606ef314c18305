#include "workbench/simulator/plant_journal.h"

#include "tests/workbench/channel_bench.h"
#include "tests/workbench/controller_bench.h"
#include "workbench/simulator/plant_schema.h"

#include <QtTest>

#include <algorithm>

using namespace simulator;

Q_DECLARE_METATYPE(JournalEntry)

class TestPlantJournal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersItsEntries();
    void keepsTheLatest();
    void keepsTheLatestTexts();
    void holdsARestartOfTheLargestPlant();
    void resultsComeLater();
    void lines_data();
    void lines();
};

namespace
{

JournalEntry entryOf(JournalEntry::Kind kind, const char *item, const char *text)
{
    JournalEntry entry;
    entry.kind = kind;
    entry.time = 1.5;
    entry.controller = QStringLiteral("local");
    entry.object = {OrbItemId::Channel, 0, 3, 7};
    entry.item = QString::fromLatin1(item);
    entry.text = QString::fromLatin1(text);
    return entry;
}

/// In crates of ten modules.
ControllerLayout largestController()
{
    constexpr std::size_t ChannelsOfModule = 1000;
    constexpr quint32 ModulesOfCrate = 10;
    ControllerLayout layout;
    layout.connectionName = QStringLiteral("local");
    layout.lines.resize(1);
    std::vector<CrateLayout> &crates = layout.lines.front().crates;
    for (quint32 address = 0; address < MostPlantChannels / ChannelsOfModule; ++address) {
        if (address % ModulesOfCrate == 0) {
            crates.emplace_back();
            crates.back().address = 1000 + address;
        }
        crates.back().modules.push_back(moduleOf(resistiveLoad(Load), ChannelsOfModule));
        crates.back().modules.back().address = address;
    }
    return layout;
}

bool switchAllOn(Controller &controller, const ControllerLayout &layout, double now)
{
    const ItemDefinition &on = *channelItems().find(QStringLiteral("Control.on"));
    for (const CrateLayout &crate : layout.lines.front().crates) {
        for (const ModuleLayout &module : crate.modules) {
            for (std::size_t channel = 0; channel < module.loads.size(); ++channel) {
                const ObjectAddress address{OrbItemId::Channel, 0, module.address,
                                            static_cast<qint32>(channel)};
                if (controller.write(address, on, ItemValue::of(true), now) != TarnResult::Success)
                    return false;
            }
        }
    }
    return true;
}

} // namespace

void TestPlantJournal::numbersItsEntries()
{
    PlantJournal journal;
    QCOMPARE(journal.nextNumber(), quint64(0));
    QVERIFY(journal.from(0, 10).isEmpty());
    for (quint64 number = 0; number < 5; ++number)
        QCOMPARE(journal.add({}), number);
    QCOMPARE(journal.from(0, 10).size(), 5);
    QCOMPARE(journal.from(3, 10).size(), 2);
    QCOMPARE(journal.from(3, 10).first().number, quint64(3));
    QCOMPARE(journal.from(1, 2).last().number, quint64(2));
    QVERIFY(journal.from(5, 10).isEmpty());
    QVERIFY(journal.from(0, 0).isEmpty());
}

void TestPlantJournal::keepsTheLatest()
{
    PlantJournal journal;
    constexpr int Room = PlantJournal::LeastRoom;
    for (int i = 0; i < Room + 10; ++i)
        journal.add({});
    QCOMPARE(journal.from(0, 2 * Room).size(), Room);
    QCOMPARE(journal.from(0, 1).first().number, quint64(10));
    journal.makeRoomFor(3);
    for (int i = 0; i < 100; ++i)
        journal.add({});
    const QVector<JournalEntry> kept = journal.from(0, 2 * Room);
    QCOMPARE(kept.size(), Room + 15);
    QCOMPARE(kept.first().number, quint64(95));
    QCOMPARE(kept.last().number, quint64(Room + 109));
}

// An answer may be as large as a plant.
void TestPlantJournal::keepsTheLatestTexts()
{
    PlantJournal journal;
    JournalEntry large;
    large.text = QString(int(PlantJournal::MostCharacters / 4), QLatin1Char('a'));
    for (int i = 0; i < 6; ++i)
        journal.add(large);
    QCOMPARE(journal.from(0, 10).size(), 4);
    QCOMPARE(journal.from(0, 10).first().number, quint64(2));
    // The last one is kept, however large it is.
    large.text = QString(int(PlantJournal::MostCharacters) + 1, QLatin1Char('a'));
    journal.add(large);
    QCOMPARE(journal.from(0, 10).size(), 1);
    QCOMPARE(journal.from(0, 10).first().number, quint64(6));
    journal.add({});
    journal.add({});
    QCOMPARE(journal.from(0, 10).size(), 2);
}

// Of all that happens at one moment nothing may be gone before anybody could read it.
void TestPlantJournal::holdsARestartOfTheLargestPlant()
{
    const ControllerLayout layout = largestController();
    PlantRun run;
    Controller controller(layout, run);
    QVERIFY(switchAllOn(controller, layout, 1));
    const quint64 first = run.journal.nextNumber();
    const ItemDefinition &reboot =
        *Controller::itemsOf(OrbItemId::System)->find(QStringLiteral("Control.reboot"));
    QCOMPARE(controller.write({OrbItemId::System, 0, 0, -1}, reboot, ItemValue::of(true), 2),
             TarnResult::Success);
    const QVector<JournalEntry> entries = run.journal.from(first, 10 * MostPlantChannels);
    QCOMPARE(entries.first().number, first);
    const auto fallen = std::count_if(entries.begin(), entries.end(), [](const JournalEntry &entry) {
        return entry.kind == JournalEntry::SwitchedOff;
    });
    QCOMPARE(int(fallen), MostPlantChannels);
}

void TestPlantJournal::resultsComeLater()
{
    PlantJournal journal;
    for (int i = 0; i < 3; ++i)
        journal.add({});
    journal.setResult(1, TarnResult::Denied);
    journal.setResult(3, TarnResult::Failed); // there is none of that number
    const QVector<JournalEntry> entries = journal.from(0, 10);
    QCOMPARE(entries[0].result, TarnResult::Success);
    QCOMPARE(entries[1].result, TarnResult::Denied);
    QCOMPARE(entries[2].result, TarnResult::Success);
    for (std::size_t i = 0; i < PlantJournal::LeastRoom; ++i)
        journal.add({});
    journal.setResult(1, TarnResult::Failed); // gone
    const QVector<JournalEntry> later = journal.from(0, int(PlantJournal::LeastRoom));
    for (const JournalEntry &entry : later)
        QCOMPARE(entry.result, TarnResult::Success);
}

void TestPlantJournal::lines_data()
{
    QTest::addColumn<JournalEntry>("entry");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const JournalEntry &entry, const char *line) {
        QTest::newRow(name) << entry << QString::fromLatin1(line);
    };
    JournalEntry write = entryOf(JournalEntry::Write, "Control.on", "1");
    row("write", write, "1.500000 local 0.3.7 write Control.on 1 done");
    write.result = TarnResult::Failed;
    write.request = 12;
    row("refused write of a request", write, "1.500000 local 0.3.7 write #12 Control.on 1 refused");
    row("event", entryOf(JournalEntry::Event, "Event.currentTrip", ""),
        "1.500000 local 0.3.7 event Event.currentTrip");
    row("error", entryOf(JournalEntry::Error, "Error.arc", ""), "1.500000 local 0.3.7 error Error.arc");
    row("fault", entryOf(JournalEntry::FaultBegins, "", "short"), "1.500000 local 0.3.7 fault begins short");
    row("end of a fault", entryOf(JournalEntry::FaultEnds, "", "short"),
        "1.500000 local 0.3.7 fault ends short");
    JournalEntry waypoint = entryOf(JournalEntry::Waypoint, "", "");
    waypoint.voltageBefore = 1000;
    waypoint.currentBefore = 0.00025;
    waypoint.current = 0.004;
    row("waypoint", waypoint, "1.500000 local 0.3.7 waypoint 0 V 0.004 A, before 1000 V 0.00025 A");
    JournalEntry answer = entryOf(JournalEntry::Answer, "", "true\nagain");
    answer.object = {};
    answer.request = 3;
    answer.delay = 0.0125;
    row("answer of two lines", answer, "1.500000 local answer #3 true again after 0.012500 s");
}

void TestPlantJournal::lines()
{
    QFETCH(JournalEntry, entry);
    QTEST(journalLine(entry), "line");
}

QTEST_APPLESS_MAIN(TestPlantJournal)
#include "tst_plant_journal.moc"
