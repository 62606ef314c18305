#include "orbclient/value_conversion.h"

#include "hostclient/tarn_item.h"
#include "orbclient/conversion_shortcuts.h"
#include "tests/orbclient/item_record.h"
#include "tests/support/python_interpreter.h"

#include <QRandomGenerator>
#include <QtTest>

#include <limits>

using orbclient::Conversion;

class TestValueConversion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void readsValues_data();
    void readsValues();
    void takesAnyOtherCodeAsAutomatic_data();
    void takesAnyOtherCodeAsAutomatic();
    void failsWithoutAFirstText_data();
    void failsWithoutAFirstText();
    void readsEightBitTexts_data();
    void readsEightBitTexts();
    void staysWithinTheFields_data();
    void staysWithinTheFields();
    void endsTextsAtTheirNul();
    void readsRandomTextsAsQtDoes();
    void pairsTimestampsWithValues_data();
    void pairsTimestampsWithValues();
    void pairsTimestampsOfFailedReads();
    void readsTimestampsWithoutANul();
    void makesTexts_data();
    void makesTexts();

private:
    PythonInterpreter python;
};

namespace
{

QString readAs(const TarnItem &item, int code)
{
    return PythonInterpreter::describe(PyRef(orbclient::toPython(item, static_cast<Conversion>(code))));
}

QString readPairAs(const TarnItem &item, int code)
{
    return PythonInterpreter::describe(PyRef(orbclient::toPythonPair(item, static_cast<Conversion>(code))));
}

/// What a value text is read as, by the rules and through Qt's own number parsers.
PyRef readThroughQt(const QByteArray &value, int code)
{
    QString text = QString::fromLatin1(value);
    bool parsed = false;
    if (code == 4)
        return PyRef(orbclient::toPythonText(text));
    const int integer = text.toInt(&parsed, 10);
    if (code == 1 && parsed)
        return PyRef(PyLong_FromLong(integer));
    if (code == 3)
        text = text.toLower();
    if (code == 3 && (text.isEmpty() || text == QLatin1String("false")))
        return PyRef(PyBool_FromLong(0));
    // Whatever is an integer is a floating point number too, so nothing is left for the integer rule after this one.
    const double number = text.toDouble(&parsed);
    if (parsed)
        return PyRef(PyFloat_FromDouble(number));
    if (text.toLower() == QLatin1String("true"))
        return PyRef(PyBool_FromLong(1));
    if (text.toLower() == QLatin1String("false"))
        return PyRef(PyBool_FromLong(0));
    return PyRef(orbclient::toPythonText(text));
}

QByteArray randomText(QRandomGenerator &random)
{
    // What numbers are made of, mostly, so that many of the texts are numbers.
    static const QByteArray letters("0123456789012345678900..+-eE \t,xXnaifNAITRUEtruefalse\xa0\xe9_");
    static const QList<QByteArray> starts{"",  "",   "",    "-",   "+",    " ",
                                          "0", "1e", "nan", "inf", "true", "21474836"};
    QByteArray text = starts.at(random.bounded(starts.size()));
    const int length = random.bounded(12);
    for (int i = 0; i < length; ++i)
        text.append(letters.at(random.bounded(letters.size())));
    return text;
}

} // namespace

void TestValueConversion::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestValueConversion::readsValues_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QStringList>("expected");

    // One column a code: automatic, integer, floating point, boolean, text.
    const auto row = [](const char *value, const char *automatic, const char *integer, const char *floating,
                        const char *boolean, const char *text) {
        QTest::addRow("\"%s\"", value)
            << QByteArray(value)
            << QStringList{QString::fromUtf8(automatic), QString::fromUtf8(integer),
                           QString::fromUtf8(floating), QString::fromUtf8(boolean), QString::fromUtf8(text)};
    };
    row("12", "12.0", "12", "12.0", "12.0", "'12'");
    row("5", "5.0", "5", "5.0", "5.0", "'5'");
    row("0", "0.0", "0", "0.0", "0.0", "'0'");
    row("1", "1.0", "1", "1.0", "1.0", "'1'");
    row("-7", "-7.0", "-7", "-7.0", "-7.0", "'-7'");
    row("5.5", "5.5", "5.5", "5.5", "5.5", "'5.5'");
    row("0.1", "0.1", "0.1", "0.1", "0.1", "'0.1'");
    row("1e5", "100000.0", "100000.0", "100000.0", "100000.0", "'1e5'");
    row("1E5", "100000.0", "100000.0", "100000.0", "100000.0", "'1E5'");
    row("-1.25e-3", "-0.00125", "-0.00125", "-0.00125", "-0.00125", "'-1.25e-3'");

    row("true", "True", "True", "True", "True", "'true'");
    row("false", "False", "False", "False", "False", "'false'");
    row("TRUE", "True", "True", "True", "True", "'TRUE'");
    row("False", "False", "False", "False", "False", "'False'");
    row("true ", "'true '", "'true '", "'true '", "'true '", "'true '");
    row("", "''", "''", "''", "False", "''");
    row(" ", "' '", "' '", "' '", "' '", "' '");
    row("abc", "'abc'", "'abc'", "'abc'", "'abc'", "'abc'");
    row("on", "'on'", "'on'", "'on'", "'on'", "'on'");
    row("ON", "'ON'", "'ON'", "'ON'", "'on'", "'ON'");
    row("Ramping Up", "'Ramping Up'", "'Ramping Up'", "'Ramping Up'", "'ramping up'", "'Ramping Up'");
    row("error", "'error'", "'error'", "'error'", "'error'", "'error'");

    row("2147483647", "2147483647.0", "2147483647", "2147483647.0", "2147483647.0", "'2147483647'");
    row("2147483648", "2147483648.0", "2147483648.0", "2147483648.0", "2147483648.0", "'2147483648'");
    row("-2147483648", "-2147483648.0", "-2147483648", "-2147483648.0", "-2147483648.0", "'-2147483648'");
    row("-2147483649", "-2147483649.0", "-2147483649.0", "-2147483649.0", "-2147483649.0", "'-2147483649'");
    row("99999999999999999999", "1e+20", "1e+20", "1e+20", "1e+20", "'99999999999999999999'");
    row("9007199254740993", "9007199254740992.0", "9007199254740992.0", "9007199254740992.0",
        "9007199254740992.0", "'9007199254740993'");
    row("1e308", "1e+308", "1e+308", "1e+308", "1e+308", "'1e308'");
    row("1e400", "'1e400'", "'1e400'", "'1e400'", "'1e400'", "'1e400'");
    row("-1E400", "'-1E400'", "'-1E400'", "'-1E400'", "'-1e400'", "'-1E400'");
    row("1e-400", "'1e-400'", "'1e-400'", "'1e-400'", "'1e-400'", "'1e-400'");
    row("4.9e-324", "5e-324", "5e-324", "5e-324", "5e-324", "'4.9e-324'");
    row("-0", "-0.0", "0", "-0.0", "-0.0", "'-0'");
    row("-0.0", "-0.0", "-0.0", "-0.0", "-0.0", "'-0.0'");
    row("00012", "12.0", "12", "12.0", "12.0", "'00012'");
    row(" 5 ", "5.0", "5", "5.0", "5.0", "' 5 '");
    row("\t5\n", "5.0", "5", "5.0", "5.0", "'\\t5\\n'");
    row("+5", "5.0", "5", "5.0", "5.0", "'+5'");
    row("5.", "5.0", "5.0", "5.0", "5.0", "'5.'");
    row(".5", "0.5", "0.5", "0.5", "0.5", "'.5'");
    row(".", "'.'", "'.'", "'.'", "'.'", "'.'");
    row("-", "'-'", "'-'", "'-'", "'-'", "'-'");
    row("--5", "'--5'", "'--5'", "'--5'", "'--5'", "'--5'");
    row("5 5", "'5 5'", "'5 5'", "'5 5'", "'5 5'", "'5 5'");
    row("1e", "'1e'", "'1e'", "'1e'", "'1e'", "'1e'");
    row("0x10", "'0x10'", "'0x10'", "'0x10'", "'0x10'", "'0x10'");
    row("0X1F", "'0X1F'", "'0X1F'", "'0X1F'", "'0x1f'", "'0X1F'");
    row("1,000", "'1,000'", "'1,000'", "'1,000'", "'1,000'", "'1,000'");
    row("1_000", "'1_000'", "'1_000'", "'1_000'", "'1_000'", "'1_000'");
    row("5V", "'5V'", "'5V'", "'5V'", "'5v'", "'5V'");
    row("nan", "nan", "nan", "nan", "nan", "'nan'");
    row("NaN", "nan", "nan", "nan", "nan", "'NaN'");
    row("-nan", "'-nan'", "'-nan'", "'-nan'", "'-nan'", "'-nan'");
    row("inf", "inf", "inf", "inf", "inf", "'inf'");
    row("-inf", "-inf", "-inf", "-inf", "-inf", "'-inf'");
    row("+inf", "inf", "inf", "inf", "inf", "'+inf'");
    row("Infinity", "'Infinity'", "'Infinity'", "'Infinity'", "'infinity'", "'Infinity'");
}

void TestValueConversion::readsValues()
{
    QFETCH(QByteArray, value);
    QFETCH(QStringList, expected);

    const TarnItem item = itemRecord(value);
    QStringList read;
    for (int code = 0; code < expected.size(); ++code)
        read.append(readAs(item, code));
    QCOMPARE(read, expected);

    // The short cut that methods take for most texts either leads to the same or is not taken.
    for (int code = 0; code < expected.size(); ++code) {
        bool failed = true;
        const std::string_view text(value.constData(), static_cast<std::size_t>(value.size()));
        const PyRef quick(orbclient::toPythonQuickly(text, static_cast<Conversion>(code), failed));
        QVERIFY(!failed);
        if (quick)
            QCOMPARE(PythonInterpreter::describe(quick), expected.at(code));
    }
}

void TestValueConversion::takesAnyOtherCodeAsAutomatic_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {-1, 5, 6, 100, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QTest::addRow("%d", code) << code;
}

void TestValueConversion::takesAnyOtherCodeAsAutomatic()
{
    QFETCH(int, code);

    QCOMPARE(readAs(itemRecord("12"), code), QStringLiteral("12.0"));
    QCOMPARE(readAs(itemRecord("TRUE"), code), QStringLiteral("True"));
    QCOMPARE(readAs(itemRecord("Abc"), code), QStringLiteral("'Abc'"));
    QCOMPARE(readAs(itemRecord(""), code), QStringLiteral("''"));
}

void TestValueConversion::failsWithoutAFirstText_data()
{
    QTest::addColumn<int>("code");
    for (int code = 0; code <= 5; ++code)
        QTest::addRow("%d", code) << code;
}

void TestValueConversion::failsWithoutAFirstText()
{
    QFETCH(int, code);

    // The value text stands there, to be ignored.
    TarnItem item = itemRecord("12");
    item.path[0] = '\0';
    QCOMPARE(readAs(item, code), QStringLiteral("'error'"));
    item.value[0] = '\0';
    QCOMPARE(readAs(item, code), QStringLiteral("'error'"));
}

void TestValueConversion::readsEightBitTexts_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("expected");

    QTest::newRow("micro sign") << QByteArray("5 \xb5"
                                              "A")
                                << 0 << QStringLiteral("'5 \u00b5A'");
    QTest::newRow("as text") << QByteArray("\xc9t\xe9") << 4 << QStringLiteral("'\u00c9t\u00e9'");
    QTest::newRow("automatic keeps its case")
        << QByteArray("\xc9t\xe9") << 0 << QStringLiteral("'\u00c9t\u00e9'");
    QTest::newRow("boolean loses its case")
        << QByteArray("\xc9T\xc9") << 3 << QStringLiteral("'\u00e9t\u00e9'");
    QTest::newRow("every byte is a letter")
        << QByteArray("\xc3\xa9") << 4 << QStringLiteral("'\u00c3\u00a9'");
    QTest::newRow("not UTF-8") << QByteArray("\xff\xfe!") << 0 << QStringLiteral("'\u00ff\u00fe!'");
    QTest::newRow("control letters") << QByteArray("a\x01\x1b") << 4 << QStringLiteral("'a\\x01\\x1b'");
    QTest::newRow("superscript is no digit") << QByteArray("\xb2") << 1 << QStringLiteral("'\u00b2'");
    QTest::newRow("number within hard blanks") << QByteArray("\xa0"
                                                             "5\xa0")
                                               << 0 << QStringLiteral("5.0");
}

void TestValueConversion::readsEightBitTexts()
{
    QFETCH(QByteArray, value);
    QFETCH(int, code);

    QTEST(readAs(itemRecord(value), code), "expected");
}

void TestValueConversion::staysWithinTheFields_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("expected");

    constexpr int Size = static_cast<int>(sizeof(TarnItem::value));
    const QString letters = QLatin1Char('\'') + QString(Size, QLatin1Char('x')) + QLatin1Char('\'');
    QTest::newRow("text") << QByteArray(Size, 'x') << 4 << letters;
    QTest::newRow("automatic") << QByteArray(Size, 'x') << 0 << letters;
    QTest::newRow("boolean") << QByteArray(Size, 'X') << 3 << letters;
    QTest::newRow("number") << QByteArray(Size, '0').replace(Size - 1, 1, "7") << 0 << QStringLiteral("7.0");
    QTest::newRow("integer") << QByteArray(Size, '0').replace(Size - 1, 1, "7") << 1 << QStringLiteral("7");
    QTest::newRow("fraction") << QByteArray(Size, '0').replace(1, 2, ".5") << 2 << QStringLiteral("0.5");
}

void TestValueConversion::staysWithinTheFields()
{
    QFETCH(QByteArray, value);
    QFETCH(int, code);
    QFETCH(QString, expected);

    // What follows the value would go on as a text and as a number.
    TarnItem item = itemRecord(value);
    std::memset(item.path, 'p', sizeof(item.path));
    std::memset(item.unit, '9', sizeof(item.unit));
    std::memset(item.type, '9', sizeof(item.type));
    QCOMPARE(readAs(item, code), expected);
}

void TestValueConversion::endsTextsAtTheirNul()
{
    const TarnItem item = itemRecord(QByteArray("1\0"
                                                "2",
                                                3));
    QCOMPARE(readAs(item, 0), QStringLiteral("1.0"));
    QCOMPARE(readAs(item, 1), QStringLiteral("1"));
    QCOMPARE(readAs(item, 4), QStringLiteral("'1'"));
}

void TestValueConversion::readsRandomTextsAsQtDoes()
{
    constexpr int Rounds = 50000;
    QRandomGenerator random(20);
    for (int i = 0; i < Rounds; ++i) {
        const QByteArray value = randomText(random);
        const TarnItem item = itemRecord(value);
        for (int code = 0; code <= 4; ++code) {
            const QString expected = PythonInterpreter::describe(readThroughQt(value, code));
            const QString read = readAs(item, code);
            if (read != expected)
                QCOMPARE(
                    QStringLiteral("%1 of \"%2\" is %3").arg(code).arg(QString::fromLatin1(value), read),
                    QStringLiteral("%1 of \"%2\" is %3").arg(code).arg(QString::fromLatin1(value), expected));
        }
    }
}

void TestValueConversion::pairsTimestampsWithValues_data()
{
    QTest::addColumn<QByteArray>("timestamp");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const char *timestamp, const char *value, int code,
                        const char *expected) {
        QTest::newRow(name) << QByteArray(timestamp) << QByteArray(value) << code
                            << QString::fromLatin1(expected);
    };
    row("automatic", "1700000000.125", "5", 0, "[1700000000.125, 5.0]");
    row("integer", "1700000000", "5", 1, "[1700000000.0, 5]");
    row("boolean", "0", "TRUE", 3, "[0.0, True]");
    row("text", "-1.5", "Abc", 4, "[-1.5, 'Abc']");
    row("exponent", "1.7e9", "", 0, "[1700000000.0, '']");
    row("no timestamp", "", "5", 0, "[nan, 5.0]");
    row("a text for a timestamp", "yesterday", "5", 0, "[nan, 5.0]");
    row("a number and more", "17 s", "5", 0, "[nan, 5.0]");
    row("a timestamp too large", "1e999", "5", 0, "[nan, 5.0]");
    row("a timestamp that is none", "nan", "5", 0, "[nan, 5.0]");
    row("an endless timestamp", "inf", "5", 0, "[inf, 5.0]");
    row("blanks around it", " 17 ", "5", 0, "[17.0, 5.0]");
    row("false", "false", "5", 0, "[nan, 5.0]");
}

void TestValueConversion::pairsTimestampsWithValues()
{
    QFETCH(QByteArray, timestamp);
    QFETCH(QByteArray, value);
    QFETCH(int, code);

    QTEST(readPairAs(itemRecord(value, timestamp), code), "expected");
}

void TestValueConversion::pairsTimestampsOfFailedReads()
{
    TarnItem item = itemRecord("5", "17.5");
    item.path[0] = '\0';
    for (int code = 0; code <= 5; ++code)
        QCOMPARE(readPairAs(item, code), QStringLiteral("[17.5, 'error']"));

    item.timestamp[0] = '\0';
    QCOMPARE(readPairAs(item, 0), QStringLiteral("[nan, 'error']"));
}

void TestValueConversion::readsTimestampsWithoutANul()
{
    // Alone on the heap, where a checker sees a byte read behind it.
    const auto item =
        std::make_unique<TarnItem>(itemRecord("5", QByteArray("1700000000.12500000000000", 25)));
    QCOMPARE(item->timestamp[sizeof(item->timestamp) - 1], '0');
    QCOMPARE(readPairAs(*item, 0), QStringLiteral("[1700000000.125, 5.0]"));
}

void TestValueConversion::makesTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("empty") << QString(QLatin1String("")) << QStringLiteral("''");
    QTest::newRow("null") << QString() << QStringLiteral("''");
    QTest::newRow("plain") << QStringLiteral("Main 1") << QStringLiteral("'Main 1'");
    QTest::newRow("accents") << QStringLiteral("\u00e9\u03a9") << QStringLiteral("'\u00e9\u03a9'");
    QTest::newRow("beyond the first plane") << QStringLiteral("\U0001f600") << QStringLiteral("'\U0001f600'");
}

void TestValueConversion::makesTexts()
{
    QFETCH(QString, text);

    QTEST(PythonInterpreter::describe(PyRef(orbclient::toPythonText(text))), "expected");
}

QTEST_GUILESS_MAIN(TestValueConversion)

#include "tst_value_conversion.moc"
