#include "hostsdk/kd_plugin_configuration.h"
#include "hostsdk/kd_plugin_description.h"
#include "tests/command_terminal/context_translator.h"
#include "tests/plugin/built_plugin.h"
#include "tests/support/recording_observer.h"

#include <QtTest>

namespace
{

KdPluginConfiguration node(const QString &name, const QVariant &value)
{
    KdPluginConfiguration configuration;
    configuration.name = name;
    configuration.value = value;
    return configuration;
}

const QString commandFile = QStringLiteral("CommandFile");
const QString pythonFile = QStringLiteral("CommandFilePython");

/// A tree as the host keeps it: other plug-ins' nodes around ours, and in ours the children given.
KdPluginConfiguration treeWith(const QList<QPair<QString, QVariant>> &entries)
{
    KdPluginConfiguration settings = node(QStringLiteral("Commands"), QString());
    for (const auto &[name, value] : entries)
        settings.pushChild(node(name, value));
    KdPluginConfiguration root;
    root.pushChild(node(QStringLiteral("Another plug-in"), 1));
    root.pushChild(settings);
    root.pushChild(node(QStringLiteral("A third"), 2));
    return root;
}

} // namespace

/// What the host asks of the plug-in before a tool exists: description, registration, settings.
class TestTerminalPlugin : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void description();
    void widgetDescriptions_data();
    void widgetDescriptions();
    void descriptionReplacesWhatWasThere();
    void descriptionIsTranslated();

    void registersTwoMenuEntries();
    void registersTwoOnly_data();
    void registersTwoOnly();
    void registersAgain();
    void largestClassId();
    void menuPathsAreTranslated();

    void savesNothingWhenThereIsNothing();
    void savedNodes();
    void savesBesideOthers();
    void theNodeIsTranslated();
    void loadsAndSaves_data();
    void loadsAndSaves();
    void loadWithoutItsNodeKeepsTheLists();
    void loadReplacesTheLists();
    void loadOfAnEmptyNodeEmptiesTheLists();
    void loadTakesTheFirstNodeOfTheName();
    void wrongTypes_data();
    void wrongTypes();
    void otherNamesAreIgnored();
    void thousandsOfEntries();

private:
    /// The values of the saved children of that name, in order.
    QStringList saved(const QString &name)
    {
        KdPluginConfiguration root;
        plugin->saveConfiguration(root);
        QStringList values;
        const KdPluginConfiguration *settings = root.findChild(QStringLiteral("Commands"));
        if (settings) {
            for (const KdPluginConfiguration &child : settings->children) {
                if (child.name == name)
                    values.append(child.value.toString());
            }
        }
        return values;
    }
    KdPluginDescription described(const QVector<quint32> &classIds)
    {
        KdPluginDescription description;
        for (const quint32 id : classIds) {
            KdPluginWidgetDescription widget;
            widget.uniqueWidgetClassId = id;
            description.widgets.append(widget);
        }
        return description;
    }

    BuiltPlugin built;
    KdPluginInterface *plugin = nullptr;
    RecordingObserver host;
};

void TestTerminalPlugin::init()
{
    built.destroyInstance();
    plugin = built.plugin();
    QVERIFY(plugin);
    host.clear();
}

// Description

void TestTerminalPlugin::description()
{
    KdPluginDescription description;
    plugin->getPluginDescription(description);
    QCOMPARE(description.pluginId, 9000);
    QCOMPARE(description.name, QStringLiteral("Commands"));
    QCOMPARE(description.widgets.size(), 2);
}

void TestTerminalPlugin::widgetDescriptions_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("value2");
    QTest::newRow("Terminal") << 0 << 301;
    QTest::newRow("Python Terminal") << 1 << 302;
}

void TestTerminalPlugin::widgetDescriptions()
{
    QFETCH(int, index);
    QFETCH(int, value2);
    KdPluginDescription description;
    plugin->getPluginDescription(description);
    const KdPluginWidgetDescription widget = description.widgets.at(index);
    QCOMPARE(widget.title, QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(widget.flag1, true);
    QCOMPARE(widget.flag2, false);
    QCOMPARE(widget.flag3, true);
    QCOMPARE(widget.value1, 4);
    QCOMPARE(widget.valueList, QList<qint32>{4});
    QCOMPARE(widget.value2, value2);
    QCOMPARE(widget.value3, 11);
    QCOMPARE(widget.widgetIndex, index);
    QCOMPARE(widget.uniqueWidgetClassId, KdPluginWidgetDescription().uniqueWidgetClassId);
}

void TestTerminalPlugin::descriptionReplacesWhatWasThere()
{
    KdPluginDescription description = described({1, 2, 3});
    description.pluginId = 7;
    description.name = QStringLiteral("other");
    plugin->getPluginDescription(description);
    QCOMPARE(description.pluginId, 9000);
    QCOMPARE(description.name, QStringLiteral("Commands"));
    QCOMPARE(description.widgets.size(), 2);
    QCOMPARE(description.widgets.at(0).value2, 301);
}

void TestTerminalPlugin::descriptionIsTranslated()
{
    const ContextTranslator translator;
    KdPluginDescription description;
    plugin->getPluginDescription(description);
    QCOMPARE(description.name, QStringLiteral("[TerminalPlugin]Commands"));
    QCOMPARE(description.widgets.at(0).title, QStringLiteral("[TerminalPlugin]Terminal"));
    QCOMPARE(description.widgets.at(1).title, QStringLiteral("[TerminalPlugin]Python Terminal"));
}

// Registration

void TestTerminalPlugin::registersTwoMenuEntries()
{
    plugin->registerWidgets(described({11, 22}), host);
    QCOMPARE(host.types(), (std::vector<quint32>{178, 178}));
    const KdChildEvent &terminal = host.events().at(0);
    QCOMPARE(terminal.intArguments, (QVector<qint64>{104, 11}));
    QCOMPARE(terminal.stringArguments,
             (QStringList{QStringLiteral("Window"), QStringLiteral("Tools"), QStringLiteral("Terminal")}));
    const KdChildEvent &python = host.events().at(1);
    QCOMPARE(python.intArguments, (QVector<qint64>{104, 22}));
    QCOMPARE(
        python.stringArguments,
        (QStringList{QStringLiteral("Window"), QStringLiteral("Tools"), QStringLiteral("Python Terminal")}));
}

void TestTerminalPlugin::registersTwoOnly_data()
{
    QTest::addColumn<QVector<quint32>>("classIds");
    QTest::newRow("none") << QVector<quint32>{};
    QTest::newRow("one") << QVector<quint32>{1};
    QTest::newRow("three") << QVector<quint32>{1, 2, 3};
}

void TestTerminalPlugin::registersTwoOnly()
{
    QFETCH(QVector<quint32>, classIds);
    plugin->registerWidgets(described(classIds), host);
    QVERIFY(host.events().empty());
}

void TestTerminalPlugin::registersAgain()
{
    plugin->registerWidgets(described({11, 22}), host);
    plugin->registerWidgets(described({33, 44}), host);
    QCOMPARE(host.events().size(), std::size_t{4});
    QCOMPARE(host.events().at(2).getIntArgument(1), qint64{33});
    QCOMPARE(host.events().at(3).getIntArgument(1), qint64{44});
}

void TestTerminalPlugin::largestClassId()
{
    plugin->registerWidgets(described({4294967295U, 4294967294U}), host);
    QCOMPARE(host.events().at(0).getIntArgument(1), qint64{4294967295});
    QCOMPARE(host.events().at(1).getIntArgument(1), qint64{4294967294});
}

void TestTerminalPlugin::menuPathsAreTranslated()
{
    const ContextTranslator translator;
    plugin->registerWidgets(described({11, 22}), host);
    static const QStringList lastTexts{QStringLiteral("Terminal"), QStringLiteral("Python Terminal")};
    for (int i = 0; i < 2; ++i) {
        const QStringList path = host.events().at(std::size_t(i)).stringArguments;
        QCOMPARE(path.size(), 3);
        const QString context = path.at(0).section(QLatin1Char(']'), 0, 0) + QLatin1Char(']');
        QVERIFY2(context.startsWith(QLatin1String("[Terminal")), qPrintable(context));
        QCOMPARE(path,
                 (QStringList{context + QStringLiteral("Window"), context + QStringLiteral("Tools"),
                              context + lastTexts.at(i)}));
    }
}

// Settings

void TestTerminalPlugin::savesNothingWhenThereIsNothing()
{
    KdPluginConfiguration root;
    QVERIFY(!plugin->saveConfiguration(root));
    QVERIFY(root.children.isEmpty());
}

void TestTerminalPlugin::savedNodes()
{
    QVERIFY(plugin->loadConfiguration(treeWith({{pythonFile, QStringLiteral("p1")},
                                                {commandFile, QStringLiteral("c1")},
                                                {commandFile, QStringLiteral("c2")}})));
    KdPluginConfiguration root;
    QVERIFY(plugin->saveConfiguration(root));
    QCOMPARE(root.children.size(), 1);
    const KdPluginConfiguration settings = root.children.constFirst();
    QCOMPARE(settings.name, QStringLiteral("Commands"));

    // All command files, then all Python files.
    const QVector<QPair<QString, QString>> expected{{commandFile, QStringLiteral("c1")},
                                                    {commandFile, QStringLiteral("c2")},
                                                    {pythonFile, QStringLiteral("p1")}};
    QCOMPARE(settings.children.size(), expected.size());
    QList<KdPluginConfiguration> nodes = settings.children;
    for (int i = 0; i < expected.size(); ++i) {
        QCOMPARE(nodes.at(i).name, expected.at(i).first);
        QCOMPARE(nodes.at(i).value, QVariant(expected.at(i).second));
        QVERIFY(nodes.at(i).children.isEmpty());
    }
    nodes.append(settings);
    for (const KdPluginConfiguration &each : std::as_const(nodes)) {
        QCOMPARE(each.defaultValue.type(), QVariant::String);
        QCOMPARE(each.defaultValue.toString(), QString());
        QVERIFY(each.saved);
        QVERIFY(each.visible);
    }
}

void TestTerminalPlugin::savesBesideOthers()
{
    plugin->loadConfiguration(treeWith({{pythonFile, QStringLiteral("p")}}));
    KdPluginConfiguration root;
    root.pushChild(node(QStringLiteral("Another plug-in"), 1));
    QVERIFY(plugin->saveConfiguration(root));
    QCOMPARE(root.children.size(), 2);
    QCOMPARE(root.children.at(0).name, QStringLiteral("Another plug-in"));
    QCOMPARE(root.children.at(1).name, QStringLiteral("Commands"));
}

void TestTerminalPlugin::theNodeIsTranslated()
{
    const ContextTranslator translator;
    KdPluginConfiguration settings = node(QStringLiteral("[QObject]Commands"), QString());
    settings.pushChild(node(commandFile, QStringLiteral("c")));
    KdPluginConfiguration loaded;
    loaded.pushChild(settings);
    QVERIFY(plugin->loadConfiguration(loaded));
    KdPluginConfiguration root;
    QVERIFY(plugin->saveConfiguration(root));
    QCOMPARE(root.children.constFirst().name, QStringLiteral("[QObject]Commands"));
    QCOMPARE(root.children.constFirst().children.constFirst().name, commandFile);
}

void TestTerminalPlugin::loadsAndSaves_data()
{
    QTest::addColumn<QStringList>("commands");
    QTest::addColumn<QStringList>("pythons");
    const auto list = [](const char *texts) {
        return QString::fromUtf8(texts).split(QLatin1Char('|'), Qt::SkipEmptyParts);
    };
    QTest::newRow("command files") << list("/b|/a|/c") << QStringList();
    QTest::newRow("Python files") << QStringList() << list("/b|/a|/c");
    QTest::newRow("both") << list("/1|/2") << list("/3|/4");
    QTest::newRow("a path twice") << list("/1|/1") << list("/1|/1");
    QTest::newRow("beyond ASCII") << list("/Größe/😀.txt") << list("C:\\Befehle\\a b.py");
    QTest::newRow("more than ten") << list("1|2|3|4|5|6|7|8|9|10|11|12") << QStringList();
}

void TestTerminalPlugin::loadsAndSaves()
{
    QFETCH(QStringList, commands);
    QFETCH(QStringList, pythons);
    QList<QPair<QString, QVariant>> entries;
    // Mixed, as a host that sorts might keep them.
    for (int i = 0; i < qMax(commands.size(), pythons.size()); ++i) {
        if (i < pythons.size())
            entries.append({pythonFile, pythons.at(i)});
        if (i < commands.size())
            entries.append({commandFile, commands.at(i)});
    }
    QVERIFY(plugin->loadConfiguration(treeWith(entries)));
    QCOMPARE(saved(commandFile), commands);
    QCOMPARE(saved(pythonFile), pythons);
}

void TestTerminalPlugin::loadWithoutItsNodeKeepsTheLists()
{
    plugin->loadConfiguration(treeWith({{commandFile, QStringLiteral("c")}}));
    KdPluginConfiguration other;
    other.pushChild(node(QStringLiteral("commands"), QString())); // another name: the case counts
    other.pushChild(node(commandFile, QStringLiteral("misplaced")));
    QVERIFY(!plugin->loadConfiguration(other));
    QVERIFY(!plugin->loadConfiguration(KdPluginConfiguration()));
    QCOMPARE(saved(commandFile), QStringList{QStringLiteral("c")});
}

void TestTerminalPlugin::loadReplacesTheLists()
{
    plugin->loadConfiguration(
        treeWith({{commandFile, QStringLiteral("c")}, {pythonFile, QStringLiteral("p")}}));
    QVERIFY(plugin->loadConfiguration(treeWith({{commandFile, QStringLiteral("new")}})));
    QCOMPARE(saved(commandFile), QStringList{QStringLiteral("new")});
    QCOMPARE(saved(pythonFile), QStringList());
}

void TestTerminalPlugin::loadOfAnEmptyNodeEmptiesTheLists()
{
    plugin->loadConfiguration(treeWith({{commandFile, QStringLiteral("c")}}));
    QVERIFY(plugin->loadConfiguration(treeWith({})));
    KdPluginConfiguration root;
    QVERIFY(!plugin->saveConfiguration(root));
}

void TestTerminalPlugin::loadTakesTheFirstNodeOfTheName()
{
    KdPluginConfiguration root = treeWith({{commandFile, QStringLiteral("first")}});
    root.pushChild(treeWith({{commandFile, QStringLiteral("second")}}).children.at(1));
    QVERIFY(plugin->loadConfiguration(root));
    QCOMPARE(saved(commandFile), QStringList{QStringLiteral("first")});
}

void TestTerminalPlugin::wrongTypes_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("missing") << QVariant() << QString();
    QTest::newRow("number") << QVariant(12) << QStringLiteral("12");
    QTest::newRow("truth") << QVariant(true) << QStringLiteral("true");
    QTest::newRow("bytes") << QVariant(QByteArrayLiteral("/a")) << QStringLiteral("/a");
    QTest::newRow("list") << QVariant(QVariantList{1, 2}) << QString();
    QTest::newRow("map") << QVariant(QVariantMap{{QStringLiteral("a"), 1}}) << QString();
}

void TestTerminalPlugin::wrongTypes()
{
    QFETCH(QVariant, value);
    QFETCH(QString, expected);
    QVERIFY(plugin->loadConfiguration(treeWith({{commandFile, QStringLiteral("before")},
                                                {commandFile, value},
                                                {pythonFile, value},
                                                {commandFile, QStringLiteral("after")}})));
    QCOMPARE(saved(commandFile), (QStringList{QStringLiteral("before"), expected, QStringLiteral("after")}));
    QCOMPARE(saved(pythonFile), QStringList{expected});
}

void TestTerminalPlugin::otherNamesAreIgnored()
{
    KdPluginConfiguration root = treeWith({{QStringLiteral("commandFile"), QStringLiteral("1")},
                                           {QStringLiteral("CommandFiles"), QStringLiteral("2")},
                                           {QString(), QStringLiteral("3")},
                                           {commandFile, QStringLiteral("4")}});
    // Nor is what stands deeper looked at.
    root.children[1].children[0].pushChild(node(commandFile, QStringLiteral("5")));
    QVERIFY(plugin->loadConfiguration(root));
    QCOMPARE(saved(commandFile), QStringList{QStringLiteral("4")});
    QCOMPARE(saved(pythonFile), QStringList());
}

void TestTerminalPlugin::thousandsOfEntries()
{
    QList<QPair<QString, QVariant>> entries;
    QStringList expected;
    for (int i = 0; i < 5000; ++i) {
        expected.append(QStringLiteral("/file%1").arg(i));
        entries.append({commandFile, expected.constLast()});
    }
    QVERIFY(plugin->loadConfiguration(treeWith(entries)));
    QCOMPARE(saved(commandFile), expected);
}

QTEST_MAIN(TestTerminalPlugin)
#include "tst_terminal_plugin.moc"
