#include "hostsdk/kd_plugin_widget_extension.h"

#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_plugin_widget.h"
#include "tests/support/recording_observer.h"

#include <QVBoxLayout>
#include <QtTest>

namespace
{

constexpr unsigned int ClassId = 4000000000u;

class Tool : public KdPluginWidget
{
public:
    using KdPluginWidget::KdPluginWidget;

    static QStringList menuPath() { return {QStringLiteral("Window"), QStringLiteral("Tool")}; }

    void parentEventOccured(KdParentEvent &event) override { parentEvents.append(event.type); }

    void processChildEvent(KdChildEvent &event) override
    {
        ownChildEvents.append(event.type);
        KdPluginWidget::processChildEvent(event);
    }

    QVector<quint32> parentEvents;
    QVector<quint32> ownChildEvents;
    int shown = 0;
    int hidden = 0;

protected:
    void showEvent(QShowEvent *) override { ++shown; }
    void hideEvent(QHideEvent *) override { ++hidden; }
};

} // namespace

class TestKdPluginWidgetExtension : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reportsShowAndHide();
    void reportsHostsShowAndHide_data();
    void reportsHostsShowAndHide();
    void answersThroughTheToolItself();
    void appliesTheMargin();
    void survivesAMarginWithoutLayout();
    void leavesTheRestToTheTool_data();
    void leavesTheRestToTheTool();

private:
    void compareMenuEntry(const KdChildEvent &event, quint32 type);

    KdMainData mainData{nullptr};
};

void TestKdPluginWidgetExtension::compareMenuEntry(const KdChildEvent &event, quint32 type)
{
    QCOMPARE(quint32(event.type), type);
    QCOMPARE(event.intArguments, (QVector<qint64>{104, qint64(ClassId)}));
    QCOMPARE(event.stringArguments, Tool::menuPath());
}

void TestKdPluginWidgetExtension::reportsShowAndHide()
{
    RecordingObserver host;
    KdPluginWidgetExtension<Tool> tool(nullptr, mainData, host, ClassId, 0);
    QVERIFY(host.events().empty());
    tool.show();
    QCOMPARE(int(host.events().size()), 1);
    compareMenuEntry(host.events().at(0), 181);
    tool.hide();
    QCOMPARE(int(host.events().size()), 2);
    compareMenuEntry(host.events().at(1), 182);
    QCOMPARE(tool.shown, 1);
    QCOMPARE(tool.hidden, 1);
    // These go to the host, past the tool's own processing.
    QVERIFY(tool.ownChildEvents.isEmpty());
}

void TestKdPluginWidgetExtension::reportsHostsShowAndHide_data()
{
    QTest::addColumn<quint32>("asked");
    QTest::addColumn<quint32>("answered");
    QTest::newRow("hide") << 147u << 182u;
    QTest::newRow("show") << 148u << 181u;
}

void TestKdPluginWidgetExtension::reportsHostsShowAndHide()
{
    QFETCH(quint32, asked);
    QFETCH(quint32, answered);
    RecordingObserver host;
    KdPluginWidgetExtension<Tool> tool(nullptr, mainData, host, ClassId, 0);
    KdParentEvent event(static_cast<KD::EventType>(asked));
    tool.parentEventOccured(event);
    QCOMPARE(int(host.events().size()), 1);
    compareMenuEntry(host.events().front(), answered);
    QCOMPARE(tool.parentEvents, QVector<quint32>{asked});
}

void TestKdPluginWidgetExtension::answersThroughTheToolItself()
{
    RecordingObserver host;
    KdPluginWidgetExtension<Tool> tool(nullptr, mainData, host, ClassId, 0);
    KdParentEvent event(KD::QueryTool);
    tool.parentEventOccured(event);
    QCOMPARE(tool.ownChildEvents, QVector<quint32>{152});
    QCOMPARE(host.types(), std::vector<quint32>{152});
    QVERIFY(host.events().front().intArguments.isEmpty());
    QVERIFY(host.events().front().stringArguments.isEmpty());
    QVERIFY(tool.parentEvents.isEmpty());
}

void TestKdPluginWidgetExtension::appliesTheMargin()
{
    RecordingObserver host;
    KdPluginWidgetExtension<Tool> tool(nullptr, mainData, host, ClassId, 0);
    QVBoxLayout layout(&tool);
    KdParentEvent event(KD::SetLayoutMargin);
    event.setIntArgument(7, 0);
    tool.parentEventOccured(event);
    QCOMPARE(layout.contentsMargins(), QMargins(7, 7, 7, 7));
    QVERIFY(host.events().empty());
    QVERIFY(tool.parentEvents.isEmpty());

    event.clear();
    tool.parentEventOccured(event);
    QCOMPARE(layout.contentsMargins(), QMargins());
}

void TestKdPluginWidgetExtension::survivesAMarginWithoutLayout()
{
    RecordingObserver host;
    KdPluginWidgetExtension<Tool> tool(nullptr, mainData, host, ClassId, 0);
    KdParentEvent event(KD::SetLayoutMargin);
    event.setIntArgument(7, 0);
    tool.parentEventOccured(event);
    QVERIFY(tool.layout() == nullptr);
    QVERIFY(host.events().empty());
}

void TestKdPluginWidgetExtension::leavesTheRestToTheTool_data()
{
    QTest::addColumn<quint32>("type");
    QTest::newRow("before") << 146u;
    QTest::newRow("after") << 151u;
    QTest::newRow("stop") << 173u;
    QTest::newRow("selected") << 206u;
    QTest::newRow("activated") << 208u;
    QTest::newRow("unknown") << 99999u;
}

void TestKdPluginWidgetExtension::leavesTheRestToTheTool()
{
    QFETCH(quint32, type);
    RecordingObserver host;
    KdPluginWidgetExtension<Tool> tool(nullptr, mainData, host, ClassId, 0);
    KdParentEvent event(static_cast<KD::EventType>(type));
    tool.parentEventOccured(event);
    QCOMPARE(tool.parentEvents, QVector<quint32>{type});
    QVERIFY(host.events().empty());
}

QTEST_MAIN(TestKdPluginWidgetExtension)
#include "tst_kd_plugin_widget_extension.moc"
