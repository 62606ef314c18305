#include "orbclient/data_frame_object.h"

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "tests/support/python_interpreter.h"

#include <QtTest>

/// The way from a data frame to the message that is sent.
class TestDataFrameObjectMessages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void sendsAFrame();
    void sendsValues_data();
    void sendsValues();
    void sendsNumbers_data();
    void sendsNumbers();
    void sendsTexts_data();
    void sendsTexts();
    void sendsAnEmptyFrame();
    void sendsWhatItReceived();
    void refusesWhatIsNoFrame_data();
    void refusesWhatIsNoFrame();

private:
    OrbItemValue sent(const QString &statements);

    PythonInterpreter python;
};

namespace
{

void compareWithDefault(const OrbItemValue &value)
{
    const OrbItemValue fresh;
    QCOMPARE(value.id(), fresh.id());
    QCOMPARE(value.value(), fresh.value());
    QVERIFY(!value.value().isValid());
    QCOMPARE(value.unit(), fresh.unit());
    QCOMPARE(value.command(), fresh.command());
}

} // namespace

/// Runs statements on an empty frame "f" and gives what is sent of it.
OrbItemValue TestDataFrameObjectMessages::sent(const QString &statements)
{
    const QString failure = python.exec(QStringLiteral("f = orbClient.dataFrame()\n") + statements);
    const PyRef frame = python.evaluate(QStringLiteral("f"));
    OrbItemValue value;
    value.setUnit(QStringLiteral("left over"));
    value.setValue(7);
    if (!failure.isEmpty() || !orbclient::dataFrameToItemValue(value, frame.get()))
        qFatal("The frame was not taken: %s %s", qPrintable(failure), qPrintable(statements));
    return value;
}

void TestDataFrameObjectMessages::initTestCase()
{
    QCOMPARE(python.exec(QStringLiteral(R"(
class Derived(orbClient.dataFrame):
    pass
class Raising:
    def __str__(self): raise RuntimeError
    __repr__ = __int__ = __float__ = __str__
)")),
             QString());
}

void TestDataFrameObjectMessages::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestDataFrameObjectMessages::sendsAFrame()
{
    const OrbItemValue value = sent(QStringLiteral(R"(
f.connection, f.line, f.address, f.channel = "c1", 1, 2, 3
f.command, f.item, f.value, f.unit = "setItem", "Control.voltageSet", 100.5, "V"
f.rawJson = "ignored"
)"));
    QCOMPARE(value.id().connectionName, QStringLiteral("c1"));
    QCOMPARE(value.id().line, 1U);
    QCOMPARE(value.id().address, 2U);
    QCOMPARE(value.id().channel, 3);
    QCOMPARE(value.id().itemName, QStringLiteral("Control.voltageSet"));
    QCOMPARE(value.value(), QVariant(100.5));
    QCOMPARE(value.unit(), QStringLiteral("V"));
    QCOMPARE(value.command(), QStringLiteral("setItem"));
}

void TestDataFrameObjectMessages::sendsValues_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QVariant>("expected");

    const auto text = [](const char *value) { return QVariant(QString::fromLatin1(value)); };
    QTest::newRow("True") << QStringLiteral("True") << QVariant(1);
    QTest::newRow("int") << QStringLiteral("-5") << QVariant(-5);
    QTest::newRow("float") << QStringLiteral("0.123456789") << QVariant(0.123456789);
    QTest::newRow("str") << QStringLiteral("'5'") << text("5");
    QTest::newRow("dict") << QStringLiteral("{'a': [1]}") << text("[ a=[1, ] ]");
    QTest::newRow("list") << QStringLiteral("[1, 'x']") << text("[1, x, ]");
    QTest::newRow("None") << QStringLiteral("None") << text("");
    QTest::newRow("itself") << QStringLiteral("f") << text("");
    QTest::newRow("raising") << QStringLiteral("Raising()") << text("");
}

void TestDataFrameObjectMessages::sendsValues()
{
    QFETCH(QString, value);
    QFETCH(QVariant, expected);

    const QVariant variant = sent(QStringLiteral("f.value = ") + value).value();
    QVERIFY(variant.isValid());
    QCOMPARE(variant.typeName(), expected.typeName());
    QCOMPARE(variant, expected);
}

void TestDataFrameObjectMessages::sendsNumbers_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<int>("expected");

    const auto row = [](const char *number, int expected) {
        QTest::newRow(number) << QString::fromLatin1(number) << expected;
    };
    row("7", 7);
    row("1.9", 1);
    row("-1.9", -1);
    row("True", 1);
    row("'1'", -1);
    row("None", -1);
    row("[1]", -1);
    row("Raising()", -1);
    row("float('nan')", -1);
    row("1e300", -1);
}

void TestDataFrameObjectMessages::sendsNumbers()
{
    QFETCH(QString, number);
    QFETCH(int, expected);

    const OrbItemId line = sent(QStringLiteral("f.line = ") + number).id();
    QCOMPARE(line.line, static_cast<quint32>(expected));
    QCOMPARE(line.address, static_cast<quint32>(-1));
    const OrbItemId address = sent(QStringLiteral("f.address = ") + number).id();
    QCOMPARE(address.address, static_cast<quint32>(expected));
    QCOMPARE(address.line, static_cast<quint32>(-1));
    const OrbItemId channel = sent(QStringLiteral("f.channel = ") + number).id();
    QCOMPARE(channel.channel, expected);
}

void TestDataFrameObjectMessages::sendsTexts_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("object");
    QTest::addColumn<QString>("expected");

    for (const QString &member : {QStringLiteral("connection"), QStringLiteral("command"),
                                  QStringLiteral("item"), QStringLiteral("unit")}) {
        const auto row = [&](const char *object, const char *expected) {
            QTest::addRow("%s = %s", qPrintable(member), object)
                << member << QString::fromLatin1(object) << QString::fromUtf8(expected);
        };
        row("'text'", "text");
        row("'\\u00b5A'", "\u00b5A");
        row("5", "5");
        row("2.5", "2.5");
        row("[1]", "[1, ]");
        row("None", "");
        row("Raising()", "");
    }
}

void TestDataFrameObjectMessages::sendsTexts()
{
    QFETCH(QString, member);
    QFETCH(QString, object);
    QFETCH(QString, expected);

    const OrbItemValue value = sent(QStringLiteral("f.%1 = %2").arg(member, object));
    const QHash<QString, QString> texts{{QStringLiteral("connection"), value.id().connectionName},
                                        {QStringLiteral("command"), value.command()},
                                        {QStringLiteral("item"), value.id().itemName},
                                        {QStringLiteral("unit"), value.unit()}};
    for (auto text = texts.cbegin(); text != texts.cend(); ++text)
        QCOMPARE(text.value(), text.key() == member ? expected : QString(QLatin1String("")));
}

void TestDataFrameObjectMessages::sendsAnEmptyFrame()
{
    const OrbItemValue value = sent(QStringLiteral("pass"));
    QCOMPARE(value.id().connectionName, QString(QLatin1String("")));
    QCOMPARE(value.id().line, static_cast<quint32>(-1));
    QCOMPARE(value.id().address, static_cast<quint32>(-1));
    QCOMPARE(value.id().channel, -1);
    QCOMPARE(value.id().itemName, QString(QLatin1String("")));
    QVERIFY(!value.value().isValid());
    QCOMPARE(value.unit(), QString(QLatin1String("")));
    QCOMPARE(value.command(), QString(QLatin1String("")));
}

void TestDataFrameObjectMessages::sendsWhatItReceived()
{
    OrbRequestItem request;
    request.commandType = OrbRequestItem::SetItem;
    request.line = 1;
    request.address = 3000000000U;
    request.channel = 3;
    request.itemName = QStringLiteral("Control.voltageSet");
    request.value = QStringLiteral("100.5");
    request.unit = QStringLiteral("V");
    const PyRef frame(orbclient::newDataFrame(nullptr, QStringLiteral("c1"), request));
    OrbItemValue value;
    QVERIFY(orbclient::dataFrameToItemValue(value, frame.get()));
    QCOMPARE(value.id().connectionName, QStringLiteral("c1"));
    QCOMPARE(value.id().line, 1U);
    QCOMPARE(value.id().address, 3000000000U);
    QCOMPARE(value.id().channel, 3);
    QCOMPARE(value.id().itemName, request.itemName);
    QCOMPARE(value.value(), QVariant(request.value));
    QCOMPARE(value.unit(), request.unit);
    QCOMPARE(value.command(), QStringLiteral("setItem"));
}

void TestDataFrameObjectMessages::refusesWhatIsNoFrame_data()
{
    QTest::addColumn<QString>("expression");
    for (const char *expression :
         {"None", "5", "'dataFrame'", "{}", "{'item': 'a'}", "[orbClient.dataFrame()]", "orbClient.dataFrame",
          "orbClient.channel()", "Derived()", "Raising()"})
        QTest::newRow(expression) << QString::fromLatin1(expression);
}

void TestDataFrameObjectMessages::refusesWhatIsNoFrame()
{
    QFETCH(QString, expression);

    const PyRef object = python.evaluate(expression);
    QVERIFY(object);
    OrbItemValue value{OrbItemId(OrbItemId::Channel)};
    value.setValue(5);
    value.setUnit(QStringLiteral("V"));
    value.setCommand(QStringLiteral("setItem"));
    QVERIFY(!orbclient::dataFrameToItemValue(value, object.get()));
    compareWithDefault(value);
}

QTEST_GUILESS_MAIN(TestDataFrameObjectMessages)

#include "tst_data_frame_object_messages.moc"
