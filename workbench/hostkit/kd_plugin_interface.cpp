#include "hostsdk/kd_plugin_interface.h"

KdPluginInterface::KdPluginInterface() = default;
KdPluginInterface::~KdPluginInterface() = default;
