#include "workbench/app/tool_host.h"

#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_parent_event.h"
#include "hostsdk/kd_plugin_interface.h"
#include "hostsdk/kd_plugin_widget.h"

#include <QLoggingCategory>

#include <limits>
#include <memory>
#include <utility>

Q_LOGGING_CATEGORY(hostLog, "workbench.host", QtWarningMsg)

namespace workbench
{

namespace
{

// Class ids are unique among all plug-ins of the process, whatever number of hosts it has had.
quint32 nextClassId()
{
    static quint32 lastClassId = 100;
    return ++lastClassId;
}

quint32 classIdOf(const KdChildEvent &event)
{
    const qint64 number = event.getIntArgument(1);
    return number > 0 && number <= std::numeric_limits<quint32>::max() ? static_cast<quint32>(number) : 0;
}

} // namespace

ToolHost::ToolHost(KdPluginInterface &plugin_, KdMainData &mainData_, QObject *parent)
    : QObject(parent), plugin(plugin_), mainData(mainData_)
{ }

ToolHost::~ToolHost()
{
    const QVector<quint32> classes = toolClasses();
    for (quint32 classId : classes)
        closeTool(classId);
}

void ToolHost::start(const KdPluginConfiguration &savedConfiguration)
{
    Q_ASSERT(tools.empty());
    plugin.getPluginDescription(description);
    for (KdPluginWidgetDescription &widget : description.widgets) {
        widget.uniqueWidgetClassId = nextClassId();
        tools[widget.uniqueWidgetClassId].description = widget;
    }
    plugin.registerWidgets(description, *this);
    plugin.loadConfiguration(savedConfiguration);
}

bool ToolHost::saveConfiguration(KdPluginConfiguration &parent)
{
    return plugin.saveConfiguration(parent);
}

QVector<quint32> ToolHost::toolClasses() const
{
    QVector<quint32> classes;
    classes.reserve(description.widgets.size());
    for (const KdPluginWidgetDescription &widget : description.widgets)
        classes.append(widget.uniqueWidgetClassId);
    return classes;
}

QString ToolHost::title(quint32 classId) const
{
    const Tool *tool = find(classId);
    return tool ? tool->description.title : QString();
}

QString ToolHost::permanentName(quint32 classId) const
{
    const Tool *tool = find(classId);
    return tool ? QStringLiteral("tool.%1.%2").arg(description.pluginId).arg(tool->description.widgetIndex)
                : QString();
}

KdPluginWidget *ToolHost::tool(quint32 classId) const
{
    const Tool *tool = find(classId);
    return tool ? tool->widget.data() : nullptr;
}

KdPluginWidget *ToolHost::openTool(quint32 classId, QWidget *parent, int layoutMargin)
{
    const auto found = tools.find(classId);
    if (found == tools.end())
        return nullptr;
    Tool &tool = found->second;
    if (tool.widget)
        return tool.widget;

    tool.widget = plugin.createWidget(tool.description.widgetIndex, parent, mainData, *this, tool.instances);
    if (!tool.widget)
        return nullptr;
    ++tool.instances;

    KdParentEvent margin(KD::SetLayoutMargin);
    margin.setIntArgument(layoutMargin, 0);
    send(classId, margin);

    // The answer comes before the query returns; it carries no arguments, so this is how it is told apart.
    tool.answered = false;
    queriedClass = classId;
    KdParentEvent query(KD::QueryTool);
    send(classId, query);
    queriedClass = 0;
    if (!tool.answered)
        qCWarning(hostLog, "the tool \"%s\" does not answer", qUtf8Printable(tool.description.title));
    return tool.widget;
}

bool ToolHost::hasAnswered(quint32 classId) const
{
    const Tool *tool = find(classId);
    return tool && tool->answered;
}

void ToolHost::closeTool(quint32 classId)
{
    KdParentEvent stop(KD::StopInterpreter);
    send(classId, stop);
    const std::unique_ptr<QWidget> widget(tool(classId));
}

void ToolHost::announceShown(quint32 classId)
{
    KdParentEvent event(KD::ShowTool);
    send(classId, event);
}

void ToolHost::announceHidden(quint32 classId)
{
    KdParentEvent event(KD::HideTool);
    send(classId, event);
}

void ToolHost::announceItem(KD::EventType type, const OrbItemId &id)
{
    const QVector<quint32> classes = toolClasses();
    for (quint32 classId : classes) {
        KdParentEvent event(type);
        event.setHardwareId(id, 0);
        send(classId, event);
    }
}

void ToolHost::processChildEvent(KdChildEvent &event)
{
    const quint32 classId = classIdOf(event);
    switch (event.type) {
    case KD::RegisterMenuEntry:
        if (find(classId) && !event.stringArguments.isEmpty())
            Q_EMIT menuEntryRegistered(classId, event.stringArguments);
        else
            qCWarning(hostLog, "menu entry refused: class %u, path \"%s\"", classId,
                      qUtf8Printable(event.stringArguments.join(QLatin1Char('/'))));
        break;
    case KD::ToolShown:
        if (find(classId))
            Q_EMIT toolShown(classId);
        break;
    case KD::ToolHidden:
        if (find(classId))
            Q_EMIT toolHidden(classId);
        break;
    case KD::ToolAnswer: {
        const auto found = tools.find(queriedClass);
        if (found != tools.end())
            found->second.answered = true;
        break;
    }
    default: // events of the full console that the workbench has no use for
        break;
    }
}

void ToolHost::send(quint32 classId, KdParentEvent &event)
{
    if (KdPluginWidget *widget = tool(classId))
        widget->parentEventOccured(event);
}

const ToolHost::Tool *ToolHost::find(quint32 classId) const
{
    const auto found = tools.find(classId);
    return found == tools.end() ? nullptr : &found->second;
}

} // namespace workbench
