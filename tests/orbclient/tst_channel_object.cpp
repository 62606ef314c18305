#include "orbclient/channel_object.h"

#include "tests/orbclient/item_methods_test.h"

#include <QtTest>

namespace
{

ExpectedType expectedChannel()
{
    return {QStringLiteral("channel"),
            QStringLiteral("orbService channel objects"),
            &orbclient::channelType,
            expectedChannelMethods(),
            {{"connection", "connection name", "'hall 3'", "AttributeError"},
             {"line", "line index", "0", "AttributeError"},
             {"module", "module address", "3", "AttributeError"},
             {"index", "channel index", "7", "AttributeError"}},
            QStringLiteral("0.3.7."),
            QStringLiteral("0.3.7"),
            QStringLiteral("..")};
}

} // namespace

class TestChannelObject : public ItemMethodsTest
{
    Q_OBJECT

public:
    TestChannelObject() : ItemMethodsTest(expectedChannel()) { }

private Q_SLOTS:
    void hasAsManyMethodsAsListed();
    void factoryReadsNothing();
    void factoryTakesUnsignedNumbers();
    void ignoresConstructorArguments();
    void followsItsMembers_data();
    void followsItsMembers();
    void textFollowsItsMembers();
    void givesTimestampAndValueAsNewList();
    void readsTripItems_data();
    void readsTripItems();

private:
    PyRef makeObject(OrbClient &client) override
    {
        return PyRef(orbclient::newChannel(&client, connectionName(), 0, 3, 7));
    }
};

void TestChannelObject::hasAsManyMethodsAsListed()
{
    QCOMPARE(expectation().methods.size(), 121);
    QCOMPARE(
        eval(QStringLiteral("len([v for v in vars(T).values() if type(v).__name__ == 'method_descriptor'])")),
        QStringLiteral("121"));
}

void TestChannelObject::factoryReadsNothing()
{
    backend().clearCalls();
    QVERIFY(makeObject(interpreter().client()));
    QVERIFY(backend().calls().isEmpty());
}

void TestChannelObject::factoryTakesUnsignedNumbers()
{
    const PyRef made(orbclient::newChannel(nullptr, connectionName(), 4294967295U, 2147483648U, 4294967294U));
    interpreter().bind(QStringLiteral("z"), made.get());
    QCOMPARE(eval(QStringLiteral("(z.line, z.module, z.index)")),
             QStringLiteral("(4294967295, 2147483648, 4294967294)"));
    QCOMPARE(eval(QStringLiteral("z.setControlOn(1)")), QStringLiteral("'error'"));
}

void TestChannelObject::ignoresConstructorArguments()
{
    for (const QString &arguments : {QStringLiteral("1, 2, 3, 4, 5"), QStringLiteral("'hall 3', line=1"),
                                     QStringLiteral("index=object()")}) {
        QCOMPARE(exec(QStringLiteral("z = T(%1)").arg(arguments)), QString());
        QCOMPARE(eval(QStringLiteral("[hasattr(z, n) for n in ('connection', 'line', 'module', 'index')]")),
                 QStringLiteral("[False, False, False, False]"));
        QCOMPARE(eval(QStringLiteral("z.setControlOn(1)")), QStringLiteral("'error'"));
    }
    QVERIFY(backend().calls().isEmpty());
}

void TestChannelObject::followsItsMembers_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("place");
    QTest::newRow("other numbers") << QStringLiteral("x.line, x.module, x.index = 1, 12, 30")
                                   << QStringLiteral("hall 3:1.12.30.Control.on");
    QTest::newRow("other connection")
        << QStringLiteral("x.connection = 'hall 4'") << QStringLiteral("hall 4:0.3.7.Control.on");
    QTest::newRow("numbers as texts")
        << QStringLiteral("x.line, x.index = '2', '9'") << QStringLiteral("hall 3:2.3.9.Control.on");
    QTest::newRow("True for a number")
        << QStringLiteral("x.line = True") << QStringLiteral("hall 3:1.3.7.Control.on");
    QTest::newRow("a text that is no number")
        << QStringLiteral("x.line = 'x'") << QStringLiteral("hall 3:x.3.7.Control.on");
    QTest::newRow("line unset") << QStringLiteral("del x.line") << QStringLiteral("hall 3:.3.7.Control.on");
    QTest::newRow("line None") << QStringLiteral("x.line = None") << QStringLiteral("hall 3:.3.7.Control.on");
    QTest::newRow("line itself") << QStringLiteral("x.line = x") << QStringLiteral("hall 3:.3.7.Control.on");
    QTest::newRow("connection unset")
        << QStringLiteral("del x.connection") << QStringLiteral(":0.3.7.Control.on");
    QTest::newRow("connection a number")
        << QStringLiteral("x.connection = 5") << QStringLiteral("5:0.3.7.Control.on");
}

void TestChannelObject::followsItsMembers()
{
    QFETCH(QString, change);
    QFETCH(QString, place);
    QCOMPARE(exec(change), QString());
    QCOMPARE(eval(QStringLiteral("x.getControlOn()")), QStringLiteral("'error'"));
    QCOMPARE(eval(QStringLiteral("x.setControlOn(1)")), QStringLiteral("'ok'"));
    QCOMPARE(reads(), QStringList{place});
    QCOMPARE(writes(), QStringList{place + QStringLiteral("=1")});
}

void TestChannelObject::textFollowsItsMembers()
{
    QCOMPARE(exec(QStringLiteral("x.line, x.module, x.index = 1, 12, 'a'")), QString());
    QCOMPARE(eval(QStringLiteral("str(x), repr(x)")), QStringLiteral("('1.12.a', '1.12.a')"));
}

void TestChannelObject::givesTimestampAndValueAsNewList()
{
    backend().setItem(
        connectionName(), QStringLiteral("0.3.7.Status.voltageMeasure"),
        {QStringLiteral("1500.25"), QStringLiteral("V"), QStringLiteral("float"), 1605888000.125});
    const QString call = QStringLiteral("x.getStatusVoltageMeasureWithTimestamp()");
    QCOMPARE(eval(call), QStringLiteral("[1605888000.125, 1500.25]"));
    QCOMPARE(eval(QStringLiteral("[type(v).__name__ for v in [%1, *%1]]").arg(call)),
             QStringLiteral("['list', 'float', 'float']"));
    QCOMPARE(eval(QStringLiteral("%1 is %1").arg(call)), QStringLiteral("False"));

    backend().setItem(connectionName(), QStringLiteral("0.3.7.Status.voltageMeasure"),
                      {QStringLiteral("1500.25"), QStringLiteral("V"), QStringLiteral("float"), qQNaN()});
    QCOMPARE(eval(call), QStringLiteral("[nan, 1500.25]"));
}

void TestChannelObject::readsTripItems_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("path");
    QTest::newRow("status") << QStringLiteral("getStatusTrip") << QStringLiteral("0.3.7.Status.currentTrip");
    QTest::newRow("event") << QStringLiteral("getEventTrip") << QStringLiteral("0.3.7.Event.currentTrip");
    QTest::newRow("error") << QStringLiteral("getErrorTrip") << QStringLiteral("0.3.7.Error.currentTrip");
}

void TestChannelObject::readsTripItems()
{
    QFETCH(QString, method);
    QFETCH(QString, path);
    backend().setItem(connectionName(), path, {QStringLiteral("true"), QString(), QStringLiteral("bool"), 0});
    QCOMPARE(eval(QStringLiteral("x.%1()").arg(method)), QStringLiteral("True"));
    QCOMPARE(reads(), QStringList{connectionName() + QLatin1Char(':') + path});
}

QTEST_GUILESS_MAIN(TestChannelObject)
#include "tst_channel_object.moc"
