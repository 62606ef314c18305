#include "orbclient/module_object.h"

#include "orbclient/channel_object.h"
#include "tests/orbclient/item_methods_test.h"

#include <QtTest>

namespace
{

constexpr const char *ChannelCountItem = "Status.numberOfChannels";

ExpectedType expectedModule()
{
    return {QStringLiteral("module"),
            QStringLiteral("orbService module objects"),
            &orbclient::moduleType,
            expectedModuleMethods(),
            {{"connection", "connection name", "'hall 3'", "AttributeError"},
             {"line", "line index", "1", "AttributeError"},
             {"address", "module address", "12", "AttributeError"},
             {"channels", "module channels", "[1.12.0, 1.12.1, 1.12.2]", "[]"}},
            QStringLiteral("1.12."),
            QStringLiteral("1.12"),
            QStringLiteral(".")};
}

/// A backend that keeps whole identifiers, not only the paths that they stand for.
class IdentifierBackend : public RecordingBackend
{
public:
    TarnResult readItem(const OrbItemId &id, OrbItemReading &reading) override
    {
        ids.append(id);
        return RecordingBackend::readItem(id, reading);
    }

    QVector<OrbItemId> ids;
};

} // namespace

class TestModuleObject : public ItemMethodsTest
{
    Q_OBJECT

public:
    TestModuleObject() : ItemMethodsTest(expectedModule()) { }

private Q_SLOTS:
    void hasAsManyMethodsAsListed();
    void asksForItsChannelsAsItem();
    void hasAsManyChannelsAsItSays_data();
    void hasAsManyChannelsAsItSays();
    void hasNoChannelsWhenCountCannotBeRead();
    void hasNoChannelsWithoutClient();
    void makesChannelsThatWork();
    void keepsItsChannels();
    void channelsOutliveIt();
    void ignoresConstructorArguments();
    void followsItsMembers_data();
    void followsItsMembers();

private:
    PyRef makeObject(OrbClient &client) override
    {
        setChannelCount(QStringLiteral("3"), QStringLiteral("int"));
        return PyRef(orbclient::newModule(&client, connectionName(), 1, 12));
    }

    void setChannelCount(const QString &text, const QString &type)
    {
        backend().setItem(connectionName(), QStringLiteral("1.12.") + QLatin1String(ChannelCountItem),
                          {text, QString(), type, 0});
    }
};

void TestModuleObject::hasAsManyMethodsAsListed()
{
    QCOMPARE(expectation().methods.size(), 46);
    QCOMPARE(
        eval(QStringLiteral("len([v for v in vars(T).values() if type(v).__name__ == 'method_descriptor'])")),
        QStringLiteral("46"));
}

void TestModuleObject::asksForItsChannelsAsItem()
{
    IdentifierBackend identifiers;
    identifiers.setControllers({{connectionName(), connectionName()}});
    OrbClient client(identifiers);
    interpreter().setClient(&client);
    const PyRef made(orbclient::newModule(&client, connectionName(), 2, 5));
    interpreter().setClient(&interpreter().client());
    QVERIFY(made);

    QCOMPARE(identifiers.ids.size(), 1);
    const OrbItemId &id = identifiers.ids.first();
    QCOMPARE(int(id.type), 5);
    QCOMPARE(id.channel, -1);
    QCOMPARE(id.line, 2U);
    QCOMPARE(id.address, 5U);
    QCOMPARE(id.connectionName, connectionName());
    QCOMPARE(id.itemName, QString::fromLatin1(ChannelCountItem));
}

void TestModuleObject::hasAsManyChannelsAsItSays_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("channels");
    const QString none = QStringLiteral("[]");
    QTest::newRow("one") << QStringLiteral("1") << QStringLiteral("int") << QStringLiteral("[1.12.0]");
    QTest::newRow("four") << QStringLiteral("4") << QStringLiteral("int")
                          << QStringLiteral("[1.12.0, 1.12.1, 1.12.2, 1.12.3]");
    QTest::newRow("two as a text") << QStringLiteral("2") << QStringLiteral("string")
                                   << QStringLiteral("[1.12.0, 1.12.1]");
    QTest::newRow("none") << QStringLiteral("0") << QStringLiteral("int") << none;
    QTest::newRow("no number") << QStringLiteral("abc") << QStringLiteral("string") << none;
    QTest::newRow("nothing") << QString() << QStringLiteral("string") << none;
    QTest::newRow("negative") << QStringLiteral("-1") << QStringLiteral("int") << none;
    QTest::newRow("negative fraction") << QStringLiteral("-1.5") << QStringLiteral("float") << none;
    QTest::newRow("beyond 32 bits") << QStringLiteral("4294967298") << QStringLiteral("int") << none;
    QTest::newRow("negative text") << QStringLiteral("-1") << QStringLiteral("string") << none;
}

void TestModuleObject::hasAsManyChannelsAsItSays()
{
    QFETCH(QString, text);
    QFETCH(QString, type);
    QFETCH(QString, channels);
    setChannelCount(text, type);
    const PyRef made(orbclient::newModule(&interpreter().client(), connectionName(), 1, 12));
    interpreter().bind(QStringLiteral("z"), made.get());
    QCOMPARE(eval(QStringLiteral("z.channels")), channels);
    QCOMPARE(eval(QStringLiteral("(z.connection, z.line, z.address)")), QStringLiteral("('hall 3', 1, 12)"));
    // Nothing but the number of channels is read.
    QCOMPARE(reads(), QStringList{placeOf(ChannelCountItem)});
    QVERIFY(PyErr_Occurred() == nullptr);
}

void TestModuleObject::hasNoChannelsWhenCountCannotBeRead()
{
    const PyRef made(orbclient::newModule(&interpreter().client(), connectionName(), 9, 99));
    interpreter().bind(QStringLiteral("z"), made.get());
    QCOMPARE(eval(QStringLiteral("z.channels")), QStringLiteral("[]"));
    QCOMPARE(reads(), QStringList{QStringLiteral("hall 3:9.99.Status.numberOfChannels")});
    QVERIFY(PyErr_Occurred() == nullptr);
}

void TestModuleObject::hasNoChannelsWithoutClient()
{
    const PyRef made(orbclient::newModule(nullptr, connectionName(), 1, 12));
    interpreter().bind(QStringLiteral("z"), made.get());
    QCOMPARE(eval(QStringLiteral("(z.connection, z.line, z.address, z.channels)")),
             QStringLiteral("('hall 3', 1, 12, [])"));
    QCOMPARE(eval(QStringLiteral("z.setControlKill(1)")), QStringLiteral("'error'"));
    QVERIFY(backend().calls().isEmpty());
}

void TestModuleObject::makesChannelsThatWork()
{
    QCOMPARE(eval(QStringLiteral("[type(c) is orbClient.channel for c in x.channels]")),
             QStringLiteral("[True, True, True]"));
    QCOMPARE(eval(QStringLiteral("[(c.connection, c.line, c.module, c.index) for c in x.channels]")),
             QStringLiteral("[('hall 3', 1, 12, 0), ('hall 3', 1, 12, 1), ('hall 3', 1, 12, 2)]"));
    QCOMPARE(eval(QStringLiteral("[c.setControlOn(1) for c in x.channels]")),
             QStringLiteral("['ok', 'ok', 'ok']"));
    QCOMPARE(writes(),
             QStringList({QStringLiteral("hall 3:1.12.0.Control.on=1"),
                          QStringLiteral("hall 3:1.12.1.Control.on=1"),
                          QStringLiteral("hall 3:1.12.2.Control.on=1")}));
}

void TestModuleObject::keepsItsChannels()
{
    setChannelCount(QStringLiteral("1"), QStringLiteral("int"));
    QCOMPARE(exec(QStringLiteral("first = x.channels")), QString());
    QCOMPARE(eval(QStringLiteral("x.channels is first")), QStringLiteral("True"));
    QCOMPARE(eval(QStringLiteral("len(x.channels)")), QStringLiteral("3"));
    QVERIFY(backend().calls().isEmpty());
}

void TestModuleObject::channelsOutliveIt()
{
    interpreter().bind(QStringLiteral("z"), makeObject(interpreter().client()).get());
    QCOMPARE(exec(QStringLiteral("import sys\n"
                                 "channel = z.channels[1]\n"
                                 "before = sys.getrefcount(channel)\n"
                                 "del z")),
             QString());
    QCOMPARE(eval(QStringLiteral("sys.getrefcount(channel) - before")), QStringLiteral("0"));
    QCOMPARE(eval(QStringLiteral("channel.setControlOn(0)")), QStringLiteral("'ok'"));
    QCOMPARE(writes(), QStringList{QStringLiteral("hall 3:1.12.1.Control.on=0")});
}

void TestModuleObject::ignoresConstructorArguments()
{
    for (const QString &arguments : {QStringLiteral("1, 2, 3, 4, 5"), QStringLiteral("'hall 3', line=1"),
                                     QStringLiteral("channels=[1]")}) {
        QCOMPARE(exec(QStringLiteral("z = T(%1)").arg(arguments)), QString());
        QCOMPARE(
            eval(QStringLiteral("[hasattr(z, n) for n in ('connection', 'line', 'address')], z.channels")),
            QStringLiteral("([False, False, False], [])"));
        QCOMPARE(eval(QStringLiteral("z.setControlKill(1)")), QStringLiteral("'error'"));
    }
    QVERIFY(backend().calls().isEmpty());
}

void TestModuleObject::followsItsMembers_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("place");
    QTest::newRow("other numbers") << QStringLiteral("x.line, x.address = 0, 3")
                                   << QStringLiteral("hall 3:0.3.Control.kill");
    QTest::newRow("other connection")
        << QStringLiteral("x.connection = 'hall 4'") << QStringLiteral("hall 4:1.12.Control.kill");
    QTest::newRow("a text that is no number")
        << QStringLiteral("x.line = 'x'") << QStringLiteral("hall 3:x.12.Control.kill");
    QTest::newRow("line unset") << QStringLiteral("del x.line") << QStringLiteral("hall 3:.12.Control.kill");
    QTest::newRow("other channels") << QStringLiteral("x.channels = 5")
                                    << QStringLiteral("hall 3:1.12.Control.kill");
    QTest::newRow("connection unset")
        << QStringLiteral("del x.connection") << QStringLiteral(":1.12.Control.kill");
}

void TestModuleObject::followsItsMembers()
{
    QFETCH(QString, change);
    QFETCH(QString, place);
    QCOMPARE(exec(change), QString());
    eval(QStringLiteral("x.getControlKill()"));
    QCOMPARE(eval(QStringLiteral("x.setControlKill(True)")), QStringLiteral("'ok'"));
    QCOMPARE(reads(), QStringList{place});
    QCOMPARE(writes(), QStringList{place + QStringLiteral("=1")});
}

QTEST_GUILESS_MAIN(TestModuleObject)
#include "tst_module_object.moc"
