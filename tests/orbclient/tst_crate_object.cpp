#include "orbclient/crate_object.h"

#include "orbclient/module_object.h"
#include "tests/orbclient/item_methods_test.h"

#include <QtTest>

namespace
{

ExpectedType expectedCrate()
{
    return {QStringLiteral("crate"),
            QStringLiteral("orbService crate objects"),
            &orbclient::crateType,
            expectedCrateMethods(),
            {{"connection", "connection name", "'hall 3'", "AttributeError"},
             {"line", "line index", "0", "AttributeError"},
             {"address", "crate address", "1003", "AttributeError"},
             {"modules", "modules managed by crate", "[0.4, 0.2]", "[]"}},
            QStringLiteral("0.1003."),
            QStringLiteral("0.1003"),
            QStringLiteral(".")};
}

OrbItemId moduleAt(quint32 line, quint32 address)
{
    OrbItemId id(OrbItemId::Module);
    id.line = line;
    id.address = address;
    return id;
}

/// A backend that keeps whole identifiers, not only what their texts show.
class IdentifierBackend : public RecordingBackend
{
public:
    bool crateModules(const OrbItemId &crate, QVector<OrbItemId> &found) const override
    {
        asked.append(crate);
        return RecordingBackend::crateModules(crate, found);
    }

    mutable QVector<OrbItemId> asked;
};

} // namespace

class TestCrateObject : public ItemMethodsTest
{
    Q_OBJECT

public:
    TestCrateObject() : ItemMethodsTest(expectedCrate()) { }

private Q_SLOTS:
    void hasAsManyMethodsAsListed();
    void hasNoMethodThatListsModules();
    void asksForItsModulesByItsAddress();
    void makesModulesThatWork();
    void hasNoModulesWhenThereIsNone();
    void hasNoModulesWhenConnectionIsUnknown();
    void hasNoModulesWithoutClient();
    void ignoresConstructorArguments();
    void followsItsMembers_data();
    void followsItsMembers();

private:
    PyRef makeObject(OrbClient &client) override
    {
        backend().setControllers({{connectionName(), connectionName()}});
        backend().setCrateModules({moduleAt(0, 4), moduleAt(0, 2)});
        return PyRef(orbclient::newCrate(&client, connectionName(), 0, 1003));
    }
};

void TestCrateObject::hasAsManyMethodsAsListed()
{
    QCOMPARE(expectation().methods.size(), 28);
    QCOMPARE(
        eval(QStringLiteral("len([v for v in vars(T).values() if type(v).__name__ == 'method_descriptor'])")),
        QStringLiteral("28"));
}

void TestCrateObject::hasNoMethodThatListsModules()
{
    QCOMPARE(eval(QStringLiteral("x.getModules")), QStringLiteral("AttributeError"));
}

void TestCrateObject::asksForItsModulesByItsAddress()
{
    IdentifierBackend identifiers;
    identifiers.setControllers({{connectionName(), connectionName()}});
    identifiers.setCrateModules({moduleAt(0, 4), moduleAt(0, 2)});
    OrbClient client(identifiers);
    interpreter().setClient(&client);
    const PyRef made(orbclient::newCrate(&client, connectionName(), 2, 1007));
    interpreter().setClient(&interpreter().client());
    QVERIFY(made);

    QCOMPARE(identifiers.asked.size(), 1);
    const OrbItemId &id = identifiers.asked.first();
    QCOMPARE(int(id.type), 4);
    QCOMPARE(id.line, 2U);
    QCOMPARE(id.address, 1007U);
    QCOMPARE(id.connectionName, connectionName());
    QVERIFY(identifiers.callsOf(QStringLiteral("modules")).isEmpty());
    QCOMPARE(identifiers.callsOf(QStringLiteral("readItem")).size(), 2);
}

void TestCrateObject::makesModulesThatWork()
{
    QCOMPARE(eval(QStringLiteral(
                 "[(type(m) is orbClient.module, m.connection, m.line, m.address) for m in x.modules]")),
             QStringLiteral("[(True, 'hall 3', 0, 4), (True, 'hall 3', 0, 2)]"));
    QCOMPARE(eval(QStringLiteral("[m.setControlKill(1) for m in x.modules]")),
             QStringLiteral("['ok', 'ok']"));
    QCOMPARE(writes(),
             QStringList(
                 {QStringLiteral("hall 3:0.4.Control.kill=1"), QStringLiteral("hall 3:0.2.Control.kill=1")}));
}

void TestCrateObject::hasNoModulesWhenThereIsNone()
{
    backend().setCrateModules({});
    const PyRef made(orbclient::newCrate(&interpreter().client(), connectionName(), 0, 1003));
    interpreter().bind(QStringLiteral("z"), made.get());
    QCOMPARE(eval(QStringLiteral("z.modules")), QStringLiteral("[]"));
}

void TestCrateObject::hasNoModulesWhenConnectionIsUnknown()
{
    backend().setCrateModules({});
    const PyRef made(orbclient::newCrate(&interpreter().client(), QStringLiteral("nowhere"), 0, 1003));
    interpreter().bind(QStringLiteral("z"), made.get());
    QCOMPARE(eval(QStringLiteral("(z.connection, z.line, z.address, z.modules)")),
             QStringLiteral("('nowhere', 0, 1003, [])"));
    QVERIFY(PyErr_Occurred() == nullptr);
}

void TestCrateObject::hasNoModulesWithoutClient()
{
    const PyRef made(orbclient::newCrate(nullptr, connectionName(), 0, 1003));
    interpreter().bind(QStringLiteral("z"), made.get());
    QCOMPARE(eval(QStringLiteral("(z.connection, z.line, z.address, z.modules)")),
             QStringLiteral("('hall 3', 0, 1003, [])"));
    QCOMPARE(eval(QStringLiteral("z.setControlPower(1)")), QStringLiteral("'error'"));
    QVERIFY(backend().calls().isEmpty());
}

void TestCrateObject::ignoresConstructorArguments()
{
    for (const QString &arguments : {QStringLiteral("1, 2, 3, 4, 5"), QStringLiteral("'hall 3', line=1"),
                                     QStringLiteral("modules=[1]")}) {
        QCOMPARE(exec(QStringLiteral("z = T(%1)").arg(arguments)), QString());
        QCOMPARE(
            eval(QStringLiteral("[hasattr(z, n) for n in ('connection', 'line', 'address')], z.modules")),
            QStringLiteral("([False, False, False], [])"));
        QCOMPARE(eval(QStringLiteral("z.setControlPower(1)")), QStringLiteral("'error'"));
    }
    QVERIFY(backend().calls().isEmpty());
}

void TestCrateObject::followsItsMembers_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("place");
    // A crate's own numbers are sent as they stand, whether or not they are a crate's.
    QTest::newRow("other numbers") << QStringLiteral("x.line, x.address = 1, 3")
                                   << QStringLiteral("hall 3:1.3.Control.power");
    QTest::newRow("other connection")
        << QStringLiteral("x.connection = 'hall 4'") << QStringLiteral("hall 4:0.1003.Control.power");
    QTest::newRow("address unset") << QStringLiteral("del x.line, x.address")
                                   << QStringLiteral("hall 3:..Control.power");
    QTest::newRow("connection unset")
        << QStringLiteral("del x.connection") << QStringLiteral(":0.1003.Control.power");
}

void TestCrateObject::followsItsMembers()
{
    QFETCH(QString, change);
    QFETCH(QString, place);
    QCOMPARE(exec(change), QString());
    eval(QStringLiteral("x.getControlPower()"));
    QCOMPARE(eval(QStringLiteral("x.setControlPower(False)")), QStringLiteral("'ok'"));
    QCOMPARE(reads(), QStringList{place});
    QCOMPARE(writes(), QStringList{place + QStringLiteral("=0")});
}

QTEST_GUILESS_MAIN(TestCrateObject)
#include "tst_crate_object.moc"
