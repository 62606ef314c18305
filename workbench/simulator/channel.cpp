#include "workbench/simulator/channel.h"

#include "workbench/simulator/plant_layout.h"

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

// What is remembered as an event when it is the case. The end of a ramp, its beginning and a refused input are moments
// and are raised where they happen.
constexpr quint32 EventConditions = bit(Condition::ConstantVoltage) | bit(Condition::ConstantCurrent)
    | bit(Condition::Emergency) | bit(Condition::VoltageRampDown) | bit(Condition::VoltageRampUp)
    | bit(Condition::VoltageBoundExceeded) | bit(Condition::VoltageBoundLower)
    | bit(Condition::VoltageBoundUpper) | bit(Condition::CurrentBoundExceeded);

constexpr quint32 ErrorConditions =
    bit(Condition::Emergency) | bit(Condition::VoltageBoundExceeded) | bit(Condition::CurrentBoundExceeded);

quint8 key(Setting setting)
{
    return static_cast<quint8>(setting);
}

} // namespace

Channel::Channel(double loadOhm, double nominalCurrent) : load(loadOhm), currentSet(nominalCurrent) { }

ItemValue Channel::read(const ItemDefinition &item, const ChannelEnvironment &environment)
{
    settle(environment);
    if (item.source == ItemSource::Quantity)
        return quantity(static_cast<Quantity>(item.argument), environment);
    return state.read(item, conditions(environment));
}

TarnResult Channel::write(const ItemDefinition &item, const ItemValue &value,
                          const ChannelEnvironment &environment)
{
    if (!environment.isPowered)
        return TarnResult::Failed;
    settle(environment);
    if (item.source == ItemSource::Quantity)
        return writeQuantity(static_cast<Quantity>(item.argument), value, environment);
    return state.store(item, value) ? TarnResult::Success : TarnResult::Denied;
}

void Channel::dropOut(const ChannelEnvironment &environment)
{
    settle(environment);
    on = false;
    rampEndPending = false;
    ramp.jumpTo(0);
}

void Channel::followModuleRampspeed(const ChannelEnvironment &environment)
{
    settle(environment);
    state.settings.remove(key(Setting::VoltageRampspeedUp));
    state.settings.remove(key(Setting::VoltageRampspeedDown));
    if (ramp.isRampingAt(environment.now))
        rampTo(ramp.target(), environment);
}

void Channel::followModuleCurrentRampspeed()
{
    state.settings.remove(key(Setting::CurrentRampspeedUp));
    state.settings.remove(key(Setting::CurrentRampspeedDown));
}

void Channel::clearEvents(const ChannelEnvironment &environment)
{
    settle(environment);
    state.latch.clearEvents(); // what still is the case is raised again by the next look
}

void Channel::clearErrors(const ChannelEnvironment &environment)
{
    settle(environment);
    state.latch.clearErrors();
}

RunningSummary Channel::summary(const ChannelEnvironment &environment)
{
    settle(environment);
    RunningSummary result;
    result.events = state.latch.eventCount();
    result.errors = state.latch.errorCount();
    result.hasError = state.latch.errors() != 0;
    result.isRamping = ramp.isRampingAt(environment.now);
    result.isOn = on;
    result.highestVoltage = voltage(environment.now);
    result.loadFraction = result.highestVoltage / environment.nominalVoltage;
    return result;
}

ChannelSnapshot Channel::snapshot(const ChannelEnvironment &environment)
{
    settle(environment);
    ChannelSnapshot result;
    result.time = environment.now;
    result.voltage = voltage(environment.now);
    result.current = current(environment.now);
    result.voltageSet = voltageSet;
    result.currentSet = currentSet;
    result.voltageLimit = environment.nominalVoltage;
    result.currentLimit = environment.nominalCurrent;
    result.voltageNominal = environment.nominalVoltage;
    result.currentNominal = environment.nominalCurrent;
    result.status = conditions(environment);
    result.events = state.latch.events();
    result.errors = state.latch.errors();
    return result;
}

double Channel::voltage(double now) const
{
    const double ramped = ramp.valueAt(now);
    return load == NoLoad ? ramped : qMin(ramped, currentSet * load);
}

double Channel::current(double now) const
{
    return load == NoLoad ? 0 : voltage(now) / load;
}

bool Channel::isCurrentLimited(double now) const
{
    return load != NoLoad && ramp.valueAt(now) > currentSet * load;
}

double Channel::rampspeed(bool up, const ChannelEnvironment &environment) const
{
    const double nominal = environment.nominalVoltage * Percent; // V in a percent
    const SettingStore &settings = state.settings;
    const double own = settings.value(key(up ? Setting::VoltageRampspeedUp : Setting::VoltageRampspeedDown),
                                      environment.voltageRampspeed * nominal);
    const double slowest = settings.value(key(Setting::VoltageRampspeedMin), SlowestRampspeed * nominal);
    const double fastest = settings.value(key(Setting::VoltageRampspeedMax), FastestRampspeed * nominal);
    return qBound(slowest, own, fastest);
}

quint32 Channel::conditions(const ChannelEnvironment &environment) const
{
    quint32 result = emergency ? bit(Condition::Emergency) : 0;
    const double now = environment.now;
    const double volts = voltage(now);
    const bool ramping = ramp.isRampingAt(now);
    if (ramping)
        result |= bit(Condition::VoltageRamping)
            | bit(ramp.target() > volts ? Condition::VoltageRampUp : Condition::VoltageRampDown);
    if (!on)
        return result;

    result |= bit(Condition::On);
    result |= bit(isCurrentLimited(now) ? Condition::ConstantCurrent : Condition::ConstantVoltage);
    const double voltageBounds = state.settings.value(key(Setting::VoltageBounds), 0);
    if (voltageBounds > 0 && !ramping && std::abs(volts - voltageSet) > voltageBounds)
        result |= bit(Condition::VoltageBoundExceeded)
            | bit(volts < voltageSet ? Condition::VoltageBoundLower : Condition::VoltageBoundUpper);
    const double currentBounds = state.settings.value(key(Setting::CurrentBounds), 0);
    if (currentBounds > 0 && !ramping && std::abs(current(now) - currentSet) > currentBounds)
        result |= bit(Condition::CurrentBoundExceeded);
    return result;
}

ItemValue Channel::quantity(ChannelQuantity which, const ChannelEnvironment &environment)
{
    const double voltageNominal = environment.nominalVoltage;
    const double currentNominal = environment.nominalCurrent;
    const double currentPercent = currentNominal * Percent * MilliamperesPerAmpere;
    const SettingStore &settings = state.settings;
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
        if (!environment.isPowered)
            return ItemValue::of(QStringLiteral("disabled"));
        return ItemValue::of(summary(environment).runningState());
    case Quantity::VoltageSet:
        return ItemValue::of(voltageSet);
    case Quantity::VoltageMeasure:
        return ItemValue::of(voltage(environment.now));
    case Quantity::VoltageLimit:
    case Quantity::VoltageNominal:
        return ItemValue::of(voltageNominal);
    case Quantity::CurrentSet:
        return ItemValue::of(currentSet);
    case Quantity::CurrentMeasure:
        return ItemValue::of(current(environment.now));
    case Quantity::CurrentLimit:
    case Quantity::CurrentNominal:
        return ItemValue::of(currentNominal);
    case Quantity::Emergency:
        return ItemValue::of(emergency);
    case Quantity::On:
        return ItemValue::of(on);
    case Quantity::VoltageModeList:
        return ItemValue::of(QString::number(voltageNominal));
    case Quantity::CurrentModeList:
        return ItemValue::of(QString::number(currentNominal));
    case Quantity::VoltageRampspeedUp:
        return ItemValue::of(rampspeed(true, environment));
    case Quantity::VoltageRampspeedDown:
        return ItemValue::of(rampspeed(false, environment));
    case Quantity::VoltageRampspeedMin:
        return ItemValue::of(
            settings.value(key(Setting::VoltageRampspeedMin), SlowestRampspeed * voltageNominal * Percent));
    case Quantity::VoltageRampspeedMax:
        return ItemValue::of(
            settings.value(key(Setting::VoltageRampspeedMax), FastestRampspeed * voltageNominal * Percent));
    case Quantity::CurrentRampspeedUp:
        return ItemValue::of(
            settings.value(key(Setting::CurrentRampspeedUp), environment.currentRampspeed * currentPercent));
    case Quantity::CurrentRampspeedDown:
        return ItemValue::of(settings.value(key(Setting::CurrentRampspeedDown),
                                            environment.currentRampspeed * currentPercent));
    case Quantity::CurrentRampspeedMin:
        return ItemValue::of(
            settings.value(key(Setting::CurrentRampspeedMin), SlowestRampspeed * currentPercent));
    case Quantity::CurrentRampspeedMax:
        return ItemValue::of(
            settings.value(key(Setting::CurrentRampspeedMax), FastestRampspeed * currentPercent));
    }
    return {};
}

void Channel::settle(const ChannelEnvironment &environment)
{
    if (rampEndPending && !ramp.isRampingAt(environment.now)) {
        rampEndPending = false;
        state.latch.raiseEvents(bit(Condition::EndOfRamp));
    }
    // Between two calls the voltage goes one way only, so whatever was the case in between is so at one of the ends.
    const quint32 live = conditions(environment);
    state.latch.raiseEvents(live & EventConditions);
    state.latch.raiseErrors(live & ErrorConditions);
}

void Channel::rampTo(double target, const ChannelEnvironment &environment)
{
    const double from = voltage(environment.now);
    if (from == target) {
        ramp.jumpTo(target);
        rampEndPending = false;
        return;
    }
    ramp.start(from, target, rampspeed(target > from, environment), environment.now);
    rampEndPending = true;
    settle(environment);
}

TarnResult Channel::writeQuantity(ChannelQuantity which, const ItemValue &value,
                                  const ChannelEnvironment &environment)
{
    switch (which) {
    case Quantity::ClearAll:
    case Quantity::ClearEvents:
    case Quantity::ClearErrors:
        if (value.isTrue() && which != Quantity::ClearErrors)
            clearEvents(environment);
        if (value.isTrue() && which != Quantity::ClearEvents)
            clearErrors(environment);
        return TarnResult::Success;
    case Quantity::VoltageSet:
        if (value.number < 0 || value.number > environment.nominalVoltage)
            return refuseInput();
        voltageSet = value.number;
        if (on && ramp.target() != voltageSet)
            rampTo(voltageSet, environment);
        return TarnResult::Success;
    case Quantity::CurrentSet:
        if (value.number < 0 || value.number > environment.nominalCurrent)
            return refuseInput();
        currentSet = value.number;
        settle(environment);
        return TarnResult::Success;
    case Quantity::Emergency:
        emergency = value.isTrue();
        if (emergency)
            dropOut(environment);
        return TarnResult::Success;
    case Quantity::On:
        return switchOn(value.isTrue(), environment);
    case Quantity::VoltageRampspeedUp:
    case Quantity::VoltageRampspeedDown:
    case Quantity::VoltageRampspeedMin:
    case Quantity::VoltageRampspeedMax:
    case Quantity::CurrentRampspeedUp:
    case Quantity::CurrentRampspeedDown:
    case Quantity::CurrentRampspeedMin:
    case Quantity::CurrentRampspeedMax:
        return writeRampspeed(which, value.number, environment);
    default:
        return TarnResult::Denied; // the others can only be read
    }
}

TarnResult Channel::writeRampspeed(ChannelQuantity which, double speed, const ChannelEnvironment &environment)
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
        const bool tooSlow =
            which == row.atLeast ? speed <= 0 : speed < quantity(row.atLeast, environment).number;
        const bool tooFast = which != row.atMost && speed > quantity(row.atMost, environment).number;
        if (tooSlow || tooFast)
            return refuseInput();
        state.settings.set(key(row.setting), speed);
    }
    if (ramp.isRampingAt(environment.now))
        rampTo(ramp.target(), environment);
    return TarnResult::Success;
}

TarnResult Channel::switchOn(bool turnOn, const ChannelEnvironment &environment)
{
    if (turnOn && emergency)
        return refuseInput();
    if (turnOn == on)
        return TarnResult::Success;
    on = turnOn;
    rampTo(on ? voltageSet : 0, environment);
    return TarnResult::Success;
}

TarnResult Channel::refuseInput()
{
    state.latch.raiseEvents(bit(Condition::InputError));
    return TarnResult::Failed;
}

} // namespace simulator
