#include "hostsdk/kd_main_data.h"

#include "hostclient/dl_data_access.h"
#include "tests/support/recording_backend.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QtTest>

class TestKdMainData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasItsIcons_data();
    void hasItsIcons();
    void hasNoOtherIcons_data();
    void hasNoOtherIcons();
    void keepsTheScaleFactor();
    void hasTheDataAccessLayer();
    void hasAMimeTypeOfItsOwn();
    void hasADefaultDirectory();
};

void TestKdMainData::hasItsIcons_data()
{
    QTest::addColumn<quint32>("type");
    QTest::newRow("terminal") << 51u;
    QTest::newRow("text editor") << 29u;
    QTest::newRow("open file") << 10u;
    QTest::newRow("save file") << 11u;
    QTest::newRow("execute file") << 55u;
    QTest::newRow("clear") << 15u;
}

void TestKdMainData::hasItsIcons()
{
    QFETCH(quint32, type);
    KdMainData mainData(nullptr);
    const QIcon icon = mainData.getIcon(static_cast<KD::IconType>(type));
    QVERIFY(!icon.isNull());
    QCOMPARE(icon.pixmap(24, 24).size(), QSize(24, 24));
}

void TestKdMainData::hasNoOtherIcons_data()
{
    QTest::addColumn<quint32>("type");
    QTest::newRow("zero") << 0u;
    QTest::newRow("between") << 12u;
    QTest::newRow("largest") << 4294967295u;
}

void TestKdMainData::hasNoOtherIcons()
{
    QFETCH(quint32, type);
    KdMainData mainData(nullptr);
    QVERIFY(mainData.getIcon(static_cast<KD::IconType>(type)).isNull());
}

void TestKdMainData::keepsTheScaleFactor()
{
    KdMainData mainData(nullptr);
    QCOMPARE(mainData.getToolbarIconScaleFactor(), 1.0);
    mainData.setToolbarIconScaleFactor(1.5);
    QCOMPARE(mainData.getToolbarIconScaleFactor(), 1.5);
}

void TestKdMainData::hasTheDataAccessLayer()
{
    RecordingBackend backend;
    DlDataAccess dataAccess(backend);
    const KdMainData mainData(&dataAccess);
    QCOMPARE(mainData.dataAccess, &dataAccess);
    QVERIFY(!mainData.shuttingDown);
}

void TestKdMainData::hasAMimeTypeOfItsOwn()
{
    const QString type = KdMainData(nullptr).getDndMimeType();
    QVERIFY(type.startsWith(QLatin1String("application/")));
}

void TestKdMainData::hasADefaultDirectory()
{
    const QString directory = KdMainData(nullptr).getDefaultDirectory();
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    QCOMPARE(directory, QFileInfo(documents).isDir() ? documents : QDir::homePath());
}

QTEST_MAIN(TestKdMainData)
#include "tst_kd_main_data.moc"
