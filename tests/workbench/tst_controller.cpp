#include "workbench/simulator/controller.h"

#include "tests/workbench/controller_bench.h"

#include <QtTest>

#include <cmath>

using namespace simulator;

Q_DECLARE_METATYPE(OrbItemId::Type)

/// The crates, modules and channels. The items of the system have a test of their own.
class TestController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void objects_data();
    void objects();
    void modulesHaveTheirChannels_data();
    void modulesHaveTheirChannels();
    void moduleRampspeed_data();
    void moduleRampspeed();
    void moduleRampspeedWhileRamping();
    void runningStateRollsUp();
    void modulesWithTheirOwnSupplyRollUp();
    void countersRollUp();
    void clearing_data();
    void clearing();
    void cratePower();
    void crateIsOn();
    void warmsUpWithTheLoad();
    void firmware_data();
    void firmware();
    void moduleSettings_data();
    void moduleSettings();
};

void TestController::objects_data()
{
    QTest::addColumn<OrbItemId::Type>("level");
    QTest::addColumn<quint32>("line");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<qint32>("channel");
    QTest::addColumn<bool>("exists");
    const auto row = [](const char *name, OrbItemId::Type level, quint32 line, quint32 address,
                        qint32 channel, bool exists) {
        QTest::newRow(name) << level << line << address << channel << exists;
    };
    row("system", OrbItemId::System, 0, 0, -1, true);
    row("line", OrbItemId::Line, 0, 0, -1, true);
    row("another line", OrbItemId::Line, 1, 0, -1, false);
    row("crate", OrbItemId::Crate, 0, 1000, -1, true);
    row("another crate", OrbItemId::Crate, 0, 1001, -1, false);
    row("module as crate", OrbItemId::Crate, 0, 0, -1, false);
    row("first module", OrbItemId::Module, 0, 0, -1, true);
    row("last module", OrbItemId::Module, 0, 3, -1, true);
    row("module after the last", OrbItemId::Module, 0, 4, -1, false);
    row("module on another line", OrbItemId::Module, 1, 0, -1, false);
    row("crate as module", OrbItemId::Module, 0, 1000, -1, false);
    row("last channel", OrbItemId::Channel, 0, 0, 7, true);
    row("channel after the last", OrbItemId::Channel, 0, 0, 8, false);
    row("no channel", OrbItemId::Channel, 0, 0, -1, false);
    row("channel of a crate", OrbItemId::Channel, 0, 1000, 0, false);
    row("largest numbers", OrbItemId::Channel, 4294967295u, 4294967295u, 2147483647, false);
    row("plain item", OrbItemId::Item, 0, 0, -1, false);
    row("nothing", OrbItemId::Undefined, 0, 0, -1, false);
}

void TestController::objects()
{
    QFETCH(OrbItemId::Type, level);
    QFETCH(quint32, line);
    QFETCH(quint32, address);
    QFETCH(qint32, channel);
    const ControllerBench bench;
    QTEST(bench.controller.hasObject({level, line, address, channel}), "exists");
}

void TestController::modulesHaveTheirChannels_data()
{
    QTest::addColumn<quint32>("address");
    QTest::addColumn<int>("channels");
    QTest::addColumn<double>("nominal");
    QTest::newRow("0") << 0u << 8 << 6000.0;
    QTest::newRow("1") << 1u << 12 << 3000.0;
    QTest::newRow("2") << 2u << 16 << 2000.0;
    QTest::newRow("3") << 3u << 16 << 500.0;
}

void TestController::modulesHaveTheirChannels()
{
    QFETCH(quint32, address);
    QFETCH(int, channels);
    QFETCH(double, nominal);
    ControllerBench bench;
    QCOMPARE(bench.number({OrbItemId::Module, 0, address, -1}, "Status.numberOfChannels"), double(channels));
    for (int channel = 0; channel < channels; ++channel) {
        const ObjectAddress object{OrbItemId::Channel, 0, address, channel};
        QCOMPARE(bench.number(object, "Status.voltageNominal"), nominal);
        QVERIFY(bench.ramp(object, "100"));
    }
    bench.now += 1000;
    // 40 % of the nominal current at the nominal voltage, and nothing from the last channel.
    const double nominalCurrent = bench.number({OrbItemId::Channel, 0, address, 0}, "Status.currentNominal");
    const double current = bench.number({OrbItemId::Channel, 0, address, 0}, "Status.currentMeasure");
    QVERIFY(std::abs(current - 0.4 * nominalCurrent * 100 / nominal) < 1e-9);
    QCOMPARE(bench.number({OrbItemId::Channel, 0, address, channels - 1}, "Status.currentMeasure"), 0.0);
}

void TestController::moduleRampspeed_data()
{
    QTest::addColumn<QByteArray>("rampspeed");
    QTest::addColumn<double>("voltsAfterASecond");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("as it starts") << QByteArray() << 600.0 << true;
    QTest::newRow("slow") << QByteArray("0.5") << 30.0 << true;
    QTest::newRow("slowest") << QByteArray("0.001") << 0.06 << true;
    QTest::newRow("fastest") << QByteArray("100") << 3000.0 << true;
    QTest::newRow("too fast") << QByteArray("101") << 600.0 << false;
    QTest::newRow("zero") << QByteArray("0") << 600.0 << false;
}

void TestController::moduleRampspeed()
{
    QFETCH(QByteArray, rampspeed);
    QFETCH(double, voltsAfterASecond);
    QFETCH(bool, accepted);
    ControllerBench bench;
    if (!rampspeed.isEmpty())
        QCOMPARE(bench.set(Module0, "Control.voltageRampspeed", rampspeed.constData()), accepted);
    QVERIFY(bench.ramp(Channel00, "3000"));
    QVERIFY(bench.ramp(Channel31, "300"));
    bench.now += 1;
    const double volts = bench.number(Channel00, "Status.voltageMeasure");
    QVERIFY(std::abs(volts - voltsAfterASecond) <= 0.01 * voltsAfterASecond);
    // Other modules keep theirs.
    QVERIFY(std::abs(bench.number(Channel31, "Status.voltageMeasure") - 50) <= 0.5);
}

void TestController::moduleRampspeedWhileRamping()
{
    ControllerBench bench;
    QVERIFY(bench.set(Channel00, "Control.voltageRampspeedUp", "60"));
    QVERIFY(bench.set(Channel00, "Control.currentRampspeedUp", "0.1"));
    QVERIFY(bench.ramp(Channel00, "3000"));
    bench.now += 1; // 60 V
    QVERIFY(bench.set(Module0, "Control.voltageRampspeed", "20"));
    QCOMPARE(bench.number(Channel00, "Control.voltageRampspeedUp"), 1200.0);
    bench.now += 1;
    QVERIFY(std::abs(bench.number(Channel00, "Status.voltageMeasure") - 1260) <= 12.6);
    QVERIFY(bench.set(Module0, "Control.currentRampspeed", "20"));
    QCOMPARE(bench.number(Channel00, "Control.currentRampspeedUp"), 0.2);
}

void TestController::runningStateRollsUp()
{
    ControllerBench bench;
    const auto states = [&bench] {
        return QStringList{
            bench.text(Module0, "Status.runningState"), bench.text(Module3, "Status.runningState"),
            bench.text(Crate1000, "Status.runningState"), bench.text(System, "Status.runningStateOrb")}
            .join(QLatin1Char(' '));
    };
    QCOMPARE(states(), QStringLiteral("off off off off"));
    QVERIFY(bench.ramp(Channel00, "3000"));
    QCOMPARE(states(), QStringLiteral("info off info info"));
    bench.now += 60;
    QCOMPARE(states(), QStringLiteral("ok off ok ok"));
    QVERIFY(bench.ramp(Channel31, "100"));
    QCOMPARE(states(), QStringLiteral("ok info info info"));
    QVERIFY(bench.set(Channel31, "Control.emergency", "1"));
    QCOMPARE(states(), QStringLiteral("ok error error error"));
}

void TestController::modulesWithTheirOwnSupplyRollUp()
{
    ControllerBench bench(1);
    QVERIFY(bench.controller.crates().isEmpty());
    QCOMPARE(bench.controller.modules().size(), 1);
    QVERIFY(bench.isTrue(Module0, "Status.isAlive"));
    QCOMPARE(bench.text(System, "Status.runningStateOrb"), QStringLiteral("off"));
    QVERIFY(bench.ramp(Channel00, "500"));
    QCOMPARE(bench.text(System, "Status.runningStateOrb"), QStringLiteral("info"));
    bench.now += 60;
    QCOMPARE(bench.text(System, "Status.runningStateOrb"), QStringLiteral("ok"));
    QVERIFY(bench.set(System, "Control.reboot", "1"));
    QCOMPARE(bench.number(Channel00, "Status.voltageMeasure"), 0.0);
}

void TestController::countersRollUp()
{
    ControllerBench bench;
    QVERIFY(bench.set(Channel00, "Control.emergency", "1"));
    QVERIFY(bench.set(Channel31, "Control.emergency", "1"));
    QVERIFY(!bench.set(Channel31, "Control.voltageSet", "9999"));
    QCOMPARE(bench.number(Module0, "Status.eventCounter"), 1.0);
    QCOMPARE(bench.number(Module3, "Status.eventCounter"), 2.0);
    QCOMPARE(bench.number(Crate1000, "Status.eventCounter"), 3.0);
    QCOMPARE(bench.number(Module3, "Status.errorCounter"), 1.0);
    QCOMPARE(bench.number(Crate1000, "Status.errorCounter"), 2.0);
}

void TestController::clearing_data()
{
    QTest::addColumn<bool>("atCrate");
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<bool>("clearsEvents");
    QTest::addColumn<bool>("clearsErrors");
    for (const bool atCrate : {false, true}) {
        const char *place = atCrate ? "crate" : "module";
        QTest::addRow("%s events", place) << atCrate << QByteArray("Control.clearEvents") << true << false;
        QTest::addRow("%s errors", place) << atCrate << QByteArray("Control.clearErrors") << false << true;
        QTest::addRow("%s all", place) << atCrate << QByteArray("Control.clearAll") << true << true;
    }
}

void TestController::clearing()
{
    QFETCH(bool, atCrate);
    QFETCH(QByteArray, item);
    QFETCH(bool, clearsEvents);
    QFETCH(bool, clearsErrors);
    ControllerBench bench;
    for (const ObjectAddress &channel : {Channel00, Channel31})
        QVERIFY(bench.set(channel, "Control.emergency", "1"));
    QVERIFY(!bench.set(atCrate ? Crate1000 : Module0, item.constData(), "1")); // both last
    QVERIFY(bench.set(Channel00, "Control.emergency", "0"));
    // What lasts at another module hinders the crate's alone.
    QCOMPARE(bench.set(atCrate ? Crate1000 : Module0, item.constData(), "1"), !atCrate);
    for (const ObjectAddress &channel : {Channel00, Channel31}) {
        QVERIFY(bench.set(channel, "Control.emergency", "1"));
        QVERIFY(bench.set(channel, "Control.emergency", "0"));
    }
    QVERIFY(bench.set(atCrate ? Crate1000 : Module0, item.constData(), "0"));
    QVERIFY(bench.isTrue(Channel00, "Event.emergency"));
    QVERIFY(bench.isTrue(Channel00, "Error.emergency"));
    QVERIFY(bench.set(atCrate ? Crate1000 : Module0, item.constData(), "1"));
    QCOMPARE(bench.isTrue(Channel00, "Event.emergency"), !clearsEvents);
    QCOMPARE(bench.isTrue(Channel00, "Error.emergency"), !clearsErrors);
    QCOMPARE(bench.isTrue(Channel31, "Event.emergency"), !(clearsEvents && atCrate));
    QCOMPARE(bench.isTrue(Channel31, "Error.emergency"), !(clearsErrors && atCrate));
}

void TestController::cratePower()
{
    ControllerBench bench;
    QVERIFY(bench.isTrue(Crate1000, "Status.power"));
    QVERIFY(bench.ramp(Channel00, "3000"));
    bench.now += 60;
    QVERIFY(bench.set(Crate1000, "Control.power", "0"));
    QVERIFY(!bench.isTrue(Crate1000, "Control.power"));
    QVERIFY(!bench.isTrue(Crate1000, "Status.power"));
    QVERIFY(bench.isTrue(Crate1000, "Status.isAlive"));
    QCOMPARE(bench.text(Crate1000, "Status.runningState"), QStringLiteral("disabled"));
    QCOMPARE(bench.text(Module0, "Status.runningState"), QStringLiteral("disabled"));
    QCOMPARE(bench.text(Channel00, "Status.runningState"), QStringLiteral("disabled"));
    QVERIFY(!bench.isTrue(Module0, "Status.isAlive"));
    QCOMPARE(bench.number(Channel00, "Status.voltageMeasure"), 0.0);
    QCOMPARE(bench.write(Channel00, "Control.on", "1"), TarnResult::Failed);
    QCOMPARE(bench.write(Module0, "Control.kill", "1"), TarnResult::Failed);

    QVERIFY(bench.set(Crate1000, "Control.power", "1"));
    bench.now += 60;
    QVERIFY(bench.isTrue(Module0, "Status.isAlive"));
    QCOMPARE(bench.number(Channel00, "Status.voltageMeasure"), 0.0);
    QVERIFY(!bench.isTrue(Channel00, "Status.on"));
    QCOMPARE(bench.number(Channel00, "Control.voltageSet"), 3000.0);
    QVERIFY(bench.set(Channel00, "Control.on", "1"));
}

void TestController::crateIsOn()
{
    ControllerBench bench;
    QVERIFY(!bench.isTrue(Crate1000, "Status.on"));
    QVERIFY(bench.ramp(Channel00, "600"));
    QVERIFY(bench.isTrue(Crate1000, "Status.on"));
    bench.now += 60;
    QVERIFY(bench.set(Channel00, "Control.on", "0"));
    bench.now += 0.8; // 120 V left
    QVERIFY(bench.isTrue(Crate1000, "Status.on"));
    bench.now += 0.1; // 60 V left
    QVERIFY(!bench.isTrue(Crate1000, "Status.on"));
}

void TestController::warmsUpWithTheLoad()
{
    ControllerBench bench;
    const double cold = bench.number(Module0, "Status.temperature");
    QVERIFY(cold > 20 && cold < 35);
    for (qint32 channel = 0; channel < 8; ++channel)
        QVERIFY(bench.ramp({OrbItemId::Channel, 0, 0, channel}, "6000"));
    bench.now += 10; // where the ramps end
    const double atTheEnd = bench.number(Module0, "Status.temperature");
    bench.now += 120; // its time constant
    const double rise = 25 * 0.4 * 7 / 8; // seven of eight channels at 40 % of their nominal power
    const double expected = cold + rise * (1 - std::exp(-1));
    QCOMPARE(atTheEnd, cold);
    QVERIFY(std::abs(bench.number(Module0, "Status.temperature") - expected) <= 0.01 * rise);
    bench.now += 3600;
    QVERIFY(std::abs(bench.number(Module0, "Status.temperature") - (cold + rise)) <= 0.01 * rise);
    QVERIFY(bench.isTrue(Module0, "Status.temperatureGood"));
}

void TestController::firmware_data()
{
    QTest::addColumn<bool>("atCrate");
    QTest::newRow("module") << false;
    QTest::newRow("crate") << true;
}

void TestController::firmware()
{
    QFETCH(bool, atCrate);
    const ObjectAddress object = atCrate ? Crate1000 : Module0;
    ControllerBench bench;
    QVERIFY(!bench.text(object, "Status.firmwareName").isEmpty());
    const QString release = bench.text(object, "Status.firmwareRelease");
    QVERIFY(!release.isEmpty());
    QCOMPARE(bench.write(object, "Control.installFirmware", " "), TarnResult::Failed);
    QVERIFY(bench.set(object, "Control.installFirmware", "new.hex"));
    QCOMPARE(bench.text(object, "Status.firmwareRelease"), release);
}

void TestController::moduleSettings_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QByteArray>("value");
    const auto row = [](const char *item, const char *value) {
        QTest::newRow(item) << QByteArray(item) << QByteArray(value);
    };
    row("Control.kill", "true");
    row("Control.adjustment", "false");
    row("Control.voltageRampspeed", "2.5");
    row("Control.currentRampspeed", "12");
    row("Control.moduleEventMask", "3");
    row("Control.moduleChannelEventMask", "7");
    row("Setup.digitalFilter", "128");
    row("Setup.adcSampleRate", "100");
    row("Control.userHardwareCheck", "true");
}

void TestController::moduleSettings()
{
    QFETCH(QByteArray, item);
    QFETCH(QByteArray, value);
    ControllerBench bench;
    QVERIFY(bench.text(Module0, item.constData()).toUtf8() != value);
    const QString untouched = bench.text(Module3, item.constData());
    QVERIFY(bench.set(Module0, item.constData(), value.constData()));
    QCOMPARE(bench.text(Module0, item.constData()).toUtf8(), value);
    QCOMPARE(bench.text(Module3, item.constData()), untouched);
    QCOMPARE(bench.text(Module0, "Status.adjustment"), bench.text(Module0, "Control.adjustment"));
}

QTEST_APPLESS_MAIN(TestController)
#include "tst_controller.moc"
