#include "workbench/simulator/unit_text.h"

#include <QtTest>

class TestUnitText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reads_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<double>("number");
        const auto row = [](const char *text, const char *unit, double number) {
            QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(unit) << number;
        };
        row("1.5 kV", "V", 1500);
        row("1.5kV", "V", 1500);
        row("  -2 V ", "V", -2);
        row("20 ms", "s", 0.02);
        row("3 pF", "F", 3e-12);
        row("3 nF", "F", 3e-9);
        row("3 uF", "F", 3e-6);
        row("3 µF", "F", 3e-6);
        row("3 μF", "F", 3e-6);
        row("3 MOhm", "Ohm", 3e6);
        row("3 GΩ", "Ohm", 3e9);
        row("3 Ω", "Ohm", 3);
        row("1e3 V", "V", 1000);
        row("1.5e-3 A", "A", 0.0015);
        row("2 nA/s", "A/s", 2e-9);
        row("10 %/s", "%/s", 10);
        row("10%", "%", 10);
        row("7", "", 7);
    }

    void reads()
    {
        QFETCH(QString, text);
        QFETCH(QString, unit);
        double number = 0;
        QVERIFY(simulator::parseWithUnit(text, unit, number));
        QTEST(number, "number");
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("unit");
        const auto row = [](const char *name, const char *text, const char *unit) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(unit);
        };
        row("nothing", "", "V");
        row("no unit", "5", "V");
        row("no number", "kV", "V");
        row("another unit", "5 A", "V");
        row("part of a unit", "5 A", "A/s");
        row("unknown prefix", "5 TV", "V");
        row("two prefixes", "5 kmV", "V");
        row("percent with a prefix", "5 k%", "%");
        row("unit where there is none", "5 V", "");
        row("prefix where there is no unit", "5 k", "");
        row("two numbers", "5 6 V", "V");
        row("comma", "1,5 V", "V");
        row("beyond all numbers", "1e308 kV", "V");
        row("infinite", "inf V", "V");
        row("another sign for a digit", "٣ V", "V");
    }

    void refuses()
    {
        QFETCH(QString, text);
        QFETCH(QString, unit);
        double number = 42;
        QVERIFY(!simulator::parseWithUnit(text, unit, number));
        QCOMPARE(number, 42.0);
    }
};

QTEST_APPLESS_MAIN(TestUnitText)
#include "tst_unit_text.moc"
