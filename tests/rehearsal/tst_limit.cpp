#include "workbench/rehearsal/limit.h"

#include <QTest>

using rehearsal::Limit;
using rehearsal::parseLimit;
using rehearsal::Quantity;

namespace
{

simulator::ObjectAddress channel(quint32 line, quint32 module, qint32 number)
{
    simulator::ObjectAddress address;
    address.level = OrbItemId::Channel;
    address.line = line;
    address.address = module;
    address.channel = number;
    return address;
}

} // namespace

class TestLimit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reads_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("controller");
        QTest::addColumn<QVector<int>>("place");
        QTest::addColumn<bool>("isVoltage");
        QTest::addColumn<double>("value");
        const auto row = [](const char *text, const char *controller, const QVector<int> &place,
                            bool isVoltage, double value) {
            QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(controller) << place
                                << isVoltage << value;
        };
        constexpr int any = Limit::Any;
        row("0.2.1.voltage<=1500 V", "", {0, 2, 1}, true, 1500);
        row("0.*.*.voltage<=1.5kV", "", {0, any, any}, true, 1500);
        row("*.voltage<=2 kV", "", {any, any, any}, true, 2000);
        row(" *.*.7.voltage  <=  250mV ", "", {any, any, 7}, true, 0.25);
        row("*.voltage<=0 V", "", {any, any, any}, true, 0);
        row("*.voltage<=1e3 V", "", {any, any, any}, true, 1000);
        row("local/0.0.1.current<=0.8 mA", "local", {0, 0, 1}, false, 0.0008);
        row("Bench supply/*.current<=20 uA", "Bench supply", {any, any, any}, false, 20e-6);
        row("b*/*.current<=20 µA", "b*", {any, any, any}, false, 20e-6);
        row("*.current<=3 A", "", {any, any, any}, false, 3);
        row("*.current<=3 nA", "", {any, any, any}, false, 3e-9);
    }

    void reads()
    {
        QFETCH(QString, text);
        QFETCH(QString, controller);
        QFETCH(QVector<int>, place);
        QFETCH(bool, isVoltage);
        QFETCH(double, value);
        Limit limit;
        QString error;
        QVERIFY2(parseLimit(text, limit, error), qPrintable(error));
        QCOMPARE(limit.text, text.trimmed());
        QCOMPARE(limit.controller, controller);
        QCOMPARE((QVector<int>{limit.line, limit.module, limit.channel}), place);
        QCOMPARE(limit.quantity == Quantity::Voltage, isVoltage);
        QCOMPARE(limit.value, value);
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("named");
        const auto row = [](const char *name, const char *text, const char *named) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(named);
        };
        row("nothing", "", "no \"<=\"");
        row("only less", "*.voltage<5 V", "no \"<=\"");
        row("another quantity", "*.power<=5 V", "\"power\"");
        row("no quantity", "0.0.1<=5 V", "\"1\"");
        row("a module's place", "0.1.voltage<=5 V", "\"0.1\"");
        row("too many parts", "0.1.2.3.voltage<=5 V", "\"0.1.2.3\"");
        row("a name for a number", "0.a.1.voltage<=5 V", "\"0.a.1\"");
        row("a negative number", "0.-1.1.voltage<=5 V", "\"0.-1.1\"");
        row("an empty part", "0..1.voltage<=5 V", "\"0..1\"");
        row("no unit", "*.voltage<=5", "\"5\"");
        row("no value", "*.voltage<=V", "\"V\"");
        row("a negative value", "*.voltage<=-5 V", "\"-5 V\"");
        row("a current's unit", "*.voltage<=5 mA", "\"mA\"");
        row("a voltage's unit", "*.current<=5 V", "\"V\"");
        row("a unit of its own", "*.voltage<=5 MV", "\"MV\"");
        row("too large", "*.voltage<=1e999 V", "too large");
        row("no controller", "/0.1.2.voltage<=5 V", "controller");
    }

    void refuses()
    {
        QFETCH(QString, text);
        QFETCH(QString, named);
        Limit limit;
        QString error;
        QVERIFY(!parseLimit(text, limit, error));
        QVERIFY2(error.contains(named), qPrintable(error));
        QVERIFY2(error.contains(QStringLiteral("line.module.channel.voltage<=1500 V")), qPrintable(error));
    }

    void holdsFor_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("holds"); // for local/0.2.1, shown as "Rehearsal controller"
        QTest::newRow("its own place") << QStringLiteral("0.2.1.voltage<=1 V") << true;
        QTest::newRow("another line") << QStringLiteral("1.2.1.voltage<=1 V") << false;
        QTest::newRow("another module") << QStringLiteral("0.1.1.voltage<=1 V") << false;
        QTest::newRow("another channel") << QStringLiteral("0.2.11.voltage<=1 V") << false;
        QTest::newRow("every channel") << QStringLiteral("*.voltage<=1 V") << true;
        QTest::newRow("every module") << QStringLiteral("0.*.1.voltage<=1 V") << true;
        QTest::newRow("the connection's name") << QStringLiteral("local/*.voltage<=1 V") << true;
        QTest::newRow("the display text") << QStringLiteral("Rehearsal controller/*.voltage<=1 V") << true;
        QTest::newRow("a part of it and anything") << QStringLiteral("Rehearsal*/*.voltage<=1 V") << true;
        QTest::newRow("a part of it alone") << QStringLiteral("Rehearsal/*.voltage<=1 V") << false;
        QTest::newRow("another controller") << QStringLiteral("bench/*.voltage<=1 V") << false;
        QTest::newRow("a dot is no wildcard") << QStringLiteral("loc.l/*.voltage<=1 V") << false;
    }

    void holdsFor()
    {
        QFETCH(QString, text);
        QFETCH(bool, holds);
        Limit limit;
        QString error;
        QVERIFY2(parseLimit(text, limit, error), qPrintable(error));
        QCOMPARE(
            limit.holdsFor(QStringLiteral("local"), QStringLiteral("Rehearsal controller"), channel(0, 2, 1)),
            holds);
    }

    void holdsForChannelsOnly()
    {
        Limit limit;
        QString error;
        QVERIFY(parseLimit(QStringLiteral("*.voltage<=1 V"), limit, error));
        simulator::ObjectAddress module = channel(0, 2, -1);
        module.level = OrbItemId::Module;
        QVERIFY(!limit.holdsFor(QStringLiteral("local"), QString(), module));
    }

    void holdsIn_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("holds");
        QTest::newRow("any") << QStringLiteral("*.voltage<=1 V") << true;
        QTest::newRow("a module in a crate") << QStringLiteral("0.3.15.voltage<=1 V") << true;
        QTest::newRow("a channel too many") << QStringLiteral("0.3.16.voltage<=1 V") << false;
        QTest::newRow("no such module") << QStringLiteral("0.4.0.voltage<=1 V") << false;
        QTest::newRow("no such line") << QStringLiteral("1.*.*.voltage<=1 V") << false;
        QTest::newRow("a module without a crate") << QStringLiteral("bench/0.0.3.voltage<=1 V") << true;
        QTest::newRow("another controller's module") << QStringLiteral("bench/0.1.0.voltage<=1 V") << false;
        QTest::newRow("no such controller") << QStringLiteral("attic/*.voltage<=1 V") << false;
    }

    void holdsIn()
    {
        QFETCH(QString, text);
        QFETCH(bool, holds);
        Limit limit;
        QString error;
        QVERIFY2(parseLimit(text, limit, error), qPrintable(error));
        QCOMPARE(limit.holdsIn(simulator::PlantLayout::rehearsal()), holds);
    }

    void isCrossed_data()
    {
        QTest::addColumn<double>("measured");
        QTest::addColumn<bool>("isCrossed"); // 1500 V
        QTest::newRow("below") << 1499.9 << false;
        QTest::newRow("at it") << 1500.0 << false;
        QTest::newRow("inexactly at it") << 1500.0 * (1 + 1e-9) << false;
        QTest::newRow("above") << 1500.1 << true;
        QTest::newRow("a negative output below") << -1500.0 << false;
        QTest::newRow("a negative output above") << -1500.1 << true;
    }

    void isCrossed()
    {
        QFETCH(double, measured);
        QFETCH(bool, isCrossed);
        Limit limit;
        limit.value = 1500;
        QCOMPARE(limit.isCrossedBy(measured), isCrossed);
    }
};

QTEST_GUILESS_MAIN(TestLimit)
#include "tst_limit.moc"
