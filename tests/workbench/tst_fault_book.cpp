#include "workbench/simulator/fault_book.h"

#include "workbench/simulator/simulated_service.h"
#include "workbench/simulator/stepped_clock.h"

#include <QtTest>

#include <chrono>
#include <cmath>
#include <memory>

using namespace simulator;

Q_DECLARE_METATYPE(FaultKind)

/// What goes wrong by schedule and by hand, each at its time, and what it does.
class TestFaultBook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void byScheduleAndByHand_data();
    void byScheduleAndByHand();
    void consequences_data();
    void consequences();
    void refused_data();
    void refused();
    void mendingWhatIsNotThere();
    void causedAgain();
    void sparksEndByThemselves();
    void sparksBySchedule();
    void scheduleInOneJump();
    void ofAnObjectThatDoesNotExist();
};

namespace
{

const QString Local = QStringLiteral("local");

/// The rehearsal plant with the faults, in a time that the test steps. Channel 0.0.0 is on at 3000 V from 10 s on.
class FaultBench
{
public:
    explicit FaultBench(const std::vector<ScheduledFault> &faults = {}) : service(clock, layoutWith(faults))
    {
        isReady = set(Channel, "Control.voltageSet", "3000") && set(Channel, "Control.on", "1");
        advanceTo(10);
    }

    static PlantLayout layoutWith(const std::vector<ScheduledFault> &faults)
    {
        PlantLayout result = PlantLayout::rehearsal();
        result.faults = faults;
        return result;
    }
    static OrbItemId id(const ObjectAddress &object, const char *item)
    {
        OrbItemId result(object.level);
        result.connectionName = Local;
        result.line = object.line;
        result.address = object.address;
        result.channel = object.channel;
        result.itemName = QString::fromLatin1(item);
        return result;
    }
    QString text(const ObjectAddress &object, const char *item)
    {
        OrbItemReading reading;
        return service.readItem(id(object, item), reading) == TarnResult::Success ? reading.value
                                                                                  : QStringLiteral("?");
    }
    bool isTrue(const ObjectAddress &object, const char *item)
    {
        return text(object, item) == QLatin1String("true");
    }
    bool set(const ObjectAddress &object, const char *item, const char *value)
    {
        return service.writeItem(id(object, item), QString::fromLatin1(value)) == TarnResult::Success;
    }
    void advanceTo(double seconds)
    {
        const std::chrono::nanoseconds step(qRound64((seconds - clock->now()) * 1e9));
        clock->advance(step);
    }
    /// When the last such entry was entered; below 0 for never.
    double timeOf(JournalEntry::Kind kind, const QString &text)
    {
        double result = -1;
        const QVector<JournalEntry> entries = service.journal(0);
        for (const JournalEntry &entry : entries) {
            if (entry.kind == kind && (entry.text == text || entry.item == text))
                result = entry.time;
        }
        return result;
    }

    static constexpr ObjectAddress Channel{OrbItemId::Channel, 0, 0, 0};
    static constexpr ObjectAddress Module{OrbItemId::Module, 0, 0, -1};
    static constexpr ObjectAddress Crate{OrbItemId::Crate, 0, 1000, -1};

    static ObjectAddress objectOf(FaultKind kind)
    {
        switch (faultLevel(kind)) {
        case OrbItemId::Crate:
            return Crate;
        case OrbItemId::Module:
            return Module;
        default:
            return Channel;
        }
    }

    const std::shared_ptr<SteppedClock> clock = std::make_shared<SteppedClock>();
    SimulatedService service;
    bool isReady = false;
};

Fault faultOf(FaultKind kind, double duration = 0, double amount = 0)
{
    return {kind, Local, FaultBench::objectOf(kind), duration, amount};
}

} // namespace

void TestFaultBook::byScheduleAndByHand_data()
{
    QTest::addColumn<FaultKind>("kind");
    QTest::addColumn<double>("amount");
    QTest::addColumn<QByteArray>("status"); // an item of the object
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("meanwhile");
    QTest::addColumn<QByteArray>("event"); // remembered afterwards; empty for none
    QTest::addColumn<QByteArray>("error");
    const auto row = [](FaultKind kind, double amount, const char *status, const char *before,
                        const char *meanwhile, const char *event, const char *error) {
        QTest::newRow(qPrintable(faultName(kind)))
            << kind << amount << QByteArray(status) << QString::fromLatin1(before)
            << QString::fromLatin1(meanwhile) << QByteArray(event) << QByteArray(error);
    };
    row(FaultKind::Short, 0, "Status.voltageMeasure", "3000", "0", "Event.constantCurrent", "");
    row(FaultKind::OpenLoad, 0, "Status.currentMeasure", "0.0002", "0", "", "");
    row(FaultKind::Leak, 0.0003, "Status.currentMeasure", "0.0002", "0.0005", "", "");
    row(FaultKind::ExternalInhibit, 0, "Status.externalInhibitActive", "false", "true",
        "Event.externalInhibitActive", "Error.externalInhibitActive");
    row(FaultKind::SafetyLoopOpen, 0, "Status.safetyLoopClosed", "true", "false", "Event.safetyLoopWasOpened",
        "Error.safetyLoopWasOpened");
    row(FaultKind::SupplyFailure, 0, "Status.supplyGood", "true", "false", "Event.supplyNotGood",
        "Error.supplyNotGood");
    row(FaultKind::Overheating, 0, "Status.temperatureGood", "true", "false", "Event.temperatureNotGood",
        "Error.temperatureNotGood");
    row(FaultKind::NeedService, 0, "Status.needService", "false", "true", "", "Error.needService");
    row(FaultKind::MainsFailure, 0, "Status.mainsGood", "true", "false", "Event.mainsNotGood",
        "Error.mainsNotGood");
    row(FaultKind::CrateSupplyFailure, 0, "Status.supplyGood", "true", "false", "Event.supplyNotGood",
        "Error.supplyNotGood");
    row(FaultKind::BatteryFailure, 0, "Status.batteryGood", "true", "false", "Event.batteryNotGood",
        "Error.batteryNotGood");
    row(FaultKind::CrateOverheating, 0, "Status.temperatureGood", "true", "false", "Event.temperatureNotGood",
        "Error.temperatureNotGood");
}

void TestFaultBook::byScheduleAndByHand()
{
    QFETCH(FaultKind, kind);
    QFETCH(double, amount);
    QFETCH(QByteArray, status);
    QFETCH(QString, before);
    QFETCH(QString, meanwhile);
    QFETCH(QByteArray, event);
    QFETCH(QByteArray, error);
    const ObjectAddress object = FaultBench::objectOf(kind);
    for (const bool bySchedule : {true, false}) {
        std::vector<ScheduledFault> schedule;
        if (bySchedule)
            schedule.push_back({20, faultOf(kind, 5, amount)});
        FaultBench bench(schedule);
        QVERIFY(bench.isReady);
        bench.advanceTo(19.999);
        QCOMPARE(bench.text(object, status.constData()), before);
        bench.advanceTo(20);
        if (!bySchedule)
            QCOMPARE(bench.service.cause(faultOf(kind, 5, amount)), TarnResult::Success);
        QCOMPARE(bench.text(object, status.constData()), meanwhile);
        bench.advanceTo(24.999);
        QCOMPARE(bench.text(object, status.constData()), meanwhile);
        bench.advanceTo(25.001);
        QCOMPARE(bench.text(object, status.constData()), before);
        QCOMPARE(bench.timeOf(JournalEntry::FaultBegins, faultName(kind)), 20.0);
        QCOMPARE(bench.timeOf(JournalEntry::FaultEnds, faultName(kind)), 25.0);
        if (!event.isEmpty()) {
            QVERIFY(bench.isTrue(object, event.constData()));
            QCOMPARE(bench.timeOf(JournalEntry::Event, QString::fromLatin1(event)), 20.0);
        }
        if (!error.isEmpty()) {
            QVERIFY(bench.isTrue(object, error.constData()));
            QCOMPARE(bench.timeOf(JournalEntry::Error, QString::fromLatin1(error)), 20.0);
            // Gone, and so it can be cleared.
            QVERIFY(bench.set(object, "Control.clearAll", "1"));
            QVERIFY(!bench.isTrue(object, error.constData()));
        }
    }
}

void TestFaultBook::consequences_data()
{
    QTest::addColumn<FaultKind>("kind");
    QTest::addColumn<bool>("channelStaysOn");
    QTest::addColumn<bool>("moduleIsAlive");
    QTest::addColumn<bool>("cratePower");
    QTest::addColumn<QString>("moduleState");
    QTest::addColumn<QString>("crateState");
    const auto row = [](FaultKind kind, bool on, bool alive, bool power, const char *module,
                        const char *crate) {
        QTest::newRow(qPrintable(faultName(kind)))
            << kind << on << alive << power << QString::fromLatin1(module) << QString::fromLatin1(crate);
    };
    row(FaultKind::SafetyLoopOpen, false, true, true, "error", "error");
    row(FaultKind::SupplyFailure, false, true, true, "error", "error");
    row(FaultKind::Overheating, false, true, true, "error", "error");
    row(FaultKind::NeedService, true, true, true, "error", "error");
    row(FaultKind::MainsFailure, false, false, true, "disabled", "error");
    row(FaultKind::CrateSupplyFailure, false, false, true, "disabled", "error");
    row(FaultKind::BatteryFailure, true, true, true, "ok", "error");
    row(FaultKind::CrateOverheating, false, false, false, "disabled", "disabled");
}

void TestFaultBook::consequences()
{
    QFETCH(FaultKind, kind);
    QFETCH(bool, channelStaysOn);
    QFETCH(bool, moduleIsAlive);
    QFETCH(bool, cratePower);
    FaultBench bench;
    QCOMPARE(bench.service.cause(faultOf(kind)), TarnResult::Success);
    QCOMPARE(bench.isTrue(FaultBench::Channel, "Control.on"), channelStaysOn);
    // Without a ramp.
    QCOMPARE(bench.text(FaultBench::Channel, "Status.voltageMeasure"),
             channelStaysOn ? QStringLiteral("3000") : QStringLiteral("0"));
    QCOMPARE(bench.set(FaultBench::Channel, "Control.on", "1"), channelStaysOn);
    QCOMPARE(bench.isTrue(FaultBench::Module, "Status.isAlive"), moduleIsAlive);
    QCOMPARE(bench.isTrue(FaultBench::Module, "Status.interlockOut"), !channelStaysOn && moduleIsAlive);
    QCOMPARE(bench.isTrue(FaultBench::Crate, "Status.power"), cratePower);
    QTEST(bench.text(FaultBench::Module, "Status.runningState"), "moduleState");
    QTEST(bench.text(FaultBench::Crate, "Status.runningState"), "crateState");
    QVERIFY(bench.isTrue(FaultBench::Crate, "Status.isAlive"));
    QCOMPARE(bench.text({OrbItemId::System, 0, 0, -1}, "Status.runningStateOrb"), QStringLiteral("error"));
    QCOMPARE(bench.set(FaultBench::Crate, "Control.power", "1"), cratePower);

    bench.advanceTo(20);
    QCOMPARE(bench.service.mend(faultOf(kind)), TarnResult::Success);
    QVERIFY(bench.set(FaultBench::Crate, "Control.power", "1"));
    QCOMPARE(bench.isTrue(FaultBench::Channel, "Control.on"), channelStaysOn); // nothing comes on by itself
    QVERIFY(bench.set(FaultBench::Crate, "Control.clearAll", "1"));
    QVERIFY(bench.set(FaultBench::Channel, "Control.on", "1"));
    bench.advanceTo(40);
    QCOMPARE(bench.text(FaultBench::Channel, "Status.voltageMeasure"), QStringLiteral("3000"));
    QCOMPARE(bench.text(FaultBench::Crate, "Status.runningState"), QStringLiteral("ok"));
}

void TestFaultBook::refused_data()
{
    QTest::addColumn<FaultKind>("kind");
    QTest::addColumn<int>("level");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("amount");
    QTest::addColumn<int>("result");
    const auto row = [](const char *name, FaultKind kind, OrbItemId::Type level, quint32 address,
                        double duration, double amount, TarnResult result) {
        QTest::newRow(name) << kind << int(level) << address << duration << amount << int(result);
    };
    const double nan = std::nan("");
    row("short", FaultKind::Short, OrbItemId::Channel, 0, 0, 0, TarnResult::Success);
    row("no such module", FaultKind::Short, OrbItemId::Channel, 99, 0, 0, TarnResult::NoData);
    row("of a module", FaultKind::Short, OrbItemId::Module, 0, 0, 0, TarnResult::Failed);
    row("of a channel", FaultKind::SafetyLoopOpen, OrbItemId::Channel, 0, 0, 0, TarnResult::Failed);
    row("of a module, not a crate", FaultKind::MainsFailure, OrbItemId::Module, 0, 0, 0, TarnResult::Failed);
    row("negative duration", FaultKind::Short, OrbItemId::Channel, 0, -1, 0, TarnResult::Failed);
    row("duration that is no number", FaultKind::Short, OrbItemId::Channel, 0, nan, 0, TarnResult::Failed);
    row("leak", FaultKind::Leak, OrbItemId::Channel, 0, 0, 0.001, TarnResult::Success);
    row("leak of nothing", FaultKind::Leak, OrbItemId::Channel, 0, 0, 0, TarnResult::Failed);
    row("leak of too much", FaultKind::Leak, OrbItemId::Channel, 0, 0, 1001, TarnResult::Failed);
    row("leak that is no number", FaultKind::Leak, OrbItemId::Channel, 0, 0, nan, TarnResult::Failed);
    row("too many sparks", FaultKind::Spark, OrbItemId::Channel, 0, 0, 10001, TarnResult::Failed);
    row("colder", FaultKind::Overheating, OrbItemId::Module, 0, 0, -5, TarnResult::Failed);
    row("melting", FaultKind::Overheating, OrbItemId::Module, 0, 0, 1001, TarnResult::Failed);
}

void TestFaultBook::refused()
{
    QFETCH(FaultKind, kind);
    QFETCH(int, level);
    QFETCH(quint32, address);
    QFETCH(double, duration);
    QFETCH(double, amount);
    FaultBench bench;
    Fault fault;
    fault.kind = kind;
    fault.controller = Local;
    fault.object = {OrbItemId::Type(level), 0, address, level == OrbItemId::Channel ? 0 : -1};
    fault.duration = duration;
    fault.amount = amount;
    const TarnResult result = bench.service.cause(fault);
    QTEST(int(result), "result");
    QCOMPARE(bench.timeOf(JournalEntry::FaultBegins, faultName(kind)) >= 0, result == TarnResult::Success);
    fault.controller = QStringLiteral("nobody");
    QVERIFY(bench.service.cause(fault) != TarnResult::Success);
}

void TestFaultBook::mendingWhatIsNotThere()
{
    FaultBench bench;
    QCOMPARE(bench.service.mend(faultOf(FaultKind::Short)), TarnResult::NoData);
    QCOMPARE(bench.service.cause(faultOf(FaultKind::Short)), TarnResult::Success);
    QCOMPARE(bench.service.mend(faultOf(FaultKind::OpenLoad)), TarnResult::NoData);
    Fault byText = faultOf(FaultKind::Short);
    byText.controller = QStringLiteral("Rehearsal controller");
    QCOMPARE(bench.service.mend(byText), TarnResult::Success);
    QCOMPARE(bench.service.mend(byText), TarnResult::NoData);
    QCOMPARE(bench.text(FaultBench::Channel, "Status.voltageMeasure"), QStringLiteral("3000"));
}

void TestFaultBook::causedAgain()
{
    FaultBench bench;
    QCOMPARE(bench.service.cause(faultOf(FaultKind::Leak, 5, 0.0001)), TarnResult::Success);
    bench.advanceTo(12);
    QCOMPARE(bench.service.cause(faultOf(FaultKind::Leak, 20, 0.0003)), TarnResult::Success);
    QCOMPARE(bench.text(FaultBench::Channel, "Status.currentMeasure"), QStringLiteral("0.0005"));
    bench.advanceTo(31.9); // the first would have been over long since
    QCOMPARE(bench.text(FaultBench::Channel, "Status.currentMeasure"), QStringLiteral("0.0005"));
    bench.advanceTo(32.1);
    QCOMPARE(bench.text(FaultBench::Channel, "Status.currentMeasure"), QStringLiteral("0.0002"));
    QCOMPARE(bench.timeOf(JournalEntry::FaultEnds, faultName(FaultKind::Leak)), 32.0);
}

void TestFaultBook::sparksEndByThemselves()
{
    FaultBench bench;
    QCOMPARE(bench.service.cause(faultOf(FaultKind::Spark, 0, 3)), TarnResult::Success);
    QVERIFY(bench.isTrue(FaultBench::Channel, "Status.arc"));
    bench.advanceTo(11);
    QVERIFY(!bench.isTrue(FaultBench::Channel, "Status.arc"));
    QVERIFY(bench.isTrue(FaultBench::Channel, "Event.arc"));
    QCOMPARE(bench.text(FaultBench::Channel, "Status.voltageMeasure"), QStringLiteral("3000"));
    QVERIFY(std::abs(bench.timeOf(JournalEntry::FaultEnds, faultName(FaultKind::Spark)) - 10.025) < 1e-9);
    QCOMPARE(bench.service.mend(faultOf(FaultKind::Spark)), TarnResult::NoData);
}

void TestFaultBook::sparksBySchedule()
{
    FaultBench bench({{20, faultOf(FaultKind::Spark, 0, 3)}});
    const auto isArcingAt = [&bench](double seconds) {
        bench.advanceTo(seconds);
        return bench.isTrue(FaultBench::Channel, "Status.arc");
    };
    QVERIFY(!isArcingAt(19.9999));
    for (int spark = 0; spark < 3; ++spark) {
        QVERIFY(isArcingAt(20.00005 + 0.01 * spark));
        QVERIFY(isArcingAt(20.00495 + 0.01 * spark));
        QVERIFY(!isArcingAt(20.00505 + 0.01 * spark));
    }
    QVERIFY(!isArcingAt(20.03005));
    QCOMPARE(bench.timeOf(JournalEntry::FaultBegins, faultName(FaultKind::Spark)), 20.0);
    QVERIFY(std::abs(bench.timeOf(JournalEntry::FaultEnds, faultName(FaultKind::Spark)) - 20.025) < 1e-9);
}

void TestFaultBook::scheduleInOneJump()
{
    // Two that overlap, out of order, and long over before somebody looks.
    FaultBench bench({{50, faultOf(FaultKind::ExternalInhibit, 10)}, {40, faultOf(FaultKind::Short, 15)}});
    bench.advanceTo(1000);
    QCOMPARE(bench.timeOf(JournalEntry::FaultBegins, faultName(FaultKind::Short)), 40.0);
    QCOMPARE(bench.timeOf(JournalEntry::Event, QStringLiteral("Event.currentTrip")), 40.1);
    QCOMPARE(bench.timeOf(JournalEntry::Event, QStringLiteral("Event.externalInhibitActive")), 50.0);
    QCOMPARE(bench.timeOf(JournalEntry::FaultEnds, faultName(FaultKind::Short)), 55.0);
    QCOMPARE(bench.timeOf(JournalEntry::FaultEnds, faultName(FaultKind::ExternalInhibit)), 60.0);
    QCOMPARE(bench.text(FaultBench::Channel, "Status.voltageMeasure"), QStringLiteral("3000"));
}

void TestFaultBook::ofAnObjectThatDoesNotExist()
{
    Fault elsewhere = faultOf(FaultKind::Short);
    elsewhere.object.address = 77;
    Fault nowhere = faultOf(FaultKind::Short);
    nowhere.controller = QStringLiteral("nobody");
    FaultBench bench({{20, elsewhere}, {20, nowhere}, {30, faultOf(FaultKind::Short)}});
    bench.advanceTo(40);
    QCOMPARE(bench.timeOf(JournalEntry::FaultBegins, faultName(FaultKind::Short)), 30.0);
}

QTEST_GUILESS_MAIN(TestFaultBook)
#include "tst_fault_book.moc"
