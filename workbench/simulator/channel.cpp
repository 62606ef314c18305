#include "workbench/simulator/channel.h"

#include "workbench/simulator/chance.h"

#include <cmath>

namespace simulator
{

namespace
{

using Condition = ChannelCondition;
using Setting = ChannelSetting;
using Quantity = ChannelQuantity;

constexpr double MilliamperesPerAmpere = 1000;
constexpr double Percent = 0.01;
constexpr double SlowestRampspeed = 0.001; // percent of nominal per second
constexpr double FastestRampspeed = 100;
constexpr double OrdinaryFilterSteps = 64; // for which the layout states the noise

quint8 key(Setting setting)
{
    return static_cast<quint8>(setting);
}

} // namespace

ItemValue Channel::read(const ItemDefinition &item, double now) const
{
    if (item.source == ItemSource::Quantity)
        return quantity(static_cast<Quantity>(item.argument), now);
    if (item.source == ItemSource::Setting && item.argument == key(Setting::OutputPolarity))
        return ItemValue::of(
            state.settings.value(item.argument, environment().isNegative ? 1.0 : item.number));
    return state.read(item, conditions());
}

TarnResult Channel::write(const ItemDefinition &item, const ItemValue &value, double now)
{
    if (!environment().isPowered)
        return TarnResult::Failed;
    if (item.source == ItemSource::Quantity)
        return writeQuantity(static_cast<Quantity>(item.argument), value, now);
    if (!state.store(item, value))
        return TarnResult::Denied;
    settle(now);
    return TarnResult::Success;
}

void Channel::followModuleRampspeed(double now)
{
    state.settings.remove(key(Setting::VoltageRampspeedUp));
    state.settings.remove(key(Setting::VoltageRampspeedDown));
    goOnRamping(now);
}

void Channel::followModuleCurrentRampspeed()
{
    state.settings.remove(key(Setting::CurrentRampspeedUp));
    state.settings.remove(key(Setting::CurrentRampspeedDown));
}

bool Channel::clearEvents(double now)
{
    state.latch.clearEvents(); // what still is the case is raised again at once
    settle(now);
    return (state.latch.events() & ErrorConditions) == 0;
}

bool Channel::clearErrors(double now)
{
    state.latch.clearErrors();
    arcs = 0;
    settle(now);
    return state.latch.errors() == 0;
}

ChannelSnapshot Channel::snapshot(double now) const
{
    const ChannelEnvironment &module = environment();
    ChannelSnapshot result;
    result.time = now;
    result.voltage = output.voltage(now);
    result.current = output.current(now);
    result.voltageSet = voltageSet;
    result.currentSet = output.currentSet();
    result.voltageLimit = module.voltageLimit;
    result.currentLimit = module.currentLimit;
    result.voltageNominal = module.rating.voltage;
    result.currentNominal = module.rating.current;
    result.status = conditions();
    result.events = state.latch.events();
    result.errors = state.latch.errors();
    return result;
}

double Channel::rampspeed(bool up) const
{
    const double nominal = environment().rating.voltage * Percent; // V in a percent
    const SettingStore &settings = state.settings;
    const double own = settings.value(key(up ? Setting::VoltageRampspeedUp : Setting::VoltageRampspeedDown),
                                      environment().voltageRampspeed * nominal);
    const double slowest = settings.value(key(Setting::VoltageRampspeedMin), SlowestRampspeed * nominal);
    const double fastest = settings.value(key(Setting::VoltageRampspeedMax), FastestRampspeed * nominal);
    return qBound(slowest, own, fastest);
}

double Channel::measured(double value, ChannelQuantity which, double now) const
{
    const ChannelEnvironment &module = environment();
    if (!module.isPowered)
        return value;
    const bool isVoltage = which == Quantity::VoltageMeasure;
    const MeasurementLayout &layout = module.measurement;
    double result = value + (isVoltage ? layout.voltageOffset : layout.currentOffset);
    const double noise = isVoltage ? layout.voltageNoise : layout.currentNoise;
    if (noise > 0) {
        // The same for everybody who reads the same sample of the converter.
        const auto sample = static_cast<quint64>(std::floor(now * module.sampleRate));
        const quint64 channelKey = chance::mixed(module.chanceKey, host->indexOf(*this));
        const quint64 sampleKey = chance::mixed(channelKey, 2 * sample + (isVoltage ? 0 : 1));
        result += noise * std::sqrt(OrdinaryFilterSteps / module.filterSteps) * chance::normal(sampleKey);
    }
    const double step = isVoltage ? layout.voltageStep : layout.currentStep;
    return step > 0 ? std::round(result / step) * step : result;
}

ItemValue Channel::quantity(ChannelQuantity which, double now) const
{
    const ChannelEnvironment &module = environment();
    switch (which) {
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
        break; // these can only be written
    case Quantity::EventCounter:
        return ItemValue::of(static_cast<double>(state.latch.eventCount()));
    case Quantity::ErrorCounter:
        return ItemValue::of(static_cast<double>(state.latch.errorCount()));
    case Quantity::RunningState:
        return ItemValue::of(module.isPowered ? counts().runningState() : QStringLiteral("disabled"));
    case Quantity::VoltageSet:
        return ItemValue::of(voltageSet);
    case Quantity::VoltageMeasure:
        return ItemValue::of(measured(output.voltage(now), which, now));
    case Quantity::VoltageLimit:
        return ItemValue::of(module.voltageLimit);
    case Quantity::VoltageNominal:
        return ItemValue::of(module.rating.voltage);
    case Quantity::CurrentSet:
        return ItemValue::of(output.currentSet());
    case Quantity::CurrentMeasure:
        return ItemValue::of(measured(output.current(now), which, now));
    case Quantity::CurrentLimit:
        return ItemValue::of(module.currentLimit);
    case Quantity::CurrentNominal:
        return ItemValue::of(module.rating.current);
    case Quantity::Emergency:
        return ItemValue::of(bool(emergency));
    case Quantity::On:
        return ItemValue::of(bool(on));
    case Quantity::VoltageModeList:
        return ItemValue::of(QString::number(module.rating.voltage));
    case Quantity::CurrentModeList:
        return ItemValue::of(QString::number(module.rating.current));
    case Quantity::VoltageRampspeedUp:
        return ItemValue::of(rampspeed(true));
    case Quantity::VoltageRampspeedDown:
        return ItemValue::of(rampspeed(false));
    case Quantity::VoltageRampspeedMin:
    case Quantity::VoltageRampspeedMax:
    case Quantity::CurrentRampspeedUp:
    case Quantity::CurrentRampspeedDown:
    case Quantity::CurrentRampspeedMin:
    case Quantity::CurrentRampspeedMax:
        return ItemValue::of(rampspeedSetting(which));
    }
    return {};
}

double Channel::rampspeedSetting(ChannelQuantity which) const
{
    const ChannelEnvironment &module = environment();
    const double voltagePercent = module.rating.voltage * Percent;
    const double currentPercent = module.rating.current * Percent * MilliamperesPerAmpere;
    const double current = module.currentRampspeed * currentPercent;
    const SettingStore &settings = state.settings;
    switch (which) {
    case Quantity::VoltageRampspeedMin:
        return settings.value(key(Setting::VoltageRampspeedMin), SlowestRampspeed * voltagePercent);
    case Quantity::VoltageRampspeedMax:
        return settings.value(key(Setting::VoltageRampspeedMax), FastestRampspeed * voltagePercent);
    case Quantity::CurrentRampspeedUp:
        return settings.value(key(Setting::CurrentRampspeedUp), current);
    case Quantity::CurrentRampspeedDown:
        return settings.value(key(Setting::CurrentRampspeedDown), current);
    case Quantity::CurrentRampspeedMin:
        return settings.value(key(Setting::CurrentRampspeedMin), SlowestRampspeed * currentPercent);
    default:
        return settings.value(key(Setting::CurrentRampspeedMax), FastestRampspeed * currentPercent);
    }
}

TarnResult Channel::writeQuantity(ChannelQuantity which, const ItemValue &value, double now)
{
    switch (which) {
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
        return value.isTrue() ? clear(which, now) : TarnResult::Success;
    case Quantity::VoltageSet:
        if (value.number < 0 || value.number > environment().voltageLimit)
            return refuseInput(now);
        voltageSet = value.number;
        if (on && output.target() != voltageSet)
            rampTo(voltageSet, now);
        settle(now);
        return TarnResult::Success;
    case Quantity::CurrentSet:
        if (value.number < 0 || value.number > environment().currentLimit)
            return refuseInput(now);
        setCurrent(value.number, now);
        return TarnResult::Success;
    case Quantity::Emergency:
        emergency = value.isTrue();
        if (emergency)
            cutOff(now);
        settle(now);
        return TarnResult::Success;
    case Quantity::On:
        return switchOn(value.isTrue(), now);
    case Quantity::VoltageRampspeedUp:
    case Quantity::VoltageRampspeedDown:
    case Quantity::VoltageRampspeedMin:
    case Quantity::VoltageRampspeedMax:
    case Quantity::CurrentRampspeedUp:
    case Quantity::CurrentRampspeedDown:
    case Quantity::CurrentRampspeedMin:
    case Quantity::CurrentRampspeedMax:
        return writeRampspeed(which, value.number, now);
    default:
        return TarnResult::Denied; // the others can only be read
    }
}

TarnResult Channel::clear(ChannelQuantity which, double now)
{
    const bool areEventsClear = which == Quantity::ClearErrors || clearEvents(now);
    const bool areErrorsClear = which == Quantity::ClearEvents || clearErrors(now);
    // No input error: that would be one more event to clear.
    return areEventsClear && areErrorsClear ? TarnResult::Success : TarnResult::Failed;
}

TarnResult Channel::writeRampspeed(ChannelQuantity which, double speed, double now)
{
    struct Row
    {
        Quantity quantity;
        Setting setting;
        Quantity atLeast;
        Quantity atMost;
    };
    static constexpr Row Rows[] = {
        {Quantity::VoltageRampspeedUp, Setting::VoltageRampspeedUp, Quantity::VoltageRampspeedMin,
         Quantity::VoltageRampspeedMax},
        {Quantity::VoltageRampspeedDown, Setting::VoltageRampspeedDown, Quantity::VoltageRampspeedMin,
         Quantity::VoltageRampspeedMax},
        {Quantity::VoltageRampspeedMin, Setting::VoltageRampspeedMin, Quantity::VoltageRampspeedMin,
         Quantity::VoltageRampspeedMax},
        {Quantity::VoltageRampspeedMax, Setting::VoltageRampspeedMax, Quantity::VoltageRampspeedMin,
         Quantity::VoltageRampspeedMax},
        {Quantity::CurrentRampspeedUp, Setting::CurrentRampspeedUp, Quantity::CurrentRampspeedMin,
         Quantity::CurrentRampspeedMax},
        {Quantity::CurrentRampspeedDown, Setting::CurrentRampspeedDown, Quantity::CurrentRampspeedMin,
         Quantity::CurrentRampspeedMax},
        {Quantity::CurrentRampspeedMin, Setting::CurrentRampspeedMin, Quantity::CurrentRampspeedMin,
         Quantity::CurrentRampspeedMax},
        {Quantity::CurrentRampspeedMax, Setting::CurrentRampspeedMax, Quantity::CurrentRampspeedMin,
         Quantity::CurrentRampspeedMax},
    };
    for (const Row &row : Rows) {
        if (row.quantity != which)
            continue;
        // A minimum may go down to any speed above 0, a maximum up to any speed.
        const bool tooSlow = which == row.atLeast ? speed <= 0 : speed < quantity(row.atLeast, now).number;
        const bool tooFast = which != row.atMost && speed > quantity(row.atMost, now).number;
        if (tooSlow || tooFast)
            return refuseInput(now);
        state.settings.set(key(row.setting), speed);
    }
    goOnRamping(now);
    return TarnResult::Success;
}

TarnResult Channel::switchOn(bool turnOn, double now)
{
    if (turnOn && !mayBeSwitchedOn())
        return refuseInput(now);
    if (turnOn == bool(on))
        return TarnResult::Success;
    if (turnOn) {
        on = true;
        rampTo(voltageSet, now);
    } else {
        switchOff(now);
    }
    settle(now);
    return TarnResult::Success;
}

TarnResult Channel::refuseInput(double now)
{
    raise(bit(Condition::InputError), 0, now);
    settle(now);
    return TarnResult::Failed;
}

} // namespace simulator
