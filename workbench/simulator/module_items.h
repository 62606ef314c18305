#pragma once

#include "workbench/simulator/item_table.h"

namespace simulator
{

enum class ModuleCondition : quint8
{
    TemperatureNotGood,
    SupplyNotGood,
    InterlockOut,
    SafetyLoopOpen,
    NeedService,
    NeedUserHardwareCheck,
};

enum class ModuleSetting : quint8
{
    Kill,
    CurrentRampspeed,
    ModuleEventMask,
    ModuleChannelEventMask,
    DigitalFilter,
    AdcSampleRate,
    UserHardwareCheck,
};

enum class ModuleQuantity : quint8
{
    ClearAll,
    ClearEvents,
    ClearErrors,
    InstallFirmware,
    EventCounter,
    ErrorCounter,
    RunningState,
    Adjustment,
    Temperature,
    VoltageRampspeed,
    SerialNumber,
    IsAlive,
    FirmwareName,
    FirmwareRelease,
    NumberOfChannels,
};

/// Before anybody sets another one, in percent of nominal per second.
constexpr double DefaultVoltageRampspeed = 10;
constexpr double DefaultCurrentRampspeed = 50;

const ItemTable &moduleItems();

} // namespace simulator
