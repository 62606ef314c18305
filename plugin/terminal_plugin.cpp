#include "plugin/terminal_plugin.h"

#include "command_terminal/terminal_widget.h"
#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_observer.h"
#include "hostsdk/kd_plugin_configuration.h"
#include "hostsdk/kd_plugin_description.h"
#include "hostsdk/kd_plugin_widget_extension.h"
#include "python_terminal/terminal_widget_python.h"

namespace
{

constexpr qint32 PluginId = 9000;

enum WidgetIndex : qint32
{
    CommandTerminal = 0,
    PythonTerminal = 1,
};

// The host gives the flags and values their meaning.
KdPluginWidgetDescription describeWidget(const QString &title, qint32 value2, WidgetIndex index)
{
    KdPluginWidgetDescription widget;
    widget.title = title;
    widget.flag1 = true;
    widget.flag2 = false;
    widget.flag3 = true;
    widget.value1 = 4;
    widget.valueList = {4};
    widget.value2 = value2;
    widget.value3 = 11;
    widget.widgetIndex = index;
    return widget;
}

KdPluginConfiguration makeNode(const QString &name, const QVariant &value)
{
    KdPluginConfiguration node;
    node.name = name;
    node.value = value;
    node.defaultValue = QString();
    node.saved = true;
    node.visible = true;
    return node;
}

QString settingsName()
{
    return QObject::tr("Commands");
}

QString commandFileName()
{
    return QStringLiteral("CommandFile");
}

QString pythonFileName()
{
    return QStringLiteral("CommandFilePython");
}

void sendMenuEntry(KdObserver &host, unsigned int classId, const QStringList &menuPath)
{
    KdChildEvent event(KD::RegisterMenuEntry);
    fillMenuEntry(event, classId, menuPath);
    host.processChildEvent(event);
}

} // namespace

TerminalPlugin::TerminalPlugin() = default;

TerminalPlugin::~TerminalPlugin() = default;

void TerminalPlugin::getPluginDescription(KdPluginDescription &description)
{
    description.pluginId = PluginId;
    description.name = tr("Commands");
    description.widgets.clear();
    description.widgets.append(describeWidget(tr("Terminal"), 301, CommandTerminal));
    description.widgets.append(describeWidget(tr("Python Terminal"), 302, PythonTerminal));
}

bool TerminalPlugin::saveConfiguration(KdPluginConfiguration &parent)
{
    KdPluginConfiguration settings = makeNode(settingsName(), QString());
    for (const QString &path : std::as_const(state.commandFiles))
        settings.pushChild(makeNode(commandFileName(), path));
    for (const QString &path : std::as_const(state.pythonFiles))
        settings.pushChild(makeNode(pythonFileName(), path));
    if (settings.children.isEmpty())
        return false;
    parent.pushChild(settings);
    return true;
}

bool TerminalPlugin::loadConfiguration(const KdPluginConfiguration &parent)
{
    const KdPluginConfiguration *settings = parent.findChild(settingsName());
    if (!settings)
        return false;
    state.commandFiles.clear();
    state.pythonFiles.clear();
    for (const KdPluginConfiguration &child : settings->children) {
        if (child.name == commandFileName())
            state.commandFiles.append(child.value.toString());
        else if (child.name == pythonFileName())
            state.pythonFiles.append(child.value.toString());
    }
    return true;
}

void TerminalPlugin::registerWidgets(const KdPluginDescription &description, KdObserver &host)
{
    if (description.widgets.size() != 2)
        return;
    state.terminalWidgetClassId = description.widgets.at(0).uniqueWidgetClassId;
    state.pythonWidgetClassId = description.widgets.at(1).uniqueWidgetClassId;
    sendMenuEntry(host, state.terminalWidgetClassId, TerminalWidget::menuPath());
    sendMenuEntry(host, state.pythonWidgetClassId, TerminalWidgetPython::menuPath());
}

KdPluginWidget *TerminalPlugin::createWidget(int widgetIndex, QWidget *parent, KdMainData &mainData,
                                             KdObserver &host, unsigned int instance)
{
    switch (widgetIndex) {
    case CommandTerminal:
        return new KdPluginWidgetExtension<TerminalWidget>(parent, &state, mainData, host, instance);
    case PythonTerminal:
        return new KdPluginWidgetExtension<TerminalWidgetPython>(parent, &state, mainData, host, instance);
    default:
        return nullptr;
    }
}

// The host reads the metadata before it loads the library and accepts what was built for Qt 5.14, in release and
// debug builds alike; moc would write the Qt and the build type of this machine.
#undef QT_VERSION_MINOR
#define QT_VERSION_MINOR 14
#define qPluginArchRequirements() 0
#include "moc_terminal_plugin.cpp"
