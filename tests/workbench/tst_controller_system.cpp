#include "workbench/simulator/controller.h"

#include "tests/workbench/controller_bench.h"

#include <QtTest>

/// The items of the system, and what they do to everything below it.
class TestControllerSystem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reboot();
    void shutdown();
    void systemItems_data();
    void systemItems();
    void interfaceServices();
    void scan();
    void heartBeat();
};

void TestControllerSystem::reboot()
{
    ControllerBench bench;
    QVERIFY(bench.ramp(Channel00, "3000"));
    QVERIFY(bench.set(System, "Control.liveInsertion", "1"));
    bench.now += 60;
    QVERIFY(bench.set(System, "Control.reboot", "0"));
    QCOMPARE(bench.number(Channel00, "Status.voltageMeasure"), 3000.0);
    QVERIFY(bench.set(System, "Control.reboot", "1"));
    QVERIFY(bench.controller.isAvailable());
    QCOMPARE(bench.number(Channel00, "Status.voltageMeasure"), 0.0);
    QCOMPARE(bench.number(Channel00, "Control.voltageSet"), 3000.0);
    QVERIFY(!bench.isTrue(System, "Control.liveInsertion"));
    QCOMPARE(bench.number(System, "Status.heartBeat"), 0.0);
}

void TestControllerSystem::shutdown()
{
    ControllerBench bench;
    QVERIFY(bench.ramp(Channel00, "3000"));
    bench.now += 60;
    QVERIFY(bench.set(System, "Control.shutdown", "1"));
    QVERIFY(!bench.controller.isAvailable());
    bench.controller.setAvailable(true);
    QCOMPARE(bench.number(Channel00, "Status.voltageMeasure"), 0.0);
}

void TestControllerSystem::systemItems_data()
{
    QTest::addColumn<QByteArray>("control");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    const auto row = [](const char *control, const char *value, const char *status, const char *before,
                        const char *after) {
        QTest::addRow("%s %s", control, status)
            << QByteArray(control) << QByteArray(value) << QByteArray(status) << QString::fromLatin1(before)
            << QString::fromLatin1(after);
    };
    row("Control.wifi", "1", "Status.runningStateWifi", "off", "ok");
    row("Control.wifi", "1", "Status.wifiState", "off", "ok");
    row("Control.liveInsertion", "1", "Status.liveInsertion", "false", "true");
    row("Control.disconnect", "1", "Status.connectionStatus", "connected", "disconnected");
    row("Control.disconnect", "0", "Status.connectionStatus", "connected", "connected");
    row("Setup.cycleTime", "500", "Setup.cycleTime", "200", "500");
    row("Control.serviceStop", "http", "Status.runningStateWeb", "ok", "off");
}

void TestControllerSystem::systemItems()
{
    QFETCH(QByteArray, control);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, status);
    ControllerBench bench;
    QTEST(bench.text(System, status.constData()), "before");
    QVERIFY(bench.set(System, control.constData(), value.constData()));
    QTEST(bench.text(System, status.constData()), "after");
    // A line shows the same items.
    QTEST(bench.text({OrbItemId::Line, 0, 0, -1}, status.constData()), "after");
}

void TestControllerSystem::interfaceServices()
{
    ControllerBench bench;
    QCOMPARE(bench.text(System, "Status.protocols"), QStringLiteral("http,websocket"));
    QVERIFY(bench.set(System, "Control.serviceStop", "http"));
    QCOMPARE(bench.text(System, "Status.protocols"), QStringLiteral("websocket"));
    QVERIFY(bench.set(System, "Control.serviceStop", "websocket"));
    QCOMPARE(bench.text(System, "Status.protocols"), QString());
    QVERIFY(bench.set(System, "Control.serviceRestart", "websocket"));
    QVERIFY(bench.set(System, "Control.serviceStart", "http"));
    QCOMPARE(bench.text(System, "Status.protocols"), QStringLiteral("http,websocket"));
    QCOMPARE(bench.write(System, "Control.serviceStart", "telegraph"), TarnResult::Failed);
}

void TestControllerSystem::scan()
{
    ControllerBench bench;
    QVERIFY(!bench.isTrue(System, "Status.discover"));
    QVERIFY(bench.set(System, "Control.restartScan", "1"));
    QVERIFY(bench.isTrue(System, "Status.discover"));
    bench.now += 2.01;
    QVERIFY(!bench.isTrue(System, "Status.discover"));
    QVERIFY(bench.set(System, "Control.disconnect", "1"));
    QVERIFY(bench.set(System, "Control.connect", "1"));
    QCOMPARE(bench.text(System, "Status.connectionStatus"), QStringLiteral("connected"));
}

void TestControllerSystem::heartBeat()
{
    ControllerBench bench;
    const double before = bench.number(System, "Status.heartBeat");
    bench.now += 10;
    QCOMPARE(bench.number(System, "Status.heartBeat"), before + 50);
    QVERIFY(bench.set(System, "Setup.cycleTime", "100"));
    bench.now += 1;
    QCOMPARE(bench.number(System, "Status.heartBeat"), 210.0);
}

QTEST_APPLESS_MAIN(TestControllerSystem)
#include "tst_controller_system.moc"
