#include "workbench/hostkit/configuration_file.h"

#include "hostsdk/kd_plugin_configuration.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>

class TestConfigurationFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void valuesComeBack_data();
    void valuesComeBack();
    void notANumberComesBack();
    void otherValuesBecomeTexts();
    void nodesComeBack();
    void thousandsComeBack();
    void depthIsLimited_data();
    void depthIsLimited();
    void wrongFieldsAreSkipped_data();
    void wrongFieldsAreSkipped();
    void wrongChildrenAreSkipped();
    void malformedFilesAreRefused_data();
    void malformedFilesAreRefused();
    void everyTruncationIsRefused();
    void missingFilesAreRefused();
    void foldersAreMade();
    void failedSavesSaySo();
    void failedSavesKeepTheOldFile();

private:
    QString path(const QString &name = QStringLiteral("configuration.json")) const
    {
        return folder->filePath(name);
    }
    void write(const QByteArray &text);

    std::unique_ptr<QTemporaryDir> folder;
};

namespace
{

bool equal(const KdPluginConfiguration &a, const KdPluginConfiguration &b)
{
    if (a.name != b.name || a.value != b.value || a.value.userType() != b.value.userType()
        || a.defaultValue != b.defaultValue || a.saved != b.saved || a.visible != b.visible
        || a.children.size() != b.children.size())
        return false;
    for (int i = 0; i < a.children.size(); ++i) {
        if (!equal(a.children.at(i), b.children.at(i)))
            return false;
    }
    return true;
}

/// A root with `depth` nodes below it, one below the other.
KdPluginConfiguration chain(int depth)
{
    KdPluginConfiguration node;
    for (int i = 0; i < depth; ++i) {
        KdPluginConfiguration parent;
        parent.name = QString::number(i);
        parent.pushChild(node);
        node = parent;
    }
    return node;
}

} // namespace

void TestConfigurationFile::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
}

void TestConfigurationFile::write(const QByteArray &text)
{
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), qint64(text.size()));
}

void TestConfigurationFile::valuesComeBack_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("none") << QVariant();
    QTest::newRow("true") << QVariant(true);
    QTest::newRow("false") << QVariant(false);
    QTest::newRow("zero") << QVariant(0);
    QTest::newRow("smallest int") << QVariant(std::numeric_limits<int>::min());
    QTest::newRow("largest unsigned") << QVariant(std::numeric_limits<unsigned>::max());
    QTest::newRow("smallest 64 bit") << QVariant(std::numeric_limits<qlonglong>::min());
    QTest::newRow("largest unsigned 64 bit") << QVariant(std::numeric_limits<qulonglong>::max());
    QTest::newRow("whole double") << QVariant(5.0);
    QTest::newRow("small double") << QVariant(std::numeric_limits<double>::denorm_min());
    QTest::newRow("third") << QVariant(1.0 / 3.0);
    QTest::newRow("infinity") << QVariant(std::numeric_limits<double>::infinity());
    QTest::newRow("negative infinity") << QVariant(-std::numeric_limits<double>::infinity());
    QTest::newRow("empty text") << QVariant(QStringLiteral(""));
    QTest::newRow("text") << QVariant(QStringLiteral("a \"b\" \\ \n\t\u0001 größe 漢 😀 שלום"));
    QTest::newRow("text with NUL") << QVariant(QString(3, QChar(0)));
    QTest::newRow("long text") << QVariant(QString(1000000, QLatin1Char('x')));
    QTest::newRow("empty list") << QVariant(QStringList());
    QTest::newRow("list") << QVariant(QStringList{QStringLiteral("a"), QString(), QStringLiteral("a")});
    QTest::newRow("empty bytes") << QVariant(QByteArray(""));
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(static_cast<char>(i));
    QTest::newRow("all bytes") << QVariant(bytes);
}

void TestConfigurationFile::valuesComeBack()
{
    QFETCH(QVariant, value);
    KdPluginConfiguration tree;
    tree.value = value;
    tree.defaultValue = value;
    QString error;
    QVERIFY2(hostkit::saveConfiguration(tree, path(), &error), qPrintable(error));
    KdPluginConfiguration loaded;
    loaded.value = QStringLiteral("old");
    QVERIFY2(hostkit::loadConfiguration(loaded, path(), &error), qPrintable(error));
    QCOMPARE(loaded.value.userType(), value.userType());
    QCOMPARE(loaded.value, value);
    QCOMPARE(loaded.defaultValue, value);
    QVERIFY(error.isEmpty());
}

void TestConfigurationFile::notANumberComesBack()
{
    KdPluginConfiguration tree;
    tree.value = std::nan("");
    QVERIFY(hostkit::saveConfiguration(tree, path(), nullptr));
    KdPluginConfiguration loaded;
    QVERIFY(hostkit::loadConfiguration(loaded, path(), nullptr));
    QCOMPARE(loaded.value.userType(), int(QMetaType::Double));
    QVERIFY(std::isnan(loaded.value.toDouble()));
}

void TestConfigurationFile::otherValuesBecomeTexts()
{
    KdPluginConfiguration tree;
    tree.value = QUrl(QStringLiteral("file:///a/b"));
    tree.defaultValue = QSize(1, 2);
    QVERIFY(hostkit::saveConfiguration(tree, path(), nullptr));
    KdPluginConfiguration loaded;
    QVERIFY(hostkit::loadConfiguration(loaded, path(), nullptr));
    QCOMPARE(loaded.value, QVariant(QStringLiteral("file:///a/b")));
    QVERIFY(!loaded.defaultValue.isValid());
}

void TestConfigurationFile::nodesComeBack()
{
    KdPluginConfiguration tree;
    tree.name = QStringLiteral("root");
    for (const bool saved : {false, true}) {
        for (const bool visible : {false, true}) {
            KdPluginConfiguration child;
            child.name = QStringLiteral("same name");
            child.value = saved;
            child.saved = saved;
            child.visible = visible;
            child.pushChild(tree);
            tree.pushChild(child);
        }
    }
    QVERIFY(hostkit::saveConfiguration(tree, path(), nullptr));
    KdPluginConfiguration loaded;
    QVERIFY(hostkit::loadConfiguration(loaded, path(), nullptr));
    QVERIFY(equal(loaded, tree));
}

void TestConfigurationFile::thousandsComeBack()
{
    KdPluginConfiguration tree;
    for (int i = 0; i < 100; ++i) {
        KdPluginConfiguration group;
        group.name = QString::number(i);
        for (int j = 0; j < 100; ++j) {
            KdPluginConfiguration leaf;
            leaf.name = QString::number(j);
            leaf.value = i * j;
            leaf.defaultValue = QStringLiteral("/some/where/%1").arg(j);
            leaf.saved = true;
            group.pushChild(leaf);
        }
        tree.pushChild(group);
    }
    QVERIFY(hostkit::saveConfiguration(tree, path(), nullptr));
    KdPluginConfiguration loaded;
    QVERIFY(hostkit::loadConfiguration(loaded, path(), nullptr));
    QVERIFY(equal(loaded, tree));
}

void TestConfigurationFile::depthIsLimited_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("deepest") << hostkit::MaximumConfigurationDepth << true;
    QTest::newRow("too deep") << hostkit::MaximumConfigurationDepth + 1 << false;
    QTest::newRow("far too deep") << 400 << false;
}

void TestConfigurationFile::depthIsLimited()
{
    QFETCH(int, depth);
    QFETCH(bool, accepted);
    QString error;
    QCOMPARE(hostkit::saveConfiguration(chain(depth), path(), &error), accepted);
    QCOMPARE(error.contains(QLatin1String("64")), !accepted);
    QCOMPARE(QFileInfo::exists(path()), accepted);

    write(QByteArray(R"({"children":[)").repeated(depth) + "{}" + QByteArray("]}").repeated(depth));
    KdPluginConfiguration loaded;
    loaded.name = QStringLiteral("old");
    error.clear();
    QCOMPARE(hostkit::loadConfiguration(loaded, path(), &error), accepted);
    QCOMPARE(error.contains(QLatin1String("64")), !accepted);
    QCOMPARE(loaded.name, accepted ? QString() : QStringLiteral("old"));
}

void TestConfigurationFile::wrongFieldsAreSkipped_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("null") << QByteArray("null") << QVariant();
    QTest::newRow("plain number") << QByteArray("1.5") << QVariant(1.5);
    QTest::newRow("empty object") << QByteArray("{}") << QVariant();
    QTest::newRow("unknown tag") << QByteArray(R"({"date":"today"})") << QVariant();
    QTest::newRow("two tags") << QByteArray(R"({"int":1,"double":2})") << QVariant();
    QTest::newRow("int as text") << QByteArray(R"({"int":"1"})") << QVariant();
    QTest::newRow("int with a fraction") << QByteArray(R"({"int":1.5})") << QVariant();
    QTest::newRow("int too large") << QByteArray(R"({"int":2147483648})") << QVariant();
    QTest::newRow("huge int") << QByteArray(R"({"int":1e300})") << QVariant();
    QTest::newRow("negative unsigned") << QByteArray(R"({"uint":-1})") << QVariant();
    QTest::newRow("64 bit as number") << QByteArray(R"({"int64":1})") << QVariant();
    QTest::newRow("64 bit too large") << QByteArray(R"({"int64":"9223372036854775808"})") << QVariant();
    QTest::newRow("64 bit not a number") << QByteArray(R"({"uint64":"x"})") << QVariant();
    QTest::newRow("double as text") << QByteArray(R"({"double":"1.5"})") << QVariant();
    QTest::newRow("double as list") << QByteArray(R"({"double":[1]})") << QVariant();
    QTest::newRow("bytes not encoded") << QByteArray(R"({"base64":"!!"})") << QVariant();
    QTest::newRow("bytes as number") << QByteArray(R"({"base64":1})") << QVariant();
    QTest::newRow("mixed list") << QByteArray(R"(["a",1,null,["b"],"c"])")
                                << QVariant(QStringList{QStringLiteral("a"), QStringLiteral("c")});
}

void TestConfigurationFile::wrongFieldsAreSkipped()
{
    QFETCH(QByteArray, value);
    QFETCH(QVariant, expected);
    write(R"({"name":"kept","value":)" + value + R"(,"default":)" + value + R"(,"visible":true})");
    KdPluginConfiguration loaded;
    QString error;
    QVERIFY2(hostkit::loadConfiguration(loaded, path(), &error), qPrintable(error));
    QCOMPARE(loaded.value, expected);
    QCOMPARE(loaded.value.userType(), expected.userType());
    QCOMPARE(loaded.defaultValue, expected);
    QCOMPARE(loaded.name, QStringLiteral("kept"));
    QVERIFY(loaded.visible);
}

void TestConfigurationFile::wrongChildrenAreSkipped()
{
    write(
        R"({"name":7,"saved":"yes","visible":1,"children":[1,"a",null,[{}],{"name":"a","children":{"name":"x"}},
              {"name":["b"]}],"else":{}})");
    KdPluginConfiguration loaded;
    QVERIFY(hostkit::loadConfiguration(loaded, path(), nullptr));
    QVERIFY(loaded.name.isEmpty());
    QVERIFY(!loaded.saved && !loaded.visible);
    QCOMPARE(loaded.children.size(), 2);
    QCOMPARE(loaded.children.at(0).name, QStringLiteral("a"));
    QVERIFY(loaded.children.at(0).children.isEmpty());
    QVERIFY(loaded.children.at(1).name.isEmpty());
}

void TestConfigurationFile::malformedFilesAreRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("place");
    QTest::newRow("empty") << QByteArray() << QStringLiteral("line 1, column 1:");
    QTest::newRow("third line") << QByteArray("{\n\"name\": \"a\",\n  oops\n}")
                                << QStringLiteral("line 3, column ");
    QTest::newRow("binary") << QByteArray("\0\1\2\xff", 4) << QStringLiteral("line 1,");
    QTest::newRow("list") << QByteArray("[1]") << QStringLiteral("line 1:");
    QTest::newRow("bad text encoding") << QByteArray("{\"name\":\"\xff\xff\"}") << QStringLiteral("line 1,");
    QTest::newRow("trailing garbage") << QByteArray("{}\n{}") << QStringLiteral("line 2,");
    QTest::newRow("deep") << QByteArray(1000000, '[') << QStringLiteral("line 1,");
}

void TestConfigurationFile::malformedFilesAreRefused()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, place);
    write(text);
    KdPluginConfiguration loaded;
    loaded.name = QStringLiteral("old");
    QString error;
    QVERIFY(!hostkit::loadConfiguration(loaded, path(), &error));
    QVERIFY2(error.contains(path()), qPrintable(error));
    QVERIFY2(error.contains(place), qPrintable(error));
    QCOMPARE(loaded.name, QStringLiteral("old"));
}

void TestConfigurationFile::everyTruncationIsRefused()
{
    KdPluginConfiguration tree = chain(3);
    tree.value = QStringList{QStringLiteral("größe")};
    tree.children.first().value = QByteArray("bytes");
    QVERIFY(hostkit::saveConfiguration(tree, path(), nullptr));
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const int size = file.readAll().trimmed().size();
    file.close();
    KdPluginConfiguration loaded;
    QVERIFY(file.resize(size));
    QVERIFY(hostkit::loadConfiguration(loaded, path(), nullptr));
    QVERIFY(equal(loaded, tree));
    for (int length = size - 1; length >= 0; --length) {
        QVERIFY(file.resize(length));
        QVERIFY2(!hostkit::loadConfiguration(loaded, path(), nullptr), qPrintable(QString::number(length)));
    }
    QVERIFY(equal(loaded, tree));
}

void TestConfigurationFile::missingFilesAreRefused()
{
    KdPluginConfiguration loaded;
    QString error;
    QVERIFY(!hostkit::loadConfiguration(loaded, path(QStringLiteral("gone.json")), &error));
    QVERIFY(error.contains(QLatin1String("gone.json")));
    error.clear();
    QVERIFY(!hostkit::loadConfiguration(loaded, folder->path(), &error));
    QVERIFY(error.contains(folder->path()));
}

void TestConfigurationFile::foldersAreMade()
{
    const QString deep = path(QStringLiteral("a/b/c.json"));
    QVERIFY(hostkit::saveConfiguration(chain(1), deep, nullptr));
    KdPluginConfiguration loaded;
    QVERIFY(hostkit::loadConfiguration(loaded, deep, nullptr));
    QCOMPARE(loaded.children.size(), 1);
}

void TestConfigurationFile::failedSavesSaySo()
{
    write("{}");
    QString error;
    // A file where a folder is needed, and a folder where the file is to be.
    QVERIFY(!hostkit::saveConfiguration(chain(1), path() + QStringLiteral("/a.json"), &error));
    QVERIFY(error.contains(path()));
    error.clear();
    QVERIFY(!hostkit::saveConfiguration(chain(1), folder->path(), &error));
    QVERIFY(error.contains(folder->path()));
}

void TestConfigurationFile::failedSavesKeepTheOldFile()
{
    const KdPluginConfiguration old = chain(2);
    QVERIFY(hostkit::saveConfiguration(old, path(), nullptr));
    QVERIFY(!hostkit::saveConfiguration(chain(100), path(), nullptr));
    KdPluginConfiguration loaded;
    QVERIFY(hostkit::loadConfiguration(loaded, path(), nullptr));
    QVERIFY(equal(loaded, old));
}

QTEST_GUILESS_MAIN(TestConfigurationFile)
#include "tst_configuration_file.moc"
