#pragma once

#include "hostsdk/kd_plugin_widget_description.h"

#include <QList>
#include <QString>

/// Describes a plug-in and its tools. Filled by the plug-in, owned by the host.
struct KdPluginDescription
{
    qint32 pluginId = 0; ///< unique among the host's plug-ins
    QString name;
    QList<KdPluginWidgetDescription> widgets;
};
