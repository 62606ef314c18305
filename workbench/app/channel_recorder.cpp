#include "workbench/app/channel_recorder.h"

#include "workbench/app/fault_switch.h"
#include "workbench/app/fault_text.h"
#include "workbench/app/plant_watcher.h"
#include "workbench/app/translated_text.h"
#include "workbench/simulator/item_text.h"
#include "workbench/simulator/simulated_service.h"

#include <algorithm>
#include <iterator>

namespace workbench
{

namespace
{

struct MarkRow
{
    const char *item; ///< without "Event." or "Error."
    ChannelMark::Kind kind;
    const char *text;
};

constexpr MarkRow MarkRows[] = {
    {"currentTrip", ChannelMark::Warning, QT_TRANSLATE_NOOP("workbench", "trip")},
    {"emergency", ChannelMark::Trip, QT_TRANSLATE_NOOP("workbench", "emergency off")},
    {"externalInhibitActive", ChannelMark::Warning, QT_TRANSLATE_NOOP("workbench", "inhibit")},
    {"voltageLimitExceeded", ChannelMark::Warning, QT_TRANSLATE_NOOP("workbench", "voltage limit")},
    {"currentLimitExceeded", ChannelMark::Warning, QT_TRANSLATE_NOOP("workbench", "current limit")},
    {"voltageBoundExceeded", ChannelMark::Warning, QT_TRANSLATE_NOOP("workbench", "voltage bounds")},
    {"currentBoundExceeded", ChannelMark::Warning, QT_TRANSLATE_NOOP("workbench", "current bounds")},
    {"arc", ChannelMark::Warning, QT_TRANSLATE_NOOP("workbench", "arc")},
    {"arcError", ChannelMark::Warning, QT_TRANSLATE_NOOP("workbench", "too many arcs")},
    {"constantCurrent", ChannelMark::Warning, QT_TRANSLATE_NOOP("workbench", "constant current")},
    {"endOfRamp", ChannelMark::Information, QT_TRANSLATE_NOOP("workbench", "end of ramp")},
    {"inputError", ChannelMark::Information, QT_TRANSLATE_NOOP("workbench", "input error")},
};

const MarkRow *rowOf(const QString &item)
{
    // The error is that there were too many of them, which is an event of its own.
    if (item == QLatin1String("Error.arc"))
        return rowOf(QStringLiteral("Event.arcError"));
    const QStringRef name = item.midRef(item.indexOf(QLatin1Char('.')) + 1);
    const auto *row = std::find_if(std::begin(MarkRows), std::end(MarkRows),
                                   [&name](const MarkRow &each) { return name == QLatin1String(each.item); });
    return row == std::end(MarkRows) ? nullptr : row;
}

/// Why a channel is off that nobody switched off by itself.
ChannelMark switchOffMark(const simulator::JournalEntry &entry)
{
    ChannelMark mark;
    if (entry.item.startsWith(QLatin1String("Control."))) {
        mark.text = tr("switched off with the %1").arg(entry.text);
        return mark;
    }
    const MarkRow *const row = rowOf(entry.item);
    const QString why = row ? tr(row->text) : simulator::itemWords(entry.item);
    mark.kind = ChannelMark::Trip;
    mark.text = entry.text.isEmpty() ? tr("switched off: %1").arg(why)
                                     : tr("switched off: %1, %2").arg(entry.text, why);
    return mark;
}

/// Whether what happened to the one object happened to the channel too.
bool concerns(const simulator::JournalEntry &entry, const ChannelRecord &record)
{
    const simulator::ObjectAddress &object = entry.object;
    const simulator::ObjectAddress &channel = record.address();
    if (entry.controller != record.controller())
        return false;
    if (entry.kind == simulator::JournalEntry::ControllerLeft
        || entry.kind == simulator::JournalEntry::ControllerCame)
        return true;
    switch (object.level) {
    case OrbItemId::Crate:
        return object == record.crate();
    case OrbItemId::Channel:
        return object == channel;
    case OrbItemId::Module:
        return object.line == channel.line && object.address == channel.address;
    default:
        return false;
    }
}

/// Whether the record says so already: an error comes with its event, and others of the same moment between them.
bool isSaid(const ChannelRecord &record, const ChannelMark &mark)
{
    const auto &marks = record.marks();
    for (auto each = marks.rbegin(); each != marks.rend() && each->time == mark.time; ++each) {
        if (each->text == mark.text)
            return true;
    }
    return false;
}

} // namespace

bool markOf(const simulator::JournalEntry &entry, ChannelMark &mark)
{
    using simulator::JournalEntry;
    mark.time = entry.time;
    if (entry.kind == JournalEntry::FaultBegins || entry.kind == JournalEntry::FaultEnds) {
        // What is over by itself need not be said to be.
        simulator::FaultKind kind{};
        if (entry.kind == JournalEntry::FaultEnds && simulator::faultOfName(entry.text, kind)
            && !FaultSwitch::lasts(kind))
            return false;
        const QString name =
            simulator::faultOfName(entry.text, kind) ? faultText(kind).toLower() : entry.text;
        mark.kind = ChannelMark::Simulated;
        mark.text = entry.kind == JournalEntry::FaultBegins ? tr("simulated: %1").arg(name)
                                                            : tr("over: %1").arg(name);
        return true;
    }
    switch (entry.kind) {
    case JournalEntry::SwitchedOff:
        mark = switchOffMark(entry);
        mark.time = entry.time;
        return true;
    case JournalEntry::ControllerLeft:
    case JournalEntry::ControllerCame:
        mark.kind = ChannelMark::Warning;
        mark.text =
            entry.kind == JournalEntry::ControllerLeft ? tr("controller left") : tr("controller back");
        return true;
    case JournalEntry::Event:
    case JournalEntry::Error:
        if (const MarkRow *const row = rowOf(entry.item)) {
            mark.kind = row->kind;
            mark.text = tr(row->text);
            return true;
        }
        return false;
    default:
        return false;
    }
}

ChannelRecorder::ChannelRecorder(PlantWatcher &watcher_, QObject *parent) : QObject(parent), watcher(watcher_)
{
    connect(&watcher, &PlantWatcher::happened, this, &ChannelRecorder::take);
    connect(&watcher, &PlantWatcher::polled, this, &ChannelRecorder::sampleAll);
}

bool ChannelRecorder::add(const QString &controller, const simulator::ObjectAddress &channel)
{
    const QString name = watcher.service().controllerOf(controller);
    if (find(name, channel))
        return true;
    simulator::ChannelSnapshot snapshot;
    if (count() >= MostChannels || !watcher.service().channelSnapshot(name, channel, snapshot))
        return false;
    // What has happened so far is no part of the new record.
    watcher.poll();
    int look = 0;
    const auto isTaken = [this](int number) {
        return std::any_of(records.begin(), records.end(),
                           [number](const auto &record) { return record->look() == number; });
    };
    while (isTaken(look))
        ++look;
    records.push_back(std::make_unique<ChannelRecord>(name, channel, look));
    records.back()->setCrate(crateOf(controller, channel));
    watcher.setNeeded(this, true);
    Q_EMIT channelAdded(count() - 1);
    sample(*records.back());
    Q_EMIT recorded();
    return true;
}

void ChannelRecorder::remove(int index)
{
    records.erase(records.begin() + index);
    watcher.setNeeded(this, !records.empty());
    Q_EMIT channelRemoved(index);
    Q_EMIT recorded();
}

void ChannelRecorder::removeAll()
{
    while (!records.empty())
        remove(count() - 1);
}

void ChannelRecorder::clear()
{
    for (const auto &record : records)
        record->clear();
    sampleAll();
}

/// Asks through that connection: the controller's own one may be closed.
simulator::ObjectAddress ChannelRecorder::crateOf(const QString &controller,
                                                  const simulator::ObjectAddress &channel) const
{
    QVector<OrbItemId> crates;
    watcher.service().crates(controller, crates);
    for (OrbItemId &crate : crates) {
        if (crate.line != channel.line)
            continue;
        crate.connectionName = controller;
        QVector<OrbItemId> modules;
        watcher.service().crateModules(crate, modules);
        for (const OrbItemId &module : qAsConst(modules)) {
            if (module.line == channel.line && module.address == channel.address)
                return {OrbItemId::Crate, crate.line, crate.address, crate.channel};
        }
    }
    return {};
}

ChannelRecord *ChannelRecorder::find(const QString &controller, const simulator::ObjectAddress &channel) const
{
    for (const auto &record : records) {
        if (record->controller() == controller && record->address() == channel)
            return record.get();
    }
    return nullptr;
}

void ChannelRecorder::take(const QVector<simulator::JournalEntry> &entries)
{
    if (records.empty())
        return;
    for (const simulator::JournalEntry &entry : entries) {
        if (entry.kind == simulator::JournalEntry::Waypoint) {
            ChannelRecord *const record = find(entry.controller, entry.object);
            if (!record || record->samples().empty())
                continue;
            // Set values and limits take effect with the waypoint; what they are then, the next sample says.
            ChannelSample sample = record->samples().back();
            sample.time = entry.time;
            sample.voltage = entry.voltageBefore;
            sample.current = entry.currentBefore;
            record->add(sample);
            sample.voltage = entry.voltage;
            sample.current = entry.current;
            record->add(sample);
            continue;
        }
        ChannelMark mark;
        if (!markOf(entry, mark))
            continue;
        for (const auto &record : records) {
            if (concerns(entry, *record) && !isSaid(*record, mark))
                record->add(mark);
        }
    }
}

void ChannelRecorder::sample(ChannelRecord &record)
{
    simulator::ChannelSnapshot snapshot;
    if (!watcher.service().channelSnapshot(record.controller(), record.address(), snapshot))
        return;
    ChannelSample sample;
    sample.time = snapshot.time;
    sample.voltage = snapshot.voltage;
    sample.voltageSet = snapshot.voltageSet;
    sample.voltageLimit = snapshot.voltageLimit;
    sample.current = snapshot.current;
    sample.currentSet = snapshot.currentSet;
    sample.currentLimit = snapshot.currentLimit;
    record.add(sample);
    latest = std::max(latest, snapshot.time);
}

void ChannelRecorder::sampleAll()
{
    if (records.empty())
        return;
    for (const auto &record : records)
        sample(*record);
    Q_EMIT recorded();
}

} // namespace workbench
