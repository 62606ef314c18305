#include "hostclient/orb_item_id.h"

#include <QtTest>

#include <functional>

class TestOrbItemId : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout();
    void isMadeFromALevel();
    void isUndefinedByDefault();
    void comparesEveryField_data();
    void comparesEveryField();
};

void TestOrbItemId::layout()
{
    QCOMPARE(int(sizeof(OrbItemId)), 24 + 2 * int(sizeof(QString)));
    const OrbItemId id;
    const auto *const base = reinterpret_cast<const char *>(&id);
    QCOMPARE(int(reinterpret_cast<const char *>(&id.line) - base), 0);
    QCOMPARE(int(reinterpret_cast<const char *>(&id.address) - base), 4);
    QCOMPARE(int(sizeof(id.line)), 4);
    QCOMPARE(int(sizeof(id.address)), 4);
}

void TestOrbItemId::isMadeFromALevel()
{
    const OrbItemId id = OrbItemId::Crate;
    QCOMPARE(int(id.type), 4);
    QCOMPARE(id.connection, -1);
    QCOMPARE(id.channel, -1);
}

void TestOrbItemId::isUndefinedByDefault()
{
    const OrbItemId id;
    QCOMPARE(int(id.type), 0);
    QCOMPARE(id.line, 0u);
    QCOMPARE(id.address, 0u);
    QCOMPARE(id.connection, -1);
    QCOMPARE(id.channel, -1);
    QVERIFY(id.connectionName.isEmpty());
    QVERIFY(id.itemName.isEmpty());
}

using Change = std::function<void(OrbItemId &)>;
Q_DECLARE_METATYPE(Change)

void TestOrbItemId::comparesEveryField_data()
{
    QTest::addColumn<Change>("change");
    QTest::newRow("level") << Change([](OrbItemId &id) { id.type = OrbItemId::Line; });
    QTest::newRow("line") << Change([](OrbItemId &id) { id.line = 1; });
    QTest::newRow("address") << Change([](OrbItemId &id) { id.address = 1; });
    QTest::newRow("channel") << Change([](OrbItemId &id) { id.channel = 1; });
    QTest::newRow("connection") << Change([](OrbItemId &id) { id.connection = 1; });
    QTest::newRow("connection name") << Change(
        [](OrbItemId &id) { id.connectionName = QStringLiteral("c"); });
    QTest::newRow("item") << Change([](OrbItemId &id) { id.itemName = QStringLiteral("i"); });
}

void TestOrbItemId::comparesEveryField()
{
    QFETCH(Change, change);
    const OrbItemId original;
    OrbItemId other = original;
    QVERIFY(original == other);
    QVERIFY(!(original != other));
    change(other);
    QVERIFY(original != other);
    QVERIFY(!(original == other));
}

QTEST_APPLESS_MAIN(TestOrbItemId)
#include "tst_orb_item_id.moc"
