#include "orbclient/connection_object.h"

#include "orbclient/crate_object.h"
#include "orbclient/module_object.h"
#include "tests/orbclient/item_methods_test.h"

#include <QtTest>

namespace
{

ExpectedType expectedConnection()
{
    return {QStringLiteral("connection"),
            QStringLiteral("orbService connection objects"),
            &orbclient::connectionType,
            expectedConnectionMethods(),
            {{"name", "connection name", "'hall 3'", "AttributeError"},
             {"crates", "crates managed by connection", "[0.1001, 0.1000]", "[]"},
             {"modules", "modules managed by connection", "[1.5, 0.2, 0.3]", "[]"}},
            QString(),
            QStringLiteral("hall 3"),
            QString()};
}

OrbItemId idOf(OrbItemId::Type type, quint32 line, quint32 address)
{
    OrbItemId id(type);
    id.line = line;
    id.address = address;
    return id;
}

} // namespace

class TestConnectionObject : public ItemMethodsTest
{
    Q_OBJECT

public:
    TestConnectionObject() : ItemMethodsTest(expectedConnection()) { }

private Q_SLOTS:
    void hasAsManyMethodsAsListed();
    void listsItsCratesAndModules();
    void asksForListsOfItsOwnName();
    void takesNameFromConstructor_data();
    void takesNameFromConstructor();
    void constructorRefuses_data();
    void constructorRefuses();
    void canBeNamedAgain();
    void hasEmptyListsWithoutClient();
    void followsItsName_data();
    void followsItsName();
    void textOfOddName_data();
    void textOfOddName();

private:
    PyRef makeObject(OrbClient &client) override
    {
        backend().setControllers({{connectionName(), connectionName()}});
        backend().setCrates({idOf(OrbItemId::Crate, 0, 1001), idOf(OrbItemId::Crate, 0, 1000)});
        backend().setModules(
            {idOf(OrbItemId::Module, 1, 5), idOf(OrbItemId::Module, 0, 2), idOf(OrbItemId::Module, 0, 3)});
        backend().setCrateModules({idOf(OrbItemId::Module, 0, 2)});
        return PyRef(orbclient::newConnection(&client, connectionName()));
    }
};

void TestConnectionObject::hasAsManyMethodsAsListed()
{
    QCOMPARE(expectation().methods.size(), 43);
    QCOMPARE(
        eval(QStringLiteral("len([v for v in vars(T).values() if type(v).__name__ == 'method_descriptor'])")),
        QStringLiteral("43"));
}

void TestConnectionObject::listsItsCratesAndModules()
{
    QCOMPARE(eval(QStringLiteral("[(type(c) is orbClient.crate, c.connection, c.line, c.address, c.modules) "
                                 "for c in x.crates]")),
             QStringLiteral("[(True, 'hall 3', 0, 1001, [0.2]), (True, 'hall 3', 0, 1000, [0.2])]"));
    QCOMPARE(eval(QStringLiteral(
                 "[(type(m) is orbClient.module, m.connection, m.line, m.address) for m in x.modules]")),
             QStringLiteral("[(True, 'hall 3', 1, 5), (True, 'hall 3', 0, 2), (True, 'hall 3', 0, 3)]"));
    QCOMPARE(eval(QStringLiteral("x.crates[1].setControlPower(1), x.modules[0].setControlKill(1)")),
             QStringLiteral("('ok', 'ok')"));
    QCOMPARE(writes(),
             QStringList({QStringLiteral("hall 3:0.1000.Control.power=1"),
                          QStringLiteral("hall 3:1.5.Control.kill=1")}));
}

void TestConnectionObject::asksForListsOfItsOwnName()
{
    backend().clearCalls();
    QVERIFY(makeObject(interpreter().client()));
    for (const QString &operation : {QStringLiteral("crates"), QStringLiteral("modules")}) {
        const QVector<RecordedCall> asked = backend().callsOf(operation);
        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked.first().arguments, QStringList{connectionName()});
    }
}

void TestConnectionObject::takesNameFromConstructor_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("name");
    QTest::newRow("by place") << QStringLiteral("'hall 4'") << QStringLiteral("'hall 4'");
    QTest::newRow("by keyword") << QStringLiteral("name='hall 4'") << QStringLiteral("'hall 4'");
    QTest::newRow("empty") << QStringLiteral("''") << QStringLiteral("''");
    QTest::newRow("not ASCII") << QStringLiteral("'H\\xe4lle'") << QString::fromUtf8("'H\xc3\xa4lle'");
    QTest::newRow("not at all") << QString() << QStringLiteral("AttributeError");
}

void TestConnectionObject::takesNameFromConstructor()
{
    QFETCH(QString, arguments);
    QFETCH(QString, name);
    QCOMPARE(exec(QStringLiteral("z = T(%1)").arg(arguments)), QString());
    QCOMPARE(eval(QStringLiteral("z.name")), name);
    QCOMPARE(eval(QStringLiteral("str(z) == getattr(z, 'name', '')")), QStringLiteral("True"));
    QCOMPARE(eval(QStringLiteral("z.crates, z.modules")), QStringLiteral("([], [])"));
    QVERIFY(backend().calls().isEmpty());
}

void TestConnectionObject::constructorRefuses_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("exception");
    const QString typeError = QStringLiteral("TypeError");
    QTest::newRow("a number") << QStringLiteral("5") << typeError;
    QTest::newRow("None") << QStringLiteral("None") << typeError;
    QTest::newRow("bytes") << QStringLiteral("b'hall 4'") << typeError;
    QTest::newRow("two names") << QStringLiteral("'hall 4', 'hall 5'") << typeError;
    QTest::newRow("the name twice") << QStringLiteral("'hall 4', name='hall 5'") << typeError;
    QTest::newRow("another keyword") << QStringLiteral("line=1") << typeError;
    QTest::newRow("a name with a NUL") << QStringLiteral("'hall\\0 4'") << QStringLiteral("ValueError");
    QTest::newRow("half a surrogate pair")
        << QStringLiteral("'\\ud800'") << QStringLiteral("UnicodeEncodeError");
}

void TestConnectionObject::constructorRefuses()
{
    QFETCH(QString, arguments);
    QFETCH(QString, exception);
    QCOMPARE(eval(QStringLiteral("T(%1)").arg(arguments)), exception);
    // An object that has a name already keeps it.
    QCOMPARE(eval(QStringLiteral("x.__init__(%1)").arg(arguments)), exception);
    QCOMPARE(eval(QStringLiteral("x.name")), QStringLiteral("'hall 3'"));
}

void TestConnectionObject::canBeNamedAgain()
{
    QCOMPARE(eval(QStringLiteral("x.__init__('hall 4')")), QStringLiteral("None"));
    QCOMPARE(eval(QStringLiteral("x.name, x.crates, x.modules")),
             QStringLiteral("('hall 4', [0.1001, 0.1000], [1.5, 0.2, 0.3])"));
    QCOMPARE(eval(QStringLiteral("x.__init__()")), QStringLiteral("None"));
    QCOMPARE(eval(QStringLiteral("x.name")), QStringLiteral("'hall 4'"));
    // It is still the same client's.
    QCOMPARE(eval(QStringLiteral("x.setControlWifi(1)")), QStringLiteral("'ok'"));
    QCOMPARE(writes(), QStringList{QStringLiteral("hall 4:Control.wifi=1")});
}

void TestConnectionObject::hasEmptyListsWithoutClient()
{
    const PyRef made(orbclient::newConnection(nullptr, connectionName()));
    interpreter().bind(QStringLiteral("z"), made.get());
    QCOMPARE(eval(QStringLiteral("z.name, z.crates, z.modules")), QStringLiteral("('hall 3', [], [])"));
    QVERIFY(backend().calls().isEmpty());
}

void TestConnectionObject::followsItsName_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("place");
    QTest::newRow("another") << QStringLiteral("x.name = 'hall 4'")
                             << QStringLiteral("hall 4:Control.reboot");
    QTest::newRow("a number") << QStringLiteral("x.name = 12") << QStringLiteral("12:Control.reboot");
    QTest::newRow("None") << QStringLiteral("x.name = None") << QStringLiteral(":Control.reboot");
    QTest::newRow("unset") << QStringLiteral("del x.name") << QStringLiteral(":Control.reboot");
    QTest::newRow("other lists") << QStringLiteral("x.crates = 5; del x.modules")
                                 << QStringLiteral("hall 3:Control.reboot");
}

void TestConnectionObject::followsItsName()
{
    QFETCH(QString, change);
    QFETCH(QString, place);
    QCOMPARE(exec(change), QString());
    QCOMPARE(eval(QStringLiteral("x.setControlReboot('now')")), QStringLiteral("'ok'"));
    QCOMPARE(writes(), QStringList{place + QStringLiteral("=now")});
}

void TestConnectionObject::textOfOddName_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("text");
    QTest::newRow("a number") << QStringLiteral("x.name = 12") << QStringLiteral("'12'");
    QTest::newRow("unset") << QStringLiteral("del x.name") << QStringLiteral("''");
    QTest::newRow("not ASCII") << QStringLiteral("x.name = 'H\\xe4lle'")
                               << QString::fromUtf8("'H\xc3\xa4lle'");
}

void TestConnectionObject::textOfOddName()
{
    QFETCH(QString, change);
    QFETCH(QString, text);
    QCOMPARE(exec(change), QString());
    QCOMPARE(eval(QStringLiteral("str(x)")), text);
    QCOMPARE(eval(QStringLiteral("str(x) == repr(x)")), QStringLiteral("True"));
}

QTEST_GUILESS_MAIN(TestConnectionObject)
#include "tst_connection_object.moc"
