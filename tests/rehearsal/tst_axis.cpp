#include "workbench/rehearsal/axis.h"

#include <QTest>

using rehearsal::Axis;

class TestAxis : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ticks_data()
    {
        QTest::addColumn<double>("least");
        QTest::addColumn<double>("most");
        QTest::addColumn<bool>("isRounded");
        QTest::addColumn<double>("unit");
        QTest::addColumn<QStringList>("ticks");
        const auto list = [](const char *texts) {
            return QString::fromLatin1(texts).split(QLatin1Char(' '));
        };
        QTest::newRow("round") << 0.0 << 1000.0 << true << 1.0 << list("0 500 1000");
        QTest::newRow("rounded up") << 0.0 << 1001.0 << true << 1.0 << list("0 500 1000 1500");
        QTest::newRow("negative") << -800.0 << 0.0 << true << 1.0 << list("-800 -600 -400 -200 0");
        QTest::newRow("both sides") << -3.0 << 7.0 << true << 1.0 << list("-5 0 5 10");
        QTest::newRow("a unit") << 0.0 << 0.00075 << true << 1e-6 << list("0 200 400 600 800");
        QTest::newRow("decimals") << 0.0 << 0.8 << true << 1.0 << list("0.0 0.2 0.4 0.6 0.8");
        QTest::newRow("not rounded") << 0.0 << 17.3 << false << 1.0 << list("0 5 10 15");
        QTest::newRow("nothing") << 0.0 << 0.0 << true << 1.0 << list("0.0 0.5 1.0");
    }

    void ticks()
    {
        QFETCH(double, least);
        QFETCH(double, most);
        QFETCH(bool, isRounded);
        QFETCH(double, unit);
        const Axis axis = Axis::of(least, most, 4, isRounded);
        QStringList texts;
        const QVector<double> values = axis.ticks();
        for (const double tick : values)
            texts << axis.text(tick, unit);
        QTEST(texts, "ticks");
        QVERIFY(axis.share(least) >= 0);
        QVERIFY(axis.share(most) <= 1);
    }

    void shares()
    {
        const Axis axis = Axis::of(-100, 300, 4, true);
        QCOMPARE(axis.share(axis.least), 0.0);
        QCOMPARE(axis.share(axis.most), 1.0);
        QCOMPARE(axis.share(100), 0.5);
    }
};

QTEST_GUILESS_MAIN(TestAxis)
#include "tst_axis.moc"
