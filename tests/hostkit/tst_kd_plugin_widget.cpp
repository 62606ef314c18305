#include "hostsdk/kd_plugin_widget.h"

#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_parent_event.h"
#include "tests/support/recording_observer.h"

#include <QtTest>

namespace
{

class Tool : public KdPluginWidget
{
public:
    using KdPluginWidget::KdPluginWidget;

    KdMainData *usedMainData() { return &mainData; }
    KdObserver *usedHost() { return &host; }
    unsigned int usedInstance() const { return instance; }
};

} // namespace

class TestKdPluginWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsWhatItIsGiven();
    void passesChildEventsOn();
    void ignoresParentEvents();
};

void TestKdPluginWidget::keepsWhatItIsGiven()
{
    KdMainData mainData(nullptr);
    RecordingObserver host;
    QWidget parent;
    Tool tool(&parent, mainData, host, 4294967295u, 3);
    QCOMPARE(tool.parentWidget(), &parent);
    QCOMPARE(tool.usedMainData(), &mainData);
    QCOMPARE(tool.usedHost(), static_cast<KdObserver *>(&host));
    QCOMPARE(tool.getUniqueWidgetClassId(), 4294967295u);
    QCOMPARE(tool.usedInstance(), 3u);
}

void TestKdPluginWidget::passesChildEventsOn()
{
    KdMainData mainData(nullptr);
    RecordingObserver host;
    Tool tool(nullptr, mainData, host, 1, 0);
    KdChildEvent event(KD::Request, QStringLiteral("text"));
    tool.processChildEvent(event);
    tool.childEventOccured(KD::ToolAnswer);
    QCOMPARE(host.types(), (std::vector<quint32>{258, 152}));
    QCOMPARE(host.textsOf(KD::Request), QStringList(QStringLiteral("text")));
}

void TestKdPluginWidget::ignoresParentEvents()
{
    KdMainData mainData(nullptr);
    RecordingObserver host;
    Tool tool(nullptr, mainData, host, 1, 0);
    KdParentEvent event(KD::ItemSelected);
    event.setHardwareId(OrbItemId(OrbItemId::Module), 0);
    tool.parentEventOccured(event);
    QVERIFY(host.events().empty());
    QVERIFY(event.getHardwareId(0) == OrbItemId(OrbItemId::Module));
}

QTEST_MAIN(TestKdPluginWidget)
#include "tst_kd_plugin_widget.moc"
