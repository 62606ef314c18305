#include "workbench/simulator/module.h"

#include "workbench/simulator/chance.h"
#include "workbench/simulator/raised_conditions.h"

namespace simulator
{

namespace
{

using Condition = ModuleCondition;
using Quantity = ModuleQuantity;
using Setting = ModuleSetting;

constexpr double Percent = 0.01;
constexpr double RoomTemperature = 23; // degrees, as the others
constexpr double StandbyTemperature = 28.5;
constexpr double StandbySpread = 0.5; // from one module to the next
constexpr double FullLoadRise = 25;
constexpr double HeatTimeConstant = 120; // s
constexpr double OrdinaryExcess = 40; // of an overheating fault that says none
constexpr double OrdinarySampleRate = 500; // 1/s
constexpr double OrdinaryFilterSteps = 64;
constexpr double AllBits = 4294967295.0;

constexpr quint32 OffConditions =
    bit(Condition::SafetyLoopOpen) | bit(Condition::SupplyNotGood) | bit(Condition::TemperatureNotGood);
// The others have no item that would tell of the event.
constexpr quint32 EventConditions = OffConditions | bit(Condition::InterlockOut);

double standbyTemperature(quint32 address)
{
    return StandbyTemperature + StandbySpread * (address % 10);
}

ModuleLayout withoutLoads(ModuleLayout layout)
{
    layout.loads = {}; // the channels have them
    return layout;
}

} // namespace

Module::Module(const ModuleLayout &moduleLayout, const DevicePlace &modulePlace)
    : layout(withoutLoads(moduleLayout)),
      place(modulePlace),
      summary(modulePlace.above),
      temperature(modulePlace.run->queue, HeatTimeConstant, standbyTemperature(moduleLayout.address),
                  [this](double now) { settle(now); })
{
    environment.rating = {layout.nominalVoltage, layout.nominalCurrent};
    environment.voltageLimit = layout.nominalVoltage * layout.voltageLimit * Percent;
    environment.currentLimit = layout.nominalCurrent * layout.currentLimit * Percent;
    environment.voltageRampspeed = layout.voltageRampspeed;
    environment.measurement = layout.measurement;
    environment.isNegative = layout.isNegative;
    const quint64 controllerKey =
        chance::mixed(place.run->seed, itemNameHash(place.controller.toUtf8().constData()));
    environment.chanceKey = chance::mixed(controllerKey, (quint64(place.line) << 32) | layout.address);
    if (layout.currentRampspeed != DefaultCurrentRampspeed)
        state.settings.set(static_cast<quint8>(Setting::CurrentRampspeed), layout.currentRampspeed);
    followSettings(0);
    place.run->journal.makeRoomFor(moduleLayout.loads.size());
    channels.reserve(moduleLayout.loads.size());
    for (const LoadLayout &load : moduleLayout.loads) {
        channels.emplace_back(load, static_cast<ChannelHost &>(*this));
        place.run->queue.rank(channels.back());
    }
}

ItemValue Module::read(const ItemDefinition &item, double now) const
{
    if (item.source == ItemSource::Quantity)
        return quantity(static_cast<Quantity>(item.argument), now);
    return state.read(item, live);
}

TarnResult Module::write(const ItemDefinition &item, const ItemValue &value, double now)
{
    if (!environment.isPowered)
        return TarnResult::Failed;
    if (item.source == ItemSource::Quantity)
        return writeQuantity(static_cast<Quantity>(item.argument), value, now);
    if (!state.store(item, value))
        return TarnResult::Denied;
    if (static_cast<Setting>(item.argument) == Setting::CurrentRampspeed) {
        for (Channel &channel : channels)
            channel.followModuleCurrentRampspeed();
    }
    followSettings(now);
    return TarnResult::Success;
}

ItemValue Module::readChannel(std::size_t channel, const ItemDefinition &item, double now) const
{
    return channels[channel].read(item, now);
}

TarnResult Module::writeChannel(std::size_t channel, const ItemDefinition &item, const ItemValue &value,
                                double now)
{
    return channels[channel].write(item, value, now);
}

ChannelSnapshot Module::channelSnapshot(std::size_t channel, double now) const
{
    return channels[channel].snapshot(now);
}

void Module::applyFault(const Fault &fault, bool begins, double now)
{
    quint32 condition = 0;
    switch (fault.kind) {
    case FaultKind::SafetyLoopOpen:
        condition = bit(Condition::SafetyLoopOpen);
        break;
    case FaultKind::SupplyFailure:
        condition = bit(Condition::SupplyNotGood);
        break;
    case FaultKind::NeedService:
        condition = bit(Condition::NeedService);
        break;
    case FaultKind::Overheating: {
        const double excess = fault.amount != 0 ? fault.amount : OrdinaryExcess;
        temperature.setExcess(begins ? excess : 0, now);
        return;
    }
    default:
        return; // not of a module
    }
    faults = begins ? faults | condition : faults & ~condition;
    settle(now);
}

void Module::applyChannelFault(std::size_t channel, const Fault &fault, bool begins, double now)
{
    channels[channel].applyFault(fault, begins, now);
}

void Module::setPowered(bool isPowered, const SwitchOffCause &cause, double now)
{
    if (environment.isPowered == isPowered)
        return;
    if (!isPowered)
        dropOut(cause, now);
    environment.isPowered = isPowered;
    for (Channel &channel : channels)
        channel.followEnvironment(now);
    heatChanged(now);
}

void Module::dropOut(const SwitchOffCause &cause, double now)
{
    for (Channel &channel : channels)
        channel.dropOut(cause, now);
}

bool Module::clearEvents(double now)
{
    state.latch.clearEvents(); // what still is the case is raised again at once
    bool isDone = true;
    for (Channel &channel : channels)
        isDone = channel.clearEvents(now) && isDone;
    settle(now);
    return isDone && state.latch.events() == 0;
}

bool Module::clearErrors(double now)
{
    state.latch.clearErrors();
    bool isDone = true;
    for (Channel &channel : channels)
        isDone = channel.clearErrors(now) && isDone;
    settle(now);
    return isDone && state.latch.errors() == 0;
}

double Module::highestVoltage(double now) const
{
    double result = 0;
    for (const Channel &channel : channels)
        result = qMax(result, channel.voltage(now));
    return result;
}

double Module::heat() const
{
    double sum = 0;
    for (const Channel &channel : channels)
        sum += double(channel.heat());
    return channels.empty() ? 0 : sum / static_cast<double>(channels.size());
}

quint32 Module::indexOf(const Channel &channel) const
{
    return static_cast<quint32>(&channel - channels.data());
}

JournalEntry Module::entryFor(const Channel &channel, double now) const
{
    JournalEntry result = entry(now);
    result.object.level = OrbItemId::Channel;
    result.object.channel = static_cast<qint32>(indexOf(channel));
    return result;
}

JournalEntry Module::entry(double now) const
{
    JournalEntry result;
    result.time = now;
    result.controller = place.controller;
    result.object = {OrbItemId::Module, place.line, layout.address, -1};
    return result;
}

void Module::heatChanged(double now)
{
    temperature.approach(environment.isPowered ? standbyTemperature(layout.address) + FullLoadRise * heat()
                                               : RoomTemperature,
                         now);
    if (place.heatChanged)
        place.heatChanged(now);
}

double Module::settingOf(ModuleSetting which, double fallback) const
{
    return state.settings.value(static_cast<quint8>(which), fallback);
}

void Module::followSettings(double now)
{
    environment.currentRampspeed = settingOf(Setting::CurrentRampspeed, DefaultCurrentRampspeed);
    environment.kill = settingOf(Setting::Kill, 0) != 0;
    environment.eventMask = static_cast<quint32>(settingOf(Setting::ModuleChannelEventMask, AllBits));
    environment.sampleRate = settingOf(Setting::AdcSampleRate, OrdinarySampleRate);
    environment.filterSteps = settingOf(Setting::DigitalFilter, OrdinaryFilterSteps);
    for (Channel &channel : channels)
        channel.followEnvironment(now);
    contribute();
}

void Module::settle(double now)
{
    const quint32 before = live;
    live = faults | (temperature.isGood() ? 0 : bit(Condition::TemperatureNotGood));
    const bool mayBeOn = (live & OffConditions) == 0;
    if (!mayBeOn)
        live |= bit(Condition::InterlockOut);
    state.latch.raiseEvents(live & EventConditions);
    state.latch.raiseErrors(live);
    const quint32 begun = live & ~before;
    enterRaised(place.run->journal, entry(now), moduleItems(), begun & EventConditions, begun);
    const bool wasAllowed = environment.mayBeOn;
    environment.mayBeOn = mayBeOn;
    if (wasAllowed && !mayBeOn) {
        const auto why = static_cast<quint8>(qCountTrailingZeroBits(live & OffConditions));
        dropOut({moduleItems().nameOf(ItemSource::Error, why), entry(now).object}, now);
    }
    contribute();
}

void Module::contribute()
{
    const auto mask = static_cast<quint32>(settingOf(Setting::ModuleEventMask, AllBits));
    RunningCounts counts;
    counts.events = static_cast<qint32>(qPopulationCount(state.latch.events() & mask));
    counts.errors = static_cast<qint32>(state.latch.errorCount());
    counts.failing = counts.errors > 0 ? 1 : 0;
    summary.replace(contributed, counts);
    contributed = counts;
}

ItemValue Module::quantity(ModuleQuantity which, double now) const
{
    switch (which) {
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
    case Quantity::InstallFirmware:
        break; // these can only be written
    case Quantity::EventCounter:
        return ItemValue::of(static_cast<double>(summary.counts().events));
    case Quantity::ErrorCounter:
        return ItemValue::of(static_cast<double>(summary.counts().errors));
    case Quantity::RunningState:
        return ItemValue::of(environment.isPowered ? summary.counts().runningState()
                                                   : QStringLiteral("disabled"));
    case Quantity::Adjustment:
        return ItemValue::of(adjustment);
    case Quantity::Temperature:
        return ItemValue::of(temperature.at(now));
    case Quantity::VoltageRampspeed:
        return ItemValue::of(environment.voltageRampspeed);
    case Quantity::SerialNumber:
        return ItemValue::of(static_cast<double>(layout.serialNumber));
    case Quantity::IsAlive:
        return ItemValue::of(environment.isPowered);
    case Quantity::FirmwareName:
        return ItemValue::of(layout.firmwareName);
    case Quantity::FirmwareRelease:
        return ItemValue::of(layout.firmwareRelease);
    case Quantity::NumberOfChannels:
        return ItemValue::of(static_cast<double>(channels.size()));
    }
    return {};
}

TarnResult Module::clear(ModuleQuantity which, double now)
{
    const bool areEventsClear = which == Quantity::ClearErrors || clearEvents(now);
    const bool areErrorsClear = which == Quantity::ClearEvents || clearErrors(now);
    return areEventsClear && areErrorsClear ? TarnResult::Success : TarnResult::Failed;
}

TarnResult Module::writeQuantity(ModuleQuantity which, const ItemValue &value, double now)
{
    switch (which) {
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
        return value.isTrue() ? clear(which, now) : TarnResult::Success;
    case Quantity::InstallFirmware:
        return value.text.trimmed().isEmpty() ? TarnResult::Failed : TarnResult::Success;
    case Quantity::Adjustment:
        adjustment = value.isTrue();
        return TarnResult::Success;
    case Quantity::VoltageRampspeed:
        environment.voltageRampspeed = value.number;
        for (Channel &channel : channels)
            channel.followModuleRampspeed(now);
        return TarnResult::Success;
    default:
        return TarnResult::Denied; // the others can only be read
    }
}

} // namespace simulator
