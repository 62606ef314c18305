#pragma once

#include "hostclient/host_export.h"

#include <QList>
#include <QString>
#include <QVariant>

/// Node of the host's configuration tree; it holds its children by value. GUI thread only.
class HOST_EXPORT KdPluginConfiguration
{
public:
    KdPluginConfiguration();
    KdPluginConfiguration(const KdPluginConfiguration &other);
    KdPluginConfiguration(KdPluginConfiguration &&other) noexcept;
    KdPluginConfiguration &operator=(const KdPluginConfiguration &other);
    KdPluginConfiguration &operator=(KdPluginConfiguration &&other) noexcept;
    ~KdPluginConfiguration();

    /// Appends a copy to `children`.
    void pushChild(const KdPluginConfiguration &child);

    /// The first child with that name, or null. Valid until `children` changes.
    const KdPluginConfiguration *findChild(const QString &childName) const;

    QString name;
    QVariant value;
    QVariant defaultValue; ///< what the host falls back to when `value` is missing
    bool saved = false; ///< the node belongs into the host's file; ours keeps every node and its flags
    bool visible = false; ///< the node is shown in the host's settings
    QList<KdPluginConfiguration> children;
};
