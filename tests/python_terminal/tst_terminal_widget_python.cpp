#include "python_terminal/terminal_widget_python.h"

#include "hostsdk/kd_parent_event.h"
#include "tests/command_terminal/context_translator.h"
#include "tests/python_terminal/python_tool_bench.h"

#include <QBoxLayout>
#include <QFileDialog>
#include <QTemporaryDir>
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
class TestTerminalWidgetPython : public QObject
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
    void fileDialogs_data();
    void fileDialogs();
    void theEditorRemembersPythonFiles();
    void executeFileRunsTheWholeText();
    void executeFileInTerminalModeAsWell();
    void executeFileWithAnEmptyEditor();
    void clearTerminalResets();
    void aRequestOfTheVisibleConsoleGoesNowhere_data();
    void aRequestOfTheVisibleConsoleGoesNowhere();
    void aRequestGoesToTheVisibleEditor();
    void aRequestOfAHiddenToolGoesNowhere();
    void busyAndIdle_data();
    void busyAndIdle();
    void busyDuringAStatement();
    void saveIsEnabled_data();
    void saveIsEnabled();
    void otherEventsReachTheHostUnchanged_data();
    void otherEventsReachTheHostUnchanged();
    void ownEventsStayInTheTool_data();
    void ownEventsStayInTheTool();

    void theHostsEndStopsTheInterpreter();
    void otherEventsOfTheHostStopNothing_data();
    void otherEventsOfTheHostStopNothing();

    void aSecondToolHasNoInterpreter();

private:
    bool isRunning() const { return bench->console->activity() == TerminalPythonConsole::Activity::Running; }
    /// A statement that runs until it is interrupted, and has begun.
    bool beginLong()
    {
        bench->backend.clearCalls();
        bench->enter(QStringLiteral("import time; orbClient.getConnections(); time.sleep(60)"));
        return bench->waitForCalls(1);
    }
    bool endLong()
    {
        bench->console->interrupt();
        return bench->waitForPrompt();
    }

    std::unique_ptr<PythonToolBench> bench;
};

void TestTerminalWidgetPython::init()
{
    bench = std::make_unique<PythonToolBench>();
    QVERIFY(bench->start());
    bench->observer.clear();
}

void TestTerminalWidgetPython::cleanup()
{
    bench.reset();
}

// Construction

void TestTerminalWidgetPython::classAndInstance()
{
    QCOMPARE(bench->tool->getUniqueWidgetClassId(), 8U);
    QCOMPARE(bench->tool->instance, 3U);
}

void TestTerminalWidgetPython::theOrderOfTheParts()
{
    QObjectList parts;
    const QList<QWidget *> widgets =
        bench->tool->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *widget : widgets)
        parts.append(widget);
    QCOMPARE(parts, (QObjectList{bench->toolbar, bench->console, bench->editor}));
}

void TestTerminalWidgetPython::layout()
{
    const auto *row = qobject_cast<QHBoxLayout *>(bench->tool->layout());
    QVERIFY(row);
    QCOMPARE(row->count(), 2);
    QCOMPARE(row->itemAt(0)->widget(), bench->toolbar);
    const auto *column = qobject_cast<QVBoxLayout *>(row->itemAt(1)->layout());
    QVERIFY(column);
    QCOMPARE(column->count(), 2);
    QCOMPARE(column->itemAt(0)->widget(), bench->console);
    QCOMPARE(column->itemAt(1)->widget(), bench->editor);
}

void TestTerminalWidgetPython::beginsInTerminalMode()
{
    QVERIFY(bench->console->isVisible());
    QVERIFY(!bench->editor->isVisible());
    QVERIFY(bench->toolbar->isVisible());
    QVERIFY(bench->toolbarInTerminalMode());
    QVERIFY(bench->tool->acceptDrops());
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalWidgetPython::menuPathIsTranslated()
{
    QCOMPARE(
        TerminalWidgetPython::menuPath(),
        (QStringList{QStringLiteral("Window"), QStringLiteral("Tools"), QStringLiteral("Python Terminal")}));
    const ContextTranslator translator;
    QCOMPARE(TerminalWidgetPython::menuPath(),
             (QStringList{QStringLiteral("[TerminalWidgetPython]Window"),
                          QStringLiteral("[TerminalWidgetPython]Tools"),
                          QStringLiteral("[TerminalWidgetPython]Python Terminal")}));
}

// Events of the parts

void TestTerminalWidgetPython::showEditorAndTerminal()
{
    bench->send(KD::ShowEditor);
    QVERIFY(bench->editor->isVisible());
    QVERIFY(!bench->console->isVisible());
    QVERIFY(bench->toolbarInEditorMode());
    QVERIFY(bench->editor->hasFocus());
    bench->send(KD::ShowTerminal);
    QVERIFY(!bench->editor->isVisible());
    QVERIFY(bench->console->isVisible());
    QVERIFY(bench->toolbarInTerminalMode());
    QVERIFY(bench->console->hasFocus());
}

void TestTerminalWidgetPython::theToolbarReachesTheTool_data()
{
    QTest::addColumn<QString>("before");
    QTest::newRow("Show Terminal") << QStringLiteral("Show Text Editor");
    QTest::newRow("Show Text Editor") << QString();
    QTest::newRow("Execute File") << QStringLiteral("Show Text Editor");
}

void TestTerminalWidgetPython::theToolbarReachesTheTool()
{
    QFETCH(QString, before);
    if (!before.isEmpty())
        bench->action("Show Text Editor")->trigger();
    bench->action(QTest::currentDataTag())->trigger();
    QCOMPARE(bench->editor->isVisible(), before.isEmpty());
    QCOMPARE(bench->console->isVisible(), !before.isEmpty());
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalWidgetPython::fileDialogs_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<int>("mode");
    QTest::newRow("open") << 254U << int(QFileDialog::AcceptOpen);
    QTest::newRow("save") << 255U << int(QFileDialog::AcceptSave);
}

void TestTerminalWidgetPython::fileDialogs()
{
    QFETCH(quint32, type);
    QFETCH(int, mode);
    bench->send(static_cast<KD::EventType>(type));
    const auto *dialog = bench->editor->findChild<QFileDialog *>();
    QVERIFY(dialog);
    QCOMPARE(int(dialog->acceptMode()), mode);
}

void TestTerminalWidgetPython::theEditorRemembersPythonFiles()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("script.py"));
    bench->send(KD::ShowEditor);
    bench->editor->setPlainText(QStringLiteral("print(1)\n"));
    bench->send(KD::SaveFile);
    auto *dialog = bench->editor->findChild<QFileDialog *>();
    QVERIFY(dialog);
    Q_EMIT dialog->fileSelected(path);
    dialog->close();
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("print(1)\n"));
    QCOMPARE(bench->state.pythonFiles, QStringList{path});
    QVERIFY(bench->state.commandFiles.isEmpty());
}

void TestTerminalWidgetPython::executeFileRunsTheWholeText()
{
    const QString text =
        QStringLiteral("def f(n):\n    return n and f(n - 1)\nprint('first', f(3))\n\nprint('last')");
    bench->send(KD::ShowEditor);
    bench->runFile(text);
    QVERIFY(bench->console->isVisible());
    QVERIFY(!bench->editor->isVisible());
    QVERIFY(bench->toolbarInTerminalMode());
    QVERIFY(bench->waitForPrompt());
    QVERIFY2(bench->text().endsWith(QLatin1String("> executing file\nfirst\n0\nlast\n> ")),
             qPrintable(bench->text()));
    QCOMPARE(bench->editor->toPlainText(), text);
    QVERIFY(bench->console->hasFocus());
}

void TestTerminalWidgetPython::executeFileInTerminalModeAsWell()
{
    bench->runFile(QStringLiteral("print('from the file')"));
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->text().endsWith(QLatin1String("from the file\n> ")));
}

void TestTerminalWidgetPython::executeFileWithAnEmptyEditor()
{
    bench->send(KD::ShowEditor);
    bench->send(KD::ExecuteFile);
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->text().endsWith(QLatin1String("> executing file\n> ")));
}

void TestTerminalWidgetPython::clearTerminalResets()
{
    const QString fresh = bench->text();
    QVERIFY(bench->run(QStringLiteral("x = 1")));
    bench->action("Clear Terminal")->trigger();
    QCOMPARE(bench->text(), fresh);
    QTest::keyClick(bench->console, Qt::Key_Up);
    QCOMPARE(bench->text(), fresh);
    QVERIFY(bench->run(QStringLiteral("x")));
    QVERIFY(bench->text().contains(QLatin1String("<class 'NameError'>")));
}

void TestTerminalWidgetPython::aRequestOfTheVisibleConsoleGoesNowhere_data()
{
    QTest::addColumn<quint32>("type");
    QTest::newRow("request") << 258U;
    QTest::newRow("controller") << 259U;
}

void TestTerminalWidgetPython::aRequestOfTheVisibleConsoleGoesNowhere()
{
    QFETCH(quint32, type);
    const QString before = bench->text();
    bench->send(static_cast<KD::EventType>(type), QStringLiteral("print(1)"));
    QVERIFY(bench->waitForPrompt());
    QCOMPARE(bench->text(), before);
    QCOMPARE(bench->editor->toPlainText(), QString());
    QVERIFY(bench->backend.requests().isEmpty());
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalWidgetPython::aRequestGoesToTheVisibleEditor()
{
    bench->send(KD::ShowEditor);
    bench->send(KD::Request, QStringLiteral("one"));
    bench->send(KD::Request, QStringLiteral("two"));
    QCOMPARE(bench->editor->toPlainText(), QStringLiteral("one\ntwo\n"));
    bench->send(KD::ControllerChosen, QStringLiteral("three"));
    QCOMPARE(bench->editor->toPlainText(), QStringLiteral("one\ntwo\n"));
}

void TestTerminalWidgetPython::aRequestOfAHiddenToolGoesNowhere()
{
    bench->send(KD::ShowEditor);
    bench->window.hide();
    bench->send(KD::Request, QStringLiteral("one"));
    QCOMPARE(bench->editor->toPlainText(), QString());
}

void TestTerminalWidgetPython::busyAndIdle_data()
{
    QTest::addColumn<qint64>("argument");
    QTest::newRow("one") << qint64{1};
    QTest::newRow("two") << qint64{2};
    QTest::newRow("below zero") << qint64{-1};
    QTest::newRow("beyond 32 bits") << (qint64{1} << 32);
}

void TestTerminalWidgetPython::busyAndIdle()
{
    QFETCH(qint64, argument);
    bench->send(KD::BusyChanged, argument);
    QCOMPARE(bench->tool->cursor().shape(), Qt::BusyCursor);
    bench->send(KD::BusyChanged, qint64{0});
    QCOMPARE(bench->tool->cursor().shape(), Qt::ArrowCursor);
}

void TestTerminalWidgetPython::busyDuringAStatement()
{
    QVERIFY(beginLong());
    QCOMPARE(bench->tool->cursor().shape(), Qt::BusyCursor);
    QVERIFY(endLong());
    QCOMPARE(bench->tool->cursor().shape(), Qt::ArrowCursor);
    bench->enter(QStringLiteral("input()"));
    QCOMPARE(bench->tool->cursor().shape(), Qt::BusyCursor);
    QVERIFY(bench->waitForQuestion());
    QCOMPARE(bench->tool->cursor().shape(), Qt::ArrowCursor);
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalWidgetPython::saveIsEnabled_data()
{
    QTest::addColumn<qint64>("argument");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("zero") << qint64{0} << false;
    QTest::newRow("one") << qint64{1} << true;
    QTest::newRow("below zero") << qint64{-1} << true;
    QTest::newRow("beyond 32 bits") << (qint64{1} << 32) << true;
}

void TestTerminalWidgetPython::saveIsEnabled()
{
    QFETCH(qint64, argument);
    QFETCH(bool, enabled);
    bench->send(KD::ShowEditor); // where the action is there at all
    bench->send(KD::ModifiedChanged, qint64{enabled ? 0 : 1});
    QCOMPARE(bench->action("Save File")->isEnabled(), !enabled);
    bench->send(KD::ModifiedChanged, argument);
    QCOMPARE(bench->action("Save File")->isEnabled(), enabled);
}

void TestTerminalWidgetPython::otherEventsReachTheHostUnchanged_data()
{
    QTest::addColumn<quint32>("type");
    QTest::newRow("none") << 0U;
    QTest::newRow("answer of a tool") << 152U;
    QTest::newRow("stop of an interpreter") << 173U;
    QTest::newRow("menu entry") << 178U;
    QTest::newRow("just below") << 251U;
    QTest::newRow("just above") << 262U;
    QTest::newRow("largest") << 4294967295U;
}

void TestTerminalWidgetPython::otherEventsReachTheHostUnchanged()
{
    QFETCH(quint32, type);
    LastEvent host;
    TerminalWidgetPython tool(nullptr, &bench->state, bench->mainData, host, 0);
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

void TestTerminalWidgetPython::ownEventsStayInTheTool_data()
{
    QTest::addColumn<quint32>("type");
    for (quint32 type = 252; type <= 261; ++type)
        QTest::addRow("%u", type) << type;
}

void TestTerminalWidgetPython::ownEventsStayInTheTool()
{
    QFETCH(quint32, type);
    bench->send(static_cast<KD::EventType>(type)); // without the arguments that it may have
    QVERIFY(bench->waitForPrompt());
    QVERIFY(bench->observer.events().empty());
}

// Events of the host

void TestTerminalWidgetPython::theHostsEndStopsTheInterpreter()
{
    QVERIFY(beginLong());
    KdParentEvent event(KD::StopInterpreter);
    bench->tool->parentEventOccured(event);
    QCOMPARE(bench->console->activity(), TerminalPythonConsole::Activity::Stopped);
    // The interpreter is free for somebody else.
    PythonToolBench next;
    QVERIFY(next.start());
    // A second time there is nothing left to stop.
    bench->tool->parentEventOccured(event);
    QVERIFY(next.run(QStringLiteral("print('here')")));
    QVERIFY(next.text().endsWith(QLatin1String("here\n> ")));
}

void TestTerminalWidgetPython::otherEventsOfTheHostStopNothing_data()
{
    QTest::addColumn<quint32>("type");
    for (const quint32 type : {0U, 147U, 148U, 149U, 150U, 172U, 174U, 206U, 208U, 257U, 258U})
        QTest::addRow("%u", type) << type;
}

void TestTerminalWidgetPython::otherEventsOfTheHostStopNothing()
{
    QFETCH(quint32, type);
    const QString before = bench->text();
    KdParentEvent event(static_cast<KD::EventType>(type));
    bench->tool->parentEventOccured(event);
    QCOMPARE(bench->console->activity(), TerminalPythonConsole::Activity::Idle);
    QCOMPARE(bench->text(), before);
    QVERIFY(bench->run(QStringLiteral("print('here')")));
    QVERIFY(bench->text().endsWith(QLatin1String("here\n> ")));
}

// Two of them

void TestTerminalWidgetPython::aSecondToolHasNoInterpreter()
{
    QVERIFY(bench->run(QStringLiteral("x = 1")));
    {
        PythonToolBench second;
        second.window.show();
        QVERIFY(second.waitForText("Failed to initialize Python.> "));
        QCOMPARE(second.display(), QStringList{QStringLiteral("white:Failed to initialize Python.> ")});
        // Neither candidates nor the end of its first line ever come.
        second.enter(QStringLiteral("print"));
        QVERIFY(!second.console->isEnabled());
        KdParentEvent event(KD::StopInterpreter);
        second.tool->parentEventOccured(event); // returns when its worker has done everything
        QCoreApplication::sendPostedEvents();
        QVERIFY(!second.console->isEnabled());
        QCOMPARE(second.display().size(), 2);
    }
    QVERIFY(bench->run(QStringLiteral("print('x is', x)")));
    QVERIFY(bench->text().endsWith(QLatin1String("x is\n1\n> ")));
}

QTEST_MAIN(TestTerminalWidgetPython)
#include "tst_terminal_widget_python.moc"
