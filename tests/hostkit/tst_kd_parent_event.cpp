#include "hostsdk/kd_parent_event.h"

#include <QtTest>

#include <limits>

class TestKdParentEvent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beginsWithItsType();
    void growsWithZeros();
    void ignoresHugeIndices_data();
    void ignoresHugeIndices();
    void answersBeyondItsArguments();
    void clearKeepsTheType();
    void carriesAddresses_data();
    void carriesAddresses();
    void carriesSeveralAddresses();
    void hasNoAddress_data();
    void hasNoAddress();
    void dropsAddressesThatDoNotFit();
    void copies();
};

void TestKdParentEvent::beginsWithItsType()
{
    const KdParentEvent event(KD::ItemSelected);
    QCOMPARE(static_cast<const void *>(&event.type), static_cast<const void *>(&event));
    QCOMPARE(int(event.type), 206);
    QCOMPARE(int(sizeof(event.type)), 4);
    QCOMPARE(int(KdParentEvent().type), 0);
}

void TestKdParentEvent::growsWithZeros()
{
    KdParentEvent event(KD::ItemSelected);
    event.setIntArgument(-7, 3);
    QCOMPARE(event.intArguments, (QVector<qint64>{0, 0, 0, -7}));
    event.setIntArgument(5, 1);
    QCOMPARE(event.intArguments, (QVector<qint64>{0, 5, 0, -7}));
    event.setIntArgument(std::numeric_limits<qint64>::min(), 0);
    QCOMPARE(event.getIntArgument(0), std::numeric_limits<qint64>::min());
    QCOMPARE(event.getIntArgument(3), qint64(-7));
}

void TestKdParentEvent::ignoresHugeIndices_data()
{
    QTest::addColumn<quint64>("index");
    QTest::addColumn<int>("size");
    QTest::newRow("last allowed") << quint64(4095) << 4096;
    QTest::newRow("first refused") << quint64(4096) << 0;
    QTest::newRow("beyond int") << quint64(1) + std::numeric_limits<qint32>::max() << 0;
    QTest::newRow("0 in 32 bits") << quint64(1) + std::numeric_limits<quint32>::max() << 0;
    QTest::newRow("largest") << std::numeric_limits<quint64>::max() << 0;
}

void TestKdParentEvent::ignoresHugeIndices()
{
    QFETCH(quint64, index);
    QFETCH(int, size);
    KdParentEvent event(KD::ItemSelected);
    event.setIntArgument(1, index);
    QCOMPARE(event.intArguments.size(), size);
    QCOMPARE(event.getIntArgument(index), qint64(size > 0 ? 1 : 0));
}

void TestKdParentEvent::answersBeyondItsArguments()
{
    KdParentEvent event(KD::ItemSelected);
    event.stringArguments << QStringLiteral("a");
    event.setIntArgument(1, 0);
    for (const quint64 index : {quint64(1), quint64(1) << 32, std::numeric_limits<quint64>::max()}) {
        QCOMPARE(event.getIntArgument(index), qint64(0));
        QVERIFY(event.getStringArgument(index).isEmpty());
    }
    QCOMPARE(event.getStringArgument(0), QStringLiteral("a"));
}

void TestKdParentEvent::clearKeepsTheType()
{
    KdParentEvent event(KD::ItemActivated);
    event.stringArguments << QStringLiteral("a");
    event.setIntArgument(1, 0);
    event.clear();
    QVERIFY(event.stringArguments.isEmpty());
    QVERIFY(event.intArguments.isEmpty());
    QCOMPARE(int(event.type), 208);
}

void TestKdParentEvent::carriesAddresses_data()
{
    QTest::addColumn<OrbItemId>("id");
    for (int level = OrbItemId::Item; level <= OrbItemId::Channel; ++level) {
        OrbItemId id(static_cast<OrbItemId::Type>(level));
        id.connection = 3;
        id.line = 2;
        id.address = 1004;
        id.channel = level == OrbItemId::Channel ? 11 : -1;
        QTest::addRow("level %d", level) << id;
        id.connection = -1;
        QTest::addRow("level %d without connection", level) << id;
        id.connection = 0xFFFFFE;
        id.line = std::numeric_limits<quint32>::max();
        id.address = std::numeric_limits<quint32>::max();
        id.channel = std::numeric_limits<qint32>::max();
        QTest::addRow("level %d, largest", level) << id;
        QTest::addRow("level %d, smallest", level) << OrbItemId(static_cast<OrbItemId::Type>(level));
    }
}

void TestKdParentEvent::carriesAddresses()
{
    QFETCH(OrbItemId, id);
    KdParentEvent event(KD::ItemSelected);
    event.setHardwareId(id, 0);
    QCOMPARE(event.intArguments.size(), 2);
    QVERIFY(event.getHardwareId(0) == id);

    OrbItemId withTexts = id;
    withTexts.connectionName = QStringLiteral("c");
    withTexts.itemName = QStringLiteral("i");
    event.setHardwareId(withTexts, 0);
    QVERIFY(event.getHardwareId(0) == id);
}

void TestKdParentEvent::carriesSeveralAddresses()
{
    KdParentEvent event(KD::ItemSelected);
    OrbItemId first(OrbItemId::Module);
    first.address = 5;
    OrbItemId second(OrbItemId::Line);
    second.line = 6;
    event.setHardwareId(second, 4);
    event.setHardwareId(first, 0);
    QVERIFY(event.getHardwareId(0) == first);
    QVERIFY(event.getHardwareId(2) == OrbItemId());
    QVERIFY(event.getHardwareId(4) == second);
}

void TestKdParentEvent::hasNoAddress_data()
{
    QTest::addColumn<QVector<qint64>>("arguments");
    QTest::addColumn<unsigned>("index");
    const qint64 channel = qint64(6) << 56;
    QTest::newRow("no arguments") << QVector<qint64>() << 0u;
    QTest::newRow("half of one") << QVector<qint64>{channel} << 0u;
    QTest::newRow("second half") << QVector<qint64>{channel, channel} << 1u;
    QTest::newRow("largest index") << QVector<qint64>{channel, channel} << 4294967295u;
    QTest::newRow("level 0") << QVector<qint64>{1, 1} << 0u;
    QTest::newRow("level 7") << QVector<qint64>{qint64(7) << 56, 0} << 0u;
    QTest::newRow("negative") << QVector<qint64>{-1, -1} << 0u;
}

void TestKdParentEvent::hasNoAddress()
{
    QFETCH(QVector<qint64>, arguments);
    QFETCH(unsigned, index);
    KdParentEvent event(KD::ItemSelected);
    event.intArguments = arguments;
    QVERIFY(event.getHardwareId(index) == OrbItemId());
}

void TestKdParentEvent::dropsAddressesThatDoNotFit()
{
    KdParentEvent event(KD::ItemSelected);
    event.setHardwareId(OrbItemId(OrbItemId::Module), 4095);
    QVERIFY(event.intArguments.isEmpty());
    event.setHardwareId(OrbItemId(OrbItemId::Module), 4294967295u);
    QVERIFY(event.intArguments.isEmpty());

    // A connection that has no room in the event is better unknown than another one.
    OrbItemId id(OrbItemId::Module);
    id.connection = 0xFFFFFF + 5;
    event.setHardwareId(id, 0);
    QCOMPARE(event.getHardwareId(0).connection, -1);
}

void TestKdParentEvent::copies()
{
    KdParentEvent event(KD::ItemSelected);
    event.setIntArgument(1, 0);
    event.stringArguments << QStringLiteral("a");
    const KdParentEvent copy(event);
    KdParentEvent assigned;
    assigned = event;
    event.clear();
    for (const KdParentEvent &other : {copy, assigned}) {
        QCOMPARE(int(other.type), 206);
        QCOMPARE(other.getIntArgument(0), qint64(1));
        QCOMPARE(other.getStringArgument(0), QStringLiteral("a"));
    }
}

QTEST_APPLESS_MAIN(TestKdParentEvent)
#include "tst_kd_parent_event.moc"
