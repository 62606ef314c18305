#include "tests/workbench/channel_bench.h"
#include "workbench/simulator/controller.h"
#include "workbench/simulator/plant_journal.h"

#include <QtTest>

#include <algorithm>
#include <random>
#include <vector>

using namespace simulator;

/// A crate with modules and channels to which anything is done: what counts below counts above, and nothing depends on
/// how often somebody looks.
class TestPlantDevices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countersAddUp_data();
    void countersAddUp();
    void anybodyMayLook_data();
    void anybodyMayLook();
};

namespace
{

constexpr ObjectAddress Rack{OrbItemId::Crate, 0, 1000, -1};
constexpr quint32 Modules[] = {3, 4}; // addresses
constexpr int Channels = 3; // of a module
constexpr double Duration = 2000; // s

constexpr ObjectAddress moduleAt(quint32 address)
{
    return {OrbItemId::Module, 0, address, -1};
}

constexpr ObjectAddress channelAt(quint32 module, int channel)
{
    return {OrbItemId::Channel, 0, module, channel};
}

/// What somebody does at a time.
struct Deed
{
    double at = 0; // s
    ObjectAddress object;
    QByteArray item; // empty for a fault
    double value = 0;
    Fault fault = {};
    bool begins = true;
};

ControllerLayout layout()
{
    ModuleLayout module = moduleOf(resistiveLoad(5e5), Channels); // 4 mA, all there is, at 2 kV
    module.measurement.voltageOffset = 3;
    module.loads[1] = capacitiveLoad(1e7, 1e-7);
    module.loads[2].sparkInterval = 40;
    CrateLayout crate;
    crate.address = Rack.address;
    for (const quint32 address : Modules) {
        module.address = address;
        crate.modules.push_back(module);
    }
    LineLayout line;
    line.crates = {crate};
    ControllerLayout result;
    result.connectionName = QStringLiteral("local");
    result.lines = {line};
    return result;
}

class DeedMaker
{
public:
    explicit DeedMaker(unsigned seed) : random(seed) { }

    std::vector<Deed> make(int count)
    {
        std::vector<Deed> result;
        for (int i = 0; i < count; ++i) {
            const bool isFault = random() % 8 == 0;
            Deed deed = isFault ? fault() : write();
            deed.at = upTo(Duration * 0.9);
            result.push_back(deed);
            if (!isFault)
                continue;
            deed.at += upTo(20);
            deed.begins = false;
            result.push_back(deed);
        }
        for (const quint32 module : Modules) {
            for (int channel = 0; channel < Channels; ++channel)
                result.push_back({0, channelAt(module, channel), "Control.voltageSet", upTo(Nominal)});
        }
        std::stable_sort(result.begin(), result.end(),
                         [](const Deed &a, const Deed &b) { return a.at < b.at; });
        return result;
    }

private:
    double upTo(double most) { return std::uniform_real_distribution<double>(0, most)(random); }
    quint32 anyModule() { return Modules[random() % 2]; }
    ObjectAddress anyChannel()
    {
        const quint32 module = anyModule();
        return channelAt(module, static_cast<int>(random() % Channels));
    }
    double oftenOne() { return random() % 4 == 0 ? 0 : 1; }
    double anyMask() { return static_cast<double>(quint32(random()) | quint32(random())); }

    Deed write()
    {
        switch (random() % 14) {
        case 0:
            return {0, anyChannel(), "Control.voltageSet", upTo(Nominal)};
        case 1:
        case 2:
        case 3:
            return {0, anyChannel(), "Control.on", oftenOne()};
        case 4:
            return {0, anyChannel(), "Control.emergency", 1 - oftenOne()};
        case 5:
            return {0, anyChannel(), "Setup.delayedTripAction", double(random() % 5)};
        case 6:
            return {0, anyChannel(), "Setup.externalInhibitAction", double(random() % 4)};
        case 7:
            return {0, anyChannel(), "Control.channelEventMask", anyMask()};
        case 8:
            return {0, moduleAt(anyModule()), "Control.moduleChannelEventMask", anyMask()};
        case 9:
            return {0, moduleAt(anyModule()), "Control.moduleEventMask", anyMask()};
        case 10:
            return {0, moduleAt(anyModule()), "Control.kill", 1 - oftenOne()};
        case 11:
            return {0, moduleAt(anyModule()),
                    random() % 2 == 0 ? "Control.clearEvents" : "Control.clearErrors", 1};
        case 12:
            return {0, Rack, random() % 2 == 0 ? "Control.clearAll" : "Control.power", 1};
        default:
            return {0, Rack, "Control.power", oftenOne()};
        }
    }

    Deed fault()
    {
        constexpr FaultKind Kinds[] = {FaultKind::Spark,
                                       FaultKind::Short,
                                       FaultKind::OpenLoad,
                                       FaultKind::Leak,
                                       FaultKind::ExternalInhibit,
                                       FaultKind::SafetyLoopOpen,
                                       FaultKind::SupplyFailure,
                                       FaultKind::Overheating,
                                       FaultKind::NeedService,
                                       FaultKind::MainsFailure,
                                       FaultKind::CrateSupplyFailure,
                                       FaultKind::BatteryFailure,
                                       FaultKind::CrateOverheating};
        Deed deed;
        deed.fault.kind = Kinds[random() % std::size(Kinds)];
        const OrbItemId::Type level = faultLevel(deed.fault.kind);
        deed.fault.object = level == OrbItemId::Crate ? Rack
            : level == OrbItemId::Module              ? moduleAt(anyModule())
                                                      : anyChannel();
        const bool isHeat =
            deed.fault.kind == FaultKind::Overheating || deed.fault.kind == FaultKind::CrateOverheating;
        // About as much as lets the load decide.
        deed.fault.amount = isHeat               ? 25 + upTo(35)
            : deed.fault.kind == FaultKind::Leak ? upTo(0.006)
                                                 : 1 + upTo(5);
        return deed;
    }

    std::mt19937 random;
};

class Devices
{
public:
    void carryOut(const Deed &deed)
    {
        run.queue.runUntil(deed.at);
        now = deed.at;
        if (deed.item.isEmpty()) {
            controller.applyFault(deed.fault, deed.begins, now);
            return;
        }
        const ItemDefinition &item =
            *Controller::itemsOf(deed.object.level)->find(QString::fromLatin1(deed.item));
        controller.write(deed.object, item, ItemValue::of(deed.value), now);
    }
    void come(double time)
    {
        run.queue.runUntil(time);
        now = time;
    }

    double number(const ObjectAddress &object, const QString &item)
    {
        return controller.read(object, *Controller::itemsOf(object.level)->find(item), view, now).number;
    }
    quint32 mask(const ObjectAddress &object, const char *item)
    {
        return static_cast<quint32>(number(object, QString::fromLatin1(item)));
    }

    /// The items of that source that read true, as bits of the level's conditions; those without an item are none.
    quint32 pending(const ObjectAddress &object, ItemSource source)
    {
        quint32 result = 0;
        for (quint8 condition = 0; condition < 32; ++condition) {
            const QString &name = Controller::itemsOf(object.level)->nameOf(source, condition);
            if (!name.isEmpty() && number(object, name) != 0)
                result |= quint32(1) << condition;
        }
        return result;
    }
    quint32 count(const ObjectAddress &object, const char *item) { return mask(object, item); }

    const ConnectionView view{QStringLiteral("local"), QString(), QString(), 1};
    double now = 0;
    PlantRun run;
    Controller controller{layout(), run};
};

QString countersOf(Devices &devices)
{
    quint32 crateEvents = qPopulationCount(devices.pending(Rack, ItemSource::Event));
    quint32 crateErrors = qPopulationCount(devices.pending(Rack, ItemSource::Error));
    for (const quint32 address : Modules) {
        const ObjectAddress module = moduleAt(address);
        const quint32 ofChannels = devices.mask(module, "Control.moduleChannelEventMask");
        quint32 events = qPopulationCount(devices.pending(module, ItemSource::Event)
                                          & devices.mask(module, "Control.moduleEventMask"));
        quint32 errors = qPopulationCount(devices.pending(module, ItemSource::Error));
        for (int number = 0; number < Channels; ++number) {
            const ObjectAddress channel = channelAt(address, number);
            const quint32 channelEvents = devices.pending(channel, ItemSource::Event);
            const quint32 channelErrors = qPopulationCount(devices.pending(channel, ItemSource::Error));
            if (devices.count(channel, "Status.eventCounter") != qPopulationCount(channelEvents)
                || devices.count(channel, "Status.errorCounter") != channelErrors)
                return QStringLiteral("channel %1.%2").arg(address).arg(number);
            events += qPopulationCount(channelEvents & ofChannels
                                       & devices.mask(channel, "Control.channelEventMask"));
            errors += channelErrors;
        }
        if (devices.count(module, "Status.eventCounter") != events
            || devices.count(module, "Status.errorCounter") != errors)
            return QStringLiteral("module %1: %2 events, %3 errors").arg(address).arg(events).arg(errors);
        crateEvents += events;
        crateErrors += errors;
    }
    if (devices.count(Rack, "Status.eventCounter") != crateEvents
        || devices.count(Rack, "Status.errorCounter") != crateErrors)
        return QStringLiteral("crate: %1 events, %2 errors").arg(crateEvents).arg(crateErrors);
    return QStringLiteral("right");
}

QStringList journalOf(const std::vector<Deed> &deeds, double step)
{
    Devices devices;
    qint64 steps = 1;
    const auto lookUntil = [&](double time) {
        for (; double(steps) * step <= time; ++steps) {
            devices.come(double(steps) * step);
            devices.number(Rack, QStringLiteral("Status.temperature1"));
            devices.number(moduleAt(3), QStringLiteral("Status.temperature"));
        }
    };
    for (const Deed &deed : deeds) {
        lookUntil(deed.at);
        devices.carryOut(deed);
    }
    lookUntil(Duration);
    devices.come(Duration);
    QStringList lines;
    const QVector<JournalEntry> entries = devices.run.journal.from(0, 1000000);
    for (const JournalEntry &entry : entries)
        lines << journalLine(entry);
    return lines;
}

} // namespace

void TestPlantDevices::countersAddUp_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 20; ++seed)
        QTest::addRow("deeds %u", seed) << seed;
}

void TestPlantDevices::countersAddUp()
{
    QFETCH(unsigned, seed);
    Devices devices;
    const std::vector<Deed> deeds = DeedMaker(seed).make(600);
    quint32 most = 0;
    for (const Deed &deed : deeds) {
        devices.carryOut(deed);
        QCOMPARE(countersOf(devices), QStringLiteral("right"));
        most = std::max(most, devices.count(Rack, "Status.errorCounter"));
    }
    QVERIFY2(most > 5, qPrintable(QString::number(most)));
}

void TestPlantDevices::anybodyMayLook_data()
{
    countersAddUp_data();
}

void TestPlantDevices::anybodyMayLook()
{
    QFETCH(unsigned, seed);
    const std::vector<Deed> deeds = DeedMaker(seed).make(600);
    const QStringList undisturbed = journalOf(deeds, Duration);
    QVERIFY2(undisturbed.size() > 400, qPrintable(QString::number(undisturbed.size())));
    QVERIFY(!undisturbed.filter(QStringLiteral("Error.temperatureNotGood")).isEmpty());
    QCOMPARE(undisturbed.filter(QStringLiteral("nan")), QStringList());
    QCOMPARE(journalOf(deeds, 0.237), undisturbed);
    QCOMPARE(journalOf(deeds, 7.7), undisturbed);
}

QTEST_APPLESS_MAIN(TestPlantDevices)
#include "tst_plant_devices.moc"
