#include "workbench/simulator/crate.h"

#include "workbench/simulator/raised_conditions.h"

namespace simulator
{

namespace
{

using Condition = CrateCondition;
using Quantity = CrateQuantity;

constexpr double TouchableVoltage = 63; // V; above it an output counts as being on
constexpr double InletTemperature = 27.5; // degrees, as the others
constexpr double InletTemperatureOff = 23;
constexpr double StandbyTemperature = 31;
constexpr double OffTemperature = 23.5;
constexpr double FullLoadRise = 10;
constexpr double HeatTimeConstant = 300; // s
constexpr double OrdinaryExcess = 40; // of an overheating fault that says none

constexpr quint32 OffConditions =
    bit(Condition::MainsNotGood) | bit(Condition::SupplyNotGood) | bit(Condition::TemperatureNotGood);

DevicePlace placeOfModules(const DevicePlace &crate, RunningSummary &summary,
                           std::function<void(double)> heatChanged)
{
    return {crate.run, &summary, crate.controller, crate.line, std::move(heatChanged)};
}

} // namespace

Crate::Crate(const CrateLayout &layout, const DevicePlace &cratePlace)
    : ownAddress(layout.address),
      place(cratePlace),
      summary(cratePlace.above),
      temperature(cratePlace.run->queue, HeatTimeConstant, StandbyTemperature,
                  [this](double now) { settle(now); })
{
    const DevicePlace inside = placeOfModules(place, summary, [this](double now) { moduleHeatChanged(now); });
    for (const ModuleLayout &module : layout.modules)
        members.emplace_back(module, inside);
}

ItemValue Crate::read(const ItemDefinition &item, double now) const
{
    if (item.source == ItemSource::Quantity)
        return quantity(static_cast<Quantity>(item.argument), now);
    return state.read(item, live);
}

TarnResult Crate::write(const ItemDefinition &item, const ItemValue &value, double now)
{
    if (item.source == ItemSource::Quantity)
        return writeQuantity(static_cast<Quantity>(item.argument), value, now);
    return state.store(item, value) ? TarnResult::Success : TarnResult::Denied;
}

void Crate::applyFault(const Fault &fault, bool begins, double now)
{
    quint32 condition = 0;
    switch (fault.kind) {
    case FaultKind::MainsFailure:
        condition = bit(Condition::MainsNotGood);
        break;
    case FaultKind::CrateSupplyFailure:
        condition = bit(Condition::SupplyNotGood);
        break;
    case FaultKind::BatteryFailure:
        condition = bit(Condition::BatteryNotGood);
        break;
    case FaultKind::CrateOverheating: {
        const double excess = fault.amount != 0 ? fault.amount : OrdinaryExcess;
        temperature.setExcess(begins ? excess : 0, now);
        return;
    }
    default:
        return; // not of a crate
    }
    faults = begins ? faults | condition : faults & ~condition;
    settle(now);
}

void Crate::dropOut(const SwitchOffCause &cause, double now)
{
    for (Module &module : members)
        module.dropOut(cause, now);
}

bool Crate::isSupplied() const
{
    return power && (live & (bit(Condition::MainsNotGood) | bit(Condition::SupplyNotGood))) == 0;
}

bool Crate::isAlive() const
{
    constexpr quint32 NoSource = bit(Condition::MainsNotGood) | bit(Condition::BatteryNotGood);
    return (live & NoSource) != NoSource;
}

ObjectAddress Crate::ownPlace() const
{
    return {OrbItemId::Crate, place.line, ownAddress, -1};
}

void Crate::moduleHeatChanged(double now)
{
    double heat = 0;
    for (const Module &module : members)
        heat += module.heat();
    if (!members.empty())
        heat /= static_cast<double>(members.size());
    temperature.approach(isSupplied() ? StandbyTemperature + FullLoadRise * heat : OffTemperature, now);
}

void Crate::settle(double now)
{
    const quint32 before = live;
    live = faults | (temperature.isGood() ? 0 : bit(Condition::TemperatureNotGood));
    state.latch.raiseEvents(live);
    state.latch.raiseErrors(live);
    JournalEntry entry;
    entry.time = now;
    entry.controller = place.controller;
    entry.object = ownPlace();
    enterRaised(place.run->journal, entry, crateItems(), live & ~before, live & ~before);
    if (!temperature.isGood())
        power = false;
    const auto why = static_cast<quint8>(qCountTrailingZeroBits(live & OffConditions));
    supplyModules(crateItems().nameOf(ItemSource::Error, why), now);
    contribute();
}

void Crate::supplyModules(const QString &item, double now)
{
    if (supplying == isSupplied())
        return;
    supplying = isSupplied();
    for (Module &module : members)
        module.setPowered(supplying, {item, ownPlace()}, now);
    moduleHeatChanged(now);
}

void Crate::contribute()
{
    RunningCounts counts;
    counts.events = static_cast<qint32>(state.latch.eventCount());
    counts.errors = static_cast<qint32>(state.latch.errorCount());
    counts.failing = counts.errors > 0 ? 1 : 0;
    summary.replace(contributed, counts);
    contributed = counts;
}

TarnResult Crate::clear(bool events, bool errors, double now)
{
    bool isDone = true;
    if (events)
        state.latch.clearEvents(); // what still is the case is raised again at once
    if (errors)
        state.latch.clearErrors();
    for (Module &module : members) {
        if (events)
            isDone = module.clearEvents(now) && isDone;
        if (errors)
            isDone = module.clearErrors(now) && isDone;
    }
    settle(now);
    isDone = isDone && live == 0; // each condition is an event and an error
    return isDone ? TarnResult::Success : TarnResult::Failed;
}

ItemValue Crate::quantity(CrateQuantity which, double now) const
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
        return ItemValue::of(static_cast<double>(summary.counts().events));
    case Quantity::ErrorCounter:
        return ItemValue::of(static_cast<double>(summary.counts().errors));
    case Quantity::RunningState:
        return ItemValue::of(power && isAlive() ? summary.counts().runningState()
                                                : QStringLiteral("disabled"));
    case Quantity::On: {
        double highest = 0;
        for (const Module &module : members)
            highest = qMax(highest, module.highestVoltage(now));
        return ItemValue::of(summary.counts().on > 0 || highest > TouchableVoltage);
    }
    case Quantity::IsAlive:
        return ItemValue::of(isAlive());
    case Quantity::Temperature0:
        return ItemValue::of(isSupplied() ? InletTemperature : InletTemperatureOff);
    case Quantity::Temperature1:
        return ItemValue::of(temperature.at(now));
    }
    return {};
}

TarnResult Crate::writeQuantity(CrateQuantity which, const ItemValue &value, double now)
{
    switch (which) {
    case Quantity::Power:
        if (value.isTrue() && !temperature.isGood())
            return TarnResult::Failed;
        power = value.isTrue();
        supplyModules(QStringLiteral("Control.power"), now);
        return TarnResult::Success;
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
        return value.isTrue() ? clear(which != Quantity::ClearErrors, which != Quantity::ClearEvents, now)
                              : TarnResult::Success;
    case Quantity::InstallFirmware:
        return value.text.trimmed().isEmpty() ? TarnResult::Failed : TarnResult::Success;
    default:
        return TarnResult::Denied; // the others can only be read
    }
}

} // namespace simulator
