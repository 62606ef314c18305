#include "workbench/simulator/crate_items.h"

namespace simulator
{

namespace
{

using Condition = CrateCondition;
using Quantity = CrateQuantity;
using namespace item_words;

// clang-format off
constexpr ItemDefinition Rows[] = {
    quantity("Control.power", Bool, ReadWrite, "", Quantity::Power),
    command("Control.clearAll", Quantity::ClearAll),
    command("Control.clearEvents", Quantity::ClearEvents),
    command("Control.clearErrors", Quantity::ClearErrors),
    command("Control.installFirmware", Quantity::InstallFirmware, String),
    quantity("Status.eventCounter", Int, Read, "", Quantity::EventCounter),
    quantity("Status.errorCounter", Int, Read, "", Quantity::ErrorCounter),
    quantity("Status.runningState", String, Read, "", Quantity::RunningState),
    statusNot("Status.mainsGood", Condition::MainsNotGood),
    event("Event.mainsNotGood", Condition::MainsNotGood),
    error("Error.mainsNotGood", Condition::MainsNotGood),
    statusNot("Status.supplyGood", Condition::SupplyNotGood),
    event("Event.supplyNotGood", Condition::SupplyNotGood),
    error("Error.supplyNotGood", Condition::SupplyNotGood),
    statusNot("Status.batteryGood", Condition::BatteryNotGood),
    event("Event.batteryNotGood", Condition::BatteryNotGood),
    error("Error.batteryNotGood", Condition::BatteryNotGood),
    quantity("Status.power", Bool, Read, "", Quantity::Power),
    quantity("Status.on", Bool, Read, "", Quantity::On),
    quantity("Status.isAlive", Bool, Read, "", Quantity::IsAlive), // in standby as well
    quantity("Status.temperature0", Float, Read, "°C", Quantity::Temperature0),
    quantity("Status.temperature1", Float, Read, "°C", Quantity::Temperature1),
    statusNot("Status.temperatureGood", Condition::TemperatureNotGood),
    event("Event.temperatureNotGood", Condition::TemperatureNotGood),
    error("Error.temperatureNotGood", Condition::TemperatureNotGood),
    constantText("Status.firmwareName", "SIM-CC"),
    constantText("Status.firmwareRelease", "3.2.0"),
};
// clang-format on

static_assert(namesAreUnique(Rows), "a crate item is listed twice");

} // namespace

const ItemTable &crateItems()
{
    static const ItemTable table(Rows);
    return table;
}

} // namespace simulator
