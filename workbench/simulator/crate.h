#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/simulator/board_temperature.h"
#include "workbench/simulator/crate_items.h"
#include "workbench/simulator/fault.h"
#include "workbench/simulator/module.h"

#include <deque>

namespace simulator
{

/// A crate and the modules in it. `now` is in s on the plant's clock and never before that of an earlier call. Not locked;
/// the service does that.
///
/// Chosen for the simulation:
/// - The crate starts switched on. Switched off, its modules lose power, all outputs are off at once and stay off when the
///   power returns; what was set is kept. A crate that is off is in the state "disabled".
/// - Mains or a supply that is not good take the modules' power as well, for as long as that lasts. Without mains the
///   crate lives on its battery; "Status.isAlive" is false when neither is good.
/// - A temperature that is not good switches the crate off; it cannot be switched on before it is good again.
///   "Status.temperature1" follows the heat of the modules with a time constant of five minutes, up to 10 degrees, and
///   decides; "Status.temperature0", at the air inlet, stays the same.
/// - Each of these is an event and an error.
/// - Clearing clears the crate, its modules and their channels as far as the causes are over, and is refused when one
///   lasts anywhere among them.
class Crate
{
public:
    Crate(const CrateLayout &layout, const DevicePlace &cratePlace);
    // Its modules know it.
    Crate(const Crate &) = delete;
    Crate &operator=(const Crate &) = delete;

    quint32 address() const { return ownAddress; }
    std::deque<Module> &modules() { return members; }
    const std::deque<Module> &modules() const { return members; }

    ItemValue read(const ItemDefinition &item, double now) const;
    TarnResult write(const ItemDefinition &item, const ItemValue &value, double now);

    /// A fault of the crate begins or ends.
    void applyFault(const Fault &fault, bool begins, double now);
    void dropOut(const SwitchOffCause &cause, double now);

private:
    bool isSupplied() const;
    bool isAlive() const;
    void moduleHeatChanged(double now);
    /// Carries out what its conditions ask for, and raises them.
    void settle(double now);
    /// `item` says why it is that they no longer are.
    void supplyModules(const QString &item, double now);
    ObjectAddress ownPlace() const;
    void contribute();
    TarnResult clear(bool events, bool errors, double now);
    ItemValue quantity(CrateQuantity which, double now) const;
    TarnResult writeQuantity(CrateQuantity which, const ItemValue &value, double now);

    const quint32 ownAddress;
    const DevicePlace place;
    RunningSummary summary;
    RunningCounts contributed;
    BoardTemperature temperature;
    std::deque<Module> members;
    ItemState state;
    quint32 faults = 0; // bits of CrateCondition
    quint32 live = 0; // bits of CrateCondition
    bool power = true;
    bool supplying = true;
};

} // namespace simulator
