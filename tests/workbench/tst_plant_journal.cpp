#include "workbench/simulator/plant_journal.h"

#include <QtTest>

using namespace simulator;

Q_DECLARE_METATYPE(JournalEntry)

class TestPlantJournal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersItsEntries();
    void keepsTheLatest();
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
    for (std::size_t i = 0; i < PlantJournal::MostEntries + 10; ++i)
        journal.add({});
    const QVector<JournalEntry> kept = journal.from(0, 1000000);
    QCOMPARE(kept.size(), int(PlantJournal::MostEntries));
    QCOMPARE(kept.first().number, quint64(10));
    QCOMPARE(kept.last().number, quint64(PlantJournal::MostEntries + 9));
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
    for (std::size_t i = 0; i < PlantJournal::MostEntries; ++i)
        journal.add({});
    journal.setResult(1, TarnResult::Failed); // gone
    const QVector<JournalEntry> later = journal.from(0, 1000000);
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
