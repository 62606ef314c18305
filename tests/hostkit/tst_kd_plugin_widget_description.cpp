#include "hostsdk/kd_plugin_widget_description.h"

#include <QtTest>

#include <utility>

class TestKdPluginWidgetDescription : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isEmptyByDefault();
    void copiesAndMoves();
};

namespace
{

KdPluginWidgetDescription makeDescription()
{
    KdPluginWidgetDescription description;
    description.title = QStringLiteral("Tool");
    description.flag1 = true;
    description.flag3 = true;
    description.value1 = 4;
    description.valueList = {4, 5};
    description.value2 = 301;
    description.value3 = 11;
    description.widgetIndex = 1;
    description.uniqueWidgetClassId = 77;
    return description;
}

void compareWithMade(const KdPluginWidgetDescription &description)
{
    QCOMPARE(description.title, QStringLiteral("Tool"));
    QVERIFY(description.flag1 && !description.flag2 && description.flag3);
    QCOMPARE(description.value1, 4);
    QCOMPARE(description.valueList, (QList<qint32>{4, 5}));
    QCOMPARE(description.value2, 301);
    QCOMPARE(description.value3, 11);
    QCOMPARE(description.widgetIndex, 1);
    QCOMPARE(description.uniqueWidgetClassId, 77u);
}

} // namespace

void TestKdPluginWidgetDescription::isEmptyByDefault()
{
    const KdPluginWidgetDescription description;
    QVERIFY(description.title.isEmpty());
    QVERIFY(!description.flag1 && !description.flag2 && !description.flag3);
    QCOMPARE(description.value1 | description.value2 | description.value3 | description.widgetIndex, 0);
    QVERIFY(description.valueList.isEmpty());
    QCOMPARE(description.uniqueWidgetClassId, 0u);
}

void TestKdPluginWidgetDescription::copiesAndMoves()
{
    KdPluginWidgetDescription original = makeDescription();
    const KdPluginWidgetDescription copy(original);
    KdPluginWidgetDescription assigned;
    assigned = original;
    original.valueList.clear();
    compareWithMade(copy);
    compareWithMade(assigned);

    KdPluginWidgetDescription moved(std::move(assigned));
    compareWithMade(moved);
    KdPluginWidgetDescription moveAssigned;
    moveAssigned = std::move(moved);
    compareWithMade(moveAssigned);

    QList<KdPluginWidgetDescription> list;
    list.append(moveAssigned);
    compareWithMade(list.constFirst());
}

QTEST_APPLESS_MAIN(TestKdPluginWidgetDescription)
#include "tst_kd_plugin_widget_description.moc"
