#pragma once

#include <QCoreApplication>
#include <QPluginLoader>
#include <QString>
#include <QStringList>

class KdPluginInterface;

namespace workbench
{

/// The plug-in's library: found, loaded and, at the end, released again. GUI thread only.
class PluginLibrary
{
    Q_DECLARE_TR_FUNCTIONS(workbench::PluginLibrary)
    Q_DISABLE_COPY(PluginLibrary)

public:
    PluginLibrary();

    /// Deletes the plug-in object. Every tool that it made must be gone by then.
    ~PluginLibrary();

    /// Where the plug-in is looked for, best place first.
    static QStringList candidates(const QString &applicationDir);

    /// Loads `file`, or, when that is empty, the first candidate that exists. False: `error` is a text for the
    /// operator that names the file and what is wrong with it, and plugin() is null.
    bool load(const QString &file, const QString &applicationDir, QString &error);

    /// The plug-in object, owned by the library; null until load() succeeded.
    KdPluginInterface *plugin() const { return loadedPlugin; }

    QString fileName() const { return loader.fileName(); }

private:
    bool loadFile(const QString &file, QString &error);

    QPluginLoader loader;
    KdPluginInterface *loadedPlugin = nullptr;
};

} // namespace workbench
