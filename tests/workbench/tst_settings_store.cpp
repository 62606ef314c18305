#include "workbench/app/settings_store.h"

#include "hostsdk/kd_plugin_configuration.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using workbench::SettingsStore;
using workbench::WindowLayout;

namespace
{

KdPluginConfiguration treeWith(const QString &value)
{
    KdPluginConfiguration node;
    node.name = QStringLiteral("Commands");
    node.value = value;
    node.saved = true;
    KdPluginConfiguration tree;
    tree.pushChild(node);
    return tree;
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestSettingsStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsSavedYet()
    {
        QTemporaryDir dir;
        const SettingsStore store(dir.path());
        KdPluginConfiguration tree;
        QCOMPARE(store.loadConfiguration(tree), QString());
        QVERIFY(tree.children.isEmpty());
        QVERIFY(!store.loadLayout().saved);
    }

    void keepsTheConfiguration()
    {
        QTemporaryDir dir;
        const SettingsStore store(dir.filePath(QStringLiteral("made/by/need")));
        QCOMPARE(store.saveConfiguration(treeWith(QStringLiteral("/a/b.txt"))), QString());
        KdPluginConfiguration tree;
        QCOMPARE(store.loadConfiguration(tree), QString());
        QCOMPARE(tree.children.size(), 1);
        QCOMPARE(tree.children.constFirst().value.toString(), QStringLiteral("/a/b.txt"));
    }

    void keepsTheLayout()
    {
        QTemporaryDir dir;
        const SettingsStore store(dir.path());
        WindowLayout layout;
        layout.geometry = QByteArray("\0g\xff", 3);
        layout.state = QByteArray("\0s", 2);
        layout.systemColumns = QByteArray("c");
        layout.openTools = QStringList({QStringLiteral("tool.1.0"), QStringLiteral("tool.1.1")});
        QCOMPARE(store.saveLayout(layout), QString());
        const WindowLayout loaded = SettingsStore(dir.path()).loadLayout();
        QVERIFY(loaded.saved);
        QCOMPARE(loaded.geometry, layout.geometry);
        QCOMPARE(loaded.state, layout.state);
        QCOMPARE(loaded.systemColumns, layout.systemColumns);
        QCOMPARE(loaded.openTools, layout.openTools);
    }

    // The columns had another order when they were kept under this name.
    void takesNoColumnsOfAnEarlierBuild()
    {
        QTemporaryDir dir;
        const SettingsStore store(dir.path());
        WindowLayout layout;
        layout.state = QByteArray("s");
        layout.systemColumns = QByteArray("c");
        QCOMPARE(store.saveLayout(layout), QString());
        QByteArray file = read(store.layoutFile());
        QCOMPARE(file.count("\"systemHeader\""), 1);
        write(store.layoutFile(), file.replace("systemHeader", "systemColumns"));
        const WindowLayout loaded = store.loadLayout();
        QVERIFY(loaded.saved);
        QCOMPARE(loaded.systemColumns, QByteArray());
    }

    void remembersThatNoToolWasOpen()
    {
        QTemporaryDir dir;
        const SettingsStore store(dir.path());
        WindowLayout layout;
        layout.state = QByteArray("s");
        QCOMPARE(store.saveLayout(layout), QString());
        QVERIFY(store.loadLayout().saved);
        QCOMPARE(store.loadLayout().openTools, QStringList());
    }

    void setsADamagedConfigurationAside()
    {
        QTemporaryDir dir;
        const SettingsStore store(dir.path());
        const QByteArray damaged = "{\"children\": [{\"na";
        write(store.configurationFile(), damaged);
        KdPluginConfiguration tree;
        const QString complaint = store.loadConfiguration(tree);
        QVERIFY2(complaint.contains(store.configurationFile()), qUtf8Printable(complaint));
        QVERIFY(tree.children.isEmpty());
        QCOMPARE(store.saveConfiguration(treeWith(QStringLiteral("new"))), QString());
        QCOMPARE(read(store.configurationFile() + QStringLiteral(".damaged")), damaged);
    }

    void replacesADamagedLayout_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut off") << QByteArray("{\"children\": [{\"name\": \"state\", \"val");
        QTest::newRow("a number for bytes")
            << QByteArray(R"({"children": [{"name": "state", "value": {"int": []}}]})");
        QTest::newRow("another tree") << QByteArray(R"({"children": [{"name": "Commands", "saved": true}]})");
        QTest::newRow("noise") << QByteArray(5000, '\xa7');
    }

    void replacesADamagedLayout()
    {
        QFETCH(QByteArray, bytes);
        QTemporaryDir dir;
        const SettingsStore store(dir.path());
        write(store.layoutFile(), bytes);
        QVERIFY(!store.loadLayout().saved);
        WindowLayout layout;
        layout.state = QByteArray("s");
        QCOMPARE(store.saveLayout(layout), QString());
        QCOMPARE(store.loadLayout().state, layout.state);
    }

    void saysWhatCannotBeWritten()
    {
        QTemporaryDir dir;
        write(dir.filePath(QStringLiteral("file")), "in the way");
        const SettingsStore store(dir.filePath(QStringLiteral("file/below")));
        const QString configuration = store.saveConfiguration(treeWith(QStringLiteral("x")));
        QVERIFY2(configuration.startsWith(QStringLiteral("Settings not saved")),
                 qUtf8Printable(configuration));
        const QString layout = store.saveLayout({});
        QVERIFY2(layout.startsWith(QStringLiteral("Layout not saved")), qUtf8Printable(layout));
    }

    void keepsNothingWithoutAFolder()
    {
        const SettingsStore store((QString()));
        KdPluginConfiguration tree;
        WindowLayout layout;
        layout.state = QByteArray("s");
        QCOMPARE(store.saveConfiguration(treeWith(QStringLiteral("x"))), QString());
        QCOMPARE(store.saveLayout(layout), QString());
        QCOMPARE(store.loadConfiguration(tree), QString());
        QVERIFY(tree.children.isEmpty());
        QVERIFY(!store.loadLayout().saved);
    }
};

QTEST_GUILESS_MAIN(TestSettingsStore)

#include "tst_settings_store.moc"
