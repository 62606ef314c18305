#include "hostclient/tarn_item.h"

#include <QtTest>

#include <type_traits>

class TestTarnItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fieldsStandAtFixedBytes_data();
    void fieldsStandAtFixedBytes();
    void isPlain();
};

void TestTarnItem::fieldsStandAtFixedBytes_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("expected");
    QTest::newRow("path") << int(offsetof(TarnItem, path)) << 0;
    QTest::newRow("value") << int(offsetof(TarnItem, value)) << 128;
    QTest::newRow("timestamp") << int(offsetof(TarnItem, timestamp)) << 357;
    QTest::newRow("end") << int(sizeof(TarnItem)) << 382;
}

void TestTarnItem::fieldsStandAtFixedBytes()
{
    QFETCH(int, offset);
    QFETCH(int, expected);
    QCOMPARE(offset, expected);
}

void TestTarnItem::isPlain()
{
    QVERIFY(std::is_trivially_copyable<TarnItem>::value);
    QVERIFY(std::is_standard_layout<TarnItem>::value);
}

QTEST_APPLESS_MAIN(TestTarnItem)
#include "tst_tarn_item.moc"
