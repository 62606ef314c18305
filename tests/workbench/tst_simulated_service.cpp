#include "workbench/simulator/simulated_service.h"

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "tests/workbench/expected_items.h"
#include "tests/workbench/service_fixture.h"

#include <QtTest>

using namespace simulator;

Q_DECLARE_METATYPE(OrbItemId::Type)
Q_DECLARE_METATYPE(TarnResult)

/// Structure, items and pass-through. The connections and the raw requests have tests of their own.
class TestSimulatedService : public QObject, private ServiceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void listsDevices();
    void listsTheModulesOfACrate();
    void listsNothingOfOthers();
    void itemNamesOfALevel_data();
    void itemNamesOfALevel();
    void itemNamesNeedTheirConnection();
    void everyReadableItemReads_data();
    void everyReadableItemReads();
    void readsWithUnitAndTime();
    void readResults_data();
    void readResults();
    void writeResults_data();
    void writeResults();
    void findsByIndex();
    void writingIsAnnounced();
    void passThroughInOrder();
    void passThroughNeedsAScript();
    void passThroughIsBounded();
    void debugLevels();
};

void TestSimulatedService::listsDevices()
{
    QVector<OrbItemId> ids;
    QVERIFY(service->crates(LocalText, ids));
    QCOMPARE(ids.size(), 1);
    QCOMPARE(ids.constFirst().type, OrbItemId::Crate);
    QCOMPARE(ids.constFirst().line, 0u);
    QCOMPARE(ids.constFirst().address, 1000u);
    QCOMPARE(ids.constFirst().connection, 0);
    QCOMPARE(ids.constFirst().connectionName, Local);
    QVERIFY(service->modules(Local, ids));
    QCOMPARE(ids.size(), 4);
    for (int i = 0; i < ids.size(); ++i) {
        QCOMPARE(ids.at(i).type, OrbItemId::Module);
        QCOMPARE(ids.at(i).address, quint32(i));
    }
    QVERIFY(service->crates(Bench, ids));
    QVERIFY(ids.isEmpty());
    QVERIFY(service->modules(Bench, ids));
    QCOMPARE(ids.size(), 1);
}

void TestSimulatedService::listsTheModulesOfACrate()
{
    QVector<OrbItemId> ids;
    OrbItemId crate(OrbItemId::Crate);
    crate.address = 1000;
    crate.connection = 0; // by index alone
    QVERIFY(service->crateModules(crate, ids));
    QCOMPARE(ids.size(), 4);
    crate.address = 1001;
    QVERIFY(!service->crateModules(crate, ids));
    QVERIFY(ids.isEmpty());
    crate.address = 1000;
    crate.type = OrbItemId::Module;
    QVERIFY(!service->crateModules(crate, ids));
    crate.type = OrbItemId::Crate;
    crate.connectionName = Bench;
    QVERIFY(!service->crateModules(crate, ids));
}

void TestSimulatedService::listsNothingOfOthers()
{
    QVector<OrbItemId> ids(3);
    QVERIFY(!service->crates(QStringLiteral("nobody"), ids));
    QVERIFY(ids.isEmpty());
    ids.resize(3);
    QVERIFY(!service->modules(QStringLiteral("nobody"), ids));
    QVERIFY(ids.isEmpty());
}

void TestSimulatedService::itemNamesOfALevel_data()
{
    QTest::addColumn<OrbItemId::Type>("level");
    QTest::addColumn<int>("all");
    QTest::addColumn<QString>("onlyHere");
    QTest::newRow("system") << OrbItemId::System << int(std::size(ExpectedSystemItems))
                            << QStringLiteral("Status.heartBeat");
    QTest::newRow("line") << OrbItemId::Line << int(std::size(ExpectedSystemItems))
                          << QStringLiteral("Status.heartBeat");
    QTest::newRow("crate") << OrbItemId::Crate << int(std::size(ExpectedCrateItems))
                           << QStringLiteral("Control.power");
    QTest::newRow("module") << OrbItemId::Module << int(std::size(ExpectedModuleItems))
                            << QStringLiteral("Control.kill");
    QTest::newRow("channel") << OrbItemId::Channel << int(std::size(ExpectedChannelItems))
                             << QStringLiteral("Control.on");
}

void TestSimulatedService::itemNamesOfALevel()
{
    QFETCH(OrbItemId::Type, level);
    QFETCH(QString, onlyHere);
    QVector<QString> names;
    // No more than a level, as a form that is being filled in has it.
    QVERIFY(service->itemNames(OrbItemId(level), false, names));
    QTEST(names.size(), "all");
    QVERIFY(names.contains(onlyHere));
    const int all = names.size();
    QVERIFY(service->itemNames(OrbItemId(level), true, names));
    QVERIFY(!names.isEmpty() && names.size() < all);
}

void TestSimulatedService::itemNamesNeedTheirConnection()
{
    QVector<QString> names{QStringLiteral("left over")};
    QVERIFY(!service->itemNames(OrbItemId(OrbItemId::Item), false, names));
    QVERIFY(names.isEmpty());
    QVERIFY(!service->itemNames(systemItem(QStringLiteral("nobody"), QString()), false, names));
    QVERIFY(service->itemNames(systemItem(Bench, QString()), false, names));
    QVERIFY(service->setControllerAvailable(Bench, false));
    QVERIFY(!service->itemNames(systemItem(Bench, QString()), false, names));
    OrbItemId byIndex(OrbItemId::System);
    byIndex.connection = 77;
    QVERIFY(!service->itemNames(byIndex, false, names));
}

void TestSimulatedService::everyReadableItemReads_data()
{
    QTest::addColumn<OrbItemId>("id");
    QTest::addColumn<QString>("access");
    const auto rows = [](const char *level, const OrbItemId &object, const auto &items) {
        for (const ExpectedItem &item : items) {
            OrbItemId id = object;
            id.itemName = QString::fromLatin1(item.name);
            QTest::addRow("%s %s", level, item.name) << id << QString::fromLatin1(item.access);
        }
    };
    rows("system", objectId(OrbItemId::System, 0, 0, -1, ""), ExpectedSystemItems);
    rows("line", objectId(OrbItemId::Line, 0, 0, -1, ""), ExpectedSystemItems);
    rows("crate", objectId(OrbItemId::Crate, 0, 1000, -1, ""), ExpectedCrateItems);
    rows("module", objectId(OrbItemId::Module, 0, 3, -1, ""), ExpectedModuleItems);
    rows("channel", objectId(OrbItemId::Channel, 0, 3, 15, ""), ExpectedChannelItems);
}

void TestSimulatedService::everyReadableItemReads()
{
    QFETCH(OrbItemId, id);
    QFETCH(QString, access);
    const bool isReadable = access.startsWith(QLatin1Char('r'));
    const bool isWritable = access.endsWith(QLatin1Char('w'));
    OrbItemReading reading;
    QCOMPARE(service->readItem(id, reading), isReadable ? TarnResult::Success : TarnResult::Denied);
    if (isReadable) {
        bool isNumber = false;
        reading.value.toDouble(&isNumber);
        const bool isBool = reading.value == QLatin1String("true") || reading.value == QLatin1String("false");
        if (reading.type == QLatin1String("bool"))
            QVERIFY(isBool);
        else if (reading.type == QLatin1String("int") || reading.type == QLatin1String("float"))
            QVERIFY(isNumber);
        else
            QCOMPARE(reading.type, QStringLiteral("string"));
    }
    // What was read can be written again; what can only be read is denied whatever the value.
    if (!isWritable)
        QCOMPARE(service->writeItem(id, QStringLiteral("1")), TarnResult::Denied);
    else if (isReadable)
        QCOMPARE(service->writeItem(id, reading.value), TarnResult::Success);
}

void TestSimulatedService::readsWithUnitAndTime()
{
    QCOMPARE(service->writeItem(channelItem("Control.voltageSet"), QStringLiteral("3000")),
             TarnResult::Success);
    QCOMPARE(service->writeItem(channelItem("Control.on"), QStringLiteral("1")), TarnResult::Success);
    clock->advance(std::chrono::milliseconds(1500));
    OrbItemReading reading;
    QCOMPARE(service->readItem(channelItem("Status.voltageMeasure"), reading), TarnResult::Success);
    QCOMPARE(reading.value, QStringLiteral("900"));
    QCOMPARE(reading.unit, QStringLiteral("V"));
    QCOMPARE(reading.type, QStringLiteral("float"));
    QCOMPARE(reading.timestamp, clock->startedAt() + 1.5);
    QCOMPARE(service->readItem(channelItem("Status.currentMeasure"), reading), TarnResult::Success);
    QCOMPARE(reading.value, QStringLiteral("6e-05"));
    QCOMPARE(reading.unit, QStringLiteral("A"));
}

void TestSimulatedService::readResults_data()
{
    QTest::addColumn<OrbItemId>("id");
    QTest::addColumn<TarnResult>("result");
    OrbItemId elsewhere = channelItem("Control.on");
    elsewhere.connectionName = QStringLiteral("nobody");
    OrbItemId nowhere = channelItem("Control.on");
    nowhere.connectionName.clear();
    QTest::newRow("item") << channelItem("Control.on") << TarnResult::Success;
    QTest::newRow("unknown item") << channelItem("Control.off") << TarnResult::NoData;
    QTest::newRow("empty item") << channelItem("") << TarnResult::NoData;
    QTest::newRow("only written") << channelItem("Control.clearAll") << TarnResult::Denied;
    QTest::newRow("unknown module") << objectId(OrbItemId::Channel, 0, 4, 1, "Control.on")
                                    << TarnResult::NoData;
    QTest::newRow("unknown channel") << objectId(OrbItemId::Channel, 0, 0, 8, "Control.on")
                                     << TarnResult::NoData;
    QTest::newRow("unknown line") << objectId(OrbItemId::Line, 5, 0, 0, "Status.heartBeat")
                                  << TarnResult::NoData;
    QTest::newRow("plain item") << objectId(OrbItemId::Item, 0, 0, 0, "Control.on") << TarnResult::NoData;
    QTest::newRow("unknown connection") << elsewhere << TarnResult::NoData;
    QTest::newRow("no connection") << nowhere << TarnResult::NoData;
}

void TestSimulatedService::readResults()
{
    QFETCH(OrbItemId, id);
    OrbItemReading reading;
    QTEST(service->readItem(id, reading), "result");
}

void TestSimulatedService::writeResults_data()
{
    QTest::addColumn<OrbItemId>("id");
    QTest::addColumn<QString>("value");
    QTest::addColumn<TarnResult>("result");
    QTest::newRow("good") << channelItem("Control.voltageSet") << QStringLiteral("10") << TarnResult::Success;
    QTest::newRow("only written") << channelItem("Control.clearAll") << QStringLiteral("1")
                                  << TarnResult::Success;
    QTest::newRow("only read") << channelItem("Status.on") << QStringLiteral("1") << TarnResult::Denied;
    QTest::newRow("only read, bad value")
        << channelItem("Status.on") << QStringLiteral("x") << TarnResult::Denied;
    QTest::newRow("bad value") << channelItem("Control.voltageSet") << QStringLiteral("x")
                               << TarnResult::Failed;
    QTest::newRow("too high") << channelItem("Control.voltageSet") << QStringLiteral("6001")
                              << TarnResult::Failed;
    QTest::newRow("unknown item") << channelItem("Control.off") << QStringLiteral("1") << TarnResult::NoData;
    QTest::newRow("unknown module") << objectId(OrbItemId::Module, 0, 9, -1, "Control.kill")
                                    << QStringLiteral("1") << TarnResult::NoData;
}

void TestSimulatedService::writeResults()
{
    QFETCH(OrbItemId, id);
    QFETCH(QString, value);
    QTEST(service->writeItem(id, value), "result");
}

void TestSimulatedService::findsByIndex()
{
    OrbItemId id(OrbItemId::System);
    id.connection = 1;
    id.itemName = QStringLiteral("Status.connectionName");
    OrbItemReading reading;
    QCOMPARE(service->readItem(id, reading), TarnResult::Success);
    QCOMPARE(reading.value, Bench);
    id.connectionName = Local; // a name wins
    QCOMPARE(service->readItem(id, reading), TarnResult::Success);
    QCOMPARE(reading.value, Local);
}

void TestSimulatedService::writingIsAnnounced()
{
    QCOMPARE(service->writeItem(channelItem("Control.voltageSet"), QStringLiteral("5")), TarnResult::Success);
    QCOMPARE(listener->changedValues().size(), 1);
    OrbItemId expected = channelItem("Control.voltageSet");
    expected.connection = 0;
    QCOMPARE(listener->changedValues().constFirst(), expected);
    QCOMPARE(service->writeItem(channelItem("Control.voltageSet"), QStringLiteral("x")), TarnResult::Failed);
    QCOMPARE(listener->changedValues().size(), 1);
    service->setListener(nullptr);
    QCOMPARE(service->writeItem(channelItem("Control.voltageSet"), QStringLiteral("6")), TarnResult::Success);
    QCOMPARE(listener->changedValues().size(), 1);
}

void TestSimulatedService::passThroughInOrder()
{
    QCOMPARE(service->activatePassThrough(LocalText, QStringLiteral("script")), TarnResult::Success);
    QCOMPARE(service->passThroughScript(Local), QStringLiteral("script"));
    OrbRequestItem request;
    QCOMPARE(service->takePassThroughMessage(Local, request), TarnResult::NoData);
    for (int i = 0; i < 3; ++i) {
        request.itemName = QString::number(i);
        QCOMPARE(service->injectPassThroughMessage(Local, request), TarnResult::Success);
    }
    QCOMPARE(service->takePassThroughMessage(Local, request), TarnResult::Success);
    QCOMPARE(request.itemName, QStringLiteral("0"));
    QVector<OrbRequestItem> rest;
    QCOMPARE(service->takePassThroughMessages(Local, rest), TarnResult::Success);
    QCOMPARE(rest.size(), 2);
    QCOMPARE(rest.at(0).itemName, QStringLiteral("1"));
    QCOMPARE(rest.at(1).itemName, QStringLiteral("2"));
    QCOMPARE(service->takePassThroughMessages(Local, rest), TarnResult::Success);
    QVERIFY(rest.isEmpty());

    OrbItemValue value;
    value.setUnit(QStringLiteral("V"));
    QCOMPARE(service->sendPassThroughMessages(Local, {value, OrbItemValue()}), TarnResult::Success);
    const QVector<OrbItemValue> sent = service->takeSentPassThroughMessages(Local);
    QCOMPARE(sent.size(), 2);
    QCOMPARE(sent.constFirst().unit(), QStringLiteral("V"));
    QVERIFY(service->takeSentPassThroughMessages(Local).isEmpty());
    QVERIFY(service->takeSentPassThroughMessages(Bench).isEmpty());
}

void TestSimulatedService::passThroughNeedsAScript()
{
    OrbRequestItem request;
    QVector<OrbRequestItem> requests;
    QCOMPARE(service->injectPassThroughMessage(Local, request), TarnResult::Failed);
    QCOMPARE(service->takePassThroughMessage(Local, request), TarnResult::Failed);
    QCOMPARE(service->takePassThroughMessages(Local, requests), TarnResult::Failed);
    QCOMPARE(service->sendPassThroughMessages(Local, {OrbItemValue()}), TarnResult::Failed);
    QCOMPARE(service->activatePassThrough(QStringLiteral("nobody"), QString()), TarnResult::NoData);
    // It ends with its connection.
    QCOMPARE(service->activatePassThrough(Local, QStringLiteral("script")), TarnResult::Success);
    QCOMPARE(service->closeConnection(Local), TarnResult::Success);
    QCOMPARE(service->injectPassThroughMessage(Local, request), TarnResult::NotConnected);
    QCOMPARE(service->openConnection(Local, QStringLiteral("a:1"), QString(), QString()),
             TarnResult::Success);
    QCOMPARE(service->injectPassThroughMessage(Local, request), TarnResult::Failed);
}

void TestSimulatedService::passThroughIsBounded()
{
    QCOMPARE(service->activatePassThrough(Local, QStringLiteral("script")), TarnResult::Success);
    for (int i = 0; i < PassThrough::MostMessages; ++i)
        QCOMPARE(service->injectPassThroughMessage(Local, OrbRequestItem()), TarnResult::Success);
    QCOMPARE(service->injectPassThroughMessage(Local, OrbRequestItem()), TarnResult::Failed);
    QVector<OrbItemValue> values(PassThrough::MostMessages + 1);
    QCOMPARE(service->sendPassThroughMessages(Local, values), TarnResult::Failed);
    values.removeLast();
    QCOMPARE(service->sendPassThroughMessages(Local, values), TarnResult::Success);
}

void TestSimulatedService::debugLevels()
{
    const QString good =
        QStringLiteral(R"({"t":"request","c":[{"c":"getItem","p":{"p":{},"i":"Status.heartBeat"}}]})");
    QString reply;
    QVERIFY(!service->rawRequest(Local, QStringLiteral("x"), reply));
    QVERIFY(listener->logTexts().isEmpty());
    QCOMPARE(service->setDebugLevel(1), TarnResult::Success);
    QVERIFY(!service->rawRequest(Local, QStringLiteral("x"), reply));
    QVERIFY(service->rawRequest(Local, good, reply));
    QCOMPARE(listener->logTexts().size(), 1);
    QVERIFY(listener->logTexts().constFirst().contains(QLatin1String("malformed JSON")));
    QCOMPARE(service->setDebugLevel(2), TarnResult::Success);
    QVERIFY(service->rawRequest(Local, good, reply));
    QCOMPARE(listener->logTexts().size(), 2);
    QVERIFY(listener->logTexts().constLast().contains(good));
    QCOMPARE(service->setDebugLevel(3), TarnResult::Failed);
    QCOMPARE(service->setDebugLevel(-1), TarnResult::Failed);
}

QTEST_GUILESS_MAIN(TestSimulatedService)
#include "tst_simulated_service.moc"
