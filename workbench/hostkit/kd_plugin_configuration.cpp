#include "hostsdk/kd_plugin_configuration.h"

#include <algorithm>

KdPluginConfiguration::KdPluginConfiguration() = default;
KdPluginConfiguration::KdPluginConfiguration(const KdPluginConfiguration &other) = default;
KdPluginConfiguration::KdPluginConfiguration(KdPluginConfiguration &&other) noexcept = default;
KdPluginConfiguration &KdPluginConfiguration::operator=(const KdPluginConfiguration &other) = default;
KdPluginConfiguration &KdPluginConfiguration::operator=(KdPluginConfiguration &&other) noexcept = default;
KdPluginConfiguration::~KdPluginConfiguration() = default;

void KdPluginConfiguration::pushChild(const KdPluginConfiguration &child)
{
    children.append(child);
}

const KdPluginConfiguration *KdPluginConfiguration::findChild(const QString &childName) const
{
    const auto found =
        std::find_if(children.cbegin(), children.cend(),
                     [&](const KdPluginConfiguration &child) { return child.name == childName; });
    return found == children.cend() ? nullptr : &*found;
}
