#include "command_terminal/refresh_limiter.h"

#include <QPaintEvent>
#include <QtTest>

#include <memory>

using command_terminal::RefreshLimiter;

class TestRefreshLimiter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { widget.reset(); }

    void holdsPaintingBackForAWhile();
    void paintsOnceForManyChanges();
    void keepsPaintingWhileChangesGoOn();
    void leavesAQuietWidgetAlone();
    void paintsWhenReleased();
    void isDestroyedMeanwhile();

private:
    /// Counts how often it was painted, and keeps what it showed last.
    struct Widget : QWidget
    {
        void paintEvent(QPaintEvent *) override
        {
            ++paints;
            painted = value;
        }

        void change(int newValue)
        {
            value = newValue;
            update();
        }

        int paints = 0;
        int painted = 0;
        int value = 0;
    };

    std::unique_ptr<Widget> widget;
    RefreshLimiter *limiter = nullptr;
};

void TestRefreshLimiter::init()
{
    widget = std::make_unique<Widget>();
    limiter = new RefreshLimiter(widget.get());
    widget->show();
    QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
    QTRY_VERIFY(widget->paints > 0);
    QCoreApplication::processEvents();
    widget->paints = 0;
}

void TestRefreshLimiter::holdsPaintingBackForAWhile()
{
    limiter->holdBack();
    QVERIFY(!widget->updatesEnabled());
    widget->change(1);
    QTRY_COMPARE(widget->painted, 1);
    QVERIFY(widget->updatesEnabled());
}

void TestRefreshLimiter::paintsOnceForManyChanges()
{
    for (int i = 1; i <= 1000; ++i) {
        limiter->holdBack();
        widget->change(i);
    }
    QTRY_VERIFY(widget->updatesEnabled());
    QCOMPARE(widget->paints, 1);
    QCOMPARE(widget->painted, 1000);
}

void TestRefreshLimiter::keepsPaintingWhileChangesGoOn()
{
    // A change in every turn of the event loop: without the limit there would be as many paintings as turns.
    int turns = 0;
    while (widget->paints < 4) {
        limiter->holdBack();
        widget->change(++turns);
        QCoreApplication::processEvents();
    }
    QVERIFY2(turns > 4 * widget->paints, qPrintable(QString::number(turns)));
}

void TestRefreshLimiter::leavesAQuietWidgetAlone()
{
    limiter->holdBack();
    QTRY_VERIFY(widget->updatesEnabled());
    widget->paints = 0;
    widget->change(7);
    QCoreApplication::processEvents();
    QTRY_COMPARE(widget->painted, 7);
    QCOMPARE(widget->paints, 1);
    QVERIFY(widget->updatesEnabled());
}

void TestRefreshLimiter::paintsWhenReleased()
{
    limiter->holdBack();
    widget->change(3);
    limiter->release();
    QVERIFY(widget->updatesEnabled());
    QTRY_COMPARE(widget->painted, 3);
    limiter->release(); // nothing is held back
    QVERIFY(widget->updatesEnabled());
}

void TestRefreshLimiter::isDestroyedMeanwhile()
{
    limiter->holdBack();
    const QPointer<RefreshLimiter> gone(limiter);
    widget.reset();
    QVERIFY(gone.isNull());
    QCoreApplication::processEvents();
}

QTEST_MAIN(TestRefreshLimiter)
#include "tst_refresh_limiter.moc"
