#include "tests/plugin/built_plugin.h"

#include <QCborMap>
#include <QCborStreamReader>
#include <QCborValue>
#include <QFile>
#include <QJsonObject>
#include <QMetaObject>
#include <QPluginLoader>
#include <QPointer>
#include <QtTest>

#include <cstring>

#include <elf.h>

namespace
{

template <class Record>
Record recordAt(const QByteArray &bytes, quint64 offset)
{
    Record record{};
    if (offset + sizeof(Record) <= static_cast<quint64>(bytes.size()))
        std::memcpy(&record, bytes.constData() + offset, sizeof(Record));
    return record;
}

/// The contents of all sections of that name in an ELF file of 64 bits.
QList<QByteArray> sectionsOf(const QString &fileName, const char *name)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    const auto header = recordAt<Elf64_Ehdr>(bytes, 0);
    const auto section = [&](int index) {
        return recordAt<Elf64_Shdr>(bytes, header.e_shoff + quint64(index) * header.e_shentsize);
    };
    const auto names = section(header.e_shstrndx);
    QList<QByteArray> found;
    for (int i = 0; i < header.e_shnum; ++i) {
        const auto candidate = section(i);
        const auto nameAt = static_cast<int>(names.sh_offset + candidate.sh_name);
        if (qstrcmp(bytes.constData() + nameAt, name) == 0)
            found.append(
                bytes.mid(static_cast<int>(candidate.sh_offset), static_cast<int>(candidate.sh_size)));
    }
    return found;
}

/// The names that a library offers to others, sorted.
QStringList definedSymbols(const QString &fileName)
{
    const QByteArray symbols = sectionsOf(fileName, ".dynsym").value(0);
    const QByteArray names = sectionsOf(fileName, ".dynstr").value(0);
    QStringList defined;
    for (int i = 0; i < symbols.size() / int{sizeof(Elf64_Sym)}; ++i) {
        const auto symbol = recordAt<Elf64_Sym>(symbols, quint64(i) * sizeof(Elf64_Sym));
        if (symbol.st_shndx != SHN_UNDEF && symbol.st_name < quint64(names.size()))
            defined.append(QString::fromLatin1(names.constData() + symbol.st_name));
    }
    defined.sort();
    return defined;
}

QByteArray metadataSection()
{
    return sectionsOf(BuiltPlugin::fileName(), ".qtmetadata").value(0);
}

constexpr int MagicSize = 12;
constexpr int HeaderSize = MagicSize + 4;

} // namespace

/// The library seen from outside: what it says of itself before it is loaded, and its entry points.
class TestTerminalPluginEntry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLoaderReadsTheMetadata();
    void theLoaderLoadsIt();
    void oneMetadataSection();
    void magicAndVersion();
    void theMapHoldsTwoKeys();
    void theEntryReturnsTheSection();

    void oneInstance();
    void aNewInstanceAfterTheFirst();
    void casts_data();
    void casts();
    void theInterfaceIsTheSecondBase();
    void noSignalsSlotsOrProperties();
    void callsGoToTheBase();
    void onlyTheEntriesAreSeen();
    void staysLoaded();

private:
    BuiltPlugin built;
};

// Metadata

void TestTerminalPluginEntry::theLoaderReadsTheMetadata()
{
    const QPluginLoader loader(BuiltPlugin::fileName());
    const QJsonObject metadata = loader.metaData();
    QVERIFY(!loader.isLoaded());
    QCOMPARE(metadata.value(QLatin1String("IID")).toString(),
             QStringLiteral("tarn.tarnControl.PluginInterface/1.0"));
    QCOMPARE(metadata.value(QLatin1String("className")).toString(), QStringLiteral("TerminalPlugin"));
    QCOMPARE(metadata.value(QLatin1String("version")).toInt(), 0x050E00);
    QCOMPARE(metadata.value(QLatin1String("debug")).toBool(true), false);
    QCOMPARE(metadata.value(QLatin1String("MetaData")).toObject(), QJsonObject());
}

void TestTerminalPluginEntry::theLoaderLoadsIt()
{
    QPluginLoader loader(BuiltPlugin::fileName());
    loader.setLoadHints(QLibrary::PreventUnloadHint);
    QVERIFY2(loader.load(), qPrintable(loader.errorString()));
    QVERIFY(qobject_cast<KdPluginInterface *>(loader.instance()));
    QCOMPARE(loader.instance(), built.instance());
}

void TestTerminalPluginEntry::oneMetadataSection()
{
    QCOMPARE(sectionsOf(BuiltPlugin::fileName(), ".qtmetadata").size(), 1);
}

void TestTerminalPluginEntry::magicAndVersion()
{
    const QByteArray section = metadataSection();
    QCOMPARE(section.left(MagicSize), QByteArrayLiteral("QTMETADATA !"));
    QCOMPARE(section.mid(MagicSize, 4).toHex(' '), QByteArrayLiteral("00 05 0e 00"));
}

void TestTerminalPluginEntry::theMapHoldsTwoKeys()
{
    QCborStreamReader reader(metadataSection().mid(HeaderSize));
    const QCborValue value = QCborValue::fromCbor(reader);
    QCOMPARE(reader.lastError(), QCborError{QCborError::NoError});
    const QCborMap expected{
        {2, QStringLiteral("tarn.tarnControl.PluginInterface/1.0")},
        {3, QStringLiteral("TerminalPlugin")},
    };
    QCOMPARE(value.toMap(), expected);
    QCOMPARE(value.toMap().size(), 2);
    // Nothing follows but what a sanitizer pads with.
    const QByteArray rest = metadataSection().mid(HeaderSize + static_cast<int>(reader.currentOffset()));
    QCOMPARE(rest, QByteArray(rest.size(), '\0'));
}

void TestTerminalPluginEntry::theEntryReturnsTheSection()
{
    const char *metadata = built.metadata();
    QVERIFY(metadata);
    QCborStreamReader reader(metadataSection().mid(HeaderSize));
    QCborValue::fromCbor(reader);
    QVERIFY(reader.currentOffset() > 0);
    // The block alone: what a sanitizer pads the section with must not be read.
    const int size = HeaderSize + static_cast<int>(reader.currentOffset());
    QCOMPARE(QByteArray(metadata, size), metadataSection().left(size));
}

// Instances

void TestTerminalPluginEntry::oneInstance()
{
    QVERIFY(built.instance());
    QCOMPARE(built.instance(), built.instance());
}

void TestTerminalPluginEntry::aNewInstanceAfterTheFirst()
{
    const QPointer<QObject> first = built.instance();
    // Keeps the place, so that the second cannot be mistaken for the first.
    built.instance()->setObjectName(QStringLiteral("first"));
    built.destroyInstance();
    QVERIFY(first.isNull());
    QObject *second = built.instance();
    QVERIFY(second);
    QCOMPARE(second->objectName(), QString());
    QCOMPARE(built.instance(), second);
}

void TestTerminalPluginEntry::casts_data()
{
    QTest::addColumn<bool>("isObject");
    QTest::addColumn<bool>("isInterface");
    QTest::newRow("TerminalPlugin") << true << false;
    QTest::newRow("QObject") << true << false;
    QTest::newRow("KdPluginInterface") << false << true;
    QTest::newRow("tarn.tarnControl.PluginInterface/1.0") << false << true;
    QTest::newRow("tarn.tarnControl.PluginInterface/1.1") << false << false;
    QTest::newRow("tarn.tarnControl.PluginInterface") << false << false;
    QTest::newRow("terminalPlugin") << false << false;
    QTest::newRow("TerminalPluginState") << false << false;
    QTest::newRow("") << false << false;
}

void TestTerminalPluginEntry::casts()
{
    QFETCH(bool, isObject);
    QFETCH(bool, isInterface);
    QObject *object = built.instance();
    const void *cast = object->qt_metacast(QTest::currentDataTag());
    const void *expected = nullptr;
    if (isObject)
        expected = object;
    else if (isInterface)
        expected = dynamic_cast<KdPluginInterface *>(object);
    QCOMPARE(cast, expected);
    QVERIFY(!object->qt_metacast(nullptr));
}

void TestTerminalPluginEntry::theInterfaceIsTheSecondBase()
{
    QObject *object = built.instance();
    const void *begin = dynamic_cast<void *>(object);
    QCOMPARE(begin, static_cast<const void *>(object));
    const auto *secondBase = reinterpret_cast<const char *>(built.plugin());
    QCOMPARE(secondBase - reinterpret_cast<const char *>(object), std::ptrdiff_t{sizeof(QObject)});
}

void TestTerminalPluginEntry::noSignalsSlotsOrProperties()
{
    const QMetaObject *metaObject = built.instance()->metaObject();
    QCOMPARE(metaObject->className(), "TerminalPlugin");
    QCOMPARE(metaObject->superClass(), &QObject::staticMetaObject);
    QCOMPARE(metaObject->methodCount(), QObject::staticMetaObject.methodCount());
    QCOMPARE(metaObject->propertyCount(), QObject::staticMetaObject.propertyCount());
    QCOMPARE(metaObject->enumeratorCount(), QObject::staticMetaObject.enumeratorCount());
}

void TestTerminalPluginEntry::callsGoToTheBase()
{
    QObject *object = built.instance();
    // Slot numbers beyond the base's come back counted from there: nobody here takes one.
    const int beyond = QObject::staticMetaObject.methodCount() + 5;
    QCOMPARE(object->qt_metacall(QMetaObject::InvokeMetaMethod, beyond, nullptr), 5);
    // And the base's own are carried out.
    QString name = QStringLiteral("named");
    void *arguments[] = {&name, nullptr};
    object->qt_metacall(QMetaObject::WriteProperty, 0, arguments);
    QCOMPARE(object->objectName(), name);
}

void TestTerminalPluginEntry::onlyTheEntriesAreSeen()
{
    const QStringList entries{QStringLiteral("PyInit_orbClientPython_3_for_ORB"),
                              QStringLiteral("qt_plugin_instance"),
                              QStringLiteral("qt_plugin_query_metadata")};
    QCOMPARE(definedSymbols(BuiltPlugin::fileName()), entries);
    for (const QString &entry : entries)
        QVERIFY2(built.library.resolve(entry.toLatin1().constData()), qPrintable(entry));
}

// An interpreter leaves threads and pointers behind: what hosts one must stay where it is.
void TestTerminalPluginEntry::staysLoaded()
{
    const QByteArray dynamic = sectionsOf(BuiltPlugin::fileName(), ".dynamic").value(0);
    quint64 flags = 0;
    for (int i = 0; i < dynamic.size() / int{sizeof(Elf64_Dyn)}; ++i) {
        const auto entry = recordAt<Elf64_Dyn>(dynamic, quint64(i) * sizeof(Elf64_Dyn));
        if (entry.d_tag == DT_FLAGS_1)
            flags = entry.d_un.d_val;
    }
    QVERIFY((flags & DF_1_NODELETE) != 0);
}

QTEST_MAIN(TestTerminalPluginEntry)
#include "tst_terminal_plugin_entry.moc"
