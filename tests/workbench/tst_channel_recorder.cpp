#include "workbench/app/channel_recorder.h"

#include "tests/workbench/plant_bench.h"
#include "workbench/app/channel_csv.h"
#include "workbench/app/plant_watcher.h"

#include <QLocale>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTextStream>

#include <algorithm>

using simulator::Fault;
using simulator::FaultKind;
using simulator::JournalEntry;
using workbench::ChannelMark;
using workbench::ChannelRecord;
using workbench::ChannelRecorder;
using workbench::PlantWatcher;

namespace
{

const QString Local = QStringLiteral("local");

struct Bench : PlantBench
{
    /// Lets time pass as the plant is looked at in the window.
    void run(double seconds)
    {
        constexpr double Step = 0.1;
        for (double done = 0; done < seconds - Step / 2; done += Step) {
            step(Step);
            watcher.poll();
        }
    }

    bool cause(FaultKind kind, qint32 number, double duration = 0)
    {
        Fault fault;
        fault.kind = kind;
        fault.controller = Local;
        fault.object = address(number);
        fault.duration = duration;
        return service.cause(fault) == TarnResult::Success;
    }

    PlantWatcher watcher{service};
    ChannelRecorder recorder{watcher};
};

QStringList marksOf(const ChannelRecord &record)
{
    QStringList texts;
    for (const ChannelMark &mark : record.marks())
        texts << mark.text;
    return texts;
}

double highest(const ChannelRecord &record, double workbench::ChannelSample::*quantity)
{
    double value = 0;
    for (const workbench::ChannelSample &sample : record.samples())
        value = std::max(value, sample.*quantity);
    return value;
}

} // namespace

class TestChannelRecorder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordsARamp()
    {
        Bench bench;
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.rampTo(PlantBench::channel(1), 1200));
        bench.run(3);
        const ChannelRecord &record = bench.recorder.at(0);
        const std::size_t half = record.firstAt(1);
        QVERIFY(half < record.samples().size());
        QVERIFY(qAbs(record.samples().at(half).voltage - 600) < 1);
        QCOMPARE(record.samples().back().voltage, 1200.0);
        QCOMPARE(record.samples().back().voltageSet, 1200.0);
        QCOMPARE(record.samples().back().voltageLimit, 6000.0);
        QCOMPARE(record.samples().back().currentLimit, 0.001);
        QVERIFY(record.samples().back().current > 0);
        QCOMPARE(bench.recorder.now(), 3.0);
        QVERIFY(marksOf(record).contains(QStringLiteral("end of ramp")));
    }

    void recordsWhatHappensBetweenTwoReadings()
    {
        Bench bench;
        QVERIFY(bench.rampTo(PlantBench::channel(1), 1200));
        bench.run(4);
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        bench.run(0.3);
        QVERIFY(bench.cause(FaultKind::Spark, 1));
        bench.run(0.3);
        const auto &samples = bench.recorder.at(0).samples();
        const bool fell =
            std::any_of(samples.begin(), samples.end(),
                        [](const workbench::ChannelSample &sample) { return sample.voltage < 600; });
        QVERIFY2(fell, "the spark is over long before the next reading");
        QVERIFY(marksOf(bench.recorder.at(0)).contains(QStringLiteral("simulated: spark")));
        QVERIFY(marksOf(bench.recorder.at(0)).contains(QStringLiteral("arc")));
        QVERIFY(!marksOf(bench.recorder.at(0)).contains(QStringLiteral("over: spark")));
    }

    void marksATripOnce()
    {
        Bench bench;
        const OrbItemId channel = PlantBench::channel(1);
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.recorder.add(Local, PlantBench::address(2)));
        QVERIFY(bench.set(channel, "Setup.delayedTripAction", QStringLiteral("2")));
        QVERIFY(bench.set(channel, "Setup.delayedTripTime", QStringLiteral("200")));
        QVERIFY(bench.rampTo(channel, 1200));
        bench.run(3);
        QVERIFY(bench.cause(FaultKind::Short, 1));
        bench.run(1);
        const ChannelRecord &record = bench.recorder.at(0);
        QCOMPARE(marksOf(record).count(QStringLiteral("trip")), 1);
        QCOMPARE(record.samples().back().voltage, 0.0);
        const auto trip =
            std::find_if(record.marks().begin(), record.marks().end(),
                         [](const ChannelMark &mark) { return mark.text == QStringLiteral("trip"); });
        QVERIFY(qAbs(trip->time - 3.2) < 0.01);
        QCOMPARE(record.marks().back().text, QStringLiteral("switched off: trip"));
        QCOMPARE(record.marks().back().kind, ChannelMark::Trip);
        QVERIFY2(marksOf(bench.recorder.at(1)).isEmpty(), "nothing happened to the other one");
    }

    void marksEachThingOnceWhereManyHappenTogether()
    {
        Bench bench;
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.rampTo(PlantBench::channel(1), 1200));
        bench.run(3);
        Fault sparks;
        sparks.kind = FaultKind::Spark;
        sparks.controller = Local;
        sparks.object = PlantBench::address(1);
        sparks.amount = 5;
        QCOMPARE(bench.service.cause(sparks), TarnResult::Success);
        bench.run(1);
        const auto &marks = bench.recorder.at(0).marks();
        QStringList last;
        for (const ChannelMark &mark : marks) {
            if (mark.time == marks.back().time)
                last << mark.text;
        }
        QCOMPARE(last,
                 QStringList({QStringLiteral("arc"), QStringLiteral("too many arcs"),
                              QStringLiteral("switched off: too many arcs")}));
    }

    void tellsATripWithoutActionFromOneThatSwitchesOff()
    {
        Bench bench;
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.rampTo(PlantBench::channel(1), 1200));
        bench.run(3);
        QVERIFY(bench.cause(FaultKind::Short, 1));
        bench.run(1);
        const ChannelRecord &record = bench.recorder.at(0);
        QVERIFY(marksOf(record).contains(QStringLiteral("trip")));
        for (const ChannelMark &mark : record.marks())
            QVERIFY(mark.kind != ChannelMark::Trip);
    }

    void marksEachOccurrence()
    {
        Bench bench;
        const OrbItemId channel = PlantBench::channel(1);
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.rampTo(channel, 600));
        bench.run(2);
        QVERIFY(bench.rampTo(channel, 1200)); // nobody cleared the event
        bench.run(2);
        QCOMPARE(marksOf(bench.recorder.at(0)).count(QStringLiteral("end of ramp")), 2);
    }

    void saysWhoSwitchedAChannelOff_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("level");
        QTest::addColumn<QStringList>("marks");
        QTest::newRow("module") << int(FaultKind::SafetyLoopOpen) << int(OrbItemId::Module)
                                << QStringList(
                                       {QStringLiteral("simulated: safety loop open"),
                                        QStringLiteral("switched off: module 0.0, safety loop was opened")});
        QTest::newRow("crate") << int(FaultKind::MainsFailure) << int(OrbItemId::Crate)
                               << QStringList({QStringLiteral("simulated: mains failure"),
                                               QStringLiteral("switched off: crate 0.1000, mains not good")});
        QTest::newRow("controller") << int(FaultKind::Disconnect) << int(OrbItemId::System)
                                    << QStringList({QStringLiteral("controller left")});
    }

    void saysWhoSwitchedAChannelOff()
    {
        QFETCH(int, kind);
        QFETCH(int, level);
        QFETCH(QStringList, marks);
        Bench bench;
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.recorder.add(QStringLiteral("bench"), PlantBench::address(1)));
        QVERIFY(bench.rampTo(PlantBench::channel(1), 600));
        bench.run(2);
        const int before = marksOf(bench.recorder.at(0)).size();
        Fault fault;
        fault.kind = FaultKind(kind);
        fault.controller = Local;
        fault.object.level = OrbItemId::Type(level);
        fault.object.address = level == OrbItemId::Crate ? 1000 : 0;
        QCOMPARE(bench.service.cause(fault), TarnResult::Success);
        bench.run(1);
        const QStringList found = marksOf(bench.recorder.at(0)).mid(before);
        for (const QString &mark : marks)
            QVERIFY2(found.contains(mark), qPrintable(found.join(QLatin1String("; "))));
        QVERIFY2(marksOf(bench.recorder.at(1)).isEmpty(), "the other controller has nothing to do with it");
    }

    void followsAChannelThroughTheConnectionOfAScript()
    {
        Bench bench;
        QCOMPARE(
            bench.service.openConnection(QStringLiteral("scan"), QStringLiteral("ws://nowhere:8080"), {}, {}),
            TarnResult::Success);
        QVERIFY(bench.recorder.add(QStringLiteral("scan"), PlantBench::address(1)));
        QCOMPARE(bench.recorder.at(0).name(), QStringLiteral("local 0.0.1"));
        QVERIFY2(bench.recorder.add(Local, PlantBench::address(1)), "it is followed already");
        QCOMPARE(bench.recorder.count(), 1);
        QVERIFY(!bench.recorder.add(QStringLiteral("nobody"), PlantBench::address(1)));
    }

    void marksFaultsOfTheCrateOfAChannelOfAScript()
    {
        Bench bench;
        QCOMPARE(bench.service.openConnection(QStringLiteral("scan"), QStringLiteral("ws://127.0.0.1:8080"),
                                              {}, {}),
                 TarnResult::Success);
        bench.service.closeConnection(Local);
        QVERIFY(bench.recorder.add(QStringLiteral("scan"), PlantBench::address(1)));
        Fault fault;
        fault.kind = FaultKind::MainsFailure;
        fault.controller = Local;
        fault.object = {OrbItemId::Crate, 0, 1000, -1};
        QCOMPARE(bench.service.cause(fault), TarnResult::Success);
        bench.run(0.2);
        QVERIFY(marksOf(bench.recorder.at(0)).contains(QStringLiteral("simulated: mains failure")));
    }

    void doesNothingWithoutChannels()
    {
        Bench bench;
        QSignalSpy recorded(&bench.recorder, &ChannelRecorder::recorded);
        QVERIFY(!bench.watcher.isRunning());
        bench.watcher.poll();
        QVERIFY(recorded.isEmpty());
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.watcher.isRunning());
        bench.recorder.remove(0);
        QVERIFY(!bench.watcher.isRunning());
    }

    void refuses()
    {
        Bench bench;
        QVERIFY(!bench.recorder.add(QStringLiteral("nobody"), PlantBench::address(1)));
        QVERIFY(!bench.recorder.add(Local, PlantBench::address(99)));
        QVERIFY(!bench.recorder.add(Local, {OrbItemId::Module, 0, 0, -1}));
        QCOMPARE(bench.recorder.count(), 0);
        for (int number = 0; number < ChannelRecorder::MostChannels; ++number)
            QVERIFY(bench.recorder.add(Local, PlantBench::address(number, 2)));
        QVERIFY(!bench.recorder.add(Local, PlantBench::address(15, 2)));
    }

    void takesAChannelOnce()
    {
        Bench bench;
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.recorder.add(QStringLiteral("Rehearsal controller"), PlantBench::address(1)));
        QCOMPARE(bench.recorder.count(), 1);
        QCOMPARE(bench.recorder.at(0).name(), QStringLiteral("local 0.0.1"));
    }

    void keepsLooksApart()
    {
        Bench bench;
        for (int number = 0; number < 3; ++number)
            QVERIFY(bench.recorder.add(Local, PlantBench::address(number)));
        bench.recorder.remove(1);
        QCOMPARE(bench.recorder.at(1).look(), 2);
        QVERIFY(bench.recorder.add(Local, PlantBench::address(5)));
        QCOMPARE(bench.recorder.at(2).look(), 1);
    }

    void startsAnew()
    {
        Bench bench;
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.rampTo(PlantBench::channel(1), 1200));
        bench.run(3);
        bench.recorder.clear();
        QCOMPARE(bench.recorder.at(0).samples().size(), std::size_t(1));
        QVERIFY(bench.recorder.at(0).marks().empty());
        QCOMPARE(highest(bench.recorder.at(0), &workbench::ChannelSample::voltage), 1200.0);
    }

    void marks_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("text");
        QTest::newRow("event") << int(JournalEntry::Event) << QStringLiteral("Event.currentTrip")
                               << QStringLiteral("trip");
        QTest::newRow("error") << int(JournalEntry::Error) << QStringLiteral("Error.arc")
                               << QStringLiteral("too many arcs");
        QTest::newRow("an event that says nothing")
            << int(JournalEntry::Event) << QStringLiteral("Event.constantVoltage") << QString();
        QTest::newRow("a write") << int(JournalEntry::Write) << QStringLiteral("Control.on") << QString();
    }

    void marks()
    {
        QFETCH(int, kind);
        QFETCH(QString, item);
        QFETCH(QString, text);
        JournalEntry entry;
        entry.kind = static_cast<JournalEntry::Kind>(kind);
        entry.item = item;
        ChannelMark mark;
        QCOMPARE(workbench::markOf(entry, mark), !text.isEmpty());
        QCOMPARE(mark.text, text);
    }

    void marksFaultsOfTheModule()
    {
        Bench bench;
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1, 1)));
        Fault fault;
        fault.kind = FaultKind::SafetyLoopOpen;
        fault.controller = Local;
        fault.object = {OrbItemId::Module, 0, 0, -1};
        QCOMPARE(bench.service.cause(fault), TarnResult::Success);
        bench.run(0.2);
        QCOMPARE(bench.service.mend(fault), TarnResult::Success);
        bench.run(0.2);
        QVERIFY(marksOf(bench.recorder.at(0)).contains(QStringLiteral("simulated: safety loop open")));
        QVERIFY(marksOf(bench.recorder.at(0)).contains(QStringLiteral("over: safety loop open")));
        QVERIFY(marksOf(bench.recorder.at(1)).isEmpty());
    }

    void writesATable()
    {
        Bench bench;
        QVERIFY(bench.recorder.add(Local, PlantBench::address(1)));
        QVERIFY(bench.rampTo(PlantBench::channel(1), 1200));
        bench.run(3);
        const QLocale before;
        QLocale::setDefault(QLocale(QLocale::German)); // a table has decimal points all the same
        QString table;
        QTextStream out(&table);
        workbench::writeChannelCsv(bench.recorder, out);
        QLocale::setDefault(before);
        const QStringList lines = table.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.constFirst(),
                 QStringLiteral("time / s,channel,voltage / V,voltage set / V,voltage limit / V,current / A,"
                                "current set / A,current limit / A,event"));
        for (const QString &line : lines)
            QCOMPARE(line.count(QLatin1Char(',')), 8);
        const QStringList half =
            lines.filter(QStringLiteral("1.500000,local 0.0.1,")).constFirst().split(QLatin1Char(','));
        QVERIFY(qAbs(half.at(2).toDouble() - 900) < 1);
        QCOMPARE(half.at(3).toDouble(), 1200.0);
        QCOMPARE(half.at(7).toDouble(), 0.001);
        QVERIFY(lines.indexOf(QRegularExpression(QStringLiteral("^2\\.0.*,,,,,,,end of ramp$"))) > 0);
    }
};

QTEST_GUILESS_MAIN(TestChannelRecorder)

#include "tst_channel_recorder.moc"
