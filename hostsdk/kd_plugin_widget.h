#pragma once

#include "hostclient/host_export.h"
#include "hostsdk/kd_observer.h"

#include <QWidget>

class KdMainData;
class KdParentEvent;

/// Base of every dockable tool. It observes the parts it is made of and reports to the host. GUI thread only.
class HOST_EXPORT KdPluginWidget : public QWidget, public KdObserver
{
    Q_OBJECT

public:
    /// `parent` owns the tool; main data and host are kept and outlive it. `instance` counts the tools of one class.
    KdPluginWidget(QWidget *parent, KdMainData &mainData, KdObserver &host, unsigned int uniqueWidgetClassId,
                   unsigned int instance);
    ~KdPluginWidget() override;

    unsigned int getUniqueWidgetClassId() const;

    /// The host delivers its events here, on the GUI thread. Does nothing by default. The event stays the host's.
    virtual void parentEventOccured(KdParentEvent &event);

    /// Events of the tool's own parts. Passes them on to the host by default.
    void processChildEvent(KdChildEvent &event) override;

protected:
    KdMainData &mainData;
    KdObserver &host;
    const unsigned int instance;

private:
    const unsigned int uniqueWidgetClassId;
};
