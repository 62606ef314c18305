#include "hostsdk/kd_plugin_configuration.h"

#include <QtTest>

#include <utility>

class TestKdPluginConfiguration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pushesCopies();
    void findsTheFirstChild();
    void findsNothing();
    void copiesDeeply();
    void moves();
};

namespace
{

KdPluginConfiguration node(const QString &name, const QVariant &value = QVariant())
{
    KdPluginConfiguration made;
    made.name = name;
    made.value = value;
    return made;
}

} // namespace

void TestKdPluginConfiguration::pushesCopies()
{
    KdPluginConfiguration parent;
    KdPluginConfiguration child = node(QStringLiteral("a"), 1);
    parent.pushChild(child);
    child.value = 2;
    parent.pushChild(child);
    QCOMPARE(parent.children.size(), 2);
    QCOMPARE(parent.children.at(0).value, QVariant(1));
    QCOMPARE(parent.children.at(1).value, QVariant(2));
}

void TestKdPluginConfiguration::findsTheFirstChild()
{
    KdPluginConfiguration parent;
    parent.pushChild(node(QStringLiteral("a"), 1));
    parent.pushChild(node(QStringLiteral("b"), 2));
    parent.pushChild(node(QStringLiteral("b"), 3));
    QCOMPARE(parent.findChild(QStringLiteral("b")), &std::as_const(parent.children).at(1));
}

void TestKdPluginConfiguration::findsNothing()
{
    KdPluginConfiguration parent;
    QVERIFY(parent.findChild(QString()) == nullptr);
    parent.pushChild(node(QStringLiteral("a")));
    parent.children.first().pushChild(node(QStringLiteral("below")));
    QVERIFY(parent.findChild(QStringLiteral("A")) == nullptr);
    QVERIFY(parent.findChild(QStringLiteral("below")) == nullptr);
}

void TestKdPluginConfiguration::copiesDeeply()
{
    KdPluginConfiguration original = node(QStringLiteral("a"), 1);
    original.defaultValue = QStringLiteral("d");
    original.saved = true;
    original.visible = true;
    original.pushChild(node(QStringLiteral("b"), 2));
    const KdPluginConfiguration copy(original);
    original.children.first().value = 9;
    original.name.clear();
    QCOMPARE(copy.name, QStringLiteral("a"));
    QCOMPARE(copy.defaultValue, QVariant(QStringLiteral("d")));
    QVERIFY(copy.saved && copy.visible);
    QCOMPARE(copy.children.first().value, QVariant(2));
}

void TestKdPluginConfiguration::moves()
{
    KdPluginConfiguration original = node(QStringLiteral("a"), 1);
    original.pushChild(node(QStringLiteral("b"), 2));
    KdPluginConfiguration target;
    target = std::move(original);
    QCOMPARE(target.name, QStringLiteral("a"));
    QCOMPARE(target.children.size(), 1);
    const KdPluginConfiguration built(std::move(target));
    QCOMPARE(built.value, QVariant(1));
    QCOMPARE(built.children.size(), 1);
}

QTEST_APPLESS_MAIN(TestKdPluginConfiguration)
#include "tst_kd_plugin_configuration.moc"
