#include "command_terminal/terminal_command_generation.h"
#include "tests/command_terminal/command_form_bench.h"

#include <QtTest>

#include <memory>

/// What the form shows of an address that it is given.
class TestTerminalCommandGenerationAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { bench = std::make_unique<CommandFormBench>(); }
    void cleanup() { bench.reset(); }

    void numbersByLevel_data();
    void numbersByLevel();
    void captionAndItemsByLevel_data();
    void captionAndItemsByLevel();
    void numbersOfTheIdentifierBefore();
    void theControllerOfTheIdentifierIsSelected_data();
    void theControllerOfTheIdentifierIsSelected();
    void theLastEventNamesTheConnection();
    void systemItemsAreReadForTheConnectionOfTheIdentifier_data();
    void systemItemsAreReadForTheConnectionOfTheIdentifier();
    void anIdentifierWithoutControllers();
    void anIdentifierOfAVanishedConnection();
    void anIdentifierWithoutAPlace();

private:
    std::unique_ptr<CommandFormBench> bench;
};

void TestTerminalCommandGenerationAddress::numbersByLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("channel");
    const QString line = QStringLiteral("4294967295");
    const QString address = QStringLiteral("4294967294");
    const QString channel = QStringLiteral("7");
    QTest::newRow("undefined") << 0 << QString() << QString() << QString();
    QTest::newRow("item") << 1 << QString() << QString() << QString();
    QTest::newRow("system") << 2 << QString() << QString() << QString();
    QTest::newRow("line") << 3 << line << QString() << QString();
    QTest::newRow("crate") << 4 << line << address << QString();
    QTest::newRow("module") << 5 << line << address << QString();
    QTest::newRow("channel") << 6 << line << address << channel;
    QTest::newRow("beyond") << 7 << QString() << QString() << QString();
}

void TestTerminalCommandGenerationAddress::numbersByLevel()
{
    QFETCH(int, level);
    OrbItemId id(static_cast<OrbItemId::Type>(level));
    id.line = 4294967295U;
    id.address = 4294967294U;
    id.channel = 7;
    bench->form->setItemId(id);
    QTEST(bench->text("lineEdit"), "line");
    QTEST(bench->text("addressEdit"), "address");
    QTEST(bench->text("channelEdit"), "channel");
}

void TestTerminalCommandGenerationAddress::captionAndItemsByLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("item");
    QTest::newRow("item") << 1 << QStringLiteral("Item") << QStringLiteral("of 1");
    QTest::newRow("system") << 2 << QStringLiteral("System Item") << QStringLiteral("of 2");
    QTest::newRow("line, which offers the system")
        << 3 << QStringLiteral("System Item") << QStringLiteral("of 2");
    QTest::newRow("crate") << 4 << QStringLiteral("Crate Item") << QStringLiteral("of 4");
    QTest::newRow("module") << 5 << QStringLiteral("Module Item") << QStringLiteral("of 5");
    QTest::newRow("channel") << 6 << QStringLiteral("Channel Item") << QStringLiteral("of 6");
    QTest::newRow("beyond") << 7 << QStringLiteral("Item") << QStringLiteral("of 7");
}

void TestTerminalCommandGenerationAddress::captionAndItemsByLevel()
{
    QFETCH(int, level);
    for (int i = 1; i <= 7; ++i)
        bench->backend.setItemNames(static_cast<OrbItemId::Type>(i), {QStringLiteral("of %1").arg(i)});
    bench->form->setItemId(OrbItemId(static_cast<OrbItemId::Type>(level)));
    QTEST(bench->caption(), "caption");
    const auto *items = bench->items();
    QCOMPARE(items->count(), 1);
    QTEST(items->currentText(), "item");
}

void TestTerminalCommandGenerationAddress::numbersOfTheIdentifierBefore()
{
    OrbItemId channel(OrbItemId::Channel);
    channel.channel = 3;
    bench->form->setItemId(channel);
    QCOMPARE(bench->text("lineEdit"), QStringLiteral("0"));
    QCOMPARE(bench->text("addressEdit"), QStringLiteral("0"));
    QCOMPARE(bench->text("channelEdit"), QStringLiteral("3"));
    bench->form->setItemId(OrbItemId(OrbItemId::Line));
    QCOMPARE(bench->text("lineEdit"), QStringLiteral("0"));
    QCOMPARE(bench->text("addressEdit"), QString());
    QCOMPARE(bench->text("channelEdit"), QString());
    bench->form->setItemId(OrbItemId(OrbItemId::System));
    QCOMPARE(bench->text("lineEdit"), QString());
}

void TestTerminalCommandGenerationAddress::theControllerOfTheIdentifierIsSelected_data()
{
    QTest::addColumn<QString>("read");
    QTest::addColumn<QString>("selected");
    QTest::newRow("first") << QStringLiteral("North") << QStringLiteral("North");
    QTest::newRow("last") << QStringLiteral("South") << QStringLiteral("South");
    QTest::newRow("empty") << QString() << QStringLiteral("North");
    QTest::newRow("not listed") << QStringLiteral("West") << QStringLiteral("North");
    QTest::newRow("other case") << QStringLiteral("south") << QStringLiteral("North");
    QTest::newRow("beginning of one") << QStringLiteral("Sou") << QStringLiteral("North");
    QTest::newRow("a connection name") << QStringLiteral("c2") << QStringLiteral("North");
}

void TestTerminalCommandGenerationAddress::theControllerOfTheIdentifierIsSelected()
{
    QFETCH(QString, read);
    bench->changeStructure();
    bench->controllers()->setCurrentIndex(1); // what was selected before does not count
    bench->backend.setItem(QStringLiteral("c1"), QStringLiteral("Status.controllerName"),
                           {read, {}, QStringLiteral("string"), 0});
    OrbItemId id(OrbItemId::Module);
    id.connection = 1;
    bench->form->setItemId(id);
    QTEST(bench->controllers()->currentText(), "selected");
    QCOMPARE(bench->controllers()->count(), 3);
}

void TestTerminalCommandGenerationAddress::theLastEventNamesTheConnection()
{
    bench->setReading("c1", "Status.controllerName", QStringLiteral("South"));
    bench->setReading("c1", "Status.connectionName", QStringLiteral("as read"));
    OrbItemId id(OrbItemId::Channel);
    id.connection = 1;
    bench->form->setItemId(id);
    QCOMPARE(bench->observer.types().back(), quint32{259});
    QCOMPARE(bench->lastChosen(), (QStringList{QStringLiteral("c2"), QStringLiteral("as read")}));
}

void TestTerminalCommandGenerationAddress::systemItemsAreReadForTheConnectionOfTheIdentifier_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("by index") << 2 << QString() << QStringLiteral("South");
    QTest::newRow("by name") << -1 << QStringLiteral("c1") << QStringLiteral("East");
    QTest::newRow("by neither") << -1 << QString() << QStringLiteral("North");
}

void TestTerminalCommandGenerationAddress::systemItemsAreReadForTheConnectionOfTheIdentifier()
{
    QFETCH(int, index);
    QFETCH(QString, name);
    const auto listed = CommandFormBench::threeControllers();
    for (const auto &[connection, display] : listed)
        bench->backend.setItem(connection, QStringLiteral("Status.controllerName"), {display, {}, {}, 0});
    OrbItemId id(OrbItemId::Channel);
    id.connection = index;
    id.connectionName = name;
    id.line = 1;
    id.address = 2;
    id.channel = 3;
    bench->form->setItemId(id);
    QTEST(bench->controllers()->currentText(), "expected");
    // Of the system, not of the channel.
    const QVector<RecordedCall> reads = bench->backend.callsOf(QStringLiteral("readItem"));
    QCOMPARE(reads.size(), 2);
    QCOMPARE(reads.at(0).arguments.constFirst(), name + QStringLiteral(":Status.controllerName"));
    QCOMPARE(reads.at(1).arguments.constFirst(), name + QStringLiteral(":Status.connectionName"));
}

void TestTerminalCommandGenerationAddress::anIdentifierWithoutControllers()
{
    bench->changeStructure();
    bench->backend.setControllers({});
    bench->observer.clear();
    bench->form->setItemId(OrbItemId(OrbItemId::System));
    QCOMPARE(bench->listed(), QStringList{QStringLiteral("No connection")});
    QVERIFY(!bench->controllers()->currentData().isValid());
    QCOMPARE(bench->chosen().constLast(), QString());
}

void TestTerminalCommandGenerationAddress::anIdentifierOfAVanishedConnection()
{
    OrbItemId id(OrbItemId::Channel);
    id.connection = 99;
    id.channel = 1;
    bench->form->setItemId(id);
    QCOMPARE(bench->controllers()->currentText(), QStringLiteral("North"));
    QCOMPARE(bench->text("channelEdit"), QStringLiteral("1"));
    QCOMPARE(bench->chosen().constLast(), QString());
}

void TestTerminalCommandGenerationAddress::anIdentifierWithoutAPlace()
{
    bench->form->setItemId(OrbItemId());
    QCOMPARE(bench->calls("itemNames"), 0); // as the form's own, at the beginning
    QCOMPARE(bench->text("lineEdit"), QString());
    QCOMPARE(bench->chosen().constLast(), QString());
}

QTEST_MAIN(TestTerminalCommandGenerationAddress)
#include "tst_terminal_command_generation_address.moc"
