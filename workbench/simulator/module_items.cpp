#include "workbench/simulator/module_items.h"

namespace simulator
{

namespace
{

using Condition = ModuleCondition;
using Setting = ModuleSetting;
using Quantity = ModuleQuantity;
using namespace item_words;

constexpr ItemRange YesOrNo{0, 1};
constexpr ItemRange Rampspeed{0.001, 100};

// clang-format off
constexpr ItemDefinition Rows[] = {
    command("Control.clearAll", Quantity::ClearAll),
    command("Control.clearEvents", Quantity::ClearEvents),
    command("Control.clearErrors", Quantity::ClearErrors),
    command("Control.installFirmware", Quantity::InstallFirmware, String),
    quantity("Status.eventCounter", Int, Read, "", Quantity::EventCounter),
    quantity("Status.errorCounter", Int, Read, "", Quantity::ErrorCounter),
    quantity("Status.runningState", String, Read, "", Quantity::RunningState),
    setting("Control.kill", Bool, "", Setting::Kill, 0, YesOrNo),
    quantity("Control.adjustment", Bool, ReadWrite, "", Quantity::Adjustment),
    quantity("Status.adjustment", Bool, Read, "", Quantity::Adjustment),
    quantity("Status.temperature", Float, Read, "°C", Quantity::Temperature),
    statusNot("Status.temperatureGood", Condition::TemperatureNotGood),
    event("Event.temperatureNotGood", Condition::TemperatureNotGood),
    error("Error.temperatureNotGood", Condition::TemperatureNotGood),
    statusNot("Status.supplyGood", Condition::SupplyNotGood),
    event("Event.supplyNotGood", Condition::SupplyNotGood),
    error("Error.supplyNotGood", Condition::SupplyNotGood),
    status("Status.interlockOut", Condition::InterlockOut),
    event("Event.interlockOut", Condition::InterlockOut),
    error("Error.interlockOut", Condition::InterlockOut),
    statusNot("Status.safetyLoopClosed", Condition::SafetyLoopOpen),
    event("Event.safetyLoopWasOpened", Condition::SafetyLoopOpen),
    error("Error.safetyLoopWasOpened", Condition::SafetyLoopOpen),
    status("Status.needService", Condition::NeedService),
    error("Error.needService", Condition::NeedService),
    quantity("Control.voltageRampspeed", Float, ReadWrite, "%/s", Quantity::VoltageRampspeed, Rampspeed),
    setting("Control.currentRampspeed", Float, "%/s", Setting::CurrentRampspeed, DefaultCurrentRampspeed, Rampspeed),
    setting("Control.moduleEventMask", Int, "", Setting::ModuleEventMask, AnyMask.maximum, AnyMask),
    setting("Control.moduleChannelEventMask", Int, "", Setting::ModuleChannelEventMask, AnyMask.maximum, AnyMask),
    setting("Setup.digitalFilter", Int, "", Setting::DigitalFilter, 64, {1, 1024}),
    setting("Setup.adcSampleRate", Int, "1/s", Setting::AdcSampleRate, 500, {5, 500}),
    quantity("Status.serialNumber", Int, Read, "", Quantity::SerialNumber),
    quantity("Status.isAlive", Bool, Read, "", Quantity::IsAlive),
    quantity("Status.firmwareName", String, Read, "", Quantity::FirmwareName),
    quantity("Status.firmwareRelease", String, Read, "", Quantity::FirmwareRelease),
    setting("Control.userHardwareCheck", Bool, "", Setting::UserHardwareCheck, 0, YesOrNo),
    error("Error.needUserHardwareCheck", Condition::NeedUserHardwareCheck),
    quantity("Status.numberOfChannels", Int, Read, "", Quantity::NumberOfChannels),
};
// clang-format on

static_assert(namesAreUnique(Rows), "a module item is listed twice");

} // namespace

const ItemTable &moduleItems()
{
    static const ItemTable table(Rows);
    return table;
}

} // namespace simulator
