// What the file editor asks, tells and remembers. What becomes of the files is tested beside this.
#include "tests/command_terminal/context_translator.h"
#include "tests/command_terminal/file_editor_bench.h"

#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace
{

using Events = std::vector<qint64>;

void type(const FileEditorBench &bench, const char *text)
{
    QTest::keyClicks(bench.editor.get(), QLatin1String(text));
}

void addModes()
{
    QTest::addColumn<bool>("python");
    QTest::newRow("command files") << false;
    QTest::newRow("Python files") << true;
}

} // namespace

class TestTerminalFileEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsEmptyAndUnmodified();
    void openDialog_data() { addModes(); }
    void openDialog();
    void openDialogWithoutRecentFiles();
    void saveDialog_data() { addModes(); }
    void saveDialog();
    void saveDialogWithoutRecentFiles_data() { addModes(); }
    void saveDialogWithoutRecentFiles();
    void recentFileMayBeRelative();
    void titlesAreTranslatedInTheClassContext();
    void cancelledOpenChangesNothing();
    void cancelledSaveChangesNothing();
    void openedFileIsShownAndRemembered_data() { addModes(); }
    void openedFileIsShownAndRemembered();
    void openedTwiceIsRememberedTwice();
    void openReplacesWhatWasTyped();
    void saveAfterOpenWritesBackWithoutADialog();
    void saveAsksOnlyOnce_data() { addModes(); }
    void saveAsksOnlyOnce();
    void saveAsksBeforeItReplacesAFile_data();
    void saveAsksBeforeItReplacesAFile();
    void remembersTenFiles();
    void typingIsAnnouncedOnce();
    void typingAfterASaveIsAnnouncedOnce();
    void everyChangeCounts();
    void requestIsInsertedAtTheCursor();
    void requestIsInsertedWithoutAFile();
    void otherEventsAreIgnored();
    void onlyOneDialogAtATime();
    void dialogAsksAgainAfterItWasCancelled();
    void closedWhileADialogAsks_data();
    void closedWhileADialogAsks();
};

void TestTerminalFileEditor::startsEmptyAndUnmodified()
{
    const FileEditorBench bench;
    QVERIFY(bench.editor->toPlainText().isEmpty());
    QVERIFY(bench.editor->getCurrentFile().isEmpty());
    QVERIFY(bench.observer.events().empty());
}

void TestTerminalFileEditor::openDialog()
{
    QFETCH(bool, python);
    FileEditorBench bench(python);
    const QTemporaryDir other;
    bench.state.addCommandFile(python ? other.filePath(QStringLiteral("x"))
                                      : bench.path(QStringLiteral("x")));
    bench.state.addPythonFile(python ? bench.path(QStringLiteral("x")) : other.filePath(QStringLiteral("x")));
    bench.send(KD::OpenFile);
    const QFileDialog *dialog = bench.dialog();
    QVERIFY(dialog);
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Open Command File"));
    QCOMPARE(dialog->parentWidget(), bench.editor.get());
    QCOMPARE(dialog->windowModality(), Qt::WindowModal);
    QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptOpen);
    QCOMPARE(dialog->directory().absolutePath(), bench.folder.path());
    QCOMPARE(dialog->nameFilters(), QFileDialog().nameFilters());
    QVERIFY(bench.cancel());
}

void TestTerminalFileEditor::openDialogWithoutRecentFiles()
{
    FileEditorBench bench;
    bench.state.addPythonFile(bench.path(QStringLiteral("x"))); // of no interest here
    bench.send(KD::OpenFile);
    QVERIFY(bench.dialog());
    // Where a dialog starts that is given no directory.
    const QFileDialog plain(nullptr, QString(), QString());
    QCOMPARE(bench.dialog()->directory().absolutePath(), plain.directory().absolutePath());
    QVERIFY(bench.cancel());
}

void TestTerminalFileEditor::saveDialog()
{
    QFETCH(bool, python);
    FileEditorBench bench(python);
    const QTemporaryDir other;
    bench.state.addCommandFile(python ? other.filePath(QStringLiteral("x"))
                                      : bench.path(QStringLiteral("x")));
    bench.state.addPythonFile(python ? bench.path(QStringLiteral("x")) : other.filePath(QStringLiteral("x")));
    bench.send(KD::SaveFile);
    const QFileDialog *dialog = bench.dialog();
    QVERIFY(dialog);
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->windowTitle(),
             python ? QStringLiteral("Save Python File") : QStringLiteral("Save Command File"));
    QCOMPARE(dialog->parentWidget(), bench.editor.get());
    QCOMPARE(dialog->windowModality(), Qt::WindowModal);
    QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
    QCOMPARE(dialog->directory().absolutePath(), bench.folder.path());
    QCOMPARE(dialog->nameFilters(), QFileDialog().nameFilters());
    QVERIFY(bench.cancel());
}

void TestTerminalFileEditor::saveDialogWithoutRecentFiles()
{
    QFETCH(bool, python);
    FileEditorBench bench(python);
    const QString elsewhere = bench.path(QStringLiteral("x"));
    if (python)
        bench.state.addCommandFile(elsewhere);
    else
        bench.state.addPythonFile(elsewhere);
    bench.send(KD::SaveFile);
    QVERIFY(bench.dialog());
    QCOMPARE(bench.dialog()->directory().absolutePath(), bench.mainData.getDefaultDirectory());
    QVERIFY(bench.cancel());
}

void TestTerminalFileEditor::recentFileMayBeRelative()
{
    FileEditorBench bench;
    bench.state.addCommandFile(QStringLiteral("ramp_up.txt"));
    for (const KD::EventType type : {KD::OpenFile, KD::SaveFile}) {
        bench.send(type);
        QVERIFY(bench.dialog());
        QCOMPARE(bench.dialog()->directory().absolutePath(), QDir::currentPath());
        QVERIFY(bench.cancel());
    }
}

void TestTerminalFileEditor::titlesAreTranslatedInTheClassContext()
{
    const ContextTranslator translator;
    FileEditorBench bench;
    bench.send(KD::OpenFile);
    QVERIFY(bench.dialog());
    QCOMPARE(bench.dialog()->windowTitle(), QStringLiteral("[TerminalFileEditor]Open Command File"));
    QVERIFY(bench.cancel());
    bench.send(KD::SaveFile);
    QVERIFY(bench.dialog());
    QCOMPARE(bench.dialog()->windowTitle(), QStringLiteral("[TerminalFileEditor]Save Command File"));
    QVERIFY(bench.cancel());
    bench.editor->setPythonMode(true);
    bench.send(KD::SaveFile);
    QVERIFY(bench.dialog());
    QCOMPARE(bench.dialog()->windowTitle(), QStringLiteral("[TerminalFileEditor]Save Python File"));
    QVERIFY(bench.cancel());
}

void TestTerminalFileEditor::cancelledOpenChangesNothing()
{
    FileEditorBench bench;
    type(bench, "typed");
    bench.observer.clear();
    bench.send(KD::OpenFile);
    QVERIFY(bench.cancel());
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("typed"));
    QVERIFY(bench.editor->getCurrentFile().isEmpty());
    QVERIFY(bench.observer.events().empty());
    QVERIFY(bench.state.commandFiles.isEmpty());
}

void TestTerminalFileEditor::cancelledSaveChangesNothing()
{
    FileEditorBench bench;
    type(bench, "typed");
    bench.send(KD::SaveFile);
    QVERIFY(bench.cancel());
    QVERIFY(bench.editor->getCurrentFile().isEmpty());
    QCOMPARE(bench.modifiedEvents(), Events{1}); // the save action stays enabled
    QVERIFY(bench.state.commandFiles.isEmpty());
    // Still modified: typing on says nothing new.
    type(bench, " on");
    QCOMPARE(bench.modifiedEvents(), Events{1});
    bench.send(KD::SaveFile);
    QVERIFY(bench.dialog());
    QVERIFY(bench.cancel());
}

void TestTerminalFileEditor::openedFileIsShownAndRemembered()
{
    QFETCH(bool, python);
    FileEditorBench bench(python);
    const QString path = bench.write(QStringLiteral("a.txt"), "one\ntwo\n");
    QVERIFY(bench.open(path));
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("one\ntwo\n"));
    QCOMPARE(bench.editor->getCurrentFile(), path);
    QCOMPARE(python ? bench.state.pythonFiles : bench.state.commandFiles, QStringList{path});
    QVERIFY((python ? bench.state.commandFiles : bench.state.pythonFiles).isEmpty());
    // Filling the editor is a change like any other; the file's own text is not.
    QCOMPARE(bench.modifiedEvents(), (Events{1, 0}));
    bench.observer.clear();
    type(bench, "x");
    QCOMPARE(bench.modifiedEvents(), Events{1});
}

void TestTerminalFileEditor::openedTwiceIsRememberedTwice()
{
    FileEditorBench bench;
    const QString older = bench.path(QStringLiteral("older.txt"));
    bench.state.addCommandFile(older);
    const QString path = bench.write(QStringLiteral("a.txt"), "one\n");
    QVERIFY(bench.open(path));
    QVERIFY(bench.open(path));
    QCOMPARE(bench.state.commandFiles, QStringList({path, path, older}));
}

void TestTerminalFileEditor::openReplacesWhatWasTyped()
{
    FileEditorBench bench;
    type(bench, "typed");
    QVERIFY(bench.open(bench.write(QStringLiteral("a.txt"), "one")));
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("one"));
    QCOMPARE(bench.modifiedEvents(), (Events{1, 0}));
}

void TestTerminalFileEditor::saveAfterOpenWritesBackWithoutADialog()
{
    FileEditorBench bench;
    const QString path = bench.write(QStringLiteral("a.txt"), "one\n");
    QVERIFY(bench.open(path));
    type(bench, "new ");
    bench.observer.clear();
    bench.send(KD::SaveFile);
    QVERIFY(!bench.dialog());
    QCOMPARE(FileEditorBench::read(path), QByteArrayLiteral("new one\n"));
    QCOMPARE(bench.modifiedEvents(), Events{0});
    QCOMPARE(bench.state.commandFiles, QStringList({path, path}));
}

void TestTerminalFileEditor::saveAsksOnlyOnce()
{
    QFETCH(bool, python);
    FileEditorBench bench(python);
    const QString path = bench.path(QStringLiteral("new.txt"));
    type(bench, "one");
    QVERIFY(bench.saveAs(path));
    QCOMPARE(FileEditorBench::read(path), QByteArrayLiteral("one"));
    QCOMPARE(bench.editor->getCurrentFile(), path);
    QCOMPARE(bench.modifiedEvents(), (Events{1, 0}));
    QCOMPARE(python ? bench.state.pythonFiles : bench.state.commandFiles, QStringList{path});
    QVERIFY((python ? bench.state.commandFiles : bench.state.pythonFiles).isEmpty());

    type(bench, " two");
    bench.send(KD::SaveFile);
    QVERIFY(!bench.dialog());
    QCOMPARE(FileEditorBench::read(path), QByteArrayLiteral("one two"));
    QCOMPARE(bench.modifiedEvents(), (Events{1, 0, 1, 0}));
    QCOMPARE(python ? bench.state.pythonFiles : bench.state.commandFiles, QStringList({path, path}));
}

void TestTerminalFileEditor::saveAsksBeforeItReplacesAFile_data()
{
    QTest::addColumn<bool>("replace");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("yes") << true << QByteArrayLiteral("new");
    QTest::newRow("no") << false << QByteArrayLiteral("old");
}

void TestTerminalFileEditor::saveAsksBeforeItReplacesAFile()
{
    QFETCH(bool, replace);
    QFETCH(QByteArray, content);
    FileEditorBench bench;
    const QString path = bench.write(QStringLiteral("a.txt"), "old");
    type(bench, "new");
    bench.send(KD::SaveFile);
    QVERIFY(bench.dialog());
    // The question blocks, so it is answered from the event loop that it runs; it comes at once or never.
    const QMessageBox::StandardButton answer = replace ? QMessageBox::Yes : QMessageBox::No;
    bool asked = false;
    QTimer::singleShot(0, bench.dialog(), [&] {
        auto *question = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        asked = question && question->button(answer);
        if (asked)
            question->button(answer)->click();
    });
    if (replace) {
        QVERIFY(bench.choose(path));
    } else {
        bench.dialog()->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(path);
        QMetaObject::invokeMethod(bench.dialog(), "accept");
        QVERIFY(bench.cancel()); // it goes on asking
    }
    QVERIFY(asked);
    QCOMPARE(FileEditorBench::read(path), content);
}

void TestTerminalFileEditor::remembersTenFiles()
{
    FileEditorBench bench;
    QStringList expected;
    for (int i = 0; i < 11; ++i) {
        const QString path = bench.write(QStringLiteral("%1.txt").arg(i), "x");
        QVERIFY(bench.open(path));
        expected.prepend(path);
    }
    expected.removeLast();
    QCOMPARE(bench.state.commandFiles, expected);
}

void TestTerminalFileEditor::typingIsAnnouncedOnce()
{
    FileEditorBench bench;
    type(bench, "abc");
    QTest::keyClick(bench.editor.get(), Qt::Key_Return);
    QTest::keyClick(bench.editor.get(), Qt::Key_Backspace);
    QCOMPARE(bench.modifiedEvents(), Events{1});
    QCOMPARE(bench.observer.events().size(), std::size_t(1));
}

void TestTerminalFileEditor::typingAfterASaveIsAnnouncedOnce()
{
    FileEditorBench bench;
    type(bench, "abc");
    QVERIFY(bench.saveAs(bench.path(QStringLiteral("a.txt"))));
    bench.observer.clear();
    type(bench, "def");
    QCOMPARE(bench.modifiedEvents(), Events{1});
    QCOMPARE(bench.observer.events().size(), std::size_t(1));
}

void TestTerminalFileEditor::everyChangeCounts()
{
    FileEditorBench bench;
    // Moving about changes nothing.
    QVERIFY(bench.open(bench.write(QStringLiteral("a.txt"), "one\ntwo\n")));
    bench.observer.clear();
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_End, Qt::Key_Left, Qt::Key_Home})
        QTest::keyClick(bench.editor.get(), key);
    QVERIFY(bench.observer.events().empty());
    QTest::keyClick(bench.editor.get(), Qt::Key_Delete);
    QCOMPARE(bench.modifiedEvents(), Events{1});
}

void TestTerminalFileEditor::requestIsInsertedAtTheCursor()
{
    FileEditorBench bench;
    QVERIFY(bench.open(bench.write(QStringLiteral("a.txt"), "one\ntwo\n")));
    bench.observer.clear();
    QTest::keyClick(bench.editor.get(), Qt::Key_Down);
    for (const char *request : {"{1}", "{2}"}) {
        KdChildEvent event(KD::Request, QLatin1String(request));
        bench.editor->handleEvent(event);
    }
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("one\n{1}\n{2}\ntwo\n"));
    QCOMPARE(bench.modifiedEvents(), Events{1});
    QVERIFY(bench.backend.requests().isEmpty());
}

void TestTerminalFileEditor::requestIsInsertedWithoutAFile()
{
    FileEditorBench bench;
    KdChildEvent event(KD::Request, QStringLiteral("{1}"));
    bench.editor->handleEvent(event);
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("{1}\n"));
    QCOMPARE(bench.modifiedEvents(), Events{1});
}

void TestTerminalFileEditor::otherEventsAreIgnored()
{
    FileEditorBench bench;
    type(bench, "typed");
    bench.observer.clear();
    for (quint32 number = 245; number < 270; ++number) {
        if (number == KD::OpenFile || number == KD::SaveFile || number == KD::Request)
            continue;
        KdChildEvent event(static_cast<KD::EventType>(number), QStringLiteral("x"));
        bench.editor->handleEvent(event);
        QVERIFY(!bench.dialog());
    }
    QCOMPARE(bench.editor->toPlainText(), QStringLiteral("typed"));
    QVERIFY(bench.observer.events().empty());
}

void TestTerminalFileEditor::onlyOneDialogAtATime()
{
    FileEditorBench bench;
    bench.send(KD::OpenFile);
    bench.send(KD::OpenFile);
    bench.send(KD::SaveFile);
    QCOMPARE(bench.editor->findChildren<QFileDialog *>().size(), 1);
    QVERIFY(bench.cancel());
}

void TestTerminalFileEditor::dialogAsksAgainAfterItWasCancelled()
{
    FileEditorBench bench;
    for (int i = 0; i < 3; ++i) {
        bench.send(KD::OpenFile);
        QVERIFY(bench.dialog());
        QVERIFY(bench.cancel());
        bench.send(KD::SaveFile);
        QVERIFY(bench.dialog());
        QVERIFY(bench.cancel());
    }
}

void TestTerminalFileEditor::closedWhileADialogAsks_data()
{
    QTest::addColumn<int>("event");
    QTest::newRow("open") << int(KD::OpenFile);
    QTest::newRow("save") << int(KD::SaveFile);
}

void TestTerminalFileEditor::closedWhileADialogAsks()
{
    QFETCH(int, event);
    FileEditorBench bench;
    type(bench, "typed");
    bench.send(static_cast<KD::EventType>(event));
    const QPointer<QFileDialog> dialog = bench.dialog();
    QVERIFY(dialog);
    bench.editor.reset();
    QVERIFY(dialog.isNull());
    QCoreApplication::processEvents();
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(bench.state.commandFiles.isEmpty());
}

QTEST_MAIN(TestTerminalFileEditor)
#include "tst_terminal_file_editor.moc"
