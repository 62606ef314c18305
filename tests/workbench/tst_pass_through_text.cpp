#include "workbench/simulator/pass_through_text.h"

#include "tests/workbench/service_fixture.h"

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"

#include <QtTest>

Q_DECLARE_METATYPE(OrbRequestItem)

using namespace simulator;

/// What the journal shows of the messages to a script and from it.
class TestPassThroughText : public QObject, private ServiceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void requestTexts_data();
    void requestTexts();
    void valueText();
    void thereAndBackInOrder();
    void refusedIsNotEntered();

private:
    static OrbRequestItem requestOf(const QString &value)
    {
        OrbRequestItem request;
        request.commandType = OrbRequestItem::SetItem;
        request.address = 3;
        request.channel = 7;
        request.itemName = QStringLiteral("Control.voltageSet");
        request.value = value;
        request.unit = QStringLiteral("V");
        return request;
    }

    static OrbItemValue valueOf(double value)
    {
        OrbItemId id(OrbItemId::Channel);
        id.address = 3;
        id.channel = 7;
        id.itemName = QStringLiteral("Status.voltageMeasure");
        OrbItemValue result(id);
        result.setCommand(QStringLiteral("getItem"));
        result.setValue(value);
        result.setUnit(QStringLiteral("V"));
        return result;
    }

    QStringList lines()
    {
        QStringList result;
        const QVector<JournalEntry> entries = service->journal(0);
        for (const JournalEntry &entry : entries)
            result << journalLine(entry);
        return result;
    }
};

void TestPassThroughText::requestTexts_data()
{
    QTest::addColumn<OrbRequestItem>("request");
    QTest::addColumn<QString>("text");
    QTest::newRow("channel") << requestOf(QStringLiteral("100"))
                             << QStringLiteral("setItem 0.3.7 Control.voltageSet 100 V");
    OrbRequestItem module = requestOf(QString());
    module.commandType = OrbRequestItem::GetItem;
    module.channel = -1;
    module.unit.clear();
    QTest::newRow("module") << module << QStringLiteral("getItem 0.3 Control.voltageSet");
    OrbRequestItem crate = module;
    crate.address = 1000;
    crate.channel = 0;
    QTest::newRow("crate") << crate << QStringLiteral("getItem 0.1000 Control.voltageSet");
    OrbRequestItem odd = requestOf(QStringLiteral("5"));
    odd.commandType = OrbRequestItem::Unknown;
    odd.rawJson = QStringLiteral("{\"hello\":1}");
    QTest::newRow("no command") << odd << QStringLiteral("{\"hello\":1}");
}

void TestPassThroughText::requestTexts()
{
    QFETCH(OrbRequestItem, request);
    QTEST(passThroughText(request), "text");
}

void TestPassThroughText::valueText()
{
    QCOMPARE(passThroughText(valueOf(12.5)), QStringLiteral("getItem 0.3.7 Status.voltageMeasure 12.5 V"));
}

void TestPassThroughText::thereAndBackInOrder()
{
    QCOMPARE(service->activatePassThrough(Local, QStringLiteral("echo")), TarnResult::Success);
    for (const char *value : {"1", "2", "3"})
        QCOMPARE(service->injectPassThroughMessage(Local, requestOf(QString::fromLatin1(value))),
                 TarnResult::Success);
    clock->advance(std::chrono::milliseconds(1500));
    OrbRequestItem first;
    QCOMPARE(service->takePassThroughMessage(Local, first), TarnResult::Success);
    QVector<OrbRequestItem> rest;
    QCOMPARE(service->takePassThroughMessages(Local, rest), TarnResult::Success);
    QCOMPARE(rest.size(), 2);
    QCOMPARE(service->sendPassThroughMessages(Local, {valueOf(1), valueOf(2)}), TarnResult::Success);
    QCOMPARE(lines(),
             (QStringList{
                 QStringLiteral("1.500000 local to the script setItem 0.3.7 Control.voltageSet 1 V"),
                 QStringLiteral("1.500000 local to the script setItem 0.3.7 Control.voltageSet 2 V"),
                 QStringLiteral("1.500000 local to the script setItem 0.3.7 Control.voltageSet 3 V"),
                 QStringLiteral("1.500000 local from the script getItem 0.3.7 Status.voltageMeasure 1 V"),
                 QStringLiteral("1.500000 local from the script getItem 0.3.7 Status.voltageMeasure 2 V"),
             }));
    QCOMPARE(service->takeSentPassThroughMessages(Local).size(), 2);
}

void TestPassThroughText::refusedIsNotEntered()
{
    QCOMPARE(service->sendPassThroughMessages(Local, {valueOf(1)}), TarnResult::Failed);
    OrbRequestItem none;
    QCOMPARE(service->takePassThroughMessage(Local, none), TarnResult::Failed);
    QCOMPARE(service->activatePassThrough(Local, QStringLiteral("echo")), TarnResult::Success);
    QCOMPARE(service->takePassThroughMessage(Local, none), TarnResult::NoData);
    QCOMPARE(lines(), QStringList());
}

QTEST_APPLESS_MAIN(TestPassThroughText)
#include "tst_pass_through_text.moc"
