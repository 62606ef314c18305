#include "workbench/rehearsal/channel_watch.h"

#include "workbench/rehearsal/quantity_text.h"
#include "workbench/simulator/channel_items.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace rehearsal
{

namespace
{

constexpr int RestingAfter = 3; // looks that found nothing new
constexpr int RestingLooks = 20; // of which one is taken
constexpr int LeastPoints = 200;
constexpr int MostPointsOfAll = 2000000;
constexpr double SameValue = 1e-9; // a difference that is a floating-point number's, and no new peak

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::ChannelWatch", text);
}

bool has(quint32 bits, simulator::ChannelCondition condition)
{
    return ((bits >> static_cast<unsigned>(condition)) & 1U) != 0;
}

QString quantityText(Quantity quantity, double value)
{
    return quantity == Quantity::Voltage ? voltageText(value) : currentText(value);
}

double valueOf(const TracePoint &point, Quantity quantity)
{
    return quantity == Quantity::Voltage ? point.voltage : point.current;
}

void raise(Peak &peak, double value, double time)
{
    if (std::abs(value) > std::abs(peak.value) * (1 + SameValue))
        peak = {value, time};
}

/// How many marks a channel may have for one more of that kind.
std::size_t roomFor(Mark::Kind kind)
{
    switch (kind) {
    case Mark::Command:
    case Mark::Event:
        return ChannelWatch::MostCommandsAndEvents;
    case Mark::Fault:
    case Mark::LimitCrossed:
        return ChannelWatch::MostMarksButErrors;
    case Mark::Error:
        break;
    }
    return ChannelWatch::MostMarks;
}

/// Null when the channel has not crossed that limit.
Crossings *crossingsOf(ChannelRecord &record, int limit)
{
    const auto found = std::find_if(record.crossings.begin(), record.crossings.end(),
                                    [limit](const Crossings &crossings) { return crossings.limit == limit; });
    return found == record.crossings.end() ? nullptr : &*found;
}

} // namespace

ChannelWatch::ChannelWatch(Recording &recording_, QHash<QString, QString> displayTexts_, Look look_,
                           std::function<void(const Finding &)> fail)
    : recording(recording_),
      displayTexts(std::move(displayTexts_)),
      lookAt(std::move(look_)),
      report(std::move(fail))
{ }

int ChannelWatch::touch(const QString &controller, const simulator::ObjectAddress &address)
{
    if (address.level != OrbItemId::Channel)
        return -1;
    const QString name = controller + QLatin1Char('/') + simulator::addressText(address);
    const auto known = indices.constFind(name);
    if (known != indices.constEnd()) {
        states[static_cast<std::size_t>(*known)].restingLooks = 0;
        return *known;
    }
    simulator::ChannelSnapshot snapshot;
    if (!lookAt(controller, address, snapshot))
        return -1;
    const std::size_t index = recording.channels.size();
    const int room = MostPointsOfAll / static_cast<int>(index + 1);
    ChannelRecord record(qBound(LeastPoints, room, MostPoints), snapshot.voltageNominal,
                         snapshot.currentNominal);
    record.controller = controller;
    record.controllerText = displayTexts.value(controller, controller);
    record.address = address;
    for (int i = 0; i < recording.limits.size(); ++i) {
        if (recording.limits.at(i).holdsFor(controller, record.controllerText, address))
            record.limits.append(i);
    }
    record.voltageLimit = snapshot.voltageLimit;
    record.currentLimit = snapshot.currentLimit;
    recording.channels.push_back(std::move(record));
    states.emplace_back();
    states.back().isBeyond.resize(static_cast<std::size_t>(recording.channels.back().limits.size()));
    indices.insert(name, static_cast<int>(index));
    // It is looked at when the journal has told what it did until now.
    return static_cast<int>(index);
}

void ChannelWatch::addWaypoint(const simulator::JournalEntry &entry)
{
    const int known = touch(entry.controller, entry.object);
    if (known < 0)
        return;
    const auto index = static_cast<std::size_t>(known);
    State &state = states[index];
    // The look was before that.
    if (state.isSeen && state.seen.time < entry.time)
        takeIn(index);
    add(index, {entry.time, entry.voltageBefore, entry.currentBefore, state.voltageSet});
    state.voltageSet = std::copysign(entry.voltageSet, entry.voltage);
    const TracePoint point{entry.time, entry.voltage, entry.current, state.voltageSet};
    add(index, point);
    turnRamp(index, entry);
    followRamp(index, point, entry.voltageBefore, entry.isRamping);
    state.hasWaypoint = true;
}

void ChannelWatch::mark(int index, const Mark &mark)
{
    ChannelRecord &record = recording.channels[static_cast<std::size_t>(index)];
    if (record.marks.size() >= roomFor(mark.kind))
        ++record.marksLeftOut;
    else
        record.marks.push_back(mark);
}

void ChannelWatch::trip(int index, double time, const QString &why)
{
    ChannelRecord &record = recording.channels[static_cast<std::size_t>(index)];
    record.tripped = true;
    Finding finding;
    finding.kind = Finding::Trip;
    finding.time = time;
    finding.channel = record.name();
    finding.text = tr("Channel %1 was switched off by %2.").arg(finding.channel, why);
    report(finding);
}

void ChannelWatch::error(int index, double time, const QString &item)
{
    ChannelRecord &record = recording.channels[static_cast<std::size_t>(index)];
    record.reportedError = true;
    QStringList &told = states[static_cast<std::size_t>(index)].errors;
    if (told.contains(item))
        return;
    told.append(item);
    Finding finding;
    finding.kind = Finding::Error;
    finding.time = time;
    finding.channel = record.name();
    finding.text =
        tr("Channel %1 reports \"%2\", and was not switched off by it.").arg(finding.channel, item);
    report(finding);
}

void ChannelWatch::look(bool atAll)
{
    for (std::size_t index = 0; index < states.size(); ++index) {
        State &state = states[index];
        if (!atAll && state.restingLooks >= RestingAfter && ++state.looksLeftOut < RestingLooks)
            continue;
        state.looksLeftOut = 0;
        const ChannelRecord &record = recording.channels[index];
        state.isSeen = lookAt(record.controller, record.address, state.seen);
    }
}

void ChannelWatch::takeIn()
{
    for (std::size_t index = 0; index < states.size(); ++index) {
        if (states[index].isSeen)
            takeIn(index);
    }
}

bool ChannelWatch::isRamping() const
{
    for (const State &state : states) {
        // What has changed its course since the last look may ramp.
        if (state.isRamping || state.hasWaypoint || !state.hasPoint)
            return true;
    }
    return false;
}

void ChannelWatch::takeIn(std::size_t index)
{
    using simulator::ChannelCondition;
    ChannelRecord &record = recording.channels[index];
    State &state = states[index];
    const simulator::ChannelSnapshot &seen = state.seen;
    state.isSeen = false;
    const bool isOn = has(seen.status, ChannelCondition::On);
    const bool isRamping = has(seen.status, ChannelCondition::VoltageRamping);
    // Drawn on the side of the output, whichever way the service counts set values of negative ones.
    state.voltageSet = isOn ? std::copysign(seen.voltageSet, seen.voltage) : 0;
    record.voltageLimit = seen.voltageLimit;
    record.currentLimit = seen.currentLimit;
    record.endState = isRamping ? QStringLiteral("ramping")
        : isOn                  ? QStringLiteral("on")
                                : QStringLiteral("off");
    const TracePoint point{seen.time, seen.voltage, seen.current, state.voltageSet};
    const bool isNew = !state.hasPoint || point.voltage != state.last.voltage
        || point.current != state.last.current || isRamping != state.isRamping || state.hasWaypoint
        || point.voltageSet != state.last.voltageSet;
    state.restingLooks = isNew ? 0 : state.restingLooks + 1;
    // The journal knows better.
    followRamp(index, point, point.voltage, state.hasWaypoint ? state.isRamping : isRamping);
    add(index, point);
    state.hasWaypoint = false;
}

void ChannelWatch::add(std::size_t index, const TracePoint &point)
{
    ChannelRecord &record = recording.channels[index];
    if (!states[index].hasPoint) {
        record.voltage = {point.voltage, point.time};
        record.current = {point.current, point.time};
    }
    raise(record.voltage, point.voltage, point.time);
    raise(record.current, point.current, point.time);
    checkLimits(index, point);
    record.trace.add(point);
    states[index].last = point;
    states[index].hasPoint = true;
}

void ChannelWatch::checkLimits(std::size_t index, const TracePoint &point)
{
    const QVector<int> limits = recording.channels[index].limits;
    State &state = states[index];
    for (int i = 0; i < limits.size(); ++i) {
        const Limit &limit = recording.limits.at(limits.at(i));
        const double value = valueOf(point, limit.quantity);
        const bool wasBeyond = state.isBeyond[static_cast<std::size_t>(i)];
        const bool isBeyond = limit.isCrossedBy(value);
        state.isBeyond[static_cast<std::size_t>(i)] = isBeyond;
        if (!isBeyond)
            continue;
        if (!wasBeyond) {
            // The straight line from the last point tells when, closer than the time from look to look.
            const double before = valueOf(state.last, limit.quantity);
            const double span = point.time - state.last.time;
            double time = point.time;
            if (state.hasPoint && !limit.isCrossedBy(before)) {
                const double rise = std::abs(value) - std::abs(before);
                time -= span * qBound(0.0, (std::abs(value) - limit.value) / rise, 1.0);
            }
            cross(index, limits.at(i), time);
        }
        Crossings &crossings = *crossingsOf(recording.channels[index], limits.at(i));
        if (std::abs(value) > std::abs(crossings.highest))
            crossings.highest = value;
    }
}

void ChannelWatch::cross(std::size_t index, int limit, double time)
{
    ChannelRecord &record = recording.channels[index];
    const QString &text = recording.limits.at(limit).text;
    mark(static_cast<int>(index), {Mark::LimitCrossed, time, -1, tr("limit %1 crossed").arg(text)});
    Crossings *const known = crossingsOf(record, limit);
    if (known != nullptr) {
        ++known->count;
        return;
    }
    record.crossings.push_back({limit, 1, time, 0});
    record.crossed = true;
    Finding finding;
    finding.kind = Finding::LimitCrossed;
    finding.time = time;
    finding.channel = record.name();
    finding.limit = limit;
    finding.text = tr("The %1 of channel %2 crosses the limit \"%3\".")
                       .arg(quantityName(recording.limits.at(limit).quantity), finding.channel, text);
    report(finding);
}

void ChannelWatch::finish()
{
    for (Finding &finding : recording.failures) {
        if (finding.kind != Finding::LimitCrossed)
            continue;
        const Limit &limit = recording.limits.at(finding.limit);
        const auto index = static_cast<std::size_t>(indices.value(finding.channel));
        const Crossings &crossings = *crossingsOf(recording.channels[index], finding.limit);
        const QString highest = quantityText(limit.quantity, crossings.highest);
        const QString often = crossings.count == 1 ? QString() : tr(" %1 times, first").arg(crossings.count);
        finding.text = tr("The %1 of channel %2 crosses the limit \"%3\"%4 at %5, and comes to %6.")
                           .arg(quantityName(limit.quantity), finding.channel, limit.text, often,
                                timeText(crossings.first), highest);
    }
}

void ChannelWatch::followRamp(std::size_t index, const TracePoint &point, double before, bool isRamping)
{
    State &state = states[index];
    ChannelRecord &record = recording.channels[index];
    if (isRamping && !state.isRamping) {
        state.rampTarget = std::abs(point.voltageSet);
        state.isRampListed = record.ramps.size() < MostRamps;
        if (state.isRampListed)
            record.ramps.push_back({point.time, NoTime, point.voltage, point.voltage});
        else
            ++record.rampsLeftOut;
    } else if (isRamping) {
        if (state.isRampListed)
            record.ramps.back().to = point.voltage;
    } else if (state.isRamping) {
        // What ends a ramp may take the voltage down at the same moment.
        endRamp(index, point.time, before);
    }
    state.isRamping = isRamping;
}

void ChannelWatch::turnRamp(std::size_t index, const simulator::JournalEntry &entry)
{
    State &state = states[index];
    const double target = std::abs(entry.voltageSet);
    if (!state.isRamping || !entry.isRamping || target == state.rampTarget)
        return;
    const std::vector<Ramp> &ramps = recording.channels[index].ramps;
    // Switched on and given its voltage at the same moment, it ramps once.
    if (state.isRampListed && ramps.back().begin == entry.time) {
        state.rampTarget = target;
        return;
    }
    endRamp(index, entry.time, entry.voltageBefore);
}

void ChannelWatch::endRamp(std::size_t index, double time, double voltage)
{
    State &state = states[index];
    state.isRamping = false;
    if (!state.isRampListed)
        return;
    Ramp &ramp = recording.channels[index].ramps.back();
    ramp.end = time;
    ramp.to = voltage;
}

} // namespace rehearsal
