#include "workbench/app/settings_store.h"

#include "hostsdk/kd_plugin_configuration.h"
#include "workbench/hostkit/configuration_file.h"

#include <QDir>
#include <QFile>

namespace workbench
{

namespace
{

const QLatin1String GeometryName("geometry");
const QLatin1String StateName("state");
// Not "systemColumns": under that name lie states of the header in which State was the last column, and would be again.
const QLatin1String SystemColumnsName("systemHeader");
const QLatin1String OpenToolsName("openTools");

KdPluginConfiguration node(QLatin1String name, const QVariant &value)
{
    KdPluginConfiguration configuration;
    configuration.name = name;
    configuration.value = value;
    configuration.saved = true;
    return configuration;
}

QVariant valueOf(const KdPluginConfiguration &tree, QLatin1String name)
{
    const KdPluginConfiguration *child = tree.findChild(name);
    return child ? child->value : QVariant();
}

} // namespace

SettingsStore::SettingsStore(const QString &folder_) : folder(folder_) { }

QString SettingsStore::configurationFile() const
{
    return path(QStringLiteral("plugins.json"));
}

QString SettingsStore::layoutFile() const
{
    return path(QStringLiteral("layout.json"));
}

QString SettingsStore::loadConfiguration(KdPluginConfiguration &tree) const
{
    const QString file = configurationFile();
    if (folder.isEmpty() || !QFile::exists(file))
        return {};
    QString error;
    if (hostkit::loadConfiguration(tree, file, &error))
        return {};

    tree = KdPluginConfiguration();
    const QString aside = file + QStringLiteral(".damaged");
    QFile::remove(aside);
    if (!QFile::rename(file, aside))
        return tr("Settings not loaded: %1").arg(error);
    return tr("Settings not loaded: %1 The file was kept as \"%2\".")
        .arg(error, QDir::toNativeSeparators(aside));
}

QString SettingsStore::saveConfiguration(const KdPluginConfiguration &tree) const
{
    if (folder.isEmpty())
        return {};
    QString error;
    if (hostkit::saveConfiguration(tree, configurationFile(), &error))
        return {};
    return tr("Settings not saved: %1").arg(error);
}

WindowLayout SettingsStore::loadLayout() const
{
    WindowLayout layout;
    KdPluginConfiguration tree;
    if (folder.isEmpty() || !hostkit::loadConfiguration(tree, layoutFile(), nullptr))
        return layout;
    layout.geometry = valueOf(tree, GeometryName).toByteArray();
    layout.state = valueOf(tree, StateName).toByteArray();
    layout.systemColumns = valueOf(tree, SystemColumnsName).toByteArray();
    layout.openTools = valueOf(tree, OpenToolsName).toStringList();
    layout.saved = !layout.state.isEmpty(); // anything less than a whole layout is none
    return layout;
}

QString SettingsStore::saveLayout(const WindowLayout &layout) const
{
    if (folder.isEmpty())
        return {};
    KdPluginConfiguration tree;
    tree.pushChild(node(GeometryName, layout.geometry));
    tree.pushChild(node(StateName, layout.state));
    tree.pushChild(node(SystemColumnsName, layout.systemColumns));
    tree.pushChild(node(OpenToolsName, layout.openTools));
    QString error;
    if (hostkit::saveConfiguration(tree, layoutFile(), &error))
        return {};
    return tr("Layout not saved: %1").arg(error);
}

QString SettingsStore::path(const QString &fileName) const
{
    return folder.isEmpty() ? QString() : QDir(folder).absoluteFilePath(fileName);
}

} // namespace workbench
