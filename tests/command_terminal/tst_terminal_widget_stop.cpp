#include "command_terminal/terminal_widget.h"
#include "tests/command_terminal/context_translator.h"
#include "tests/command_terminal/terminal_widget_bench.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPushButton>
#include <QTextBlock>
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
    void copiesWithNothingToStop();
    void theKeysAreNobodysAfterwards();
    void aLateAnswerIsPrinted();
    void theFocusReturns();
    void aFileCanRunAgain();

private:
    QWidget *focused() const { return m_bench->window.focusWidget(); }
    void pressCtrlC() const { QTest::keyClick(focused(), Qt::Key_C, Qt::ControlModifier); }
    void runFile(const QString &text) const
    {
        m_bench->editor->setPlainText(text);
        m_bench->send(KD::ExecuteFile);
    }
    /// Runs longer than the window is kept waiting for it, and never waits itself.
    void runLongFile() const
    {
        constexpr int Lines = 300000;
        m_bench->console->runCommandFile(QStringLiteral("# line\n").repeated(Lines));
        QVERIFY(m_bench->console->isFileRunning());
        QVERIFY(m_bench->console->isEnabled());
    }
    /// The stretches of red text, in order.
    QStringList redTexts() const
    {
        QStringList texts;
        for (QTextBlock block = m_bench->console->document()->begin(); block.isValid();
             block = block.next()) {
            for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
                if (it.fragment().charFormat().foreground().color() == QColor(Qt::red))
                    texts.append(it.fragment().text());
            }
        }
        return texts;
    }
    bool isWaiting() const
    {
        return !m_bench->console->isEnabled() && !m_bench->panel->isEnabled()
            && m_bench->tool->cursor().shape() == Qt::BusyCursor;
    }
    bool isIdle() const
    {
        return m_bench->console->isEnabled() && m_bench->panel->isEnabled()
            && m_bench->tool->cursor().shape() == Qt::ArrowCursor && !m_bench->console->isFileRunning()
            && m_bench->console->toPlainText().endsWith(QLatin1String("\n> "));
    }

    std::unique_ptr<TerminalWidgetBench> m_bench;
};

void TestTerminalWidgetStop::init()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    m_bench = std::make_unique<TerminalWidgetBench>();
    QVERIFY(m_bench->showActive());
    m_bench->console->setFocus();
}

void TestTerminalWidgetStop::cleanup()
{
    m_bench.reset();
}

// It stops

void TestTerminalWidgetStop::stopsARequest()
{
    m_bench->beginWaiting();
    QVERIFY(isWaiting());
    pressCtrlC();
    QVERIFY(isIdle());
    QCOMPARE(redTexts().size(), 1);
}

void TestTerminalWidgetStop::stopsAWaitLine()
{
    m_bench->send(KD::Request, QStringLiteral("wait 60000"));
    QVERIFY(isWaiting());
    pressCtrlC();
    QVERIFY(isIdle());
    QCOMPARE(redTexts().size(), 1);
}

void TestTerminalWidgetStop::stopsAFileAndItsWait()
{
    runFile(QStringLiteral("one\nwait 60000\ntwo\nthree\n"));
    m_bench->endWaiting();
    QVERIFY(isWaiting());
    QVERIFY(m_bench->console->isFileRunning());
    pressCtrlC();
    QVERIFY(isIdle());
    QCOMPARE(m_bench->backend.requests(), QStringList{QStringLiteral("one")});
    // Neither what comes in later nor what is typed goes on with it.
    m_bench->say(QStringLiteral("late"));
    QTest::keyClick(m_bench->console, Qt::Key_Return);
    QCOMPARE(m_bench->backend.requests(), QStringList{QStringLiteral("one")});
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
        m_bench->send(KD::ShowEditor);
    pressCtrlC();
    QVERIFY(isIdle());
    QCOMPARE(redTexts().size(), 1);
    const QString stopped = m_bench->console->toPlainText();
    QCoreApplication::processEvents();
    QCOMPARE(m_bench->console->toPlainText(), stopped);
}

void TestTerminalWidgetStop::stopsWhileTheEditorIsShown()
{
    m_bench->beginWaiting();
    m_bench->send(KD::ShowEditor);
    m_bench->editor->setPlainText(QStringLiteral("text"));
    QVERIFY(m_bench->editor->hasFocus());
    pressCtrlC();
    QVERIFY(isIdle());
    QVERIFY(m_bench->editor->hasFocus());
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
}

void TestTerminalWidgetStop::worksFromAField()
{
    m_bench->field("valueEdit")->setText(QStringLiteral("12"));
    runLongFile();
    m_bench->field("valueEdit")->setFocus();
    m_bench->field("valueEdit")->deselect();
    pressCtrlC();
    QVERIFY(isIdle());
    QVERIFY(m_bench->field("valueEdit")->hasFocus());
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
    file.isEmpty() ? m_bench->beginWaiting() : runFile(file);
    pressCtrlC();
    QCOMPARE(redTexts(), QStringList{QStringLiteral("[TerminalOrbClientConsole]") + said});
    QVERIFY(isIdle());
}

// It copies

void TestTerminalWidgetStop::copiesASelectionInTheEditor()
{
    m_bench->beginWaiting();
    m_bench->send(KD::ShowEditor);
    m_bench->editor->setPlainText(QStringLiteral("the text"));
    m_bench->editor->selectAll();
    pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("the text"));
    QVERIFY(isWaiting());
    QVERIFY(redTexts().isEmpty());
}

void TestTerminalWidgetStop::copiesASelectionInTheConsole()
{
    runLongFile();
    m_bench->console->moveCursor(QTextCursor::StartOfLine, QTextCursor::KeepAnchor);
    QVERIFY(m_bench->console->textCursor().hasSelection());
    const QString selected = m_bench->console->textCursor().selectedText();
    pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), selected);
    QVERIFY(m_bench->console->isFileRunning());
    QVERIFY(redTexts().isEmpty());
    m_bench->console->stopExecution();
}

void TestTerminalWidgetStop::copiesASelectionInAField()
{
    m_bench->field("valueEdit")->setText(QStringLiteral("12"));
    runLongFile();
    m_bench->field("valueEdit")->setFocus();
    m_bench->field("valueEdit")->selectAll();
    pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("12"));
    QVERIFY(m_bench->console->isFileRunning());
    m_bench->console->stopExecution();
}

// It is nothing else

void TestTerminalWidgetStop::fromOutsideStopsNothing()
{
    // A text field would claim the keys for itself.
    QPushButton outside(&m_bench->window);
    outside.show();
    outside.setFocus();
    m_bench->beginWaiting();
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
        m_bench->send(KD::ShowEditor);
    m_bench->tool->findChild<QWidget *>(place)->setFocus();
    QCOMPARE(focused()->objectName(), place);
    pressCtrlC();
    QCOMPARE(m_bench->console->toPlainText(), QStringLiteral("> "));
    QCOMPARE(m_bench->editor->toPlainText(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
    QVERIFY(m_bench->observer.events().empty());
}

void TestTerminalWidgetStop::withNothingToStopTheKeysAreTheHosts()
{
    QAction hostCopy;
    hostCopy.setShortcut(QKeySequence::Copy);
    m_bench->window.addAction(&hostCopy);
    QSignalSpy triggered(&hostCopy, &QAction::triggered);
    // A button makes nothing of these keys itself.
    m_bench->panel->findChild<QPushButton *>(QStringLiteral("getButton"))->setFocus();
    pressCtrlC();
    QCOMPARE(triggered.size(), 1);
    m_bench->beginWaiting();
    m_bench->endWaiting();
    pressCtrlC();
    QCOMPARE(triggered.size(), 2);
}

void TestTerminalWidgetStop::copiesWithNothingToStop()
{
    m_bench->console->printText(QStringLiteral("output"));
    m_bench->console->selectAll();
    pressCtrlC();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("> output"));
    QVERIFY(redTexts().isEmpty());
}

void TestTerminalWidgetStop::theKeysAreNobodysAfterwards()
{
    m_bench->beginWaiting();
    pressCtrlC();
    QCOMPARE(redTexts().size(), 1);
    const QString before = m_bench->console->toPlainText();
    pressCtrlC();
    QCOMPARE(m_bench->console->toPlainText(), before);
    // Neither are they when the wait ended by itself.
    m_bench->beginWaiting();
    m_bench->endWaiting();
    const int red = redTexts().size();
    pressCtrlC();
    QCOMPARE(redTexts().size(), red);
}

void TestTerminalWidgetStop::aLateAnswerIsPrinted()
{
    m_bench->beginWaiting();
    pressCtrlC();
    m_bench->say(QStringLiteral("the late answer"));
    QVERIFY(m_bench->console->toPlainText().contains(QLatin1String("the late answer")));
    QVERIFY(isIdle());
}

void TestTerminalWidgetStop::theFocusReturns()
{
    m_bench->beginWaiting();
    QVERIFY(!m_bench->console->hasFocus());
    pressCtrlC();
    QVERIFY(m_bench->console->hasFocus());

    m_bench->field("unitEdit")->setFocus();
    m_bench->beginWaiting();
    pressCtrlC();
    QVERIFY(m_bench->field("unitEdit")->hasFocus());
}

void TestTerminalWidgetStop::aFileCanRunAgain()
{
    runFile(QStringLiteral("one\ntwo\n"));
    pressCtrlC();
    runFile(QStringLiteral("three\nfour\n"));
    m_bench->endWaiting();
    m_bench->endWaiting();
    QCOMPARE(m_bench->backend.requests(),
             (QStringList{QStringLiteral("one"), QStringLiteral("three"), QStringLiteral("four")}));
    QVERIFY(isIdle());
}

QTEST_MAIN(TestTerminalWidgetStop)
#include "tst_terminal_widget_stop.moc"
