#include "workbench/simulator/item_text.h"

#include <QtTest>

using namespace simulator;

class TestItemText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parses_data();
    void parses();
    void refuses_data();
    void refuses();
    void formats_data();
    void formats();
    void textsAreTakenAsTheyAre();
    void names();
};

Q_DECLARE_METATYPE(simulator::ItemKind)

namespace
{

ItemDefinition definition(ItemKind kind, const char *unit, ItemRange range = {})
{
    return {"Test.item", kind, ItemAccess::ReadWrite, unit, ItemSource::Setting, 0, 0, "", range};
}

} // namespace

void TestItemText::parses_data()
{
    QTest::addColumn<ItemKind>("kind");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("unit");
    QTest::addColumn<double>("number");
    const auto row = [](const char *name, ItemKind kind, const char *text, const char *unit, double number) {
        QTest::newRow(name) << kind << QString::fromUtf8(text) << QString::fromUtf8(unit) << number;
    };
    row("one", ItemKind::Bool, "1", "", 1);
    row("zero", ItemKind::Bool, "0", "", 0);
    row("true", ItemKind::Bool, "TRUE", "", 1);
    row("false", ItemKind::Bool, "False", "", 0);
    row("int", ItemKind::Int, "-12", "", -12);
    row("int with blanks", ItemKind::Int, " 7 ", "", 7);
    row("mask", ItemKind::Int, "4294967295", "", 4294967295.0);
    row("float", ItemKind::Float, "12.5", "", 12.5);
    row("float without fraction", ItemKind::Float, "12", "", 12);
    row("exponent", ItemKind::Float, "1.5e3", "", 1500);
    row("own unit", ItemKind::Float, "2", "V", 2);
    row("unit with blanks", ItemKind::Float, "2", " V ", 2);
    row("kilo", ItemKind::Float, "1.5", "kV", 1500);
    row("mega", ItemKind::Float, "1", "MV", 1e6);
    row("milli", ItemKind::Float, "5", "mV", 0.005);
    row("micro", ItemKind::Float, "5", "uV", 5e-6);
    row("nano", ItemKind::Float, "5", "nV", 5e-9);
}

void TestItemText::parses()
{
    QFETCH(ItemKind, kind);
    QFETCH(QString, text);
    QFETCH(QString, unit);
    ItemValue value;
    QVERIFY(parseValue(definition(kind, kind == ItemKind::Float ? "V" : ""), text, unit, value));
    QTEST(value.number, "number");
}

void TestItemText::refuses_data()
{
    QTest::addColumn<ItemKind>("kind");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("unit");
    const auto row = [](const char *name, ItemKind kind, const char *text, const char *unit) {
        QTest::newRow(name) << kind << QString::fromUtf8(text) << QString::fromUtf8(unit);
    };
    row("empty bool", ItemKind::Bool, "", "");
    row("bool two", ItemKind::Bool, "2", "");
    row("bool word", ItemKind::Bool, "on", "");
    row("empty int", ItemKind::Int, "", "");
    row("int with fraction", ItemKind::Int, "1.5", "");
    row("int out of range", ItemKind::Int, "101", "");
    row("int beyond 64 bits", ItemKind::Int, "99999999999999999999999", "");
    row("empty float", ItemKind::Float, "", "");
    row("word", ItemKind::Float, "fast", "");
    row("decimal comma", ItemKind::Float, "1,5", "");
    row("groups", ItemKind::Float, "1,000.5", "");
    row("not a number", ItemKind::Float, "nan", "");
    row("infinity", ItemKind::Float, "inf", "");
    row("beyond a double", ItemKind::Float, "1e999", "");
    row("below the range", ItemKind::Float, "-0.1", "");
    row("above the range", ItemKind::Float, "100.1", "");
    row("above the range by its unit", ItemKind::Float, "1", "kV");
    row("another unit", ItemKind::Float, "1", "A");
    row("unknown prefix", ItemKind::Float, "1", "xV");
    row("prefix of another case", ItemKind::Float, "1", "KV");
    row("unit of a plain number", ItemKind::Int, "1", "V");
}

void TestItemText::refuses()
{
    QFETCH(ItemKind, kind);
    QFETCH(QString, text);
    QFETCH(QString, unit);
    ItemValue value;
    QVERIFY(!parseValue(definition(kind, kind == ItemKind::Float ? "V" : "", {0, 100}), text, unit, value));
}

void TestItemText::formats_data()
{
    QTest::addColumn<ItemKind>("kind");
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("true") << ItemKind::Bool << 1.0 << QStringLiteral("true");
    QTest::newRow("false") << ItemKind::Bool << 0.0 << QStringLiteral("false");
    QTest::newRow("int") << ItemKind::Int << 4294967295.0 << QStringLiteral("4294967295");
    QTest::newRow("counter between cycles") << ItemKind::Int << 7.9 << QStringLiteral("7");
    QTest::newRow("whole float") << ItemKind::Float << 6000.0 << QStringLiteral("6000");
    QTest::newRow("fraction") << ItemKind::Float << 0.1 << QStringLiteral("0.1");
    QTest::newRow("nine digits") << ItemKind::Float << 1234.56789012 << QStringLiteral("1234.56789");
}

void TestItemText::formats()
{
    QFETCH(ItemKind, kind);
    QFETCH(double, number);
    QTEST(formatValue(definition(kind, ""), ItemValue::of(number)), "text");
}

void TestItemText::textsAreTakenAsTheyAre()
{
    ItemValue value;
    const QString text = QStringLiteral(" name.hex ");
    QVERIFY(parseValue(definition(ItemKind::String, ""), text, QString(), value));
    QCOMPARE(value.text, text);
    QCOMPARE(formatValue(definition(ItemKind::String, ""), value), text);
}

void TestItemText::names()
{
    QCOMPARE(itemWords(QStringLiteral("Error.safetyLoopWasOpened")),
             QStringLiteral("safety loop was opened"));
    QCOMPARE(itemWords(QStringLiteral("arc")), QStringLiteral("arc"));
}

QTEST_APPLESS_MAIN(TestItemText)
#include "tst_item_text.moc"
