#include "workbench/app/plugin_library.h"

#include "hostsdk/kd_plugin_description.h"
#include "hostsdk/kd_plugin_interface.h"

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QTemporaryDir>
#include <QTest>

using workbench::PluginLibrary;

class TestPluginLibrary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadsTheNamedFile()
    {
        PluginLibrary library;
        QString error;
        QVERIFY2(library.load(QStringLiteral(TERMINAL_PLUGIN), QString(), error), qUtf8Printable(error));
        QVERIFY(library.plugin());
        KdPluginDescription description;
        library.plugin()->getPluginDescription(description);
        QCOMPARE(description.pluginId, 9000);
    }

    void findsTheFileBesideTheProgram()
    {
        QTemporaryDir dir;
        const QString copy = PluginLibrary::candidates(dir.path()).constFirst();
        QCOMPARE(QFileInfo(copy).absolutePath(), QFileInfo(dir.path()).absoluteFilePath());
        QVERIFY(QFile::copy(QStringLiteral(TERMINAL_PLUGIN), copy));
        PluginLibrary library;
        QString error;
        QVERIFY2(library.load(QString(), dir.path(), error), qUtf8Printable(error));
        QCOMPARE(library.fileName(), copy);
    }

    void saysWhereItLooked()
    {
        QTemporaryDir dir;
        PluginLibrary library;
        QString error;
        QVERIFY(!library.load(QString(), dir.path(), error));
        QVERIFY(!library.plugin());
        const QStringList places = PluginLibrary::candidates(dir.path());
        QVERIFY(places.size() >= 3);
        for (const QString &place : places)
            QVERIFY2(error.contains(place), qUtf8Printable(error));
    }

    void loadsAgainAfterItWasReleased()
    {
        for (int round = 0; round < 3; ++round) {
            PluginLibrary library;
            QString error;
            QVERIFY2(library.load(QStringLiteral(TERMINAL_PLUGIN), QString(), error), qUtf8Printable(error));
        }
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("named");
        QTest::newRow("no such file")
            << QStringLiteral("/no/such/file.so") << QStringLiteral("does not exist");
        QTest::newRow("a folder") << QDir::tempPath() << QStringLiteral("not a file");
        QTest::newRow("a program") << QCoreApplication::applicationFilePath()
                                   << QStringLiteral("not a plug-in");
        QTest::newRow("a plug-in for something else") << QLibraryInfo::location(QLibraryInfo::PluginsPath)
                + QStringLiteral("/platforms/libqoffscreen.so")
                                                      << QStringLiteral("this host takes");
    }

    void refuses()
    {
        QFETCH(QString, file);
        QFETCH(QString, named);
        PluginLibrary library;
        QString error;
        QVERIFY(!library.load(file, QString(), error));
        QVERIFY(!library.plugin());
        QVERIFY2(error.contains(named), qUtf8Printable(error));
        QVERIFY2(error.contains(QDir::toNativeSeparators(file)), qUtf8Printable(error));
    }

    void refusesADamagedFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("libTerminalPlugin.so"));
        QFile original(QStringLiteral(TERMINAL_PLUGIN));
        QVERIFY(original.open(QIODevice::ReadOnly));
        QFile half(path);
        QVERIFY(half.open(QIODevice::WriteOnly));
        half.write(original.read(original.size() / 50));
        half.close();
        PluginLibrary library;
        QString error;
        QVERIFY(!library.load(path, QString(), error));
        QVERIFY2(error.contains(path), qUtf8Printable(error));
    }
};

QTEST_MAIN(TestPluginLibrary)

#include "tst_plugin_library.moc"
