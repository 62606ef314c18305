#include "hostsdk/kd_plugin_widget.h"

#include "hostsdk/kd_child_event.h"

KdPluginWidget::KdPluginWidget(QWidget *parent, KdMainData &hostData, KdObserver &hostObserver,
                               unsigned int widgetClassId, unsigned int widgetInstance)
    : QWidget(parent),
      mainData(hostData),
      host(hostObserver),
      instance(widgetInstance),
      uniqueWidgetClassId(widgetClassId)
{ }

KdPluginWidget::~KdPluginWidget() = default;

unsigned int KdPluginWidget::getUniqueWidgetClassId() const
{
    return uniqueWidgetClassId;
}

void KdPluginWidget::parentEventOccured(KdParentEvent &) { }

void KdPluginWidget::processChildEvent(KdChildEvent &event)
{
    host.processChildEvent(event);
}
