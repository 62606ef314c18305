#include "hostsdk/kd_child_event.h"

#include <QtTest>

class TestKdChildEvent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasTheParentEventsLayout();
    void isMadeFromAType();
    void isMadeFromAText();
    void isMadeFromAnInteger();
    void copies();
};

void TestKdChildEvent::hasTheParentEventsLayout()
{
    QCOMPARE(sizeof(KdChildEvent), sizeof(KdParentEvent));
    const KdChildEvent event(KD::Request);
    QCOMPARE(static_cast<const void *>(&event.type), static_cast<const void *>(&event));
}

void TestKdChildEvent::isMadeFromAType()
{
    const KdChildEvent event(KD::ToolAnswer);
    QCOMPARE(int(event.type), 152);
    QVERIFY(event.stringArguments.isEmpty());
    QVERIFY(event.intArguments.isEmpty());
}

void TestKdChildEvent::isMadeFromAText()
{
    const KdChildEvent event(KD::Request, QStringLiteral("text"));
    QCOMPARE(int(event.type), 258);
    QCOMPARE(event.stringArguments, QStringList(QStringLiteral("text")));
    QVERIFY(event.intArguments.isEmpty());
}

void TestKdChildEvent::isMadeFromAnInteger()
{
    const KdChildEvent event(KD::BusyChanged, qint64(-4));
    QCOMPARE(int(event.type), 260);
    QCOMPARE(event.intArguments, QVector<qint64>{-4});
    QVERIFY(event.stringArguments.isEmpty());
}

void TestKdChildEvent::copies()
{
    KdChildEvent event(KD::Request, QStringLiteral("text"));
    const KdChildEvent copy(event);
    event.clear();
    QCOMPARE(copy.getStringArgument(0), QStringLiteral("text"));
    event = copy;
    QCOMPARE(event.getStringArgument(0), QStringLiteral("text"));
}

QTEST_APPLESS_MAIN(TestKdChildEvent)
#include "tst_kd_child_event.moc"
