#include "tests/workbench/channel_bench.h"
#include "workbench/simulator/controller.h"
#include "workbench/simulator/plant_journal.h"
#include "workbench/simulator/simulated_service.h"
#include "workbench/simulator/stepped_clock.h"

#include <QtTest>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

using namespace simulator;

/// A plant does the same whether somebody looks at it every millisecond or once in an hour.
class TestPlantSteps : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneJumpIsAMillionSteps();
    void anybodyMayLook_data();
    void anybodyMayLook();
    void anyLoad_data();
    void anyLoad();
    void entriesAreInTheOrderOfTheirTimes();
    void anotherSeedIsAnotherCourse();
    void scheduledFaultsWithoutAnybodyLooking();
    void restCostsNothing();
};

namespace
{

/// What somebody does to a channel at a time.
struct Deed
{
    double at = 0; // s
    int channel = 0;
    QByteArray item; // empty for a fault
    QByteArray value;
    Fault fault;
    bool begins = true;
};

using Deeds = std::vector<Deed>;

LoadLayout loadOf(double ohm, double farad, double leakage, double drift, double sparkInterval)
{
    LoadLayout load;
    load.resistance = ohm;
    load.capacitance = farad;
    load.leakage = leakage;
    load.leakageDrift = drift;
    load.sparkInterval = sparkInterval;
    return load;
}

using Loads = std::vector<LoadLayout>;

Loads mixedLoads()
{
    return {
        loadOf(1e6, 0, 0, 0, 0),          loadOf(1e6, 2e-6, 0, 0, 0),       loadOf(NoLoad, 5e-6, 1e-6, 0, 0),
        loadOf(NoLoad, 0, 1e-6, 2e-6, 0), loadOf(4e5, 1e-7, 1e-5, 1e-6, 7), loadOf(2e6, 0, 0, 0, 3),
        loadOf(6e5, 1e-9, 0, 5e-6, 0),    loadOf(NoLoad, 3e-8, 0, 0, 11),
    };
}

/// Eight of any size.
Loads anyLoads(unsigned seed)
{
    std::mt19937 random(seed);
    const auto magnitude = [&random](double least, double most) {
        return std::pow(10.0, std::uniform_real_distribution<double>(least, most)(random));
    };
    const auto maybe = [&random](double value) { return random() % 2 == 0 ? value : 0; };
    Loads result;
    for (int i = 0; i < 8; ++i) {
        const double ohm = magnitude(3, 9);
        const double farad = magnitude(-12, -4);
        const double leakage = magnitude(-9, -2);
        const double drift = magnitude(-9, -4);
        const double interval = magnitude(-1, 2);
        result.push_back(loadOf(random() % 4 == 0 ? NoLoad : ohm, maybe(farad), maybe(leakage), maybe(drift),
                                maybe(maybe(interval))));
    }
    return result;
}

ControllerLayout controllerWith(const Loads &loads)
{
    ModuleLayout module = moduleOf({}, 0);
    module.measurement.voltageNoise = 0.5;
    module.measurement.voltageOffset = 3; // above the limit when it is at it
    module.loads = loads;
    CrateLayout crate;
    crate.address = 1000;
    crate.modules = {module, module};
    crate.modules[1].address = 4;
    LineLayout line;
    line.crates = {crate};
    ControllerLayout controller;
    controller.connectionName = QStringLiteral("local");
    controller.lines = {line};
    return controller;
}

constexpr int Channels = 16; // of the two modules
constexpr double Duration = 1000; // s

ObjectAddress place(int channel)
{
    return {OrbItemId::Channel, 0, channel < 8 ? 3u : 4u, channel % 8};
}

Deeds deeds(unsigned seed, int count)
{
    std::mt19937 random(seed);
    const auto upTo = [&random](double most) {
        return std::uniform_real_distribution<double>(0, most)(random);
    };
    const auto number = [](double value) { return QByteArray::number(value, 'g', 6); };
    constexpr FaultKind Kinds[] = {FaultKind::Spark, FaultKind::Short, FaultKind::OpenLoad, FaultKind::Leak,
                                   FaultKind::ExternalInhibit};
    Deeds result;
    for (int channel = 0; channel < Channels; ++channel) {
        result.push_back({upTo(1), channel, "Control.voltageSet", number(upTo(Nominal)), {}, true});
        result.push_back({upTo(1) + 1, channel, "Control.on", "1", {}, true});
    }
    for (int i = 0; i < count; ++i) {
        Deed deed;
        deed.at = upTo(Duration * 0.9);
        deed.channel = static_cast<int>(random() % Channels);
        switch (random() % 10) {
        case 0:
        case 1:
            deed.item = "Control.voltageSet";
            deed.value = number(upTo(Nominal));
            break;
        case 2:
            deed.item = "Control.currentSet";
            deed.value = number(upTo(NominalCurrent));
            break;
        case 3:
            deed.item = "Control.on";
            deed.value = random() % 3 == 0 ? "0" : "1";
            break;
        case 4:
            deed.item = "Setup.delayedTripAction";
            deed.value = QByteArray::number(int(random() % 5));
            break;
        case 5:
            deed.item = "Control.voltageBounds";
            deed.value = number(upTo(50));
            break;
        case 6:
            deed.item = "Control.clearAll";
            deed.value = "1";
            break;
        case 7:
            deed.item = "Control.voltageRampspeedDown";
            deed.value = number(1 + upTo(1000));
            break;
        default:
            deed.fault.kind = Kinds[random() % 5];
            deed.fault.object = place(deed.channel);
            deed.fault.amount = deed.fault.kind == FaultKind::Leak ? upTo(0.006) : 1 + upTo(3);
            deed.begins = random() % 2 == 0;
        }
        result.push_back(deed);
    }
    std::stable_sort(result.begin(), result.end(), [](const Deed &a, const Deed &b) { return a.at < b.at; });
    return result;
}

/// Carries out the deeds and looks in between, `step` apart; the journal's lines.
QStringList journalOf(const Deeds &all, double step, quint32 seed = 1, bool readsToo = false,
                      const Loads &loads = mixedLoads())
{
    PlantRun run(seed);
    Controller controller(controllerWith(loads), run);
    const ConnectionView view{QStringLiteral("local"), QString(), QString(), 1};
    const ItemDefinition &measured = *channelItems().find(QStringLiteral("Status.voltageMeasure"));
    std::mt19937 random(4711);
    QStringList lines;
    quint64 next = 0;
    const auto pull = [&] {
        const QVector<JournalEntry> entries = run.journal.from(next, 1000000);
        for (const JournalEntry &entry : entries) {
            lines << journalLine(entry);
            next = entry.number + 1;
        }
    };
    qint64 steps = 1;
    const auto lookUntil = [&](double time) {
        for (; double(steps) * step <= time; ++steps) {
            run.queue.runUntil(double(steps) * step);
            if (readsToo)
                controller.read(place(static_cast<int>(random() % Channels)), measured, view,
                                double(steps) * step);
        }
        pull();
    };
    for (const Deed &deed : all) {
        lookUntil(deed.at);
        run.queue.runUntil(deed.at);
        if (deed.item.isEmpty()) {
            controller.applyFault(deed.fault, deed.begins, deed.at);
            continue;
        }
        const ItemDefinition &item = *channelItems().find(QString::fromLatin1(deed.item));
        controller.write(place(deed.channel), item, {deed.value.toDouble(), {}}, deed.at);
    }
    lookUntil(Duration);
    run.queue.runUntil(Duration);
    pull();
    return lines;
}

} // namespace

void TestPlantSteps::oneJumpIsAMillionSteps()
{
    // All that happens after the first seconds, happens by itself.
    Deeds few = deeds(3, 0);
    Fault leak;
    leak.kind = FaultKind::Leak;
    leak.amount = 0.003;
    leak.object = place(1);
    few.push_back({3, 1, {}, {}, leak, true});
    const QStringList jumped = journalOf(few, Duration);
    QVERIFY2(jumped.size() > 100, qPrintable(QString::number(jumped.size())));
    QCOMPARE(journalOf(few, Duration / 1000000), jumped);
}

void TestPlantSteps::anybodyMayLook_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 20; ++seed)
        QTest::addRow("deeds %u", seed) << seed;
}

void TestPlantSteps::anybodyMayLook()
{
    QFETCH(unsigned, seed);
    const Deeds all = deeds(seed, 400);
    const QStringList undisturbed = journalOf(all, Duration);
    QVERIFY(undisturbed.size() > 300);
    // Nothing goes back and forth for ever.
    QVERIFY2(undisturbed.size() < 50000, qPrintable(QString::number(undisturbed.size())));
    QCOMPARE(journalOf(all, 0.0137, 1, true), undisturbed);
    QCOMPARE(journalOf(all, 3.7, 1, true), undisturbed);
}

void TestPlantSteps::anyLoad_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 40; ++seed)
        QTest::addRow("loads %u", seed) << seed;
}

void TestPlantSteps::anyLoad()
{
    QFETCH(unsigned, seed);
    const Loads loads = anyLoads(seed);
    const Deeds all = deeds(seed, 300);
    const QStringList undisturbed = journalOf(all, Duration, seed, false, loads);
    QVERIFY(undisturbed.size() > 200);
    QVERIFY2(undisturbed.size() < 20000, qPrintable(QString::number(undisturbed.size())));
    QCOMPARE(undisturbed.filter(QStringLiteral("nan")), QStringList());
    QCOMPARE(journalOf(all, 0.173, seed, true, loads), undisturbed);
}

void TestPlantSteps::entriesAreInTheOrderOfTheirTimes()
{
    const QStringList lines = journalOf(deeds(5, 400), Duration);
    double before = 0;
    for (const QString &line : lines) {
        const double time = line.section(QLatin1Char(' '), 0, 0).toDouble();
        QVERIFY2(time >= before, qPrintable(line));
        before = time;
    }
}

void TestPlantSteps::anotherSeedIsAnotherCourse()
{
    const Deeds all = deeds(1, 0);
    QCOMPARE(journalOf(all, Duration, 7), journalOf(all, Duration, 7));
    QVERIFY(journalOf(all, Duration, 7) != journalOf(all, Duration, 8));
}

void TestPlantSteps::scheduledFaultsWithoutAnybodyLooking()
{
    PlantLayout layout;
    layout.controllers = {controllerWith(mixedLoads())};
    const auto schedule = [&layout](double at, FaultKind kind, OrbItemId::Type level, double duration,
                                    double amount) {
        const bool isChannel = level == OrbItemId::Channel;
        const ObjectAddress object{level, 0, level == OrbItemId::Crate ? 1000u : 3u, isChannel ? 0 : -1};
        layout.faults.push_back({at, {kind, QStringLiteral("local"), object, duration, amount}});
    };
    schedule(20, FaultKind::Spark, OrbItemId::Channel, 0, 3);
    schedule(30, FaultKind::Short, OrbItemId::Channel, 4, 0);
    schedule(32, FaultKind::Leak, OrbItemId::Channel, 10, 0.003);
    schedule(50, FaultKind::Overheating, OrbItemId::Module, 5, 0);
    schedule(60, FaultKind::MainsFailure, OrbItemId::Crate, 5, 0);
    const auto journalWithSteps = [&layout](int steps) {
        const auto clock = std::make_shared<SteppedClock>();
        SimulatedService service(clock, layout);
        OrbItemId id(OrbItemId::Channel);
        id.connectionName = QStringLiteral("local");
        id.address = 3;
        for (id.channel = 0; id.channel < 8; ++id.channel) {
            id.itemName = QStringLiteral("Control.voltageSet");
            service.writeItem(id, QStringLiteral("1500"));
            id.itemName = QStringLiteral("Control.on");
            service.writeItem(id, QStringLiteral("1"));
        }
        QStringList lines;
        quint64 next = 0;
        for (int step = 0; step < steps; ++step) {
            clock->advance(std::chrono::nanoseconds(100000000000LL / steps));
            const QVector<JournalEntry> entries = service.journal(next);
            for (const JournalEntry &entry : entries)
                lines << journalLine(entry);
            next += quint64(entries.size());
        }
        return lines;
    };
    const QStringList inOneJump = journalWithSteps(1);
    QVERIFY(inOneJump.size() > 100);
    QCOMPARE(inOneJump.filter(QStringLiteral("fault begins")).size(), 5);
    QCOMPARE(inOneJump.filter(QStringLiteral("fault ends")).size(), 5);
    QCOMPARE(journalWithSteps(100000), inOneJump);
}

void TestPlantSteps::restCostsNothing()
{
    PlantRun run;
    Controller controller(PlantLayout::rehearsal().controllers.front(), run);
    QVERIFY(run.queue.isEmpty());
    const ItemDefinition &voltageSet = *channelItems().find(QStringLiteral("Control.voltageSet"));
    const ItemDefinition &on = *channelItems().find(QStringLiteral("Control.on"));
    const ObjectAddress channel{OrbItemId::Channel, 0, 0, 0};
    QCOMPARE(controller.write(channel, voltageSet, {600, {}}, 1), TarnResult::Success);
    QCOMPARE(controller.write(channel, on, {1, {}}, 1), TarnResult::Success);
    QCOMPARE(run.queue.size(), std::size_t(1));
    run.queue.runUntil(2.01);
    QVERIFY(run.queue.isEmpty()); // on, and at rest
}

QTEST_GUILESS_MAIN(TestPlantSteps)
#include "tst_plant_steps.moc"
