#include "tests/support/recording_observer.h"

#include <QtTest>

class TestKdObserver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deliversAnEventWithoutArguments_data();
    void deliversAnEventWithoutArguments();
};

void TestKdObserver::deliversAnEventWithoutArguments_data()
{
    QTest::addColumn<unsigned>("type");
    QTest::newRow("known") << 257u;
    QTest::newRow("unknown") << 100000u;
    QTest::newRow("largest") << 4294967295u;
}

void TestKdObserver::deliversAnEventWithoutArguments()
{
    QFETCH(unsigned, type);
    RecordingObserver observer;
    observer.childEventOccured(type);
    QCOMPARE(int(observer.events().size()), 1);
    QCOMPARE(observer.types().front(), type);
    QVERIFY(observer.events().front().stringArguments.isEmpty());
    QVERIFY(observer.events().front().intArguments.isEmpty());
}

QTEST_APPLESS_MAIN(TestKdObserver)
#include "tst_kd_observer.moc"
