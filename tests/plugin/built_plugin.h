#pragma once

#include "hostsdk/kd_plugin_interface.h"

#include <QLibrary>
#include <QObject>
#include <QString>

#include <memory>

/// The library as it was built, loaded as the host loads it. TERMINAL_PLUGIN_FILE says where it is.
class BuiltPlugin
{
public:
    BuiltPlugin() { library.setLoadHints(QLibrary::PreventUnloadHint); }

    static QString fileName() { return QStringLiteral(TERMINAL_PLUGIN_FILE); }

    /// What the entry point returns; null when the library or the entry is not there.
    QObject *instance()
    {
        using Entry = QObject *(*)();
        const auto entry = reinterpret_cast<Entry>(library.resolve("qt_plugin_instance"));
        return entry ? entry() : nullptr;
    }

    const char *metadata()
    {
        using Entry = const char *(*)();
        const auto entry = reinterpret_cast<Entry>(library.resolve("qt_plugin_query_metadata"));
        return entry ? entry() : nullptr;
    }

    /// Ends the plug-in object, so that the next one begins anew.
    void destroyInstance() { std::unique_ptr<QObject>(instance()).reset(); }

    KdPluginInterface *plugin() { return qobject_cast<KdPluginInterface *>(instance()); }

    QLibrary library{fileName()};
};
