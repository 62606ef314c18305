#include "hostclient/orb_request_item.h"

#include <QtTest>

class TestOrbRequestItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void spellsItsCommand_data();
    void spellsItsCommand();
    void copies();
};

void TestOrbRequestItem::spellsItsCommand_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::newRow("get") << int(OrbRequestItem::GetItem) << QStringLiteral("getItem");
    QTest::newRow("set") << int(OrbRequestItem::SetItem) << QStringLiteral("setItem");
    QTest::newRow("unknown") << int(OrbRequestItem::Unknown) << QString();
    QTest::newRow("from a newer service") << 77 << QString();
}

void TestOrbRequestItem::spellsItsCommand()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    OrbRequestItem request;
    request.commandType = static_cast<OrbRequestItem::CommandType>(type);
    QCOMPARE(request.getCommandTypeAsString(), text);
}

void TestOrbRequestItem::copies()
{
    OrbRequestItem request;
    QCOMPARE(request.channel, -1);
    request.line = 1;
    request.address = 2;
    request.channel = 3;
    request.itemName = QStringLiteral("Control.on");
    request.value = QStringLiteral("1");
    request.rawJson = QStringLiteral("{}");
    const OrbRequestItem copy(request);
    OrbRequestItem assigned;
    assigned = copy;
    QCOMPARE(assigned.line, 1u);
    QCOMPARE(assigned.address, 2u);
    QCOMPARE(assigned.channel, 3);
    QCOMPARE(assigned.itemName, QStringLiteral("Control.on"));
    QCOMPARE(assigned.value, QStringLiteral("1"));
    QCOMPARE(assigned.rawJson, QStringLiteral("{}"));
}

QTEST_APPLESS_MAIN(TestOrbRequestItem)
#include "tst_orb_request_item.moc"
