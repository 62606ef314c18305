#include "command_terminal/terminal_command_generation.h"
#include "tests/command_terminal/context_translator.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace
{

/// Gives the names and says that it could not.
class RefusingBackend : public RecordingBackend
{
public:
    bool itemNames(const OrbItemId &id, bool writableOnly, QVector<QString> &names) const override
    {
        RecordingBackend::itemNames(id, writableOnly, names);
        return false;
    }
};

} // namespace

/// The form itself: its fields, the requests that it builds, and the item names that it offers for an address.
class TestTerminalCommandGeneration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void captionsAndInputs_data();
    void captionsAndInputs();
    void buttons();
    void boxesFitTheirContents();
    void firstEntries();
    void translatedAndPlainTexts();

    void getSendsOneRequest();
    void getLeavesValueAndUnitOut();
    void setSendsValueAndUnit();
    void whatIsTypedGoesOutAsItIs();
    void theControllerIsNotPartOfTheRequest();

    void levelFromFields_data();
    void levelFromFields();
    void typedNumbersDoNotEnterTheAddress();
    void eachFieldEndsItsEditing_data();
    void eachFieldEndsItsEditing();
    void sameLevelChangesNothing();
    void anotherLevelClearsItemsValueAndUnit();
    void aTypedLineRefreshesEachTime();
    void aLineThatWasSetIsStoredUnchanged();
    void allItemsAreAskedFor();
    void namesAreSorted_data();
    void namesAreSorted();
    void namesAreTakenWhateverTheResultSays();
    void noNamesLeaveTheListEmpty();
    void thousandsOfNames();

private:
    template <class Widget>
    Widget *child(const char *name) const
    {
        auto *found = panel->findChild<Widget *>(QLatin1String(name));
        Q_ASSERT(found);
        return found;
    }
    void type(const char *field, const QString &text) const
    {
        auto *edit = child<QLineEdit>(field);
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    QStringList offeredItems() const
    {
        QStringList items;
        const auto *box = child<QComboBox>("itemBox");
        for (int i = 0; i < box->count(); ++i)
            items.append(box->itemText(i));
        return items;
    }
    QString request() const
    {
        const QStringList requests = fixture->observer.textsOf(KD::Request);
        return requests.isEmpty() ? QString() : requests.constLast();
    }
    int namesAskedFor() const { return fixture->backend.callsOf(QStringLiteral("itemNames")).size(); }

    std::unique_ptr<TerminalFixture> fixture;
    std::unique_ptr<TerminalCommandGeneration> panel;
};

void TestTerminalCommandGeneration::init()
{
    fixture = std::make_unique<TerminalFixture>();
    fixture->backend.setItemNames(OrbItemId::System, {QStringLiteral("Sys.b"), QStringLiteral("Sys.a")});
    fixture->backend.setItemNames(OrbItemId::Line, {QStringLiteral("Line.none")});
    fixture->backend.setItemNames(OrbItemId::Crate, {QStringLiteral("Crate.x")});
    fixture->backend.setItemNames(OrbItemId::Module, {QStringLiteral("Module.x")});
    fixture->backend.setItemNames(OrbItemId::Channel, {QStringLiteral("Channel.x")});
    panel = std::make_unique<TerminalCommandGeneration>(nullptr, fixture->mainData, fixture->observer);
}

void TestTerminalCommandGeneration::cleanup()
{
    panel.reset();
    fixture.reset();
}

void TestTerminalCommandGeneration::captionsAndInputs_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("input");
    const char *const captions[] = {"Controller", "Line", "Address", "Channel", "Item", "Value", "Unit"};
    const char *const inputs[] = {"controllerBox", "lineEdit",  "addressEdit", "channelEdit",
                                  "itemBox",       "valueEdit", "unitEdit"};
    for (int column = 0; column < 7; ++column)
        QTest::newRow(captions[column]) << column << QString::fromLatin1(inputs[column]);
}

void TestTerminalCommandGeneration::captionsAndInputs()
{
    QFETCH(int, column);
    QFETCH(QString, input);
    const auto *grid = qobject_cast<QGridLayout *>(panel->layout());
    QVERIFY(grid);
    QCOMPARE(grid->rowCount(), 2);
    QCOMPARE(grid->columnCount(), 8);
    QCOMPARE(grid->count(), 16);

    const auto *caption = qobject_cast<QLabel *>(grid->itemAtPosition(0, column)->widget());
    QVERIFY(caption);
    QCOMPARE(caption->text(), QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(grid->itemAtPosition(1, column)->widget()->objectName(), input);
}

void TestTerminalCommandGeneration::buttons()
{
    const auto *grid = qobject_cast<QGridLayout *>(panel->layout());
    QVERIFY(grid);
    const auto *get = qobject_cast<QPushButton *>(grid->itemAtPosition(0, 7)->widget());
    const auto *set = qobject_cast<QPushButton *>(grid->itemAtPosition(1, 7)->widget());
    QVERIFY(get && set);
    QCOMPARE(get->text(), QStringLiteral("Get"));
    QCOMPARE(set->text(), QStringLiteral("Set"));
}

void TestTerminalCommandGeneration::boxesFitTheirContents()
{
    QCOMPARE(child<QComboBox>("controllerBox")->sizeAdjustPolicy(), QComboBox::AdjustToContents);
    QCOMPARE(child<QComboBox>("itemBox")->sizeAdjustPolicy(), QComboBox::AdjustToContents);
}

void TestTerminalCommandGeneration::firstEntries()
{
    const auto *controllers = child<QComboBox>("controllerBox");
    QCOMPARE(controllers->count(), 1);
    QCOMPARE(controllers->currentText(), QStringLiteral("Select a controller"));
    QVERIFY(!controllers->currentData().isValid());
    QCOMPARE(offeredItems(), QStringList{QStringLiteral("Select a command")});
    QVERIFY(!child<QComboBox>("itemBox")->currentData().isValid());
    // Nothing was chosen and nothing asked for.
    QVERIFY(fixture->observer.events().empty());
    QCOMPARE(namesAskedFor(), 0);
}

void TestTerminalCommandGeneration::translatedAndPlainTexts()
{
    const ContextTranslator translator;
    panel = std::make_unique<TerminalCommandGeneration>(nullptr, fixture->mainData, fixture->observer);
    const auto translated = [](const char *text) {
        return QStringLiteral("[TerminalCommandGeneration]") + QString::fromLatin1(text);
    };
    QCOMPARE(child<QComboBox>("controllerBox")->currentText(), translated("Select a controller"));
    QCOMPARE(child<QComboBox>("itemBox")->currentText(), translated("Select a command"));

    QStringList plain;
    const auto *grid = qobject_cast<QGridLayout *>(panel->layout());
    for (int column = 0; column < 7; ++column)
        plain.append(qobject_cast<QLabel *>(grid->itemAtPosition(0, column)->widget())->text());
    QCOMPARE(plain.join(QLatin1Char(' ')), QStringLiteral("Controller Line Address Channel Item Value Unit"));
    QCOMPARE(child<QPushButton>("getButton")->text(), QStringLiteral("Get"));
    QCOMPARE(child<QPushButton>("setButton")->text(), QStringLiteral("Set"));

    const auto *label = child<QLabel>("itemLabel");
    panel->setItemId(OrbItemId(OrbItemId::Channel));
    QCOMPARE(label->text(), translated("Channel Item"));
    QCOMPARE(child<QComboBox>("controllerBox")->currentText(), translated("No connection"));
    panel->setItemId(OrbItemId(OrbItemId::Module));
    QCOMPARE(label->text(), translated("Module Item"));
    panel->setItemId(OrbItemId(OrbItemId::Crate));
    QCOMPARE(label->text(), translated("Crate Item"));
    panel->setItemId(OrbItemId(OrbItemId::System));
    QCOMPARE(label->text(), translated("System Item"));
    panel->setItemId(OrbItemId(OrbItemId::Item));
    QCOMPARE(label->text(), translated("Item"));
}

// Requests

void TestTerminalCommandGeneration::getSendsOneRequest()
{
    QTest::mouseClick(child<QPushButton>("getButton"), Qt::LeftButton);
    QCOMPARE(fixture->observer.events().size(), std::size_t{1});
    QCOMPARE(request(),
             QStringLiteral(R"({"i":"<session_id>","t":"request","c":[{"c":"getItem","p":{"p":{"l":"",)"
                            R"("a":"","c":""},"i":"Select a command","v":"","u":""}}],"r":"websocket"})"));
}

void TestTerminalCommandGeneration::getLeavesValueAndUnitOut()
{
    type("channelEdit", QStringLiteral("1"));
    type("addressEdit", QStringLiteral("4"));
    type("lineEdit", QStringLiteral("0"));
    type("valueEdit", QStringLiteral("12"));
    type("unitEdit", QStringLiteral("V"));
    fixture->observer.clear();
    QTest::mouseClick(child<QPushButton>("getButton"), Qt::LeftButton);
    QCOMPARE(fixture->observer.events().size(), std::size_t{1});
    QCOMPARE(request(),
             QStringLiteral(R"({"i":"<session_id>","t":"request","c":[{"c":"getItem","p":{"p":{"l":"0",)"
                            R"("a":"4","c":"1"},"i":"Channel.x","v":"","u":""}}],"r":"websocket"})"));
}

void TestTerminalCommandGeneration::setSendsValueAndUnit()
{
    type("addressEdit", QStringLiteral("1000"));
    type("valueEdit", QStringLiteral("12.5"));
    type("unitEdit", QStringLiteral("%/s"));
    fixture->observer.clear();
    QTest::mouseClick(child<QPushButton>("setButton"), Qt::LeftButton);
    QCOMPARE(fixture->observer.events().size(), std::size_t{1});
    QCOMPARE(request(),
             QStringLiteral(R"({"i":"<session_id>","t":"request","c":[{"c":"setItem","p":{"p":{"l":"",)"
                            R"("a":"1000","c":""},"i":"Crate.x","v":"12.5","u":"%/s"}}],"r":"websocket"})"));
}

void TestTerminalCommandGeneration::whatIsTypedGoesOutAsItIs()
{
    type("lineEdit", QStringLiteral("zero"));
    type("addressEdit", QStringLiteral("-1"));
    type("channelEdit", QStringLiteral(" 0x1 "));
    type("valueEdit", QStringLiteral("a\"b\\"));
    QTest::mouseClick(child<QPushButton>("setButton"), Qt::LeftButton);
    QCOMPARE(
        request(),
        QStringLiteral(R"({"i":"<session_id>","t":"request","c":[{"c":"setItem","p":{"p":{"l":"zero",)"
                       R"("a":"-1","c":" 0x1 "},"i":"Channel.x","v":"a"b\","u":""}}],"r":"websocket"})"));
}

void TestTerminalCommandGeneration::theControllerIsNotPartOfTheRequest()
{
    QTest::mouseClick(child<QPushButton>("getButton"), Qt::LeftButton);
    const QString before = request();
    auto *controllers = child<QComboBox>("controllerBox");
    controllers->addItem(QStringLiteral("Shown"), QStringLiteral("connection"));
    controllers->setCurrentIndex(1);
    QTest::mouseClick(child<QPushButton>("getButton"), Qt::LeftButton);
    QCOMPARE(fixture->observer.eventsOf(KD::Request).size(), std::size_t{2});
    QCOMPARE(request(), before);
}

// Levels and item names

void TestTerminalCommandGeneration::levelFromFields_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("channel");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("firstItem");
    const auto row = [](const char *name, const char *line, const char *address, const char *channel,
                        const char *caption, const char *firstItem) {
        QTest::newRow(name) << QString::fromLatin1(line) << QString::fromLatin1(address)
                            << QString::fromLatin1(channel) << QString::fromLatin1(caption)
                            << QString::fromLatin1(firstItem);
    };
    row("nothing", "", "", "", "System Item", "Sys.a");
    row("line", "1", "", "", "System Item", "Sys.a");
    row("line that is no number", "x", "", "", "System Item", "Sys.a");
    row("module 0", "0", "0", "", "Module Item", "Module.x");
    row("module 999", "", "999", "", "Module Item", "Module.x");
    row("crate 1000", "", "1000", "", "Crate Item", "Crate.x");
    row("crate with a line", "0", "1001", "", "Crate Item", "Crate.x");
    row("largest crate", "0", "4294967295", "", "Crate Item", "Crate.x");
    row("beyond 32 bits", "0", "4294967296", "", "Module Item", "Module.x");
    row("address below zero", "0", "-1000", "", "Module Item", "Module.x");
    row("address not decimal", "0", "0x1000", "", "Module Item", "Module.x");
    row("address no number", "0", "1000a", "", "Module Item", "Module.x");
    row("address with a zero in front", "0", "01000", "", "Crate Item", "Crate.x");
    row("a blank as address", "0", " ", "", "Module Item", "Module.x");
    row("channel", "0", "4", "1", "Channel Item", "Channel.x");
    row("channel alone", "", "", "1", "Channel Item", "Channel.x");
    row("channel of a crate address", "0", "1000", "0", "Channel Item", "Channel.x");
    row("channel that is no number", "", "", "x", "Channel Item", "Channel.x");
}

void TestTerminalCommandGeneration::levelFromFields()
{
    QFETCH(QString, line);
    QFETCH(QString, address);
    QFETCH(QString, channel);
    child<QLineEdit>("lineEdit")->setText(line);
    child<QLineEdit>("addressEdit")->setText(address);
    child<QLineEdit>("channelEdit")->setText(channel);
    QCOMPARE(offeredItems(), QStringList{QStringLiteral("Select a command")});
    QTest::keyClick(child<QLineEdit>("lineEdit"), Qt::Key_Return);
    QTEST(child<QLabel>("itemLabel")->text(), "caption");
    QTEST(offeredItems().constFirst(), "firstItem");
}

void TestTerminalCommandGeneration::typedNumbersDoNotEnterTheAddress()
{
    OrbItemId id(OrbItemId::Channel);
    id.connectionName = QStringLiteral("first");
    id.line = 1;
    id.address = 5;
    id.channel = 2;
    panel->setItemId(id);
    fixture->backend.clearCalls();
    child<QLineEdit>("lineEdit")->setText(QStringLiteral("3"));
    child<QLineEdit>("addressEdit")->setText(QStringLiteral("7"));
    type("channelEdit", QString());
    const QVector<RecordedCall> calls = fixture->backend.callsOf(QStringLiteral("itemNames"));
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.constFirst().arguments.at(0), QStringLiteral("first:1.5"));
    QCOMPARE(calls.constFirst().arguments.at(1), QString::number(OrbItemId::Module));
}

void TestTerminalCommandGeneration::eachFieldEndsItsEditing_data()
{
    QTest::addColumn<int>("level");
    QTest::newRow("lineEdit") << int(OrbItemId::System);
    QTest::newRow("addressEdit") << int(OrbItemId::Module);
    QTest::newRow("channelEdit") << int(OrbItemId::Channel);
}

void TestTerminalCommandGeneration::eachFieldEndsItsEditing()
{
    QFETCH(int, level);
    QTest::keyClick(child<QLineEdit>(QTest::currentDataTag()), Qt::Key_5);
    QCOMPARE(namesAskedFor(), 0); // not while typing
    QTest::keyClick(child<QLineEdit>(QTest::currentDataTag()), Qt::Key_Return);
    const QVector<RecordedCall> calls = fixture->backend.callsOf(QStringLiteral("itemNames"));
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.constFirst().arguments.at(1), QString::number(level));
}

void TestTerminalCommandGeneration::sameLevelChangesNothing()
{
    type("addressEdit", QStringLiteral("4"));
    QCOMPARE(namesAskedFor(), 1);
    child<QLineEdit>("valueEdit")->setText(QStringLiteral("12"));
    child<QLineEdit>("unitEdit")->setText(QStringLiteral("V"));
    child<QComboBox>("itemBox")->addItem(QStringLiteral("mark"));
    type("addressEdit", QStringLiteral("5"));
    QCOMPARE(namesAskedFor(), 1);
    QCOMPARE(child<QLineEdit>("valueEdit")->text(), QStringLiteral("12"));
    QCOMPARE(child<QLineEdit>("unitEdit")->text(), QStringLiteral("V"));
    QCOMPARE(offeredItems(), (QStringList{QStringLiteral("Module.x"), QStringLiteral("mark")}));
}

void TestTerminalCommandGeneration::anotherLevelClearsItemsValueAndUnit()
{
    type("addressEdit", QStringLiteral("4"));
    child<QLineEdit>("valueEdit")->setText(QStringLiteral("12"));
    child<QLineEdit>("unitEdit")->setText(QStringLiteral("V"));
    type("channelEdit", QStringLiteral("1"));
    QCOMPARE(child<QLineEdit>("valueEdit")->text(), QString());
    QCOMPARE(child<QLineEdit>("unitEdit")->text(), QString());
    QCOMPARE(offeredItems(), QStringList{QStringLiteral("Channel.x")});
    QCOMPARE(child<QLineEdit>("addressEdit")->text(), QStringLiteral("4"));
}

// A typed line is stored as the system, so the comparison with the stored level never holds for it.
void TestTerminalCommandGeneration::aTypedLineRefreshesEachTime()
{
    type("lineEdit", QStringLiteral("1"));
    QCOMPARE(namesAskedFor(), 1);
    child<QLineEdit>("valueEdit")->setText(QStringLiteral("12"));
    type("lineEdit", QStringLiteral("1"));
    QCOMPARE(namesAskedFor(), 2);
    QCOMPARE(child<QLineEdit>("valueEdit")->text(), QString());
    // The other way round it does: from a line to the system nothing changes.
    child<QLineEdit>("valueEdit")->setText(QStringLiteral("13"));
    type("lineEdit", QString());
    QCOMPARE(namesAskedFor(), 2);
    QCOMPARE(child<QLineEdit>("valueEdit")->text(), QStringLiteral("13"));
}

void TestTerminalCommandGeneration::aLineThatWasSetIsStoredUnchanged()
{
    OrbItemId line(OrbItemId::Line);
    line.line = 1;
    panel->setItemId(line);
    QCOMPARE(namesAskedFor(), 1);
    QCOMPARE(child<QLabel>("itemLabel")->text(), QStringLiteral("System Item"));
    child<QLineEdit>("valueEdit")->setText(QStringLiteral("12"));

    type("lineEdit", QStringLiteral("2"));
    QCOMPARE(namesAskedFor(), 1);
    QCOMPARE(child<QLineEdit>("valueEdit")->text(), QStringLiteral("12"));

    panel->setItemId(line);
    QCOMPARE(namesAskedFor(), 1);

    type("lineEdit", QString()); // the system, which is not what is stored
    QCOMPARE(namesAskedFor(), 2);
    QCOMPARE(child<QLineEdit>("valueEdit")->text(), QString());
}

void TestTerminalCommandGeneration::allItemsAreAskedFor()
{
    type("channelEdit", QStringLiteral("1"));
    QCOMPARE(fixture->backend.callsOf(QStringLiteral("itemNames")).constFirst().arguments.at(2),
             QStringLiteral("all"));
}

void TestTerminalCommandGeneration::namesAreSorted_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *given, const char *expected) {
        QTest::newRow(name) << QString::fromUtf8(given) << QString::fromUtf8(expected);
    };
    row("upper case first", "b a B A", "A B a b");
    row("digits by character", "ch.10 ch.9 ch.1", "ch.1 ch.10 ch.9");
    row("shorter first", "ab a abc", "a ab abc");
    row("underscore between the cases", "_ a Z", "Z _ a");
    row("letters beyond ASCII last", "ä z Ä Z", "Z z Ä ä");
    row("by code unit, not by code point", "\uFF5E 😀 a", "a 😀 \uFF5E");
    row("a name twice", "b a b", "a b b");
}

void TestTerminalCommandGeneration::namesAreSorted()
{
    QFETCH(QString, given);
    QFETCH(QString, expected);
    fixture->backend.setItemNames(OrbItemId::Module, given.split(QLatin1Char(' ')).toVector());
    type("addressEdit", QStringLiteral("4"));
    QCOMPARE(offeredItems(), expected.split(QLatin1Char(' ')));
    QCOMPARE(child<QComboBox>("itemBox")->currentIndex(), 0);
}

void TestTerminalCommandGeneration::namesAreTakenWhateverTheResultSays()
{
    RefusingBackend backend;
    backend.setItemNames(OrbItemId::Module, {QStringLiteral("Status.x")});
    DlDataAccess dataAccess(backend);
    KdMainData mainData(&dataAccess);
    panel = std::make_unique<TerminalCommandGeneration>(nullptr, mainData, fixture->observer);
    type("addressEdit", QStringLiteral("4"));
    const QStringList items = offeredItems();
    panel.reset();
    QCOMPARE(items, QStringList{QStringLiteral("Status.x")});
}

void TestTerminalCommandGeneration::noNamesLeaveTheListEmpty()
{
    fixture->backend.setItemNames(OrbItemId::Module, {});
    type("addressEdit", QStringLiteral("4"));
    QCOMPARE(offeredItems(), QStringList());
    QTest::mouseClick(child<QPushButton>("getButton"), Qt::LeftButton);
    QVERIFY2(request().contains(QStringLiteral(R"("i":"","v")")), qPrintable(request()));
}

void TestTerminalCommandGeneration::thousandsOfNames()
{
    constexpr int Count = 5000;
    QVector<QString> names;
    QStringList expected;
    for (int i = 0; i < Count; ++i) {
        names.prepend(QStringLiteral("Status.item%1").arg(i, 5, 10, QLatin1Char('0')));
        expected.append(names.constFirst());
    }
    fixture->backend.setItemNames(OrbItemId::Channel, names);
    panel->show();
    type("channelEdit", QStringLiteral("1"));
    QCOMPARE(offeredItems(), expected);
}

QTEST_MAIN(TestTerminalCommandGeneration)
#include "tst_terminal_command_generation.moc"
