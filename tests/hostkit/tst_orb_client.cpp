#include "hostclient/orb_client.h"

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "tests/support/recording_backend.h"

#include <QtTest>

#include <cstring>
#include <limits>

class TestOrbClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void opensConnections();
    void opensScriptConnections();
    void tellsWhichConnectionsAreOpen();
    void readsItems();
    void addressesItems_data();
    void addressesItems();
    void bothOverloadsAreEqual_data();
    void bothOverloadsAreEqual();
    void readsNothing_data();
    void readsNothing();
    void keepsTextsWithinTheirFields_data();
    void keepsTextsWithinTheirFields();
    void writesTimestamps_data();
    void writesTimestamps();
    void writesItems();
    void writesNothing();
    void acceptsNullPointers();
    void readsValues_data();
    void readsValues();
    void emptiesAValueThatCannotBeRead();
    void readsValuesByConnectionIndex();
    void sendsRawRequests();
    void listsCratesAndModules();
    void passesMessagesThrough();
    void setsTheDebugLevel();
    void hasAVersion();

private:
    std::unique_ptr<RecordingBackend> backend;
    std::unique_ptr<OrbClient> client;
};

namespace
{

const QString Name = QStringLiteral("c1");
const QString Path = QStringLiteral("0.4.1.Status.voltageMeasure");

template <std::size_t Size>
QByteArray fieldText(const char (&field)[Size])
{
    return QByteArray(field, static_cast<int>(strnlen(field, Size)));
}

QByteArray bytesOf(const TarnItem &item)
{
    return QByteArray(reinterpret_cast<const char *>(&item), int(sizeof(item)));
}

} // namespace

void TestOrbClient::init()
{
    client.reset();
    backend = std::make_unique<RecordingBackend>();
    backend->setControllers(
        {{Name, QStringLiteral("First")}, {QStringLiteral("c2"), QStringLiteral("Second")}});
    client = std::make_unique<OrbClient>(*backend);
}

void TestOrbClient::opensConnections()
{
    unsigned number = 1;
    QVERIFY(!client->checkHasConnection(QStringLiteral("new")));
    QVERIFY(client->establishConnection(QStringLiteral("new"), QStringLiteral("1.2.3.4:80"),
                                        QStringLiteral("me"), QStringLiteral("secret"), number)
            == TarnResult::Success);
    QCOMPARE(backend->callsOf(QStringLiteral("openConnection")).last().arguments,
             (QStringList{QStringLiteral("new"), QStringLiteral("1.2.3.4:80"), QStringLiteral("me"),
                          QStringLiteral("secret")}));
    QVERIFY(client->checkHasConnection(QStringLiteral("new")));
    QVERIFY(client->closeConnection(QStringLiteral("new")) == TarnResult::Success);
    QVERIFY(!client->checkHasConnection(QStringLiteral("new")));
    QVERIFY(client->closeConnection(QStringLiteral("new")) == TarnResult::NoData);

    backend->setResult(TarnResult::Denied);
    QVERIFY(client->establishConnection(QString(), QString(), QString(), QString(), number)
            == TarnResult::Denied);
}

void TestOrbClient::opensScriptConnections()
{
    unsigned number = 1;
    QVERIFY(client->establishScriptConnection(QStringLiteral("s"), QStringLiteral("host:1"),
                                              QStringLiteral("script"), QStringLiteral("id"),
                                              QStringLiteral("me"), QStringLiteral("secret"), number)
            == TarnResult::Success);
    QCOMPARE(backend->callsOf(QStringLiteral("openScriptConnection")).last().arguments,
             (QStringList{QStringLiteral("s"), QStringLiteral("host:1"), QStringLiteral("script"),
                          QStringLiteral("id"), QStringLiteral("me"), QStringLiteral("secret")}));
    QVERIFY(backend->callsOf(QStringLiteral("openConnection")).isEmpty());
    QVERIFY(client->checkHasConnection(QStringLiteral("s")));

    backend->setResult(TarnResult::NotConnected);
    QVERIFY(client->establishScriptConnection(QString(), QString(), QString(), QString(), QString(),
                                              QString(), number)
            == TarnResult::NotConnected);
}

void TestOrbClient::tellsWhichConnectionsAreOpen()
{
    backend->setLocalConnection(QStringLiteral("c2"));
    QCOMPARE(client->getConnectionsIndices(true),
             (QHash<QString, unsigned>{{Name, 0}, {QStringLiteral("c2"), 1}}));
    QCOMPARE(client->getConnectionsIndices(false), (QHash<QString, unsigned>{{Name, 0}}));
    client->closeConnection(Name);
    QCOMPARE(client->getConnectionsIndices(true), (QHash<QString, unsigned>{{QStringLiteral("c2"), 1}}));
}

void TestOrbClient::readsItems()
{
    backend->setItem(Name, Path,
                     {QStringLiteral("12.5"), QStringLiteral("V"), QStringLiteral("float"), 1500000000.25});
    const TarnItem item = client->getItem(Name, Path);
    QCOMPARE(fieldText(item.path), Path.toLatin1());
    QCOMPARE(fieldText(item.value), QByteArray("12.5"));
    QCOMPARE(fieldText(item.unit), QByteArray("V"));
    QCOMPARE(fieldText(item.type), QByteArray("float"));
    QCOMPARE(fieldText(item.timestamp), QByteArray("1500000000.250"));
}

void TestOrbClient::addressesItems_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("system") << QStringLiteral("Control.reboot");
    QTest::newRow("crate") << QStringLiteral("0.1000.Control.power");
    QTest::newRow("module") << QStringLiteral("1.2.Status.eventCounter");
    QTest::newRow("channel") << Path;
}

void TestOrbClient::addressesItems()
{
    QFETCH(QString, path);
    client->getItem(QStringLiteral("c2"), path);
    client->setItem(QStringLiteral("c2"), path, QStringLiteral("1"));
    const QString place = QStringLiteral("c2:") + path;
    QCOMPARE(backend->callsOf(QStringLiteral("readItem")).last().arguments, QStringList(place));
    QCOMPARE(backend->callsOf(QStringLiteral("writeItem")).last().arguments,
             (QStringList{place, QStringLiteral("1")}));
}

void TestOrbClient::bothOverloadsAreEqual_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("channel") << QByteArray("c1") << Path.toLatin1();
    QTest::newRow("missing item") << QByteArray("c1") << QByteArray("0.1.None");
    QTest::newRow("bad path") << QByteArray("c1") << QByteArray("1.2.3");
    QTest::newRow("empty") << QByteArray("") << QByteArray("");
    QTest::newRow("Latin-1") << QByteArray("c\xe4")
                             << QByteArray("gr\xf6\xdf"
                                           "e.\xff");
    QTest::newRow("huge") << QByteArray(100000, 'c') << "0.1." + QByteArray(1000000, '\xe4');
}

void TestOrbClient::bothOverloadsAreEqual()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, path);
    const QString wideName = QString::fromLatin1(name);
    const QString widePath = QString::fromLatin1(path);
    if (!path.contains("None"))
        backend->setItem(wideName, widePath,
                         {QStringLiteral("äé漢"), QString(), QStringLiteral("string"), 1});

    const TarnItem wide = client->getItem(wideName, widePath);
    const TarnItem narrow = client->getItem(name.constData(), path.constData());
    QCOMPARE(bytesOf(narrow), bytesOf(wide));
    const auto wideResult = client->setItem(wideName, widePath, QStringLiteral("ü1"));
    const auto narrowResult = client->setItem(name.constData(), path.constData(),
                                              "\xfc"
                                              "1");
    QVERIFY(narrowResult == wideResult);
    const QVector<RecordedCall> writes = backend->callsOf(QStringLiteral("writeItem"));
    if (wideResult == TarnResult::Success) {
        QCOMPARE(writes.size(), 2);
        QCOMPARE(writes.at(0).arguments, writes.at(1).arguments);
        QCOMPARE(writes.at(0).arguments.at(1), QStringLiteral("ü1"));
    } else {
        QVERIFY(writes.isEmpty());
    }
}

void TestOrbClient::readsNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("path");
    QTest::newRow("no such connection") << QStringLiteral("c9") << Path;
    QTest::newRow("no connection") << QString() << Path;
    QTest::newRow("no such item") << Name << QStringLiteral("0.4.1.Status.none");
    QTest::newRow("empty path") << Name << QString();
    QTest::newRow("no item") << Name << QStringLiteral("0.4.1");
    QTest::newRow("channel of a crate") << Name << QStringLiteral("0.1000.1.Status.voltageMeasure");
}

void TestOrbClient::readsNothing()
{
    QFETCH(QString, name);
    QFETCH(QString, path);
    backend->setItem(Name, Path, {QStringLiteral("1"), QStringLiteral("V"), QStringLiteral("float"), 1});
    // Nothing of an earlier reading, or of the stack, is left in the record.
    QCOMPARE(bytesOf(client->getItem(name, path)), QByteArray(382, '\0'));
}

void TestOrbClient::keepsTextsWithinTheirFields_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {0, 1, 37, 38, 63, 64, 65, 127, 128, 129, 1000000})
        QTest::addRow("%d", length) << length;
}

void TestOrbClient::keepsTextsWithinTheirFields()
{
    QFETCH(int, length);
    const QString path = QStringLiteral("0.1.") + QString(length + 1, QLatin1Char('p'));
    backend->setItem(Name, path,
                     {QString(length, QLatin1Char('v')), QString(length, QLatin1Char('u')),
                      QString(length, QLatin1Char('t')), 5});
    const TarnItem item = client->getItem(Name, path);
    QCOMPARE(fieldText(item.path), path.toLatin1().left(128));
    QCOMPARE(fieldText(item.value), QByteArray(qMin(length, 128), 'v'));
    QCOMPARE(fieldText(item.unit), QByteArray(qMin(length, 64), 'u'));
    QCOMPARE(fieldText(item.type), QByteArray(qMin(length, 37), 't'));
    QCOMPARE(fieldText(item.timestamp), QByteArray("5.000"));
}

void TestOrbClient::writesTimestamps_data()
{
    QTest::addColumn<double>("timestamp");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("now") << 1700000000.1234 << QByteArray("1700000000.123");
    QTest::newRow("zero") << 0.0 << QByteArray("0.000");
    QTest::newRow("before 1970") << -1.5 << QByteArray("-1.500");
    QTest::newRow("longest with milliseconds") << 1e20 << QByteArray("100000000000000000000.000");
    QTest::newRow("too long with milliseconds") << 1e21 << QByteArray("1e+21");
    QTest::newRow("largest") << -std::numeric_limits<double>::max() << QByteArray("-1.79769313486232e+308");
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << QByteArray();
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << QByteArray();
}

void TestOrbClient::writesTimestamps()
{
    QFETCH(double, timestamp);
    QFETCH(QByteArray, text);
    backend->setItem(Name, Path, {QStringLiteral("1"), QString(), QStringLiteral("int"), timestamp});
    QCOMPARE(fieldText(client->getItem(Name, Path).timestamp), text);
}

void TestOrbClient::writesItems()
{
    QVERIFY(client->setItem(Name, Path, QStringLiteral("漢")) == TarnResult::Success);
    QCOMPARE(backend->callsOf(QStringLiteral("writeItem")).last().arguments.at(1), QStringLiteral("漢"));
    for (const TarnResult result : {TarnResult::Failed, TarnResult::Denied, TarnResult::NoData}) {
        backend->setResult(result);
        QVERIFY(client->setItem(Name, Path, QString()) == result);
    }
}

void TestOrbClient::writesNothing()
{
    QVERIFY(client->setItem(Name, QStringLiteral("1.2.3"), QStringLiteral("1")) == TarnResult::NoData);
    QVERIFY(client->setItem("c1", "", "1") == TarnResult::NoData);
    QVERIFY(backend->callsOf(QStringLiteral("writeItem")).isEmpty());
}

void TestOrbClient::acceptsNullPointers()
{
    const char *const null = nullptr;
    QCOMPARE(bytesOf(client->getItem(null, null)), QByteArray(382, '\0'));
    QVERIFY(client->setItem(null, null, null) == TarnResult::NoData);
    QVERIFY(client->setItem("c1", "0.1.Item", null) == TarnResult::Success);
    QCOMPARE(backend->callsOf(QStringLiteral("writeItem")).last().arguments.at(1), QString());
}

void TestOrbClient::readsValues_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariant>("expected");
    const auto text = [](const char *characters) { return QString::fromLatin1(characters); };
    QTest::newRow("true") << text("bool") << text("true") << QVariant(true);
    QTest::newRow("false") << text("bool") << text("false") << QVariant(false);
    QTest::newRow("no bool") << text("bool") << text("maybe") << QVariant(text("maybe"));
    QTest::newRow("int") << text("int") << text("-5") << QVariant(-5LL);
    QTest::newRow("64 bit") << text("int") << text("9223372036854775807")
                            << QVariant(std::numeric_limits<qlonglong>::max());
    QTest::newRow("no int") << text("int") << text("1.5") << QVariant(text("1.5"));
    QTest::newRow("float") << text("float") << text("2.50") << QVariant(2.5);
    QTest::newRow("no float") << text("float") << text("") << QVariant(text(""));
    QTest::newRow("string") << text("string") << text("5") << QVariant(text("5"));
    QTest::newRow("unknown type") << text("x") << text("5") << QVariant(text("5"));
}

void TestOrbClient::readsValues()
{
    QFETCH(QString, type);
    QFETCH(QString, text);
    QFETCH(QVariant, expected);
    backend->setItem(Name, Path, {text, QStringLiteral("V"), type, 1});
    OrbItemId id(OrbItemId::Channel);
    id.connectionName = Name;
    id.address = 4;
    id.channel = 1;
    id.itemName = QStringLiteral("Status.voltageMeasure");
    OrbItemValue value(id);
    QVERIFY(client->readItemValue(value));
    QCOMPARE(value.value().userType(), expected.userType());
    QCOMPARE(value.value(), expected);
    QCOMPARE(value.value().toString(), expected.toString());
    QCOMPARE(value.unit(), QStringLiteral("V"));
    QVERIFY(value.id() == id);
}

void TestOrbClient::emptiesAValueThatCannotBeRead()
{
    OrbItemValue value{OrbItemId(OrbItemId::System)};
    value.setValue(5);
    value.setUnit(QStringLiteral("V"));
    QVERIFY(!client->readItemValue(value));
    QVERIFY(!value.value().isValid());
    QVERIFY(value.unit().isEmpty());
}

void TestOrbClient::readsValuesByConnectionIndex()
{
    backend->setItem(QStringLiteral("c2"), QStringLiteral("Status.x"),
                     {QStringLiteral("yes"), QString(), QStringLiteral("string"), 1});
    OrbItemId id(OrbItemId::System);
    id.connection = 1;
    id.itemName = QStringLiteral("Status.x");
    OrbItemValue value(id);
    QVERIFY(client->readItemValue(value));
    QCOMPARE(value.value(), QVariant(QStringLiteral("yes")));
}

void TestOrbClient::sendsRawRequests()
{
    QString response = QStringLiteral("old");
    QVERIFY(client->executeRawOrbCommand(Name, QStringLiteral("{}"), response));
    QVERIFY(response.isEmpty());
    QCOMPARE(backend->callsOf(QStringLiteral("rawRequest")).last().arguments,
             (QStringList{Name, QStringLiteral("{}")}));
    backend->setRawAnswer({false, QStringLiteral("no"), {}});
    QVERIFY(!client->executeRawOrbCommand(Name, QString(), response));
    QCOMPARE(response, QStringLiteral("no"));
}

void TestOrbClient::listsCratesAndModules()
{
    OrbItemId crate(OrbItemId::Crate);
    crate.line = 1;
    crate.address = 1000;
    OrbItemId module(OrbItemId::Module);
    module.address = 3;
    backend->setCrates({crate});
    backend->setModules({module, module});
    backend->setCrateModules({module});
    QVector<OrbItemId> ids;
    QVERIFY(client->getCrates(Name, ids));
    QVERIFY(ids == QVector<OrbItemId>{crate});
    QVERIFY(client->getModules(Name, ids));
    QVERIFY((ids == QVector<OrbItemId>{module, module}));
    // The identifier of a crate is built from its place alone; the connection comes with the call.
    QVERIFY(client->getCrateModules(Name, crate, ids));
    QVERIFY(ids == QVector<OrbItemId>{module});
    QCOMPARE(backend->callsOf(QStringLiteral("crateModules")).last().arguments,
             QStringList(QStringLiteral("c1:1.1000")));
    const QString none = QStringLiteral("none");
    QVERIFY(!client->getCrates(none, ids));
    QVERIFY(!client->getModules(none, ids));
    QVERIFY(!client->getCrateModules(none, crate, ids));
}

void TestOrbClient::passesMessagesThrough()
{
    OrbRequestItem first;
    first.commandType = OrbRequestItem::GetItem;
    OrbRequestItem second;
    second.commandType = OrbRequestItem::SetItem;
    backend->setPassThroughMessages({first, second, second});
    QVERIFY(client->activateDataPassThrough(Name, QStringLiteral("script")) == TarnResult::Success);
    QCOMPARE(backend->callsOf(QStringLiteral("activatePassThrough")).last().arguments,
             (QStringList{Name, QStringLiteral("script")}));

    OrbRequestItem request;
    QVERIFY(client->getNextPassThroughMessage(Name, request) == TarnResult::Success);
    QCOMPARE(request.getCommandTypeAsString(), QStringLiteral("getItem"));
    QVector<OrbRequestItem> requests;
    QVERIFY(client->getPassThroughMessageList(Name, requests) == TarnResult::Success);
    QCOMPARE(requests.size(), 2);
    QVERIFY(client->getPassThroughMessageList(Name, requests) == TarnResult::Success);
    QVERIFY(requests.isEmpty());
    QVERIFY(client->getNextPassThroughMessage(Name, request) == TarnResult::NoData);

    OrbItemValue value;
    value.setUnit(QStringLiteral("V"));
    QVERIFY(client->sendPassThroughMessage(Name, value) == TarnResult::Success);
    QVERIFY(client->sendPassThroughMessage(Name, QVector<OrbItemValue>{value, value}) == TarnResult::Success);
    QCOMPARE(backend->sentValues().size(), 3);
    QCOMPARE(backend->sentValues().first().unit(), QStringLiteral("V"));
    QCOMPARE(backend->callsOf(QStringLiteral("sendPassThroughMessages")).size(), 2);
}

void TestOrbClient::setsTheDebugLevel()
{
    QVERIFY(client->setDebugLevel(2) == TarnResult::Success);
    QCOMPARE(backend->callsOf(QStringLiteral("setDebugLevel")).last().arguments,
             QStringList(QStringLiteral("2")));
    backend->setResult(TarnResult::Failed);
    QVERIFY(client->setDebugLevel(-1) == TarnResult::Failed);
}

void TestOrbClient::hasAVersion()
{
    QVERIFY(QRegularExpression(QStringLiteral("^\\d+\\.\\d+\\.\\d+$"))
                .match(OrbClient::getVersionString())
                .hasMatch());
}

QTEST_GUILESS_MAIN(TestOrbClient)
#include "tst_orb_client.moc"
