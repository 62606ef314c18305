#include "command_terminal/terminal_widget.h"
#include "tests/command_terminal/terminal_widget_bench.h"

#include <QFileDialog>
#include <QPushButton>
#include <QtTest>

/// Where the keys go: the shortcuts of the tool bar, and the focus before, during and after a wait.
class TestTerminalWidgetFocus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theToolHandsTheFocusOn_data();
    void theToolHandsTheFocusOn();
    void switchingGivesTheFocusToWhatIsShown();

    void theConsoleHasTheFocusAgain();
    void theConsoleHasTheFocusAgainAfterAWaitLine();
    void theConsoleHasTheFocusAgainAfterAFile();
    void aFieldHasTheFocusAgain_data();
    void aFieldHasTheFocusAgain();
    void theFocusStaysInTheToolMeanwhile_data();
    void theFocusStaysInTheToolMeanwhile();
    void theFocusElsewhereStaysThere();
    void theFocusTakenAwayMeanwhileStaysAway();
    void aClickBringsTheFocusBackMeanwhile();
    void theEditorShownMeanwhileKeepsTheFocus();
    void cursorWhileWaiting();

    void shortcuts_data();
    void shortcuts();
    void shortcutsFromOutside_data();
    void shortcutsFromOutside();
    void shortcutsOfHiddenButtons_data();
    void shortcutsOfHiddenButtons();
    void savingIsNoShortcutWhenDisabled();
    void shortcutsWhileWaiting();

private:
    QWidget *focused() const { return bench->window.focusWidget(); }
    QWidget *part(const QString &name) const { return bench->tool->findChild<QWidget *>(name); }
    void press(const char *action) const { QTest::keySequence(focused(), bench->action(action)->shortcut()); }
    void enter(const QString &line) const
    {
        QTest::keyClicks(bench->console, line);
        QTest::keyClick(bench->console, Qt::Key_Return);
    }

    std::unique_ptr<TerminalWidgetBench> bench;
};

void TestTerminalWidgetFocus::init()
{
    bench = std::make_unique<TerminalWidgetBench>();
    QVERIFY(bench->showActive());
}

void TestTerminalWidgetFocus::cleanup()
{
    bench.reset();
}

// Without a wait

void TestTerminalWidgetFocus::theToolHandsTheFocusOn_data()
{
    QTest::addColumn<bool>("editing");
    QTest::newRow("console") << false;
    QTest::newRow("editor") << true;
}

void TestTerminalWidgetFocus::theToolHandsTheFocusOn()
{
    QFETCH(bool, editing);
    bench->send(editing ? KD::ShowEditor : KD::ShowTerminal);
    bench->elsewhere->setFocus();
    bench->tool->setFocus();
    QCOMPARE(bench->editor->hasFocus(), editing);
    QCOMPARE(bench->console->hasFocus(), !editing);
}

void TestTerminalWidgetFocus::switchingGivesTheFocusToWhatIsShown()
{
    bench->send(KD::ShowEditor);
    QVERIFY(bench->editor->hasFocus());
    bench->send(KD::ShowTerminal);
    QVERIFY(bench->console->hasFocus());
}

// A wait

void TestTerminalWidgetFocus::theConsoleHasTheFocusAgain()
{
    bench->console->setFocus();
    enter(QStringLiteral("request"));
    QVERIFY(!bench->console->isEnabled());
    QVERIFY(!bench->console->hasFocus());
    bench->endWaiting();
    QVERIFY(bench->console->hasFocus());
    enter(QStringLiteral("next"));
    QCOMPARE(bench->backend.requests().constLast(), QStringLiteral("next"));
}

void TestTerminalWidgetFocus::theConsoleHasTheFocusAgainAfterAWaitLine()
{
    bench->console->setFocus();
    enter(QStringLiteral("wait 00010"));
    QVERIFY(!bench->console->isEnabled());
    QTRY_VERIFY(bench->console->isEnabled());
    QVERIFY(bench->console->hasFocus());
}

void TestTerminalWidgetFocus::theConsoleHasTheFocusAgainAfterAFile()
{
    bench->editor->setPlainText(QStringLiteral("one\nwait 00010\n# comment\ntwo\n"));
    bench->send(KD::ExecuteFile);
    bench->endWaiting();
    QTRY_COMPARE(bench->backend.requests().size(), 2);
    bench->endWaiting();
    QVERIFY(bench->console->isEnabled());
    QVERIFY(bench->console->hasFocus());
}

void TestTerminalWidgetFocus::aFieldHasTheFocusAgain_data()
{
    QTest::addColumn<bool>("byMouse");
    QTest::newRow("lineEdit") << false;
    QTest::newRow("valueEdit") << false;
    QTest::newRow("itemBox") << false;
    QTest::newRow("getButton") << true;
}

void TestTerminalWidgetFocus::aFieldHasTheFocusAgain()
{
    QFETCH(bool, byMouse);
    QWidget *field = part(QString::fromLatin1(QTest::currentDataTag()));
    field->setFocus();
    QVERIFY(field->hasFocus());
    auto *get = qobject_cast<QPushButton *>(part(QStringLiteral("getButton")));
    byMouse ? QTest::mouseClick(get, Qt::LeftButton) : get->click();
    QCOMPARE(bench->backend.requests().size(), 1);
    QVERIFY(!field->hasFocus());
    bench->endWaiting();
    QVERIFY(field->hasFocus());
}

void TestTerminalWidgetFocus::theFocusStaysInTheToolMeanwhile_data()
{
    QTest::addColumn<QString>("before");
    QTest::newRow("console") << QStringLiteral("console");
    QTest::newRow("field") << QStringLiteral("unitEdit");
}

void TestTerminalWidgetFocus::theFocusStaysInTheToolMeanwhile()
{
    QFETCH(QString, before);
    part(before)->setFocus();
    bench->beginWaiting();
    QVERIFY(focused());
    QVERIFY(focused() == bench->tool || bench->tool->isAncestorOf(focused()));
    // What is typed meanwhile is lost and ends up nowhere.
    QTest::keyClicks(focused(), QStringLiteral("lost"));
    QTest::keyClick(focused(), Qt::Key_Return);
    bench->endWaiting();
    QCOMPARE(bench->console->toPlainText().count(QLatin1String("lost")), 0);
    QCOMPARE(bench->elsewhere->text(), QString());
    QCOMPARE(bench->backend.requests().size(), 1);
}

void TestTerminalWidgetFocus::theFocusElsewhereStaysThere()
{
    bench->elsewhere->setFocus();
    bench->beginWaiting();
    QVERIFY(bench->elsewhere->hasFocus());
    bench->endWaiting();
    QVERIFY(bench->elsewhere->hasFocus());
}

void TestTerminalWidgetFocus::theFocusTakenAwayMeanwhileStaysAway()
{
    for (QWidget *before : {static_cast<QWidget *>(bench->console), part(QStringLiteral("lineEdit"))}) {
        before->setFocus();
        bench->beginWaiting();
        bench->elsewhere->setFocus();
        bench->endWaiting();
        QVERIFY(bench->elsewhere->hasFocus());
    }
}

void TestTerminalWidgetFocus::aClickBringsTheFocusBackMeanwhile()
{
    bench->console->setFocus();
    bench->beginWaiting();
    bench->elsewhere->setFocus();
    const QPoint middle = bench->console->mapTo(&bench->window, bench->console->rect().center());
    QTest::mouseClick(bench->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, middle);
    QCOMPARE(focused(), bench->tool);
    bench->endWaiting();
    QCOMPARE(focused(), bench->console);
}

void TestTerminalWidgetFocus::theEditorShownMeanwhileKeepsTheFocus()
{
    bench->console->setFocus();
    bench->beginWaiting();
    bench->send(KD::ShowEditor);
    QVERIFY(bench->editor->hasFocus());
    bench->endWaiting();
    QVERIFY(bench->editor->hasFocus());
    QTest::keyClicks(bench->editor, QStringLiteral("typed"));
    QCOMPARE(bench->editor->toPlainText(), QStringLiteral("typed"));
}

void TestTerminalWidgetFocus::cursorWhileWaiting()
{
    bench->beginWaiting();
    QCOMPARE(bench->tool->cursor().shape(), Qt::BusyCursor);
    QVERIFY(!bench->panel->isEnabled());
    bench->endWaiting();
    QCOMPARE(bench->tool->cursor().shape(), Qt::ArrowCursor);
    QVERIFY(bench->panel->isEnabled());
}

// Shortcuts

void TestTerminalWidgetFocus::shortcuts_data()
{
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<QString>("focus");
    QTest::addColumn<bool>("editorBefore");
    QTest::addColumn<QString>("effect");
    const auto row = [](const char *action, const char *focus, bool editorBefore, const char *effect) {
        QTest::addRow("%s, focus in %s", action, focus) << QByteArray(action) << QString::fromLatin1(focus)
                                                        << editorBefore << QString::fromLatin1(effect);
    };
    row("Show Text Editor", "console", false, "editor");
    row("Show Text Editor", "lineEdit", false, "editor");
    row("Show Terminal", "editor", true, "console");
    row("Show Terminal", "valueEdit", true, "console");
    row("Open File", "editor", true, "open");
    row("Open File", "lineEdit", true, "open");
    row("Save File", "editor", true, "save");
    row("Execute File", "editor", true, "executed");
    row("Execute File", "itemBox", true, "executed");
    row("Clear Terminal", "console", false, "cleared");
    row("Clear Terminal", "lineEdit", false, "cleared");
}

void TestTerminalWidgetFocus::shortcuts()
{
    QFETCH(QByteArray, action);
    QFETCH(QString, focus);
    QFETCH(bool, editorBefore);
    QFETCH(QString, effect);
    bench->console->printText(QStringLiteral("something"));
    bench->send(editorBefore ? KD::ShowEditor : KD::ShowTerminal);
    bench->editor->setPlainText(QStringLiteral("request\n"));
    part(focus)->setFocus();
    QCOMPARE(focused()->objectName(), focus);

    press(action.constData());

    const auto *dialog = bench->editor->findChild<QFileDialog *>();
    QStringList effects;
    if (editorBefore != bench->editor->isVisible() && bench->backend.requests().isEmpty())
        effects.append(bench->editor->isVisible() ? QStringLiteral("editor") : QStringLiteral("console"));
    if (dialog)
        effects.append(dialog->acceptMode() == QFileDialog::AcceptOpen ? QStringLiteral("open")
                                                                       : QStringLiteral("save"));
    if (!bench->backend.requests().isEmpty())
        effects.append(QStringLiteral("executed"));
    if (bench->console->toPlainText() == QLatin1String("> "))
        effects.append(QStringLiteral("cleared"));
    QCOMPARE(effects, QStringList{effect});
}

void TestTerminalWidgetFocus::shortcutsFromOutside_data()
{
    QTest::addColumn<bool>("editing");
    QTest::newRow("Show Text Editor") << false;
    QTest::newRow("Clear Terminal") << false;
    QTest::newRow("Show Terminal") << true;
    QTest::newRow("Open File") << true;
    QTest::newRow("Save File") << true;
    QTest::newRow("Execute File") << true;
}

void TestTerminalWidgetFocus::shortcutsFromOutside()
{
    QFETCH(bool, editing);
    bench->send(editing ? KD::ShowEditor : KD::ShowTerminal);
    bench->editor->setPlainText(QStringLiteral("request\n"));
    QSignalSpy triggered(bench->action(QTest::currentDataTag()), &QAction::triggered);
    bench->elsewhere->setFocus();
    press(QTest::currentDataTag());
    QCOMPARE(triggered.size(), 0);
    // It is the place alone: from inside the same keys do it.
    (editing ? static_cast<QWidget *>(bench->editor) : bench->console)->setFocus();
    press(QTest::currentDataTag());
    QCOMPARE(triggered.size(), 1);
}

void TestTerminalWidgetFocus::shortcutsOfHiddenButtons_data()
{
    shortcutsFromOutside_data();
}

// A file must not run, and nothing be cleared, by a button that is not there.
void TestTerminalWidgetFocus::shortcutsOfHiddenButtons()
{
    QFETCH(bool, editing);
    bench->send(editing ? KD::ShowTerminal : KD::ShowEditor);
    bench->editor->setPlainText(QStringLiteral("request\n"));
    QSignalSpy triggered(bench->action(QTest::currentDataTag()), &QAction::triggered);
    press(QTest::currentDataTag());
    QCOMPARE(triggered.size(), 0);
    QVERIFY(bench->backend.requests().isEmpty());
    QVERIFY(!bench->editor->findChild<QFileDialog *>());
}

void TestTerminalWidgetFocus::savingIsNoShortcutWhenDisabled()
{
    bench->send(KD::ShowEditor);
    bench->send(KD::ModifiedChanged, qint64{0});
    press("Save File");
    QVERIFY(!bench->editor->findChild<QFileDialog *>());
    bench->send(KD::ModifiedChanged, qint64{1});
    press("Save File");
    QVERIFY(bench->editor->findChild<QFileDialog *>());
}

void TestTerminalWidgetFocus::shortcutsWhileWaiting()
{
    bench->console->setFocus();
    bench->beginWaiting();
    press("Show Text Editor");
    QVERIFY(bench->editor->isVisible());
    press("Show Terminal");
    QVERIFY(bench->console->isVisible());
    bench->endWaiting();
    QVERIFY(bench->console->hasFocus());
}

QTEST_MAIN(TestTerminalWidgetFocus)
#include "tst_terminal_widget_focus.moc"
