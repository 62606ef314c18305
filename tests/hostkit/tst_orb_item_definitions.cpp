#include "hostclient/orb_item_definitions.h"

#include <QtTest>

class TestOrbItemDefinitions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data();
    void names();
};

void TestOrbItemDefinitions::names_data()
{
    using D = OrbItemDefinitions;
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("session") << D::getItemNameSystemStatussessionId() << QStringLiteral("Status.sessionId");
    QTest::newRow("aux state") << D::getItemNameSystemStatususbAuxState()
                               << QStringLiteral("Status.usbAuxState");
    QTest::newRow("live insertion") << D::getItemNameSystemStatusliveInsertion()
                                    << QStringLiteral("Status.liveInsertion");
    QTest::newRow("ethernet") << D::getItemNameSystemStatusethernetState()
                              << QStringLiteral("Status.ethernetState");
    QTest::newRow("wifi") << D::getItemNameSystemStatuswifiState() << QStringLiteral("Status.wifiState");
    QTest::newRow("remote state") << D::getItemNameSystemStatususbRemoteState()
                                  << QStringLiteral("Status.usbRemoteState");
    QTest::newRow("remote text") << D::getItemNameSystemStatususbRemoteText()
                                 << QStringLiteral("Status.usbRemoteText");
    QTest::newRow("aux text") << D::getItemNameSystemStatususbAuxText()
                              << QStringLiteral("Status.usbAuxText");
    QTest::newRow("can state") << D::getItemNameSystemStatuscanState() << QStringLiteral("Status.canState");
    QTest::newRow("can text") << D::getItemNameSystemStatuscanText() << QStringLiteral("Status.canText");
    QTest::newRow("connection") << D::getItemNameSystemStatusconnectionName()
                                << QStringLiteral("Status.connectionName");
    QTest::newRow("controller") << D::getItemNameSystemStatuscontrollerName()
                                << QStringLiteral("Status.controllerName");
    QTest::newRow("channels") << D::getItemNameModuleStatusnumberOfChannels()
                              << QStringLiteral("Status.numberOfChannels");
}

void TestOrbItemDefinitions::names()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QCOMPARE(name, expected);
}

QTEST_APPLESS_MAIN(TestOrbItemDefinitions)
#include "tst_orb_item_definitions.moc"
