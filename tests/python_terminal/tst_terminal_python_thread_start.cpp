#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

/// Starts in a process of their own: with runtimes of all kinds beside the program, with a standard output that is used
/// for all kinds of things, and what a signal does to it.
class TestTerminalPythonThreadStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void runtimes_data();
    void runtimes();
    void essentialModulesSuffice_data();
    void essentialModulesSuffice();
    void missingEssentialModules_data();
    void missingEssentialModules();
    void standardOutput_data();
    void standardOutput();
    void interruptSignal();
    void passwordsWithATerminal();

private:
    /// A program that was started in a terminal window.
    class ProcessOfATerminal : public QProcess
    {
    public:
        bool hasTerminal() const { return !slave.isEmpty(); }

    protected:
        void setupChildProcess() override
        {
            ::setsid();
            // The first one that a process without a terminal opens becomes its own.
            ::open(slave.constData(), O_RDWR);
        }

    private:
        static QByteArray unlocked(int terminal)
        {
            const bool isUsable = ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0;
            return isUsable ? QByteArray(::ptsname(terminal)) : QByteArray();
        }

        QFile master{QStringLiteral("/dev/ptmx")};
        const bool isOpen = master.open(QIODevice::ReadWrite | QIODevice::Unbuffered);
        const QByteArray slave = isOpen ? unlocked(master.handle()) : QByteArray();
    };

    /// Runs the program, which must come to a good end.
    void run(const QStringList &lines, const char *before = "none", const char *after = "none");
    void run(QProcess &process, const QStringList &lines, const char *before, const char *after);
    QString path(const QString &name) const { return directory->filePath(name); }
    void makeLibrary(const QString &name, const QStringList &modules);

    std::unique_ptr<QTemporaryDir> directory;
    QStringList signalTexts;
    QString standardOutputText;
    QString standardErrorText;
};

namespace
{

const QString Failure = QStringLiteral("start Failed to initialize Python.");

/// The library of the tests' own runtime.
QString fullLibrary()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/python-3.7.1/Lib");
}

/// What Python itself cannot start without.
const QStringList &essentialModules()
{
    static const QStringList names = {QStringLiteral("encodings/__init__"),
                                      QStringLiteral("encodings/utf_8"),
                                      QStringLiteral("encodings/latin_1"),
                                      QStringLiteral("encodings/aliases"),
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
                                      QStringLiteral("_bootlocale")};
    return names;
}

} // namespace

void TestTerminalPythonThreadStart::init()
{
    directory = std::make_unique<QTemporaryDir>();
    QVERIFY(directory->isValid());
    // Not a link: the runtime is looked for beside the file itself.
    QVERIFY(QFile::copy(QStringLiteral(START_PROGRAM), path(QStringLiteral("program"))));
}

void TestTerminalPythonThreadStart::cleanup()
{
    directory.reset();
}

void TestTerminalPythonThreadStart::run(const QStringList &lines, const char *before, const char *after)
{
    QProcess process;
    run(process, lines, before, after);
}

void TestTerminalPythonThreadStart::run(QProcess &process, const QStringList &lines, const char *before,
                                        const char *after)
{
    const QString report = path(QStringLiteral("report"));
    process.start(path(QStringLiteral("program")),
                  QStringList{report, QString::fromLatin1(before), QString::fromLatin1(after)} + lines);
    constexpr int LongestRun = 120'000;
    QVERIFY2(process.waitForFinished(LongestRun), qPrintable(process.errorString()));
    standardOutputText = QString::fromUtf8(process.readAllStandardOutput());
    standardErrorText = QString::fromUtf8(process.readAllStandardError());
    QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0,
             qPrintable(standardErrorText));
    QFile file(report);
    QVERIFY(file.open(QIODevice::ReadOnly));
    signalTexts.clear();
    const QJsonArray texts = QJsonDocument::fromJson(file.readAll()).array();
    for (const QJsonValue &text : texts)
        signalTexts.append(text.toString());
}

void TestTerminalPythonThreadStart::makeLibrary(const QString &name, const QStringList &modules)
{
    for (const QString &module : modules) {
        const QString file = path(name) + QLatin1Char('/') + module + QStringLiteral(".py");
        QVERIFY(QDir().mkpath(QFileInfo(file).path()));
        QVERIFY(QFile::copy(fullLibrary() + QLatin1Char('/') + module + QStringLiteral(".py"), file));
    }
}

void TestTerminalPythonThreadStart::runtimes_data()
{
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("library");
    QTest::addColumn<QString>("home");
    QTest::addColumn<bool>("starts");
    QTest::addColumn<QStringList>("missing");

    const QString python = QStringLiteral("python-3.7.1");
    const QString lib = QStringLiteral("python-3.7.1/lib");
    const QString Lib = QStringLiteral("python-3.7.1/Lib");
    QTest::newRow("nothing") << QStringList() << QString() << python << false << QStringList{python, lib};
    QTest::newRow("an empty folder") << QStringList{python} << QString() << python << false
                                     << QStringList{lib};
    QTest::newRow("an empty library")
        << QStringList{lib, Lib} << QString() << python << false << QStringList();
    QTest::newRow("both names") << QStringList{lib} << Lib << python << true << QStringList();
    QTest::newRow("only the folder") << QStringList{python} << Lib << python << true << QStringList{lib};
    QTest::newRow("only the library") << QStringList{QStringLiteral("lib")} << QStringLiteral("Lib")
                                      << QString() << true << QStringList{python};
}

void TestTerminalPythonThreadStart::runtimes()
{
    QFETCH(QStringList, folders);
    QFETCH(QString, library);
    QFETCH(QString, home);
    QFETCH(bool, starts);
    QFETCH(QStringList, missing);

    for (const QString &folder : std::as_const(folders))
        QVERIFY(QDir(directory->path()).mkpath(folder));
    if (!library.isEmpty())
        QVERIFY(QFile::link(fullLibrary(), path(library)));
    run({QStringLiteral("1"), QString(), QStringLiteral("import math; math.floor(2.5)")});

    if (starts) {
        QVERIFY2(signalTexts.value(0).startsWith(QLatin1String("start Python 3.7.")),
                 qPrintable(signalTexts.value(0)));
        QCOMPARE(signalTexts.mid(1),
                 QStringList({QStringLiteral("out 1"), QStringLiteral("out \n"), QStringLiteral("done"),
                              QStringLiteral("done"), QStringLiteral("out 2"), QStringLiteral("out \n"),
                              QStringLiteral("done")}));
    } else {
        QCOMPARE(signalTexts, QStringList(Failure));
    }
    const QString homePath = home.isEmpty() ? directory->path() : path(home);
    const QString paths = QStringLiteral("python path == %1/Lib\npython home == %1\n").arg(homePath);
    QCOMPARE(standardOutputText, paths);
    QString log;
    for (const QString &folder : std::as_const(missing))
        log += QStringLiteral("the directory \"%1\" does not exist.\n").arg(path(folder));
    if (!starts && !folders.isEmpty())
        log += QStringLiteral("Python cannot start: \"%1/Lib\" lacks modules of the standard library.\n")
                   .arg(homePath);
    QCOMPARE(standardErrorText, log + paths);
}

void TestTerminalPythonThreadStart::essentialModulesSuffice_data()
{
    QTest::addColumn<QStringList>("modules");

    QTest::newRow("all of them") << essentialModules();
    QStringList withoutLocale = essentialModules();
    withoutLocale.replaceInStrings(QStringLiteral("_bootlocale"), QStringLiteral("encodings/ascii"));
    QTest::newRow("a codec in place of the locale") << withoutLocale;
}

void TestTerminalPythonThreadStart::essentialModulesSuffice()
{
    QFETCH(QStringList, modules);
    makeLibrary(QStringLiteral("python-3.7.1/Lib"), modules);
    run({QStringLiteral("1")});
    QVERIFY2(signalTexts.value(0).startsWith(QLatin1String("start Python 3.7.")),
             qPrintable(signalTexts.value(0)));
    QCOMPARE(signalTexts.mid(1),
             QStringList({QStringLiteral("out 1"), QStringLiteral("out \n"), QStringLiteral("done")}));
}

void TestTerminalPythonThreadStart::missingEssentialModules_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : essentialModules())
        QTest::newRow(qPrintable(name)) << name;
}

/// The interpreter itself would take the process with it.
void TestTerminalPythonThreadStart::missingEssentialModules()
{
    QFETCH(QString, name);
    QStringList modules = essentialModules();
    modules.removeAll(name);
    makeLibrary(QStringLiteral("python-3.7.1/Lib"), modules);
    run({QStringLiteral("1")});
    QCOMPARE(signalTexts, QStringList(Failure));
}

void TestTerminalPythonThreadStart::standardOutput_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");

    for (const char *before : {"none", "narrow", "wide"}) {
        for (const char *after : {"none", "narrow", "wide"}) {
            // A program that uses both kinds itself silences itself.
            if (qstrcmp(before, "none") == 0 || qstrcmp(after, "none") == 0 || qstrcmp(before, after) == 0)
                QTest::addRow("%s before, %s after", before, after)
                    << QByteArray(before) << QByteArray(after);
        }
    }
}

/// The start writes there as well, and leaves to the program what it writes there itself.
void TestTerminalPythonThreadStart::standardOutput()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);

    run({}, before.constData(), after.constData());
    QString expected = QStringLiteral("python path == %1/python-3.7.1/Lib\npython home == %1/python-3.7.1\n")
                           .arg(directory->path());
    if (before != "none")
        expected.prepend(QStringLiteral("before\n"));
    if (after != "none")
        expected.append(QStringLiteral("after\n"));
    QCOMPARE(standardOutputText, expected);
}

/// Another thread than the interpreter's may get it, hence the statement that goes on until it has arrived.
void TestTerminalPythonThreadStart::interruptSignal()
{
    QVERIFY(QDir(directory->path()).mkpath(QStringLiteral("python-3.7.1")));
    QVERIFY(QFile::link(fullLibrary(), path(QStringLiteral("python-3.7.1/Lib"))));
    run({QStringLiteral("import os, signal"),
         QStringLiteral("os.kill(os.getpid(), signal.SIGINT), any(x for x in iter(int, 1))"),
         QStringLiteral("1")});
    QCOMPARE(signalTexts.size(), 7);
    QCOMPARE(signalTexts.value(1), QStringLiteral("done"));
    QVERIFY2(signalTexts.value(2).startsWith(QLatin1String("err <class 'KeyboardInterrupt'>")),
             qPrintable(signalTexts.value(2)));
    QCOMPARE(signalTexts.mid(3),
             QStringList({QStringLiteral("done"), QStringLiteral("out 1"), QStringLiteral("out \n"),
                          QStringLiteral("done")}));
}

void TestTerminalPythonThreadStart::passwordsWithATerminal()
{
    ProcessOfATerminal process;
    QVERIFY(process.hasTerminal());
    QVERIFY(QFile::link(QCoreApplication::applicationDirPath() + QStringLiteral("/python-3.7.1"),
                        path(QStringLiteral("python-3.7.1"))));
    run(process,
        {QStringLiteral("open('/dev/tty').isatty()"), QStringLiteral("import getpass"),
         QStringLiteral("getpass.getpass('Key: ')")},
        "none", "none");
    QVERIFY2(signalTexts.contains(QStringLiteral("out True")),
             qPrintable(signalTexts.join(QLatin1Char('|'))));
    QVERIFY2(signalTexts.contains(QStringLiteral("input")), qPrintable(signalTexts.join(QLatin1Char('|'))));
}

QTEST_GUILESS_MAIN(TestTerminalPythonThreadStart)
#include "tst_terminal_python_thread_start.moc"
