#include "workbench/hostkit/orb_item_path.h"

#include <QtTest>

class TestOrbItemPath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsPlaces_data();
    void readsPlaces();
    void refuses_data();
    void refuses();
};

void TestOrbItemPath::readsPlaces_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("level");
    QTest::addColumn<quint32>("line");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<int>("channel");
    QTest::addColumn<QString>("item");
    const QString item = QStringLiteral("Status.x");
    QTest::newRow("system") << item << 2 << 0u << 0u << -1 << item;
    QTest::newRow("system, one word")
        << QStringLiteral("word") << 2 << 0u << 0u << -1 << QStringLiteral("word");
    QTest::newRow("module") << QStringLiteral("3.4.Status.x") << 5 << 3u << 4u << -1 << item;
    QTest::newRow("last module") << QStringLiteral("3.999.Status.x") << 5 << 3u << 999u << -1 << item;
    QTest::newRow("first crate") << QStringLiteral("3.1000.Status.x") << 4 << 3u << 1000u << -1 << item;
    QTest::newRow("channel") << QStringLiteral("0.4.1.Status.voltageMeasure") << 6 << 0u << 4u << 1
                             << QStringLiteral("Status.voltageMeasure");
    QTest::newRow("leading zeros") << QStringLiteral("00.04.001.Status.x") << 6 << 0u << 4u << 1 << item;
    QTest::newRow("largest numbers") << QStringLiteral("4294967295.4294967295.a.b") << 4 << 4294967295u
                                     << 4294967295u << -1 << QStringLiteral("a.b");
    QTest::newRow("largest channel") << QStringLiteral("0.0.2147483647.a.b") << 6 << 0u << 0u << 2147483647
                                     << QStringLiteral("a.b");
    QTest::newRow("many dots") << QStringLiteral("0.1.a.b..c.") << 5 << 0u << 1u << -1
                               << QStringLiteral("a.b..c.");
    QTest::newRow("not ASCII") << QStringLiteral("0.1.Größe.漢") << 5 << 0u << 1u << -1
                               << QStringLiteral("Größe.漢");
    QTest::newRow("digits within an item")
        << QStringLiteral("0.1.4a.b") << 5 << 0u << 1u << -1 << QStringLiteral("4a.b");
    // Digits of other scripts are letters here.
    QTest::newRow("foreign digits") << QStringLiteral("٣.٤.Status.x") << 2 << 0u << 0u << -1
                                    << QStringLiteral("٣.٤.Status.x");
    const QString huge(1000000, QLatin1Char('x'));
    QTest::newRow("huge item") << QStringLiteral("0.1.") + huge << 5 << 0u << 1u << -1 << huge;
}

void TestOrbItemPath::readsPlaces()
{
    QFETCH(QString, path);
    OrbItemId id;
    id.connectionName = QStringLiteral("c");
    id.connection = 7;
    QVERIFY(hostkit::parseItemPath(path, id));
    QTEST(int(id.type), "level");
    QTEST(id.line, "line");
    QTEST(id.address, "address");
    QTEST(id.channel, "channel");
    QTEST(id.itemName, "item");
    QCOMPARE(id.connectionName, QStringLiteral("c"));
    QCOMPARE(id.connection, 7);
}

void TestOrbItemPath::refuses_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("one number") << QStringLiteral("1");
    QTest::newRow("line alone") << QStringLiteral("1.Status.x");
    QTest::newRow("module without item") << QStringLiteral("1.2");
    QTest::newRow("module with a dot and no item") << QStringLiteral("1.2.");
    QTest::newRow("channel without item") << QStringLiteral("1.2.3");
    QTest::newRow("channel with a dot and no item") << QStringLiteral("1.2.3.");
    QTest::newRow("four numbers") << QStringLiteral("1.2.3.4.Status.x");
    QTest::newRow("four numbers alone") << QStringLiteral("1.2.3.4");
    QTest::newRow("line too large") << QStringLiteral("4294967296.1.Status.x");
    QTest::newRow("address too large") << QStringLiteral("0.4294967296.Status.x");
    QTest::newRow("channel too large") << QStringLiteral("0.1.2147483648.Status.x");
    QTest::newRow("endless number") << QString(100000, QLatin1Char('9')) + QStringLiteral(".1.Status.x");
    QTest::newRow("channel of a crate") << QStringLiteral("0.1000.1.Status.x");
}

void TestOrbItemPath::refuses()
{
    QFETCH(QString, path);
    OrbItemId id(OrbItemId::Line);
    id.line = 9;
    const OrbItemId before = id;
    QVERIFY(!hostkit::parseItemPath(path, id));
    QVERIFY(id == before);
}

QTEST_APPLESS_MAIN(TestOrbItemPath)
#include "tst_orb_item_path.moc"
