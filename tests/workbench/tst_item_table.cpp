#include "workbench/simulator/item_table.h"

#include "hostclient/orb_item_definitions.h"
#include "tests/workbench/expected_items.h"
#include "workbench/simulator/controller.h"

#include <QtTest>

#include <algorithm>

using namespace simulator;

/// Every item that scripts and operators rely on is there, with the right direction, and none besides.
class TestItemTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyItemHasItsDirection_data();
    void everyItemHasItsDirection();
    void noItemBesides_data();
    void noItemBesides();
    void writableNamesAreThoseThatCanBeWritten();
    void kindsAndUnits_data();
    void kindsAndUnits();
    void namesOfTheDefinitionsExist_data();
    void namesOfTheDefinitionsExist();
    void lookUp_data();
    void lookUp();
    void levelsWithoutItems();
};

namespace
{

template <std::size_t Size>
void addRows(const char *level, OrbItemId::Type type, const ExpectedItem (&items)[Size])
{
    for (const ExpectedItem &item : items) {
        QTest::addRow("%s %s", level, item.name)
            << type << QString::fromLatin1(item.name) << QString::fromLatin1(item.access);
    }
}

QString accessText(const ItemDefinition &item)
{
    return QLatin1String(isReadable(item) ? "r" : "") + QLatin1String(isWritable(item) ? "w" : "");
}

} // namespace

Q_DECLARE_METATYPE(OrbItemId::Type)
Q_DECLARE_METATYPE(simulator::ItemKind)

void TestItemTable::everyItemHasItsDirection_data()
{
    QTest::addColumn<OrbItemId::Type>("level");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("access");
    addRows("system", OrbItemId::System, ExpectedSystemItems);
    addRows("line", OrbItemId::Line, ExpectedSystemItems);
    addRows("crate", OrbItemId::Crate, ExpectedCrateItems);
    addRows("module", OrbItemId::Module, ExpectedModuleItems);
    addRows("channel", OrbItemId::Channel, ExpectedChannelItems);
}

void TestItemTable::everyItemHasItsDirection()
{
    QFETCH(OrbItemId::Type, level);
    QFETCH(QString, name);
    const ItemDefinition *item = Controller::itemsOf(level)->find(name);
    QVERIFY(item != nullptr);
    QTEST(accessText(*item), "access");
}

void TestItemTable::noItemBesides_data()
{
    QTest::addColumn<OrbItemId::Type>("level");
    QTest::addColumn<int>("count");
    QTest::newRow("system") << OrbItemId::System << int(std::size(ExpectedSystemItems));
    QTest::newRow("crate") << OrbItemId::Crate << int(std::size(ExpectedCrateItems));
    QTest::newRow("module") << OrbItemId::Module << int(std::size(ExpectedModuleItems));
    QTest::newRow("channel") << OrbItemId::Channel << int(std::size(ExpectedChannelItems));
}

void TestItemTable::noItemBesides()
{
    QFETCH(OrbItemId::Type, level);
    QTEST(Controller::itemsOf(level)->names(false).size(), "count");
}

void TestItemTable::writableNamesAreThoseThatCanBeWritten()
{
    QVector<QString> expected;
    for (const ExpectedItem &item : ExpectedChannelItems) {
        if (QLatin1String(item.access) != QLatin1String("r"))
            expected.append(QString::fromLatin1(item.name));
    }
    QVector<QString> names = channelItems().names(true);
    std::sort(expected.begin(), expected.end());
    std::sort(names.begin(), names.end());
    QCOMPARE(names, expected);
}

void TestItemTable::kindsAndUnits_data()
{
    QTest::addColumn<OrbItemId::Type>("level");
    QTest::addColumn<QString>("name");
    QTest::addColumn<ItemKind>("kind");
    QTest::addColumn<QString>("unit");
    const auto row = [](OrbItemId::Type level, const char *name, ItemKind kind, const char *unit) {
        QTest::newRow(name) << level << QString::fromLatin1(name) << kind << QString::fromUtf8(unit);
    };
    row(OrbItemId::Channel, "Control.voltageSet", ItemKind::Float, "V");
    row(OrbItemId::Channel, "Status.voltageMeasure", ItemKind::Float, "V");
    row(OrbItemId::Channel, "Control.voltageBounds", ItemKind::Float, "V");
    row(OrbItemId::Channel, "Status.currentMeasure", ItemKind::Float, "A");
    row(OrbItemId::Channel, "Control.currentSet", ItemKind::Float, "A");
    row(OrbItemId::Channel, "Control.voltageRampspeedUp", ItemKind::Float, "V/s");
    row(OrbItemId::Channel, "Control.currentRampspeedDown", ItemKind::Float, "mA/s");
    row(OrbItemId::Channel, "Setup.delayedTripTime", ItemKind::Int, "ms");
    row(OrbItemId::Channel, "Control.on", ItemKind::Bool, "");
    row(OrbItemId::Channel, "Status.runningState", ItemKind::String, "");
    row(OrbItemId::Module, "Control.voltageRampspeed", ItemKind::Float, "%/s");
    row(OrbItemId::Module, "Status.temperature", ItemKind::Float, "°C");
    row(OrbItemId::Module, "Status.serialNumber", ItemKind::Int, "");
    row(OrbItemId::Crate, "Status.temperature0", ItemKind::Float, "°C");
    row(OrbItemId::Crate, "Control.power", ItemKind::Bool, "");
    row(OrbItemId::System, "Setup.cycleTime", ItemKind::Int, "ms");
    row(OrbItemId::System, "Control.serviceStart", ItemKind::String, "");
}

void TestItemTable::kindsAndUnits()
{
    QFETCH(OrbItemId::Type, level);
    QFETCH(QString, name);
    const ItemTable *table = Controller::itemsOf(level);
    const ItemDefinition *item = table->find(name);
    QVERIFY(item != nullptr);
    QTEST(item->kind, "kind");
    QTEST(table->unit(*item), "unit");
}

void TestItemTable::namesOfTheDefinitionsExist_data()
{
    QTest::addColumn<OrbItemId::Type>("level");
    QTest::addColumn<QString>("name");
    using Names = OrbItemDefinitions;
    QTest::newRow("session id") << OrbItemId::System << Names::getItemNameSystemStatussessionId();
    QTest::newRow("usb aux state") << OrbItemId::System << Names::getItemNameSystemStatususbAuxState();
    QTest::newRow("live insertion") << OrbItemId::System << Names::getItemNameSystemStatusliveInsertion();
    QTest::newRow("ethernet") << OrbItemId::System << Names::getItemNameSystemStatusethernetState();
    QTest::newRow("wifi") << OrbItemId::System << Names::getItemNameSystemStatuswifiState();
    QTest::newRow("usb remote state") << OrbItemId::System << Names::getItemNameSystemStatususbRemoteState();
    QTest::newRow("usb remote text") << OrbItemId::System << Names::getItemNameSystemStatususbRemoteText();
    QTest::newRow("usb aux text") << OrbItemId::System << Names::getItemNameSystemStatususbAuxText();
    QTest::newRow("can state") << OrbItemId::System << Names::getItemNameSystemStatuscanState();
    QTest::newRow("can text") << OrbItemId::System << Names::getItemNameSystemStatuscanText();
    QTest::newRow("connection") << OrbItemId::System << Names::getItemNameSystemStatusconnectionName();
    QTest::newRow("controller") << OrbItemId::System << Names::getItemNameSystemStatuscontrollerName();
    QTest::newRow("channels") << OrbItemId::Module << Names::getItemNameModuleStatusnumberOfChannels();
}

void TestItemTable::namesOfTheDefinitionsExist()
{
    QFETCH(OrbItemId::Type, level);
    QFETCH(QString, name);
    const ItemDefinition *item = Controller::itemsOf(level)->find(name);
    QVERIFY(item != nullptr);
    QVERIFY(isReadable(*item));
}

void TestItemTable::lookUp_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("as it is spelt") << QStringLiteral("Control.on") << true;
    QTest::newRow("other case") << QStringLiteral("control.on") << false;
    QTest::newRow("blank") << QStringLiteral("Control.on ") << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("another level's") << QStringLiteral("Control.power") << false;
    QTest::newRow("NUL") << QString(QStringLiteral("Control.on") + QChar(0)) << false;
    QTest::newRow("long") << QString(1000000, QLatin1Char('x')) << false;
}

void TestItemTable::lookUp()
{
    QFETCH(QString, name);
    QTEST(channelItems().find(name) != nullptr, "found");
}

void TestItemTable::levelsWithoutItems()
{
    QVERIFY(Controller::itemsOf(OrbItemId::Undefined) == nullptr);
    QVERIFY(Controller::itemsOf(OrbItemId::Item) == nullptr);
}

QTEST_APPLESS_MAIN(TestItemTable)
#include "tst_item_table.moc"
