#include "workbench/simulator/crate.h"

namespace simulator
{

namespace
{

using Quantity = CrateQuantity;

constexpr double TouchableVoltage = 63; // V; above it an output counts as being on

} // namespace

Crate::Crate(const CrateLayout &layout) : ownAddress(layout.address)
{
    members.reserve(layout.modules.size());
    for (const ModuleLayout &module : layout.modules)
        members.emplace_back(module);
}

ItemValue Crate::read(const ItemDefinition &item, double now)
{
    if (item.source == ItemSource::Quantity)
        return quantity(static_cast<Quantity>(item.argument), now);
    return state.read(item, 0); // nothing is ever the matter with a crate
}

TarnResult Crate::write(const ItemDefinition &item, const ItemValue &value, double now)
{
    if (item.source == ItemSource::Quantity)
        return writeQuantity(static_cast<Quantity>(item.argument), value, now);
    return state.store(item, value) ? TarnResult::Success : TarnResult::Denied;
}

void Crate::dropOut(double now)
{
    for (Module &module : members)
        module.dropOut(now);
}

RunningSummary Crate::summary(double now)
{
    RunningSummary result;
    result.events = state.latch.eventCount();
    result.errors = state.latch.errorCount();
    result.hasError = state.latch.errors() != 0;
    for (Module &module : members)
        result += module.summary(power, now);
    return result;
}

ItemValue Crate::quantity(CrateQuantity which, double now)
{
    switch (which) {
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
    case Quantity::InstallFirmware:
        break; // these can only be written
    case Quantity::Power:
        return ItemValue::of(power);
    case Quantity::EventCounter:
        return ItemValue::of(static_cast<double>(summary(now).events));
    case Quantity::ErrorCounter:
        return ItemValue::of(static_cast<double>(summary(now).errors));
    case Quantity::RunningState:
        return ItemValue::of(power ? summary(now).runningState() : QStringLiteral("disabled"));
    case Quantity::On: {
        const RunningSummary all = summary(now);
        return ItemValue::of(all.isOn || all.highestVoltage > TouchableVoltage);
    }
    case Quantity::Temperature0:
        return ItemValue::of(power ? 27.5 : 23.0);
    case Quantity::Temperature1:
        return ItemValue::of(power ? 31.0 : 23.5);
    }
    return {};
}

TarnResult Crate::writeQuantity(CrateQuantity which, const ItemValue &value, double now)
{
    switch (which) {
    case Quantity::Power:
        switchPower(value.isTrue(), now);
        return TarnResult::Success;
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
        if (!value.isTrue())
            return TarnResult::Success;
        if (which != Quantity::ClearErrors)
            state.latch.clearEvents();
        if (which != Quantity::ClearEvents)
            state.latch.clearErrors();
        for (Module &module : members) {
            if (which != Quantity::ClearErrors)
                module.clearEvents(power, now);
            if (which != Quantity::ClearEvents)
                module.clearErrors(power, now);
        }
        return TarnResult::Success;
    case Quantity::InstallFirmware:
        return value.text.trimmed().isEmpty() ? TarnResult::Failed : TarnResult::Success;
    default:
        return TarnResult::Denied; // the others can only be read
    }
}

void Crate::switchPower(bool on, double now)
{
    if (power && !on)
        dropOut(now);
    power = on;
}

} // namespace simulator
