#include "tests/workbench/channel_bench.h"
#include "tests/workbench/controller_bench.h"

#include <QtTest>

using namespace simulator;

Q_DECLARE_METATYPE(FaultKind)

/// What the journal says of channels that are switched off, and of what happens again.
class TestSwitchedOff : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void byItsOwnProtection_data();
    void byItsOwnProtection();
    void onItsWayDown();
    void notWithoutAction();
    void notWhatWasOff();
    void notByAWriteToIt();
    void withItsModule_data();
    void withItsModule();
    void byAFaultOfTheModule_data();
    void byAFaultOfTheModule();
    void withItsCrate_data();
    void withItsCrate();
    void withItsController();
    void everyRampEnds();
    void everySpark();
    void everyTrip();
    void everyOpeningOfTheSafetyLoop();
    void everyFailureOfTheMains();
    void clearingIsNoOccurrence();
};

namespace
{

/// Of each channel that was switched off: its address, the item that says why, and whose that is.
QStringList switchedOff(const PlantRun &run)
{
    QStringList result;
    const QVector<JournalEntry> entries = run.journal.from(0, 1000000);
    for (const JournalEntry &entry : entries) {
        if (entry.kind == JournalEntry::SwitchedOff)
            result << QStringList{addressText(entry.object), entry.item, entry.text}
                          .join(QLatin1Char(' '))
                          .trimmed();
    }
    return result;
}

/// Three channels, of which the first and the second are on.
class ModuleBench : public ChannelBench
{
public:
    ModuleBench() : ChannelBench(moduleOf(resistiveLoad(Load), 3))
    {
        isReady = set("Control.voltageSet", "500", 1) && set("Control.on", "1", 1) && rampedTo("1000");
    }

    bool isReady = false;
};

/// A channel of a crate at 3000 V.
class CrateBench : public ControllerBench
{
public:
    CrateBench()
    {
        isReady = ramp(Channel00, "3000");
        now += 60;
        run.queue.runUntil(now);
    }

    void fault(FaultKind kind, bool begins)
    {
        Fault what;
        what.kind = kind;
        what.object = Crate1000;
        controller.applyFault(what, begins, now);
    }

    bool isReady = false;
};

} // namespace

void TestSwitchedOff::byItsOwnProtection_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<FaultKind>("fault");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const char *item, const char *action, FaultKind fault,
                        const char *why) {
        QTest::newRow(name) << QByteArray(item) << QByteArray(action) << fault
                            << QStringList{QStringLiteral("0.3.0 ") + QLatin1String(why)};
    };
    row("trip, with ramp", "Setup.delayedTripAction", "1", FaultKind::Short, "Error.currentTrip");
    row("trip, without ramp", "Setup.delayedTripAction", "2", FaultKind::Short, "Error.currentTrip");
    row("inhibit, with ramp", "Setup.externalInhibitAction", "1", FaultKind::ExternalInhibit,
        "Error.externalInhibitActive");
    row("inhibit, without ramp", "Setup.externalInhibitAction", "2", FaultKind::ExternalInhibit,
        "Error.externalInhibitActive");
    row("five sparks", "Setup.delayedTripAction", "0", FaultKind::Spark, "Error.arc");
}

void TestSwitchedOff::byItsOwnProtection()
{
    QFETCH(QByteArray, item);
    QFETCH(QByteArray, action);
    QFETCH(FaultKind, fault);
    ModuleBench bench;
    QVERIFY(bench.isReady);
    QVERIFY(bench.set(item.constData(), action.constData()));
    bench.fault(fault, true, 5);
    bench.advance(1);
    QVERIFY(!bench.isTrue("Control.on"));
    QTEST(switchedOff(bench.run), "expected");
}

void TestSwitchedOff::onItsWayDown()
{
    ModuleBench bench;
    QVERIFY(bench.set("Control.on", "0"));
    bench.advance(1);
    bench.fault(FaultKind::SafetyLoopOpen, true);
    QCOMPARE(switchedOff(bench.run).value(0), QStringLiteral("0.3.0 Error.safetyLoopWasOpened module 0.3"));
}

void TestSwitchedOff::notWithoutAction()
{
    ModuleBench bench;
    bench.fault(FaultKind::ExternalInhibit, true);
    bench.fault(FaultKind::Short, true);
    bench.advance(1);
    QVERIFY(bench.isTrue("Error.externalInhibitActive"));
    QVERIFY(bench.isTrue("Error.currentTrip"));
    QCOMPARE(switchedOff(bench.run), QStringList());
}

void TestSwitchedOff::notWhatWasOff()
{
    ChannelBench bench;
    bench.fault(FaultKind::SafetyLoopOpen, true);
    QCOMPARE(switchedOff(bench.run), QStringList());
}

void TestSwitchedOff::notByAWriteToIt()
{
    ModuleBench bench;
    QVERIFY(bench.set("Control.emergency", "1"));
    QVERIFY(bench.set("Control.on", "0", 1));
    QVERIFY(!bench.isTrue("Control.on"));
    QVERIFY(!bench.isTrue("Control.on", 1));
    QCOMPARE(switchedOff(bench.run), QStringList());
}

void TestSwitchedOff::withItsModule_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<FaultKind>("fault");
    QTest::addColumn<QString>("why");
    QTest::newRow("trip") << QByteArray("Setup.delayedTripAction") << FaultKind::Short
                          << QStringLiteral("Error.currentTrip");
    QTest::newRow("inhibit") << QByteArray("Setup.externalInhibitAction") << FaultKind::ExternalInhibit
                             << QStringLiteral("Error.externalInhibitActive");
}

void TestSwitchedOff::withItsModule()
{
    QFETCH(QByteArray, item);
    QFETCH(FaultKind, fault);
    QFETCH(QString, why);
    ModuleBench bench;
    QVERIFY(bench.set(item.constData(), "3"));
    bench.fault(fault, true);
    bench.advance(1);
    QVERIFY(!bench.isTrue("Control.on", 1));
    QCOMPARE(switchedOff(bench.run),
             (QStringList{QStringLiteral("0.3.0 ") + why,
                          QStringLiteral("0.3.1 ") + why + QStringLiteral(" channel 0.3.0")}));
}

void TestSwitchedOff::byAFaultOfTheModule_data()
{
    QTest::addColumn<FaultKind>("fault");
    QTest::addColumn<QString>("why");
    QTest::newRow("safety loop") << FaultKind::SafetyLoopOpen << QStringLiteral("Error.safetyLoopWasOpened");
    QTest::newRow("supply") << FaultKind::SupplyFailure << QStringLiteral("Error.supplyNotGood");
    QTest::newRow("temperature") << FaultKind::Overheating << QStringLiteral("Error.temperatureNotGood");
}

void TestSwitchedOff::byAFaultOfTheModule()
{
    QFETCH(FaultKind, fault);
    QFETCH(QString, why);
    ModuleBench bench;
    bench.fault(fault, true);
    const QString cause = why + QStringLiteral(" module 0.3");
    QCOMPARE(switchedOff(bench.run),
             (QStringList{QStringLiteral("0.3.0 ") + cause, QStringLiteral("0.3.1 ") + cause}));
}

void TestSwitchedOff::withItsCrate_data()
{
    QTest::addColumn<FaultKind>("fault");
    QTest::addColumn<QString>("why");
    QTest::newRow("mains") << FaultKind::MainsFailure << QStringLiteral("Error.mainsNotGood");
    QTest::newRow("supply") << FaultKind::CrateSupplyFailure << QStringLiteral("Error.supplyNotGood");
    QTest::newRow("temperature") << FaultKind::CrateOverheating << QStringLiteral("Error.temperatureNotGood");
    QTest::newRow("somebody") << FaultKind::BatteryFailure << QStringLiteral("Control.power");
}

void TestSwitchedOff::withItsCrate()
{
    QFETCH(FaultKind, fault);
    QFETCH(QString, why);
    CrateBench bench;
    QVERIFY(bench.isReady);
    bench.fault(fault, true);
    if (fault == FaultKind::BatteryFailure)
        QVERIFY(bench.set(Crate1000, "Control.power", "0"));
    QCOMPARE(switchedOff(bench.run), QStringList(QStringLiteral("0.0.0 %1 crate 0.1000").arg(why)));
}

void TestSwitchedOff::withItsController()
{
    CrateBench bench;
    QVERIFY(bench.set(System, "Control.reboot", "1"));
    QCOMPARE(switchedOff(bench.run), QStringList(QStringLiteral("0.0.0 Control.reboot controller")));
}

void TestSwitchedOff::everyRampEnds()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("100"));
    QVERIFY(bench.rampedTo("200"));
    QVERIFY(bench.rampedTo("50"));
    QCOMPARE(bench.entriesOf("Event.endOfRamp"), 3);
    QCOMPARE(bench.entriesOf("Event.voltageRampUp"), 2);
    QCOMPARE(bench.entriesOf("Event.voltageRampDown"), 1);
    QCOMPARE(bench.number("Status.eventCounter"), 4.0); // and constant voltage: what is pending counts once
}

void TestSwitchedOff::everySpark()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    bench.fault(FaultKind::Spark, true, 3);
    bench.advance(1);
    QCOMPARE(bench.entriesOf("Event.arc"), 3);
}

void TestSwitchedOff::everyTrip()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    for (int overload = 0; overload < 2; ++overload) {
        bench.fault(FaultKind::Short, true);
        bench.advance(1);
        bench.fault(FaultKind::Short, false);
        bench.advance(1);
    }
    QCOMPARE(bench.entriesOf("Event.currentTrip"), 2);
    QCOMPARE(bench.entriesOf("Error.currentTrip"), 2);
}

void TestSwitchedOff::everyOpeningOfTheSafetyLoop()
{
    ChannelBench bench;
    for (int opening = 0; opening < 2; ++opening) {
        bench.fault(FaultKind::SafetyLoopOpen, true);
        bench.fault(FaultKind::SupplyFailure, true); // says nothing new of the safety loop
        bench.fault(FaultKind::SupplyFailure, false);
        bench.fault(FaultKind::SafetyLoopOpen, false);
    }
    QCOMPARE(bench.entriesOf("Event.safetyLoopWasOpened"), 2);
    QCOMPARE(bench.entriesOf("Error.safetyLoopWasOpened"), 2);
    QCOMPARE(bench.entriesOf("Error.interlockOut"), 2);
}

void TestSwitchedOff::everyFailureOfTheMains()
{
    CrateBench bench;
    for (int failure = 0; failure < 2; ++failure) {
        bench.fault(FaultKind::MainsFailure, true);
        bench.fault(FaultKind::MainsFailure, false);
    }
    int failures = 0;
    const QVector<JournalEntry> entries = bench.run.journal.from(0, 1000000);
    for (const JournalEntry &entry : entries)
        failures += entry.item == QLatin1String("Error.mainsNotGood") && entry.kind == JournalEntry::Error;
    QCOMPARE(failures, 2);
}

void TestSwitchedOff::clearingIsNoOccurrence()
{
    ChannelBench bench;
    QVERIFY(bench.rampedTo("1000"));
    bench.fault(FaultKind::ExternalInhibit, true);
    bench.fault(FaultKind::SafetyLoopOpen, true);
    bench.write("Control.clearAll", "1");
    bench.setModule("Control.clearAll", "1");
    QVERIFY(bench.isTrue("Error.externalInhibitActive"));
    QCOMPARE(bench.entriesOf("Error.externalInhibitActive"), 1);
    QCOMPARE(bench.entriesOf("Error.safetyLoopWasOpened"), 2); // with the channel that it switched off
}

QTEST_APPLESS_MAIN(TestSwitchedOff)
#include "tst_switched_off.moc"
