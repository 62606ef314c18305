// What becomes of the files: what is read and written, byte by byte, and what is left when that fails.
#include "tests/command_terminal/file_editor_bench.h"
#include "tests/command_terminal/processor_time.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

using Events = std::vector<qint64>;

/// While it lives, no file can grow beyond that size, as on a disk that is full.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes) : oldHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &oldLimit);
        rlimit limit = oldLimit;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &oldLimit);
        std::signal(SIGXFSZ, oldHandler);
    }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    void (*oldHandler)(int);
    rlimit oldLimit = {};
};

/// While it lives, permissions count, also for a test that root runs.
class OrdinaryUser
{
public:
    OrdinaryUser() : wasRoot(geteuid() == 0), changed(wasRoot && setresuid(Nobody, Nobody, 0) == 0) { }
    ~OrdinaryUser()
    {
        if (changed && setresuid(0, 0, 0) != 0)
            qFatal("cannot become root again");
    }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

    bool isOrdinary() const { return !wasRoot || changed; }

private:
    static constexpr uid_t Nobody = 65534;
    bool wasRoot;
    bool changed;
};

/// What it costs to open a file of one word.
double costOfWord(int length)
{
    FileEditorBench bench;
    const QString path = bench.write(QStringLiteral("a.txt"), QByteArray(length, 'x'));
    bench.send(KD::OpenFile);
    const double before = processorTime();
    Q_EMIT bench.dialog()->fileSelected(path);
    QCoreApplication::processEvents();
    const double cost = processorTime() - before;
    return bench.cancel() && bench.editor->getCurrentFile() == path ? cost : qInf();
}

mode_t modeOf(const QString &path)
{
    struct stat info = {};
    return stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode & 07777U : 0;
}

bool setMode(const QString &path, mode_t mode)
{
    return chmod(QFile::encodeName(path).constData(), mode) == 0;
}

bool makeFifo(const QString &path)
{
    return mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
}

} // namespace

class TestTerminalFileEditorFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAndWritesBack_data();
    void readsAndWritesBack();
    void writesWhatIsShown_data();
    void writesWhatIsShown();
    void opensBytesThatAreNoText();
    void longWordsCostByTheirLength();
    void failedOpenLeavesTheText_data();
    void failedOpenLeavesTheText();
    void unreadableFileLeavesTheText();
    void failedOpenKeepsTheFileForTheNextSave();
    void emptyNameIsIgnored();
    void failedSaveAsksAgain_data();
    void failedSaveAsksAgain();
    void readOnlyFileIsNotReplaced();
    void fullDiskKeepsTheOldFile();
    void fullDiskLeavesNoHalfFile();
    void permissionsAreKept_data();
    void permissionsAreKept();
    void newFileGetsTheUsualPermissions();
    void linksAreFollowedAndKept_data();
    void linksAreFollowedAndKept();
    void fileGoneSinceItWasOpenedIsWrittenAgain();
};

void TestTerminalFileEditorFiles::readsAndWritesBack_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("written");
    const auto same = [](const char *name, const QByteArray &content) {
        QTest::newRow(name) << content << QString::fromUtf8(content) << content;
    };
    same("line feed at the end", "one\ntwo\n");
    same("no line feed at the end", "one\ntwo");
    same("one line", "one");
    same("empty", "");
    same("one line feed", "\n");
    same("empty lines", "\n\none\n\n\ntwo\n\n");
    same("blanks and tabs", "  one \t\n\ttwo  \n \n");
    same("letters of other scripts", "\xc3\xa4\xc3\xb6 \xce\xa9 \xd7\x90\xd7\x91\n");
    same("blanks not to be broken at",
         "a\xc2\xa0\xe2\x80\xaf"
         "b\xe2\x80\xa8"
         "c\n");
    same("beyond the BMP", "\xf0\x9f\x94\x8c volt\n");
    same("long line", QByteArray(200000, 'x') + "\nend\n");
    same("many lines", QByteArray("# line\n").repeated(20000));
    QTest::newRow("carriage return and line feed")
        << QByteArrayLiteral("one\r\ntwo\r\n") << QStringLiteral("one\ntwo\n")
        << QByteArrayLiteral("one\ntwo\n");
    QTest::newRow("carriage returns")
        << QByteArrayLiteral("one\rtwo\r") << QStringLiteral("one\ntwo\n") << QByteArrayLiteral("one\ntwo\n");
    QTest::newRow("zero byte") << QByteArray("a\0b\n", 4) << QString::fromLatin1("a\0b\n", 4)
                               << QByteArray("a\0b\n", 4);
}

void TestTerminalFileEditorFiles::readsAndWritesBack()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, text);
    QFETCH(QByteArray, written);
    FileEditorBench bench;
    const QString path = bench.write(QStringLiteral("a.txt"), content);
    QVERIFY(bench.open(path));
    QCOMPARE(bench.editor->wholeText(), text);
    QCOMPARE(bench.editor->getCurrentFile(), path);
    QVERIFY(!bench.editor->document()->isModified());
    bench.send(KD::SaveFile);
    QCOMPARE(FileEditorBench::read(path), written);
}

void TestTerminalFileEditorFiles::writesWhatIsShown_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("one line") << QStringLiteral("one");
    QTest::newRow("lines") << QStringLiteral("one\n\ntwo\n");
    QTest::newRow("other scripts") << QStringLiteral("\u03a9 \U0001F50C\n");
}

void TestTerminalFileEditorFiles::writesWhatIsShown()
{
    QFETCH(QString, text);
    FileEditorBench bench;
    bench.editor->insertPlainText(text);
    const QString path = bench.path(QStringLiteral("new.txt"));
    QVERIFY(bench.saveAs(path));
    QCOMPARE(FileEditorBench::read(path), text.toUtf8());
    QVERIFY(!bench.editor->document()->isModified());
}

void TestTerminalFileEditorFiles::opensBytesThatAreNoText()
{
    FileEditorBench bench;
    QByteArray content = "begin\n";
    for (int i = 255; i >= 0; --i) {
        if (i != '\r') // becomes a line feed
            content.append(char(i));
    }
    content += "\nend\n";
    const QString path = bench.write(QStringLiteral("a.txt"), content);
    QVERIFY(bench.open(path));
    const QString text = bench.editor->toPlainText();
    QVERIFY(text.startsWith(QLatin1String("begin\n")));
    QVERIFY(text.endsWith(QLatin1String("\nend\n")));
    QVERIFY(text.contains(QLatin1String("~}|{zyx")));
    QCOMPARE(bench.editor->getCurrentFile(), path);
    bench.send(KD::SaveFile);
    QCOMPARE(FileEditorBench::read(path), content);
}

void TestTerminalFileEditorFiles::longWordsCostByTheirLength()
{
    costOfWord(1000); // fonts and caches
    const double brief = costOfWord(40000);
    const double longer = costOfWord(200000);
    // 5 if each character costs the same, 25 if it costs more behind others.
    QVERIFY2(longer / brief < 13, qPrintable(QStringLiteral("%1 s and %2 s").arg(brief).arg(longer)));
}

void TestTerminalFileEditorFiles::failedOpenLeavesTheText_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"missing", "folder", "pipe", "broken link", "link to itself", "below a file",
                             "device", "file that cannot be read"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void TestTerminalFileEditorFiles::failedOpenLeavesTheText()
{
    QFETCH(QString, kind);
    FileEditorBench bench;
    QString path = bench.path(QStringLiteral("x"));
    if (kind == QLatin1String("folder"))
        QVERIFY(QDir().mkdir(path));
    else if (kind == QLatin1String("pipe"))
        QVERIFY(makeFifo(path));
    else if (kind == QLatin1String("broken link"))
        QVERIFY(QFile::link(bench.path(QStringLiteral("gone")), path));
    else if (kind == QLatin1String("link to itself"))
        QVERIFY(QFile::link(path, path));
    else if (kind == QLatin1String("below a file"))
        path = bench.write(QStringLiteral("file"), "x") + QStringLiteral("/x");
    else if (kind == QLatin1String("device"))
        path = QStringLiteral("/dev/zero");
    else if (kind == QLatin1String("file that cannot be read"))
        path =
            QStringLiteral("/proc/self/mem"); // opens, and gives an error at the first byte, for root as well

    QTest::keyClicks(bench.editor.get(), QStringLiteral("typed"));
    bench.observer.clear();
    bench.send(KD::OpenFile);
    QVERIFY(bench.chooseUnchecked(path));
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("typed"));
    QVERIFY(bench.editor->getCurrentFile().isEmpty());
    QVERIFY(bench.observer.events().empty());
    QVERIFY(bench.state.commandFiles.isEmpty());
}

void TestTerminalFileEditorFiles::unreadableFileLeavesTheText()
{
    FileEditorBench bench;
    const QString path = bench.write(QStringLiteral("secret"), "secret\n");
    QVERIFY(setMode(bench.folder.path(), 0755));
    QVERIFY(setMode(path, 0));
    bench.editor->insertPlainText(QStringLiteral("typed"));
    bench.send(KD::OpenFile);
    QVERIFY(bench.dialog());
    {
        const OrdinaryUser user;
        QVERIFY(user.isOrdinary());
        Q_EMIT bench.dialog()->fileSelected(path);
    }
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("typed"));
    QVERIFY(bench.editor->getCurrentFile().isEmpty());
    QVERIFY(bench.cancel());
}

void TestTerminalFileEditorFiles::failedOpenKeepsTheFileForTheNextSave()
{
    FileEditorBench bench;
    const QString path = bench.write(QStringLiteral("a.txt"), "one\n");
    QVERIFY(bench.open(path));
    bench.send(KD::OpenFile);
    QVERIFY(bench.chooseUnchecked(bench.path(QStringLiteral("gone"))));
    QCOMPARE(bench.editor->getCurrentFile(), path);
    QTest::keyClicks(bench.editor.get(), QStringLiteral("new "));
    bench.send(KD::SaveFile);
    QVERIFY(!bench.dialog());
    QCOMPARE(FileEditorBench::read(path), QByteArrayLiteral("new one\n"));
}

void TestTerminalFileEditorFiles::emptyNameIsIgnored()
{
    FileEditorBench bench;
    QTest::keyClicks(bench.editor.get(), QStringLiteral("typed"));
    bench.observer.clear();
    for (const KD::EventType type : {KD::OpenFile, KD::SaveFile}) {
        bench.send(type);
        QVERIFY(bench.chooseUnchecked(QString()));
        QCOMPARE(bench.editor->toPlainText(), QStringLiteral("typed"));
        QVERIFY(bench.editor->getCurrentFile().isEmpty());
        QVERIFY(bench.observer.events().empty());
        QVERIFY(bench.state.commandFiles.isEmpty());
    }
}

void TestTerminalFileEditorFiles::failedSaveAsksAgain_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"no such folder", "folder", "pipe", "below a file", "name too long"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void TestTerminalFileEditorFiles::failedSaveAsksAgain()
{
    QFETCH(QString, kind);
    FileEditorBench bench;
    QString path = bench.path(QStringLiteral("x"));
    if (kind == QLatin1String("no such folder"))
        path += QStringLiteral("/y");
    else if (kind == QLatin1String("folder"))
        QVERIFY(QDir().mkdir(path));
    else if (kind == QLatin1String("pipe"))
        QVERIFY(makeFifo(path));
    else if (kind == QLatin1String("below a file"))
        path = bench.write(QStringLiteral("file"), "x") + QStringLiteral("/x");
    else
        path = bench.path(QString(300, QLatin1Char('x')));

    QTest::keyClicks(bench.editor.get(), QStringLiteral("typed"));
    bench.observer.clear();
    bench.send(KD::SaveFile);
    QVERIFY(bench.chooseUnchecked(path));
    QVERIFY(bench.editor->getCurrentFile().isEmpty());
    QVERIFY(bench.observer.events().empty()); // still modified
    QVERIFY(bench.state.commandFiles.isEmpty());
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("typed"));
    // Nothing is said, no box is shown; the next save asks.
    QVERIFY(!QApplication::activeModalWidget());
    const QString good = bench.path(QStringLiteral("good.txt"));
    QVERIFY(bench.saveAs(good));
    QCOMPARE(FileEditorBench::read(good), QByteArrayLiteral("typed"));
    QCOMPARE(bench.modifiedEvents(), Events{0});
}

void TestTerminalFileEditorFiles::readOnlyFileIsNotReplaced()
{
    FileEditorBench bench;
    const QString path = bench.write(QStringLiteral("a.txt"), "old\n");
    QVERIFY(setMode(path, 0444));
    QVERIFY(setMode(bench.folder.path(), 0777)); // another file could be put in its place
    QVERIFY(bench.open(path));
    QTest::keyClicks(bench.editor.get(), QStringLiteral("new "));
    {
        const OrdinaryUser user;
        QVERIFY(user.isOrdinary());
        bench.send(KD::SaveFile);
    }
    QCOMPARE(FileEditorBench::read(path), QByteArrayLiteral("old\n"));
    QVERIFY(bench.editor->getCurrentFile().isEmpty());
}

void TestTerminalFileEditorFiles::fullDiskKeepsTheOldFile()
{
    FileEditorBench bench;
    const QByteArray old = QByteArrayLiteral("# the only copy\n");
    const QString path = bench.write(QStringLiteral("a.txt"), old);
    QVERIFY(bench.open(path));
    bench.editor->insertPlainText(QString(200000, QLatin1Char('x')));
    bench.observer.clear();
    const QStringList recent = bench.state.commandFiles;
    {
        const FullDisk full(4096);
        bench.send(KD::SaveFile);
    }
    QCOMPARE(FileEditorBench::read(path), old);
    QCOMPARE(QDir(bench.folder.path()).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("a.txt")});
    QVERIFY(bench.editor->getCurrentFile().isEmpty());
    QVERIFY(bench.observer.events().empty());
    QCOMPARE(bench.state.commandFiles, recent);
    // What was typed is still there, and the next save asks where to put it.
    const QString other = bench.path(QStringLiteral("b.txt"));
    QVERIFY(bench.saveAs(other));
    QCOMPARE(FileEditorBench::read(other), QByteArray(200000, 'x') + old);
}

void TestTerminalFileEditorFiles::fullDiskLeavesNoHalfFile()
{
    FileEditorBench bench;
    bench.editor->insertPlainText(QString(200000, QLatin1Char('x')));
    bench.send(KD::SaveFile);
    QVERIFY(bench.dialog());
    {
        const FullDisk full(4096);
        Q_EMIT bench.dialog()->fileSelected(bench.path(QStringLiteral("new.txt")));
    }
    QVERIFY(bench.cancel());
    QVERIFY(QDir(bench.folder.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
    QVERIFY(bench.editor->getCurrentFile().isEmpty());
}

void TestTerminalFileEditorFiles::permissionsAreKept_data()
{
    QTest::addColumn<uint>("mode");
    for (const uint mode : {0600U, 0640U, 0644U, 0664U, 0755U})
        QTest::addRow("%o", mode) << mode;
}

void TestTerminalFileEditorFiles::permissionsAreKept()
{
    QFETCH(uint, mode);
    FileEditorBench bench;
    const QString path = bench.write(QStringLiteral("a.txt"), "one\n");
    QVERIFY(setMode(path, mode));
    QVERIFY(bench.open(path));
    QTest::keyClicks(bench.editor.get(), QStringLiteral("new "));
    bench.send(KD::SaveFile);
    QCOMPARE(FileEditorBench::read(path), QByteArrayLiteral("new one\n"));
    QCOMPARE(modeOf(path), mode);
}

void TestTerminalFileEditorFiles::newFileGetsTheUsualPermissions()
{
    FileEditorBench bench;
    const QString usual = bench.write(QStringLiteral("usual.txt"), "x");
    const QString path = bench.path(QStringLiteral("new.txt"));
    QVERIFY(bench.saveAs(path));
    QCOMPARE(modeOf(path), modeOf(usual));
}

void TestTerminalFileEditorFiles::linksAreFollowedAndKept_data()
{
    QTest::addColumn<QStringList>("targets"); // of link0, link1, ...; empty means the file's whole path
    const QString whole;
    QTest::newRow("one link") << QStringList{whole};
    QTest::newRow("relative link") << QStringList{QStringLiteral("below/a.txt")};
    QTest::newRow("chain") << QStringList{QStringLiteral("link1"), QStringLiteral("link2"), whole};
    QTest::newRow("relative chain") << QStringList{QStringLiteral("./link1"), QStringLiteral("below/a.txt")};
}

void TestTerminalFileEditorFiles::linksAreFollowedAndKept()
{
    QFETCH(QStringList, targets);
    FileEditorBench bench;
    QVERIFY(QDir(bench.folder.path()).mkdir(QStringLiteral("below")));
    const QString path = bench.write(QStringLiteral("below/a.txt"), "one\n");
    QVERIFY(setMode(path, 0640));
    QStringList links;
    for (int i = 0; i < targets.size(); ++i) {
        links.append(bench.path(QStringLiteral("link%1").arg(i)));
        const QString target = targets.at(i).isEmpty() ? path : targets.at(i);
        QCOMPARE(symlink(QFile::encodeName(target).constData(), QFile::encodeName(links.at(i)).constData()),
                 0);
    }
    QVERIFY(bench.open(links.constFirst()));
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("one\n"));
    QTest::keyClicks(bench.editor.get(), QStringLiteral("new "));
    bench.send(KD::SaveFile);
    QCOMPARE(FileEditorBench::read(path), QByteArrayLiteral("new one\n"));
    QCOMPARE(modeOf(path), mode_t(0640));
    for (const QString &link : std::as_const(links))
        QVERIFY2(QFileInfo(link).isSymLink(), qPrintable(link));
    QVERIFY(!QFileInfo(path).isSymLink());
    QCOMPARE(FileEditorBench::read(links.constFirst()), QByteArrayLiteral("new one\n"));
    QCOMPARE(bench.editor->getCurrentFile(), links.constFirst());
}

void TestTerminalFileEditorFiles::fileGoneSinceItWasOpenedIsWrittenAgain()
{
    FileEditorBench bench;
    const QString path = bench.write(QStringLiteral("a.txt"), "one\n");
    QVERIFY(bench.open(path));
    QVERIFY(QFile::remove(path));
    bench.send(KD::SaveFile);
    QVERIFY(!bench.dialog());
    QCOMPARE(FileEditorBench::read(path), QByteArrayLiteral("one\n"));
}

QTEST_MAIN(TestTerminalFileEditorFiles)
#include "tst_terminal_file_editor_files.moc"
