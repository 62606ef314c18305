#include "workbench/app/tool_host.h"

#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_plugin_widget.h"
#include "hostsdk/kd_plugin_widget_extension.h"
#include "tests/workbench/fake_plugin.h"
#include "tests/workbench/small_system.h"

#include <QLayout>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using workbench::ToolHost;

class TestToolHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void asksInOrder()
    {
        SmallSystem system;
        FakePlugin plugin;
        ToolHost host(plugin, system.mainData);
        host.start({});
        QCOMPARE(
            plugin.log,
            QStringList({QStringLiteral("describe"), QStringLiteral("register 2"), QStringLiteral("load")}));
        QCOMPARE(host.toolClasses().size(), 2);
        QVERIFY(host.toolClasses().at(0) != 0);
        QVERIFY(host.toolClasses().at(0) != host.toolClasses().at(1));
        QCOMPARE(host.toolClasses(), plugin.classIds);
        QCOMPARE(host.title(plugin.classIds[1]), QStringLiteral("Beta"));
        QCOMPARE(host.permanentName(plugin.classIds[1]), QStringLiteral("tool.77.1"));
    }

    void classIdsAreNeverShared()
    {
        SmallSystem system;
        FakePlugin first;
        FakePlugin second;
        ToolHost firstHost(first, system.mainData);
        ToolHost secondHost(second, system.mainData);
        firstHost.start({});
        secondHost.start({});
        for (quint32 classId : secondHost.toolClasses())
            QVERIFY(!firstHost.toolClasses().contains(classId));
    }

    void passesMenuEntriesOn()
    {
        SmallSystem system;
        FakePlugin plugin;
        ToolHost host(plugin, system.mainData);
        QSignalSpy entries(&host, &ToolHost::menuEntryRegistered);
        host.start({});
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries.at(0).at(0).toUInt(), plugin.classIds[0]);
        QCOMPARE(entries.at(0).at(1).toStringList(), plugin.menuPath);
        QCOMPARE(entries.at(1).at(1).toStringList().constLast(), QStringLiteral("Beta"));
    }

    void refusesMenuEntries_data()
    {
        QTest::addColumn<qint64>("classId");
        QTest::addColumn<QStringList>("path");
        const QStringList path = {QStringLiteral("Window"), QStringLiteral("X")};
        QTest::newRow("unknown class") << qint64(999999) << path;
        QTest::newRow("zero class") << qint64(0) << path;
        QTest::newRow("negative class") << qint64(-1) << path;
        QTest::newRow("class too large") << (qint64(1) << 40) << path;
        QTest::newRow("no path") << qint64(-2) << QStringList(); // -2 stands for the first tool
    }

    void refusesMenuEntries()
    {
        QFETCH(qint64, classId);
        QFETCH(QStringList, path);
        SmallSystem system;
        FakePlugin plugin;
        ToolHost host(plugin, system.mainData);
        host.start({});
        QSignalSpy entries(&host, &ToolHost::menuEntryRegistered);
        KdChildEvent event(KD::RegisterMenuEntry);
        event.stringArguments = path;
        event.setIntArgument(classId == -2 ? plugin.classIds[0] : classId, 1);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("menu entry refused")));
        host.processChildEvent(event);
        QVERIFY(entries.isEmpty());
    }

    void opensATool()
    {
        SmallSystem system;
        FakePlugin plugin;
        ToolHost host(plugin, system.mainData);
        host.start({});
        QWidget parent;
        plugin.log.clear();
        KdPluginWidget *tool = host.openTool(plugin.classIds[0], &parent, 6);
        QVERIFY(tool);
        QCOMPARE(tool->parentWidget(), &parent);
        QCOMPARE(tool->layout()->contentsMargins(), QMargins(6, 6, 6, 6));
        QVERIFY(host.hasAnswered(plugin.classIds[0]));
        QCOMPARE(plugin.log,
                 QStringList({QStringLiteral("create 0 0"), QStringLiteral("event 150 6"),
                              QStringLiteral("event 149")}));
        // Each class counts its own.
        host.openTool(plugin.classIds[1], &parent, 0);
        QCOMPARE(plugin.logOf(QStringLiteral("create")).constLast(), QStringLiteral("create 1 0"));
        plugin.log.clear();
        QCOMPARE(host.openTool(plugin.classIds[0], &parent, 6), tool);
        QVERIFY(plugin.log.isEmpty());
    }

    void noticesASilentTool()
    {
        SmallSystem system;
        FakePlugin plugin;
        plugin.answersQueries = false;
        ToolHost host(plugin, system.mainData);
        host.start({});
        QWidget parent;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("does not answer")));
        QVERIFY(host.openTool(plugin.classIds[0], &parent, 0));
        QVERIFY(!host.hasAnswered(plugin.classIds[0]));
    }

    void hasNoSuchTool()
    {
        SmallSystem system;
        FakePlugin plugin;
        ToolHost host(plugin, system.mainData);
        host.start({});
        QWidget parent;
        QVERIFY(!host.openTool(plugin.classIds[1], &parent, 0));
        QVERIFY(!host.openTool(424242, &parent, 0));
        QVERIFY(!host.tool(plugin.classIds[1]));
        host.announceShown(plugin.classIds[1]);
        host.closeTool(plugin.classIds[1]);
        host.closeTool(424242);
        QVERIFY(plugin.logOf(QStringLiteral("event")).isEmpty());
    }

    void announces()
    {
        SmallSystem system;
        FakePlugin plugin;
        ToolHost host(plugin, system.mainData);
        host.start({});
        QWidget parent;
        host.openTool(plugin.classIds[0], &parent, 0);
        plugin.log.clear();
        OrbItemId id(OrbItemId::Channel);
        id.connection = 1;
        id.line = 2;
        id.address = 3;
        id.channel = 4;
        host.announceShown(plugin.classIds[0]);
        host.announceItem(KD::ItemSelected, id);
        host.announceItem(KD::ItemActivated, id);
        host.announceHidden(plugin.classIds[0]);
        QCOMPARE(plugin.log,
                 QStringList({QStringLiteral("event 148"), QStringLiteral("event 206 6:1:2:3:4"),
                              QStringLiteral("event 208 6:1:2:3:4"), QStringLiteral("event 147")}));
    }

    void hearsWhenAToolIsShownOrHidden()
    {
        SmallSystem system;
        FakePlugin plugin;
        ToolHost host(plugin, system.mainData);
        host.start({});
        QWidget parent;
        host.openTool(plugin.classIds[0], &parent, 0);
        QSignalSpy shown(&host, &ToolHost::toolShown);
        QSignalSpy hidden(&host, &ToolHost::toolHidden);
        parent.show();
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown.at(0).at(0).toUInt(), plugin.classIds[0]);
        QVERIFY(hidden.isEmpty());
        parent.hide();
        QCOMPARE(hidden.size(), 1);
        QCOMPARE(hidden.at(0).at(0).toUInt(), plugin.classIds[0]);
    }

    void stopsAToolBeforeItIsDeleted()
    {
        SmallSystem system;
        FakePlugin plugin;
        QWidget parent;
        {
            ToolHost host(plugin, system.mainData);
            host.start({});
            host.openTool(plugin.classIds[0], &parent, 0);
            plugin.log.clear();
            host.closeTool(plugin.classIds[0]);
            const QStringList expected = {QStringLiteral("event 173"), QStringLiteral("deleted")};
            QCOMPARE(plugin.log, expected);
            QVERIFY(!host.tool(plugin.classIds[0]));
            host.openTool(plugin.classIds[0], &parent, 0);
            QCOMPARE(plugin.logOf(QStringLiteral("create")), QStringList(QStringLiteral("create 0 1")));
            plugin.log.clear();
        }
        QCOMPARE(plugin.log, QStringList({QStringLiteral("event 173"), QStringLiteral("deleted")}));
    }

    void survivesAToolThatIsGone()
    {
        SmallSystem system;
        FakePlugin plugin;
        ToolHost host(plugin, system.mainData);
        host.start({});
        auto parent = std::make_unique<QWidget>();
        host.openTool(plugin.classIds[0], parent.get(), 0);
        parent.reset();
        QVERIFY(!host.tool(plugin.classIds[0]));
        host.announceItem(KD::ItemSelected, OrbItemId(OrbItemId::System));
        host.closeTool(plugin.classIds[0]);
        QVERIFY(plugin.logOf(QStringLiteral("event 206")).isEmpty());
        QVERIFY(plugin.logOf(QStringLiteral("event 173")).isEmpty());
    }
};

QTEST_MAIN(TestToolHost)

#include "tst_tool_host.moc"
