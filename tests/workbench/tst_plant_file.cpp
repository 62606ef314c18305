#include "workbench/simulator/plant_file.h"

#include "workbench/simulator/answer_transport.h"
#include "workbench/simulator/fault_book.h"
#include "workbench/simulator/pass_through_text.h"
#include "workbench/simulator/plant_file_faults.h"
#include "workbench/simulator/simulated_service.h"
#include "workbench/simulator/stepped_clock.h"

#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

using namespace simulator;

/// What a plant file becomes. What is refused has a test of its own.
class TestPlantFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void leftOutFields();
    void givenFields();
    void numbersWithUnits_data();
    void numbersWithUnits();
    void loadLists();
    void numbering();
    void repeatedCratesAndLines();
    void localController_data();
    void localController();
    void faults();
    void messages();
    void faultAmounts_data();
    void faultAmounts();
    void faultFile();
    void unreadableFiles_data();
    void unreadableFiles();
    void refusedFileLeavesTheLayout();
    void byteOrderMark();
    void extremesCanBeRun_data();
    void extremesCanBeRun();
    void examples_data();
    void examples();
};

namespace
{

PlantLayout parsed(const QByteArray &text)
{
    PlantLayout layout;
    QString error;
    if (!PlantFile::parse(text, QStringLiteral("plant.json"), layout, error))
        qFatal("%s", qPrintable(error));
    return layout;
}

QByteArray plantOf(const QByteArray &lines)
{
    return R"({"controllers": [{"name": "local", "lines": [)" + lines + "]}]}";
}

ModuleLayout onlyModule(const QByteArray &fields)
{
    return parsed(plantOf(R"({"modules": [{)" + fields + "}]}")).controllers.at(0).lines.at(0).modules.at(0);
}

std::vector<quint32> addressesOf(const std::vector<ModuleLayout> &modules)
{
    std::vector<quint32> result;
    for (const ModuleLayout &module : modules)
        result.push_back(module.address);
    return result;
}

const QByteArray NeededOfModule = R"("channels": 3, "voltage": 1000, "current": 0.002)";

} // namespace

void TestPlantFile::leftOutFields()
{
    const PlantLayout plant = parsed(R"({"controllers": [{"name": "a"}, {"name": "b"}]})");
    QCOMPARE(plant.seed, 1U);
    QVERIFY(plant.faults.empty());
    const ControllerLayout &second = plant.controllers.at(1);
    QCOMPARE(second.connectionName, QStringLiteral("b"));
    QCOMPARE(second.displayText, QStringLiteral("b"));
    QCOMPARE(second.address, QStringLiteral("127.0.0.1:8081"));
    QVERIFY(second.latency < 0);
    QCOMPARE(second.jitter, 0.0);
    QVERIFY(second.lines.empty());

    const ModuleLayout module = onlyModule(NeededOfModule);
    const ModuleLayout other;
    QCOMPARE(module.address, 0U);
    QVERIFY(!module.isNegative);
    QCOMPARE(module.voltageLimit, other.voltageLimit);
    QCOMPARE(module.currentLimit, other.currentLimit);
    QCOMPARE(module.voltageRampspeed, other.voltageRampspeed);
    QCOMPARE(module.currentRampspeed, other.currentRampspeed);
    QCOMPARE(module.measurement.voltageNoise, 0.0);
    QCOMPARE(module.loads.size(), std::size_t(3));
    QCOMPARE(module.loads.at(2).resistance, NoLoad);
    QCOMPARE(module.serialNumber, 480001U);
    QCOMPARE(module.firmwareName, QStringLiteral("SIM-HV3"));
    QCOMPARE(module.firmwareRelease, QStringLiteral("7.12.0"));
}

void TestPlantFile::givenFields()
{
    const PlantLayout plant = parsed(
        R"({"seed": 4294967295, "controllers": [{"name": "a", "text": "Hall", "address": "hall:9000", "latency": 0.02,
            "jitter": 0.01, "lines": [{"line": 7, "modules": [
            {"address": 9, "channels": 2, "voltage": 500, "current": 0.01, "polarity": "negative", "voltageLimit": 80,
             "currentLimit": 70, "voltageRamp": 3, "currentRamp": 4, "serial": 12, "firmware": "F", "release": "1.2",
             "measurement": {"voltageNoise": 1, "currentNoise": 2, "voltageOffset": -3, "currentOffset": -4,
                             "voltageStep": 5, "currentStep": 6},
             "load": {"resistance": 11, "capacitance": 0.12, "leakage": 13, "leakageDrift": 14, "sparkInterval": 15}}
            ]}]}]})");
    QCOMPARE(plant.seed, 4294967295U);
    const ControllerLayout &controller = plant.controllers.at(0);
    QCOMPARE(controller.displayText, QStringLiteral("Hall"));
    QCOMPARE(controller.address, QStringLiteral("hall:9000"));
    QCOMPARE(controller.latency, 0.02);
    QCOMPARE(controller.jitter, 0.01);
    QCOMPARE(controller.lines.at(0).line, 7U);
    const ModuleLayout &module = controller.lines.at(0).modules.at(0);
    QCOMPARE(module.address, 9U);
    QCOMPARE(module.nominalVoltage, 500.0);
    QCOMPARE(module.nominalCurrent, 0.01);
    QVERIFY(module.isNegative);
    QCOMPARE(module.voltageLimit, 80.0);
    QCOMPARE(module.currentLimit, 70.0);
    QCOMPARE(module.voltageRampspeed, 3.0);
    QCOMPARE(module.currentRampspeed, 4.0);
    QCOMPARE(module.serialNumber, 12U);
    QCOMPARE(module.firmwareName, QStringLiteral("F"));
    QCOMPARE(module.firmwareRelease, QStringLiteral("1.2"));
    QCOMPARE(module.measurement.voltageNoise, 1.0);
    QCOMPARE(module.measurement.currentNoise, 2.0);
    QCOMPARE(module.measurement.voltageOffset, -3.0);
    QCOMPARE(module.measurement.currentOffset, -4.0);
    QCOMPARE(module.measurement.voltageStep, 5.0);
    QCOMPARE(module.measurement.currentStep, 6.0);
    QCOMPARE(module.loads.size(), std::size_t(2));
    const LoadLayout &load = module.loads.at(1);
    QCOMPARE(load.resistance, 11.0);
    QCOMPARE(load.capacitance, 0.12);
    QCOMPARE(load.leakage, 13.0);
    QCOMPARE(load.leakageDrift, 14.0);
    QCOMPARE(load.sparkInterval, 15.0);
}

void TestPlantFile::numbersWithUnits_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<double>("volts");
    QTest::newRow("number") << QByteArray("1500") << 1500.0;
    QTest::newRow("text") << QByteArray(R"("1500 V")") << 1500.0;
    QTest::newRow("kilo") << QByteArray(R"("1.5 kV")") << 1500.0;
    QTest::newRow("milli") << QByteArray(R"("1500mV")") << 1.5;
}

void TestPlantFile::numbersWithUnits()
{
    QFETCH(QByteArray, value);
    QTEST(onlyModule(R"("channels": 1, "current": "1 mA", "voltage": )" + value).nominalVoltage, "volts");
}

void TestPlantFile::loadLists()
{
    const ModuleLayout module = onlyModule(
        R"("channels": 4, "voltage": 1, "current": 1, "load": [{"resistance": 5}, {"count": 2}, {"resistance": 7}])");
    QCOMPARE(module.loads.size(), std::size_t(4));
    QCOMPARE(module.loads.at(0).resistance, 5.0);
    QCOMPARE(module.loads.at(1).resistance, NoLoad);
    QCOMPARE(module.loads.at(2).resistance, NoLoad);
    QCOMPARE(module.loads.at(3).resistance, 7.0);
}

void TestPlantFile::numbering()
{
    const PlantLayout plant = parsed(
        plantOf(R"({"line": 3, "crates": [{"modules": [{)" + NeededOfModule + R"(, "count": 2}, {)"
                + NeededOfModule + R"(, "address": 9}]}, {"address": 1005, "modules": [{)" + NeededOfModule
                + R"(}]}, {}], "modules": [{)" + NeededOfModule + R"(, "serial": 70, "count": 2}]}, {})"));
    const std::vector<LineLayout> &lines = plant.controllers.at(0).lines;
    QCOMPARE(lines.at(0).line, 3U);
    QCOMPARE(lines.at(1).line, 4U);
    const std::vector<CrateLayout> &crates = lines.at(0).crates;
    QCOMPARE(crates.at(0).address, 1000U);
    QCOMPARE(crates.at(1).address, 1005U);
    QCOMPARE(crates.at(2).address, 1006U);
    QCOMPARE(addressesOf(crates.at(0).modules), (std::vector<quint32>{0, 1, 9}));
    QCOMPARE(addressesOf(crates.at(1).modules), (std::vector<quint32>{10}));
    QCOMPARE(addressesOf(lines.at(0).modules), (std::vector<quint32>{11, 12}));
    QCOMPARE(crates.at(0).modules.at(2).serialNumber, 480003U);
    QCOMPARE(lines.at(0).modules.at(1).serialNumber, 71U);
}

void TestPlantFile::repeatedCratesAndLines()
{
    const PlantLayout plant = parsed(plantOf(R"({"count": 2, "crates": [{"count": 3, "modules": [{)"
                                             + NeededOfModule + R"(, "count": 2}]}]})"));
    const std::vector<LineLayout> &lines = plant.controllers.at(0).lines;
    QCOMPARE(lines.size(), std::size_t(2));
    QCOMPARE(lines.at(1).line, 1U);
    QCOMPARE(lines.at(1).crates.size(), std::size_t(3));
    QCOMPARE(lines.at(1).crates.at(2).address, 1002U);
    QCOMPARE(addressesOf(lines.at(1).crates.at(2).modules), (std::vector<quint32>{4, 5}));
    QCOMPARE(lines.at(1).crates.at(2).modules.at(1).serialNumber, 480012U);
}

void TestPlantFile::localController_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<bool>("isFirstLocal");
    QTest::addColumn<bool>("isSecondLocal");
    QTest::newRow("nobody says") << QByteArray() << QByteArray() << true << false;
    QTest::newRow("the second") << QByteArray() << QByteArray(R"(, "local": true)") << false << true;
    QTest::newRow("neither") << QByteArray(R"(, "local": false)") << QByteArray() << false << false;
}

void TestPlantFile::localController()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    const PlantLayout plant =
        parsed(R"({"controllers": [{"name": "a")" + first + R"(}, {"name": "b")" + second + "}]}");
    QTEST(plant.controllers.at(0).isLocal, "isFirstLocal");
    QTEST(plant.controllers.at(1).isLocal, "isSecondLocal");
}

void TestPlantFile::faults()
{
    const PlantLayout plant = parsed(R"({"controllers": [{"name": "a", "lines": [{"crates": [{"modules": [{)"
                                     + NeededOfModule + R"(}]}]}]}, {"name": "b", "text": "Far"}],
            "faults": [{"at": "12 s", "fault": "spark", "channel": "0.0.2", "amount": 3},
                       {"at": 1, "fault": "disconnect", "controller": "Far", "duration": "500 ms"},
                       {"at": 2, "fault": "safetyLoopOpen", "module": "0.0"},
                       {"at": 3, "fault": "mainsFailure", "crate": "0.1000"}]})");
    QCOMPARE(plant.faults.size(), std::size_t(4));
    const ScheduledFault &spark = plant.faults.at(0);
    QCOMPARE(spark.at, 12.0);
    QCOMPARE(spark.fault.kind, FaultKind::Spark);
    QCOMPARE(spark.fault.controller, QStringLiteral("a"));
    QVERIFY(spark.fault.object == (ObjectAddress{OrbItemId::Channel, 0, 0, 2}));
    QCOMPARE(spark.fault.amount, 3.0);
    QCOMPARE(spark.fault.duration, 0.0);
    QCOMPARE(plant.faults.at(1).fault.kind, FaultKind::Disconnect);
    QCOMPARE(plant.faults.at(1).fault.controller, QStringLiteral("b"));
    QCOMPARE(plant.faults.at(1).fault.duration, 0.5);
    QVERIFY(plant.faults.at(2).fault.object == (ObjectAddress{OrbItemId::Module, 0, 0, -1}));
    QVERIFY(plant.faults.at(3).fault.object == (ObjectAddress{OrbItemId::Crate, 0, 1000, -1}));
}

void TestPlantFile::messages()
{
    const PlantLayout plant = parsed(
        R"({"controllers": [{"name": "a"}, {"name": "b"}],
            "messages": [{"at": "5 s", "object": "0.3", "item": "Status.runningState"},
                         {"at": 1, "every": "500 ms", "controller": "b", "command": "setItem", "object": "2.3.7",
                          "item": "Own.item", "value": "100", "unit": "V"}]})");
    QCOMPARE(plant.messages.size(), std::size_t(2));
    const ScheduledMessage &first = plant.messages.at(0);
    QCOMPARE(first.at, 5.0);
    QCOMPARE(first.every, 0.0);
    QCOMPARE(first.controller, QStringLiteral("a"));
    QCOMPARE(passThroughText(first.request), QStringLiteral("getItem 0.3 Status.runningState"));
    const ScheduledMessage &second = plant.messages.at(1);
    QCOMPARE(second.every, 0.5);
    QCOMPARE(second.controller, QStringLiteral("b"));
    QCOMPARE(passThroughText(second.request), QStringLiteral("setItem 2.3.7 Own.item 100 V"));
}

void TestPlantFile::faultAmounts_data()
{
    QTest::addColumn<int>("kind");
    for (int i = 0; i <= static_cast<int>(FaultKind::ReorderAnswers); ++i)
        QTest::newRow(qPrintable(faultName(static_cast<FaultKind>(i)))) << i;
}

/// What a file may say is what the plant takes.
void TestPlantFile::faultAmounts()
{
    QFETCH(int, kind);
    Fault fault;
    fault.kind = static_cast<FaultKind>(kind);
    fault.object.level = faultLevel(fault.kind);
    const FaultAmount allowed = faultAmount(fault.kind);
    const auto makesSense = [&fault](double amount) {
        fault.amount = amount;
        return faultLevel(fault.kind) == OrbItemId::System ? AnswerTransport::makesSense(fault)
                                                           : FaultBook::makesSense(fault);
    };
    QCOMPARE(makesSense(0), !allowed.isNeeded);
    if (allowed.most == 0)
        return;
    QVERIFY(makesSense(1));
    QVERIFY(makesSense(allowed.most));
    QVERIFY(!makesSense(allowed.most + 1));
}

void TestPlantFile::faultFile()
{
    const QTemporaryDir folder;
    const QString fileName = folder.filePath(QStringLiteral("faults.json"));
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"faults": [{"at": 4, "fault": "short", "channel": "0.3.7", "duration": 1}]})");
    file.close();
    PlantLayout layout = PlantLayout::rehearsal();
    layout.faults.emplace_back();
    QString error;
    QVERIFY2(PlantFile::readFaults(fileName, layout, error), qPrintable(error));
    QCOMPARE(layout.faults.size(), std::size_t(2));
    QCOMPARE(layout.faults.at(1).fault.kind, FaultKind::Short);
    QCOMPARE(layout.faults.at(1).fault.controller, QStringLiteral("local"));

    PlantLayout empty;
    QVERIFY(!PlantFile::readFaults(fileName, empty, error));
    QCOMPARE(error, fileName + QStringLiteral(":1:13: there is no controller \"\""));
}

void TestPlantFile::unreadableFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << QStringLiteral("none.json");
    QTest::newRow("folder") << QStringLiteral(".");
}

void TestPlantFile::unreadableFiles()
{
    QFETCH(QString, name);
    const QTemporaryDir folder;
    const QString fileName = folder.filePath(name);
    PlantLayout layout;
    QString error;
    QVERIFY(!PlantFile::read(fileName, layout, error));
    QVERIFY2(error.startsWith(fileName + QStringLiteral(": ")), qPrintable(error));
    QVERIFY(error.size() > fileName.size() + 2);
    error.clear();
    QVERIFY(!PlantFile::readFaults(fileName, layout, error));
    QVERIFY(!error.isEmpty());
}

void TestPlantFile::refusedFileLeavesTheLayout()
{
    PlantLayout layout = PlantLayout::rehearsal();
    QString error;
    QVERIFY(!PlantFile::parse(R"({"seed": 5, "controllers": []})", QStringLiteral("p"), layout, error));
    QCOMPARE(layout.controllers.size(), std::size_t(2));
    QCOMPARE(layout.seed, 1U);
    QVERIFY(PlantFile::parse(R"({"controllers": [{"name": "a"}]})", QStringLiteral("p"), layout, error));
    QCOMPARE(error, QString());
}

// Some editors write one.
void TestPlantFile::byteOrderMark()
{
    QCOMPARE(parsed("\xef\xbb\xbf" + plantOf({})).controllers.size(), std::size_t{1});
    PlantLayout layout;
    QString error;
    QVERIFY(!PlantFile::parse("\xef\xbb\xbf{\"seed\": -1}", QStringLiteral("p.json"), layout, error));
    QVERIFY2(error.startsWith(QLatin1String("p.json:1:10: ")), qPrintable(error));
}

void TestPlantFile::extremesCanBeRun_data()
{
    QTest::addColumn<QByteArray>("module");
    const QByteArray least = R"("channels": 1, "voltage": 1e-300, "current": 1e-300)";
    const QByteArray most = R"("channels": 1, "voltage": 1e6, "current": 1000)";
    QTest::newRow("least") << least;
    QTest::newRow("most") << most;
    QTest::newRow("least voltage, most current")
        << QByteArray(R"("channels": 1, "voltage": 1e-300, "current": 1000)");
    QTest::newRow("most voltage, least current")
        << QByteArray(R"("channels": 1, "voltage": 1e6, "current": 1e-300)");
    QTest::newRow("least, shorted") << least + R"(, "load": {"resistance": 1e-300})";
    QTest::newRow("most, shorted") << most + R"(, "load": {"resistance": 1e-300, "capacitance": 1})";
    QTest::newRow("least, insulated") << least + R"(, "load": {"resistance": 1e18, "capacitance": 1e-30})";
    QTest::newRow("most, insulated") << most + R"(, "load": {"resistance": 1e18, "capacitance": 1e-30})";
    QTest::newRow("next to no capacitance")
        << most + R"(, "load": {"capacitance": 1e-300, "leakage": 1e-300})";
    QTest::newRow("leaking") << least
            + R"(, "load": {"leakage": 1000, "leakageDrift": 1000, "capacitance": 1})";
    QTest::newRow("sparking") << most + R"(, "load": {"sparkInterval": 1e-300, "capacitance": 1e-9})";
    QTest::newRow("limits of next to nothing")
        << most + R"(, "voltageLimit": 1e-300, "currentLimit": 1e-300)";
    QTest::newRow("slow") << most + R"(, "voltageRamp": 0.001, "currentRamp": 0.001)";
    QTest::newRow("measured badly") << least
            + R"(, "measurement": {"voltageNoise": 1000, "voltageOffset": -1000,
        "voltageStep": 1e-300, "currentNoise": 1e-300, "currentOffset": 1000, "currentStep": 1000})";
}

// On, with and without a short, and off again: each value remains a number, and the plant comes to every time.
void TestPlantFile::extremesCanBeRun()
{
    QFETCH(QByteArray, module);
    const auto clock = std::make_shared<SteppedClock>();
    SimulatedService service(clock, parsed(plantOf(R"({"modules": [{)" + module + "}]}")));
    OrbItemId id(OrbItemId::Channel);
    id.connectionName = QStringLiteral("local");
    id.channel = 0;
    const auto write = [&](const char *item, const QString &value) {
        id.itemName = QString::fromLatin1(item);
        return service.writeItem(id, value);
    };
    Fault fault;
    fault.kind = FaultKind::Short;
    fault.controller = QStringLiteral("local");
    fault.object = {OrbItemId::Channel, 0, 0, 0};
    ChannelSnapshot snapshot;
    const auto look = [&] {
        return service.channelSnapshot(QStringLiteral("local"), fault.object, snapshot)
            && std::isfinite(snapshot.voltage) && std::isfinite(snapshot.current)
            && std::abs(snapshot.voltage) <= 1e6 && std::abs(snapshot.current) <= 1e9;
    };
    QVERIFY(look());
    QCOMPARE(write("Control.voltageSet", QString::number(snapshot.voltageLimit, 'g', 15)),
             TarnResult::Success);
    QCOMPARE(write("Control.voltageBounds", QStringLiteral("1")), TarnResult::Success);
    QCOMPARE(write("Control.on", QStringLiteral("1")), TarnResult::Success);
    for (const double seconds : {0.001, 1.0, 20.0}) {
        clock->advance(
            std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds)));
        QVERIFY(look());
    }
    QCOMPARE(service.cause(fault), TarnResult::Success);
    clock->advance(std::chrono::seconds(5));
    QVERIFY(look());
    QCOMPARE(service.mend(fault), TarnResult::Success);
    clock->advance(std::chrono::seconds(5));
    QVERIFY(look());
    QCOMPARE(write("Control.on", QStringLiteral("0")), TarnResult::Success);
    clock->advance(std::chrono::seconds(30));
    QVERIFY(look());
}

void TestPlantFile::examples_data()
{
    QTest::addColumn<int>("controllers");
    QTest::addColumn<int>("lines");
    QTest::addColumn<int>("crates");
    QTest::addColumn<int>("modules");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("faults");
    QTest::addColumn<double>("highestVoltage");
    QTest::newRow("single_module.json") << 1 << 1 << 0 << 1 << 4 << 0 << 1000.0;
    QTest::newRow("full_crate.json") << 1 << 1 << 1 << 10 << 160 << 0 << 6000.0;
    QTest::newRow("large.json") << 1 << 25 << 125 << 625 << 10000 << 0 << 3000.0;
    QTest::newRow("training.json") << 2 << 2 << 1 << 3 << 20 << 9 << 4000.0;
}

void TestPlantFile::examples()
{
    PlantLayout layout;
    QString error;
    QVERIFY2(PlantFile::read(QStringLiteral(EXAMPLES "/plants/") + QLatin1String(QTest::currentDataTag()),
                             layout, error),
             qPrintable(error));
    int lines = 0;
    int crates = 0;
    int modules = 0;
    int channels = 0;
    double highestVoltage = 0;
    const auto count = [&](const std::vector<ModuleLayout> &layouts) {
        modules += static_cast<int>(layouts.size());
        for (const ModuleLayout &module : layouts) {
            channels += static_cast<int>(module.loads.size());
            highestVoltage = std::max(highestVoltage, module.nominalVoltage);
        }
    };
    for (const ControllerLayout &controller : layout.controllers) {
        lines += static_cast<int>(controller.lines.size());
        for (const LineLayout &line : controller.lines) {
            crates += static_cast<int>(line.crates.size());
            count(line.modules);
            for (const CrateLayout &crate : line.crates)
                count(crate.modules);
        }
    }
    QTEST(static_cast<int>(layout.controllers.size()), "controllers");
    QTEST(lines, "lines");
    QTEST(crates, "crates");
    QTEST(modules, "modules");
    QTEST(channels, "channels");
    QTEST(static_cast<int>(layout.faults.size()), "faults");
    QTEST(highestVoltage, "highestVoltage");
}

QTEST_APPLESS_MAIN(TestPlantFile)
#include "tst_plant_file.moc"
