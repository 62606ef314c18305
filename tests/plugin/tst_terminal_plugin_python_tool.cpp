#include "hostsdk/kd_parent_event.h"
#include "hostsdk/kd_plugin_description.h"
#include "hostsdk/kd_plugin_widget.h"
#include "tests/command_terminal/terminal_fixture.h"
#include "tests/plugin/built_plugin.h"

#include <QLayout>
#include <QPlainTextEdit>
#include <QtTest>

#include <memory>

/// The Python terminal that the plug-in makes, as the host meets it: nothing but the tool's widget is known of it.
class TestTerminalPluginPythonTool : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void runsAStatement();
    void reachesTheHostsClient();
    void opensAgain();
    void reportsItselfToTheHost();
    void stopsOnTheHostsEvent();

private:
    std::unique_ptr<KdPluginWidget> makeTool()
    {
        std::unique_ptr<KdPluginWidget> tool(
            built.plugin()->createWidget(1, nullptr, fixture->mainData, fixture->observer, 0));
        tool->show();
        return tool;
    }
    static QPlainTextEdit *consoleOf(const KdPluginWidget &tool)
    {
        return tool.findChild<QPlainTextEdit *>(QStringLiteral("console"));
    }
    static bool shows(const KdPluginWidget &tool, const QString &text)
    {
        return consoleOf(tool)->toPlainText().contains(text);
    }
    /// The banner is shown, and the prompt is ready.
    static bool isReady(const KdPluginWidget &tool) { return shows(tool, QStringLiteral("Python 3.7")); }
    static void enter(const KdPluginWidget &tool, const char *line)
    {
        QTest::keyClicks(consoleOf(tool), QString::fromLatin1(line));
        QTest::keyClick(consoleOf(tool), Qt::Key_Return);
    }

    std::unique_ptr<TerminalFixture> fixture;
    BuiltPlugin built;
};

void TestTerminalPluginPythonTool::init()
{
    fixture = std::make_unique<TerminalFixture>();
    built.destroyInstance();
    QVERIFY(built.plugin());
}

void TestTerminalPluginPythonTool::cleanup()
{
    fixture.reset();
}

void TestTerminalPluginPythonTool::runsAStatement()
{
    const auto tool = makeTool();
    QTRY_VERIFY(isReady(*tool));
    enter(*tool, "import math; math.factorial(6) * 7");
    QTRY_VERIFY(shows(*tool, QStringLiteral("\n5040\n> ")));
}

void TestTerminalPluginPythonTool::reachesTheHostsClient()
{
    fixture->backend.setControllers({{QStringLiteral("attic"), QStringLiteral("The attic's supply")}});
    const auto tool = makeTool();
    QTRY_VERIFY(isReady(*tool));
    enter(*tool, "[c.name for c in orbClient.getConnections()]");
    QTRY_VERIFY(shows(*tool, QStringLiteral("['attic']")));
}

void TestTerminalPluginPythonTool::opensAgain()
{
    for (int i = 0; i < 3; ++i) {
        const auto tool = makeTool();
        QTRY_VERIFY(isReady(*tool));
        enter(*tool, "dir().count('kept'); kept = 1");
        QTRY_VERIFY(shows(*tool, QStringLiteral("\n0\n> ")));
    }
}

void TestTerminalPluginPythonTool::reportsItselfToTheHost()
{
    KdPluginDescription description;
    built.plugin()->getPluginDescription(description);
    description.widgets[0].uniqueWidgetClassId = 11;
    description.widgets[1].uniqueWidgetClassId = 22;
    built.plugin()->registerWidgets(description, fixture->observer);
    const QStringList registered = fixture->observer.events().at(1).stringArguments;
    fixture->observer.clear();

    const auto tool = makeTool();
    QCOMPARE(tool->getUniqueWidgetClassId(), 22U);
    QCOMPARE(fixture->observer.types(), std::vector<quint32>{KD::ToolShown});
    QCOMPARE(fixture->observer.events().back().intArguments, (QVector<qint64>{104, 22}));
    QCOMPARE(fixture->observer.events().back().stringArguments, registered);

    KdParentEvent query(KD::QueryTool);
    tool->parentEventOccured(query);
    QCOMPARE(quint32(fixture->observer.types().back()), quint32(KD::ToolAnswer));
    KdParentEvent margin(KD::SetLayoutMargin);
    margin.setIntArgument(7, 0);
    tool->parentEventOccured(margin);
    QCOMPARE(tool->layout()->contentsMargins(), QMargins(7, 7, 7, 7));
}

void TestTerminalPluginPythonTool::stopsOnTheHostsEvent()
{
    const auto tool = makeTool();
    QTRY_VERIFY(isReady(*tool));
    enter(*tool, "while True: pass");
    QTRY_VERIFY(!consoleOf(*tool)->isEnabled());
    KdParentEvent stop(KD::StopInterpreter);
    QElapsedTimer timer;
    timer.start();
    tool->parentEventOccured(stop);
    // What does not end by itself is waited for a fifth of a second, no longer.
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
    // The interpreter is free for the next.
    const auto next = makeTool();
    QTRY_VERIFY(isReady(*next));
}

QTEST_MAIN(TestTerminalPluginPythonTool)
#include "tst_terminal_plugin_python_tool.moc"
