#include "tests/workbench/fake_plugin.h"

#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_plugin_configuration.h"
#include "hostsdk/kd_plugin_description.h"
#include "hostsdk/kd_plugin_widget.h"
#include "hostsdk/kd_plugin_widget_extension.h"

#include <QVBoxLayout>

namespace
{

/// What the extension makes of it behaves as a real tool towards the host.
class FakeTool : public KdPluginWidget
{
public:
    FakeTool(QWidget *parent, FakePlugin *owner, KdMainData &mainData_, KdObserver &host_, unsigned classId,
             unsigned instance_)
        : KdPluginWidget(parent, mainData_, host_, classId, instance_), plugin(owner)
    {
        new QVBoxLayout(this);
    }

    ~FakeTool() override { plugin->log.append(QStringLiteral("deleted")); }

    static QStringList menuPath()
    {
        return {QStringLiteral("Window"), QStringLiteral("Tools"), QStringLiteral("Alpha")};
    }

    void parentEventOccured(KdParentEvent &event) override
    {
        QString entry = QStringLiteral("event %1").arg(event.type);
        const OrbItemId id = event.getHardwareId(0);
        if (event.type == KD::ItemSelected || event.type == KD::ItemActivated)
            entry += QStringLiteral(" %1:%2:%3:%4:%5")
                         .arg(id.type)
                         .arg(id.connection)
                         .arg(id.line)
                         .arg(id.address)
                         .arg(id.channel);
        plugin->log.append(entry);
    }

protected:
    FakePlugin *plugin;
};

class ExtendedFakeTool : public KdPluginWidgetExtension<FakeTool>
{
public:
    using KdPluginWidgetExtension<FakeTool>::KdPluginWidgetExtension;

    void parentEventOccured(KdParentEvent &event) override
    {
        if (event.type == KD::SetLayoutMargin)
            plugin->log.append(QStringLiteral("event 150 %1").arg(event.getIntArgument(0)));
        if (event.type == KD::QueryTool) {
            plugin->log.append(QStringLiteral("event 149"));
            if (!plugin->answersQueries)
                return;
        }
        KdPluginWidgetExtension<FakeTool>::parentEventOccured(event);
    }

protected:
    void showEvent(QShowEvent *event) override
    {
        plugin->log.append(QStringLiteral("shown"));
        KdPluginWidgetExtension<FakeTool>::showEvent(event);
    }

    void hideEvent(QHideEvent *event) override
    {
        plugin->log.append(QStringLiteral("hidden"));
        KdPluginWidgetExtension<FakeTool>::hideEvent(event);
    }
};

KdPluginWidgetDescription describe(const QString &title, int index)
{
    KdPluginWidgetDescription widget;
    widget.title = title;
    widget.widgetIndex = index;
    return widget;
}

} // namespace

QStringList FakePlugin::logOf(const QString &word) const
{
    QStringList entries;
    for (const QString &entry : log) {
        if (entry == word || entry.startsWith(word + QLatin1Char(' ')))
            entries.append(entry);
    }
    return entries;
}

void FakePlugin::getPluginDescription(KdPluginDescription &description)
{
    log.append(QStringLiteral("describe"));
    description.pluginId = PluginId;
    description.name = QStringLiteral("Fake");
    description.widgets = {describe(QStringLiteral("Alpha"), 0), describe(QStringLiteral("Beta"), 1)};
}

bool FakePlugin::saveConfiguration(KdPluginConfiguration &parent)
{
    log.append(QStringLiteral("save"));
    shuttingDownAtSave = mainData && mainData->shuttingDown;
    if (setting.isEmpty())
        return false;
    KdPluginConfiguration node;
    node.name = QStringLiteral("Fake");
    node.value = setting;
    node.saved = true;
    parent.pushChild(node);
    return true;
}

bool FakePlugin::loadConfiguration(const KdPluginConfiguration &parent)
{
    log.append(QStringLiteral("load"));
    const KdPluginConfiguration *node = parent.findChild(QStringLiteral("Fake"));
    if (node)
        setting = node->value.toString();
    return node;
}

void FakePlugin::registerWidgets(const KdPluginDescription &description, KdObserver &host)
{
    classIds.clear();
    for (const KdPluginWidgetDescription &widget : description.widgets)
        classIds.append(widget.uniqueWidgetClassId);
    log.append(QStringLiteral("register %1").arg(classIds.size()));
    for (int i = 0; i < classIds.size(); ++i) {
        KdChildEvent event(KD::RegisterMenuEntry);
        QStringList path = menuPath;
        if (i == 1 && !path.isEmpty())
            path.last() = QStringLiteral("Beta");
        fillMenuEntry(event, classIds[i], path);
        host.processChildEvent(event);
    }
}

KdPluginWidget *FakePlugin::createWidget(int widgetIndex, QWidget *parent, KdMainData &hostData,
                                         KdObserver &host, unsigned int instance)
{
    log.append(QStringLiteral("create %1 %2").arg(widgetIndex).arg(instance));
    return widgetIndex == 0 ? new ExtendedFakeTool(parent, this, hostData, host, classIds[0], instance)
                            : nullptr;
}
