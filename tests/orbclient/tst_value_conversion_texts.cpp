#include "orbclient/value_conversion.h"

#include "orbclient/byte_text.h"
#include "orbclient/conversion_shortcuts.h"
#include "tests/support/python_interpreter.h"

#include <QRandomGenerator>
#include <QtTest>

#include <limits>

/// The way from a script's values to what is sent.
class TestValueConversionTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void makesValueTexts_data();
    void makesValueTexts();
    void makesNoTextOfNothing();
    void keepsLongTexts_data();
    void keepsLongTexts();
    void forgetsTheTextBefore();
    void keepsRandomTexts();
    void makesNoTextOfOurOwnObjects_data();
    void makesNoTextOfOurOwnObjects();
    void leavesThePendingExceptionToItsOwner();
    void endsOnWhatHoldsItself_data();
    void endsOnWhatHoldsItself();
    void goesAsDeepAsPythonDoes();
    void makesIntegers_data();
    void makesIntegers();
    void makesNoIntegerOfNothing();
    void makesVariants_data();
    void makesVariants();
    void makesNoVariantOfNothing();

private:
    QString textOf(const QString &expression);

    PythonInterpreter python;
};

QString TestValueConversionTexts::textOf(const QString &expression)
{
    const PyRef object = python.evaluate(expression);
    if (!object)
        return QStringLiteral("not evaluated: ") + PythonInterpreter::takeException();
    return orbclient::toValueText(object.get());
}

void TestValueConversionTexts::initTestCase()
{
    // Subclasses that say something else of themselves in every way that a script has; what they are counts.
    const QString classes = QStringLiteral(R"(
import collections, decimal, enum, fractions
class Lying:
    def __str__(self): raise RuntimeError
    __repr__ = __int__ = __index__ = __float__ = __len__ = __iter__ = __getitem__ = __hash__ = __str__
    keys = values = items = __str__
class Int(Lying, int): pass
class Float(Lying, float): pass
class Str(Lying, str): pass
class List(Lying, list): pass
class Dict(Lying, dict): pass
class Level(enum.IntEnum):
    High = 3
def itself():
    held = []
    held.append(held)
    return held
def dictItself():
    held = {}
    held["a"] = held
    return held
def both():
    held = {"a": []}
    held["a"].append(held)
    return held
def beside():
    held = [1, 2]
    held.insert(1, held)
    return held
def deep(levels):
    held = 5
    for _ in range(levels):
        held = [held]
    return held
)");
    QCOMPARE(python.exec(classes), QString());
}

void TestValueConversionTexts::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestValueConversionTexts::makesValueTexts_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *expression, const char *expected) {
        QTest::newRow(expression) << QString::fromUtf8(expression) << QString::fromUtf8(expected);
    };
    row("0.1", "0.1");
    row("1e7", "1e+07");
    row("1e6", "1e+06");
    row("100000.0", "100000");
    row("2.5", "2.5");
    row("5.0", "5");
    row("-5.25", "-5.25");
    row("123456.7", "123457");
    row("1234567.0", "1.23457e+06");
    row("999999.5", "1e+06");
    row("0.0001", "0.0001");
    row("0.00001", "1e-05");
    row("1/3", "0.333333");
    row("1e100", "1e+100");
    row("5e-324", "4.94066e-324");
    row("0.0", "0");
    row("float('nan')", "nan");
    row("float('inf')", "inf");
    row("-float('inf')", "-inf");
    row("Float(2.5)", "2.5");

    row("0", "0");
    row("5", "5");
    row("-1", "-1");
    row("True", "1");
    row("False", "0");
    row("Int(7)", "7");
    row("Level.High", "3");
    row("1234567", "1234567");
    row("2**31 - 1", "2147483647");
    row("-2**31", "-2147483648");
    // Of an int that does not fit, what its lower 32 bits are.
    row("2**31", "-2147483648");
    row("2**32", "0");
    row("2**32 + 5", "5");
    row("2**32 - 1", "-1");
    row("-2**31 - 1", "2147483647");
    row("2**63", "0");
    row("2**63 + 9", "9");
    row("2**64 - 1", "-1");
    row("-2**63 - 1", "-1");
    row("10**100 * 2**32 + 3", "3");

    row("''", "");
    row("'5'", "5");
    row("' a '", " a ");
    row("Str('on')", "on");
    row("'\\u00e9\\u03a9\\u20ac'", "\u00e9\u03a9\u20ac");
    row("'\\U0001f600!'", "\U0001f600!");

    row("{}", "[]");
    row("{'a': 1}", "[ a=1 ]");
    row("{'a': 1, 'b': 2.5}", "[ a=1  b=2.5 ]");
    row("{'b': 1, 'a': 2}", "[ b=1  a=2 ]");
    row("{1: True, 2.5: None, None: 'x'}", "[ 1=1  2.5=  =x ]");
    row("{'a': {'b': [1]}}", "[ a=[ b=[1, ] ] ]");
    row("Dict(a=1)", "[ a=1 ]");
    row("collections.OrderedDict([('z', 1), ('a', 2)])", "[ z=1  a=2 ]");

    row("[]", "[]");
    row("[1]", "[1, ]");
    row("[1, 2]", "[1, 2, ]");
    row("[1, 2.5]", "[1, 2.5, ]");
    row("[None, 'a', ()]", "[, a, , ]");
    row("[[], [[]], {}]", "[[], [[], ], [], ]");
    row("List([1, 2])", "[1, 2, ]");
    row("[orbClient.channel()]", "[, ]");
    row("{'c': orbClient.channel()}", "[ c= ]");

    // Every letter of a str is sent, those that end texts elsewhere and those that are none by themselves too.
    QTest::newRow("NUL") << QStringLiteral("'a\\0b\\0'") << QString::fromLatin1("a\0b\0", 4);
    QTest::newRow("NUL in a list") << QStringLiteral("['\\0']") << QString::fromLatin1("[\0, ]", 5);
    QTest::newRow("half of a pair") << QStringLiteral("'\\ud800x'")
                                    << (QString(QChar(0xd800)) + QLatin1Char('x'));
    QTest::newRow("other half of a pair") << QStringLiteral("'\\udfff'") << QString(QChar(0xdfff));

    row("None", "");
    row("()", "");
    row("(1, 2)", "");
    row("{1, 2}", "");
    row("b'5'", "");
    row("bytearray(b'5')", "");
    row("1j", "");
    row("range(3)", "");
    row("object()", "");
    row("Lying()", "");
    row("Int", "");
    row("len", "");
    row("decimal.Decimal(5)", "");
    row("fractions.Fraction(1, 2)", "");
    row("collections.UserDict(a=1)", "");
    row("Ellipsis", "");
}

void TestValueConversionTexts::makesValueTexts()
{
    QFETCH(QString, expression);
    QFETCH(QString, expected);

    QCOMPARE(textOf(expression), expected);

    // The short cut that setters take for most values either leads to the same or is not taken.
    const PyRef object = python.evaluate(expression);
    orbclient::ByteText bytes;
    if (orbclient::appendValueText(bytes, object.get()))
        QCOMPARE(QString::fromLatin1(bytes.terminated()), expected);
}

void TestValueConversionTexts::makesNoTextOfNothing()
{
    QCOMPARE(orbclient::toValueText(nullptr), QString(QLatin1String("")));
}

void TestValueConversionTexts::keepsLongTexts_data()
{
    QTest::addColumn<QString>("unit");
    QTest::addColumn<int>("count");

    // Around the spare room of the buffer that the texts pass through, and far past it.
    for (const int count : {1, 9, 10, 11, 21, 100, 1000, 999, 1000000, 5}) {
        QTest::addRow("%d letters", count) << QStringLiteral("y") << count;
        QTest::addRow("%d letters past a byte", count) << QStringLiteral("\u03a9") << count;
        QTest::addRow("%d letters past the first plane", count) << QStringLiteral("\U0001f600") << count;
    }
}

void TestValueConversionTexts::keepsLongTexts()
{
    QFETCH(QString, unit);
    QFETCH(int, count);

    const QString text = textOf(QStringLiteral("'%1' * %2").arg(unit).arg(count));
    QCOMPARE(text.size(), count * unit.size());
    QVERIFY(text == unit.repeated(count));
}

void TestValueConversionTexts::forgetsTheTextBefore()
{
    QCOMPARE(textOf(QStringLiteral("'\\u03a9' * 50")), QString(50, QChar(0x03a9)));
    QCOMPARE(textOf(QStringLiteral("'\\u03a9x'")), QStringLiteral("\u03a9x"));
    QCOMPARE(textOf(QStringLiteral("''")), QString(QLatin1String("")));
    QCOMPARE(textOf(QStringLiteral("['\\u03a9\\u03a9\\u03a9', '', '\\u20ac']")),
             QStringLiteral("[\u03a9\u03a9\u03a9, , \u20ac, ]"));
}

void TestValueConversionTexts::keepsRandomTexts()
{
    constexpr int Rounds = 5000;
    QRandomGenerator random(4);
    for (int i = 0; i < Rounds; ++i) {
        QVector<uint> letters(random.bounded(40));
        const uint past = random.bounded(2) == 0 ? 0x100 : 0x11000;
        for (uint &letter : letters) {
            do {
                letter = random.bounded(1U, past);
            } while (QChar::isSurrogate(letter));
        }
        const QString text = QString::fromUcs4(letters.constData(), letters.size());
        const QByteArray bytes = text.toUtf8();
        const PyRef object(PyUnicode_FromStringAndSize(bytes.constData(), bytes.size()));
        QVERIFY(object);
        QCOMPARE(orbclient::toValueText(object.get()), text);
    }
}

void TestValueConversionTexts::makesNoTextOfOurOwnObjects_data()
{
    QTest::addColumn<QString>("type");
    for (const char *type : {"connection", "crate", "module", "channel", "dataFrame"})
        QTest::newRow(type) << QString::fromLatin1(type);
}

void TestValueConversionTexts::makesNoTextOfOurOwnObjects()
{
    QFETCH(QString, type);

    const QString make = QStringLiteral(R"(
class Own(orbClient.%1): pass
class Slots(orbClient.%1):
    __slots__ = ("a", "b")
def filled(made):
    for name, member in vars(orbClient.%1).items():
        if isinstance(member, types.MemberDescriptorType):
            setattr(made, name, {"a": 1})
    keeper.value.append(made)
    return made
# What an object of a subclass holds is never let go; held by an object that is never freed, it is not lost.
keeper = orbClient.dataFrame()
keeper.value = []
)");
    QCOMPARE(python.exec(QStringLiteral("import types") + make.arg(type)), QString());
    for (const char *expression : {"orbClient.%1()", "filled(orbClient.%1())", "Own()", "filled(Own())",
                                   "Slots()", "filled(Slots())"}) {
        const QString text = QString::fromLatin1(expression).replace(QLatin1String("%1"), type);
        QVERIFY2(python.evaluate(text), expression);
        QCOMPARE(textOf(text), QString(QLatin1String("")));
        QCOMPARE(textOf(QStringLiteral("[%1]").arg(text)), QStringLiteral("[, ]"));
        QCOMPARE(textOf(QStringLiteral("{'k': %1}").arg(text)), QStringLiteral("[ k= ]"));
        const PyRef object = python.evaluate(text);
        QCOMPARE(orbclient::toInteger(object.get()), -1);
        const QVariant variant = orbclient::toVariant(object.get());
        QCOMPARE(variant.type(), QVariant::String);
        QCOMPARE(variant.toString(), QString(QLatin1String("")));
    }
}

void TestValueConversionTexts::leavesThePendingExceptionToItsOwner()
{
    // A script's __str__, __int__ and such have no say, so that no exception of theirs can come up.
    for (const char *expression : {"Lying()", "Int(5)", "Float(5)", "Str('5')", "List([Lying()])",
                                   "{Lying.__name__: Lying()}", "2**100", "float('nan')"}) {
        const PyRef object = python.evaluate(QString::fromLatin1(expression));
        QVERIFY2(object, expression);
        orbclient::toValueText(object.get());
        QCOMPARE(PythonInterpreter::takeException(), QString());
        orbclient::toInteger(object.get());
        QCOMPARE(PythonInterpreter::takeException(), QString());
        orbclient::toVariant(object.get());
        QCOMPARE(PythonInterpreter::takeException(), QString());
    }
}

void TestValueConversionTexts::endsOnWhatHoldsItself_data()
{
    QTest::addColumn<QString>("expression");
    for (const char *expression : {"itself()", "dictItself()", "both()", "beside()", "[1, itself(), 2]",
                                   "{'a': 1, 'b': both()}", "deep(1000000)", "{'a': deep(100000)}"})
        QTest::newRow(expression) << QString::fromLatin1(expression);
}

void TestValueConversionTexts::endsOnWhatHoldsItself()
{
    QFETCH(QString, expression);

    QCOMPARE(textOf(expression), QString(QLatin1String("")));
    QCOMPARE(PythonInterpreter::takeException(), QString());
    // And is none the worse for it.
    QCOMPARE(textOf(QStringLiteral("[[1]]")), QStringLiteral("[[1, ], ]"));
    QCOMPARE(python.eval(QStringLiteral("eval('1 + 1')")), QStringLiteral("2"));
}

void TestValueConversionTexts::goesAsDeepAsPythonDoes()
{
    const auto nested = [](int levels) {
        return QStringLiteral("[").repeated(levels) + QLatin1Char('5')
            + QStringLiteral(", ]").repeated(levels);
    };
    QCOMPARE(textOf(QStringLiteral("deep(200)")), nested(200));
    QCOMPARE(textOf(QStringLiteral("deep(900)")), nested(900));

    // Python's own limit, which a script may move, is the one that counts.
    QCOMPARE(python.exec(
                 QStringLiteral("import sys\nlimit = sys.getrecursionlimit()\nsys.setrecursionlimit(100)")),
             QString());
    const QString past = textOf(QStringLiteral("deep(150)"));
    const QString within = textOf(QStringLiteral("deep(50)"));
    QCOMPARE(python.exec(QStringLiteral("sys.setrecursionlimit(limit)")), QString());
    QCOMPARE(past, QString(QLatin1String("")));
    QCOMPARE(within, nested(50));
}

void TestValueConversionTexts::makesIntegers_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<int>("expected");

    const auto row = [](const char *expression, int expected) {
        QTest::newRow(expression) << QString::fromLatin1(expression) << expected;
    };
    row("0", 0);
    row("5", 5);
    row("-5", -5);
    row("True", 1);
    row("False", 0);
    row("Int(7)", 7);
    row("2**31 - 1", std::numeric_limits<int>::max());
    row("-2**31", std::numeric_limits<int>::min());
    row("2**31", std::numeric_limits<int>::min());
    row("2**32 + 5", 5);
    row("2**64 + 6", 6);
    row("1.9", 1);
    row("-1.9", -1);
    row("0.99", 0);
    row("-0.99", 0);
    row("Float(3.7)", 3);
    row("2147483647.9", std::numeric_limits<int>::max());
    row("-2147483648.9", std::numeric_limits<int>::min());
    row("2147483648.0", -1);
    row("-2147483649.0", -1);
    row("1e300", -1);
    row("float('nan')", -1);
    row("float('inf')", -1);
    row("-float('inf')", -1);
    row("'1'", -1);
    row("Str('1')", -1);
    row("None", -1);
    row("[1]", -1);
    row("(1,)", -1);
    row("{1: 1}", -1);
    row("b'1'", -1);
    row("1j", -1);
    row("Lying()", -1);
    row("decimal.Decimal(5)", -1);
    row("orbClient.channel()", -1);
}

void TestValueConversionTexts::makesIntegers()
{
    QFETCH(QString, expression);

    const PyRef object = python.evaluate(expression);
    QVERIFY(object);
    QTEST(orbclient::toInteger(object.get()), "expected");
}

void TestValueConversionTexts::makesNoIntegerOfNothing()
{
    QCOMPARE(orbclient::toInteger(nullptr), -1);
}

void TestValueConversionTexts::makesVariants_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QVariant>("expected");

    const auto text = [](const char *value) { return QVariant(QString::fromUtf8(value)); };
    QTest::newRow("int") << QStringLiteral("5") << QVariant(5);
    QTest::newRow("True") << QStringLiteral("True") << QVariant(1);
    QTest::newRow("False") << QStringLiteral("False") << QVariant(0);
    QTest::newRow("int subclass") << QStringLiteral("Int(-7)") << QVariant(-7);
    QTest::newRow("large int") << QStringLiteral("2**32 + 5") << QVariant(5);
    QTest::newRow("int past 31 bits") << QStringLiteral("2**31") << QVariant(std::numeric_limits<int>::min());
    QTest::newRow("float") << QStringLiteral("0.1") << QVariant(0.1);
    QTest::newRow("float in full") << QStringLiteral("1.23456789012") << QVariant(1.23456789012);
    QTest::newRow("whole float") << QStringLiteral("5.0") << QVariant(5.0);
    QTest::newRow("float subclass") << QStringLiteral("Float(2.5)") << QVariant(2.5);
    QTest::newRow("infinity") << QStringLiteral("float('inf')")
                              << QVariant(std::numeric_limits<double>::infinity());
    QTest::newRow("str") << QStringLiteral("'5'") << text("5");
    QTest::newRow("empty str") << QStringLiteral("''") << text("");
    QTest::newRow("dict") << QStringLiteral("{'a': 1}") << text("[ a=1 ]");
    QTest::newRow("list") << QStringLiteral("[1, 2.5]") << text("[1, 2.5, ]");
    QTest::newRow("None") << QStringLiteral("None") << text("");
    QTest::newRow("tuple") << QStringLiteral("(1,)") << text("");
    QTest::newRow("object") << QStringLiteral("Lying()") << text("");
}

void TestValueConversionTexts::makesVariants()
{
    QFETCH(QString, expression);
    QFETCH(QVariant, expected);

    const PyRef object = python.evaluate(expression);
    QVERIFY(object);
    const QVariant variant = orbclient::toVariant(object.get());
    QVERIFY(variant.isValid());
    QCOMPARE(variant.typeName(), expected.typeName());
    QCOMPARE(variant, expected);
}

void TestValueConversionTexts::makesNoVariantOfNothing()
{
    QVERIFY(!orbclient::toVariant(nullptr).isValid());
}

QTEST_GUILESS_MAIN(TestValueConversionTexts)

#include "tst_value_conversion_texts.moc"
