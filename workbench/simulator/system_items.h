#pragma once

#include "workbench/simulator/item_table.h"

namespace simulator
{

enum class SystemSetting : quint8
{
    CycleTime,
};

enum class SystemQuantity : quint8
{
    Reboot,
    Shutdown,
    RestartScan,
    Wifi,
    LiveInsertion,
    RunningStateOrb,
    RunningStateWeb,
    WifiState,
    ConnectedClients,
    ServiceStart,
    ServiceStop,
    ServiceRestart,
    Discover,
    Protocols,
    HeartBeat,
    ConnectionStatus,
    ConnectionName,
    ControllerName,
    SessionId,
    Disconnect,
    Connect,
    AutoConfig,
};

const ItemTable &systemItems();

} // namespace simulator
