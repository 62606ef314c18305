#include "workbench/simulator/system_items.h"

namespace simulator
{

namespace
{

using Setting = SystemSetting;
using Quantity = SystemQuantity;
using namespace item_words;

// clang-format off
constexpr ItemDefinition Rows[] = {
    command("Control.reboot", Quantity::Reboot),
    command("Control.shutdown", Quantity::Shutdown),
    command("Control.restartScan", Quantity::RestartScan),
    command("Control.wifi", Quantity::Wifi),
    quantity("Control.liveInsertion", Bool, ReadWrite, "", Quantity::LiveInsertion),
    quantity("Status.runningStateOrb", String, Read, "", Quantity::RunningStateOrb),
    quantity("Status.runningStateWeb", String, Read, "", Quantity::RunningStateWeb),
    quantity("Status.runningStateWifi", String, Read, "", Quantity::WifiState),
    constantText("Status.runningStateEthernet", "ok"),
    quantity("Status.connectedClients", Int, Read, "", Quantity::ConnectedClients),
    setting("Setup.cycleTime", Int, "ms", Setting::CycleTime, 200, {10, 60000}),
    command("Control.serviceStart", Quantity::ServiceStart, String),
    command("Control.serviceStop", Quantity::ServiceStop, String),
    command("Control.serviceRestart", Quantity::ServiceRestart, String),
    quantity("Status.discover", Bool, Read, "", Quantity::Discover),
    quantity("Status.protocols", String, Read, "", Quantity::Protocols),
    quantity("Status.heartBeat", Int, Read, "", Quantity::HeartBeat),
    quantity("Status.connectionStatus", String, Read, "", Quantity::ConnectionStatus),
    quantity("Status.connectionName", String, Read, "", Quantity::ConnectionName),
    quantity("Status.controllerName", String, Read, "", Quantity::ControllerName),
    command("Control.disconnect", Quantity::Disconnect),
    command("Control.connect", Quantity::Connect),
    command("Control.autoConfig", Quantity::AutoConfig),
    quantity("Status.sessionId", String, Read, "", Quantity::SessionId),
    constantText("Status.usbAuxState", "off"),
    quantity("Status.liveInsertion", Bool, Read, "", Quantity::LiveInsertion),
    constantText("Status.ethernetState", "ok"),
    quantity("Status.wifiState", String, Read, "", Quantity::WifiState),
    constantText("Status.usbRemoteState", "off"),
    constantText("Status.usbRemoteText", "no device"),
    constantText("Status.usbAuxText", "no device"),
    constantText("Status.canState", "ok"),
    constantText("Status.canText", "250 kbit/s"),
};
// clang-format on

static_assert(namesAreUnique(Rows), "a system item is listed twice");

} // namespace

const ItemTable &systemItems()
{
    static const ItemTable table(Rows);
    return table;
}

} // namespace simulator
