#include "orbclient/wide_text_buffer.h"

#include "orbclient/value_conversion.h"
#include "tests/support/python_interpreter.h"

#include <QtTest>

using orbclient::WideTextBuffer;

class TestWideTextBuffer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsEmpty();
    void growsByItsRule_data();
    void growsByItsRule();
    void isOneForTheProcess();

private:
    PythonInterpreter python;
};

void TestWideTextBuffer::startsEmpty()
{
    QCOMPARE(WideTextBuffer().capacity(), std::size_t(0));
    // Nothing that the module does on its way up sends a text.
    QCOMPARE(WideTextBuffer::instance().capacity(), std::size_t(0));
}

void TestWideTextBuffer::growsByItsRule_data()
{
    QTest::addColumn<QVector<int>>("lengths");
    QTest::addColumn<int>("capacity");

    // A text of n characters fits while n + 10 is below the capacity; else the capacity becomes n + 10.
    QTest::newRow("first") << QVector<int>{5} << 15;
    QTest::newRow("first and empty") << QVector<int>{0} << 10;
    QTest::newRow("shorter") << QVector<int>{5, 4} << 15;
    QTest::newRow("as long") << QVector<int>{5, 5} << 15;
    QTest::newRow("longer by one") << QVector<int>{5, 6} << 16;
    QTest::newRow("does not shrink") << QVector<int>{1000, 1, 0} << 1010;
    QTest::newRow("up and down and up") << QVector<int>{10, 100, 10, 99, 100, 101} << 111;
    QTest::newRow("far up") << QVector<int>{1, 1000000} << 1000010;
}

void TestWideTextBuffer::growsByItsRule()
{
    QFETCH(QVector<int>, lengths);
    QFETCH(int, capacity);

    // One wide character holds any character here, those past the first plane too.
    for (const char *letter : {"'a'", "'\\u00e9'", "'\\u03a9'", "'\\U0001f600'"}) {
        const QString one = PythonInterpreter::textOf(python.evaluate(QString::fromLatin1(letter)).get());
        WideTextBuffer buffer;
        for (const int length : qAsConst(lengths)) {
            const PyRef text =
                python.evaluate(QStringLiteral("%1 * %2").arg(QLatin1String(letter)).arg(length));
            QVERIFY(text);
            QVERIFY(buffer.textOf(text.get()) == one.repeated(length));
        }
        QCOMPARE(buffer.capacity(), static_cast<std::size_t>(capacity));
    }
}

void TestWideTextBuffer::isOneForTheProcess()
{
    const std::size_t before = WideTextBuffer::instance().capacity();
    const PyRef text = python.evaluate(QStringLiteral("'\\u03a9' * 5000"));
    QVERIFY(text);
    orbclient::toValueText(text.get());
    QVERIFY(before < 5010);
    QCOMPARE(WideTextBuffer::instance().capacity(), std::size_t(5010));
    QCOMPARE(python.eval(QStringLiteral("str(orbClient.connection('x' * 6000)) == 'x' * 6000")),
             QStringLiteral("True"));
    QCOMPARE(WideTextBuffer::instance().capacity(), std::size_t(6010));
}

QTEST_GUILESS_MAIN(TestWideTextBuffer)

#include "tst_wide_text_buffer.moc"
