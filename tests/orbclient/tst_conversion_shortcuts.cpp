#include "orbclient/conversion_shortcuts.h"

#include "hostclient/tarn_item.h"
#include "orbclient/py_ref.h"
#include "orbclient/value_conversion.h"
#include "tests/support/python_interpreter.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <utility>

using namespace orbclient;

namespace
{

constexpr std::array Codes = {Conversion::Automatic, Conversion::Integer, Conversion::FloatingPoint,
                              Conversion::Boolean, Conversion::Text};
constexpr int RandomValues = 200000;

TarnItem itemWith(const QByteArray &value)
{
    TarnItem item{};
    item.path[0] = 'p';
    std::memcpy(item.value, value.constData(), std::min(sizeof(item.value), std::size_t(value.size())));
    return item;
}

/// Type and value, a float to its last bit.
QByteArray described(PyObject *object)
{
    if (object == nullptr)
        return "null";
    QByteArray text = Py_TYPE(object)->tp_name;
    if (PyFloat_CheckExact(object)) {
        const double number = PyFloat_AS_DOUBLE(object);
        return text + ' ' + QByteArray(reinterpret_cast<const char *>(&number), sizeof(number)).toHex();
    }
    const PyRef repr(PyObject_Repr(object));
    return text + ' ' + PyUnicode_AsUTF8(repr.get());
}

/// The first case in which the two roads differ.
QByteArray difference;

void notice(const QByteArray &what)
{
    if (difference.isEmpty())
        difference = what;
}

/// Compares the two roads for one text; returns whether the short one was taken.
bool compareReading(const QByteArray &text)
{
    bool taken = false;
    for (const Conversion code : Codes) {
        bool failed = false;
        const PyRef quick(
            toPythonQuickly(std::string_view(text.constData(), std::size_t(text.size())), code, failed));
        if (failed || PyErr_Occurred() != nullptr)
            notice("an exception is left behind for " + text);
        if (!quick)
            continue;
        taken = true;
        const PyRef general(toPython(itemWith(text), code));
        if (described(quick.get()) != described(general.get()))
            notice(text + " with code " + QByteArray::number(int(code)) + ": " + described(quick.get())
                   + " instead of " + described(general.get()));
    }
    return taken;
}

bool compareWriting(PyObject *value)
{
    ByteText text;
    if (!appendValueText(text, value))
        return false;
    const QString general = toValueText(value);
    if (QString::fromLatin1(text.terminated()) != general)
        notice(described(value) + " written as " + text.terminated() + " instead of " + general.toUtf8());
    return true;
}

} // namespace

class TestConversionShortcuts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { interpreter = std::make_unique<PythonInterpreter>(); }
    void cleanupTestCase() { interpreter.reset(); }

    void cleanup() { QCOMPARE(std::exchange(difference, QByteArray()), QByteArray()); }

    void readsUsualTextsQuickly_data();
    void readsUsualTextsQuickly();
    void leavesUnusualTextsToTheGeneralRoad_data();
    void leavesUnusualTextsToTheGeneralRoad();
    void readsRandomTextsAlike();
    void readsRandomNumbersAlike();
    void writesRandomFloatsAlike();
    void writesFloatsNextToEveryTieAlike();
    void writesRandomIntsAlike();
    void writesTextsAlike();
    void declinesWhatIsNoPlainAscii();
    void cutsNothingThatDoesNotFit();

private:
    std::unique_ptr<PythonInterpreter> interpreter;
    std::mt19937_64 random{20240229}; // the same values in every run
};

void TestConversionShortcuts::readsUsualTextsQuickly_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"0", "5", "-5", "007", "5.5", "-0", "0.0001", "123456789012345", "1234.5678901",
                             "true", "false", "ok", "error", "Setup", "trUer", "none?", "x-1"})
        QTest::newRow(text) << QByteArray(text);
}

void TestConversionShortcuts::readsUsualTextsQuickly()
{
    QFETCH(const QByteArray, text);
    // "none?" begins like "nan", and is left to the general road except as a text.
    QVERIFY(compareReading(text));
}

void TestConversionShortcuts::leavesUnusualTextsToTheGeneralRoad_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"",
                             "1e5",
                             "+5",
                             ".5",
                             "5.",
                             " 5",
                             "5 ",
                             "1,000",
                             "nan",
                             "inf",
                             "-inf",
                             "INF",
                             "0x10",
                             "TRUE",
                             "False",
                             "-",
                             ".",
                             "1.2.3",
                             "1234567890123456",
                             "\xb5"
                             "A",
                             "5\xb5"})
        QTest::newRow(QByteArray(text).toPercentEncoding().constData()) << QByteArray(text);
}

void TestConversionShortcuts::leavesUnusualTextsToTheGeneralRoad()
{
    QFETCH(const QByteArray, text);
    bool failed = true;
    const PyRef object(toPythonQuickly(std::string_view(text.constData(), std::size_t(text.size())),
                                       Conversion::Automatic, failed));
    QVERIFY(!object);
    QVERIFY(!failed);
    compareReading(text);
}

void TestConversionShortcuts::readsRandomTextsAlike()
{
    const QByteArray letters(
        "0123456789012345678901234567890123456789..--++eE truefalsTRUEFALSinfNAN,x\xe4\xb5");
    int taken = 0;
    for (int i = 0; i < RandomValues; ++i) {
        QByteArray text(int(random() % 20), '\0');
        for (char &letter : text)
            letter = letters.at(int(random() % std::uint64_t(letters.size())));
        taken += compareReading(text) ? 1 : 0;
    }
    QVERIFY(taken > RandomValues / 20);
}

void TestConversionShortcuts::readsRandomNumbersAlike()
{
    int taken = 0;
    for (int i = 0; i < RandomValues; ++i) {
        const double scale = std::pow(10.0, int(random() % 18) - 4);
        const double number = (double(random()) / double(std::mt19937_64::max()) - 0.5) * scale;
        taken += compareReading(QByteArray::number(number, 'f', int(random() % 12))) ? 1 : 0;
    }
    QVERIFY(taken > RandomValues / 2);
}

void TestConversionShortcuts::writesRandomFloatsAlike()
{
    int taken = 0;
    for (int i = 0; i < RandomValues; ++i) {
        double number = 0;
        if (i % 2 == 0) {
            const std::uint64_t bits = random();
            std::memcpy(&number, &bits, sizeof(number)); // every kind of double, NaNs and infinities included
        } else {
            number = (double(random()) / double(std::mt19937_64::max()) - 0.5)
                * std::pow(10.0, int(random() % 12) - 5);
        }
        const PyRef value(PyFloat_FromDouble(number));
        taken += compareWriting(value.get()) ? 1 : 0;
    }
    QVERIFY(taken > RandomValues / 4);
}

void TestConversionShortcuts::writesFloatsNextToEveryTieAlike()
{
    // Where the seventh digit is a 5, a sixth digit hangs on the last bit and on the rule for a tie.
    int taken = 0;
    for (int exponent = -10; exponent <= 6; ++exponent) {
        for (int i = 0; i < 4000; ++i) {
            const double tie = (double(100000 + random() % 900000) + 0.5) * std::pow(10.0, exponent);
            for (const double number :
                 {tie, std::nextafter(tie, 0.0), std::nextafter(tie, 1e300), std::round(tie)}) {
                const PyRef value(PyFloat_FromDouble(i % 2 == 0 ? number : -number));
                taken += compareWriting(value.get()) ? 1 : 0;
            }
        }
    }
    for (const double edge :
         {0.0, -0.0, 1e-4, 9.9999949e-5, 0.00099999951, 999999.0, 999999.4, 999999.5, 999999.6, 1e6, 0.1, 1e7,
          2.5, 100000.5, 99999.95, 5e-324, std::numeric_limits<double>::max()}) {
        const PyRef value(PyFloat_FromDouble(edge));
        taken += compareWriting(value.get()) ? 1 : 0;
    }
    QVERIFY(taken > 0);
}

void TestConversionShortcuts::writesRandomIntsAlike()
{
    for (int i = 0; i < RandomValues; ++i) {
        const auto number = static_cast<qint64>(random()) >> (random() % 64);
        const PyRef value(PyLong_FromLongLong(number));
        QVERIFY(compareWriting(value.get()));
    }
    const PyRef huge(PyLong_FromString("-123456789012345678901234567890", nullptr, 10));
    QVERIFY(compareWriting(huge.get()));
    QVERIFY(compareWriting(Py_True));
    QVERIFY(compareWriting(Py_False));
}

void TestConversionShortcuts::writesTextsAlike()
{
    for (int i = 0; i < RandomValues / 10; ++i) {
        QByteArray text(int(random() % 300), '\0');
        for (char &letter : text)
            letter = char(random() % 128);
        const PyRef value(PyUnicode_FromStringAndSize(text.constData(), text.size()));
        const bool usual = !text.contains('\0') && text.size() <= int(ByteText::Capacity);
        QCOMPARE(compareWriting(value.get()), usual);
        QCOMPARE(plainAscii(value.get()).has_value(), !text.contains('\0'));
    }
}

void TestConversionShortcuts::declinesWhatIsNoPlainAscii()
{
    QCOMPARE(interpreter->exec(QStringLiteral("class Text(str): pass\nlatin = '\\xb5'\nwide = '\\u0416'\n"
                                              "lone = '\\ud800'\nastral = '\\U0001f600'\nsub = Text('a')")),
             QString());
    for (const char *name : {"latin", "wide", "lone", "astral", "sub", "None", "[]", "b'a'"}) {
        const PyRef value = interpreter->evaluate(QString::fromLatin1(name));
        QVERIFY2(value, name);
        QVERIFY2(!plainAscii(value.get()).has_value(), name);
        ByteText text;
        QVERIFY2(!appendValueText(text, value.get()), name);
    }
    QVERIFY(!plainAscii(nullptr).has_value());
    ByteText text;
    QVERIFY(!appendValueText(text, nullptr));
}

void TestConversionShortcuts::cutsNothingThatDoesNotFit()
{
    constexpr std::size_t Free = 5;
    const std::string beginning(ByteText::Capacity - Free, 'a');
    ByteText text;
    QVERIFY(text.append(beginning));
    QVERIFY(!text.append(std::string_view("123456")));
    QVERIFY(!text.append(123456));
    QVERIFY(text.append(12345));
    QVERIFY(!text.append('b'));
    QCOMPARE(QByteArray(text.terminated()), QByteArray::fromStdString(beginning) + "12345");
}

QTEST_GUILESS_MAIN(TestConversionShortcuts)
#include "tst_conversion_shortcuts.moc"
