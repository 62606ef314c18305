// What happens to a channel by itself: the turns of its output, its protection, and what is made known of it.

#include "workbench/simulator/channel.h"

#include "workbench/simulator/chance.h"
#include "workbench/simulator/raised_conditions.h"

#include <cmath>

namespace simulator
{

namespace
{

using Condition = ChannelCondition;
using Setting = ChannelSetting;
using Regulation = Output::Regulation;

// In parts of the nominal values, so that what sits at a level does not cross it over and over.
constexpr double WatchTolerance = 1e-7;
constexpr double DefaultTripTime = 100; // ms
constexpr double Milli = 0.001;

constexpr quint32 LimitConditions =
    bit(Condition::VoltageLimitExceeded) | bit(Condition::CurrentLimitExceeded);

// What is remembered as an event when it is the case. The end of a ramp and a refused input are moments and are raised
// where they happen.
constexpr quint32 EventConditions = LimitConditions | bit(Condition::CurrentTrip)
    | bit(Condition::ExternalInhibit) | bit(Condition::VoltageBoundExceeded)
    | bit(Condition::CurrentBoundExceeded) | bit(Condition::ConstantVoltage) | bit(Condition::ConstantCurrent)
    | bit(Condition::Emergency) | bit(Condition::Arc) | bit(Condition::VoltageBoundLower)
    | bit(Condition::VoltageBoundUpper) | bit(Condition::VoltageRampDown) | bit(Condition::VoltageRampUp);

/// What a trip or an inhibit leads to.
enum ProtectiveAction
{
    NoAction = 0,
    RampsDown = 1,
    CutsOff = 2,
    ShutsModuleDown = 3,
    TripDisabled = 4 // of a trip alone
};

quint8 key(Setting setting)
{
    return static_cast<quint8>(setting);
}

} // namespace

Channel::Channel(const LoadLayout &load, ChannelHost &channelHost)
    : host(&channelHost),
      output(load, channelHost.channelEnvironment().rating, channelHost.channelEnvironment().currentLimit),
      countedRamping(false),
      countedOn(false),
      on(false),
      emergency(false),
      rampEndPending(false),
      limited(false),
      tripped(false),
      inhibited(false),
      arcing(false)
{ }

void Channel::dropOut(const SwitchOffCause &cause, double now)
{
    enterSwitchedOff(cause, now);
    cutOff(now);
    settle(now);
}

void Channel::followEnvironment(double now)
{
    settle(now);
}

void Channel::applyFault(const Fault &fault, bool begins, double now)
{
    switch (fault.kind) {
    case FaultKind::Spark:
        if (begins) {
            sparksLeft = static_cast<quint16>(qBound(1.0, std::round(fault.amount), 65535.0));
            spark(now);
        } else if (sparksLeft > 0) {
            sparksLeft = 0;
            drawSpark(now);
        }
        break;
    case FaultKind::Short:
        turn(now, [&] { output.setShorted(begins, now); });
        break;
    case FaultKind::OpenLoad:
        turn(now, [&] { output.setLoadOff(begins, now); });
        break;
    case FaultKind::Leak:
        turn(now, [&] { output.setLeak(begins ? fault.amount : 0, now); });
        break;
    case FaultKind::ExternalInhibit:
        inhibited = begins;
        break;
    default:
        return; // not of a channel
    }
    settle(now);
}

void Channel::happen(double time)
{
    const Due kind = dueKind;
    dueKind = Due::Nothing;
    switch (kind) {
    case Due::Nothing:
        break;
    case Due::OutputTurns:
        turn(time, [&] { output.take(static_cast<Output::Turn>(dueDetail), time); });
        break;
    case Due::Trip:
        trip(time);
        break;
    case Due::ArcEnds:
        arcing = false;
        turn(time, [&] { output.setBrokenDown(false, time); });
        break;
    case Due::Spark:
        spark(time);
        break;
    case Due::WatchCrossed:
        crossed ^= quint8(1U << dueDetail);
        followWatch(static_cast<Watch>(dueDetail), time);
        break;
    }
    settle(time);
}

template <class Change>
void Channel::turn(double now, Change change)
{
    const double voltageBefore = output.voltage(now);
    const double currentBefore = output.current(now);
    const quint8 course = output.courseNumber();
    const bool wasRamping = output.isRamping();
    const double target = output.target();
    change();
    // Further on in the same straight line is another target all the same.
    if (course == output.courseNumber() && wasRamping == output.isRamping() && target == output.target())
        return;
    JournalEntry entry = host->entryFor(*this, now);
    entry.kind = JournalEntry::Waypoint;
    entry.voltageBefore = voltageBefore;
    entry.currentBefore = currentBefore;
    entry.voltage = output.voltage(now);
    entry.current = output.current(now);
    entry.voltageSet = on ? voltageSet : 0;
    entry.isRamping = output.isRamping();
    const OutputRating &rating = environment().rating;
    const auto share = static_cast<float>(entry.voltage * entry.current / (rating.voltage * rating.current));
    host->plantRun().journal.add(std::move(entry));
    if (share == powerShare)
        return;
    powerShare = share;
    host->heatChanged(now);
}

void Channel::settle(double now)
{
    protect(now);
    contribute();
    plan(now);
}

void Channel::protect(double now)
{
    for (;;) {
        const bool isLimited = on && output.regulation() == Regulation::Current;
        if (isLimited != limited) {
            limited = isLimited;
            limitedSince = now;
            tripped = false;
        }
        const bool isThere = !output.isRamping() && output.regulation() == Regulation::Voltage;
        if (isThere && rampEndPending) {
            rampEndPending = false;
            raise(bit(Condition::EndOfRamp), 0, now);
        }
        if (isThere && !on)
            turn(now, [&] { output.cutOff(now); });
        updateWatches(now);
        const quint32 live = conditions();
        raiseLive(live, now);
        if (!on)
            return;
        if ((live & LimitConditions) != 0 && environment().kill) {
            const bool isVoltage = (live & bit(Condition::VoltageLimitExceeded)) != 0;
            takeDown(CutsOff, isVoltage ? Condition::VoltageLimitExceeded : Condition::CurrentLimitExceeded,
                     now);
            continue;
        }
        const int action = inhibited ? setting(Setting::ExternalInhibitAction, NoAction) : NoAction;
        if (action == NoAction)
            return;
        takeDown(action, Condition::ExternalInhibit, now);
    }
}

void Channel::raise(quint32 events, quint32 errors, double now)
{
    state.latch.raiseEvents(events);
    state.latch.raiseErrors(errors);
    entered |= events | errors;
    enterRaised(host->plantRun().journal, host->entryFor(*this, now), channelItems(), events, errors);
}

void Channel::raiseLive(quint32 live, double now)
{
    const quint32 begun = live & ~entered;
    entered = live;
    state.latch.raiseEvents(live & EventConditions);
    state.latch.raiseErrors(live & ErrorConditions);
    if ((begun & (EventConditions | ErrorConditions)) != 0)
        enterRaised(host->plantRun().journal, host->entryFor(*this, now), channelItems(),
                    begun & EventConditions, begun & ErrorConditions);
}

RunningCounts Channel::counts() const
{
    RunningCounts result;
    result.events = static_cast<qint32>(state.latch.eventCount());
    result.errors = static_cast<qint32>(state.latch.errorCount());
    result.failing = result.errors > 0 ? 1 : 0;
    result.ramping = output.isRamping() ? 1 : 0;
    result.on = on ? 1 : 0;
    return result;
}

void Channel::contribute()
{
    const RunningCounts before{countedEvents, countedErrors, countedErrors > 0 ? 1 : 0,
                               countedRamping ? 1 : 0, countedOn ? 1 : 0};
    RunningCounts after = counts();
    const auto own = static_cast<quint32>(
        state.settings.value(key(Setting::ChannelEventMask), static_cast<double>(~quint32(0))));
    after.events =
        static_cast<qint32>(qPopulationCount(state.latch.events() & own & environment().eventMask));
    countedEvents = static_cast<quint8>(after.events);
    countedErrors = static_cast<quint8>(after.errors);
    countedRamping = after.ramping > 0;
    countedOn = after.on > 0;
    host->summaryOfChannels().replace(before, after);
}

quint32 Channel::conditions() const
{
    quint32 result = 0;
    const auto add = [&result](bool holds, Condition condition) { result |= holds ? bit(condition) : 0; };
    const auto isCrossed = [this](Watch watch) { return (crossed & (1U << watch)) != 0; };
    add(emergency, Condition::Emergency);
    add(inhibited, Condition::ExternalInhibit);
    add(arcing, Condition::Arc);
    add(tripped, Condition::CurrentTrip);
    add(isCrossed(VoltageLimit), Condition::VoltageLimitExceeded);
    add(isCrossed(CurrentLimit), Condition::CurrentLimitExceeded);
    if (output.isRamping()) {
        const bool isUp = output.isRampingUp();
        result |= bit(Condition::VoltageRamping)
            | bit(isUp ? Condition::VoltageRampUp : Condition::VoltageRampDown);
    }
    if (!on)
        return result;
    result |= bit(Condition::On);
    result |= bit(output.regulation() == Regulation::Current ? Condition::ConstantCurrent
                                                             : Condition::ConstantVoltage);
    add(isCrossed(LowerVoltageBound), Condition::VoltageBoundLower);
    add(isCrossed(UpperVoltageBound), Condition::VoltageBoundUpper);
    add(isCrossed(LowerVoltageBound) || isCrossed(UpperVoltageBound), Condition::VoltageBoundExceeded);
    add(isCrossed(LowerCurrentBound) || isCrossed(UpperCurrentBound), Condition::CurrentBoundExceeded);
    return result;
}

void Channel::plan(double now)
{
    const Output::NextTurn next = output.nextTurn(now);
    double time = next.time;
    dueKind = time == Never ? Due::Nothing : Due::OutputTurns;
    dueDetail = static_cast<quint8>(next.turn);
    const auto consider = [&](double at, Due kind, quint8 detail) {
        if (!(at < time))
            return;
        time = at;
        dueKind = kind;
        dueDetail = detail;
    };
    if (limited && !tripped && setting(Setting::DelayedTripAction, NoAction) != TripDisabled)
        consider(limitedSince + tripTime(), Due::Trip, 0);
    if (arcing)
        consider(arcEnd, Due::ArcEnds, 0);
    consider(nextSpark, Due::Spark, 0);
    for (quint8 watch = 0; watch < WatchCount; ++watch)
        consider(timeOfWatch(static_cast<Watch>(watch), now), Due::WatchCrossed, watch);
    host->plantRun().queue.setDue(*this, time);
}

Channel::WatchLevel Channel::watchLevel(Watch watch) const
{
    const ChannelEnvironment &module = environment();
    const bool isSettled = on && !output.isRamping();
    switch (watch) {
    case VoltageLimit:
        return {module.isPowered, module.voltageLimit - module.measurement.voltageOffset};
    case CurrentLimit:
        return {module.isPowered, module.currentLimit - module.measurement.currentOffset};
    case UpperVoltageBound:
    case LowerVoltageBound: {
        const double bounds = isSettled ? state.settings.value(key(Setting::VoltageBounds), 0) : 0;
        const double level = voltageSet + (watch == UpperVoltageBound ? bounds : -bounds);
        return {bounds > 0, level - module.measurement.voltageOffset};
    }
    case UpperCurrentBound:
    case LowerCurrentBound: {
        const double bounds = isSettled ? state.settings.value(key(Setting::CurrentBounds), 0) : 0;
        const double level = output.currentSet() + (watch == UpperCurrentBound ? bounds : -bounds);
        return {bounds > 0, level - module.measurement.currentOffset};
    }
    case SparkingVoltage:
        return {output.sparkInterval() > 0, module.voltageLimit / 2};
    case WatchCount:
        break;
    }
    return {false, 0};
}

double Channel::timeOfWatch(Watch watch, double now) const
{
    const WatchLevel at = watchLevel(watch);
    if (!at.applies)
        return Never;
    const bool isCurrent = watch == CurrentLimit || watch == UpperCurrentBound || watch == LowerCurrentBound;
    const bool isLower = watch == LowerVoltageBound || watch == LowerCurrentBound;
    const OutputRating &rating = environment().rating;
    const double tolerance = WatchTolerance * (isCurrent ? rating.current : rating.voltage);
    const bool isBeyond = (crossed & (1U << watch)) != 0;
    // Out of the level a little later than at it, back at it.
    const double level = at.level + (isBeyond ? 0 : isLower ? -2 * tolerance : 2 * tolerance);
    const OutputCourse &course = output.presentCourse();
    if (isBeyond == isLower)
        return isCurrent ? course.timeOfCurrentRise(level, now) : course.timeOfRise(level, 0, now);
    return isCurrent ? course.timeOfCurrentFall(level, now) : course.timeOfFall(level, 0, now);
}

void Channel::updateWatches(double now)
{
    const OutputRating &rating = environment().rating;
    const double volts = output.voltage(now);
    const double amperes = output.current(now);
    for (quint8 index = 0; index < WatchCount; ++index) {
        const auto watch = static_cast<Watch>(index);
        const bool isCurrent =
            watch == CurrentLimit || watch == UpperCurrentBound || watch == LowerCurrentBound;
        const bool isLower = watch == LowerVoltageBound || watch == LowerCurrentBound;
        const WatchLevel at = watchLevel(watch);
        const bool was = (crossed & (1U << index)) != 0;
        const double beyond = (isLower ? -1 : 1) * ((isCurrent ? amperes : volts) - at.level);
        const double tolerance = WatchTolerance * (isCurrent ? rating.current : rating.voltage);
        const bool is = at.applies && beyond > (was ? -tolerance : tolerance);
        if (is == was)
            continue;
        crossed ^= quint8(1U << index);
        followWatch(watch, now);
    }
}

void Channel::followWatch(Watch watch, double now)
{
    if (watch == SparkingVoltage && sparksLeft == 0)
        drawSpark(now);
}

void Channel::drawSpark(double now)
{
    if ((crossed & (1U << SparkingVoltage)) == 0) {
        nextSpark = Never;
        return;
    }
    const quint64 channelKey = chance::mixed(environment().chanceKey, host->indexOf(*this));
    nextSpark = now + output.sparkInterval() * chance::exponential(chance::mixed(channelKey + 1, ++draws));
}

double Channel::tripTime() const
{
    return Milli * state.settings.value(key(Setting::DelayedTripTime), DefaultTripTime);
}

int Channel::setting(ChannelSetting which, int fallback) const
{
    return static_cast<int>(state.settings.value(key(which), fallback));
}

void Channel::trip(double now)
{
    tripped = true;
    raise(bit(Condition::CurrentTrip), bit(Condition::CurrentTrip), now);
    int action = setting(Setting::DelayedTripAction, NoAction);
    if (environment().kill && action < CutsOff)
        action = CutsOff;
    if (action != NoAction)
        takeDown(action, Condition::CurrentTrip, now);
}

void Channel::takeDown(int action, ChannelCondition condition, double now)
{
    const SwitchOffCause cause{channelItems().nameOf(ItemSource::Error, static_cast<quint8>(condition)),
                               host->entryFor(*this, now).object};
    if (action == ShutsModuleDown) {
        host->shutDown(cause, now);
        return;
    }
    enterSwitchedOff(cause, now);
    if (action == RampsDown)
        switchOff(now);
    else
        cutOff(now);
}

void Channel::enterSwitchedOff(const SwitchOffCause &cause, double now)
{
    if (!on && !output.isRamping())
        return; // it was off
    JournalEntry entry = host->entryFor(*this, now);
    entry.kind = JournalEntry::SwitchedOff;
    entry.item = cause.item;
    if (cause.object != entry.object)
        entry.text = placeName(cause.object);
    host->plantRun().journal.add(std::move(entry));
}

void Channel::spark(double now)
{
    if (sparksLeft > 0)
        --sparksLeft;
    nextSpark = sparksLeft > 0 ? now + SparkSpacing : Never;
    if (output.voltage(now) <= 0)
        return;
    arcing = true;
    arcEnd = now + ArcDuration;
    ++arcs;
    turn(now, [&] { output.setBrokenDown(true, now); });
    raise(bit(Condition::Arc), 0, now);
    if (arcs < MostArcs)
        return;
    arcs = MostArcs;
    raise(bit(Condition::ArcError), bit(Condition::Arc), now);
    takeDown(CutsOff, Condition::Arc, now);
}

void Channel::rampTo(double target, double now)
{
    const double from = output.voltage(now);
    turn(now, [&] { output.rampTo(target, rampspeed(target > from), now); });
    rampEndPending = output.isReferenceMoving();
}

void Channel::goOnRamping(double now)
{
    if (output.isReferenceMoving())
        rampTo(output.target(), now);
    settle(now);
}

void Channel::setCurrent(double amperes, double now)
{
    turn(now, [&] { output.setCurrentSet(amperes, now); });
    settle(now);
}

void Channel::cutOff(double now)
{
    on = false;
    rampEndPending = false;
    turn(now, [&] { output.cutOff(now); });
}

void Channel::switchOff(double now)
{
    on = false;
    rampTo(0, now);
}

bool Channel::mayBeSwitchedOn() const
{
    return !emergency && environment().mayBeOn
        && !(inhibited && setting(Setting::ExternalInhibitAction, NoAction) != NoAction);
}

} // namespace simulator
