#include "workbench/app/settings_store.h"

#include "hostsdk/kd_plugin_configuration.h"
#include "workbench/hostkit/configuration_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>

namespace workbench
{

namespace
{

QString tr(const char *text)
{
    return QCoreApplication::translate("SettingsStore", text);
}

} // namespace

SettingsStore::SettingsStore(const QString &folder_) : folder(folder_) { }

QString SettingsStore::configurationFile() const
{
    return path(QStringLiteral("plugins.json"));
}

QString SettingsStore::layoutFile() const
{
    return path(QStringLiteral("layout.ini"));
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
    if (folder.isEmpty())
        return layout;
    const QSettings settings(layoutFile(), QSettings::IniFormat);
    layout.geometry = settings.value(QStringLiteral("window/geometry")).toByteArray();
    layout.state = settings.value(QStringLiteral("window/state")).toByteArray();
    layout.systemColumns = settings.value(QStringLiteral("system/columns")).toByteArray();
    layout.openTools = settings.value(QStringLiteral("tools/open")).toStringList();
    // Anything less than a whole layout is none.
    layout.saved = settings.status() == QSettings::NoError && !layout.state.isEmpty();
    return layout;
}

QString SettingsStore::saveLayout(const WindowLayout &layout) const
{
    if (folder.isEmpty())
        return {};
    QSettings settings(layoutFile(), QSettings::IniFormat);
    settings.setValue(QStringLiteral("window/geometry"), layout.geometry);
    settings.setValue(QStringLiteral("window/state"), layout.state);
    settings.setValue(QStringLiteral("system/columns"), layout.systemColumns);
    settings.setValue(QStringLiteral("tools/open"), layout.openTools);
    settings.sync();
    if (settings.status() == QSettings::NoError)
        return {};
    return tr("Layout not saved: \"%1\" cannot be written.").arg(QDir::toNativeSeparators(layoutFile()));
}

QString SettingsStore::path(const QString &fileName) const
{
    return folder.isEmpty() ? QString() : QDir(folder).absoluteFilePath(fileName);
}

} // namespace workbench
