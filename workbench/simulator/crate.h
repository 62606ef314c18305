#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/simulator/crate_items.h"
#include "workbench/simulator/module.h"

#include <vector>

namespace simulator
{

/// A crate and the modules in it. `now` is in seconds and never before that of an earlier call. Not locked; the
/// service does that.
///
/// Chosen for the simulation: the crate starts switched on. Switched off, its modules lose power, all outputs are at 0
/// at once and stay off when the power returns; what was set is kept. A crate that is off is in the state "disabled".
class Crate
{
public:
    explicit Crate(const CrateLayout &layout);

    quint32 address() const { return ownAddress; }
    bool isPowered() const { return power; }
    std::vector<Module> &modules() { return members; }
    const std::vector<Module> &modules() const { return members; }

    ItemValue read(const ItemDefinition &item, double now);
    TarnResult write(const ItemDefinition &item, const ItemValue &value, double now);

    void dropOut(double now);
    RunningSummary summary(double now);

private:
    ItemValue quantity(CrateQuantity which, double now);
    TarnResult writeQuantity(CrateQuantity which, const ItemValue &value, double now);
    void switchPower(bool on, double now);

    const quint32 ownAddress;
    std::vector<Module> members;
    ItemState state;
    bool power = true;
};

} // namespace simulator
