#include "workbench/simulator/module.h"

namespace simulator
{

namespace
{

using Quantity = ModuleQuantity;
using Setting = ModuleSetting;

} // namespace

Module::Module(const ModuleLayout &moduleLayout) : layout(moduleLayout)
{
    channels.reserve(layout.loads.size());
    for (const LoadLayout &load : layout.loads)
        channels.emplace_back(load.resistance, layout.nominalCurrent);
}

ItemValue Module::read(const ItemDefinition &item, bool isPowered, double now)
{
    if (item.source == ItemSource::Quantity)
        return quantity(static_cast<Quantity>(item.argument), isPowered, now);
    return state.read(item, 0); // nothing is ever the matter with a module
}

TarnResult Module::write(const ItemDefinition &item, const ItemValue &value, bool isPowered, double now)
{
    if (!isPowered)
        return TarnResult::Failed;
    if (item.source == ItemSource::Quantity)
        return writeQuantity(static_cast<Quantity>(item.argument), value, now);
    if (!state.store(item, value))
        return TarnResult::Denied;
    if (static_cast<Setting>(item.argument) == Setting::CurrentRampspeed) {
        for (Channel &channel : channels)
            channel.followModuleCurrentRampspeed();
    }
    return TarnResult::Success;
}

ItemValue Module::readChannel(std::size_t channel, const ItemDefinition &item, bool isPowered, double now)
{
    return channels[channel].read(item, environment(isPowered, now));
}

TarnResult Module::writeChannel(std::size_t channel, const ItemDefinition &item, const ItemValue &value,
                                bool isPowered, double now)
{
    return channels[channel].write(item, value, environment(isPowered, now));
}

ChannelSnapshot Module::channelSnapshot(std::size_t channel, bool isPowered, double now)
{
    return channels[channel].snapshot(environment(isPowered, now));
}

void Module::dropOut(double now)
{
    for (Channel &channel : channels)
        channel.dropOut(environment(true, now));
}

void Module::clearEvents(bool isPowered, double now)
{
    state.latch.clearEvents();
    for (Channel &channel : channels)
        channel.clearEvents(environment(isPowered, now));
}

void Module::clearErrors(bool isPowered, double now)
{
    state.latch.clearErrors();
    for (Channel &channel : channels)
        channel.clearErrors(environment(isPowered, now));
}

RunningSummary Module::summary(bool isPowered, double now)
{
    RunningSummary result;
    result.events = state.latch.eventCount();
    result.errors = state.latch.errorCount();
    result.hasError = state.latch.errors() != 0;
    for (Channel &channel : channels)
        result += channel.summary(environment(isPowered, now));
    return result;
}

ChannelEnvironment Module::environment(bool isPowered, double now) const
{
    const double currentRampspeed =
        state.settings.value(static_cast<quint8>(Setting::CurrentRampspeed), DefaultCurrentRampspeed);
    return {layout.nominalVoltage, layout.nominalCurrent, voltageRampspeed, currentRampspeed, isPowered, now};
}

ItemValue Module::quantity(ModuleQuantity which, bool isPowered, double now)
{
    switch (which) {
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
    case Quantity::InstallFirmware:
        break; // these can only be written
    case Quantity::EventCounter:
        return ItemValue::of(static_cast<double>(summary(isPowered, now).events));
    case Quantity::ErrorCounter:
        return ItemValue::of(static_cast<double>(summary(isPowered, now).errors));
    case Quantity::RunningState:
        return ItemValue::of(isPowered ? summary(isPowered, now).runningState() : QStringLiteral("disabled"));
    case Quantity::Adjustment:
        return ItemValue::of(adjustment);
    case Quantity::Temperature: {
        // Room, standby losses, and up to 12 degrees more with all channels at their nominal voltage.
        const double load =
            summary(isPowered, now).loadFraction / qMax(1.0, static_cast<double>(channels.size()));
        return ItemValue::of(isPowered ? 28.5 + 0.5 * (layout.address % 10) + 12 * load : 23.0);
    }
    case Quantity::VoltageRampspeed:
        return ItemValue::of(voltageRampspeed);
    case Quantity::SerialNumber:
        return ItemValue::of(static_cast<double>(layout.serialNumber));
    case Quantity::IsAlive:
        return ItemValue::of(isPowered);
    case Quantity::FirmwareName:
        return ItemValue::of(layout.firmwareName);
    case Quantity::FirmwareRelease:
        return ItemValue::of(layout.firmwareRelease);
    case Quantity::NumberOfChannels:
        return ItemValue::of(static_cast<double>(channels.size()));
    }
    return {};
}

TarnResult Module::writeQuantity(ModuleQuantity which, const ItemValue &value, double now)
{
    switch (which) {
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
        if (value.isTrue() && which != Quantity::ClearErrors)
            clearEvents(true, now);
        if (value.isTrue() && which != Quantity::ClearEvents)
            clearErrors(true, now);
        return TarnResult::Success;
    case Quantity::InstallFirmware:
        return value.text.trimmed().isEmpty() ? TarnResult::Failed : TarnResult::Success;
    case Quantity::Adjustment:
        adjustment = value.isTrue();
        return TarnResult::Success;
    case Quantity::VoltageRampspeed:
        voltageRampspeed = value.number;
        for (Channel &channel : channels)
            channel.followModuleRampspeed(environment(true, now));
        return TarnResult::Success;
    default:
        return TarnResult::Denied; // the others can only be read
    }
}

} // namespace simulator
