#include "workbench/rehearsal/held_clock.h"

#include <QTest>

using rehearsal::HeldClock;

class TestHeldClock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void standsUntilItIsReleased()
    {
        HeldClock clock;
        const auto start = std::chrono::steady_clock::now();
        QTRY_VERIFY(std::chrono::steady_clock::now() - start > std::chrono::milliseconds(20));
        QCOMPARE(clock.now(), 0.0);
        clock.release();
        QTRY_VERIFY(clock.now() > 0.02);
        QVERIFY(clock.now()
                < std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }

    void isReleasedOnce()
    {
        HeldClock clock;
        clock.release();
        QTRY_VERIFY(clock.now() > 0.02);
        clock.release();
        QVERIFY(clock.now() > 0.02);
    }
};

QTEST_GUILESS_MAIN(TestHeldClock)
#include "tst_held_clock.moc"
