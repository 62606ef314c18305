#include "workbench/rehearsal/quantity_text.h"

#include <QTest>

#include <limits>

class TestQuantityText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void voltages_data()
    {
        QTest::addColumn<double>("volts");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << 0.0 << QStringLiteral("0 V");
        QTest::newRow("round") << 1500.0 << QStringLiteral("1500 V");
        QTest::newRow("digits") << 811.0123 << QStringLiteral("811.01 V");
        QTest::newRow("large") << 123456.7 << QStringLiteral("123457 V");
        QTest::newRow("negative") << -0.5 << QStringLiteral("-500 mV");
        QTest::newRow("small") << 0.0123 << QStringLiteral("12.3 mV");
        QTest::newRow("none") << std::numeric_limits<double>::quiet_NaN() << QStringLiteral("?");
    }

    void voltages()
    {
        QFETCH(double, volts);
        QTEST(rehearsal::voltageText(volts), "text");
    }

    void currents_data()
    {
        QTest::addColumn<double>("amperes");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << 0.0 << QStringLiteral("0 A");
        QTest::newRow("A") << 1.5 << QStringLiteral("1.5 A");
        QTest::newRow("mA") << 0.00125 << QStringLiteral("1.25 mA");
        QTest::newRow("uA") << 0.0008 << QStringLiteral("800 µA");
        QTest::newRow("nA") << -20e-9 << QStringLiteral("-20 nA");
        QTest::newRow("none") << std::numeric_limits<double>::infinity() << QStringLiteral("?");
    }

    void currents()
    {
        QFETCH(double, amperes);
        QTEST(rehearsal::currentText(amperes), "text");
    }

    void times() { QCOMPARE(rehearsal::timeText(1.23456), QStringLiteral("1.235 s")); }

    void reportedValuesAreTheirTexts()
    {
        QCOMPARE(rehearsal::reportedText(1.0 / 3), QStringLiteral("0.333333333"));
        QCOMPARE(rehearsal::reported(1.0 / 3), 0.333333333);
    }
};

QTEST_GUILESS_MAIN(TestQuantityText)
#include "tst_quantity_text.moc"
