#pragma once

#include "hostclient/host_export.h"

#include <QList>
#include <QString>

/// Describes one dockable tool to the host. A plain value, stored in a list. The plug-in sets the fields up to
/// `widgetIndex`; the host fills in `uniqueWidgetClassId` before it registers the tool.
class HOST_EXPORT KdPluginWidgetDescription
{
public:
    KdPluginWidgetDescription();
    KdPluginWidgetDescription(const KdPluginWidgetDescription &other);
    KdPluginWidgetDescription(KdPluginWidgetDescription &&other) noexcept;
    KdPluginWidgetDescription &operator=(const KdPluginWidgetDescription &other);
    KdPluginWidgetDescription &operator=(KdPluginWidgetDescription &&other) noexcept;
    ~KdPluginWidgetDescription();

    // What the flags and values mean is the host's business; our kit shows the title and keeps the rest.
    QString title;
    bool flag1 = false;
    bool flag2 = false;
    bool flag3 = false;
    qint32 value1 = 0;
    QList<qint32> valueList;
    qint32 value2 = 0;
    qint32 value3 = 0;
    qint32 widgetIndex = 0; ///< the plug-in's own number of the tool, passed back to createWidget
    quint32 uniqueWidgetClassId = 0; ///< set by the host, unique among all tools of all plug-ins
};
