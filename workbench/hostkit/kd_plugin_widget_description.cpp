#include "hostsdk/kd_plugin_widget_description.h"

KdPluginWidgetDescription::KdPluginWidgetDescription() = default;
KdPluginWidgetDescription::KdPluginWidgetDescription(const KdPluginWidgetDescription &other) = default;
KdPluginWidgetDescription::KdPluginWidgetDescription(KdPluginWidgetDescription &&other) noexcept = default;
KdPluginWidgetDescription &
KdPluginWidgetDescription::operator=(const KdPluginWidgetDescription &other) = default;
KdPluginWidgetDescription &
KdPluginWidgetDescription::operator=(KdPluginWidgetDescription &&other) noexcept = default;
KdPluginWidgetDescription::~KdPluginWidgetDescription() = default;
