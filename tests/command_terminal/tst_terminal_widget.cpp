#include "command_terminal/terminal_widget.h"
#include "tests/command_terminal/context_translator.h"
#include "tests/command_terminal/terminal_widget_bench.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QFileDialog>
#include <QPushButton>
#include <QtTest>

namespace
{

/// Keeps the address and a copy of the last event, which says whether the very object was passed on.
class LastEvent : public KdObserver
{
public:
    void processChildEvent(KdChildEvent &event) override
    {
        object = &event;
        copy = event;
        ++count;
    }

    const KdChildEvent *object = nullptr;
    KdChildEvent copy{static_cast<KD::EventType>(0)};
    int count = 0;
};

} // namespace

/// How the tool is put together, and what becomes of the events of its parts and of the host.
class TestTerminalWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void classAndInstance();
    void theOrderOfTheParts();
    void layout();
    void beginsInTerminalMode();
    void menuPathIsTranslated();

    void showEditorAndTerminal();
    void theToolbarReachesTheTool_data();
    void theToolbarReachesTheTool();
    void openFileGoesToTheEditor();
    void saveFileGoesToTheEditor();
    void executeFileRunsTheWholeText();
    void executeFileWithAnEmptyEditor();
    void executeFileInTerminalModeAsWell();
    void executedFileIsPaintedAtOnce();
    void clearTerminalEmptiesDisplayAndHistory();
    void aRequestGoesToTheVisibleConsole();
    void aRequestGoesToTheVisibleEditor();
    void aRequestOfAHiddenToolGoesNowhere();
    void theControllerGoesToTheConsole();
    void theControllerGoesToTheHiddenConsole();
    void busyAndIdle_data();
    void busyAndIdle();
    void saveIsEnabled_data();
    void saveIsEnabled();
    void otherEventsReachTheHostUnchanged_data();
    void otherEventsReachTheHostUnchanged();
    void ownEventsStayInTheTool_data();
    void ownEventsStayInTheTool();
    void typingIntoTheEditorEnablesSaving();

    void selectedItemsFillTheForm_data();
    void selectedItemsFillTheForm();
    void selectionWithoutAnAddress();

    void aControllerThatWentAfterItWasListed();
    void closedWhileARequestIsOut();

private:
    std::unique_ptr<TerminalWidgetBench> bench;
};

void TestTerminalWidget::init()
{
    bench = std::make_unique<TerminalWidgetBench>();
}

void TestTerminalWidget::cleanup()
{
    bench.reset();
}

// Construction

void TestTerminalWidget::classAndInstance()
{
    QCOMPARE(bench->tool->getUniqueWidgetClassId(), 7U);
    QCOMPARE(bench->tool->instance, 3U);
}

void TestTerminalWidget::theOrderOfTheParts()
{
    QObjectList parts;
    const QList<QWidget *> widgets =
        bench->tool->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *widget : widgets)
        parts.append(widget);
    QCOMPARE(parts, (QObjectList{bench->toolbar, bench->console, bench->editor, bench->panel}));
}

void TestTerminalWidget::layout()
{
    const auto *row = qobject_cast<QHBoxLayout *>(bench->tool->layout());
    QVERIFY(row);
    QCOMPARE(row->count(), 2);
    QCOMPARE(row->itemAt(0)->widget(), bench->toolbar);
    const auto *column = qobject_cast<QVBoxLayout *>(row->itemAt(1)->layout());
    QVERIFY(column);
    QCOMPARE(column->count(), 3);
    QCOMPARE(column->itemAt(0)->widget(), bench->panel);
    QCOMPARE(column->itemAt(1)->widget(), bench->console);
    QCOMPARE(column->itemAt(2)->widget(), bench->editor);
}

void TestTerminalWidget::beginsInTerminalMode()
{
    bench->window.show();
    QVERIFY(bench->console->isVisible());
    QVERIFY(!bench->editor->isVisible());
    QVERIFY(bench->panel->isVisible());
    QVERIFY(bench->toolbar->isVisible());
    QVERIFY(bench->toolbarInTerminalMode());
    QVERIFY(bench->tool->acceptDrops());
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalWidget::menuPathIsTranslated()
{
    QCOMPARE(TerminalWidget::menuPath(),
             (QStringList{QStringLiteral("Window"), QStringLiteral("Tools"), QStringLiteral("Terminal")}));
    const ContextTranslator translator;
    QCOMPARE(TerminalWidget::menuPath(),
             (QStringList{QStringLiteral("[TerminalWidget]Window"), QStringLiteral("[TerminalWidget]Tools"),
                          QStringLiteral("[TerminalWidget]Terminal")}));
}

// Events of the parts

void TestTerminalWidget::showEditorAndTerminal()
{
    bench->window.show();
    bench->send(KD::ShowEditor);
    QVERIFY(bench->editor->isVisible());
    QVERIFY(!bench->console->isVisible());
    QVERIFY(bench->panel->isVisible());
    QVERIFY(bench->toolbarInEditorMode());
    bench->send(KD::ShowTerminal);
    QVERIFY(!bench->editor->isVisible());
    QVERIFY(bench->console->isVisible());
    QVERIFY(bench->toolbarInTerminalMode());
}

void TestTerminalWidget::theToolbarReachesTheTool_data()
{
    QTest::addColumn<QString>("before");
    QTest::newRow("Show Terminal") << QStringLiteral("Show Text Editor");
    QTest::newRow("Show Text Editor") << QString();
    QTest::newRow("Execute File") << QStringLiteral("Show Text Editor");
}

void TestTerminalWidget::theToolbarReachesTheTool()
{
    QFETCH(QString, before);
    bench->window.show();
    if (!before.isEmpty())
        bench->action("Show Text Editor")->trigger();
    bench->action(QTest::currentDataTag())->trigger();
    QCOMPARE(bench->editor->isVisible(), before.isEmpty());
    QCOMPARE(bench->console->isVisible(), !before.isEmpty());
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalWidget::openFileGoesToTheEditor()
{
    bench->window.show();
    bench->send(KD::OpenFile);
    const auto *dialog = bench->editor->findChild<QFileDialog *>();
    QVERIFY(dialog);
    QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptOpen);
}

void TestTerminalWidget::saveFileGoesToTheEditor()
{
    bench->window.show();
    bench->send(KD::SaveFile);
    const auto *dialog = bench->editor->findChild<QFileDialog *>();
    QVERIFY(dialog);
    QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
}

void TestTerminalWidget::executeFileRunsTheWholeText()
{
    bench->window.show();
    bench->send(KD::ShowEditor);
    bench->editor->setPlainText(QStringLiteral("# first\nrequest one\nrequest two\nnever run"));
    bench->send(KD::ExecuteFile);
    QVERIFY(bench->console->isVisible());
    QVERIFY(!bench->editor->isVisible());
    QVERIFY(bench->toolbarInTerminalMode());
    QCOMPARE(bench->backend.requests(), QStringList{QStringLiteral("request one")});
    bench->endWaiting();
    QCOMPARE(bench->backend.requests().size(), 2);
    bench->endWaiting();
    QCOMPARE(bench->backend.requests(),
             (QStringList{QStringLiteral("request one"), QStringLiteral("request two")}));
    QCOMPARE(bench->editor->toPlainText(), QStringLiteral("# first\nrequest one\nrequest two\nnever run"));
}

void TestTerminalWidget::executeFileWithAnEmptyEditor()
{
    bench->window.show();
    bench->send(KD::ShowEditor);
    bench->send(KD::ExecuteFile);
    QVERIFY(bench->console->isVisible());
    QVERIFY(!bench->editor->isVisible());
    QVERIFY(bench->toolbarInTerminalMode());
    QVERIFY(bench->backend.requests().isEmpty());
    QCOMPARE(bench->console->toPlainText(), QStringLiteral("> "));
    QVERIFY(bench->console->isEnabled());
}

void TestTerminalWidget::executedFileIsPaintedAtOnce()
{
    bench->editor->setPlainText(QStringLiteral("# one\n# two\n"));
    bench->send(KD::ExecuteFile);
    QVERIFY(!bench->console->isFileRunning());
    QVERIFY(bench->tool->updatesEnabled()); // a picture taken now shows it
}

void TestTerminalWidget::executeFileInTerminalModeAsWell()
{
    bench->window.show();
    bench->editor->setPlainText(QStringLiteral("request\n"));
    bench->send(KD::ExecuteFile);
    QCOMPARE(bench->backend.requests(), QStringList{QStringLiteral("request")});
    QVERIFY(bench->toolbarInTerminalMode());
}

void TestTerminalWidget::clearTerminalEmptiesDisplayAndHistory()
{
    bench->window.show();
    bench->send(KD::Request, QStringLiteral("# a comment"));
    QVERIFY(bench->console->toPlainText().contains(QLatin1String("# a comment")));
    bench->send(KD::ClearTerminal);
    QCOMPARE(bench->console->toPlainText(), QStringLiteral("> "));
    QTest::keyClick(bench->console, Qt::Key_Up);
    QCOMPARE(bench->console->toPlainText(), QStringLiteral("> "));
}

void TestTerminalWidget::aRequestGoesToTheVisibleConsole()
{
    bench->window.show();
    bench->send(KD::Request, QStringLiteral("the request"));
    QCOMPARE(bench->backend.callsOf(QStringLiteral("rawRequest")).constFirst().arguments,
             (QStringList{TerminalWidgetBench::controller(), QStringLiteral("the request")}));
    QVERIFY(bench->console->toPlainText().startsWith(QLatin1String("> the request\n")));
    QCOMPARE(bench->editor->toPlainText(), QString());
}

void TestTerminalWidget::aRequestGoesToTheVisibleEditor()
{
    bench->window.show();
    bench->send(KD::ShowEditor);
    bench->send(KD::Request, QStringLiteral("one"));
    bench->send(KD::Request, QStringLiteral("two"));
    QCOMPARE(bench->editor->toPlainText(), QStringLiteral("one\ntwo\n"));
    QVERIFY(bench->backend.requests().isEmpty());
    QCOMPARE(bench->console->toPlainText(), QStringLiteral("> "));
}

void TestTerminalWidget::aRequestOfAHiddenToolGoesNowhere()
{
    bench->send(KD::Request, QStringLiteral("one"));
    QVERIFY(bench->backend.requests().isEmpty());
    QCOMPARE(bench->editor->toPlainText(), QString());
    QCOMPARE(bench->console->toPlainText(), QStringLiteral("> "));
}

void TestTerminalWidget::theControllerGoesToTheConsole()
{
    bench->window.show();
    bench->send(KD::ControllerChosen, QStringLiteral("Second"));
    bench->send(KD::Request, QStringLiteral("the request"));
    QCOMPARE(bench->backend.callsOf(QStringLiteral("rawRequest")).constFirst().arguments.constFirst(),
             QStringLiteral("Second"));
}

void TestTerminalWidget::theControllerGoesToTheHiddenConsole()
{
    bench->window.show();
    bench->send(KD::ShowEditor);
    bench->send(KD::ControllerChosen, QStringLiteral("Second"));
    bench->send(KD::ShowTerminal);
    bench->send(KD::Request, QStringLiteral("the request"));
    QCOMPARE(bench->backend.callsOf(QStringLiteral("rawRequest")).constFirst().arguments.constFirst(),
             QStringLiteral("Second"));
}

void TestTerminalWidget::busyAndIdle_data()
{
    QTest::addColumn<qint64>("argument");
    QTest::newRow("one") << qint64{1};
    QTest::newRow("two") << qint64{2};
    QTest::newRow("below zero") << qint64{-1};
    QTest::newRow("beyond 32 bits") << (qint64{1} << 32);
}

void TestTerminalWidget::busyAndIdle()
{
    QFETCH(qint64, argument);
    bench->window.show();
    bench->send(KD::BusyChanged, argument);
    QVERIFY(!bench->panel->isEnabled());
    QCOMPARE(bench->tool->cursor().shape(), Qt::BusyCursor);
    bench->send(KD::BusyChanged, qint64{0});
    QVERIFY(bench->panel->isEnabled());
    QCOMPARE(bench->tool->cursor().shape(), Qt::ArrowCursor);
}

void TestTerminalWidget::saveIsEnabled_data()
{
    QTest::addColumn<qint64>("argument");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("zero") << qint64{0} << false;
    QTest::newRow("one") << qint64{1} << true;
    QTest::newRow("below zero") << qint64{-1} << true;
    QTest::newRow("beyond 32 bits") << (qint64{1} << 32) << true;
}

void TestTerminalWidget::saveIsEnabled()
{
    QFETCH(qint64, argument);
    QFETCH(bool, enabled);
    bench->send(KD::ShowEditor); // where the action is there at all
    bench->send(KD::ModifiedChanged, qint64{enabled ? 0 : 1});
    QCOMPARE(bench->action("Save File")->isEnabled(), !enabled);
    bench->send(KD::ModifiedChanged, argument);
    QCOMPARE(bench->action("Save File")->isEnabled(), enabled);
}

void TestTerminalWidget::otherEventsReachTheHostUnchanged_data()
{
    QTest::addColumn<quint32>("type");
    QTest::newRow("none") << 0U;
    QTest::newRow("one") << 1U;
    QTest::newRow("answer of a tool") << 152U;
    QTest::newRow("stop of an interpreter") << 173U;
    QTest::newRow("menu entry") << 178U;
    QTest::newRow("selected item") << 206U;
    QTest::newRow("just below") << 251U;
    QTest::newRow("just above") << 262U;
    QTest::newRow("largest") << 4294967295U;
}

void TestTerminalWidget::otherEventsReachTheHostUnchanged()
{
    QFETCH(quint32, type);
    LastEvent host;
    TerminalWidget tool(nullptr, &bench->state, bench->mainData, host, 0);
    KdChildEvent event(static_cast<KD::EventType>(type));
    event.stringArguments = QStringList{QStringLiteral("one"), QString(), QStringLiteral("three")};
    event.setIntArgument(-5, 2);
    tool.processChildEvent(event);
    QCOMPARE(host.count, 1);
    QCOMPARE(host.object, &event);
    QCOMPARE(quint32{host.copy.type}, type);
    QCOMPARE(host.copy.stringArguments,
             (QStringList{QStringLiteral("one"), QString(), QStringLiteral("three")}));
    QCOMPARE(host.copy.intArguments, (QVector<qint64>{0, 0, -5}));
}

void TestTerminalWidget::ownEventsStayInTheTool_data()
{
    QTest::addColumn<quint32>("type");
    for (quint32 type = 252; type <= 261; ++type)
        QTest::addRow("%u", type) << type;
}

void TestTerminalWidget::ownEventsStayInTheTool()
{
    QFETCH(quint32, type);
    bench->window.show();
    bench->send(static_cast<KD::EventType>(type)); // without the arguments that it may have
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalWidget::typingIntoTheEditorEnablesSaving()
{
    bench->window.show();
    bench->send(KD::ShowEditor);
    bench->send(KD::ModifiedChanged, qint64{0});
    QTest::keyClick(bench->editor, Qt::Key_A);
    QVERIFY(bench->action("Save File")->isEnabled());
    QVERIFY(bench->observer.events().empty());
}

// Events of the host

void TestTerminalWidget::selectedItemsFillTheForm_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<bool>("fills");
    QTest::newRow("206") << 206U << true;
    QTest::newRow("208") << 208U << true;
    QTest::newRow("205") << 205U << false;
    QTest::newRow("207") << 207U << false;
    QTest::newRow("209") << 209U << false;
    QTest::newRow("147") << 147U << false;
    QTest::newRow("173") << 173U << false;
    QTest::newRow("258") << 258U << false;
}

void TestTerminalWidget::selectedItemsFillTheForm()
{
    QFETCH(quint32, type);
    QFETCH(bool, fills);
    OrbItemId id(OrbItemId::Channel);
    id.line = 1;
    id.address = 2;
    id.channel = 3;
    KdParentEvent event(static_cast<KD::EventType>(type));
    event.setHardwareId(id, 0);
    bench->tool->parentEventOccured(event);
    QCOMPARE(bench->field("lineEdit")->text(), fills ? QStringLiteral("1") : QString());
    QCOMPARE(bench->field("addressEdit")->text(), fills ? QStringLiteral("2") : QString());
    QCOMPARE(bench->field("channelEdit")->text(), fills ? QStringLiteral("3") : QString());
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalWidget::selectionWithoutAnAddress()
{
    bench->field("lineEdit")->setText(QStringLiteral("1"));
    KdParentEvent event(KD::ItemSelected);
    bench->tool->parentEventOccured(event);
    QCOMPARE(bench->field("lineEdit")->text(), QString());
}

void TestTerminalWidget::aControllerThatWentAfterItWasListed()
{
    bench->window.show();
    bench->backend.setControllers(
        {{QStringLiteral("here"), QStringLiteral("Here")}, {QStringLiteral("gone"), QStringLiteral("Gone")}});
    bench->panel->structureChanged(OrbItemId());
    TerminalWidgetBench::settle();
    bench->backend.setControllers({});
    bench->backend.setRawAnswer({false, QStringLiteral("there is no controller \"gone\""), {}});
    bench->panel->findChild<QComboBox *>(QStringLiteral("controllerBox"))->setCurrentIndex(1);
    bench->panel->findChild<QPushButton *>(QStringLiteral("getButton"))->click();

    QCOMPARE(bench->backend.callsOf(QStringLiteral("rawRequest")).constFirst().arguments.constFirst(),
             QStringLiteral("gone"));
    QTextCursor refusal = bench->console->document()->find(QStringLiteral("there is no controller"));
    QVERIFY(!refusal.isNull());
    QCOMPARE(refusal.charFormat().foreground().color(), QColor(Qt::red));
    QVERIFY(bench->panel->isEnabled());
    QVERIFY(bench->console->isEnabled());
}

// Messages that arrive after the tool is gone find nobody.
void TestTerminalWidget::closedWhileARequestIsOut()
{
    bench->window.show();
    bench->beginWaiting();
    QCOMPARE(bench->backend.requests().size(), 1);
    bench->backend.sendRawMessage(TerminalWidgetBench::controller(), QStringLiteral("late"));
    bench->backend.sendStructureChanged(OrbItemId());
    auto tool = std::unique_ptr<TerminalWidget>(bench->tool);
    tool.reset();
    bench->backend.clearCalls();
    bench->say(QStringLiteral("later"));
    QVERIFY(bench->backend.calls().isEmpty());
    QVERIFY(bench->observer.events().empty());
}

QTEST_MAIN(TestTerminalWidget)
#include "tst_terminal_widget.moc"
