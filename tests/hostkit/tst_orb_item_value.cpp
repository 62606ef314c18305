#include "hostclient/orb_item_value.h"

#include <QtTest>

#include <utility>

class TestOrbItemValue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isEmptyByDefault();
    void keepsWhatItIsGiven();
    void copiesAndMoves();
};

namespace
{

OrbItemValue makeValue()
{
    OrbItemId id(OrbItemId::Channel);
    id.line = 2;
    id.itemName = QStringLiteral("Control.voltageSet");
    OrbItemValue value(id);
    value.setValue(12.5);
    value.setUnit(QStringLiteral("V"));
    value.setCommand(QStringLiteral("setItem"));
    return value;
}

void compareWithMade(const OrbItemValue &value)
{
    QCOMPARE(value.id().line, 2u);
    QCOMPARE(value.id().itemName, QStringLiteral("Control.voltageSet"));
    QCOMPARE(value.value(), QVariant(12.5));
    QCOMPARE(value.unit(), QStringLiteral("V"));
    QCOMPARE(value.command(), QStringLiteral("setItem"));
}

} // namespace

void TestOrbItemValue::isEmptyByDefault()
{
    const OrbItemValue value;
    QVERIFY(value.id() == OrbItemId());
    QVERIFY(!value.value().isValid());
    QVERIFY(value.unit().isEmpty());
    QVERIFY(value.command().isEmpty());
}

void TestOrbItemValue::keepsWhatItIsGiven()
{
    OrbItemValue value = makeValue();
    compareWithMade(value);
    value.setId(OrbItemId(OrbItemId::System));
    QVERIFY(value.id() == OrbItemId(OrbItemId::System));
}

void TestOrbItemValue::copiesAndMoves()
{
    OrbItemValue original = makeValue();
    const OrbItemValue copy(original);
    OrbItemValue assigned;
    assigned = original;
    original.setUnit(QStringLiteral("kV"));
    compareWithMade(copy);
    compareWithMade(assigned);

    OrbItemValue moved(std::move(assigned));
    compareWithMade(moved);
    OrbItemValue moveAssigned;
    moveAssigned = std::move(moved);
    compareWithMade(moveAssigned);
}

QTEST_APPLESS_MAIN(TestOrbItemValue)
#include "tst_orb_item_value.moc"
