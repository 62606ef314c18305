#include "hostsdk/kd_plugin_common.h"

#include "hostsdk/kd_main_data.h"

#include <QMimeData>
#include <QRandomGenerator>
#include <QtTest>

class TestKdPluginCommon : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodes_data();
    void decodes();
    void findsNothing_data();
    void findsNothing();
    void takesNoOtherMimeType();
    void takesNoNullPayload();
    void skipsElementsThatAreNoAddresses();
    void looksAtOneMebibyteAtMost();
    void survivesRandomBytes();
    void survivesDamagedPayloads();
};

namespace
{

bool decode(const QByteArray &payload, QVector<OrbItemId> &items)
{
    QMimeData mimeData;
    mimeData.setData(KdMainData(nullptr).getDndMimeType(), payload);
    return KdPluginCommon::parseDragAndDropString(&mimeData, items);
}

} // namespace

void TestKdPluginCommon::decodes_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<OrbItemId>("expected");
    OrbItemId id(OrbItemId::System);
    QTest::newRow("system") << QByteArray(R"([{"level":2}])") << id;
    QTest::newRow("fields of no meaning") << QByteArray(R"([{"level":2,"line":[],"x":1}])") << id;
    QTest::newRow("connection of a wrong type") << QByteArray(R"([{"level":2,"connection":"1"}])") << id;
    QTest::newRow("connection out of range") << QByteArray(R"([{"level":2,"connection":2147483648}])") << id;
    QTest::newRow("negative connection") << QByteArray(R"([{"level":2,"connection":-1}])") << id;
    id.connection = 1;
    QTest::newRow("connection") << QByteArray(R"([{"level":2,"connection":1}])") << id;
    id = OrbItemId(OrbItemId::Line);
    id.line = 4294967295u;
    QTest::newRow("line") << QByteArray(R"([{"level":3,"line":4294967295}])") << id;
    id = OrbItemId(OrbItemId::Crate);
    id.line = 1;
    id.address = 1000;
    QTest::newRow("crate") << QByteArray(R"([{"level":4,"line":1,"address":1000}])") << id;
    id.type = OrbItemId::Channel;
    id.address = 4;
    id.channel = 7;
    QTest::newRow("channel") << QByteArray(R"([{"level":6,"line":1,"address":4,"channel":7}])") << id;
    QTest::newRow("numbers with a fraction of nothing")
        << QByteArray(R"([{"level":6.0,"line":1e0,"address":4.0,"channel":7.0}])") << id;
}

void TestKdPluginCommon::decodes()
{
    QFETCH(QByteArray, payload);
    QFETCH(OrbItemId, expected);
    QVector<OrbItemId> items;
    QVERIFY(decode(payload, items));
    QCOMPARE(items.size(), 1);
    QVERIFY(items.first() == expected);
}

void TestKdPluginCommon::findsNothing_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("blank") << QByteArray(" ");
    QTest::newRow("text") << QByteArray("1.2.3");
    QTest::newRow("binary") << QByteArray("\0\xff\xfe[{", 5);
    QTest::newRow("no elements") << QByteArray("[]");
    QTest::newRow("object") << QByteArray(R"({"level":2})");
    QTest::newRow("number") << QByteArray("[2]");
    QTest::newRow("nested") << QByteArray(R"([[{"level":2}]])");
    QTest::newRow("truncated") << QByteArray(R"([{"level":2})");
    QTest::newRow("no level") << QByteArray(R"([{"line":2}])");
    QTest::newRow("level as text") << QByteArray(R"([{"level":"2"}])");
    QTest::newRow("level 0") << QByteArray(R"([{"level":0}])");
    QTest::newRow("level 1") << QByteArray(R"([{"level":1}])");
    QTest::newRow("level 7") << QByteArray(R"([{"level":7,"line":0,"address":0,"channel":0}])");
    QTest::newRow("level between") << QByteArray(R"([{"level":2.5}])");
    QTest::newRow("huge level") << QByteArray(R"([{"level":1e300}])");
    QTest::newRow("line left out") << QByteArray(R"([{"level":3}])");
    QTest::newRow("negative line") << QByteArray(R"([{"level":3,"line":-1}])");
    QTest::newRow("line too large") << QByteArray(R"([{"level":3,"line":4294967296}])");
    QTest::newRow("huge line") << QByteArray(R"([{"level":3,"line":1e308}])");
    QTest::newRow("line beyond double") << QByteArray(R"([{"level":3,"line":1e999}])");
    QTest::newRow("address left out") << QByteArray(R"([{"level":5,"line":1}])");
    QTest::newRow("address null") << QByteArray(R"([{"level":5,"line":1,"address":null}])");
    QTest::newRow("channel left out") << QByteArray(R"([{"level":6,"line":1,"address":1}])");
    QTest::newRow("channel too large")
        << QByteArray(R"([{"level":6,"line":1,"address":1,"channel":2147483648}])");
    QTest::newRow("deeply nested") << QByteArray(500000, '[') + QByteArray(500000, ']');
    QTest::newRow("deeply nested objects") << QByteArray("[") + QByteArray(R"({"level":)").repeated(50000);
}

void TestKdPluginCommon::findsNothing()
{
    QFETCH(QByteArray, payload);
    QVector<OrbItemId> items{OrbItemId(OrbItemId::Line)};
    QVERIFY(!decode(payload, items));
    QVERIFY(items.isEmpty());
}

void TestKdPluginCommon::takesNoOtherMimeType()
{
    QMimeData mimeData;
    mimeData.setText(QStringLiteral(R"([{"level":2}])"));
    QVector<OrbItemId> items{OrbItemId(OrbItemId::Line)};
    QVERIFY(!KdPluginCommon::parseDragAndDropString(&mimeData, items));
    QVERIFY(items.isEmpty());
}

void TestKdPluginCommon::takesNoNullPayload()
{
    QVector<OrbItemId> items{OrbItemId(OrbItemId::Line)};
    QVERIFY(!KdPluginCommon::parseDragAndDropString(nullptr, items));
    QVERIFY(items.isEmpty());
}

void TestKdPluginCommon::skipsElementsThatAreNoAddresses()
{
    QVector<OrbItemId> items;
    QVERIFY(decode(R"([1, {"level":2}, null, {"level":"3"}, [{"level":2}], {"level":3,"line":8}])", items));
    QCOMPARE(items.size(), 2);
    QCOMPARE(int(items.at(0).type), 2);
    QCOMPARE(items.at(1).line, 8u);
}

void TestKdPluginCommon::looksAtOneMebibyteAtMost()
{
    const QByteArray array(R"([{"level":2}])");
    const int limit = 1024 * 1024;
    QVector<OrbItemId> items;
    QVERIFY(decode(array + QByteArray(limit - array.size(), ' '), items));
    QVERIFY(!decode(array + QByteArray(limit - array.size() + 1, ' '), items));
    QVERIFY(!decode(QByteArray(8 * limit, 'x'), items));
}

void TestKdPluginCommon::survivesRandomBytes()
{
    QRandomGenerator random(1);
    QVector<OrbItemId> items;
    for (int i = 0; i < 2000; ++i) {
        QByteArray payload(random.bounded(200), Qt::Uninitialized);
        for (char &byte : payload)
            byte = static_cast<char>(random.bounded(256));
        QCOMPARE(decode(payload, items), !items.isEmpty());
    }
}

void TestKdPluginCommon::survivesDamagedPayloads()
{
    const QByteArray whole(R"([{"level":6,"connection":1,"line":1,"address":4,"channel":7},{"level":2}])");
    QRandomGenerator random(2);
    QVector<OrbItemId> items;
    int decoded = 0;
    for (int i = 0; i < 5000; ++i) {
        QByteArray payload = whole;
        payload[random.bounded(payload.size())] = static_cast<char>(random.bounded(256));
        const bool found = decode(payload, items);
        QCOMPARE(found, !items.isEmpty());
        QVERIFY(items.size() <= 2);
        decoded += found ? 1 : 0;
    }
    // Some damage hits a digit: then there is still an address, another one.
    QVERIFY(decoded > 0 && decoded < 5000);
}

QTEST_GUILESS_MAIN(TestKdPluginCommon)
#include "tst_kd_plugin_common.moc"
