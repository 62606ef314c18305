#include "command_terminal/terminal_widget.h"
#include "tests/command_terminal/context_translator.h"
#include "tests/command_terminal/terminal_widget_bench.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QPushButton>
#include <QTextBlock>
#include <QWindow>
#include <QtTest>

/// Ctrl+C: it stops a command file and a wait while there is one, copies where text is selected, and is nothing else.
class TestTerminalWidgetStop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void stopsARequest();
    void stopsAWaitLine();
    void stopsAFileAndItsWait();
    void stopsAFileThatRunsWithoutWaiting_data();
    void stopsAFileThatRunsWithoutWaiting();
    void stopsWhileTheEditorIsShown();
    void worksFromAField();
    void saysSoInRed_data();
    void saysSoInRed();
    void copiesASelectionInTheEditor();
    void copiesASelectionInTheConsole();
    void copiesASelectionInAField();
    void fromOutsideStopsNothing();
    void withNothingToStopItDoesNothing_data();
    void withNothingToStopItDoesNothing();
    void withNothingToStopTheKeysAreTheHosts();
    void aHostsCopyActionDoesNotTakeTheKeys_data();
    void aHostsCopyActionDoesNotTakeTheKeys();
    void aHostsCopyActionDoesNotTakeTheKeysOfAWait();
    void aHostsCopyActionLeavesCopyingToTheTexts_data();
    void aHostsCopyActionLeavesCopyingToTheTexts();
    void stopsFromTheListOfABox_data();
    void stopsFromTheListOfABox();
    void copiesWithNothingToStop();
    void theKeysAreNobodysAfterwards();
    void aLateAnswerIsPrinted();
    void theFocusReturns();
    void aFileCanRunAgain();

private:
    /// The host's own action for these keys, in the window of the tool.
    struct HostCopy
    {
        explicit HostCopy(QWidget &window)
        {
            action.setShortcut(QKeySequence::Copy);
            window.addAction(&action);
        }
        QAction action;
        QSignalSpy triggered{&action, &QAction::triggered};
    };

    QWidget *focused() const { return bench->window.focusWidget(); }
    void pressCtrlC() const { QTest::keyClick(focused(), Qt::Key_C, Qt::ControlModifier); }
    /// Through the window, as real keys come.
    void pressCtrlCInTheWindow() const
    {
        QTest::keyClick(bench->window.windowHandle(), Qt::Key_C, Qt::ControlModifier);
    }
    void runFile(const QString &text) const
    {
        bench->editor->setPlainText(text);
        bench->send(KD::ExecuteFile);
    }
    /// Runs longer than the window is kept waiting for it, and never waits itself.
    void runLongFile() const
    {
        constexpr int Lines = 300000;
        bench->console->runCommandFile(QStringLiteral("# line\n").repeated(Lines));
        QVERIFY(bench->console->isFileRunning());
        QVERIFY(bench->console->isEnabled());
    }
    /// The stretches of red text, in order.
    QStringList redTexts() const
    {
        QStringList texts;
        for (QTextBlock block = bench->console->document()->begin(); block.isValid(); block = block.next()) {
            for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
                if (it.fragment().charFormat().foreground().color() == QColor(Qt::red))
                    texts.append(it.fragment().text());
            }
        }
        return texts;
    }
    bool isWaiting() const
    {
        return !bench->console->isEnabled() && !bench->panel->isEnabled()
            && bench->tool->cursor().shape() == Qt::BusyCursor;
    }
    bool isIdle() const
    {
        return bench->console->isEnabled() && bench->panel->isEnabled()
            && bench->tool->cursor().shape() == Qt::ArrowCursor && !bench->console->isFileRunning()
            && bench->console->toPlainText().endsWith(QLatin1String("\n> "));
    }

    std::unique_ptr<TerminalWidgetBench> bench;
};

void TestTerminalWidgetStop::init()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    bench = std::make_unique<TerminalWidgetBench>();
    QVERIFY(bench->showActive());
    bench->console->setFocus();
}

void TestTerminalWidgetStop::cleanup()
{
    bench.reset();
}

// It stops

void TestTerminalWidgetStop::stopsARequest()
{
    bench->beginWaiting();
    QVERIFY(isWaiting());
    pressCtrlC();
    QVERIFY(isIdle());
    QCOMPARE(redTexts().size(), 1);
}

void TestTerminalWidgetStop::stopsAWaitLine()
{
    bench->send(KD::Request, QStringLiteral("wait 60000"));
    QVERIFY(isWaiting());
    pressCtrlC();
    QVERIFY(isIdle());
    QCOMPARE(redTexts().size(), 1);
}

void TestTerminalWidgetStop::stopsAFileAndItsWait()
{
    runFile(QStringLiteral("one\nwait 60000\ntwo\nthree\n"));
    bench->endWaiting();
    QVERIFY(isWaiting());
    QVERIFY(bench->console->isFileRunning());
    pressCtrlC();
    QVERIFY(isIdle());
    QCOMPARE(bench->backend.requests(), QStringList{QStringLiteral("one")});
    // Neither what comes in later nor what is typed goes on with it.
    bench->say(QStringLiteral("late"));
    QTest::keyClick(bench->console, Qt::Key_Return);
    QCOMPARE(bench->backend.requests(), QStringList{QStringLiteral("one")});
}

void TestTerminalWidgetStop::stopsAFileThatRunsWithoutWaiting_data()
{
    QTest::addColumn<bool>("editing");
    QTest::newRow("console") << false;
    QTest::newRow("editor") << true;
}

void TestTerminalWidgetStop::stopsAFileThatRunsWithoutWaiting()
{
    QFETCH(bool, editing);
    runLongFile();
    if (editing)
        bench->send(KD::ShowEditor);
    pressCtrlC();
    QVERIFY(isIdle());
    QCOMPARE(redTexts().size(), 1);
    const QString stopped = bench->console->toPlainText();
    QCoreApplication::processEvents();
    QCOMPARE(bench->console->toPlainText(), stopped);
}

void TestTerminalWidgetStop::stopsWhileTheEditorIsShown()
{
    bench->beginWaiting();
    bench->send(KD::ShowEditor);
    bench->editor->setPlainText(QStringLiteral("text"));
    QVERIFY(bench->editor->hasFocus());
    pressCtrlC();
    QVERIFY(isIdle());
    QVERIFY(bench->editor->hasFocus());
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
}

void TestTerminalWidgetStop::worksFromAField()
{
    bench->field("valueEdit")->setText(QStringLiteral("12"));
    runLongFile();
    bench->field("valueEdit")->setFocus();
    bench->field("valueEdit")->deselect();
    pressCtrlC();
    QVERIFY(isIdle());
    QVERIFY(bench->field("valueEdit")->hasFocus());
}

void TestTerminalWidgetStop::saysSoInRed_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("said");
    QTest::newRow("file") << QStringLiteral("wait 60000\n") << QStringLiteral("command file stopped");
    QTest::newRow("wait") << QString() << QStringLiteral("waiting stopped");
}

void TestTerminalWidgetStop::saysSoInRed()
{
    QFETCH(QString, file);
    QFETCH(QString, said);
    const ContextTranslator translator;
    file.isEmpty() ? bench->beginWaiting() : runFile(file);
    pressCtrlC();
    QCOMPARE(redTexts(), QStringList{QStringLiteral("[TerminalOrbClientConsole]") + said});
    QVERIFY(isIdle());
}

// It copies

void TestTerminalWidgetStop::copiesASelectionInTheEditor()
{
    bench->beginWaiting();
    bench->send(KD::ShowEditor);
    bench->editor->setPlainText(QStringLiteral("the text"));
    bench->editor->selectAll();
    pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("the text"));
    QVERIFY(isWaiting());
    QVERIFY(redTexts().isEmpty());
}

void TestTerminalWidgetStop::copiesASelectionInTheConsole()
{
    runLongFile();
    bench->console->moveCursor(QTextCursor::StartOfLine, QTextCursor::KeepAnchor);
    QVERIFY(bench->console->textCursor().hasSelection());
    const QString selected = bench->console->textCursor().selectedText();
    pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), selected);
    QVERIFY(bench->console->isFileRunning());
    QVERIFY(redTexts().isEmpty());
    bench->console->stopExecution();
}

void TestTerminalWidgetStop::copiesASelectionInAField()
{
    bench->field("valueEdit")->setText(QStringLiteral("12"));
    runLongFile();
    bench->field("valueEdit")->setFocus();
    bench->field("valueEdit")->selectAll();
    pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("12"));
    QVERIFY(bench->console->isFileRunning());
    bench->console->stopExecution();
}

// It is nothing else

void TestTerminalWidgetStop::fromOutsideStopsNothing()
{
    // A text field would claim the keys for itself.
    QPushButton outside(&bench->window);
    outside.show();
    outside.setFocus();
    bench->beginWaiting();
    QVERIFY(outside.hasFocus());
    pressCtrlC();
    QVERIFY(isWaiting());
    QVERIFY(redTexts().isEmpty());
}

void TestTerminalWidgetStop::withNothingToStopItDoesNothing_data()
{
    QTest::addColumn<QString>("place");
    QTest::newRow("console") << QStringLiteral("console");
    QTest::newRow("editor") << QStringLiteral("editor");
    QTest::newRow("field") << QStringLiteral("lineEdit");
}

void TestTerminalWidgetStop::withNothingToStopItDoesNothing()
{
    QFETCH(QString, place);
    if (place == QLatin1String("editor"))
        bench->send(KD::ShowEditor);
    bench->tool->findChild<QWidget *>(place)->setFocus();
    QCOMPARE(focused()->objectName(), place);
    pressCtrlC();
    QCOMPARE(bench->console->toPlainText(), QStringLiteral("> "));
    QCOMPARE(bench->editor->toPlainText(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalWidgetStop::withNothingToStopTheKeysAreTheHosts()
{
    const HostCopy host(bench->window);
    // A button makes nothing of these keys itself.
    bench->panel->findChild<QPushButton *>(QStringLiteral("getButton"))->setFocus();
    pressCtrlC();
    QCOMPARE(host.triggered.size(), 1);
    bench->beginWaiting();
    bench->endWaiting();
    pressCtrlC();
    QCOMPARE(host.triggered.size(), 2);
}

void TestTerminalWidgetStop::aHostsCopyActionDoesNotTakeTheKeys_data()
{
    QTest::addColumn<bool>("editing");
    QTest::newRow("console") << false;
    QTest::newRow("editor") << true;
    QTest::newRow("lineEdit") << false;
    QTest::newRow("valueEdit") << false;
    QTest::newRow("itemBox") << false;
    QTest::newRow("getButton") << false;
}

void TestTerminalWidgetStop::aHostsCopyActionDoesNotTakeTheKeys()
{
    QFETCH(bool, editing);
    const HostCopy host(bench->window);
    runLongFile();
    if (editing)
        bench->send(KD::ShowEditor);
    bench->tool->findChild<QWidget *>(QString::fromLatin1(QTest::currentDataTag()))->setFocus();
    QCOMPARE(focused()->objectName(), QString::fromLatin1(QTest::currentDataTag()));
    pressCtrlCInTheWindow();
    QVERIFY(isIdle());
    QCOMPARE(redTexts().size(), 1);
    QCOMPARE(host.triggered.size(), 0);
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
}

void TestTerminalWidgetStop::aHostsCopyActionDoesNotTakeTheKeysOfAWait()
{
    const HostCopy host(bench->window);
    bench->beginWaiting();
    QCOMPARE(focused(), bench->tool);
    pressCtrlCInTheWindow();
    QVERIFY(isIdle());
    QCOMPARE(redTexts().size(), 1);
    QCOMPARE(host.triggered.size(), 0);
    // From elsewhere in the window the keys are the host's, whatever the tool does.
    QPushButton outside(&bench->window);
    outside.show();
    outside.setFocus();
    bench->beginWaiting();
    pressCtrlCInTheWindow();
    QVERIFY(isWaiting());
    QCOMPARE(host.triggered.size(), 1);
}

void TestTerminalWidgetStop::aHostsCopyActionLeavesCopyingToTheTexts_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<bool>("running");
    QTest::newRow("console") << QStringLiteral("console") << false;
    QTest::newRow("console, while a file runs") << QStringLiteral("console") << true;
    QTest::newRow("editor") << QStringLiteral("editor") << false;
    QTest::newRow("editor, while a file runs") << QStringLiteral("editor") << true;
    QTest::newRow("field") << QStringLiteral("valueEdit") << false;
    QTest::newRow("field, while a file runs") << QStringLiteral("valueEdit") << true;
}

void TestTerminalWidgetStop::aHostsCopyActionLeavesCopyingToTheTexts()
{
    QFETCH(QString, place);
    QFETCH(bool, running);
    const HostCopy host(bench->window);
    bench->console->printSuccessAbovePrompt(QStringLiteral("the text"));
    bench->editor->setPlainText(QStringLiteral("the text"));
    bench->field("valueEdit")->setText(QStringLiteral("the text"));
    if (running)
        runLongFile();
    if (place == QLatin1String("editor"))
        bench->send(KD::ShowEditor);
    bench->tool->findChild<QWidget *>(place)->setFocus();
    QVERIFY(QMetaObject::invokeMethod(focused(), "selectAll"));
    // Not through the window: the file would go on meanwhile, and its lines unmark what is marked in the console.
    pressCtrlC();
    QVERIFY(QGuiApplication::clipboard()->text().contains(QLatin1String("the text")));
    QCOMPARE(bench->console->isFileRunning(), running);
    QVERIFY(redTexts().isEmpty());
    QCOMPARE(host.triggered.size(), 0);
    bench->console->stopExecution();
}

void TestTerminalWidgetStop::stopsFromTheListOfABox_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("items") << QStringLiteral("itemBox");
    QTest::newRow("controllers") << QStringLiteral("controllerBox");
}

void TestTerminalWidgetStop::stopsFromTheListOfABox()
{
    QFETCH(QString, name);
    auto *box = bench->tool->findChild<QComboBox *>(name);
    runLongFile();
    box->showPopup();
    QTRY_VERIFY(box->view()->isVisible());
    QTest::keyClick(box->view(), Qt::Key_C, Qt::ControlModifier);
    box->hidePopup();
    QVERIFY(isIdle());
    QCOMPARE(redTexts().size(), 1);
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
}

void TestTerminalWidgetStop::copiesWithNothingToStop()
{
    bench->console->printText(QStringLiteral("output"));
    bench->console->selectAll();
    pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("> output"));
    QVERIFY(redTexts().isEmpty());
}

void TestTerminalWidgetStop::theKeysAreNobodysAfterwards()
{
    bench->beginWaiting();
    pressCtrlC();
    QCOMPARE(redTexts().size(), 1);
    const QString before = bench->console->toPlainText();
    pressCtrlC();
    QCOMPARE(bench->console->toPlainText(), before);
    // Neither are they when the wait ended by itself.
    bench->beginWaiting();
    bench->endWaiting();
    const int red = redTexts().size();
    pressCtrlC();
    QCOMPARE(redTexts().size(), red);
}

void TestTerminalWidgetStop::aLateAnswerIsPrinted()
{
    bench->beginWaiting();
    pressCtrlC();
    bench->say(QStringLiteral("the late answer"));
    QVERIFY(bench->console->toPlainText().contains(QLatin1String("the late answer")));
    QVERIFY(isIdle());
}

void TestTerminalWidgetStop::theFocusReturns()
{
    bench->beginWaiting();
    QVERIFY(!bench->console->hasFocus());
    pressCtrlC();
    QVERIFY(bench->console->hasFocus());

    bench->field("unitEdit")->setFocus();
    bench->beginWaiting();
    pressCtrlC();
    QVERIFY(bench->field("unitEdit")->hasFocus());
}

void TestTerminalWidgetStop::aFileCanRunAgain()
{
    runFile(QStringLiteral("one\ntwo\n"));
    pressCtrlC();
    runFile(QStringLiteral("three\nfour\n"));
    bench->endWaiting();
    bench->endWaiting();
    QCOMPARE(bench->backend.requests(),
             (QStringList{QStringLiteral("one"), QStringLiteral("three"), QStringLiteral("four")}));
    QVERIFY(isIdle());
}

QTEST_MAIN(TestTerminalWidgetStop)
#include "tst_terminal_widget_stop.moc"
