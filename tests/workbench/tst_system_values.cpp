#include "workbench/app/system_values.h"

#include "hostclient/orb_item_id.h"
#include "tests/workbench/small_system.h"

#include <QLocale>
#include <QTest>

using workbench::SystemState;
using workbench::SystemValues;

Q_DECLARE_METATYPE(SystemState)

namespace
{

OrbItemId channel(int number)
{
    OrbItemId id(OrbItemId::Channel);
    id.connectionName = QStringLiteral("left");
    id.line = 0;
    id.address = 4;
    id.channel = number;
    return id;
}

} // namespace

class TestSystemValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    void voltages_data()
    {
        QTest::addColumn<double>("volts");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << QStringLiteral("0.00 V");
        QTest::newRow("positive") << 1234.567 << QStringLiteral("1234.57 V");
        QTest::newRow("noise below zero") << -0.0049 << QStringLiteral("0.00 V");
        QTest::newRow("just below zero") << -0.0051 << QStringLiteral("-0.01 V");
        QTest::newRow("negative") << -0.126 << QStringLiteral("-0.13 V");
    }

    void voltages()
    {
        QFETCH(double, volts);
        QLocale locale = QLocale::c();
        locale.setNumberOptions(QLocale::OmitGroupSeparator);
        QLocale::setDefault(locale);
        QTEST(workbench::voltageText(volts), "text");
    }

    void currents_data()
    {
        QTest::addColumn<double>("amperes");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << QStringLiteral("0.000 nA");
        QTest::newRow("noise") << 9e-13 << QStringLiteral("0.000 nA");
        QTest::newRow("nano") << 2.5e-9 << QStringLiteral("2.500 nA");
        QTest::newRow("below a nano") << 2.5e-11 << QStringLiteral("0.025 nA");
        QTest::newRow("micro") << -12.3456e-6 << QStringLiteral("-12.346 \u00b5A");
        QTest::newRow("rounds up to the next unit") << 999.9999e-9 << QStringLiteral("1.000 \u00b5A");
        QTest::newRow("milli") << 0.5 << QStringLiteral("500.000 mA");
        QTest::newRow("whole") << 3.0 << QStringLiteral("3.000 A");
    }

    void currents()
    {
        QFETCH(double, amperes);
        QTEST(workbench::currentText(amperes), "text");
    }

    void readsAChannel()
    {
        SmallSystem system;
        const SystemValues values =
            workbench::readSystemValues(*system.dataAccess.getOrbClientPtr(), channel(0));
        QCOMPARE(values.voltageSet, workbench::voltageText(1500));
        QCOMPARE(values.voltageMeasure, workbench::voltageText(750.125));
        QCOMPARE(values.currentMeasure, workbench::currentText(2.5e-6));
        QCOMPARE(values.state, SystemState::RampingUp);
    }

    void leavesEmptyWhatCannotBeRead()
    {
        SmallSystem system;
        const SystemValues values =
            workbench::readSystemValues(*system.dataAccess.getOrbClientPtr(), channel(99));
        QCOMPARE(values.voltageSet, QString());
        QCOMPARE(values.voltageMeasure, QString());
        QCOMPARE(values.currentMeasure, QString());
        QCOMPARE(values.state, SystemState::Unavailable);
    }

    void keepsOtherUnitsAndTexts()
    {
        SmallSystem system;
        system.setItem(QStringLiteral("0.4.0.Status.voltageMeasure"), QStringLiteral("1.5"),
                       QStringLiteral("kV"));
        system.setItem(QStringLiteral("0.4.0.Status.currentMeasure"), QStringLiteral("overflow"));
        const SystemValues values =
            workbench::readSystemValues(*system.dataAccess.getOrbClientPtr(), channel(0));
        QCOMPARE(values.voltageMeasure, QStringLiteral("1.5 kV"));
        QCOMPARE(values.currentMeasure, QStringLiteral("overflow"));
    }

    void channelStates_data()
    {
        QTest::addColumn<QString>("running");
        QTest::addColumn<QString>("flag"); // items that read true besides
        QTest::addColumn<SystemState>("state");
        const QString none;
        QTest::newRow("off") << QStringLiteral("off") << none << SystemState::Off;
        QTest::newRow("on") << QStringLiteral("ok") << none << SystemState::On;
        QTest::newRow("up") << QStringLiteral("info") << QStringLiteral("voltageRampUp")
                            << SystemState::RampingUp;
        QTest::newRow("down") << QStringLiteral("info") << QStringLiteral("voltageRampDown")
                              << SystemState::RampingDown;
        QTest::newRow("either way") << QStringLiteral("info") << none << SystemState::Ramping;
        QTest::newRow("trip") << QStringLiteral("error") << QStringLiteral("currentTrip")
                              << SystemState::Tripped;
        QTest::newRow("trip without action")
            << QStringLiteral("error") << QStringLiteral("currentTrip on") << SystemState::Error;
        QTest::newRow("emergency") << QStringLiteral("error") << QStringLiteral("emergency")
                                   << SystemState::Emergency;
        QTest::newRow("fault") << QStringLiteral("error") << none << SystemState::Error;
        QTest::newRow("disabled") << QStringLiteral("disabled") << none << SystemState::Unavailable;
    }

    void channelStates()
    {
        QFETCH(QString, running);
        QFETCH(QString, flag);
        QFETCH(SystemState, state);
        SmallSystem system;
        system.setItem(QStringLiteral("0.4.1.Status.runningState"), running);
        for (const QString &item : flag.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            system.setItem(QStringLiteral("0.4.1.Status.") + item, QStringLiteral("true"));
        const SystemValues values =
            workbench::readSystemValues(*system.dataAccess.getOrbClientPtr(), channel(1));
        QVERIFY(values.state == state);
        QVERIFY(!workbench::stateText(values.state).isEmpty());
        QVERIFY(!workbench::stateIcon(values.state).isNull());
    }

    void marksAreToldApartWithoutColour()
    {
        // The same mark in grey: two states that an operator has to tell apart never have the same shape.
        const QVector<SystemState> states = {
            SystemState::Unavailable, SystemState::Off,         SystemState::On,   SystemState::Ramping,
            SystemState::RampingUp,   SystemState::RampingDown, SystemState::Error};
        QVector<QImage> shapes;
        for (SystemState state : states) {
            const QImage shape =
                workbench::stateIcon(state).pixmap(16, 16).toImage().convertToFormat(QImage::Format_Alpha8);
            QVERIFY(!shapes.contains(shape));
            shapes.append(shape);
        }
    }

    void otherLevels()
    {
        SmallSystem system;
        OrbClient &client = *system.dataAccess.getOrbClientPtr();
        OrbItemId id(OrbItemId::System);
        id.connectionName = QStringLiteral("left");
        QVERIFY(workbench::readSystemValues(client, id).state == SystemState::On);
        id.type = OrbItemId::Line;
        QVERIFY(workbench::readSystemValues(client, id).state == SystemState::Unknown);
        id.type = OrbItemId::Crate;
        id.address = 1000;
        QVERIFY(workbench::readSystemValues(client, id).state == SystemState::Off);
        id.type = OrbItemId::Module;
        id.address = 4;
        const SystemValues values = workbench::readSystemValues(client, id);
        QVERIFY(values.state == SystemState::Ramping);
        QCOMPARE(values.voltageSet, QString());
        id = OrbItemId(OrbItemId::System);
        id.connectionName = QStringLiteral("gone");
        QVERIFY(workbench::readSystemValues(client, id).state == SystemState::Unavailable);
    }
};

QTEST_MAIN(TestSystemValues)

#include "tst_system_values.moc"
