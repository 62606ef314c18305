#include "tests/support/recording_observer.h"

#include <QtTest>

class TestRecordingObserver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsCopiesInOrder();
};

void TestRecordingObserver::keepsCopiesInOrder()
{
    RecordingObserver observer;
    KdChildEvent text(KD::Request, QStringLiteral("a"));
    observer.processChildEvent(text);
    text.stringArguments[0] = QStringLiteral("b");
    observer.processChildEvent(text);
    KdChildEvent number(KD::BusyChanged, qint64(1));
    observer.processChildEvent(number);
    text.clear();

    QCOMPARE(observer.types(), (std::vector<quint32>{258, 258, 260}));
    QCOMPARE(observer.textsOf(KD::Request), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    QCOMPARE(observer.integersOf(KD::BusyChanged), std::vector<qint64>{1});
    QCOMPARE(int(observer.eventsOf(KD::Request).size()), 2);
    QVERIFY(observer.eventsOf(KD::OpenFile).empty());
    QVERIFY(observer.textsOf(KD::OpenFile).isEmpty());
    observer.clear();
    QVERIFY(observer.events().empty());
}

QTEST_APPLESS_MAIN(TestRecordingObserver)
#include "tst_recording_observer.moc"
