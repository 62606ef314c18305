#include "python_terminal/python_runtime.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using python_terminal::PythonRuntime;

/// What is found, and missed, beside an application.
class TestPythonRuntime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void layouts_data();
    void layouts();
    void everyEssentialModuleIsNeeded_data();
    void everyEssentialModuleIsNeeded();
    void aCodecStandsForTheLocale();
    void byteCodeWillDo();
    void interpreterOfItsOwn();

private:
    void makeFile(const QString &path);
    void makeEssentialModules(const QString &library, const QString &suffix);
    PythonRuntime look();

    std::unique_ptr<QTemporaryDir> directory;
};

namespace
{

QStringList logged;
QtMessageHandler handlerBefore = nullptr;

void keepMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtDebugMsg)
        logged.append(text);
    else
        handlerBefore(type, context, text);
}

const QStringList &essentialModules()
{
    static const QStringList names = {QStringLiteral("encodings/__init__"),
                                      QStringLiteral("codecs"),
                                      QStringLiteral("io"),
                                      QStringLiteral("abc"),
                                      QStringLiteral("site"),
                                      QStringLiteral("os"),
                                      QStringLiteral("stat"),
                                      QStringLiteral("posixpath"),
                                      QStringLiteral("genericpath"),
                                      QStringLiteral("_collections_abc"),
                                      QStringLiteral("_sitebuiltins"),
                                      QStringLiteral("encodings/utf_8"),
                                      QStringLiteral("encodings/latin_1"),
                                      QStringLiteral("encodings/aliases"),
                                      QStringLiteral("_bootlocale")};
    return names;
}

} // namespace

void TestPythonRuntime::init()
{
    directory = std::make_unique<QTemporaryDir>();
    QVERIFY(directory->isValid());
    logged.clear();
}

void TestPythonRuntime::cleanup()
{
    directory.reset();
}

void TestPythonRuntime::makeFile(const QString &path)
{
    const QString absolute = directory->filePath(path);
    QVERIFY(QDir().mkpath(QFileInfo(absolute).path()));
    QFile file(absolute);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

void TestPythonRuntime::makeEssentialModules(const QString &library, const QString &suffix)
{
    for (const QString &name : essentialModules())
        makeFile(library + QLatin1Char('/') + name + suffix);
}

PythonRuntime TestPythonRuntime::look()
{
    handlerBefore = qInstallMessageHandler(keepMessage);
    PythonRuntime runtime = PythonRuntime::beside(directory->filePath(QStringLiteral("application")));
    qInstallMessageHandler(handlerBefore);
    return runtime;
}

void TestPythonRuntime::layouts_data()
{
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("library");
    QTest::addColumn<QString>("home");
    QTest::addColumn<bool>("wanted");
    QTest::addColumn<bool>("usable");
    QTest::addColumn<QStringList>("missing");

    const QString python = QStringLiteral("python-3.7.1");
    const QString lib = QStringLiteral("python-3.7.1/lib");
    const QString Lib = QStringLiteral("python-3.7.1/Lib");
    QTest::newRow("all of it") << QStringList{lib} << Lib << python << true << true << QStringList();
    QTest::newRow("nothing") << QStringList() << QString() << python << false << false
                             << QStringList{python, lib};
    QTest::newRow("an empty folder") << QStringList{python} << QString() << python << true << false
                                     << QStringList{lib};
    QTest::newRow("only the name that is searched")
        << QStringList() << Lib << python << true << true << QStringList{lib};
    QTest::newRow("only the name that is looked for")
        << QStringList{lib} << QString() << python << true << false << QStringList();
    QTest::newRow("a library right beside the application")
        << QStringList{QStringLiteral("lib")} << QStringLiteral("Lib") << QString() << true << true
        << QStringList{python};
    QTest::newRow("something else right beside the application")
        << QStringList{QStringLiteral("lib")} << QString() << QString() << true << false
        << QStringList{python};
    QTest::newRow("both, and the folder comes first")
        << QStringList{lib, QStringLiteral("lib")} << Lib << python << true << true << QStringList();
    QTest::newRow("both, and the folder is no use")
        << QStringList{python, QStringLiteral("lib")} << QStringLiteral("Lib") << python << true << false
        << QStringList{lib};
}

void TestPythonRuntime::layouts()
{
    QFETCH(QStringList, folders);
    QFETCH(QString, library);
    QFETCH(QString, home);
    QFETCH(bool, wanted);
    QFETCH(bool, usable);
    QFETCH(QStringList, missing);

    for (const QString &folder : std::as_const(folders))
        QVERIFY(QDir(directory->path()).mkpath(folder));
    if (!library.isEmpty())
        makeEssentialModules(library, QStringLiteral(".py"));

    const PythonRuntime runtime = look();
    const QString expectedHome = home.isEmpty() ? directory->path() : directory->filePath(home);
    QCOMPARE(runtime.home, expectedHome);
    QCOMPARE(runtime.libraryPath, expectedHome + QStringLiteral("/Lib"));
    QCOMPARE(runtime.wanted, wanted);
    QCOMPARE(runtime.usable, usable);
    QStringList expectedLog;
    for (const QString &path : std::as_const(missing))
        expectedLog.append(
            QStringLiteral("the directory \"%1\" does not exist.").arg(directory->filePath(path)));
    if (wanted && !usable)
        expectedLog.append(
            QStringLiteral("Python cannot start: \"%1\" lacks modules of the standard library.")
                .arg(runtime.libraryPath));
    QCOMPARE(logged, expectedLog);
}

void TestPythonRuntime::everyEssentialModuleIsNeeded_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : essentialModules())
        QTest::newRow(qPrintable(name)) << name;
}

void TestPythonRuntime::everyEssentialModuleIsNeeded()
{
    QFETCH(QString, name);
    const QString library = QStringLiteral("python-3.7.1/Lib");
    makeEssentialModules(library, QStringLiteral(".py"));
    QVERIFY(look().usable);
    QVERIFY(QFile::remove(directory->filePath(library + QLatin1Char('/') + name + QStringLiteral(".py"))));
    const PythonRuntime runtime = look();
    QVERIFY(runtime.wanted);
    QVERIFY(!runtime.usable);
}

void TestPythonRuntime::aCodecStandsForTheLocale()
{
    const QString library = QStringLiteral("python-3.7.1/Lib");
    makeEssentialModules(library, QStringLiteral(".py"));
    QVERIFY(QFile::remove(directory->filePath(library + QStringLiteral("/_bootlocale.py"))));
    makeFile(library + QStringLiteral("/encodings/ascii.py"));
    QVERIFY(look().usable);
}

void TestPythonRuntime::byteCodeWillDo()
{
    makeEssentialModules(QStringLiteral("python-3.7.1/Lib"), QStringLiteral(".pyc"));
    QVERIFY(look().usable);
}

void TestPythonRuntime::interpreterOfItsOwn()
{
    const QString path = QStringLiteral("python-3.7.1/bin/python3.7");
    QCOMPARE(look().interpreter, QString());
    makeFile(path);
    QCOMPARE(look().interpreter, QString());
    QVERIFY(QFile::setPermissions(directory->filePath(path), QFile::ReadOwner | QFile::ExeOwner));
    QCOMPARE(look().interpreter, directory->filePath(path));
}

QTEST_GUILESS_MAIN(TestPythonRuntime)
#include "tst_python_runtime.moc"
