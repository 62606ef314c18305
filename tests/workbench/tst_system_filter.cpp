#include "workbench/app/system_filter.h"

#include "hostclient/orb_item_id.h"

#include <QTest>

using workbench::SystemFilter;
using workbench::SystemState;

Q_DECLARE_METATYPE(workbench::SystemState)

class TestSystemFilter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void matches_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isMatch");
        // Against channel 7 of module 3 on line 0, which is tripped.
        QTest::newRow("beginning of a word") << QStringLiteral("chan") << true;
        QTest::newRow("whole name") << QStringLiteral("Channel 7") << true;
        QTest::newRow("any case") << QStringLiteral("CHANNEL") << true;
        QTest::newRow("middle of a word") << QStringLiteral("annel") << false;
        QTest::newRow("another number") << QStringLiteral("channel 8") << false;
        QTest::newRow("terms in any order") << QStringLiteral("7 channel") << true;
        QTest::newRow("address") << QStringLiteral("0.3.7") << true;
        QTest::newRow("beginning of the address") << QStringLiteral("0.3.") << true;
        QTest::newRow("end of the address") << QStringLiteral("3.7") << false;
        QTest::newRow("state") << QStringLiteral("trip") << true;
        QTest::newRow("another state") << QStringLiteral("ramp") << false;
        QTest::newRow("state and address") << QStringLiteral(" tripped  0.3 ") << true;
        QTest::newRow("state and another address") << QStringLiteral("tripped 0.4") << false;
        QTest::newRow("a number is no address") << QStringLiteral("0") << false;
    }

    void matches()
    {
        QFETCH(QString, text);
        QFETCH(bool, isMatch);
        OrbItemId id(OrbItemId::Channel);
        id.address = 3;
        id.channel = 7;
        QCOMPARE(SystemFilter(text).matches(id, QStringLiteral("Channel 7"), SystemState::Tripped), isMatch);
    }

    void knowsWhetherStatesMatter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("asks");
        QTest::newRow("nothing") << QString() << false;
        QTest::newRow("name") << QStringLiteral("channel") << false;
        QTest::newRow("address") << QStringLiteral("0.3") << false;
        QTest::newRow("state") << QStringLiteral("emergency") << true;
        QTest::newRow("second word of a state") << QStringLiteral("up") << true;
        QTest::newRow("name and state") << QStringLiteral("module off") << true;
    }

    void knowsWhetherStatesMatter()
    {
        QFETCH(QString, text);
        QFETCH(bool, asks);
        QCOMPARE(SystemFilter(text).asksForState(), asks);
    }

    void isEmptyWithoutTerms()
    {
        QVERIFY(SystemFilter().isEmpty());
        QVERIFY(SystemFilter(QStringLiteral("  ")).isEmpty());
        QVERIFY(!SystemFilter(QStringLiteral(" a ")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSystemFilter)

#include "tst_system_filter.moc"
