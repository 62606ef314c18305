#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/simulator/item_state.h"
#include "workbench/simulator/system_items.h"

namespace simulator
{

/// How a connection sees its controller.
struct ConnectionView
{
    QString connectionName;
    QString displayText;
    QString sessionId;
    int clients = 1; ///< connections to the same controller
};

/// The controller's own service: the items that belong to no device. Not locked; the service does that.
///
/// Chosen for the simulation:
/// - The interface services are "http" and "websocket", both running at first. Starting, stopping or restarting any
///   other is refused. The raw requests work whether or not "websocket" runs.
/// - "Control.restartScan" and "Control.autoConfig" make "Status.discover" true for two seconds and find what was there before.
/// - "Control.disconnect" and "Control.connect" change what "Status.connectionStatus" says and nothing else.
/// - "Status.heartBeat" counts the cycles of "Setup.cycleTime" since the start.
/// "Control.reboot" and "Control.shutdown" concern the devices too and are the controller's.
class ServiceNode
{
public:
    ItemValue read(const ItemDefinition &item, const ConnectionView &view, double now) const;
    TarnResult write(const ItemDefinition &item, const ItemValue &value, double now);
    void restart(double now);

private:
    ItemValue quantity(SystemQuantity which, const ConnectionView &view, double now) const;
    TarnResult writeQuantity(SystemQuantity which, const ItemValue &value, double now);
    TarnResult controlInterface(SystemQuantity which, const QString &name);

    ItemState state;
    double startTime = 0; // s
    double scanEnd = 0; // s
    bool wifi = false;
    bool liveInsertion = false;
    bool connected = true;
    bool httpRunning = true;
    bool websocketRunning = true;
};

} // namespace simulator
