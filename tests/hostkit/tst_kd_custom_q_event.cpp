#include "hostsdk/kd_custom_q_event.h"

#include "hostsdk/kd_event_type.h"

#include <QThread>
#include <QtTest>

#include <memory>

namespace
{

class Receiver : public QObject
{
public:
    QVector<int> subCodes;
    QThread *thread = nullptr;

protected:
    void customEvent(QEvent *event) override
    {
        QCOMPARE(int(event->type()), KD::CustomEventType);
        subCodes.append(static_cast<KdCustomQEvent *>(event)->getSubCode());
        thread = QThread::currentThread();
    }
};

} // namespace

class TestKdCustomQEvent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void carriesWorkToTheReceiversThread();
};

void TestKdCustomQEvent::carriesWorkToTheReceiversThread()
{
    Receiver receiver;
    const std::unique_ptr<QThread> worker(QThread::create([&receiver] {
        QCoreApplication::postEvent(
            &receiver,
            new KdCustomQEvent(static_cast<QEvent::Type>(KD::CustomEventType), KD::StructureChangedSubCode));
        QCoreApplication::postEvent(&receiver,
                                    new KdCustomQEvent(static_cast<QEvent::Type>(KD::CustomEventType), -1));
    }));
    worker->start();
    QVERIFY(worker->wait());
    QTRY_COMPARE(receiver.subCodes, (QVector<int>{211, -1}));
    QCOMPARE(receiver.thread, QThread::currentThread());
}

QTEST_GUILESS_MAIN(TestKdCustomQEvent)
#include "tst_kd_custom_q_event.moc"
