#pragma once

#include "workbench/simulator/item_table.h"

namespace simulator
{

enum class CrateCondition : quint8
{
    MainsNotGood,
    SupplyNotGood,
    BatteryNotGood,
    TemperatureNotGood,
};

enum class CrateQuantity : quint8
{
    Power,
    ClearAll,
    ClearEvents,
    ClearErrors,
    InstallFirmware,
    EventCounter,
    ErrorCounter,
    RunningState,
    On,
    IsAlive,
    Temperature0,
    Temperature1,
};

const ItemTable &crateItems();

} // namespace simulator
