#include "workbench/hostkit/drag_payload.h"

#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_plugin_common.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

#include <limits>

class TestDragPayload : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comesBackAsItWas_data();
    void comesBackAsItWas();
    void leavesOutWhatIsNoPlace();
    void isNoText();
    void carriesThousands();
};

void TestDragPayload::comesBackAsItWas_data()
{
    QTest::addColumn<OrbItemId>("id");
    for (int level = OrbItemId::System; level <= OrbItemId::Channel; ++level) {
        for (const qint32 connection : {-1, 0, std::numeric_limits<qint32>::max()}) {
            OrbItemId id(static_cast<OrbItemId::Type>(level));
            id.connection = connection;
            id.line = level >= OrbItemId::Line ? 3 : 0;
            id.address = level >= OrbItemId::Crate ? 1004 : 0;
            id.channel = level == OrbItemId::Channel ? 0 : -1;
            QTest::addRow("level %d, connection %d", level, connection) << id;
        }
    }
    OrbItemId largest(OrbItemId::Channel);
    largest.line = std::numeric_limits<quint32>::max();
    largest.address = std::numeric_limits<quint32>::max();
    largest.channel = std::numeric_limits<qint32>::max();
    QTest::newRow("largest") << largest;
}

void TestDragPayload::comesBackAsItWas()
{
    QFETCH(OrbItemId, id);
    const KdMainData mainData(nullptr);
    const auto payload = hostkit::makeDragPayload({id, id}, mainData.getDndMimeType());
    QVector<OrbItemId> items;
    QVERIFY(KdPluginCommon::parseDragAndDropString(payload.get(), items));
    QCOMPARE(items.size(), 2);
    QVERIFY(items.at(0) == id);
    QVERIFY(items.at(1) == id);
}

void TestDragPayload::leavesOutWhatIsNoPlace()
{
    const QVector<OrbItemId> ids{OrbItemId(), OrbItemId(OrbItemId::Item), OrbItemId(OrbItemId::System)};
    const auto payload = hostkit::makeDragPayload(ids, hostkit::dragMimeType());
    QCOMPARE(QJsonDocument::fromJson(payload->data(hostkit::dragMimeType())).array().size(), 1);
    QVector<OrbItemId> items;
    QVERIFY(KdPluginCommon::parseDragAndDropString(payload.get(), items));
    QCOMPARE(items.size(), 1);
    QCOMPARE(int(items.first().type), 2);

    const auto nothing = hostkit::makeDragPayload({}, hostkit::dragMimeType());
    QVERIFY(!KdPluginCommon::parseDragAndDropString(nothing.get(), items));
    QVERIFY(items.isEmpty());
}

void TestDragPayload::isNoText()
{
    const auto payload =
        hostkit::makeDragPayload({OrbItemId(OrbItemId::System)}, QStringLiteral("application/x-t"));
    QCOMPARE(payload->formats(), QStringList(QStringLiteral("application/x-t")));
    QVERIFY(!payload->hasText());
    QVERIFY(!payload->hasHtml());
    QVERIFY(!payload->hasUrls());
}

void TestDragPayload::carriesThousands()
{
    QVector<OrbItemId> ids;
    for (int i = 0; i < 5000; ++i) {
        OrbItemId id(OrbItemId::Channel);
        id.address = static_cast<quint32>(i);
        id.channel = i % 16;
        ids.append(id);
    }
    const auto payload = hostkit::makeDragPayload(ids, hostkit::dragMimeType());
    QVector<OrbItemId> items;
    QVERIFY(KdPluginCommon::parseDragAndDropString(payload.get(), items));
    QVERIFY(items == ids);
}

QTEST_GUILESS_MAIN(TestDragPayload)
#include "tst_drag_payload.moc"
