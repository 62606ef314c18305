#include "workbench/app/plugin_library.h"

#include "hostsdk/kd_plugin_interface.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>

namespace workbench
{

PluginLibrary::PluginLibrary()
{
    // Type information and timers may outlive the plug-in object; its code stays mapped until the process ends.
    loader.setLoadHints(QLibrary::PreventUnloadHint);
}

PluginLibrary::~PluginLibrary()
{
    if (loadedPlugin)
        loader.unload();
}

QStringList PluginLibrary::candidates(const QString &applicationDir)
{
    const QDir dir(applicationDir);
    const QString name = QStringLiteral(TERMINAL_PLUGIN_FILE_NAME);
    return {
        dir.absoluteFilePath(name), // beside the program
        QDir::cleanPath(dir.absoluteFilePath(QStringLiteral(TERMINAL_PLUGIN_BUILD_DIR "/") + name)),
        QDir::cleanPath(dir.absoluteFilePath(QStringLiteral(TERMINAL_PLUGIN_INSTALL_DIR "/") + name)),
    };
}

bool PluginLibrary::load(const QString &file, const QString &applicationDir, QString &error)
{
    if (!file.isEmpty())
        return loadFile(file, error);

    const QStringList places = candidates(applicationDir);
    for (const QString &place : places) {
        if (QFileInfo::exists(place))
            return loadFile(place, error);
    }
    error = tr("The terminal plug-in was not found. Looked for:\n  %1\nName it with --plugin FILE.")
                .arg(places.join(QStringLiteral("\n  ")));
    return false;
}

bool PluginLibrary::loadFile(const QString &file, QString &error)
{
    const QFileInfo info(file);
    const QString shown = QDir::toNativeSeparators(info.absoluteFilePath());
    if (!info.exists()) {
        error = tr("The plug-in \"%1\" does not exist.").arg(shown);
        return false;
    }
    if (!info.isFile()) {
        error = tr("The plug-in \"%1\" is not a file.").arg(shown);
        return false;
    }

    loader.setFileName(info.absoluteFilePath());
    // Asked before the library is loaded, so that code of a foreign library is never run.
    const QString interfaceId = loader.metaData().value(QLatin1String("IID")).toString();
    if (interfaceId.isEmpty()) {
        error = tr("\"%1\" is not a plug-in: %2").arg(shown, loader.errorString());
        return false;
    }
    if (interfaceId != QLatin1String(KdPluginInterface_iid)) {
        error = tr("\"%1\" is a plug-in for \"%2\"; this host takes \"%3\".")
                    .arg(shown, interfaceId, QLatin1String(KdPluginInterface_iid));
        return false;
    }
    loadedPlugin = qobject_cast<KdPluginInterface *>(loader.instance());
    if (!loadedPlugin) {
        error = tr("The plug-in \"%1\" could not be loaded: %2").arg(shown, loader.errorString());
        return false;
    }
    return true;
}

} // namespace workbench
